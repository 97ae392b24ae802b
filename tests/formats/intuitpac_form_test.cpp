// frmIntuitPAC and IntuitPAC.Setup: the edition's caption and layout, the company
// name check on leaving its box, the pay-code crossing on write-back, and the check
// of a saved string. Expected strings by hand.
#include "intuitpac/intuitpac_form.h"

#include <gtest/gtest.h>

#include "intuitpac/intuitpac.h"
#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

constexpr const char* kFull = "Intuit PC Access Import File V2.0";
constexpr const char* kJr = "QuikPay Import File V2.0";
constexpr const char* kFullMessage =
    "The Company Name for this export must be either 7 or 9 characters in length\r\n"
    "If 9 character format, the fourth character must be a 'C' or 'E'.";
constexpr const char* kJrMessage =
    "The Company Name for this export must be either 7 or 9 characters in length\r\n"
    "If 9 character format, the fourth character must be a 'Q'.";

class IntuitPACFormTest : public testing::Test {
 protected:
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }

  // Opens the form for `title`, types `company` and leaves the box, then closes it.
  std::vector<std::string> messages_on_leaving(const char* title, const std::string& company) {
    pac.Title = title;
    host.ui.answer_form(
        {"clear txtCompanyName", "type txtCompanyName " + company, "leave txtCompanyName"});
    pac.Setup();
    return host.ui.message_texts();
  }

  scripted::Host host;
  IntuitPAC pac{host.context()};
};

TEST_F(IntuitPACFormTest, ControlsCarryTheirCaptions) {
  IntuitPACForm& form = frmIntuitPAC();
  EXPECT_EQ(form.caption, "PCAccess");
  EXPECT_EQ(form.control("lblCompanyName").caption, "Company Name:");
  EXPECT_EQ(form.control("lblPayCode", 0).caption, "Regular Pay Code:");
  EXPECT_EQ(form.control("lblPayCode", 1).caption, "Overtime Level 1 Pay Code:");
  EXPECT_EQ(form.control("lblPayCode", 2).caption, "Overtime Level 2 Pay Code:");
  EXPECT_EQ(form.control("fraMiscPayCodes").caption, "Miscellaneous Pay Codes");
  EXPECT_EQ(form.control("lblCode").caption, "Code");
  EXPECT_EQ(form.control("lblExportAsDeduction").caption, "Export As Deduction");
  EXPECT_EQ(form.control("lblVACPayCode").caption, "Vacation:");
  EXPECT_EQ(form.control("lblHOLPayCode").caption, "Holiday:");
  EXPECT_EQ(form.control("lblSICPayCode").caption, "Sick:");
  EXPECT_EQ(form.control("lblOTHPayCode").caption, "Other:");
  EXPECT_EQ(form.control("chkOTHDeduct").type, ControlType::CheckBox);
}

TEST_F(IntuitPACFormTest, CaptionIsTheEditionAndHelpIs1099) {
  pac.Title = kFull;
  host.ui.answer_form({"click cmdButton(2)", "click cmdButton(1)"});
  EXPECT_FALSE(pac.Setup());
  EXPECT_EQ(frmIntuitPAC().caption, kFull);
  ASSERT_EQ(host.ui.help_calls.size(), 1u);
  EXPECT_EQ(host.ui.help_calls[0].context, 1099u);
  EXPECT_EQ(host.ui.help_calls[0].window, ">Second");
}

TEST_F(IntuitPACFormTest, FullEditionAcceptsCOrEAndRefusesQ) {
  EXPECT_TRUE(messages_on_leaving(kFull, "ABCE12345").empty());
  EXPECT_EQ(messages_on_leaving(kFull, "ABCQ12345"), (std::vector<std::string>{kFullMessage}));
}

TEST_F(IntuitPACFormTest, ShortEditionAcceptsQAndRefusesCAndE) {
  EXPECT_TRUE(messages_on_leaving(kJr, "ABCQ12345").empty());
  EXPECT_EQ(messages_on_leaving(kJr, "ABCE12345"), (std::vector<std::string>{kJrMessage}));
}

TEST_F(IntuitPACFormTest, RefusedCompanyNameKeepsTheFocusAndTheText) {
  pac.Title = kFull;
  host.ui.answer_form({"type txtCompanyName ABC", "leave txtCompanyName", "type txtPayCode(0) 1",
                       "clear txtCompanyName", "type txtCompanyName ABCDEFG",
                       "type txtPayCode(0) 2", "click cmdButton(1)"});
  EXPECT_FALSE(pac.Setup());
  EXPECT_EQ(host.ui.script_problems,
            (std::vector<std::string>{"line 2: the focus stays in txtCompanyName",
                                      "line 3: the focus stays in txtCompanyName"}));
  // One message for the leave, one for the refused move to the pay-code box.
  EXPECT_EQ(host.ui.message_texts(), (std::vector<std::string>{kFullMessage, kFullMessage}));
  EXPECT_EQ(frmIntuitPAC().control("txtCompanyName").text, "ABCDEFG");
  EXPECT_EQ(pac.SetupData(), "ABCDEFG,2,2,2,,,,,0,0,0,0");
}

TEST_F(IntuitPACFormTest, FullEditionWritesTheFirstPayCodeIntoAllThreeFields) {
  pac.Title = kFull;
  host.ui.answer_form({"type txtCompanyName ABCE123", "type txtPayCode(0) 1",
                       "type txtPayCode(1) 2", "type txtPayCode(2) 3", "type txtVACPayCode 4",
                       "type txtHOLPayCode 5", "type txtSICPayCode 6", "type txtOTHPayCode 7",
                       "check chkSICDeduct 1", "click cmdButton(0)"});
  EXPECT_TRUE(pac.Setup());
  EXPECT_EQ(pac.SetupData(), "ABCE123,1,1,1,4,5,6,7,0,0,1,0");
}

TEST_F(IntuitPACFormTest, ShortEditionShowsOnePayCodeBoxAndWritesAllThree) {
  pac.Title = kJr;
  pac.SetupData("ABCQ12345,10,11,12,4,5,6,7,1,0,0,1");
  host.ui.answer_form([](FormModel& form) {
    EXPECT_EQ(form.caption, kJr);
    EXPECT_EQ(form.control("lblPayCode", 0).caption, "Overime Level 2 Pay Code:");
    EXPECT_FALSE(form.control("txtPayCode", 1).visible);
    EXPECT_FALSE(form.control("txtPayCode", 2).visible);
    EXPECT_FALSE(form.control("lblPayCode", 1).visible);
    EXPECT_FALSE(form.control("lblPayCode", 2).visible);
    EXPECT_TRUE(form.control("txtPayCode", 0).visible);
    EXPECT_EQ(form.control("chkVACDeduct").value, 1);
    EXPECT_EQ(form.control("chkOTHDeduct").value, 1);
    form.press(form.control("cmdButton", 0));
  });
  EXPECT_TRUE(pac.Setup());
  EXPECT_EQ(pac.SetupData(), "ABCQ12345,10,11,12,4,5,6,7,1,0,0,1");
}

TEST_F(IntuitPACFormTest, HiddenBoxCannotBeTypedInto) {
  pac.Title = kJr;
  host.ui.answer_form({"type txtPayCode(1) 5", "click cmdButton(1)"});
  pac.Setup();
  EXPECT_EQ(host.ui.script_problems,
            (std::vector<std::string>{"line 1: txtPayCode(1) is not visible"}));
}

TEST_F(IntuitPACFormTest, ElevenFieldsLeaveTheDefaults) {
  pac.SetupData("ABCE12345,1,1,1,4,5,6,7,1,1,1");
  host.ui.answer_form({"click cmdButton(1)"});
  EXPECT_FALSE(pac.Setup());
  EXPECT_EQ(pac.SetupData(), ",,,,,,,,0,0,0,0");
}

TEST_F(IntuitPACFormTest, SavedPayCodeOutOfRangeRaisesFromSetup) {
  pac.Title = kFull;
  for (const char* code : {"100", "AB", ""}) {
    unload_forms();
    pac.SetupData(std::string("ABCE123,1,1,1,") + code + ",5,6,7,0,0,0,0");
    host.ui.answer_form({"click cmdButton(0)"});
    try {
      pac.Setup();
      ADD_FAILURE() << code;
    } catch (const Error& error) {
      EXPECT_EQ(error.number(), 1005) << code;
      EXPECT_EQ(error.description(), "Pay Code value must be between 0 and 99");
      EXPECT_EQ(error.source(), "zorvat.IntuitPAC.Setup");
    }
    EXPECT_EQ(pac.SetupData(), std::string("ABCE123,1,1,1,") + code + ",5,6,7,0,0,0,0");
  }
}

TEST_F(IntuitPACFormTest, SaveIsRefusedWhileTheCompanyNameIsWrong) {
  // The focus starts in the company name box; pressing Save moves it and runs the check.
  pac.Title = kJr;
  pac.SetupData("ABCE12345,1,1,1,4,5,6,7,0,0,0,0");
  host.ui.answer_form({"click cmdButton(0)", "clear txtCompanyName",
                       "type txtCompanyName ABCQ12345", "click cmdButton(0)"});
  EXPECT_TRUE(pac.Setup());
  EXPECT_EQ(host.ui.message_texts(), (std::vector<std::string>{kJrMessage}));
  EXPECT_EQ(host.ui.script_problems,
            (std::vector<std::string>{"line 1: the focus stays in txtCompanyName"}));
  EXPECT_EQ(pac.SetupData(), "ABCQ12345,1,1,1,4,5,6,7,0,0,0,0");
}

TEST_F(IntuitPACFormTest, SavedStringIsCheckedAgainstTheEdition) {
  pac.Title = kJr;
  pac.SetupData("ABCQ12345,1,AB,1,4,5,6,7,0,0,0,0");
  host.ui.answer_form({"click cmdButton(0)"});
  try {
    pac.Setup();
    FAIL() << pac.SetupData();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 1003);
    EXPECT_EQ(error.source(), "zorvat.IntuitPAC.Setup");
  }
}

TEST_F(IntuitPACFormTest, CancelIsNotChecked) {
  pac.Title = kFull;
  host.ui.answer_form({"type txtPayCode(0) x", "click cmdButton(1)"});
  EXPECT_FALSE(pac.Setup());
  EXPECT_EQ(pac.SetupData(), ",x,x,x,,,,,0,0,0,0");
}

}  // namespace
}  // namespace zorvat::formats
