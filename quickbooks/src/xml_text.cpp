#include "xml_text.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

namespace zorvat::quickbooks {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

bool is_xml_char(std::uint32_t c) {
  return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
         (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

struct Decoded {
  std::uint32_t code_point;
  std::size_t length;
};

// The UTF-8 character at `at`, or nullopt for a byte that starts none (overlong
// forms, surrogates and code points past U+10FFFF included).
std::optional<Decoded> decode_utf8(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const unsigned char lead = byte(at);
  if (lead < 0x80) return Decoded{lead, 1};
  std::size_t length = 0;
  std::uint32_t code_point = 0;
  std::uint32_t smallest = 0;
  if ((lead & 0xE0) == 0xC0) {
    length = 2, code_point = lead & 0x1Fu, smallest = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, code_point = lead & 0x0Fu, smallest = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, code_point = lead & 0x07u, smallest = 0x10000;
  } else {
    return std::nullopt;
  }
  if (at + length > text.size()) return std::nullopt;
  for (std::size_t index = at + 1; index < at + length; ++index) {
    if ((byte(index) & 0xC0) != 0x80) return std::nullopt;
    code_point = (code_point << 6) | (byte(index) & 0x3Fu);
  }
  if (code_point < smallest || code_point > 0x10FFFF ||
      (code_point >= 0xD800 && code_point <= 0xDFFF)) {
    return std::nullopt;
  }
  return Decoded{code_point, length};
}

std::string hex(std::uint32_t value) {
  char digits[12];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
  std::string text(digits, end);
  for (char& c : text) c = static_cast<char>(c >= 'a' ? c - 'a' + 'A' : c);
  return text.size() < 4 ? std::string(4 - text.size(), '0') + text : text;
}

std::string at_byte(std::size_t offset, std::string_view problem) {
  return "byte " + std::to_string(offset) + ": " + std::string(problem);
}

// The problem with the reference that starts with the '&' at `at`, if any; `end`
// receives the position after it.
std::string reference_problem(std::string_view xml, std::size_t at, std::size_t& end) {
  const std::size_t semicolon = xml.find(';', at);
  // No name or number is longer than this; a missing ';' within it is no reference.
  if (semicolon == std::string_view::npos || semicolon - at > 12) {
    return at_byte(at, "\"&\" that starts no reference (write &amp;)");
  }
  end = semicolon + 1;
  const std::string_view name = xml.substr(at + 1, semicolon - at - 1);
  if (name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos") return {};
  if (!name.starts_with('#')) {
    return at_byte(at, "unknown entity \"&" + std::string(name) + ";\"");
  }
  const bool hexadecimal = name.starts_with("#x");
  const std::string_view digits = name.substr(hexadecimal ? 2 : 1);
  std::uint32_t code_point = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(),
                                             code_point, hexadecimal ? 16 : 10);
  if (digits.empty() || error != std::errc() || stop != digits.data() + digits.size() ||
      !is_xml_char(code_point)) {
    return at_byte(
        at, "character reference \"&" + std::string(name) + ";\" to no character XML allows");
  }
  return {};
}

}  // namespace

std::string xml_escaped(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::optional<Decoded> decoded = decode_utf8(text, at);
    if (!decoded || !is_xml_char(decoded->code_point)) {
      escaped += kReplacement;
      at += decoded ? decoded->length : 1;
      continue;
    }
    switch (decoded->code_point) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&apos;";
        break;
      case '\t':
        escaped += "&#9;";
        break;
      case '\n':
        escaped += "&#10;";
        break;
      case '\r':
        escaped += "&#13;";
        break;
      default:
        escaped += text.substr(at, decoded->length);
    }
    at += decoded->length;
  }
  return escaped;
}

std::string xml_lexical_problem(std::string_view xml) {
  for (std::size_t at = 0; at < xml.size();) {
    const std::optional<Decoded> decoded = decode_utf8(xml, at);
    if (!decoded) return at_byte(at, "not UTF-8");
    if (!is_xml_char(decoded->code_point)) {
      return at_byte(at, "character U+" + hex(decoded->code_point) + " is not allowed in XML");
    }
    at += decoded->length;
  }
  // Regions whose '&' is no reference: comments, processing instructions, CDATA.
  constexpr std::pair<std::string_view, std::string_view> kLiteralRegions[] = {
      {"<!--", "-->"}, {"<?", "?>"}, {"<![CDATA[", "]]>"}};
  for (std::size_t at = 0; at < xml.size();) {
    bool skipped = false;
    // Every region opens with '<', so only there is it worth looking for one.
    for (const auto& [open, close] : kLiteralRegions) {
      if (xml[at] != '<') break;
      if (xml.substr(at).starts_with(open)) {
        const std::size_t end = xml.find(close, at + open.size());
        // An unclosed region is the parser's to report.
        at = end == std::string_view::npos ? xml.size() : end + close.size();
        skipped = true;
        break;
      }
    }
    if (skipped) continue;
    if (xml[at] != '&') {
      ++at;
      continue;
    }
    std::size_t end = at + 1;
    std::string problem = reference_problem(xml, at, end);
    if (!problem.empty()) return problem;
    at = end;
  }
  return {};
}

}  // namespace zorvat::quickbooks
