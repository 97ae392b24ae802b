#include "generic/generic_reader.h"

#include <algorithm>

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

FileContents read_generic_file(std::string_view bytes, const SettingsFields& settings,
                               const std::vector<std::string>& export_ids) {
  const Layout layout = layout_of(settings);
  FileContents contents;
  contents.layout = kLayout;
  if (bytes.empty()) return contents;
  if (layout.terminator.empty())
    throw ReadError(kLayout, 1, 1, "the settings choose no line terminator");

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
      contents.records.push_back(std::move(record));
    }
  }
  return contents;
}

}  // namespace zorvat::formats
