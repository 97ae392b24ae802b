#include "json_scanner.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "json_cards.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zorvat::cli::json_cards {
namespace {

// The first byte from `p` on that is one of `Chars`; `end` when there is none.
// Sixteen bytes at a time where the processor offers it: most of a cards file is
// names and digits, which the scanner only has to pass over.
template <char... Chars>
const char* find_first(const char* p, const char* end) {
#if defined(__SSE2__)
  while (end - p >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    __m128i hits = _mm_setzero_si128();
    ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(block, _mm_set1_epi8(Chars)))), ...);
    const int mask = _mm_movemask_epi8(hits);
    if (mask != 0) return p + __builtin_ctz(static_cast<unsigned>(mask));
    p += 16;
  }
#endif
  for (; p < end; ++p)
    if (((*p == Chars) || ...)) return p;
  return end;
}

#if defined(__SSE2__)
// One bit per byte of the 64 at `p`: set where the byte is one of `Chars`.
template <char... Chars>
std::uint64_t block_mask(const char* p) {
  std::uint64_t mask = 0;
  for (std::ptrdiff_t part = 0; part < 4; ++part) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * part));
    __m128i hits = _mm_setzero_si128();
    ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(block, _mm_set1_epi8(Chars)))), ...);
    mask |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(hits)))
            << (16 * part);
  }
  return mask;
}

// Bit i of the result is the parity of the bits 0..i of `bits`: behind an odd
// number of quotes, a byte is inside a string.
std::uint64_t prefix_xor(std::uint64_t bits) {
  bits ^= bits << 1;
  bits ^= bits << 2;
  bits ^= bits << 4;
  bits ^= bits << 8;
  bits ^= bits << 16;
  bits ^= bits << 32;
  return bits;
}
#endif

// The scanner says what is wrong but not where; on failure the text is read again by a
// parser that reports line and column (its callback keeps nothing, so a large file
// costs no document).
std::string locate_syntax_error(std::string_view json) {
  try {
    const auto discarded = nlohmann::json::parse(
        json.begin(), json.end(),
        [](int, nlohmann::json::parse_event_t, nlohmann::json&) { return false; });
    static_cast<void>(discarded);
  } catch (const nlohmann::json::exception& error) {  // a syntax error or a number out of range
    return error.what();
  }
  return {};
}

}  // namespace

void JsonScanner::skip_blanks() {
  while (pos_ < json_.size()) {
    const char c = json_[pos_];
    if (c != ' ' && c != '\n' && c != '\r' && c != '\t') break;
    ++pos_;
  }
}

std::string_view JsonScanner::take_string() {
  if (peek() != '"') syntax_error();
  const std::size_t start = pos_;
  skip_string();
  return json_.substr(start, pos_ - start);
}

void JsonScanner::skip_string() {
  const char* p = json_.data() + pos_ + 1;  // past the opening quote
  const char* end = json_.data() + json_.size();
  while ((p = find_first<'"', '\\'>(p, end)) != end) {
    if (*p == '"') {
      pos_ = static_cast<std::size_t>(p + 1 - json_.data());
      return;
    }
    p += 2;  // a backslash and the character it escapes
  }
  pos_ = json_.size();
  syntax_error();
}

std::string_view JsonScanner::skip_value() {
  const std::size_t start = pos_;
  const char first = peek();
  if (first == '"') {
    skip_string();
    return json_.substr(start, pos_ - start);
  }
  if (first == '{' || first == '[') {
    const char* begin = json_.data();
    const char* end = begin + json_.size();
    const char* p = begin + pos_;
    int depth = 0;
    while ((p = find_first<'"', '\\', '{', '}', '[', ']'>(p, end)) != end) {
      const char c = *p;
      if (c == '"') {
        pos_ = static_cast<std::size_t>(p - begin);
        skip_string();
        p = begin + pos_;
        continue;
      }
      if (c == '{' || c == '[') {
        if (++depth > 1024) fail("not valid JSON", "nested too deeply");
      } else if (c == '}' || c == ']') {
        if (--depth == 0) {
          pos_ = static_cast<std::size_t>(p + 1 - begin);
          return json_.substr(start, pos_ - start);
        }
      }
      ++p;  // a stray backslash outside a string is the parser's to reject
    }
    pos_ = json_.size();
    syntax_error();
  }
  while (pos_ < json_.size()) {
    const char c = json_[pos_];
    if (c == ',' || c == '}' || c == ']' || c == ' ' || c == '\n' || c == '\r' || c == '\t') break;
    ++pos_;
  }
  if (pos_ == start) syntax_error();
  return json_.substr(start, pos_ - start);
}

void JsonScanner::cut_array(std::size_t piece_bytes,
                            const std::function<void(const ArrayPiece&)>& take_piece) {
  std::size_t piece_start = pos_;
  std::size_t count = 1;  // elements in the piece so far: separators seen + 1
  bool cut = false;       // whether a piece was handed over
  const std::size_t close = scan_array(pos_, [&](std::size_t comma) {
    if (comma - piece_start < piece_bytes) {
      ++count;
      return;
    }
    take_piece({json_.substr(piece_start, comma - piece_start), count, false});
    piece_start = comma + 1;
    count = 1;
    cut = true;
  });
  const std::string_view last = json_.substr(piece_start, close - piece_start);
  const bool blank = last.find_first_not_of(" \t\r\n") == std::string_view::npos;
  if (!blank)
    take_piece({last, count, true});
  else if (cut || count > 1)
    syntax_error();  // "[1,]" or "[,]"
  pos_ = close + 1;
}

// Walks an array's text from `from` (just past its "[") to its closing "]", whose
// position it returns, calling `separator(position)` for each comma between two of
// its elements. Sixty-four bytes are classified at a time: where a block holds a
// quote, a prefix XOR of the quote bits tells which bytes lie inside strings, and
// only the brackets outside them, and the commas between the array's own elements,
// are visited. A block with a backslash (an escape) is walked byte by byte.
template <class Separator>
std::size_t JsonScanner::scan_array(std::size_t from, Separator&& separator) {
  const char* begin = json_.data();
  const std::size_t size = json_.size();
  bool in_string = false;
  int depth = 0;
  std::size_t at = from;
  // Returns true at the array's own closing bracket.
  auto structural = [&](std::size_t position, char c) {
    switch (c) {
      case '{':
      case '[':
        if (++depth > 1024) fail("not valid JSON", "nested too deeply");
        return false;
      case '}':
      case ']':
        if (depth == 0) {
          if (c != ']') syntax_error();
          return true;
        }
        --depth;
        return false;
      default:  // ','
        if (depth == 0) separator(position);
        return false;
    }
  };
  auto walk_bytes = [&](std::size_t end, std::size_t& close) {
    for (; at < end; ++at) {
      const char c = begin[at];
      if (in_string) {
        if (c == '\\')
          ++at;
        else if (c == '"')
          in_string = false;
      } else if (c == '"') {
        in_string = true;
      } else if ((c == '{' || c == '[' || c == '}' || c == ']' || c == ',') && structural(at, c)) {
        close = at;
        return true;
      }
    }
    return false;
  };
  std::size_t close = 0;
#if defined(__SSE2__)
  while (at + 64 <= size) {
    const std::uint64_t backslashes = block_mask<'\\'>(begin + at);
    if (backslashes != 0) {
      // Escapes: byte by byte to the end of the block (an escape may reach one
      // byte past it, which the walk then skips).
      if (walk_bytes(at + 64, close)) return close;
      continue;
    }
    const std::uint64_t quotes = block_mask<'"'>(begin + at);
    std::uint64_t inside = prefix_xor(quotes) ^ (in_string ? ~std::uint64_t{0} : 0);
    in_string = (inside >> 63) != 0;
    // Only the brackets change the depth: they are visited one by one, and the
    // commas between two of them only where the depth is the array's own (a
    // card's own commas, twenty-odd to one separator, are passed over together).
    std::uint64_t brackets = block_mask<'{', '[', '}', ']'>(begin + at) & ~inside;
    std::uint64_t commas = block_mask<','>(begin + at) & ~inside;
    while (true) {
      const std::uint64_t bracket = brackets & (~brackets + 1);  // the lowest, or none
      const std::uint64_t before = bracket != 0 ? bracket - 1 : ~std::uint64_t{0};
      for (std::uint64_t separators = depth == 0 ? commas & before : 0; separators != 0;
           separators &= separators - 1)
        separator(at + static_cast<std::size_t>(__builtin_ctzll(separators)));
      commas &= ~before;
      if (bracket == 0) break;
      const std::size_t position = at + static_cast<std::size_t>(__builtin_ctzll(bracket));
      if (structural(position, begin[position])) return position;
      brackets &= brackets - 1;
    }
    at += 64;
  }
#endif
  if (walk_bytes(size, close)) return close;
  syntax_error();
}

void JsonScanner::fail(const std::string& place, const std::string& what) const {
  throw CardsFileError("cards file " + name_ + ": " + place + ": " + what);
}

void JsonScanner::syntax_error() const {
  const std::string where = locate_syntax_error(json_);
  fail("not valid JSON", where.empty() ? "unexpected text at byte " + std::to_string(pos_) : where);
}

}  // namespace zorvat::cli::json_cards
