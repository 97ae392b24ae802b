// Generic export: every expected file below is written out by hand from the layout
// (titles, separators, terminators, hour formats), not taken from a run.
#include "generic/generic.h"

#include <gtest/gtest.h>

#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

using scripted::card;
using scripted::cards;
using scripted::collection;
using scripted::object;

// Positions: quotes, titles, remove blanks, employee info, full name, tab, comma,
// slash, semicolon, custom, custom text, terminator.
constexpr const char* kCommaTitlesCrLf = "0,1,0,0,0,False,True,False,False,False,,0";

constexpr const char* kTitleLine =
    "EXPORT ID,EmployeeNumber,ShiftCode,RegularHours,FirstLevelOvertime,SecondLevelOvertime,"
    "VACATION,HOLIDAY,SICK,OTHER\r\n";

class GenericTest : public testing::Test {
 protected:
  // Runs Execute with `setup` on `cards`, answering the Save dialog with "out.tab".
  bool run(const std::string& setup, const Variant& cards) {
    generic.SetupData(setup);
    host.ui.answer_save("out.tab");
    return generic.Execute(cards);
  }
  std::string written() const { return host.files.at("out.tab"); }

  // Ann Lee, employee 315, shift 1: 40 hours regular, 1.5 hours first-level overtime.
  static Variant ann() {
    auto result = card("E100", std::int32_t{315});
    result->set("REG", std::int32_t{2400}).set("OT1", std::int32_t{90});
    return object(result);
  }

  scripted::Host host;
  Generic generic{host.context()};
};

TEST_F(GenericTest, WritesTitleLineAndOneLinePerCard) {
  ASSERT_TRUE(run(kCommaTitlesCrLf, cards({ann()})));
  EXPECT_EQ(written(),
            std::string(kTitleLine) + "E100,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00\r\n");
  EXPECT_EQ(generic.SetupData(), kCommaTitlesCrLf);
  ASSERT_EQ(host.ui.save_requests.size(), 1u);
  EXPECT_EQ(host.ui.save_requests[0].filter, "Generic ASCII (*.TAB) | *.TAB");
}

TEST_F(GenericTest, EmptyCollectionWithTitlesOffGivesAnEmptyFile) {
  ASSERT_TRUE(run("0,0,0,0,0,False,True,False,False,False,,0", cards({})));
  EXPECT_TRUE(host.files.has("out.tab"));
  EXPECT_EQ(written(), "");
}

TEST_F(GenericTest, EmptyCollectionWritesOnlyTheTitleLine) {
  ASSERT_TRUE(run(kCommaTitlesCrLf, cards({})));
  EXPECT_EQ(written(), kTitleLine);
}

TEST_F(GenericTest, NoSeparatorOptionRunsFieldsTogether) {
  ASSERT_TRUE(run("0,0,0,0,0,False,False,False,False,False,,0", cards({ann()})));
  EXPECT_EQ(written(), "E1000000003150140.001.500.000.000.000.000.00\r\n");
}

TEST_F(GenericTest, QuotingOffWithEmployeeInformationEndsWithTheNumberNotTheBadge) {
  ASSERT_TRUE(run("0,0,0,1,0,False,True,False,False,False,,0", cards({ann()})));
  EXPECT_EQ(written(), "E100,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00,Lee,Ann,315\r\n");
}

TEST_F(GenericTest, QuotingOnQuotesEveryFieldAndEndsWithTheBadge) {
  ASSERT_TRUE(run("1,1,0,1,0,False,True,False,False,False,,0", cards({ann()})));
  EXPECT_EQ(written(),
            "\"EXPORT ID\",\"EmployeeNumber\",\"ShiftCode\",\"RegularHours\","
            "\"FirstLevelOvertime\",\"SecondLevelOvertime\",\"VACATION\",\"HOLIDAY\",\"SICK\","
            "\"OTHER\",\"LastName\",\"FirstName\",\"BadgeNumber\"\r\n"
            "\"E100\",\"000000315\",\"01\",\"40.00\",\"1.50\",\"0.00\",\"0.00\",\"0.00\","
            "\"0.00\",\"0.00\",\"Lee\",\"Ann\",\"0315\"\r\n");
}

TEST_F(GenericTest, FullNameJoinsWithSingleBlanksEvenWithoutMiddleInitial) {
  ASSERT_TRUE(run("0,1,0,1,1,False,False,False,True,False,,2", cards({ann()})));
  EXPECT_EQ(written(),
            "EXPORT ID;EmployeeNumber;ShiftCode;RegularHours;FirstLevelOvertime;"
            "SecondLevelOvertime;VACATION;HOLIDAY;SICK;OTHER;FullName;BadgeNumber\n"
            "E100;000000315;01;40.00;1.50;0.00;0.00;0.00;0.00;0.00;Ann  Lee;315\n");
}

TEST_F(GenericTest, FullNameWithMiddleInitial) {
  auto bob = card("E7", std::int32_t{7});
  bob->set("FirstName", "Bob").set("MI", "J").set("LastName", "Ray");
  ASSERT_TRUE(run("0,0,0,1,1,False,False,True,False,False,,1", cards({object(bob)})));
  EXPECT_EQ(written(), "E7/000000007/01/0.00/0.00/0.00/0.00/0.00/0.00/0.00/Bob J Ray/7\r");
}

TEST_F(GenericTest, TabOptionWritesFourBlanks) {
  ASSERT_TRUE(run("0,0,0,0,0,True,False,False,False,False,,3", cards({ann()})));
  EXPECT_EQ(written(),
            "E100    000000315    01    40.00    1.50    0.00    0.00    0.00    0.00    0.00\n\r");
}

TEST_F(GenericTest, RemoveBlanksWithTabOptionMakesTheSeparatorsVanish) {
  ASSERT_TRUE(run("0,1,1,1,1,True,False,False,False,False,,0", cards({ann()})));
  EXPECT_EQ(written(),
            "EXPORTIDEmployeeNumberShiftCodeRegularHoursFirstLevelOvertimeSecondLevelOvertime"
            "VACATIONHOLIDAYSICKOTHERFullNameBadgeNumber\r\n"
            "E1000000003150140.001.500.000.000.000.000.00AnnLee315\r\n");
}

TEST_F(GenericTest, RemoveBlanksAcceptsTheStoredTrueText) {
  ASSERT_TRUE(run("0,0,True,0,0,True,False,False,False,False,,0", cards({ann()})));
  EXPECT_EQ(written(), "E1000000003150140.001.500.000.000.000.000.00\r\n");
}

TEST_F(GenericTest, CustomSeparatorIsUsedAsItStands) {
  ASSERT_TRUE(run("0,0,0,0,0,False,False,False,False,True, | ,2", cards({ann()})));
  EXPECT_EQ(written(), "E100 | 000000315 | 01 | 40.00 | 1.50 | 0.00 | 0.00 | 0.00 | 0.00 | 0.00\n");
}

TEST_F(GenericTest, FirstSelectedSeparatorWins) {
  ASSERT_TRUE(run("0,0,0,0,0,False,True,True,False,False,,2", cards({ann()})));
  EXPECT_EQ(written(), "E100,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00\n");
}

TEST_F(GenericTest, UnknownTerminatorWritesNone) {
  ASSERT_TRUE(run("0,0,0,0,0,False,True,False,False,False,,7", cards({ann(), ann()})));
  EXPECT_EQ(written(),
            "E100,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00"
            "E100,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00");
}

TEST_F(GenericTest, HourValuesAndFormats) {
  auto c = card("X", std::int32_t{1});
  c->set("REG", std::int32_t{90})
      .set("OT1", std::int32_t{0})
      .set("OT2", std::int32_t{-30})
      .set("VAC", 1.0)    // one minute as a double
      .set("HOL", "480")  // numeric text
      .set("SIC", std::int32_t{599999})
      .set("OTH", std::int32_t{45});
  ASSERT_TRUE(run("0,0,0,0,0,False,True,False,False,False,,2", cards({object(c)})));
  EXPECT_EQ(written(), "X,000000001,01,1.50,0.00,-0.50,0.02,8.00,9999.98,0.75\n");
}

TEST_F(GenericTest, EveryCardYieldsALineEvenWithNoTime) {
  auto zero = card("Z1", "0042");
  zero->set("Shift", "2");
  ASSERT_TRUE(run("0,0,0,0,0,False,True,False,False,False,,2", cards({object(zero), ann()})));
  EXPECT_EQ(written(),
            "Z1,000000042,02,0.00,0.00,0.00,0.00,0.00,0.00,0.00\n"
            "E100,000000315,01,40.00,1.50,0.00,0.00,0.00,0.00,0.00\n");
}

TEST_F(GenericTest, NonNumericEmployeeNumberPassesUnchanged) {
  auto c = card("X", "A-17");
  ASSERT_TRUE(run("0,0,0,0,0,False,True,False,False,False,,2", cards({object(c)})));
  EXPECT_EQ(written(), "X,A-17,01,0.00,0.00,0.00,0.00,0.00,0.00,0.00\n");
}

TEST_F(GenericTest, ValidateAcceptsEverythingAndChangesNothing) {
  for (const char* name : {"", "separator", "ANYTHING"}) {
    Variant value("keep me");
    EXPECT_NO_THROW(generic.Validate(name, value));
    EXPECT_EQ(value.as_string(), "keep me");
  }
  Variant number(std::int32_t{5});
  generic.Validate("x", number);
  EXPECT_EQ(number.as_long(), 5);
  generic.SetupData("not even twelve fields");
  EXPECT_NO_THROW(generic.run_check());
  EXPECT_EQ(generic.check_method_name(), "Validate");
}

TEST_F(GenericTest, CancelledSaveDialogReturnsFalseAndWritesNothing) {
  generic.SetupData("0,1,0,0,0,False,True,False,False,False,,0");
  host.ui.answer_save_cancel();
  EXPECT_FALSE(generic.Execute(cards({ann()})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.messages.empty());
  EXPECT_EQ(generic.SetupData(), "0,1,0,0,0,False,True,False,False,False,,0");
}

TEST_F(GenericTest, EmptyFileNameShowsTheMessageAndReturnsFalse) {
  generic.SetupData(kCommaTitlesCrLf);
  host.ui.answer_save("");
  EXPECT_FALSE(generic.Execute(cards({ann()})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_EQ(host.ui.message_texts(), std::vector<std::string>{"No file name selected!"});
}

TEST_F(GenericTest, MissingPropertyInAPrivateProcedureReachesTheHostAsExecute) {
  auto broken = card("E1", std::int32_t{1});
  broken->remove("Shift");
  try {
    run(kCommaTitlesCrLf, cards({ann(), object(broken)}));
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 438);
    EXPECT_EQ(error.description(), "Object doesn't support this property or method");
    EXPECT_EQ(error.source(), "zorvat.Generic.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.Generic.EmployeeRecord",
                                                       "zorvat.Generic.Execute"}));
  }
  EXPECT_EQ(host.files.writes, 0);  // the text is built before any file is opened
  EXPECT_EQ(generic.SetupData(), kCommaTitlesCrLf);
}

TEST_F(GenericTest, NonNumericMinutesAreATypeMismatch) {
  auto broken = card("E1", std::int32_t{1});
  broken->set("REG", "eight hours");
  try {
    run(kCommaTitlesCrLf, cards({object(broken)}));
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kTypeMismatch);
    EXPECT_EQ(error.source(), "zorvat.Generic.Execute");
  }
}

TEST_F(GenericTest, ShortSettingsAreAnIndexFailure) {
  for (const char* setup : {"", "0,1", "0,0,0,0,0,False,True,False,False,False,"}) {
    try {
      run(setup, cards({ann()}));
      FAIL() << setup;
    } catch (const Error& error) {
      EXPECT_EQ(error.number(), rt::kSubscriptOutOfRange) << setup;
      EXPECT_EQ(error.source(), "zorvat.Generic.Execute") << setup;
    }
  }
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(GenericTest, SeparatorFailureIsRaisedThroughItsCallers) {
  try {
    run("0,1,0,0,0,maybe,True,False,False,False,,0", cards({}));
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kTypeMismatch);
    EXPECT_EQ(error.trail(),
              (std::vector<std::string>{"zorvat", "zorvat.Generic.GetSeperator",
                                        "zorvat.Generic.CreateHeader", "zorvat.Generic.Execute"}));
  }
}

TEST_F(GenericTest, ExtraFieldsAreKeptInTheRewrittenSettings) {
  const std::string setup = "0,0,0,0,0,False,True,False,False,False,,2,extra";
  ASSERT_TRUE(run(setup, cards({})));
  EXPECT_EQ(generic.SetupData(), setup);
}

TEST_F(GenericTest, FileErrorsAreRaisedWithTheExecuteSource) {
  host.files.fail_path("out.tab", rt::kPermissionDenied);
  try {
    run(kCommaTitlesCrLf, cards({ann()}));
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kPermissionDenied);
    EXPECT_EQ(error.source(), "zorvat.Generic.Execute");
  }
}

TEST_F(GenericTest, SetupIsNotAvailableWithoutAForm) {
  try {
    generic.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.source(), "zorvat.Generic.Setup");
  }
}

}  // namespace
}  // namespace zorvat::formats
