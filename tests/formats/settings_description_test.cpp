// Every class's description of its settings string against its settings table:
// positions, the setup form's design values and the error that guards each field,
// written out by hand. Each guard is then held to the class's own check: a bad value
// at a guarded position raises exactly that number, and no value at an unguarded
// position raises anything.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "export_classes.h"
#include "scripted_host.h"
#include "zorvat/error.h"
#include "zorvat/forms.h"

namespace zorvat::formats {
namespace {

struct Expected {
  const char* class_name;
  const char* title;  // IntuitPAC's edition
  std::vector<std::string> design_values;
  std::vector<long> guards;  // per position; 0 when the check does not look at it
  const char* valid;         // a settings string the check accepts
};

const std::vector<Expected>& expected_tables() {
  static const std::vector<Expected> tables = {
      {"Generic",
       "",
       {"0", "0", "0", "0", "0", "False", "False", "False", "False", "False", "", "0"},
       {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
       "0,1,0,1,0,False,True,False,False,False,,0"},
      {"ADP7",
       "",
       {"", "", "", "", "Hours 3", "", "Vacation Hours", "", "Holiday Hours", "", "Sick Hours", "",
        "Hours 4", "EPIP"},
       {0, 1002, 0, 1004, 0, 1006, 0, 1008, 0, 1010, 0, 1012, 0, 0},
       "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP"},
      {"IntuitPAC",
       "Intuit PC Access Import File V2.0",
       {"", "", "", "", "", "", "", "", "0", "0", "0", "0"},
       {1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008, 0, 0, 0, 0},
       "ABCE12345,1,2,3,4,5,6,7,1,0,0,0"},
      {"PCPayLink",
       "",
       {"0", "A001", "0", "0", "VA", "HO", "QS", "R3"},
       {2001, 2002, 2003, 2004, 0, 0, 0, 0},
       "7,A001,3,12,VA,HO,QS,R3"},
      {"PCPreview",
       "",
       {"0", "A", "B", "C", "0", "D", "E", "F", "G", "0", "0", "0", "0"},
       {3001, 3002, 3003, 3004, 3005, 3006, 3007, 3008, 3009, 0, 0, 0, 0},
       "12,A,B,C,7,D,E,F,G,1,0,0,0"},
      {"Peachtree",
       "",
       {"0", "0", "0", "0", "0", "0", "0", "ADMN-01000", "ADMN-01000", "ADMN-01000", "ADMN-02000",
        "ADMN-02000", "ADMN-02000", "ADMN-02000", "0", "1"},
       {4002, 4003, 4004, 4005, 4006, 4007, 4008, 4009, 4010, 4011, 4012, 4013, 4014, 4015, 0, 0},
       "1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,"
       "ADMN-02003,0,17"},
      {"PrimePay",
       "",
       {"0", "02", "20", "23", "24", "25", "28"},
       {5001, 5002, 5003, 5004, 5005, 5006, 5007},
       "4,02,20,23,24,25,28"},
      {"QB2000",
       "",
       {"C:/Program Files/Intuit/", "Regular Hourly Rate", "Overtime Hourly Rate",
        "Premuim Overtime Hourly Rate", "Vacation Hourly Rate", "Holiday Hourly Rate",
        "Sick Hourly Rate", "Other Hourly Rate"},
       {0, 0, 2, 3, 4, 5, 6, 7},
       "C:\\Company\\Sample.QBW,Regular Hourly Rate,Overtime Hourly Rate,Premuim Overtime Hourly "
       "Rate,Vacation Hourly Rate,Holiday Hourly Rate,Sick Hourly Rate,Other Hourly Rate"},
      // The test tree's own class.
      {"Tally", "", {"0"}, {9001}, "1"},
  };
  return tables;
}

// Every class of the list has its table above: a class added without one fails here.
TEST(SettingsDescriptionTables, CoverEveryClassOfTheList) {
  std::vector<std::string> tabled;
  for (const Expected& expected : expected_tables()) tabled.emplace_back(expected.class_name);
  for (const reconcile::ClassRules& rules : export_classes())
    EXPECT_NE(std::find(tabled.begin(), tabled.end(), rules.class_name), tabled.end())
        << rules.class_name;
}

class SettingsDescription : public testing::TestWithParam<Expected> {
 protected:
  std::unique_ptr<ExportClass> create() {
    auto instance = export_registry().create(GetParam().class_name, host_.context());
    instance->Title = GetParam().title;
    return instance;
  }
  // The number the class's check raises for `setup`; nothing when it passes.
  std::optional<long> check(const std::string& setup) {
    auto instance = create();
    instance->SetupData(setup);
    try {
      instance->run_check();
    } catch (const Error& error) {
      return error.number();
    }
    return std::nullopt;
  }

  scripted::Host host_;
};

TEST_P(SettingsDescription, ListsEveryPositionWithTheFormsDesignValueAndItsGuard) {
  const Expected& expected = GetParam();
  const ClassDescription description = create()->describe();
  EXPECT_EQ(description.class_name, expected.class_name);
  EXPECT_EQ(description.prog_id, std::string("zorvat.") + expected.class_name);
  EXPECT_EQ(description.form, std::string("frm") + expected.class_name);
  EXPECT_EQ(description.check_method,
            std::string(expected.class_name) == "Generic" ? "Validate" : "ValidateSetupData");
  ASSERT_EQ(description.settings.size(), expected.design_values.size());
  for (std::size_t i = 0; i < description.settings.size(); ++i) {
    const SettingDescription& setting = description.settings[i];
    EXPECT_EQ(setting.position, i);
    EXPECT_FALSE(setting.name.empty()) << i;
    EXPECT_FALSE(setting.values.empty()) << i;
    EXPECT_EQ(setting.design_value, expected.design_values[i]) << "position " << i;
    EXPECT_EQ(setting.guard.number, expected.guards[i]) << "position " << i;
  }
}

TEST_P(SettingsDescription, DefaultsAreTheStringAFreshFormSaves) {
  const Expected& expected = GetParam();
  std::string joined;
  for (std::size_t i = 0; i < expected.design_values.size(); ++i)
    joined += (i ? "," : "") + expected.design_values[i];
  EXPECT_EQ(create()->describe().defaults(), joined);

  // The form itself, opened on an empty string and saved at once, writes the same
  // (the check that follows Save may refuse it; the string is written back first).
  unload_forms();
  auto instance = create();
  host_.ui.answer_form(std::vector<std::string>{"click cmdButton(0)"});
  try {
    instance->Setup();
  } catch (const Error&) {
  }
  EXPECT_EQ(instance->SetupData(), joined);
  unload_forms();
}

constexpr long kTypeMismatch = 13;

TEST_P(SettingsDescription, EachGuardIsTheNumberTheCheckRaises) {
  const ClassDescription description = create()->describe();
  auto type_mismatch_documented = [&](std::size_t position) {
    return description.settings[position].values.find("13 Type mismatch") != std::string::npos;
  };
  const Expected& expected = GetParam();
  ASSERT_EQ(check(expected.valid), std::nullopt) << expected.valid;
  const std::vector<std::string> bad_values = {"x", std::string(40, 'x'), "100", "-1", "1296"};
  const SettingsFields valid(expected.valid);
  for (std::size_t position = 0; position < valid.size(); ++position) {
    bool raised_guard = false;
    for (const std::string& bad : bad_values) {
      SettingsFields fields = valid;
      fields.at(position) = bad;
      const std::optional<long> raised = check(fields.join());
      if (expected.guards[position] == 0) {
        EXPECT_EQ(raised, std::nullopt) << "position " << position << " value " << bad;
      } else if (raised && *raised == kTypeMismatch && type_mismatch_documented(position)) {
        // PrimePay compares its pay codes as numbers without testing them first.
      } else if (raised) {
        EXPECT_EQ(*raised, expected.guards[position]) << "position " << position << " " << bad;
        raised_guard = raised_guard || *raised == expected.guards[position];
      }
    }
    if (expected.guards[position] != 0) {
      EXPECT_TRUE(raised_guard) << "no bad value raised the guard of position " << position;
    }
  }
}

TEST_P(SettingsDescription, FieldsToFillAreTheRequiredOnesTheFormLeavesEmpty) {
  const ClassDescription description = create()->describe();
  std::vector<std::size_t> to_fill;
  for (const SettingDescription* setting : description.to_fill())
    to_fill.push_back(setting->position);
  const std::string name = GetParam().class_name;
  // ADP7: company code, batch, pay number and the five pay codes; IntuitPAC: the
  // company name and the seven pay codes. Every other form proposes a value for each.
  const std::vector<std::size_t> expected =
      name == "ADP7"        ? std::vector<std::size_t>{0, 1, 2, 3, 5, 7, 9, 11}
      : name == "IntuitPAC" ? std::vector<std::size_t>{0, 1, 2, 3, 4, 5, 6, 7}
                            : std::vector<std::size_t>{};
  EXPECT_EQ(to_fill, expected);
  // Where nothing is left to fill, the check accepts the form's proposal as it stands.
  if (expected.empty()) {
    EXPECT_EQ(check(description.defaults()), std::nullopt);
  }
}

INSTANTIATE_TEST_SUITE_P(EveryClass, SettingsDescription, testing::ValuesIn(expected_tables()),
                         [](const testing::TestParamInfo<Expected>& param) {
                           return std::string(param.param.class_name);
                         });

}  // namespace
}  // namespace zorvat::formats
