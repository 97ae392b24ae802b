// The Format engine. A pattern is tokenized once (FormatPattern's constructor) into
// sections of tokens; rendering walks the tokens of the section that applies.
#include "zorvat/format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>

#include "zorvat/error.h"
#include "zorvat/text.h"
#include "zorvat/unicode.h"

namespace zorvat {
namespace {

// What a pattern formats. General is the empty pattern and "General Number", Choice
// the Yes/No, True/False and On/Off names, GeneralDate "General Date".
enum class Kind { Number, Date, Text, General, Choice, GeneralDate };

enum class Tok {
  Literal,
  // number
  DigitZero,
  DigitHash,
  DecimalPoint,
  Percent,
  Exponent,  // E+ E- e+ e-: `literal` holds the letter and the sign
  // date (the count of letters is in `width`)
  Day,
  Month,
  Year,
  DayOfYear,
  Hour,
  Minute,
  Second,
  Weekday,
  WeekOfYear,
  Quarter,
  AmPm,        // `literal` holds the written marker ("AM/PM", "a/p")
  LocaleAmPm,  // AMPM: the locale's markers
  GeneralDate,
  DateSeparator,
  TimeSeparator,
  // text
  CharOrNothing,  // &
  CharOrBlank,    // @
};

enum class Place : std::uint8_t { Whole, Fraction, Exponent };

struct Token {
  Tok kind = Tok::Literal;
  int width = 0;  // date letters, e.g. 2 for "mm"
  Place place = Place::Whole;
  std::string literal;  // Literal text; AmPm: the marker; Exponent: "E+" etc.
};

struct Section {
  std::vector<Token> tokens;
  bool empty = true;  // nothing was written for this section
  // Number sections: placeholders before and after the point, how many of them are
  // forced (the span from the first "0" before the point, up to the last "0" after).
  int whole_places = 0;
  int whole_forced = 0;
  int fraction_places = 0;
  int fraction_forced = 0;
  bool grouping = false;  // a "," between digit placeholders
  int scale = 0;          // thousands the value is divided by ("0," "0,.00")
  int percent = 0;        // each "%" multiplies by 100
  bool scientific = false;
  int exponent_forced = 0;
  bool has_point = false;
  // The fixed-point specialisation may write this section (see fixed_point_applies).
  bool fixed_point = false;
  // Date sections: hours on the 12-hour clock (an AM/PM marker is present).
  bool twelve_hour = false;
  // Text sections.
  bool left_to_right = false;
  char case_mode = 0;  // '<' lower, '>' upper: the first one written counts
  int text_places = 0;
};

bool fixed_point_applies(const Section& section);

[[noreturn]] void refuse() {
  raise_runtime(rt::kInvalidProcedureCall);
}

// Splits at ";" outside quotes and escapes.
std::vector<std::string_view> split_sections(std::string_view pattern) {
  std::vector<std::string_view> sections;
  std::size_t start = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if (c == '"')
      quoted = !quoted;
    else if (!quoted && c == '\\')
      ++i;
    else if (!quoted && c == ';') {
      sections.push_back(pattern.substr(start, i - start));
      start = i + 1;
    }
  }
  sections.push_back(pattern.substr(start));
  return sections;
}

bool is_date_letter(char c) {
  const char l = to_lower_ascii(c);
  return l == 'd' || l == 'm' || l == 'y' || l == 'h' || l == 'n' || l == 's' || l == 'w' ||
         l == 'q' || l == 'c' || l == 't';
}

bool starts_with_nocase(std::string_view text, std::size_t at, std::string_view prefix) {
  return text.size() - at >= prefix.size() && iequals(text.substr(at, prefix.size()), prefix);
}

// The length of an AM/PM marker at `i` ("AM/PM", "A/P" in either case, "AMPM"), or 0.
std::size_t am_pm_length(std::string_view pattern, std::size_t i) {
  if (starts_with_nocase(pattern, i, "am/pm")) return 5;
  if (starts_with_nocase(pattern, i, "ampm")) return 4;
  if (starts_with_nocase(pattern, i, "a/p")) return 3;
  return 0;
}

// The first character with a meaning decides what the pattern formats: a digit
// placeholder, point or percent makes it a number pattern, a date letter, date or time
// separator or AM/PM marker a date pattern, "@ & < > !" a text pattern.
Kind classify(std::string_view pattern) {
  bool quoted = false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if (c == '"') {
      quoted = !quoted;
      continue;
    }
    if (quoted) continue;
    if (c == '\\') {
      ++i;
      continue;
    }
    if (c == '0' || c == '#' || c == '.' || c == '%') return Kind::Number;
    if (c == '@' || c == '&' || c == '<' || c == '>' || c == '!') return Kind::Text;
    if (is_date_letter(c) || c == '/' || c == ':' || am_pm_length(pattern, i) > 0)
      return Kind::Date;
  }
  return Kind::Number;
}

void add_literal(Section& section, std::string_view text) {
  if (text.empty()) return;
  auto& tokens = section.tokens;
  if (!tokens.empty() && tokens.back().kind == Tok::Literal) {
    tokens.back().literal += text;
    return;
  }
  Token token;
  token.literal = std::string(text);
  tokens.push_back(std::move(token));
}

// Quoted text and backslash escapes, common to every kind. Returns true when the
// character at `i` was consumed as a literal.
bool take_quoted(std::string_view pattern, std::size_t& i, Section& section) {
  if (pattern[i] == '"') {
    const std::size_t close = pattern.find('"', i + 1);
    const std::size_t end = close == std::string_view::npos ? pattern.size() : close;
    add_literal(section, pattern.substr(i + 1, end - i - 1));
    i = end;
    return true;
  }
  if (pattern[i] == '\\') {
    if (i + 1 < pattern.size()) add_literal(section, pattern.substr(i + 1, 1));
    ++i;
    return true;
  }
  return false;
}

bool is_digit_placeholder(char c) {
  return c == '0' || c == '#';
}

// Whether a digit placeholder of the whole part follows position `i`, before the
// point, the exponent or the end of the section.
bool placeholder_follows(std::string_view pattern, std::size_t i) {
  for (std::size_t j = i + 1; j < pattern.size(); ++j) {
    const char c = pattern[j];
    if (is_digit_placeholder(c)) return true;
    if (c == '.' || ((c == 'E' || c == 'e') && j + 1 < pattern.size() &&
                     (pattern[j + 1] == '+' || pattern[j + 1] == '-')))
      return false;
    if (c == '\\') ++j;
    if (c == '"') {
      const std::size_t close = pattern.find('"', j + 1);
      if (close == std::string_view::npos) return false;
      j = close;
    }
  }
  return false;
}

bool has_digit_placeholder(std::string_view pattern) {
  bool quoted = false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '"') quoted = !quoted;
    if (quoted) continue;
    if (pattern[i] == '\\') {
      ++i;
      continue;
    }
    if (is_digit_placeholder(pattern[i])) return true;
  }
  return false;
}

Section parse_number_section(std::string_view pattern) {
  Section section;
  section.empty = pattern.empty();
  Place place = Place::Whole;
  int first_forced_whole = -1;
  bool seen_whole_placeholder = false;
  // Without any digit placeholder a comma is just a comma.
  const bool digits = has_digit_placeholder(pattern);
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (take_quoted(pattern, i, section)) continue;
    const char c = pattern[i];
    Token token;
    if (is_digit_placeholder(c)) {
      token.kind = c == '0' ? Tok::DigitZero : Tok::DigitHash;
      token.place = place;
      if (place == Place::Fraction) {
        ++section.fraction_places;
        if (c == '0') section.fraction_forced = section.fraction_places;
      } else if (place == Place::Exponent) {
        if (c == '0') ++section.exponent_forced;
      } else {
        if (c == '0' && first_forced_whole < 0) first_forced_whole = section.whole_places;
        ++section.whole_places;
        seen_whole_placeholder = true;
      }
      section.tokens.push_back(std::move(token));
    } else if (c == '.' && place == Place::Whole) {
      place = Place::Fraction;
      token.kind = Tok::DecimalPoint;
      section.tokens.push_back(std::move(token));
    } else if (c == ',' && digits) {
      // Among the digit placeholders: group the thousands. Right of the last whole
      // placeholder (before the point or the end): divide by a thousand each.
      if (place == Place::Whole && seen_whole_placeholder && !placeholder_follows(pattern, i))
        ++section.scale;
      else if (place != Place::Exponent)
        section.grouping = true;
    } else if (c == '%') {
      ++section.percent;
      token.kind = Tok::Percent;
      section.tokens.push_back(std::move(token));
    } else if ((c == 'E' || c == 'e') && i + 1 < pattern.size() &&
               (pattern[i + 1] == '+' || pattern[i + 1] == '-')) {
      if (section.scientific) refuse();
      section.scientific = true;
      place = Place::Exponent;
      token.kind = Tok::Exponent;
      token.literal = std::string(pattern.substr(i, 2));
      section.tokens.push_back(std::move(token));
      ++i;
    } else {
      add_literal(section, pattern.substr(i, 1));
    }
  }
  if (first_forced_whole >= 0) section.whole_forced = section.whole_places - first_forced_whole;
  section.has_point = std::any_of(section.tokens.begin(), section.tokens.end(),
                                  [](const Token& t) { return t.kind == Tok::DecimalPoint; });
  section.fixed_point = fixed_point_applies(section);
  return section;
}

Section parse_date_section(std::string_view pattern) {
  Section section;
  section.empty = pattern.empty();
  bool after_hour = false;  // "m" or "mm" after an hour means minutes
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (take_quoted(pattern, i, section)) continue;
    const char c = pattern[i];
    const char l = to_lower_ascii(c);
    if (const std::size_t marker = am_pm_length(pattern, i)) {
      Token token;
      token.kind = marker == 4 ? Tok::LocaleAmPm : Tok::AmPm;
      token.literal = std::string(pattern.substr(i, marker));
      section.twelve_hour = true;
      section.tokens.push_back(std::move(token));
      i += marker - 1;
      continue;
    }
    if (is_date_letter(c)) {
      std::size_t run = 1;
      while (i + run < pattern.size() && to_lower_ascii(pattern[i + run]) == l) ++run;
      Token token;
      token.width = static_cast<int>(run);
      switch (l) {
        case 'd':
          if (run > 6) refuse();
          token.kind = Tok::Day;
          break;
        case 'm':
          if (run > 4) refuse();
          token.kind = after_hour && run <= 2 ? Tok::Minute : Tok::Month;
          break;
        case 'y':
          // "yyy" is "yy" followed by "y".
          if (run == 3) {
            run = 2;
            token.width = 2;
          }
          if (run > 4) refuse();
          token.kind = run == 1 ? Tok::DayOfYear : Tok::Year;
          break;
        case 'h':
          if (run > 2) refuse();
          token.kind = Tok::Hour;
          break;
        case 'n':
          if (run > 2) refuse();
          token.kind = Tok::Minute;
          break;
        case 's':
          if (run > 2) refuse();
          token.kind = Tok::Second;
          break;
        case 'w':
          if (run > 2) refuse();
          token.kind = run == 1 ? Tok::Weekday : Tok::WeekOfYear;
          break;
        case 'q':
          if (run > 1) refuse();
          token.kind = Tok::Quarter;
          break;
        case 'c':
          if (run > 1) refuse();
          token.kind = Tok::GeneralDate;
          break;
        default:  // 't': only "ttttt", the long time
          if (run != 5) refuse();
          break;
      }
      i += run - 1;
      if (l == 't') {  // ttttt: the long time, h:mm:ss AM/PM
        section.twelve_hour = true;
        section.tokens.push_back(Token{Tok::Hour, 1, Place::Whole, {}});
        section.tokens.push_back(Token{Tok::TimeSeparator, 0, Place::Whole, {}});
        section.tokens.push_back(Token{Tok::Minute, 2, Place::Whole, {}});
        section.tokens.push_back(Token{Tok::TimeSeparator, 0, Place::Whole, {}});
        section.tokens.push_back(Token{Tok::Second, 2, Place::Whole, {}});
        add_literal(section, " ");
        section.tokens.push_back(Token{Tok::LocaleAmPm, 0, Place::Whole, "AMPM"});
        after_hour = false;
        continue;
      }
      if (token.kind == Tok::Day && run == 5) {  // ddddd: the short date, m/d/yyyy
        section.tokens.push_back(Token{Tok::Month, 1, Place::Whole, {}});
        section.tokens.push_back(Token{Tok::DateSeparator, 0, Place::Whole, {}});
        section.tokens.push_back(Token{Tok::Day, 1, Place::Whole, {}});
        section.tokens.push_back(Token{Tok::DateSeparator, 0, Place::Whole, {}});
        section.tokens.push_back(Token{Tok::Year, 4, Place::Whole, {}});
      } else if (token.kind == Tok::Day && run == 6) {  // dddddd: the long date
        section.tokens.push_back(Token{Tok::Day, 4, Place::Whole, {}});
        add_literal(section, ", ");
        section.tokens.push_back(Token{Tok::Month, 4, Place::Whole, {}});
        add_literal(section, " ");
        section.tokens.push_back(Token{Tok::Day, 1, Place::Whole, {}});
        add_literal(section, ", ");
        section.tokens.push_back(Token{Tok::Year, 4, Place::Whole, {}});
      } else {
        section.tokens.push_back(token);
      }
      after_hour = token.kind == Tok::Hour;
      continue;
    }
    if (c == '/') {
      section.tokens.push_back(Token{Tok::DateSeparator, 0, Place::Whole, {}});
    } else if (c == ':') {
      section.tokens.push_back(Token{Tok::TimeSeparator, 0, Place::Whole, {}});
    } else {
      add_literal(section, pattern.substr(i, 1));
    }
  }
  return section;
}

Section parse_text_section(std::string_view pattern) {
  Section section;
  section.empty = pattern.empty();
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (take_quoted(pattern, i, section)) continue;
    const char c = pattern[i];
    if (c == '&' || c == '@') {
      Token token;
      token.kind = c == '&' ? Tok::CharOrNothing : Tok::CharOrBlank;
      section.tokens.push_back(std::move(token));
      ++section.text_places;
    } else if (c == '!') {
      section.left_to_right = true;
    } else if (c == '<' || c == '>') {
      if (section.case_mode == 0) section.case_mode = c;
    } else {
      add_literal(section, pattern.substr(i, 1));
    }
  }
  return section;
}

// Writes the decimal digits of `value` leftwards so that they end just before `end`,
// two at a time; returns where they begin. Zero writes no digit at all.
char* digits_leftwards(char* end, std::uint64_t value) {
  static constexpr char kPairs[] =
      "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
      "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
      "8081828384858687888990919293949596979899";
  while (value >= 100) {
    const auto pair = static_cast<std::size_t>(value % 100) * 2;
    value /= 100;
    end -= 2;
    end[0] = kPairs[pair];
    end[1] = kPairs[pair + 1];
  }
  if (value >= 10) {
    const auto pair = static_cast<std::size_t>(value) * 2;
    end -= 2;
    end[0] = kPairs[pair];
    end[1] = kPairs[pair + 1];
  } else if (value > 0) {
    *--end = static_cast<char>('0' + value);
  }
  return end;
}

// Writes `value` zero-padded to at least `width` digits.
void append_number(std::string& out, int width, int value) {
  if (value < 0) {
    out.push_back('-');
    value = -value;
  }
  char buffer[16];
  char* const end = buffer + sizeof buffer;
  const char* const first = digits_leftwards(end, static_cast<std::uint64_t>(value));
  const auto digits = static_cast<int>(end - first);
  // Zero takes one digit at least.
  const int padding = std::max(width, 1) - digits;
  if (padding > 0) out.append(static_cast<std::size_t>(padding), '0');
  out.append(first, static_cast<std::size_t>(digits));
}

// --- Numbers -----------------------------------------------------------------------

// A non-negative number as decimal digits: value = 0.d1d2d3... x 10^point, with at
// most 15 significant digits (the precision the classic conversions keep).
struct Decimal {
  std::array<char, 24> digits{};
  int count = 0;
  int point = 0;
};

void trim_zeros(Decimal& decimal) {
  while (decimal.count > 0 && decimal.digits[static_cast<std::size_t>(decimal.count - 1)] == '0')
    --decimal.count;
}

Decimal to_decimal(double magnitude) {
  Decimal decimal;
  if (magnitude == 0.0) return decimal;
  char buffer[40];
  const auto result =
      std::to_chars(buffer, buffer + sizeof buffer, magnitude, std::chars_format::scientific, 14);
  const char* p = buffer;
  for (; p < result.ptr && *p != 'e'; ++p)
    if (*p != '.') decimal.digits[static_cast<std::size_t>(decimal.count++)] = *p;
  int exponent = 0;
  if (p < result.ptr) {
    ++p;
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    std::from_chars(p, result.ptr, exponent);
    if (negative) exponent = -exponent;
  }
  decimal.point = exponent + 1;
  trim_zeros(decimal);
  return decimal;
}

// Rounds to `places` digits after the point, half away from zero on the digits.
void round_decimal(Decimal& decimal, int places) {
  const int keep = decimal.point + places;
  if (decimal.count <= keep) return;
  if (keep < 0) {
    decimal.count = 0;
    return;
  }
  const bool up = decimal.digits[static_cast<std::size_t>(keep)] >= '5';
  decimal.count = keep;
  if (up) {
    int i = keep - 1;
    for (; i >= 0; --i) {
      char& digit = decimal.digits[static_cast<std::size_t>(i)];
      if (digit == '9') {
        digit = '0';
      } else {
        ++digit;
        break;
      }
    }
    if (i < 0) {  // carried out of the first digit: 0.999 -> 1.00
      decimal.digits[0] = '1';
      decimal.count = 1;
      ++decimal.point;
    }
  }
  trim_zeros(decimal);
}

// The value to 15 significant digits, then rounded on its decimal digits to `places`
// after the point; `shift` moves the point first (percent, thousands scaling).
Decimal rounded_decimal(double magnitude, int places, int shift) {
  Decimal decimal = to_decimal(magnitude);
  if (decimal.count > 0) decimal.point += shift;
  round_decimal(decimal, places);
  return decimal;
}

char digit_at(const Decimal& decimal, int index) {
  return index >= 0 && index < decimal.count ? decimal.digits[static_cast<std::size_t>(index)]
                                             : '0';
}

void append_exponent(std::string& out, const Token& token, int exponent, int forced) {
  out.push_back(token.literal[0]);
  if (exponent < 0)
    out.push_back('-');
  else if (token.literal[1] == '+')
    out.push_back('+');
  append_number(out, forced, exponent < 0 ? -exponent : exponent);
}

// The general renderer: every number section, every value. Kept out of line so that
// the fixed-point specialisation in front of it does not pay for its set-up.
[[gnu::noinline]] void render_number_generally(std::string& out, const Section& section,
                                               double value, bool write_sign) {
  if (!std::isfinite(value)) raise_runtime(rt::kOverflow);
  const double magnitude = std::fabs(value);
  Decimal decimal;
  int exponent = 0;
  if (section.scientific) {
    decimal = to_decimal(magnitude);
    if (decimal.count > 0) {
      decimal.point += 2 * section.percent;
      // The mantissa keeps as many whole digits as the pattern has placeholders.
      exponent = decimal.point - section.whole_places;
      decimal.point = section.whole_places;
      round_decimal(decimal, section.fraction_places);
      if (decimal.point > section.whole_places) {  // 9.99 -> 10.0: one more power
        ++exponent;
        decimal.point = section.whole_places;
      }
    }
  } else {
    decimal = rounded_decimal(magnitude, section.fraction_places,
                              2 * section.percent - 3 * section.scale);
  }

  // Whole digits, without leading zeros, then zero-padded to the forced places.
  const int significant_whole = decimal.count > 0 && decimal.point > 0 ? decimal.point : 0;
  const int whole_length = std::max(significant_whole, section.whole_forced);
  const int padding = whole_length - significant_whole;
  // Fraction digits: every forced place, and the optional ones up to the last
  // significant digit.
  int fraction_written = section.fraction_forced;
  for (int i = section.fraction_places; i > fraction_written; --i) {
    if (digit_at(decimal, decimal.point + i - 1) != '0') {
      fraction_written = i;
      break;
    }
  }

  const int whole_places = section.whole_places;
  // The sign leads the section's text; a section without digits shows none.
  if (write_sign && value < 0.0 && whole_places + section.fraction_places > 0) out.push_back('-');
  int whole_place = 0;
  int fraction_place = 0;
  // With more digits than places the first place takes the overflow; with fewer, the
  // first places stay empty.
  const int spare = whole_length - whole_places;
  int next_whole = 0;
  auto whole_digit = [&](int index) {
    return index < padding ? '0' : digit_at(decimal, index - padding);
  };
  for (const Token& token : section.tokens) {
    switch (token.kind) {
      case Tok::Literal:
        out += token.literal;
        break;
      case Tok::Percent:
        out.push_back('%');
        break;
      case Tok::DecimalPoint:
        // Without whole placeholders the whole digits stand before the point: a
        // number is never cut.
        if (whole_places == 0) {
          while (next_whole < whole_length) {
            const char digit = whole_digit(next_whole++);
            out.push_back(digit);
            const int left = whole_length - next_whole;
            if (section.grouping && left > 0 && left % 3 == 0) out.push_back(',');
          }
        }
        out.push_back('.');
        break;
      case Tok::Exponent:
        append_exponent(out, token, exponent, section.exponent_forced);
        break;
      case Tok::DigitZero:
      case Tok::DigitHash:
        if (token.place == Place::Exponent) break;
        if (token.place == Place::Fraction) {
          if (fraction_place < fraction_written)
            out.push_back(digit_at(decimal, decimal.point + fraction_place));
          ++fraction_place;
          break;
        }
        {
          const int place = whole_place++;
          int take = 0;
          if (spare >= 0)
            take = place == 0 ? spare + 1 : 1;
          else if (place >= -spare)
            take = 1;
          for (int k = 0; k < take; ++k) {
            out.push_back(whole_digit(next_whole++));
            const int left = whole_length - next_whole;
            if (section.grouping && left > 0 && left % 3 == 0) out.push_back(',');
          }
        }
        break;
      default:
        break;
    }
  }
}

// --- Numbers: the fixed-point specialisation ---------------------------------------
//
// The export classes write numbers by the million through sections of digit
// placeholders alone ("000000000", "0000", "###0.00", "#####.00"). For those, the
// general renderer's work (the value as 15 digits of text, rounding on the digits, the
// walk over the tokens) comes down to one multiplication and a whole number written
// out, which this section does.
//
// Where it applies. The section, decided once as the pattern is parsed
// (fixed_point_applies): digit placeholders, at least one of them before the point,
// and at most a point; nothing else (no literal text, grouping, thousands scaling,
// percent or exponent); at most four places after the point and 24 forced before it.
// The value, decided as it is written (fixed_point_whole): a magnitude below 10^12,
// which scaled to the places is not within the margin of a tie (a whole number and a
// half). Everything else (infinities, NaN, 1e15, 2.675 through "0.00", 0.125 through
// "0.00") is written by the general renderer.
//
// Why the digits are the same. The general renderer takes the value to 15 significant
// digits and rounds those half away from zero at the places. Let x be the exact value
// times 10^places: the 15 digits times 10^places are within 5e-15 x of x (half a unit
// in the 15th digit), the double product `scaled` within 2^-53 x, so the two lie
// within 1e-13 `scaled` of each other. Rounding to a whole number changes only at a
// tie; with `scaled` farther than that from every tie, both lie between the same two
// ties and round to the same whole number. Below 10^16 (10^12 x 10^4) the whole part
// of `scaled` is exact in a 64-bit integer and its fraction exact in the double. The
// layout is the general renderer's for these tokens: the sign, the whole digits padded
// with zeros to the forced places (all of them when there are more digits than
// places), the point, then the forced fraction digits and the optional ones up to the
// last that is not zero.

constexpr double kPowersOfTen[] = {1.0, 10.0, 100.0, 1000.0, 10000.0};
constexpr int kFixedPointMaxPlaces = static_cast<int>(std::size(kPowersOfTen)) - 1;
constexpr int kFixedPointMaxForced = 24;
constexpr double kFixedPointLimit = 1e12;

bool fixed_point_applies(const Section& section) {
  return section.whole_places > 0 && section.fraction_places <= kFixedPointMaxPlaces &&
         section.whole_forced <= kFixedPointMaxForced && !section.grouping && section.scale == 0 &&
         std::all_of(section.tokens.begin(), section.tokens.end(), [](const Token& t) {
           return t.kind == Tok::DigitZero || t.kind == Tok::DigitHash ||
                  t.kind == Tok::DecimalPoint;
         });
}

// `magnitude` x 10^places rounded half away from zero to a whole number, where that
// gives the general renderer's digits; false where the general renderer must decide.
bool fixed_point_whole(double magnitude, int places, std::uint64_t& number) {
  if (!(magnitude < kFixedPointLimit)) return false;
  const double scaled = magnitude * kPowersOfTen[places];
  const auto whole = static_cast<std::int64_t>(scaled);
  const double fraction = scaled - static_cast<double>(whole);
  if (std::fabs(fraction - 0.5) <= scaled * 1e-13) return false;
  number = static_cast<std::uint64_t>(whole) + (fraction > 0.5 ? 1 : 0);
  return true;
}

// Writes `value` with a fixed-point section; returns false, having written nothing,
// where the general renderer must decide.
inline bool render_fixed_point(std::string& out, const Section& section, double value,
                               bool write_sign) {
  const int places = section.fraction_places;
  std::uint64_t number = 0;
  if (!fixed_point_whole(std::fabs(value), places, number)) return false;
  // Laid out in a buffer: the fraction digits to the right of the point, taken off the
  // end of the number, then the whole digits leftwards from the point, and appended at
  // once. The places before the point start as zeros, so padding to the forced places
  // only moves where the text starts.
  char buffer[48];
  char* const point = buffer + 32;
  char* last = point;
  if (section.has_point) {
    *last++ = '.';
    for (int i = places - 1; i >= 0; --i) {
      last[i] = static_cast<char>('0' + number % 10);
      number /= 10;
    }
    int written = places;
    while (written > section.fraction_forced && last[written - 1] == '0') --written;
    last += written;
  }
  std::memset(point - kFixedPointMaxForced, '0', kFixedPointMaxForced);
  char* const first = std::min(digits_leftwards(point, number), point - section.whole_forced);
  if (write_sign && value < 0.0) out.push_back('-');
  out.append(first, static_cast<std::size_t>(last - first));
  return true;
}

// --- Numbers: choosing the section and the route -----------------------------------

// The section a number is written with. The negative section shows the magnitude
// without a sign; the zero section is chosen by the value before rounding. An empty
// section leaves the value to the first one.
struct NumberSection {
  const Section& section;
  double value;
  bool write_sign;
};

NumberSection number_section(const std::vector<Section>& sections, double value) {
  if (value < 0.0 && sections.size() >= 2 && !sections[1].empty)
    return {sections[1], -value, false};
  if (value == 0.0 && sections.size() >= 3 && !sections[2].empty) return {sections[2], 0.0, false};
  return {sections[0], value, true};
}

// The one place a number's route is chosen: the fixed-point specialisation where it
// applies, the general renderer otherwise.
inline void render_number(std::string& out, const Section& section, double value, bool write_sign) {
  if (section.fixed_point && render_fixed_point(out, section, value, write_sign)) return;
  render_number_generally(out, section, value, write_sign);
}

// --- Dates -------------------------------------------------------------------------

constexpr std::array<const char*, 12> kMonthNames = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<const char*, 7> kDayNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                  "Thursday", "Friday", "Saturday"};

void render_date(std::string& out, const Section& section, Date date) {
  const CivilDate civil = date.civil();
  const int seconds = date.seconds_of_day();
  const int hour = seconds / 3600, minute = seconds / 60 % 60, second = seconds % 60;
  // The day number counts towards zero, as the calendar day does.
  const long day_number = static_cast<long>(std::trunc(date.serial));
  // Day of week, 0 = Sunday; serial 0 (1899-12-30) was a Saturday.
  const int weekday = static_cast<int>(((day_number + 6) % 7 + 7) % 7);
  const long january_first = static_cast<long>(Date::from_civil(civil.year, 1, 1).serial);
  const int day_of_year = static_cast<int>(day_number - january_first) + 1;
  const int january_weekday = static_cast<int>(((january_first + 6) % 7 + 7) % 7);
  for (const Token& token : section.tokens) {
    switch (token.kind) {
      case Tok::Literal:
        out += token.literal;
        break;
      case Tok::DateSeparator:
        out.push_back('/');
        break;
      case Tok::TimeSeparator:
        out.push_back(':');
        break;
      case Tok::Day:
        if (token.width <= 2)
          append_number(out, token.width, civil.day);
        else if (token.width == 3)
          out.append(kDayNames[static_cast<std::size_t>(weekday)], 3);
        else
          out += kDayNames[static_cast<std::size_t>(weekday)];
        break;
      case Tok::Month:
        if (token.width <= 2)
          append_number(out, token.width, civil.month);
        else if (token.width == 3)
          out.append(kMonthNames[static_cast<std::size_t>(civil.month - 1)], 3);
        else
          out += kMonthNames[static_cast<std::size_t>(civil.month - 1)];
        break;
      case Tok::DayOfYear:
        append_number(out, 1, day_of_year);
        break;
      case Tok::Year:
        if (token.width == 2)
          append_number(out, 2, civil.year % 100);
        else
          append_number(out, 4, civil.year);
        break;
      case Tok::Hour: {
        int shown = hour;
        if (section.twelve_hour) shown = hour % 12 == 0 ? 12 : hour % 12;
        append_number(out, token.width, shown);
        break;
      }
      case Tok::Minute:
        append_number(out, token.width, minute);
        break;
      case Tok::Second:
        append_number(out, token.width, second);
        break;
      case Tok::Weekday:
        append_number(out, 1, weekday + 1);
        break;
      case Tok::WeekOfYear:
        // Weeks start on Sunday; the week of 1 January is the first.
        append_number(out, 1, (day_of_year - 1 + january_weekday) / 7 + 1);
        break;
      case Tok::Quarter:
        append_number(out, 1, (civil.month - 1) / 3 + 1);
        break;
      case Tok::AmPm: {
        const bool am = hour < 12;
        const std::string& marker = token.literal;
        if (marker.size() == 3)
          out.push_back(am ? marker[0] : marker[2]);
        else
          out += am ? marker.substr(0, 2) : marker.substr(3, 2);
        break;
      }
      case Tok::LocaleAmPm:
        out += hour < 12 ? "AM" : "PM";
        break;
      case Tok::GeneralDate:
        out += general_date_text(date);
        break;
      default:
        break;
    }
  }
}

// --- Text --------------------------------------------------------------------------

void render_text(std::string& out, const Section& section, std::string_view original) {
  std::string text(original);
  if (section.case_mode == '<') text = to_lower_ascii(text);
  if (section.case_mode == '>') text = to_upper_ascii(text);
  const int places = section.text_places;
  // Places count letters: a place shows one whole character.
  const int length = static_cast<int>(text_length(text));
  int place = 0;
  std::size_t next = 0;
  const auto letter_bytes = [&](std::size_t at) {
    return static_cast<unsigned char>(text[at]) < 0x80 ? std::size_t{1}
                                                       : decode_utf8(text, at).bytes;
  };
  for (const Token& token : section.tokens) {
    if (token.kind == Tok::Literal) {
      out += token.literal;
      continue;
    }
    // Which characters this place shows: with at least as many characters as places,
    // one each from the left (the rest follows the whole mask); with fewer, the places
    // are filled from the right, or from the left when "!" asked for it.
    int take = 0;
    if (length >= places)
      take = 1;
    else if (section.left_to_right)
      take = place < length ? 1 : 0;
    else
      take = place >= places - length ? 1 : 0;
    if (take > 0) {
      const std::size_t bytes = letter_bytes(next);
      out.append(text, next, bytes);
      next += bytes;
    } else if (token.kind == Tok::CharOrBlank) {
      out.push_back(' ');
    }
    ++place;
  }
  if (next < text.size()) out.append(text, next);
}

// --- Named formats -----------------------------------------------------------------

struct NamedFormat {
  std::string_view name;
  Kind kind;
  std::string_view pattern;  // the pattern it stands for, or the choice words
};

constexpr std::array<NamedFormat, 17> kNamedFormats = {{
    {"General Number", Kind::General, ""},
    {"Currency", Kind::Number, "$#,##0.00;($#,##0.00)"},
    {"Fixed", Kind::Number, "0.00"},
    {"Standard", Kind::Number, "#,##0.00"},
    {"Percent", Kind::Number, "0.00%"},
    {"Scientific", Kind::Number, "0.00E+00"},
    {"Yes/No", Kind::Choice, "Yes/No"},
    {"True/False", Kind::Choice, "True/False"},
    {"On/Off", Kind::Choice, "On/Off"},
    {"General Date", Kind::GeneralDate, ""},
    {"Long Date", Kind::Date, "dddd, mmmm d, yyyy"},
    {"Medium Date", Kind::Date, "dd-mmm-yy"},
    {"Short Date", Kind::Date, "m/d/yyyy"},
    {"Long Time", Kind::Date, "h:mm:ss AM/PM"},
    {"Medium Time", Kind::Date, "hh:mm AM/PM"},
    {"Short Time", Kind::Date, "hh:mm"},
    {"", Kind::General, ""},
}};

}  // namespace

struct FormatPattern::Tokens {
  Kind kind = Kind::Number;
  std::vector<Section> sections;
  std::string choice_true, choice_false;  // Kind::Choice
};

FormatPattern::FormatPattern(std::string_view pattern)
    : pattern_(pattern), tokens_(std::make_unique<Tokens>()) {
  std::string_view effective = pattern;
  std::optional<Kind> named;
  for (const NamedFormat& format : kNamedFormats) {
    if (!iequals(pattern, format.name)) continue;
    named = format.kind;
    effective = format.pattern;
    break;
  }
  if (named == Kind::General || named == Kind::GeneralDate) {
    tokens_->kind = *named;
    return;
  }
  if (named == Kind::Choice) {
    tokens_->kind = Kind::Choice;
    const std::size_t slash = effective.find('/');
    tokens_->choice_true = std::string(effective.substr(0, slash));
    tokens_->choice_false = std::string(effective.substr(slash + 1));
    return;
  }
  tokens_->kind = named ? *named : classify(effective);
  const std::vector<std::string_view> sections = split_sections(effective);
  if (sections.size() > 4) refuse();
  for (std::string_view text : sections) {
    switch (tokens_->kind) {
      case Kind::Date:
        tokens_->sections.push_back(parse_date_section(text));
        break;
      case Kind::Text:
        tokens_->sections.push_back(parse_text_section(text));
        break;
      default:
        tokens_->sections.push_back(parse_number_section(text));
        break;
    }
  }
}

FormatPattern::~FormatPattern() = default;
FormatPattern::FormatPattern(FormatPattern&&) noexcept = default;
FormatPattern& FormatPattern::operator=(FormatPattern&&) noexcept = default;

std::string FormatPattern::operator()(const Variant& value) const {
  std::string out;
  append_to(out, value);
  return out;
}

void FormatPattern::append_to(std::string& out, double value) const {
  if (tokens_->kind == Kind::Number) {
    const NumberSection chosen = number_section(tokens_->sections, value);
    render_number(out, chosen.section, chosen.value, chosen.write_sign);
    return;
  }
  append_not_number(out, value);
}

// Kept out of line, so that the numbers, which the classes format by the million, do
// not pay for the set-up of the other kinds.
[[gnu::noinline]] void FormatPattern::append_not_number(std::string& out, double value) const {
  const auto& sections = tokens_->sections;
  switch (tokens_->kind) {
    case Kind::Number:  // written by append_to
      return;
    case Kind::General:
      out += general_number_text(value);
      return;
    case Kind::Choice:
      out += value != 0.0 ? tokens_->choice_true : tokens_->choice_false;
      return;
    case Kind::Text:
      render_text(out, sections[0], general_number_text(value));
      return;
    case Kind::Date:
    case Kind::GeneralDate: {
      // Converted as every date is: outside the automation date range it raises 6.
      const Date date = to_date(Variant(value));
      if (tokens_->kind == Kind::GeneralDate)
        out += general_date_text(date);
      else
        render_date(out, sections[0], date);
      return;
    }
  }
}

void FormatPattern::append_to(std::string& out, const Variant& value) const {
  const Kind kind = tokens_->kind;
  switch (value.type()) {
    case Variant::Type::Null:
      // A number pattern's fourth section is written for Null.
      if (kind == Kind::Number && tokens_->sections.size() >= 4 && !tokens_->sections[3].empty)
        render_number(out, tokens_->sections[3], 0.0, false);
      return;
    case Variant::Type::Object:
      raise_runtime(rt::kTypeMismatch);
    default:
      break;
  }
  switch (kind) {
    case Kind::General:
      out += to_text(value);
      return;
    case Kind::Text: {
      const auto& sections = tokens_->sections;
      const std::string text = to_text(value);
      // A second section is written for the empty text.
      if (text.empty() && sections.size() >= 2 && !sections[1].empty)
        render_text(out, sections[1], text);
      else
        render_text(out, sections[0], text);
      return;
    }
    case Kind::Date:
    case Kind::GeneralDate: {
      if (value.is_string()) {
        if (auto date = parse_date_text(value.as_string())) {
          if (kind == Kind::GeneralDate)
            out += general_date_text(*date);
          else
            render_date(out, tokens_->sections[0], *date);
          return;
        }
        const NumericParse number = parse_numeric(value.as_string());
        if (number.status != NumericParse::Status::Ok) {
          out += value.as_string();  // not a date: shown as it stands
          return;
        }
        append_to(out, number.value);
        return;
      }
      append_to(out, to_date(value).serial);
      return;
    }
    case Kind::Number:
    case Kind::Choice: {
      if (value.is_string()) {
        const NumericParse number = parse_numeric(value.as_string());
        if (number.status != NumericParse::Status::Ok) {
          out += value.as_string();  // not numeric: shown as it stands
          return;
        }
        append_to(out, number.value);
        return;
      }
      if (value.is_empty()) {
        append_to(out, 0.0);
        return;
      }
      append_to(out, to_double(value));
      return;
    }
  }
}

std::string FormatPattern::without_fast_path(double value) const {
  std::string out;
  if (tokens_->kind != Kind::Number) {
    append_to(out, value);
    return out;
  }
  const NumberSection chosen = number_section(tokens_->sections, value);
  render_number_generally(out, chosen.section, chosen.value, chosen.write_sign);
  return out;
}

std::string format(const Variant& value, std::string_view pattern) {
  return FormatPattern(pattern)(value);
}

}  // namespace zorvat
