// Hostile input through the command, for every export class: files that are not what
// they claim, values of every wrong type in every property, numbers out of every range,
// settings of absurd shape. Whatever comes in, the command exits with a clear status
// (0 or 1; 2 with the file and place named; 3 with a documented error and the class's
// source) and never crashes. Under the sanitizer build the same cases also prove that
// no input reads or writes memory it should not.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "process.h"

namespace fs = std::filesystem;
using nlohmann::json;
using zorvat::testing_support::run_process;

namespace {

std::string read(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

// A known good export of each class, taken from the conformance corpus.
// NOLINTNEXTLINE(bugprone-exception-escape): it takes json's noexcept members for throwing
struct GoodCase {
  std::string cls, setup, title, today;
  json cards;
};

void PrintTo(const GoodCase& good, std::ostream* out) {
  *out << good.cls;
}

std::vector<GoodCase> good_cases() {
  std::map<std::string, GoodCase> by_class;
  for (const auto& entry : fs::recursive_directory_iterator(ZORVAT_CORPUS_DIR)) {
    if (entry.path().filename() != "case.json") continue;
    const json test_case = json::parse(read(entry.path()));
    if (test_case.value("command", "export") != "export" || test_case["expect"]["exit"] != 0)
      continue;
    const std::string cls = test_case["class"];
    if (by_class.count(cls)) continue;
    const fs::path cards_file = entry.path().parent_path() / test_case.value("cards", "cards.json");
    json cards = json::parse(read(cards_file));
    if (cards["cards"].empty()) continue;  // a case with cards to spoil
    by_class[cls] = {cls, test_case.value("setup", ""), test_case.value("title", ""),
                     test_case.value("today", "2004-03-08"), std::move(cards)};
  }
  std::vector<GoodCase> cases;
  cases.reserve(by_class.size());
  for (auto& [cls, good] : by_class) cases.push_back(good);
  return cases;
}

class HostileInput : public testing::TestWithParam<GoodCase> {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("zorvat-hostile-" + std::to_string(::getpid()) + "-" + GetParam().cls);
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  // Runs an export of the text `cards` and checks that the outcome is a clean one.
  void run(const std::string& what, const std::string& cards, const std::string& setup) {
    const fs::path file = dir_ / "cards.json";
    std::ofstream(file, std::ios::binary) << cards;
    const GoodCase& good = GetParam();
    const auto result = run_process({ZORVAT_CLI, "export", good.cls, "--cards", file.string(),
                                     "--setup", setup, "--title", good.title, "--today", good.today,
                                     "--out", (dir_ / "out.txt").string(), "--json"});
    ASSERT_TRUE(result.exit_code >= 0 && result.exit_code <= 3)
        << what << ": exit " << result.exit_code << "\n"
        << result.err.substr(0, 2000);
    json report;
    ASSERT_NO_THROW(report = json::parse(result.out)) << what << ": " << result.out.substr(0, 500);
    if (result.exit_code == 2) {
      EXPECT_EQ(report["error"]["number"], 0) << what;
      EXPECT_NE(report["error"]["description"].get<std::string>().find("cards.json"),
                std::string::npos)
          << what;
    }
    if (result.exit_code == 3) {
      const long number = report["error"]["number"];
      static const std::set<long> runtime = {5, 6, 9, 13, 94, 438};
      const bool validation = number >= 1001 && number <= 6001;
      EXPECT_TRUE(runtime.count(number) || validation) << what << ": " << report.dump();
      EXPECT_EQ(report["error"]["source"].get<std::string>().rfind("zorvat." + good.cls + ".", 0),
                0u)
          << what << ": " << report.dump();
      EXPECT_FALSE(report["error"]["description"].get<std::string>().empty()) << what;
    }
    ++runs_;
  }

  fs::path dir_;
  int runs_ = 0;
};

TEST_P(HostileInput, FilesThatAreNotCardFiles) {
  const GoodCase& good = GetParam();
  const std::string text = good.cards.dump();
  run("empty file", "", good.setup);
  run("truncated", text.substr(0, text.size() / 2), good.setup);
  run("not JSON", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16), good.setup);
  run("nested too deeply", "{\"cards\": [" + std::string(5000, '[') + std::string(5000, ']') + "]}",
      good.setup);
  run("top level array", "[" + text + "]", good.setup);
  run("cards not an array", "{\"cards\": 5}", good.setup);
  run("trailing garbage", text + "}", good.setup);
  run("invalid UTF-8 text", "{\"cards\": [{\"ExportID\": \"\xff\xfe\"}]}", good.setup);
}

TEST_P(HostileInput, EveryPropertyWithEveryWrongType) {
  const GoodCase& good = GetParam();
  ASSERT_FALSE(good.cards["cards"].empty());
  const json card = good.cards["cards"][0];
  const std::vector<json> wrong = {json::object(),
                                   json::array(),
                                   true,
                                   nullptr,
                                   "text",
                                   "",
                                   -1,
                                   1e308,
                                   -1e308,
                                   2147483648.0,
                                   -2147483649.0,
                                   32768,
                                   0.5,
                                   std::string(100000, 'W')};
  for (const auto& [key, value] : card.items()) {
    for (const json& replacement : wrong) {
      json cards = good.cards;
      cards["cards"][0][key] = replacement;
      run(key + " = " + replacement.dump().substr(0, 40), cards.dump(), good.setup);
    }
    json without = good.cards;
    without["cards"][0].erase(key);
    run("without " + key, without.dump(), good.setup);
  }
  for (const char* key : {"PeriodEnd"}) {
    for (const json& replacement : wrong) {
      json cards = good.cards;
      cards[key] = replacement;
      run(std::string(key) + " = " + replacement.dump().substr(0, 40), cards.dump(), good.setup);
    }
  }
}

TEST_P(HostileInput, DayRecordsWithWrongTypes) {
  const GoodCase& good = GetParam();
  json cards = good.cards;
  cards["cards"][0]["Days"] = json::array({json::object(
      {{"DayDate", "2004-03-01"}, {"Hours", "lots"}, {"REG", json::array()}, {"OT1", nullptr}})});
  run("day with wrong types", cards.dump(), good.setup);
  cards["cards"][0]["Days"] = json::array({json::object()});
  run("empty day", cards.dump(), good.setup);
}

TEST_P(HostileInput, DuplicateKeysTakeTheFirst) {
  const GoodCase& good = GetParam();
  std::string text = good.cards.dump();
  const auto at = text.find("\"REG\":");
  ASSERT_NE(at, std::string::npos);
  text.insert(at, "\"REG\":\"duplicate\",");
  run("duplicate REG", text, good.setup);
}

TEST_P(HostileInput, SettingsOfAbsurdShape) {
  const GoodCase& good = GetParam();
  const std::string cards = good.cards.dump();
  std::string many;
  for (int i = 0; i < 5000; ++i) many += i ? ",1" : "1";
  for (const std::string& setup : {std::string(), std::string(","), std::string(200, ','), many,
                                   std::string("\xC3\xA9,\xE2\x82\xAC,\xFF"),
                                   std::string(100000, 'S'), good.setup + "," + good.setup}) {
    run("settings " + setup.substr(0, 30), cards, setup);
  }
  EXPECT_GT(runs_, 0);
}

INSTANTIATE_TEST_SUITE_P(Classes, HostileInput, testing::ValuesIn(good_cases()),
                         [](const testing::TestParamInfo<GoodCase>& param) {
                           return param.param.cls;
                         });

}  // namespace
