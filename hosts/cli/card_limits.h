// What each export class needs of the time cards, beyond its settings, as the class's
// entry declares it (`reconcile::FileLimits`, in the class's folder beside its layout):
// the columns its fixed layouts give a card's values and the largest value that fits
// them, a batch limit, what a payroll system may misread. `zorvat describe` prints
// them; `zorvat export --check` holds the cards to them and names the card that passes
// one. A class without limits has none of them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "export_check.h"
#include "zorvat/error.h"
#include "zorvat/reconcile/limits.h"
#include "zorvat/settings_description.h"
#include "zorvat/variant.h"

namespace zorvat::cli {

using reconcile::CardNeed;
using reconcile::ValuePastLimit;

// The needs of the class named `class_name` (as described), in the order the
// record takes the values; none for a class whose file has no fixed widths.
std::vector<CardNeed> card_needs(std::string_view class_name);

// Why `error`, raised by Execute while card `index` was being read and explained by no
// value of the card itself, came of the cards together: the sentence naming the limit
// it passed; nothing when no limit of the class explains it.
std::optional<std::string> card_limit_passed(std::string_view class_name, const Error& error,
                                             const Variant& cards, std::size_t index);

// A value of `card` that passes what the class's layout holds (a number wider than its
// column, hours past the largest the column takes): the property and a sentence.
std::optional<ValuePastLimit> value_past_limit(std::string_view class_name, const Variant& card);

// What a payroll system may misread of cards that export without error: employees
// whose numbers a layout cuts to the same text, a separator or line end that is empty.
// `written` is the file the export wrote in memory (none when it failed).
std::vector<Finding> card_warnings(const ClassDescription& description, const Variant& cards,
                                   std::string_view setup,
                                   const std::optional<std::string>& written);

// What a payroll system may misread in a file written with the settings `setup`,
// whatever the cards: an empty separator or line end.
std::vector<Finding> settings_warnings(const ClassDescription& description, std::string_view setup);

// The card at `index` as a report names it: its index and ExportID, else Number.
CardReadPlace card_place(const Variant& card, std::size_t index);

}  // namespace zorvat::cli
