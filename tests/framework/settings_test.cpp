#include "zorvat/settings.h"

#include <gtest/gtest.h>

#include "zorvat/error.h"

namespace zorvat {
namespace {

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

}  // namespace
}  // namespace zorvat
