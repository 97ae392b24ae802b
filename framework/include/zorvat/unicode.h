// Text is UTF-8 inside zorvat. The classic string functions the layouts were written
// for count a text's length in UTF-16 code units: one for every letter of the Basic
// Multilingual Plane (é, ñ, Š, ’), two for a character beyond it. Every width, pad,
// cut and length test of a record counts that way, never in bytes, so "José" is four
// long whether it is held as UTF-8 or written as Windows-1252.
//
// A byte that does not start a valid UTF-8 sequence (text a host handed over in some
// other encoding) counts as one letter of its own, U+FFFD, as a converter reads it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zorvat {

constexpr char32_t kReplacementCharacter = 0xFFFD;

struct Utf8Character {
  char32_t value = kReplacementCharacter;
  std::size_t bytes = 1;  // the bytes it takes in the text, at least 1
  bool valid = false;     // false: a byte (or a sequence) that is not UTF-8
};

// The character that starts at byte `at` of `text` (at < text.size()).
Utf8Character decode_utf8(std::string_view text, std::size_t at);

// Appends `character` as UTF-8 (a surrogate or a value past U+10FFFF as U+FFFD).
void append_utf8(std::string& out, char32_t character);

// UTF-16 code units of one character: 2 beyond U+FFFF, otherwise 1.
constexpr std::size_t utf16_units(char32_t character) {
  return character > 0xFFFF ? 2 : 1;
}

// The text's length in UTF-16 code units.
std::size_t text_length(std::string_view text);

// The longest start of `text` at most `length` UTF-16 code units long that ends
// with a whole character: a character beyond the Basic Multilingual Plane that would
// be cut in two is left out whole.
std::string_view text_left(std::string_view text, std::size_t length);

// The bytes of the text's last character (0 for empty text).
std::size_t last_character_bytes(std::string_view text);

// The last `length` UTF-16 code units of `text`, as the classic Right$ cuts it: the text
// after its first text_length(text) - length units, so that a character beyond the
// Basic Multilingual Plane the cut would split is kept whole. The whole text when it is
// no longer.
std::string_view text_right(std::string_view text, std::size_t length);

// True when every byte is ASCII (below 0x80).
bool is_ascii(std::string_view text);

// "U+00E9", the way a character is named in messages.
std::string code_point_name(char32_t character);

}  // namespace zorvat
