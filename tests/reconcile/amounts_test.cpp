// Amounts at the edges of their range: every number a card may hold is either counted
// exactly or refused with 6 "Overflow", never wrapped; a class's number text of any
// length is read as what it says; and an amount beyond what a double holds exactly is
// still shown to the hundredth.
#include <gtest/gtest.h>

#include <limits>

#include "export_classes.h"
#include "raised.h"
#include "reconcile_test_support.h"
#include "zorvat/reconcile/expectation.h"
#include "zorvat/reconcile/reconcile.h"
#include "zorvat/reconcile/text_reader.h"

using namespace zorvat;
using namespace zorvat::reconcile;
using zorvat::testing_support::expect_error;

namespace {

constexpr std::string_view kOverflow =
    "Overflow: more time than reconciliation counts (at most 1537228672809129.30 hours in one "
    "amount or sum)";

TEST(Amounts, MinutesWithinRangeAreCountedToTheHundredthOfAMinute) {
  EXPECT_EQ(from_minutes(0.5), 50);
  EXPECT_EQ(from_minutes(-0.01), -1);
  EXPECT_EQ(from_minutes(99999999999.0), 9999999999900);
  // 2^62 minutes' hundredths lie within range; the next power of two does not.
  EXPECT_EQ(from_minutes(46116860184273879.04), 4611686018427387904);
}

TEST(Amounts, MinutesBeyondRangeRaiseOverflow) {
  for (double minutes :
       {1e17, -1e17, 1e300, -1e300, 92233720368547758.08, std::numeric_limits<double>::max()})
    expect_error([&] { from_minutes(minutes); }, 6, "zorvat.reconcile", kOverflow);
}

TEST(Amounts, SumsBeyondRangeRaiseOverflow) {
  EXPECT_EQ(add(kLargestAmount, -1), kLargestAmount - 1);
  EXPECT_EQ(add(-kLargestAmount, 0), -kLargestAmount);
  expect_error([] { add(kLargestAmount, 1); }, 6, "zorvat.reconcile", kOverflow);
  expect_error([] { add(-kLargestAmount, -1); }, 6, "zorvat.reconcile", kOverflow);
}

TEST(Amounts, LargeAmountsAreShownExactly) {
  // 9223372036854775807 = 1537228672809129 x 6000 + 1807; 1807 / 6000 = 0.30116...
  EXPECT_EQ(hours_text(kLargestAmount, 2), "1537228672809129.30");
  EXPECT_EQ(hours_text(kLargestAmount, 4, true), "+1537228672809129.3012");
  EXPECT_EQ(hours_text(-kLargestAmount, 4), "-1537228672809129.3012");
  // 2 x 10^12 hours and 5999 units (0.99983 hours): rounds up into the next hour.
  EXPECT_EQ(hours_text(12000000000005999, 2), "2000000000001.00");
  // Half a hundredth (30 units) rounds away from zero.
  EXPECT_EQ(hours_text(12000000000000030, 2), "2000000000000.01");
  EXPECT_EQ(hours_text(-12000000000000030, 2), "-2000000000000.01");
  // Below 2^53 units, through the double as always.
  EXPECT_EQ(hours_text(-1, 2), "0.00");
  EXPECT_EQ(hours_text(750, 2), "0.12");
}

TEST(Amounts, DecimalsOfUpToSeventeenDigitsAreRead) {
  EXPECT_EQ(parse_decimal("999999999999999.99", 2), 99999999999999999);
  EXPECT_EQ(parse_decimal("-99999999999999999", 0), -99999999999999999);
  EXPECT_EQ(parse_decimal("9999999999999999.99", 2), std::nullopt);
  EXPECT_EQ(parse_decimal("12345678901234567.8901", 4), std::nullopt);
  EXPECT_TRUE(parse_decimal_digits("1666666666666670000.00", 2));
  EXPECT_TRUE(parse_decimal_digits("-1" + std::string(300, '0') + ".00", 2));
  EXPECT_FALSE(parse_decimal_digits("1.5", 2));
  EXPECT_FALSE(parse_decimal_digits("1E+20", 0));
}

TEST(Amounts, PatternNumbersBeyondRangeRaiseOverflowAndTextRaisesTypeMismatch) {
  EXPECT_EQ(pattern_number(Variant(1666666666666.6667), "###0.00", 2), 166666666666667);
  expect_error([] { pattern_number(Variant(1.6666666666666667e15), "###0.00", 2); }, 6,
               "zorvat.reconcile", kOverflow);
  expect_error([] { pattern_number(Variant(-1e298), "0000000", 0); }, 6, "zorvat.reconcile",
               kOverflow);
  expect_error([] { pattern_number(Variant(std::string("A1")), "000", 0); }, 13, "zorvat.reconcile",
               "Type mismatch: \"A1\" is not a number");
}

// EPIP writes hundredths zero-filled to seven digits; a larger number is written whole
// and moves the fields after it, and the reader follows.
TEST(Amounts, AnEpipFieldWiderThanItsPatternIsReadWhole) {
  const ClassRules* rules = formats::find_export_class("ADP7");
  ASSERT_NE(rules, nullptr);
  const std::string header = "A001ABC00205z" + std::string(66, ' ') + "7\r\n";
  const std::string employee =
      "B003E10041010"
      "01"  // shift
      "012"
      "1666666666666665 "  // 16666666666666.65 hours
      "0130000050 z\r\n";
  std::string trailer =
      "C030"
      "1666666666666665"  // eleven digits and five more
      " 031"
      "00000000050"
      " z";
  trailer += std::string(79 - trailer.size(), ' ') + "\r\n";
  const FileContents contents = rules->read(
      header + employee + trailer,
      SettingsFields("ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,"
                     "Hours 4,EPIP"),
      "", Variant());
  ASSERT_EQ(contents.records.size(), 2u);
  EXPECT_EQ(contents.records[0].code, "REG");
  EXPECT_EQ(contents.records[0].amount, 1666666666666665 * kUnitsPerHundredth);
  EXPECT_EQ(contents.records[1].code, "OT1");
  EXPECT_EQ(contents.records[1].amount, 50 * kUnitsPerHundredth);
  const std::vector<std::pair<std::string, std::int64_t>> controls = {
      {"batch number", 5}, {"regular hundredths", 1666666666666665}, {"overtime 1 hundredths", 50}};
  EXPECT_EQ(contents.controls, controls);
}

}  // namespace
