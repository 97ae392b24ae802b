#include "zorvat/reconcile/reconcile.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <tuple>

#include "zorvat/reconcile/expectation.h"
#include "zorvat/unicode.h"

namespace zorvat::reconcile {
namespace {

// Amounts are compared per employee, code and day.
using GroupKey = std::tuple<std::string, std::string, int, int, int>;

GroupKey group_key(const std::string& employee, const std::string& code,
                   const std::optional<CivilDate>& date) {
  return date ? GroupKey{employee, code, date->year, date->month, date->day}
              : GroupKey{employee, code, 0, 0, 0};
}

struct Group {
  Amount expected = 0;
  Amount written = 0;
  std::optional<std::size_t> first_row;
};

using Controls = std::vector<std::pair<std::string, std::int64_t>>;

std::vector<std::string> control_problems(const Controls& expected, const Controls& written) {
  std::map<std::string, std::pair<std::optional<std::int64_t>, std::optional<std::int64_t>>>
      controls;
  for (const auto& [name, value] : expected) controls[name].first = value;
  for (const auto& [name, value] : written) controls[name].second = value;
  std::vector<std::string> problems;
  for (const auto& [name, values] : controls) {
    const auto& [should, is] = values;
    if (should == is) continue;
    if (!is)
      problems.push_back("The file states no " + name + "; the cards and settings make it " +
                         std::to_string(*should) + ".");
    else if (!should)
      problems.push_back("The file states a " + name + " of " + std::to_string(*is) +
                         " where the cards and settings make none.");
    else
      problems.push_back("The file's " + name + " is " + std::to_string(*is) +
                         "; the cards and settings make it " + std::to_string(*should) + ".");
  }
  return problems;
}

// The sums the report shows (each row's difference, the totals and their difference, the
// share of each reason) must be amounts too: raises amount_overflow where one is not.
void check_sums(const std::vector<Row>& rows) {
  Amount input = 0;
  Amount in_file = 0;
  std::map<Reason, Amount> by_reason;
  for (const Row& row : rows) {
    add(row.in_file, -row.input);
    input = add(input, row.input);
    in_file = add(in_file, row.in_file);
    for (const Adjustment& adjustment : row.adjustments)
      by_reason[adjustment.reason] = add(by_reason[adjustment.reason], adjustment.delta);
  }
  add(in_file, -input);
}

}  // namespace

bool Row::explained() const {
  return std::none_of(adjustments.begin(), adjustments.end(),
                      [](const Adjustment& a) { return a.reason == Reason::Unexplained; });
}

std::size_t Reconciliation::unexplained() const {
  return problems.size() +
         static_cast<std::size_t>(std::count_if(rows.begin(), rows.end(),
                                                [](const Row& row) { return !row.explained(); }));
}

void run_settings_check(const ClassRules& rules, std::string_view setup, std::string_view title) {
  HeadlessUi ui;
  NoOutputFiles files;
  const std::unique_ptr<ExportClass> instance = rules.create({ui, files, system_clock()});
  instance->Title = title;
  instance->SetupData(std::string(setup));
  instance->run_check();
}

Reconciliation check(const ClassRules& rules, const Variant& cards, std::string_view setup,
                     std::string_view title) {
  run_settings_check(rules, setup, title);
  Expectation expectation = rules.expect(cards, SettingsFields(setup), title);
  check_sums(expectation.rows);
  Reconciliation result;
  result.class_name = rules.class_name;
  result.layout = std::move(expectation.layout);
  result.rows = std::move(expectation.rows);
  return result;
}

Reconciliation reconcile(const ClassRules& rules, const Variant& cards, std::string_view setup,
                         std::string_view title, std::string_view file_bytes) {
  const SettingsFields settings(setup);
  Expectation expectation = rules.expect(cards, settings, title);
  const FileContents contents = rules.read(file_bytes, settings, title, cards);

  std::map<GroupKey, Group> groups;
  for (const ExpectedRecord& record : expectation.records) {
    Group& group = groups[group_key(record.employee, record.code, record.date)];
    group.expected = add(group.expected, record.amount);
    if (!group.first_row) group.first_row = record.row;
  }
  for (const FileRecord& record : contents.records) {
    Group& group = groups[group_key(record.employee, record.code, record.date)];
    group.written = add(group.written, record.amount);
  }

  // A group that does not carry what the rules leave is a difference no rule explains:
  // it is charged to the first row the group was expected for, or to a row of its own
  // when the file has time nobody expected.
  for (const auto& [key, group] : groups) {
    const Amount residual = add(group.written, -group.expected);
    if (residual == 0) continue;
    if (group.first_row) {
      Row& row = expectation.rows[*group.first_row];
      row.adjustments.push_back({Reason::Unexplained, residual});
      row.in_file = add(row.in_file, residual);
    } else {
      Row row;
      row.employee = std::get<0>(key);
      row.category = std::get<1>(key);
      row.in_file = residual;
      row.adjustments.push_back({Reason::Unexplained, residual});
      expectation.rows.push_back(std::move(row));
    }
  }

  check_sums(expectation.rows);
  Reconciliation result;
  result.problems = control_problems(expectation.controls, contents.controls);
  result.class_name = rules.class_name;
  result.layout = contents.layout;
  result.file_read = true;
  result.rows = std::move(expectation.rows);
  return result;
}

std::string hours_text(Amount amount, int decimals, bool sign) {
  // An amount a double holds exactly is printed through it; a larger one (beyond 2^53,
  // some 1.5 x 10^12 hours) in whole numbers, rounded half away from zero.
  constexpr Amount kExactInDouble = Amount{1} << 53;
  if (amount > kExactInDouble || amount < -kExactInDouble) {
    const bool negative = amount < 0;
    const auto magnitude =
        negative ? 0 - static_cast<std::uint64_t>(amount) : static_cast<std::uint64_t>(amount);
    std::uint64_t whole = magnitude / kUnitsPerHour;
    std::uint64_t scale = 1;
    for (int i = 0; i < decimals; ++i) scale *= 10;
    const std::uint64_t rest = magnitude % kUnitsPerHour * scale;
    std::uint64_t fraction = (2 * rest + kUnitsPerHour) / (2 * kUnitsPerHour);
    if (fraction == scale) ++whole, fraction = 0;
    std::string text = negative ? "-" : sign ? "+" : "";
    text += std::to_string(whole);
    if (decimals > 0) {
      const std::string digits = std::to_string(fraction);
      text += '.';
      text.append(static_cast<std::size_t>(decimals) - digits.size(), '0');
      text += digits;
    }
    return text;
  }
  const double hours = to_hours(amount);
  char text[64];
  std::snprintf(text, sizeof text, sign ? "%+.*f" : "%.*f", decimals, hours);
  std::string result(text);
  // No "-0.00": a value that rounds to zero is written without a sign.
  if (std::strtod(text, nullptr) == 0) {
    std::snprintf(text, sizeof text, "%.*f", decimals, 0.0);
    result = text;
  }
  return result;
}

namespace {

// The reasons of a row; with more than one, each with its share of the difference.
std::string reasons_column(const Row& row) {
  std::string text;
  for (const Adjustment& adjustment : row.adjustments) {
    if (!text.empty()) text += ", ";
    text += reason_id(adjustment.reason);
    if (row.adjustments.size() > 1 && adjustment.delta != 0)
      text += " " + hours_text(adjustment.delta, 4, true);
  }
  return text;
}

}  // namespace

std::string table_text(const Reconciliation& reconciliation) {
  std::vector<std::vector<std::string>> table;
  table.push_back({"Employee", "Category", "Input hours",
                   reconciliation.file_read ? "In the file" : "To the file", "Difference",
                   "Reason"});
  Amount input = 0;
  Amount in_file = 0;
  std::map<Reason, std::pair<std::size_t, Amount>> used;
  for (const Row& row : reconciliation.rows) {
    input += row.input;
    in_file += row.in_file;
    for (const Adjustment& adjustment : row.adjustments) {
      auto& [count, total] = used[adjustment.reason];
      ++count;
      total += adjustment.delta;
    }
    if (!row.worth_showing()) continue;
    table.push_back({row.employee, row.category, hours_text(row.input, 2),
                     hours_text(row.in_file, 2), hours_text(row.difference(), 4, true),
                     reasons_column(row)});
  }
  table.push_back({"Total", "", hours_text(input, 2), hours_text(in_file, 2),
                   hours_text(in_file - input, 4, true), ""});

  // Columns are as wide as their longest text in letters (an export ID may hold "ñ").
  std::vector<std::size_t> widths(table.front().size(), 0);
  for (const auto& line : table)
    for (std::size_t i = 0; i < line.size(); ++i)
      widths[i] = std::max(widths[i], text_length(line[i]));
  std::string text;
  auto put_line = [&](const std::vector<std::string>& line) {
    std::string out;
    for (std::size_t i = 0; i < line.size(); ++i) {
      // Hours columns are right-aligned, the others left-aligned.
      const bool right = i >= 2 && i <= 4;
      const std::string pad(widths[i] - text_length(line[i]), ' ');
      if (i > 0) out += "  ";
      out += right ? pad + line[i] : line[i] + (i + 1 < line.size() ? pad : "");
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    text += out;
    text += '\n';
  };
  for (std::size_t i = 0; i < table.size(); ++i) {
    if (i + 1 == table.size()) {
      std::size_t rule = 0;
      for (std::size_t width : widths) rule += width + 2;
      text += std::string(rule - 2, '-') + '\n';
    }
    put_line(table[i]);
  }

  if (!used.empty()) {
    text += "\nReasons:\n";
    for (const auto& [reason, count_total] : used) {
      text += "  ";
      text += reason_id(reason);
      text += " (" + std::to_string(count_total.first) +
              (count_total.first == 1 ? " row, " : " rows, ") +
              hours_text(count_total.second, 4, true) + " h): ";
      text += reason_text(reason);
      text += '\n';
    }
  }
  if (!reconciliation.problems.empty()) {
    text += "\nProblems with no known reason:\n";
    for (const std::string& problem : reconciliation.problems) text += "  " + problem + "\n";
  }
  const std::size_t unexplained = reconciliation.unexplained();
  text += '\n';
  if (unexplained == 0)
    text += "Every difference is accounted for by a named reason.\n";
  else
    text += std::to_string(unexplained) +
            (unexplained == 1 ? " difference has" : " differences have") + " no known reason.\n";
  return text;
}

}  // namespace zorvat::reconcile
