#include "zorvat/hours.h"

#include <cfenv>
#include <cmath>

#include "zorvat/error.h"
#include "zorvat/variant.h"

namespace zorvat::hours {
namespace {

// Checks the floating-point status after an operation, as the classic compiled code
// does, and raises with the conversion's own source.
void check_float_status(std::string_view source, double result) {
  if (std::fetestexcept(FE_DIVBYZERO))
    raise(rt::kDivisionByZero, source, runtime_error_text(rt::kDivisionByZero));
  if (std::fetestexcept(FE_INVALID | FE_OVERFLOW) || !std::isfinite(result))
    raise(rt::kOverflow, source, runtime_error_text(rt::kOverflow));
}

std::int32_t to_long_or_overflow(double value, std::string_view source) {
  const double rounded = round_half_even(value);
  if (!(rounded >= -2147483648.0 && rounded <= 2147483647.0))
    raise(rt::kOverflow, source, runtime_error_text(rt::kOverflow));
  return static_cast<std::int32_t>(rounded);
}

}  // namespace

double minutes_to_hours(double minutes, std::string_view source) {
  std::feclearexcept(FE_ALL_EXCEPT);
  // volatile keeps the division between clearing and testing the status flags.
  const volatile double hours = minutes / 60.0;
  check_float_status(source, hours);
  return hours;
}

std::int32_t minutes_to_whole_hours(std::int32_t minutes, std::string_view source) {
  std::feclearexcept(FE_ALL_EXCEPT);
  const volatile double hours = minutes / 60.0;
  check_float_status(source, hours);
  return to_long_or_overflow(hours, source);
}

std::int32_t minutes_to_whole_hours_from_one_hour(std::int32_t minutes, std::string_view source) {
  if (minutes < 60) return 0;
  return minutes_to_whole_hours(minutes, source);
}

std::int32_t minutes_to_hundredths(std::int32_t minutes, std::string_view source) {
  std::feclearexcept(FE_ALL_EXCEPT);
  const volatile double hundredths = minutes / 60.0 * 100.0;
  check_float_status(source, hundredths);
  return to_long_or_overflow(hundredths, source);
}

}  // namespace zorvat::hours
