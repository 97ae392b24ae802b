// Runs a program with arguments (no shell), stdin from /dev/null, and collects its
// standard output, standard error and exit status.
#pragma once

#include <string>
#include <vector>

namespace zorvat::testing_support {

struct ProcessResult {
  int exit_code = -1;  // -1 when it did not exit normally (a signal, a crash)
  std::string out;
  std::string err;
};

ProcessResult run_process(const std::vector<std::string>& argv);

}  // namespace zorvat::testing_support
