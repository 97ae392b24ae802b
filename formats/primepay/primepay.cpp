#include "primepay/primepay.h"

#include <iterator>

#include "primepay/primepay_form.h"
#include "primepay/primepay_layout.h"
#include "zorvat/automation.h"
#include "zorvat/columns.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/hours.h"
#include "zorvat/time_card.h"

namespace zorvat::formats {
namespace {

namespace layout = primepay_layout;

constexpr std::string_view kFileFilter = "PrimePay PrimeLink Import File (*.DAT) | *.DAT";

// The batch sequence runs from 0 to 127, the pay codes from 0 to 99.
constexpr double kBatchSequenceLow = 0;
constexpr double kBatchSequenceHigh = 127;
constexpr double kPayCodeLow = 0;
constexpr double kPayCodeHigh = 99;

constexpr std::string_view kRecorderName = "Brantell Time Recorder";

constexpr std::size_t kHourTypes = time_card::kHourCategoryCount;
constexpr std::size_t kRegular = 0;
// The settings field holding each hour type's pay code, in the order above. Regular
// time has none; other time is written with the sick pay code, as PrimePay's import
// has always received it.
constexpr std::size_t kPayCodeFields[] = {0,
                                          PrimePay::kOvertime1PayCode,
                                          PrimePay::kOvertime2PayCode,
                                          PrimePay::kVacationPayCode,
                                          PrimePay::kHolidayPayCode,
                                          PrimePay::kSickPayCode,
                                          PrimePay::kSickPayCode};

}  // namespace

bool PrimePay::Execute(const Variant& pcTimeCards) {
  return guarded(source_of("Execute"), [&] {
    ValidateSetupData(SetupData());

    time_cards_ = pcTimeCards;
    fields_ = SettingsFields(setup_data());
    pay_code_columns_ = {};
    batch_column_.reset();

    std::string output;
    OutputHeader(output);
    for_each_record(pcTimeCards, output,
                    [&](const Variant& card) { EmployeeRecord(card, output); });

    // The file keeps its settings as they were: nothing here advances.
    return save_text({std::string(kFileFilter), {}}, output);
  });
}

bool PrimePay::Setup() {
  return guarded(source_of("Setup"), [&] {
    const bool saved = open_setup_form(frmPrimePay());
    // A saved string goes through the check at once, so that a bad field is raised
    // from Setup.
    if (saved) ValidateSetupData(SetupData());
    return saved;
  });
}

void PrimePay::ValidateSetupData(std::string_view psSetup) {
  // Its errors have always carried the source "Validate".
  const std::string source = source_of("Validate");
  guarded(source, [&] {
    const SettingsFields fields(psSetup);
    // Only the fields present are checked.
    for (std::size_t position = 0; position < fields.size(); ++position) {
      const std::string& field = fields.at(position);
      const long number = static_cast<long>(PrimePayErrorsEnum::errBatchSequenceNumber) +
                          static_cast<long>(position);
      if (position == kBatchSequenceNumber) {
        if (!field_in_range(field, kBatchSequenceLow, kBatchSequenceHigh))
          raise(number, source, "Batch Sequence Number invalid");
      } else if (position <= kOtherPayCode) {
        // Compared as numbers with no numeric test first: a code that is not a number
        // is a type mismatch.
        const double code = to_double(Variant(field));
        if (code < kPayCodeLow || code > kPayCodeHigh)
          raise(number, source, "Paycode field invalid");
      }
    }
  });
}

// The header line, 63 characters.
void PrimePay::OutputHeader(std::string& output) {
  guarded(source_of("OutputHeader"), [&] {
    const Variant today(context().clock.today());
    const Variant period_end = get_property(time_cards_, time_card::kPeriodEnd);
    append_literal(output, layout::kHeaderTag);                          //  1-9
    column_pattern<layout::kExportDate>().append_to(output, today);      // 10-17
    append_in_column(output, layout::kRecorderName, kRecorderName);      // 18-54
    append_literal(output, layout::kColumn55);                           // 55
    column_pattern<layout::kPeriodEnd>().append_to(output, period_end);  // 56-63
    output += layout::kLineEnd;
  });
}

// The detail lines of one card, 65 characters each: the regular line carries its
// hundredths at 9-14, the other lines theirs at 20-26 followed by the pay code. The
// batch column is the batch sequence through "000" when it is above zero, otherwise
// blank.
void PrimePay::EmployeeRecord(const Variant& card, std::string& output) {
  guarded(employee_record_source_, [&] {
    double minutes[kHourTypes];
    double total = 0;
    for (std::size_t type = 0; type < kHourTypes; ++type) {
      minutes[type] = get_number(card, time_card::kHourCategories[type]);
      total += minutes[type];
    }
    // A card whose time adds up to nothing yields no line, even when some types hold
    // time that others cancel.
    if (total == 0) return;

    for (std::size_t type = 0; type < kHourTypes; ++type) {
      if (!(minutes[type] > 0)) continue;
      const double hundredths = Min2HrsinHun(double_to_long(minutes[type]));
      const Variant number = get_property(card, time_card::kNumber);

      append_literal(output, layout::kDetailTag);                           //  1
      column_pattern<layout::kEmployeeNumber>().append_to(output, number);  //  2-7
      append_literal(output, layout::kColumn8);                             //  8
      if (type == kRegular) {
        column_pattern<layout::kRegularHundredths>().append_to(output, hundredths);  //  9-14
        append_blank(output, layout::kRegularFill);                                  // 15-62
      } else {
        append_blank(output, layout::kOtherLead);                                  //  9-19
        column_pattern<layout::kOtherHundredths>().append_to(output, hundredths);  // 20-26
        output += pay_code_column(type);                                           // 27-28
        append_blank(output, layout::kOtherFill);                                  // 29-62
      }
      output += batch_column();  // 63-65
      output += layout::kLineEnd;
    }
  });
}

std::int32_t PrimePay::Min2HrsinHun(std::int32_t minutes) {
  return hours::minutes_to_hundredths(minutes, min2hrsinhun_source_);
}

std::int32_t PrimePay::Min2Hrs(std::int32_t minutes) {
  return hours::minutes_to_whole_hours(minutes, min2hrs_source_);
}

// The hour type's pay code through "00".
const std::string& PrimePay::pay_code_column(std::size_t hour_type) {
  std::optional<std::string>& column = pay_code_columns_[hour_type];
  if (!column)
    column = column_pattern<layout::kPayCode>()(Variant(fields_.at(kPayCodeFields[hour_type])));
  return *column;
}

// The batch sequence through "000" when it is above zero, otherwise three blanks.
const std::string& PrimePay::batch_column() {
  if (!batch_column_) {
    const Variant batch(fields_.at(kBatchSequenceNumber));
    batch_column_ = to_double(batch) > 0 ? column_pattern<layout::kBatch>()(batch)
                                         : std::string(layout::kBatch.width, ' ');
  }
  return *batch_column_;
}

}  // namespace zorvat::formats
