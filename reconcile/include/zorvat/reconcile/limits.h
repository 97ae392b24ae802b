// What an export class's file can hold of the cards, beyond its settings: the columns
// a fixed layout gives a card's values and the largest value each takes, a limit of a
// batch as a whole, and what a payroll system may misread of a file that is written.
// A class with such limits declares them in its folder, beside its layout, and points
// its entry (`ClassRules::limits`) at them; hosts say them (`zorvat describe`) and hold
// the cards to them (`zorvat export --check`) without knowing the class.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/columns.h"
#include "zorvat/error.h"
#include "zorvat/settings.h"
#include "zorvat/variant.h"

namespace zorvat::reconcile {

// One thing the cards must hold: the card property it is about ("Number", "REG"...; ""
// for the cards as a whole) and a sentence.
struct CardNeed {
  std::string property;
  std::string text;
};

// A value of a card that passes what the layout holds: the property and a sentence.
struct ValuePastLimit {
  std::string property;
  std::string text;
};

// What a payroll system may misread of one card (its index in the cards, from 0).
struct CardWarning {
  std::size_t card = 0;
  std::string property;
  std::string text;
};

// What a payroll system may misread of a file written with a settings position.
struct SettingsWarning {
  std::size_t position = 0;
  std::string text;
};

// How the host names the card at an index in a sentence ("card 3 (ExportID E103)").
using CardName = std::function<std::string(std::size_t index)>;

// A class's limits; a hook is null when the class has no such limit.
struct FileLimits {
  // What the cards must hold, in the order the record takes the values.
  std::vector<CardNeed> (*card_needs)() = nullptr;
  // The first value of `card` past its column.
  std::optional<ValuePastLimit> (*value_past_limit)(const Variant& card) = nullptr;
  // Why `error`, raised by Execute while card `index` was being read and explained by
  // no value of the card itself, came of the cards together: the sentence naming the
  // limit the batch passed; nothing when no limit explains it.
  std::optional<std::string> (*batch_limit_passed)(const Error& error, const Variant& cards,
                                                   std::size_t index) = nullptr;
  // What a payroll system may misread of cards that export without error.
  std::vector<CardWarning> (*card_warnings)(const Variant& cards,
                                            const CardName& card_name) = nullptr;
  // What a payroll system may misread in any file written with `settings`, whatever
  // the cards. Fields that cannot be converted are left to the export's error.
  std::vector<SettingsWarning> (*settings_warnings)(const SettingsFields& settings) = nullptr;
};

// Helpers the classes' limits are written with.

// The largest whole number `digits` digits hold (999 for 3).
double largest_whole_number(std::size_t digits);

// A column of whole numbers: "the employee number: columns 2-7, at most 999999".
std::string number_column_text(const Column& column);

// A column of hundredths of hours, `digits` digits of them: "hundredths of hours:
// columns 20-26, at most 99999.99 hours (5999999 minutes)".
std::string hundredths_column_text(const Column& column, std::size_t digits);

// The card's property as text; nothing when the card has no such property or its
// value has no text.
std::optional<std::string> property_text(const Variant& card, std::string_view property);

// The card's Number when it is past what `column` holds.
std::optional<ValuePastLimit> number_past_column(const Variant& card, const Column& column);

// The minutes of the card's `property` when their hundredths of hours are past what
// `digits` digits of `column` hold.
std::optional<ValuePastLimit> hours_past_column(const Variant& card, std::string_view property,
                                                const Column& column, std::size_t digits);

}  // namespace zorvat::reconcile
