// Each reason on a small hand-built case: the cards, the settings, and the table rows
// written out by hand from the class's rules.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "export_classes.h"
#include "reconcile_test_support.h"
#include "zorvat/error.h"
#include "zorvat/reconcile/reconcile.h"

using namespace zorvat;
using namespace zorvat::testing_support;

namespace {

// A row as the table shows it.
struct ShownRow {
  std::string employee;
  std::string category;
  std::string input;
  std::string in_file;
  std::string reasons;
  friend bool operator==(const ShownRow&, const ShownRow&) = default;
};

void PrintTo(const ShownRow& row, std::ostream* out) {
  *out << "{" << row.employee << ", " << row.category << ", " << row.input << ", " << row.in_file
       << ", " << row.reasons << "}";
}

std::vector<ShownRow> shown_rows(const reconcile::Reconciliation& result) {
  std::vector<ShownRow> rows;
  for (const reconcile::Row& row : result.rows) {
    if (!row.worth_showing()) continue;
    std::string reasons;
    for (const reconcile::Adjustment& adjustment : row.adjustments) {
      if (!reasons.empty()) reasons += ", ";
      reasons += reconcile::reason_id(adjustment.reason);
    }
    rows.push_back({row.employee, row.category, reconcile::hours_text(row.input, 2),
                    reconcile::hours_text(row.in_file, 2), reasons});
  }
  return rows;
}

// One card as JSON: no time, no days, and `fields` (JSON members) over that.
std::string one_card(const std::string& fields, const std::string& days = "[]") {
  nlohmann::ordered_json card = nlohmann::ordered_json::parse(R"({"ExportID": "E100",
    "Number": 315, "Shift": 1, "REG": 0, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0,
    "OTH": 0, "FirstName": "Ann", "MI": "", "LastName": "Lee", "Badge": "0315", "EditREG": 0,
    "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2004-02-29"})");
  card.update(nlohmann::ordered_json::parse("{" + fields + "}"));
  card["Days"] = nlohmann::ordered_json::parse(days);
  nlohmann::ordered_json document;
  document["PeriodEnd"] = "2004-03-06";
  document["cards"] = nlohmann::ordered_json::array({card});
  return document.dump();
}

// Exports the cards, reconciles the written file, and checks the analysis before
// writing gives the same rows (or, for settings the class's own check refuses, that
// the analysis before writing refuses them too).
std::vector<ShownRow> reconciled(const std::string& class_name, const std::string& cards_json,
                                 const std::string& setup, const std::string& title = "",
                                 bool settings_pass = true) {
  const Variant cards = cards_from_json(cards_json);
  const reconcile::ClassRules* rules = formats::find_export_class(class_name);
  EXPECT_NE(rules, nullptr);
  const std::string written = export_bytes(class_name, cards, setup, title);
  const auto result = reconcile::reconcile(*rules, cards, setup, title, written);
  EXPECT_EQ(result.unexplained(), 0u) << reconcile::table_text(result);
  if (settings_pass)
    EXPECT_EQ(shown_rows(reconcile::check(*rules, cards, setup, title)), shown_rows(result));
  else
    EXPECT_THROW(reconcile::check(*rules, cards, setup, title), Error);
  return shown_rows(result);
}

constexpr const char* kAdp7Epip =
    "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP";

TEST(Reasons, Adp7SkipsACardWithOnlyVacation) {
  EXPECT_EQ(
      reconciled("ADP7", one_card(R"("REG": 0, "VAC": 480)"), kAdp7Epip),
      (std::vector<ShownRow>{{"E100", "VAC", "8.00", "0.00", "card-skipped-no-regular-time"}}));
}

TEST(Reasons, ZeroTotalCardIsSkipped) {
  EXPECT_EQ(
      reconciled("PCPayLink", one_card(R"("REG": 60, "OTH": -60)"), "7,A001,3,12,VA,HO,QS,R3"),
      (std::vector<ShownRow>{{"0315", "REG", "1.00", "0.00", "card-skipped-zero-total"},
                             {"0315", "OTH", "-1.00", "0.00", "card-skipped-zero-total"}}));
}

TEST(Reasons, Adp7CsvCategoryWithoutPayCode) {
  // The class's own check refuses an empty pay code, but its export leaves the
  // category out: a file written without the check shows it.
  EXPECT_EQ(reconciled("ADP7", one_card(R"("REG": 480, "VAC": 240)"),
                       "ABC,5,1,H3,Hours 3,,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,"
                       "Hours 4,CSV",
                       "", false),
            (std::vector<ShownRow>{{"E100", "REG", "8.00", "8.00", ""},
                                   {"E100", "VAC", "4.00", "0.00", "no-pay-code"}}));
}

TEST(Reasons, Adp7EpipCarriesOnlyRegularAndOvertime) {
  EXPECT_EQ(reconciled("ADP7", one_card(R"("REG": 480, "HOL": 480)"), kAdp7Epip),
            (std::vector<ShownRow>{{"E100", "REG", "8.00", "8.00", ""},
                                   {"E100", "HOL", "8.00", "0.00", "category-not-in-layout"}}));
}

TEST(Reasons, NegativeMinutesAreNotExported) {
  EXPECT_EQ(reconciled("PrimePay", one_card(R"("REG": 480, "SIC": -30)"), "4,02,20,23,24,25,28"),
            (std::vector<ShownRow>{{"000315", "REG", "8.00", "8.00", ""},
                                   {"000315", "SIC", "-0.50", "0.00", "negative-not-exported"}}));
}

TEST(Reasons, OneMinuteRoundsToTwoHundredths) {
  const auto rows =
      reconciled("Generic", one_card(R"("REG": 1)"), "0,1,0,1,0,False,True,False,False,False,,0");
  EXPECT_EQ(rows,
            (std::vector<ShownRow>{{"E100", "REG", "0.02", "0.02", "rounded-to-hundredths"}}));
}

TEST(Reasons, RoundingDifferenceIsAThirdOfAHundredth) {
  const Variant cards = cards_from_json(one_card(R"("REG": 1)"));
  const auto result = reconcile::check(*formats::find_export_class("Generic"), cards,
                                       "0,1,0,1,0,False,True,False,False,False,,0", "");
  // 1 minute is 0.016667 hours; the file says 0.02.
  EXPECT_EQ(reconcile::hours_text(result.rows[0].difference(), 4, true), "+0.0033");
}

constexpr const char* kPeachtree =
    "1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,ADMN-02003,"
    "0,5";

std::string day(const std::string& date, int hours, int regular) {
  return R"({"DayDate": ")" + date + R"(", "Hours": )" + std::to_string(hours) + R"(, "REG": )" +
         std::to_string(regular) +
         R"(, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0})";
}

TEST(Reasons, PeachtreeDurationRoundsTheHour) {
  // 90 minutes: 1.5 hours through "##0" is 2, then ":30".
  EXPECT_EQ(reconciled("Peachtree", one_card(R"("REG": 90)", "[" + day("2004-03-01", 90, 90) + "]"),
                       kPeachtree),
            (std::vector<ShownRow>{{"E100", "REG", "1.50", "2.50", "duration-whole-hours"}}));
}

TEST(Reasons, PeachtreeSkipsADayWithoutWorkedHours) {
  EXPECT_EQ(reconciled("Peachtree",
                       one_card(R"("REG": 960)", "[" + day("2004-03-01", 480, 480) + ", " +
                                                     day("2004-03-02", 0, 480) + "]"),
                       kPeachtree),
            (std::vector<ShownRow>{{"E100", "REG", "16.00", "8.00", "day-skipped"}}));
}

TEST(Reasons, PeachtreeDaysThatDoNotAddUpToTheCard) {
  EXPECT_EQ(
      reconciled("Peachtree", one_card(R"("REG": 600)", "[" + day("2004-03-01", 480, 480) + "]"),
                 kPeachtree),
      (std::vector<ShownRow>{{"E100", "REG", "10.00", "8.00", "days-differ-from-card"}}));
}

TEST(Reasons, PrimePayWritesOtherTimeUnderTheSickCode) {
  EXPECT_EQ(reconciled("PrimePay", one_card(R"("REG": 480, "OTH": 60)"), "4,02,20,23,24,25,28"),
            (std::vector<ShownRow>{{"000315", "REG", "8.00", "8.00", ""},
                                   {"000315", "OTH", "1.00", "1.00", "under-other-code"}}));
}

TEST(Reasons, SharedPayCodeIsUnderOtherCode) {
  // Holiday and sick share pay code 5.
  EXPECT_EQ(
      reconciled("IntuitPAC", one_card(R"("Number": "0315", "REG": 480, "HOL": 60, "SIC": 30)"),
                 "ABCE12345,1,2,3,4,5,5,7,0,0,0,0", "Intuit PC Access Import File V2.0"),
      (std::vector<ShownRow>{{"0315", "REG", "8.00", "8.00", ""},
                             {"0315", "HOL", "1.00", "1.00", ""},
                             {"0315", "SIC", "0.50", "0.50", "under-other-code"}}));
}

TEST(Reasons, IntuitPacDeductionIsWrittenNegative) {
  EXPECT_EQ(reconciled("IntuitPAC", one_card(R"("Number": "0315", "REG": 480, "VAC": 480)"),
                       "ABCE12345,1,2,3,4,5,6,7,1,0,0,0", "Intuit PC Access Import File V2.0"),
            (std::vector<ShownRow>{{"0315", "REG", "8.00", "8.00", ""},
                                   {"0315", "VAC", "8.00", "-8.00", "written-as-deduction"}}));
}

TEST(Reasons, PreviewIgnoresTheDeductionFlags) {
  // Holiday is marked as a deduction; the record is an earnings record all the same.
  EXPECT_EQ(
      reconciled("PCPreview", one_card(R"("REG": 480, "HOL": 480)"), "12,A,B,C,7,D,E,F,G,0,1,0,0"),
      (std::vector<ShownRow>{{"000315", "REG", "8.00", "8.00", ""},
                             {"000315", "HOL", "8.00", "8.00", "deduction-flag-ignored"}}));
}

TEST(Reasons, EveryReasonHasAnIdAndASentence) {
  std::set<std::string_view> ids;
  for (reconcile::Reason reason : reconcile::kAllReasons) {
    EXPECT_TRUE(ids.insert(reconcile::reason_id(reason)).second) << reconcile::reason_id(reason);
    EXPECT_FALSE(reconcile::reason_text(reason).empty());
    EXPECT_EQ(reconcile::reason_text(reason).back(), '.');
  }
}

TEST(Reasons, TamperedHoursAreUnexplained) {
  const Variant cards = cards_from_json(one_card(R"("REG": 480, "OT1": 90)"));
  const std::string setup = "7,A001,3,12,VA,HO,QS,R3";
  std::string written = export_bytes("PCPayLink", cards, setup);
  const std::size_t at = written.find("E0C1.50|");
  ASSERT_NE(at, std::string::npos) << written;
  written.replace(at, 8, "E0C1.75|");
  const auto result =
      reconcile::reconcile(*formats::find_export_class("PCPayLink"), cards, setup, "", written);
  EXPECT_EQ(result.unexplained(), 1u);
  EXPECT_EQ(shown_rows(result),
            (std::vector<ShownRow>{{"0315", "REG", "8.00", "8.00", ""},
                                   {"0315", "OT1", "1.50", "1.75", "unexplained"}}));
}

TEST(Reasons, TimeNobodyExpectedIsUnexplained) {
  const Variant cards = cards_from_json(one_card(R"("REG": 480)"));
  const std::string setup = "4,02,20,23,24,25,28";
  std::string written = export_bytes("PrimePay", cards, setup, "");
  // A second employee's regular line appended by hand.
  written += "D000999 000100" + std::string(48, ' ') + "004\r\n";
  const auto result =
      reconcile::reconcile(*formats::find_export_class("PrimePay"), cards, setup, "", written);
  EXPECT_EQ(shown_rows(result),
            (std::vector<ShownRow>{{"000315", "REG", "8.00", "8.00", ""},
                                   {"000999", "REG", "0.00", "1.00", "unexplained"}}));
}

}  // namespace

namespace {

// What the file states about itself must be what the cards and settings make it.
TEST(Controls, ChangedTrailerTotalIsAProblem) {
  const Variant cards = cards_from_json(one_card(R"("REG": 480, "OT1": 90)"));
  std::string written = export_bytes("ADP7", cards, kAdp7Epip);
  const std::size_t at = written.find("C03000000000800 ");
  ASSERT_NE(at, std::string::npos) << written;
  written.replace(at, 16, "C03000000000900 ");
  const auto result =
      reconcile::reconcile(*formats::find_export_class("ADP7"), cards, kAdp7Epip, "", written);
  EXPECT_EQ(result.problems,
            std::vector<std::string>{
                "The file's regular hundredths is 900; the cards and settings make it 800."});
  EXPECT_EQ(result.unexplained(), 1u);
}

TEST(Controls, TicketNumbersFollowTheBatchSequence) {
  const Variant cards =
      cards_from_json(one_card(R"("REG": 960)", "[" + day("2004-03-01", 480, 480) + ", " +
                                                    day("2004-03-02", 480, 480) + "]"));
  const std::string written = export_bytes("Peachtree", cards, kPeachtree);
  const auto* rules = formats::find_export_class("Peachtree");
  EXPECT_EQ(reconcile::reconcile(*rules, cards, kPeachtree, "", written).unexplained(), 0u);
  // The same file reconciled against a later batch sequence.
  std::string later = kPeachtree;
  later.replace(later.size() - 1, 1, "9");
  const auto result = reconcile::reconcile(*rules, cards, later, "", written);
  EXPECT_EQ(result.problems,
            (std::vector<std::string>{
                "The file's first ticket number is 5; the cards and settings make it 9.",
                "The file's last ticket number is 6; the cards and settings make it 10."}));
}

TEST(Controls, PeriodEndOfAnotherPeriodIsAProblem) {
  const std::string setup = "4,02,20,23,24,25,28";
  const std::string card = one_card(R"("REG": 480)");
  const std::string written = export_bytes("PrimePay", cards_from_json(card), setup);
  std::string other_period = card;
  other_period.replace(other_period.find("2004-03-06"), 10, "2004-03-13");
  const auto result = reconcile::reconcile(*formats::find_export_class("PrimePay"),
                                           cards_from_json(other_period), setup, "", written);
  EXPECT_EQ(result.problems,
            std::vector<std::string>{
                "The file's period end is 20040306; the cards and settings make it 20040313."});
}

}  // namespace
