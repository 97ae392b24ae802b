// frmPCPreview and PCPreview.Setup: initial texts, key filters, length limits,
// write-back and the check of a saved string. Expected strings by hand.
#include "pcpreview/pcpreview_form.h"

#include <gtest/gtest.h>

#include "pcpreview/pcpreview.h"
#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

constexpr const char* kDefaults = "0,A,B,C,0,D,E,F,G,0,0,0,0";

class PCPreviewFormTest : public testing::Test {
 protected:
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }

  Error setup_error() {
    try {
      preview.Setup();
    } catch (const Error& error) {
      return error;
    }
    ADD_FAILURE() << "Setup raised nothing";
    return Error(0, {}, {});
  }

  scripted::Host host;
  PCPreview preview{host.context()};
};

TEST_F(PCPreviewFormTest, ControlsCarryTheirCaptionsTextsAndLimits) {
  PCPreviewForm& form = frmPCPreview();
  EXPECT_EQ(form.caption, "PayChex Preview");
  EXPECT_EQ(form.control("lblClientNumber").caption, "Client Number:");
  EXPECT_EQ(form.control("txtClientNumber").max_length, 0u);
  EXPECT_EQ(form.control("lblPayCode", 0).caption, "Regular Pay Code:");
  EXPECT_EQ(form.control("lblPayCode", 1).caption, "Overtime Level 1 Pay Code:");
  EXPECT_EQ(form.control("lblPayCode", 2).caption, "Overtime Level 2 Pay Code:");
  EXPECT_EQ(form.control("lblSequence").caption, "Sequence:");
  EXPECT_EQ(form.control("fraMiscPayCodes").caption, "Miscellaneous Pay Codes");
  EXPECT_EQ(form.control("lblCode").caption, "Code");
  EXPECT_EQ(form.control("lblExportAsDeduction").caption, "Export As Deduction");
  EXPECT_EQ(form.control("lblVACPayCode").caption, "Vacation:");
  EXPECT_EQ(form.control("lblOTHPayCode").caption, "Other:");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(form.control("txtPayCode", i).max_length, 2u);
  for (const char* box : {"txtVACPayCode", "txtHOLPayCode", "txtSICPayCode", "txtOTHPayCode"})
    EXPECT_EQ(form.control(box).max_length, 2u) << box;
}

TEST_F(PCPreviewFormTest, EmptySettingsSaveTheInitialValues) {
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(preview.Setup());
  EXPECT_EQ(preview.SetupData(), kDefaults);
}

TEST_F(PCPreviewFormTest, FewerThanThirteenFieldsOpenWithTheInitialValues) {
  preview.SetupData("12,X,Y,Z,3");
  preview.ValidateSetupData(preview.SetupData());  // only the fields present are checked
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(preview.Setup());
  EXPECT_EQ(preview.SetupData(), kDefaults);
}

TEST_F(PCPreviewFormTest, ThirteenFieldsFillTheControls) {
  preview.SetupData("12,R,O1,O2,7,V,H,S,O,1,0,1,0");
  host.ui.answer_form([](FormModel& form) {
    EXPECT_EQ(form.control("txtPayCode", 1).text, "O1");
    EXPECT_EQ(form.control("chkVACDeduct").value, 1);
    EXPECT_EQ(form.control("chkSICDeduct").value, 1);
    form.press(form.control("cmdButton", 0));
  });
  EXPECT_TRUE(preview.Setup());
  EXPECT_EQ(preview.SetupData(), "12,R,O1,O2,7,V,H,S,O,1,0,1,0");
}

TEST_F(PCPreviewFormTest, TypingXIntoAPayCodeBoxEntersUpperCaseX) {
  host.ui.answer_form({"clear txtPayCode(0)", "type txtPayCode(0) x", "click cmdButton(1)"});
  preview.Setup();
  EXPECT_EQ(frmPCPreview().control("txtPayCode", 0).text, "X");
}

TEST_F(PCPreviewFormTest, TypingXIntoTheClientNumberEntersNothing) {
  host.ui.answer_form({"type txtClientNumber x", "click cmdButton(1)"});
  preview.Setup();
  EXPECT_EQ(frmPCPreview().control("txtClientNumber").text, "0");
}

TEST_F(PCPreviewFormTest, EveryPayCodeBoxIsUpperCasedAndNumbersTakeDigits) {
  host.ui.answer_form({"clear txtPayCode(1)", "type txtPayCode(1) ab", "clear txtPayCode(2)",
                       "type txtPayCode(2) c", "type txtVACPayCode d", "type txtHOLPayCode e",
                       "type txtSICPayCode f", "type txtOTHPayCode gh", "type txtSequence 4.5",
                       "type txtClientNumber 1-2", "check chkHOLDeduct 1", "click cmdButton(1)"});
  EXPECT_FALSE(preview.Setup());
  EXPECT_EQ(preview.SetupData(), "012,A,AB,C,045,DD,EE,FF,GG,0,1,0,0");
}

TEST_F(PCPreviewFormTest, PayCodeBoxesStopAtTwoCharacters) {
  host.ui.answer_form({"type txtPayCode(0) bcd", "click cmdButton(1)"});
  preview.Setup();
  EXPECT_EQ(frmPCPreview().control("txtPayCode", 0).text, "AB");
}

TEST_F(PCPreviewFormTest, SavedClientNumberOutOfRangeRaises3001) {
  host.ui.answer_form(
      {"clear txtClientNumber", "type txtClientNumber 10000", "click cmdButton(0)"});
  const Error error = setup_error();
  EXPECT_EQ(error.number(), 3001);
  EXPECT_EQ(error.description(), "Pay Level invalid - Must be between 0 and 9999");
  EXPECT_EQ(error.source(), "zorvat.PCPreview.Setup");
  EXPECT_EQ(preview.SetupData(), "10000,A,B,C,0,D,E,F,G,0,0,0,0");
}

TEST_F(PCPreviewFormTest, SavedClientNumbersThatCannotBeTypedRaise3001Too) {
  for (const char* client : {"-1", "abc"}) {
    unload_forms();
    preview.SetupData(std::string(client) + ",A,B,C,0,D,E,F,G,0,0,0,0");
    host.ui.answer_form({"click cmdButton(0)"});
    const Error error = setup_error();
    EXPECT_EQ(error.number(), 3001) << client;
    EXPECT_EQ(error.description(), "Pay Level invalid - Must be between 0 and 9999");
  }
}

TEST_F(PCPreviewFormTest, SavedSequenceOfThreeCharactersRaises3005) {
  host.ui.answer_form({"clear txtSequence", "type txtSequence 123", "click cmdButton(0)"});
  const Error error = setup_error();
  EXPECT_EQ(error.number(), 3005);
  EXPECT_EQ(error.description(), "Pay Item Code must be 2 chars or less");
}

TEST_F(PCPreviewFormTest, CancelIsNotChecked) {
  host.ui.answer_form({"type txtSequence 123", "click cmdButton(1)"});
  EXPECT_FALSE(preview.Setup());
  EXPECT_EQ(preview.SetupData(), "0,A,B,C,0123,D,E,F,G,0,0,0,0");
}

TEST_F(PCPreviewFormTest, HelpShowsTopic1097) {
  host.ui.answer_form({"click cmdButton(2)", "click cmdButton(0)"});
  EXPECT_TRUE(preview.Setup());
  ASSERT_EQ(host.ui.help_calls.size(), 1u);
  EXPECT_EQ(host.ui.help_calls[0].context, 1097u);
  EXPECT_EQ(host.ui.help_calls[0].help_file, "HORALISHELP.HLP");
}

}  // namespace
}  // namespace zorvat::formats
