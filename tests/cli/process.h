// Runs a program with arguments (no shell), stdin from /dev/null or a pipe, and collects
// its standard output, standard error and exit status.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zorvat::testing_support {

struct ProcessResult {
  int exit_code = -1;  // -1 when it did not exit normally (a signal, a crash)
  std::string out;
  std::string err;
};

// With `input`, standard input is a pipe that is given those bytes and then closed.
ProcessResult run_process(const std::vector<std::string>& argv,
                          const std::optional<std::string>& input = std::nullopt);

}  // namespace zorvat::testing_support
