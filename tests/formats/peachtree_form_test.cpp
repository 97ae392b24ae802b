// frmPeachtree and Peachtree.Setup: the pay level and item code rows, limits, no key
// filtering, write-back and the check of a saved string. Expected strings by hand.
#include "peachtree/peachtree_form.h"

#include <gtest/gtest.h>

#include "peachtree/peachtree.h"
#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

constexpr const char* kDefaults =
    "0,0,0,0,0,0,0,ADMN-01000,ADMN-01000,ADMN-01000,ADMN-02000,ADMN-02000,ADMN-02000,"
    "ADMN-02000,0,1";

class PeachtreeFormTest : public testing::Test {
 protected:
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }

  long setup_error_number() {
    try {
      peachtree.Setup();
    } catch (const Error& error) {
      EXPECT_EQ(error.source(), "zorvat.Peachtree.Setup");
      return error.number();
    }
    return 0;
  }

  scripted::Host host;
  Peachtree peachtree{host.context()};
};

TEST_F(PeachtreeFormTest, ControlsCarryTheirCaptionsTextsAndLimits) {
  PeachtreeForm& form = frmPeachtree();
  EXPECT_EQ(form.caption, "Peachtree");
  EXPECT_EQ(form.control("fraPeachtree").caption, "Peachtree Pay Levels and Codes");
  EXPECT_EQ(form.control("lblLevel").caption, "Pay Level");
  EXPECT_EQ(form.control("lblPayItemCode").caption, "Pay Item Code");
  const char* const captions[] = {
      "Regular:", "Overtime 1:", "Overtime 2:", "Vacation:", "Holiday:", "Sick:", "Other:"};
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(form.control("lblPayLevel", i).caption, captions[i]);
    EXPECT_EQ(form.control("txtPayLevel", i).max_length, 2u);
    EXPECT_EQ(form.control("txtPayItemCode", i).max_length, 32u);
  }
  EXPECT_EQ(form.control("chkOutputTitles").caption, "Output Field Titles");
  EXPECT_EQ(form.control("lblSequence").caption, "Batch Sequence:");
  EXPECT_EQ(form.control("txtSequence").text, "1");
}

TEST_F(PeachtreeFormTest, EmptySettingsSaveTheInitialValues) {
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(peachtree.Setup());
  EXPECT_EQ(peachtree.SetupData(), kDefaults);
}

TEST_F(PeachtreeFormTest, SixteenFieldsFillAndAreWrittenBackInOrder) {
  const std::string setup = "1,2,3,4,5,6,7,A,B,C,D,E,F,G,1,42";
  peachtree.SetupData(setup);
  host.ui.answer_form([](FormModel& form) {
    EXPECT_EQ(form.control("txtPayLevel", 6).text, "7");
    EXPECT_EQ(form.control("txtPayItemCode", 0).text, "A");
    EXPECT_EQ(form.control("chkOutputTitles").value, 1);
    form.press(form.control("cmdButton", 0));
  });
  EXPECT_TRUE(peachtree.Setup());
  EXPECT_EQ(peachtree.SetupData(), setup);
}

TEST_F(PeachtreeFormTest, FifteenFieldsKeepTheInitialValues) {
  peachtree.SetupData("1,2,3,4,5,6,7,A,B,C,D,E,F,G,1");
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(peachtree.Setup());
  EXPECT_EQ(peachtree.SetupData(), kDefaults);
}

TEST_F(PeachtreeFormTest, NoKeyIsFiltered) {
  host.ui.answer_form({"clear txtPayLevel(2)", "type txtPayLevel(2) ab", "clear txtPayItemCode(4)",
                       "type txtPayItemCode(4) Hol-x 1", "clear txtSequence", "type txtSequence x",
                       "click cmdButton(1)"});
  EXPECT_FALSE(peachtree.Setup());
  EXPECT_EQ(peachtree.SetupData(),
            "0,0,ab,0,0,0,0,ADMN-01000,ADMN-01000,ADMN-01000,ADMN-02000,Hol-x 1,ADMN-02000,"
            "ADMN-02000,0,x");
}

TEST_F(PeachtreeFormTest, SavedPayLevelOutOfRangeRaisesByItsIndex) {
  host.ui.answer_form({"clear txtPayLevel(3)", "type txtPayLevel(3) 21", "click cmdButton(0)"});
  EXPECT_EQ(setup_error_number(), 4005);
  unload_forms();
  host.ui.answer_form({"clear txtPayLevel(0)", "type txtPayLevel(0) ab", "click cmdButton(0)"});
  peachtree.SetupData("");
  EXPECT_EQ(setup_error_number(), 4002);
}

TEST_F(PeachtreeFormTest, LevelsZeroAndTwentyPass) {
  host.ui.answer_form({"clear txtPayLevel(0)", "type txtPayLevel(0) 20", "click cmdButton(0)"});
  EXPECT_TRUE(peachtree.Setup());
}

TEST_F(PeachtreeFormTest, ItemCodesStopAt32CharactersButAnEditedStringIsChecked) {
  const std::string long_code(33, 'C');
  host.ui.answer_form(
      {"clear txtPayItemCode(0)", "type txtPayItemCode(0) " + long_code, "click cmdButton(1)"});
  peachtree.Setup();
  EXPECT_EQ(frmPeachtree().control("txtPayItemCode", 0).text, std::string(32, 'C'));

  peachtree.SetupData("0,0,0,0,0,0,0," + long_code + ",B,C,D,E,F,G,0,1");
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_EQ(setup_error_number(), 4009);
}

TEST_F(PeachtreeFormTest, BatchSequenceXPassesTheCheck) {
  host.ui.answer_form({"clear txtSequence", "type txtSequence x", "click cmdButton(0)"});
  EXPECT_TRUE(peachtree.Setup());
  EXPECT_EQ(peachtree.SetupData().substr(peachtree.SetupData().size() - 4), ",0,x");
}

TEST_F(PeachtreeFormTest, HelpShowsTopic1094) {
  host.ui.answer_form({"click cmdButton(2)", "click cmdButton(1)"});
  EXPECT_FALSE(peachtree.Setup());
  ASSERT_EQ(host.ui.help_calls.size(), 1u);
  EXPECT_EQ(host.ui.help_calls[0].context, 1094u);
}

}  // namespace
}  // namespace zorvat::formats
