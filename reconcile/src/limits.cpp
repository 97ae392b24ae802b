#include "zorvat/reconcile/limits.h"

#include <cmath>
#include <cstdio>

#include "zorvat/automation.h"
#include "zorvat/format.h"
#include "zorvat/unicode.h"

namespace zorvat::reconcile {
namespace {

// "the employee number: columns 2-7"
std::string columns_text(const Column& column) {
  return std::string(column.name) + ": columns " + std::to_string(column.first) + "-" +
         std::to_string(column.last());
}

}  // namespace

double largest_whole_number(std::size_t digits) {
  return std::pow(10.0, static_cast<double>(digits)) - 1;
}

std::string number_column_text(const Column& column) {
  return columns_text(column) + ", at most " +
         general_number_text(largest_whole_number(column.width));
}

std::string hundredths_column_text(const Column& column, std::size_t digits) {
  const double hundredths = largest_whole_number(digits);
  char hours[32];
  std::snprintf(hours, sizeof hours, "%.2f", hundredths / 100.0);
  return columns_text(column) + ", at most " + hours + " hours (" +
         general_number_text(std::floor((hundredths + 0.5) * 60.0 / 100.0)) + " minutes)";
}

std::optional<std::string> property_text(const Variant& card, std::string_view property) {
  try {
    return to_text(get_property(card, property));
  } catch (const Error&) {
    return std::nullopt;
  }
}

std::optional<ValuePastLimit> number_past_column(const Variant& card, const Column& column) {
  Variant number;
  std::string written;  // the number as the column's pattern writes it
  try {
    number = get_property(card, "Number");
    written = format(number, column.pattern);
  } catch (const Error&) {
    return std::nullopt;
  }
  if (text_length(written) <= column.width) return std::nullopt;
  const std::string shown = to_text(number);
  // Too many digits, or a sign the column has no room for.
  if (written.find('-') == std::string::npos)
    return ValuePastLimit{"Number", "Number " + shown + " passes " + number_column_text(column)};
  return ValuePastLimit{"Number", "Number " + shown + " is written \"" + written + "\", " +
                                      std::to_string(text_length(written)) + " letters where " +
                                      columns_text(column) + " holds " +
                                      std::to_string(column.width)};
}

std::optional<ValuePastLimit> hours_past_column(const Variant& card, std::string_view property,
                                                const Column& column, std::size_t digits) {
  double minutes = 0;
  try {
    minutes = to_double(get_property(card, property));
  } catch (const Error&) {
    return std::nullopt;
  }
  const double hundredths = std::round(std::fabs(minutes) / 60.0 * 100.0);
  if (hundredths <= largest_whole_number(digits)) return std::nullopt;
  return ValuePastLimit{std::string(property), general_number_text(minutes) + " minutes pass " +
                                                   hundredths_column_text(column, digits)};
}

}  // namespace zorvat::reconcile
