#include "zorvat/code_page.h"

#include <algorithm>

#include "zorvat/unicode.h"

namespace zorvat {
bool CodePage::keeps_ascii() const {
  std::string ascii;
  for (int c = 0; c < 0x80; ++c) ascii += static_cast<char>(c);
  std::string encoded;
  encode(ascii, encoded);
  return encoded == ascii;
}

const CodePage& utf8_code_page() {
  static const Utf8CodePage code_page;
  return code_page;
}

std::string code_page_name(unsigned number) {
  if (number == 65001) return "utf-8";
  if (number >= 1250 && number <= 1258) return "windows-" + std::to_string(number);
  return "cp" + std::to_string(number);
}

bool code_page_has(const CodePage& code_page, char32_t character) {
  std::string text;
  append_utf8(text, character);
  std::string encoded;
  code_page.encode(text, encoded);
  std::string decoded;
  code_page.decode(encoded, decoded);
  return decoded == text;
}

std::vector<char32_t> characters_missing(const CodePage& code_page, std::string_view text) {
  std::vector<char32_t> missing;
  const bool ascii_kept = code_page.keeps_ascii();
  if (ascii_kept && is_ascii(text)) return missing;
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = decode_utf8(text, at);
    at += character.bytes;
    if (ascii_kept && character.value < 0x80) continue;
    if (std::find(missing.begin(), missing.end(), character.value) != missing.end()) continue;
    if (!character.valid || !code_page_has(code_page, character.value))
      missing.push_back(character.value);
  }
  return missing;
}

}  // namespace zorvat
