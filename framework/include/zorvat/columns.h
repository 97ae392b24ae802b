// Columns of a fixed-width record. A record writer appends its fields in column
// order through these helpers, so each field's width is stated where it is written.
// Widths count letters (UTF-16 code units, zorvat/unicode.h), never bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zorvat {

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

}  // namespace zorvat
