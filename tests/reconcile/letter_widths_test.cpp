// Widths count letters: the cursor and the readers take every fixed width, column and
// error column in UTF-16 code units of the UTF-8 text, so names with accents, curly
// apostrophes and characters beyond the Basic Multilingual Plane read back in place.
// Every record here is written out by hand, its blanks counted to the letter.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "export_classes.h"
#include "reconcile_test_support.h"
#include "zorvat/reconcile/reconcile.h"
#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

using namespace zorvat;
using namespace zorvat::testing_support;
using reconcile::Cursor;
using reconcile::FileRecord;
using reconcile::Line;
using reconcile::ReadError;

namespace {

// U+1D11E MUSICAL SYMBOL G CLEF: four bytes of UTF-8, two UTF-16 code units.
const std::string kClef = "\xF0\x9D\x84\x9E";

std::string blanks(std::size_t count) {
  return std::string(count, ' ');
}

// employee|code|hundredths of an hour, line
std::vector<std::string> described(const std::vector<FileRecord>& records) {
  std::vector<std::string> texts;
  texts.reserve(records.size());
  for (const FileRecord& record : records)
    texts.push_back(record.employee + "|" + record.code + "|" +
                    std::to_string(record.amount / reconcile::kUnitsPerHundredth) + " line " +
                    std::to_string(record.line));
  return texts;
}

// Cards in the command line's format: id, number, first, middle, last name, and the
// minutes of REG, OT1 and VAC.
struct Card {
  std::string export_id;
  int number;
  std::string first;
  std::string mi;
  std::string last;
  int reg = 0;
  int ot1 = 0;
  int vac = 0;
};

Variant cards_of(const std::vector<Card>& list) {
  nlohmann::ordered_json document;
  document["PeriodEnd"] = "2004-03-06";
  nlohmann::ordered_json cards = nlohmann::ordered_json::array();
  for (const Card& card : list) {
    nlohmann::ordered_json json;
    json["ExportID"] = card.export_id;
    json["Number"] = card.number;
    json["Shift"] = 1;
    json["REG"] = card.reg;
    json["OT1"] = card.ot1;
    json["OT2"] = 0;
    json["VAC"] = card.vac;
    json["HOL"] = 0;
    json["SIC"] = 0;
    json["OTH"] = 0;
    json["FirstName"] = card.first;
    json["MI"] = card.mi;
    json["LastName"] = card.last;
    json["Badge"] = "B" + std::to_string(card.number);
    json["EditREG"] = 0;
    json["EditOT1"] = 0;
    json["EditOT2"] = 0;
    json["PeriodStart"] = "2004-02-29";
    json["Days"] = nlohmann::ordered_json::array();
    cards.push_back(json);
  }
  document["cards"] = cards;
  return cards_from_json(document.dump());
}

const reconcile::ClassRules& rules_of(const char* class_name) {
  const reconcile::ClassRules* rules = formats::find_export_class(class_name);
  if (!rules) throw std::logic_error("no rules");
  return *rules;
}

// --- The cursor ------------------------------------------------------------------------

// A record read by its declaration: the cursor must stand at each column's first
// column, give or take what wider or narrower fields before it moved.
constexpr Column kTag{"the tag", 1, 1, "D"};
constexpr Column kCode{"the code", 2, 1};
constexpr Column kHundredths{"the hundredths", 3, 5, {}, "00000"};
constexpr Column kEnd{"the end", 8, 1, "|"};

TEST(CursorColumns, ReadsADeclaredRecordAndNamesTheColumnThatFails) {
  Cursor cursor("Test", Line{"DA00150|", 1});
  cursor.expect(kTag);
  cursor.expect(kCode, "A");
  EXPECT_EQ(cursor.number(kHundredths), 150);
  cursor.expect(kEnd);
  cursor.expect_end();

  Cursor bad("Test", Line{"DA0015x|", 2});
  bad.expect(kTag);
  bad.expect(kCode, "A");
  try {
    bad.number(kHundredths);
    FAIL() << "no error";
  } catch (const reconcile::ReadError& error) {
    EXPECT_NE(std::string(error.what()).find("the hundredths"), std::string::npos) << error.what();
    EXPECT_EQ(error.line(), 2u);
    EXPECT_EQ(error.column(), 3u);
  }
}

TEST(CursorColumns, AWiderNarrowerOrNegativeFieldMovesTheColumnsAfterIt) {
  Cursor wide("Test", Line{"DAB00150|", 1});
  wide.expect(kTag);
  wide.expect(kCode, "AB");  // a two-letter code in a one-column field
  EXPECT_EQ(wide.number(kHundredths), 150);
  wide.expect(kEnd);

  Cursor narrow("Test", Line{"D00150|", 1});
  narrow.expect(kTag);
  narrow.expect(kCode, "");  // an empty code
  EXPECT_EQ(narrow.number(kHundredths), 150);
  narrow.expect(kEnd);

  Cursor negative("Test", Line{"DA-00150|", 1});
  negative.expect(kTag);
  negative.expect(kCode, "A");
  EXPECT_EQ(negative.number(kHundredths), -150);
  negative.expect(kEnd);
}

TEST(CursorColumns, AReaderOutOfStepWithItsLayoutIsABug) {
  Cursor cursor("Test", Line{"DA00150|", 1});
  cursor.expect(kTag);
  EXPECT_THROW(cursor.number(kHundredths), std::logic_error);  // the code was skipped
}

TEST(CursorLetters, TakesWidthsInLetters) {
  Cursor cursor("Test", Line{"José Peña|Renée Müller-Ñúñez|Grace O’Neil|Šimek", 1});
  EXPECT_EQ(cursor.take(4, "a first name"), "José");
  EXPECT_EQ(cursor.column(), 4u);
  EXPECT_EQ(cursor.position(), 5u);  // "é" is two bytes
  cursor.expect(" ", "a blank");
  EXPECT_EQ(cursor.take(4, "a last name"), "Peña");
  cursor.expect("|", "a bar");
  EXPECT_EQ(cursor.take(18, "a name"), "Renée Müller-Ñúñez");
  cursor.expect("|", "a bar");
  EXPECT_EQ(cursor.take(12, "a name"), "Grace O’Neil");
  cursor.expect("|", "a bar");
  EXPECT_EQ(cursor.column(), 42u);
  EXPECT_EQ(cursor.take(5, "a name"), "Šimek");
  EXPECT_TRUE(cursor.at_end());
  EXPECT_EQ(cursor.column(), 47u);
}

TEST(CursorLetters, ACharacterBeyondTheBasicPlaneCountsTwo) {
  const std::string text = "a" + kClef + "b";
  Cursor cursor("Test", Line{text, 1});
  EXPECT_EQ(cursor.take(3, "three letters"), "a" + kClef);
  EXPECT_EQ(cursor.column(), 3u);
  EXPECT_EQ(cursor.take(1, "the last"), "b");
  EXPECT_TRUE(cursor.at_end());
}

TEST(CursorLetters, ACharacterAcrossTheEndOfAColumnIsRefusedAtItsColumn) {
  const std::string text = "ab" + kClef + "c";
  Cursor cursor("Test", Line{text, 1});
  try {
    cursor.take(3, "the name");
    FAIL() << "accepted";
  } catch (const ReadError& error) {
    EXPECT_EQ(error.line(), 1u);
    EXPECT_EQ(error.column(), 3u);
    EXPECT_STREQ(error.what(),
                 "not a Test file: line 1, column 3: U+1D11E stands across the end of the name");
  }
}

TEST(CursorLetters, ErrorsNameTheLetterColumn) {
  Cursor cursor("Test", Line{"Peña Ñúñez x", 4});
  cursor.take(4, "a name");
  cursor.expect(" ", "a blank");
  cursor.take(5, "a name");
  try {
    cursor.expect("|", "a bar");
    FAIL() << "accepted";
  } catch (const ReadError& error) {
    // Ten letters before it (fourteen bytes).
    EXPECT_EQ(error.column(), 11u);
    EXPECT_STREQ(error.what(), "not a Test file: line 4, column 11: expected a bar \"|\"");
  }
}

TEST(CursorLetters, RunsOutOfLettersNotBytes) {
  Cursor cursor("Test", Line{"Peña", 1});
  // Five bytes, four letters.
  EXPECT_THROW(cursor.take(5, "five letters"), ReadError);
  EXPECT_EQ(cursor.take(4, "four letters"), "Peña");
}

TEST(CursorLetters, NumbersAndBlankFillCountLetters) {
  Cursor cursor("Test", Line{"Müller  12.50   ", 1});
  EXPECT_EQ(cursor.take(6, "a name"), "Müller");
  cursor.expect_blanks(2, "two blanks");
  EXPECT_EQ(cursor.number(5, 2, "hours"), 1250);
  // Sixteen letters in all, seventeen bytes.
  Cursor full = cursor;
  full.expect_blank_fill(16);
  EXPECT_TRUE(full.at_end());
  EXPECT_THROW(cursor.expect_blank_fill(17), ReadError);
}

TEST(CursorLetters, NumberErrorsNameTheLetterColumn) {
  Cursor cursor("Test", Line{"Ñú12x4", 2});
  cursor.take(2, "a code");
  try {
    cursor.number(4, 0, "hundredths");
    FAIL() << "accepted";
  } catch (const ReadError& error) {
    EXPECT_EQ(error.column(), 3u);
  }
}

TEST(CursorLetters, SinceAndPositionsAreBytesOfTheText) {
  Cursor cursor("Test", Line{"Šimek,7", 1});
  const std::size_t start = cursor.position();
  EXPECT_EQ(cursor.take_until(",", "a name"), "Šimek");
  EXPECT_EQ(cursor.since(start), "Šimek,");
  EXPECT_EQ(cursor.column(), 6u);
}

TEST(TextReaderLetters, LetterColumnAndRightHandCut) {
  EXPECT_EQ(reconcile::letter_column("José Peña", 0), 1u);
  EXPECT_EQ(reconcile::letter_column("José Peña", 6), 6u);    // the "P" after "José "
  EXPECT_EQ(reconcile::letter_column("José Peña", 11), 10u);  // the end
  EXPECT_EQ(zorvat::text_right("Peña", 3), "eña");
  EXPECT_EQ(zorvat::text_right("Peña", 4), "Peña");
  EXPECT_EQ(zorvat::text_right("Peña", 9), "Peña");
  EXPECT_EQ(zorvat::text_right("O’Neil", 5), "’Neil");
  // A cut that would split the clef keeps it whole.
  EXPECT_EQ(zorvat::text_right("a" + kClef, 1), kClef);
  EXPECT_EQ(zorvat::text_right("ab" + kClef, 2), kClef);
}

TEST(TextReaderLetters, AnUnterminatedLastLineIsReportedAtItsLetterColumn) {
  try {
    reconcile::split_lines("Test", "Ann\r\nPeña", "\r\n", true);
    FAIL() << "accepted";
  } catch (const ReadError& error) {
    EXPECT_EQ(error.line(), 2u);
    EXPECT_EQ(error.column(), 5u);
  }
}

// --- PCPreview: the 25-letter name column -----------------------------------------------

const std::string kPreviewSetup = "12,A,B,C,7,D,E,F,G,0,0,0,0";

// One earnings record: number (6), name (25), 19 blanks, "E ", the pay code, 9 blanks,
// the hours (8), 19 blanks, the sequence "7" and 37 blanks.
std::string preview_record(const std::string& number, const std::string& name_column,
                           const std::string& code, const std::string& hours_column) {
  return number + name_column + blanks(19) + "E " + code + blanks(9) + hours_column + blanks(19) +
         "7" + blanks(37);
}

std::string preview_file() {
  return preview_record("000315", "José Peña" + blanks(16), "A", "   40.00") +
         preview_record("000315", "José Peña" + blanks(16), "B", "    1.50") +
         preview_record("000316", "Renée Müller-Ñúñez" + blanks(7), "A", "    8.00") +
         preview_record("000317", "Grace O’Neil" + blanks(13), "D", "    8.00") +
         preview_record("000318", "Ann Šimek" + blanks(16), "A", "     .50") +
         // "Ángela-María Castañeda-Jiménez" is 30 letters; the column holds its first 25.
         preview_record("000319", "Ángela-María Castañeda-Ji", "A", "   12.25") +
         // "Ann Lee " and the clef: ten code units.
         preview_record("000320", "Ann Lee " + kClef + blanks(15), "A", "    2.00");
}

std::vector<Card> preview_cards() {
  return {
      {"E315", 315, "José", "", "Peña", 2400, 90},
      {"E316", 316, "Renée", "", "Müller-Ñúñez", 480},
      {"E317", 317, "Grace", "", "O’Neil", 0, 0, 480},
      {"E318", 318, "Ann", "", "Šimek", 30},
      {"E319", 319, "Ángela-María", "", "Castañeda-Jiménez", 735},
      {"E320", 320, "Ann", "", "Lee " + kClef, 120},
  };
}

TEST(PCPreviewLetters, NamesWithAccentsKeepTheRecordInPlace) {
  const auto contents =
      rules_of("PCPreview").read(preview_file(), SettingsFields(kPreviewSetup), "", Variant());
  EXPECT_EQ(described(contents.records), (std::vector<std::string>{
                                             "000315|A|4000 line 1",
                                             "000315|B|150 line 2",
                                             "000316|A|800 line 3",
                                             "000317|D|800 line 4",
                                             "000318|A|50 line 5",
                                             "000319|A|1225 line 6",
                                             "000320|A|200 line 7",
                                         }));
}

// An employee number of seven digits is written whole and moves the record's columns
// after it; the cards' numbers tell the reader how wide it is, so a name that starts
// with a digit stays the name's.
TEST(PCPreviewLetters, AnEmployeeNumberWiderThanItsColumnMovesTheRecord) {
  const std::string file = preview_record("1234567", "Ann Lee" + blanks(18), "A", "   40.00") +
                           preview_record("000316", "7 Bob Ray" + blanks(16), "B", "    1.50");
  const Variant cards = testing_support::cards_from_json(
      R"({"cards": [{"Number": 1234567}, {"Number": 316}, {"Number": 3167}]})");
  const auto contents = rules_of("PCPreview").read(file, SettingsFields(kPreviewSetup), "", cards);
  EXPECT_EQ(described(contents.records),
            (std::vector<std::string>{"1234567|A|4000 line 1", "000316|B|150 line 2"}));
}

TEST(PCPreviewLetters, TheFileReconcilesWithItsCards) {
  const auto result = reconcile::reconcile(rules_of("PCPreview"), cards_of(preview_cards()),
                                           kPreviewSetup, "", preview_file());
  EXPECT_EQ(result.unexplained(), 0u) << reconcile::table_text(result);
}

TEST(PCPreviewLetters, ANameColumnCountedInBytesIsRefused) {
  // "José Peña" padded to 25 bytes holds only 23 letters: the record is two short.
  const std::string file = preview_record("000315", "José Peña" + blanks(14), "A", "   40.00");
  try {
    rules_of("PCPreview").read(file, SettingsFields(kPreviewSetup), "", Variant());
    FAIL() << "accepted";
  } catch (const ReadError& error) {
    EXPECT_EQ(error.line(), 1u);
    // Its blanks run out at column 49, where the "E" stands.
    EXPECT_EQ(error.column(), 49u) << error.what();
  }
}

TEST(PCPreviewLetters, AClefAcrossTheEndOfTheNameIsRefused) {
  // 24 letters and the clef would be 26 code units: a writer leaves the clef out.
  const std::string file =
      preview_record("000320", "Abcdefghijk Lmnopqrstuvw" + kClef, "A", "    2.00");
  try {
    rules_of("PCPreview").read(file, SettingsFields(kPreviewSetup), "", Variant());
    FAIL() << "accepted";
  } catch (const ReadError& error) {
    EXPECT_EQ(error.column(), 31u) << error.what();
    EXPECT_NE(std::string(error.what()).find("U+1D11E stands across the end of the name"),
              std::string::npos)
        << error.what();
  }
}

TEST(PCPreviewLetters, WhatTheClassWritesReconciles) {
  const Variant cards = cards_of(preview_cards());
  const std::string written = export_bytes("PCPreview", cards, kPreviewSetup);
  const auto result =
      reconcile::reconcile(rules_of("PCPreview"), cards, kPreviewSetup, "", written);
  EXPECT_EQ(result.unexplained(), 0u) << reconcile::table_text(result);
}

// --- Generic: names with accents and blanks in the name fields ---------------------------

std::vector<Card> generic_cards() {
  return {
      {"Peña-7", 315, "José", "", "Peña", 2400, 90},
      {"O’Neil-8", 316, "Grace", "Q", "O’Neil", 480},
  };
}

struct GenericCase {
  std::string name;
  std::string setup;
  std::string file;
};

std::vector<GenericCase> generic_cases() {
  return {
      {"FullNameComma", "0,0,0,1,1,False,True,False,False,False,,0",
       "Peña-7,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00,José  Peña,315\r\n"
       "O’Neil-8,000000316,01,8.00,0.00,0.00,0.00,0.00,0.00,0.00,Grace Q O’Neil,316\r\n"},
      {"LastFirstQuotedWithTitles", "1,1,0,1,0,False,True,False,False,False,,2",
       "\"EXPORT ID\",\"EmployeeNumber\",\"ShiftCode\",\"RegularHours\",\"FirstLevelOvertime\","
       "\"SecondLevelOvertime\",\"VACATION\",\"HOLIDAY\",\"SICK\",\"OTHER\",\"LastName\","
       "\"FirstName\",\"BadgeNumber\"\n"
       "\"Peña-7\",\"000000315\",\"01\",\"40.00\",\"1.50\",\"0.00\",\"0.00\",\"0.00\",\"0.00\","
       "\"0.00\",\"Peña\",\"José\",\"B315\"\n"
       "\"O’Neil-8\",\"000000316\",\"01\",\"8.00\",\"0.00\",\"0.00\",\"0.00\",\"0.00\",\"0.00\","
       "\"0.00\",\"O’Neil\",\"Grace\",\"B316\"\n"},
      {"FullNameFourBlanks", "0,0,0,1,1,True,False,False,False,False,,0",
       "Peña-7    000000315    01    40.00    1.50    0.00    0.00    0.00    0.00    0.00    "
       "José  Peña    315\r\n"
       "O’Neil-8    000000316    01    8.00    0.00    0.00    0.00    0.00    0.00    0.00    "
       "Grace Q O’Neil    316\r\n"},
      {"FullNameRunTogether", "0,0,1,1,1,False,False,False,False,False,,0",
       "Peña-7000000315"
       "0140.001.500.000.000.000.000.00JoséPeña315\r\n"
       "O’Neil-8000000316"
       "018.000.000.000.000.000.000.00GraceQO’Neil316\r\n"},
  };
}

class GenericLetters : public testing::TestWithParam<GenericCase> {};

TEST_P(GenericLetters, NamesReadBackAndTheFileReconciles) {
  const GenericCase& test_case = GetParam();
  const Variant cards = cards_of(generic_cards());
  const auto contents =
      rules_of("Generic").read(test_case.file, SettingsFields(test_case.setup), "", cards);
  const std::size_t first_line = test_case.setup.starts_with("1,1") ? 2 : 1;
  std::vector<std::string> expected;
  for (const char* code : {"REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"}) {
    const std::string hundredths = std::string(code) == "REG"   ? "4000"
                                   : std::string(code) == "OT1" ? "150"
                                                                : "0";
    expected.push_back("Peña-7|" + std::string(code) + "|" + hundredths + " line " +
                       std::to_string(first_line));
  }
  for (const char* code : {"REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"})
    expected.push_back("O’Neil-8|" + std::string(code) + "|" +
                       (std::string(code) == "REG" ? "800" : "0") + " line " +
                       std::to_string(first_line + 1));
  EXPECT_EQ(described(contents.records), expected);

  const auto result =
      reconcile::reconcile(rules_of("Generic"), cards, test_case.setup, "", test_case.file);
  EXPECT_EQ(result.unexplained(), 0u) << reconcile::table_text(result);
}

TEST_P(GenericLetters, WhatTheClassWritesReadsTheSame) {
  const GenericCase& test_case = GetParam();
  const Variant cards = cards_of(generic_cards());
  const std::string written = export_bytes("Generic", cards, test_case.setup);
  const auto from_class =
      rules_of("Generic").read(written, SettingsFields(test_case.setup), "", cards);
  const auto by_hand =
      rules_of("Generic").read(test_case.file, SettingsFields(test_case.setup), "", cards);
  EXPECT_EQ(described(from_class.records), described(by_hand.records));
}

std::string generic_case_name(const testing::TestParamInfo<GenericCase>& param_info) {
  return param_info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Names, GenericLetters, testing::ValuesIn(generic_cases()),
                         generic_case_name);

// --- ADP7 EPIP: the header is filled to column 79 in letters ------------------------------

TEST(Adp7Letters, HeaderFillAndExportIdCountLetters) {
  const std::string header = "A001ÑBC00205z" + blanks(66) + "7\r\n";
  const std::string employee = "B003Peña-70041010010120004000 0130000150 z\r\n";
  const std::string trailer = "C03000000004000 03100000000150 z" + blanks(47) + "\r\n";
  const auto contents = rules_of("ADP7").read(
      header + employee + trailer,
      SettingsFields("ÑBC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,"
                     "Hours 4,EPIP"),
      "", Variant());
  EXPECT_EQ(described(contents.records),
            (std::vector<std::string>{"Peña-7|REG|4000 line 2", "Peña-7|OT1|150 line 2"}));
  EXPECT_EQ(contents.batch, 5);
}

TEST(Adp7Letters, AnUnknownTagAfterAnAccentedIdIsReportedAtItsColumn) {
  const std::string header = "A001ABC00205z" + blanks(66) + "7\r\n";
  const std::string employee =
      "B003Peña-7004101001099"
      "0004000 z\r\n";
  const std::string trailer = "C03000000004000 z" + blanks(62) + "\r\n";
  try {
    rules_of("ADP7").read(header + employee + trailer,
                          SettingsFields("ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,"
                                         "SI,Sick Hours,OT,Hours 4,EPIP"),
                          "", Variant());
    FAIL() << "accepted";
  } catch (const ReadError& error) {
    // "B003Peña-7" 10 letters, "0041010" 7, shift "01" 2: the tag starts in column 20.
    EXPECT_EQ(error.column(), 20u) << error.what();
  }
}

// --- Peachtree: columns of a line are named by their letter column -----------------------

TEST(PeachtreeLetters, AColumnAfterAnAccentedIdIsReportedAtItsLetterColumn) {
  const std::string line =
      "0,Peña,x1,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,8:00,,0,0,2,8.00,0,From Horalis\r\n";
  try {
    rules_of("Peachtree")
        .read(line,
              SettingsFields("1,2,3,4,5,6,7,ADMN-01000,ADMN-01000,ADMN-01002,ADMN-02000,"
                             "ADMN-02001,ADMN-02002,ADMN-02003,0,17"),
              "", Variant());
    FAIL() << "accepted";
  } catch (const ReadError& error) {
    // "0,Peña," is seven letters: the ticket number starts in column 8.
    EXPECT_EQ(error.column(), 8u) << error.what();
    EXPECT_NE(std::string(error.what()).find("column 3: not a ticket number"), std::string::npos)
        << error.what();
  }
}

}  // namespace
