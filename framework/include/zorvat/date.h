// Calendar dates as the automation host hands them: a serial day number counted
// from 30 December 1899, the fraction being the time of day.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zorvat {

struct CivilDate {
  int year = 1899;
  int month = 12;
  int day = 30;
  friend bool operator==(const CivilDate&, const CivilDate&) = default;
};

struct Date {
  double serial = 0.0;
  friend bool operator==(const Date&, const Date&) = default;

  static Date from_civil(int year, int month, int day);
  static Date from_civil(const CivilDate& civil) {
    return from_civil(civil.year, civil.month, civil.day);
  }
  // The calendar day of the date (the time of day is dropped).
  CivilDate civil() const;
  // Seconds past midnight, rounded to the nearest second.
  int seconds_of_day() const;
};

// True for a valid Gregorian day in the years 100 to 9999 (the automation date range).
bool is_valid_civil(int year, int month, int day);

// "YYYY-MM-DD" exactly; nothing else is accepted.
std::optional<Date> parse_iso_date(std::string_view text);

// A date as the classic conversion to text writes it (US English): "M/D/YYYY
// h:mm:ss AM", the date alone when there is no time of day, the time alone on day 0
// (30 December 1899). A serial outside the years 100 to 9999 raises 6 (Overflow).
std::string general_date_text(Date date);

// Dates the way a user types them: ISO "YYYY-MM-DD" or "M/D/YY", "M/D/YYYY".
// Two-digit years 00-29 are 2000-2029, 30-99 are 1930-1999.
std::optional<Date> parse_date_text(std::string_view text);

}  // namespace zorvat
