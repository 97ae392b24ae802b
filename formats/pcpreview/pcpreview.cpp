#include "pcpreview/pcpreview.h"

#include <iterator>

#include "pcpreview/pcpreview_form.h"
#include "pcpreview/pcpreview_layout.h"
#include "zorvat/automation.h"
#include "zorvat/columns.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/hours.h"
#include "zorvat/time_card.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {
namespace {

namespace layout = pcpreview_layout;

// The client number's range, and the longest pay code or sequence the import takes.
constexpr double kClientNumberLow = 0;
constexpr double kClientNumberHigh = 9999;
constexpr std::size_t kPayCodeLength = 2;

constexpr std::size_t kHourTypes = time_card::kHourCategoryCount;
// The settings field holding each hour type's pay code, in the order above.
constexpr std::size_t kPayCodeFields[] = {
    PCPreview::kRegularPayCode,  PCPreview::kOvertime1PayCode, PCPreview::kOvertime2PayCode,
    PCPreview::kVacationPayCode, PCPreview::kHolidayPayCode,   PCPreview::kSickPayCode,
    PCPreview::kOtherPayCode};

const FormatPattern& client_number_pattern() {
  static const FormatPattern pattern("0000");
  return pattern;
}

}  // namespace

bool PCPreview::Execute(const Variant& pcTimeCards) {
  return guarded(source_of("Execute"), [&] {
    ValidateSetupData(SetupData());

    fields_ = SettingsFields(setup_data());
    pay_code_columns_ = {};
    sequence_column_.reset();

    // All records of all cards, in collection order, as one text.
    std::string output;
    for_each_record(pcTimeCards, output,
                    [&](const Variant& card) { EmployeeRecord(card, output); });

    // The file is named by the client number: client 12 gives "0012_TA.txt".
    const std::string client = client_number_pattern()(Variant(fields_.at(kClientNumber)));
    SaveDialogRequest request;
    request.filter = "PayChex Preview Import File [" + client + "_TA.txt] | " + client + "_TA.txt";
    request.file_name = client + "_TA";
    if (!save_text(request, output)) return false;

    SetupData(fields_.join());
    return true;
  });
}

bool PCPreview::Setup() {
  return guarded(source_of("Setup"), [&] {
    const bool saved = open_setup_form(frmPCPreview());
    // A saved string goes through the check at once, so that a bad field is raised
    // from Setup.
    if (saved) ValidateSetupData(SetupData());
    return saved;
  });
}

void PCPreview::ValidateSetupData(std::string_view psSetup) {
  const std::string source = source_of("ValidateSetupData");
  guarded(source, [&] {
    const SettingsFields fields(psSetup);
    // Only the fields present are checked; the deduction flags are not checked.
    for (std::size_t position = 0; position < fields.size(); ++position) {
      const std::string& field = fields.at(position);
      const long number =
          static_cast<long>(PCPreviewErrorsEnum::errClientNumber) + static_cast<long>(position);
      if (position == kClientNumber) {
        // The client number's message speaks of a pay level: the wording users have
        // always seen for this field.
        if (!field_in_range(field, kClientNumberLow, kClientNumberHigh))
          raise(number, source, pay_level_range_message(kClientNumberLow, kClientNumberHigh));
      } else if (position <= kOtherPayCode) {
        if (text_length(field) > kPayCodeLength)
          raise(number, source, pay_item_code_length_message(kPayCodeLength));
      }
    }
  });
}

void PCPreview::EmployeeRecord(const Variant& card, std::string& output) {
  guarded(employee_record_source_, [&] {
    double minutes[kHourTypes];
    double total = 0;
    for (std::size_t type = 0; type < kHourTypes; ++type) {
      minutes[type] = get_number(card, time_card::kHourCategories[type]);
      total += minutes[type];
    }
    // A card whose time adds up to nothing yields no record, even when some types
    // hold time that others cancel.
    if (total == 0) return;

    std::string name;
    append_text(name, card, time_card::kFirstName);
    name += ' ';
    append_text(name, card, time_card::kLastName);

    for (std::size_t type = 0; type < kHourTypes; ++type) {
      if (!(minutes[type] > 0)) continue;
      const Variant number = get_property(card, time_card::kNumber);
      hours_text_.clear();
      column_pattern<layout::kHours>().append_to(hours_text_, Min2Hrs(minutes[type]));

      // Positions as for a one-character pay code and sequence.
      column_pattern<layout::kEmployeeNumber>().append_to(output, number);  //   1-6
      append_in_column(output, layout::kName, name);                        //   7-31
      append_blank(output, layout::kColumns32To50);                         //  32-50
      append_literal(output, layout::kEarningsType);                        //  51-52  "E "
      output += pay_code_column(type);                                      //  53
      append_blank(output, layout::kAfterPayCode);                          //  54-62
      append_in_column(output, layout::kHours, hours_text_);                //  63-70
      append_blank(output, layout::kColumns71To89);                         //  71-89
      output += sequence_column();                                          //  90
      append_blank(output, layout::kFill);                                  //  91-127
    }
  });
}

double PCPreview::Min2Hrs(double minutes) {
  return hours::minutes_to_hours(minutes, min2hrs_source_);
}

// The pay code through "0": a numeric code loses its leading zeros ("05" is "5"), a
// letter code stays as it is, an empty one writes nothing. The column is as wide as
// the code, so a two-character code moves what follows by one.
const std::string& PCPreview::pay_code_column(std::size_t hour_type) {
  std::optional<std::string>& column = pay_code_columns_[hour_type];
  if (!column)
    column = column_pattern<layout::kPayCode>()(Variant(fields_.at(kPayCodeFields[hour_type])));
  return *column;
}

// The sequence as it stands when it is a number above zero, otherwise one blank. An
// empty field counts as no sequence; other text that is not a number is a type
// mismatch.
const std::string& PCPreview::sequence_column() {
  if (!sequence_column_) {
    const std::string& sequence = fields_.at(kSequence);
    const bool positive = !sequence.empty() && to_double(Variant(sequence)) > 0;
    sequence_column_ = positive ? sequence : std::string(" ");
  }
  return *sequence_column_;
}

}  // namespace zorvat::formats
