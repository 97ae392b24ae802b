// The form model shared by every setup form: OpenForm's fill and write-back, the
// buttons, focus and leave checks, key handling, and the script of user actions.
#include "zorvat/forms.h"

#include <gtest/gtest.h>

#include "scripted_host.h"
#include "zorvat/error.h"
#include "zorvat/form_script.h"

namespace zorvat {
namespace {

// A small form of every kind of control, three settings fields and a leave check.
class SampleForm final : public FormModel {
 public:
  SampleForm() : FormModel("frmSample", "Sample", "Sample", 4000, 3000, 4) {
    Control& code = text_box("txtCode", -1, "AB", {120, 120, 1200, 285}, 3);
    code.key_press = upper_case_key;
    bind(code, 0, Binding::Text);
    Control& number = text_box("txtNumber", -1, "0", {120, 480, 1200, 285});
    number.key_press = digits_only_key;
    number.change = [this] { changes.push_back(control("txtNumber").text); };
    number.validate = [this](bool& cancel) { cancel = control("txtNumber").text == "13"; };
    bind(number, 1, Binding::Text);
    bind(check_box("chkFlag", -1, "Flag", {120, 840, 1200, 255}), 2, Binding::CheckValue);
    frame("fraChoice", "Choice", {1500, 120, 2000, 1200});
    bind(option_button("optChoice", 0, "One", {1620, 360, 1200, 255}, "fraChoice"), 3,
         Binding::OptionValue);
    option_button("optChoice", 1, "Two", {1620, 720, 1200, 255}, "fraChoice");
    combo_box("cboList", {"A", "B"}, false, {120, 1200, 1200, 315});
    standard_buttons(120, 2400);
  }
  std::vector<std::string> changes;

 protected:
  void prepare(std::string_view) override { help_context = 1234; }
};

class FormsTest : public testing::Test {
 protected:
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }
  SampleForm& form() { return shared_form<SampleForm>(); }
  bool open(std::string& settings) { return form().OpenForm(settings, context); }

  scripted::Host host;
  ExportContext context = host.context();
};

TEST_F(FormsTest, DesignDefaultsStayWhenTheFieldCountIsNotExact) {
  std::string settings = "XY,5,1";
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(open(settings));
  EXPECT_EQ(settings, "AB,0,0,False");
}

TEST_F(FormsTest, ExactFieldCountFillsEveryBoundControl) {
  std::string settings = "XY,5,1,True";
  host.ui.answer_form([](FormModel& shown) {
    EXPECT_EQ(shown.control("txtCode").text, "XY");
    EXPECT_EQ(shown.control("txtNumber").text, "5");
    EXPECT_EQ(shown.control("chkFlag").value, 1);
    EXPECT_EQ(shown.control("optChoice", 0).value, 1);
    shown.press(shown.control("cmdButton", 0));
  });
  EXPECT_TRUE(open(settings));
  EXPECT_EQ(settings, "XY,5,1,True");
}

TEST_F(FormsTest, CancelWritesTheEditedValuesBackAndReturnsFalse) {
  std::string settings;
  host.ui.answer_form({"type txtCode c", "check chkFlag 1", "click cmdButton(1)"});
  EXPECT_FALSE(open(settings));
  EXPECT_EQ(settings, "ABC,0,1,False");
}

TEST_F(FormsTest, ClosingTheWindowIsCancel) {
  std::string settings;
  host.ui.answer_form({"type txtNumber 7"});
  EXPECT_FALSE(open(settings));
  EXPECT_EQ(settings, "AB,07,0,False");
}

TEST_F(FormsTest, SavedFlagIsFalseAgainAtTheNextOpening) {
  std::string settings;
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(open(settings));
  host.ui.answer_form({"click cmdButton(1)"});
  EXPECT_FALSE(open(settings));
}

TEST_F(FormsTest, HelpOpensTheTopicAndTheFormStaysOpen) {
  std::string settings;
  host.ui.answer_form([](FormModel& shown) {
    shown.press(shown.control("cmdButton", 2));
    EXPECT_TRUE(shown.visible());
    shown.press(shown.control("cmdButton", 0));
  });
  EXPECT_TRUE(open(settings));
  ASSERT_EQ(host.ui.help_calls.size(), 1u);
  EXPECT_EQ(host.ui.help_calls[0].help_file, "HORALISHELP.HLP");
  EXPECT_EQ(host.ui.help_calls[0].window, ">Second");
  EXPECT_EQ(host.ui.help_calls[0].context, 1234u);
}

TEST_F(FormsTest, SharedInstanceKeepsItsStateUntilUnloaded) {
  std::string settings;
  host.ui.answer_form({"type txtNumber 4", "click cmdButton(1)"});
  open(settings);
  std::string other = "short";
  host.ui.answer_form({"click cmdButton(0)"});
  open(other);
  EXPECT_EQ(other, "AB,04,0,False");
  unload_forms();
  other = "short";
  host.ui.answer_form({"click cmdButton(0)"});
  open(other);
  EXPECT_EQ(other, "AB,0,0,False");
}

TEST_F(FormsTest, UpperCaseFilterReplacesTheKey) {
  EXPECT_EQ(form().filter_key(form().control("txtCode"), 'x'), 'X');
  EXPECT_EQ(form().filter_key(form().control("txtCode"), '1'), '1');
}

TEST_F(FormsTest, DigitsFilterDropsAllButDigitsAndBackspace) {
  Control& number = form().control("txtNumber");
  for (const char key : {'a', 'e', 'E', 'D', '-', '.', ' ', '+', '&', ',', '$'})
    EXPECT_EQ(form().filter_key(number, key), 0) << key;
  EXPECT_EQ(form().filter_key(number, '7'), '7');
  EXPECT_EQ(form().filter_key(number, kBackspace), kBackspace);
}

TEST_F(FormsTest, TypedKeysStopAtTheLengthLimit) {
  Control& code = form().control("txtCode");
  form().type_key(code, 'c');
  form().type_key(code, 'd');
  EXPECT_EQ(code.text, "ABC");
  form().type_key(code, kBackspace);
  EXPECT_EQ(code.text, "AB");
  form().type_key(code, 'z', true);
  EXPECT_EQ(code.text, "Z");
}

TEST_F(FormsTest, TheLengthLimitCountsLettersAndBackspaceTakesAWholeOne) {
  Control& code = form().control("txtCode");  // three letters at most, "AB" to start
  form().type_key(code, 0x00D1);              // Ñ
  EXPECT_EQ(code.text, "AB\xC3\x91");
  EXPECT_FALSE(form().type_key(code, 'X'));
  form().type_key(code, kBackspace);
  EXPECT_EQ(code.text, "AB");
  form().type_key(code, 0x738B, true);  // 王, over the whole text
  EXPECT_EQ(code.text, "\xE7\x8E\x8B");
}

TEST_F(FormsTest, AScriptTypesOneKeyALetter) {
  std::string settings;
  // "José" in a box of digits: only what the filter lets through; in the upper-case
  // code box of three letters: "ñé" after "AB" is cut at the third letter.
  host.ui.answer_form({"type txtCode \xC3\xB1\xC3\xA9", "click cmdButton(0)"});
  open(settings);
  EXPECT_EQ(form().control("txtCode").text, "AB\xC3\xB1");
}

TEST_F(FormsTest, ChangeRunsOnlyWhenTheTextChanges) {
  Control& number = form().control("txtNumber");
  form().type_key(number, 'x');
  form().set_text(number, "0");
  form().type_key(number, '1');
  form().type_key(number, kBackspace);
  EXPECT_EQ(form().changes, (std::vector<std::string>{"01", "0"}));
}

TEST_F(FormsTest, OptionButtonsOfAFrameAreOneGroup) {
  form().set_value(form().control("optChoice", 0), 1);
  form().set_value(form().control("optChoice", 1), 1);
  EXPECT_EQ(form().control("optChoice", 0).value, 0);
  EXPECT_EQ(form().control("optChoice", 1).value, 1);
}

TEST_F(FormsTest, LeaveCheckThatCancelsKeepsTheFocus) {
  std::string settings;
  host.ui.answer_form({"clear txtNumber", "type txtNumber 13", "leave txtNumber", "type txtCode Q",
                       "click cmdButton(0)", "clear txtNumber", "click cmdButton(0)"});
  EXPECT_TRUE(open(settings));
  EXPECT_EQ(host.ui.script_problems,
            (std::vector<std::string>{"line 3: the focus stays in txtNumber",
                                      "line 4: the focus stays in txtNumber",
                                      "line 5: the focus stays in txtNumber"}));
  EXPECT_EQ(settings, "AB,,0,False");
}

TEST_F(FormsTest, ControlThatCausesNoValidationTakesTheFocusUnchecked) {
  form().set_focus(form().control("txtNumber"));
  form().set_text(form().control("txtNumber"), "13");
  EXPECT_FALSE(form().set_focus(form().control("txtCode")));
  form().control("chkFlag").causes_validation = false;
  EXPECT_TRUE(form().set_focus(form().control("chkFlag")));
  EXPECT_EQ(form().focused(), &form().control("chkFlag"));
}

TEST_F(FormsTest, BadFieldForACheckBoxRaisesFromOpenForm) {
  std::string settings = "AB,1,x,True";
  host.ui.answer_form({"click cmdButton(0)"});
  try {
    open(settings);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kTypeMismatch);
    EXPECT_EQ(error.source(), "zorvat.frmSample.OpenForm");
  }
  EXPECT_EQ(settings, "AB,1,x,True");
}

TEST_F(FormsTest, CheckBoxValueOutOfRangeIsAnInvalidPropertyValue) {
  std::string settings = "AB,1,3,True";
  try {
    open(settings);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), kInvalidPropertyValue);
    EXPECT_EQ(error.description(), "Invalid property value");
  }
}

TEST_F(FormsTest, HostWithoutFormsRaisesNotAvailable) {
  std::string settings = "keep";
  try {
    open(settings);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kInvalidProcedureCall);
    EXPECT_EQ(error.description(), "The setup form of zorvat.Sample is not available on this host");
    EXPECT_EQ(error.source(), "zorvat.frmSample.OpenForm");
  }
  EXPECT_EQ(settings, "keep");
}

TEST_F(FormsTest, TabOrderSkipsLabelsFramesAndHiddenControls) {
  form().control("chkFlag").visible = false;
  std::vector<std::string> names;
  for (const Control* control : form().tab_order()) names.push_back(control->display_name());
  EXPECT_EQ(names,
            (std::vector<std::string>{"txtCode", "txtNumber", "optChoice(0)", "optChoice(1)",
                                      "cboList", "cmdButton(0)", "cmdButton(1)", "cmdButton(2)"}));
  EXPECT_TRUE(form().control("cmdButton", 0).default_button);
  EXPECT_TRUE(form().control("cmdButton", 1).cancel_button);
  EXPECT_EQ(form().control("cmdButton", 0).caption, "&Save");
  EXPECT_EQ(form().control("cmdButton", 1).caption, "Cancel");
  EXPECT_EQ(form().control("cmdButton", 2).caption, "&Help");
}

// --- The script of user actions ------------------------------------------------

class FormScriptTest : public FormsTest {
 protected:
  ScriptOutcome run(std::string_view line) { return run_form_action(form(), line); }
};

TEST_F(FormScriptTest, BlankLinesAndCommentsDoNothing) {
  EXPECT_EQ(run("").kind, ScriptOutcome::Kind::Done);
  EXPECT_EQ(run("   # a comment").kind, ScriptOutcome::Kind::Done);
}

TEST_F(FormScriptTest, TypeKeepsBlanksInsideTheText) {
  form().set_text(form().control("txtCode"), "");
  EXPECT_EQ(run("type txtCode a b").kind, ScriptOutcome::Kind::Done);
  EXPECT_EQ(form().control("txtCode").text, "A B");
}

TEST_F(FormScriptTest, SelectPicksAListItemByItsText) {
  EXPECT_EQ(run("select cboList B").kind, ScriptOutcome::Kind::Done);
  EXPECT_EQ(form().control("cboList").list_index, 1);
  EXPECT_EQ(run("select cboList C").problem, "cboList has no item \"C\"");
}

TEST_F(FormScriptTest, InvalidLinesSayWhatIsWrong) {
  EXPECT_EQ(run("press cmdButton(0)").problem, "unknown action \"press\"");
  EXPECT_EQ(run("type txtNothing x").problem, "frmSample has no control txtNothing");
  EXPECT_EQ(run("click cmdButton(7)").problem, "frmSample has no control cmdButton(7)");
  EXPECT_EQ(run("click cmdButton(x)").problem, "bad control index in \"cmdButton(x)\"");
  EXPECT_EQ(run("check chkFlag 2").problem, "check takes 0 or 1");
  EXPECT_EQ(run("type chkFlag 1").problem, "chkFlag is a CheckBox, not a text box");
  EXPECT_EQ(run("choose chkFlag").problem, "chkFlag is a CheckBox, not an option button");
  EXPECT_EQ(run("click").problem, "\"click\" needs a control name");
  form().control("txtCode").visible = false;
  EXPECT_EQ(run("type txtCode A").problem, "txtCode is not visible");
}

TEST_F(FormScriptTest, NamesMatchWithoutRegardToCase) {
  EXPECT_EQ(run("CHECK CHKFLAG 1").kind, ScriptOutcome::Kind::Invalid);  // verbs are lower case
  EXPECT_EQ(run("check CHKFLAG 1").kind, ScriptOutcome::Kind::Done);
  EXPECT_EQ(form().control("chkFlag").value, 1);
}

TEST_F(FormScriptTest, InvalidLineClosesTheFormAsCancel) {
  std::string settings;
  host.ui.answer_form({"type txtNumber 5", "bogus", "click cmdButton(0)"});
  EXPECT_FALSE(open(settings));
  EXPECT_EQ(host.ui.script_problems,
            (std::vector<std::string>{"line 2: unknown action \"bogus\""}));
  EXPECT_EQ(settings, "AB,05,0,False");
}

}  // namespace
}  // namespace zorvat
