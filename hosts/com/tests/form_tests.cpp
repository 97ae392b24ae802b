// The setup forms and the progress window on the Windows screen: each form is opened
// through its class's Setup (QB2000's through its form), worked by a user on another
// thread, and the saved flag and settings string checked. A screenshot of every form
// is written when the run names a folder for them.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "export_classes.h"
#include "form_tests.h"
#include "form_user.h"
#include "qb2000/qb2000_form.h"
#include "win32_services.h"
#include "zorvat/error.h"
#include "zorvat/forms.h"
#include "zorvat/progress.h"
#include "zorvat/settings.h"

namespace zorvat::com::testing {
namespace {

constexpr WORD kHelpContextCommand = 1;  // HELP_CONTEXT

class Win32Forms : public ::testing::Test {
 protected:
  // Every test starts from the forms' design defaults.
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }

  ExportContext context() { return {ui_, server_context().files, server_context().clock}; }

  std::unique_ptr<ExportClass> create(const std::string& class_name, std::string settings,
                                      std::string title = {}) {
    auto object = formats::export_registry().create(class_name, context());
    object->SetupData(std::move(settings));
    object->Title = std::move(title);
    return object;
  }

  struct Outcome {
    bool saved = false;
    std::string settings;
  };

  // Setup on this thread, the script working the form from another.
  Outcome setup(ExportClass& object, const std::string& form_name,
                const std::function<void(HWND)>& script) {
    Outcome outcome;
    with_form(user_, form_name, script, [&] { outcome.saved = object.Setup(); });
    outcome.settings = object.SetupData();
    return outcome;
  }

  void screenshot(HWND window, const std::string& file_name) {
    EXPECT_TRUE(FormUser::screenshot(window, screenshot_folder(), file_name)) << file_name;
  }

  win32::Win32Ui ui_;
  FormUser user_;
};

std::vector<std::string> fields_of(const std::string& settings) {
  return SettingsFields(settings).fields();
}

// --- The pattern every form follows ---------------------------------------------

TEST_F(Win32Forms, FreshGenericOpensWithDefaultsAndSaveStoresTwelveFields) {
  auto generic = create("Generic", "");
  const Outcome outcome = setup(*generic, "frmGeneric", [&](HWND form) {
    EXPECT_EQ(user_.caption(form), L"Generic V2.0");
    EXPECT_EQ(user_.items(form, "cboLineTerminator"),
              (std::vector<std::wstring>{L"CRLF", L"CR", L"LF", L"LFCR"}));
    EXPECT_EQ(user_.list_index(form, "cboLineTerminator"), 0);
    EXPECT_EQ(user_.text(form, "cboLineTerminator"), L"CRLF");
    EXPECT_EQ(user_.text(form, "chkOutputOptions(0)"), L"Insert Quotes Around Non-Numeric");
    EXPECT_EQ(user_.text(form, "optFieldSeperators(4)"), L"Custom");
    EXPECT_EQ(user_.text(form, "fraFieldSeperators"), L"Generic Field Seperators");
    EXPECT_EQ(user_.text(form, "cmdButton(0)"), L"&Save");
    EXPECT_EQ(user_.text(form, "cmdButton(1)"), L"Cancel");
    EXPECT_EQ(user_.text(form, "cmdButton(2)"), L"&Help");
    EXPECT_EQ(user_.check(form, "chkOutputOptions(1)"), BST_UNCHECKED);
    screenshot(form, "frmGeneric.png");
    user_.click(form, "cmdButton(0)");
  });
  EXPECT_TRUE(outcome.saved);
  EXPECT_EQ(outcome.settings, "0,0,0,0,0,False,False,False,False,False,,0");
}

TEST_F(Win32Forms, CancelReturnsFalseYetWritesTheEditedValuesBack) {
  auto generic = create("Generic", "0,0,0,0,0,False,True,False,False,False,,0");
  const Outcome outcome = setup(*generic, "frmGeneric", [&](HWND form) {
    EXPECT_EQ(user_.check(form, "optFieldSeperators(1)"), BST_CHECKED);
    user_.click(form, "chkOutputOptions(1)");
    user_.click(form, "optFieldSeperators(3)");
    user_.select(form, "cboLineTerminator", L"LF");
    user_.type(form, "txtCustomSeperator", L"x");
    EXPECT_EQ(user_.check(form, "chkOutputOptions(1)"), BST_CHECKED);
    EXPECT_EQ(user_.check(form, "optFieldSeperators(1)"), BST_UNCHECKED);
    EXPECT_EQ(user_.check(form, "optFieldSeperators(3)"), BST_CHECKED);
    user_.click(form, "cmdButton(1)");
  });
  EXPECT_FALSE(outcome.saved);
  EXPECT_EQ(outcome.settings, "0,1,0,0,0,False,False,False,True,False,x,2");
}

TEST_F(Win32Forms, HelpOpensTheTopicAndLeavesTheFormOpenThenEnterSaves) {
  auto generic = create("Generic", "1,0,0,0,0,True,False,False,False,False,,1");
  const Outcome outcome = setup(*generic, "frmGeneric", [&](HWND form) {
    user_.click(form, "cmdButton(2)");
    const std::vector<HelpRequest> help = user_.help_requests();
    ASSERT_EQ(help.size(), 1u);
    EXPECT_EQ(help[0].command, kHelpContextCommand);
    EXPECT_EQ(help[0].data, 1093);
    const std::string suffix = "\\HORALISHELP.HLP>Second";
    ASSERT_GE(help[0].file.size(), suffix.size()) << help[0].file;
    EXPECT_EQ(help[0].file.substr(help[0].file.size() - suffix.size()), suffix) << help[0].file;
    EXPECT_TRUE(IsWindowVisible(form));
    // Back on the form: Enter presses the default button, Save.
    user_.press_key(form, VK_RETURN);
    EXPECT_TRUE(user_.wait_closed(form));
  });
  EXPECT_TRUE(outcome.saved);
  EXPECT_EQ(outcome.settings, "1,0,0,0,0,True,False,False,False,False,,1");
}

TEST_F(Win32Forms, EscapeAndTheCloseBoxCloseAsCancel) {
  auto generic = create("Generic", "0,0,0,0,0,False,True,False,False,False,,0");
  Outcome outcome = setup(*generic, "frmGeneric", [&](HWND form) {
    user_.click(form, "chkOutputOptions(4)");
    user_.press_key(form, VK_ESCAPE);
    EXPECT_TRUE(user_.wait_closed(form));
  });
  EXPECT_FALSE(outcome.saved);
  EXPECT_EQ(outcome.settings, "0,0,0,0,1,False,True,False,False,False,,0");

  outcome = setup(*generic, "frmGeneric", [&](HWND form) { user_.close_box(form); });
  EXPECT_FALSE(outcome.saved);
  EXPECT_EQ(outcome.settings, "0,0,0,0,1,False,True,False,False,False,,0");
}

TEST_F(Win32Forms, HelpOfEachFormOpensItsOwnTopic) {
  struct Case {
    const char* class_name;
    const char* form_name;
    long context;
  };
  const Case cases[] = {{"Generic", "frmGeneric", 1093},     {"Peachtree", "frmPeachtree", 1094},
                        {"ADP7", "frmADP7", 1095},           {"PCPayLink", "frmPCPayLink", 1096},
                        {"PCPreview", "frmPCPreview", 1097}, {"PrimePay", "frmPrimePay", 1098},
                        {"IntuitPAC", "frmIntuitPAC", 1099}, {"QB2000", "frmQB2000", 1089}};
  // Every class of the list has its form's topic here, and no other class.
  for (const reconcile::ClassRules& rules : formats::export_classes()) {
    const std::string class_name(rules.class_name);
    SCOPED_TRACE(class_name);
    const auto found = std::find_if(std::begin(cases), std::end(cases), [&](const Case& each) {
      return class_name == each.class_name;
    });
    if (found == std::end(cases)) {
      ADD_FAILURE() << "no form and help topic for the listed class " << class_name;
      continue;
    }
    const Case& each = *found;
    auto object = create(each.class_name, "", "Intuit PC Access Import File V2.0");
    const std::size_t before = user_.help_requests().size();
    const Outcome outcome = setup(*object, each.form_name, [&](HWND form) {
      user_.click(form, "cmdButton(2)");
      EXPECT_TRUE(IsWindowVisible(form)) << each.form_name;
      user_.click(form, "cmdButton(1)");
    });
    EXPECT_FALSE(outcome.saved) << each.form_name;
    const std::vector<HelpRequest> help = user_.help_requests();
    ASSERT_EQ(help.size(), before + 1) << each.form_name;
    EXPECT_EQ(help.back().data, each.context) << each.form_name;
    EXPECT_EQ(help.back().command, kHelpContextCommand) << each.form_name;
  }
  EXPECT_EQ(std::size(cases), formats::export_classes().size())
      << "a help topic for a class that is not in the list";
}

// --- frmGeneric -----------------------------------------------------------------

TEST_F(Win32Forms, CommaTypedAsCustomSeparatorBreaksTheNextSplit) {
  auto generic = create("Generic", "");
  Outcome outcome = setup(*generic, "frmGeneric", [&](HWND form) {
    user_.click(form, "optFieldSeperators(4)");
    user_.type(form, "txtCustomSeperator", L",");
    user_.click(form, "cmdButton(0)");
  });
  EXPECT_TRUE(outcome.saved);
  EXPECT_EQ(outcome.settings, "0,0,0,0,0,False,False,False,False,True,,,0");
  EXPECT_EQ(fields_of(outcome.settings).size(), 13u);

  // Thirteen fields: the form is not seeded and shows what it held.
  outcome = setup(*generic, "frmGeneric", [&](HWND form) {
    EXPECT_EQ(user_.text(form, "txtCustomSeperator"), L",");
    EXPECT_EQ(user_.check(form, "optFieldSeperators(4)"), BST_CHECKED);
    user_.select(form, "cboLineTerminator", L"CR");
    user_.click(form, "cmdButton(0)");
  });
  EXPECT_TRUE(outcome.saved);
  EXPECT_EQ(outcome.settings, "0,0,0,0,0,False,False,False,False,True,,,1");
}

// --- frmADP7 --------------------------------------------------------------------

TEST_F(Win32Forms, ADP7UpperCasesPayCodesAndTakesCodeNamesAsTyped) {
  auto adp7 = create("ADP7", "");
  const Outcome outcome = setup(*adp7, "frmADP7", [&](HWND form) {
    EXPECT_EQ(user_.caption(form), L"ADP Version 7.0");
    EXPECT_EQ(user_.text(form, "txtOT2CodeName"), L"Hours 3");
    EXPECT_EQ(user_.text(form, "txtVACCodeName"), L"Vacation Hours");
    EXPECT_EQ(user_.text(form, "txtHOLCodeName"), L"Holiday Hours");
    EXPECT_EQ(user_.text(form, "txtSICCodeName"), L"Sick Hours");
    EXPECT_EQ(user_.text(form, "txtOTHCodeName"), L"Hours 4");
    EXPECT_EQ(user_.text(form, "fraOutputFormat"), L"Format Options");
    screenshot(form, "frmADP7.png");
    user_.clear(form, "txtCompanyCode");
    user_.type(form, "txtCompanyCode", L"ab1");
    user_.clear(form, "txtVACPayCode");
    user_.type(form, "txtVACPayCode", L"vc");
    user_.type(form, "txtOT2CodeName", L"x");
    EXPECT_EQ(user_.text(form, "txtCompanyCode"), L"AB1");
    EXPECT_EQ(user_.text(form, "txtVACPayCode"), L"VC");
    user_.click(form, "optEPIP");
    user_.click(form, "cmdButton(2)");
    user_.click(form, "cmdButton(0)");
  });
  EXPECT_TRUE(outcome.saved);
  const std::vector<std::string> fields = fields_of(outcome.settings);
  ASSERT_EQ(fields.size(), 14u) << outcome.settings;
  EXPECT_EQ(fields[0], "AB1");
  EXPECT_EQ(fields[4], "Hours 3x");
  EXPECT_EQ(fields[5], "VC");
  EXPECT_EQ(fields[6], "Vacation Hours");
  EXPECT_EQ(fields[13], "EPIP");
  ASSERT_EQ(user_.help_requests().size(), 1u);
  EXPECT_EQ(user_.help_requests()[0].data, 1095);
}

// --- frmIntuitPAC ---------------------------------------------------------------

TEST_F(Win32Forms, IntuitPACKeepsTheFocusInABadCompanyNameAndCrossesPayCodes) {
  auto intuit = create("IntuitPAC", "", "Intuit PC Access Import File V2.0");
  const Outcome outcome = setup(*intuit, "frmIntuitPAC", [&](HWND form) {
    EXPECT_EQ(user_.caption(form), L"Intuit PC Access Import File V2.0");
    EXPECT_EQ(user_.text(form, "lblPayCode(0)"), L"Regular Pay Code:");
    EXPECT_TRUE(user_.visible(form, "txtPayCode(2)"));
    screenshot(form, "frmIntuitPAC.png");
    user_.clear(form, "txtCompanyName");
    user_.type(form, "txtCompanyName", L"ABCQ12345");
    // Leaving the box checks it: the message, and the focus stays.
    user_.click(form, "txtPayCode(0)");
    const std::vector<std::string> messages = user_.messages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0],
              "The Company Name for this export must be either 7 or 9 characters in length\r\n"
              "If 9 character format, the fourth character must be a 'C' or 'E'.");
    EXPECT_EQ(user_.focused(form), "txtCompanyName");
    EXPECT_EQ(user_.text(form, "txtCompanyName"), L"ABCQ12345");
    // Save cannot take the focus either, so its click does nothing.
    user_.click(form, "cmdButton(0)");
    EXPECT_EQ(user_.messages().size(), 2u);
    EXPECT_TRUE(IsWindowVisible(form));
    EXPECT_EQ(user_.focused(form), "txtCompanyName");

    user_.clear(form, "txtCompanyName");
    user_.type(form, "txtCompanyName", L"ABCE12345");
    const char* const boxes[] = {"txtPayCode(0)", "txtPayCode(1)", "txtPayCode(2)", "txtVACPayCode",
                                 "txtHOLPayCode", "txtSICPayCode", "txtOTHPayCode"};
    const wchar_t* const values[] = {L"1", L"2", L"3", L"4", L"5", L"6", L"7"};
    for (int i = 0; i < 7; ++i) {
      user_.clear(form, boxes[i]);
      user_.type(form, boxes[i], values[i]);
    }
    EXPECT_EQ(user_.messages().size(), 2u);
    user_.click(form, "cmdButton(0)");
  });
  EXPECT_TRUE(outcome.saved);
  const std::vector<std::string> fields = fields_of(outcome.settings);
  ASSERT_EQ(fields.size(), 12u) << outcome.settings;
  // A full edition stores the first pay-code box in all three pay-code fields.
  EXPECT_EQ(std::vector<std::string>(fields.begin(), fields.begin() + 8),
            (std::vector<std::string>{"ABCE12345", "1", "1", "1", "4", "5", "6", "7"}));
}

TEST_F(Win32Forms, IntuitPACShortEditionHidesTwoPayCodeBoxes) {
  auto intuit = create("IntuitPAC", "", "QuikPay Import File V2.0");
  const Outcome outcome = setup(*intuit, "frmIntuitPAC", [&](HWND form) {
    EXPECT_EQ(user_.caption(form), L"QuikPay Import File V2.0");
    EXPECT_EQ(user_.text(form, "lblPayCode(0)"), L"Overime Level 2 Pay Code:");
    EXPECT_TRUE(user_.visible(form, "txtPayCode(0)"));
    EXPECT_FALSE(user_.visible(form, "txtPayCode(1)"));
    EXPECT_FALSE(user_.visible(form, "txtPayCode(2)"));
    EXPECT_FALSE(user_.visible(form, "lblPayCode(1)"));
    EXPECT_FALSE(user_.visible(form, "lblPayCode(2)"));
    screenshot(form, "frmIntuitPAC-QuikPay.png");
    user_.click(form, "cmdButton(1)");
  });
  EXPECT_FALSE(outcome.saved);
  EXPECT_EQ(fields_of(outcome.settings).size(), 12u);
}

TEST_F(Win32Forms, IntuitPACWithElevenFieldsKeepsItsDefaults) {
  const std::string title = "Intuit PC Access Import File V2.0";
  std::vector<std::wstring> fresh;
  auto read_boxes = [&](HWND form) {
    std::vector<std::wstring> texts;
    for (const char* box : {"txtCompanyName", "txtPayCode(0)", "txtVACPayCode", "txtOTHPayCode"})
      texts.push_back(user_.text(form, box));
    return texts;
  };
  auto first = create("IntuitPAC", "", title);
  const Outcome defaults = setup(*first, "frmIntuitPAC", [&](HWND form) {
    fresh = read_boxes(form);
    user_.click(form, "cmdButton(1)");
  });
  unload_forms();
  auto second = create("IntuitPAC", "ABCDEFG,11,12,13,14,15,16,17,1,1,1", title);
  const Outcome eleven = setup(*second, "frmIntuitPAC", [&](HWND form) {
    EXPECT_EQ(read_boxes(form), fresh);
    user_.click(form, "cmdButton(1)");
  });
  EXPECT_FALSE(eleven.saved);
  EXPECT_EQ(eleven.settings, defaults.settings);
}

// --- frmPCPayLink ---------------------------------------------------------------

TEST_F(Win32Forms, PCPayLinkListsFiltersAndChangeChecks) {
  auto paylink = create("PCPayLink", "", "Paychex PayLink");
  const Outcome outcome = setup(*paylink, "frmPCPayLink", [&](HWND form) {
    EXPECT_EQ(user_.caption(form), L"Paychex PayLink");
    EXPECT_EQ(user_.text(form, "txtClientID"), L"A001");
    const std::vector<std::wstring> vacation = {L"VA", L"R3",  L"SA",  L"MI",  L"TE",
                                                L"IN", L"BNW", L"BNP", L"BNF", L"99",
                                                L"EX", L"R1X", L"SAX", L"AV"};
    EXPECT_EQ(user_.items(form, "cboVAC"), vacation);
    std::vector<std::wstring> holiday = vacation;
    holiday[0] = L"HO";
    EXPECT_EQ(user_.items(form, "cboHOL"), holiday);
    EXPECT_EQ(user_.items(form, "cboSIC").size(), 15u);
    EXPECT_EQ(user_.items(form, "cboOTH").size(), 13u);
    for (const char* combo : {"cboVAC", "cboHOL", "cboSIC", "cboOTH"})
      EXPECT_EQ(user_.list_index(form, combo), 0) << combo;
    EXPECT_EQ(user_.text(form, "cboSIC"), L"QS");
    screenshot(form, "frmPCPayLink.png");

    // Digits only in the office box; clearing it warns at once.
    user_.clear(form, "txtOfficeNumber");
    EXPECT_EQ(user_.messages(),
              std::vector<std::string>{"Office Number must be between 0 and 1295"});
    user_.type(form, "txtOfficeNumber", L"1x2");
    EXPECT_EQ(user_.text(form, "txtOfficeNumber"), L"12");
    // Four characters at most, upper case.
    user_.clear(form, "txtClientID");
    user_.type(form, "txtClientID", L"b12cd");
    EXPECT_EQ(user_.text(form, "txtClientID"), L"B12C");
    user_.clear(form, "txtSeqNumber");
    EXPECT_EQ(user_.messages().back(), "Sequence Number must be between 0 and 46655");
    user_.type(form, "txtSeqNumber", L"46656");
    EXPECT_EQ(user_.messages().back(), "Sequence Number must be between 0 and 46655");
    EXPECT_EQ(user_.text(form, "txtSeqNumber"), L"46656");
    user_.select(form, "cboVAC", L"SA");
    user_.click(form, "cmdButton(1)");
  });
  EXPECT_FALSE(outcome.saved);
  const std::vector<std::string> fields = fields_of(outcome.settings);
  ASSERT_EQ(fields.size(), 8u) << outcome.settings;
  EXPECT_EQ(fields[0], "12");
  EXPECT_EQ(fields[1], "B12C");
  EXPECT_EQ(fields[3], "46656");
  EXPECT_EQ(std::vector<std::string>(fields.begin() + 4, fields.end()),
            (std::vector<std::string>{"SA", "HO", "QS", "R3"}));
}

TEST_F(Win32Forms, PCPayLinkWithSevenFieldsKeepsDesignValues) {
  auto paylink = create("PCPayLink", "1,B002,3,4,R3,R3,R3", "Paychex PayLink");
  const Outcome outcome = setup(*paylink, "frmPCPayLink", [&](HWND form) {
    EXPECT_EQ(user_.text(form, "txtClientID"), L"A001");
    for (const char* combo : {"cboVAC", "cboHOL", "cboSIC", "cboOTH"})
      EXPECT_EQ(user_.list_index(form, combo), 0) << combo;
    user_.click(form, "cmdButton(1)");
  });
  EXPECT_FALSE(outcome.saved);
  const std::vector<std::string> fields = fields_of(outcome.settings);
  ASSERT_EQ(fields.size(), 8u) << outcome.settings;
  EXPECT_EQ(fields[1], "A001");
  EXPECT_EQ(std::vector<std::string>(fields.begin() + 4, fields.end()),
            (std::vector<std::string>{"VA", "HO", "QS", "R3"}));
}

// --- frmPCPreview ---------------------------------------------------------------

TEST_F(Win32Forms, PCPreviewDefaultsKeyFiltersAndTabOrder) {
  auto preview = create("PCPreview", "");
  Outcome outcome = setup(*preview, "frmPCPreview", [&](HWND form) {
    EXPECT_EQ(user_.caption(form), L"PayChex Preview");
    EXPECT_EQ(user_.focused(form), "txtClientNumber");
    screenshot(form, "frmPCPreview.png");
    user_.press_key(form, VK_TAB);
    for (int i = 0; i < 200 && user_.focused(form) == "txtClientNumber"; ++i) Sleep(10);
    EXPECT_EQ(user_.focused(form), "txtPayCode(0)");
    user_.click(form, "cmdButton(0)");
  });
  EXPECT_TRUE(outcome.saved);
  EXPECT_EQ(outcome.settings, "0,A,B,C,0,D,E,F,G,0,0,0,0");

  outcome = setup(*preview, "frmPCPreview", [&](HWND form) {
    user_.type(form, "txtPayCode(0)", L"x");
    user_.type(form, "txtClientNumber", L"x");
    EXPECT_EQ(user_.text(form, "txtPayCode(0)"), L"AX");
    EXPECT_EQ(user_.text(form, "txtClientNumber"), L"0");
    // Two characters at most.
    user_.type(form, "txtVACPayCode", L"yz");
    EXPECT_EQ(user_.text(form, "txtVACPayCode"), L"DY");
    user_.click(form, "chkSICDeduct");
    user_.click(form, "cmdButton(0)");
  });
  EXPECT_TRUE(outcome.saved);
  EXPECT_EQ(outcome.settings, "0,AX,B,C,0,DY,E,F,G,0,0,1,0");
}

// --- frmPeachtree ---------------------------------------------------------------

TEST_F(Win32Forms, PeachtreeDefaultsAndTheTitlesCheckBox) {
  auto peachtree = create("Peachtree", "");
  const Outcome outcome = setup(*peachtree, "frmPeachtree", [&](HWND form) {
    EXPECT_EQ(user_.caption(form), L"Peachtree");
    EXPECT_EQ(user_.text(form, "lblPayLevel(6)"), L"Other:");
    screenshot(form, "frmPeachtree.png");
    user_.click(form, "chkOutputTitles");
    EXPECT_EQ(user_.check(form, "chkOutputTitles"), BST_CHECKED);
    user_.type(form, "txtPayItemCode(6)", L"-x");
    user_.click(form, "cmdButton(0)");
  });
  EXPECT_TRUE(outcome.saved);
  EXPECT_EQ(outcome.settings,
            "0,0,0,0,0,0,0,ADMN-01000,ADMN-01000,ADMN-01000,ADMN-02000,ADMN-02000,ADMN-02000,"
            "ADMN-02000-x,1,1");
}

// --- frmPrimePay ----------------------------------------------------------------

TEST_F(Win32Forms, PrimePayBatchBoxChecksEveryChange) {
  auto primepay = create("PrimePay", "");
  Outcome outcome = setup(*primepay, "frmPrimePay", [&](HWND form) {
    EXPECT_EQ(user_.caption(form), L"PrimePay");
    screenshot(form, "frmPrimePay.png");
    user_.click(form, "cmdButton(0)");
  });
  EXPECT_TRUE(outcome.saved);
  EXPECT_EQ(outcome.settings, "0,02,20,23,24,25,28");

  bool raised = false;
  try {
    setup(*primepay, "frmPrimePay", [&](HWND form) {
      // Deleting the last digit.
      user_.clear(form, "txtBatchSequence");
      EXPECT_EQ(user_.messages(), std::vector<std::string>{
                                      "Batch Sequence must be a numberic value between 0 and 127"});
      EXPECT_EQ(user_.text(form, "txtBatchSequence"), L"");
      user_.type(form, "txtBatchSequence", L"12a8");
      EXPECT_EQ(user_.messages().back(), "Batch Sequence Field must be between 0 and 127");
      EXPECT_EQ(user_.text(form, "txtBatchSequence"), L"128");
      user_.click(form, "cmdButton(0)");
    });
  } catch (const Error& error) {
    raised = true;
    EXPECT_EQ(error.number(), 5001);
    EXPECT_EQ(error.description(), "Batch Sequence Number invalid");
  }
  EXPECT_TRUE(raised);
  EXPECT_EQ(primepay->SetupData(), "128,02,20,23,24,25,28");
}

// --- frmQB2000 ------------------------------------------------------------------

TEST_F(Win32Forms, QB2000WithSevenFieldsOpensWithDefaultsAndClosesWithEight) {
  std::string settings = "a,b,c,d,e,f,g";
  bool saved = true;
  with_form(
      user_, "frmQB2000",
      [&](HWND form) {
        EXPECT_EQ(user_.caption(form), L"QuickBooks 2000 Export");
        EXPECT_EQ(user_.text(form, "txtPayCode(0)"), L"C:/Program Files/Intuit/");
        EXPECT_EQ(user_.text(form, "txtPayCode(3)"), L"Premuim Overtime Hourly Rate");
        EXPECT_EQ(user_.text(form, "cmdButton(3)"), L"Select...");
        screenshot(form, "frmQB2000.png");
        // The Open dialog, cancelled, leaves the box as it was.
        user_.click(form, "cmdButton(3)");
        EXPECT_EQ(user_.text(form, "txtPayCode(0)"), L"C:/Program Files/Intuit/");
        user_.click(form, "cmdButton(2)");
        user_.click(form, "cmdButton(1)");
      },
      [&] {
        saved = formats::frmQB2000().OpenForm(settings, context(), "QuickBooks 2000 Export");
      });
  EXPECT_FALSE(saved);
  EXPECT_EQ(settings,
            "C:/Program Files/Intuit/,Regular Hourly Rate,Overtime Hourly Rate,"
            "Premuim Overtime Hourly Rate,Vacation Hourly Rate,Holiday Hourly Rate,"
            "Sick Hourly Rate,Other Hourly Rate");
  ASSERT_EQ(user_.help_requests().size(), 1u);
  EXPECT_EQ(user_.help_requests()[0].data, 1089);
}

// --- frmProgBar -----------------------------------------------------------------

TEST_F(Win32Forms, ProgressWindowShowsTheBarAndPercentage) {
  ProgressWindow progress(ui_);
  progress.SetInterval(4);
  progress.UpdateMessage("Connecting to QuickBooks");
  const HWND window = user_.wait_for_form("frmProgBar", std::chrono::seconds(5));
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(user_.caption(window), L"Brantell Quickbooks Interface");
  EXPECT_EQ(user_.text(window, "lblMessage"), L"Connecting to QuickBooks");
  EXPECT_FALSE(user_.visible(window, "lblPercentComplete"));

  progress.UpdateProgress();
  EXPECT_TRUE(user_.visible(window, "lblPercentComplete"));
  EXPECT_EQ(user_.text(window, "lblPercentComplete"), L"25%");
  progress.UpdateProgress();
  progress.UpdateMessage("Exporting time");
  EXPECT_EQ(user_.text(window, "lblPercentComplete"), L"50%");
  EXPECT_EQ(user_.text(window, "lblMessage"), L"Exporting time");
  screenshot(window, "frmProgBar.png");
  progress.UpdateProgress();
  progress.UpdateProgress();
  // 4 x 1234 = 4936 twips: one past the outline, shown as 100%.
  EXPECT_EQ(progress.bar_width(), 4936);
  EXPECT_EQ(user_.text(window, "lblPercentComplete"), L"100%");

  progress.Close();
  EXPECT_FALSE(IsWindow(window));
}

}  // namespace
}  // namespace zorvat::com::testing
