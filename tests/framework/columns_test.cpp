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

}  // namespace
}  // namespace zorvat
