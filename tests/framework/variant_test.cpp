#include "zorvat/variant.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <vector>

#include "zorvat/date.h"
#include "zorvat/error.h"
#include "zorvat/format.h"

namespace zorvat {
namespace {

template <class F>
long error_number_of(F&& f) {
  try {
    f();
  } catch (const Error& error) {
    return error.number();
  }
  return 0;
}

TEST(Variant, HoldsTheHostSubtypes) {
  EXPECT_EQ(Variant().type(), Variant::Type::Empty);
  EXPECT_EQ(Variant::null().type(), Variant::Type::Null);
  EXPECT_EQ(Variant(true).type(), Variant::Type::Boolean);
  EXPECT_EQ(Variant(std::int32_t{5}).type(), Variant::Type::Long);
  EXPECT_EQ(Variant(5.5).type(), Variant::Type::Double);
  EXPECT_EQ(Variant("x").type(), Variant::Type::String);
  EXPECT_EQ(Variant(Date{1.0}).type(), Variant::Type::Date);
  EXPECT_EQ(Variant(ObjectRef{}).type(), Variant::Type::Object);
}

TEST(Variant, ToLongRoundsHalfToEven) {
  EXPECT_EQ(to_long(Variant(2.5)), 2);
  EXPECT_EQ(to_long(Variant(3.5)), 4);
  EXPECT_EQ(to_long(Variant(-2.5)), -2);
  EXPECT_EQ(to_long(Variant(-3.5)), -4);
  EXPECT_EQ(to_long(Variant(2.4999)), 2);
  EXPECT_EQ(to_long(Variant("2.5")), 2);
  EXPECT_EQ(to_long(Variant(" 7 ")), 7);
  EXPECT_EQ(to_long(Variant(2147483647.4)), 2147483647);
  EXPECT_EQ(to_long(Variant(-2147483648.5)), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(to_long(Variant(true)), -1);
  EXPECT_EQ(to_long(Variant()), 0);
}

TEST(Variant, ToLongOverflows) {
  EXPECT_EQ(error_number_of([] { to_long(Variant(2147483647.5)); }), rt::kOverflow);
  EXPECT_EQ(error_number_of([] { to_long(Variant(-2147483649.0)); }), rt::kOverflow);
  EXPECT_EQ(error_number_of([] { to_long(Variant("1e10")); }), rt::kOverflow);
}

TEST(Variant, ToIntegerRoundsAndOverflowsAt16Bits) {
  EXPECT_EQ(to_integer(Variant(32766.5)), 32766);
  EXPECT_EQ(to_integer(Variant(-32768.5)), -32768);
  EXPECT_EQ(to_integer(Variant(std::int32_t{32767})), 32767);
  EXPECT_EQ(error_number_of([] { to_integer(Variant(32767.5)); }), rt::kOverflow);
  EXPECT_EQ(error_number_of([] { to_integer(Variant(std::int32_t{32768})); }), rt::kOverflow);
  EXPECT_EQ(error_number_of([] { to_integer(Variant(-32769.0)); }), rt::kOverflow);
}

TEST(Variant, ToDoubleFollowsTheClassicRules) {
  EXPECT_EQ(to_double(Variant()), 0.0);
  EXPECT_EQ(to_double(Variant(true)), -1.0);
  EXPECT_EQ(to_double(Variant("1.5")), 1.5);
  EXPECT_EQ(to_double(Variant("-1.5e3")), -1500.0);
  EXPECT_EQ(error_number_of([] { to_double(Variant("1D2")); }), rt::kTypeMismatch);
  EXPECT_EQ(to_double(Variant("&H1F")), 31.0);
  EXPECT_EQ(to_double(Variant("&O17")), 15.0);
  EXPECT_EQ(to_double(Variant(Date::from_civil(2004, 3, 6))), 38052.0);
  EXPECT_EQ(error_number_of([] { to_double(Variant("abc")); }), rt::kTypeMismatch);
  EXPECT_EQ(error_number_of([] { to_double(Variant("")); }), rt::kTypeMismatch);
  EXPECT_EQ(error_number_of([] { to_double(Variant::null()); }), rt::kInvalidUseOfNull);
  EXPECT_EQ(error_number_of([] { to_double(Variant("1e400")); }), rt::kOverflow);
  EXPECT_EQ(error_number_of([] { to_double(Variant(ObjectRef{})); }), rt::kTypeMismatch);
}

TEST(Variant, ToTextUsesTheGeneralNumberForm) {
  EXPECT_EQ(to_text(Variant(1.5)), "1.5");
  EXPECT_EQ(to_text(Variant(0.1 + 0.2)), "0.3");
  EXPECT_EQ(to_text(Variant(1e15)), "1E+15");
  EXPECT_EQ(to_text(Variant(123456789012345.0)), "123456789012345");
  EXPECT_EQ(to_text(Variant(0.00001)), "1E-05");
  EXPECT_EQ(to_text(Variant(0.0001)), "0.0001");
  EXPECT_EQ(to_text(Variant(-0.0)), "0");
  EXPECT_EQ(to_text(Variant(std::int32_t{-42})), "-42");
  EXPECT_EQ(to_text(Variant(true)), "True");
  EXPECT_EQ(to_text(Variant()), "");
  EXPECT_EQ(to_text(Variant(Date::from_civil(2004, 3, 6))), "3/6/2004");
  EXPECT_EQ(to_concat_text(Variant::null()), "");
  EXPECT_EQ(error_number_of([] { to_text(Variant::null()); }), rt::kInvalidUseOfNull);
}

TEST(Variant, ToDateAcceptsDatesNumbersAndDateText) {
  const Date march6 = Date::from_civil(2004, 3, 6);
  EXPECT_EQ(to_date(Variant(march6)), march6);
  EXPECT_EQ(to_date(Variant("2004-03-06")), march6);
  EXPECT_EQ(to_date(Variant("3/6/04")), march6);
  EXPECT_EQ(to_date(Variant(38052.0)), march6);
  EXPECT_EQ(error_number_of([] { to_date(Variant("someday")); }), rt::kTypeMismatch);
  EXPECT_EQ(error_number_of([] { to_date(Variant(1e9)); }), rt::kOverflow);
}

TEST(Variant, DateTextReadsTwoDigitYearsThroughTheWindow) {
  {
    const TwoDigitYearMaxScope window(2029);
    EXPECT_EQ(to_date(Variant("12/31/29")), Date::from_civil(2029, 12, 31));
    EXPECT_EQ(to_date(Variant("01/01/30")), Date::from_civil(1930, 1, 1));
    EXPECT_EQ(to_text(Variant(to_date(Variant("1/1/49")))), "1/1/1949");
  }
  {
    const TwoDigitYearMaxScope window(2049);
    EXPECT_EQ(to_date(Variant("12/31/29")), Date::from_civil(2029, 12, 31));
    EXPECT_EQ(to_date(Variant("01/01/30")), Date::from_civil(2030, 1, 1));
    EXPECT_EQ(to_text(Variant(to_date(Variant("1/1/49")))), "1/1/2049");
    EXPECT_EQ(to_date(Variant("1/1/50")), Date::from_civil(1950, 1, 1));
  }
  {
    const TwoDigitYearMaxScope window(1999);
    EXPECT_EQ(to_date(Variant("6/15/00")), Date::from_civil(1900, 6, 15));
    EXPECT_EQ(to_date(Variant("6/15/99")), Date::from_civil(1999, 6, 15));
  }
  // A four-digit year is never moved.
  const TwoDigitYearMaxScope window(2029);
  EXPECT_EQ(to_date(Variant("1/1/2030")), Date::from_civil(2030, 1, 1));
}

TEST(Variant, DateTextFormattedAsADateIsReadThroughTheWindowToo) {
  const FormatPattern four_digit_year("yyyy-mm-dd");
  {
    const TwoDigitYearMaxScope window(2029);
    EXPECT_EQ(four_digit_year(Variant("1/1/30")), "1930-01-01");
  }
  const TwoDigitYearMaxScope window(2049);
  EXPECT_EQ(four_digit_year(Variant("1/1/30")), "2030-01-01");
}

TEST(Variant, ToBooleanAcceptsTrueFalseAndNumbers) {
  EXPECT_TRUE(to_boolean(Variant("True")));
  EXPECT_TRUE(to_boolean(Variant("TRUE")));
  EXPECT_FALSE(to_boolean(Variant("false")));
  EXPECT_TRUE(to_boolean(Variant("1")));
  EXPECT_FALSE(to_boolean(Variant("0")));
  EXPECT_TRUE(to_boolean(Variant(-1.0)));
  EXPECT_EQ(error_number_of([] { to_boolean(Variant("yes")); }), rt::kTypeMismatch);
}

TEST(Variant, IsNumericFollowsTheClassicTest) {
  EXPECT_TRUE(is_numeric(Variant("12")));
  EXPECT_TRUE(is_numeric(Variant(" 12 ")));
  EXPECT_TRUE(is_numeric(Variant("-1.5e3")));
  EXPECT_TRUE(is_numeric(Variant("12.5")));
  EXPECT_TRUE(is_numeric(Variant(".5")));
  EXPECT_TRUE(is_numeric(Variant("&H1F")));
  EXPECT_TRUE(is_numeric(Variant()));
  EXPECT_TRUE(is_numeric(Variant(3.0)));
  EXPECT_FALSE(is_numeric(Variant("")));
  EXPECT_FALSE(is_numeric(Variant(" ")));
  EXPECT_FALSE(is_numeric(Variant("abc")));
  EXPECT_FALSE(is_numeric(Variant("1.2.3")));
  EXPECT_FALSE(is_numeric(Variant("1e")));
  EXPECT_FALSE(is_numeric(Variant(".")));
  EXPECT_FALSE(is_numeric(Variant::null()));
  EXPECT_FALSE(is_numeric(Variant(Date{1.0})));
}

// Whole numbers are written from their digits without the C library's general
// conversion; the text must be the one that conversion gives ("%.15G"), up to the
// last whole number it writes without an exponent, and from there on in exponent form.
TEST(GeneralNumberText, WholeNumbersAreTheirDigitsUpToFifteen) {
  std::vector<double> values = {1,
                                -1,
                                7,
                                10,
                                -10,
                                100,
                                2147483647,
                                -2147483648.0,
                                4294967296.0,
                                1e14,
                                -1e14,
                                999999999999999.0,
                                -999999999999999.0,
                                1e15,
                                -1e15,
                                1234567890123456.0,
                                1e20};
  for (double v = 1; v < 1e15; v = v * 3 + 1) values.push_back(v);
  for (double value : values) {
    char expected[40];
    std::snprintf(expected, sizeof expected, "%.15G", value);
    EXPECT_EQ(general_number_text(value), expected) << value;
  }
  EXPECT_EQ(general_number_text(1e15), "1E+15");
  EXPECT_EQ(general_number_text(-123.0), "-123");
  EXPECT_EQ(general_number_text(0.0), "0");
}

// Text of plain digits is read without the general parser; a blank in front sends the
// same digits through it, and both must give the same number.
TEST(ParseNumeric, PlainDigitsReadAsTheGeneralParserReadsThem) {
  for (const char* digits : {"0", "7", "007", "17", "46655", "2147483648", "123456789012345",
                             "999999999999999", "1234567890123456", "99999999999999999999"}) {
    const NumericParse plain = parse_numeric(digits);
    const NumericParse general = parse_numeric(std::string(" ") + digits);
    EXPECT_EQ(plain.status, NumericParse::Status::Ok) << digits;
    EXPECT_EQ(plain.status, general.status) << digits;
    EXPECT_EQ(plain.value, general.value) << digits;
  }
}

// Numeric text as the classic conversion reads it under US English: blanks around,
// one sign before or after, parentheses for a negative, one "$", "," groups, one ".",
// an exponent (not with "$"), &H and &O whole numbers of 32 bits.
struct NumericTextCase {
  const char* text;
  NumericParse::Status status;
  double value;
};

TEST(Variant, ParseNumericReadsTheClassicNumericText) {
  using S = NumericParse::Status;
  const NumericTextCase cases[] = {{"5", S::Ok, 5},
                                   {" 42 ", S::Ok, 42},
                                   {"\t7\t", S::Ok, 7},
                                   {"+5", S::Ok, 5},
                                   {"-5", S::Ok, -5},
                                   {"5+", S::Ok, 5},
                                   {"5-", S::Ok, -5},
                                   {"5 -", S::Ok, -5},
                                   {"- 5", S::Ok, -5},
                                   {"(5)", S::Ok, -5},
                                   {"( 5 )", S::Ok, -5},
                                   {"(-5)", S::Ok, -5},
                                   {"$5", S::Ok, 5},
                                   {"5$", S::Ok, 5},
                                   {"$ 5", S::Ok, 5},
                                   {"-$5", S::Ok, -5},
                                   {"$-5", S::Ok, -5},
                                   {"($5)", S::Ok, -5},
                                   {"$(5)", S::Ok, -5},
                                   {"(5)$", S::Ok, -5},
                                   {"($1,234.50)", S::Ok, -1234.5},
                                   {"1,234", S::Ok, 1234},
                                   {"1,,2", S::Ok, 12},
                                   {"5,", S::Ok, 5},
                                   {"1,234,567.891", S::Ok, 1234567.891},
                                   {".5", S::Ok, 0.5},
                                   {"5.", S::Ok, 5},
                                   {"1e3", S::Ok, 1000},
                                   {"1E-3", S::Ok, 0.001},
                                   {"2.5E+2", S::Ok, 250},
                                   {"1e-400", S::Ok, 0},
                                   {"&H1F", S::Ok, 31},
                                   {"&h1f", S::Ok, 31},
                                   {"&O17", S::Ok, 15},
                                   {"&o7", S::Ok, 7},
                                   {" &H1F ", S::Ok, 31},
                                   {"&H8000", S::Ok, 32768},
                                   {"&H7FFFFFFF", S::Ok, 2147483647},
                                   {"&H80000000", S::Ok, -2147483648.0},
                                   {"&HFFFFFFFF", S::Ok, -1},
                                   {"&O37777777777", S::Ok, -1},
                                   {"1e400", S::Overflow, 0},
                                   {"-1e400", S::Overflow, 0},
                                   {"($1e400)", S::NotNumeric, 0},
                                   {"&H100000000", S::Overflow, 0},
                                   {"", S::NotNumeric, 0},
                                   {" ", S::NotNumeric, 0},
                                   {".", S::NotNumeric, 0},
                                   {"$", S::NotNumeric, 0},
                                   {"()", S::NotNumeric, 0},
                                   {"-", S::NotNumeric, 0},
                                   {"$$5", S::NotNumeric, 0},
                                   {"(5", S::NotNumeric, 0},
                                   {"5)", S::NotNumeric, 0},
                                   {"-5-", S::NotNumeric, 0},
                                   {"+-5", S::NotNumeric, 0},
                                   {"1 2", S::NotNumeric, 0},
                                   {",5", S::NotNumeric, 0},
                                   {"1.2.3", S::NotNumeric, 0},
                                   {"5%", S::NotNumeric, 0},
                                   {"1e", S::NotNumeric, 0},
                                   {"1e+", S::NotNumeric, 0},
                                   {"1D2", S::NotNumeric, 0},
                                   {"0x10", S::NotNumeric, 0},
                                   {"&H", S::NotNumeric, 0},
                                   {"&O8", S::NotNumeric, 0},
                                   {"$5e2", S::NotNumeric, 0},
                                   {"abc", S::NotNumeric, 0},
                                   {"12abc", S::NotNumeric, 0}};
  for (const NumericTextCase& c : cases) {
    const NumericParse parsed = parse_numeric(c.text);
    EXPECT_EQ(parsed.status, c.status) << "[" << c.text << "]";
    if (c.status == S::Ok) {
      EXPECT_EQ(parsed.value, c.value) << "[" << c.text << "]";
    }
  }
}

TEST(Variant, EveryCoercionReadsCurrencyAndParentheses) {
  EXPECT_EQ(to_double(Variant("$5")), 5.0);
  EXPECT_EQ(to_long(Variant("(5)")), -5);
  EXPECT_EQ(to_integer(Variant("$1,234")), 1234);
  EXPECT_TRUE(to_boolean(Variant("($1)")));
  EXPECT_TRUE(is_numeric(Variant("$5")));
  EXPECT_EQ(error_number_of([] { to_double(Variant("$$5")); }), rt::kTypeMismatch);
  EXPECT_EQ(error_number_of([] { to_long(Variant("($1e4)")); }), rt::kTypeMismatch);
  EXPECT_EQ(error_number_of([] { to_long(Variant("(1e400)")); }), rt::kOverflow);
}

TEST(Variant, GeneralNumberTextKeepsFifteenDigits) {
  EXPECT_EQ(general_number_text(2.0 / 3.0), "0.666666666666667");
  EXPECT_EQ(general_number_text(-2.0 / 3.0), "-0.666666666666667");
  EXPECT_EQ(general_number_text(999999999999999.0), "999999999999999");
  EXPECT_EQ(general_number_text(1234567890123456.0), "1.23456789012346E+15");
  EXPECT_EQ(general_number_text(1e300), "1E+300");
  EXPECT_EQ(general_number_text(-1.5e-7), "-1.5E-07");
  EXPECT_EQ(general_number_text(0.0001234), "0.0001234");
  EXPECT_EQ(general_number_text(-0.0), "0");
  EXPECT_EQ(general_number_text(2.5), "2.5");
}

TEST(Variant, DateTextDropsTheEmptyHalf) {
  EXPECT_EQ(to_text(Variant(Date{0.5})), "12:00:00 PM");
  EXPECT_EQ(to_text(Variant(Date{38052.75})), "3/6/2004 6:00:00 PM");
  EXPECT_EQ(to_text(Variant(Date{0.0})), "12:00:00 AM");
  EXPECT_EQ(to_text(Variant(Date{-1.25})), "12/29/1899 6:00:00 AM");
}

}  // namespace
}  // namespace zorvat
