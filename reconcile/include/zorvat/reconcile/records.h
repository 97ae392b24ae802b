// What a payroll import file carries, read back from its bytes: one record per amount
// of time, named by the employee key and the category or pay code the file gives it.
//
// Amounts are held in hundredths of a minute (1/6000 hour). Every layout writes its
// time either in hundredths of an hour or in hours and minutes, and both are whole
// numbers of this unit, so written and input time compare exactly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zorvat/date.h"

namespace zorvat::reconcile {

using Amount = std::int64_t;
inline constexpr Amount kUnitsPerMinute = 100;
inline constexpr Amount kUnitsPerHundredth = 60;
inline constexpr Amount kUnitsPerHour = 6000;
// The most time an amount, a sum of amounts or a difference of two holds, either way
// (some 1.5 x 10^15 hours). Time beyond it, which a card may hold and some classes
// write, is not counted: reconciling it raises 6 "Overflow" (amount_overflow).
inline constexpr Amount kLargestAmount = INT64_MAX;

// Raises 6 "Overflow" with the source of the reconciliation, saying how much time it
// counts.
[[noreturn]] void amount_overflow();
// a + b; raises amount_overflow past kLargestAmount either way.
Amount add(Amount a, Amount b);

// Hundredths of an hour as read from a file (parse_decimal keeps them within range).
constexpr Amount from_hundredths(std::int64_t hundredths) {
  return hundredths * kUnitsPerHundredth;
}
// Card minutes are whole numbers; a fraction is kept to the hundredth of a minute.
// Raises amount_overflow for more minutes than an amount holds.
Amount from_minutes(double minutes);
double to_hours(Amount amount);

// One amount as the file carries it.
struct FileRecord {
  std::string employee;  // the employee key as written (export ID or formatted number)
  std::string code;      // the pay code, or the category name where the column says it
  Amount amount = 0;
  std::optional<CivilDate> date;      // the day, where the layout has one
  std::optional<std::int64_t> batch;  // batch or sequence number on the record
  std::optional<std::int64_t> ticket;
  std::size_t line = 0;  // the line (or record) of the file, from 1
};

struct FileContents {
  std::string layout;  // "EPIP", "CSV", "full", "Jr", or the class name
  std::vector<FileRecord> records;
  std::optional<std::int64_t> batch;  // the file's batch or sequence number
  std::optional<CivilDate> date;      // the file's own date (the day it was written)
  std::optional<CivilDate> period_end;
  // Numbers the file states about itself (trailer totals and counts, batch and ticket
  // numbers, the period end), by name.
  std::vector<std::pair<std::string, std::int64_t>> controls;

  // Adds a record of `hundredths` of an hour read on `line`, under the file's batch.
  void add_hundredths(std::string_view employee, std::string_view code, std::int64_t hundredths,
                      std::size_t line);
};

// A date as one number, YYYYMMDD, for the controls.
constexpr std::int64_t date_number(const CivilDate& date) {
  return date.year * 10000 + date.month * 100 + date.day;
}

// A file that is not in the layout its reader expects. The message names the layout,
// the line and the column (both from 1) where reading stopped.
class ReadError : public std::runtime_error {
 public:
  ReadError(std::string_view layout, std::size_t line, std::size_t column,
            std::string_view problem);
  std::size_t line() const noexcept { return line_; }
  std::size_t column() const noexcept { return column_; }

 private:
  std::size_t line_;
  std::size_t column_;
};

}  // namespace zorvat::reconcile
