#include "pcpaylink/pcpaylink_reader.h"

#include "pcpaylink/pcpaylink_layout.h"

#include "pcpaylink/pcpaylink.h"
#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

constexpr std::string_view kLayout = "PCPayLink";

// The code a detail names its amount by: its rate field and the tag of its hours.
std::string_view code_of(std::string_view rate, std::string_view hours_tag) {
  if (rate == "R1" && hours_tag == "E0A") return "REG";
  if (rate == "R1" && hours_tag == "E0C") return "OT1";
  if (rate == "R2" && hours_tag == "E0C") return "OT2";
  return rate;
}

std::int64_t count(Cursor& cursor, std::string_view tag, std::string_view what) {
  cursor.expect(tag, what);
  const std::size_t column = cursor.position();
  return cursor.number_in(cursor.take_until("|", what), column, 0, what);
}

}  // namespace

FileContents read_pcpaylink_file(std::string_view bytes, const SettingsFields& settings) {
  FileContents contents;
  contents.layout = kLayout;
  const std::vector<Line> lines = split_lines(kLayout, bytes, "\n", false);
  if (lines.size() < 2) throw ReadError(kLayout, 1, 1, "a file has a header and a trailer");

  Cursor header(kLayout, lines.front());
  header.expect("00000IM0005|001", "the header tags");
  header.take(4, "the office number");
  header.expect(text_left(settings.at(PCPayLink::kClientID), 4), "the client ID");
  header.expect("|", "the end of the header");
  header.expect_end();

  for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
    const Line& line = lines[i];
    Cursor cursor(kLayout, line);
    cursor.expect("01E03", "the detail record tags");
    FileRecord record;
    record.employee = cursor.take_until("|", "the employee number");
    cursor.expect("E04C|E0501|", "fields E04 and E05");
    record.ticket = count(cursor, "E06", "the line number");
    cursor.expect("E09", "field E09");
    const std::string_view rate = cursor.take_until("|", "the rate or earning code");
    const std::string_view hours_tag = cursor.take(3, "the hours tag");
    if (hours_tag != "E0A" && hours_tag != "E0C") cursor.fail("expected hours tag E0A or E0C");
    record.code = code_of(rate, hours_tag);
    const std::size_t column = cursor.position();
    record.amount = from_hundredths(
        cursor.number_in(cursor.take_until("|", "the hours"), column,
                         pattern_decimals(pcpaylink_layout::kHoursPattern), "hours"));
    cursor.expect_end();
    record.line = line.number;
    contents.records.push_back(std::move(record));
  }

  Cursor trailer(kLayout, lines.back());
  trailer.expect("FF", "the trailer tag");
  contents.controls.emplace_back("records", count(trailer, "05B", "the record count"));
  contents.controls.emplace_back("fields", count(trailer, "05C", "the field count"));
  contents.controls.emplace_back("employees", count(trailer, "05D", "the employee count"));
  contents.controls.emplace_back("details", count(trailer, "05E", "the detail count"));
  trailer.expect_end();
  return contents;
}

}  // namespace zorvat::formats
