#include "zorvat/columns.h"

#include "zorvat/error.h"
#include "zorvat/unicode.h"

namespace zorvat {

void append_spaces(std::string& out, long count) {
  if (count < 0) raise_runtime(rt::kInvalidProcedureCall);
  out.append(static_cast<std::size_t>(count), ' ');
}

void append_left_justified(std::string& out, std::string_view text, std::size_t width) {
  if (is_ascii(text)) {
    out += text.substr(0, width);
    if (text.size() < width) out.append(width - text.size(), ' ');
    return;
  }
  // Cut to the width in letters; a character that does not fit whole is left out and
  // its room filled, so the column keeps its width.
  const std::string_view kept = text_left(text, width);
  out += kept;
  out.append(width - text_length(kept), ' ');
}

void append_right_justified(std::string& out, std::string_view text, std::size_t width) {
  append_spaces(out, static_cast<long>(width) - static_cast<long>(text_length(text)));
  out += text;
}

}  // namespace zorvat
