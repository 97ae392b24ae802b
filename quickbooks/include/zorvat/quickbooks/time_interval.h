// A time entry's duration as a sign and counts without sign, the form the newer
// session managers' time interval takes (SetValue(hour, minute, second, isNegative))
// and the form qbXML writes ("-PT8H30M0S").
#pragma once

#include <cstdint>
#include <optional>

#include "zorvat/quickbooks/session.h"

namespace zorvat::quickbooks {

// A duration as a sign and counts without sign, the way a time interval is negative
// as a whole: {-8, 30, 0} is minus 8 hours and 30 minutes, {8, 30, 0} with the sign.
// Magnitudes in 64 bits: the most negative count has no 32-bit magnitude.
struct SignedTimeInterval {
  std::int64_t hours = 0;
  std::int64_t minutes = 0;
  std::int64_t seconds = 0;
  bool negative = false;
  friend bool operator==(const SignedTimeInterval&, const SignedTimeInterval&) = default;
};
// Negative when any count is, with every count's magnitude (duration_text's rule).
SignedTimeInterval signed_interval(const Duration& duration);
// The duration of a sign and counts: the sign goes to the first count that is not
// zero (parse_duration_text's rule); nullopt when a count is negative or does not
// fit the duration's 32 bits.
std::optional<Duration> duration_of(const SignedTimeInterval& interval);

}  // namespace zorvat::quickbooks
