#include "adp7/adp7.h"

#include <cstdint>

#include "adp7/adp7_form.h"
#include "adp7/adp7_layout.h"
#include "zorvat/automation.h"
#include "zorvat/columns.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/time_card.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {
namespace {

namespace layout = adp7_layout;
using layout::field_pattern;

constexpr std::string_view kBatchSeqNumDescription =
    "Batch Sequence Number must be between 0 and 99";
constexpr std::string_view kPayCodeDescription =
    "Paycode field must be at least 2 characters in length";

constexpr std::string_view kEpipFormat = "EPIP";
constexpr double kHighestBatchSeqNum = 99;

constexpr std::string_view kCsvTitles = "Co Code,Batch ID,File #,Pay #,Shift,Reg Hours,O/T Hours";

// The five categories that carry a pay code of their own, in file order.
struct ExtraCategory {
  const PropertyName& property;
  ADP7::Position pay_code;
  ADP7::Position code_name;
};
constexpr ExtraCategory kExtraCategories[] = {
    {time_card::kOT2, ADP7::kOT2PayCode, ADP7::kOT2CodeName},
    {time_card::kVAC, ADP7::kVACPayCode, ADP7::kVACCodeName},
    {time_card::kHOL, ADP7::kHOLPayCode, ADP7::kHOLCodeName},
    {time_card::kSIC, ADP7::kSICPayCode, ADP7::kSICCodeName},
    {time_card::kOTH, ADP7::kOTHPayCode, ADP7::kOTHCodeName}};

const FormatPattern& csv_hours() {
  static const FormatPattern pattern(layout::kCsvHoursPattern);
  return pattern;
}

// The header and the trailer are filled with blanks to column 79. A line already
// longer makes the count of blanks negative, which raises 5.
void fill_to_column_79(std::string& line) {
  append_spaces(line,
                static_cast<long>(layout::kFilledWidth) - static_cast<long>(text_length(line)));
}

// Appends a tagged field: its tag, then its value through its pattern.
template <const layout::TaggedField& field, class Value>
void append_tagged(std::string& line, const Value& value) {
  line += field.tag;
  field_pattern<field>().append_to(line, value);
}

// Hours in hundredths, on doubles; the zero-filled pattern rounds to a whole number.
double hundredths(double minutes) {
  return minutes / 60.0 * 100.0;
}

long error_number(std::size_t position) {
  return static_cast<long>(ADP7ErrorsEnum::errCompanyCode) + static_cast<long>(position);
}

}  // namespace

bool ADP7::Execute(const Variant& pcTimeCards) {
  return guarded(source_of("Execute"), [&] {
    SettingsFields settings(setup_data());
    const bool epip = settings.at(kOutputFormat) == kEpipFormat;

    std::string text;
    if (epip)
      write_epip(settings, pcTimeCards, text);
    else
      write_csv(settings, pcTimeCards, text);

    const std::string& company = settings.at(kCompanyCode);
    std::string batch;
    field_pattern<layout::kBatch>().append_to(batch, Variant(settings.at(kBatchSeqNum)));
    SaveDialogRequest request;
    if (epip) {
      // The pattern part has never had a dot after the "*"; it stays as it is.
      request.filter = "EPIP (*." + company + ") | *" + company;
      request.file_name = batch + "EXTPAY." + company;
    } else {
      request.filter = "CSV (*.csv) | *.csv";
      request.file_name = "EPI" + company + batch + ".CSV";
    }
    if (!save_text(request, text)) return false;

    advance_counter(settings.at(kBatchSeqNum), kHighestBatchSeqNum);
    SetupData(settings.join());
    return true;
  });
}

// EPIP: a header, one line per exported card, and a trailer with the batch totals.
// Every line ends with CR LF.
void ADP7::write_epip(const SettingsFields& settings, const Variant& cards, std::string& text) {
  std::string line;

  // Header: 80 columns.
  line += layout::kHeaderTag;
  line += settings.at(kCompanyCode);
  append_tagged<layout::kBatch>(line, Variant(settings.at(kBatchSeqNum)));
  line += layout::kEndOfFields;
  fill_to_column_79(line);
  line += layout::kColumn80;
  line += layout::kLineEnd;
  text += line;

  // Totals of the exported cards. Second-level overtime is kept in a 16-bit integer,
  // so a batch with more than 32,767 such minutes overflows.
  double regular_total = 0;
  double overtime1_total = 0;
  std::int16_t overtime2_total = 0;

  const std::string& pay_number = settings.at(kPayNumber);
  const std::string& ot2_pay_code = settings.at(kOT2PayCode);
  for_each_record(cards, text, [&](const Variant& card) {
    const double regular = get_number(card, time_card::kREG);
    const double overtime1 = get_number(card, time_card::kOT1);
    const double overtime2 = get_number(card, time_card::kOT2);
    if (regular + overtime1 + overtime2 == 0) return;

    // Employee line: tagged fields, not padded; each hour field ends with a blank.
    line.clear();
    line += layout::kEmployeeTag;
    append_text(line, card, time_card::kExportID);
    line += layout::kPayNumber.tag;
    line += pay_number;
    append_tagged<layout::kShift>(line, get_property(card, time_card::kShift));
    if (regular != 0) {
      append_tagged<layout::kRegular>(line, hundredths(regular));
      line += ' ';
    }
    if (overtime1 != 0) {
      append_tagged<layout::kOvertime1>(line, hundredths(overtime1));
      line += ' ';
    }
    if (overtime2 != 0) {
      // The pay code stands between the tag and the hundredths.
      line += layout::kOvertime2.tag;
      line += ot2_pay_code;
      field_pattern<layout::kOvertime2>().append_to(line, hundredths(overtime2));
      line += ' ';
    }
    line += layout::kEndOfFields;
    line += layout::kLineEnd;
    text += line;

    regular_total += regular;
    overtime1_total += overtime1;
    overtime2_total = double_to_integer(overtime2_total + overtime2);
  });

  // Trailer: the totals, filled with blanks to 79 characters. The overtime 2 total
  // has never been followed by a blank.
  line.clear();
  line += layout::kTrailerTag;
  if (regular_total != 0) {
    append_tagged<layout::kRegularTotal>(line, hundredths(regular_total));
    line += ' ';
  }
  if (overtime1_total != 0) {
    append_tagged<layout::kOvertime1Total>(line, hundredths(overtime1_total));
    line += ' ';
  }
  if (overtime2_total != 0)
    append_tagged<layout::kOvertime2Total>(line, hundredths(overtime2_total));
  line += layout::kEndOfFields;
  fill_to_column_79(line);
  line += layout::kLineEnd;
  text += line;
}

// CSV: a title line naming the extra pay codes in use, then one line per exported
// card. Every line ends with CR LF.
void ADP7::write_csv(const SettingsFields& settings, const Variant& cards, std::string& text) {
  text += kCsvTitles;
  for (const ExtraCategory& extra : kExtraCategories) {
    if (settings.at(extra.pay_code).empty()) continue;
    const std::string& name = settings.at(extra.code_name);
    text += ',';
    text += name;
    text += " Code,";
    text += name;
    text += " Amount";
  }
  text += layout::kLineEnd;

  const std::string& company = settings.at(kCompanyCode);
  const std::string& batch = settings.at(kBatchSeqNum);
  const std::string& pay_number = settings.at(kPayNumber);
  std::string line;
  for_each_record(cards, text, [&](const Variant& card) {
    const double regular = get_number(card, time_card::kREG);
    const double overtime1 = get_number(card, time_card::kOT1);
    const double overtime2 = get_number(card, time_card::kOT2);
    if (regular + overtime1 + overtime2 == 0) return;

    line.clear();
    line += company;  // Co Code
    line += ',';
    line += batch;  // Batch ID
    line += ',';
    append_text(line, card, time_card::kExportID);  // File #
    line += ',';
    line += pay_number;  // Pay #
    line += ',';
    append_text(line, card, time_card::kShift);  // Shift
    line += ',';
    csv_hours().append_to(line, regular / 60);  // Reg Hours
    line += ',';
    csv_hours().append_to(line, overtime1 / 60);  // O/T Hours
    for (const ExtraCategory& extra : kExtraCategories) {
      const std::string& pay_code = settings.at(extra.pay_code);
      if (pay_code.empty()) continue;
      const double minutes =
          extra.pay_code == kOT2PayCode ? overtime2 : get_number(card, extra.property);
      if (minutes == 0) continue;
      line += ',';
      line += pay_code;  // <name> Code
      line += ',';
      csv_hours().append_to(line, minutes / 60);  // <name> Amount
    }
    line += layout::kLineEnd;
    text += line;
  });
}

bool ADP7::Setup() {
  return guarded(source_of("Setup"), [&] {
    const bool saved = open_setup_form(frmADP7());
    return saved;
  });
}

void ADP7::ValidateSetupData(std::string_view psSetup) {
  const std::string source = source_of("ValidateSetupData");
  guarded(source, [&] {
    const SettingsFields fields(psSetup);
    for (std::size_t position = 0; position < fields.size(); ++position) {
      const std::string& field = fields.at(position);
      switch (position) {
        case kBatchSeqNum:
          if (!field_in_range(field, 0, kHighestBatchSeqNum))
            raise(error_number(position), source, kBatchSeqNumDescription);
          break;
        case kOT2PayCode:
        case kVACPayCode:
        case kHOLPayCode:
        case kSICPayCode:
        case kOTHPayCode:
          // An empty pay code fails here too, although the export would simply leave
          // that category out.
          if (text_length(field) < 2) raise(error_number(position), source, kPayCodeDescription);
          break;
        default:
          break;  // company code, pay number, code names and format are not checked
      }
    }
  });
}

void ADP7::run_check() {
  ValidateSetupData(setup_data());
}

}  // namespace zorvat::formats
