// Runs every case of the conformance corpus through the `zorvat` command, exactly as a
// user would call it, and compares exit status, settings, messages, error and the
// bytes of the written file with the case.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "corpus_cases.h"
#include "process.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

std::string read_bytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

std::string case_name(const testing::TestParamInfo<fs::path>& info) {
  return zorvat::testing_support::corpus_case_name(info.param);
}

// Shows unprintable bytes, so a wrong CR or blank is visible in a failure.
std::string visible(const std::string& bytes) {
  std::string shown;
  for (unsigned char c : bytes) {
    if (c == '\r')
      shown += "\\r";
    else if (c == '\n')
      shown += "\\n\n";
    else if (c < 32 || c > 126) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02X", c);
      shown += hex;
    } else
      shown.push_back(static_cast<char>(c));
  }
  return shown;
}

class Corpus : public testing::TestWithParam<fs::path> {
 protected:
  void SetUp() override {
    work_ = fs::temp_directory_path() /
            ("zorvat-corpus-" + std::to_string(::getpid()) + "-" + case_name({GetParam(), 0}));
    fs::remove_all(work_);
    fs::create_directories(work_);
  }
  void TearDown() override { fs::remove_all(work_); }
  fs::path work_;
};

// Every class of the list that writes a file has cases (the command lists its classes).
TEST(CorpusCases, EveryClassThatWritesAFileHasCases) {
  std::set<std::string> with_cases;
  for (const fs::path& folder : zorvat::testing_support::corpus_case_folders())
    with_cases.insert(json::parse(read_bytes(folder / "case.json")).at("class").get<std::string>());
  const auto listed = zorvat::testing_support::run_process({ZORVAT_CLI, "classes"});
  ASSERT_EQ(listed.exit_code, 0) << listed.err;
  std::istringstream lines(listed.out);
  std::size_t classes = 0;
  for (std::string line; std::getline(lines, line); ++classes) {
    const std::string name = line.substr(7, line.find(' ') - 7);  // after "zorvat."
    if (name == "QB2000") continue;  // it writes no file: its cases talk to a company
    EXPECT_TRUE(with_cases.count(name)) << name << " has no corpus case";
  }
  EXPECT_GE(classes, 9u) << "the command lists the shipped classes and the test tree's";
}

TEST_P(Corpus, CommandLineHostMatches) {
  const fs::path dir = GetParam();
  const json test_case = json::parse(read_bytes(dir / "case.json"));
  const json& expect = test_case.at("expect");
  const std::string command = test_case.value("command", "export");

  std::vector<std::string> argv = {ZORVAT_CLI,
                                   command,
                                   test_case.at("class").get<std::string>(),
                                   "--setup",
                                   test_case.value("setup", ""),
                                   "--title",
                                   test_case.value("title", ""),
                                   "--json"};
  const fs::path written = work_ / "export.out";
  if (command == "export") {
    argv.insert(argv.end(), {"--cards", (dir / test_case.value("cards", "cards.json")).string(),
                             "--today", test_case.value("today", "2004-03-08")});
    const std::string save = test_case.value("save", "file");
    if (save == "file")
      argv.insert(argv.end(), {"--out", written.string()});
    else if (save == "empty")
      argv.insert(argv.end(), {"--out", ""});
    else
      ASSERT_EQ(save, "cancel") << "unknown save answer";
  }

  const auto result = zorvat::testing_support::run_process(argv);
  ASSERT_EQ(result.exit_code, expect.at("exit").get<int>()) << result.out << result.err;
  const json report = json::parse(result.out);
  EXPECT_EQ(report.at("setupData"), expect.at("setupData"));
  EXPECT_EQ(report.at("messages"), expect.value("messages", json::array()));
  // The command adds where the error belongs (the card being read or the settings
  // position, and why: its own context, which the COM host does not give); the error
  // itself is the contract's.
  json error = report.at("error");
  if (error.is_object())
    for (const char* place : {"card", "setting", "note"}) error.erase(place);
  EXPECT_EQ(error, expect.value("error", json()));
  EXPECT_EQ(report.at("result").get<bool>(), expect.at("exit").get<int>() == 0);
  // The letters the file's code page lacks: only a written file reports them.
  EXPECT_EQ(report.value("missingLetters", json::array()),
            expect.value("missingLetters", json::array()));
  if (!expect.at("file").is_null()) {
    EXPECT_EQ(report.value("codePage", ""), "windows-1252");
  }

  const json& file = expect.at("file");
  if (file.is_null()) {
    EXPECT_TRUE(report.at("file").is_null());
    EXPECT_FALSE(fs::exists(written)) << "a file was written";
  } else {
    ASSERT_TRUE(fs::exists(written)) << "no file written";
    EXPECT_EQ(report.at("file"), written.string());
    const std::string expected = read_bytes(dir / file.get<std::string>());
    const std::string actual = read_bytes(written);
    EXPECT_EQ(actual, expected) << "--- written:\n"
                                << visible(actual) << "\n--- expected:\n"
                                << visible(expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, Corpus,
                         testing::ValuesIn(zorvat::testing_support::corpus_case_folders()),
                         case_name);

}  // namespace
