#include "zorvat/settings.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>

#include "zorvat/error.h"
#include "zorvat/variant.h"

namespace zorvat {

SettingsFields::SettingsFields(std::string_view setup) {
  if (setup.empty()) return;
  std::size_t start = 0;
  while (true) {
    const std::size_t comma = setup.find(',', start);
    if (comma == std::string_view::npos) {
      fields_.emplace_back(setup.substr(start));
      break;
    }
    fields_.emplace_back(setup.substr(start, comma - start));
    start = comma + 1;
  }
}

const std::string& SettingsFields::at(std::size_t position) const {
  if (position >= fields_.size()) raise_runtime(rt::kSubscriptOutOfRange);
  return fields_[position];
}

std::string& SettingsFields::at(std::size_t position) {
  if (position >= fields_.size()) raise_runtime(rt::kSubscriptOutOfRange);
  return fields_[position];
}

std::string SettingsFields::join() const {
  std::string joined;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (i > 0) joined.push_back(',');
    joined += fields_[i];
  }
  return joined;
}

bool field_equals_number(std::string_view field, double number) {
  return to_double(Variant(field)) == number;
}

bool field_is_true(std::string_view field) {
  return to_boolean(Variant(field));
}

bool field_in_range(std::string_view field, double low, double high) {
  const NumericParse parsed = parse_numeric(field);
  return parsed.status == NumericParse::Status::Ok && parsed.value >= low && parsed.value <= high;
}

void advance_counter(std::string& field, double highest) {
  FieldCounter(field, highest).advance();
}

double FieldCounter::value() {
  if (!read_) {
    value_ = to_double(Variant(*field_));
    read_ = true;
  }
  return value_;
}

void FieldCounter::advance() {
  const double next = value() + 1;
  if (next > highest_) {
    field_->assign(1, '0');
    value_ = 0;
    return;
  }
  // A whole number of up to fifteen digits is written in full, as its plain integer
  // digits, and reads back as it is; anything else (a fraction, a huge count) is
  // written as general_number_text writes it and read back from the text, as the next
  // step of advance_counter would read it.
  if (next == std::floor(next) && std::fabs(next) < 1e15) {
    char digits[24];
    const auto written =
        std::to_chars(std::begin(digits), std::end(digits), static_cast<std::int64_t>(next));
    field_->assign(digits, written.ptr);
    value_ = next;
    return;
  }
  *field_ = general_number_text(next);
  value_ = to_double(Variant(*field_));
}

std::string pay_level_range_message(double low, double high) {
  return "Pay Level invalid - Must be between " + general_number_text(low) + " and " +
         general_number_text(high);
}

std::string pay_item_code_length_message(std::size_t length) {
  return "Pay Item Code must be " + std::to_string(length) + " chars or less";
}

}  // namespace zorvat
