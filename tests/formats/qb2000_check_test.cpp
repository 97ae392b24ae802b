// The check before an export to QuickBooks: the cards whose names, payroll items or
// notes are longer than QuickBooks takes, worked out without a session.
#include <gtest/gtest.h>

#include "json_cards.h"
#include "qb2000/qb2000_check.h"

namespace zorvat::formats::qb2000 {
namespace {

const std::string kSetup =
    "C:\\Company\\Sample.QBW,Regular Hourly Rate,Overtime Hourly Rate,"
    "Premuim Overtime Hourly Rate,Vacation Hourly Rate,Holiday Hourly Rate,Sick Hourly Rate,"
    "Other Hourly Rate";

// One card of `minutes` regular minutes on one day and `edit` minutes of EditREG.
std::string card(const std::string& first, const std::string& mi, const std::string& last,
                 int minutes, int edit = 0) {
  const std::string m = std::to_string(minutes);
  return R"({"FirstName": ")" + first + R"(", "MI": ")" + mi + R"(", "LastName": ")" + last +
         R"(", "REG": )" + m +
         R"(, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0, "EditREG": )" +
         std::to_string(edit) + R"(, "EditOT1": 0, "EditOT2": 0, "PeriodStart": "2004-03-01",
    "Days": [{"DayDate": "2004-03-01", "REG": )" +
         m + R"(, "OT1": 0, "OT2": 0, "VAC": 0, "HOL": 0, "SIC": 0, "OTH": 0}]})";
}

Variant cards(std::initializer_list<std::string> each) {
  std::string json = R"({"cards": [)";
  bool first = true;
  for (const std::string& one : each) {
    if (!first) json += ",";
    json += one;
    first = false;
  }
  return cli::load_cards_json(json + "]}");
}

TEST(QB2000Check, CardsThatFitHaveNoProblem) {
  EXPECT_TRUE(field_limit_problems(cards({card("Jane", "Q", "Doe", 480, 150)}), kSetup).empty());
  EXPECT_TRUE(field_limit_problems(
                  cards({card(std::string(25, 'F'), "MMMMM", std::string(25, 'L'), 60)}), kSetup)
                  .empty());
}

TEST(QB2000Check, EachNamePartOverItsLimitIsListedOncePerCard) {
  const auto problems = field_limit_problems(
      cards({card("Jane", "", "Doe", 60), card("Ann", "MIDDLE", std::string(26, 'L'), 60)}),
      kSetup);
  ASSERT_EQ(problems.size(), 2u);
  EXPECT_EQ(problems[0].card, 2u);
  EXPECT_EQ(problems[0].problem.field, "EmployeeAdd/MiddleName");
  EXPECT_EQ(problems[0].problem.length, 6u);
  EXPECT_EQ(problems[1].problem.field, "EmployeeAdd/LastName");
  EXPECT_EQ(problems[1].problem.employee, "Ann MIDDLE " + std::string(26, 'L'));
}

TEST(QB2000Check, ARegularPayrollItemOverItsLimitIsFoundThoughTheSettingsCheckLetsItGo) {
  // Field 1 is not checked by ValidateSetupData; QuickBooks takes 31 characters.
  const std::string item(32, 'R');
  const std::string setup = "C:\\a.QBW," + item + ",b,c,d,e,f,g";
  const auto problems = field_limit_problems(cards({card("Jane", "", "Doe", 60, 90)}), setup);
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].problem.field, "TimeTrackingAdd/PayrollItemWageRef/FullName");
  EXPECT_EQ(problems[0].problem.length, 32u);
  EXPECT_EQ(problems[0].problem.limit, 31u);
}

TEST(QB2000Check, AnEmployeeNameOverTheReferenceLimitIsFoundInEitherNameOrder) {
  // First name first, 100 + 1 + 108 = 209 characters fit; last name first ("Last,
  // First") 108 + 2 + 100 = 210 do not.
  const std::string first(100, 'F');
  const std::string last(108, 'L');
  const auto problems = field_limit_problems(cards({card(first, "", last, 60)}), kSetup);
  ASSERT_EQ(problems.size(), 3u);
  EXPECT_EQ(problems[0].problem.field, "EmployeeAdd/FirstName");
  EXPECT_EQ(problems[1].problem.field, "EmployeeAdd/LastName");
  EXPECT_EQ(problems[2].problem.field, "TimeTrackingAdd/EntityRef/FullName");
  EXPECT_EQ(problems[2].problem.employee, last + ", " + first);
  EXPECT_EQ(problems[2].problem.length, 210u);
  EXPECT_EQ(problems[2].problem.limit, 209u);
}

}  // namespace
}  // namespace zorvat::formats::qb2000
