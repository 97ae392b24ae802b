#include "zorvat/reconcile/records.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "zorvat/error.h"
#include "zorvat/reconcile/expectation.h"
#include "zorvat/reconcile/reconcile.h"
#include "zorvat/reconcile/text_reader.h"
#include "zorvat/unicode.h"

namespace zorvat::reconcile {

void FileContents::add_hundredths(std::string_view employee, std::string_view code,
                                  std::int64_t hundredths, std::size_t line) {
  FileRecord record;
  record.employee = employee;
  record.code = code;
  record.amount = from_hundredths(hundredths);
  record.batch = batch;
  record.line = line;
  records.push_back(std::move(record));
}

void amount_overflow() {
  raise(rt::kOverflow, kSource,
        "Overflow: more time than reconciliation counts (at most " + hours_text(kLargestAmount, 2) +
            " hours in one amount or sum)");
}

Amount add(Amount a, Amount b) {
  Amount sum = 0;
  if (__builtin_add_overflow(a, b, &sum) || sum < -kLargestAmount) amount_overflow();
  return sum;
}

Amount from_minutes(double minutes) {
  const double units = std::round(minutes * static_cast<double>(kUnitsPerMinute));
  // 2^63 is the first double past the range (INT64_MAX itself is no double).
  constexpr double kBeyond = 9223372036854775808.0;
  if (!(units > -kBeyond && units < kBeyond)) amount_overflow();
  return static_cast<Amount>(units);
}

double to_hours(Amount amount) {
  return static_cast<double>(amount) / static_cast<double>(kUnitsPerHour);
}

namespace {

std::string read_error_message(std::string_view layout, std::size_t line, std::size_t column,
                               std::string_view problem) {
  std::string message = "not a ";
  message += layout;
  message += " file: line ";
  message += std::to_string(line);
  message += ", column ";
  message += std::to_string(column);
  message += ": ";
  message += problem;
  return message;
}

}  // namespace

ReadError::ReadError(std::string_view layout, std::size_t line, std::size_t column,
                     std::string_view problem)
    : std::runtime_error(read_error_message(layout, line, column, problem)),
      line_(line),
      column_(column) {}

std::vector<Line> split_lines(std::string_view layout, std::string_view bytes,
                              std::string_view terminator, bool last_terminated) {
  std::vector<Line> lines;
  std::size_t start = 0;
  std::size_t number = 1;
  while (start < bytes.size()) {
    const std::size_t end = bytes.find(terminator, start);
    if (end == std::string_view::npos) {
      if (last_terminated)
        throw ReadError(layout, number, text_length(bytes.substr(start)) + 1,
                        "the last line has no line end");
      lines.push_back({bytes.substr(start), number});
      break;
    }
    lines.push_back({bytes.substr(start, end - start), number});
    start = end + terminator.size();
    ++number;
  }
  return lines;
}

std::vector<std::string_view> split_fields(std::string_view line, std::string_view separator) {
  std::vector<std::string_view> fields;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = line.find(separator, start);
    if (end == std::string_view::npos) {
      fields.push_back(line.substr(start));
      return fields;
    }
    fields.push_back(line.substr(start, end - start));
    start = end + separator.size();
  }
}

std::size_t letter_column(std::string_view text, std::size_t position) {
  return text_length(text.substr(0, position)) + 1;
}

namespace {

// A decimal as parse_decimal reads it, split at its point.
struct DecimalText {
  bool negative = false;
  std::string_view whole;
  std::string_view fraction;
};

std::optional<DecimalText> split_decimal(std::string_view text, int decimals) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  DecimalText parts;
  if (!text.empty() && text.front() == '-') {
    parts.negative = true;
    text.remove_prefix(1);
  }
  parts.whole = text;
  if (decimals > 0) {
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos) return std::nullopt;
    parts.whole = text.substr(0, point);
    parts.fraction = text.substr(point + 1);
    if (parts.fraction.size() != static_cast<std::size_t>(decimals)) return std::nullopt;
  }
  if (parts.whole.empty() && parts.fraction.empty()) return std::nullopt;
  for (std::string_view digits : {parts.whole, parts.fraction})
    for (char c : digits)
      if (c < '0' || c > '9') return std::nullopt;
  return parts;
}

}  // namespace

std::optional<std::int64_t> parse_decimal(std::string_view text, int decimals) {
  const auto parts = split_decimal(text, decimals);
  // Seventeen digits at most: hundredths of an hour that many make an amount in range.
  if (!parts || parts->whole.size() + parts->fraction.size() > 17) return std::nullopt;
  std::int64_t value = 0;
  for (std::string_view digits : {parts->whole, parts->fraction})
    for (char c : digits) value = value * 10 + (c - '0');
  return parts->negative ? -value : value;
}

bool parse_decimal_digits(std::string_view text, int decimals) {
  return split_decimal(text, decimals).has_value();
}

std::vector<std::size_t> written_widths(std::size_t declared,
                                        const std::vector<std::string>& written) {
  std::vector<std::size_t> widths = {declared};
  for (const std::string& text : written) widths.push_back(text_length(text));
  std::sort(widths.begin(), widths.end());
  widths.erase(std::unique(widths.begin(), widths.end()), widths.end());
  // The column's own width goes first; the others keep their order after it.
  const auto own = std::find(widths.begin(), widths.end(), declared);
  std::rotate(widths.begin(), own, own + 1);
  return widths;
}

std::optional<CivilDate> parse_short_date(std::string_view text) {
  if (text.size() != 8 || text[2] != '/' || text[5] != '/') return std::nullopt;
  auto two = [&](std::size_t at) -> std::optional<int> {
    const char a = text[at];
    const char b = text[at + 1];
    if (a < '0' || a > '9' || b < '0' || b > '9') return std::nullopt;
    return (a - '0') * 10 + (b - '0');
  };
  const auto month = two(0);
  const auto day = two(3);
  const auto year = two(6);
  if (!month || !day || !year) return std::nullopt;
  const int full_year = year_of_two_digits(*year);
  if (!is_valid_civil(full_year, *month, *day)) return std::nullopt;
  return CivilDate{full_year, *month, *day};
}

std::string_view Cursor::take(std::size_t width, std::string_view what) {
  const std::string_view text = line_.text;
  std::size_t end = position_;
  std::size_t letters = 0;
  while (letters < width) {
    if (end >= text.size()) {
      std::string problem = "the record ends before ";
      problem += what;
      fail(problem);
    }
    if (static_cast<unsigned char>(text[end]) < 0x80) {
      ++letters, ++end;
      continue;
    }
    const Utf8Character character = decode_utf8(text, end);
    letters += utf16_units(character.value);
    if (letters > width) {
      std::string problem = code_point_name(character.value);
      problem += " stands across the end of ";
      problem += what;
      fail_at(end, problem);
    }
    end += character.bytes;
  }
  std::string_view taken = text.substr(position_, end - position_);
  position_ = end;
  return taken;
}

std::string_view Cursor::take_until(std::string_view delimiter, std::string_view what) {
  const std::size_t end = line_.text.find(delimiter, position_);
  if (end == std::string_view::npos) {
    std::string problem = "no \"";
    problem += delimiter;
    problem += "\" after ";
    problem += what;
    fail(problem);
  }
  std::string_view taken = line_.text.substr(position_, end - position_);
  position_ = end + delimiter.size();
  return taken;
}

void Cursor::expect(std::string_view literal, std::string_view what) {
  if (line_.text.substr(position_, literal.size()) != literal) {
    std::string problem = "expected ";
    problem += what;
    problem += " \"";
    problem += literal;
    problem += "\"";
    fail(problem);
  }
  position_ += literal.size();
}

void Cursor::expect_blanks(std::size_t count, std::string_view what) {
  for (std::size_t i = 0; i < count; ++i) {
    if (position_ >= line_.text.size() || line_.text[position_] != ' ') {
      std::string problem = "expected blanks (";
      problem += what;
      problem += ")";
      fail(problem);
    }
    ++position_;
  }
}

void Cursor::expect_blank_fill(std::size_t width) {
  if (text_length(line_.text) < width)
    fail("the record is shorter than " + std::to_string(width) + " columns");
  expect_blanks(line_.text.size() - position_, "fill to the end of the record");
}

std::int64_t Cursor::number(std::size_t width, int decimals, std::string_view what) {
  const std::size_t start = position_;
  const bool negative = position_ < line_.text.size() && line_.text[position_] == '-';
  return number_in(take(negative ? width + 1 : width, what), start, decimals, what);
}

std::int64_t Cursor::number_in(std::string_view text, std::size_t position, int decimals,
                               std::string_view what) const {
  const auto value = parse_decimal(text, decimals);
  if (!value) {
    std::string problem = "\"";
    problem += text;
    problem += "\" is not ";
    problem += what;
    fail_at(position, problem);
  }
  return *value;
}

void Cursor::expect_at(const Column& column) const {
  const auto column_now = static_cast<std::ptrdiff_t>(text_length(line_.text.substr(0, position_)));
  if (column_now + 1 != static_cast<std::ptrdiff_t>(column.first) + shift_)
    throw std::logic_error("the reader is out of step with the layout at " +
                           std::string(column.name));
}

std::string_view Cursor::take(const Column& column) {
  expect_at(column);
  return take(column.width, column.name);
}

std::string_view Cursor::take(const Column& column, std::size_t letters) {
  expect_at(column);
  shift_ += static_cast<std::ptrdiff_t>(letters) - static_cast<std::ptrdiff_t>(column.width);
  return take(letters, column.name);
}

void Cursor::expect_fill(const Column& column) {
  expect_at(column);
  if (text_length(line_.text) != column.last())
    fail("a record is " + std::to_string(column.last()) + " columns wide");
  expect_blanks(line_.text.size() - position_, column.name);
}

void Cursor::expect(const Column& column) {
  expect_at(column);
  expect(column.literal, column.name);
}

void Cursor::expect(const Column& column, std::string_view text) {
  expect_at(column);
  expect(text, column.name);
  shift_ +=
      static_cast<std::ptrdiff_t>(text_length(text)) - static_cast<std::ptrdiff_t>(column.width);
}

void Cursor::expect_blanks(const Column& column) {
  expect_at(column);
  expect_blanks(column.width, column.name);
}

std::int64_t Cursor::number(const Column& column) {
  expect_at(column);
  const bool negative = position_ < line_.text.size() && line_.text[position_] == '-';
  if (negative) ++shift_;
  return number(column.width, pattern_decimals(column.pattern), column.name);
}

void Cursor::expect_end() {
  if (!at_end()) fail("unexpected text at the end of the record");
}

void Cursor::fail_at(std::size_t position, std::string_view problem) const {
  throw ReadError(layout_, line_.number, letter_column(line_.text, position), problem);
}

}  // namespace zorvat::reconcile
