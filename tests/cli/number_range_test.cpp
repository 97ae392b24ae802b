// Numbers at the edges of what a cards file holds, through the command: integers
// beyond 64 bits are the Doubles they stand for, a number no Double holds is refused
// with its place, and `export --check` and `reconcile` of any number a class writes
// finish with a result or a clean error, never a crash.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "command_line_test.h"

namespace zorvat::testing_support {
namespace {

using nlohmann::json;

// Generic: no quotes, no titles, no employee information, "," between fields, LF.
const std::string kGenericSetup = "0,0,0,0,0,False,True,False,False,False,,2";
const std::string kEpipSetup =
    "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP";
const std::string kOverflow =
    "Overflow: more time than reconciliation counts (at most 1537228672809129.30 hours in one "
    "amount or sum)";

// One card, E1, number 1007, with `reg` and `ot1` minutes written as they stand in the
// JSON (REG on line 5).
std::string one_card(const std::string& reg, const std::string& ot1 = "0") {
  return "{\"PeriodEnd\": \"2004-03-06\",\n"
         " \"cards\": [\n"
         "  {\"ExportID\": \"E1\", \"Number\": 1007, \"Shift\": 1,\n"
         "   \"FirstName\": \"Ann\", \"MI\": \"\", \"LastName\": \"Lee\", \"Badge\": \"7\",\n"
         "   \"REG\": " +
         reg + ", \"OT1\": " + ot1 +
         ", \"OT2\": 0, \"VAC\": 0, \"HOL\": 0, \"SIC\": 0, \"OTH\": 0,\n"
         "   \"PeriodStart\": \"2004-02-29\", \"Days\": []}\n"
         " ]}\n";
}

class NumberRange : public CommandLineTest {};

TEST_F(NumberRange, IntegersBeyondSixtyFourBitsAreExportedAsTheirDoubles) {
  // 99999999999999999999 minutes is the Double 1e20: 1e20 / 60 hours, which "###0.00"
  // writes to fifteen significant digits, 1.66666666666667E+18.
  const std::string cards =
      write("cards.json", one_card("99999999999999999999", "-99999999999999999999"));
  const ProcessResult result = zorvat({"export", "Generic", "--cards", cards, "--setup",
                                       kGenericSetup, "--out", path_of("out.txt")});
  ASSERT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(result.out, kGenericSetup + "\n");
  EXPECT_EQ(read(path_of("out.txt")),
            "E1,000001007,01,1666666666666670000.00,-1666666666666670000.00,0.00,0.00,0.00,0.00,"
            "0.00\n");
}

TEST_F(NumberRange, ANumberNoDoubleHoldsIsRefusedWithItsLineColumnAndProperty) {
  const std::string cards = write("cards.json", one_card("1e400"));
  const std::string message = "cards file " + cards +
                              ": line 5, column 11: property REG: 1e400 is beyond the range of a "
                              "number (a Double holds magnitudes up to 1.79769313486232E+308)";
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"export", "Generic", "--cards", cards, "--setup", kGenericSetup,
                                 "--out", path_of("out.txt")},
        {"export", "Generic", "--cards", cards, "--setup", kGenericSetup, "--check"},
        {"reconcile", "Generic", "--cards", cards, "--setup", kGenericSetup, path_of("none")}}) {
    const ProcessResult result = zorvat(command);
    EXPECT_EQ(result.exit_code, 2) << command[0];
    EXPECT_EQ(result.err, "zorvat: " + message + "\n") << command[0];
  }
  std::vector<std::string> json_check = {"export",  "Generic",     "--cards", cards,
                                         "--setup", kGenericSetup, "--check", "--json"};
  const ProcessResult result = zorvat(json_check);
  EXPECT_EQ(result.exit_code, 2);
  const json report = json::parse(result.out);
  EXPECT_EQ(report["error"], json({{"number", 0}, {"source", "zorvat"}, {"description", message}}));
  EXPECT_FALSE(std::filesystem::exists(path_of("out.txt")));
}

TEST_F(NumberRange, TimeBeyondWhatReconciliationCountsRaisesOverflow) {
  // 1e17 minutes: 1666666666666666.67 hours, more than an amount holds. The export
  // writes it (1.66666666666667E+15 through "###0.00"); the check and the reconciliation
  // of the file stop with error 6.
  for (const char* minutes : {"1e17", "-1e17", "1e300"}) {
    const std::string cards = write("cards.json", one_card(minutes));
    const std::string out = path_of("out.txt");
    const ProcessResult exported =
        zorvat({"export", "Generic", "--cards", cards, "--setup", kGenericSetup, "--out", out});
    ASSERT_EQ(exported.exit_code, 0) << minutes << exported.err;
    if (std::string(minutes) == "1e17") {
      EXPECT_EQ(read(out), "E1,000001007,01,1666666666666670.00,0.00,0.00,0.00,0.00,0.00,0.00\n");
    }
    if (std::string(minutes) == "-1e17") {
      EXPECT_EQ(read(out), "E1,000001007,01,-1666666666666670.00,0.00,0.00,0.00,0.00,0.00,0.00\n");
    }

    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"export", "Generic", "--cards", cards, "--setup", kGenericSetup,
                                   "--check"},
          {"reconcile", "Generic", "--cards", cards, "--setup", kGenericSetup, out}}) {
      const ProcessResult result = zorvat(command);
      EXPECT_EQ(result.exit_code, 3) << minutes << " " << command[0];
      EXPECT_EQ(result.out, "") << minutes;
      EXPECT_EQ(result.err, "zorvat: error 6 in zorvat.reconcile: " + kOverflow + "\n")
          << minutes << " " << command[0];
      std::vector<std::string> with_json = command;
      with_json.push_back("--json");
      const ProcessResult as_json = zorvat(with_json);
      EXPECT_EQ(as_json.exit_code, 3) << minutes;
      EXPECT_EQ(json::parse(as_json.out)["error"],
                json({{"number", 6}, {"source", "zorvat.reconcile"}, {"description", kOverflow}}))
          << minutes;
    }
  }
}

TEST_F(NumberRange, FractionsOfAMinuteReconcileAsRounding) {
  // 0.5 minutes is 0.00833 hours, written 0.01; -0.01 minutes is -0.000167 hours,
  // written -0.00, which holds no time.
  const std::string cards = write("cards.json", one_card("0.5", "-0.01"));
  const std::string out = path_of("out.txt");
  ASSERT_EQ(zorvat({"export", "Generic", "--cards", cards, "--setup", kGenericSetup, "--out", out})
                .exit_code,
            0);
  EXPECT_EQ(read(out), "E1,000001007,01,0.01,-0.00,0.00,0.00,0.00,0.00,0.00\n");
  const ProcessResult result =
      zorvat({"reconcile", "Generic", "--cards", cards, "--setup", kGenericSetup, out});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(result.out,
            "Employee  Category  Input hours  In the file  Difference  Reason\n"
            "E1        REG              0.01         0.01     +0.0017  rounded-to-hundredths\n"
            "E1        OT1              0.00         0.00     +0.0002  rounded-to-hundredths\n"
            "-------------------------------------------------------------------------------\n"
            "Total                      0.01         0.01     +0.0018\n"
            "\n"
            "Reasons:\n"
            "  rounded-to-hundredths (2 rows, +0.0018 h): The file holds hours in hundredths; the "
            "minutes are rounded to the nearest hundredth of an hour.\n"
            "\n"
            "Every difference is accounted for by a named reason.\n");
  const ProcessResult check =
      zorvat({"export", "Generic", "--cards", cards, "--setup", kGenericSetup, "--check"});
  EXPECT_EQ(check.exit_code, 0) << check.err;
  EXPECT_NE(
      check.out.find(
          "E1        REG              0.01         0.01     +0.0017  rounded-to-hundredths\n"),
      std::string::npos)
      << check.out;
}

TEST_F(NumberRange, AnEpipAmountWiderThanItsFieldReconciles) {
  // 99999999999 minutes are 166666666665 hundredths of an hour: twelve digits where
  // the field has seven, which the export writes whole.
  const std::string cards = write("cards.json", one_card("99999999999"));
  const std::string out = path_of("out.txt");
  const ProcessResult exported =
      zorvat({"export", "ADP7", "--cards", cards, "--setup", kEpipSetup, "--out", out});
  ASSERT_EQ(exported.exit_code, 0) << exported.err;
  EXPECT_NE(read(out).find("B003E1004101001012166666666665 z"), std::string::npos) << read(out);
  const ProcessResult result =
      zorvat({"reconcile", "ADP7", "--cards", cards, "--setup", kEpipSetup, out});
  EXPECT_EQ(result.exit_code, 0) << result.out << result.err;
  EXPECT_NE(result.out.find("E1        REG       1666666666.65  1666666666.65      0.0000\n"),
            std::string::npos)
      << result.out;
}

// Every class, with minutes far beyond and far below the usual: the export, the check
// (plain and JSON) and the reconciliation of what the export wrote each end with an
// exit status of the command, and a raised error is reported on one line.
TEST_F(NumberRange, NoNumberMakesTheCommandCrashOrBreaksTheCheckPromise) {
  struct Example {
    std::string cls, setup, title;
  };
  const Example examples[] = {
      {"Generic", "0,1,0,1,0,False,True,False,False,False,,0", ""},
      {"ADP7", kEpipSetup, ""},
      {"ADP7", "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,CSV",
       ""},
      {"IntuitPAC", "ABCE12345,1,2,3,4,5,6,7,1,0,0,0", "Intuit PC Access Import File V2.0"},
      {"IntuitPAC", "ABC1234,1,2,3,4,5,6,7,0,0,0,0", "QuikPay Import File V2.0"},
      {"PCPayLink", "7,A001,3,12,VA,HO,QS,R3", ""},
      {"PCPreview", "12,A,B,C,7,D,E,F,G,1,0,0,0", ""},
      {"Peachtree",
       "1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,"
       "ADMN-02003,0,17",
       ""},
      {"PrimePay", "4,02,20,23,24,25,28", ""},
  };
  const std::set<int> statuses = {0, 1, 2, 3, 4};
  for (const char* minutes : {"1e17", "-1e17", "1e300", "-1e300", "0.5", "-0.01", "99999999999",
                              "99999999999999999999", "1.7976931348623157e308"}) {
    const std::string cards = write("cards.json", one_card(minutes, minutes));
    for (const Example& example : examples) {
      const std::string out = path_of("out.txt");
      std::filesystem::remove(out);
      const std::vector<std::string> common = {"--cards",     cards,     "--setup",
                                               example.setup, "--title", example.title};
      auto run = [&](std::vector<std::string> command) -> int {
        command.insert(command.begin() + 2, common.begin(), common.end());
        const ProcessResult result = zorvat(command);
        const std::string what = std::string(minutes) + " " + example.cls + " " + example.setup +
                                 " " + command[0] + (command.back() == "--json" ? " json" : "");
        EXPECT_TRUE(statuses.count(result.exit_code)) << what << ": " << result.err;
        if (result.exit_code == 3 && command.back() != "--json") {
          // The command's raised error ("zorvat: error 5 in ..."), or a finding of the
          // check ("zorvat: error: card 0 ...").
          EXPECT_TRUE(result.err.starts_with("zorvat: error")) << what << ": " << result.err;
        }
        if (command.back() == "--json") {
          EXPECT_TRUE(json::accept(result.out)) << what;
        }
        return result.exit_code;
      };
      const int exported = run({"export", example.cls, "--out", out, "--today", "2004-03-08"});
      const int checked = run({"export", example.cls, "--check"});
      run({"export", example.cls, "--check", "--json"});
      int reconciled = -1;
      if (std::filesystem::exists(out)) {
        reconciled = run({"reconcile", example.cls, out});
        run({"reconcile", example.cls, out, "--json"});
      }
      // A check that exits 0 promises an export that succeeds and a file that reconciles.
      if (checked == 0) {
        EXPECT_EQ(exported, 0) << minutes << " " << example.cls << " " << example.setup;
        EXPECT_EQ(reconciled, 0) << minutes << " " << example.cls << " " << example.setup;
      }
    }
  }
}

}  // namespace
}  // namespace zorvat::testing_support
