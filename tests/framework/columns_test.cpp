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

TEST(Columns, WidthsCountLettersNotBytes) {
  std::string out = "|";
  append_left_justified(out,
                        "Jos\xC3\xA9 Pe\xC3\xB1"
                        "a",
                        12);  // José Peña
  out += "|";
  EXPECT_EQ(out,
            "|Jos\xC3\xA9 Pe\xC3\xB1"
            "a   |");
  out = "|";
  append_right_justified(out,
                         "Gr\xC3\xA2"
                         "ce",
                         7);  // Grâce
  out += "|";
  EXPECT_EQ(out,
            "|  Gr\xC3\xA2"
            "ce|");
}

TEST(Columns, ALongAccentedNameIsCutAtTheWidthInLetters) {
  // 30 letters, 8 of them accented: "Renée Müller-Ñúñez Château Ödy" cut to its first 25.
  const std::string name =
      "Ren\xC3\xA9"
      "e M\xC3\xBCller-\xC3\x91\xC3\xBA\xC3\xB1"
      "ez Ch\xC3\xA2teau \xC3\x96"
      "dy";
  std::string out;
  append_left_justified(out, name, 25);
  EXPECT_EQ(out,
            "Ren\xC3\xA9"
            "e M\xC3\xBCller-\xC3\x91\xC3\xBA\xC3\xB1"
            "ez Ch\xC3\xA2tea");
}

TEST(Columns, ACharacterThatWouldBeCutInTwoIsLeftOutAndItsRoomFilled) {
  std::string out = "|";
  append_left_justified(out, "abc\xF0\x9F\x98\x80", 4);  // U+1F600 takes two units
  out += "|";
  EXPECT_EQ(out, "|abc |");
}

TEST(Columns, RightJustifiedTextWiderInLettersStillRaises) {
  EXPECT_EQ(raised_number([](std::string& out) {
              append_right_justified(out, "\xC3\xA9\xC3\xA9\xC3\xA9", 2);
            }),
            5);
}

// A record declared column by column: each column starts where the one before ends.
constexpr Column kTag{"the tag", 1, 1, "D"};
constexpr Column kNumber{"the number", 2, 6, {}, "000000"};
constexpr Column kName{"the name", 8, 5};
constexpr Column kHours{"the hours", 13, 8, {}, "#####.00", Justify::Right};
constexpr Column kRecord[] = {kTag, kNumber, kName, kHours};
static_assert(columns_follow(kRecord));
static_assert(kHours.last() == 20);

TEST(ColumnDeclarations, AGapAnOverlapOrALiteralOfAnotherWidthIsRefused) {
  constexpr Column kGap[] = {kTag, {"the number", 3, 6}};
  constexpr Column kOverlap[] = {kTag, kNumber, {"the name", 7, 5}};
  constexpr Column kWideLiteral[] = {{"the tag", 1, 1, "DE"}};
  constexpr Column kEmpty[] = {{"nothing", 1, 0}};
  constexpr Column kLater[] = {kName, kHours};
  EXPECT_FALSE(columns_follow(kGap));
  EXPECT_FALSE(columns_follow(kOverlap));
  EXPECT_FALSE(columns_follow(kWideLiteral));
  EXPECT_FALSE(columns_follow(kEmpty));
  EXPECT_FALSE(columns_follow(kLater));
  EXPECT_TRUE(columns_follow(kLater, 8));
}

TEST(ColumnDeclarations, APatternsDecimalsAreTheDigitsAfterItsPoint) {
  EXPECT_EQ(pattern_decimals("#####.00"), 2);
  EXPECT_EQ(pattern_decimals("000000"), 0);
  EXPECT_EQ(pattern_decimals("0.0000"), 4);
  EXPECT_EQ(pattern_decimals(""), 0);
}

TEST(ColumnDeclarations, APatternsIntegerDigitsAreTheDigitsBeforeItsPoint) {
  EXPECT_EQ(pattern_integer_digits("#####.00"), 5);
  EXPECT_EQ(pattern_integer_digits("000000"), 6);
  EXPECT_EQ(pattern_integer_digits("0.0000"), 1);
  EXPECT_EQ(pattern_integer_digits(""), 0);
}

TEST(ColumnDeclarations, AWriterAppendsEachColumnAsDeclared) {
  std::string out;
  append_literal(out, kTag);
  column_pattern<kNumber>().append_to(out, Variant(315.0));
  append_in_column(out, kName, "José Peña");  // left: cut to five letters
  std::string hours;
  column_pattern<kHours>().append_to(hours, Variant(41.5));
  append_in_column(out, kHours, hours);  // right: blanks before
  EXPECT_EQ(out, "D000315José    41.50");
  std::string blank;
  append_blank(blank, kName);
  EXPECT_EQ(blank, "     ");
}

}  // namespace
}  // namespace zorvat
