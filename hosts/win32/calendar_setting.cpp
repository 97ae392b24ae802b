#include "win32/calendar_setting.h"

#include <windows.h>

#include "zorvat/date.h"

namespace zorvat::win32 {

int users_two_digit_year_max() {
  DWORD year = 0;
  const int answered =
      GetCalendarInfoW(LOCALE_USER_DEFAULT, CAL_GREGORIAN, CAL_ITWODIGITYEARMAX | CAL_RETURN_NUMBER,
                       nullptr, 0, &year);
  if (answered == 0 || year < static_cast<DWORD>(kEarliestTwoDigitYearMax) ||
      year > static_cast<DWORD>(kLatestTwoDigitYearMax))
    return kDefaultTwoDigitYearMax;
  return static_cast<int>(year);
}

}  // namespace zorvat::win32
