// The file step on a real file system, through the command: every failure raises its
// classic error with the class's source, leaves no temporary file, keeps the previous
// file byte for byte and keeps the settings (and their counters) as they were.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "process.h"
#include "test_folder.h"

namespace fs = std::filesystem;
using nlohmann::json;
using zorvat::testing_support::run_process;

namespace {

const std::string kCards = std::string(ZORVAT_CORPUS_DIR) + "/cards/two-employees.json";
const std::string kGeneric = "0,0,0,0,0,False,True,False,False,False,,2";
const std::string kAdp7 =
    "ACM,7,01,O2,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,CSV";

class FileStep : public testing::Test {
 protected:
  void SetUp() override { dir_ = zorvat::testing_support::fresh_test_folder("zorvat-files"); }
  void TearDown() override {
    fs::permissions(dir_, fs::perms::owner_all);
    fs::remove_all(dir_);
  }

  // Runs an export; `limit` runs it with a file-size limit of zero, so that every
  // write to a regular file fails as on a full disk.
  json export_to(const std::string& cls, const std::string& setup, const std::string& out,
                 bool limit = false) {
    std::vector<std::string> argv;
    if (limit) argv = {"/bin/sh", "-c", "trap '' XFSZ; ulimit -f 0; exec \"$0\" \"$@\""};
    argv.insert(argv.end(), {ZORVAT_CLI, "export", cls, "--cards", kCards, "--setup", setup,
                             "--out", out, "--json"});
    const auto result = run_process(argv);
    last_exit_ = result.exit_code;
    return json::parse(result.out);
  }
  std::vector<std::string> entries() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir_))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
  static std::string read(const fs::path& path) { return zorvat::testing_support::read_file(path); }
  static void write(const fs::path& path, const std::string& text) {
    zorvat::testing_support::write_file(path, text);
  }

  fs::path dir_;
  int last_exit_ = -1;
};

void expect_error(const json& report, long number, const std::string& source) {
  ASSERT_FALSE(report["error"].is_null()) << report.dump();
  EXPECT_EQ(report["error"]["number"], number) << report.dump();
  EXPECT_EQ(report["error"]["source"], source);
  EXPECT_TRUE(report["file"].is_null());
}

TEST_F(FileStep, ReplacingKeepsThePreviousFilesPermissions) {
  const fs::path out = dir_ / "out.tab";
  write(out, "previous");
  fs::permissions(out, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  const json report = export_to("Generic", kGeneric, out.string());
  EXPECT_EQ(last_exit_, 0) << report.dump();
  EXPECT_EQ(read(out).substr(0, 5), "E100,");
  EXPECT_EQ(fs::status(out).permissions() & fs::perms::all,
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  EXPECT_EQ(entries(), std::vector<std::string>{"out.tab"});
}

TEST_F(FileStep, AFullDiskKeepsThePreviousFileAndTheBatchNumber) {
  const fs::path out = dir_ / "EPIACM07.CSV";
  write(out, "last week's batch\r\n");
  const json report = export_to("ADP7", kAdp7, out.string(), true);
  EXPECT_EQ(last_exit_, 3);
  expect_error(report, 61, "zorvat.ADP7.Execute");
  EXPECT_EQ(report["error"]["description"], "Disk full");
  EXPECT_EQ(report["setupData"], kAdp7);  // batch 7 not used up
  EXPECT_EQ(read(out), "last week's batch\r\n");
  EXPECT_EQ(entries(), std::vector<std::string>{"EPIACM07.CSV"});  // no temporary file left
}

TEST_F(FileStep, AFullDeviceIsDiskFull) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full on this machine";
  const json report = export_to("Generic", kGeneric, "/dev/full");
  EXPECT_EQ(last_exit_, 3);
  expect_error(report, 61, "zorvat.Generic.Execute");
}

TEST_F(FileStep, AMissingFolderIsPathNotFound) {
  const json report =
      export_to("Generic", kGeneric, (dir_ / "no-such-folder" / "out.tab").string());
  EXPECT_EQ(last_exit_, 3);
  expect_error(report, 76, "zorvat.Generic.Execute");
  EXPECT_EQ(report["error"]["description"], "Path not found");
  EXPECT_TRUE(entries().empty());
}

TEST_F(FileStep, ADirectoryIsAPathFileAccessError) {
  fs::create_directory(dir_ / "folder");
  const json report = export_to("Generic", kGeneric, (dir_ / "folder").string());
  EXPECT_EQ(last_exit_, 3);
  expect_error(report, 75, "zorvat.Generic.Execute");
  EXPECT_TRUE(fs::is_directory(dir_ / "folder"));
}

TEST_F(FileStep, ANameTooLongIsABadFileName) {
  const json report = export_to("Generic", kGeneric, (dir_ / std::string(300, 'n')).string());
  EXPECT_EQ(last_exit_, 3);
  expect_error(report, 52, "zorvat.Generic.Execute");
  EXPECT_TRUE(entries().empty());
}

TEST_F(FileStep, AReadOnlyFileIsPermissionDeniedAndKept) {
  // Decided by the file's own mode, so it holds for root as well.
  const fs::path out = dir_ / "EPIACM07.CSV";
  write(out, "last week's batch\r\n");
  fs::permissions(out, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  const json report = export_to("ADP7", kAdp7, out.string());
  EXPECT_EQ(last_exit_, 3);
  expect_error(report, 70, "zorvat.ADP7.Execute");
  EXPECT_EQ(report["error"]["description"], "Permission denied");
  EXPECT_EQ(report["setupData"], kAdp7);  // batch 7 not used up
  EXPECT_EQ(read(out), "last week's batch\r\n");
  EXPECT_EQ(fs::status(out).permissions() & fs::perms::all,
            fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  EXPECT_EQ(entries(), std::vector<std::string>{"EPIACM07.CSV"});  // no temporary file left
}

TEST_F(FileStep, AReadOnlyFolderIsPermissionDenied) {
  if (::geteuid() == 0) GTEST_SKIP() << "running as root: folder permissions do not apply";
  const fs::path locked = dir_ / "locked";
  fs::create_directory(locked);
  write(locked / "out.tab", "previous");
  fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
  const json report = export_to("Generic", kGeneric, (locked / "out.tab").string());
  EXPECT_EQ(last_exit_, 3);
  expect_error(report, 70, "zorvat.Generic.Execute");
  EXPECT_EQ(read(locked / "out.tab"), "previous");
}

}  // namespace
