// `--two-digit-year-max YEAR` on export, validate and reconcile: the latest year a
// two-digit year stands for (zorvat/date.h), as Windows' Region setting "When a
// two-digit year is entered, interpret it as a year between" sets it for the COM
// server. Without the option: 2049 as current Windows, and zorvat.exe asks Windows
// for the user's own setting (platform.h). A year outside 99 to 9999, the range
// Windows accepts, is a usage error.
#pragma once

#include <initializer_list>
#include <optional>

namespace CLI {
class App;
}

namespace zorvat::cli {

class TwoDigitYearOption {
 public:
  // Adds the option to each of `commands`.
  explicit TwoDigitYearOption(std::initializer_list<CLI::App*> commands);
  TwoDigitYearOption(const TwoDigitYearOption&) = delete;
  TwoDigitYearOption& operator=(const TwoDigitYearOption&) = delete;

  // Sets the window every conversion reads two-digit years through: the year given,
  // or the system's default.
  void apply() const;

 private:
  std::optional<int> year_;
};

}  // namespace zorvat::cli
