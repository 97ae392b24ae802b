// PCPreview export: every expected record below is written out by hand from the
// record layout (column widths, blanks, hour format), not taken from a run.
#include "pcpreview/pcpreview.h"

#include <gtest/gtest.h>

#include <limits>

#include "raised.h"
#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

using scripted::card;
using scripted::cards;
using scripted::collection;
using scripted::object;

// Client 12; pay codes A, B, C; sequence 0; pay codes D, E, F, G; no deductions.
constexpr const char* kSetup = "12,A,B,C,0,D,E,F,G,0,0,0,0";

// "Ann Lee" padded to the 25 characters of the name column.
constexpr const char* kAnnLee = "Ann Lee                  ";

// One earnings record, column by column: the number (1-6), the name as the 25
// characters given (7-31), 19 blanks (32-50), "E" (51), a blank (52), the pay code
// (53), 9 blanks (54-62), the hours as the 8 characters given (63-70), 19 blanks
// (71-89), the sequence (90) and 37 blanks (91-127).
std::string record(std::string_view number, std::string_view name, std::string_view code,
                   std::string_view hours, std::string_view sequence = " ") {
  std::string text(number);
  text += name;
  text += "                   ";  // 19
  text += "E ";
  text += code;
  text += "         ";  // 9
  text += hours;
  text += "                   ";  // 19
  text += sequence;
  text += "                                     ";  // 37
  return text;
}

class PCPreviewTest : public testing::Test {
 protected:
  // Runs Execute with `setup` on `cards`, answering the Save dialog with "out.txt".
  bool run(const std::string& setup, const Variant& cards) {
    preview.SetupData(setup);
    host.ui.answer_save("out.txt");
    return preview.Execute(cards);
  }
  std::string written() const { return host.files.at("out.txt"); }

  // Employee 315, Ann Lee, with the given minutes by category.
  static Variant ann(std::int32_t reg, std::int32_t ot1 = 0, std::int32_t ot2 = 0,
                     std::int32_t vac = 0, std::int32_t hol = 0, std::int32_t sic = 0,
                     std::int32_t oth = 0) {
    auto result = card("E100", std::int32_t{315});
    result->set("REG", reg)
        .set("OT1", ot1)
        .set("OT2", ot2)
        .set("VAC", vac)
        .set("HOL", hol)
        .set("SIC", sic)
        .set("OTH", oth);
    return object(result);
  }

  // The error Execute raises on `cards` with `setup`.
  Error execute_error(const std::string& setup, const Variant& cards) {
    return testing_support::raised_by([&] { run(setup, cards); });
  }
  Error validate_error(const std::string& setup) {
    SCOPED_TRACE(setup);
    return testing_support::raised_by([&] { preview.ValidateSetupData(setup); });
  }

  scripted::Host host;
  PCPreview preview{host.context()};
};

TEST_F(PCPreviewTest, WritesOneEarningsRecordPerHourTypeWithNoLineBreaks) {
  ASSERT_TRUE(run(kSetup, cards({ann(2400, 90)})));
  const std::string blanks37(37, ' ');
  const std::string blanks57(57, ' ');  // 19 filler, sequence blank, 37 filler
  EXPECT_EQ(written(), "000315Ann Lee" + blanks37 + "E A            40.00" + blanks57 +
                           "000315Ann Lee" + blanks37 + "E B             1.50" + blanks57);
  EXPECT_EQ(written().size(), 254u);
  EXPECT_EQ(written().find_first_of("\r\n"), std::string::npos);
  EXPECT_EQ(preview.SetupData(), kSetup);
}

TEST_F(PCPreviewTest, ProposesTheClientNumberFileName) {
  ASSERT_TRUE(run(kSetup, cards({})));
  ASSERT_EQ(host.ui.save_requests.size(), 1u);
  EXPECT_EQ(host.ui.save_requests[0].filter,
            "PayChex Preview Import File [0012_TA.txt] | 0012_TA.txt");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "0012_TA");
}

TEST_F(PCPreviewTest, ClientNumberIsAlwaysFourDigits) {
  ASSERT_TRUE(run("0,A,B,C,0,D,E,F,G,0,0,0,0", cards({})));
  ASSERT_TRUE(run("9999,A,B,C,0,D,E,F,G,0,0,0,0", cards({})));
  ASSERT_EQ(host.ui.save_requests.size(), 2u);
  EXPECT_EQ(host.ui.save_requests[0].filter,
            "PayChex Preview Import File [0000_TA.txt] | 0000_TA.txt");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "0000_TA");
  EXPECT_EQ(host.ui.save_requests[1].file_name, "9999_TA");
}

TEST_F(PCPreviewTest, CardWhoseTotalsSumToZeroWritesNothing) {
  ASSERT_TRUE(run(kSetup, cards({ann(0)})));
  EXPECT_EQ(written(), "");
}

TEST_F(PCPreviewTest, TimeThatCancelsOutToZeroWritesNothingEvenWithPositiveTypes) {
  ASSERT_TRUE(run(kSetup, cards({ann(60, -60), ann(0, 0, 0, 30, 0, 0, -30)})));
  EXPECT_EQ(written(), "");
}

TEST_F(PCPreviewTest, OnlyOvertimeLevelTwoWritesOneRecordWithThirdPayCode) {
  ASSERT_TRUE(run(kSetup, cards({ann(0, 0, 120)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "C", "    2.00"));
}

TEST_F(PCPreviewTest, RegularAndHolidayRecordsAreDirectlyJoined) {
  ASSERT_TRUE(run(kSetup, cards({ann(480, 0, 0, 0, 480)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "A", "    8.00") +
                           record("000315", kAnnLee, "E", "    8.00"));
}

TEST_F(PCPreviewTest, EveryHourTypeTakesItsOwnPayCodeInHourTypeOrder) {
  ASSERT_TRUE(run(kSetup, cards({ann(60, 120, 180, 240, 300, 360, 420)})));
  EXPECT_EQ(
      written(),
      record("000315", kAnnLee, "A", "    1.00") + record("000315", kAnnLee, "B", "    2.00") +
          record("000315", kAnnLee, "C", "    3.00") + record("000315", kAnnLee, "D", "    4.00") +
          record("000315", kAnnLee, "E", "    5.00") + record("000315", kAnnLee, "F", "    6.00") +
          record("000315", kAnnLee, "G", "    7.00"));
}

TEST_F(PCPreviewTest, ZeroAndNegativeTypesWriteNothing) {
  ASSERT_TRUE(run(kSetup, cards({ann(-30, 0, 90)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "C", "    1.50"));
}

TEST_F(PCPreviewTest, CardsFollowInCollectionOrder) {
  auto bob = card("E7", std::int32_t{7});
  bob->set("FirstName", "Bob").set("LastName", "Ray").set("SIC", std::int32_t{240});
  ASSERT_TRUE(run(kSetup, cards({object(bob), ann(60)})));
  EXPECT_EQ(written(), record("000007", "Bob Ray                  ", "F", "    4.00") +
                           record("000315", kAnnLee, "A", "    1.00"));
}

TEST_F(PCPreviewTest, NameIsPaddedToTwentyFiveCharacters) {
  ASSERT_TRUE(run(kSetup, cards({ann(60)})));
  EXPECT_EQ(written().substr(6, 25), "Ann Lee                  ");
}

TEST_F(PCPreviewTest, NameOfThirtyCharactersIsCutToTwentyFive) {
  auto long_name = card("E1", std::int32_t{1});
  long_name->set("FirstName", "Alexandrina-Maria").set("LastName", "Featherstone");
  long_name->set("REG", std::int32_t{60});
  ASSERT_TRUE(run(kSetup, cards({object(long_name)})));
  EXPECT_EQ(written(), record("000001", "Alexandrina-Maria Feather", "A", "    1.00"));
}

TEST_F(PCPreviewTest, NameOfExactlyTwentyFiveCharactersIsKeptWhole) {
  auto exact = card("E1", std::int32_t{1});
  exact->set("FirstName", "Bartholomew").set("LastName", "Winterbottoms");
  exact->set("REG", std::int32_t{60});
  ASSERT_TRUE(run(kSetup, cards({object(exact)})));
  EXPECT_EQ(written(), record("000001", "Bartholomew Winterbottoms", "A", "    1.00"));
}

TEST_F(PCPreviewTest, EmployeeNumberIsZeroFilledToSixDigits) {
  auto numeric = card("E1", std::int32_t{42});
  numeric->set("REG", std::int32_t{60});
  auto text = card("E2", "0042");
  text->set("REG", std::int32_t{60});
  ASSERT_TRUE(run(kSetup, cards({object(numeric), object(text)})));
  EXPECT_EQ(written(), record("000042", kAnnLee, "A", "    1.00") +
                           record("000042", kAnnLee, "A", "    1.00"));
}

TEST_F(PCPreviewTest, SevenDigitEmployeeNumberMovesEverythingAfterIt) {
  auto big = card("E1", std::int32_t{1234567});
  big->set("REG", std::int32_t{60});
  ASSERT_TRUE(run(kSetup, cards({object(big)})));
  EXPECT_EQ(written(), record("1234567", kAnnLee, "A", "    1.00"));
  EXPECT_EQ(written().size(), 128u);
}

TEST_F(PCPreviewTest, CurrencyAndParenthesisNumbersAreReadAsNumbers) {
  // "$42" is 42 and "(42)" is -42 to the classic conversion; the sign widens the record.
  auto dollars = card("E1", "$42");
  dollars->set("REG", std::int32_t{60});
  auto negative = card("E2", "(42)");
  negative->set("REG", std::int32_t{60});
  ASSERT_TRUE(run(kSetup, cards({object(dollars), object(negative)})));
  EXPECT_EQ(written(), record("000042", kAnnLee, "A", "    1.00") +
                           record("-000042", kAnnLee, "A", "    1.00"));
}

TEST_F(PCPreviewTest, SequenceZeroOrEmptyWritesOneBlank) {
  ASSERT_TRUE(run("12,A,B,C,0,D,E,F,G,0,0,0,0", cards({ann(60)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "A", "    1.00", " "));
  ASSERT_TRUE(run("12,A,B,C,,D,E,F,G,0,0,0,0", cards({ann(60)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "A", "    1.00", " "));
  ASSERT_TRUE(run("12,A,B,C,-1,D,E,F,G,0,0,0,0", cards({ann(60)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "A", "    1.00", " "));
}

TEST_F(PCPreviewTest, SequenceAboveZeroIsWrittenAsItStands) {
  ASSERT_TRUE(run("12,A,B,C,7,D,E,F,G,0,0,0,0", cards({ann(60)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "A", "    1.00", "7"));
  EXPECT_EQ(written()[89], '7');
  ASSERT_TRUE(run("12,A,B,C,07,D,E,F,G,0,0,0,0", cards({ann(60)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "A", "    1.00", "07"));
}

TEST_F(PCPreviewTest, TwoCharacterSequenceWidensTheRecord) {
  ASSERT_TRUE(run("12,A,B,C,12,D,E,F,G,0,0,0,0", cards({ann(60)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "A", "    1.00", "12"));
  EXPECT_EQ(written().size(), 128u);
}

TEST_F(PCPreviewTest, NonNumericSequenceIsATypeMismatchWhenARecordIsWritten) {
  const Error error = execute_error("12,A,B,C,x,D,E,F,G,0,0,0,0", cards({ann(60)}));
  EXPECT_EQ(error.number(), rt::kTypeMismatch);
  EXPECT_EQ(error.source(), "zorvat.PCPreview.Execute");
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.PCPreview.EmployeeRecord",
                                                     "zorvat.PCPreview.Execute"}));
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PCPreviewTest, PayCodeColumnIsAsWideAsItsText) {
  // "05" loses its leading zero, "AB" takes two columns, an empty code none.
  ASSERT_TRUE(run("12,05,AB,,0,D,E,F,G,0,0,0,0", cards({ann(60, 60, 60)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "5", "    1.00") +
                           record("000315", kAnnLee, "AB", "    1.00") +
                           record("000315", kAnnLee, "", "    1.00"));
  EXPECT_EQ(written().size(), 127u + 128u + 126u);
}

TEST_F(PCPreviewTest, DeductionFlagsNeverChangeTheRecordType) {
  ASSERT_TRUE(run("12,A,B,C,0,D,E,F,G,1,1,1,1", cards({ann(0, 0, 0, 60, 60, 60, 60)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "D", "    1.00") +
                           record("000315", kAnnLee, "E", "    1.00") +
                           record("000315", kAnnLee, "F", "    1.00") +
                           record("000315", kAnnLee, "G", "    1.00"));
  EXPECT_EQ(preview.SetupData(), "12,A,B,C,0,D,E,F,G,1,1,1,1");
}

TEST_F(PCPreviewTest, HoursHaveNoDigitForcedBeforeThePoint) {
  ASSERT_TRUE(run(kSetup, cards({ann(30, 15, 480, 1, 5999999)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "A", "     .50") +
                           record("000315", kAnnLee, "B", "     .25") +
                           record("000315", kAnnLee, "C", "    8.00") +
                           record("000315", kAnnLee, "D", "     .02") +
                           record("000315", kAnnLee, "E", "99999.98"));
}

TEST_F(PCPreviewTest, HundredThousandHoursOverflowTheColumnAndRaise) {
  const Error error = execute_error(kSetup, cards({ann(6000000)}));
  EXPECT_EQ(error.number(), rt::kInvalidProcedureCall);
  EXPECT_EQ(error.description(), "Invalid procedure call or argument");
  EXPECT_EQ(error.source(), "zorvat.PCPreview.Execute");
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.PCPreview.EmployeeRecord",
                                                     "zorvat.PCPreview.Execute"}));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.save_requests.empty());
}

TEST_F(PCPreviewTest, HourConversionFailureNamesMin2Hrs) {
  auto endless = card("E1", std::int32_t{1});
  endless->set("REG", std::numeric_limits<double>::infinity());
  const Error error = execute_error(kSetup, cards({object(endless)}));
  EXPECT_EQ(error.number(), rt::kOverflow);
  EXPECT_EQ(error.source(), "zorvat.PCPreview.Execute");
  EXPECT_EQ(error.trail(),
            (std::vector<std::string>{"zorvat.PCPreview.Min2Hrs", "zorvat.PCPreview.EmployeeRecord",
                                      "zorvat.PCPreview.Execute"}));
}

TEST_F(PCPreviewTest, MinutesMayArriveAsDoublesOrNumericText) {
  auto mixed = card("E1", "315");
  mixed->set("REG", 90.0).set("OT1", "45");
  ASSERT_TRUE(run(kSetup, cards({object(mixed)})));
  EXPECT_EQ(written(), record("000315", kAnnLee, "A", "    1.50") +
                           record("000315", kAnnLee, "B", "     .75"));
}

TEST_F(PCPreviewTest, EmptyCollectionWritesAnEmptyFileAndReturnsTrue) {
  ASSERT_TRUE(run(kSetup, cards({})));
  EXPECT_TRUE(host.files.has("out.txt"));
  EXPECT_EQ(written(), "");
}

TEST_F(PCPreviewTest, CancelledSaveDialogReturnsFalseSilently) {
  preview.SetupData(kSetup);
  host.ui.answer_save_cancel();
  EXPECT_FALSE(preview.Execute(cards({ann(60)})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.messages.empty());
  EXPECT_EQ(preview.SetupData(), kSetup);
}

TEST_F(PCPreviewTest, EmptyFileNameShowsTheMessageAndReturnsFalse) {
  preview.SetupData(kSetup);
  host.ui.answer_save("");
  EXPECT_FALSE(preview.Execute(cards({ann(60)})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_EQ(host.ui.message_texts(), std::vector<std::string>{"No file name selected!"});
}

TEST_F(PCPreviewTest, FileErrorsAreRaisedWithTheExecuteSource) {
  host.files.fail_path("out.txt", rt::kPathNotFound);
  const Error error = execute_error(kSetup, cards({ann(60)}));
  EXPECT_EQ(error.number(), rt::kPathNotFound);
  EXPECT_EQ(error.source(), "zorvat.PCPreview.Execute");
}

TEST_F(PCPreviewTest, MissingPropertyReachesTheHostAsExecute) {
  auto broken = card("E1", std::int32_t{1});
  broken->set("REG", std::int32_t{60}).remove("LastName");
  const Error error = execute_error(kSetup, cards({ann(60), object(broken)}));
  EXPECT_EQ(error.number(), rt::kObjectDoesntSupport);
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.PCPreview.EmployeeRecord",
                                                     "zorvat.PCPreview.Execute"}));
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PCPreviewTest, NamesAreNotReadFromACardWithoutTime) {
  auto nameless = card("E1", std::int32_t{1});
  nameless->remove("FirstName").remove("LastName");
  ASSERT_TRUE(run(kSetup, cards({object(nameless)})));
  EXPECT_EQ(written(), "");
}

TEST_F(PCPreviewTest, ClientNumberOutOfRangeOrNotNumericRaises3001) {
  for (const char* client : {"10000", "-1", "abc", ""}) {
    const Error error = validate_error(std::string(client) + ",A,B,C,0,D,E,F,G,0,0,0,0");
    EXPECT_EQ(error.number(), 3001) << client;
    EXPECT_EQ(error.number(), static_cast<long>(PCPreviewErrorsEnum::errClientNumber));
    EXPECT_EQ(error.description(), "Pay Level invalid - Must be between 0 and 9999") << client;
    EXPECT_EQ(error.source(), "zorvat.PCPreview.ValidateSetupData") << client;
  }
}

TEST_F(PCPreviewTest, ClientNumbersAtTheEndsOfTheRangePass) {
  EXPECT_NO_THROW(preview.ValidateSetupData("0,A,B,C,0,D,E,F,G,0,0,0,0"));
  EXPECT_NO_THROW(preview.ValidateSetupData("9999,A,B,C,0,D,E,F,G,0,0,0,0"));
}

TEST_F(PCPreviewTest, SequenceOfThreeCharactersRaises3005) {
  const Error error = validate_error("12,A,B,C,123,D,E,F,G,0,0,0,0");
  EXPECT_EQ(error.number(), 3005);
  EXPECT_EQ(error.number(), static_cast<long>(PCPreviewErrorsEnum::errSequence));
  EXPECT_EQ(error.description(), "Pay Item Code must be 2 chars or less");
  EXPECT_EQ(error.source(), "zorvat.PCPreview.ValidateSetupData");
}

TEST_F(PCPreviewTest, EachCodeFieldLongerThanTwoRaisesItsOwnNumber) {
  const PCPreviewErrorsEnum expected[] = {
      PCPreviewErrorsEnum::errPayCode0, PCPreviewErrorsEnum::errPayCode1,
      PCPreviewErrorsEnum::errPayCode2, PCPreviewErrorsEnum::errSequence,
      PCPreviewErrorsEnum::errVAC,      PCPreviewErrorsEnum::errHOL,
      PCPreviewErrorsEnum::errSIC,      PCPreviewErrorsEnum::errOTH};
  for (std::size_t position = 1; position <= 8; ++position) {
    SettingsFields fields(kSetup);
    fields.at(position) = "ABC";
    const Error error = validate_error(fields.join());
    EXPECT_EQ(error.number(), 3001 + static_cast<long>(position));
    EXPECT_EQ(error.number(), static_cast<long>(expected[position - 1]));
    EXPECT_EQ(error.description(), "Pay Item Code must be 2 chars or less");
  }
}

TEST_F(PCPreviewTest, DeductionFlagsAreNotChecked) {
  EXPECT_NO_THROW(preview.ValidateSetupData("12,A,B,C,0,D,E,F,G,xyz,abc,-17,maybe"));
}

TEST_F(PCPreviewTest, OnlyTheFirstBadFieldIsReported) {
  EXPECT_EQ(validate_error("abc,ABC,B,C,123,D,E,F,G,0,0,0,0").number(), 3001);
  EXPECT_EQ(validate_error("12,A,BCD,C,123,D,E,F,G,0,0,0,0").number(), 3003);
}

TEST_F(PCPreviewTest, ShortSettingsStringValidatesOnlyThePresentFields) {
  EXPECT_NO_THROW(preview.ValidateSetupData(""));
  EXPECT_NO_THROW(preview.ValidateSetupData("12,A"));
  EXPECT_NO_THROW(preview.ValidateSetupData("12,A,B,C,0"));
  EXPECT_EQ(validate_error("12,A,B,C,0,DEF").number(), 3006);
}

TEST_F(PCPreviewTest, ShortSettingsFailOnlyWhereAMissingFieldIsRead) {
  // Field 4, the sequence, is missing when the regular record is written.
  const Error error = execute_error("12,A", cards({ann(60)}));
  EXPECT_EQ(error.number(), rt::kSubscriptOutOfRange);
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.PCPreview.EmployeeRecord",
                                                     "zorvat.PCPreview.Execute"}));
  // Without records only the client number is read, for the file name.
  ASSERT_TRUE(run("12", cards({})));
  EXPECT_EQ(written(), "");
  EXPECT_EQ(execute_error("", cards({})).number(), rt::kSubscriptOutOfRange);
  EXPECT_EQ(host.files.writes, 1);
}

TEST_F(PCPreviewTest, RunCheckValidatesTheCurrentSettings) {
  preview.SetupData("12,A,B,C,123,D,E,F,G,0,0,0,0");
  try {
    preview.run_check();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 3005);
    EXPECT_EQ(error.source(), "zorvat.PCPreview.ValidateSetupData");
  }
  EXPECT_EQ(preview.check_method_name(), "ValidateSetupData");
}

TEST_F(PCPreviewTest, ValidationErrorOfExecuteCarriesTheExecuteSource) {
  const Error error = execute_error("12,A,B,C,123,D,E,F,G,0,0,0,0", cards({ann(60)}));
  EXPECT_EQ(error.number(), 3005);
  EXPECT_EQ(error.description(), "Pay Item Code must be 2 chars or less");
  EXPECT_EQ(error.source(), "zorvat.PCPreview.Execute");
  EXPECT_TRUE(host.ui.save_requests.empty());
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PCPreviewTest, SetupIsNotAvailableWithoutAForm) {
  preview.SetupData(kSetup);
  try {
    preview.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.source(), "zorvat.PCPreview.Setup");
  }
  EXPECT_EQ(preview.SetupData(), kSetup);
}

}  // namespace
}  // namespace zorvat::formats
