// The user's calendar setting of two-digit years (Region, "When a two-digit year is
// entered, interpret it as a year between"), which OLE Automation reads two-digit
// years through; the Windows hosts hand it to the framework (zorvat/date.h).
#pragma once

namespace zorvat::win32 {

// The latest year a two-digit year stands for in the user's Gregorian calendar, as
// GetCalendarInfoW answers; 2049 (current Windows) when it gives no year from 99 to
// 9999.
int users_two_digit_year_max();

}  // namespace zorvat::win32
