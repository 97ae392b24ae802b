// frmProgBar: the bar's interval, its width and percentage, the message line.
#include "zorvat/progress.h"

#include <gtest/gtest.h>

#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat {
namespace {

class ProgressTest : public testing::Test {
 protected:
  scripted::ScriptedUi ui;
  ProgressWindow window{ui};
};

TEST_F(ProgressTest, LoadsWithAnEmptyHiddenBar) {
  EXPECT_EQ(window.name(), "frmProgBar");
  EXPECT_EQ(window.caption, "Brantell Quickbooks Interface");
  EXPECT_EQ(window.current(), 0);
  EXPECT_EQ(window.bar_width(), 0);
  EXPECT_FALSE(window.control("shpBar").visible);
  EXPECT_FALSE(window.control("lblPercentComplete").visible);
  const Control& outline = window.control("shpOutline");
  EXPECT_EQ(outline.layout.left, 120);
  EXPECT_EQ(outline.layout.top, 240);
  EXPECT_EQ(outline.layout.width, 4935);
  EXPECT_EQ(outline.layout.height, 495);
  const Control& message = window.control("lblMessage");
  EXPECT_EQ(message.layout.left, 360);
  EXPECT_EQ(message.layout.top, 840);
  EXPECT_EQ(message.layout.width, 4455);
  EXPECT_EQ(message.font, "Arial Narrow");
  EXPECT_EQ(window.control("lblPercentComplete").font, "Arial Narrow");
}

TEST_F(ProgressTest, FourStepsOf1234EndAt4936AndAHundredPercent) {
  window.SetInterval(4);
  EXPECT_EQ(window.interval(), 1234);
  window.UpdateProgress();
  EXPECT_EQ(window.bar_width(), 1234);
  EXPECT_EQ(window.percent_text(), "25%");
  EXPECT_TRUE(window.control("shpBar").visible);
  EXPECT_TRUE(window.control("lblPercentComplete").visible);
  for (int i = 0; i < 3; ++i) window.UpdateProgress();
  EXPECT_EQ(window.current(), 4936);
  EXPECT_EQ(window.bar_width(), 4936);
  EXPECT_EQ(window.percent_text(), "100%");
}

TEST_F(ProgressTest, IntervalRoundsHalfToEven) {
  window.SetInterval(10);  // 493.5
  EXPECT_EQ(window.interval(), 494);
  window.SetInterval(6);  // 822.5
  EXPECT_EQ(window.interval(), 822);
}

TEST_F(ProgressTest, NothingDoneShowsABarePercentSign) {
  window.SetInterval(10000);  // 0.4935 rounds to 0
  window.UpdateProgress();
  EXPECT_EQ(window.percent_text(), "%");
}

TEST_F(ProgressTest, ZeroStepsIsADivisionByZero) {
  try {
    window.SetInterval(0);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kDivisionByZero);
  }
}

TEST_F(ProgressTest, MessageReplacesTheLineAndShowsTheWindowModeless) {
  window.UpdateMessage("Opening QuickBooks");
  window.UpdateMessage("Sending time");
  EXPECT_EQ(window.message(), "Sending time");
  EXPECT_EQ(window.control("lblMessage").caption, "Sending time");
  EXPECT_EQ(ui.forms_shown, (std::vector<std::string>{"frmProgBar"}));
  window.Close();
  EXPECT_EQ(ui.modeless_hidden, 1);
}

}  // namespace
}  // namespace zorvat
