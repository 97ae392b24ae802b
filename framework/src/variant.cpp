#include "zorvat/variant.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/text.h"

namespace zorvat {
namespace {

bool is_blank(char c) {
  return c == ' ' || c == '\t';
}
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view trim_blanks(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

// &H / &O whole numbers: up to 32 bits, read as a signed 32-bit value the way the
// language reads such literals (&HFFFFFFFF is -1, &H8000 is 32768).
NumericParse parse_radix(std::string_view digits, int radix) {
  if (digits.empty()) return {};
  double value = 0.0;
  for (char c : digits) {
    int digit = -1;
    if (is_digit(c))
      digit = c - '0';
    else if (radix == 16 && c >= 'a' && c <= 'f')
      digit = c - 'a' + 10;
    else if (radix == 16 && c >= 'A' && c <= 'F')
      digit = c - 'A' + 10;
    if (digit < 0 || digit >= radix) return {};
    value = value * radix + digit;
    if (value > 4294967295.0) return {NumericParse::Status::Overflow, 0.0};
  }
  if (value > 2147483647.0) value -= 4294967296.0;
  return {NumericParse::Status::Ok, value};
}

[[noreturn]] void raise_null() {
  raise_runtime(rt::kInvalidUseOfNull);
}

}  // namespace

std::string_view type_name(Variant::Type type) {
  switch (type) {
    case Variant::Type::Empty:
      return "Empty";
    case Variant::Type::Null:
      return "Null";
    case Variant::Type::Boolean:
      return "Boolean";
    case Variant::Type::Long:
      return "Long";
    case Variant::Type::Double:
      return "Double";
    case Variant::Type::String:
      return "String";
    case Variant::Type::Date:
      return "Date";
    case Variant::Type::Object:
      return "Object";
  }
  return "Unknown";
}

NumericParse parse_numeric(std::string_view text) {
  // The common case first: plain digits, few enough to be exact in a double.
  if (!text.empty() && text.size() <= 15) {
    double whole = 0.0;
    std::size_t i = 0;
    for (; i < text.size() && is_digit(text[i]); ++i) whole = whole * 10.0 + (text[i] - '0');
    if (i == text.size()) return {NumericParse::Status::Ok, whole};
  }
  text = trim_blanks(text);
  if (text.size() > 2 && text[0] == '&') {
    if (text[1] == 'H' || text[1] == 'h') return parse_radix(text.substr(2), 16);
    if (text[1] == 'O' || text[1] == 'o') return parse_radix(text.substr(2), 8);
    return {};
  }
  // The decorations around the number (US English): one sign before or after it,
  // parentheses around it for a negative, one "$" on either side, blanks between
  // them. They are taken off first; the digits left are rebuilt without group
  // separators for the library parser.
  bool negative = false, has_sign = false, currency = false, parenthesised = false;
  auto take_decorations = [&](bool leading) {
    for (;;) {
      if (text.empty()) return;
      const char c = leading ? text.front() : text.back();
      if (is_blank(c)) {
      } else if ((c == '+' || c == '-') && !has_sign) {
        has_sign = true;
        negative = c == '-';
      } else if (c == '$' && !currency) {
        currency = true;
      } else if (leading && c == '(' && !parenthesised) {
        parenthesised = true;
      } else {
        return;
      }
      if (leading)
        text.remove_prefix(1);
      else
        text.remove_suffix(1);
    }
  };
  take_decorations(true);
  const bool opened = parenthesised;
  if (opened) {
    // The closing parenthesis, with what may stand between it and the number.
    std::size_t close = text.size();
    while (close > 0 && (is_blank(text[close - 1]) || text[close - 1] == '$')) --close;
    if (close == 0 || text[close - 1] != ')') return {};
    if (text.substr(close).find('$') != std::string_view::npos) {
      if (currency) return {};
      currency = true;
    }
    text = text.substr(0, close - 1);
    // Inside the parentheses: blanks, a sign and the currency sign again.
    parenthesised = false;
    take_decorations(true);
    parenthesised = true;
  }
  take_decorations(false);
  if (opened && parenthesised) negative = true;

  std::string plain;
  plain.reserve(text.size() + 1);
  std::size_t i = 0;
  int mantissa_digits = 0;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (is_digit(c)) {
      plain.push_back(c);
      ++mantissa_digits;
    } else if (c != ',' || mantissa_digits == 0) {
      break;
    }
  }
  if (i < text.size() && text[i] == '.') {
    plain.push_back('.');
    for (++i; i < text.size() && (is_digit(text[i]) || text[i] == ','); ++i) {
      if (text[i] == ',') continue;
      plain.push_back(text[i]);
      ++mantissa_digits;
    }
  }
  if (mantissa_digits == 0) return {};
  bool negative_exponent = false;
  // An amount of money has no exponent.
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E') && !currency) {
    plain.push_back('e');
    ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
      negative_exponent = text[i] == '-';
      plain.push_back(text[i]);
      ++i;
    }
    int exponent_digits = 0;
    for (; i < text.size() && is_digit(text[i]); ++i, ++exponent_digits) plain.push_back(text[i]);
    if (exponent_digits == 0) return {};
  }
  if (i != text.size()) return {};
  double value = 0.0;
  const auto [end, ec] = std::from_chars(plain.data(), plain.data() + plain.size(), value);
  if (ec == std::errc::result_out_of_range) {
    if (negative_exponent) return {NumericParse::Status::Ok, 0.0};
    return {NumericParse::Status::Overflow, 0.0};
  }
  if (ec != std::errc() || end != plain.data() + plain.size()) return {};
  return {NumericParse::Status::Ok, negative ? -value : value};
}

std::string general_number_text(double value) {
  if (value == 0.0) return "0";
  // Whole numbers of up to 15 digits (counters, minutes, codes) are their digits.
  if (std::fabs(value) < 1e15 && value == std::trunc(value)) {
    char digits[24];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, static_cast<std::int64_t>(value));
    return std::string(digits, end.ptr);
  }
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.15G", value);
  return buffer;
}

double round_half_even(double value) {
  return std::nearbyint(value);
}

std::int32_t double_to_long(double value) {
  const double rounded = round_half_even(value);
  if (!(rounded >= -2147483648.0 && rounded <= 2147483647.0)) raise_runtime(rt::kOverflow);
  return static_cast<std::int32_t>(rounded);
}

std::int16_t double_to_integer(double value) {
  const double rounded = round_half_even(value);
  if (!(rounded >= -32768.0 && rounded <= 32767.0)) raise_runtime(rt::kOverflow);
  return static_cast<std::int16_t>(rounded);
}

double to_double(const Variant& value) {
  switch (value.type()) {
    case Variant::Type::Empty:
      return 0.0;
    case Variant::Type::Null:
      raise_null();
    case Variant::Type::Boolean:
      return value.as_boolean() ? -1.0 : 0.0;
    case Variant::Type::Long:
      return value.as_long();
    case Variant::Type::Double:
      return value.as_double();
    case Variant::Type::Date:
      return value.as_date().serial;
    case Variant::Type::String: {
      const NumericParse parsed = parse_numeric(value.as_string());
      if (parsed.status == NumericParse::Status::Overflow) raise_runtime(rt::kOverflow);
      if (parsed.status != NumericParse::Status::Ok) raise_runtime(rt::kTypeMismatch);
      return parsed.value;
    }
    case Variant::Type::Object:
      break;
  }
  raise_runtime(rt::kTypeMismatch);
}

std::int32_t to_long(const Variant& value) {
  if (value.type() == Variant::Type::Long) return value.as_long();
  return double_to_long(to_double(value));
}

std::int16_t to_integer(const Variant& value) {
  return double_to_integer(to_double(value));
}

std::string to_text(const Variant& value) {
  switch (value.type()) {
    case Variant::Type::Empty:
      return {};
    case Variant::Type::Null:
      raise_null();
    case Variant::Type::Boolean:
      return value.as_boolean() ? "True" : "False";
    case Variant::Type::Long:
      return std::to_string(value.as_long());
    case Variant::Type::Double:
      return general_number_text(value.as_double());
    case Variant::Type::String:
      return value.as_string();
    case Variant::Type::Date:
      return general_date_text(value.as_date());
    case Variant::Type::Object:
      break;
  }
  raise_runtime(rt::kTypeMismatch);
}

std::string to_concat_text(const Variant& value) {
  return value.is_null() ? std::string() : to_text(value);
}

Date to_date(const Variant& value) {
  switch (value.type()) {
    case Variant::Type::Null:
      raise_null();
    case Variant::Type::Date:
      return value.as_date();
    case Variant::Type::String:
      if (auto date = parse_date_text(value.as_string())) return *date;
      raise_runtime(rt::kTypeMismatch);
    case Variant::Type::Object:
      raise_runtime(rt::kTypeMismatch);
    default: {
      const double serial = to_double(value);
      // The automation date range: years 100 to 9999.
      if (!in_date_range(serial)) raise_runtime(rt::kOverflow);
      return Date{serial};
    }
  }
}

bool to_boolean(const Variant& value) {
  switch (value.type()) {
    case Variant::Type::Null:
      raise_null();
    case Variant::Type::Boolean:
      return value.as_boolean();
    case Variant::Type::String: {
      const std::string_view text = trim_blanks(value.as_string());
      if (iequals(text, "True")) return true;
      if (iequals(text, "False")) return false;
      return to_double(value) != 0.0;
    }
    default:
      return to_double(value) != 0.0;
  }
}

bool is_numeric(const Variant& value) {
  switch (value.type()) {
    case Variant::Type::Empty:
    case Variant::Type::Boolean:
    case Variant::Type::Long:
    case Variant::Type::Double:
      return true;
    case Variant::Type::String:
      return parse_numeric(value.as_string()).status == NumericParse::Status::Ok;
    default:
      return false;
  }
}

}  // namespace zorvat
