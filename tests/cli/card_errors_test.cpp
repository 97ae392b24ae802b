// An error raised while a class reads a card keeps the contract's line and adds one
// naming the card (its index in the file, its ExportID or Number) and the property:
// 438 for a property the card lacks, 13 for minutes that are not a number, 6 for
// minutes too large, on the first, a middle and the last card, in plain and JSON.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "process.h"
#include "test_folder.h"

namespace fs = std::filesystem;
using nlohmann::json;
using zorvat::testing_support::run_process;

namespace {

constexpr int kCards = 5;
const std::string kGeneric = "0,1,0,1,0,False,True,False,False,False,,0";
const std::string kPrimePay = "4,02,20,23,24,25,28";

// Five cards E100 to E104; `spoil` rewrites card `bad` (a JSON object).
std::string cards_json(int bad, const std::function<void(json&)>& spoil) {
  json cards = json::array();
  for (int i = 0; i < kCards; ++i) {
    json card = {{"ExportID", "E10" + std::to_string(i)},
                 {"Number", 315 + i},
                 {"Shift", 1},
                 {"REG", 2400},
                 {"OT1", 90},
                 {"OT2", 0},
                 {"VAC", 0},
                 {"HOL", 0},
                 {"SIC", 0},
                 {"OTH", 0},
                 {"FirstName", "Ann"},
                 {"MI", ""},
                 {"LastName", "Lee"},
                 {"Badge", "0315"}};
    if (i == bad) spoil(card);
    cards.push_back(card);
  }
  return json{{"PeriodEnd", "2004-03-06"}, {"cards", cards}}.dump();
}

struct Spoiled {
  const char* name;
  const char* class_name;
  const std::string* setup;
  std::function<void(json&)> spoil;
  long number;
  const char* property;
};

const std::vector<Spoiled>& spoiled_cards() {
  static const std::vector<Spoiled> cases = {
      {"MissingProperty", "Generic", &kGeneric, [](json& card) { card.erase("OT1"); }, 438, "OT1"},
      {"TextMinutes", "Generic", &kGeneric, [](json& card) { card["SIC"] = "sick"; }, 13, "SIC"},
      // PrimePay reads all seven totals before it converts them to whole minutes.
      {"MinutesTooLarge", "PrimePay", &kPrimePay, [](json& card) { card["VAC"] = 3000000000.0; }, 6,
       "VAC"},
  };
  return cases;
}

class CardErrors : public testing::TestWithParam<std::tuple<Spoiled, int>> {
 protected:
  void SetUp() override { dir_ = zorvat::testing_support::fresh_test_folder("zorvat-card-errors"); }
  void TearDown() override { fs::remove_all(dir_); }

  std::string write_cards(const std::string& text) {
    const fs::path path = dir_ / "cards.json";
    zorvat::testing_support::write_file(path, text);
    return path.string();
  }
  zorvat::testing_support::ProcessResult zorvat(std::vector<std::string> args) {
    args.insert(args.begin(), ZORVAT_CLI);
    return run_process(args);
  }

  fs::path dir_;
};

TEST_P(CardErrors, NameTheCardAndTheProperty) {
  const auto& [spoiled, bad] = GetParam();
  const std::string cards = write_cards(cards_json(bad, spoiled.spoil));
  const std::string out = (dir_ / "out").string();
  const std::vector<std::string> args = {"export",  spoiled.class_name, "--cards", cards,
                                         "--setup", *spoiled.setup,     "--out",   out};

  const auto plain = zorvat(args);
  EXPECT_EQ(plain.exit_code, 3);
  const std::string source = std::string("zorvat.") + spoiled.class_name + ".Execute";
  const std::string first_line =
      "zorvat: error " + std::to_string(spoiled.number) + " in " + source + ": ";
  EXPECT_TRUE(plain.err.starts_with(first_line)) << plain.err;
  const std::string card_line = "zorvat: while reading card " + std::to_string(bad) + " of " +
                                cards + " (ExportID E10" + std::to_string(bad) + "), property " +
                                spoiled.property + "\n";
  EXPECT_TRUE(plain.err.ends_with(card_line)) << plain.err;
  EXPECT_EQ(std::count(plain.err.begin(), plain.err.end(), '\n'), 2) << plain.err;

  std::vector<std::string> json_args = args;
  json_args.push_back("--json");
  const auto with_json = zorvat(json_args);
  EXPECT_EQ(with_json.exit_code, 3);
  const json report = json::parse(with_json.out);
  EXPECT_EQ(report["error"]["number"], spoiled.number);
  EXPECT_EQ(report["error"]["source"], source);
  EXPECT_EQ(
      report["error"]["card"],
      (json{{"index", bad}, {"id", "E10" + std::to_string(bad)}, {"property", spoiled.property}}));
}

INSTANTIATE_TEST_SUITE_P(FirstMiddleLast, CardErrors,
                         testing::Combine(testing::ValuesIn(spoiled_cards()),
                                          testing::Values(0, kCards / 2, kCards - 1)),
                         [](const testing::TestParamInfo<std::tuple<Spoiled, int>>& param) {
                           return std::string(std::get<0>(param.param).name) + "OnCard" +
                                  std::to_string(std::get<1>(param.param));
                         });

using CardErrorsOther = CardErrors;

TEST_F(CardErrorsOther, ACardWithoutExportIdIsNamedByItsNumber) {
  const std::string cards = write_cards(cards_json(2, [](json& card) {
    card.erase("ExportID");
    card["REG"] = "lots";
  }));
  const auto r = zorvat({"export", "PrimePay", "--cards", cards, "--setup", kPrimePay, "--out",
                         (dir_ / "out").string()});
  EXPECT_EQ(r.exit_code, 3);
  EXPECT_TRUE(
      r.err.ends_with("zorvat: while reading card 2 of " + cards + " (Number 317), property REG\n"))
      << r.err;
}

TEST_F(CardErrorsOther, ADayPropertyIsNamedWithItsDay) {
  json day = {{"DayDate", "2004-03-01"},
              {"Hours", 480},
              {"REG", 480},
              {"OT1", 0},
              {"OT2", 0},
              {"VAC", 0},
              {"HOL", 0},
              {"SIC", 0},
              {"OTH", 0}};
  json bad_day = day;
  bad_day["DayDate"] = "2004-03-02";
  bad_day["OT1"] = "x";
  const std::string cards = write_cards(
      json{{"cards", json::array({{{"ExportID", "E100"}, {"Days", json::array({day, bad_day})}}})}}
          .dump());
  const auto r = zorvat({"export", "Peachtree", "--cards", cards, "--setup",
                         ("1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,"
                          "ADMN-02002,ADMN-02003,0,17"),
                         "--out", (dir_ / "out").string(), "--json"});
  EXPECT_EQ(r.exit_code, 3);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["error"]["number"], 13);
  EXPECT_EQ(report["error"]["card"],
            (json{{"index", 0}, {"id", "E100"}, {"property", "Days[1].OT1"}}));
}

// A bad setting that fails while a card is exported names the settings position, not
// the card: none of the card's values explains the error, and the export goes through
// with that field alone made a number.
TEST_F(CardErrorsOther, AnErrorOfASettingNamesThePositionNotTheCard) {
  json day = {{"DayDate", "2004-03-01"},
              {"Hours", 480},
              {"REG", 480},
              {"OT1", 0},
              {"OT2", 0},
              {"VAC", 0},
              {"HOL", 0},
              {"SIC", 0},
              {"OTH", 0}};
  const std::string cards = write_cards(
      json{{"cards", json::array({{{"ExportID", "E100"}, {"Days", json::array({day})}}})}}.dump());
  const auto r = zorvat({"export", "Peachtree", "--cards", cards, "--setup",
                         ("1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,"
                          "ADMN-02002,ADMN-02003,0,x"),
                         "--out", (dir_ / "out").string(), "--json"});
  EXPECT_EQ(r.exit_code, 3);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["error"]["number"], 13);
  EXPECT_FALSE(report["error"].contains("card")) << r.out;
  EXPECT_EQ(report["error"]["setting"], (json{{"position", 15}, {"name", "Batch Sequence"}}));
}

// An error raised after the last card was read (here the file step's: the folder is
// missing) names no card.
TEST_F(CardErrorsOther, AnErrorAfterTheLastCardNamesNone) {
  const std::string cards = write_cards(cards_json(-1, [](json&) {}));
  const auto r = zorvat({"export", "Generic", "--cards", cards, "--setup", kGeneric, "--out",
                         (dir_ / "missing" / "out.tab").string(), "--json"});
  EXPECT_EQ(r.exit_code, 3);
  const json report = json::parse(r.out);
  EXPECT_EQ(report["error"]["number"], 76) << r.out;
  EXPECT_FALSE(report["error"].contains("card")) << r.out;
}

}  // namespace
