#include "primepay/primepay_reader.h"

#include <optional>

#include "primepay/primepay_layout.h"

#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

namespace layout = primepay_layout;
constexpr std::string_view kLayout = "PrimePay";

CivilDate date_column(Cursor& cursor, const Column& column) {
  const std::size_t start = cursor.position();
  const auto date = parse_short_date(cursor.take(column));
  if (!date) cursor.fail_at(start, std::string(column.name) + " is not a date (mm/dd/yy)");
  return *date;
}

// A detail line read with an employee number `employee_width` letters wide.
FileRecord read_detail(const Line& line, std::size_t employee_width) {
  Cursor cursor(kLayout, line);
  cursor.expect(layout::kDetailTag);
  FileRecord record;
  record.employee = cursor.take(layout::kEmployeeNumber, employee_width);
  cursor.expect(layout::kColumn8);
  // The hundredths take what the other columns leave of the line.
  const std::size_t length = text_length(line.text);
  const std::size_t used = cursor.column();
  auto hundredths = [&](const Column& column, std::size_t after) {
    if (length < used + after + column.width)
      cursor.fail("a detail line is " + std::to_string(layout::kDetailWidth) + " columns wide");
    const std::size_t start = cursor.position();
    return from_hundredths(
        cursor.number_in(cursor.take(column, length - used - after), start, 0, column.name));
  };
  // Regular time has its hundredths from column 9; another type's detail is blank
  // there.
  if (cursor.rest().starts_with(" ")) {
    cursor.expect_blanks(layout::kOtherLead);
    record.amount =
        hundredths(layout::kOtherHundredths, layout::kOtherLead.width + layout::kPayCode.width +
                                                 layout::kOtherFill.width + layout::kBatch.width);
    record.code = cursor.take(layout::kPayCode);
    cursor.expect_blanks(layout::kOtherFill);
  } else {
    record.code = "REG";
    record.amount =
        hundredths(layout::kRegularHundredths, layout::kRegularFill.width + layout::kBatch.width);
    cursor.expect_blanks(layout::kRegularFill);
  }
  const std::size_t batch_start = cursor.position();
  const std::string_view batch = cursor.take(layout::kBatch);
  if (batch != "   ") record.batch = cursor.number_in(batch, batch_start, 0, layout::kBatch.name);
  cursor.expect_end();
  record.line = line.number;
  return record;
}

}  // namespace

FileContents read_primepay_file(std::string_view bytes,
                                const std::vector<std::string>& employee_numbers) {
  FileContents contents;
  contents.layout = kLayout;
  const std::vector<Line> lines = split_lines(kLayout, bytes, layout::kLineEnd, true);
  if (lines.empty()) throw ReadError(kLayout, 1, 1, "the header line is missing");

  Cursor header(kLayout, lines.front());
  header.expect(layout::kHeaderTag);
  contents.date = date_column(header, layout::kExportDate);
  header.take(layout::kRecorderName);
  header.expect(layout::kColumn55);
  contents.period_end = date_column(header, layout::kPeriodEnd);
  contents.controls.emplace_back("period end", date_number(*contents.period_end));
  header.expect_end();

  const std::vector<std::size_t> widths =
      written_widths(layout::kEmployeeNumber.width, employee_numbers);
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const Line& line = lines[i];
    // The employee number and the hundredths are written as they stand, wider than
    // their columns when they have more digits (or narrower, a number given as short
    // text), which moves what follows: the detail is read with the employee number's
    // width that makes the whole line read, its declared width first, then the widths
    // the cards' numbers are written in.
    std::optional<ReadError> first_problem;
    std::optional<FileRecord> record;
    for (std::size_t width : widths) {
      try {
        record = read_detail(line, width);
        break;
      } catch (const ReadError& problem) {
        if (!first_problem) first_problem = problem;
      }
    }
    if (!record) throw *first_problem;
    if (record->batch) contents.batch = record->batch;
    contents.records.push_back(std::move(*record));
  }
  if (contents.batch) contents.controls.emplace_back("batch number", *contents.batch);
  return contents;
}

}  // namespace zorvat::formats
