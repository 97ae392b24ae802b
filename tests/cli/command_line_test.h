// The fixture of the command's tests that run it as a user does: a fresh folder for
// each test, files written into it, and the `zorvat` binary (ZORVAT_CLI) run as a
// process with its output and exit status.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "process.h"
#include "test_folder.h"

namespace zorvat::testing_support {

class CommandLineTest : public testing::Test {
 protected:
  void SetUp() override { dir_ = fresh_test_folder("zorvat-cli"); }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  // Writes `text` as the file `name` in the test's folder; returns its path.
  std::string write(const std::string& name, const std::string& text) const {
    const std::filesystem::path path = dir_ / name;
    write_file(path, text);
    return path.string();
  }
  static std::string read(const std::string& path) { return read_file(path); }
  // The path of `name` in the test's folder.
  std::string path_of(const std::string& name) const { return (dir_ / name).string(); }
  static ProcessResult zorvat(std::vector<std::string> args) {
    args.insert(args.begin(), ZORVAT_CLI);
    return run_process(args);
  }

  std::filesystem::path dir_;
};

}  // namespace zorvat::testing_support
