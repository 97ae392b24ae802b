// What a Tally file must carry: every card, its seven categories together under one
// amount, the total rounded to hundredths of an hour once.
#include "tally/tally_rules.h"

#include "tally/tally.h"
#include "tally/tally_limits.h"
#include "tally/tally_reader.h"
#include "zorvat/reconcile/expectation.h"

namespace zorvat::formats::tally {
namespace {

using namespace zorvat::reconcile;

Expectation expect(const Variant& cards, const SettingsFields&, std::string_view) {
  ExpectationBuilder builder("Tally");
  for_each(cards, [&](const Variant& card) {
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(to_concat_text(get_property(card, "ExportID")), minutes);
    // The line's one amount carries every category: the time of the others moves to
    // the regular row, which takes the rounding of the whole total.
    double total = 0;
    for (std::size_t c = 0; c < kCategoryCount; ++c) {
      total += minutes[c];
      if (c == kREG || minutes[c] == 0) continue;
      builder.adjust(rows[c], Reason::UnderOtherCode, -from_minutes(minutes[c]));
      builder.adjust(rows[kREG], Reason::UnderOtherCode, from_minutes(minutes[c]));
    }
    builder.write(rows[kREG], "ALL", hours_with_decimals(total, "0.00"),
                  Reason::RoundedToHundredths);
  });
  return builder.finish();
}

FileContents read(std::string_view bytes, const SettingsFields& settings, std::string_view,
                  const Variant&) {
  return read_tally_file(bytes, settings);
}

constexpr SettingsExample kExamples[] = {
    {"Tally", "1"},
};

}  // namespace

const ClassRules& class_rules() {
  static constexpr ClassRules rules{
      "Tally", create_export_class<Tally>, expect, read, kExamples, &kFileLimits};
  return rules;
}

}  // namespace zorvat::formats::tally
