// Variant: a value as the automation host hands it to a class.
//
// Time-card properties arrive as Variants whose subtype the host chooses (minutes as
// whole numbers or doubles, employee numbers as numbers or text). The classes convert
// on use with the classic conversion rules below, raising the classic run-time error
// when a value does not convert.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "zorvat/date.h"

namespace zorvat {

class AutomationObject;
using ObjectRef = std::shared_ptr<const AutomationObject>;

class Variant {
 public:
  enum class Type { Empty, Null, Boolean, Long, Double, String, Date, Object };

  Variant() = default;
  static Variant null() {
    Variant value;
    value.value_ = NullTag{};
    return value;
  }
  Variant(bool value) : value_(value) {}
  Variant(std::int32_t value) : value_(value) {}
  Variant(double value) : value_(value) {}
  Variant(std::string value) : value_(std::move(value)) {}
  Variant(std::string_view value) : value_(std::string(value)) {}
  Variant(const char* value) : value_(std::string(value)) {}
  Variant(Date value) : value_(value) {}
  Variant(ObjectRef value) : value_(std::move(value)) {}

  Type type() const { return static_cast<Type>(value_.index()); }
  bool is_empty() const { return type() == Type::Empty; }
  bool is_null() const { return type() == Type::Null; }
  bool is_string() const { return type() == Type::String; }
  bool is_object() const { return type() == Type::Object; }

  // Direct access to the held value; only valid for the matching type.
  bool as_boolean() const { return std::get<bool>(value_); }
  std::int32_t as_long() const { return std::get<std::int32_t>(value_); }
  double as_double() const { return std::get<double>(value_); }
  const std::string& as_string() const { return std::get<std::string>(value_); }
  Date as_date() const { return std::get<Date>(value_); }
  const ObjectRef& as_object() const { return std::get<ObjectRef>(value_); }

 private:
  struct NullTag {
    friend bool operator==(NullTag, NullTag) = default;
  };
  std::variant<std::monostate, NullTag, bool, std::int32_t, double, std::string, Date, ObjectRef>
      value_;
};

std::string_view type_name(Variant::Type type);

// --- Conversions (each raises the classic run-time error when the value does not
// convert: 13 Type mismatch, 6 Overflow, 94 Invalid use of Null) ----------------

// Converts to a double. Empty is 0, True is -1, text must be numeric, a date is its
// serial number.
double to_double(const Variant& value);
// Converts to a 32-bit signed integer, rounding half to even; 6 Overflow outside range.
std::int32_t to_long(const Variant& value);
// Converts to a 16-bit signed integer, rounding half to even; 6 Overflow outside range.
std::int16_t to_integer(const Variant& value);
// Converts to text: numbers in their shortest general form (up to 15 significant
// digits), True/False, dates as M/D/YYYY, Empty as "".
std::string to_text(const Variant& value);
// Text for concatenation with "&": as to_text, but Null gives "".
std::string to_concat_text(const Variant& value);
// Converts to a date: a date as it is, a number as a serial day, text as a date.
Date to_date(const Variant& value);
// Converts to a Boolean: numbers are True when not 0, text "True"/"False" or numeric.
bool to_boolean(const Variant& value);

// The classic numeric test: numbers, Empty and Booleans are numeric; text is numeric
// when it parses as a number; Null, dates and objects are not.
bool is_numeric(const Variant& value);

// Rounds half to even (banker's rounding), as the integer conversions do.
double round_half_even(double value);
// Converts a double to a 32-bit integer with half-to-even rounding; raises 6 Overflow
// outside the range.
std::int32_t double_to_long(double value);
std::int16_t double_to_integer(double value);

// Text to double as the classic string-to-number conversion reads it, the locale
// fixed to US English: blanks around the number, one sign before or after it,
// parentheses around it for a negative, one "$" on either side, digits with ","
// group separators, one "." decimal point, an exponent with E (not with "$"), or
// &H hex / &O octal whole numbers of 32 bits (&HFFFFFFFF is -1). Every coercion
// below reads text through it: Overflow when the number does not fit a double,
// NotNumeric for anything else.
struct NumericParse {
  enum class Status { Ok, NotNumeric, Overflow };
  Status status = Status::NotNumeric;
  double value = 0.0;
};
NumericParse parse_numeric(std::string_view text);

// The shortest general form of a double: up to 15 significant digits, exponent
// notation ("1E+15", "1.5E-05") below 1E-4 and from 1E15.
std::string general_number_text(double value);

}  // namespace zorvat
