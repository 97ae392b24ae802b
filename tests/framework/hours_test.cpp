#include "zorvat/hours.h"

#include <gtest/gtest.h>

#include "zorvat/error.h"
#include "zorvat/variant.h"

namespace zorvat::hours {
namespace {

TEST(Min2Hrs, DoubleHoursAreNotRounded) {
  EXPECT_EQ(minutes_to_hours(0, "zorvat.Generic.Min2Hrs"), 0.0);
  EXPECT_EQ(minutes_to_hours(-30, "zorvat.Generic.Min2Hrs"), -0.5);
  EXPECT_EQ(minutes_to_hours(90, "zorvat.Generic.Min2Hrs"), 1.5);
  EXPECT_DOUBLE_EQ(minutes_to_hours(1, "zorvat.Generic.Min2Hrs"), 1.0 / 60.0);
}

TEST(Min2HrsinHun, HundredthsRoundHalfToEvenOnTheQuotient) {
  constexpr std::string_view source = "zorvat.Peachtree.Min2HrsinHun";
  EXPECT_EQ(minutes_to_hundredths(90, source), 150);
  EXPECT_EQ(minutes_to_hundredths(1, source), 2);   // 1.666...
  EXPECT_EQ(minutes_to_hundredths(7, source), 12);  // 11.666...
  EXPECT_EQ(minutes_to_hundredths(5, source), 8);   // 8.333...
  EXPECT_EQ(minutes_to_hundredths(30, source), 50);
  EXPECT_EQ(minutes_to_hundredths(-90, source), -150);
  // A quotient exactly halfway (12.5 hundredths) rounds to the even neighbour.
  EXPECT_EQ(round_half_even(12.5), 12.0);
  EXPECT_EQ(round_half_even(13.5), 14.0);
}

TEST(Min2Hrs, WholeHoursRoundHalfToEven) {
  constexpr std::string_view source = "zorvat.PrimePay.Min2Hrs";
  EXPECT_EQ(minutes_to_whole_hours(89, source), 1);
  EXPECT_EQ(minutes_to_whole_hours(90, source), 2);
  EXPECT_EQ(minutes_to_whole_hours(150, source), 2);
  EXPECT_EQ(minutes_to_whole_hours(210, source), 4);
  EXPECT_EQ(minutes_to_whole_hours(-90, source), -2);
}

TEST(Min2Hrs, FromOneHourGivesZeroBelowSixtyMinutes) {
  constexpr std::string_view source = "zorvat.QB2000.Min2Hrs";
  EXPECT_EQ(minutes_to_whole_hours_from_one_hour(59, source), 0);
  EXPECT_EQ(minutes_to_whole_hours_from_one_hour(0, source), 0);
  EXPECT_EQ(minutes_to_whole_hours_from_one_hour(-120, source), 0);
  EXPECT_EQ(minutes_to_whole_hours_from_one_hour(60, source), 1);
  EXPECT_EQ(minutes_to_whole_hours_from_one_hour(90, source), 2);
  EXPECT_EQ(minutes_to_whole_hours_from_one_hour(100, source), 2);
  EXPECT_EQ(minutes_to_whole_hours_from_one_hour(150, source), 2);
}

TEST(Min2HrsinHun, HundredthsPastTheLongRangeOverflowWithTheFunctionsSource) {
  constexpr std::string_view source = "zorvat.PrimePay.Min2HrsinHun";
  // 1,288,490,188 minutes are 2,147,483,646.67 hundredths: still in range.
  EXPECT_EQ(minutes_to_hundredths(1288490188, source), 2147483647);
  for (std::int32_t minutes : {1288490189, 1300000000, -1300000000}) {
    try {
      minutes_to_hundredths(minutes, source);
      FAIL() << minutes;
    } catch (const Error& error) {
      EXPECT_EQ(error.number(), rt::kOverflow);
      EXPECT_EQ(error.description(), "Overflow");
      EXPECT_EQ(error.source(), source);
    }
  }
}

TEST(Min2Hrs, NonFiniteResultsRaiseOverflow) {
  try {
    minutes_to_hours(std::numeric_limits<double>::infinity() * 0.0, "zorvat.Generic.Min2Hrs");
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kOverflow);
    EXPECT_EQ(error.source(), "zorvat.Generic.Min2Hrs");
  }
}

}  // namespace
}  // namespace zorvat::hours
