// The properties of the host's time-card collection, its cards and their days, as
// the classes read them. Declared once here so that every class reads the same
// names and every host resolves each of them once per export.
#pragma once

#include <cstddef>

#include "zorvat/automation.h"

namespace zorvat::time_card {

// The collection.
inline constinit const PropertyName kCount{"Count"};
inline constinit const PropertyName kPeriodEnd{"PeriodEnd"};

// A card.
inline constinit const PropertyName kExportID{"ExportID"};
inline constinit const PropertyName kNumber{"Number"};
inline constinit const PropertyName kShift{"Shift"};
inline constinit const PropertyName kFirstName{"FirstName"};
inline constinit const PropertyName kMI{"MI"};
inline constinit const PropertyName kLastName{"LastName"};
inline constinit const PropertyName kBadge{"Badge"};
inline constinit const PropertyName kPeriodStart{"PeriodStart"};
inline constinit const PropertyName kDays{"Days"};

// The seven categories of time, in minutes, on a card and on each of its days; in
// the order the classes take them: regular, first and second level overtime,
// vacation, holiday, sick, other.
inline constexpr std::size_t kHourCategoryCount = 7;
inline constinit const PropertyName kHourCategories[kHourCategoryCount] = {
    PropertyName{"REG"}, PropertyName{"OT1"}, PropertyName{"OT2"}, PropertyName{"VAC"},
    PropertyName{"HOL"}, PropertyName{"SIC"}, PropertyName{"OTH"}};
inline constexpr const PropertyName& kREG = kHourCategories[0];
inline constexpr const PropertyName& kOT1 = kHourCategories[1];
inline constexpr const PropertyName& kOT2 = kHourCategories[2];
inline constexpr const PropertyName& kVAC = kHourCategories[3];
inline constexpr const PropertyName& kHOL = kHourCategories[4];
inline constexpr const PropertyName& kSIC = kHourCategories[5];
inline constexpr const PropertyName& kOTH = kHourCategories[6];

// The minutes edited into the card's regular and overtime totals.
inline constexpr std::size_t kEditCategoryCount = 3;
inline constinit const PropertyName kEditCategories[kEditCategoryCount] = {
    PropertyName{"EditREG"}, PropertyName{"EditOT1"}, PropertyName{"EditOT2"}};

// A day.
inline constinit const PropertyName kDayDate{"DayDate"};
inline constinit const PropertyName kHours{"Hours"};

}  // namespace zorvat::time_card
