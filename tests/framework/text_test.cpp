#include "zorvat/text.h"

#include <gtest/gtest.h>

namespace zorvat {
namespace {

TEST(Text, CaseBlindEqualityChangesOnlyAsciiLetters) {
  EXPECT_TRUE(iequals("ExportID", "EXPORTID"));
  EXPECT_TRUE(iequals("zorvat.Generic", "ZORVAT.generic"));
  EXPECT_FALSE(iequals("REG", "REG "));
  EXPECT_FALSE(iequals("\xC9t\xE9", "\xE9T\xE9"));  // other bytes compare as they are
  EXPECT_TRUE(iequals("", ""));
}

TEST(Text, CaseConversions) {
  EXPECT_EQ(to_upper_ascii("ab-c1"), "AB-C1");
  EXPECT_EQ(to_lower_ascii("AB-C1"), "ab-c1");
  EXPECT_EQ(to_upper_ascii("\xE9"), "\xE9");
  static_assert(to_upper_ascii('x') == 'X' && to_lower_ascii('Q') == 'q');
}

}  // namespace
}  // namespace zorvat
