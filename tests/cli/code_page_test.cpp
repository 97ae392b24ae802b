// Files in the payroll system's code page: Windows-1252 by default, --code-page to
// choose another; widths in letters; a warning for every card with a letter the code
// page lacks, and the same list from --check and in the JSON report.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "command_line_test.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

// Generic: comma, no titles, employee information with the full name, CR LF.
const std::string kGenericFullName = "0,0,0,1,1,False,True,False,False,False,,0";
// Generic: comma, no titles, last and first names, LF.
const std::string kGenericLastFirst = "0,0,0,1,0,False,True,False,False,False,,2";
// PCPreview: client 12, pay codes A to G, no sequence.
const std::string kPCPreview = "12,A,B,C,,D,E,F,G,0,0,0,0";

json card(const std::string& id, int number, int reg, const std::string& first,
          const std::string& last) {
  return {{"ExportID", id},   {"Number", number}, {"Shift", 1},         {"REG", reg},
          {"OT1", 0},         {"OT2", 0},         {"VAC", 0},           {"HOL", 0},
          {"SIC", 0},         {"OTH", 0},         {"FirstName", first}, {"MI", ""},
          {"LastName", last}, {"Badge", "B" + id}};
}

class CodePages : public zorvat::testing_support::CommandLineTest {
 protected:
  void SetUp() override {
    CommandLineTest::SetUp();
    // José Peña; Grace O’Neil (U+2019); Wei Wang 王 (U+738B, in no Windows-1252).
    cards_ = write("cards.json", json{{"PeriodEnd", "2004-03-06"},
                                      {"cards",
                                       {card("E100", 42, 480, "Jos\xC3\xA9",
                                             "Pe\xC3\xB1"
                                             "a"),
                                        card("E101", 43, 90, "Grace", "O\xE2\x80\x99Neil"),
                                        card("E102", 44, 60, "Wei", "Wang \xE7\x8E\x8B")}}}
                                     .dump());
  }
  std::string out(const std::string& name) const { return path_of(name); }

  std::string cards_;
};

const std::string kHours8 = "8.00,0.00,0.00,0.00,0.00,0.00,0.00";
const std::string kHours1h30 = "1.50,0.00,0.00,0.00,0.00,0.00,0.00";
const std::string kHours1 = "1.00,0.00,0.00,0.00,0.00,0.00,0.00";

TEST_F(CodePages, GenericFullNamesAreWindows1252ByDefaultOneByteALetter) {
  const auto r = zorvat(
      {"export", "Generic", "--cards", cards_, "--setup", kGenericFullName, "--out", out("x.tab")});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  // The full name is first, middle initial and last name joined by single blanks.
  EXPECT_EQ(read(out("x.tab")), "E100,000000042,01," + kHours8 +
                                    ",Jos\xE9  Pe\xF1"
                                    "a,42\r\n" +
                                    "E101,000000043,01," + kHours1h30 + ",Grace  O\x92Neil,43\r\n" +
                                    "E102,000000044,01," + kHours1 + ",Wei  Wang ?,44\r\n");
}

TEST_F(CodePages, GenericLastAndFirstNames) {
  const auto r = zorvat({"export", "Generic", "--cards", cards_, "--setup", kGenericLastFirst,
                         "--out", out("x.tab")});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(read(out("x.tab")), "E100,000000042,01," + kHours8 +
                                    ",Pe\xF1"
                                    "a,Jos\xE9,42\n" +
                                    "E101,000000043,01," + kHours1h30 + ",O\x92Neil,Grace,43\n" +
                                    "E102,000000044,01," + kHours1 + ",Wang ?,Wei,44\n");
}

TEST_F(CodePages, Utf8IsChosenWithCodePage) {
  const auto r = zorvat({"export", "Generic", "--cards", cards_, "--setup", kGenericLastFirst,
                         "--out", out("x.tab"), "--code-page", "utf-8"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.err, "");  // UTF-8 has every letter
  EXPECT_EQ(read(out("x.tab")), "E100,000000042,01," + kHours8 +
                                    ",Pe\xC3\xB1"
                                    "a,Jos\xC3\xA9,42\n" +
                                    "E101,000000043,01," + kHours1h30 +
                                    ",O\xE2\x80\x99Neil,Grace,43\n" + "E102,000000044,01," +
                                    kHours1 + ",Wang \xE7\x8E\x8B,Wei,44\n");
}

TEST_F(CodePages, CodePagesAreNamedByNumberToo) {
  // Windows-1250 (Central European) has é at E9 and ’ at 92 but no ñ: its F1 is ń.
  const auto r = zorvat({"export", "Generic", "--cards", cards_, "--setup", kGenericLastFirst,
                         "--out", out("x.tab"), "--code-page", "1250"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(read(out("x.tab")), "E100,000000042,01," + kHours8 + ",Pe?a,Jos\xE9,42\n" +
                                    "E101,000000043,01," + kHours1h30 + ",O\x92Neil,Grace,43\n" +
                                    "E102,000000044,01," + kHours1 + ",Wang ?,Wei,44\n");
  EXPECT_EQ(r.err,
            "zorvat: warning: card 0 (ExportID E100): windows-1250 lacks \"\xC3\xB1\" (U+00F1) "
            "in LastName \"Pe\xC3\xB1"
            "a\"; the file holds what the conversion makes of it\n"
            "zorvat: warning: card 2 (ExportID E102): windows-1250 lacks \"\xE7\x8E\x8B\" "
            "(U+738B) in LastName \"Wang \xE7\x8E\x8B\"; the file holds what the conversion "
            "makes of it\n");
}

TEST_F(CodePages, AnUnknownCodePageIsAUsageError) {
  const auto r = zorvat({"export", "Generic", "--cards", cards_, "--setup", kGenericLastFirst,
                         "--out", out("x.tab"), "--code-page", "klingon"});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.err,
            "zorvat: --code-page: \"klingon\" is not a code page this system converts to "
            "(windows-1252, utf-8, 850, ...)\n");
  EXPECT_FALSE(fs::exists(out("x.tab")));
}

TEST_F(CodePages, EachCardWithALetterTheCodePageLacksIsWarnedAboutOnce) {
  const auto r = zorvat({"export", "Generic", "--cards", cards_, "--setup", kGenericLastFirst,
                         "--out", out("x.tab")});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, kGenericLastFirst + "\n");
  EXPECT_EQ(r.err,
            "zorvat: warning: card 2 (ExportID E102): windows-1252 lacks \"\xE7\x8E\x8B\" "
            "(U+738B) in LastName \"Wang \xE7\x8E\x8B\"; the file holds what the conversion "
            "makes of it\n");
}

TEST_F(CodePages, TheJsonReportListsTheCodePageAndTheMissingLetters) {
  const auto r = zorvat({"export", "Generic", "--cards", cards_, "--setup", kGenericLastFirst,
                         "--out", out("x.tab"), "--json"});
  EXPECT_EQ(r.exit_code, 0);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["codePage"], "windows-1252");
  EXPECT_EQ(report["missingLetters"],
            json::parse(R"([{"card": 2, "id": "E102", "property": "LastName",
                             "text": "Wang \u738B",
                             "characters": [{"character": "\u738B", "codePoint": "U+738B"}]}])"));
}

TEST_F(CodePages, CheckListsTheCardsAndPropertiesBeforeAnythingIsWritten) {
  const auto r =
      zorvat({"export", "PCPreview", "--check", "--cards", cards_, "--setup", kPCPreview});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("\nLetters windows-1252 lacks (the file would hold what the conversion "
                       "makes of them):\n"
                       "  card 2 (ExportID E102): windows-1252 lacks \"\xE7\x8E\x8B\" (U+738B) "
                       "in LastName \"Wang \xE7\x8E\x8B\"\n"),
            std::string::npos)
      << r.out;
  const auto as_json = zorvat(
      {"export", "PCPreview", "--check", "--cards", cards_, "--setup", kPCPreview, "--json"});
  const json report = json::parse(as_json.out);
  EXPECT_EQ(report["codePage"], "windows-1252");
  ASSERT_EQ(report["missingLetters"].size(), 1u);
  EXPECT_EQ(report["missingLetters"][0]["property"], "LastName");
  const auto utf8 = zorvat({"export", "PCPreview", "--check", "--cards", cards_, "--setup",
                            kPCPreview, "--json", "--code-page", "utf-8"});
  EXPECT_EQ(json::parse(utf8.out)["missingLetters"], json::array());
}

TEST_F(CodePages, SettingsWithALetterTheCodePageLacksAreNamedByPosition) {
  // PCPreview's regular pay code "Ж" (U+0416).
  const auto r =
      zorvat({"export", "PCPreview", "--cards", cards_, "--setup",
              "12,\xD0\x96,B,C,,D,E,F,G,0,0,0,0", "--out", out("p.txt"), "--code-page", "utf-8"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.err, "");
  const auto in_1252 = zorvat({"export", "PCPreview", "--cards", cards_, "--setup",
                               "12,\xD0\x96,B,C,,D,E,F,G,0,0,0,0", "--out", out("p.txt")});
  EXPECT_EQ(in_1252.exit_code, 0) << in_1252.err;
  EXPECT_EQ(in_1252.err.substr(0, in_1252.err.find('\n')),
            "zorvat: warning: the settings: windows-1252 lacks \"\xD0\x96\" (U+0416) in settings "
            "position 1 \"\xD0\x96\"; the file holds what the conversion makes of it");
}

TEST_F(CodePages, PCPreviewNamesKeepTwentyFiveLettersInTheRecord) {
  // 30 letters, accented: "Renée Müller-Ñúñez Château Ödy" is cut to its first 25,
  // "Renée Müller-Ñúñez Châtea"; each record is 127 bytes in Windows-1252.
  const std::string cards = write("long.json", json{{"PeriodEnd", "2004-03-06"},
                                                    {"cards",
                                                     {card("E200", 7, 480,
                                                           "Ren\xC3\xA9"
                                                           "e",
                                                           "M\xC3\xBCller-\xC3\x91\xC3\xBA\xC3\xB1"
                                                           "ez Ch\xC3\xA2teau \xC3\x96"
                                                           "dy")}}}
                                                   .dump());
  const auto r = zorvat({"export", "PCPreview", "--cards", cards, "--setup", kPCPreview, "--out",
                         out("0012_TA.txt")});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  const std::string expected = std::string("000007") +  //   1-6
                               "Ren\xE9"
                               "e M\xFCller-\xD1\xFA\xF1"
                               "ez Ch\xE2tea" +  //   7-31
                               std::string(19, ' ') +
                               "E" + " " + "A" +                                   //  32-53
                               std::string(9, ' ') + "    8.00" +                  //  54-70
                               std::string(19, ' ') + " " + std::string(37, ' ');  //  71-127
  EXPECT_EQ(expected.size(), 127u);
  EXPECT_EQ(read(out("0012_TA.txt")), expected);
}

}  // namespace
