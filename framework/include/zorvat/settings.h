// The settings string (SetupData): fields joined with "," and addressed by position
// from 0. There is no quoting and no escape, so a field never holds a comma.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zorvat {

class SettingsFields {
 public:
  SettingsFields() = default;
  // Splits at every ","; an empty string has no fields at all (upper bound -1),
  // while "," has two empty ones.
  explicit SettingsFields(std::string_view setup);

  std::size_t size() const { return fields_.size(); }
  // The upper bound of the split: the last position, -1 when there is no field.
  long upper_bound() const { return static_cast<long>(fields_.size()) - 1; }

  // The field at `position`; raises 9 "Subscript out of range" past the end.
  const std::string& at(std::size_t position) const;
  std::string& at(std::size_t position);

  // The fields joined with "," again: the normalised settings string.
  std::string join() const;

  const std::vector<std::string>& fields() const { return fields_; }

 private:
  std::vector<std::string> fields_;
};

// The comparisons the classes make on a field.
//
// `field_equals_number(field, 1)`: the field converted to a number equals `number`
// (13 Type mismatch when the field is not numeric).
bool field_equals_number(std::string_view field, double number);
// `field_is_true(field)`: the field converted to a Boolean is True. Option buttons
// store "True"/"False"; check boxes "1"/"0" also count, so a checked box is True.
// Other text raises 13 Type mismatch.
bool field_is_true(std::string_view field);

// `field_in_range(field, low, high)`: the field is numeric (an empty field is not) and
// its value lies from `low` to `high`, both included; fractions inside the range pass.
// The range test of the classes' ValidateSetupData. Never raises.
bool field_in_range(std::string_view field, double low, double high);

// The descriptions of two checks that classes word alike: a pay level outside its range
// ("Pay Level invalid - Must be between 0 and 20") and a pay item code that is too long
// ("Pay Item Code must be 3 chars or less").
std::string pay_level_range_message(double low, double high);
std::string pay_item_code_length_message(std::size_t length);

// Advances a counter kept in a settings field (a batch or sequence number) after a
// file was written: the field's value plus 1, or 0 when the sum is greater than
// `highest`, stored back as text ("7" becomes "8", "99" with highest 99 becomes "0").
// A field that is not numeric raises 13 Type mismatch and is left as it was.
void advance_counter(std::string& field, double highest);

// A counter in a settings field that one run advances many times (a ticket number per
// record): the field's number is read at the first use and then kept beside the text,
// which each step rewrites exactly as advance_counter does.
class FieldCounter {
 public:
  FieldCounter(std::string& field, double highest) : field_(&field), highest_(highest) {}
  // The field's number (13 Type mismatch for text that is not a number).
  double value();
  // advance_counter(field, highest), without reading the text back.
  void advance();

 private:
  std::string* field_;
  double highest_;
  double value_ = 0;
  bool read_ = false;
};

}  // namespace zorvat
