#include "intuitpac/intuitpac.h"

#include <cstdlib>
#include <limits>

#include "intuitpac/intuitpac_form.h"
#include "intuitpac/intuitpac_layout.h"
#include "zorvat/automation.h"
#include "zorvat/columns.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/time_card.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {
namespace {

namespace layout = intuitpac_layout;

constexpr std::string_view kFileFilter = "Intuit PC Access Import File (*.clk) | *.clk";

// The editions that take the short layout; every other title, unknown ones included,
// takes the full layout. Titles compare exactly, case included.
constexpr std::string_view kJrTitles[] = {
    "Intuit PC Access Jr Import File V2.0",
    "Premier Import File V2.0",
    "QuikPay Import File V2.0",
    "Wells Fargo Import File V2.0",
};

constexpr std::string_view kCompanyNameLength =
    "The Company Name for this export must be either 7 or 9 characters in length\r\n";
constexpr std::string_view kCompanyNameJr =
    "If 9 character format, the fourth character must be a 'Q'.";
constexpr std::string_view kCompanyNameFull =
    "If 9 character format, the fourth character must be a 'C' or 'E'.";
constexpr std::string_view kPayCodeDescription = "Pay Code value must be between 0 and 99";
constexpr double kLowestPayCode = 0;
constexpr double kHighestPayCode = 99;

constexpr auto kAmountWidth = static_cast<std::int16_t>(layout::kAmount1st.width);

// The text from its fourth character from the end: its last four characters. Text
// of fewer than four characters puts the start at 0 or before, which raises 5
// "Invalid procedure call or argument"; there is deliberately no guard.
std::string last_four(const std::string& text) {
  if (text_length(text) < 4) raise_runtime(rt::kInvalidProcedureCall);
  return std::string(text_right(text, 4));
}

// The employee part: the last four characters of the number's text, zero-filled to
// four digits where they read as a number. A Long of 1000 or more is written in four
// digits or more, so its last four characters are the number's last four digits.
void append_employee_part(std::string& out, const Variant& number) {
  if (number.type() == Variant::Type::Long && number.as_long() >= 1000) {
    column_pattern<layout::kEmployeePart>().append_to(
        out, static_cast<double>(number.as_long() % 10000));
    return;
  }
  column_pattern<layout::kEmployeePart>().append_to(out, Variant(last_four(to_text(number))));
}

double hundredths(double minutes) {
  return minutes / 60.0 * 100.0;
}

// Fills the record that starts at `record_start` in `text` with blanks to 80 columns
// and ends it. A record already wider makes the count of blanks negative, which
// raises 5.
void end_record(std::string& text, std::size_t record_start) {
  append_spaces(text,
                static_cast<long>(layout::kRecordWidth) -
                    static_cast<long>(text_length(std::string_view(text).substr(record_start))));
  text += layout::kRecordEnd;
}

bool company_name_fits(const std::string& code, bool jr) {
  const std::size_t length = text_length(code);
  if (length == 7) return true;
  if (length != 9) return false;
  const char fourth = code[text_left(code, 3).size()];  // the fourth letter
  return jr ? fourth == 'Q' : fourth == 'C' || fourth == 'E';
}

}  // namespace

bool IntuitPAC::Execute(const Variant& pcTimeCards) {
  return guarded(source_of("Execute"), [&] {
    ValidateSetupData(setup_data());
    settings_ = SettingsFields(setup_data());
    jr_ = IsJr(Title);
    company_part_.reset();
    pay_codes_.fill(std::nullopt);
    deductions_.fill(std::nullopt);

    // The whole file is built before the dialog; it has no header and no trailer.
    std::string text;
    for_each_record(pcTimeCards, text, [&](const Variant& card) { EmployeeRecord(card, text); });

    if (!save_text({std::string(kFileFilter), {}}, text)) return false;
    SetupData(settings_.join());
    return true;
  });
}

bool IntuitPAC::Setup() {
  return guarded(source_of("Setup"), [&] {
    const bool saved = open_setup_form(frmIntuitPAC());
    // A saved string goes through the check at once, so that a bad field is raised
    // from Setup.
    if (saved) ValidateSetupData(SetupData());
    return saved;
  });
}

void IntuitPAC::ValidateSetupData(std::string_view psSetup) {
  const std::string source = source_of("ValidateSetupData");
  guarded(source, [&] {
    const SettingsFields fields(psSetup);
    // Missing fields are not checked; the deduction flags after the pay codes never.
    for (std::size_t position = 0; position < fields.size() && position <= kOTHPayCode;
         ++position) {
      const std::string& field = fields.at(position);
      if (position == kCompanyName) {
        const bool jr = IsJr(Title);
        if (!company_name_fits(field, jr)) {
          std::string description(kCompanyNameLength);
          description += jr ? kCompanyNameJr : kCompanyNameFull;
          raise(static_cast<long>(IntuitPACErrorsEnum::errCompanyName), source, description);
        }
      } else if (!field_in_range(field, kLowestPayCode, kHighestPayCode)) {
        raise(static_cast<long>(IntuitPACErrorsEnum::errCompanyName) + static_cast<long>(position),
              source, kPayCodeDescription);
      }
    }
  });
}

bool IntuitPAC::IsJr(std::string_view psTitle) const {
  return guarded(source_of("IsJr"), [&] {
    for (std::string_view title : kJrTitles)
      if (psTitle == title) return true;
    return false;
  });
}

void IntuitPAC::run_check() {
  ValidateSetupData(setup_data());
}

void IntuitPAC::EmployeeRecord(const Variant& card, std::string& text) {
  guarded(employee_record_source_, [&] {
    // Every card yields its records, also one with no time at all.
    const std::string& company = company_part();
    std::string employee;
    append_employee_part(employee, get_property(card, time_card::kNumber));

    // The records are written straight into the file, each from where it starts.
    std::size_t record_start = text.size();
    auto put_pay_code = [&](Position position) { text += pay_code(position); };

    auto start_record = [&] {
      text += company;                          //  1-4   company part, "&&&&"
      append_literal(text, layout::kColumn5);   //  5     "4"
      text += employee;                         //  6-9   employee part, "0000"
      append_literal(text, layout::kColumn10);  // 10     "8"
    };

    if (jr_) {
      // One record of 70 columns: plain hundredths, no shift, no signs.
      auto amount = [&](const FormatPattern& pattern, const PropertyName& category) {
        pattern.append_to(text, hundredths(get_number(card, category)));
      };
      start_record();                                                   //  1-10
      amount(column_pattern<layout::kJrRegular>(), time_card::kREG);    // 11-15
      amount(column_pattern<layout::kJrOvertime1>(), time_card::kOT1);  // 16-20
      put_pay_code(kPayCode2);                                          // 21-22
      amount(column_pattern<layout::kJrOvertime2>(), time_card::kOT2);  // 23-30
      put_pay_code(kVACPayCode);                                        // 31-32
      amount(column_pattern<layout::kJrVacation>(), time_card::kVAC);   // 33-40
      put_pay_code(kHOLPayCode);                                        // 41-42
      amount(column_pattern<layout::kJrHoliday>(), time_card::kHOL);    // 43-50
      put_pay_code(kSICPayCode);                                        // 51-52
      amount(column_pattern<layout::kJrSick>(), time_card::kSIC);       // 53-60
      put_pay_code(kOTHPayCode);                                        // 61-62
      amount(column_pattern<layout::kJrOther>(), time_card::kOTH);      // 63-70
      end_record(text, record_start);                                   // 71-80
      return;
    }

    // Two records with overpunched amounts. The second carries the four
    // miscellaneous categories, each negated when it is exported as a deduction.
    const std::string shift = to_concat_text(get_property(card, time_card::kShift));
    auto amount = [&](const PropertyName& category) {
      OverPunch(kAmountWidth, double_to_long(get_number(card, category)), text);
    };
    auto signed_amount = [&](const PropertyName& category, Position deduct) {
      const double minutes = get_number(card, category);
      OverPunch(kAmountWidth, double_to_long(deduction(deduct) ? -minutes : minutes), text);
    };
    // The shift as it stands: a wider one moves every column after it.
    auto start_full_record = [&] {
      start_record();                                //  1-10
      append_literal(text, layout::kColumns11To13);  // 11-13
      text += shift;                                 // 14     shift
    };

    start_full_record();             //  1-14
    put_pay_code(kPayCode0);         // 15-16  regular pay code
    amount(time_card::kREG);         // 17-23  regular
    put_pay_code(kPayCode1);         // 24-25  overtime 1 pay code
    amount(time_card::kOT1);         // 26-32  overtime 1
    put_pay_code(kPayCode2);         // 33-34  overtime 2 pay code
    amount(time_card::kOT2);         // 35-41  overtime 2
    end_record(text, record_start);  // 42-80  blanks

    record_start = text.size();
    start_full_record();                         //  1-14
    put_pay_code(kVACPayCode);                   // 15-16  vacation pay code
    signed_amount(time_card::kVAC, kVACDeduct);  // 17-23  vacation
    put_pay_code(kHOLPayCode);                   // 24-25  holiday pay code
    signed_amount(time_card::kHOL, kHOLDeduct);  // 26-32  holiday
    put_pay_code(kSICPayCode);                   // 33-34  sick pay code
    signed_amount(time_card::kSIC, kSICDeduct);  // 35-41  sick
    put_pay_code(kOTHPayCode);                   // 42-43  other pay code
    signed_amount(time_card::kOTH, kOTHDeduct);  // 44-50  other
    end_record(text, record_start);              // 51-80  blanks
  });
}

const std::string& IntuitPAC::company_part() {
  if (!company_part_) {
    std::string part;
    column_pattern<layout::kCompanyPart>().append_to(
        part, Variant(last_four(settings_.at(kCompanyName))));
    company_part_ = std::move(part);
  }
  return *company_part_;
}

const std::string& IntuitPAC::pay_code(Position position) {
  std::optional<std::string>& cached = pay_codes_[position];
  if (!cached) {
    std::string code;
    column_pattern<layout::kPayCode1st>().append_to(code, Variant(settings_.at(position)));
    cached = std::move(code);
  }
  return *cached;
}

bool IntuitPAC::deduction(Position flag) {
  std::optional<bool>& cached = deductions_[flag];
  if (!cached) cached = field_equals_number(settings_.at(flag), 1);
  return *cached;
}

void IntuitPAC::OverPunch(std::int16_t length, std::int32_t minutes, std::string& record) const {
  guarded(over_punch_source_, [&] {
    const std::size_t offset = minutes < 0 ? 10 : 0;
    // The lowest Long has no positive counterpart.
    if (minutes == std::numeric_limits<std::int32_t>::min()) raise_runtime(rt::kOverflow);
    const double magnitude = hundredths(std::abs(minutes));

    // Hundredths rounded to a whole number and zero-filled to the field's length.
    if (length == kAmountWidth) {
      column_pattern<layout::kAmount1st>().append_to(record, magnitude);
    } else {
      if (length < 1) raise_runtime(rt::kInvalidProcedureCall);
      FormatPattern(std::string(static_cast<std::size_t>(length), '0'))
          .append_to(record, magnitude);
    }
    const std::size_t last = static_cast<std::size_t>(record.back() - '0');
    record.back() = layout::kOverPunchCharacters[last + offset];
  });
}

}  // namespace zorvat::formats
