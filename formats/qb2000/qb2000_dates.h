// The dates of the time entries: QuickBooks gets every entry's date written with a
// two-digit year ("MM/DD/YY") and read back through the two-digit-year window
// (zorvat/date.h). A date outside the window's hundred years comes back a century
// off (1 January 2030 as 1930 under a window that ends in 2029), so the export looks
// at every date it would send before it opens the connection, and refuses a period
// that holds such a date instead of sending it.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "zorvat/date.h"
#include "zorvat/variant.h"

namespace zorvat::formats::qb2000 {

// The date QuickBooks gets for an entry dated `date`: written "MM/DD/YY" and read
// back, so only the calendar day with a two-digit year is left. No value when the text
// reads back as no date at all.
std::optional<Date> sent_date(const Variant& date);

// A date of a card that two digits do not carry: QuickBooks would get another day.
struct CenturyShiftedDate {
  std::size_t card = 0;       // index from 0, in collection order
  std::string employee;       // the card's first and last name
  bool period_start = false;  // the period start its edit totals carry; else a DayDate
  Date held;                  // the calendar day on the card
  std::optional<Date> sent;   // what QuickBooks would get; none: no date at all

  // Names the card, both dates, the window (two_digit_year_max()) and the setting
  // that moves it.
  std::string description() const;
};

// Walks the cards once, reading what the export reads to date its entries, in its
// order: every day it sends an entry for (its hour types add up to more than 0 and one
// of them is a minute or more) by its DayDate, and, when an edit total EditREG, EditOT1
// or EditOT2 is more than 0, the PeriodStart. Calls `found` with the first date of a
// card that does not come back the same; `found` may raise, which ends the walk on
// that card.
//
// A card the walk cannot read (a property missing, a value that does not convert)
// ends it: the export raises its own error on the same read, before it sends
// anything of that card or of any card after it.
void for_each_century_shifted_date(const Variant& cards,
                                   const std::function<void(const CenturyShiftedDate&)>& found);

// Every card's first such date, in card order.
std::vector<CenturyShiftedDate> century_shifted_dates(const Variant& cards);

}  // namespace zorvat::formats::qb2000
