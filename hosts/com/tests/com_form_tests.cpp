// Setup through the automation interface, as the host calls it: the setup form comes
// up as a modal dialog of zorvat.dll, a user works it, and the host reads the result
// and SetupData back (or the error Setup raised).
#include <gtest/gtest.h>

#include "automation_client.h"
#include "form_user.h"

namespace zorvat::com::testing {
namespace {

struct SetupCall {
  CallResult result;
  std::string settings;
};

SetupCall setup_through_com(FormUser& user, const std::wstring& prog_id,
                            const std::string& settings, const std::string& form_name,
                            const std::function<void(HWND)>& script) {
  SetupCall outcome;
  ComPtr<IDispatch> object = create_object(prog_id);
  if (!object) {
    ADD_FAILURE() << "cannot create the class";
    return outcome;
  }
  put(object.Get(), L"SetupData", settings);
  with_form(user, form_name, script,
            [&] { outcome.result = call(object.Get(), L"Setup", DISPATCH_METHOD); });
  outcome.settings = get(object.Get(), L"SetupData").text();
  return outcome;
}

TEST(ComSetup, GenericSaveReturnsTrueWithTheTickedOption) {
  FormUser user;
  const SetupCall outcome =
      setup_through_com(user, L"zorvat.Generic", "0,0,0,0,0,False,True,False,False,False,,0",
                        "frmGeneric", [&](HWND form) {
                          EXPECT_EQ(user.caption(form), L"Generic V2.0");
                          user.click(form, "chkOutputOptions(2)");
                          user.click(form, "cmdButton(0)");
                        });
  ASSERT_EQ(outcome.result.hr, S_OK) << outcome.result.description;
  EXPECT_TRUE(outcome.result.boolean());
  EXPECT_EQ(outcome.settings, "0,0,1,0,0,False,True,False,False,False,,0");
}

TEST(ComSetup, PCPreviewCancelReturnsFalseWithTheTypedValues) {
  FormUser user;
  const SetupCall outcome = setup_through_com(
      user, L"zorvat.PCPreview", "0,A,B,C,0,D,E,F,G,0,0,0,0", "frmPCPreview", [&](HWND form) {
        user.type(form, "txtPayCode(1)", L"x");
        user.type(form, "txtClientNumber", L"x7");
        EXPECT_EQ(user.text(form, "txtPayCode(1)"), L"BX");
        EXPECT_EQ(user.text(form, "txtClientNumber"), L"07");
        user.click(form, "cmdButton(1)");
      });
  ASSERT_EQ(outcome.result.hr, S_OK) << outcome.result.description;
  EXPECT_FALSE(outcome.result.boolean());
  EXPECT_EQ(outcome.settings, "07,A,BX,C,0,D,E,F,G,0,0,0,0");
}

TEST(ComSetup, PrimePaySaveWithABadBatchRaisesFromSetup) {
  FormUser user;
  const SetupCall outcome = setup_through_com(
      user, L"zorvat.PrimePay", "5,02,20,23,24,25,28", "frmPrimePay", [&](HWND form) {
        user.type(form, "txtBatchSequence", L"00");
        EXPECT_EQ(user.messages(),
                  std::vector<std::string>{"Batch Sequence Field must be between 0 and 127"});
        user.click(form, "cmdButton(0)");
      });
  ASSERT_TRUE(outcome.result.raised());
  EXPECT_EQ(outcome.result.number, 5001);
  EXPECT_EQ(outcome.result.source, "zorvat.PrimePay.Setup");
  EXPECT_EQ(outcome.result.description, "Batch Sequence Number invalid");
  EXPECT_EQ(outcome.settings, "500,02,20,23,24,25,28");
}

}  // namespace
}  // namespace zorvat::com::testing
