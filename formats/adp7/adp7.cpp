#include "adp7/adp7.h"

#include <cstdint>

#include "adp7/adp7_form.h"
#include "zorvat/automation.h"
#include "zorvat/columns.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/time_card.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {
namespace {

constexpr std::string_view kBatchSeqNumDescription =
    "Batch Sequence Number must be between 0 and 99";
constexpr std::string_view kPayCodeDescription =
    "Paycode field must be at least 2 characters in length";

constexpr std::string_view kEpipFormat = "EPIP";
constexpr std::string_view kLineEnd = "\r\n";
constexpr double kHighestBatchSeqNum = 99;

// The EPIP header and trailer are filled with blanks to this length; the header then
// takes "7" in column 80.
constexpr long kEpipFilledLength = 79;

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

const FormatPattern& two_digits() {
  static const FormatPattern pattern("00");
  return pattern;
}
const FormatPattern& line_hundredths() {
  static const FormatPattern pattern("0000000");
  return pattern;
}
const FormatPattern& total_hundredths() {
  static const FormatPattern pattern("00000000000");
  return pattern;
}
const FormatPattern& csv_hours() {
  static const FormatPattern pattern("#####.00");
  return pattern;
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
    two_digits().append_to(batch, Variant(settings.at(kBatchSeqNum)));
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
  line += "A001";                                                                 // 1-4  "A001"
  line += settings.at(kCompanyCode);                                              // company code
  line += "002";                                                                  // tag 002:
  two_digits().append_to(line, Variant(settings.at(kBatchSeqNum)));               //   batch, "00"
  line += 'z';                                                                    // end of fields
  append_spaces(line, kEpipFilledLength - static_cast<long>(text_length(line)));  // to 79
  line += '7';                                                                    // 80   "7"
  line += kLineEnd;
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

    // Employee line: tagged fields, not padded.
    line.clear();
    line += "B003";                                                       // tag 003:
    append_text(line, card, time_card::kExportID);                        //   export id
    line += "004";                                                        // tag 004:
    line += pay_number;                                                   //   pay number
    line += "010";                                                        // tag 010:
    two_digits().append_to(line, get_property(card, time_card::kShift));  //   shift, "00"
    if (regular != 0) {
      line += "012";                                           // tag 012:
      line_hundredths().append_to(line, hundredths(regular));  //   regular
      line += ' ';
    }
    if (overtime1 != 0) {
      line += "013";                                             // tag 013:
      line_hundredths().append_to(line, hundredths(overtime1));  //   overtime 1
      line += ' ';
    }
    if (overtime2 != 0) {
      line += "016";                                             // tag 016:
      line += ot2_pay_code;                                      //   pay code,
      line_hundredths().append_to(line, hundredths(overtime2));  //   overtime 2
      line += ' ';
    }
    line += 'z';
    line += kLineEnd;
    text += line;

    regular_total += regular;
    overtime1_total += overtime1;
    overtime2_total = double_to_integer(overtime2_total + overtime2);
  });

  // Trailer: the totals, filled with blanks to 79 characters. The overtime 2 total
  // has never been followed by a blank.
  line.clear();
  line += 'C';  // 1    "C"
  if (regular_total != 0) {
    line += "030";                                                  // tag 030:
    total_hundredths().append_to(line, hundredths(regular_total));  // regular
    line += ' ';
  }
  if (overtime1_total != 0) {
    line += "031";                                                    // tag 031:
    total_hundredths().append_to(line, hundredths(overtime1_total));  // overtime 1
    line += ' ';
  }
  if (overtime2_total != 0) {
    line += "032";                                                    // tag 032:
    total_hundredths().append_to(line, hundredths(overtime2_total));  // overtime 2
  }
  line += 'z';
  append_spaces(line, kEpipFilledLength - static_cast<long>(text_length(line)));  // to 79
  line += kLineEnd;
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
  text += kLineEnd;

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
    line += kLineEnd;
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
