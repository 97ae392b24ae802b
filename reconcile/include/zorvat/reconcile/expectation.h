// What an export class's expectation is built from: the card's seven categories, a
// builder that turns each category's time into the records the file must carry (and
// names the rule behind every minute that changes on the way), and the number texts
// the classes write, read back as the file holds them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "zorvat/automation.h"
#include "zorvat/reconcile/reconcile.h"
#include "zorvat/settings.h"
#include "zorvat/ui_services.h"
#include "zorvat/variant.h"

namespace zorvat::reconcile {

// The source a conversion inside an expectation raises with.
inline constexpr std::string_view kSource = "zorvat.reconcile";

inline constexpr std::size_t kCategoryCount = 7;
inline constexpr std::array<std::string_view, kCategoryCount> kCategories = {
    "REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"};
enum Category : std::size_t { kREG, kOT1, kOT2, kVAC, kHOL, kSIC, kOTH };

using Minutes = std::array<double, kCategoryCount>;
using Rows = std::array<std::size_t, kCategoryCount>;

// The number a class writes for `value` through `pattern`, read back as the file
// holds it, scaled by its `decimals`.
std::int64_t pattern_number(const Variant& value, std::string_view pattern, int decimals);

// The hundredths a class writes for `value` through `pattern`: hours with two decimals
// or hundredths zero-filled.
Amount written(double value, std::string_view pattern, int decimals);

// Minutes written as hours with two decimals through `pattern`.
Amount hours_with_decimals(double minutes, std::string_view pattern);

// A settings field as a class writes it through `pattern` ("00" for a pay code).
std::string text_through(const std::string& field, std::string_view pattern);

double minutes_of(const Variant& object, std::string_view category);
Minutes card_minutes(const Variant& card);
bool total_is_zero(const Minutes& minutes);

// A deduction flag of the settings that is set ("1"); a layout that ignores the flags
// does not fail on a missing or odd one.
bool flag_set(const SettingsFields& settings, std::size_t position);

class ExpectationBuilder {
 public:
  explicit ExpectationBuilder(std::string layout) { expectation_.layout = std::move(layout); }

  // A row for each category of a card.
  Rows card(const std::string& employee, const Minutes& minutes);

  void adjust(std::size_t row, Reason reason, Amount delta);

  // The rule leaves out what is left of the row.
  void drop(std::size_t row, Reason reason);
  // The rule leaves out `amount` of the row.
  void drop(std::size_t row, Reason reason, Amount amount);

  // The file carries `amount` of the row under `code`, where the rules so far leave
  // `intended`; the difference is the format's rounding.
  void write(std::size_t row, std::string code, Amount intended, Amount amount, Reason rounding,
             std::optional<CivilDate> date = std::nullopt);
  void write(std::size_t row, std::string code, Amount amount, Reason rounding);

  void control(std::string name, std::int64_t value);
  std::size_t record_count() const { return expectation_.records.size(); }

  Expectation finish() { return std::move(expectation_); }

 private:
  Expectation expectation_;
  std::size_t card_start_ = 0;
};

// The classes that leave out a card with no time in sum and negative minutes: writes
// each category with positive minutes through `write_category(row, category, minutes)`
// and drops the rest.
template <class WriteCategory>
void positive_time_only(ExpectationBuilder& builder, const Variant& cards,
                        std::string (*employee_of)(const Variant& card),
                        WriteCategory&& write_category) {
  for_each(cards, [&](const Variant& card) {
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(employee_of(card), minutes);
    if (total_is_zero(minutes)) {
      for (std::size_t row : rows) builder.drop(row, Reason::SkippedZeroTotal);
      return;
    }
    for (std::size_t c = 0; c < kCategoryCount; ++c) {
      if (minutes[c] > 0)
        write_category(rows[c], c, minutes[c]);
      else
        builder.drop(rows[c], Reason::NegativeNotExported);
    }
  });
}

// A host for running a class outside an export: no dialog is shown (a question is
// cancelled) and no file can be written.
class HeadlessUi final : public UiServices {
 public:
  SaveDialogResult save_dialog(const SaveDialogRequest&) override { return {}; }
  void message_box(const MessageBoxRequest&) override {}
  Answer question(const MessageBoxRequest&, QuestionButtons) override { return Answer::Cancel; }
  void show_help(std::string_view, std::string_view, unsigned long) override {}
};

class NoOutputFiles final : public OutputFiles {
 public:
  void write_file(const std::string&, std::string_view) override;
};

}  // namespace zorvat::reconcile
