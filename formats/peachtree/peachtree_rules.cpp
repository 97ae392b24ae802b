// What a Peachtree file must carry: a ticket per day and category, days without worked
// hours left out, durations in whole minutes, tickets numbered on from the batch
// sequence.
#include "peachtree/peachtree_rules.h"

#include <stdexcept>

#include "peachtree/peachtree.h"
#include "peachtree/peachtree_layout.h"
#include "peachtree/peachtree_reader.h"
#include "zorvat/format.h"
#include "zorvat/hours.h"
#include "zorvat/reconcile/expectation.h"
#include "zorvat/reconcile/text_reader.h"

namespace zorvat::formats::peachtree {
namespace {

using namespace zorvat::reconcile;

Expectation expect(const Variant& cards, const SettingsFields& settings, std::string_view) {
  ExpectationBuilder builder("Peachtree");
  // Tickets are numbered on from the batch sequence, one apart.
  double next_ticket = 0;
  std::optional<std::int64_t> first_ticket;
  std::int64_t last_ticket = 0;
  for_each(cards, [&](const Variant& card) {
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(to_text(get_property(card, "ExportID")), minutes);
    Minutes day_totals{};
    for_each(get_property(card, "Days"), [&](const Variant& day) {
      for (std::size_t c = 0; c < kCategoryCount; ++c)
        day_totals[c] += minutes_of(day, kCategories[c]);
    });
    for (std::size_t c = 0; c < kCategoryCount; ++c)
      if (day_totals[c] != minutes[c])
        builder.adjust(rows[c], Reason::DaysDifferFromCard,
                       from_minutes(day_totals[c]) - from_minutes(minutes[c]));

    for_each(get_property(card, "Days"), [&](const Variant& day) {
      const bool worked = to_double(get_property(day, "Hours")) != 0;
      const auto date = parse_short_date(format(Variant(to_date(get_property(day, "DayDate"))),
                                                peachtree_layout::kTicketDatePattern));
      for (std::size_t c = 0; c < kCategoryCount; ++c) {
        const double m = minutes_of(day, kCategories[c]);
        if (m == 0) continue;
        if (!worked) {
          builder.drop(rows[c], Reason::DaySkipped, from_minutes(m));
          continue;
        }
        const std::int32_t whole = to_long(Variant(m));
        std::string duration = format(Variant(hours::minutes_to_hours(whole, kSource)),
                                      peachtree_layout::kWholeHoursPattern);
        duration += ':';
        duration +=
            format(Variant(static_cast<double>(whole % 60)), peachtree_layout::kMinutesPattern);
        const auto written_minutes = duration_minutes(duration);
        if (!written_minutes) throw std::logic_error("unexpected duration " + duration);
        builder.write(rows[c], settings.at(Peachtree::kPayItemCodeReg + c), from_minutes(m),
                      *written_minutes * kUnitsPerMinute, Reason::DurationWholeHours, date);
        if (!first_ticket) {
          next_ticket = to_double(Variant(settings.at(Peachtree::kBatchSequence)));
          first_ticket = double_to_long(next_ticket);
        }
        last_ticket = double_to_long(next_ticket);
        next_ticket += 1;
      }
    });
  });
  if (first_ticket) {
    builder.control("first ticket number", *first_ticket);
    builder.control("last ticket number", last_ticket);
  }
  return builder.finish();
}

FileContents read(std::string_view bytes, const SettingsFields& settings, std::string_view,
                  const Variant&) {
  return read_peachtree_file(bytes, settings);
}

constexpr SettingsExample kExamples[] = {
    {"Peachtree",
     "1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,"
     "ADMN-02003,0,17",
     "", true},
};

}  // namespace

const ClassRules& class_rules() {
  static constexpr ClassRules rules{"Peachtree", create_export_class<Peachtree>, expect, read,
                                    kExamples};
  return rules;
}

}  // namespace zorvat::formats::peachtree
