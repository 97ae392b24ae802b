// The pieces every file reader is built from: lines split at the layout's terminator,
// a cursor that takes a record's columns in order and reports where a file leaves its
// layout, and the number texts the classes write (zero-filled hundredths, "####.00"
// hours, "mm/dd/yy" dates).
//
// A reader sees the file as UTF-8 text (converted from the payroll system's code page
// before it reads). Widths and columns count letters as the layouts do, in UTF-16 code
// units (zorvat/unicode.h): "José" is four columns wide, a character beyond the Basic
// Multilingual Plane two. Positions (`Cursor::position`, the offsets of a line's text)
// are byte offsets into the UTF-8 text; they mark places, never widths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/columns.h"
#include "zorvat/date.h"
#include "zorvat/reconcile/records.h"

namespace zorvat::reconcile {

struct Line {
  std::string_view text;
  std::size_t number = 0;  // from 1
};

// Splits `bytes` at every `terminator`. With `last_terminated` the file must end with
// one (an unterminated last line is an error); without it, the text after the last
// terminator is a line of its own when it is not empty.
std::vector<Line> split_lines(std::string_view layout, std::string_view bytes,
                              std::string_view terminator, bool last_terminated);

// Splits a line at every `separator` (a non-empty text).
std::vector<std::string_view> split_fields(std::string_view line, std::string_view separator);

// The column (from 1, in letters) of the byte at `position` of a line's `text`.
std::size_t letter_column(std::string_view text, std::size_t position);

// A signed decimal with exactly `decimals` digits after the point ("-12.50", ".50",
// "0000150"), scaled to a whole number (1250, 50, 150). Leading blanks are allowed;
// nothing else. No value for text that is not such a number, nor for one of more than
// 17 digits (hundredths of an hour that many make an amount in range).
std::optional<std::int64_t> parse_decimal(std::string_view text, int decimals);
// Whether `text` is written as such a number, however many digits it has.
bool parse_decimal_digits(std::string_view text, int decimals);

// The widths, in letters, to read a value at that the writer writes as it stands (wider
// or narrower than its column): `declared`, the column's own, first; then each other
// width of `written` (the cards' values as the writer writes them), narrowest first,
// each once. Taken once per file, they bound the retries of a line that does not read
// at its column's width by what the cards can make the writer write.
std::vector<std::size_t> written_widths(std::size_t declared,
                                        const std::vector<std::string>& written);

// "mm/dd/yy", the year read through the two-digit-year window (zorvat/date.h).
std::optional<CivilDate> parse_short_date(std::string_view text);

// Reads one record column by column, failing with the record's line and the column
// where the expected text is missing. Widths are letters; a position is the byte
// offset of a place in the record's text, and an error reports it as its column.
class Cursor {
 public:
  Cursor(std::string_view layout, Line line) : layout_(layout), line_(line) {}
  // A cursor at `position` (a byte offset) of the line: where a record starts that
  // follows another on the same line.
  Cursor(std::string_view layout, Line line, std::size_t position)
      : layout_(layout), line_(line), position_(position) {}

  // The byte offset of the cursor in the record's text.
  std::size_t position() const { return position_; }
  // The letters before the cursor.
  std::size_t column() const { return letter_column(line_.text, position_) - 1; }
  std::string_view rest() const { return line_.text.substr(position_); }
  bool at_end() const { return position_ >= line_.text.size(); }
  // The text taken since `start` (a position).
  std::string_view since(std::size_t start) const {
    return line_.text.substr(start, position_ - start);
  }

  // The next `width` letters. A character beyond the Basic Multilingual Plane that
  // would stand across the end of the column is not in the layout.
  std::string_view take(std::size_t width, std::string_view what);
  // Everything up to (not including) `delimiter`, which is skipped.
  std::string_view take_until(std::string_view delimiter, std::string_view what);
  std::string_view take_rest() {
    std::string_view rest_text = rest();
    position_ = line_.text.size();
    return rest_text;
  }
  void expect(std::string_view literal, std::string_view what);
  void expect_blanks(std::size_t count, std::string_view what);
  // Blanks to the end of the record, at least up to `width` letters in all.
  void expect_blank_fill(std::size_t width);
  // A number of `width` letters with `decimals` decimals; a leading "-" widens the
  // column by one, as a zero-filled pattern writes a negative value.
  std::int64_t number(std::size_t width, int decimals, std::string_view what);
  // `text` must be a number with `decimals` decimals; it started at `position`.
  std::int64_t number_in(std::string_view text, std::size_t position, int decimals,
                         std::string_view what) const;
  void expect_end();

  // The same by a record's declaration (zorvat/columns.h): each first checks that the
  // cursor stands at the column's first column (a reader out of step with its layout
  // is a bug, std::logic_error), and names the column in an error. A negative number
  // widens its column by one and moves the columns after it (`number`).
  std::string_view take(const Column& column);
  // The column as `letters` wide in this record (a value written as it stands); the
  // difference moves the columns after it.
  std::string_view take(const Column& column, std::size_t letters);
  void expect(const Column& column);
  // The column holds `text`, a value the reader knows. A text wider or narrower than
  // the column (a two-digit pay code in a one-column field, an empty one) moves the
  // columns after it, as the writers have always let it.
  void expect(const Column& column, std::string_view text);
  void expect_blanks(const Column& column);
  // A number written through the column's pattern, with the pattern's decimals.
  std::int64_t number(const Column& column);
  // Blanks from the column to the end of the record, which ends at the column's last
  // column: the fill of a record to its declared width.
  void expect_fill(const Column& column);

  [[noreturn]] void fail(std::string_view problem) const { fail_at(position_, problem); }
  // Fails naming the column of the byte at `position`.
  [[noreturn]] void fail_at(std::size_t position, std::string_view problem) const;

 private:
  void expect_at(const Column& column) const;

  std::string_view layout_;
  Line line_;
  std::size_t position_ = 0;
  // Letters the fields read so far are wider (or narrower) than declared.
  std::ptrdiff_t shift_ = 0;
};

}  // namespace zorvat::reconcile
