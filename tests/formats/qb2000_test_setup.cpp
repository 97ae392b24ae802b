// QuickBooks export, its settings: the payroll item length check, Setup through the
// setup form, and the employee name turned first name first.
#include <gtest/gtest.h>

#include "qb2000/qb2000_form.h"
#include "qb2000_test_support.h"

namespace zorvat::formats::qb2000_test {
namespace {

// Eight fields with `item` at `position` (1 to 7) and short items elsewhere.
std::string settings_with(std::size_t position, const std::string& item) {
  std::vector<std::string> fields = {
      "C:\\Company\\Sample.QBW", "R", "O1", "O2", "V", "H", "S", "O"};
  fields[position] = item;
  std::string joined;
  for (const std::string& field : fields) joined += (joined.empty() ? "" : ",") + field;
  return joined;
}

class QB2000SetupTest : public testing::Test {
 protected:
  void SetUp() override { unload_forms(); }
  void TearDown() override { unload_forms(); }

  Error validate_error(const std::string& setup) {
    return raised_by([&] { exporter.ValidateSetupData(setup); });
  }

  scripted::Host host;
  QB2000 exporter{host.context()};
};

TEST_F(QB2000SetupTest, A32CharacterRegularItemPasses) {
  EXPECT_NO_THROW(exporter.ValidateSetupData(settings_with(1, std::string(32, 'R'))));
}

TEST_F(QB2000SetupTest, A32CharacterOvertimeItemRaises2) {
  const Error error = validate_error(settings_with(2, std::string(32, 'O')));
  EXPECT_EQ(error.number(), 2);
  EXPECT_EQ(error.description(), "Paycode field must be 31 chars or less");
  EXPECT_EQ(error.source(), "zorvat.QB2000.ValidateSetupData");
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat.QB2000.Validate",
                                                     "zorvat.QB2000.ValidateSetupData"}));
}

TEST_F(QB2000SetupTest, EveryLaterItemRaisesItsOwnPosition) {
  for (std::size_t position = 2; position <= 7; ++position) {
    const Error error = validate_error(settings_with(position, std::string(40, 'X')));
    EXPECT_EQ(error.number(), static_cast<long>(position));
    EXPECT_EQ(error.description(), "Paycode field must be 31 chars or less");
  }
}

TEST_F(QB2000SetupTest, ThirtyOneCharactersPassEverywhere) {
  for (std::size_t position = 1; position <= 7; ++position)
    EXPECT_NO_THROW(exporter.ValidateSetupData(settings_with(position, std::string(31, 'X'))));
}

TEST_F(QB2000SetupTest, TheCompanyFileIsNotChecked) {
  EXPECT_NO_THROW(exporter.ValidateSetupData(std::string(300, 'C') + ",R,O1,O2,V,H,S,O"));
}

TEST_F(QB2000SetupTest, OnlyTheFirstLongItemIsReported) {
  std::string setup = settings_with(5, std::string(32, 'H'));
  setup.replace(setup.find(",O2,"), 4, "," + std::string(33, '2') + ",");
  EXPECT_EQ(validate_error(setup).number(), 3);
}

TEST_F(QB2000SetupTest, ShortSettingsCheckOnlyTheFieldsTheyHave) {
  EXPECT_NO_THROW(exporter.ValidateSetupData(""));
  EXPECT_NO_THROW(exporter.ValidateSetupData("C:\\x.QBW,R,O1"));
  EXPECT_EQ(validate_error("C:\\x.QBW,R,O1," + std::string(32, 'x')).number(), 3);
}

TEST_F(QB2000SetupTest, SetupShowsTheFormWithTheTitleAndReturnsTheSavedFlag) {
  exporter.Title = "QuickBooks Pro";
  exporter.SetupData("C:\\Company\\Sample.QBW,R,O1,O2,V,H,S,O");
  host.ui.answer_form({"click cmdButton(0)"});
  EXPECT_TRUE(exporter.Setup());
  EXPECT_EQ(frmQB2000().caption, "QuickBooks Pro");
  EXPECT_EQ(frmQB2000().help_context, 1089u);
  EXPECT_EQ(exporter.SetupData(), "C:\\Company\\Sample.QBW,R,O1,O2,V,H,S,O");
}

TEST_F(QB2000SetupTest, SevenOrNineFieldsAreReplacedByEightOnClose) {
  for (const char* settings : {"a,b,c,d,e,f,g", "a,b,c,d,e,f,g,h,i"}) {
    unload_forms();
    exporter.SetupData(settings);
    host.ui.answer_form({"click cmdButton(0)"});
    EXPECT_TRUE(exporter.Setup());
    EXPECT_EQ(exporter.SetupData(),
              "C:/Program Files/Intuit/,Regular Hourly Rate,Overtime Hourly Rate,"
              "Premuim Overtime Hourly Rate,Vacation Hourly Rate,Holiday Hourly Rate,"
              "Sick Hourly Rate,Other Hourly Rate")
        << settings;
  }
}

TEST_F(QB2000SetupTest, SavedSettingsAreCheckedAtOnce) {
  // Seeded, not typed: the box's length limit only holds back typing.
  exporter.SetupData(settings_with(4, std::string(32, 'V')));
  host.ui.answer_form({"click cmdButton(0)"});
  const Error error = raised_by([&] { exporter.Setup(); });
  EXPECT_EQ(error.number(), 4);
  EXPECT_EQ(error.source(), "zorvat.QB2000.Setup");
}

TEST_F(QB2000SetupTest, CancelledSettingsAreNotCheckedButKept) {
  exporter.SetupData(settings_with(4, std::string(32, 'V')));
  host.ui.answer_form({"click cmdButton(1)"});
  EXPECT_FALSE(exporter.Setup());
  EXPECT_EQ(exporter.SetupData(), settings_with(4, std::string(32, 'V')));
}

TEST_F(QB2000SetupTest, SelectPutsTheChosenCompanyFileIntoTheSettings) {
  exporter.SetupData("C:\\Old.QBW,R,O1,O2,V,H,S,O");
  host.ui.answer_open("D:\\Books\\New.QBW");
  host.ui.answer_form({"click cmdButton(3)", "click cmdButton(0)"});
  EXPECT_TRUE(exporter.Setup());
  EXPECT_EQ(exporter.SetupData(), "D:\\Books\\New.QBW,R,O1,O2,V,H,S,O");
}

TEST_F(QB2000SetupTest, WithoutFormsSetupRaisesWithItsSource) {
  const Error error = raised_by([&] { exporter.Setup(); });
  EXPECT_EQ(error.source(), "zorvat.QB2000.Setup");
}

TEST_F(QB2000SetupTest, FormatNamePutsTheFirstNameFirst) {
  EXPECT_EQ(exporter.FormatName("Doe, Jane"), "Jane Doe");
  EXPECT_EQ(exporter.FormatName("Doe, Jane, Q"), "Jane  Q Doe");
  EXPECT_EQ(exporter.FormatName("Jane Doe"), "Jane Doe");
  EXPECT_EQ(exporter.FormatName("  Jane Doe  "), "  Jane Doe  ");
  // Inner spaces stay as they were.
  EXPECT_EQ(exporter.FormatName("Smith,  John"), "John Smith");
  EXPECT_EQ(exporter.FormatName("Smith,John  Paul"), "John  Paul Smith");
  EXPECT_EQ(exporter.FormatName("Doe,"), "Doe");
}

TEST_F(QB2000SetupTest, FormatNameOfNoneOrTooManyPartsIsEmpty) {
  EXPECT_EQ(exporter.FormatName(""), "");
  EXPECT_EQ(exporter.FormatName("a,b,c,d"), "");
}

}  // namespace
}  // namespace zorvat::formats::qb2000_test
