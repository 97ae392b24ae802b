#include "zorvat/reconcile/reasons.h"

namespace zorvat::reconcile {

std::string_view reason_id(Reason reason) {
  switch (reason) {
    case Reason::SkippedNoRegularOrOvertime:
      return "card-skipped-no-regular-time";
    case Reason::SkippedZeroTotal:
      return "card-skipped-zero-total";
    case Reason::NoPayCode:
      return "no-pay-code";
    case Reason::NotInLayout:
      return "category-not-in-layout";
    case Reason::NegativeNotExported:
      return "negative-not-exported";
    case Reason::RoundedToHundredths:
      return "rounded-to-hundredths";
    case Reason::DurationWholeHours:
      return "duration-whole-hours";
    case Reason::UnderOtherCode:
      return "under-other-code";
    case Reason::WrittenAsDeduction:
      return "written-as-deduction";
    case Reason::DeductionFlagIgnored:
      return "deduction-flag-ignored";
    case Reason::DaySkipped:
      return "day-skipped";
    case Reason::DaysDifferFromCard:
      return "days-differ-from-card";
    case Reason::Unexplained:
      return "unexplained";
  }
  return "unexplained";
}

std::string_view reason_text(Reason reason) {
  switch (reason) {
    case Reason::SkippedNoRegularOrOvertime:
      return "The card is left out: its regular and overtime minutes add up to zero, so none "
             "of its time is exported.";
    case Reason::SkippedZeroTotal:
      return "The card is left out: its seven categories add up to zero, so none of its time "
             "is exported.";
    case Reason::NoPayCode:
      return "The category has no pay code in the settings, so its time is not exported.";
    case Reason::NotInLayout:
      return "The layout has no place for this category (it carries only regular and "
             "overtime time), so its time is not exported.";
    case Reason::NegativeNotExported:
      return "Negative minutes are not exported.";
    case Reason::RoundedToHundredths:
      return "The file holds hours in hundredths; the minutes are rounded to the nearest "
             "hundredth of an hour.";
    case Reason::DurationWholeHours:
      return "The Duration column rounds the hours to a whole hour before adding the minutes "
             "of the hour (90 minutes are written 2:30).";
    case Reason::UnderOtherCode:
      return "The time is written under the pay code of another category, so payroll "
             "receives it as that category's time.";
    case Reason::WrittenAsDeduction:
      return "The settings export this category as a deduction: its time is written with "
             "the opposite sign.";
    case Reason::DeductionFlagIgnored:
      return "The settings mark this category as a deduction, but the layout has no "
             "deductions: its time is written as ordinary hours.";
    case Reason::DaySkipped:
      return "The time is on a day whose worked hours are zero; such a day yields no ticket.";
    case Reason::DaysDifferFromCard:
      return "The file is written from the card's days, and the days do not add up to the "
             "card's total for this category.";
    case Reason::Unexplained:
      return "No rule of the export class accounts for this difference.";
  }
  return "";
}

}  // namespace zorvat::reconcile
