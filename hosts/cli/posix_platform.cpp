// The terminal as the user's place on POSIX systems; there are no desktop dialogs.
#include <unistd.h>

#include "platform.h"
#include "zorvat/date.h"

namespace zorvat::cli {

bool interactive_session() {
  return ::isatty(0) && ::isatty(2);
}

UiServices* desktop_ui() {
  return nullptr;
}

int default_two_digit_year_max() {
  return kDefaultTwoDigitYearMax;
}

}  // namespace zorvat::cli
