#include "zorvat/date.h"

#include <gtest/gtest.h>

namespace zorvat {
namespace {

TEST(Date, SerialDaysCountFromTheLastDayOf1899) {
  EXPECT_EQ(Date::from_civil(1899, 12, 30).serial, 0.0);
  EXPECT_EQ(Date::from_civil(1900, 1, 1).serial, 2.0);
  EXPECT_EQ(Date::from_civil(2004, 3, 6).serial, 38052.0);
  EXPECT_EQ(Date::from_civil(1899, 12, 29).serial, -1.0);
}

TEST(Date, CivilRoundTrips) {
  for (double serial : {-657434.0, -1.0, 0.0, 38052.0, 2958465.0}) {
    const Date date{serial};
    EXPECT_EQ(Date::from_civil(date.civil()).serial, serial);
  }
  EXPECT_EQ(Date{38052.75}.civil(), (CivilDate{2004, 3, 6}));
  EXPECT_EQ(Date{38052.75}.seconds_of_day(), 18 * 3600);
}

TEST(Date, IsoParsingIsStrict) {
  EXPECT_EQ(parse_iso_date("2004-03-06"), Date::from_civil(2004, 3, 6));
  EXPECT_EQ(parse_iso_date("2004-02-29"), Date::from_civil(2004, 2, 29));
  EXPECT_FALSE(parse_iso_date("2003-02-29"));
  EXPECT_FALSE(parse_iso_date("2004-3-6"));
  EXPECT_FALSE(parse_iso_date("2004-13-01"));
  EXPECT_FALSE(parse_iso_date("20040306"));
  EXPECT_FALSE(parse_iso_date("0099-01-01"));
  // Every place of the year, month and day takes a decimal digit and nothing else.
  EXPECT_EQ(parse_iso_date("0100-01-01"), Date::from_civil(100, 1, 1));
  EXPECT_EQ(parse_iso_date("9999-12-31"), Date::from_civil(9999, 12, 31));
  for (const char* text :
       {"-004-03-06", "+004-03-06", " 004-03-06", "200a-03-06", "2004--3-06", "2004-+3-06",
        "2004- 3-06", "2004-0:-06", "2004-03-+6", "2004-03- 6", "2004-03-0/", "2004-03-1x"})
    EXPECT_FALSE(parse_iso_date(text)) << text;
}

TEST(TwoDigitYearWindow, DefaultsToTheWindowOfCurrentWindows) {
  EXPECT_EQ(kDefaultTwoDigitYearMax, 2049);
  EXPECT_EQ(two_digit_year_max(), 2049);
  EXPECT_EQ(year_of_two_digits(0), 2000);
  EXPECT_EQ(year_of_two_digits(29), 2029);
  EXPECT_EQ(year_of_two_digits(30), 2030);
  EXPECT_EQ(year_of_two_digits(49), 2049);
  EXPECT_EQ(year_of_two_digits(50), 1950);
  EXPECT_EQ(year_of_two_digits(99), 1999);
}

TEST(TwoDigitYearWindow, TwentyTwentyNineGivesTheOldWindow) {
  const TwoDigitYearMaxScope window(2029);
  EXPECT_EQ(year_of_two_digits(0), 2000);
  EXPECT_EQ(year_of_two_digits(29), 2029);
  EXPECT_EQ(year_of_two_digits(30), 1930);
  EXPECT_EQ(year_of_two_digits(49), 1949);
  EXPECT_EQ(year_of_two_digits(50), 1950);
  EXPECT_EQ(year_of_two_digits(99), 1999);
  EXPECT_EQ(parse_date_text("12/31/29"), Date::from_civil(2029, 12, 31));
  EXPECT_EQ(parse_date_text("1/1/30"), Date::from_civil(1930, 1, 1));
}

TEST(TwoDigitYearWindow, TwentyFortyNineReadsThirtyToFortyNineInThisCentury) {
  const TwoDigitYearMaxScope window(2049);
  EXPECT_EQ(parse_date_text("12/31/29"), Date::from_civil(2029, 12, 31));
  EXPECT_EQ(parse_date_text("01/01/30"), Date::from_civil(2030, 1, 1));
  EXPECT_EQ(parse_date_text("12/31/49"), Date::from_civil(2049, 12, 31));
  EXPECT_EQ(parse_date_text("1/1/50"), Date::from_civil(1950, 1, 1));
  EXPECT_EQ(parse_date_text("3/6/99"), Date::from_civil(1999, 3, 6));
  EXPECT_EQ(parse_date_text("2/29/00"), Date::from_civil(2000, 2, 29));
  // One digit is a two-digit year too; four digits are the year itself.
  EXPECT_EQ(parse_date_text("7/4/5"), Date::from_civil(2005, 7, 4));
  EXPECT_EQ(parse_date_text("1/1/1930"), Date::from_civil(1930, 1, 1));
}

TEST(TwoDigitYearWindow, NineteenNinetyNineEndsTheWindowOnTheLastYearOfTheCentury) {
  const TwoDigitYearMaxScope window(1999);
  EXPECT_EQ(year_of_two_digits(0), 1900);
  EXPECT_EQ(year_of_two_digits(29), 1929);
  EXPECT_EQ(year_of_two_digits(30), 1930);
  EXPECT_EQ(year_of_two_digits(49), 1949);
  EXPECT_EQ(year_of_two_digits(50), 1950);
  EXPECT_EQ(year_of_two_digits(99), 1999);
  EXPECT_EQ(parse_date_text("1/1/00"), Date::from_civil(1900, 1, 1));
}

TEST(TwoDigitYearWindow, AWindowEndingMidCenturyStartsNinetyNineYearsBefore) {
  const TwoDigitYearMaxScope window(2050);
  EXPECT_EQ(year_of_two_digits(50), 2050);
  EXPECT_EQ(year_of_two_digits(51), 1951);
  // The earliest window reaches below the automation dates' first year, 100.
  set_two_digit_year_max(99);
  EXPECT_EQ(year_of_two_digits(0), 0);
  EXPECT_EQ(year_of_two_digits(99), 99);
  EXPECT_FALSE(parse_date_text("1/1/30"));
  set_two_digit_year_max(9999);
  EXPECT_EQ(year_of_two_digits(0), 9900);
  EXPECT_EQ(year_of_two_digits(99), 9999);
}

TEST(TwoDigitYearWindow, AYearWindowsCannotTakeIsRefusedAndChangesNothing) {
  const TwoDigitYearMaxScope window(2029);
  EXPECT_FALSE(set_two_digit_year_max(98));
  EXPECT_FALSE(set_two_digit_year_max(10000));
  EXPECT_FALSE(set_two_digit_year_max(-2049));
  EXPECT_EQ(two_digit_year_max(), 2029);
  EXPECT_TRUE(set_two_digit_year_max(99));
  EXPECT_TRUE(set_two_digit_year_max(9999));
  EXPECT_EQ(two_digit_year_max(), 9999);
}

TEST(TwoDigitYearMaxScope, PutsTheWindowBeforeBack) {
  {
    const TwoDigitYearMaxScope outer(2029);
    {
      const TwoDigitYearMaxScope inner(1999);
      EXPECT_EQ(two_digit_year_max(), 1999);
    }
    EXPECT_EQ(two_digit_year_max(), 2029);
  }
  EXPECT_EQ(two_digit_year_max(), kDefaultTwoDigitYearMax);
}

TEST(Date, TypedDatesAcceptTwoDigitYears) {
  EXPECT_EQ(parse_date_text("3/6/04"), Date::from_civil(2004, 3, 6));
  EXPECT_EQ(parse_date_text("12/31/99"), Date::from_civil(1999, 12, 31));
  EXPECT_EQ(parse_date_text(" 3/6/2004 "), Date::from_civil(2004, 3, 6));
  EXPECT_FALSE(parse_date_text("13/6/04"));
  EXPECT_FALSE(parse_date_text("3/6"));
}

}  // namespace
}  // namespace zorvat
