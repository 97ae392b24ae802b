// Loading a cards file into the cell store (json_card_store.h).
//
// The file is parsed in pieces of a few megabytes: the scanner (json_scanner.h) finds
// the top-level fields and the card boundaries, and simdjson parses each piece of
// cards, which is turned into cells and dropped. So the parse never holds more than one
// piece's tree.
#include <simdjson.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cards_file_mapping.h"
#include "json_card_store.h"
#include "json_card_view.h"
#include "json_cards.h"
#include "json_scanner.h"
#include "zorvat/date.h"

namespace zorvat::cli {
namespace json_cards {
namespace {

// Where a value stands in the file, for messages: built into text only on failure.
struct Where {
  const Where* parent = nullptr;
  std::string_view label;  // "cards", "top level"; empty when `key` names the field
  std::uint32_t key = Store::kNone;
  long index = -1;

  std::string text(const Store& store) const {
    std::string result = parent != nullptr ? parent->text(store) + "." : std::string();
    result += key != Store::kNone ? std::string_view(store.name_of(key)) : label;
    if (index >= 0) {
      result += '[';
      result += std::to_string(index);
      result += ']';
    }
    return result;
  }
};

// Windows editors (Notepad among them) start a UTF-8 file with a byte-order mark; the
// JSON is what follows it.
std::string_view without_byte_order_mark(std::string_view json) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  return json.substr(0, kMark.size()) == kMark ? json.substr(kMark.size()) : json;
}

// Field names are a few characters long: compared in line, without a call. From four
// bytes on, two words are compared, one from each end of the names (they overlap when
// the name is shorter than two words), so that no byte past either name is read.
bool same_short_text(std::string_view a, std::string_view b) {
  const std::size_t size = a.size();
  if (size != b.size()) return false;
  auto same_ends = [&](auto word) {
    constexpr std::size_t kWord = sizeof word;
    decltype(word) a_head, b_head, a_tail, b_tail;
    std::memcpy(&a_head, a.data(), kWord);
    std::memcpy(&b_head, b.data(), kWord);
    std::memcpy(&a_tail, a.data() + size - kWord, kWord);
    std::memcpy(&b_tail, b.data() + size - kWord, kWord);
    return ((a_head ^ b_head) | (a_tail ^ b_tail)) == 0;
  };
  if (size >= 8 && size <= 16) return same_ends(std::uint64_t{});
  if (size >= 4 && size < 8) return same_ends(std::uint32_t{});
  if (size > 16) return std::memcmp(a.data(), b.data(), size) == 0;
  for (std::size_t i = 0; i < size; ++i)
    if (a[i] != b[i]) return false;
  return true;
}

// The length of the JSON number that starts at `at` of `text` and ends where a value
// ends (a blank, ",", "]", "}" or the end of the text); 0 when no such number stands
// there.
std::size_t number_length(std::string_view text, std::size_t at) {
  std::size_t end = at;
  auto digits = [&] {
    const std::size_t start = end;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
    return end - start;
  };
  if (end < text.size() && text[end] == '-') ++end;
  const std::size_t whole = digits();
  if (whole == 0 || (whole > 1 && text[end - whole] == '0')) return 0;
  if (end < text.size() && text[end] == '.') {
    ++end;
    if (digits() == 0) return 0;
  }
  if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
    ++end;
    if (end < text.size() && (text[end] == '+' || text[end] == '-')) ++end;
    if (digits() == 0) return 0;
  }
  if (end < text.size() && std::string_view(" \t\r\n,]}").find(text[end]) == std::string_view::npos)
    return 0;
  return end - at;
}

// Calls `number(text)` for every number of the JSON `text` (outside its strings).
template <class Number>
void for_each_number(std::string_view text, Number&& number) {
  bool in_string = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (in_string) {
      if (c == '\\')
        ++at;
      else if (c == '"')
        in_string = false;
    } else if (c == '"') {
      in_string = true;
    } else if (c == '-' || (c >= '0' && c <= '9')) {
      std::size_t length = number_length(text, at);
      if (length > 0) number(text.substr(at, length));
      // Past the number, or past the text that is none (the parser's to refuse).
      if (length == 0)
        while (length + at < text.size() &&
               std::string_view(" \t\r\n,]}\"").find(text[at + length]) == std::string_view::npos)
          ++length;
      at += length - 1;
    }
  }
}

// Whether a Double holds the number `text` (a JSON number): a number too small for one
// is read as 0 or the nearest Double, one too large is none.
bool within_double_range(std::string_view text) {
  const std::string number(text);
  errno = 0;
  const double value = std::strtod(number.c_str(), nullptr);
  return !(errno == ERANGE && std::isinf(value));
}

// `text` with ".0" after every integer of 19 digits or more, which makes it a Double for
// the parser. An integer of the signed 64-bit range that gets it is read as the same
// Double as before: the loader keeps integers beyond 32 bits as Doubles. False when
// `text` has no such integer.
bool widen_long_integers(std::string_view text, std::string& widened) {
  constexpr std::size_t kLongDigits = 19;
  widened.clear();
  std::size_t copied = 0;
  for_each_number(text, [&](std::string_view number) {
    const std::size_t digits = number.size() - (number.front() == '-' ? 1 : 0);
    if (digits < kLongDigits || number.find_first_of(".eE") != std::string_view::npos) return;
    const auto end = static_cast<std::size_t>(number.data() + number.size() - text.data());
    widened.append(text.substr(copied, end - copied));
    widened += ".0";
    copied = end;
  });
  if (copied == 0) return false;
  widened.append(text.substr(copied));
  return true;
}

// The name of the property whose value follows `before` (the file's text up to the
// value), as written between its quotes; empty when the value is an array's element.
std::string_view property_name_before(std::string_view before) {
  std::size_t end = before.find_last_not_of(" \t\r\n");
  if (end == std::string_view::npos || before[end] != ':') return {};
  end = before.find_last_not_of(" \t\r\n", end - 1);
  if (end == std::string_view::npos || before[end] != '"') return {};
  std::size_t start = end;
  while (start > 0) {
    start = before.rfind('"', start - 1);
    if (start == std::string_view::npos) return {};
    // A quote is the name's opening one unless a backslash escapes it.
    std::size_t backslashes = 0;
    while (start > backslashes && before[start - backslashes - 1] == '\\') ++backslashes;
    if (backslashes % 2 == 0) return before.substr(start + 1, end - start - 1);
  }
  return {};
}

class Loader {
 public:
  // `file`: where `json` was read from, given back as the loader is done with it;
  // null for text in memory.
  Loader(std::string_view json, std::string name, CardsFileMapping* file = nullptr)
      : scanner_(without_byte_order_mark(json), std::move(name)), file_(file) {
    store_ = std::make_shared<Store>();
    // Reserved, not touched: pages are taken only as cells are written, and the
    // arrays never move while they grow.
    store_->cells.reserve(json.size() / 4 + 16);
    store_->text.reserve(json.size() / 2 + 16);
  }

  Variant load() {
    scanner_.skip_blanks();
    if (!scanner_.take('{'))
      scanner_.fail("top level", "expected an object with a \"cards\" array");
    std::vector<Cell> top_fields;
    bool have_cards = false;
    Cell cards;
    scanner_.skip_blanks();
    if (!scanner_.take('}')) {
      while (true) {
        scanner_.skip_blanks();
        const std::string key = scan_key();
        scanner_.skip_blanks();
        if (!scanner_.take(':')) scanner_.syntax_error();
        scanner_.skip_blanks();
        Cell field;
        if (key == "cards") {
          if (scanner_.peek() != '[') scanner_.fail("cards", "expected an array of cards");
          field = load_cards();
          cards = field;
          have_cards = true;
        } else {
          field = convert_piece(scanner_.skip_value(), key);
        }
        field.key = store_->key_id(key);
        top_fields.push_back(field);
        scanner_.skip_blanks();
        if (scanner_.take(',')) continue;
        if (scanner_.take('}')) break;
        scanner_.syntax_error();
      }
    }
    scanner_.skip_blanks();
    if (!scanner_.at_end()) scanner_.syntax_error();
    if (!have_cards) scanner_.fail("top level", "no \"cards\" array");
    store_->top = append_run(top_fields, Kind::Object);
    store_->cards = cards;
    return card_collection(store_);
  }

 private:
  static constexpr std::size_t kPieceBytes = 4 << 20;
  static constexpr std::size_t kParseGranule = 256 << 10;

  // The key of a top-level field, its escapes undone.
  std::string scan_key() {
    const std::string_view quoted = scanner_.take_string();
    simdjson::dom::element key;
    reserve_buffer(quoted.size());
    buffer_.assign(quoted);
    if (parser_.parse(buffer_.data(), buffer_.size(), false).get(key) != simdjson::SUCCESS ||
        !key.is_string())
      scanner_.syntax_error();
    return std::string(key.get_string().value_unsafe());
  }

  // The cards array: each piece of whole cards is parsed and turned into cells, and the
  // file's pages before it given back; the card cells themselves are gathered and laid
  // down together at the end.
  Cell load_cards() {
    scanner_.take('[');
    std::vector<Cell> card_cells;
    scanner_.cut_array(kPieceBytes, [&](const ArrayPiece& piece) {
      convert_cards(piece.text, piece.count, card_cells);
      if (!piece.last && file_ != nullptr)
        file_->release_before(piece.text.data() + piece.text.size());
    });
    return append_run(card_cells, Kind::Array);
  }

  void convert_cards(std::string_view piece, std::size_t count, std::vector<Cell>& card_cells) {
    const simdjson::dom::element root = parse(piece, true);
    simdjson::dom::array cards = root.get_array().value_unsafe();
    std::size_t converted = 0;
    for (simdjson::dom::element card : cards) {
      const Where where{nullptr, "cards", Store::kNone, static_cast<long>(card_cells.size())};
      if (!card.is_object()) scanner_.fail(where.text(*store_), "expected an object");
      card_cells.push_back(convert(card, Store::kNone, where));
      ++converted;
    }
    // The scanner and the parser must agree on where the cards are.
    if (converted != count) scanner_.syntax_error();
  }

  Cell convert_piece(std::string_view piece, const std::string& key) {
    const simdjson::dom::element root = parse(piece, false);
    const Where where{nullptr, "top level", Store::kNone, -1};
    return convert(root, store_->key_id(key), where);
  }

  // Parses `text`, a piece of the file (in "[" and "]" when `elements` holds the
  // elements of an array). A text the parser refuses is looked at for its numbers: one
  // beyond the range of a Double is refused with its place; an integer beyond 64 bits,
  // which the parser takes for no number, is read as the Double it stands for, as the
  // host hands such a number over; anything else is a syntax error.
  simdjson::dom::element parse(std::string_view text, bool elements) {
    simdjson::dom::element root;
    fill_buffer(text, elements);
    if (parser_.parse(buffer_.data(), buffer_.size(), false).get(root) == simdjson::SUCCESS)
      return root;
    for_each_number(text, [&](std::string_view number) {
      if (!within_double_range(number)) refuse_number(number);
    });
    std::string widened;
    if (widen_long_integers(text, widened)) {
      fill_buffer(widened, elements);
      if (parser_.parse(buffer_.data(), buffer_.size(), false).get(root) == simdjson::SUCCESS)
        return root;
    }
    scanner_.syntax_error();
  }

  // The parser keeps its buffers for the longest text it has been given and makes
  // new ones for a longer one. The full pieces of a large file are all a few bytes
  // either side of the same size: blanks after the array round each one up to a
  // whole number of granules, so that the buffers are made once instead of again
  // (and paged in again) each time a piece comes out a little longer than any
  // before it. A smaller text (a small file, the last piece) is parsed as it is.
  void fill_buffer(std::string_view text, bool elements) {
    if (!elements) {
      reserve_buffer(text.size());
      buffer_.assign(text);
      return;
    }
    const std::size_t length = text.size() + 2;
    const std::size_t padded = length < kPieceBytes
                                   ? length
                                   : (length + kParseGranule - 1) / kParseGranule * kParseGranule;
    buffer_.clear();
    reserve_buffer(padded);
    buffer_.push_back('[');
    buffer_.append(text);
    buffer_.push_back(']');
    buffer_.resize(padded, ' ');
  }

  // A number of the file (`number` views it there) that no Double holds: refused with
  // its line and column and the property it is the value of.
  [[noreturn]] void refuse_number(std::string_view number) const {
    const std::string_view json = scanner_.json();
    const auto offset = static_cast<std::size_t>(number.data() - json.data());
    const std::string_view before = json.substr(0, offset);
    const std::size_t line_start = before.rfind('\n');
    const std::size_t line =
        static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')) + 1;
    const std::size_t column =
        (line_start == std::string_view::npos ? offset : offset - line_start - 1) + 1;
    const std::string_view name = property_name_before(before);
    std::string place = "line " + std::to_string(line) + ", column " + std::to_string(column);
    place +=
        name.empty() ? std::string(": an element of an array") : ": property " + std::string(name);
    scanner_.fail(place, std::string(number) +
                             " is beyond the range of a number (a Double holds "
                             "magnitudes up to 1.79769313486232E+308)");
  }

  // One value into a cell; objects and arrays lay their members down as a run first
  // and then fill in nested values after it, so every run stays contiguous.
  // `key` is the value's field name (kNone for array elements); `where` is the object
  // or array element holding it.
  Cell convert(simdjson::dom::element value, std::uint32_t key, const Where& where) {
    Cell cell;
    using simdjson::dom::element_type;
    switch (value.type()) {
      case element_type::INT64: {
        const std::int64_t number = value.get_int64().value_unsafe();
        if (number >= INT32_MIN && number <= INT32_MAX) {
          cell.kind = Kind::Long;
          cell.long_value = static_cast<std::int32_t>(number);
        } else {
          cell.kind = Kind::Double;
          cell.number = static_cast<double>(number);
        }
        break;
      }
      case element_type::UINT64:
        cell.kind = Kind::Double;
        cell.number = static_cast<double>(value.get_uint64().value_unsafe());
        break;
      case element_type::DOUBLE:
        cell.kind = Kind::Double;
        cell.number = value.get_double().value_unsafe();
        break;
      case element_type::STRING: {
        const std::string_view text = value.get_string().value_unsafe();
        if (key != Store::kNone && store_->is_date_key(key)) {
          const auto date = parse_iso_date(text);
          if (!date)
            scanner_.fail(where.text(*store_) + "." + store_->name_of(key),
                          "\"" + std::string(text) + "\" is not a date (YYYY-MM-DD)");
          cell.kind = Kind::Date;
          cell.number = date->serial;
          break;
        }
        cell.kind = Kind::Text;
        cell.span.first = arena_offset(text.size());
        cell.span.count = static_cast<std::uint32_t>(text.size());
        store_->text.append(text);
        break;
      }
      case element_type::BOOL:
        cell.kind = Kind::Boolean;
        cell.boolean = value.get_bool().value_unsafe();
        break;
      case element_type::NULL_VALUE:
        cell.kind = Kind::Null;
        break;
      case element_type::OBJECT: {
        const simdjson::dom::object object = value.get_object().value_unsafe();
        const std::uint32_t first = reserve_run(object.size());
        std::uint32_t at = first;
        // Objects at the same depth (the cards, their days) repeat the same names in
        // the same order: the key the previous one had at this place is tried first.
        // (Looked up afresh for every field: a nested object may add a depth.)
        const std::size_t depth = depth_++;
        if (depth >= keys_by_depth_.size()) keys_by_depth_.resize(depth + 1);
        for (auto field : object) {
          std::vector<std::uint32_t>& expected = keys_by_depth_[depth];
          const std::size_t place = at - first;
          std::uint32_t field_key = Store::kNone;
          if (place < expected.size() &&
              same_short_text(store_->name_of(expected[place]), field.key)) {
            field_key = expected[place];
          } else {
            field_key = store_->key_id(field.key);
            if (place < expected.size())
              expected[place] = field_key;
            else
              expected.push_back(field_key);
          }
          if (store_->is_days_key(field_key) && !field.value.is_array())
            scanner_.fail(where.text(*store_) + ".Days", "expected an array of days");
          Cell member = convert(field.value, field_key, where);
          member.key = field_key;
          store_->cells[at++] = member;
        }
        --depth_;
        cell.kind = Kind::Object;
        cell.span = {first, at - first};
        break;
      }
      case element_type::ARRAY: {
        const simdjson::dom::array array = value.get_array().value_unsafe();
        const bool days = key != Store::kNone && store_->is_days_key(key);
        const std::uint32_t first = reserve_run(array.size());
        std::uint32_t at = first;
        for (simdjson::dom::element element : array) {
          const Where element_where{&where, {}, key, static_cast<long>(at - first)};
          if (days && !element.is_object())
            scanner_.fail(element_where.text(*store_), "expected an object");
          store_->cells[at++] = convert(element, Store::kNone, element_where);
        }
        cell.kind = Kind::Array;
        cell.span = {first, at - first};
        break;
      }
    }
    return cell;
  }

  std::uint32_t reserve_run(std::size_t count) {
    const std::size_t first = store_->cells.size();
    if (first + count > Store::kNone) scanner_.fail("cards", "too many values");
    store_->cells.resize(first + count);
    return static_cast<std::uint32_t>(first);
  }

  Cell append_run(const std::vector<Cell>& run, Kind kind) {
    Cell cell;
    cell.kind = kind;
    cell.span.first = reserve_run(run.size());
    cell.span.count = static_cast<std::uint32_t>(run.size());
    std::copy(run.begin(), run.end(), store_->cells.begin() + cell.span.first);
    return cell;
  }

  std::uint32_t arena_offset(std::size_t length) {
    const std::size_t offset = store_->text.size();
    if (offset + length > Store::kNone) scanner_.fail("cards", "too much text");
    return static_cast<std::uint32_t>(offset);
  }

  // The parser reads up to SIMDJSON_PADDING bytes past the text: the buffer is made that
  // much larger before it is filled, so that the parser takes it in place instead of
  // copying it into a padded buffer of its own.
  void reserve_buffer(std::size_t size) { buffer_.reserve(size + simdjson::SIMDJSON_PADDING); }

  JsonScanner scanner_;
  CardsFileMapping* file_ = nullptr;
  std::shared_ptr<Store> store_;
  simdjson::dom::parser parser_;
  std::string buffer_;
  std::size_t depth_ = 0;
  std::vector<std::vector<std::uint32_t>> keys_by_depth_;
};

}  // namespace
}  // namespace json_cards

Variant load_cards_json(const std::string& json, const std::string& name) {
  return json_cards::Loader(json, name).load();
}

Variant load_cards_file(const std::string& path) {
  json_cards::CardsFileMapping file(path);
  return json_cards::Loader(file.text(), path, &file).load();
}

}  // namespace zorvat::cli
