#include "intuitpac/intuitpac_reader.h"

#include <array>
#include <optional>
#include <span>

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

// The Jr record's amounts, each with the pay code column before it (none before the
// first two) and the settings field that holds that code.
struct JrAmount {
  const Column* pay_code;
  const Column& amount;
  IntuitPAC::Position code_field;
};
constexpr JrAmount kJrAmounts[] = {
    {nullptr, layout::kJrRegular, IntuitPAC::kPayCode0},
    {nullptr, layout::kJrOvertime1, IntuitPAC::kPayCode1},
    {&layout::kJrPayCodeOT2, layout::kJrOvertime2, IntuitPAC::kPayCode2},
    {&layout::kJrPayCodeVAC, layout::kJrVacation, IntuitPAC::kVACPayCode},
    {&layout::kJrPayCodeHOL, layout::kJrHoliday, IntuitPAC::kHOLPayCode},
    {&layout::kJrPayCodeSIC, layout::kJrSick, IntuitPAC::kSICPayCode},
    {&layout::kJrPayCodeOTH, layout::kJrOther, IntuitPAC::kOTHPayCode}};
constexpr std::size_t kJrAmountCount = std::size(kJrAmounts);

// Reads the Jr amounts from the cursor, each `extra` letters wider than its column (a
// sign, or digits the column has no room for), and the fill. With `settings`, each pay
// code must be the one the settings give its column.
void read_jr_amounts(Cursor& cursor, std::string_view employee,
                     const std::array<std::size_t, kJrAmountCount>& extra, std::size_t line,
                     const SettingsFields* settings, FileContents& contents) {
  for (std::size_t i = 0; i < kJrAmountCount; ++i) {
    const JrAmount& amount = kJrAmounts[i];
    const std::size_t code_start = cursor.position();
    const std::string_view code =
        amount.pay_code ? cursor.take(*amount.pay_code) : (i == 0 ? "REG" : "OT1");
    if (amount.pay_code && settings &&
        code != format(Variant(settings->at(amount.code_field)), amount.pay_code->pattern))
      cursor.fail_at(code_start, "not the settings' pay code");
    const std::size_t start = cursor.position();
    const std::string_view text = cursor.take(amount.amount, amount.amount.width + extra[i]);
    // A zero-filled number is wider than its column only when its digits need it.
    const std::string_view digits = text.starts_with('-') ? text.substr(1) : text;
    if (digits.size() > amount.amount.width && digits.starts_with('0'))
      cursor.fail_at(start, "\"" + std::string(text) + "\" is wider than " +
                                std::string(amount.amount.name) + " with a leading zero");
    contents.add_hundredths(employee, code, cursor.number_in(text, start, 0, amount.amount.name),
                            line);
  }
  cursor.expect_fill(layout::kJrFill);
}

// A Jr record. The amounts are written as they stand: one with more digits than its
// column holds, or a sign, is wider and moves the columns after it, and the fill to 80
// columns is shorter by as much. Where the record is that much wider, the ways of
// sharing the extra letters among the amounts are tried, the earlier amounts (the
// larger, regular time first) taking more first, until one reads with the settings'
// pay codes in their columns, or else one reads at all.
void read_jr_record(const Line& line, const SettingsFields& settings, FileContents& contents) {
  Cursor cursor(kJr, line);
  const std::string_view employee = record_start(cursor, settings);
  std::string_view text = line.text;
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  const std::size_t length = text_length(text);
  const std::size_t amounts_end = layout::kJrFill.first - 1;
  // A record can be no more than its 80 columns wide; a wider one is read as it
  // stands, to fail where it leaves the layout.
  const std::size_t wider =
      length > amounts_end && length <= layout::kJrFill.last() ? length - amounts_end : 0;
  std::array<std::size_t, kJrAmountCount> extra{};
  std::optional<ReadError> first_problem;
  const std::size_t records = contents.records.size();
  const SettingsFields* codes_of = &settings;
  // Shares `left` among the amounts from `i` on; true once the record reads.
  auto share = [&](auto&& self, std::size_t i, std::size_t left) -> bool {
    if (i + 1 == kJrAmountCount) {
      extra[i] = left;
      Cursor attempt = cursor;
      try {
        read_jr_amounts(attempt, employee, extra, line.number, codes_of, contents);
        return true;
      } catch (const ReadError& problem) {
        contents.records.resize(records);
        if (!first_problem) first_problem = problem;
        return false;
      }
    }
    for (std::size_t taken = left + 1; taken-- > 0;) {
      extra[i] = taken;
      if (self(self, i + 1, left - taken)) return true;
    }
    return false;
  };
  if (wider > 0) {
    if (share(share, 0, wider)) return;
    codes_of = nullptr;
    if (share(share, 0, wider)) return;
  }
  // Every amount in its column (a sign widening it), and the message where that fails.
  contents.add_hundredths(employee, "REG", cursor.number(layout::kJrRegular), line.number);
  contents.add_hundredths(employee, "OT1", cursor.number(layout::kJrOvertime1), line.number);
  for (const JrAmount& amount : std::span(kJrAmounts).subspan(2)) {
    const std::string_view code = cursor.take(*amount.pay_code);
    contents.add_hundredths(employee, code, cursor.number(amount.amount), line.number);
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
