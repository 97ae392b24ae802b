#include "adp7/adp7_limits.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "zorvat/automation.h"
#include "zorvat/time_card.h"

namespace zorvat::formats::adp7 {
namespace {

using namespace zorvat::reconcile;

// The writer adds the batch's second-level overtime minutes up in a 16-bit integer.
constexpr double kOvertime2BatchLimit = std::numeric_limits<std::int16_t>::max();

std::vector<CardNeed> card_needs() {
  return {{"OT2", "EPIP: the second-level overtime of a batch (all its cards) adds up to at most " +
                      general_number_text(kOvertime2BatchLimit) +
                      " minutes; a larger batch fails the export with error 6 (Overflow)"}};
}

std::optional<std::string> batch_limit_passed(const Error& error, const Variant& cards,
                                              std::size_t index) {
  if (error.number() != rt::kOverflow) return std::nullopt;
  // The exported cards' second-level overtime up to this one, added up as the writer
  // adds it (a card without time is not exported): the sum that no 16-bit integer
  // holds is the one the export stopped at.
  std::int16_t total = 0;
  std::optional<double> passed;
  std::size_t at = 0;
  for_each(cards, [&](const Variant& card) {
    if (at++ > index || passed) return;
    double overtime2 = 0;
    try {
      const double regular = get_number(card, time_card::kREG);
      const double overtime1 = get_number(card, time_card::kOT1);
      overtime2 = get_number(card, time_card::kOT2);
      if (regular + overtime1 + overtime2 == 0) return;
    } catch (const Error&) {
      return;
    }
    try {
      total = double_to_integer(total + overtime2);
    } catch (const Error&) {
      passed = total + overtime2;
    }
  });
  if (!passed) return std::nullopt;
  const double reached = *passed;
  return "with this card the batch's second-level overtime reaches " +
         general_number_text(reached) + " minutes, past the " +
         general_number_text(kOvertime2BatchLimit) +
         " ADP7 can add up; export the cards in smaller batches";
}

}  // namespace

const FileLimits kFileLimits{card_needs, nullptr, batch_limit_passed};

}  // namespace zorvat::formats::adp7
