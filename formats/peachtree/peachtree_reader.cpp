#include "peachtree/peachtree_reader.h"

#include "peachtree/peachtree.h"
#include "peachtree/peachtree_layout.h"
#include "zorvat/reconcile/text_reader.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

constexpr std::string_view kLayout = "Peachtree";
constexpr std::size_t kColumns = 23;

// Columns (from 1) that hold the same text on every ticket.
struct FixedColumn {
  std::size_t column;
  std::string_view text;
};
constexpr FixedColumn kFixedColumns[] = {{1, "0"},  {5, "FALSE"},  {6, ""},   {8, "3"},
                                         {9, ""},   {11, "FALSE"}, {12, "1"}, {13, ""},
                                         {14, ""},  {15, ""},      {17, ""},  {18, "0"},
                                         {19, "0"}, {20, "2"},     {22, "0"}, {23, "From Horalis"}};

}  // namespace

std::optional<std::int64_t> duration_minutes(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto hours = parse_decimal(text.substr(0, colon), 0);
  const auto minutes = parse_decimal(text.substr(colon + 1), 0);
  if (!hours || !minutes || text.size() - colon - 1 < 2) return std::nullopt;
  return *hours * 60 + *minutes;
}

FileContents read_peachtree_file(std::string_view bytes, const SettingsFields& settings) {
  FileContents contents;
  contents.layout = kLayout;
  const std::vector<Line> lines = split_lines(kLayout, bytes, "\r\n", true);
  std::size_t first = 0;
  if (field_equals_number(settings.at(Peachtree::kOutputFieldTitles), 1)) {
    if (lines.empty() || !lines.front().text.starts_with("Employee/Vendor,Recorded by ID,"))
      throw ReadError(kLayout, 1, 1, "the title row is missing");
    first = 1;
  }
  for (std::size_t i = first; i < lines.size(); ++i) {
    const Line& line = lines[i];
    std::vector<std::string_view> fields = split_fields(line.text, ",");
    if (fields.size() < kColumns)
      throw ReadError(kLayout, line.number, letter_column(line.text, line.text.size()),
                      "a ticket has 23 columns, this line " + std::to_string(fields.size()));
    // An export ID holding commas takes the extra fields: the other columns never do.
    const std::size_t extra = fields.size() - kColumns;
    const char* id_start = fields[1].data();
    const std::string_view last_id_part = fields[1 + extra];
    const std::string_view recorded_by(
        id_start, static_cast<std::size_t>(last_id_part.data() + last_id_part.size() - id_start));
    fields.erase(fields.begin() + 2, fields.begin() + 2 + static_cast<std::ptrdiff_t>(extra));
    fields[1] = recorded_by;

    auto fail = [&](std::size_t column, std::string_view problem) {
      const auto offset = static_cast<std::size_t>(fields[column - 1].data() - line.text.data());
      throw ReadError(kLayout, line.number, letter_column(line.text, offset),
                      "column " + std::to_string(column) + ": " + std::string(problem));
    };
    for (const FixedColumn& fixed : kFixedColumns)
      if (fields[fixed.column - 1] != fixed.text)
        fail(fixed.column, "expected \"" + std::string(fixed.text) + "\"");

    FileRecord record;
    record.employee = recorded_by;
    record.line = line.number;
    const auto ticket = parse_decimal(fields[2], 0);
    if (!ticket) fail(3, "not a ticket number");
    record.ticket = *ticket;
    record.date = parse_short_date(fields[3]);
    if (!record.date) fail(4, "not a date (mm/dd/yy)");
    record.code = fields[6];
    if (!parse_decimal(fields[9], 0)) fail(10, "not a pay level");
    const auto minutes = duration_minutes(fields[15]);
    if (!minutes) fail(16, "not a duration (h:mm)");
    record.amount = *minutes * kUnitsPerMinute;
    if (!parse_decimal(fields[20], pattern_decimals(peachtree_layout::kUnitDurationPattern)))
      fail(21, "not a unit duration (hours)");
    contents.records.push_back(std::move(record));
  }
  if (!contents.records.empty()) {
    contents.controls.emplace_back("first ticket number", *contents.records.front().ticket);
    contents.controls.emplace_back("last ticket number", *contents.records.back().ticket);
  }
  return contents;
}

}  // namespace zorvat::formats
