#include "pcpreview/pcpreview_limits.h"

#include "pcpreview/pcpreview_layout.h"
#include "zorvat/automation.h"
#include "zorvat/unicode.h"

namespace zorvat::formats::pcpreview {
namespace {

using namespace zorvat::reconcile;
namespace layout = pcpreview_layout;

// The hours column holds its pattern's whole digits and two decimals: as many digits
// of hundredths.
constexpr std::size_t kHoursDigits = pattern_integer_digits(layout::kHours.pattern) + 2;

// "the name (columns 7-31)"
std::string name_columns() {
  return std::string(layout::kName.name) + " (columns " + std::to_string(layout::kName.first) +
         "-" + std::to_string(layout::kName.last()) + ")";
}

std::vector<CardNeed> card_needs() {
  return {
      {"Number", number_column_text(layout::kEmployeeNumber)},
      {"FirstName, LastName",
       std::string(layout::kName.name) + ": columns " + std::to_string(layout::kName.first) + "-" +
           std::to_string(layout::kName.last()) + ", " + std::to_string(layout::kName.width) +
           " letters; a longer name is cut"},
      {"REG, OT1, OT2, VAC, HOL, SIC, OTH", hundredths_column_text(layout::kHours, kHoursDigits)}};
}

std::optional<ValuePastLimit> value_past_limit(const Variant& card) {
  static constexpr std::string_view kCategories[] = {"REG", "OT1", "OT2", "VAC",
                                                     "HOL", "SIC", "OTH"};
  if (auto past = number_past_column(card, layout::kEmployeeNumber)) return past;
  for (std::string_view property : kCategories)
    if (auto past = hours_past_column(card, property, layout::kHours, kHoursDigits)) return past;
  return std::nullopt;
}

// The first and last name, a blank between, go to a column of 25 letters: a longer
// name is cut.
std::vector<CardWarning> card_warnings(const Variant& cards, const CardName&) {
  std::vector<CardWarning> warnings;
  std::size_t index = 0;
  for_each(cards, [&](const Variant& card) {
    const std::size_t at = index++;
    const std::optional<std::string> first = property_text(card, "FirstName");
    const std::optional<std::string> last = property_text(card, "LastName");
    if (!first || !last) return;
    const std::string name = *first + " " + *last;
    if (text_length(name) <= layout::kName.width) return;
    warnings.push_back({at, "LastName",
                        "the name \"" + name + "\" has " + std::to_string(text_length(name)) +
                            " letters; " + name_columns() + " holds " +
                            std::to_string(layout::kName.width) + ", so it is cut to \"" +
                            std::string(text_left(name, layout::kName.width)) + "\""});
  });
  return warnings;
}

}  // namespace

const FileLimits kFileLimits{card_needs, value_past_limit, nullptr, card_warnings};

}  // namespace zorvat::formats::pcpreview
