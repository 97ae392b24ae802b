// Case rules for names and codes. Property names and ProgIDs match as a dispatch
// interface matches them, without regard to case; pay codes are kept in upper case.
// Only the ASCII letters change case: names and codes are ASCII, and other bytes
// (text in the host's code page) pass unchanged.
#pragma once

#include <string>
#include <string_view>

namespace zorvat {

constexpr char to_lower_ascii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr char to_upper_ascii(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string to_lower_ascii(std::string_view text);
std::string to_upper_ascii(std::string_view text);

// True when the two texts differ at most in the case of their letters.
bool iequals(std::string_view a, std::string_view b);

}  // namespace zorvat
