// What an IntuitPAC file must carry: every card; the edition in Title picks the
// layout. The full edition writes deductions negative; Jr ignores the deduction flags.
#include "intuitpac/intuitpac_rules.h"

#include <cmath>

#include "intuitpac/intuitpac.h"
#include "intuitpac/intuitpac_layout.h"
#include "intuitpac/intuitpac_limits.h"
#include "intuitpac/intuitpac_reader.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/reconcile/expectation.h"
#include "zorvat/unicode.h"

namespace zorvat::formats::intuitpac {
namespace {

using namespace zorvat::reconcile;
namespace layout = intuitpac_layout;

// The edition as the class itself reads it from the title.
bool is_jr(std::string_view title) {
  HeadlessUi ui;
  NoOutputFiles files;
  const IntuitPAC instance({ui, files, system_clock()});
  return instance.IsJr(title);
}

Expectation expect(const Variant& cards, const SettingsFields& settings, std::string_view title) {
  const bool jr = is_jr(title);
  constexpr IntuitPAC::Position kPayCodes[] = {
      IntuitPAC::kPayCode0,   IntuitPAC::kPayCode1,   IntuitPAC::kPayCode2,  IntuitPAC::kVACPayCode,
      IntuitPAC::kHOLPayCode, IntuitPAC::kSICPayCode, IntuitPAC::kOTHPayCode};
  constexpr IntuitPAC::Position kDeductions[] = {IntuitPAC::kVACDeduct, IntuitPAC::kHOLDeduct,
                                                 IntuitPAC::kSICDeduct, IntuitPAC::kOTHDeduct};
  ExpectationBuilder builder(jr ? "Jr" : "full");
  for_each(cards, [&](const Variant& card) {
    const std::string number = to_text(get_property(card, "Number"));
    if (text_length(number) < 4) raise_runtime(rt::kInvalidProcedureCall);
    const std::string employee =
        format(Variant(std::string(text_right(number, 4))), layout::kEmployeePart.pattern);
    const Minutes minutes = card_minutes(card);
    const Rows rows = builder.card(employee, minutes);
    for (std::size_t c = 0; c < kCategoryCount; ++c) {
      const double m = minutes[c];
      if (jr) {
        if (c >= kVAC && m != 0 && flag_set(settings, kDeductions[c - kVAC]))
          builder.adjust(rows[c], Reason::DeductionFlagIgnored, 0);
        const std::string code =
            c <= kOT1 ? std::string(kCategories[c])
                      : text_through(settings.at(kPayCodes[c]), layout::kPayCode1st.pattern);
        builder.write(
            rows[c], code,
            written(m / 60.0 * 100.0,
                    c <= kOT1 ? layout::kJrRegular.pattern : layout::kJrOvertime2.pattern, 0),
            Reason::RoundedToHundredths);
        continue;
      }
      double whole = double_to_long(m);
      if (c >= kVAC && field_equals_number(settings.at(kDeductions[c - kVAC]), 1)) {
        builder.adjust(rows[c], Reason::WrittenAsDeduction, -2 * from_minutes(m));
        whole = -whole;
      }
      const Amount magnitude =
          written(std::abs(whole) / 60.0 * 100.0, layout::kAmount1st.pattern, 0);
      builder.write(rows[c], text_through(settings.at(kPayCodes[c]), layout::kPayCode1st.pattern),
                    whole < 0 ? -magnitude : magnitude, Reason::RoundedToHundredths);
    }
  });
  return builder.finish();
}

FileContents read(std::string_view bytes, const SettingsFields& settings, std::string_view title,
                  const Variant&) {
  return read_intuitpac_file(bytes, settings, is_jr(title));
}

constexpr SettingsExample kExamples[] = {
    {"IntuitPAC", "ABCE12345,1,2,3,4,5,6,7,1,0,0,0", "Intuit PC Access Import File V2.0"},
    {"IntuitPAC-Jr", "ABC1234,1,2,3,4,5,6,7,0,0,0,0", "QuikPay Import File V2.0"},
};

}  // namespace

const ClassRules& class_rules() {
  static constexpr ClassRules rules{
      "IntuitPAC", create_export_class<IntuitPAC>, expect, read, kExamples, &kFileLimits};
  return rules;
}

}  // namespace zorvat::formats::intuitpac
