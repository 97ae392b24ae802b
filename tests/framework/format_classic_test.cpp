// The pattern language of the classic Format function, feature by feature: the
// examples of its documentation, the automation library's published test vectors for
// VarFormat, and the refusal of what the engine does not implement.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "zorvat/error.h"
#include "zorvat/format.h"

namespace zorvat {
namespace {

struct ClassicCase {
  Variant value;
  const char* pattern;
  const char* expected;
};

std::ostream& operator<<(std::ostream& out, const ClassicCase& c) {
  return out << "[" << c.pattern << "] -> [" << c.expected << "]";
}

class ClassicFormat : public testing::TestWithParam<ClassicCase> {};

TEST_P(ClassicFormat, RendersAsTheClassicFunction) {
  const ClassicCase& c = GetParam();
  EXPECT_EQ(format(c.value, c.pattern), c.expected);
}

// 17:04:23 on Wednesday, 27 January 1993: the documentation's example values.
const Date kExampleTime{0.7113773148148148};
const Date kExampleDate = Date::from_civil(1993, 1, 27);
const Date kExampleBoth{Date::from_civil(1993, 1, 27).serial + 0.7113773148148148};

// The Format function's documented examples (its example procedure and the table of
// user-defined numeric formats, each for 5, -5 and 0.5).
INSTANTIATE_TEST_SUITE_P(
    Documentation, ClassicFormat,
    testing::Values(
        ClassicCase{kExampleTime, "Long Time", "5:04:23 PM"},
        ClassicCase{kExampleDate, "Long Date", "Wednesday, January 27, 1993"},
        ClassicCase{kExampleTime, "h:m:s", "17:4:23"},
        ClassicCase{kExampleTime, "hh:mm:ss AMPM", "05:04:23 PM"},
        ClassicCase{kExampleDate, "dddd, mmm d yyyy", "Wednesday, Jan 27 1993"},
        ClassicCase{23, "", "23"}, ClassicCase{5459.4, "##,##0.00", "5,459.40"},
        ClassicCase{334.9, "###0.00", "334.90"}, ClassicCase{5, "0.00%", "500.00%"},
        ClassicCase{"HELLO", "<", "hello"}, ClassicCase{"This is it", ">", "THIS IS IT"},
        // The table of user-defined numeric formats.
        ClassicCase{5, "", "5"}, ClassicCase{-5, "", "-5"}, ClassicCase{0.5, "", "0.5"},
        ClassicCase{5, "0", "5"}, ClassicCase{-5, "0", "-5"}, ClassicCase{0.5, "0", "1"},
        ClassicCase{5, "0.00", "5.00"}, ClassicCase{-5, "0.00", "-5.00"},
        ClassicCase{0.5, "0.00", "0.50"}, ClassicCase{5, "#,##0", "5"},
        ClassicCase{-5, "#,##0", "-5"}, ClassicCase{0.5, "#,##0", "1"},
        ClassicCase{5, "#,##0.00;;;Nil", "5.00"}, ClassicCase{-5, "#,##0.00;;;Nil", "-5.00"},
        ClassicCase{0.5, "#,##0.00;;;Nil", "0.50"},
        ClassicCase{Variant::null(), "#,##0.00;;;Nil", "Nil"},
        ClassicCase{5, "$#,##0;($#,##0)", "$5"}, ClassicCase{-5, "$#,##0;($#,##0)", "($5)"},
        ClassicCase{0.5, "$#,##0;($#,##0)", "$1"}, ClassicCase{5, "$#,##0.00;($#,##0.00)", "$5.00"},
        ClassicCase{-5, "$#,##0.00;($#,##0.00)", "($5.00)"},
        ClassicCase{0.5, "$#,##0.00;($#,##0.00)", "$0.50"}, ClassicCase{5, "0%", "500%"},
        ClassicCase{-5, "0%", "-500%"}, ClassicCase{0.5, "0%", "50%"},
        ClassicCase{5, "0.00%", "500.00%"}, ClassicCase{-5, "0.00%", "-500.00%"},
        ClassicCase{0.5, "0.00%", "50.00%"}, ClassicCase{5, "0.00E+00", "5.00E+00"},
        ClassicCase{-5, "0.00E+00", "-5.00E+00"}, ClassicCase{0.5, "0.00E+00", "5.00E-01"},
        ClassicCase{5, "0.00E-00", "5.00E00"}, ClassicCase{-5, "0.00E-00", "-5.00E00"},
        ClassicCase{0.5, "0.00E-00", "5.00E-01"},
        // A comma right of the last whole placeholder divides by a thousand.
        ClassicCase{100000000.0, "##0,,", "100"}, ClassicCase{999999.0, "##0,,", "1"},
        ClassicCase{499999.0, "##0,,", "0"}, ClassicCase{1234567.0, "#,##0,", "1,235"},
        ClassicCase{1234567.0, "0,.00", "1234.57"}));

// The named formats.
INSTANTIATE_TEST_SUITE_P(
    NamedFormats, ClassicFormat,
    testing::Values(ClassicCase{1234.5, "General Number", "1234.5"},
                    ClassicCase{1e20, "General Number", "1E+20"},
                    ClassicCase{1234.567, "Currency", "$1,234.57"},
                    ClassicCase{-1234.567, "Currency", "($1,234.57)"},
                    ClassicCase{0, "Currency", "$0.00"}, ClassicCase{1234.567, "Fixed", "1234.57"},
                    ClassicCase{0.5, "Fixed", "0.50"}, ClassicCase{-1234.567, "Fixed", "-1234.57"},
                    ClassicCase{1234567.891, "Standard", "1,234,567.89"},
                    ClassicCase{-0.5, "Standard", "-0.50"}, ClassicCase{0.125, "Percent", "12.50%"},
                    ClassicCase{1234.5, "Scientific", "1.23E+03"},
                    ClassicCase{0.000123, "Scientific", "1.23E-04"}, ClassicCase{0, "Yes/No", "No"},
                    ClassicCase{-3, "Yes/No", "Yes"}, ClassicCase{true, "True/False", "True"},
                    ClassicCase{false, "True/False", "False"}, ClassicCase{0.1, "On/Off", "On"},
                    ClassicCase{0, "On/Off", "Off"}, ClassicCase{"$5", "Yes/No", "Yes"},
                    ClassicCase{"abc", "Yes/No", "abc"},
                    ClassicCase{1234.5, "STANDARD", "1,234.50"},
                    ClassicCase{1, "general number", "1"},
                    ClassicCase{kExampleBoth, "General Date", "1/27/1993 5:04:23 PM"},
                    ClassicCase{kExampleDate, "General Date", "1/27/1993"},
                    ClassicCase{kExampleTime, "General Date", "5:04:23 PM"},
                    ClassicCase{kExampleDate, "Medium Date", "27-Jan-93"},
                    ClassicCase{kExampleDate, "Short Date", "1/27/1993"},
                    ClassicCase{kExampleTime, "Medium Time", "05:04 PM"},
                    ClassicCase{kExampleTime, "Short Time", "17:04"},
                    ClassicCase{Date{38053.0}, "Long Time", "12:00:00 AM"},
                    ClassicCase{kExampleBoth, "c", "1/27/1993 5:04:23 PM"},
                    ClassicCase{kExampleBoth, "ddddd", "1/27/1993"},
                    ClassicCase{kExampleBoth, "dddddd", "Wednesday, January 27, 1993"},
                    ClassicCase{kExampleBoth, "ttttt", "5:04:23 PM"}));

// The automation library's published test vectors for VarFormat (US English).
INSTANTIATE_TEST_SUITE_P(
    PublishedVectors, ClassicFormat,
    testing::Values(
        ClassicCase{1, "Percent", "100.00%"}, ClassicCase{0, "Percent", "0.00%"},
        ClassicCase{1, "Standard", "1.00"}, ClassicCase{1, "Scientific", "1.00E+00"},
        ClassicCase{0, "Scientific", "0.00E+00"}, ClassicCase{1, "True/False", "True"},
        ClassicCase{0, "On/Off", "Off"}, ClassicCase{1, "#", "1"}, ClassicCase{0, "#", ""},
        ClassicCase{0, "##", ""}, ClassicCase{1, "#.#", "1."}, ClassicCase{0, "#.#", "."},
        ClassicCase{1, "00", "01"}, ClassicCase{0, "0.0", "0.0"},
        ClassicCase{1, "00\\c\\o\\p\\y", "01copy"}, ClassicCase{0, "\"pos\";\"neg\"", "pos"},
        ClassicCase{-1, "\"pos\";\"neg\"", "neg"},
        ClassicCase{0, "\"pos\";\"neg\";\"zero\"", "zero"},
        ClassicCase{-1, "\"pos\";\"neg\";\"zero\"", "neg"}, ClassicCase{"testing", "", "testing"},
        ClassicCase{"testing", "@", "testing"}, ClassicCase{"testing", "&", "testing"},
        ClassicCase{"testing", "\\x@\\x@", "xtxesting"},
        ClassicCase{"testing", "\\x&\\x&", "xtxesting"}, ClassicCase{"testing", "@\\x", "txesting"},
        ClassicCase{"testing", "@@@@@@@@", " testing"},
        ClassicCase{"testing", "@\\x@@@@@@@", " xtesting"},
        ClassicCase{"testing", "&&&&&&&&", "testing"},
        ClassicCase{"testing", "!&&&&&&&", "testing"},
        ClassicCase{"testing", "&&&&&&&!", "testing"}, ClassicCase{"testing", ">&&", "TESTING"},
        ClassicCase{"testing", "<&&", "testing"}, ClassicCase{"testing", "<&>&", "testing"},
        ClassicCase{"39697.11", "hh:mm", "02:38"}, ClassicCase{"39697.11", "mm-dd-yy", "09-06-08"},
        ClassicCase{1, "<&>&", "1"}, ClassicCase{1, "#00000000", "00000001"},
        ClassicCase{1, "000###", "000001"}, ClassicCase{1, "#00##00#0", "00000001"},
        ClassicCase{1, "1#####0000", "10001"},
        ClassicCase{1, "##abcdefghijklmnopqrstuvwxyz", "1abcdefghijklmnopqrstuvwxyz"},
        ClassicCase{100000, "#,###,###,###", "100,000"},
        ClassicCase{1, "0,000,000,000", "0,000,000,001"},
        ClassicCase{123456789, "#,#.#", "123,456,789."},
        ClassicCase{123456789, "###, ###, ###", "123, 456, 789"}, ClassicCase{1, "#;-#", "1"},
        ClassicCase{-1, "#;-#", "-1"}, ClassicCase{1.23456789, "0#.0#0#0#0#0", "01.234567890"},
        ClassicCase{1.2, "0#.0#0#0#0#0", "01.200000000"},
        ClassicCase{9.87654321, "#0.#0#0#0#0#", "9.87654321"},
        ClassicCase{9.8, "#0.#0#0#0#0#", "9.80000000"},
        ClassicCase{0.00000008, "#0.#0#0#0#0#0", "0.0000000800"},
        ClassicCase{0.00010705, "#0.##########", "0.00010705"}, ClassicCase{17, "#0", "17"},
        ClassicCase{4711, "#0", "4711"}, ClassicCase{17, "#00", "17"},
        ClassicCase{100, "0##", "100"}, ClassicCase{17, "#000", "017"},
        ClassicCase{17, "#0.00", "17.00"}, ClassicCase{17, "#0000.00", "0017.00"},
        ClassicCase{17, "#.00", "17.00"}, ClassicCase{1.7, "#.00", "1.70"},
        ClassicCase{.17, "#.00", ".17"}, ClassicCase{17, "#3", "173"},
        ClassicCase{17, "#33", "1733"}, ClassicCase{17, "#3.33", "173.33"},
        ClassicCase{17, "#3333.33", "173333.33"}, ClassicCase{17, "#.33", "17.33"},
        ClassicCase{.17, "#.33", ".33"}, ClassicCase{1.7, "0.0000E-000", "1.7000E000"},
        ClassicCase{1.7, "0.0000e-1", "1.7000e01"},
        ClassicCase{86.936849, "#0.000000000000e-000", "86.936849000000e000"},
        ClassicCase{1.7, "#0", "2"}, ClassicCase{1.7, "#.33", "2.33"}, ClassicCase{1.7, "#3", "23"},
        ClassicCase{1.73245, "0.0000E+000", "1.7325E+000"},
        ClassicCase{9.9999999, "#0.000000", "10.000000"},
        ClassicCase{1.7, "0.0000e+0#", "1.7000e+0"},
        ClassicCase{100.0001e+0, "0.0000E+0", "1.0000E+2"},
        ClassicCase{1000001, "0.0000e+1", "1.0000e+61"},
        ClassicCase{100.0001e+25, "0.0000e+0", "1.0000e+27"},
        ClassicCase{450.0001e+43, "#000.0000e+0", "4500.0010e+42"},
        ClassicCase{0.0001e-11, "##00.0000e-0", "1000.0000e-18"},
        ClassicCase{0.0317e-11, "0000.0000e-0", "3170.0000e-16"},
        ClassicCase{0.0021e-11, "00##.0000e-0", "2100.0000e-17"},
        ClassicCase{1.0001e-27, "##00.0000e-0", "1000.1000e-30"},
        ClassicCase{47.11, ".0000E+0", ".4711E+2"},
        ClassicCase{3.0401e-13, "#####.####e-0%", "30401.e-15%"}, ClassicCase{1.57, "0.00", "1.57"},
        ClassicCase{-1.57, "0.00", "-1.57"}, ClassicCase{-1.57, "#.##", "-1.57"},
        ClassicCase{-0.1, ".#", "-.1"}, ClassicCase{0.099, "#.#", ".1"},
        ClassicCase{0.0999, "#.##", ".1"}, ClassicCase{0.099, "#.##", ".1"},
        ClassicCase{0.0099, "#.##", ".01"}, ClassicCase{0.0049, "#.##", "."},
        ClassicCase{0.0094, "#.##", ".01"}, ClassicCase{0.00099, "#.##", "."},
        ClassicCase{0.0995, "#.##", ".1"}, ClassicCase{8.0995, "#.##", "8.1"},
        ClassicCase{0.0994, "#.##", ".1"}, ClassicCase{1.00, "#,##0.00", "1.00"},
        ClassicCase{0.0995, "#.###", ".1"},
        // Dates (the first day of the week is Sunday).
        ClassicCase{Date{0.0}, "w", "7"}, ClassicCase{Date{2.525}, "am/pm", "pm"},
        ClassicCase{Date{2.525}, "AM/PM", "PM"}, ClassicCase{Date{2.525}, "A/P", "P"},
        ClassicCase{Date{2.525}, "a/p", "p"}, ClassicCase{Date{2.525}, "q", "1"},
        ClassicCase{Date{2.525}, "d", "1"}, ClassicCase{Date{2.525}, "dd", "01"},
        ClassicCase{Date{2.525}, "ddd", "Mon"}, ClassicCase{Date{2.525}, "dddd", "Monday"},
        ClassicCase{Date{2.525}, "mmm", "Jan"}, ClassicCase{Date{2.525}, "mmmm", "January"},
        ClassicCase{Date{2.525}, "y", "1"}, ClassicCase{Date{2.525}, "yy", "00"},
        ClassicCase{Date{2.525}, "yyy", "001"}, ClassicCase{Date{2.525}, "yyyy", "1900"},
        ClassicCase{Date{2.525}, "dd mm yyyy hh:mm:ss", "01 01 1900 12:36:00"},
        ClassicCase{Date{2.525}, "dd mm yyyy mm", "01 01 1900 01"},
        ClassicCase{Date{2.525}, "dd mm yyyy :mm", "01 01 1900 :01"},
        ClassicCase{Date{2.525}, "dd mm yyyy hh:mm", "01 01 1900 12:36"},
        ClassicCase{Date{2.525}, "mm mm", "01 01"},
        ClassicCase{Date{2.525}, "mm :mm:ss", "01 :01:00"},
        ClassicCase{Date{2.525}, "mm :ss:mm", "01 :00:01"},
        ClassicCase{Date{2.525}, "hh:mm :ss:mm", "12:36 :00:01"},
        ClassicCase{Date{2.525}, "hh:dd :mm:mm", "12:01 :01:01"},
        ClassicCase{Date{2.525}, "dd:hh :mm:mm", "01:12 :36:01"},
        ClassicCase{Date{2.525}, "hh :mm:mm", "12 :36:01"},
        ClassicCase{Date{2.525}, "dd :mm:mm", "01 :01:01"},
        ClassicCase{Date{2.525}, "dd :mm:nn", "01 :01:36"},
        ClassicCase{Date{2.725}, "hh:nn:ss A/P", "05:24:00 P"},
        ClassicCase{Date{40531.0}, "dddd", "Sunday"}, ClassicCase{Date{40531.0}, "ddd", "Sun"},
        ClassicCase{Date{2.525}, "short time", "12:36"},
        ClassicCase{Date{2.525}, "medium time", "12:36 PM"},
        ClassicCase{Date{2.525}, "long time", "12:36:00 PM"}));

// Dates: AM/PM puts every hour on the 12-hour clock; y is the day of the year, q the
// quarter, w the day of the week (Sunday 1), ww the week of the year (the week of
// 1 January is the first, weeks start on Sunday).
INSTANTIATE_TEST_SUITE_P(
    DateParts, ClassicFormat,
    testing::Values(ClassicCase{Date{38013.7113773148}, "m/d/yy h:nn AM/PM", "1/27/04 5:04 PM"},
                    ClassicCase{Date{38013.7113773148}, "AM/PM hh", "PM 05"},
                    ClassicCase{Date{38013.0}, "h AMPM", "12 AM"},
                    ClassicCase{Date{38013.5}, "h a/p", "12 p"},
                    ClassicCase{Date{38013.7113773148}, "y", "27"},
                    ClassicCase{Date{38053.0}, "y", "67"}, ClassicCase{Date{38013.0}, "ww", "5"},
                    ClassicCase{Date{38053.0}, "ww", "11"}, ClassicCase{Date{0.5}, "ww", "52"},
                    ClassicCase{Date{-1.25}, "ww", "52"}, ClassicCase{Date{2.525}, "ww", "1"},
                    ClassicCase{Date{38053.0}, "w", "1"}, ClassicCase{Date{38013.0}, "q", "1"},
                    ClassicCase{Date::from_civil(2004, 12, 31), "q ww y", "4 53 366"},
                    ClassicCase{Date{-1.25}, "m/d/yyyy h:nn", "12/29/1899 6:00"},
                    ClassicCase{Date{-1.25}, "y w", "363 6"},
                    ClassicCase{Date{38013.7113773148}, "\"at\" h \\h", "at 17 h"}));

// Text masks: characters fill the placeholders from the right ("!" from the left),
// the characters beyond the placeholders follow the mask, escapes and quoted text are
// literals, "<" and ">" force the case.
INSTANTIATE_TEST_SUITE_P(
    TextMasks, ClassicFormat,
    testing::Values(ClassicCase{"5551234567", "(@@@) @@@-@@@@", "(555) 123-4567"},
                    ClassicCase{"1234567", "(@@@) @@@-@@@@", "(   ) 123-4567"},
                    ClassicCase{"1234567", "!(@@@) @@@-@@@@", "(123) 456-7   "},
                    ClassicCase{"ab", "&&-&&", "-ab"}, ClassicCase{"ab", "!&&-&&", "ab-"},
                    ClassicCase{"abcdef", "@@-@@", "ab-cdef"},
                    ClassicCase{"HeLLo", "\\<@", "<HeLLo"},
                    ClassicCase{"HeLLo", "<\"X\"@", "Xhello"},
                    ClassicCase{"HeLLo", ">@\\x", "HxELLO"}, ClassicCase{"", "@@", "  "},
                    ClassicCase{"", "@;\"none\"", "none"}, ClassicCase{"x", "@;\"none\"", "x"},
                    ClassicCase{3.5, "@@@@@", "  3.5"}, ClassicCase{true, "@", "True"}));

// Grouping: a comma among the whole placeholders groups the thousands, wherever the
// digits fall among literal blanks.
INSTANTIATE_TEST_SUITE_P(
    Thousands, ClassicFormat,
    testing::Values(ClassicCase{1234567.891, "#,##0.00", "1,234,567.89"},
                    ClassicCase{-1234567, "#,##0", "-1,234,567"}, ClassicCase{999, "#,##0", "999"},
                    ClassicCase{1234, "0 ,000", "1, 234"}, ClassicCase{5, "0 ,000", "0, 005"},
                    ClassicCase{123456789, "### ###,###", "123, 456,789"},
                    ClassicCase{1e20, "#,##0", "100,000,000,000,000,000,000"},
                    ClassicCase{1234.5, "#,0.0", "1,234.5"}, ClassicCase{12345, ",", ","},
                    ClassicCase{12345, "\\,0", ",12345"}));

// Scientific notation: as many whole digits as whole placeholders; E+ and e+ always
// sign the exponent, E- and e- only when it is negative; zeros after the letter pad
// the exponent.
INSTANTIATE_TEST_SUITE_P(Scientific, ClassicFormat,
                         testing::Values(ClassicCase{1234.5, "0.00E+00", "1.23E+03"},
                                         ClassicCase{1234.5, "0.00e-00", "1.23e03"},
                                         ClassicCase{0.00012345, "0.00e-00", "1.23e-04"},
                                         ClassicCase{0.00012345, "0.00E+0", "1.23E-4"},
                                         ClassicCase{9.996, "0.00E+00", "1.00E+01"},
                                         ClassicCase{-9.996, "0.00E+00", "-1.00E+01"},
                                         ClassicCase{123456, "##0.0E+0", "123.5E+3"},
                                         ClassicCase{5, "##0.0E+0", "500.0E-2"},
                                         ClassicCase{1e100, "0.0E+000", "1.0E+100"},
                                         ClassicCase{1.5, "0.##E+00", "1.5E+00"},
                                         ClassicCase{1, "0.##E+00", "1.E+00"}));

// The sign leads the section's text; a section without digit placeholders shows none.
INSTANTIATE_TEST_SUITE_P(Signs, ClassicFormat,
                         testing::Values(ClassicCase{-5, "$#,##0.00", "-$5.00"},
                                         ClassicCase{-5, "\"x\"0", "-x5"},
                                         ClassicCase{-5, "\"text\"", "text"},
                                         ClassicCase{-0.4, "#", "-"}, ClassicCase{-0.0, "0", "0"},
                                         ClassicCase{-0.0001, "0;(0);\"z\"", "(0)"}));

// Numeric text is read as the classic conversion reads it before a number pattern.
INSTANTIATE_TEST_SUITE_P(
    NumericText, ClassicFormat,
    testing::Values(ClassicCase{"$5", "00", "05"}, ClassicCase{"(5)", "00", "-05"},
                    ClassicCase{"($1,234.50)", "0.00", "-1234.50"},
                    ClassicCase{"5-", "000", "-005"}, ClassicCase{" +7 ", "000", "007"},
                    ClassicCase{"&H1F", "0000", "0031"}, ClassicCase{"&O17", "00", "15"},
                    ClassicCase{"1.5E2", "0000", "0150"},
                    ClassicCase{"$5", "000000000", "000000005"},
                    ClassicCase{"(315)", "000000000", "-000000315"},
                    ClassicCase{"$$5", "00", "$$5"}, ClassicCase{"(5", "00", "(5"},
                    ClassicCase{"1D2", "00", "1D2"}));

// What the engine does not implement raises 5 (Invalid procedure call or argument)
// instead of writing something else.
TEST(ClassicFormatRefusals, UnsupportedTokensRaiseInvalidProcedureCall) {
  for (const char* pattern : {"0;0;0;0;0", "mmmmm", "ddddddd", "yyyyy", "hhh", "nnn", "sss", "www",
                              "qq", "cc", "t", "tttt", "0.00E+00E+00"}) {
    try {
      const FormatPattern parsed(pattern);
      ADD_FAILURE() << pattern << " was accepted: " << parsed(Variant(Date{38013.5}));
    } catch (const Error& error) {
      EXPECT_EQ(error.number(), rt::kInvalidProcedureCall) << pattern;
      EXPECT_EQ(error.description(), "Invalid procedure call or argument") << pattern;
    }
  }
}

TEST(ClassicFormatRefusals, FourSectionsAreAccepted) {
  EXPECT_EQ(format(Variant(0), "0;0;\"z\";\"n\""), "z");
  EXPECT_EQ(format(Variant::null(), "0;0;\"z\";\"n\""), "n");
}

// The fixed-point specialisation of the digit patterns gives exactly the text of the
// general decimal renderer: over every tie at every decimal place, their neighbours,
// the ties a double cannot hold (2.675, 1.005), negatives, values up to and past the
// specialisation's range (1e15 to 1e17), tiny values and random values, through the
// patterns the export classes use and their neighbours.
TEST(ClassicFormatFastPath, AgreesWithTheGeneralPath) {
  const std::vector<FormatPattern> patterns = [] {
    std::vector<FormatPattern> list;
    for (const char* pattern :
         {"0",       "00",       "000",       "0000",        "00000", "000000",
          "0000000", "00000000", "000000000", "00000000000", "##0",   "##0.00",
          "###0.00", "####.00",  "#####.00",  "00000.00",    "0.00",  "0.0",
          "0.000",   "0.0000",   "0.00000",   "#.####",      "##",    ".00",
          "0.",      "#,##0.00", "#,##0",     "0.00;0.00",   "0;0;0", "0.00;(0.00);\\z"})
      list.emplace_back(pattern);
    return list;
  }();
  std::vector<double> values;
  for (int places = 0; places <= 6; ++places) {
    const double scale = std::pow(10.0, places);
    for (long whole = 0; whole < 2000; whole += 7) {
      for (int digit = 0; digit < 10; ++digit) {
        const double tie = (static_cast<double>(whole * 10 + digit) + 0.5) / 10.0 / scale;
        values.push_back(tie);
        values.push_back(std::nextafter(tie, 0.0));
        values.push_back(std::nextafter(tie, 1e300));
      }
    }
  }
  for (long minutes = 0; minutes <= 100000; minutes += 3) {
    values.push_back(static_cast<double>(minutes) / 60.0);
    values.push_back(static_cast<double>(minutes) / 60.0 * 100.0);
  }
  std::uint64_t state = 88172645463325252u;
  for (int i = 0; i < 20000; ++i) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    const double unit = static_cast<double>(state % 1000000007u) / 1000000007.0;
    values.push_back(unit * std::pow(10.0, static_cast<double>(i % 20) - 6.0));
  }
  for (double tie : {0.125, 2.675, 1.005, 0.005, 0.015, 0.045, 1.115, 8.345, 0.5, 1.5, 2.5, 1234.5,
                     0.00005, 0.000049999999, 1.00005, 4.35, 1.45, 0.285})
    values.push_back(tie);
  for (double huge : {999999999999.5, 1e12 - 0.5, 1e12, 1e12 + 0.5, 123456789012345.0, 1e15, 1e20,
                      4.5e15, 9007199254740993.0, 4503599627370495.5})
    values.push_back(huge);
  for (double huge = 1e15; huge <= 1e17; huge *= 1.0471285480508996)  // 100 steps a decade
    for (double near : {huge, std::floor(huge) + 0.5, std::nextafter(huge, 0.0)})
      values.push_back(near);
  for (double tiny : {5e-324, 2.2250738585072014e-308, 1e-300, 1e-20, 1e-9, 4.9e-5, 5.1e-5})
    values.push_back(tiny);
  std::string fast;
  long compared = 0;
  for (const FormatPattern& pattern : patterns) {
    for (double value : values) {
      for (double signed_value : {value, -value}) {
        fast.clear();
        pattern.append_to(fast, signed_value);
        ASSERT_EQ(fast, pattern.without_fast_path(signed_value))
            << pattern.pattern() << " of " << signed_value;
        ++compared;
      }
    }
  }
  EXPECT_GT(compared, 1000000);
}

}  // namespace
}  // namespace zorvat
