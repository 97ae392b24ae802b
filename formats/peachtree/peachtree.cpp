#include "peachtree/peachtree.h"

#include <charconv>
#include <iterator>
#include <limits>
#include <optional>

#include "peachtree/peachtree_form.h"
#include "peachtree/peachtree_layout.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/hours.h"
#include "zorvat/time_card.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {
namespace {

constexpr std::string_view kFileFilter = "Peachtree Complete Import File (*.csv) | *.csv";

// Pay levels run from 0 to 20; pay item codes take up to 32 characters.
constexpr double kPayLevelLow = 0;
constexpr double kPayLevelHigh = 20;
constexpr std::size_t kPayItemCodeLength = 32;
constexpr std::size_t kHourTypes = 7;
// Ticket numbers count up without wrapping round.
constexpr double kNoHighestTicketNumber = std::numeric_limits<double>::infinity();

constexpr std::string_view kTitleRow =
    "Employee/Vendor,Recorded by ID,Ticket Number,Ticket Date,Has been used in "
    "Sales/Invoicing,Invoice Number Used,Activity Item ID,Customer/Job/Adm,Completed for "
    "ID,Pay Level,Has been used in Payroll,Manual/Timed Option,Start Time,End Time,Break,"
    "Duration,Internal Memo,Billing Type,Billing Rate,Billing Status,Unit Duration,Billing "
    "Amount,Ticket Description for Invoicing";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kDescription = "From Horalis";

const FormatPattern& ticket_date_pattern() {
  static const FormatPattern pattern(peachtree_layout::kTicketDatePattern);
  return pattern;
}
const FormatPattern& whole_hours_pattern() {
  static const FormatPattern pattern(peachtree_layout::kWholeHoursPattern);
  return pattern;
}
const FormatPattern& minutes_pattern() {
  static const FormatPattern pattern(peachtree_layout::kMinutesPattern);
  return pattern;
}
const FormatPattern& unit_duration_pattern() {
  static const FormatPattern pattern(peachtree_layout::kUnitDurationPattern);
  return pattern;
}

}  // namespace

bool Peachtree::Execute(const Variant& pcTimeCards) {
  return guarded(source_of("Execute"), [&] {
    ValidateSetupData(SetupData());

    SettingsFields fields(setup_data());
    // The pay levels are read afresh by each export, at their first tickets.
    pay_levels_ = {};
    // The batch sequence is read at the first ticket and counted from there.
    FieldCounter batch_sequence(fields.at(kBatchSequence), kNoHighestTicketNumber);
    std::string output;
    if (field_equals_number(fields.at(kOutputFieldTitles), 1)) OutputHeader(output);
    for_each_record(pcTimeCards, output, [&](const Variant& card) {
      EmployeeRecord(fields, batch_sequence, card, output);
    });

    if (!save_text({std::string(kFileFilter), {}}, output)) return false;

    // The advanced batch sequence is kept only now that the file is written: after a
    // cancelled dialog the next run numbers its tickets from the old value again.
    SetupData(fields.join());
    return true;
  });
}

bool Peachtree::Setup() {
  return guarded(source_of("Setup"), [&] {
    const bool saved = open_setup_form(frmPeachtree());
    // A saved string goes through the check at once, so that a bad field is raised
    // from Setup.
    if (saved) ValidateSetupData(SetupData());
    return saved;
  });
}

void Peachtree::ValidateSetupData(std::string_view psSetup) {
  // Its errors have always carried the source "Validate".
  const std::string source = source_of("Validate");
  guarded(source, [&] {
    const SettingsFields fields(psSetup);
    // Only the fields present are checked; the titles flag and the batch sequence are
    // not checked (a bad sequence fails at the first ticket of an export).
    for (std::size_t position = 0; position < fields.size(); ++position) {
      const std::string& field = fields.at(position);
      const long number =
          static_cast<long>(PeachtreeErrorsEnum::errLevelReg) + static_cast<long>(position);
      if (position < kPayItemCodeReg) {
        if (!field_in_range(field, kPayLevelLow, kPayLevelHigh))
          raise(number, source, pay_level_range_message(kPayLevelLow, kPayLevelHigh));
      } else if (position < kOutputFieldTitles) {
        if (text_length(field) > kPayItemCodeLength)
          raise(number, source, pay_item_code_length_message(kPayItemCodeLength));
      }
    }
  });
}

void Peachtree::OutputHeader(std::string& output) {
  guarded(source_of("OutputHeader"), [&] {
    output += kTitleRow;
    output += kLineEnd;
  });
}

void Peachtree::EmployeeRecord(const SettingsFields& fields, FieldCounter& batch_sequence,
                               const Variant& card, std::string& output) {
  guarded(employee_record_source_, [&] {
    // The card's ID and a day's date are read at the day's first ticket, as a card or
    // day without tickets never reads them, and kept for the tickets after it.
    std::optional<std::string> recorded_by_of_card;
    for_each(get_property(card, time_card::kDays), [&](const Variant& day) {
      // A day without worked time yields no ticket, whatever its categories hold.
      if (get_number(day, time_card::kHours) == 0) return;
      std::optional<Date> date_of_day;
      for (std::size_t type = 0; type < kHourTypes; ++type) {
        const double minutes = get_number(day, time_card::kHourCategories[type]);
        // Negative minutes are time too: only zero writes nothing.
        if (minutes == 0) continue;
        if (!recorded_by_of_card)
          recorded_by_of_card = to_text(get_property(card, time_card::kExportID));
        const std::string& recorded_by = *recorded_by_of_card;
        const std::int32_t ticket_number = double_to_long(batch_sequence.value());
        if (!date_of_day) date_of_day = to_date(get_property(day, time_card::kDayDate));
        const Date ticket_date = *date_of_day;
        const std::string& activity_item = fields.at(kPayItemCodeReg + type);
        DataRecord(output, recorded_by, ticket_number, ticket_date, activity_item,
                   pay_level(fields, type), double_to_long(minutes), kDescription);
        batch_sequence.advance();
      }
    });
  });
}

std::int32_t Peachtree::pay_level(const SettingsFields& fields, std::size_t type) {
  std::optional<std::int32_t>& level = pay_levels_[type];
  if (!level) level = to_long(Variant(fields.at(kPayLevelReg + type)));
  return *level;
}

const std::string& Peachtree::ticket_date_text(Date date) {
  for (const TicketDate& known : ticket_dates_)
    if (known.text && known.date.serial == date.serial) return *known.text;
  // A pay period has a week or two of days, which every card repeats: the days are
  // kept in turn, so that the period's dates are each formatted once.
  std::string text;
  ticket_date_pattern().append_to(text, Variant(date));
  TicketDate& slot = ticket_dates_[next_ticket_date_];
  slot = {date, std::move(text)};
  next_ticket_date_ = (next_ticket_date_ + 1) % ticket_dates_.size();
  return *slot.text;
}

void Peachtree::DataRecord(std::string& output, const std::string& recorded_by,
                           std::int32_t ticket_number, Date ticket_date,
                           const std::string& activity_item, std::int32_t level,
                           std::int32_t minutes, std::string_view description) {
  guarded(data_record_source_, [&] {
    // The hour part of the duration goes through "##0", which rounds the hours to the
    // nearest whole hour rather than cutting the fraction: 90 minutes are "2:30". The
    // importers of these files rely on it.
    const double hours = Min2Hrs(minutes);
    const std::string& date_text = ticket_date_text(ticket_date);  // "mm/dd/yy"

    // Columns 2 to 23 each follow a ","; a run of columns every ticket writes the same
    // is written as one piece, separators included.
    auto column = [&](std::string_view text) {
      output += ',';
      output += text;
    };
    auto integer_column = [&](std::int32_t value) {
      char digits[12];
      const auto written = std::to_chars(std::begin(digits), std::end(digits), value);
      column({digits, static_cast<std::size_t>(written.ptr - digits)});
    };
    auto formatted_column = [&](const FormatPattern& pattern, double value) {
      output += ',';
      pattern.append_to(output, value);
    };
    output += '0';                                   //  1 Employee/Vendor
    column(recorded_by);                             //  2 Recorded by ID
    integer_column(ticket_number);                   //  3 Ticket Number
    column(date_text);                               //  4 Ticket Date
    output += ",FALSE,";                             //  5 Has been used in Sales/Invoicing,
                                                     //  6 Invoice Number Used (empty)
    column(activity_item);                           //  7 Activity Item ID
    output += ",3,";                                 //  8 Customer/Job/Adm,
                                                     //  9 Completed for ID (empty)
    integer_column(level);                           // 10 Pay Level
    output += ",FALSE,1,,,";                         // 11 Has been used in Payroll,
                                                     // 12 Manual/Timed Option, 13-15 Start
                                                     //    Time, End Time, Break (empty)
    formatted_column(whole_hours_pattern(), hours);  // 16 Duration: hours "##0", ":",
    output += ':';                                   //    minutes of the hour "00"
    minutes_pattern().append_to(output, static_cast<double>(minutes % 60));
    output += ",,0,0,2";                               // 17 Internal Memo (empty), 18-20
                                                       //    Billing Type, Rate, Status
    formatted_column(unit_duration_pattern(), hours);  // 21 Unit Duration: hours "##0.00"
    output += ",0";                                    // 22 Billing Amount
    column(description);                               // 23 Ticket Description for Invoicing
    output += kLineEnd;
  });
}

double Peachtree::Min2Hrs(double minutes) {
  return hours::minutes_to_hours(minutes, min2hrs_source_);
}

std::int32_t Peachtree::Min2HrsinHun(std::int32_t minutes) {
  return hours::minutes_to_hundredths(minutes, min2hrsinhun_source_);
}

}  // namespace zorvat::formats
