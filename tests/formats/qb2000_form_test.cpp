// frmQB2000: the payroll item boxes and their defaults, the company file's folder,
// Select..., the exact-count fill and the eight-field write-back. Expected strings by
// hand.
#include "qb2000/qb2000_form.h"

#include <gtest/gtest.h>

#include "scripted_host.h"

namespace zorvat::formats {
namespace {

constexpr const char* kDefaultItems =
    "Regular Hourly Rate,Overtime Hourly Rate,Premuim Overtime Hourly Rate,"
    "Vacation Hourly Rate,Holiday Hourly Rate,Sick Hourly Rate,Other Hourly Rate";

class QB2000FormTest : public testing::Test {
 protected:
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }

  bool open(std::string& settings, std::string_view title = "QuickBooks 2000") {
    return frmQB2000().OpenForm(settings, context, title);
  }

  scripted::Host host;
  ExportContext context = host.context();
};

TEST_F(QB2000FormTest, ControlsCarryTheirLabelsDefaultsAndLimits) {
  QB2000Form& form = frmQB2000();
  const char* const labels[] = {"Quick Books Company File:",
                                "Regular Pay Code:",
                                "Overtime Level 1 Pay Code:",
                                "Overtime Level 2 Pay Code:",
                                "Vacation Pay Code:",
                                "Holiday Pay Code:",
                                "Sick Pay Code:",
                                "Other Pay Code:"};
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(form.control("lblPayCode", i).caption, labels[i]);
    EXPECT_EQ(form.control("txtPayCode", i).max_length, i == 0 ? 0u : 31u);
  }
  EXPECT_EQ(form.control("txtPayCode", 0).text, "");
  EXPECT_EQ(form.control("txtPayCode", 3).text, "Premuim Overtime Hourly Rate");
  EXPECT_EQ(form.control("cmdButton", 3).caption, "Select...");
}

TEST_F(QB2000FormTest, SevenOrNineFieldsOpenWithTheDefaultsAndCloseWithEight) {
  for (const char* settings : {"a,b,c,d,e,f,g", "a,b,c,d,e,f,g,h,i"}) {
    unload_forms();
    std::string text = settings;
    host.ui.answer_form({"click cmdButton(0)"});
    EXPECT_TRUE(open(text));
    EXPECT_EQ(text, std::string("C:/Program Files/Intuit/,") + kDefaultItems) << settings;
  }
}

TEST_F(QB2000FormTest, EightFieldsFillTheBoxes) {
  std::string settings = "C:\\Books\\co.QBW,R,O1,O2,V,H,S,O";
  host.ui.answer_form({"click cmdButton(1)"});
  EXPECT_FALSE(open(settings));
  EXPECT_EQ(settings, "C:\\Books\\co.QBW,R,O1,O2,V,H,S,O");
}

TEST_F(QB2000FormTest, EmptyCompanyFileStartsFromTheIntuitFolder) {
  std::string settings = ",R,O1,O2,V,H,S,O";
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(open(settings));
  EXPECT_EQ(settings, "C:/Program Files/Intuit/,R,O1,O2,V,H,S,O");
}

TEST_F(QB2000FormTest, CaptionIsTheTitleAndHelpIs1089) {
  std::string settings;
  host.ui.answer_form({"click cmdButton(2)", "click cmdButton(1)"});
  open(settings, "QuickBooks Pro");
  EXPECT_EQ(frmQB2000().caption, "QuickBooks Pro");
  ASSERT_EQ(host.ui.help_calls.size(), 1u);
  EXPECT_EQ(host.ui.help_calls[0].context, 1089u);
  EXPECT_EQ(host.ui.help_calls[0].help_file, "HORALISHELP.HLP");
  EXPECT_EQ(host.ui.help_calls[0].window, ">Second");
}

TEST_F(QB2000FormTest, SelectPutsTheChosenFileIntoTheCompanyBox) {
  std::string settings;
  host.ui.answer_open("C:\\Data\\Payroll.QBW");
  host.ui.answer_form({"click cmdButton(3)", "click cmdButton(0)"});
  EXPECT_TRUE(open(settings));
  EXPECT_EQ(settings, std::string("C:\\Data\\Payroll.QBW,") + kDefaultItems);
  ASSERT_EQ(host.ui.open_requests.size(), 1u);
  EXPECT_EQ(host.ui.open_requests[0].filter, "QuickBooks File (*.QBW) | *.QBW");
  EXPECT_EQ(host.ui.open_requests[0].title, "Select Intuit Quickbooks File");
  EXPECT_EQ(host.ui.open_requests[0].initial_folder, "C:\\Program Files\\Intuit\\");
}

TEST_F(QB2000FormTest, CancelledSelectLeavesTheBox) {
  std::string settings = "D:/co.QBW,R,O1,O2,V,H,S,O";
  host.ui.answer_form({"click cmdButton(3)", "click cmdButton(0)"});
  EXPECT_TRUE(open(settings));
  EXPECT_EQ(settings, "D:/co.QBW,R,O1,O2,V,H,S,O");
}

TEST_F(QB2000FormTest, ItemsStopAt31Characters) {
  std::string settings;
  host.ui.answer_form(
      {"clear txtPayCode(1)", "type txtPayCode(1) " + std::string(32, 'R'), "click cmdButton(1)"});
  EXPECT_FALSE(open(settings));
  EXPECT_EQ(frmQB2000().control("txtPayCode", 1).text, std::string(31, 'R'));
}

}  // namespace
}  // namespace zorvat::formats
