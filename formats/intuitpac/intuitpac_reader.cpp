#include "intuitpac/intuitpac_reader.h"

#include "intuitpac/intuitpac.h"
#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

constexpr std::string_view kFull = "IntuitPAC";
constexpr std::string_view kJr = "IntuitPAC Jr";
constexpr std::size_t kRecordWidth = 80;
constexpr std::size_t kAmountWidth = 7;
constexpr std::size_t kPayCodeWidth = 2;
// Company part, "4", employee part, "8" and three blanks.
constexpr std::size_t kFullPrefixWidth = 13;
constexpr std::string_view kOverPunchCharacters = "{ABCDEFGHI}JKLMNOPQR";

// Company part, "4", employee part and "8"; returns the employee part.
std::string_view record_start(Cursor& cursor, const SettingsFields& settings) {
  const std::string& company = settings.at(IntuitPAC::kCompanyName);
  if (text_length(company) < 4) cursor.fail("the settings' company name code is too short");
  cursor.expect(text_right(company, 4), "the company part");
  cursor.expect("4", "column 5");
  const std::string_view employee = cursor.take(4, "the employee part");
  cursor.expect("8", "column 10");
  return employee;
}

// A signed amount: six digits and a last character carrying the last digit and sign.
std::int64_t overpunched(Cursor& cursor) {
  const std::size_t start = cursor.position();
  const std::string_view text = cursor.take(kAmountWidth, "an amount");
  const std::string_view digits = text_left(text, kAmountWidth - 1);
  const std::string_view last = text.substr(digits.size());
  const std::int64_t leading = cursor.number_in(digits, start, 0, "an amount's digits");
  const std::size_t punch =
      last.size() == 1 ? kOverPunchCharacters.find(last.front()) : std::string_view::npos;
  if (digits.find('-') != std::string_view::npos || punch == std::string_view::npos)
    cursor.fail_at(start + digits.size(), "not an overpunched amount");
  const std::int64_t magnitude = leading * 10 + static_cast<std::int64_t>(punch % 10);
  return punch >= 10 ? -magnitude : magnitude;
}

void add(FileContents& contents, std::string_view employee, std::string_view code,
         std::int64_t hundredths, const Line& line) {
  FileRecord record;
  record.employee = employee;
  record.code = code;
  record.amount = from_hundredths(hundredths);
  record.line = line.number;
  contents.records.push_back(std::move(record));
}

void read_full_record(const Line& line, std::size_t amounts, const SettingsFields& settings,
                      FileContents& contents) {
  Cursor cursor(kFull, line);
  const std::string_view employee = record_start(cursor, settings);
  cursor.expect("   ", "the blanks of columns 11-13");
  // The shift is written as it stands, so its width is what the amounts leave.
  std::string_view text = line.text;
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  const std::size_t used = kFullPrefixWidth + amounts * (kPayCodeWidth + kAmountWidth);
  const std::size_t length = text_length(text);
  if (length < used) cursor.fail("the record is too short for its amounts");
  cursor.take(length - used, "the shift");
  for (std::size_t i = 0; i < amounts; ++i) {
    const std::string_view code = cursor.take(kPayCodeWidth, "a pay code");
    add(contents, employee, code, overpunched(cursor), line);
  }
  cursor.expect_blank_fill(kRecordWidth);
  if (text_length(line.text) != kRecordWidth) cursor.fail("a record is 80 columns wide");
}

void read_jr_record(const Line& line, const SettingsFields& settings, FileContents& contents) {
  Cursor cursor(kJr, line);
  const std::string_view employee = record_start(cursor, settings);
  add(contents, employee, "REG", cursor.number(5, 0, "regular hundredths"), line);
  add(contents, employee, "OT1", cursor.number(5, 0, "overtime hundredths"), line);
  for (int i = 0; i < 5; ++i) {
    const std::string_view code = cursor.take(kPayCodeWidth, "a pay code");
    add(contents, employee, code, cursor.number(8, 0, "hundredths"), line);
  }
  cursor.expect_blank_fill(kRecordWidth);
  if (text_length(line.text) != kRecordWidth) cursor.fail("a record is 80 columns wide");
}

}  // namespace

FileContents read_intuitpac_file(std::string_view bytes, const SettingsFields& settings,
                                 bool jr_edition) {
  FileContents contents;
  contents.layout = jr_edition ? "Jr" : "full";
  const std::vector<Line> lines = split_lines(jr_edition ? kJr : kFull, bytes, "\r\n", true);
  if (jr_edition) {
    for (const Line& line : lines) read_jr_record(line, settings, contents);
    return contents;
  }
  if (lines.size() % 2 != 0)
    throw ReadError(kFull, lines.size(), 1, "every employee has two records");
  for (std::size_t i = 0; i < lines.size(); i += 2) {
    read_full_record(lines[i], 3, settings, contents);
    read_full_record(lines[i + 1], 4, settings, contents);
    if (contents.records.back().employee != contents.records[contents.records.size() - 4].employee)
      throw ReadError(kFull, lines[i + 1].number, 6, "the second record is another employee's");
  }
  return contents;
}

}  // namespace zorvat::formats
