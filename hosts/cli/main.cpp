#include <iostream>
#include <string>
#include <vector>

#include "app.h"

#if defined(_WIN32)
#include <io.h>
#define ZORVAT_ISATTY _isatty
#else
#include <unistd.h>
#define ZORVAT_ISATTY isatty
#endif

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const std::vector<std::string> args(argv + 1, argv + argc);
  const bool interactive = ZORVAT_ISATTY(0) && ZORVAT_ISATTY(2);
  return zorvat::cli::run(args, std::cout, std::cerr, interactive);
}
