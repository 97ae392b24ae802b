#include "zorvat/columns.h"

#include "zorvat/error.h"

namespace zorvat {

void append_spaces(std::string& out, long count) {
  if (count < 0) raise_runtime(rt::kInvalidProcedureCall);
  out.append(static_cast<std::size_t>(count), ' ');
}

void append_left_justified(std::string& out, std::string_view text, std::size_t width) {
  if (text.size() >= width) {
    out += text.substr(0, width);
    return;
  }
  out += text;
  out.append(width - text.size(), ' ');
}

void append_right_justified(std::string& out, std::string_view text, std::size_t width) {
  append_spaces(out, static_cast<long>(width) - static_cast<long>(text.size()));
  out += text;
}

}  // namespace zorvat
