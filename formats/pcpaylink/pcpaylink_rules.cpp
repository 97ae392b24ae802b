// What a PCPayLink file must carry: cards with time, each positive category as hours
// under its earning code, and a trailer that counts records, fields and employees.
#include "pcpaylink/pcpaylink_rules.h"

#include "pcpaylink/pcpaylink.h"
#include "pcpaylink/pcpaylink_layout.h"
#include "pcpaylink/pcpaylink_reader.h"
#include "zorvat/format.h"
#include "zorvat/reconcile/expectation.h"

namespace zorvat::formats::pcpaylink {
namespace {

using namespace zorvat::reconcile;

std::string employee_number(const Variant& card) {
  return format(get_property(card, "Number"), pcpaylink_layout::kEmployeeNumberPattern);
}

Expectation expect(const Variant& cards, const SettingsFields& settings, std::string_view) {
  constexpr PCPayLink::Position kEarningCodes[] = {PCPayLink::kVACPayCode, PCPayLink::kHOLPayCode,
                                                   PCPayLink::kSICPayCode, PCPayLink::kOTHPayCode};
  ExpectationBuilder builder("PCPayLink");
  std::int64_t employees = 0;
  positive_time_only(
      builder, cards, employee_number, [&](std::size_t row, std::size_t c, double m) {
        const std::string code =
            c <= kOT2 ? std::string(kCategories[c]) : settings.at(kEarningCodes[c - kVAC]);
        builder.write(row, code, hours_with_decimals(m, pcpaylink_layout::kHoursPattern),
                      Reason::RoundedToHundredths);
        if (c == kREG) ++employees;  // only regular time counts an employee
      });
  // The trailer's counts: the header and each detail are records; the header has two
  // fields, a detail six.
  const auto details = static_cast<std::int64_t>(builder.record_count());
  builder.control("records", 1 + details);
  builder.control("fields", 2 + 6 * details);
  builder.control("employees", employees);
  builder.control("details", details);
  return builder.finish();
}

FileContents read(std::string_view bytes, const SettingsFields& settings, std::string_view,
                  const Variant&) {
  return read_pcpaylink_file(bytes, settings);
}

constexpr SettingsExample kExamples[] = {
    {"PCPayLink", "7,A001,3,12,VA,HO,QS,R3"},
};

}  // namespace

const ClassRules& class_rules() {
  static constexpr ClassRules rules{"PCPayLink", create_export_class<PCPayLink>, expect, read,
                                    kExamples};
  return rules;
}

}  // namespace zorvat::formats::pcpaylink
