#include "adp7/adp7_reader.h"

#include "adp7/adp7.h"
#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

constexpr std::string_view kEpip = "ADP7 EPIP";
constexpr std::string_view kCsv = "ADP7 CSV";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kEpipWidth = 80;
constexpr std::size_t kLineDigits = 7;
constexpr std::size_t kTotalDigits = 11;
constexpr std::string_view kCsvTitles = "Co Code,Batch ID,File #,Pay #,Shift,Reg Hours,O/T Hours";

void add(FileContents& contents, std::string_view employee, std::string_view code,
         std::int64_t hundredths, const Line& line) {
  FileRecord record;
  record.employee = employee;
  record.code = code;
  record.amount = from_hundredths(hundredths);
  record.batch = contents.batch;
  record.line = line.number;
  contents.records.push_back(std::move(record));
}

FileContents read_epip(std::string_view bytes, const SettingsFields& settings) {
  FileContents contents;
  contents.layout = "EPIP";
  const std::vector<Line> lines = split_lines(kEpip, bytes, kLineEnd, true);
  if (lines.size() < 2)
    throw ReadError(kEpip, lines.size() + 1, 1, "a batch has a header and a trailer");

  Cursor header(kEpip, lines.front());
  header.expect("A001", "the header tag");
  header.expect(settings.at(ADP7::kCompanyCode), "the company code");
  header.expect("002", "the batch tag");
  contents.batch = header.number(2, 0, "the batch number");
  contents.controls.emplace_back("batch number", *contents.batch);
  header.expect("z", "the end of the header fields");
  if (header.column() > kEpipWidth - 1) header.fail("the header is longer than 79 columns");
  header.expect_blanks(kEpipWidth - 1 - header.column(), "fill to column 79");
  header.expect("7", "column 80");
  header.expect_end();

  const std::string employee_end = "004" + settings.at(ADP7::kPayNumber) + "010";
  const std::string& ot2_code = settings.at(ADP7::kOT2PayCode);
  // The fields after the export ID: the shift, then tagged hundredths up to "z".
  auto read_hours = [&](Cursor& cursor) {
    std::vector<std::pair<std::string_view, std::int64_t>> hours;
    cursor.take(2, "the shift");
    while (cursor.rest() != "z") {
      const std::size_t tag_start = cursor.position();
      const std::string_view tag = cursor.take(3, "a field tag");
      if (tag == "012") {
        hours.emplace_back("REG", cursor.number(kLineDigits, 0, "regular hundredths"));
      } else if (tag == "013") {
        hours.emplace_back("OT1", cursor.number(kLineDigits, 0, "overtime hundredths"));
      } else if (tag == "016") {
        cursor.expect(ot2_code, "the overtime 2 pay code");
        hours.emplace_back(ot2_code, cursor.number(kLineDigits, 0, "overtime 2 hundredths"));
      } else {
        cursor.fail_at(tag_start, "unknown field tag \"" + std::string(tag) + "\"");
      }
      cursor.expect(" ", "the blank after a field");
    }
    return hours;
  };
  for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
    Cursor cursor(kEpip, lines[i]);
    cursor.expect("B003", "the employee line tag");
    // The export ID is free text, so the fields that end it ("004", the pay number,
    // "010") can stand inside it too ("E1004101" with pay number 1): it ends at the
    // first of those places after which the rest of the line reads as hour fields.
    const std::string_view line_rest = cursor.rest();
    std::optional<ReadError> first_problem;
    for (std::size_t end = line_rest.find(employee_end);;
         end = line_rest.find(employee_end, end + 1)) {
      if (end == std::string_view::npos) {
        if (first_problem) throw *first_problem;
        cursor.take_until(employee_end, "the export ID");  // fails, naming the place
      }
      Cursor attempt = cursor;
      const std::string_view employee =
          attempt.take(text_length(line_rest.substr(0, end)), "the export ID");
      attempt.expect(employee_end, "the pay number");
      try {
        for (const auto& [code, hundredths] : read_hours(attempt))
          add(contents, employee, code, hundredths, lines[i]);
        break;
      } catch (const ReadError& problem) {
        if (!first_problem) first_problem = problem;
      }
    }
  }

  Cursor trailer(kEpip, lines.back());
  trailer.expect("C", "the trailer tag");
  while (!trailer.rest().starts_with("z")) {
    const std::size_t tag_start = trailer.position();
    const std::string_view tag = trailer.take(3, "a total tag");
    const char* name = tag == "030"   ? "regular hundredths"
                       : tag == "031" ? "overtime 1 hundredths"
                       : tag == "032" ? "overtime 2 hundredths"
                                      : nullptr;
    if (!name) trailer.fail_at(tag_start, "unknown total tag");
    contents.controls.emplace_back(name, trailer.number(kTotalDigits, 0, name));
    if (tag != "032") trailer.expect(" ", "the blank after a total");
  }
  trailer.expect("z", "the end of the totals");
  trailer.expect_blank_fill(kEpipWidth - 1);
  return contents;
}

FileContents read_csv(std::string_view bytes, const SettingsFields& settings) {
  FileContents contents;
  contents.layout = "CSV";
  const std::vector<Line> lines = split_lines(kCsv, bytes, kLineEnd, true);
  if (lines.empty() || !lines.front().text.starts_with(kCsvTitles))
    throw ReadError(kCsv, 1, 1, "the title line is missing");
  contents.batch = parse_decimal(settings.at(ADP7::kBatchSeqNum), 0);
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const Line& line = lines[i];
    Cursor cursor(kCsv, line);
    cursor.expect(settings.at(ADP7::kCompanyCode) + ",", "the company code");
    cursor.expect(settings.at(ADP7::kBatchSeqNum) + ",", "the batch ID");
    // The file number ends where the pay number follows, so an export ID may hold commas.
    const std::string_view employee =
        cursor.take_until("," + settings.at(ADP7::kPayNumber) + ",", "the file number");
    cursor.take_until(",", "the shift");
    // The rest are hour amounts, each up to the next comma: regular, overtime, then
    // pairs of a pay code and its amount.
    auto hours = [&](std::string_view code, std::string_view what) {
      const std::size_t column = cursor.position();
      const std::size_t comma = cursor.rest().find(',');
      const std::string_view text =
          comma == std::string_view::npos ? cursor.take_rest() : cursor.take_until(",", what);
      add(contents, employee, code, cursor.number_in(text, column, 2, what), line);
    };
    hours("REG", "regular hours");
    if (cursor.at_end()) cursor.fail("the overtime hours are missing");
    hours("OT1", "overtime hours");
    while (!cursor.at_end()) {
      const std::string_view code = cursor.take_until(",", "a pay code");
      hours(code, "hours of a pay code");
    }
  }
  return contents;
}

}  // namespace

FileContents read_adp7_file(std::string_view bytes, const SettingsFields& settings) {
  if (settings.at(ADP7::kOutputFormat) == "EPIP") return read_epip(bytes, settings);
  return read_csv(bytes, settings);
}

}  // namespace zorvat::formats
