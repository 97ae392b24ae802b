#include "pcpreview/pcpreview_reader.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <unordered_set>

#include "pcpreview/pcpreview.h"
#include "pcpreview/pcpreview_layout.h"
#include "zorvat/format.h"
#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

namespace layout = pcpreview_layout;
constexpr std::string_view kLayout = "PCPreview";
constexpr PCPreview::Position kPayCodeFields[] = {
    PCPreview::kRegularPayCode,  PCPreview::kOvertime1PayCode, PCPreview::kOvertime2PayCode,
    PCPreview::kVacationPayCode, PCPreview::kHolidayPayCode,   PCPreview::kSickPayCode,
    PCPreview::kOtherPayCode};

// The columns every record starts with, up to its pay code; the employee number
// `employee_width` letters wide.
void read_record_start(Cursor& cursor, FileRecord& record, std::size_t employee_width) {
  record.employee = cursor.take(layout::kEmployeeNumber, employee_width);
  cursor.take(layout::kName);
  cursor.expect_blanks(layout::kColumns32To50);
  cursor.expect(layout::kEarningsType);
}

// Reads the record at the cursor with `code` as its pay code, leaving the cursor after
// it; raises ReadError when the record does not fit that code. The records follow one
// another with no line end, so where the next starts is known only once this one is
// read.
FileRecord read_record(Cursor& cursor, std::string_view code, std::string_view sequence,
                       std::size_t employee_width) {
  FileRecord record;
  read_record_start(cursor, record, employee_width);
  cursor.expect(layout::kPayCode, code);
  cursor.expect_blanks(layout::kAfterPayCode);
  const std::size_t hours_start = cursor.position();
  record.amount = from_hundredths(cursor.number_in(cursor.take(layout::kHours), hours_start,
                                                   pattern_decimals(layout::kHours.pattern),
                                                   layout::kHours.name));
  cursor.expect_blanks(layout::kColumns71To89);
  cursor.expect(layout::kSequence, sequence);
  cursor.expect_blanks(layout::kFill);
  record.code = code;
  return record;
}

}  // namespace

FileContents read_pcpreview_file(std::string_view bytes, const SettingsFields& settings,
                                 const std::vector<std::string>& employee_numbers) {
  FileContents contents;
  contents.layout = kLayout;

  // The codes as the export writes them through "0", longest first, and the sequence
  // column.
  std::vector<std::string> codes;
  for (PCPreview::Position field : kPayCodeFields)
    codes.push_back(format(Variant(settings.at(field)), "0"));
  std::sort(codes.begin(), codes.end(),
            [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
  codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
  const std::string& sequence_field = settings.at(PCPreview::kSequence);
  const std::string sequence =
      !sequence_field.empty() && to_double(Variant(sequence_field)) > 0 ? sequence_field : " ";
  if (!sequence_field.empty()) contents.batch = parse_decimal(sequence_field, 0);

  // The employee number is written as it stands, wider than its column when it has
  // more digits (narrower as short text): the widths of the cards' numbers that a
  // record starts with are tried, the widest first, then the column's own. The cards'
  // numbers are grouped once for the file by their length in bytes, so a record looks
  // each length up once.
  std::map<std::size_t, std::unordered_set<std::string_view>> numbers_by_bytes;
  for (const std::string& employee : employee_numbers)
    numbers_by_bytes[employee.size()].insert(employee);

  std::size_t start = 0;
  std::size_t number = 1;
  std::vector<std::size_t> widths;
  while (start < bytes.size()) {
    const Cursor cursor(kLayout, Line{bytes.substr(start), number});
    const std::string_view rest = cursor.rest();
    widths.clear();
    for (const auto& [size, numbers] : numbers_by_bytes) {
      if (size > rest.size()) break;
      const std::string_view head = rest.substr(0, size);
      if (numbers.contains(head)) widths.push_back(text_length(head));
    }
    std::sort(widths.begin(), widths.end(), std::greater<>());
    widths.erase(std::unique(widths.begin(), widths.end()), widths.end());
    if (std::find(widths.begin(), widths.end(), layout::kEmployeeNumber.width) == widths.end())
      widths.push_back(layout::kEmployeeNumber.width);
    std::optional<FileRecord> record;
    std::size_t record_bytes = 0;
    for (std::size_t width : widths) {
      for (const std::string& code : codes) {
        Cursor attempt = cursor;
        try {
          record = read_record(attempt, code, sequence, width);
        } catch (const ReadError&) {
          continue;
        }
        record_bytes = attempt.position();
        break;
      }
      if (record) break;
    }
    if (!record) {
      // Read again up to the pay code for the message that says where it fails.
      Cursor failing = cursor;
      FileRecord ignored;
      read_record_start(failing, ignored, layout::kEmployeeNumber.width);
      failing.fail("no pay code of the settings fits this record");
    }
    record->line = number;
    record->batch = contents.batch;
    start += record_bytes;
    contents.records.push_back(std::move(*record));
    ++number;
  }
  return contents;
}

}  // namespace zorvat::formats
