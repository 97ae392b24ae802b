#include "pcpaylink/pcpaylink.h"

#include <limits>
#include <optional>

#include "pcpaylink/pcpaylink_form.h"
#include "pcpaylink/pcpaylink_layout.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/hours.h"
#include "zorvat/time_card.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {
namespace {

constexpr double kHighestOfficeNumber = 1295;
constexpr std::size_t kLongestClientID = 4;
constexpr double kHighestSiteNumber = 9;
constexpr double kHighestSeqNumber = 46655;

constexpr std::string_view kOfficeNumberDescription = "Office Number must be between 0 and 1295";
constexpr std::string_view kClientIDDescription = "Client ID must be 4 chars or less";
constexpr std::string_view kSiteNumberDescription = "Site Number must be between 0 and 9";
constexpr std::string_view kSeqNumberDescription = "Sequence Number must be between 0 and 46655";

// Header and detail records end with LF alone; the trailer ends with nothing.
constexpr char kRecordEnd = '\n';

// The hour categories in record order, with their rate pieces (fields E09 and E0A or
// E0C): regular and overtime have fixed rates, the miscellaneous categories take the
// earning code chosen for them in SetupData.
struct Category {
  const PropertyName& property;
  std::string_view fixed_rate;
  std::optional<PCPayLink::Position> earning_code;
  bool counts_employee;  // only regular time raises the employee count
};
constexpr Category kCategories[] = {
    {time_card::kREG, "|E09R1|E0A", std::nullopt, true},
    {time_card::kOT1, "|E09R1|E0C", std::nullopt, false},
    {time_card::kOT2, "|E09R2|E0C", std::nullopt, false},
    {time_card::kVAC, {}, PCPayLink::kVACPayCode, false},
    {time_card::kHOL, {}, PCPayLink::kHOLPayCode, false},
    {time_card::kSIC, {}, PCPayLink::kSICPayCode, false},
    {time_card::kOTH, {}, PCPayLink::kOTHPayCode, false},
};
constexpr std::size_t kCategoryCount = std::size(kCategories);

const FormatPattern& office_number_pattern() {
  static const FormatPattern pattern(pcpaylink_layout::kOfficeNumberPattern);
  return pattern;
}
const FormatPattern& employee_number_pattern() {
  static const FormatPattern pattern(pcpaylink_layout::kEmployeeNumberPattern);
  return pattern;
}
const FormatPattern& hours_pattern() {
  static const FormatPattern pattern(pcpaylink_layout::kHoursPattern);
  return pattern;
}
const FormatPattern& sequence_pattern() {
  static const FormatPattern pattern(pcpaylink_layout::kSequencePattern);
  return pattern;
}

// Adds to a 32-bit control count; 6 "Overflow" past the range.
void count(std::int32_t& counter, std::int32_t amount) {
  if (counter > std::numeric_limits<std::int32_t>::max() - amount) raise_runtime(rt::kOverflow);
  counter += amount;
}

long error_number(std::size_t position) {
  return static_cast<long>(PCPayLinkErrorsEnum::errOfficeNumber) + static_cast<long>(position);
}

}  // namespace

bool PCPayLink::Execute(const Variant& pcTimeCards) {
  return guarded(source_of("Execute"), [&] {
    ValidateSetupData(setup_data());
    settings_ = SettingsFields(setup_data());

    // Header record.
    std::string text;
    text += "00000IM0005|001";                                                      // tags; 001:
    office_number_pattern().append_to(text, Variant(settings_.at(kOfficeNumber)));  //   office
    text += text_left(settings_.at(kClientID), kLongestClientID);                   //   client
    text += '|';
    text += kRecordEnd;
    record_count_ = 1;
    field_count_ = 2;
    employee_count_ = 0;
    detail_count_ = 0;

    for_each_record(pcTimeCards, text, [&](const Variant& card) { EmployeeRecord(card, text); });

    // Trailer record: the control counts in plain decimal, no terminator.
    text += "FF05B";
    text += std::to_string(record_count_);
    text += "|05C";
    text += std::to_string(field_count_);
    text += "|05D";
    text += std::to_string(employee_count_);
    text += "|05E";
    text += std::to_string(detail_count_);
    text += '|';

    std::string sequence;
    sequence_pattern().append_to(sequence, Variant(settings_.at(kSeqNumber)));
    SaveDialogRequest request;
    request.filter = "PayChex PayLink Import File (*." + sequence + ") | *." + sequence;
    request.file_name = "JJ" + settings_.at(kClientID) + "I" + settings_.at(kSiteNumber);
    if (!save_text(request, text)) return false;

    advance_counter(settings_.at(kSeqNumber), kHighestSeqNumber);
    SetupData(settings_.join());
    return true;
  });
}

bool PCPayLink::Setup() {
  return guarded(source_of("Setup"), [&] {
    const bool saved = open_setup_form(frmPCPayLink());
    // A saved string goes through the check at once, so that a bad field is raised
    // from Setup.
    if (saved) ValidateSetupData(SetupData());
    return saved;
  });
}

void PCPayLink::ValidateSetupData(std::string_view psSetup) {
  const std::string source = source_of("ValidateSetupData");
  guarded(source, [&] {
    const SettingsFields fields(psSetup);
    // The earning codes after the sequence number are not checked.
    for (std::size_t position = 0; position < fields.size() && position <= kSeqNumber; ++position) {
      const std::string& field = fields.at(position);
      switch (position) {
        case kOfficeNumber:
          if (!field_in_range(field, 0, kHighestOfficeNumber))
            raise(error_number(position), source, kOfficeNumberDescription);
          break;
        case kClientID:
          if (text_length(field) > kLongestClientID)
            raise(error_number(position), source, kClientIDDescription);
          break;
        case kSiteNumber:
          if (!field_in_range(field, 0, kHighestSiteNumber))
            raise(error_number(position), source, kSiteNumberDescription);
          break;
        default:
          if (!field_in_range(field, 0, kHighestSeqNumber))
            raise(error_number(position), source, kSeqNumberDescription);
          break;
      }
    }
  });
}

void PCPayLink::run_check() {
  ValidateSetupData(setup_data());
}

void PCPayLink::EmployeeRecord(const Variant& card, std::string& text) {
  guarded(employee_record_source_, [&] {
    double minutes[kCategoryCount];
    double total = 0;
    for (std::size_t i = 0; i < kCategoryCount; ++i) {
      minutes[i] = get_number(card, kCategories[i].property);
      total += minutes[i];
    }
    // No time in sum, no records: also when some categories cancel out.
    if (total == 0) return;

    // The employee number, "0000", the same in each of the employee's records.
    std::string number;
    employee_number_pattern().append_to(number, get_property(card, time_card::kNumber));
    records_.clear();
    std::int32_t line_number = 1;
    for (std::size_t i = 0; i < kCategoryCount; ++i) {
      if (!(minutes[i] > 0)) continue;  // negative time is left out without notice
      const Category& category = kCategories[i];
      records_ += "01E03";                      // record type; E03:
      records_ += number;                       //   employee number
      records_ += "|E04C|E0501|E060";           // E04 "C", E05 "01", E06:
      records_ += std::to_string(line_number);  //   line number
      if (category.earning_code) {
        records_ += "|E09";  // E09: earning code;
        records_ += settings_.at(*category.earning_code);
        records_ += "|E0C";  // E0C:
      } else {
        records_ += category.fixed_rate;  // E09: rate; E0A or E0C:
      }
      hours_pattern().append_to(records_, Min2Hrs(minutes[i]));  //   hours, "####.00"
      records_ += '|';
      records_ += kRecordEnd;

      count(record_count_, 1);
      count(field_count_, 6);
      count(detail_count_, 1);
      if (category.counts_employee) count(employee_count_, 1);
      ++line_number;
    }
    text += records_;
  });
}

double PCPayLink::Min2Hrs(double minutes) {
  return hours::minutes_to_hours(minutes, min2hrs_source_);
}

}  // namespace zorvat::formats
