#include "adp7/adp7_reader.h"

#include <algorithm>
#include <span>

#include "adp7/adp7.h"
#include "adp7/adp7_layout.h"
#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

constexpr std::string_view kEpip = "ADP7 EPIP";
constexpr std::string_view kCsv = "ADP7 CSV";
constexpr std::string_view kCsvTitles = "Co Code,Batch ID,File #,Pay #,Shift,Reg Hours,O/T Hours";

// The width of the zero-filled number at the cursor: its pattern's, or more where the
// number has more digits, which the export writes whole, moving the fields after it.
std::size_t number_width(const Cursor& cursor, std::size_t pattern_width) {
  std::string_view rest = cursor.rest();
  if (rest.starts_with('-')) rest.remove_prefix(1);  // Cursor::number widens for the sign
  const std::size_t digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
  return std::max(pattern_width, digits);
}

FileContents read_epip(std::string_view bytes, const SettingsFields& settings,
                       const std::vector<std::string>& shifts) {
  namespace layout = adp7_layout;
  FileContents contents;
  contents.layout = "EPIP";
  const std::vector<Line> lines = split_lines(kEpip, bytes, layout::kLineEnd, true);
  if (lines.size() < 2)
    throw ReadError(kEpip, lines.size() + 1, 1, "a batch has a header and a trailer");

  Cursor header(kEpip, lines.front());
  header.expect(layout::kHeaderTag, "the header tag");
  header.expect(settings.at(ADP7::kCompanyCode), "the company code");
  header.expect(layout::kBatch.tag, "the batch tag");
  contents.batch = header.number(layout::kBatch.pattern.size(), 0, layout::kBatch.name);
  contents.controls.emplace_back("batch number", *contents.batch);
  header.expect(layout::kEndOfFields, "the end of the header fields");
  if (header.column() > layout::kFilledWidth) header.fail("the header is longer than 79 columns");
  header.expect_blanks(layout::kFilledWidth - header.column(), "fill to column 79");
  header.expect(layout::kColumn80, "column 80");
  header.expect_end();

  const std::string employee_end = std::string(layout::kPayNumber.tag) +
                                   settings.at(ADP7::kPayNumber) + std::string(layout::kShift.tag);
  const std::string& ot2_code = settings.at(ADP7::kOT2PayCode);
  // The fields after the export ID: the shift, then tagged hundredths up to "z".
  auto read_tagged_hours = [&](Cursor& cursor) {
    std::vector<std::pair<std::string_view, std::int64_t>> hours;
    while (cursor.rest() != layout::kEndOfFields) {
      const std::size_t tag_start = cursor.position();
      const std::string_view tag = cursor.take(3, "a field tag");
      auto hundredths = [&](const layout::TaggedField& field) {
        return cursor.number(number_width(cursor, field.pattern.size()), 0, field.name);
      };
      if (tag == layout::kRegular.tag) {
        hours.emplace_back("REG", hundredths(layout::kRegular));
      } else if (tag == layout::kOvertime1.tag) {
        hours.emplace_back("OT1", hundredths(layout::kOvertime1));
      } else if (tag == layout::kOvertime2.tag) {
        cursor.expect(ot2_code, "the overtime 2 pay code");
        hours.emplace_back(ot2_code, hundredths(layout::kOvertime2));
      } else {
        cursor.fail_at(tag_start, "unknown field tag \"" + std::string(tag) + "\"");
      }
      cursor.expect(" ", "the blank after a field");
    }
    return hours;
  };
  // The shift is written through "00" as it stands: a number of three digits or a sign
  // is wider, text may be narrower. `any_width` tries, after the pattern's width, the
  // other widths the cards' shifts are written in.
  const std::size_t pattern_width = layout::kShift.pattern.size();
  const std::vector<std::size_t> shift_widths = written_widths(pattern_width, shifts);
  auto read_hours = [&](Cursor& cursor, bool any_width) {
    const std::span<const std::size_t> widths(shift_widths.data(),
                                              any_width ? shift_widths.size() : 1);
    std::optional<ReadError> first_problem;
    for (std::size_t width : widths) {
      Cursor attempt = cursor;
      try {
        attempt.take(width, layout::kShift.name);
        auto hours = read_tagged_hours(attempt);
        // An exported card has regular or overtime time: a shift that would take up
        // all of its fields is none.
        if (hours.empty() && width != pattern_width) attempt.fail("no hour fields");
        cursor = attempt;
        return hours;
      } catch (const ReadError& problem) {
        if (!first_problem) first_problem = problem;
      }
    }
    throw *first_problem;
  };
  for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
    Cursor cursor(kEpip, lines[i]);
    cursor.expect(layout::kEmployeeTag, "the employee line tag");
    // The export ID is free text, so the fields that end it ("004", the pay number,
    // "010") can stand inside it too ("E1004101" with pay number 1): it ends at the
    // first of those places after which the rest of the line reads as hour fields, with
    // the shift in its two columns; failing that, with the shift of any width.
    const std::string_view line_rest = cursor.rest();
    std::optional<ReadError> first_problem;
    bool read = false;
    for (bool any_width : {false, true}) {
      for (std::size_t end = line_rest.find(employee_end); end != std::string_view::npos && !read;
           end = line_rest.find(employee_end, end + 1)) {
        Cursor attempt = cursor;
        const std::string_view employee =
            attempt.take(text_length(line_rest.substr(0, end)), "the export ID");
        attempt.expect(employee_end, layout::kPayNumber.name);
        try {
          for (const auto& [code, hundredths] : read_hours(attempt, any_width))
            contents.add_hundredths(employee, code, hundredths, lines[i].number);
          read = true;
        } catch (const ReadError& problem) {
          if (!first_problem) first_problem = problem;
        }
      }
      if (read) break;
    }
    if (read) continue;
    if (first_problem) throw *first_problem;
    cursor.take_until(employee_end, "the export ID");  // fails, naming the place
  }

  Cursor trailer(kEpip, lines.back());
  trailer.expect(layout::kTrailerTag, "the trailer tag");
  while (!trailer.rest().starts_with(layout::kEndOfFields)) {
    const std::size_t tag_start = trailer.position();
    const std::string_view tag = trailer.take(3, "a total tag");
    const layout::TaggedField* total = nullptr;
    for (const layout::TaggedField* field :
         {&layout::kRegularTotal, &layout::kOvertime1Total, &layout::kOvertime2Total})
      if (tag == field->tag) total = field;
    if (!total) trailer.fail_at(tag_start, "unknown total tag");
    contents.controls.emplace_back(
        total->name, trailer.number(number_width(trailer, total->pattern.size()), 0, total->name));
    if (total != &layout::kOvertime2Total) trailer.expect(" ", "the blank after a total");
  }
  trailer.expect(layout::kEndOfFields, "the end of the totals");
  trailer.expect_blank_fill(layout::kFilledWidth);
  return contents;
}

FileContents read_csv(std::string_view bytes, const SettingsFields& settings) {
  FileContents contents;
  contents.layout = "CSV";
  const std::vector<Line> lines = split_lines(kCsv, bytes, adp7_layout::kLineEnd, true);
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
      contents.add_hundredths(
          employee, code,
          cursor.number_in(text, column, pattern_decimals(adp7_layout::kCsvHoursPattern), what),
          line.number);
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

FileContents read_adp7_file(std::string_view bytes, const SettingsFields& settings,
                            const std::vector<std::string>& shifts) {
  if (settings.at(ADP7::kOutputFormat) == "EPIP") return read_epip(bytes, settings, shifts);
  return read_csv(bytes, settings);
}

}  // namespace zorvat::formats
