#include "generic/generic_reader.h"

#include <algorithm>
#include <optional>

#include "generic/generic.h"
#include "generic/generic_layout.h"
#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"
#include "zorvat/variant.h"

namespace zorvat::formats {

// The read-back vocabulary: records, lines, the cursor and its errors.
using namespace zorvat::reconcile;
namespace {

constexpr std::string_view kLayout = "Generic";
constexpr std::string_view kCategories[] = {"REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"};
constexpr std::size_t kLeadingFields = 3;  // export ID, employee number, shift
constexpr std::size_t kNumberWidth = 9;
constexpr std::size_t kShiftWidth = 2;

struct Layout {
  bool quoting = false;
  bool titles = false;
  std::string separator;
  std::string terminator;
};

// The separator and terminator as the export chooses them, after Remove Blanks.
Layout layout_of(const SettingsFields& settings) {
  using G = formats::Generic;
  Layout layout;
  layout.quoting = field_equals_number(settings.at(G::kInsertQuotes), 1);
  layout.titles = field_equals_number(settings.at(G::kOutputFieldTitles), 1);
  layout.separator = G::separator_of(settings);
  layout.terminator = G::terminator_of(settings);
  if (field_is_true(settings.at(G::kRemoveBlanks))) std::erase(layout.separator, ' ');
  return layout;
}

// The first ten fields of a record: export ID, number, shift and the seven hours.
std::vector<std::string_view> leading_fields(const Layout& layout, Cursor& cursor,
                                             const std::string* export_id) {
  constexpr std::size_t kCount = kLeadingFields + std::size(kCategories);
  std::vector<std::string_view> fields;
  if (layout.quoting) {
    for (std::size_t i = 0; i < kCount; ++i) {
      if (i > 0) cursor.expect(layout.separator, "the separator");
      cursor.expect("\"", "an opening quote");
      fields.push_back(cursor.take_until("\"", "a quoted field"));
    }
    return fields;
  }
  if (!layout.separator.empty()) {
    for (std::size_t i = 0; i + 1 < kCount; ++i)
      fields.push_back(cursor.take_until(layout.separator, "a field"));
    const std::string_view rest = cursor.rest();
    const std::size_t end = rest.find(layout.separator);
    fields.push_back(end == std::string_view::npos
                         ? cursor.take_rest()
                         : cursor.take(text_length(rest.substr(0, end)), "hours"));
    return fields;
  }
  // Fields run together: the export ID is known, the number and shift have fixed
  // widths, and each hour value ends two digits after its decimal point.
  if (!export_id)
    cursor.fail(
        "the fields run together (no separator, no quotes); the cards' export IDs are needed to "
        "split them");
  fields.push_back(cursor.take(text_length(*export_id), "the export ID"));
  if (fields.back() != *export_id) cursor.fail("the line does not start with its export ID");
  fields.push_back(cursor.take(kNumberWidth, "the employee number"));
  fields.push_back(cursor.take(kShiftWidth, "the shift"));
  for (std::size_t i = 0; i < std::size(kCategories); ++i) {
    const std::size_t start = cursor.position();
    cursor.take_until(".", "hours");
    cursor.take(2, "the hundredths of hours");
    fields.push_back(cursor.since(start));
  }
  return fields;
}

}  // namespace

namespace {

// Reads the record at the cursor, up to the end of its line, into `records`.
void read_record(const Layout& layout, Cursor& cursor, const Line& line,
                 const std::string* export_id, std::vector<FileRecord>& records) {
  const std::vector<std::string_view> fields = leading_fields(layout, cursor, export_id);
  for (std::size_t c = 0; c < std::size(kCategories); ++c) {
    const std::string_view text = fields[kLeadingFields + c];
    const auto hundredths = parse_decimal(text, pattern_decimals(generic_layout::kHoursPattern));
    if (!hundredths) {
      std::string message = "\"";
      message.append(text).append("\" is not a number of hours (");
      message.append(kCategories[c]).append(")");
      cursor.fail_at(static_cast<std::size_t>(text.data() - line.text.data()), message);
    }
    FileRecord record;
    record.employee = fields[0];
    record.code = kCategories[c];
    record.amount = from_hundredths(*hundredths);
    record.line = line.number;
    records.push_back(std::move(record));
  }
}

// Settings that choose no line terminator write the records one after another on a
// single line. Each card has its record, in the cards' order, and a record starts with
// the card's export ID (quoted where the fields are) and the separator. Where a record
// ends is where the next one's start is found such that both read as records: the
// places are tried in order, and a record that reads at none sends the search back to
// the next place for the record before it (a name may hold the next export ID).
FileContents read_run_together(std::string_view bytes, const Layout& layout,
                               const std::vector<std::string>& export_ids) {
  FileContents contents;
  contents.layout = kLayout;
  if (export_ids.empty())
    throw ReadError(kLayout, 1, 1,
                    "the records run together and there are no cards to tell them apart by");
  std::vector<std::string> starts;
  for (const std::string& export_id : export_ids) {
    const std::string quote = layout.quoting ? "\"" : "";
    starts.push_back(quote + export_id + quote + layout.separator);
  }
  const std::size_t count = export_ids.size();
  // The title line, when there is one, ends where the first record starts.
  std::size_t first_start = 0;
  if (layout.titles) {
    if (!bytes.starts_with("EXPORT") && !bytes.starts_with("\"EXPORT"))
      throw ReadError(kLayout, 1, 1, "the title line is missing");
    first_start = bytes.find(starts[0], 1);
    if (first_start == std::string_view::npos)
      throw ReadError(kLayout, 1, text_length(bytes) + 1, "no record after the title line");
  }
  // For each record: where it starts, the place its end is looked for from, and what
  // it read.
  std::vector<std::size_t> record_start(count + 1, bytes.size());
  std::vector<std::size_t> search_from(count, 0);
  std::vector<std::vector<FileRecord>> records(count);
  record_start[0] = first_start;
  search_from[0] = first_start + 1;
  // The problem of the furthest record that failed to read: records before it read
  // in some try, so an earlier complaint would blame a record that is fine.
  std::optional<ReadError> problem;
  std::size_t problem_card = 0;
  auto give_up = [&](std::size_t card) {
    if (problem) throw *problem;
    if (card + 1 == count)
      throw ReadError(kLayout, 1, text_length(bytes) + 1, "the last record is missing");
    throw ReadError(kLayout, 1, text_length(bytes) + 1,
                    "no record of card " + std::to_string(card + 2) + " (export ID \"" +
                        export_ids[card + 1] + "\") follows the record of card " +
                        std::to_string(card + 1));
  };
  // Each try reads one record; a file that needs more gives up with the furthest problem.
  std::size_t tries_left = 64 * count + 1024;
  std::size_t card = 0;
  while (card < count) {
    const bool last = card + 1 == count;
    const std::size_t end =
        last ? (search_from[card] <= bytes.size() ? bytes.size() : std::string_view::npos)
             : bytes.find(starts[card + 1], search_from[card]);
    if (end == std::string_view::npos) {
      if (card == 0) {
        // The first record starts further on: the title line held its start.
        if (layout.titles) first_start = bytes.find(starts[0], first_start + 1);
        if (!layout.titles || first_start == std::string_view::npos) give_up(card);
        record_start[0] = first_start;
        search_from[0] = first_start + 1;
        continue;
      }
      --card;  // back to the record before, whose end is looked for further on
      search_from[card] = record_start[card + 1] + 1;
      continue;
    }
    if (tries_left == 0) give_up(card);
    --tries_left;
    search_from[card] = end + 1;
    const Line record_line{bytes.substr(0, end), 1};
    Cursor cursor(kLayout, record_line, record_start[card]);
    records[card].clear();
    try {
      read_record(layout, cursor, record_line, &export_ids[card], records[card]);
    } catch (const ReadError& failed) {
      if (!problem || card >= problem_card) {
        problem = failed;
        problem_card = card;
      }
      continue;
    }
    record_start[card + 1] = end;
    if (!last) search_from[card + 1] = end + 1;
    ++card;
  }
  for (std::vector<FileRecord>& read : records)
    contents.records.insert(contents.records.end(), read.begin(), read.end());
  return contents;
}

}  // namespace

FileContents read_generic_file(std::string_view bytes, const SettingsFields& settings,
                               const std::vector<std::string>& export_ids) {
  const Layout layout = layout_of(settings);
  FileContents contents;
  contents.layout = kLayout;
  if (bytes.empty()) return contents;
  if (layout.terminator.empty()) return read_run_together(bytes, layout, export_ids);

  std::vector<Line> lines = split_lines(kLayout, bytes, layout.terminator, true);
  std::size_t first = 0;
  if (layout.titles) {
    if (lines.empty() || lines.front().text.find("EXPORT") == std::string_view::npos)
      throw ReadError(kLayout, 1, 1, "the title line is missing");
    first = 1;
  }
  for (std::size_t i = first; i < lines.size(); ++i) {
    const Line& line = lines[i];
    Cursor cursor(kLayout, line);
    const std::size_t card = i - first;
    const std::string* export_id = card < export_ids.size() ? &export_ids[card] : nullptr;
    read_record(layout, cursor, line, export_id, contents.records);
  }
  return contents;
}

}  // namespace zorvat::formats
