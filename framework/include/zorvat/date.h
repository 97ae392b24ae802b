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

// The automation date range, years 100 to 9999: serials from 1 January 100 up to,
// not including, 1 January 10000. A date outside it has no text and converts to no
// date (6, Overflow).
inline constexpr double kFirstDateSerial = -657434.0;
inline constexpr double kEndDateSerial = 2958466.0;
constexpr bool in_date_range(double serial) {
  return serial >= kFirstDateSerial && serial < kEndDateSerial;
}

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

// The two-digit-year window: the latest year a two-digit year stands for, the
// hundred years up to it being the ones two digits can name (2049: "50" is 1950, "49"
// is 2049). It is a setting of the user's, like the calendar setting Windows keeps
// (Region, "When a two-digit year is entered, interpret it as a year between"), and
// holds for the whole process: every place the classic conversions read a two-digit
// year reads it through this window. The framework asks no system for it; the hosts
// set it (the COM server from the user's calendar setting, the command line from its
// option).
inline constexpr int kDefaultTwoDigitYearMax = 2049;  // current Windows
inline constexpr int kEarliestTwoDigitYearMax = 99;   // the range Windows accepts
inline constexpr int kLatestTwoDigitYearMax = 9999;

int two_digit_year_max();
// False, and the window unchanged, for a year outside 99 to 9999.
bool set_two_digit_year_max(int year);
// The year `two_digits` (0 to 99) stands for in the window.
int year_of_two_digits(int two_digits);

// Sets the window for as long as it lives and puts back the one before.
class TwoDigitYearMaxScope {
 public:
  explicit TwoDigitYearMaxScope(int year) : before_(two_digit_year_max()) {
    set_two_digit_year_max(year);
  }
  ~TwoDigitYearMaxScope() { set_two_digit_year_max(before_); }
  TwoDigitYearMaxScope(const TwoDigitYearMaxScope&) = delete;
  TwoDigitYearMaxScope& operator=(const TwoDigitYearMaxScope&) = delete;

 private:
  int before_;
};

// Dates the way a user types them: ISO "YYYY-MM-DD" or "M/D/YY", "M/D/YYYY". A year
// of one or two digits is read through the two-digit-year window.
std::optional<Date> parse_date_text(std::string_view text);

}  // namespace zorvat
