#include "zorvat/settings.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "zorvat/error.h"
#include "zorvat/variant.h"

namespace zorvat {
namespace {

constexpr double kNoWrap = std::numeric_limits<double>::infinity();

TEST(SettingsFields, AnEmptyStringHasNoFields) {
  const SettingsFields fields("");
  EXPECT_EQ(fields.size(), 0u);
  EXPECT_EQ(fields.upper_bound(), -1);
}

TEST(SettingsFields, SplitsAtEveryComma) {
  EXPECT_EQ(SettingsFields("a").size(), 1u);
  EXPECT_EQ(SettingsFields(",").size(), 2u);
  const SettingsFields fields("0,1,,True");
  ASSERT_EQ(fields.size(), 4u);
  EXPECT_EQ(fields.at(0), "0");
  EXPECT_EQ(fields.at(2), "");
  EXPECT_EQ(fields.at(3), "True");
  EXPECT_EQ(fields.upper_bound(), 3);
}

TEST(SettingsFields, JoinRebuildsTheString) {
  for (const char* setup : {"0,1,,True", ",", "a", "x,,,"})
    EXPECT_EQ(SettingsFields(setup).join(), setup);
  SettingsFields fields("7,A");
  fields.at(0) = "8";
  EXPECT_EQ(fields.join(), "8,A");
}

TEST(SettingsFields, NoQuotingSoACommaInAFieldBreaksTheLayout) {
  // A custom separator "," typed into a field becomes two fields on the next split.
  const SettingsFields fields("0,,,0");
  EXPECT_EQ(fields.size(), 4u);
}

TEST(SettingsFields, APositionPastTheEndIsSubscriptOutOfRange) {
  const SettingsFields fields("a,b");
  try {
    fields.at(2);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kSubscriptOutOfRange);
    EXPECT_EQ(error.description(), "Subscript out of range");
  }
}

TEST(SettingsComparisons, FieldEqualsNumber) {
  EXPECT_TRUE(field_equals_number("1", 1));
  EXPECT_TRUE(field_equals_number("01", 1));
  EXPECT_FALSE(field_equals_number("0", 1));
  EXPECT_THROW(field_equals_number("True", 1), Error);
  EXPECT_THROW(field_equals_number("", 1), Error);
}

TEST(SettingsComparisons, FieldIsTrueAcceptsOptionAndCheckBoxValues) {
  EXPECT_TRUE(field_is_true("True"));
  EXPECT_FALSE(field_is_true("False"));
  EXPECT_TRUE(field_is_true("1"));  // a checked box
  EXPECT_FALSE(field_is_true("0"));
  EXPECT_THROW(field_is_true("maybe"), Error);
}

TEST(SettingsComparisons, FieldInRangeWantsANumberWithinBothBounds) {
  EXPECT_TRUE(field_in_range("0", 0, 99));
  EXPECT_TRUE(field_in_range("99", 0, 99));
  EXPECT_TRUE(field_in_range("2.5", 0, 99));  // fractions inside the range pass
  EXPECT_TRUE(field_in_range(" 7 ", 0, 9));
  EXPECT_FALSE(field_in_range("100", 0, 99));
  EXPECT_FALSE(field_in_range("-1", 0, 99));
  EXPECT_FALSE(field_in_range("99.01", 0, 99));
  EXPECT_FALSE(field_in_range("A", 0, 99));
  EXPECT_FALSE(field_in_range("", 0, 99));  // an empty field is not numeric
  EXPECT_FALSE(field_in_range("1E400", 0, 99));
}

TEST(SettingsCounters, AdvanceAddsOneAndWrapsPastTheHighest) {
  std::string field = "7";
  advance_counter(field, 99);
  EXPECT_EQ(field, "8");
  field = "98";
  advance_counter(field, 99);
  EXPECT_EQ(field, "99");
  advance_counter(field, 99);
  EXPECT_EQ(field, "0");
  field = "05";
  advance_counter(field, 99);
  EXPECT_EQ(field, "6");
  field = "46655";
  advance_counter(field, 46655);
  EXPECT_EQ(field, "0");
  field = "12.5";
  advance_counter(field, 46655);
  EXPECT_EQ(field, "13.5");
  field = "-3";
  advance_counter(field, 99);
  EXPECT_EQ(field, "-2");
}

TEST(SettingsCounters, ANonNumericCounterIsATypeMismatchAndStaysAsItWas) {
  std::string field = "A";
  try {
    advance_counter(field, 99);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kTypeMismatch);
  }
  EXPECT_EQ(field, "A");
}

TEST(SettingsCounters, AKeptCounterReadsItsFieldOnceAndWritesEachStepAsAdvanceDoes) {
  std::string field = "17";
  FieldCounter counter(field, kNoWrap);
  EXPECT_EQ(counter.value(), 17);
  field = "garbage";  // read once: what the field holds later is not read again
  EXPECT_EQ(counter.value(), 17);
  counter.advance();
  EXPECT_EQ(field, "18");
  EXPECT_EQ(counter.value(), 18);
  counter.advance();
  counter.advance();
  EXPECT_EQ(field, "20");
  EXPECT_EQ(counter.value(), 20);
}

TEST(SettingsCounters, AKeptCounterWithAFractionTakesItsValueFromTheText) {
  std::string field = "7.5";
  FieldCounter counter(field, kNoWrap);
  const double expected[] = {7.5, 8.5, 9.5, 10.5};
  for (double value : expected) {
    EXPECT_EQ(counter.value(), value);
    counter.advance();
  }
  EXPECT_EQ(field, "11.5");
}

TEST(SettingsCounters, AKeptCounterWrapsToZeroPastItsHighest) {
  std::string field = "98";
  FieldCounter counter(field, 99);
  counter.advance();
  EXPECT_EQ(field, "99");
  counter.advance();
  EXPECT_EQ(field, "0");
  EXPECT_EQ(counter.value(), 0);
  counter.advance();
  EXPECT_EQ(field, "1");
}

TEST(SettingsCounters, AKeptCounterPastFifteenDigitsStaysWhereItsTextLeavesIt) {
  // 10^15 is written "1E+15"; adding 1 to what that text reads gives a number whose
  // fifteen digits are the same, so the text stays.
  std::string field = "999999999999999";
  FieldCounter counter(field, kNoWrap);
  counter.advance();
  EXPECT_EQ(field, "1E+15");
  EXPECT_EQ(counter.value(), 1e15);
  counter.advance();
  EXPECT_EQ(field, "1E+15");
  EXPECT_EQ(counter.value(), 1e15);
}

TEST(SettingsCounters, AKeptCounterStepsAsAdvancingTheFieldAfreshEachTimeWould) {
  for (const char* start : {"0", "-3", "05", "12.5", "0.1", "1E3", "99999999999998", "2147483646",
                            "-0.25", "1e15", "123456789012345.5"}) {
    std::string kept = start, fresh = start;
    FieldCounter counter(kept, kNoWrap);
    for (int step = 0; step < 5; ++step) {
      counter.advance();
      advance_counter(fresh, kNoWrap);
      EXPECT_EQ(kept, fresh) << "from " << start << ", step " << step;
      EXPECT_EQ(counter.value(), to_double(Variant(fresh))) << "from " << start;
    }
  }
}

TEST(SettingsCounters, AKeptCounterWritesWholeNumbersInPlainDigitsThroughZero) {
  std::string field = "-3";
  FieldCounter counter(field, kNoWrap);
  std::vector<std::string> written;
  for (int step = 0; step < 5; ++step) {
    counter.advance();
    written.push_back(field);
  }
  EXPECT_EQ(written, (std::vector<std::string>{"-2", "-1", "0", "1", "2"}));

  field = "99999999999998";  // fourteen digits, then fifteen
  FieldCounter long_counter(field, kNoWrap);
  long_counter.advance();
  EXPECT_EQ(field, "99999999999999");
  long_counter.advance();
  EXPECT_EQ(field, "100000000000000");
  EXPECT_EQ(long_counter.value(), 100000000000000.0);

  field = "-0.5";  // a fraction stays a fraction: -0.5 + 1 reads "0.5"
  FieldCounter fraction_counter(field, kNoWrap);
  fraction_counter.advance();
  EXPECT_EQ(field, "0.5");
}

TEST(SettingsCounters, AKeptCounterOverNonNumericTextIsATypeMismatchAndLeavesIt) {
  std::string field = "A";
  FieldCounter counter(field, 99);
  try {
    counter.advance();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kTypeMismatch);
  }
  EXPECT_EQ(field, "A");
}

}  // namespace
}  // namespace zorvat
