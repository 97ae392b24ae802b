#include "zorvat/date.h"

#include <atomic>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "zorvat/error.h"

namespace zorvat {
namespace {

// Days from 1970-01-01 to a proleptic Gregorian date (H. Hinnant's algorithm).
constexpr long days_from_civil(long y, unsigned m, unsigned d) {
  y -= m <= 2;
  const long era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<long>(doe) - 719468;
}

CivilDate civil_from_days(long z) {
  z += 719468;
  const long era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const long y = static_cast<long>(yoe) + era * 400;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  const unsigned d = doy - (153 * mp + 2) / 5 + 1;
  const unsigned m = mp < 10 ? mp + 3 : mp - 9;
  return {static_cast<int>(y + (m <= 2)), static_cast<int>(m), static_cast<int>(d)};
}

// 1899-12-30, serial day 0.
constexpr long kEpochDays = days_from_civil(1899, 12, 30);

bool parse_int(std::string_view text, int& out) {
  if (text.empty()) return false;
  const auto* end = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), end, out);
  return ec == std::errc() && ptr == end;
}

}  // namespace

namespace {
// Read on every conversion and set by the host, possibly from another thread than the
// one converting: an atomic, never torn.
std::atomic<int> two_digit_year_max_setting{kDefaultTwoDigitYearMax};
}  // namespace

int two_digit_year_max() {
  return two_digit_year_max_setting.load(std::memory_order_relaxed);
}

bool set_two_digit_year_max(int year) {
  if (year < kEarliestTwoDigitYearMax || year > kLatestTwoDigitYearMax) return false;
  two_digit_year_max_setting.store(year, std::memory_order_relaxed);
  return true;
}

int year_of_two_digits(int two_digits) {
  // The window's first year, and how far past it the two digits come round.
  const int earliest = two_digit_year_max() - 99;
  return earliest + ((two_digits - earliest) % 100 + 100) % 100;
}

bool is_valid_civil(int year, int month, int day) {
  if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1) return false;
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  const int last = month == 2 && leap ? 29 : kDays[month - 1];
  return day <= last;
}

Date Date::from_civil(int year, int month, int day) {
  const long days = days_from_civil(year, static_cast<unsigned>(month), static_cast<unsigned>(day));
  return Date{static_cast<double>(days - kEpochDays)};
}

CivilDate Date::civil() const {
  // Negative serials count days backwards while the time of day still counts
  // forwards, so the day is the integer part taken towards zero.
  const double whole = std::trunc(serial);
  return civil_from_days(static_cast<long>(whole) + kEpochDays);
}

int Date::seconds_of_day() const {
  const double fraction = std::fabs(serial - std::trunc(serial));
  return static_cast<int>(std::lround(fraction * 86400.0)) % 86400;
}

std::string general_date_text(Date date) {
  // Only the automation date range (years 100 to 9999) has a text.
  if (!in_date_range(date.serial)) raise_runtime(rt::kOverflow);
  std::string text;
  if (std::trunc(date.serial) != 0.0) {
    const CivilDate civil = date.civil();
    text = std::to_string(civil.month) + "/" + std::to_string(civil.day) + "/" +
           std::to_string(civil.year);
  }
  const int seconds = date.seconds_of_day();
  if (seconds != 0 || text.empty()) {
    const int hour = seconds / 3600;
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%s%d:%02d:%02d %s", text.empty() ? "" : " ",
                  hour % 12 == 0 ? 12 : hour % 12, seconds / 60 % 60, seconds % 60,
                  hour < 12 ? "AM" : "PM");
    text += buffer;
  }
  return text;
}

std::optional<Date> parse_iso_date(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
  // Exactly four, two and two decimal digits: no sign, no blank. (Every card carries
  // dates in this form, so they are read digit by digit rather than by a general
  // number parser.)
  auto digits = [&](std::size_t first, std::size_t count, int& value) {
    value = 0;
    for (std::size_t i = first; i < first + count; ++i) {
      const auto digit = static_cast<unsigned>(text[i]) - static_cast<unsigned>('0');
      if (digit > 9) return false;
      value = value * 10 + static_cast<int>(digit);
    }
    return true;
  };
  int year = 0, month = 0, day = 0;
  if (!digits(0, 4, year) || !digits(5, 2, month) || !digits(8, 2, day)) return std::nullopt;
  if (!is_valid_civil(year, month, day)) return std::nullopt;
  return Date::from_civil(year, month, day);
}

std::optional<Date> parse_date_text(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  if (auto iso = parse_iso_date(text)) return iso;
  const auto first = text.find('/');
  if (first == std::string_view::npos) return std::nullopt;
  const auto second = text.find('/', first + 1);
  if (second == std::string_view::npos) return std::nullopt;
  int month = 0, day = 0, year = 0;
  const auto year_text = text.substr(second + 1);
  if (!parse_int(text.substr(0, first), month) ||
      !parse_int(text.substr(first + 1, second - first - 1), day) || !parse_int(year_text, year))
    return std::nullopt;
  if (year_text.size() <= 2) year = year_of_two_digits(year);
  if (!is_valid_civil(year, month, day)) return std::nullopt;
  return Date::from_civil(year, month, day);
}

}  // namespace zorvat
