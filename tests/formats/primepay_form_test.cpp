// frmPrimePay and PrimePay.Setup: the batch box's key filter and change checks with
// their messages, the pay-code limits, write-back and the check of a saved string.
// Expected strings by hand.
#include "primepay/primepay_form.h"

#include <gtest/gtest.h>

#include "primepay/primepay.h"
#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

constexpr const char* kDefaults = "0,02,20,23,24,25,28";
constexpr const char* kNotNumeric = "Batch Sequence must be a numberic value between 0 and 127";
constexpr const char* kOutOfRange = "Batch Sequence Field must be between 0 and 127";

class PrimePayFormTest : public testing::Test {
 protected:
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }

  Error setup_error() {
    try {
      primepay.Setup();
    } catch (const Error& error) {
      return error;
    }
    ADD_FAILURE() << "Setup raised nothing";
    return Error(0, {}, {});
  }

  scripted::Host host;
  PrimePay primepay{host.context()};
};

TEST_F(PrimePayFormTest, ControlsCarryTheirCaptionsTextsAndLimits) {
  PrimePayForm& form = frmPrimePay();
  EXPECT_EQ(form.caption, "PrimePay");
  EXPECT_EQ(form.control("lblBatchSequence").caption, "Batch Sequence Number:");
  EXPECT_EQ(form.control("txtBatchSequence").max_length, 3u);
  EXPECT_EQ(form.control("lblPayCode", 0).caption, "Overtime Level 1 Pay Code:");
  EXPECT_EQ(form.control("lblPayCode", 1).caption, "Overtime Level 2 Pay Code:");
  EXPECT_EQ(form.control("fraMiscPayCodes").caption, "Miscellaneous Pay Codes");
  EXPECT_EQ(form.control("lblCode").caption, "Code");
  EXPECT_EQ(form.control("lblVACPayCode").caption, "Vacation:");
  EXPECT_EQ(form.control("lblHOLPayCode").caption, "Holiday:");
  EXPECT_EQ(form.control("lblSICPayCode").caption, "Sick:");
  EXPECT_EQ(form.control("lblOTHPayCode").caption, "Other:");
  for (const char* box : {"txtVACPayCode", "txtHOLPayCode", "txtSICPayCode", "txtOTHPayCode"})
    EXPECT_EQ(form.control(box).max_length, 2u) << box;
}

TEST_F(PrimePayFormTest, EmptySettingsSaveTheInitialValues) {
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(primepay.Setup());
  EXPECT_EQ(primepay.SetupData(), kDefaults);
}

TEST_F(PrimePayFormTest, DeletingTheLastDigitShowsTheNumbericMessage) {
  host.ui.answer_form({"clear txtBatchSequence", "click cmdButton(1)"});
  EXPECT_FALSE(primepay.Setup());
  EXPECT_EQ(host.ui.message_texts(), (std::vector<std::string>{kNotNumeric}));
  EXPECT_EQ(primepay.SetupData(), ",02,20,23,24,25,28");
}

TEST_F(PrimePayFormTest, Typing128WarnsKeeps128AndFailsTheCheck) {
  host.ui.answer_form(
      {"clear txtBatchSequence", "type txtBatchSequence 128", "click cmdButton(0)"});
  const Error error = setup_error();
  EXPECT_EQ(error.number(), 5001);
  EXPECT_EQ(error.description(), "Batch Sequence Number invalid");
  EXPECT_EQ(error.source(), "zorvat.PrimePay.Setup");
  EXPECT_EQ(host.ui.message_texts(), (std::vector<std::string>{kNotNumeric, kOutOfRange}));
  EXPECT_EQ(frmPrimePay().control("txtBatchSequence").text, "128");
  EXPECT_EQ(primepay.SetupData(), "128,02,20,23,24,25,28");
}

TEST_F(PrimePayFormTest, BatchBoxTakesDigitsOnly) {
  host.ui.answer_form({"type txtBatchSequence a-7", "click cmdButton(0)"});
  EXPECT_TRUE(primepay.Setup());
  EXPECT_EQ(primepay.SetupData(), "07,02,20,23,24,25,28");
  EXPECT_TRUE(host.ui.messages.empty());
}

TEST_F(PrimePayFormTest, NonNumericBatchFromTheSettingsIsTakenOut) {
  primepay.SetupData("x1,02,20,23,24,25,28");
  host.ui.answer_form({"click cmdButton(1)"});
  EXPECT_FALSE(primepay.Setup());
  // Emptying the box is a change of its own: the empty text is not numeric either.
  EXPECT_EQ(host.ui.message_texts(), (std::vector<std::string>{kNotNumeric, kNotNumeric}));
  EXPECT_EQ(primepay.SetupData(), ",02,20,23,24,25,28");
}

TEST_F(PrimePayFormTest, PayCodeOf100CannotBeTyped) {
  host.ui.answer_form({"clear txtPayCode(0)", "type txtPayCode(0) 100", "click cmdButton(0)"});
  EXPECT_TRUE(primepay.Setup());
  EXPECT_EQ(primepay.SetupData(), "0,10,20,23,24,25,28");
}

TEST_F(PrimePayFormTest, PayCodeOf100InAnEditedStringRaisesItsNumber) {
  primepay.SetupData("0,02,20,23,100,25,28");
  host.ui.answer_form({"click cmdButton(0)"});
  const Error error = setup_error();
  EXPECT_EQ(error.number(), 5005);
  EXPECT_EQ(error.description(), "Paycode field invalid");
}

TEST_F(PrimePayFormTest, PayCodeBoxesAreNotFiltered) {
  host.ui.answer_form({"clear txtOTHPayCode", "type txtOTHPayCode ab", "click cmdButton(1)"});
  EXPECT_FALSE(primepay.Setup());
  EXPECT_EQ(primepay.SetupData(), "0,02,20,23,24,25,ab");
}

TEST_F(PrimePayFormTest, HelpShowsTopic1098) {
  host.ui.answer_form({"click cmdButton(2)", "click cmdButton(0)"});
  EXPECT_TRUE(primepay.Setup());
  ASSERT_EQ(host.ui.help_calls.size(), 1u);
  EXPECT_EQ(host.ui.help_calls[0].context, 1098u);
  EXPECT_EQ(host.ui.help_calls[0].window, ">Second");
}

}  // namespace
}  // namespace zorvat::formats
