#include "zorvat/columns.h"

#include <gtest/gtest.h>

#include "zorvat/error.h"

namespace zorvat {
namespace {

long raised_number(void (*append)(std::string&)) {
  std::string out;
  try {
    append(out);
  } catch (const Error& error) {
    EXPECT_EQ(error.description(), "Invalid procedure call or argument");
    EXPECT_EQ(error.source(), "zorvat");
    return error.number();
  }
  return 0;
}

TEST(Columns, AppendSpacesAddsThatManyBlanks) {
  std::string out = "x";
  append_spaces(out, 0);
  EXPECT_EQ(out, "x");
  append_spaces(out, 3);
  EXPECT_EQ(out, "x   ");
}

TEST(Columns, NegativeSpaceCountIsAnInvalidProcedureCall) {
  EXPECT_EQ(raised_number([](std::string& out) { append_spaces(out, -1); }), 5);
}

TEST(Columns, LeftJustifiedPadsShortTextAfterIt) {
  std::string out = "|";
  append_left_justified(out, "Ann Lee", 10);
  out += "|";
  EXPECT_EQ(out, "|Ann Lee   |");
}

TEST(Columns, LeftJustifiedCutsLongTextToTheWidth) {
  std::string out;
  append_left_justified(out, "abcdef", 4);
  EXPECT_EQ(out, "abcd");
  out.clear();
  append_left_justified(out, "abcd", 4);
  EXPECT_EQ(out, "abcd");
  out.clear();
  append_left_justified(out, "", 3);
  EXPECT_EQ(out, "   ");
}

TEST(Columns, RightJustifiedPadsBeforeTheText) {
  std::string out = "|";
  append_right_justified(out, ".50", 8);
  out += "|";
  EXPECT_EQ(out, "|     .50|");
  out.clear();
  append_right_justified(out, "12345.00", 8);
  EXPECT_EQ(out, "12345.00");
}

TEST(Columns, RightJustifiedTextWiderThanTheColumnRaises) {
  EXPECT_EQ(raised_number([](std::string& out) { append_right_justified(out, "123456.00", 8); }),
            5);
}

}  // namespace
}  // namespace zorvat
