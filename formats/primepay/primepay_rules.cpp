// What a PrimePay file must carry: cards with time, each positive category in
// hundredths under its pay code (other time under the sick pay code), the period end
// and the batch number in the header.
#include "primepay/primepay_rules.h"

#include "primepay/primepay.h"
#include "primepay/primepay_layout.h"
#include "primepay/primepay_limits.h"
#include "primepay/primepay_reader.h"
#include "zorvat/format.h"
#include "zorvat/hours.h"
#include "zorvat/reconcile/expectation.h"
#include "zorvat/reconcile/text_reader.h"

namespace zorvat::formats::primepay {
namespace {

using namespace zorvat::reconcile;

std::string employee_number(const Variant& card) {
  return format(get_property(card, "Number"), primepay_layout::kEmployeeNumber.pattern);
}

Expectation expect(const Variant& cards, const SettingsFields& settings, std::string_view) {
  // Other time goes under the sick pay code.
  constexpr PrimePay::Position kPayCodes[] = {
      PrimePay::kBatchSequenceNumber, PrimePay::kOvertime1PayCode, PrimePay::kOvertime2PayCode,
      PrimePay::kVacationPayCode,     PrimePay::kHolidayPayCode,   PrimePay::kSickPayCode,
      PrimePay::kSickPayCode};
  ExpectationBuilder builder("PrimePay");
  positive_time_only(
      builder, cards, employee_number, [&](std::size_t row, std::size_t c, double m) {
        const std::string code =
            c == kREG ? std::string("REG")
                      : text_through(settings.at(kPayCodes[c]), primepay_layout::kPayCode.pattern);
        if (c == kOTH) builder.adjust(row, Reason::UnderOtherCode, 0);
        const std::int32_t hundredths = hours::minutes_to_hundredths(double_to_long(m), kSource);
        builder.write(row, code, from_hundredths(hundredths), Reason::RoundedToHundredths);
      });
  const auto period_end = parse_short_date(
      format(get_property(cards, "PeriodEnd"), primepay_layout::kPeriodEnd.pattern));
  if (period_end) builder.control("period end", date_number(*period_end));
  const Variant batch(settings.at(PrimePay::kBatchSequenceNumber));
  if (builder.record_count() > 0 && to_double(batch) > 0)
    builder.control("batch number", pattern_number(batch, primepay_layout::kBatch.pattern, 0));
  return builder.finish();
}

FileContents read(std::string_view bytes, const SettingsFields&, std::string_view,
                  const Variant& cards) {
  // Without cards, every employee number is read at its column's width.
  std::vector<std::string> employee_numbers;
  if (cards.type() != Variant::Type::Empty)
    for_each(cards,
             [&](const Variant& card) { employee_numbers.push_back(employee_number(card)); });
  return read_primepay_file(bytes, employee_numbers);
}

constexpr SettingsExample kExamples[] = {
    {"PrimePay", "4,02,20,23,24,25,28"},
};

}  // namespace

const ClassRules& class_rules() {
  static constexpr ClassRules rules{
      "PrimePay", create_export_class<PrimePay>, expect, read, kExamples, &kFileLimits};
  return rules;
}

}  // namespace zorvat::formats::primepay
