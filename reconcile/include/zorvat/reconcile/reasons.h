// Why the time in a payroll file differs from the time on the cards: each rule of an
// export class that changes, drops or relabels time has a reason, named by a stable
// identifier (for scripts) and an English sentence (for the clerk).
#pragma once

#include <string_view>

namespace zorvat::reconcile {

enum class Reason {
  SkippedNoRegularOrOvertime,
  SkippedZeroTotal,
  NoPayCode,
  NotInLayout,
  NegativeNotExported,
  RoundedToHundredths,
  DurationWholeHours,
  UnderOtherCode,
  WrittenAsDeduction,
  DeductionFlagIgnored,
  DaySkipped,
  DaysDifferFromCard,
  Unexplained,
};

inline constexpr Reason kAllReasons[] = {
    Reason::SkippedNoRegularOrOvertime,
    Reason::SkippedZeroTotal,
    Reason::NoPayCode,
    Reason::NotInLayout,
    Reason::NegativeNotExported,
    Reason::RoundedToHundredths,
    Reason::DurationWholeHours,
    Reason::UnderOtherCode,
    Reason::WrittenAsDeduction,
    Reason::DeductionFlagIgnored,
    Reason::DaySkipped,
    Reason::DaysDifferFromCard,
    Reason::Unexplained,
};

// "card-skipped-no-regular-time", ...
std::string_view reason_id(Reason reason);
// The sentence that explains the reason to a payroll clerk.
std::string_view reason_text(Reason reason);

}  // namespace zorvat::reconcile
