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

TEST(Date, TypedDatesAcceptTwoDigitYears) {
  EXPECT_EQ(parse_date_text("3/6/04"), Date::from_civil(2004, 3, 6));
  EXPECT_EQ(parse_date_text("12/31/99"), Date::from_civil(1999, 12, 31));
  EXPECT_EQ(parse_date_text(" 3/6/2004 "), Date::from_civil(2004, 3, 6));
  EXPECT_FALSE(parse_date_text("13/6/04"));
  EXPECT_FALSE(parse_date_text("3/6"));
}

}  // namespace
}  // namespace zorvat
