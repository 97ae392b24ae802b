// The "mm/dd/yy" dates of the written files read back through the two-digit-year
// window, as the classic conversions read them: a Peachtree period in 2032 comes back
// in 2032 under the window ending in 2049.
#include <gtest/gtest.h>

#include "export_classes.h"
#include "reconcile_test_support.h"
#include "zorvat/date.h"
#include "zorvat/reconcile/reconcile.h"
#include "zorvat/reconcile/text_reader.h"

using namespace zorvat;
using namespace zorvat::testing_support;

namespace {

TEST(ShortDates, ReadTheirYearThroughTheWindowEndingIn2049) {
  const TwoDigitYearMaxScope window(2049);
  EXPECT_EQ(reconcile::parse_short_date("12/31/29"), (CivilDate{2029, 12, 31}));
  EXPECT_EQ(reconcile::parse_short_date("01/01/30"), (CivilDate{2030, 1, 1}));
  EXPECT_EQ(reconcile::parse_short_date("02/29/32"), (CivilDate{2032, 2, 29}));
  EXPECT_EQ(reconcile::parse_short_date("12/31/49"), (CivilDate{2049, 12, 31}));
  EXPECT_EQ(reconcile::parse_short_date("01/01/50"), (CivilDate{1950, 1, 1}));
  EXPECT_EQ(reconcile::parse_short_date("03/06/04"), (CivilDate{2004, 3, 6}));
}

TEST(ShortDates, ReadTheirYearThroughTheWindowEndingIn2029) {
  const TwoDigitYearMaxScope window(2029);
  EXPECT_EQ(reconcile::parse_short_date("12/31/29"), (CivilDate{2029, 12, 31}));
  EXPECT_EQ(reconcile::parse_short_date("01/01/30"), (CivilDate{1930, 1, 1}));
  // 1933 has no 29 February.
  EXPECT_FALSE(reconcile::parse_short_date("02/29/33"));
}

// José Peña's two days at the end of February 2032.
const char kCards2032[] = R"({"PeriodEnd": "2032-03-06",
 "cards": [{"ExportID": "E100", "Number": 315, "Shift": 1,
            "REG": 960, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0,
            "FirstName": "José", "MI": "", "LastName": "Peña", "Badge": "0315",
            "EditREG": 0, "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2032-02-29",
            "Days": [{"DayDate": "2032-02-29", "Hours": 480, "REG": 480, "OT1": 0,
                      "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0},
                     {"DayDate": "2032-03-01", "Hours": 480, "REG": 480, "OT1": 0,
                      "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]}]})";
const char kPeachtreeSetup[] =
    "0,0,0,0,0,0,0,ADMN-01000,ADMN-01000,ADMN-01000,ADMN-02000,ADMN-02000,ADMN-02000,"
    "ADMN-02000,0,1";
// The tickets Peachtree gets for them, one a day, dated "mm/dd/yy".
const char kTickets2032[] =
    "0,E100,1,02/29/32,FALSE,,ADMN-01000,3,,0,FALSE,1,,,,8:00,,0,0,2,8.00,0,From Horalis\r\n"
    "0,E100,2,03/01/32,FALSE,,ADMN-01000,3,,0,FALSE,1,,,,8:00,,0,0,2,8.00,0,From Horalis\r\n";

TEST(ShortDates, APeachtreePeriodIn2032ReadsBackIn2032) {
  const TwoDigitYearMaxScope window(2049);
  const Variant cards = cards_from_json(kCards2032);
  const reconcile::ClassRules* rules = formats::find_export_class("Peachtree");
  ASSERT_NE(rules, nullptr);
  EXPECT_EQ(export_bytes("Peachtree", cards, kPeachtreeSetup, ""), kTickets2032);

  const reconcile::FileContents read =
      rules->read(kTickets2032, SettingsFields(kPeachtreeSetup), "", cards);
  ASSERT_EQ(read.records.size(), 2u);
  EXPECT_EQ(read.records[0].date, (CivilDate{2032, 2, 29}));
  EXPECT_EQ(read.records[1].date, (CivilDate{2032, 3, 1}));
  const reconcile::Reconciliation result =
      reconcile::reconcile(*rules, cards, kPeachtreeSetup, "", kTickets2032);
  EXPECT_EQ(result.unexplained(), 0u) << reconcile::table_text(result);
}

}  // namespace
