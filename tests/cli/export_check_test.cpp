// `zorvat export --check` runs the whole export in memory and reads its file back: a
// check that exits 0 means the export succeeds and its file reconciles, and every way
// an export fails or writes an unreadable file is an error naming the card (index from
// 0 and ExportID) or the settings position (as `describe` numbers and names it). What a
// payroll system may misread is a warning. Errors of `export` itself name the settings
// position when the settings string is at fault, and never an innocent card.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app.h"
#include "command_line_test.h"

using nlohmann::json;

namespace {

constexpr int kExitOk = 0;
constexpr int kExitWarnings = 1;
constexpr int kExitErrors = 3;

const std::string kAdp7Epip =
    "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP";
const std::string kPrimePay = "4,02,20,23,24,25,28";
const std::string kPCPreview = "12,A,B,C,7,D,E,F,G,0,0,0,0";
const std::string kIntuitPac = "ABC1234,1,2,3,4,5,6,7,0,0,0,0";
const std::string kIntuitPacTitle = "Intuit PC Access Import File V2.0";
const std::string kGeneric = "0,1,0,1,0,False,True,False,False,False,,0";

// `count` cards E100, E101, ... with 40 regular hours; `shape` changes card i.
json cards(int count, const std::function<void(int, json&)>& shape = {}) {
  json list = json::array();
  for (int i = 0; i < count; ++i) {
    json card = {{"ExportID", "E" + std::to_string(100 + i)},
                 {"Number", 1315 + i},
                 {"Shift", 1},
                 {"REG", 2400},
                 {"OT1", 0},
                 {"OT2", 0},
                 {"VAC", 0},
                 {"HOL", 0},
                 {"SIC", 0},
                 {"OTH", 0},
                 {"FirstName", "Ann"},
                 {"MI", ""},
                 {"LastName", "Lee"},
                 {"Badge", "0315"}};
    if (shape) shape(i, card);
    list.push_back(card);
  }
  return json{{"PeriodEnd", "2004-03-06"}, {"cards", list}};
}

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

class ExportCheck : public zorvat::testing_support::CommandLineTest {
 protected:
  // The command, run in this process without a user at the keyboard.
  static Outcome run(const std::vector<std::string>& args) {
    std::ostringstream out;
    std::ostringstream err;
    const int status = zorvat::cli::run(args, out, err, false);
    return {status, out.str(), err.str()};
  }
  std::string cards_file(const json& document) { return write("cards.json", document.dump()); }

  Outcome check(const std::string& class_name, const std::string& cards, const std::string& setup,
                std::vector<std::string> more = {}) {
    std::vector<std::string> args = {"export",  class_name, "--cards", cards,
                                     "--setup", setup,      "--check"};
    args.insert(args.end(), more.begin(), more.end());
    return run(args);
  }
  json check_json(const std::string& class_name, const std::string& cards, const std::string& setup,
                  std::vector<std::string> more = {}) {
    more.push_back("--json");
    const Outcome r = check(class_name, cards, setup, more);
    return json::parse(r.out);
  }
};

json card_of(int index, const std::string& id, const json& property = nullptr) {
  return {{"index", index}, {"id", id}, {"property", property}};
}
json setting_of(int position, const std::string& name) {
  return {{"position", position}, {"name", name}};
}

// --- Errors: the export would fail, or its file would not read back ---------------------

TEST_F(ExportCheck, Adp7BatchOvertimePast32767MinutesNamesTheCardThatPassesIt) {
  // 8 hours of second-level overtime a card: 68 cards make 32,640 minutes, the 69th
  // (index 68) 33,120.
  const std::string path = cards_file(cards(70, [](int, json& card) {
    card["REG"] = 0;
    card["OT2"] = 480;
  }));
  const Outcome r = check("ADP7", path, kAdp7Epip);
  EXPECT_EQ(r.status, kExitErrors) << r.err;
  EXPECT_NE(r.err.find("zorvat: error: card 68 (ExportID E168): the export would fail: error 6 in "
                       "zorvat.ADP7.Execute: Overflow (with this card the batch's second-level "
                       "overtime reaches 33120 minutes, past the 32767 ADP7 can add up; export "
                       "the cards in smaller batches)\n"),
            std::string::npos)
      << r.err;

  const json report = check_json("ADP7", path, kAdp7Epip);
  ASSERT_EQ(report.at("findings").size(), 1u) << report.dump();
  EXPECT_EQ(report.at("findings")[0].at("severity"), "error");
  EXPECT_EQ(report.at("findings")[0].at("card"), card_of(68, "E168"));
  EXPECT_TRUE(report.at("findings")[0].at("setting").is_null());

  // The export itself fails at the same card.
  const Outcome exported =
      run({"export", "ADP7", "--cards", path, "--setup", kAdp7Epip, "--out", path_of("out.epi")});
  EXPECT_EQ(exported.status, kExitErrors);
  EXPECT_NE(exported.err.find("zorvat: while reading card 68 of " + path +
                              " (ExportID E168): with this card"),
            std::string::npos)
      << exported.err;
}

TEST_F(ExportCheck, FixedWidthLineWiderThanItsLayoutNamesTheCardAndTheValue) {
  struct Case {
    std::string class_name;
    std::string setup;
    std::function<void(json&)> spoil;
    std::string property;
    std::string problem;  // what the finding says
  };
  // The command's reader follows the wider value, but the payroll system reads the
  // record by its columns.
  const std::string unreadable =
      ": its record is wider than the layout, whose columns the payroll system reads it by";
  const std::vector<Case> cases = {
      {"PrimePay", kPrimePay, [](json& card) { card["Number"] = 1234567; }, "Number",
       "Number 1234567 passes the employee number: columns 2-7, at most 999999" + unreadable},
      // A sign takes a letter of its own before the six digits the pattern writes.
      {"PrimePay", kPrimePay, [](json& card) { card["Number"] = -315; }, "Number",
       "Number -315 is written \"-000315\", 7 letters where the employee number: columns 2-7 "
       "holds 6" +
           unreadable},
      {"PCPreview", kPCPreview, [](json& card) { card["Number"] = -42; }, "Number",
       "Number -42 is written \"-000042\", 7 letters where the employee number: columns 1-6 "
       "holds 6" +
           unreadable},
      {"PCPreview", kPCPreview, [](json& card) { card["Number"] = 1234567; }, "Number",
       "Number 1234567 passes the employee number: columns 1-6, at most 999999" + unreadable},
      // 10,000 hours: 1,000,000 hundredths, seven digits where PrimePay has six.
      {"PrimePay", kPrimePay, [](json& card) { card["REG"] = 600000; }, "REG",
       "600000 minutes pass regular hundredths: columns 9-14, at most 9999.99 hours (599999 "
       "minutes)" +
           unreadable},
      // 100,000 hours: "100000.00", nine letters where PCPreview's column has eight, so
      // the blanks before them would be fewer than none: the export fails.
      {"PCPreview", kPCPreview, [](json& card) { card["REG"] = 6000000; }, "REG",
       "the export would fail: error 5 in zorvat.PCPreview.Execute: Invalid procedure call or "
       "argument (6000000 minutes pass the hours: columns 63-70, at most 99999.99 hours (5999999 "
       "minutes))"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.class_name + " " + c.property);
    const std::string path = cards_file(cards(4, [&](int i, json& card) {
      if (i == 2) c.spoil(card);
    }));
    const Outcome r = check(c.class_name, path, c.setup);
    EXPECT_EQ(r.status, kExitErrors) << r.err;
    EXPECT_NE(r.err.find("zorvat: error: card 2 (ExportID E102), property " + c.property + ": " +
                         c.problem),
              std::string::npos)
        << r.err;
    const json report = check_json(c.class_name, path, c.setup);
    ASSERT_EQ(report.at("findings").size(), 1u) << report.dump();
    EXPECT_EQ(report.at("findings")[0].at("card"), card_of(2, "E102", c.property));
  }
}

TEST_F(ExportCheck, IntuitPacNumberUnderFourDigitsNamesTheCard) {
  const std::string path = cards_file(cards(3, [](int i, json& card) {
    if (i == 1) card["Number"] = 315;
  }));
  const Outcome r = check("IntuitPAC", path, kIntuitPac, {"--title", kIntuitPacTitle});
  EXPECT_EQ(r.status, kExitErrors) << r.err;
  EXPECT_NE(r.err.find("zorvat: error: card 1 (ExportID E101), property Number: the export would "
                       "fail: error 5 in "
                       "zorvat.IntuitPAC.Execute: Invalid procedure call or argument (IntuitPAC "
                       "writes the last 4 digits of the employee number, and Number 315 has "
                       "fewer)\n"),
            std::string::npos)
      << r.err;
}

TEST_F(ExportCheck, AValuePastALimitTheClassDeclaresIsNamedForAnyClass) {
  // Tally, a class of the test tree, declares in its own folder that a CR LF in an
  // export ID ends its line; the command names the card by that alone.
  const std::string path = cards_file(cards(3, [](int i, json& card) {
    if (i == 1) card["ExportID"] = "E1\r\n01";
  }));
  const json report = check_json("Tally", path, "1");
  ASSERT_EQ(report["findings"].size(), 1u) << report.dump();
  EXPECT_EQ(report["findings"][0],
            (json{{"severity", "error"},
                  {"card", card_of(1, "E1\r\n01", "ExportID")},
                  {"setting", nullptr},
                  // The title line, E100's line, then "E1" alone on line 3.
                  {"message",
                   "the export ID holds a CR LF, which ends its line: its records would not read "
                   "back as the layout (not a Tally file: line 3, column 1: a line is \"export "
                   "ID,hours\")"}}));
  EXPECT_EQ(check("Tally", path, "1").status, kExitErrors);
}

TEST_F(ExportCheck, TooFewSettingsFieldsNameTheFirstMissingPosition) {
  const std::string path = cards_file(cards(5));
  const Outcome r = check("PrimePay", path, "4,02,20");
  EXPECT_EQ(r.status, kExitErrors) << r.err;
  EXPECT_NE(r.err.find("zorvat: error: settings position 3 (Vacation Pay Code): the settings "
                       "string has 3 fields; PrimePay reads 7 (positions 3 to 6 missing, from "
                       "Vacation Pay Code on)\n"),
            std::string::npos)
      << r.err;
  EXPECT_EQ(r.err.find("card"), std::string::npos) << r.err;
  const json report = check_json("PrimePay", path, "4,02,20");
  ASSERT_GE(report.at("findings").size(), 1u);
  EXPECT_EQ(report.at("findings")[0].at("setting"), setting_of(3, "Vacation Pay Code"));
  EXPECT_TRUE(report.at("findings")[0].at("card").is_null());
}

TEST_F(ExportCheck, ASettingTheClassRefusesIsAnErrorNamingItsPosition) {
  // ADP7's check: the batch sequence must be 0 to 99.
  const std::string refused =
      "ABC,500,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP";
  const json report = check_json("ADP7", cards_file(cards(2)), refused);
  ASSERT_EQ(report.at("findings").size(), 1u) << report.dump();
  EXPECT_EQ(report.at("findings")[0].at("severity"), "error");
  EXPECT_EQ(report.at("findings")[0].at("setting"), setting_of(1, "Batch Sequence Number"));
  EXPECT_EQ(report.at("error").at("number"), 1002);
}

TEST_F(ExportCheck, AGenericFieldThatCannotBeConvertedIsNamed) {
  const std::string setup = "0,1,0,1,0,False,True,False,False,False,,0 \r";
  const std::string path = cards_file(cards(3));
  const json report = check_json("Generic", path, setup);
  ASSERT_EQ(report.at("findings").size(), 1u) << report.dump();
  EXPECT_EQ(report.at("findings")[0].at("setting"), setting_of(11, "Line Terminator"));
  EXPECT_TRUE(report.at("findings")[0].at("card").is_null());

  // The export names the position, not a card.
  const Outcome exported =
      run({"export", "Generic", "--cards", path, "--setup", setup, "--out", path_of("out.txt")});
  EXPECT_EQ(exported.status, kExitErrors);
  EXPECT_EQ(exported.err,
            "zorvat: error 13 in zorvat.Generic.Execute: Type mismatch\n"
            "zorvat: while reading settings position 11 (Line Terminator): \"0 \\r\" cannot be "
            "converted as Generic reads the field\n");
}

// PrimePay's check compares its pay codes as numbers: a field that is no number raises
// 13 in the check itself, before any card is read. validate, export and --check name
// the field, with a stray CR shown as "\r".
TEST_F(ExportCheck, APayCodeTheCheckCannotConvertIsNamedByValidate) {
  const Outcome cr = run({"validate", "PrimePay", "--setup", "4,02,20,23,24,25,28\r"});
  EXPECT_EQ(cr.status, kExitErrors);
  EXPECT_EQ(cr.out, "");
  EXPECT_EQ(cr.err,
            "zorvat: error 13 in zorvat.PrimePay.Validate: Type mismatch\n"
            "zorvat: while reading settings position 6 (Other Pay Code): \"28\\r\" cannot be "
            "converted as PrimePay reads the field\n");

  const Outcome letter = run({"validate", "PrimePay", "--setup", "4,02,20,x,24,25,28", "--json"});
  EXPECT_EQ(letter.status, kExitErrors);
  const json error = json::parse(letter.out).at("error");
  EXPECT_EQ(error.at("number"), 13);
  EXPECT_EQ(error.at("source"), "zorvat.PrimePay.Validate");
  EXPECT_EQ(error.at("setting"), setting_of(3, "Vacation Pay Code"));
  EXPECT_EQ(error.at("note"), "\"x\" cannot be converted as PrimePay reads the field");
  EXPECT_FALSE(error.contains("card"));
}

TEST_F(ExportCheck, APayCodeTheCheckCannotConvertIsNamedByExportAndCheck) {
  const std::string path = cards_file(cards(3));
  const std::string out = path_of("out.dat");
  const std::string setup = "4,02,20,23,24, 25 ,28";
  const std::string with_letter = "4,02,20,23,24,25,2B";

  const Outcome exported =
      run({"export", "PrimePay", "--cards", path, "--setup", with_letter, "--out", out});
  EXPECT_EQ(exported.status, kExitErrors);
  EXPECT_EQ(exported.err,
            "zorvat: error 13 in zorvat.PrimePay.Validate: Type mismatch\n"
            "zorvat: while reading settings position 6 (Other Pay Code): \"2B\" cannot be "
            "converted as PrimePay reads the field\n");
  EXPECT_FALSE(std::filesystem::exists(out));

  const Outcome checked = check("PrimePay", path, with_letter);
  EXPECT_EQ(checked.status, kExitErrors);
  EXPECT_EQ(checked.err,
            "zorvat: error 13 in zorvat.PrimePay.Validate: Type mismatch\n"
            "zorvat: error: settings position 6 (Other Pay Code): the class's check refuses the "
            "settings: error 13 in zorvat.PrimePay.Validate: Type mismatch (\"2B\" cannot be "
            "converted as PrimePay reads the field)\n");

  // Blanks around a number convert, as the classic conversion allows them.
  EXPECT_EQ(check("PrimePay", path, setup).status, kExitOk);
}

TEST_F(ExportCheck, SeveralFieldsWithACrAreNamedFromTheFirst) {
  // Each field with a CR raises 13 while another still does: the string with every field
  // trimmed gets through, and the first of them is named.
  const Outcome r = run({"validate", "PrimePay", "--setup", "4,02,20,23\r,24,25,28\r\n"});
  EXPECT_EQ(r.status, kExitErrors);
  EXPECT_EQ(r.err,
            "zorvat: error 13 in zorvat.PrimePay.Validate: Type mismatch\n"
            "zorvat: while reading settings position 3 (Vacation Pay Code): \"23\\r\" cannot be "
            "converted as PrimePay reads the field\n");
}

// --- Warnings: a file is written, but a payroll system may misread it ------------------

TEST_F(ExportCheck, IntuitPacNumbersWithTheSameLastFourDigitsAreOneEmployee) {
  const std::string path = cards_file(cards(3, [](int i, json& card) {
    if (i == 0) card["Number"] = 10315;
    if (i == 2) card["Number"] = 20315;
  }));
  const std::vector<std::string> title = {"--title", kIntuitPacTitle};
  const Outcome r = check("IntuitPAC", path, kIntuitPac, title);
  EXPECT_EQ(r.status, kExitOk) << r.err;
  EXPECT_NE(r.err.find("zorvat: warning: card 2 (ExportID E102), property Number: Number 20315 is "
                       "written as employee 0315, as is the number of card 0 (ExportID E100): the "
                       "payroll system takes the two for one employee\n"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("zorvat: warning: card 0 (ExportID E100), property Number: Number 10315 is "
                       "cut to its last 4 digits, 0315\n"),
            std::string::npos)
      << r.err;
  std::vector<std::string> strict = title;
  strict.push_back("--strict");
  EXPECT_EQ(check("IntuitPAC", path, kIntuitPac, strict).status, kExitWarnings);

  const json report = check_json("IntuitPAC", path, kIntuitPac, title);
  ASSERT_EQ(report.at("findings").size(), 3u) << report.dump();
  for (const json& finding : report.at("findings")) EXPECT_EQ(finding.at("severity"), "warning");
  EXPECT_EQ(report.at("findings")[2].at("card"), card_of(2, "E102", "Number"));
}

// A company whose every number has five digits: the first 20 cards are named, the
// other warnings counted in one line, so the report of a large batch still reads.
TEST_F(ExportCheck, WarningsOfManyCardsNameTwentyAndCountTheRest) {
  const std::string path =
      cards_file(cards(25, [](int i, json& card) { card["Number"] = 10000 + i; }));
  const json report = check_json("IntuitPAC", path, kIntuitPac, {"--title", kIntuitPacTitle});
  // 25 numbers cut to four digits, each its own employee: 25 warnings, 20 named.
  ASSERT_EQ(report.at("findings").size(), 21u) << report.dump();
  EXPECT_EQ(report.at("findings")[19].at("card"), card_of(19, "E119", "Number"));
  EXPECT_EQ(report.at("findings")[20].at("card"), nullptr);
  EXPECT_EQ(report.at("findings")[20].at("severity"), "warning");
  EXPECT_EQ(report.at("findings")[20].at("message"),
            "5 more warnings of the cards like those above");
}

// The same for errors: 22 employee numbers of seven digits, 20 named and 2 counted.
TEST_F(ExportCheck, ErrorsOfManyCardsNameTwentyAndCountTheRest) {
  const std::string path =
      cards_file(cards(22, [](int i, json& card) { card["Number"] = 1000000 + i; }));
  const Outcome r = check("PrimePay", path, kPrimePay);
  EXPECT_EQ(r.status, kExitErrors);
  const json report = check_json("PrimePay", path, kPrimePay);
  ASSERT_EQ(report.at("findings").size(), 21u) << report.dump();
  EXPECT_EQ(report.at("findings")[19].at("card"), card_of(19, "E119", "Number"));
  EXPECT_EQ(report.at("findings")[20].at("message"), "2 more cards have a value past its column");
}

TEST_F(ExportCheck, APCPreviewNameLongerThanItsColumnIsCut) {
  // "Maximiliana Featherstonehaugh": 29 letters in a column of 25.
  const std::string path = cards_file(cards(2, [](int i, json& card) {
    if (i == 1) {
      card["FirstName"] = "Maximiliana";
      card["LastName"] = "Featherstonehaugh";
    }
  }));
  const json report = check_json("PCPreview", path, kPCPreview);
  ASSERT_EQ(report.at("findings").size(), 1u) << report.dump();
  EXPECT_EQ(report.at("findings")[0].at("severity"), "warning");
  EXPECT_EQ(report.at("findings")[0].at("card"), card_of(1, "E101", "LastName"));
  EXPECT_EQ(report.at("findings")[0].at("message"),
            "the name \"Maximiliana Featherstonehaugh\" has 29 letters; the name (columns 7-31) "
            "holds 25, so it is cut to \"Maximiliana Featherstoneh\"");
}

TEST_F(ExportCheck, Adp7FormatWithABlankOrACrIsAWarningOnPosition13) {
  const std::string path = cards_file(cards(2));
  for (const std::string format : {" EPIP", "EPIP\r"}) {
    std::string setup = kAdp7Epip;
    setup.replace(setup.rfind("EPIP"), 4, format);
    const json report = check_json("ADP7", path, setup);
    ASSERT_EQ(report.at("findings").size(), 1u) << report.dump();
    EXPECT_EQ(report.at("findings")[0].at("severity"), "warning");
    EXPECT_EQ(report.at("findings")[0].at("setting"), setting_of(13, "Output Format"));
    EXPECT_EQ(check("ADP7", path, setup, {"--strict"}).status, kExitWarnings);
  }
}

TEST_F(ExportCheck, GenericWithoutSeparatorOrLineEndIsAWarning) {
  const std::string path = cards_file(cards(2));
  // The setup form's design values choose no separator.
  const json none = check_json("Generic", path, "0,0,0,0,0,False,False,False,False,False,,0");
  ASSERT_EQ(none.at("findings").size(), 1u) << none.dump();
  EXPECT_EQ(none.at("findings")[0].at("setting"), setting_of(9, "Separator Custom"));
  EXPECT_EQ(none.at("findings")[0].at("message"),
            "none of positions 5 to 9 is True, so no separator is chosen: the fields of a line "
            "run together");

  // A file without line ends is written, and reconcile tells its records apart by
  // their export IDs; a payroll system may not: a warning.
  const json no_end = check_json("Generic", path, "0,1,0,1,0,False,True,False,False,False,,7");
  ASSERT_EQ(no_end.at("findings").size(), 1u) << no_end.dump();
  EXPECT_EQ(no_end.at("findings")[0].at("severity"), "warning");
  EXPECT_EQ(no_end.at("findings")[0].at("setting"), setting_of(11, "Line Terminator"));
  EXPECT_EQ(no_end.at("findings")[0].at("message"),
            "\"7\" is none of 0 to 3, so the lines have no line end: the file is one line");
}

TEST_F(ExportCheck, APositionTheClassDoesNotUseIsAWarning) {
  const std::string path = cards_file(cards(2));
  // PrimePay writes no pay code for other time.
  const json primepay = check_json("PrimePay", path, "4,02,20,23,24,25,30");
  ASSERT_EQ(primepay.at("findings").size(), 1u) << primepay.dump();
  EXPECT_EQ(primepay.at("findings")[0].at("severity"), "warning");
  EXPECT_EQ(primepay.at("findings")[0].at("setting"), setting_of(6, "Other Pay Code"));
  EXPECT_EQ(primepay.at("findings")[0].at("message"),
            "\"30\" makes no difference to the file: PrimePay writes the same with \"28\", so it "
            "does not use this position with these settings");

  // ADP7's code names are titles of the CSV layout; EPIP has none.
  std::string renamed = kAdp7Epip;
  renamed.replace(renamed.find("Vacation Hours"), 14, "Vac");
  const json epip = check_json("ADP7", path, renamed);
  ASSERT_EQ(epip.at("findings").size(), 1u) << epip.dump();
  EXPECT_EQ(epip.at("findings")[0].at("setting"), setting_of(6, "Vacation Code Name"));
  renamed.replace(renamed.rfind("EPIP"), 4, "CSV");
  EXPECT_EQ(check_json("ADP7", path, renamed).at("findings"), json::array());
}

TEST_F(ExportCheck, MoreFieldsThanTheClassReadsIsAWarning) {
  const json report = check_json("PrimePay", cards_file(cards(2)), kPrimePay + ",9,9");
  ASSERT_EQ(report.at("findings").size(), 1u) << report.dump();
  EXPECT_EQ(report.at("findings")[0].at("severity"), "warning");
  EXPECT_EQ(report.at("findings")[0].at("setting"), setting_of(7, ""));
  EXPECT_EQ(report.at("findings")[0].at("message"),
            "the settings string has 9 fields; PrimePay reads 7 (positions 7 to 8 not read)");
}

// --- A clean check: the export succeeds and its file reconciles --------------------------

TEST_F(ExportCheck, ACleanCheckMeansTheFileIsWrittenAndReconciles) {
  struct Clean {
    std::string class_name;
    std::string setup;
    std::string title;
  };
  const std::vector<Clean> cases = {
      {"Generic", kGeneric, ""},
      {"ADP7", kAdp7Epip, ""},
      {"IntuitPAC", kIntuitPac, kIntuitPacTitle},
      {"PCPayLink", "7,A001,3,12,VA,HO,QS,R3", ""},
      {"PCPreview", kPCPreview, ""},
      {"PrimePay", kPrimePay, ""},
  };
  const std::string path = cards_file(cards(6, [](int i, json& card) {
    card["OT1"] = 30 * i;
    card["VAC"] = i == 3 ? 480 : 0;
  }));
  for (const Clean& c : cases) {
    SCOPED_TRACE(c.class_name);
    const Outcome checked = check(c.class_name, path, c.setup, {"--title", c.title, "--strict"});
    ASSERT_EQ(checked.status, kExitOk) << checked.err;
    EXPECT_EQ(checked.err, "");
    const json report = check_json(c.class_name, path, c.setup, {"--title", c.title});
    EXPECT_EQ(report.at("findings"), json::array());
    EXPECT_FALSE(report.at("fileRead"));  // the fields of the check's report stay

    const std::string written = path_of("written.out");
    const Outcome exported = run({"export", c.class_name, "--cards", path, "--setup", c.setup,
                                  "--title", c.title, "--out", written});
    ASSERT_EQ(exported.status, kExitOk) << exported.err;
    const Outcome reconciled = run({"reconcile", c.class_name, "--cards", path, "--setup", c.setup,
                                    "--title", c.title, written});
    EXPECT_EQ(reconciled.status, kExitOk) << reconciled.out << reconciled.err;
  }
}

// --- The export's own errors and `validate` ----------------------------------------------

TEST_F(ExportCheck, ExportWithTooFewFieldsBlamesTheSettingsNotACard) {
  // Card 3 has vacation time, whose pay code is the first position the string lacks.
  const std::string path = cards_file(cards(5, [](int i, json& card) {
    if (i == 3) card["VAC"] = 480;
  }));
  const Outcome r =
      run({"export", "PrimePay", "--cards", path, "--setup", "4,02,20", "--out", path_of("x.dat")});
  EXPECT_EQ(r.status, kExitErrors);
  EXPECT_EQ(r.err,
            "zorvat: warning: the settings string has 3 fields; PrimePay reads 7 (positions 3 to 6 "
            "missing, from Vacation Pay Code on)\n"
            "zorvat: error 9 in zorvat.PrimePay.Execute: Subscript out of range\n"
            "zorvat: while reading settings position 3 (Vacation Pay Code): the settings string "
            "has 3 fields; PrimePay reads 7\n");
  const Outcome as_json = run({"export", "PrimePay", "--cards", path, "--setup", "4,02,20", "--out",
                               path_of("x.dat"), "--json"});
  const json report = json::parse(as_json.out);
  EXPECT_FALSE(report.at("error").contains("card"));
  EXPECT_EQ(report.at("error").at("setting"), setting_of(3, "Vacation Pay Code"));
}

// A plain export has no warnings to be strict about: --strict alone is a usage error,
// and nothing is written.
TEST_F(ExportCheck, StrictWithoutCheckIsAUsageError) {
  const std::string path = cards_file(cards(2));
  const std::string out = path_of("out.txt");
  const Outcome r =
      run({"export", "PrimePay", "--cards", path, "--setup", kPrimePay, "--strict", "--out", out});
  EXPECT_EQ(r.status, 2) << r.err;
  EXPECT_EQ(r.err, "zorvat: --strict requires --check (see zorvat --help)\n");
  EXPECT_FALSE(std::filesystem::exists(out));
}

TEST_F(ExportCheck, ValidateWarnsOfTheFieldCountAndKeepsItsVerdict) {
  const Outcome few = run({"validate", "PrimePay", "--setup", "4,02,20"});
  EXPECT_EQ(few.status, kExitOk);
  EXPECT_EQ(few.out, "ok\n");
  EXPECT_EQ(few.err,
            "zorvat: warning: the settings string has 3 fields; PrimePay reads 7 (positions 3 to 6 "
            "missing, from Vacation Pay Code on)\n");
  const Outcome many = run({"validate", "PrimePay", "--setup", kPrimePay + ",1", "--json"});
  EXPECT_EQ(many.status, kExitOk);
  EXPECT_EQ(json::parse(many.out).at("warnings"),
            json::array({"the settings string has 8 fields; PrimePay reads 7 (position 7 not "
                         "read)"}));
  const Outcome right = run({"validate", "PrimePay", "--setup", kPrimePay});
  EXPECT_EQ(right.err, "");
}

TEST_F(ExportCheck, ValidateNamesThePositionItsCheckRefuses) {
  const Outcome r = run({"validate", "PrimePay", "--setup", "400,02,20,23,24,25,28"});
  EXPECT_EQ(r.status, kExitErrors);
  EXPECT_NE(r.err.find("zorvat: while reading settings position 0 (Batch Sequence Number)\n"),
            std::string::npos)
      << r.err;
}

}  // namespace
