#include "intuitpac/intuitpac_reader.h"

#include "intuitpac/intuitpac.h"
#include "intuitpac/intuitpac_layout.h"
#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

namespace layout = intuitpac_layout;
constexpr std::string_view kFull = "IntuitPAC";
constexpr std::string_view kJr = "IntuitPAC Jr";

// The columns every record starts with; returns the employee part.
std::string_view record_start(Cursor& cursor, const SettingsFields& settings) {
  const std::string& company = settings.at(IntuitPAC::kCompanyName);
  if (text_length(company) < 4) cursor.fail("the settings' company name code is too short");
  cursor.expect(layout::kCompanyPart, text_right(company, 4));
  cursor.expect(layout::kColumn5);
  const std::string_view employee = cursor.take(layout::kEmployeePart);
  cursor.expect(layout::kColumn10);
  return employee;
}

// A signed amount: six digits and a last character carrying the last digit and sign.
std::int64_t overpunched(Cursor& cursor, const Column& column) {
  const std::size_t start = cursor.position();
  const std::string_view text = cursor.take(column);
  const std::string_view digits = text_left(text, column.width - 1);
  const std::string_view last = text.substr(digits.size());
  const std::int64_t leading = cursor.number_in(digits, start, 0, "an amount's digits");
  const std::size_t punch =
      last.size() == 1 ? layout::kOverPunchCharacters.find(last.front()) : std::string_view::npos;
  if (digits.find('-') != std::string_view::npos || punch == std::string_view::npos)
    cursor.fail_at(start + digits.size(), "not an overpunched amount");
  const std::int64_t magnitude = leading * 10 + static_cast<std::int64_t>(punch % 10);
  return punch >= 10 ? -magnitude : magnitude;
}

// A full-edition record: its pay code and amount columns, in pairs, and its fill.
struct AmountColumns {
  const Column& pay_code;
  const Column& amount;
};
constexpr AmountColumns kAmountColumns[] = {{layout::kPayCode1st, layout::kAmount1st},
                                            {layout::kPayCode2nd, layout::kAmount2nd},
                                            {layout::kPayCode3rd, layout::kAmount3rd},
                                            {layout::kPayCode4th, layout::kAmount4th}};

void read_full_record(const Line& line, std::size_t amounts, const Column& fill,
                      const SettingsFields& settings, FileContents& contents) {
  Cursor cursor(kFull, line);
  const std::string_view employee = record_start(cursor, settings);
  cursor.expect(layout::kColumns11To13);
  // The shift is written as it stands, so its width is what the amounts leave.
  std::string_view text = line.text;
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  const std::size_t used = kAmountColumns[amounts - 1].amount.last() - layout::kShift.width;
  const std::size_t length = text_length(text);
  if (length < used) cursor.fail("the record is too short for its amounts");
  cursor.take(layout::kShift, length - used);
  for (std::size_t i = 0; i < amounts; ++i) {
    const std::string_view code = cursor.take(kAmountColumns[i].pay_code);
    contents.add_hundredths(employee, code, overpunched(cursor, kAmountColumns[i].amount),
                            line.number);
  }
  cursor.expect_fill(fill);
}

void read_jr_record(const Line& line, const SettingsFields& settings, FileContents& contents) {
  Cursor cursor(kJr, line);
  const std::string_view employee = record_start(cursor, settings);
  contents.add_hundredths(employee, "REG", cursor.number(layout::kJrRegular), line.number);
  contents.add_hundredths(employee, "OT1", cursor.number(layout::kJrOvertime1), line.number);
  const AmountColumns kCoded[] = {{layout::kJrPayCodeOT2, layout::kJrOvertime2},
                                  {layout::kJrPayCodeVAC, layout::kJrVacation},
                                  {layout::kJrPayCodeHOL, layout::kJrHoliday},
                                  {layout::kJrPayCodeSIC, layout::kJrSick},
                                  {layout::kJrPayCodeOTH, layout::kJrOther}};
  for (const AmountColumns& coded : kCoded) {
    const std::string_view code = cursor.take(coded.pay_code);
    contents.add_hundredths(employee, code, cursor.number(coded.amount), line.number);
  }
  cursor.expect_fill(layout::kJrFill);
}

}  // namespace

FileContents read_intuitpac_file(std::string_view bytes, const SettingsFields& settings,
                                 bool jr_edition) {
  FileContents contents;
  contents.layout = jr_edition ? "Jr" : "full";
  const std::vector<Line> lines =
      split_lines(jr_edition ? kJr : kFull, bytes, layout::kRecordEnd, true);
  if (jr_edition) {
    for (const Line& line : lines) read_jr_record(line, settings, contents);
    return contents;
  }
  if (lines.size() % 2 != 0)
    throw ReadError(kFull, lines.size(), 1, "every employee has two records");
  for (std::size_t i = 0; i < lines.size(); i += 2) {
    read_full_record(lines[i], 3, layout::kHoursFill, settings, contents);
    read_full_record(lines[i + 1], 4, layout::kMiscellaneousFill, settings, contents);
    if (contents.records.back().employee != contents.records[contents.records.size() - 4].employee)
      throw ReadError(kFull, lines[i + 1].number, 6, "the second record is another employee's");
  }
  return contents;
}

}  // namespace zorvat::formats
