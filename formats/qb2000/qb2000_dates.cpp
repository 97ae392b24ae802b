#include "qb2000/qb2000_dates.h"

#include "qb2000/qb2000_requests.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/format.h"
#include "zorvat/time_card.h"

namespace zorvat::formats::qb2000 {
namespace {

// The calendar day a text of the Format engine names, if any.
std::optional<Date> day_of(const std::string& text) {
  const std::optional<Date> date = parse_date_text(text);
  if (!date) return std::nullopt;
  return Date::from_civil(date->civil());
}

// The calendar day the card holds: the same Format reading as the entry's, with the
// whole year written out.
std::optional<Date> held_date(const Variant& date) {
  static const FormatPattern pattern("MM/DD/YYYY");
  return day_of(pattern(date));
}

// "M/D/YYYY", as the classic conversion writes a date.
std::string date_text(Date date) {
  return general_date_text(Date::from_civil(date.civil()));
}

// The date, if two digits do not carry it.
std::optional<CenturyShiftedDate> shifted(const Variant& date, bool period_start) {
  const std::optional<Date> held = held_date(date);
  // Not a date at all: the export raises this when it writes the entry.
  if (!held) raise_runtime(rt::kTypeMismatch);
  const std::optional<Date> sent = sent_date(date);
  if (sent && *sent == *held) return std::nullopt;
  CenturyShiftedDate found;
  found.period_start = period_start;
  found.held = *held;
  found.sent = sent;
  return found;
}

// Whether the export sends time entries for `day`: its hour types add up to more
// than 0 (the day is exported) and one of them comes to a minute or more (the day's
// request set holds an entry). Reads as ExportTimeCard and ExportTCData read.
bool sends_entries(const Variant& day) {
  double total = 0;
  for (const PropertyName& property : time_card::kHourCategories)
    total += get_number(day, property);
  if (total <= 0) return false;
  bool any = false;
  // Every type is converted, as the export converts them before it sends the day.
  for (const PropertyName& property : time_card::kHourCategories)
    if (to_long(get_property(day, property)) > 0) any = true;
  return any;
}

// The first date of `card` that two digits do not carry, in the order the export
// sends them: its days, then the period start of its edit totals.
std::optional<CenturyShiftedDate> first_shifted_date(const Variant& card) {
  std::optional<CenturyShiftedDate> first;
  for_each(get_property(card, time_card::kDays), [&](const Variant& day) {
    if (first || !sends_entries(day)) return;
    first = shifted(get_property(day, time_card::kDayDate), false);
  });
  if (first) return first;
  for (const PropertyName& edit : time_card::kEditCategories) {
    const Variant minutes = get_property(card, edit);
    if (to_double(minutes) <= 0) continue;
    static_cast<void>(to_long(minutes));  // converted before the export reads the date
    // Every edit total carries the same date: looked at once.
    return shifted(get_property(card, time_card::kPeriodStart), true);
  }
  return std::nullopt;
}

}  // namespace

std::optional<Date> sent_date(const Variant& date) {
  static const FormatPattern pattern("MM/DD/YY");
  return day_of(pattern(date));
}

std::string CenturyShiftedDate::description() const {
  const int latest = two_digit_year_max();
  std::string text = "The card at index " + std::to_string(card) + " (" + employee + ") holds ";
  text += period_start ? "the period start " + date_text(held) + " (the date of its edit totals)"
                       : "the day " + date_text(held);
  text += sent ? ", which QuickBooks would get as " + date_text(*sent)
               : ", which comes back from a two-digit year as no date at all";
  text += ": two-digit years are read as " + std::to_string(latest - 99) + " to " +
          std::to_string(latest) + ".";
  text +=
      " Set the Region setting \"When a two-digit year is entered, interpret it as a year "
      "between\" (--two-digit-year-max on the command line) to a range that holds " +
      std::to_string(held.civil().year) + ".";
  return text;
}

void for_each_century_shifted_date(const Variant& cards,
                                   const std::function<void(const CenturyShiftedDate&)>& found) {
  bool readable = true;
  std::size_t index = 0;
  for_each(cards, [&](const Variant& card) {
    const std::size_t this_card = index++;
    if (!readable) return;
    std::optional<CenturyShiftedDate> date;
    try {
      // The names first, so that a raised date leaves its own property as the last
      // one read.
      const std::string employee =
          trim_spaces(to_concat_text(get_property(card, time_card::kFirstName)) + " " +
                      to_concat_text(get_property(card, time_card::kLastName)));
      date = first_shifted_date(card);
      if (date) {
        date->card = this_card;
        date->employee = employee;
      }
    } catch (const Error&) {
      // The export stops on this card with its own error, before anything of it or
      // of the cards after it is sent.
      readable = false;
      return;
    }
    if (date) found(*date);
  });
}

std::vector<CenturyShiftedDate> century_shifted_dates(const Variant& cards) {
  std::vector<CenturyShiftedDate> found;
  for_each_century_shifted_date(cards,
                                [&](const CenturyShiftedDate& date) { found.push_back(date); });
  return found;
}

}  // namespace zorvat::formats::qb2000
