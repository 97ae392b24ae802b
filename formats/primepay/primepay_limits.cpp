#include "primepay/primepay_limits.h"

#include "primepay/primepay_layout.h"

namespace zorvat::formats::primepay {
namespace {

using namespace zorvat::reconcile;
namespace layout = primepay_layout;

std::vector<CardNeed> card_needs() {
  return {
      {"Number", number_column_text(layout::kEmployeeNumber)},
      {"REG", hundredths_column_text(layout::kRegularHundredths, layout::kRegularHundredths.width)},
      {"OT1, OT2, VAC, HOL, SIC, OTH",
       hundredths_column_text(layout::kOtherHundredths, layout::kOtherHundredths.width)}};
}

std::optional<ValuePastLimit> value_past_limit(const Variant& card) {
  static constexpr std::string_view kOthers[] = {"OT1", "OT2", "VAC", "HOL", "SIC", "OTH"};
  if (auto past = number_past_column(card, layout::kEmployeeNumber)) return past;
  if (auto past = hours_past_column(card, "REG", layout::kRegularHundredths,
                                    layout::kRegularHundredths.width))
    return past;
  for (std::string_view property : kOthers)
    if (auto past = hours_past_column(card, property, layout::kOtherHundredths,
                                      layout::kOtherHundredths.width))
      return past;
  return std::nullopt;
}

}  // namespace

const FileLimits kFileLimits{card_needs, value_past_limit};

}  // namespace zorvat::formats::primepay
