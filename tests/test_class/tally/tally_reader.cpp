#include "tally/tally_reader.h"

#include "tally/tally.h"
#include "zorvat/reconcile/text_reader.h"

namespace zorvat::formats {

using namespace zorvat::reconcile;
namespace {

constexpr std::string_view kLayout = "Tally";

}  // namespace

FileContents read_tally_file(std::string_view bytes, const SettingsFields& settings) {
  FileContents contents;
  contents.layout = kLayout;
  std::vector<Line> lines = split_lines(kLayout, bytes, "\r\n", true);
  std::size_t first = 0;
  if (field_equals_number(settings.at(Tally::kOutputFieldTitles), 1)) {
    if (lines.empty()) throw ReadError(kLayout, 1, 1, "the title line is missing");
    Cursor title(kLayout, lines.front());
    title.expect("ExportID,Hours", "the title line");
    title.expect_end();
    first = 1;
  }
  for (std::size_t i = first; i < lines.size(); ++i) {
    Cursor cursor(kLayout, lines[i]);
    FileRecord record;
    // An export ID may hold commas: the hours are after the last one.
    const std::size_t comma = lines[i].text.rfind(',');
    if (comma == std::string_view::npos) cursor.fail("a line is \"export ID,hours\"");
    record.employee = cursor.take_until(",", "the export ID");
    while (cursor.position() <= comma) {
      record.employee += ',';
      record.employee += cursor.take_until(",", "the export ID");
    }
    const std::size_t start = cursor.position();
    record.amount = from_hundredths(cursor.number_in(cursor.take_rest(), start, 2, "the hours"));
    record.code = "ALL";
    record.line = lines[i].number;
    contents.records.push_back(std::move(record));
  }
  return contents;
}

}  // namespace zorvat::formats
