// The command's contract: arguments, exit statuses, plain and JSON output, cards files.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "command_line_test.h"
#include "export_classes.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

const std::string kCards = std::string(ZORVAT_CORPUS_DIR) + "/cards/two-employees.json";
const std::string kSetup = "0,0,0,0,0,False,True,False,False,False,,2";

using CommandLine = zorvat::testing_support::CommandLineTest;

TEST_F(CommandLine, ExportPrintsTheNewSettingsAndWritesTheFile) {
  const std::string out = (dir_ / "x.tab").string();
  const auto r = zorvat({"export", "Generic", "--cards", kCards, "--setup", kSetup, "--out", out});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, kSetup + "\n");
  EXPECT_EQ(read(out),
            "E100,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00\n"
            "E101,000000316,02,8.00,0.00,0.00,8.00,0.00,0.50,0.00\n");
}

TEST_F(CommandLine, ClassMayBeGivenAsProgId) {
  const auto r = zorvat({"export", "zorvat.Generic", "--cards", kCards, "--setup", kSetup, "--out",
                         (dir_ / "x.tab").string()});
  EXPECT_EQ(r.exit_code, 0) << r.err;
}

TEST_F(CommandLine, WithoutOutAndWithoutTerminalTheDialogIsCancelled) {
  const auto r = zorvat({"export", "Generic", "--cards", kCards, "--setup", kSetup});
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_EQ(r.out, "");
}

TEST_F(CommandLine, EmptyOutIsAnEmptyFileNameAndTheMessageGoesToStderr) {
  const auto r = zorvat({"export", "Generic", "--cards", kCards, "--setup", kSetup, "--out", ""});
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_EQ(r.err, "No file name selected!\n");
}

// The raised error is one line; the settings string at fault is named on the next,
// after the warning that it is short.
TEST_F(CommandLine, RaisedErrorIsOneLineOnStderr) {
  const auto r = zorvat({"export", "Generic", "--cards", kCards, "--setup", "0,1", "--out",
                         (dir_ / "x.tab").string()});
  EXPECT_EQ(r.exit_code, 3);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err,
            "zorvat: warning: the settings string has 2 fields; Generic reads 12 (positions 2 to "
            "11 missing, from Remove Blanks on)\n"
            "zorvat: error 9 in zorvat.Generic.Execute: Subscript out of range\n"
            "zorvat: while reading settings position 2 (Remove Blanks): the settings string has 2 "
            "fields; Generic reads 12\n");
}

TEST_F(CommandLine, JsonReportHasEveryFieldInOrder) {
  const std::string out = (dir_ / "x.tab").string();
  const auto r =
      zorvat({"export", "Generic", "--cards", kCards, "--setup", kSetup, "--out", out, "--json"});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, "{\"result\":true,\"setupData\":\"" + kSetup + "\",\"file\":\"" + out +
                       "\",\"messages\":[],\"codePage\":\"windows-1252\",\"missingLetters\":[],"
                       "\"error\":null}\n");
}

TEST_F(CommandLine, JsonReportOfAnError) {
  const auto r = zorvat({"export", "Generic", "--cards", kCards, "--json", "--out", ""});
  EXPECT_EQ(r.exit_code, 3);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["result"], false);
  EXPECT_EQ(report["file"], nullptr);
  EXPECT_EQ(report["error"]["number"], 9);
  EXPECT_EQ(report["error"]["source"], "zorvat.Generic.Execute");
  EXPECT_EQ(report["error"]["description"], "Subscript out of range");
}

TEST_F(CommandLine, ValidatePrintsOk) {
  const auto r = zorvat({"validate", "Generic", "--setup", "anything"});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, "ok\n");
}

TEST_F(CommandLine, UsageErrorsExitTwo) {
  EXPECT_EQ(zorvat({}).exit_code, 2);
  EXPECT_EQ(zorvat({"export", "Generic"}).exit_code, 2);  // no --cards
  EXPECT_EQ(zorvat({"frobnicate"}).exit_code, 2);
  const auto unknown = zorvat({"export", "Payroll9000", "--cards", kCards});
  EXPECT_EQ(unknown.exit_code, 2);
  EXPECT_NE(unknown.err.find("unknown export class \"Payroll9000\""), std::string::npos);
  const auto today = zorvat({"export", "Generic", "--cards", kCards, "--today", "2004-02-30"});
  EXPECT_EQ(today.exit_code, 2);
  EXPECT_NE(today.err.find("--today"), std::string::npos);
}

TEST_F(CommandLine, AloneItPrintsTheCommandsAndExitsTwo) {
  const auto r = zorvat({});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err,
            "usage: zorvat COMMAND [ARGUMENTS]\n"
            "\n"
            "Commands:\n"
            "  export     export a pay period's time cards\n"
            "  validate   run only the class's check of its settings\n"
            "  describe   what an export class writes and the fields of its settings string\n"
            "  classes    list the export classes and what each writes\n"
            "  setup      edit a class's settings on its setup form\n"
            "  reconcile  compare a written file with the time cards it was exported from\n"
            "\n"
            "\"zorvat help COMMAND\" prints a command's options, \"zorvat --help-all\" every "
            "command's.\n");
}

TEST_F(CommandLine, HelpPrintsTheHelp) {
  const auto help = zorvat({"help"});
  EXPECT_EQ(help.exit_code, 0) << help.err;
  EXPECT_EQ(help.err, "");
  EXPECT_TRUE(help.out.starts_with("zorvat: exports a pay period's time cards")) << help.out;
  EXPECT_EQ(help.out, zorvat({"--help"}).out);
  for (const char* command : {"export", "validate", "setup", "reconcile", "describe", "classes"})
    EXPECT_NE(help.out.find(std::string("\n  ") + command + " "), std::string::npos) << command;
}

TEST_F(CommandLine, HelpOfACommandListsItsOptions) {
  const auto r = zorvat({"help", "export"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_TRUE(r.out.starts_with("export a pay period's time cards\n")) << r.out;
  for (const char* option : {"--cards", "--setup ", "--setup-file", "--out", "--check", "--json"})
    EXPECT_NE(r.out.find(option), std::string::npos) << option;
  EXPECT_EQ(r.out, zorvat({"export", "--help"}).out);
  const auto reconcile = zorvat({"help", "reconcile"});
  EXPECT_EQ(reconcile.exit_code, 0);
  EXPECT_NE(reconcile.out.find("FILE_WRITTEN"), std::string::npos) << reconcile.out;
}

TEST_F(CommandLine, HelpOfAnUnknownCommandIsAUsageError) {
  const auto r = zorvat({"help", "frobnicate"});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_TRUE(
      r.err.starts_with("zorvat: help: no command \"frobnicate\"; the commands are:\n"
                        "  export     export a pay period's time cards\n"))
      << r.err;
}

TEST_F(CommandLine, UsageErrorInJsonModeIsStillOneObject) {
  const auto r = zorvat({"export", "Generic", "--json"});
  EXPECT_EQ(r.exit_code, 2);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["result"], false);
  EXPECT_EQ(report["error"]["number"], 0);
}

TEST_F(CommandLine, MissingCardsFileNamesTheFile) {
  const auto r = zorvat({"export", "Generic", "--cards", (dir_ / "nope.json").string()});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("nope.json"), std::string::npos);
}

TEST_F(CommandLine, MalformedJsonNamesTheFileAndThePlace) {
  const std::string path = write("bad.json", "{\"cards\": [\n  {\"REG\": 60},\n]}\n");
  const auto r = zorvat({"export", "Generic", "--cards", path});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("bad.json"), std::string::npos);
  EXPECT_NE(r.err.find("line 3"), std::string::npos) << r.err;
}

TEST_F(CommandLine, LayoutErrorsNameThePlace) {
  struct Case {
    const char* json;
    const char* place;
  } cases[] = {
      {"[]", "top level"},
      {"{\"PeriodEnd\": \"2004-03-06\"}", "no \"cards\" array"},
      {"{\"cards\": {}}", "cards: expected an array"},
      {"{\"cards\": [1]}", "cards[0]: expected an object"},
      {"{\"cards\": [{\"Days\": 5}]}", "cards[0].Days: expected an array"},
      {"{\"cards\": [{}, {\"Days\": [{\"DayDate\": \"2004-13-01\"}]}]}",
       "cards[1].Days[0].DayDate: \"2004-13-01\" is not a date"},
      {"{\"PeriodEnd\": \"March 6\", \"cards\": []}", "top level.PeriodEnd"},
  };
  for (const auto& c : cases) {
    const auto r = zorvat({"export", "Generic", "--cards", write("layout.json", c.json)});
    EXPECT_EQ(r.exit_code, 2) << c.json;
    EXPECT_NE(r.err.find(c.place), std::string::npos) << c.json << " -> " << r.err;
  }
}

TEST_F(CommandLine, ValuesKeepTheirJsonTypes) {
  // Number as text keeps its leading zeros where the class writes it unformatted;
  // a number with a fraction reaches the class as a double.
  const std::string path =
      write("types.json",
            "{\"cards\": [{\"ExportID\": 12, \"Number\": \"007\", \"Shift\": 2.0, \"REG\": 90.0, "
            "\"OT1\": \"30\", \"OT2\": 0, \"VAC\": 0, \"HOL\": 0, \"SIC\": 0, \"OTH\": 3000000000, "
            "\"FirstName\": \"A\", \"MI\": null, \"LastName\": \"B\", \"Badge\": 9}]}");
  const std::string out = (dir_ / "t.tab").string();
  const auto r = zorvat({"export", "Generic", "--cards", path, "--setup",
                         "0,0,0,1,1,False,True,False,False,False,,2", "--out", out});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(read(out), "12,000000007,02,1.50,0.50,0.00,0.00,0.00,0.00,50000000.00,A  B,007\n");
}

TEST_F(CommandLine, PropertyNamesMatchWithoutRegardToCase) {
  const std::string path = write(
      "case.json",
      "{\"cards\": [{\"exportid\": \"E1\", \"NUMBER\": 1, \"shift\": 1, \"reg\": 60, \"ot1\": 0, "
      "\"OT2\": 0, \"Vac\": 0, \"hol\": 0, \"sic\": 0, \"oth\": 0}]}");
  const std::string out = (dir_ / "c.tab").string();
  const auto r = zorvat({"export", "Generic", "--cards", path, "--setup", kSetup, "--out", out});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(read(out), "E1,000000001,01,1.00,0.00,0.00,0.00,0.00,0.00,0.00\n");
}

TEST_F(CommandLine, ClassesListsEveryProgIdWithWhatItWrites) {
  const auto r = zorvat({"classes"});
  EXPECT_EQ(r.exit_code, 0);
  std::istringstream lines(r.out);
  std::vector<std::string> prog_ids;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t blank = line.find(' ');
    ASSERT_NE(blank, std::string::npos) << line;
    prog_ids.push_back(line.substr(0, blank));
    EXPECT_GT(line.find_first_not_of(' ', blank), blank) << "nothing said of " << line;
  }
  // The class list's order; the command under test also has the test tree's classes.
  std::vector<std::string> listed;
  for (const zorvat::reconcile::ClassRules& rules : zorvat::formats::export_classes())
    listed.push_back("zorvat." + std::string(rules.class_name));
  EXPECT_EQ(prog_ids, listed);
  EXPECT_EQ(prog_ids.front(), "zorvat.Generic");
  EXPECT_EQ(prog_ids.back(), "zorvat.Tally");
}

TEST_F(CommandLine, ExportOfTheBundledSamplePeriod) {
  const std::string out = (dir_ / "sample.tab").string();
  const auto r = zorvat({"export", "Generic", "--cards",
                         std::string(ZORVAT_SOURCE_DIR) + "/examples/sample-period.json", "--setup",
                         "0,1,0,1,0,False,True,False,False,False,,0", "--out", out});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  const std::string text = read(out);
  // A title line and twelve employee lines, each ended by CR LF.
  std::size_t lines = 0;
  for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at + 2))
    ++lines;
  EXPECT_EQ(lines, 13u);
  EXPECT_NE(
      text.find("\r\nE107,000002004,02,0.00,0.00,0.00,40.00,0.00,0.00,0.00,Tanaka,Hiro,2004\r\n"),
      std::string::npos);
}

}  // namespace
