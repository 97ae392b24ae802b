// The helpers classes write their limits with: a column's largest value, the sentences
// that name a column, and the card values past one. The expected sentences are worked
// out by hand from the column declarations below.
#include <gtest/gtest.h>

#include "reconcile_test_support.h"
#include "zorvat/automation.h"
#include "zorvat/reconcile/limits.h"

using namespace zorvat;
using namespace zorvat::reconcile;
using namespace zorvat::testing_support;

namespace {

constexpr Column kEmployee{"the employee number", 2, 6, {}, "000000"};
constexpr Column kHundredths{"regular hundredths", 11, 5, {}, "00000"};

// The one card of a cards file holding `properties` besides its ExportID.
Variant card_with(const std::string& properties) {
  const Variant cards =
      cards_from_json(R"({"PeriodEnd": "2004-03-06", "cards": [{"ExportID": "E1")" +
                      (properties.empty() ? "" : ", " + properties) + "}]}");
  Variant card;
  for_each(cards, [&](const Variant& each) { card = each; });
  return card;
}

TEST(Limits, TheLargestWholeNumberOfSomeDigitsIsAllNines) {
  EXPECT_EQ(largest_whole_number(1), 9);
  EXPECT_EQ(largest_whole_number(4), 9999);
  EXPECT_EQ(largest_whole_number(7), 9999999);
}

TEST(Limits, AColumnIsNamedWithItsColumnsAndItsLargestValue) {
  EXPECT_EQ(number_column_text(kEmployee), "the employee number: columns 2-7, at most 999999");
  // 99999 hundredths: 999.99 hours, 59999.4 minutes, of which 59999 whole.
  EXPECT_EQ(hundredths_column_text(kHundredths, 5),
            "regular hundredths: columns 11-15, at most 999.99 hours (59999 minutes)");
  // Hours with two decimals after five digits: seven digits of hundredths.
  EXPECT_EQ(hundredths_column_text(kHundredths, 7),
            "regular hundredths: columns 11-15, at most 99999.99 hours (5999999 minutes)");
}

TEST(Limits, ANumberWiderThanItsColumnIsPastIt) {
  EXPECT_FALSE(number_past_column(card_with(R"("Number": 999999)"), kEmployee));
  // The pattern writes a sign before its six digits: any negative number is one letter
  // wider than the column.
  const std::optional<ValuePastLimit> negative =
      number_past_column(card_with(R"("Number": -315)"), kEmployee);
  ASSERT_TRUE(negative);
  EXPECT_EQ(negative->text,
            "Number -315 is written \"-000315\", 7 letters where the employee number: columns "
            "2-7 holds 6");
  const std::optional<ValuePastLimit> past =
      number_past_column(card_with(R"("Number": 1000000)"), kEmployee);
  ASSERT_TRUE(past);
  EXPECT_EQ(past->property, "Number");
  EXPECT_EQ(past->text, "Number 1000000 passes the employee number: columns 2-7, at most 999999");
  // A card without a number has none past the column.
  EXPECT_FALSE(number_past_column(card_with(""), kEmployee));
}

TEST(Limits, HoursPastTheirColumnAreTheMinutesWhoseHundredthsItCannotHold) {
  // 59999 minutes are 99998.33 hundredths, written as 99998; 60000 minutes are 100000.
  EXPECT_FALSE(hours_past_column(card_with(R"("OT1": 59999)"), "OT1", kHundredths, 5));
  EXPECT_FALSE(hours_past_column(card_with(R"("OT1": -59999)"), "OT1", kHundredths, 5));
  const std::optional<ValuePastLimit> past =
      hours_past_column(card_with(R"("OT1": 60000)"), "OT1", kHundredths, 5);
  ASSERT_TRUE(past);
  EXPECT_EQ(past->property, "OT1");
  EXPECT_EQ(past->text,
            "60000 minutes pass regular hundredths: columns 11-15, at most 999.99 "
            "hours (59999 minutes)");
  EXPECT_FALSE(hours_past_column(card_with(""), "OT1", kHundredths, 5));
}

TEST(Limits, APropertyIsReadAsTextOrNotAtAll) {
  EXPECT_EQ(property_text(card_with(R"("Number": 1315)"), "Number"), "1315");
  EXPECT_EQ(property_text(card_with(""), "Number"), std::nullopt);
}

}  // namespace
