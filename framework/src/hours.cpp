#include "zorvat/hours.h"

#include <cmath>

#include "zorvat/error.h"
#include "zorvat/variant.h"

namespace zorvat::hours {
namespace {

// The classic compiled code checked the floating-point status after each operation.
// Dividing by 60 and multiplying by 100 can only fail one way: a result that is no
// longer finite (an overflow, or an invalid operand), so the result itself is checked:
// it says the same as the status flags, at a fraction of their cost.
void check_result(double result, std::string_view source) {
  if (!std::isfinite(result)) raise(rt::kOverflow, source, runtime_error_text(rt::kOverflow));
}

std::int32_t to_long_or_overflow(double value, std::string_view source) {
  const double rounded = round_half_even(value);
  if (!(rounded >= -2147483648.0 && rounded <= 2147483647.0))
    raise(rt::kOverflow, source, runtime_error_text(rt::kOverflow));
  return static_cast<std::int32_t>(rounded);
}

}  // namespace

double minutes_to_hours(double minutes, std::string_view source) {
  const double hours = minutes / 60.0;
  check_result(hours, source);
  return hours;
}

std::int32_t minutes_to_whole_hours(std::int32_t minutes, std::string_view source) {
  const double hours = minutes / 60.0;
  check_result(hours, source);
  return to_long_or_overflow(hours, source);
}

std::int32_t minutes_to_whole_hours_from_one_hour(std::int32_t minutes, std::string_view source) {
  if (minutes < 60) return 0;
  return minutes_to_whole_hours(minutes, source);
}

std::int32_t minutes_to_hundredths(std::int32_t minutes, std::string_view source) {
  const double hundredths = minutes / 60.0 * 100.0;
  check_result(hundredths, source);
  return to_long_or_overflow(hundredths, source);
}

}  // namespace zorvat::hours
