#include "zorvat/text.h"

#include <algorithm>

namespace zorvat {

std::string to_lower_ascii(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = to_lower_ascii(c);
  return result;
}

std::string to_upper_ascii(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = to_upper_ascii(c);
  return result;
}

bool iequals(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return to_lower_ascii(x) == to_lower_ascii(y); });
}

}  // namespace zorvat
