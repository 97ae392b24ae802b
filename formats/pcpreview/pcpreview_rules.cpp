// What a PCPreview file must carry: cards with time, each positive category as hours
// under its pay code; the deduction flags are not written.
#include "pcpreview/pcpreview_rules.h"

#include "pcpreview/pcpreview.h"
#include "pcpreview/pcpreview_layout.h"
#include "pcpreview/pcpreview_limits.h"
#include "pcpreview/pcpreview_reader.h"
#include "zorvat/format.h"
#include "zorvat/reconcile/expectation.h"

namespace zorvat::formats::pcpreview {
namespace {

using namespace zorvat::reconcile;

std::string employee_number(const Variant& card) {
  return format(get_property(card, "Number"), pcpreview_layout::kEmployeeNumber.pattern);
}

Expectation expect(const Variant& cards, const SettingsFields& settings, std::string_view) {
  constexpr PCPreview::Position kPayCodes[] = {
      PCPreview::kRegularPayCode,  PCPreview::kOvertime1PayCode, PCPreview::kOvertime2PayCode,
      PCPreview::kVacationPayCode, PCPreview::kHolidayPayCode,   PCPreview::kSickPayCode,
      PCPreview::kOtherPayCode};
  constexpr PCPreview::Position kDeductions[] = {PCPreview::kVacationDeduct,
                                                 PCPreview::kHolidayDeduct, PCPreview::kSickDeduct,
                                                 PCPreview::kOtherDeduct};
  ExpectationBuilder builder("PCPreview");
  positive_time_only(
      builder, cards, employee_number, [&](std::size_t row, std::size_t c, double m) {
        if (c >= kVAC && flag_set(settings, kDeductions[c - kVAC]))
          builder.adjust(row, Reason::DeductionFlagIgnored, 0);
        builder.write(
            row, text_through(settings.at(kPayCodes[c]), pcpreview_layout::kPayCode.pattern),
            hours_with_decimals(m, pcpreview_layout::kHours.pattern), Reason::RoundedToHundredths);
      });
  return builder.finish();
}

FileContents read(std::string_view bytes, const SettingsFields& settings, std::string_view,
                  const Variant& cards) {
  // Without cards, every employee number is read at its column's width.
  std::vector<std::string> employee_numbers;
  if (cards.type() != Variant::Type::Empty)
    for_each(cards,
             [&](const Variant& card) { employee_numbers.push_back(employee_number(card)); });
  return read_pcpreview_file(bytes, settings, employee_numbers);
}

constexpr SettingsExample kExamples[] = {
    {"PCPreview", "12,A,B,C,7,D,E,F,G,1,0,0,0"},
};

}  // namespace

const ClassRules& class_rules() {
  static constexpr ClassRules rules{
      "PCPreview", create_export_class<PCPreview>, expect, read, kExamples, &kFileLimits};
  return rules;
}

}  // namespace zorvat::formats::pcpreview
