// Columns of a fixed-width record. Each class declares its records once, column by
// column (`Column`), and its writer and its reader both go by the declaration: the
// writer appends the fields in column order through these helpers, the reader takes
// them back in the same order and names a field by its declared name when a file
// leaves the layout. Widths count letters (UTF-16 code units, zorvat/unicode.h), never
// bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "zorvat/format.h"

namespace zorvat {

enum class Justify { Left, Right };

// One field of a fixed-width record.
struct Column {
  std::string_view name;  // as an error names it: "the employee number"
  std::size_t first;      // the first column, from 1
  std::size_t width;      // in letters
  // The text the field always holds ("D"); empty for a field that holds a value.
  std::string_view literal = {};
  // The Format pattern the value is written through ("000000", "mm/dd/yy"); empty for
  // text or blanks. A pattern writes as many letters as the value needs: a value wider
  // than the pattern overruns the column, as the classic writers always have.
  std::string_view pattern = {};
  // How text (a value without a pattern) fills the column.
  Justify justify = Justify::Left;

  constexpr std::size_t last() const { return first + width - 1; }
};

// True when the columns follow one another from `first` on, with no gap or overlap,
// each a literal as wide as its text: the check a record's declaration is held to.
template <std::size_t N>
constexpr bool columns_follow(const Column (&columns)[N], std::size_t first = 1) {
  for (const Column& column : columns) {
    if (column.first != first || column.width == 0) return false;
    if (!column.literal.empty() && column.literal.size() != column.width) return false;
    first = column.last() + 1;
  }
  return true;
}

// The decimals a column's pattern writes ("#####.00": 2; "000000": 0).
constexpr int pattern_decimals(std::string_view pattern) {
  const std::size_t point = pattern.find('.');
  return point == std::string_view::npos ? 0 : static_cast<int>(pattern.size() - point - 1);
}

// The digits a pattern of zeros and "#" writes before its decimal point ("#####.00": 5).
constexpr std::size_t pattern_integer_digits(std::string_view pattern) {
  const std::size_t point = pattern.find('.');
  return point == std::string_view::npos ? pattern.size() : point;
}

// The column's pattern, parsed once.
template <const Column& column>
const FormatPattern& column_pattern() {
  static const FormatPattern pattern(column.pattern);
  return pattern;
}

// Appends the column's literal.
inline void append_literal(std::string& out, const Column& column) {
  out += column.literal;
}

// Appends `count` blanks. A negative count raises 5 "Invalid procedure call or
// argument": the filler worked out for a value wider than its column.
void append_spaces(std::string& out, long count);

// Appends `text` left-justified in a column of `width`: blanks after it up to the
// width; text longer than the column is cut to the width, never inside a character.
void append_left_justified(std::string& out, std::string_view text, std::size_t width);

// Appends `text` right-justified in a column of `width`: blanks before it up to the
// width. Text longer than the column is not cut: the filler would be negative, which
// raises 5 "Invalid procedure call or argument".
void append_right_justified(std::string& out, std::string_view text, std::size_t width);

// Appends a column of blanks.
inline void append_blank(std::string& out, const Column& column) {
  out.append(column.width, ' ');
}

// Appends `text` in the column, justified as it declares.
inline void append_in_column(std::string& out, const Column& column, std::string_view text) {
  if (column.justify == Justify::Left)
    append_left_justified(out, text, column.width);
  else
    append_right_justified(out, text, column.width);
}

}  // namespace zorvat
