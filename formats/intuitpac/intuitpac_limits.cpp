#include "intuitpac/intuitpac_limits.h"

#include <map>

#include "intuitpac/intuitpac_layout.h"
#include "zorvat/automation.h"
#include "zorvat/unicode.h"

namespace zorvat::formats::intuitpac {
namespace {

using namespace zorvat::reconcile;
namespace layout = intuitpac_layout;

// IntuitPAC keeps the last characters of the employee number, as many as its column.
constexpr std::size_t kEmployeeDigits = layout::kEmployeePart.width;

std::vector<CardNeed> card_needs() {
  const std::string digits = std::to_string(kEmployeeDigits);
  return {
      {"Number", "the last " + digits + " characters of the employee number go to " +
                     std::string(layout::kEmployeePart.name) + " (columns " +
                     std::to_string(layout::kEmployeePart.first) + "-" +
                     std::to_string(layout::kEmployeePart.last()) + "): a number needs " + digits +
                     " digits or more (one under 1000 fails the export with error 5), " +
                     "and two numbers with the same last " + digits +
                     " digits are one employee to the payroll system"},
      {"REG",
       "Jr edition, " + hundredths_column_text(layout::kJrRegular, layout::kJrRegular.width)},
      {"OT1",
       "Jr edition, " + hundredths_column_text(layout::kJrOvertime1, layout::kJrOvertime1.width)},
      {"OT2, VAC, HOL, SIC, OTH",
       "Jr edition, " + hundredths_column_text(layout::kJrOvertime2, layout::kJrOvertime2.width)},
      {"REG, OT1, OT2, VAC, HOL, SIC, OTH",
       "full edition, " + hundredths_column_text(layout::kAmount1st, layout::kAmount1st.width) +
           ", the last digit overpunched with the sign"}};
}

std::optional<ValuePastLimit> value_past_limit(const Variant& card) {
  const std::optional<std::string> number = property_text(card, "Number");
  if (number && text_length(*number) < kEmployeeDigits)
    return ValuePastLimit{"Number", "IntuitPAC writes the last " + std::to_string(kEmployeeDigits) +
                                        " digits of the employee number, and Number " + *number +
                                        " has fewer"};
  return std::nullopt;
}

// The employee part of the records: the last four characters of the number. A longer
// number is cut; two numbers cut to the same text are one employee.
std::vector<CardWarning> card_warnings(const Variant& cards, const CardName& card_name) {
  std::vector<CardWarning> warnings;
  std::map<std::string, std::size_t> first_with;
  std::size_t index = 0;
  for_each(cards, [&](const Variant& card) {
    const std::size_t at = index++;
    const std::optional<std::string> number = property_text(card, "Number");
    if (!number || text_length(*number) < kEmployeeDigits) return;
    const std::string kept(text_right(*number, kEmployeeDigits));
    if (kept != *number)
      warnings.push_back({at, "Number",
                          "Number " + *number + " is cut to its last " +
                              std::to_string(kEmployeeDigits) + " digits, " + kept});
    const auto [earlier, first] = first_with.emplace(kept, at);
    if (!first)
      warnings.push_back({at, "Number",
                          "Number " + *number + " is written as employee " + kept +
                              ", as is the number of " + card_name(earlier->second) +
                              ": the payroll system takes the two for one employee"});
  });
  return warnings;
}

}  // namespace

const FileLimits kFileLimits{card_needs, value_past_limit, nullptr, card_warnings};

}  // namespace zorvat::formats::intuitpac
