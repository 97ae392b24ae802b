#include "test_folder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

namespace zorvat::testing_support {

std::filesystem::path fresh_test_folder(std::string_view prefix) {
  std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                 (std::string(prefix) + "-" + std::to_string(::getpid()) + "-" +
                                  testing::UnitTest::GetInstance()->current_test_info()->name());
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  return folder;
}

std::string read_file(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

void write_file(const std::filesystem::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace zorvat::testing_support
