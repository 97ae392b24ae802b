// The classic Format function: a pattern of placeholders applied to a Variant.
//
// A pattern is parsed once into tokens and then rendered for each value, so a
// format's hot loop pays only for the rendering. Supported:
//   numbers  0 (digit or zero), # (digit or nothing), . (decimal point),
//            , (thousands grouping), % (percent), literal text ("..." or \x or any
//            other character), up to three ";"-separated sections (positive;
//            negative; zero);
//   dates    d dd m mm mmm mmmm yy yyyy h hh n nn s ss and the separators / :
//   text     & (character or nothing), @ (character or blank), < > (case).
// Numbers are taken to 15 significant digits first and then rounded on their decimal
// digits, half away from zero (2.5 through "0" is "3", -0.3 is "-0"). Text that is
// not numeric passes a number pattern unchanged; text that is not a date passes a
// date pattern unchanged. Null and Empty format as an empty number.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/variant.h"

namespace zorvat {

class FormatPattern {
 public:
  explicit FormatPattern(std::string_view pattern);
  ~FormatPattern();
  FormatPattern(FormatPattern&&) noexcept;
  FormatPattern& operator=(FormatPattern&&) noexcept;

  std::string operator()(const Variant& value) const;
  // Appends the formatted value to `out` (no temporary string).
  void append_to(std::string& out, const Variant& value) const;
  // The double overload skips the Variant for the hot paths (hours, hundredths).
  void append_to(std::string& out, double value) const;

  std::string_view pattern() const { return pattern_; }

  // The same text as append_to(out, value), always taken through the general decimal
  // path: what the tests hold the fixed-point fast path to.
  std::string without_fast_path(double value) const;

 private:
  struct Tokens;
  void append_double(std::string& out, double value, bool fast) const;
  std::string pattern_;
  std::unique_ptr<Tokens> tokens_;
};

// Parses `pattern` and formats `value` with it (for one-off use).
std::string format(const Variant& value, std::string_view pattern);

}  // namespace zorvat
