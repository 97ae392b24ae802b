// `--setup-file PATH`: the settings string read from a file of one line, and written
// back to it after a successful export or a saved setup form.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "command_line_test.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

const std::string kCards = std::string(ZORVAT_CORPUS_DIR) + "/cards/two-employees.json";
const std::string kGeneric = "0,0,0,0,0,False,True,False,False,False,,2";
// ADP7's CSV layout: batch 7, which a successful export advances to 8.
const std::string kBatch7 =
    "ACM,7,01,O2,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,CSV";
const std::string kBatch8 =
    "ACM,8,01,O2,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,CSV";

class SetupFile : public zorvat::testing_support::CommandLineTest {
 protected:
  void TearDown() override {
    for (const auto& entry : fs::recursive_directory_iterator(dir_))
      if (entry.is_directory()) fs::permissions(entry.path(), fs::perms::owner_all);
    CommandLineTest::TearDown();
  }

  // The settings string the class holds after validate, as the JSON report gives it.
  json validate_json(const std::string& settings_file) {
    const auto r = zorvat({"validate", "Generic", "--setup-file", settings_file, "--json"});
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    return json::parse(r.out);
  }

  zorvat::testing_support::ProcessResult export_adp7(const std::string& settings_file,
                                                     const std::string& out) {
    return zorvat(
        {"export", "ADP7", "--cards", kCards, "--setup-file", settings_file, "--out", out});
  }

  // The file's inode: a file the safe step replaced has a new one.
  static ino_t inode_of(const std::string& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info.st_ino;
  }
  std::vector<std::string> entries(const fs::path& folder) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
};

TEST_F(SetupFile, AFinalLfIsNotPartOfTheString) {
  EXPECT_EQ(validate_json(write("s.setup", "a,b\n"))["setupData"], "a,b");
}

TEST_F(SetupFile, AFinalCrLfIsNotPartOfTheString) {
  EXPECT_EQ(validate_json(write("s.setup", "a,b\r\n"))["setupData"], "a,b");
}

TEST_F(SetupFile, AFileWithoutALineEndIsTheStringAsItStands) {
  EXPECT_EQ(validate_json(write("s.setup", "a,b"))["setupData"], "a,b");
}

TEST_F(SetupFile, BlanksAndOtherCrsArePartOfTheString) {
  EXPECT_EQ(validate_json(write("s.setup", " a,b \n"))["setupData"], " a,b ");
  EXPECT_EQ(validate_json(write("s.setup", "a\rb\r\r\n"))["setupData"], "a\rb\r");
  EXPECT_EQ(validate_json(write("s.setup", "a,b\r"))["setupData"], "a,b\r");
  EXPECT_EQ(validate_json(write("s.setup", "\n"))["setupData"], "");
}

// Notepad's "UTF-8 with BOM" puts EF BB BF before the text: the mark is not part of the
// first field, and a write-back keeps it.
TEST_F(SetupFile, AByteOrderMarkIsNotPartOfTheStringAndIsWrittenBack) {
  EXPECT_EQ(validate_json(write("s.setup",
                                "\xEF\xBB\xBF"
                                "a,b\r\n"))["setupData"],
            "a,b");
  const std::string path = write("adp7.setup", "\xEF\xBB\xBF" + kBatch7 + "\r\n");
  const auto r = export_adp7(path, path_of("EPIACM07.CSV"));
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, kBatch8 + "\n");
  EXPECT_EQ(read(path), "\xEF\xBB\xBF" + kBatch8 + "\r\n");
}

TEST_F(SetupFile, TheStringReachesTheClass) {
  const auto r =
      zorvat({"validate", "PrimePay", "--setup-file", write("s.setup", "200,02,20,23,24,25,28\n")});
  EXPECT_EQ(r.exit_code, 3);
  EXPECT_EQ(r.err.substr(0, 19), "zorvat: error 5001 ") << r.err;
}

TEST_F(SetupFile, ASecondLineIsRefused) {
  for (const std::string text : {"a,b\nc,d\n", "a,b\r\nc,d", "a,b\n\n", "a,b\n \n"}) {
    const std::string path = write("two.setup", text);
    const auto r = zorvat({"validate", "Generic", "--setup-file", path});
    EXPECT_EQ(r.exit_code, 2) << text;
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "zorvat: settings file " + path +
                         ": line 2: the file holds the settings string on one line, and nothing "
                         "after it but its line end\n")
        << text;
  }
}

TEST_F(SetupFile, AMissingFileIsAUsageError) {
  const std::string path = path_of("none.setup");
  const auto r = zorvat(
      {"export", "Generic", "--cards", kCards, "--setup-file", path, "--out", path_of("out.tab")});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err,
            "zorvat: settings file " + path + ": cannot be read (No such file or directory)\n");
  EXPECT_FALSE(fs::exists(path_of("out.tab")));
}

TEST_F(SetupFile, AFolderIsAUsageError) {
  fs::create_directory(dir_ / "folder");
  const auto r = zorvat({"validate", "Generic", "--setup-file", path_of("folder"), "--json"});
  EXPECT_EQ(r.exit_code, 2);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["error"]["number"], 0);
  EXPECT_EQ(report["error"]["source"], "zorvat");
  EXPECT_EQ(report["error"]["description"],
            "settings file " + path_of("folder") + ": cannot be read (it is a folder)");
}

TEST_F(SetupFile, SetupAndSetupFileTogetherAreAUsageError) {
  const std::string path = write("s.setup", kGeneric + "\n");
  for (const char* command : {"validate", "reconcile", "setup"}) {
    std::vector<std::string> args = {command, "Generic", "--setup", kGeneric, "--setup-file", path};
    if (std::string(command) == "reconcile") args.insert(args.end(), {"--cards", kCards, "x.tab"});
    const auto r = zorvat(args);
    EXPECT_EQ(r.exit_code, 2) << command;
    EXPECT_EQ(r.err,
              "zorvat: --setup and --setup-file both give the settings string: give one of them\n")
        << command;
  }
}

TEST_F(SetupFile, AnExportWritesTheNewStringBackWithTheFilesLineEnd) {
  for (const std::string line_end : {"\n", "\r\n", ""}) {
    const std::string path = write("adp7.setup", kBatch7 + line_end);
    const auto r = export_adp7(path, path_of("EPIACM07.CSV"));
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, kBatch8 + "\n");
    EXPECT_EQ(read(path), kBatch8 + line_end);
    EXPECT_EQ(entries(dir_), (std::vector<std::string>{"EPIACM07.CSV", "adp7.setup"}));
  }
}

TEST_F(SetupFile, AnUnchangedStringLeavesTheFileUntouched) {
  const std::string path = write("generic.setup", kGeneric + "\r\n");
  const ino_t before = inode_of(path);
  const auto r = zorvat(
      {"export", "Generic", "--cards", kCards, "--setup-file", path, "--out", path_of("out.tab")});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, kGeneric + "\n");
  EXPECT_EQ(read(path), kGeneric + "\r\n");
  EXPECT_EQ(inode_of(path), before);
}

TEST_F(SetupFile, NothingIsWrittenBackWhenTheExportFails) {
  const std::string path = write("adp7.setup", kBatch7 + "\n");
  const ino_t before = inode_of(path);
  // An error raised: the folder of the output file is missing.
  const auto raised = export_adp7(path, path_of("no-such-folder/EPIACM07.CSV"));
  EXPECT_EQ(raised.exit_code, 3);
  // Execute returned False: no file name.
  const auto returned_false = export_adp7(path, "");
  EXPECT_EQ(returned_false.exit_code, 1);
  EXPECT_EQ(read(path), kBatch7 + "\n");
  EXPECT_EQ(inode_of(path), before);
}

TEST_F(SetupFile, CheckingAndReconcilingReadTheFileAndNeverWriteIt) {
  const std::string path = write("adp7.setup", kBatch7 + "\n");
  const std::string written = path_of("EPIACM07.CSV");
  const auto check = zorvat({"export", "ADP7", "--cards", kCards, "--setup-file", path, "--check"});
  EXPECT_EQ(check.exit_code, 0) << check.err;
  EXPECT_EQ(read(path), kBatch7 + "\n");
  // The file a batch-7 export writes reconciles with batch 7, the settings it was written with.
  ASSERT_EQ(
      zorvat({"export", "ADP7", "--cards", kCards, "--setup", kBatch7, "--out", written}).exit_code,
      0);
  const auto reconciled =
      zorvat({"reconcile", "ADP7", "--cards", kCards, "--setup-file", path, written});
  EXPECT_EQ(reconciled.exit_code, 0) << reconciled.out << reconciled.err;
  EXPECT_EQ(read(path), kBatch7 + "\n");
}

TEST_F(SetupFile, AWriteBackThatFailsKeepsTheFileAndReportsTheExport) {
  // A file that nobody may write is kept, for root as well.
  const std::string path = write("adp7.setup", kBatch7 + "\r\n");
  fs::permissions(path, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  const auto r = export_adp7(path, path_of("EPIACM07.CSV"));
  EXPECT_EQ(r.exit_code, 3);
  EXPECT_EQ(r.out, kBatch8 + "\n");
  EXPECT_EQ(r.err, "zorvat: settings file " + path +
                       ": not updated (Permission denied); it still holds the settings string it "
                       "was read with\n");
  EXPECT_EQ(read(path), kBatch7 + "\r\n");
  // The export's file is written: the CSV layout's title line first, batch 7 on every line.
  const std::string written = read(path_of("EPIACM07.CSV"));
  EXPECT_TRUE(written.starts_with("Co Code,Batch ID,File #,")) << written;
  EXPECT_NE(written.find("\r\nACM,7,"), std::string::npos) << written;
  EXPECT_EQ(entries(dir_), (std::vector<std::string>{"EPIACM07.CSV", "adp7.setup"}));
}

TEST_F(SetupFile, AReadOnlyFolderKeepsTheFileAndReportsTheExport) {
  if (::geteuid() == 0) GTEST_SKIP() << "running as root: folder permissions do not apply";
  const fs::path locked = dir_ / "locked";
  fs::create_directory(locked);
  const std::string path = (locked / "adp7.setup").string();
  zorvat::testing_support::write_file(path, kBatch7 + "\n");
  fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
  const auto r = zorvat({"export", "ADP7", "--cards", kCards, "--setup-file", path, "--out",
                         path_of("EPIACM07.CSV"), "--json"});
  EXPECT_EQ(r.exit_code, 3);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["result"], true);
  EXPECT_EQ(report["setupData"], kBatch8);
  EXPECT_EQ(report["file"], path_of("EPIACM07.CSV"));
  EXPECT_EQ(report["error"], (json{{"number", 70},
                                   {"source", "zorvat"},
                                   {"description", "settings file " + path +
                                                       ": not updated (Permission denied); it "
                                                       "still holds the settings string it was "
                                                       "read with"}}));
  EXPECT_EQ(read(path), kBatch7 + "\n");
  EXPECT_EQ(entries(locked), std::vector<std::string>{"adp7.setup"});
}

TEST_F(SetupFile, AFullDiskKeepsTheFileAndReportsTheExport) {
  // Every write to a regular file fails as on a full disk; the export's own file goes to
  // a device, which the limit does not stop.
  const std::string path = write("adp7.setup", kBatch7);
  const auto r = zorvat::testing_support::run_process(
      {"/bin/sh", "-c", "trap '' XFSZ; ulimit -f 0; exec \"$0\" \"$@\"", ZORVAT_CLI, "export",
       "ADP7", "--cards", kCards, "--setup-file", path, "--out", "/dev/null", "--json"});
  EXPECT_EQ(r.exit_code, 3);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["result"], true);
  EXPECT_EQ(report["setupData"], kBatch8);
  EXPECT_EQ(report["file"], "/dev/null");
  EXPECT_EQ(report["error"]["number"], 61);
  EXPECT_EQ(report["error"]["description"],
            "settings file " + path +
                ": not updated (Disk full); it still holds the settings string it was read with");
  EXPECT_EQ(read(path), kBatch7);
  EXPECT_EQ(entries(dir_), std::vector<std::string>{"adp7.setup"});  // no temporary file left
}

TEST_F(SetupFile, ASavedSetupFormWritesTheNewStringBack) {
  const std::string path = write("primepay.setup", "0,02,20,23,24,25,28\r\n");
  const auto saved = zorvat::testing_support::run_process(
      {ZORVAT_CLI, "setup", "PrimePay", "--setup-file", path},
      "clear txtBatchSequence\ntype txtBatchSequence 12\nclick cmdButton(0)\n");
  EXPECT_EQ(saved.exit_code, 0) << saved.err;
  EXPECT_EQ(saved.out, "12,02,20,23,24,25,28\n");
  EXPECT_EQ(read(path), "12,02,20,23,24,25,28\r\n");
}

TEST_F(SetupFile, ACancelledSetupFormLeavesTheFile) {
  const std::string path = write("primepay.setup", "0,02,20,23,24,25,28\n");
  const ino_t before = inode_of(path);
  const auto cancelled = zorvat::testing_support::run_process(
      {ZORVAT_CLI, "setup", "PrimePay", "--setup-file", path},
      "clear txtBatchSequence\ntype txtBatchSequence 12\nclick cmdButton(1)\n");
  EXPECT_EQ(cancelled.exit_code, 1) << cancelled.err;
  EXPECT_EQ(read(path), "0,02,20,23,24,25,28\n");
  EXPECT_EQ(inode_of(path), before);
}

}  // namespace
