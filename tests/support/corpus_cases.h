// The corpus cases the native tests run: the conformance corpus every host passes
// (ZORVAT_CORPUS_DIR), and the cases of the test tree's own classes
// (ZORVAT_TEST_CLASS_CORPUS_DIR), which only the native binaries have. A case is a
// folder with a case.json; it is named by its path below its root ("generic/x").
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace zorvat::testing_support {

inline std::vector<std::filesystem::path> corpus_roots() {
  return {ZORVAT_CORPUS_DIR, ZORVAT_TEST_CLASS_CORPUS_DIR};
}

// Every case folder, in order of name.
inline std::vector<std::filesystem::path> corpus_case_folders() {
  std::vector<std::filesystem::path> folders;
  for (const std::filesystem::path& root : corpus_roots())
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
      if (entry.is_regular_file() && entry.path().filename() == "case.json")
        folders.push_back(entry.path().parent_path());
  std::sort(folders.begin(), folders.end());
  return folders;
}

// The case's path below its root, with every other character than a letter or digit
// made "_" (a test name).
inline std::string corpus_case_name(const std::filesystem::path& folder) {
  std::string name;
  for (const std::filesystem::path& root : corpus_roots()) {
    const std::string relative = std::filesystem::relative(folder, root).generic_string();
    if (!relative.starts_with("..")) name = relative;
  }
  for (char& c : name)
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  return name;
}

}  // namespace zorvat::testing_support
