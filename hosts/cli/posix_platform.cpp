// Standard input and the terminal as the user's place on POSIX systems; there are no desktop
// dialogs.
#include <unistd.h>

#include <cerrno>

#include "platform.h"
#include "zorvat/date.h"

namespace zorvat::cli {

bool read_standard_input(std::string& bytes) {
  char chunk[1 << 16];
  while (true) {
    const ssize_t got = ::read(0, chunk, sizeof chunk);
    if (got == 0) return true;
    if (got < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.append(chunk, static_cast<std::size_t>(got));
  }
}

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
