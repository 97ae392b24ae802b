// What an ADP7 file must carry: cards without regular or overtime time are left out;
// EPIP writes hundredths and has no room for the other categories, CSV writes hours
// under the settings' pay codes.
#include "adp7/adp7_rules.h"

#include "adp7/adp7.h"
#include "adp7/adp7_layout.h"
#include "adp7/adp7_limits.h"
#include "adp7/adp7_reader.h"
#include "zorvat/format.h"
#include "zorvat/reconcile/expectation.h"

namespace zorvat::formats::adp7 {
namespace {

using namespace zorvat::reconcile;
namespace layout = adp7_layout;

Expectation expect(const Variant& cards, const SettingsFields& settings, std::string_view) {
  const bool epip = settings.at(ADP7::kOutputFormat) == "EPIP";
  constexpr ADP7::Position kPayCodes[] = {ADP7::kOT2PayCode, ADP7::kOT2PayCode, ADP7::kOT2PayCode,
                                          ADP7::kVACPayCode, ADP7::kHOLPayCode, ADP7::kSICPayCode,
                                          ADP7::kOTHPayCode};
  ExpectationBuilder builder(epip ? "EPIP" : "CSV");
  // The EPIP trailer's totals, of the cards exported.
  Minutes totals{};
  for_each(cards, [&](const Variant& card) {
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(to_concat_text(get_property(card, "ExportID")), minutes);
    if (minutes[kREG] + minutes[kOT1] + minutes[kOT2] == 0) {
      for (std::size_t row : rows) builder.drop(row, Reason::SkippedNoRegularOrOvertime);
      return;
    }
    for (std::size_t c = kREG; c <= kOT2; ++c) totals[c] += minutes[c];
    for (std::size_t c = 0; c < kCategoryCount; ++c) {
      const double m = minutes[c];
      const std::string code = c <= kOT1 ? std::string(kCategories[c]) : settings.at(kPayCodes[c]);
      if (epip) {
        if (c > kOT2) {
          builder.drop(rows[c], Reason::NotInLayout);
        } else if (m != 0) {
          builder.write(rows[c], code, written(m / 60.0 * 100.0, layout::kRegular.pattern, 0),
                        Reason::RoundedToHundredths);
        }
      } else if (c > kOT1 && code.empty()) {
        builder.drop(rows[c], Reason::NoPayCode);
      } else if (c <= kOT1 || m != 0) {
        builder.write(rows[c], code, written(m / 60, layout::kCsvHoursPattern, 2),
                      Reason::RoundedToHundredths);
      }
    }
  });
  if (epip) {
    builder.control("batch number", pattern_number(Variant(settings.at(ADP7::kBatchSeqNum)),
                                                   layout::kBatch.pattern, 0));
    constexpr const char* kTotalNames[] = {"regular hundredths", "overtime 1 hundredths",
                                           "overtime 2 hundredths"};
    for (std::size_t c = kREG; c <= kOT2; ++c)
      if (totals[c] != 0)
        builder.control(kTotalNames[c], pattern_number(Variant(totals[c] / 60.0 * 100.0),
                                                       layout::kRegularTotal.pattern, 0));
  }
  return builder.finish();
}

FileContents read(std::string_view bytes, const SettingsFields& settings, std::string_view,
                  const Variant& cards) {
  // Without cards, every shift is read in its two columns.
  std::vector<std::string> shifts;
  if (cards.type() != Variant::Type::Empty)
    for_each(cards, [&](const Variant& card) {
      shifts.push_back(format(get_property(card, "Shift"), layout::kShift.pattern));
    });
  return read_adp7_file(bytes, settings, shifts);
}

constexpr SettingsExample kExamples[] = {
    {"ADP7-EPIP",
     "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP"},
    {"ADP7-CSV",
     "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,CSV"},
};

}  // namespace

const ClassRules& class_rules() {
  static constexpr ClassRules rules{"ADP7",      create_export_class<ADP7>, expect, read, kExamples,
                                    &kFileLimits};
  return rules;
}

}  // namespace zorvat::formats::adp7
