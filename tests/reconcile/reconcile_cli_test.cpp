// `zorvat reconcile` and `zorvat export --check` as a clerk runs them: exit status,
// table, JSON, and the messages for files that are not in the layout.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app.h"
#include "reconcile_command.h"
#include "reconcile_test_support.h"

namespace fs = std::filesystem;
using namespace zorvat;

namespace {

const std::string kCards = std::string(ZORVAT_CORPUS_DIR) + "/cards/two-employees.json";
const std::string kEpipSetup =
    "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP";

class ReconcileCommand : public testing::Test {
 protected:
  void SetUp() override {
    folder_ =
        fs::temp_directory_path() /
        ("zorvat-reconcile-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
         "-" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(folder_);
  }
  void TearDown() override { fs::remove_all(folder_); }

  // Exports the two-employee cards with ADP7 EPIP into the folder.
  std::string exported() {
    std::string path = (folder_ / "05EXTPAY.ABC").string();
    const testing_support::CommandRun result = testing_support::run_command(
        {"export", "ADP7", "--cards", kCards, "--setup", kEpipSetup, "--out", path});
    EXPECT_EQ(result.status, 0) << result.err;
    return path;
  }

  void write(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
  }

  fs::path folder_;
};

TEST_F(ReconcileCommand, ExplainsEveryDifference) {
  const testing_support::CommandRun result = testing_support::run_command(
      {"reconcile", "ADP7", "--cards", kCards, "--setup", kEpipSetup, exported()});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.out.find("Employee  Category  Input hours  In the file  Difference"),
            std::string::npos)
      << result.out;
  EXPECT_NE(result.out.find("category-not-in-layout"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("Every difference is accounted for by a named reason."),
            std::string::npos);
}

TEST_F(ReconcileCommand, ChangedHoursExitFour) {
  const std::string path = exported();
  std::string bytes = testing_support::read_file_bytes(path);
  const std::size_t at = bytes.find("0120004000");
  ASSERT_NE(at, std::string::npos) << bytes;
  bytes.replace(at, 10, "0120004100");
  write(path, bytes);
  const testing_support::CommandRun result = testing_support::run_command(
      {"reconcile", "ADP7", "--cards", kCards, "--setup", kEpipSetup, path});
  EXPECT_EQ(result.status, cli::kUnexplainedDifference);
  EXPECT_NE(result.out.find("unexplained"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("1 difference has no known reason."), std::string::npos) << result.out;
}

TEST_F(ReconcileCommand, FileNotInTheLayoutIsAUsageError) {
  const std::string path = (folder_ / "notes.txt").string();
  write(path, "Co Code,Batch ID\r\n");
  const testing_support::CommandRun result = testing_support::run_command(
      {"reconcile", "ADP7", "--cards", kCards, "--setup", kEpipSetup, path});
  EXPECT_EQ(result.status, cli::kUsageError);
  EXPECT_EQ(result.err, "zorvat: " + path +
                            ": not a ADP7 EPIP file: line 2, column 1: a batch has a header and "
                            "a trailer\n");
}

TEST_F(ReconcileCommand, JsonReport) {
  const testing_support::CommandRun result = testing_support::run_command(
      {"reconcile", "ADP7", "--cards", kCards, "--setup", kEpipSetup, "--json", exported()});
  EXPECT_EQ(result.status, 0);
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["class"], "ADP7");
  EXPECT_EQ(json["layout"], "EPIP");
  EXPECT_EQ(json["unexplained"], 0);
  EXPECT_TRUE(json["error"].is_null());
  EXPECT_EQ(json["totals"]["input"], 58.0);
  EXPECT_EQ(json["totals"]["file"], 49.5);
  bool found = false;
  for (const auto& row : json["rows"])
    if (row["category"] == "VAC" && row["input"] == 8.0) {
      found = true;
      EXPECT_EQ(row["file"], 0.0);
      EXPECT_EQ(row["reasons"][0]["id"], "category-not-in-layout");
    }
  EXPECT_TRUE(found) << result.out;
}

TEST_F(ReconcileCommand, UnknownClassIsAUsageError) {
  const testing_support::CommandRun result =
      testing_support::run_command({"reconcile", "Nope", "--cards", kCards, exported()});
  EXPECT_EQ(result.status, cli::kUsageError);
  EXPECT_NE(result.err.find("unknown export class \"Nope\""), std::string::npos);
}

TEST_F(ReconcileCommand, AClassThatWritesNoFileIsAUsageErrorThatSaysSo) {
  const testing_support::CommandRun result =
      testing_support::run_command({"reconcile", "zorvat.qb2000", "--cards", kCards, exported()});
  EXPECT_EQ(result.status, cli::kUsageError);
  EXPECT_NE(result.err.find("QB2000 writes no file to reconcile (reconciled: Generic, ADP7, "
                            "IntuitPAC, PCPayLink, PCPreview, Peachtree, PrimePay"),
            std::string::npos)
      << result.err;
}

TEST_F(ReconcileCommand, CheckBeforeExportWritesNothing) {
  const testing_support::CommandRun result = testing_support::run_command(
      {"export", "ADP7", "--cards", kCards, "--setup", kEpipSetup, "--check"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.out.find("To the file"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("category-not-in-layout"), std::string::npos);
  EXPECT_TRUE(fs::is_empty(folder_));
}

TEST_F(ReconcileCommand, CheckAsJson) {
  const testing_support::CommandRun result = testing_support::run_command(
      {"export", "ADP7", "--cards", kCards, "--setup", kEpipSetup, "--check", "--json"});
  EXPECT_EQ(result.status, 0) << result.err;
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["fileRead"], false);
  EXPECT_EQ(json["totals"]["input"], 58.0);
  EXPECT_EQ(json["totals"]["file"], 49.5);
  EXPECT_EQ(json["unexplained"], 0);
}

TEST_F(ReconcileCommand, CheckRunsTheClassCheckOfItsSettings) {
  const testing_support::CommandRun result =
      testing_support::run_command({"export", "ADP7", "--cards", kCards, "--setup",
                                    "ABC,100,1,H3,Hours 3,VA,V,HO,H,SI,S,OT,O,EPIP", "--check"});
  EXPECT_EQ(result.status, cli::kErrorRaised);
  EXPECT_NE(result.err.find("Batch Sequence Number must be between 0 and 99"), std::string::npos)
      << result.err;
}

}  // namespace

namespace {

TEST(ReconcileCommandJson, UsageErrorAsTheExportWordsIt) {
  const testing_support::CommandRun result = testing_support::run_command(
      {"reconcile", "ADP7", "--cards", "/nonexistent/cards.json", "--json", "x"});
  EXPECT_EQ(result.status, cli::kUsageError);
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["error"]["number"], 0);
  EXPECT_EQ(json["error"]["source"], "zorvat");
  EXPECT_FALSE(json.contains("rows"));
}

}  // namespace
