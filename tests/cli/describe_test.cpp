// `zorvat describe`, `classes` and `--version`: what a new user reads to write a
// settings string without opening the source, and the README's settings reference,
// which must say what the command says.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "process.h"

using nlohmann::json;
using zorvat::testing_support::run_process;

namespace {

zorvat::testing_support::ProcessResult zorvat(std::vector<std::string> args) {
  args.insert(args.begin(), ZORVAT_CLI);
  return run_process(args);
}

struct Defaults {
  const char* class_name;
  const char* defaults;                 // the setup form's design values, joined
  std::vector<std::size_t> fill_first;  // positions a new user must fill
  // What --defaults warns of: design values the check accepts that make an unusable file.
  std::string warning = {};
};

// Written out from each class's settings table and setup form.
const std::vector<Defaults> kDefaults = {
    {"Generic",
     "0,0,0,0,0,False,False,False,False,False,,0",
     {},
     "zorvat: warning: settings position 9 (Separator Custom): none of positions 5 to 9 is True, "
     "so no separator is chosen: the fields of a line run together (the file would be written, "
     "but not as a payroll system can read it)\n"},
    {"ADP7",
     ",,,,Hours 3,,Vacation Hours,,Holiday Hours,,Sick Hours,,Hours 4,EPIP",
     {0, 1, 2, 3, 5, 7, 9, 11}},
    {"IntuitPAC", ",,,,,,,,0,0,0,0", {0, 1, 2, 3, 4, 5, 6, 7}},
    {"PCPayLink", "0,A001,0,0,VA,HO,QS,R3", {}},
    {"PCPreview", "0,A,B,C,0,D,E,F,G,0,0,0,0", {}},
    {"Peachtree",
     "0,0,0,0,0,0,0,ADMN-01000,ADMN-01000,ADMN-01000,ADMN-02000,ADMN-02000,ADMN-02000,ADMN-02000,"
     "0,1",
     {}},
    {"PrimePay", "0,02,20,23,24,25,28", {}},
    {"QB2000",
     "C:/Program Files/Intuit/,Regular Hourly Rate,Overtime Hourly Rate,Premuim Overtime Hourly "
     "Rate,Vacation Hourly Rate,Holiday Hourly Rate,Sick Hourly Rate,Other Hourly Rate",
     {}},
};

class Describe : public testing::TestWithParam<Defaults> {};

TEST_P(Describe, DefaultsArePrintedAndEitherValidateOrNameTheFieldsToFill) {
  const Defaults& expected = GetParam();
  const auto r = zorvat({"describe", expected.class_name, "--defaults"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, std::string(expected.defaults) + "\n");

  const auto validated = zorvat({"validate", expected.class_name, "--setup", expected.defaults});
  if (expected.fill_first.empty()) {
    EXPECT_EQ(r.err, expected.warning);
    EXPECT_EQ(validated.exit_code, 0) << validated.err;
  } else {
    for (std::size_t position : expected.fill_first)
      EXPECT_NE(r.err.find("  position " + std::to_string(position) + ", "), std::string::npos)
          << position << "\n"
          << r.err;
    // The check refuses the proposal as it stands, and the command says so too.
    EXPECT_EQ(validated.exit_code, 3);
    EXPECT_NE(r.err.find("refuses these settings as they stand"), std::string::npos) << r.err;
  }

  const auto as_json = zorvat({"describe", expected.class_name, "--defaults", "--json"});
  ASSERT_EQ(as_json.exit_code, 0);
  const json parsed = json::parse(as_json.out);
  EXPECT_EQ(parsed["defaults"], expected.defaults);
  EXPECT_EQ(parsed["accepted"], expected.fill_first.empty());
  std::vector<std::size_t> fill;
  for (const json& field : parsed["fill"]) fill.push_back(field["position"]);
  EXPECT_EQ(fill, expected.fill_first);
  EXPECT_EQ(parsed["warnings"].size(), expected.warning.empty() ? 0u : 1u) << as_json.out;
}

TEST_P(Describe, TheTableHasARowPerPositionWithTheFormsValue) {
  const Defaults& expected = GetParam();
  const auto r = zorvat({"describe", std::string("zorvat.") + expected.class_name, "--json"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  const json parsed = json::parse(r.out);
  EXPECT_EQ(parsed["progId"], std::string("zorvat.") + expected.class_name);
  std::string joined;
  std::size_t position = 0;
  for (const json& setting : parsed["settings"]) {
    EXPECT_EQ(setting["position"], position);
    joined += (position++ ? "," : "") + setting["designValue"].get<std::string>();
  }
  EXPECT_EQ(joined, expected.defaults);

  // The plain table: a header, then one line per position starting with it.
  const auto plain = zorvat({"describe", expected.class_name});
  ASSERT_EQ(plain.exit_code, 0);
  std::istringstream lines(plain.out);
  std::string line;
  while (std::getline(lines, line) && !line.starts_with("Pos ")) {
  }
  for (std::size_t row = 0; row < position; ++row) {
    ASSERT_TRUE(std::getline(lines, line)) << row;
    EXPECT_TRUE(line.starts_with(std::to_string(row) + " ")) << line;
  }
}

// The columns stand apart: every text of a row ends before the next column's heading,
// even the longest error name (PrimePay's "5001 errBatchSequenceNumber").
TEST(DescribeTable, NoTextRunsIntoTheNextColumn) {
  const auto r = zorvat({"describe", "PrimePay"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  std::istringstream lines(r.out);
  std::string header;
  while (std::getline(lines, header) && !header.starts_with("Pos ")) {
  }
  const std::size_t values = header.find("Values");
  ASSERT_NE(values, std::string::npos) << header;
  std::string line;
  ASSERT_TRUE(std::getline(lines, line));
  EXPECT_EQ(line.substr(values - 2), "  0 to 127; the last column of every detail line") << line;
  EXPECT_NE(line.find("5001 errBatchSequenceNumber  0 to 127"), std::string::npos) << line;
}

INSTANTIATE_TEST_SUITE_P(EveryClass, Describe, testing::ValuesIn(kDefaults),
                         [](const testing::TestParamInfo<Defaults>& param) {
                           return std::string(param.param.class_name);
                         });

TEST(DescribeTable, NamesTheGuardAndWhatToFill) {
  const auto r = zorvat({"describe", "PrimePay"});
  ASSERT_EQ(r.exit_code, 0);
  EXPECT_NE(r.out.find("zorvat.PrimePay: "), std::string::npos);
  EXPECT_NE(r.out.find("check method ValidateSetupData"), std::string::npos);
  EXPECT_NE(r.out.find("5001 errBatchSequenceNumber"), std::string::npos);
  const auto adp7 = zorvat({"describe", "ADP7"});
  EXPECT_NE(adp7.out.find("Company Code"), std::string::npos);
  EXPECT_NE(adp7.out.find("(fill in)"), std::string::npos);
}

// What the fixed layouts need of the cards, worked out from the columns each layout
// declares: IntuitPAC's employee part of four, PrimePay's six-digit number and its
// hundredths in six and seven digits, PCPreview's eight-letter hours, ADP7's batch.
TEST(DescribeTable, SaysWhatTheCardsMustHold) {
  const auto intuit = zorvat({"describe", "IntuitPAC"});
  EXPECT_NE(intuit.out.find("\nWhat the cards must hold:\n  Number: the last 4 characters of the "
                            "employee number go to the employee part (columns 6-9): a number "
                            "needs 4 digits or more (one under 1000 fails the export with error "
                            "5), and two numbers with the same last 4 digits are one employee "
                            "to the payroll system\n"),
            std::string::npos)
      << intuit.out;
  const auto primepay = zorvat({"describe", "PrimePay"});
  EXPECT_NE(primepay.out.find("  Number: the employee number: columns 2-7, at most 999999\n"
                              "  REG: regular hundredths: columns 9-14, at most 9999.99 hours "
                              "(599999 minutes)\n"
                              "  OT1, OT2, VAC, HOL, SIC, OTH: hundredths of hours: columns "
                              "20-26, at most 99999.99 hours (5999999 minutes)\n"),
            std::string::npos)
      << primepay.out;
  const auto preview = zorvat({"describe", "PCPreview", "--json"});
  EXPECT_EQ(json::parse(preview.out)["cards"][2],
            (json{{"property", "REG, OT1, OT2, VAC, HOL, SIC, OTH"},
                  {"text", "the hours: columns 63-70, at most 99999.99 hours (5999999 minutes)"}}));
  const auto adp7 = zorvat({"describe", "ADP7"});
  EXPECT_NE(adp7.out.find("  OT2: EPIP: the second-level overtime of a batch (all its cards) adds "
                          "up to at most 32767 minutes; a larger batch fails the export with "
                          "error 6 (Overflow)\n"),
            std::string::npos)
      << adp7.out;
  // A delimited file has no widths to hold.
  EXPECT_EQ(zorvat({"describe", "Generic"}).out.find("What the cards must hold"),
            std::string::npos);
}

TEST(DescribeTable, AClassOfTheTestTreeSaysWhatItsOwnFolderDeclares) {
  const auto tally = zorvat({"describe", "Tally"});
  EXPECT_NE(tally.out.find("\nWhat the cards must hold:\n  ExportID: written as it stands, "
                           "before the hours and the last comma of its line; a CR LF in it "
                           "ends the line\n"),
            std::string::npos)
      << tally.out;
  EXPECT_EQ(json::parse(zorvat({"describe", "Tally", "--json"}).out)["cards"],
            (json::array({{{"property", "ExportID"},
                           {"text",
                            "written as it stands, before the hours and the last comma "
                            "of its line; a CR LF in it ends the line"}}})));
}

TEST(DescribeTable, AnUnknownClassIsAUsageError) {
  const auto r = zorvat({"describe", "Nope"});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.err, "zorvat: unknown export class \"Nope\" (see zorvat classes)\n");
  EXPECT_EQ(zorvat({"describe"}).exit_code, 2);
  EXPECT_EQ(zorvat({"describe", "--all"}).exit_code, 2);
}

TEST(Version, IsTheProjectsVersion) {
  const auto r = zorvat({"--version"});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, "zorvat " ZORVAT_PROJECT_VERSION "\n");
}

// The README's settings reference is what `zorvat describe --all --markdown` prints
// (`./project docs` writes it); a description changed without the README fails here.
TEST(Readme, SettingsReferenceIsCurrent) {
  std::ifstream file(std::string(ZORVAT_SOURCE_DIR) + "/README.md");
  std::stringstream text;
  text << file.rdbuf();
  const std::string readme = text.str();
  const std::string begin = "<!-- settings:begin (generated by ./project docs) -->\n\n";
  const std::string end = "\n<!-- settings:end -->";
  const std::size_t from = readme.find(begin);
  const std::size_t to = readme.find(end);
  ASSERT_NE(from, std::string::npos);
  ASSERT_NE(to, std::string::npos);
  const std::string section = readme.substr(from + begin.size(), to - from - begin.size());
  // The shipped command: the README documents its classes, not the test tree's.
  const auto generated =
      zorvat::testing_support::run_process({ZORVAT_SHIPPED_CLI, "describe", "--all", "--markdown"});
  ASSERT_EQ(generated.exit_code, 0);
  EXPECT_EQ(section, generated.out) << "README.md is behind the descriptions: run ./project docs";
}

}  // namespace
