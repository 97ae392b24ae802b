#include "primepay/primepay_reader.h"

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

}  // namespace

FileContents read_primepay_file(std::string_view bytes) {
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

  for (std::size_t i = 1; i < lines.size(); ++i) {
    const Line& line = lines[i];
    Cursor cursor(kLayout, line);
    if (text_length(line.text) != layout::kDetailWidth)
      cursor.fail("a detail line is " + std::to_string(layout::kDetailWidth) + " columns wide");
    cursor.expect(layout::kDetailTag);
    FileRecord record;
    record.employee = cursor.take(layout::kEmployeeNumber);
    cursor.expect(layout::kColumn8);
    // Regular time has its hundredths from column 9; another type's detail is blank
    // there.
    if (cursor.rest().starts_with(" ")) {
      cursor.expect_blanks(layout::kOtherLead);
      record.amount = from_hundredths(cursor.number(layout::kOtherHundredths));
      record.code = cursor.take(layout::kPayCode);
      cursor.expect_blanks(layout::kOtherFill);
    } else {
      record.code = "REG";
      record.amount = from_hundredths(cursor.number(layout::kRegularHundredths));
      cursor.expect_blanks(layout::kRegularFill);
    }
    const std::size_t batch_start = cursor.position();
    const std::string_view batch = cursor.take(layout::kBatch);
    if (batch != "   ") {
      record.batch = cursor.number_in(batch, batch_start, 0, layout::kBatch.name);
      contents.batch = record.batch;
    }
    cursor.expect_end();
    record.line = line.number;
    contents.records.push_back(std::move(record));
  }
  if (contents.batch) contents.controls.emplace_back("batch number", *contents.batch);
  return contents;
}

}  // namespace zorvat::formats
