#include "zorvat/reconcile/expectation.h"

#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/hours.h"
#include "zorvat/reconcile/text_reader.h"

namespace zorvat::reconcile {

std::int64_t pattern_number(const Variant& value, std::string_view pattern, int decimals) {
  const std::string text = format(value, pattern);
  const auto scaled = parse_decimal(text, decimals);
  if (scaled) return *scaled;
  // A number with more digits than an amount holds, or text a number pattern passes
  // unchanged (a settings field that is no number).
  if (parse_decimal_digits(text, decimals)) amount_overflow();
  raise(rt::kTypeMismatch, kSource, "Type mismatch: \"" + text + "\" is not a number");
}

Amount written(double value, std::string_view pattern, int decimals) {
  return from_hundredths(pattern_number(Variant(value), pattern, decimals));
}

Amount hours_with_decimals(double minutes, std::string_view pattern) {
  return written(hours::minutes_to_hours(minutes, kSource), pattern, 2);
}

std::string text_through(const std::string& field, std::string_view pattern) {
  return format(Variant(field), pattern);
}

double minutes_of(const Variant& object, std::string_view category) {
  return to_double(get_property(object, category));
}

Minutes card_minutes(const Variant& card) {
  Minutes minutes{};
  for (std::size_t c = 0; c < kCategoryCount; ++c) minutes[c] = minutes_of(card, kCategories[c]);
  return minutes;
}

bool total_is_zero(const Minutes& minutes) {
  double total = 0;
  for (double m : minutes) total += m;
  return total == 0;
}

bool flag_set(const SettingsFields& settings, std::size_t position) {
  return position < settings.size() && field_in_range(settings.at(position), 1, 1);
}

Rows ExpectationBuilder::card(const std::string& employee, const Minutes& minutes) {
  card_start_ = expectation_.records.size();
  Rows rows{};
  for (std::size_t c = 0; c < kCategoryCount; ++c) {
    Row row;
    row.employee = employee;
    row.category = kCategories[c];
    row.input = from_minutes(minutes[c]);
    row.in_file = row.input;
    rows[c] = expectation_.rows.size();
    expectation_.rows.push_back(std::move(row));
  }
  return rows;
}

void ExpectationBuilder::adjust(std::size_t row, Reason reason, Amount delta) {
  Row& target = expectation_.rows[row];
  target.in_file = add(target.in_file, delta);
  for (Adjustment& adjustment : target.adjustments)
    if (adjustment.reason == reason) {
      adjustment.delta = add(adjustment.delta, delta);
      return;
    }
  target.adjustments.push_back({reason, delta});
}

void ExpectationBuilder::drop(std::size_t row, Reason reason) {
  const Amount left = expectation_.rows[row].in_file;
  if (left != 0) adjust(row, reason, -left);
}

void ExpectationBuilder::drop(std::size_t row, Reason reason, Amount amount) {
  if (amount != 0) adjust(row, reason, -amount);
}

void ExpectationBuilder::write(std::size_t row, std::string code, Amount intended, Amount amount,
                               Reason rounding, std::optional<CivilDate> date) {
  if (amount != intended) adjust(row, rounding, add(amount, -intended));
  if (amount != 0) {
    // Time of another category of the same card already under this code.
    for (std::size_t i = card_start_; i < expectation_.records.size(); ++i) {
      const ExpectedRecord& other = expectation_.records[i];
      if (other.code == code && other.date == date && other.row != row && other.amount != 0) {
        adjust(row, Reason::UnderOtherCode, 0);
        break;
      }
    }
  }
  expectation_.records.push_back(
      {expectation_.rows[row].employee, std::move(code), date, amount, row});
}

void ExpectationBuilder::write(std::size_t row, std::string code, Amount amount, Reason rounding) {
  write(row, std::move(code), expectation_.rows[row].in_file, amount, rounding);
}

void ExpectationBuilder::control(std::string name, std::int64_t value) {
  expectation_.controls.emplace_back(std::move(name), value);
}

void NoOutputFiles::write_file(const std::string&, std::string_view) {
  raise_runtime(rt::kPermissionDenied);
}

}  // namespace zorvat::reconcile
