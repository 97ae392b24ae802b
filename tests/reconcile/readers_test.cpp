// The readers against their writers: every file of the conformance corpus and files
// written from seeded random cards read back to exactly what the class's rules say
// they carry, and reconciled with no unexplained difference.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

#include "corpus_cases.h"
#include "export_classes.h"
#include "reconcile_test_support.h"
#include "zorvat/reconcile/reconcile.h"

namespace fs = std::filesystem;
using namespace zorvat;
using namespace zorvat::testing_support;
using reconcile::FileRecord;

namespace {

std::string describe(const FileRecord& record) {
  std::string text = record.employee + " " + record.code + " " +
                     reconcile::hours_text(record.amount, 4) + " line " +
                     std::to_string(record.line);
  if (record.date)
    text += " " + std::to_string(record.date->year) + "-" + std::to_string(record.date->month) +
            "-" + std::to_string(record.date->day);
  return text;
}

std::vector<std::string> described(const std::vector<FileRecord>& records) {
  std::vector<std::string> texts;
  texts.reserve(records.size());
  for (const FileRecord& record : records) texts.push_back(describe(record));
  return texts;
}

// The records the class's rules expect, in the same words as the file's.
std::vector<std::string> expected_records(const reconcile::ClassRules& rules, const Variant& cards,
                                          const std::string& setup, const std::string& title) {
  const reconcile::Expectation expectation = rules.expect(cards, SettingsFields(setup), title);
  std::vector<std::string> texts;
  for (const reconcile::ExpectedRecord& record : expectation.records) {
    FileRecord as_read;
    as_read.employee = record.employee;
    as_read.code = record.code;
    as_read.amount = record.amount;
    as_read.date = record.date;
    texts.push_back(describe(as_read));
  }
  return texts;
}

std::vector<std::string> without_lines(std::vector<FileRecord> records) {
  for (FileRecord& record : records) record.line = 0;
  return described(records);
}

struct CorpusCase {
  fs::path folder;
  nlohmann::json json;
};

std::vector<CorpusCase> corpus_files() {
  std::vector<CorpusCase> cases;
  for (const fs::path& folder : corpus_case_folders()) {
    const nlohmann::json json =
        nlohmann::json::parse(read_file_bytes((folder / "case.json").string()));
    if (json["expect"]["file"].is_string()) cases.push_back({folder, json});
  }
  std::sort(cases.begin(), cases.end(),
            [](const CorpusCase& a, const CorpusCase& b) { return a.folder < b.folder; });
  return cases;
}

class CorpusFiles : public testing::TestWithParam<CorpusCase> {};

TEST_P(CorpusFiles, ReadBackAsWrittenAndReconciled) {
  const CorpusCase& corpus_case = GetParam();
  const std::string class_name = corpus_case.json["class"];
  const std::string setup = corpus_case.json.value("setup", "");
  const std::string title = corpus_case.json.value("title", "");
  const fs::path cards_path = corpus_case.folder / corpus_case.json.value("cards", "cards.json");
  const std::string expected = read_file_bytes(
      (corpus_case.folder / std::string(corpus_case.json["expect"]["file"])).string());
  const Variant cards = cards_from_json(read_file_bytes(cards_path.string()));
  const reconcile::ClassRules* rules = formats::find_export_class(class_name);
  ASSERT_NE(rules, nullptr) << class_name;
  if (!rules->reads_files())
    GTEST_SKIP() << class_name << " writes no file that reconciliation reads";

  const std::string written = export_bytes(class_name, cards, setup, title);
  const auto from_expected = rules->read(expected, SettingsFields(setup), title, cards);
  const auto from_written = rules->read(written, SettingsFields(setup), title, cards);
  EXPECT_EQ(described(from_expected.records), described(from_written.records));
  EXPECT_EQ(without_lines(from_expected.records), expected_records(*rules, cards, setup, title));

  const auto result = reconcile::reconcile(*rules, cards, setup, title, expected);
  EXPECT_EQ(result.unexplained(), 0u) << reconcile::table_text(result);
}

std::string corpus_name(const testing::TestParamInfo<CorpusCase>& info) {
  return corpus_case_name(info.param.folder);
}

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusFiles, testing::ValuesIn(corpus_files()), corpus_name);

TEST(CorpusFilesList, EveryClassHasAFile) {
  std::set<std::string> classes;
  for (const CorpusCase& corpus_case : corpus_files()) classes.insert(corpus_case.json["class"]);
  for (const reconcile::ClassRules& rules : formats::export_classes())
    if (rules.reads_files()) {
      EXPECT_TRUE(classes.count(std::string(rules.class_name))) << rules.class_name;
    }
}

class RandomCards : public testing::TestWithParam<ClassSetup> {};

TEST_P(RandomCards, ReadBackAsTheRulesSayAndReconciled) {
  const ClassSetup& setup = GetParam();
  const reconcile::ClassRules* rules = formats::find_export_class(setup.class_name);
  ASSERT_NE(rules, nullptr);
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Variant cards = cards_from_json(random_cards_json(seed, 15));
    const std::string written = export_bytes(setup.class_name, cards, setup.setup, setup.title);
    const auto contents = rules->read(written, SettingsFields(setup.setup), setup.title, cards);
    ASSERT_EQ(without_lines(contents.records),
              expected_records(*rules, cards, setup.setup, setup.title));
    const auto result = reconcile::reconcile(*rules, cards, setup.setup, setup.title, written);
    ASSERT_EQ(result.unexplained(), 0u) << reconcile::table_text(result);
  }
}

std::string setup_name(const testing::TestParamInfo<ClassSetup>& info) {
  return info.param.class_name + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(EveryClass, RandomCards, testing::ValuesIn(random_test_setups()),
                         setup_name);

// Every class of the list that writes a file has random setups.
TEST(RandomCardsList, EveryClassThatWritesAFileHasSetups) {
  std::set<std::string> with_setups;
  for (const ClassSetup& setup : random_test_setups()) with_setups.insert(setup.class_name);
  for (const reconcile::ClassRules& rules : formats::export_classes()) {
    if (rules.reads_files()) {
      EXPECT_TRUE(with_setups.count(std::string(rules.class_name))) << rules.class_name;
    }
  }
}

// The random cards reach every rule: each reason but "unexplained" explains some row.
TEST(RandomCardsCoverage, EveryReasonOccurs) {
  std::set<std::string_view> seen;
  for (const ClassSetup& setup : random_test_setups()) {
    const reconcile::ClassRules* rules = formats::find_export_class(setup.class_name);
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
      const Variant cards = cards_from_json(random_cards_json(seed, 15));
      for (const reconcile::Row& row :
           rules->expect(cards, SettingsFields(setup.setup), setup.title).rows)
        for (const reconcile::Adjustment& adjustment : row.adjustments)
          seen.insert(reconcile::reason_id(adjustment.reason));
    }
  }
  for (reconcile::Reason reason : reconcile::kAllReasons) {
    if (reason == reconcile::Reason::Unexplained) continue;
    EXPECT_TRUE(seen.count(reconcile::reason_id(reason))) << reconcile::reason_id(reason);
  }
}

// A file in another layout, or no payroll file at all, is refused with the line and
// column where it leaves the layout.
class ForeignFiles : public testing::TestWithParam<ClassSetup> {};

TEST_P(ForeignFiles, AreRejectedWithThePlace) {
  const ClassSetup& setup = GetParam();
  const reconcile::ClassRules* rules = formats::find_export_class(setup.class_name);
  ASSERT_NE(rules, nullptr);
  const Variant cards = cards_from_json(random_cards_json(3, 4));
  for (const ClassSetup& other : random_test_setups()) {
    if (other.class_name == setup.class_name) continue;
    const std::string foreign = export_bytes(other.class_name, cards, other.setup, other.title);
    if (foreign.empty()) continue;
    SCOPED_TRACE("a " + other.class_name + " file");
    try {
      rules->read(foreign, SettingsFields(setup.setup), setup.title, cards);
      ADD_FAILURE() << "accepted";
    } catch (const reconcile::ReadError& error) {
      EXPECT_NE(std::string(error.what()).find("not a"), std::string::npos) << error.what();
      EXPECT_NE(std::string(error.what()).find("line "), std::string::npos) << error.what();
      EXPECT_GE(error.line(), 1u);
      EXPECT_GE(error.column(), 1u);
    }
  }
  EXPECT_THROW(rules->read("hello, world\r\n", SettingsFields(setup.setup), setup.title, cards),
               reconcile::ReadError);
}

INSTANTIATE_TEST_SUITE_P(EveryClass, ForeignFiles, testing::ValuesIn(random_test_setups()),
                         setup_name);

TEST(ReadError, NamesLayoutLineAndColumn) {
  const reconcile::ClassRules* rules = formats::find_export_class("PrimePay");
  ASSERT_NE(rules, nullptr);
  const std::string file =
      std::string("HPTA1000103/08/04Brantell Time Recorder               N03/06/04\r\n") +
      "D000315 0040x0" + std::string(51, ' ') + "\r\n";
  try {
    rules->read(file, SettingsFields("0,2,20,23,24,25,28"), "", Variant());
    FAIL() << "accepted";
  } catch (const reconcile::ReadError& error) {
    EXPECT_EQ(error.line(), 2u);
    EXPECT_EQ(error.column(), 9u);
    EXPECT_STREQ(error.what(),
                 "not a PrimePay file: line 2, column 9: \"0040x0\" is not regular hundredths");
  }
}

}  // namespace

namespace {

// An export ID may itself hold the text that ends it in an EPIP employee line ("004",
// the pay number, "010"): "E1004101" with pay number 1 reads "E1" + "0041010" first.
TEST(Adp7EpipReader, AnExportIdHoldingThePayNumberTagsIsReadWhole) {
  const reconcile::ClassRules* rules = formats::find_export_class("ADP7");
  ASSERT_NE(rules, nullptr);
  const std::string header = "A001ABC00205z" + std::string(66, ' ') + "7\r\n";
  const std::string employee =
      "B003"      // employee line
      "E1004101"  // export ID
      "004"
      "1"  // pay number
      "010"
      "01"  // shift
      "012"
      "0004000"  // regular hundredths
      " z\r\n";
  const std::string trailer = "C03000000004000 z" + std::string(62, ' ') + "\r\n";
  ASSERT_EQ(header.size(), 82u);
  ASSERT_EQ(trailer.size(), 81u);
  const auto contents = rules->read(
      header + employee + trailer,
      SettingsFields("ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,"
                     "Hours 4,EPIP"),
      "", Variant());
  EXPECT_EQ(described(contents.records), std::vector<std::string>{"E1004101 REG 40.0000 line 2"});
}

// Settings with no line terminator run the records together: each starts with its card's
// export ID and the separator.
TEST(GenericReader, RecordsRunTogetherAreToldApartByTheCardsExportIds) {
  const reconcile::ClassRules* rules = formats::find_export_class("Generic");
  ASSERT_NE(rules, nullptr);
  const Variant cards = cards_from_json(
      R"({"cards": [{"ExportID": "E1", "REG": 60}, {"ExportID": "E10", "REG": 150}]})");
  const std::string file =
      "E1,000000007,01,1.00,0.00,0.00,0.00,0.00,0.00,0.00,E10,x,E10,000000008,01,2.50,0.00,0.00,"
      "0.00,0.00,0.00,0.25";
  const auto contents =
      rules->read(file, SettingsFields("0,0,0,0,0,False,True,False,False,False,,4"), "", cards);
  const std::vector<std::string> expected = {
      "E1 REG 1.0000 line 1",  "E1 OT1 0.0000 line 1",  "E1 OT2 0.0000 line 1",
      "E1 VAC 0.0000 line 1",  "E1 HOL 0.0000 line 1",  "E1 SIC 0.0000 line 1",
      "E1 OTH 0.0000 line 1",  "E10 REG 2.5000 line 1", "E10 OT1 0.0000 line 1",
      "E10 OT2 0.0000 line 1", "E10 VAC 0.0000 line 1", "E10 HOL 0.0000 line 1",
      "E10 SIC 0.0000 line 1", "E10 OTH 0.2500 line 1"};
  EXPECT_EQ(described(contents.records), expected);
  // A record that does not read, with its column on the line.
  try {
    rules->read("E1,000000007,01,1.00,0.00,0.00,0.00,0.00,0.00,0.00E10,000000008,01,x",
                SettingsFields("0,0,0,0,0,False,True,False,False,False,,4"), "", cards);
    ADD_FAILURE() << "read";
  } catch (const reconcile::ReadError& error) {
    // "x" stands at column 68, where a separator should follow the field.
    EXPECT_STREQ(error.what(), "not a Generic file: line 1, column 68: no \",\" after a field");
  }
}

// Export ID "1" also stands inside the first record ("01,"), so the first try ends that
// record there and fails; the record reads in a later try. The file's real fault is
// the second record's, and that is the one named.
TEST(GenericReader, RecordsRunTogetherNameTheFurthestRecordThatDoesNotRead) {
  const reconcile::ClassRules* rules = formats::find_export_class("Generic");
  ASSERT_NE(rules, nullptr);
  const Variant cards = cards_from_json(
      R"({"cards": [{"ExportID": "A", "REG": 60}, {"ExportID": "1", "REG": 150}]})");
  try {
    rules->read("A,000000007,01,1.00,0.00,0.00,0.00,0.00,0.00,0.001,000000008,01,x",
                SettingsFields("0,0,0,0,0,False,True,False,False,False,,4"), "", cards);
    ADD_FAILURE() << "read";
  } catch (const reconcile::ReadError& error) {
    // "x" stands at column 65, in the second record, where its hours should be.
    EXPECT_STREQ(error.what(), "not a Generic file: line 1, column 65: no \",\" after a field");
  }
}

// PrimePay writes the employee number and the hundredths as they stand: a number of
// seven digits, or one given as four letters of text, moves the columns after it. The
// cards' numbers tell the reader those widths.
TEST(PrimePayReader, NumbersWiderOrNarrowerThanTheirColumnsAreReadWhole) {
  const reconcile::ClassRules* rules = formats::find_export_class("PrimePay");
  ASSERT_NE(rules, nullptr);
  const std::string file =
      std::string("HPTA1000103/08/04Brantell Time Recorder               N03/06/04\r\n") +
      "D1234567 1000000" + std::string(48, ' ') + "004\r\n" +  // 10000.00 regular hours
      "D131A " + std::string(11, ' ') + "000005020" + std::string(34, ' ') + "004\r\n";
  const Variant cards = cards_from_json(R"({"cards": [{"Number": 1234567}, {"Number": "131A"}]})");
  const auto contents = rules->read(file, SettingsFields("4,02,20,23,24,25,28"), "", cards);
  EXPECT_EQ(described(contents.records),
            (std::vector<std::string>{"1234567 REG 10000.0000 line 2", "131A 20 0.5000 line 3"}));
  // Without the cards, every number is read in its six columns: the seven digits leave
  // "7" in column 8, where the blank should be.
  try {
    rules->read(file, SettingsFields("4,02,20,23,24,25,28"), "", Variant());
    ADD_FAILURE() << "read";
  } catch (const reconcile::ReadError& error) {
    EXPECT_EQ(error.line(), 2u);
    EXPECT_EQ(error.column(), 8u) << error.what();
  }
  EXPECT_EQ(contents.batch, 4);
}

// IntuitPAC Jr writes its amounts side by side, each as it stands: a regular amount of
// six digits and a negative one take a letter more than their columns, and the fill
// to column 80 two fewer.
TEST(IntuitPacJrReader, AmountsWiderThanTheirColumnsAreReadWhole) {
  const reconcile::ClassRules* rules = formats::find_export_class("IntuitPAC");
  ASSERT_NE(rules, nullptr);
  const std::string record = std::string("1234") + "4" + "0315" + "8" +
                             "123456"       // regular: 1234.56 hours, one digit more
                             "00050"        // overtime
                             "03-00000030"  // a pay code and -0.30 hours, with its sign
                             "0400000000"
                             "0500000000"
                             "0600000000"
                             "0700000000" +
                             std::string(8, ' ') + "\r\n";
  ASSERT_EQ(record.size(), 82u);
  const auto contents = rules->read(record, SettingsFields("ABC1234,1,2,3,4,5,6,7,0,0,0,0"),
                                    "QuikPay Import File V2.0", Variant());
  EXPECT_EQ(described(contents.records),
            (std::vector<std::string>{"0315 REG 1234.5600 line 1", "0315 OT1 0.5000 line 1",
                                      "0315 03 -0.3000 line 1", "0315 04 0.0000 line 1",
                                      "0315 05 0.0000 line 1", "0315 06 0.0000 line 1",
                                      "0315 07 0.0000 line 1"}));
}

// EPIP writes the shift through "00" as it stands: shift 123 takes three columns, text
// "A" one, and the tagged fields follow. The cards' shifts tell the reader those widths.
TEST(Adp7EpipReader, AShiftWiderOrNarrowerThanItsColumnIsReadWhole) {
  const reconcile::ClassRules* rules = formats::find_export_class("ADP7");
  ASSERT_NE(rules, nullptr);
  const std::string header = "A001ABC00205z" + std::string(66, ' ') + "7\r\n";
  const std::string lines =
      "B003E1004101"
      "0123"  // "010" and shift 123
      "0120004000 z\r\n"
      "B003E2004101"
      "0A"  // "010" and shift "A"
      "0130000150 z\r\n";
  const std::string trailer = "C03000000004000 03100000000150 z" + std::string(47, ' ') + "\r\n";
  const auto contents = rules->read(
      header + lines + trailer,
      SettingsFields("ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,"
                     "Hours 4,EPIP"),
      "",
      cards_from_json(R"({"cards": [{"ExportID": "E1", "Shift": 123, "REG": 2400},)"
                      R"( {"ExportID": "E2", "Shift": "A", "OT1": 90}]})"));
  EXPECT_EQ(described(contents.records),
            (std::vector<std::string>{"E1 REG 40.0000 line 2", "E2 OT1 1.5000 line 3"}));
}

}  // namespace

namespace {

// --- Garbled files: the readers try only the widths the cards' values are written in ---

const std::string kPrimePayHeader =
    "HPTA1000103/08/04Brantell Time Recorder               N03/06/04\r\n";

// A detail line of 200,000 letters reads at no width of the cards' numbers; the error
// is the one of the column's own width: "D", six letters, then no blank in column 8.
TEST(PrimePayReader, AGarbledLineOfManyLettersIsRefusedAtItsDeclaredWidth) {
  const reconcile::ClassRules* rules = formats::find_export_class("PrimePay");
  ASSERT_NE(rules, nullptr);
  const Variant cards =
      cards_from_json(R"({"cards": [{"Number": 315}, {"Number": 1234567}, {"Number": "131A"}]})");
  const std::string file = kPrimePayHeader + "D" + std::string(200000, 'x') + "\r\n";
  try {
    rules->read(file, SettingsFields("4,02,20,23,24,25,28"), "", cards);
    FAIL() << "accepted";
  } catch (const reconcile::ReadError& error) {
    EXPECT_EQ(error.line(), 2u);
    EXPECT_EQ(error.column(), 8u) << error.what();
  }
}

const std::string kAdp7Epip =
    "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP";

// An employee line whose export ID ends ("004", pay number 1, "010") before 200,000
// letters: no shift the cards hold makes the rest read as hour fields. The error is the
// one of the shift's own two columns: "B003E1" 6 letters, "0041010" 7, "xx" 2, then
// "xxx" is no field tag at column 16.
TEST(Adp7EpipReader, AGarbledLineOfManyLettersIsRefusedAtTheShiftsOwnWidth) {
  const reconcile::ClassRules* rules = formats::find_export_class("ADP7");
  ASSERT_NE(rules, nullptr);
  const Variant cards = cards_from_json(
      R"({"cards": [{"ExportID": "E1", "Shift": 1, "REG": 60},)"
      R"( {"ExportID": "E2", "Shift": 123, "REG": 60}, {"ExportID": "E3", "Shift": "A", "REG": 60}]})");
  const std::string header = "A001ABC00205z" + std::string(66, ' ') + "7\r\n";
  const std::string employee = "B003E10041010" + std::string(200000, 'x') + "\r\n";
  const std::string trailer = "C03000000004000 z" + std::string(62, ' ') + "\r\n";
  try {
    rules->read(header + employee + trailer, SettingsFields(kAdp7Epip), "", cards);
    FAIL() << "accepted";
  } catch (const reconcile::ReadError& error) {
    EXPECT_EQ(error.line(), 2u);
    EXPECT_EQ(error.column(), 16u) << error.what();
    EXPECT_NE(std::string(error.what()).find("unknown field tag \"xxx\""), std::string::npos)
        << error.what();
  }
}

const std::string kPreviewSetup = "12,A,B,C,7,D,E,F,G,0,0,0,0";

// 200,000 letters with no record in them: the first record fails where its blanks after
// the name should be, at the column's own width: six letters, 25 of name, column 32.
TEST(PCPreviewReader, AGarbledFileOfManyLettersIsRefused) {
  const reconcile::ClassRules* rules = formats::find_export_class("PCPreview");
  ASSERT_NE(rules, nullptr);
  const Variant cards =
      cards_from_json(R"({"cards": [{"Number": 315}, {"Number": 1234567}, {"Number": "131A"}]})");
  try {
    rules->read(std::string(200000, 'x'), SettingsFields(kPreviewSetup), "", cards);
    FAIL() << "accepted";
  } catch (const reconcile::ReadError& error) {
    EXPECT_EQ(error.line(), 1u);
    EXPECT_EQ(error.column(), 32u) << error.what();
  }
}

// 40,000 cards of seven-digit numbers and a record for each, run together: each record
// reads with its card's number whole.
TEST(PCPreviewReader, ManyRecordsAgainstManyCardsRead) {
  const reconcile::ClassRules* rules = formats::find_export_class("PCPreview");
  ASSERT_NE(rules, nullptr);
  constexpr int kCount = 40000;
  std::string json = R"({"cards": [)";
  std::string file;
  for (int i = 0; i < kCount; ++i) {
    const std::string number = std::to_string(1000000 + i);
    json += (i ? "," : "") + std::string(R"({"Number": )") + number + "}";
    // Number (7), name (25), 19 blanks, "E ", pay code "A", 9 blanks, hours (8), 19
    // blanks, sequence "7", 37 blanks.
    file += number + "Ann Lee" + std::string(18, ' ') + std::string(19, ' ') + "E A" +
            std::string(9, ' ') + "    8.00" + std::string(19, ' ') + "7" + std::string(37, ' ');
  }
  json += "]}";
  const auto contents = rules->read(file, SettingsFields(kPreviewSetup), "", cards_from_json(json));
  ASSERT_EQ(contents.records.size(), static_cast<std::size_t>(kCount));
  EXPECT_EQ(describe(contents.records.front()), "1000000 A 8.0000 line 1");
  EXPECT_EQ(describe(contents.records.back()), "1039999 A 8.0000 line 40000");
}

}  // namespace
