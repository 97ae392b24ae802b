#include "primepay/primepay_reader.h"

#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

constexpr std::string_view kLayout = "PrimePay";
constexpr std::size_t kDetailWidth = 65;

CivilDate date_column(Cursor& cursor, std::string_view what) {
  const std::size_t start = cursor.position();
  const auto date = parse_short_date(cursor.take(8, what));
  if (!date) cursor.fail_at(start, std::string(what) + " is not a date (mm/dd/yy)");
  return *date;
}

}  // namespace

FileContents read_primepay_file(std::string_view bytes) {
  FileContents contents;
  contents.layout = kLayout;
  const std::vector<Line> lines = split_lines(kLayout, bytes, "\r\n", true);
  if (lines.empty()) throw ReadError(kLayout, 1, 1, "the header line is missing");

  Cursor header(kLayout, lines.front());
  header.expect("HPTA10001", "the header tag");
  contents.date = date_column(header, "the export date");
  header.take(37, "the recorder name");
  header.expect("N", "column 55");
  contents.period_end = date_column(header, "the period end");
  contents.controls.emplace_back("period end", date_number(*contents.period_end));
  header.expect_end();

  for (std::size_t i = 1; i < lines.size(); ++i) {
    const Line& line = lines[i];
    Cursor cursor(kLayout, line);
    if (text_length(line.text) != kDetailWidth) cursor.fail("a detail line is 65 columns wide");
    cursor.expect("D", "the detail tag");
    FileRecord record;
    record.employee = cursor.take(6, "the employee number");
    cursor.expect(" ", "column 8");
    if (cursor.rest().starts_with(" ")) {
      cursor.expect_blanks(11, "columns 9-19");
      record.amount = from_hundredths(cursor.number(7, 0, "hundredths of hours"));
      record.code = cursor.take(2, "the pay code");
      cursor.expect_blanks(34, "columns 29-62");
    } else {
      record.code = "REG";
      record.amount = from_hundredths(cursor.number(6, 0, "regular hundredths"));
      cursor.expect_blanks(48, "columns 15-62");
    }
    const std::size_t batch_start = cursor.position();
    const std::string_view batch = cursor.take(3, "the batch");
    if (batch != "   ") {
      record.batch = cursor.number_in(batch, batch_start, 0, "the batch");
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
