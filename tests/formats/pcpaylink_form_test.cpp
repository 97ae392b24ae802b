// frmPCPayLink and PCPayLink.Setup: the earning-code lists, the number boxes' key
// filters and change checks, the edition caption, write-back and the check of a saved
// string. Expected strings by hand.
#include "pcpaylink/pcpaylink_form.h"

#include <gtest/gtest.h>

#include "pcpaylink/pcpaylink.h"
#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

constexpr const char* kOfficeMessage = "Office Number must be between 0 and 1295";
constexpr const char* kSeqMessage = "Sequence Number must be between 0 and 46655";

class PCPayLinkFormTest : public testing::Test {
 protected:
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }

  scripted::Host host;
  PCPayLink paylink{host.context()};
};

TEST_F(PCPayLinkFormTest, ControlsCarryTheirCaptionsAndDesignTexts) {
  PCPayLinkForm& form = frmPCPayLink();
  EXPECT_EQ(form.caption, "PayChex");
  EXPECT_EQ(form.control("lblOfficeNumber").caption, "Office Number (0-1295):");
  EXPECT_EQ(form.control("lblClientID").caption, "Client ID:");
  EXPECT_EQ(form.control("txtClientID").text, "A001");
  EXPECT_EQ(form.control("lblSiteNumber").caption, "Site Number (0-9):");
  EXPECT_EQ(form.control("lblSeqNumber").caption, "Sequence Number (0-46655):");
  EXPECT_EQ(form.control("fraMiscPayCodes").caption, "Miscellaneous Pay Codes");
  EXPECT_EQ(form.control("lblCode").caption, "Code");
  EXPECT_EQ(form.control("lblVACPayCode").caption, "Vacation:");
  EXPECT_EQ(form.control("lblHOLPayCode").caption, "Holiday:");
  EXPECT_EQ(form.control("lblSICPayCode").caption, "Sick:");
  EXPECT_EQ(form.control("lblOTHPayCode").caption, "Other:");
}

TEST_F(PCPayLinkFormTest, EarningCodeListsStartWithTheirFirstEntrySelected) {
  PCPayLinkForm& form = frmPCPayLink();
  const std::vector<std::string> vac = {"VA",  "R3",  "SA", "MI", "TE",  "IN",  "BNW",
                                        "BNP", "BNF", "99", "EX", "R1X", "SAX", "AV"};
  std::vector<std::string> hol = vac;
  hol[0] = "HO";
  const std::vector<std::string> sic = {"QS",  "NS",  "R3", "SA", "MI",  "TE",  "IN", "BNW",
                                        "BNP", "BNF", "99", "EX", "R1X", "SAX", "AV"};
  const std::vector<std::string> oth = {"R3",  "SA", "MI", "TE",  "IN",  "BNW", "BNP",
                                        "BNF", "99", "EX", "R1X", "SAX", "AV"};
  EXPECT_EQ(form.control("cboVAC").items, vac);
  EXPECT_EQ(form.control("cboHOL").items, hol);
  EXPECT_EQ(form.control("cboSIC").items, sic);
  EXPECT_EQ(form.control("cboOTH").items, oth);
  EXPECT_EQ(vac.size(), 14u);
  EXPECT_EQ(sic.size(), 15u);
  EXPECT_EQ(oth.size(), 13u);
  for (const char* combo : {"cboVAC", "cboHOL", "cboSIC", "cboOTH"}) {
    EXPECT_EQ(form.control(combo).list_index, 0) << combo;
    EXPECT_TRUE(form.control(combo).editable) << combo;
  }
}

TEST_F(PCPayLinkFormTest, SevenFieldsLeaveTheDesignValuesAndFirstEntries) {
  paylink.SetupData("12,ABC,3,44,SA,SA,SA");
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(paylink.Setup());
  EXPECT_EQ(paylink.SetupData(), "0,A001,0,0,VA,HO,QS,R3");
}

TEST_F(PCPayLinkFormTest, EightFieldsFillBoxesAndComboTexts) {
  paylink.SetupData("12,ABC,3,44,SA,ZZ,NS,99");
  host.ui.answer_form([](FormModel& form) {
    EXPECT_EQ(form.control("txtOfficeNumber").text, "12");
    EXPECT_EQ(form.control("cboVAC").text, "SA");
    EXPECT_EQ(form.control("cboVAC").list_index, 2);
    // A code outside the list stands in the combo's text as it is.
    EXPECT_EQ(form.control("cboHOL").text, "ZZ");
    EXPECT_EQ(form.control("cboHOL").list_index, -1);
    form.press(form.control("cmdButton", 0));
  });
  EXPECT_TRUE(paylink.Setup());
  EXPECT_EQ(paylink.SetupData(), "12,ABC,3,44,SA,ZZ,NS,99");
  EXPECT_TRUE(host.ui.messages.empty());
}

TEST_F(PCPayLinkFormTest, CaptionIsTheEditionAndHelpIs1096) {
  paylink.Title = "Paychex PayLink V2.0";
  host.ui.answer_form({"click cmdButton(2)", "click cmdButton(1)"});
  EXPECT_FALSE(paylink.Setup());
  EXPECT_EQ(frmPCPayLink().caption, "Paychex PayLink V2.0");
  ASSERT_EQ(host.ui.help_calls.size(), 1u);
  EXPECT_EQ(host.ui.help_calls[0].context, 1096u);
}

TEST_F(PCPayLinkFormTest, NumberBoxesTakeDigitsOnlyAndClientIdIsUpperCase) {
  host.ui.answer_form({"clear txtSiteNumber", "type txtSiteNumber x7", "clear txtClientID",
                       "type txtClientID b2c", "type txtOfficeNumber 1a", "type txtSeqNumber -5",
                       "click cmdButton(0)"});
  EXPECT_TRUE(paylink.Setup());
  EXPECT_EQ(paylink.SetupData(), "01,B2C,7,05,VA,HO,QS,R3");
}

TEST_F(PCPayLinkFormTest, ClearingTheOfficeBoxShowsTheOfficeMessageAtOnce) {
  host.ui.answer_form({"clear txtOfficeNumber", "click cmdButton(1)"});
  EXPECT_FALSE(paylink.Setup());
  EXPECT_EQ(host.ui.message_texts(), (std::vector<std::string>{kOfficeMessage}));
  EXPECT_EQ(paylink.SetupData(), ",A001,0,0,VA,HO,QS,R3");
}

TEST_F(PCPayLinkFormTest, OfficeOutOfRangeWarnsKeepsTheTextAndFailsTheCheck) {
  host.ui.answer_form({"clear txtOfficeNumber", "type txtOfficeNumber 1296", "click cmdButton(0)"});
  try {
    paylink.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 2001);
    EXPECT_EQ(error.description(), kOfficeMessage);
    EXPECT_EQ(error.source(), "zorvat.PCPayLink.Setup");
  }
  EXPECT_EQ(host.ui.message_texts(), (std::vector<std::string>{kOfficeMessage, kOfficeMessage}));
  EXPECT_EQ(paylink.SetupData(), "1296,A001,0,0,VA,HO,QS,R3");
}

TEST_F(PCPayLinkFormTest, SequenceOutOfRangeWarns) {
  host.ui.answer_form({"clear txtSeqNumber", "type txtSeqNumber 46656", "click cmdButton(1)"});
  EXPECT_FALSE(paylink.Setup());
  EXPECT_EQ(host.ui.message_texts(), (std::vector<std::string>{kSeqMessage, kSeqMessage}));
  EXPECT_EQ(paylink.SetupData(), "0,A001,0,46656,VA,HO,QS,R3");
}

TEST_F(PCPayLinkFormTest, SiteBoxHasNoChangeCheck) {
  host.ui.answer_form(
      {"clear txtSiteNumber", "type txtSiteNumber 9", "clear txtClientID", "click cmdButton(1)"});
  paylink.Setup();
  EXPECT_TRUE(host.ui.messages.empty());
}

TEST_F(PCPayLinkFormTest, CodesArePickedOrTyped) {
  host.ui.answer_form({"select cboVAC SA", "select cboSIC NS", "clear cboOTH", "type cboOTH zz9",
                       "click cmdButton(0)"});
  EXPECT_TRUE(paylink.Setup());
  EXPECT_EQ(paylink.SetupData(), "0,A001,0,0,SA,HO,NS,zz9");
}

TEST_F(PCPayLinkFormTest, SavedClientIdTooLongRaises2002) {
  paylink.SetupData("1,ABCDE,0,0,VA,HO,QS,R3");
  host.ui.answer_form({"click cmdButton(0)"});
  try {
    paylink.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 2002);
  }
}

TEST_F(PCPayLinkFormTest, SavedFractionalOfficeAndEmptyClientIdPass) {
  paylink.SetupData("12.5,,0,0,VA,HO,QS,R3");
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(paylink.Setup());
  EXPECT_EQ(paylink.SetupData(), "12.5,,0,0,VA,HO,QS,R3");
}

TEST_F(PCPayLinkFormTest, SavedOffice1295Passes) {
  host.ui.answer_form({"clear txtOfficeNumber", "type txtOfficeNumber 1295", "click cmdButton(0)"});
  EXPECT_TRUE(paylink.Setup());
  EXPECT_EQ(paylink.SetupData(), "1295,A001,0,0,VA,HO,QS,R3");
}

TEST_F(PCPayLinkFormTest, SavedSiteTenRaises2003) {
  paylink.SetupData("1,AB,10,0,VA,HO,QS,R3");
  host.ui.answer_form({"click cmdButton(0)"});
  try {
    paylink.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 2003);
  }
}

}  // namespace
}  // namespace zorvat::formats
