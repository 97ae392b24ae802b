// The Format engine. A pattern is tokenized once (FormatPattern's constructor) into
// sections of tokens; rendering walks the tokens of the section that applies.
#include "zorvat/format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "zorvat/error.h"
#include "zorvat/text.h"

namespace zorvat {
namespace {

enum class Kind { Number, Date, Text };

enum class Tok {
  Literal,
  // number
  DigitZero,
  DigitHash,
  DecimalPoint,
  Percent,
  // date (the count of letters is in `width`)
  Day,
  Month,
  Year,
  Hour,
  Minute,
  Second,
  Weekday,
  Quarter,
  AmPm,
  DateSeparator,
  TimeSeparator,
  // text
  CharOrNothing,  // &
  CharOrBlank,    // @
};

struct Token {
  Tok kind = Tok::Literal;
  int width = 0;          // date letters, e.g. 2 for "mm"
  std::string literal;    // Literal text; AmPm: the written marker ("AM/PM")
  bool fraction = false;  // digit placeholder after the decimal point
};

struct Section {
  std::vector<Token> tokens;
  // Number sections: placeholders before and after the point, how many of them are
  // forced (the span from the first "0" before the point, up to the last "0" after).
  int whole_places = 0;
  int whole_forced = 0;
  int fraction_places = 0;
  int fraction_forced = 0;
  bool thousands = false;
  bool percent = false;
  // Only digit placeholders, at least one before the point, and at most a point among
  // them ("000000000", "###0.00", "0.0"): rendered by the plain path.
  bool plain = false;
  bool has_point = false;
  // Text sections.
  bool left_to_right = false;
  int case_mode = 0;  // '<' lower, '>' upper
  int text_places = 0;
};

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

Kind classify(std::string_view pattern) {
  bool text = false, date = false;
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
    if (c == '0' || c == '#') return Kind::Number;
    if (c == '@' || c == '&') text = true;
    const char l = to_lower_ascii(c);
    if (l == 'd' || l == 'm' || l == 'y' || l == 'h' || l == 'n' || l == 's' || l == 'w' ||
        l == 'q')
      date = true;
  }
  if (text) return Kind::Text;
  if (date) return Kind::Date;
  return Kind::Number;
}

void add_literal(std::vector<Token>& tokens, std::string_view text) {
  if (text.empty()) return;
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
bool take_quoted(std::string_view pattern, std::size_t& i, std::vector<Token>& tokens) {
  if (pattern[i] == '"') {
    const std::size_t close = pattern.find('"', i + 1);
    const std::size_t end = close == std::string_view::npos ? pattern.size() : close;
    add_literal(tokens, pattern.substr(i + 1, end - i - 1));
    i = end;
    return true;
  }
  if (pattern[i] == '\\') {
    if (i + 1 < pattern.size()) add_literal(tokens, pattern.substr(i + 1, 1));
    ++i;
    return true;
  }
  return false;
}

Section parse_number_section(std::string_view pattern) {
  Section section;
  bool after_point = false;
  int first_forced_whole = -1;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (take_quoted(pattern, i, section.tokens)) continue;
    const char c = pattern[i];
    Token token;
    if (c == '0' || c == '#') {
      token.kind = c == '0' ? Tok::DigitZero : Tok::DigitHash;
      token.fraction = after_point;
      if (after_point) {
        ++section.fraction_places;
        if (c == '0') section.fraction_forced = section.fraction_places;
      } else {
        if (c == '0' && first_forced_whole < 0) first_forced_whole = section.whole_places;
        ++section.whole_places;
      }
      section.tokens.push_back(std::move(token));
    } else if (c == '.' && !after_point) {
      after_point = true;
      token.kind = Tok::DecimalPoint;
      section.tokens.push_back(std::move(token));
    } else if (c == ',' && !after_point) {
      section.thousands = true;  // grouping is a property of the whole number
    } else if (c == '%') {
      section.percent = true;
      token.kind = Tok::Percent;
      section.tokens.push_back(std::move(token));
    } else {
      add_literal(section.tokens, pattern.substr(i, 1));
    }
  }
  if (first_forced_whole >= 0) section.whole_forced = section.whole_places - first_forced_whole;
  section.has_point = after_point;
  section.plain =
      section.whole_places > 0 && !section.thousands && !section.percent &&
      std::all_of(section.tokens.begin(), section.tokens.end(), [](const Token& t) {
        return t.kind == Tok::DigitZero || t.kind == Tok::DigitHash || t.kind == Tok::DecimalPoint;
      });
  return section;
}

Section parse_date_section(std::string_view pattern) {
  Section section;
  bool after_hour = false;  // "m" right after an hour means minutes
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (take_quoted(pattern, i, section.tokens)) continue;
    const char c = pattern[i];
    const char l = to_lower_ascii(c);
    if (pattern.substr(i, 5) == "AM/PM" || pattern.substr(i, 5) == "am/pm" ||
        pattern.substr(i, 3) == "A/P" || pattern.substr(i, 3) == "a/p") {
      Token token;
      token.kind = Tok::AmPm;
      token.literal = std::string(pattern.substr(i, pattern[i + 1] == '/' ? 3 : 5));
      i += token.literal.size() - 1;
      section.tokens.push_back(std::move(token));
      continue;
    }
    if (l == 'd' || l == 'm' || l == 'y' || l == 'h' || l == 'n' || l == 's' || l == 'w' ||
        l == 'q') {
      std::size_t run = 1;
      while (i + run < pattern.size() && to_lower_ascii(pattern[i + run]) == l) ++run;
      Token token;
      token.width = static_cast<int>(run);
      switch (l) {
        case 'd':
          token.kind = Tok::Day;
          break;
        case 'm':
          token.kind = after_hour && run <= 2 ? Tok::Minute : Tok::Month;
          break;
        case 'y':
          token.kind = Tok::Year;
          break;
        case 'h':
          token.kind = Tok::Hour;
          break;
        case 'n':
          token.kind = Tok::Minute;
          break;
        case 's':
          token.kind = Tok::Second;
          break;
        case 'w':
          token.kind = Tok::Weekday;
          break;
        default:
          token.kind = Tok::Quarter;
          break;
      }
      after_hour = token.kind == Tok::Hour;
      section.tokens.push_back(std::move(token));
      i += run - 1;
      continue;
    }
    Token token;
    if (c == '/') {
      token.kind = Tok::DateSeparator;
      section.tokens.push_back(std::move(token));
    } else if (c == ':') {
      token.kind = Tok::TimeSeparator;
      section.tokens.push_back(std::move(token));
    } else {
      add_literal(section.tokens, pattern.substr(i, 1));
    }
  }
  return section;
}

Section parse_text_section(std::string_view pattern) {
  Section section;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (take_quoted(pattern, i, section.tokens)) continue;
    const char c = pattern[i];
    if (c == '&' || c == '@') {
      Token token;
      token.kind = c == '&' ? Tok::CharOrNothing : Tok::CharOrBlank;
      section.tokens.push_back(std::move(token));
      ++section.text_places;
    } else if (c == '!') {
      section.left_to_right = true;
    } else if (c == '<' || c == '>') {
      section.case_mode = c;
    } else {
      add_literal(section.tokens, pattern.substr(i, 1));
    }
  }
  return section;
}

// A non-negative number as decimal digits: value = 0.d1d2d3... x 10^point, with at
// most 15 significant digits (the precision the classic conversions keep).
struct Decimal {
  std::array<char, 24> digits{};
  int count = 0;
  int point = 0;
};

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
  while (decimal.count > 0 && decimal.digits[static_cast<std::size_t>(decimal.count - 1)] == '0')
    --decimal.count;
  return decimal;
}

// The common case without the general decimal conversion: when the value scaled to
// the wanted decimal places is well clear of a tie, taking it to 15 significant
// digits first cannot move it across the tie, so rounding the scaled double gives
// the same digits. Returns false when the slow, exact path must decide.
// `magnitude` x 10^places rounded to a whole number, where that is safe.
bool scaled_and_rounded(double magnitude, int places, std::uint64_t& number) {
  static constexpr double kScale[] = {1.0, 10.0, 100.0, 1000.0, 10000.0};
  if (places < 0 || places > 4 || !(magnitude < 1e12)) return false;
  const double scaled = magnitude * kScale[places];
  const double whole = std::floor(scaled);
  const double fraction = scaled - whole;
  // Room for the 15-digit rounding and the error of the multiplication.
  const double margin = scaled * 1e-13 + 1e-9;
  if (std::fabs(fraction - 0.5) <= margin) return false;
  number = static_cast<std::uint64_t>(whole) + (fraction > 0.5 ? 1 : 0);
  return true;
}

bool to_rounded_decimal_fast(double magnitude, int places, Decimal& decimal) {
  std::uint64_t number = 0;
  if (!scaled_and_rounded(magnitude, places, number)) return false;
  char buffer[24];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
  const int length = static_cast<int>(result.ptr - buffer);
  if (number == 0) {
    decimal.count = 0;
    decimal.point = 0;
    return true;
  }
  decimal.count = length;
  for (int i = 0; i < length; ++i) decimal.digits[static_cast<std::size_t>(i)] = buffer[i];
  decimal.point = length - places;
  while (decimal.count > 0 && decimal.digits[static_cast<std::size_t>(decimal.count - 1)] == '0')
    --decimal.count;
  return true;
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
  while (decimal.count > 0 && decimal.digits[static_cast<std::size_t>(decimal.count - 1)] == '0')
    --decimal.count;
}

char digit_at(const Decimal& decimal, int index) {
  return index >= 0 && index < decimal.count ? decimal.digits[static_cast<std::size_t>(index)]
                                             : '0';
}

// The plain sections ("000000000", "###0.00") without the general machinery: the value
// scaled to its decimal places and rounded as to_rounded_decimal_fast does, then
// written as the general path would write it: the sign, the whole digits padded with
// zeros to the forced places, the point, and the forced fraction digits with the
// optional ones up to the last that is not zero. Returns false, having written
// nothing, where the general path must decide (a value near a tie, or too large).
bool render_plain_number(std::string& out, const Section& section, double value, bool write_sign) {
  static constexpr std::uint64_t kScale[] = {1, 10, 100, 1000, 10000};
  const int places = section.fraction_places;
  std::uint64_t scaled = 0;
  if (!section.plain || !scaled_and_rounded(std::fabs(value), places, scaled)) return false;
  const std::uint64_t whole = scaled / kScale[places];
  std::uint64_t fraction = scaled % kScale[places];

  // Laid out in a buffer, the whole digits leftwards from the point and the fraction
  // to the right of it, then appended at once. (Forced places beyond the buffer are
  // the general path's.)
  if (section.whole_forced > 24) return false;
  char buffer[48];
  char* const point = buffer + 32;
  char* first = point;
  for (std::uint64_t rest = whole; rest != 0; rest /= 10)
    *--first = static_cast<char>('0' + rest % 10);
  while (point - first < section.whole_forced) *--first = '0';
  if (value < 0.0 && write_sign) *--first = '-';
  char* last = point;
  if (section.has_point) {
    *last++ = '.';
    for (int i = places - 1; i >= 0; --i) {
      last[i] = static_cast<char>('0' + fraction % 10);
      fraction /= 10;
    }
    int written = places;
    while (written > section.fraction_forced && last[written - 1] == '0') --written;
    last += written;
  }
  out.append(first, last);
  return true;
}

void render_number(std::string& out, const Section& section, double value, bool write_sign) {
  if (render_plain_number(out, section, value, write_sign)) return;
  const bool negative = value < 0.0;
  Decimal decimal;
  if (section.percent ||
      !to_rounded_decimal_fast(std::fabs(value), section.fraction_places, decimal)) {
    decimal = to_decimal(std::fabs(value));
    if (section.percent && decimal.count > 0) decimal.point += 2;
    round_decimal(decimal, section.fraction_places);
  }

  // Whole digits, without leading zeros, then zero-padded to the forced places.
  std::string whole;
  for (int i = 0; i < decimal.point; ++i) whole.push_back(digit_at(decimal, i));
  if (static_cast<int>(whole.size()) < section.whole_forced)
    whole.insert(0, static_cast<std::size_t>(section.whole_forced) - whole.size(), '0');
  if (section.thousands) {
    for (int i = static_cast<int>(whole.size()) - 3; i > 0; i -= 3)
      whole.insert(static_cast<std::size_t>(i), 1, ',');
  }
  // Fraction digits: every forced place, and the optional ones up to the last
  // significant digit.
  int fraction_written = section.fraction_forced;
  for (int i = section.fraction_places; i > fraction_written; --i) {
    if (digit_at(decimal, decimal.point + i - 1) != '0') {
      fraction_written = i;
      break;
    }
  }

  bool sign_pending = negative && write_sign;
  int whole_place = 0;
  int fraction_place = 0;
  const int whole_places = section.whole_places;
  // With more digits than places the first place takes the overflow; with fewer, the
  // first places stay empty.
  const int spare = static_cast<int>(whole.size()) - whole_places;
  std::size_t next_whole = 0;
  for (const Token& token : section.tokens) {
    switch (token.kind) {
      case Tok::Literal:
        out += token.literal;
        break;
      case Tok::Percent:
        out.push_back('%');
        break;
      case Tok::DecimalPoint:
        if (sign_pending) {
          out.push_back('-');
          sign_pending = false;
        }
        out.push_back('.');
        break;
      case Tok::DigitZero:
      case Tok::DigitHash:
        if (token.fraction) {
          if (fraction_place < fraction_written)
            out.push_back(digit_at(decimal, decimal.point + fraction_place));
          ++fraction_place;
          break;
        }
        if (sign_pending) {
          out.push_back('-');
          sign_pending = false;
        }
        {
          const int place = whole_place++;
          int take = 0;
          if (spare >= 0)
            take = place == 0 ? spare + 1 : 1;
          else if (place >= -spare)
            take = 1;
          out.append(whole, next_whole, static_cast<std::size_t>(take));
          next_whole += static_cast<std::size_t>(take);
        }
        break;
      default:
        break;
    }
  }
}

// A date or time part: its digits, zero-padded to `width`.
void append_number(std::string& out, int width, int value) {
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  const bool negative = value < 0;
  if (negative) out.push_back('-');
  char* first = digits + (negative ? 1 : 0);
  for (auto length = end - first; length < width - (negative ? 1 : 0); ++length) out.push_back('0');
  out.append(first, end);
}

constexpr std::array<const char*, 12> kMonthNames = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<const char*, 7> kDayNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                  "Thursday", "Friday", "Saturday"};

void render_date(std::string& out, const Section& section, Date date) {
  const CivilDate civil = date.civil();
  const int seconds = date.seconds_of_day();
  const int hour = seconds / 3600, minute = seconds / 60 % 60, second = seconds % 60;
  bool twelve_hour = false;
  for (const Token& token : section.tokens) twelve_hour |= token.kind == Tok::AmPm;
  // Day of week, 0 = Sunday; serial 0 (1899-12-30) was a Saturday.
  const long serial_day = static_cast<long>(std::floor(date.serial));
  const int weekday = static_cast<int>(((serial_day + 6) % 7 + 7) % 7);
  const int day_of_year =
      static_cast<int>(date.serial - Date::from_civil(civil.year, 1, 1).serial) + 1;
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
      case Tok::Year:
        if (token.width == 1)
          append_number(out, 1, day_of_year);
        else if (token.width <= 3)
          append_number(out, 2, civil.year % 100);
        else
          append_number(out, 4, civil.year);
        break;
      case Tok::Hour: {
        int shown = hour;
        if (twelve_hour) shown = hour % 12 == 0 ? 12 : hour % 12;
        append_number(out, token.width >= 2 ? 2 : 1, shown);
        break;
      }
      case Tok::Minute:
        append_number(out, token.width >= 2 ? 2 : 1, minute);
        break;
      case Tok::Second:
        append_number(out, token.width >= 2 ? 2 : 1, second);
        break;
      case Tok::Weekday:
        append_number(out, 1, weekday + 1);
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
      default:
        break;
    }
  }
}

void render_text(std::string& out, const Section& section, std::string text) {
  const int places = section.text_places;
  const int length = static_cast<int>(text.size());
  if (section.case_mode == '<') text = to_lower_ascii(text);
  if (section.case_mode == '>') text = to_upper_ascii(text);
  int place = 0;
  std::size_t next = 0;
  for (const Token& token : section.tokens) {
    if (token.kind == Tok::Literal) {
      out += token.literal;
      continue;
    }
    // Which characters this place shows: filled from the right unless "!" asked for
    // left to right; surplus characters go with the first place.
    int take = 0;
    if (length >= places) {
      take = place == 0 ? length - places + 1 : 1;
    } else if (section.left_to_right) {
      take = place < length ? 1 : 0;
    } else {
      take = place >= places - length ? 1 : 0;
    }
    if (take > 0) {
      out.append(text, next, static_cast<std::size_t>(take));
      next += static_cast<std::size_t>(take);
    } else if (token.kind == Tok::CharOrBlank) {
      out.push_back(' ');
    }
    ++place;
  }
}

}  // namespace

struct FormatPattern::Tokens {
  Kind kind = Kind::Number;
  std::vector<Section> sections;
};

FormatPattern::FormatPattern(std::string_view pattern)
    : pattern_(pattern), tokens_(std::make_unique<Tokens>()) {
  tokens_->kind = classify(pattern);
  for (std::string_view text : split_sections(pattern)) {
    switch (tokens_->kind) {
      case Kind::Number:
        tokens_->sections.push_back(parse_number_section(text));
        break;
      case Kind::Date:
        tokens_->sections.push_back(parse_date_section(text));
        break;
      case Kind::Text:
        tokens_->sections.push_back(parse_text_section(text));
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
  const auto& sections = tokens_->sections;
  if (tokens_->kind == Kind::Text) {
    render_text(out, sections[0], general_number_text(value));
    return;
  }
  if (tokens_->kind == Kind::Date) {
    if (!(value >= -657434.0 && value < 2958466.0)) raise_runtime(rt::kOverflow);
    render_date(out, sections[0], Date{value});
    return;
  }
  if (!std::isfinite(value)) raise_runtime(rt::kOverflow);
  // The negative section shows the magnitude without a sign; the zero section is
  // chosen by the value before rounding.
  if (value < 0.0 && sections.size() >= 2 && !sections[1].tokens.empty()) {
    render_number(out, sections[1], -value, false);
  } else if (value == 0.0 && sections.size() >= 3 && !sections[2].tokens.empty()) {
    render_number(out, sections[2], 0.0, false);
  } else {
    render_number(out, sections[0], value, true);
  }
}

void FormatPattern::append_to(std::string& out, const Variant& value) const {
  switch (value.type()) {
    case Variant::Type::Null:
      return;
    case Variant::Type::Object:
      raise_runtime(rt::kTypeMismatch);
    default:
      break;
  }
  switch (tokens_->kind) {
    case Kind::Text:
      render_text(out, tokens_->sections[0], to_text(value));
      return;
    case Kind::Date: {
      if (value.is_string()) {
        if (auto date = parse_date_text(value.as_string())) {
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
    case Kind::Number: {
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

std::string format(const Variant& value, std::string_view pattern) {
  return FormatPattern(pattern)(value);
}

}  // namespace zorvat
