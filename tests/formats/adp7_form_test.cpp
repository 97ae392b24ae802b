// frmADP7 and ADP7.Setup: captions and presets, the upper-case pay codes, the output
// format options and their field, write-back, help. Expected strings by hand.
#include "adp7/adp7_form.h"

#include <gtest/gtest.h>

#include "adp7/adp7.h"
#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

constexpr const char* kDefaults =
    ",,,,Hours 3,,Vacation Hours,,Holiday Hours,,Sick Hours,,Hours 4,EPIP";

class ADP7FormTest : public testing::Test {
 protected:
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }

  scripted::Host host;
  ADP7 adp7{host.context()};
};

TEST_F(ADP7FormTest, ControlsCarryTheirCaptionsAndPresets) {
  ADP7Form& form = frmADP7();
  EXPECT_EQ(form.caption, "ADP Version 7.0");
  EXPECT_EQ(form.control("lblCompanyCode").caption, "Company Code");
  EXPECT_EQ(form.control("lblBatchSeqNum").caption, "Batch Sequence Number");
  EXPECT_EQ(form.control("lblPayNumber").caption, "Pay Number");
  EXPECT_EQ(form.control("lblOT2PayCode").caption, "Overtime Level 2 Pay Code");
  EXPECT_EQ(form.control("lblVACPayCode").caption, "Vacation Pay Code");
  EXPECT_EQ(form.control("lblHOLPayCode").caption, "Holiday Pay Code");
  EXPECT_EQ(form.control("lblSICPayCode").caption, "Sick Pay Code");
  EXPECT_EQ(form.control("lblOTHPayCode").caption, "Other Pay Code");
  EXPECT_EQ(form.control("txtOT2CodeName").text, "Hours 3");
  EXPECT_EQ(form.control("txtVACCodeName").text, "Vacation Hours");
  EXPECT_EQ(form.control("txtHOLCodeName").text, "Holiday Hours");
  EXPECT_EQ(form.control("txtSICCodeName").text, "Sick Hours");
  EXPECT_EQ(form.control("txtOTHCodeName").text, "Hours 4");
  EXPECT_EQ(form.control("fraOutputFormat").caption, "Format Options");
  EXPECT_EQ(form.control("optEPIP").caption, "Output to ADP EPIP format");
  EXPECT_EQ(form.control("optCSV").caption, "Output to ADP CSV format");
  EXPECT_EQ(form.control("fraPayCode").caption, "ADP Pay Codes");
  EXPECT_EQ(form.control("lblCode").caption, "Code");
  EXPECT_EQ(form.control("lblCodeName").caption, "Code Name");
}

TEST_F(ADP7FormTest, EmptySettingsSaveTheDesignDefaults) {
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(adp7.Setup());
  EXPECT_EQ(adp7.SetupData(), kDefaults);
}

TEST_F(ADP7FormTest, CodesAreTypedInUpperCaseAndTheBatchAsTyped) {
  host.ui.answer_form({"type txtCompanyCode abc", "type txtBatchSeqNum 7x", "type txtPayNumber p1",
                       "type txtOT2PayCode o2", "type txtVACPayCode va", "type txtHOLPayCode ho",
                       "type txtSICPayCode si", "type txtOTHPayCode ot", "clear txtOTHCodeName",
                       "type txtOTHCodeName Other hours", "click cmdButton(0)"});
  EXPECT_TRUE(adp7.Setup());
  EXPECT_EQ(adp7.SetupData(),
            "ABC,7x,P1,O2,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,"
            "Other hours,EPIP");
}

TEST_F(ADP7FormTest, FourteenFieldsFillTheFormAndCsvSelectsCsv) {
  adp7.SetupData("X1,5,P,A1,N1,A2,N2,A3,N3,A4,N4,A5,N5,CSV");
  host.ui.answer_form([](FormModel& form) {
    EXPECT_EQ(form.control("txtCompanyCode").text, "X1");
    EXPECT_EQ(form.control("txtOTHCodeName").text, "N5");
    EXPECT_EQ(form.control("optCSV").value, 1);
    EXPECT_EQ(form.control("optEPIP").value, 0);
    form.press(form.control("cmdButton", 0));
  });
  EXPECT_TRUE(adp7.Setup());
  EXPECT_EQ(adp7.SetupData(), "X1,5,P,A1,N1,A2,N2,A3,N3,A4,N4,A5,N5,CSV");
}

TEST_F(ADP7FormTest, AnyFormatButEpipOpensAsCsv) {
  adp7.SetupData("X1,5,P,A1,N1,A2,N2,A3,N3,A4,N4,A5,N5,epip");
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(adp7.Setup());
  EXPECT_EQ(adp7.SetupData(), "X1,5,P,A1,N1,A2,N2,A3,N3,A4,N4,A5,N5,CSV");
}

TEST_F(ADP7FormTest, EpipFieldSelectsEpip) {
  adp7.SetupData("X1,5,P,A1,N1,A2,N2,A3,N3,A4,N4,A5,N5,CSV");
  host.ui.answer_form({"click cmdButton(0)"});
  adp7.Setup();
  adp7.SetupData("X1,5,P,A1,N1,A2,N2,A3,N3,A4,N4,A5,N5,EPIP");
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(adp7.Setup());
  EXPECT_EQ(adp7.SetupData(), "X1,5,P,A1,N1,A2,N2,A3,N3,A4,N4,A5,N5,EPIP");
}

TEST_F(ADP7FormTest, CancelKeepsTheChosenFormatInTheString) {
  host.ui.answer_form({"choose optCSV", "click cmdButton(1)"});
  EXPECT_FALSE(adp7.Setup());
  EXPECT_EQ(adp7.SetupData(),
            ",,,,Hours 3,,Vacation Hours,,Holiday Hours,,Sick Hours,,Hours 4,CSV");
}

TEST_F(ADP7FormTest, SaveIsNotCheckedBySetup) {
  // The form checks nothing and Setup does not run ValidateSetupData: the host's check
  // before the export reports the batch number.
  host.ui.answer_form({"type txtBatchSeqNum 100", "click cmdButton(0)"});
  EXPECT_TRUE(adp7.Setup());
  try {
    adp7.ValidateSetupData(adp7.SetupData());
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 1002);
  }
}

TEST_F(ADP7FormTest, HelpShowsTopic1095) {
  host.ui.answer_form({"click cmdButton(2)", "click cmdButton(1)"});
  EXPECT_FALSE(adp7.Setup());
  ASSERT_EQ(host.ui.help_calls.size(), 1u);
  EXPECT_EQ(host.ui.help_calls[0].help_file, "HORALISHELP.HLP");
  EXPECT_EQ(host.ui.help_calls[0].window, ">Second");
  EXPECT_EQ(host.ui.help_calls[0].context, 1095u);
}

}  // namespace
}  // namespace zorvat::formats
