#include "reconcile_test_support.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "app.h"
#include "export_classes.h"
#include "json_cards.h"
#include "scripted_host.h"

namespace zorvat::testing_support {

CommandRun run_command(const std::vector<std::string>& args) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = cli::run(args, out, err, false);
  return CommandRun{status, out.str(), err.str()};
}

std::string export_bytes(const std::string& class_name, const Variant& cards,
                         const std::string& setup, const std::string& title) {
  scripted::Host host;
  host.ui.answer_save("written.out");
  auto instance = formats::export_registry().create(class_name, host.context());
  if (!instance) throw std::logic_error("unknown class " + class_name);
  instance->Title = title;
  instance->SetupData(setup);
  if (!instance->Execute(cards)) throw std::logic_error(class_name + " wrote no file");
  return host.files.at("written.out");
}

Variant cards_from_json(const std::string& json) {
  return cli::load_cards_json(json, "test cards");
}

std::string random_cards_json(std::uint32_t seed, int count) {
  std::mt19937 random(seed);
  auto between = [&](int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
  };
  // Mostly no time or an ordinary amount, sometimes negative or a single minute.
  auto minutes = [&] {
    switch (between(0, 9)) {
      case 0:
      case 1:
      case 2:
        return 0;
      case 3:
        return -between(1, 300);
      case 4:
        return between(1, 7);
      default:
        return between(1, 3000);
    }
  };
  static const char* const kCategories[] = {"REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"};
  nlohmann::ordered_json document;
  document["PeriodEnd"] = "2004-03-06";
  nlohmann::ordered_json cards = nlohmann::ordered_json::array();
  for (int i = 0; i < count; ++i) {
    nlohmann::ordered_json card;
    card["ExportID"] = "E" + std::to_string(100 + i);
    card["Number"] = between(1000, 999999);
    card["Shift"] = between(0, 9);
    for (const char* category : kCategories) card[category] = minutes();
    // Now and then other time cancels the rest: the card's time adds up to zero.
    if (between(0, 9) == 0) {
      int rest = 0;
      for (const char* category : kCategories)
        if (std::string_view(category) != "OTH") rest += card[category].get<int>();
      card["OTH"] = -rest;
    }
    card["FirstName"] = "Ann";
    card["MI"] = "Q";
    card["LastName"] = "Lee" + std::to_string(i);
    card["Badge"] = "B" + std::to_string(i);
    card["EditREG"] = 0;
    card["EditOT1"] = 0;
    card["EditOT2"] = 0;
    card["PeriodStart"] = "2004-02-29";
    nlohmann::ordered_json days = nlohmann::ordered_json::array();
    const int day_count = between(0, 4);
    for (int d = 0; d < day_count; ++d) {
      nlohmann::ordered_json day;
      day["DayDate"] = "2004-03-0" + std::to_string(d + 1);
      day["Hours"] = between(0, 3) == 0 ? 0 : between(1, 600);
      for (const char* category : kCategories) day[category] = minutes();
      days.push_back(day);
    }
    card["Days"] = days;
    cards.push_back(card);
  }
  document["cards"] = cards;
  return document.dump();
}

std::vector<ClassSetup> random_test_setups() {
  return {
      {"Generic", "0,1,0,1,0,False,True,False,False,False,,0", ""},
      {"Generic", "1,1,0,1,1,False,False,False,True,False,,2", ""},
      {"Generic", "0,0,1,1,1,True,False,False,False,False,,1", ""},
      {"Generic", "1,0,1,0,0,True,False,False,False,False,,3", ""},
      // No line terminator: the records run together on one line.
      {"Generic", "0,1,0,1,1,False,True,False,False,False,,4", ""},
      {"Generic", "1,0,0,1,0,False,False,True,False,False,,9", ""},
      {"Generic", "0,0,0,0,0,False,False,False,False,False,,7", ""},
      {"ADP7",
       "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP", ""},
      {"ADP7", "ABC,7,1,H3,Hours 3,VA,Vacation Hours,,Holiday Hours,SI,Sick Hours,SI,Hours 4,CSV",
       ""},
      {"IntuitPAC", "ABCE12345,1,2,3,4,5,6,7,1,0,0,1", "Intuit PC Access Import File V2.0"},
      {"IntuitPAC", "ABC1234,1,2,3,4,5,6,6,0,0,0,0", "Intuit PC Access Import File V2.0"},
      {"IntuitPAC", "ABCQ12345,1,2,3,4,5,6,7,1,1,0,0", "Premier Import File V2.0"},
      {"PCPayLink", "7,A001,3,12,VA,HO,QS,R3", ""},
      {"PCPreview", "12,A,B,C,7,D,E,F,G,0,0,0,0", ""},
      {"PCPreview", "12,1,22,03,,5,,77,8,1,0,1,0", ""},
      {"Peachtree",
       "1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,"
       "ADMN-02003,1,5",
       ""},
      {"Peachtree",
       "1,2,3,4,5,6,7,ADMN-01000,ADMN-01000,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,"
       "ADMN-02003,0,17",
       ""},
      {"PrimePay", "4,02,20,23,24,25,28", ""},
      {"PrimePay", "0,2,20,23,24,25,28", ""},
      {"Tally", "1", ""},
      {"Tally", "0", ""},
  };
}

std::string read_file_bytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

}  // namespace zorvat::testing_support
