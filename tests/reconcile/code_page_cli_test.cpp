// `zorvat reconcile --code-page`: the written file is read in the code page it was
// written in (Windows-1252 unless told otherwise), and a file read in the wrong one is
// refused or mismatched with a message that says which code page it was read in.
// The files' bytes are written out by hand.
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

const std::string kPreviewSetup = "12,A,B,C,7,D,E,F,G,0,0,0,0";
const std::string kGenericSetup = "0,0,0,1,1,False,True,False,False,False,,0";
const std::string kAllExplained = "Every difference is accounted for by a named reason.";

std::string blanks(std::size_t count) {
  return std::string(count, ' ');
}

// One PCPreview earnings record: number (6), name (25 letters), 19 blanks, "E ", the
// pay code, 9 blanks, the hours (8), 19 blanks, the sequence "7" and 37 blanks.
std::string preview_record(const std::string& number, const std::string& name_column,
                           const std::string& code, const std::string& hours_column) {
  return number + name_column + blanks(19) + "E " + code + blanks(9) + hours_column + blanks(19) +
         "7" + blanks(37);
}

// The names in Windows-1252, one byte a letter: é E9, ñ F1, ü FC, Ñ D1, ú FA, ’ 92, Š 8A.
const std::string kPreview1252 =
    preview_record("000315",
                   "Jos\xE9 Pe\xF1"
                   "a" +
                       blanks(16),
                   "A", "   40.00") +
    preview_record("000316",
                   "Ren\xE9"
                   "e M\xFCller-\xD1\xFA\xF1"
                   "ez" +
                       blanks(7),
                   "A", "    8.00") +
    preview_record("000317", "Grace O\x92Neil" + blanks(13), "D", "    8.00") +
    preview_record("000318", "Ann \x8Aimek" + blanks(16), "A", "     .50");

// The same in UTF-8.
const std::string kPreviewUtf8 =
    preview_record("000315", "José Peña" + blanks(16), "A", "   40.00") +
    preview_record("000316", "Renée Müller-Ñúñez" + blanks(7), "A", "    8.00") +
    preview_record("000317", "Grace O’Neil" + blanks(13), "D", "    8.00") +
    preview_record("000318", "Ann Šimek" + blanks(16), "A", "     .50");

nlohmann::ordered_json card(const std::string& export_id, int number, const std::string& first,
                            const std::string& last, int reg, int vac) {
  nlohmann::ordered_json json;
  json["ExportID"] = export_id;
  json["Number"] = number;
  json["Shift"] = 1;
  json["REG"] = reg;
  json["OT1"] = 0;
  json["OT2"] = 0;
  json["VAC"] = vac;
  json["HOL"] = 0;
  json["SIC"] = 0;
  json["OTH"] = 0;
  json["FirstName"] = first;
  json["MI"] = "";
  json["LastName"] = last;
  json["Badge"] = "B" + std::to_string(number);
  json["EditREG"] = 0;
  json["EditOT1"] = 0;
  json["EditOT2"] = 0;
  json["PeriodStart"] = "2004-02-29";
  json["Days"] = nlohmann::ordered_json::array();
  return json;
}

class ReconcileCodePage : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::temp_directory_path() /
              ("zorvat-reconcile-code-page-" +
               std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(folder_);
    nlohmann::ordered_json document;
    document["PeriodEnd"] = "2004-03-06";
    document["cards"] = {card("Peña-7", 315, "José", "Peña", 2400, 0),
                         card("E316", 316, "Renée", "Müller-Ñúñez", 480, 0),
                         card("E317", 317, "Grace", "O’Neil", 0, 480),
                         card("E318", 318, "Ann", "Šimek", 30, 0)};
    cards_ = write("cards.json", document.dump());
  }
  void TearDown() override { fs::remove_all(folder_); }

  std::string write(const std::string& name, const std::string& bytes) {
    std::string path = (folder_ / name).string();
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }

  testing_support::CommandRun reconcile(const std::string& class_name, const std::string& setup,
                                        const std::string& path,
                                        std::vector<std::string> more = {}) {
    std::vector<std::string> args = {"reconcile", class_name, "--cards", cards_, "--setup", setup};
    args.insert(args.end(), more.begin(), more.end());
    args.push_back(path);
    return testing_support::run_command(args);
  }

  fs::path folder_;
  std::string cards_;
};

TEST_F(ReconcileCodePage, AWindows1252FileReconcilesWithTheDefault) {
  const testing_support::CommandRun result =
      reconcile("PCPreview", kPreviewSetup, write("0012_TA.txt", kPreview1252));
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.out.find(kAllExplained), std::string::npos) << result.out;
  EXPECT_EQ(result.err, "");
}

TEST_F(ReconcileCodePage, TheCodePageMayBeNamedOrNumbered) {
  const std::string path = write("0012_TA.txt", kPreview1252);
  for (const char* name : {"windows-1252", "1252", "cp1252"}) {
    const testing_support::CommandRun result =
        reconcile("PCPreview", kPreviewSetup, path, {"--code-page", name});
    EXPECT_EQ(result.status, 0) << name << ": " << result.err;
  }
}

TEST_F(ReconcileCodePage, AUtf8FileReconcilesWithCodePageUtf8) {
  const testing_support::CommandRun result = reconcile(
      "PCPreview", kPreviewSetup, write("0012_TA.txt", kPreviewUtf8), {"--code-page", "utf-8"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.out.find(kAllExplained), std::string::npos) << result.out;
}

TEST_F(ReconcileCodePage, AWindows1252FileReadAsUtf8IsRefusedAtItsFirstLetter) {
  const std::string path = write("0012_TA.txt", kPreview1252);
  const testing_support::CommandRun result =
      reconcile("PCPreview", kPreviewSetup, path, {"--code-page", "utf-8"});
  EXPECT_EQ(result.status, cli::kUsageError);
  // "000315Jos" is nine bytes: the "é" (E9) is the tenth.
  EXPECT_EQ(result.err, "zorvat: " + path +
                            ": not utf-8 text: byte 10 (0xE9) is no character in it; name the "
                            "code page the file was written in with --code-page (windows-1252, "
                            "850, ...)\n");
}

TEST_F(ReconcileCodePage, AUtf8FileReadAsWindows1252SaysWhichCodePageItWasReadIn) {
  const std::string path = write("0012_TA.txt", kPreviewUtf8);
  const testing_support::CommandRun result = reconcile("PCPreview", kPreviewSetup, path);
  EXPECT_EQ(result.status, cli::kUsageError);
  // "José Peña" in UTF-8 read as Windows-1252 is "JosÃ© PeÃ±a", two letters longer: the
  // name column ends two letters early, and "E " is looked for two blanks before it.
  EXPECT_EQ(result.err, "zorvat: " + path +
                            ": not a PCPreview file: line 1, column 51: expected the earnings "
                            "record type \"E \" (the file was read as windows-1252; if it was "
                            "written in another code page, name that one with --code-page)\n");
}

TEST_F(ReconcileCodePage, AMismatchFromTheWrongCodePageSaysWhichCodePageItWasReadIn) {
  // Generic with names: the export ID "Peña-7" in UTF-8 read as Windows-1252 is
  // "PeÃ±a-7", an employee the cards do not have.
  const std::string line_end = "\r\n";
  const std::string file =
      "Peña-7,000000315,01,40.00,0.00,0.00,0.00,0.00,0.00,0.00,José  Peña,315" + line_end +
      "E316,000000316,01,8.00,0.00,0.00,0.00,0.00,0.00,0.00,Renée  Müller-Ñúñez,316" + line_end +
      "E317,000000317,01,0.00,0.00,0.00,8.00,0.00,0.00,0.00,Grace  O’Neil,317" + line_end +
      "E318,000000318,01,0.50,0.00,0.00,0.00,0.00,0.00,0.00,Ann  Šimek,318" + line_end;
  const std::string path = write("period.tab", file);

  const testing_support::CommandRun as_utf8 =
      reconcile("Generic", kGenericSetup, path, {"--code-page", "utf-8"});
  EXPECT_EQ(as_utf8.status, 0) << as_utf8.err << as_utf8.out;

  const testing_support::CommandRun as_1252 = reconcile("Generic", kGenericSetup, path);
  EXPECT_EQ(as_1252.status, cli::kUnexplainedDifference) << as_1252.out;
  EXPECT_NE(as_1252.out.find("PeÃ±a-7"), std::string::npos) << as_1252.out;
  EXPECT_EQ(as_1252.err,
            "zorvat: the file was read as windows-1252; if it was written in another code page, "
            "name that one with --code-page\n");
}

TEST_F(ReconcileCodePage, AnUnknownCodePageIsAUsageError) {
  const std::string path = write("0012_TA.txt", kPreview1252);
  const testing_support::CommandRun result =
      reconcile("PCPreview", kPreviewSetup, path, {"--code-page", "no-such-code-page"});
  EXPECT_EQ(result.status, cli::kUsageError);
  EXPECT_EQ(result.err,
            "zorvat: --code-page: \"no-such-code-page\" is not a code page this system converts "
            "to (windows-1252, utf-8, 850, ...)\n");

  const testing_support::CommandRun json =
      reconcile("PCPreview", kPreviewSetup, path, {"--code-page", "no-such-code-page", "--json"});
  EXPECT_EQ(json.status, cli::kUsageError);
  const auto report = nlohmann::json::parse(json.out);
  EXPECT_EQ(report["error"]["number"], 0);
  EXPECT_EQ(report["error"]["source"], "zorvat");
}

// What the export command writes, in either code page, reads back with the same one.
TEST_F(ReconcileCodePage, WhatTheExportWritesReconciles) {
  for (const char* code_page : {"windows-1252", "utf-8"}) {
    SCOPED_TRACE(code_page);
    const std::string path = (folder_ / (std::string(code_page) + "_TA.txt")).string();
    const testing_support::CommandRun exported =
        testing_support::run_command({"export", "PCPreview", "--cards", cards_, "--setup",
                                      kPreviewSetup, "--out", path, "--code-page", code_page});
    ASSERT_EQ(exported.status, 0) << exported.err;
    const testing_support::CommandRun result =
        reconcile("PCPreview", kPreviewSetup, path, {"--code-page", code_page});
    EXPECT_EQ(result.status, 0) << result.err << result.out;
  }
}

}  // namespace
