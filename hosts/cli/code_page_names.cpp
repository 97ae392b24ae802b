#include "code_page_names.h"

#include <cctype>

#include "code_page_option.h"
#include "zorvat/text.h"

namespace zorvat::cli {

std::optional<unsigned> code_page_number(std::string_view name) {
  std::string lower = to_lower_ascii(name);
  std::string_view digits = lower;
  for (std::string_view prefix : {"windows-", "cp", "ibm"}) {
    if (digits.starts_with(prefix)) {
      digits.remove_prefix(prefix.size());
      break;
    }
  }
  if (lower == "utf-8" || lower == "utf8") return 65001;
  if (digits.empty() || digits.size() > 5) return std::nullopt;
  unsigned number = 0;
  for (char c : digits) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return std::nullopt;
    number = number * 10 + static_cast<unsigned>(c - '0');
  }
  return number;
}

std::string unknown_code_page_message(std::string_view name) {
  return "--code-page: \"" + std::string(name) +
         "\" is not a code page this system converts to (windows-1252, utf-8, 850, ...)";
}

}  // namespace zorvat::cli
