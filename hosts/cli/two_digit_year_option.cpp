#include "two_digit_year_option.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <string>

#include "platform.h"
#include "zorvat/date.h"

namespace zorvat::cli {
namespace {

// Empty when `text` is a year the window can end in; otherwise what is wrong with it.
std::string year_problem(std::string& text) {
  int year = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), year);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  if (whole && year >= kEarliestTwoDigitYearMax && year <= kLatestTwoDigitYearMax) return {};
  return "\"" + text + "\" is not a year from " + std::to_string(kEarliestTwoDigitYearMax) +
         " to " + std::to_string(kLatestTwoDigitYearMax) +
         " (the latest year a two-digit year stands for, as in 2049: 50 to 99 are 1950 to "
         "1999, 00 to 49 are 2000 to 2049)";
}

}  // namespace

TwoDigitYearOption::TwoDigitYearOption(std::initializer_list<CLI::App*> commands) {
  const std::string help = "the latest year a two-digit year stands for (99 to 9999; default " +
                           std::to_string(default_two_digit_year_max()) + ")";
  for (CLI::App* command : commands)
    command->add_option("--two-digit-year-max", year_, help)
        ->type_name("YEAR")
        ->check(CLI::Validator(year_problem, "", "two-digit year max"));
}

void TwoDigitYearOption::apply() const {
  set_two_digit_year_max(year_.value_or(default_two_digit_year_max()));
}

}  // namespace zorvat::cli
