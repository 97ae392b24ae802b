// frmGeneric and Generic.Setup: controls and design defaults, the exact-count fill,
// write-back on Save and Cancel, help. Expected strings are written out by hand.
#include "generic/generic_form.h"

#include <gtest/gtest.h>

#include "generic/generic.h"
#include "scripted_host.h"
#include "zorvat/error.h"
#include "zorvat/settings.h"

namespace zorvat::formats {
namespace {

constexpr const char* kDefaults = "0,0,0,0,0,False,False,False,False,False,,0";

class GenericFormTest : public testing::Test {
 protected:
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }

  scripted::Host host;
  Generic generic{host.context()};
};

TEST_F(GenericFormTest, ControlsCarryTheirCaptions) {
  GenericForm& form = frmGeneric();
  EXPECT_EQ(form.name(), "frmGeneric");
  EXPECT_EQ(form.caption, "Generic V2.0");
  EXPECT_EQ(form.control("fraOutputOptions").caption, "Generic Output Options");
  EXPECT_EQ(form.control("chkOutputOptions", 0).caption, "Insert Quotes Around Non-Numeric");
  EXPECT_EQ(form.control("chkOutputOptions", 1).caption, "Output Field Titles");
  EXPECT_EQ(form.control("chkOutputOptions", 2).caption, "Remove Blanks");
  EXPECT_EQ(form.control("chkOutputOptions", 3).caption, "Include Employee Information");
  EXPECT_EQ(form.control("chkOutputOptions", 4).caption, "Include Full Name");
  EXPECT_EQ(form.control("lblLineTerminator").caption, "Line Terminator");
  EXPECT_EQ(form.control("cboLineTerminator").items,
            (std::vector<std::string>{"CRLF", "CR", "LF", "LFCR"}));
  EXPECT_FALSE(form.control("cboLineTerminator").editable);
  EXPECT_EQ(form.control("fraFieldSeperators").caption, "Generic Field Seperators");
  EXPECT_EQ(form.control("optFieldSeperators", 0).caption, "Tab (0x09)");
  EXPECT_EQ(form.control("optFieldSeperators", 1).caption, "Comma (,)");
  EXPECT_EQ(form.control("optFieldSeperators", 2).caption, "Slash (/)");
  EXPECT_EQ(form.control("optFieldSeperators", 3).caption, "Semi-Colon (;)");
  EXPECT_EQ(form.control("optFieldSeperators", 4).caption, "Custom");
  EXPECT_EQ(form.control("optFieldSeperators", 4).container, "fraFieldSeperators");
  EXPECT_EQ(form.control("chkOutputOptions", 4).container, "fraOutputOptions");
  EXPECT_EQ(form.control("txtCustomSeperator").text, "");
}

TEST_F(GenericFormTest, FreshObjectOpensWithTheDesignDefaultsAndCrLf) {
  host.ui.answer_form([](FormModel& form) {
    EXPECT_EQ(form.control("cboLineTerminator").list_index, 0);
    EXPECT_EQ(form.control("cboLineTerminator").text, "CRLF");
    for (int i = 0; i < 5; ++i) EXPECT_EQ(form.control("chkOutputOptions", i).value, 0);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(form.control("optFieldSeperators", i).value, 0);
    form.press(form.control("cmdButton", 0));
  });
  EXPECT_TRUE(generic.Setup());
  EXPECT_EQ(generic.SetupData(), kDefaults);
  EXPECT_EQ(SettingsFields(generic.SetupData()).size(), 12u);
  EXPECT_EQ(host.ui.forms_shown, (std::vector<std::string>{"frmGeneric"}));
}

TEST_F(GenericFormTest, TwelveFieldsFillTheControls) {
  generic.SetupData("1,0,1,0,1,False,False,True,False,False,|,3");
  host.ui.answer_form([](FormModel& form) {
    EXPECT_EQ(form.control("chkOutputOptions", 0).value, 1);
    EXPECT_EQ(form.control("chkOutputOptions", 1).value, 0);
    EXPECT_EQ(form.control("chkOutputOptions", 4).value, 1);
    EXPECT_EQ(form.control("optFieldSeperators", 2).value, 1);
    EXPECT_EQ(form.control("txtCustomSeperator").text, "|");
    EXPECT_EQ(form.control("cboLineTerminator").text, "LFCR");
    form.press(form.control("cmdButton", 0));
  });
  EXPECT_TRUE(generic.Setup());
  EXPECT_EQ(generic.SetupData(), "1,0,1,0,1,False,False,True,False,False,|,3");
}

TEST_F(GenericFormTest, OtherFieldCountsKeepTheDesignDefaults) {
  generic.SetupData("1,1,1,1,1,True,False,False,False,False,|");  // eleven fields
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(generic.Setup());
  EXPECT_EQ(generic.SetupData(), kDefaults);
}

TEST_F(GenericFormTest, SaveWritesTheControlsBackInFieldOrder) {
  host.ui.answer_form({"check chkOutputOptions(1) 1", "check chkOutputOptions(3) 1",
                       "choose optFieldSeperators(3)", "select cboLineTerminator LF",
                       "click cmdButton(0)"});
  EXPECT_TRUE(generic.Setup());
  EXPECT_EQ(generic.SetupData(), "0,1,0,1,0,False,False,False,True,False,,2");
}

TEST_F(GenericFormTest, OneSeparatorIsSelectedOnceTheUserPicksOne) {
  host.ui.answer_form({"choose optFieldSeperators(0)", "choose optFieldSeperators(4)",
                       "type txtCustomSeperator ~", "click cmdButton(0)"});
  EXPECT_TRUE(generic.Setup());
  EXPECT_EQ(generic.SetupData(), "0,0,0,0,0,False,False,False,False,True,~,0");
}

TEST_F(GenericFormTest, CancelReturnsFalseYetWritesTheEditedValuesBack) {
  generic.SetupData("0,0,0,0,0,False,True,False,False,False,,0");
  host.ui.answer_form(
      {"check chkOutputOptions(0) 1", "choose optFieldSeperators(2)", "click cmdButton(1)"});
  EXPECT_FALSE(generic.Setup());
  EXPECT_EQ(generic.SetupData(), "1,0,0,0,0,False,False,True,False,False,,0");
}

TEST_F(GenericFormTest, HelpShowsTopic1093AndReturnsToTheForm) {
  host.ui.answer_form({"click cmdButton(2)", "check chkOutputOptions(2) 1", "click cmdButton(0)"});
  EXPECT_TRUE(generic.Setup());
  ASSERT_EQ(host.ui.help_calls.size(), 1u);
  EXPECT_EQ(host.ui.help_calls[0].help_file, "HORALISHELP.HLP");
  EXPECT_EQ(host.ui.help_calls[0].window, ">Second");
  EXPECT_EQ(host.ui.help_calls[0].context, 1093u);
  EXPECT_EQ(frmGeneric().help_context, 1093u);
  EXPECT_EQ(generic.SetupData(), "0,0,1,0,0,False,False,False,False,False,,0");
}

TEST_F(GenericFormTest, CustomSeparatorWithACommaCorruptsTheNextSplit) {
  host.ui.answer_form(
      {"choose optFieldSeperators(4)", "type txtCustomSeperator ,", "click cmdButton(0)"});
  EXPECT_TRUE(generic.Setup());
  EXPECT_EQ(generic.SetupData(), "0,0,0,0,0,False,False,False,False,True,,,0");
  const SettingsFields fields(generic.SetupData());
  EXPECT_EQ(fields.size(), 13u);
  EXPECT_EQ(fields.at(Generic::kCustomSeparatorText), "");
  EXPECT_EQ(fields.at(Generic::kLineTerminator), "");
  // The next opening does not take the thirteen fields: the form keeps its state.
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(generic.Setup());
  EXPECT_EQ(generic.SetupData(), "0,0,0,0,0,False,False,False,False,True,,,0");
}

TEST_F(GenericFormTest, FormKeepsItsStateBetweenOpenings) {
  host.ui.answer_form({"check chkOutputOptions(4) 1", "click cmdButton(1)"});
  generic.Setup();
  Generic other{host.context()};
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(other.Setup());
  EXPECT_EQ(other.SetupData(), "0,0,0,0,1,False,False,False,False,False,,0");
}

TEST_F(GenericFormTest, BadFieldRaisesFromSetupThroughOpenForm) {
  generic.SetupData("0,0,0,0,0,False,maybe,False,False,False,,0");
  host.ui.answer_form({"click cmdButton(0)"});
  try {
    generic.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kTypeMismatch);
    EXPECT_EQ(error.source(), "zorvat.Generic.Setup");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.frmGeneric.OpenForm",
                                                       "zorvat.Generic.Setup"}));
  }
  EXPECT_EQ(generic.SetupData(), "0,0,0,0,0,False,maybe,False,False,False,,0");
}

TEST_F(GenericFormTest, LineTerminatorOutsideTheListIsAnInvalidPropertyValue) {
  generic.SetupData("0,0,0,0,0,False,True,False,False,False,,4");
  try {
    generic.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), kInvalidPropertyValue);
  }
}

}  // namespace
}  // namespace zorvat::formats
