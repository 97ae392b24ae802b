#include "zorvat/quickbooks/time_interval.h"

#include <initializer_list>
#include <limits>

namespace zorvat::quickbooks {

SignedTimeInterval signed_interval(const Duration& duration) {
  const auto magnitude = [](std::int32_t count) {
    return count < 0 ? -static_cast<std::int64_t>(count) : static_cast<std::int64_t>(count);
  };
  return {magnitude(duration.hours), magnitude(duration.minutes), magnitude(duration.seconds),
          duration.hours < 0 || duration.minutes < 0 || duration.seconds < 0};
}

std::optional<Duration> duration_of(const SignedTimeInterval& interval) {
  constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
  for (const std::int64_t count : {interval.hours, interval.minutes, interval.seconds})
    if (count < 0 || count > kLargest) return std::nullopt;
  Duration duration{static_cast<std::int32_t>(interval.hours),
                    static_cast<std::int32_t>(interval.minutes),
                    static_cast<std::int32_t>(interval.seconds)};
  if (interval.negative) {
    std::int32_t& signed_count = duration.hours != 0     ? duration.hours
                                 : duration.minutes != 0 ? duration.minutes
                                                         : duration.seconds;
    signed_count = -signed_count;
  }
  return duration;
}

}  // namespace zorvat::quickbooks
