// Scratch folders and whole-file reads and writes for the command's tests: each test
// works in a fresh folder of its own, named after it, so that tests never see each
// other's files.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace zorvat::testing_support {

// An empty folder in the temporary folder for the running test:
// "<prefix>-<process id>-<test name>", emptied first if an earlier run left it.
std::filesystem::path fresh_test_folder(std::string_view prefix);

// The file's bytes; empty when it cannot be read.
std::string read_file(const std::filesystem::path& path);

// Writes `bytes` as the whole file.
void write_file(const std::filesystem::path& path, std::string_view bytes);

}  // namespace zorvat::testing_support
