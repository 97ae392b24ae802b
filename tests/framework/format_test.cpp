#include "zorvat/format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "zorvat/error.h"

namespace zorvat {
namespace {

struct FormatCase {
  Variant value;
  const char* pattern;
  const char* expected;
};

std::ostream& operator<<(std::ostream& out, const FormatCase& c) {
  return out << "[" << c.pattern << "] -> [" << c.expected << "]";
}

class FormatTable : public testing::TestWithParam<FormatCase> {};

TEST_P(FormatTable, RendersAsTheClassicFormat) {
  const FormatCase& c = GetParam();
  EXPECT_EQ(format(c.value, c.pattern), c.expected);
  // A pattern parsed once renders the same for every value.
  const FormatPattern pattern(c.pattern);
  EXPECT_EQ(pattern(c.value), c.expected);
}

const Date kMarch6 = Date::from_civil(2004, 3, 6);

INSTANTIATE_TEST_SUITE_P(
    ZeroFill, FormatTable,
    testing::Values(
        FormatCase{315, "000000000", "000000315"}, FormatCase{"315", "000000000", "000000315"},
        FormatCase{" 42 ", "000", "042"}, FormatCase{"1,234", "000000", "001234"},
        FormatCase{1234567890, "000000000", "1234567890"},  // widens, never cut
        FormatCase{1, "00", "01"}, FormatCase{-5, "00", "-05"}, FormatCase{7, "0000", "0007"},
        FormatCase{12345, "0000", "12345"}, FormatCase{7, "000", "007"},
        FormatCase{1000, "000", "1000"}, FormatCase{50, "0000000", "0000050"},
        FormatCase{150, "00000000000", "00000000150"}, FormatCase{315, "00000", "00315"},
        FormatCase{315, "00000000", "00000315"}, FormatCase{0, "0", "0"}, FormatCase{5, "0", "5"},
        FormatCase{1e20, "0", "100000000000000000000"}, FormatCase{true, "0", "-1"}));

INSTANTIATE_TEST_SUITE_P(NonNumericTextPassesUnchanged, FormatTable,
                         testing::Values(FormatCase{"A315", "000000000", "A315"},
                                         FormatCase{"", "00", ""},
                                         FormatCase{"1.2.3", "0000", "1.2.3"},
                                         FormatCase{"12abc", "###0.00", "12abc"},
                                         FormatCase{"E", "0", "E"}));

INSTANTIATE_TEST_SUITE_P(
    RoundingHalfAwayFromZero, FormatTable,
    testing::Values(FormatCase{0.5, "##0", "1"}, FormatCase{1.5, "##0", "2"},
                    FormatCase{2.5, "##0", "3"}, FormatCase{-2.5, "##0", "-3"},
                    FormatCase{1.4833333333333334, "##0", "1"},  // 89 minutes
                    FormatCase{2.4, "##0", "2"}, FormatCase{0.4, "0", "0"},
                    // A negative that rounds to zero keeps its sign, as the classic
                    // function always did.
                    FormatCase{-0.4, "0", "-0"}, FormatCase{0.125, "##0.00", "0.13"},
                    FormatCase{-0.125, "##0.00", "-0.13"},
                    // 1.005 and 2.675 are stored just below the tie; taken to 15
                    // significant digits first they round up.
                    FormatCase{1.005, "##0.00", "1.01"}, FormatCase{2.675, "##0.00", "2.68"},
                    FormatCase{999.999, "0.00", "1000.00"}, FormatCase{0.0001, "0.00", "0.00"},
                    FormatCase{-0.001, "0.00", "-0.00"}, FormatCase{9.5, "0", "10"},
                    FormatCase{99.5, "00", "100"}, FormatCase{15.5, "00", "16"},
                    FormatCase{14.5, "00", "15"}));

INSTANTIATE_TEST_SUITE_P(
    HourPatterns, FormatTable,
    testing::Values(FormatCase{1.5, "###0.00", "1.50"}, FormatCase{0.0, "###0.00", "0.00"},
                    FormatCase{-0.5, "###0.00", "-0.50"}, FormatCase{40.0, "###0.00", "40.00"},
                    FormatCase{12345.678, "###0.00", "12345.68"},
                    FormatCase{1.0 / 60.0, "###0.00", "0.02"}, FormatCase{0.5, "#####.00", ".50"},
                    FormatCase{0.0, "#####.00", ".00"}, FormatCase{40.0, "#####.00", "40.00"},
                    FormatCase{0.25, "####.00", ".25"}, FormatCase{1.0 / 60.0, "####.00", ".02"},
                    FormatCase{123456.5, "#####.00", "123456.50"},
                    FormatCase{-0.5, "####.00", "-.50"}, FormatCase{8.0, "##0.00", "8.00"},
                    FormatCase{0.5, "##0.00", "0.50"}, FormatCase{1.5, "##0", "2"},
                    FormatCase{0.0, "##0", "0"}, FormatCase{25.0, "##", "25"},
                    FormatCase{0.0, "##", ""}, FormatCase{24.99, "##", "25"},
                    FormatCase{100.04375, "##", "100"}));

INSTANTIATE_TEST_SUITE_P(
    Sections, FormatTable,
    testing::Values(FormatCase{5, "0;(0)", "5"}, FormatCase{-5, "0;(0)", "(5)"},
                    FormatCase{0, "0;(0);\"zero\"", "zero"},
                    FormatCase{1234567, "#,##0", "1,234,567"}, FormatCase{123, "#,##0", "123"},
                    FormatCase{0.256, "0%", "26%"}, FormatCase{5, "\"Hrs \"0", "Hrs 5"},
                    FormatCase{5, "\\$0", "$5"}));

INSTANTIATE_TEST_SUITE_P(
    TextMasks, FormatTable,
    testing::Values(FormatCase{"Q123", "&&&&", "Q123"}, FormatCase{"AB", "&&&&", "AB"},
                    FormatCase{"ABCDEF", "&&&&", "ABCDEF"}, FormatCase{12, "&&&&", "12"},
                    FormatCase{"", "&&&&", ""}, FormatCase{"AB", "@@@@", "  AB"},
                    FormatCase{"AB", "!@@@@", "AB  "}, FormatCase{"abc", ">&&&", "ABC"},
                    FormatCase{"ABC", "<&&&", "abc"}));

// Places count letters: "é" (two bytes) fills one place, and so does "€" (three).
INSTANTIATE_TEST_SUITE_P(TextMasksCountLetters, FormatTable,
                         testing::Values(FormatCase{"P\xC3\xA9", "@@@@", "  P\xC3\xA9"},
                                         FormatCase{"P\xC3\xA9", "!@@@@", "P\xC3\xA9  "},
                                         FormatCase{"\xC3\xB1"
                                                    "a",
                                                    "@-@", "\xC3\xB1-a"},
                                         FormatCase{"\xE2\x82\xAC"
                                                    "12",
                                                    "@@@@",
                                                    " \xE2\x82\xAC"
                                                    "12"},
                                         FormatCase{"Jos\xC3\xA9", "&&-&&", "Jo-s\xC3\xA9"}));

INSTANTIATE_TEST_SUITE_P(
    Dates, FormatTable,
    testing::Values(FormatCase{kMarch6, "mm/dd/yy", "03/06/04"},
                    FormatCase{Date::from_civil(1999, 12, 31), "mm/dd/yy", "12/31/99"},
                    FormatCase{Date::from_civil(2010, 11, 21), "mm/dd/yy", "11/21/10"},
                    FormatCase{"2004-03-06", "mm/dd/yy", "03/06/04"},
                    FormatCase{"3/6/2004", "mm/dd/yy", "03/06/04"},
                    FormatCase{"nonsense", "mm/dd/yy", "nonsense"},
                    FormatCase{38052, "mm/dd/yy", "03/06/04"},
                    FormatCase{kMarch6, "yyyy-mm-dd", "2004-03-06"},
                    FormatCase{kMarch6, "m/d/yyyy", "3/6/2004"},
                    FormatCase{kMarch6, "dddd, mmmm d", "Saturday, March 6"},
                    FormatCase{kMarch6, "ddd mmm", "Sat Mar"},
                    FormatCase{Date{38052.75}, "hh:mm AM/PM", "06:00 PM"},
                    FormatCase{Date{38052.5}, "h:nn:ss", "12:00:00"}));

TEST(Format, NullFormatsAsNothing) {
  EXPECT_EQ(format(Variant::null(), "000"), "");
  EXPECT_EQ(format(Variant::null(), "mm/dd/yy"), "");
}

TEST(Format, EmptyFormatsAsZero) {
  EXPECT_EQ(format(Variant(), "00"), "00");
  EXPECT_EQ(format(Variant(), "##"), "");
  EXPECT_EQ(format(Variant(), "###0.00"), "0.00");
}

TEST(Format, AnObjectIsATypeMismatch) {
  const auto collection = std::shared_ptr<const AutomationObject>();
  try {
    format(Variant(ObjectRef{}), "00");
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kTypeMismatch);
  }
}

TEST(Format, AppendsToExistingText) {
  const FormatPattern pattern("###0.00");
  std::string out = "REG=";
  pattern.append_to(out, 1.5);
  pattern.append_to(out, Variant(","));
  EXPECT_EQ(out, "REG=1.50,");
}

}  // namespace
}  // namespace zorvat

namespace zorvat {
namespace {

// An independent check of hour formatting: minutes / 60 rounded with exact integer
// arithmetic, half away from zero, then laid out by hand.
std::string hours_by_integers(long minutes, int places, bool leading_zero) {
  const long scale = places == 2 ? 100 : 1;
  const long magnitude = minutes < 0 ? -minutes : minutes;
  const long rounded = (magnitude * scale * 2 + 60) / 120;  // half away from zero
  std::string whole = std::to_string(rounded / scale);
  if (whole == "0" && !leading_zero) whole.clear();
  std::string text = (minutes < 0 ? "-" : "") + whole;
  if (places == 2) {
    const long cents = rounded % 100;
    text += "." + std::string(cents < 10 ? "0" : "") + std::to_string(cents);
  }
  return text;
}

TEST(Format, HourPatternsAgreeWithExactArithmeticForEveryMinuteCount) {
  const FormatPattern hours("###0.00"), bare("#####.00"), whole("##0");
  std::string out;
  for (long minutes = -200000; minutes <= 200000; ++minutes) {
    const double value = static_cast<double>(minutes) / 60.0;
    out.clear();
    hours.append_to(out, value);
    ASSERT_EQ(out, hours_by_integers(minutes, 2, true)) << minutes;
    out.clear();
    bare.append_to(out, value);
    ASSERT_EQ(out, hours_by_integers(minutes, 2, false)) << minutes;
    out.clear();
    whole.append_to(out, value);
    ASSERT_EQ(out, hours_by_integers(minutes, 0, true)) << minutes;
  }
}

TEST(Format, LargeHourValuesKeepEveryDigit) {
  EXPECT_EQ(format(Variant(123456789012.345), "###0.00"), "123456789012.35");
  EXPECT_EQ(format(Variant(1e13 / 60.0), "###0.00"), "166666666666.67");
  EXPECT_EQ(format(Variant(2147483647.0 / 60.0 * 100.0), "00000000000"), "03579139412");
}

// Patterns of digit placeholders alone ("000000000", "###0.00") take a shorter path
// than patterns with anything else in them. A literal after the digits sends the same
// number through the general path, so the two must agree byte for byte: over ties at
// every decimal place, signs, zero and negative zero, values too large for the short
// path, and forced places wider than any number.
TEST(Format, DigitOnlyPatternsAgreeWithTheGeneralPath) {
  const char* patterns[] = {"0",
                            "00",
                            "000000000",
                            "#",
                            "##0",
                            "###0.00",
                            "0.0",
                            "0.00",
                            "#.##",
                            "0.",
                            "#0.0#",
                            "00.0000",
                            "#.####",
                            "00000.000",
                            "0.00000",
                            "#,##0",
                            "0.00%",
                            "##.#",
                            "00000000000000000000000000000000.00"};
  std::vector<double> values = {0.0,   -0.0,   0.5,          -0.5,          1.5,
                                2.5,   0.005,  0.015,        1.005,         -1.005,
                                0.125, 0.0625, 99.995,       -99.995,       1e11,
                                1e12,  1.5e12, 1e15,         -1e15,         999999999999.5,
                                4.35,  0.045,  1e-9,         -1e-9,         123456789.123456,
                                60.0,  -7.25,  2147483647.0, -2147483648.0, 0.995};
  std::mt19937_64 random(1234);
  for (int i = 0; i < 20000; ++i) {
    const double scale = std::pow(10.0, static_cast<double>(random() % 16) - 4.0);
    double value = static_cast<double>(random() % 100000) / 1000.0 * scale;
    if (random() % 2) value = -value;
    values.push_back(value);
  }
  // Ties at every decimal place the short path takes.
  for (int places = 0; places <= 4; ++places)
    for (int whole = 0; whole < 300; ++whole)
      values.push_back((whole * 10 + 5) / std::pow(10.0, places + 1));
  for (const char* pattern : patterns) {
    const FormatPattern plain(pattern);
    const FormatPattern general(std::string(pattern) + "x");
    for (double value : values) {
      std::string short_path, general_path;
      plain.append_to(short_path, value);
      general.append_to(general_path, value);
      ASSERT_EQ(short_path + "x", general_path) << pattern << " " << value;
    }
  }
}

}  // namespace
}  // namespace zorvat
