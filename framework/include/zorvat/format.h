// The classic Format function: a pattern of placeholders applied to a Variant.
//
// A pattern is parsed once into tokens and then rendered for each value, so a
// format's hot loop pays only for the rendering; plain digit patterns ("000000",
// "###0.00") round through a fixed-point fast path that gives exactly the text of the
// general decimal path. The first character with a meaning decides what a pattern
// formats. Supported (US English: "." point, "," thousands, "$", AM and PM):
//   numbers  0 (digit or zero), # (digit or nothing), . (decimal point), , (thousands
//            grouping between placeholders; right of the last whole placeholder it
//            divides by 1000), % (percent), E+ E- e+ e- (scientific), literal text
//            ("..." or \x or any other character), up to four ";"-separated sections
//            (positive; negative; zero; Null); the sign leads the section's text;
//   dates    d dd ddd dddd ddddd dddddd m mm mmm mmmm y yy yyyy h hh n nn s ss w ww q
//            c ttttt, AM/PM am/pm A/P a/p AMPM (12-hour clock), the separators / :;
//            "m" right after an hour is the minute;
//   text     @ (character or blank) & (character or nothing), filled from the right
//            unless "!", < > (case), a second section for the empty text;
//   names    General Number, Currency, Fixed, Standard, Percent, Scientific, Yes/No,
//            True/False, On/Off, General Date, Long/Medium/Short Date and Time.
// Numbers are taken to 15 significant digits first and then rounded on their decimal
// digits, half away from zero (2.5 through "0" is "3", -0.3 is "-0"). Numeric text is
// read as parse_numeric reads it; other text passes a number pattern unchanged, text
// that is not a date passes a date pattern unchanged. Null formats as nothing (or the
// fourth section), Empty as 0. A pattern with what the engine does not implement (a
// fifth section, "mmmmm", "hhh", a second exponent...) raises 5 as it is parsed.
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

  // The same text as append_to(out, value), always written by the general decimal
  // renderer: what the tests hold the fixed-point specialisation to.
  std::string without_fast_path(double value) const;

 private:
  struct Tokens;
  void append_not_number(std::string& out, double value) const;
  std::string pattern_;
  std::unique_ptr<Tokens> tokens_;
};

// Parses `pattern` and formats `value` with it (for one-off use).
std::string format(const Variant& value, std::string_view pattern);

}  // namespace zorvat
