// What the test host was told on its command line.
#pragma once

#include <filesystem>
#include <string>

namespace zorvat::com::testing {

struct TestConfig {
  std::filesystem::path corpus;  // tests/corpus of the source tree
  std::filesystem::path dll;     // the zorvat.dll that regsvr32 registered
  std::filesystem::path work;    // a scratch folder for written files
};

const TestConfig& config();

// Registers one test per corpus case found under config().corpus.
void register_corpus_tests();

// Runs the benchmark and prints its figures; returns the process exit code.
int run_benchmark(int cards, int reads);

}  // namespace zorvat::com::testing
