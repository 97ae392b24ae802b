#include "zorvat/quickbooks/values.h"

#include <charconv>
#include <cstdio>

namespace zorvat::quickbooks {
namespace {

// Reads an unsigned decimal count up to `unit` and moves past the unit.
bool read_count(std::string_view& text, char unit, std::int32_t& count) {
  const std::size_t end = text.find(unit);
  if (end == std::string_view::npos || end == 0) return false;
  const std::string_view digits = text.substr(0, end);
  if (digits.find_first_not_of("0123456789") != std::string_view::npos) return false;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
  if (error != std::errc() || stop != digits.data() + digits.size()) return false;
  text.remove_prefix(end + 1);
  return true;
}

}  // namespace

std::string duration_text(const Duration& duration) {
  const SignedTimeInterval interval = signed_interval(duration);
  return std::string(interval.negative ? "-" : "") + "PT" + std::to_string(interval.hours) + "H" +
         std::to_string(interval.minutes) + "M" + std::to_string(interval.seconds) + "S";
}

std::optional<Duration> parse_duration_text(std::string_view text) {
  const bool negative = text.starts_with("-");
  if (negative) text.remove_prefix(1);
  if (!text.starts_with("PT")) return std::nullopt;
  text.remove_prefix(2);
  Duration counts;
  if (!read_count(text, 'H', counts.hours) || !read_count(text, 'M', counts.minutes) ||
      !read_count(text, 'S', counts.seconds) || !text.empty()) {
    return std::nullopt;
  }
  return duration_of({counts.hours, counts.minutes, counts.seconds, negative});
}

std::string txn_date_text(const Date& date) {
  const CivilDate civil = date.civil();
  char text[16];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", civil.year, civil.month, civil.day);
  return text;
}

std::string version_text(std::int32_t major_version, std::int32_t minor_version) {
  return std::to_string(major_version) + "." + std::to_string(minor_version);
}

}  // namespace zorvat::quickbooks
