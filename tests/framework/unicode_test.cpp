#include "zorvat/unicode.h"

#include <gtest/gtest.h>

#include "zorvat/code_page.h"

namespace zorvat {
namespace {

// The texts as their bytes, written out by hand.
constexpr std::string_view kJose = "Jos\xC3\xA9";           // José
constexpr std::string_view kONeil = "O\xE2\x80\x99Neil";    // O’Neil
constexpr std::string_view kSimek = "\xC5\xA0imek";         // Šimek
constexpr std::string_view kGrinning = "\xF0\x9F\x98\x80";  // U+1F600
constexpr std::string_view kWang = "\xE7\x8E\x8B";          // 王

TEST(Unicode, LengthsCountUtf16CodeUnits) {
  EXPECT_EQ(text_length(""), 0u);
  EXPECT_EQ(text_length("Ann Lee"), 7u);
  EXPECT_EQ(text_length(kJose), 4u);
  EXPECT_EQ(text_length(kONeil), 6u);
  EXPECT_EQ(text_length(kSimek), 5u);
  EXPECT_EQ(text_length(kWang), 1u);
  EXPECT_EQ(text_length(kGrinning), 2u);  // a surrogate pair
}

TEST(Unicode, ABytePastUtf8CountsAsOneLetter) {
  EXPECT_EQ(text_length("Jos\xE9"), 4u);           // Windows-1252 "José"
  EXPECT_EQ(text_length("\xC3"), 1u);              // a sequence cut short
  EXPECT_EQ(text_length("\xC0\xAF"), 2u);          // an overlong "/": two bad bytes
  EXPECT_EQ(text_length("\xED\xA0\x80"), 3u);      // an encoded surrogate
  EXPECT_EQ(text_length("\xF4\x90\x80\x80"), 4u);  // past U+10FFFF
}

TEST(Unicode, LeftTakesWholeLetters) {
  EXPECT_EQ(text_left(kJose, 3), "Jos");
  EXPECT_EQ(text_left(kJose, 4), kJose);
  EXPECT_EQ(text_left(kJose, 40), kJose);
  EXPECT_EQ(text_left(kJose, 0), "");
  // A character of two code units is not cut in two: it is left out whole.
  const std::string text = "ab" + std::string(kGrinning);
  EXPECT_EQ(text_left(text, 3), "ab");
  EXPECT_EQ(text_left(text, 4), text);
}

TEST(Unicode, RightTakesTheLastLettersAndKeepsAPairWhole) {
  EXPECT_EQ(text_right(kJose, 2), "s\xC3\xA9");
  EXPECT_EQ(text_right(kJose, 9), kJose);
  EXPECT_EQ(text_right("12345", 4), "2345");
  const std::string text = std::string(kGrinning) + "ab";  // 4 units
  EXPECT_EQ(text_right(text, 3), text);                    // the pair is not cut
  EXPECT_EQ(text_right(text, 2), "ab");
}

TEST(Unicode, DecodeGivesTheCharacterAndItsBytes) {
  const Utf8Character e_acute = decode_utf8(kJose, 3);
  EXPECT_EQ(e_acute.value, U'\u00E9');
  EXPECT_EQ(e_acute.bytes, 2u);
  EXPECT_TRUE(e_acute.valid);
  const Utf8Character apostrophe = decode_utf8(kONeil, 1);
  EXPECT_EQ(apostrophe.value, U'\u2019');
  EXPECT_EQ(apostrophe.bytes, 3u);
  const Utf8Character grinning = decode_utf8(kGrinning, 0);
  EXPECT_EQ(grinning.value, U'\U0001F600');
  EXPECT_EQ(grinning.bytes, 4u);
  const Utf8Character bad = decode_utf8("\xE9x", 0);
  EXPECT_FALSE(bad.valid);
  EXPECT_EQ(bad.value, kReplacementCharacter);
  EXPECT_EQ(bad.bytes, 1u);
}

TEST(Unicode, AppendWritesUtf8) {
  std::string out;
  append_utf8(out, U'A');
  append_utf8(out, U'\u00F1');
  append_utf8(out, U'\u2019');
  append_utf8(out, U'\U0001F600');
  append_utf8(out, 0xD800);  // a lone surrogate is no character
  EXPECT_EQ(out, "A\xC3\xB1\xE2\x80\x99\xF0\x9F\x98\x80\xEF\xBF\xBD");
}

TEST(Unicode, LastCharacterBytes) {
  EXPECT_EQ(last_character_bytes(""), 0u);
  EXPECT_EQ(last_character_bytes("ab"), 1u);
  EXPECT_EQ(last_character_bytes(kJose), 2u);
  EXPECT_EQ(last_character_bytes(kWang), 3u);
  EXPECT_EQ(last_character_bytes(kGrinning), 4u);
  EXPECT_EQ(last_character_bytes("a\x80"), 1u);  // a stray continuation byte
}

TEST(Unicode, AsciiAndNames) {
  EXPECT_TRUE(is_ascii(""));
  EXPECT_TRUE(is_ascii("E100,8.00\r\n"));
  EXPECT_FALSE(is_ascii(kJose));
  EXPECT_EQ(code_point_name(U'\u00E9'), "U+00E9");
  EXPECT_EQ(code_point_name(U'\U0001F600'), "U+1F600");
}

TEST(CodePages, Utf8HasEveryCharacterAndLacksNone) {
  EXPECT_TRUE(code_page_has(utf8_code_page(), U'\u738B'));
  EXPECT_TRUE(characters_missing(utf8_code_page(), std::string(kWang) + "x").empty());
  EXPECT_TRUE(utf8_code_page().keeps_ascii());
  EXPECT_EQ(utf8_code_page().name(), "utf-8");
}

}  // namespace
}  // namespace zorvat
