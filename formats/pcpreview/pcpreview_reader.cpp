#include "pcpreview/pcpreview_reader.h"

#include <algorithm>
#include <optional>

#include "pcpreview/pcpreview.h"
#include "zorvat/format.h"
#include "zorvat/reconcile/text_reader.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

constexpr std::string_view kLayout = "PCPreview";
constexpr std::size_t kNumberWidth = 6;
constexpr std::size_t kNameWidth = 25;
constexpr std::size_t kHoursWidth = 8;
constexpr PCPreview::Position kPayCodeFields[] = {
    PCPreview::kRegularPayCode,  PCPreview::kOvertime1PayCode, PCPreview::kOvertime2PayCode,
    PCPreview::kVacationPayCode, PCPreview::kHolidayPayCode,   PCPreview::kSickPayCode,
    PCPreview::kOtherPayCode};

// Reads the record at the cursor with `code` as its pay code, leaving the cursor after
// it; no value when the record does not fit that code. The records follow one another
// with no line end, so where the next starts is known only once this one is read.
std::optional<FileRecord> try_record(Cursor& cursor, std::string_view code,
                                     std::string_view sequence) {
  FileRecord record;
  record.employee = cursor.take(kNumberWidth, "the employee number");
  cursor.take(kNameWidth, "the name");
  cursor.expect_blanks(19, "columns 32-50");
  cursor.expect("E ", "the earnings record type");
  if (!cursor.rest().starts_with(code)) return std::nullopt;
  cursor.expect(code, "the pay code");
  if (!cursor.rest().starts_with("         ")) return std::nullopt;
  cursor.expect_blanks(9, "the blanks after the pay code");
  const auto hours = parse_decimal(cursor.take(kHoursWidth, "the hours"), 2);
  if (!hours) return std::nullopt;
  const std::string filler = std::string(19, ' ') + std::string(sequence) + std::string(37, ' ');
  if (!cursor.rest().starts_with(filler)) return std::nullopt;
  cursor.expect(filler, "the filler and sequence");
  record.code = code;
  record.amount = from_hundredths(*hours);
  return record;
}

}  // namespace

FileContents read_pcpreview_file(std::string_view bytes, const SettingsFields& settings) {
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

  std::size_t start = 0;
  std::size_t number = 1;
  while (start < bytes.size()) {
    const Cursor cursor(kLayout, Line{bytes.substr(start), number});
    std::optional<FileRecord> record;
    std::size_t record_bytes = 0;
    for (const std::string& code : codes) {
      Cursor attempt = cursor;
      try {
        record = try_record(attempt, code, sequence);
      } catch (const ReadError&) {
        record.reset();
      }
      if (record) {
        record_bytes = attempt.position();
        break;
      }
    }
    if (!record) {
      // Read again with the first code for the message that says where it fails.
      Cursor failing = cursor;
      failing.take(kNumberWidth, "the employee number");
      failing.take(kNameWidth, "the name");
      failing.expect_blanks(19, "columns 32-50");
      failing.expect("E ", "the earnings record type");
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
