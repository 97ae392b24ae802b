#include "zorvat/unicode.h"

#include <cstdint>
#include <cstdio>

namespace zorvat {

Utf8Character decode_utf8(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(at);
  if (lead < 0x80) return {lead, 1, true};

  // The sequence length and the smallest value it may carry (shorter forms are
  // overlong, and invalid).
  std::size_t length = 0;
  char32_t value = 0;
  char32_t smallest = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, value = lead & 0x1Fu, smallest = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, value = lead & 0x0Fu, smallest = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, value = lead & 0x07u, smallest = 0x10000;
  } else {
    return {};  // a continuation byte, or a lead byte UTF-8 never uses
  }
  if (at + length > text.size()) return {};
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned char next = byte(at + i);
    if ((next & 0xC0u) != 0x80u) return {};
    value = (value << 6) | (next & 0x3Fu);
  }
  if (value < smallest || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return {};
  return {value, length, true};
}

void append_utf8(std::string& out, char32_t character) {
  if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF))
    character = kReplacementCharacter;
  const auto put = [&](std::uint32_t value) { out += static_cast<char>(value); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0u | (character >> 6));
    put(0x80u | (character & 0x3Fu));
  } else if (character < 0x10000) {
    put(0xE0u | (character >> 12));
    put(0x80u | ((character >> 6) & 0x3Fu));
    put(0x80u | (character & 0x3Fu));
  } else {
    put(0xF0u | (character >> 18));
    put(0x80u | ((character >> 12) & 0x3Fu));
    put(0x80u | ((character >> 6) & 0x3Fu));
    put(0x80u | (character & 0x3Fu));
  }
}

std::size_t text_length(std::string_view text) {
  // Records are mostly ASCII: one pass that the compiler vectorises answers for them.
  if (is_ascii(text)) return text.size();
  std::size_t length = 0;
  for (std::size_t at = 0; at < text.size();) {
    if (static_cast<unsigned char>(text[at]) < 0x80) {
      ++length, ++at;
      continue;
    }
    const Utf8Character character = decode_utf8(text, at);
    length += utf16_units(character.value);
    at += character.bytes;
  }
  return length;
}

std::string_view text_left(std::string_view text, std::size_t length) {
  std::size_t units = 0;
  std::size_t at = 0;
  while (at < text.size()) {
    const Utf8Character character = decode_utf8(text, at);
    const std::size_t width = utf16_units(character.value);
    if (units + width > length) break;
    units += width;
    at += character.bytes;
  }
  return text.substr(0, at);
}

std::string_view text_right(std::string_view text, std::size_t length) {
  const std::size_t total = text_length(text);
  if (total <= length) return text;
  return text.substr(text_left(text, total - length).size());
}

std::size_t last_character_bytes(std::string_view text) {
  if (text.empty()) return 0;
  // Back over up to three continuation bytes to a lead byte that takes them all.
  for (std::size_t back = 1; back <= 4 && back <= text.size(); ++back) {
    const std::size_t at = text.size() - back;
    if ((static_cast<unsigned char>(text[at]) & 0xC0u) == 0x80u) continue;
    return decode_utf8(text, at).bytes == back ? back : 1;
  }
  return 1;
}

bool is_ascii(std::string_view text) {
  unsigned char seen = 0;
  for (char c : text) seen |= static_cast<unsigned char>(c);
  return seen < 0x80;
}

std::string code_point_name(char32_t character) {
  char name[16];
  std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(character));
  return name;
}

}  // namespace zorvat
