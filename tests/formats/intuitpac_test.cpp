// IntuitPAC export: every expected record below is written out by hand from the two
// layouts (columns, overpunch characters, blanks to column 80), not taken from a run.
#include "intuitpac/intuitpac.h"

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
using testing_support::expect_error;

constexpr const char* kFullTitle = "Intuit PC Access Import File V2.0";
constexpr const char* kJrTitle = "Premier Import File V2.0";

// Company ABCE12345 (a full edition's nine characters), pay codes 1 to 7, no
// deductions.
constexpr const char* kFullSetup = "ABCE12345,1,2,3,4,5,6,7,0,0,0,0";
// Company ABCQ12345 (a Jr edition's nine characters).
constexpr const char* kJrSetup = "ABCQ12345,1,2,3,4,5,6,7,0,0,0,0";

constexpr const char* kFullDescription =
    "The Company Name for this export must be either 7 or 9 characters in length\r\n"
    "If 9 character format, the fourth character must be a 'C' or 'E'.";
constexpr const char* kJrDescription =
    "The Company Name for this export must be either 7 or 9 characters in length\r\n"
    "If 9 character format, the fourth character must be a 'Q'.";
constexpr const char* kPayCodeDescription = "Pay Code value must be between 0 and 99";

// The all-zero records of employee 12345 in company ...2345, shift 1: record 1 ends
// after column 41 (39 blanks follow), record 2 after column 50 (30 blanks).
const std::string kZeroRecord1 =
    "2345423458   101000000{02000000{03000000{" + std::string(39, ' ') + "\r\n";
const std::string kZeroRecord2 =
    "2345423458   104000000{05000000{06000000{07000000{" + std::string(30, ' ') + "\r\n";

class IntuitPACTest : public testing::Test {
 protected:
  bool run(const std::string& title, const std::string& setup, const Variant& cards) {
    pac.Title = title;
    pac.SetupData(setup);
    host.ui.answer_save("out.clk");
    return pac.Execute(cards);
  }
  std::string written() const { return host.files.at("out.clk"); }

  static std::shared_ptr<scripted::MemoryObject> employee(Variant number = std::int32_t{12345}) {
    return card("E1", std::move(number));
  }

  void expect_validation(const std::string& title, const std::string& setup, long number,
                         const std::string& description) {
    pac.Title = title;
    expect_error([&] { pac.ValidateSetupData(setup); }, number,
                 "zorvat.IntuitPAC.ValidateSetupData", description);
  }

  scripted::Host host;
  IntuitPAC pac{host.context()};
};

// --- IsJr -----------------------------------------------------------------------

TEST_F(IntuitPACTest, IsJrOverTheEightEditionTitles) {
  EXPECT_FALSE(pac.IsJr("Intuit PC Access Import File V2.0"));
  EXPECT_FALSE(pac.IsJr("Premier Plus Import File V2.0"));
  EXPECT_FALSE(pac.IsJr("QuikPay Plus Import File V2.0"));
  EXPECT_FALSE(pac.IsJr("Wells Fargo Plus Import File V2.0"));
  EXPECT_TRUE(pac.IsJr("Intuit PC Access Jr Import File V2.0"));
  EXPECT_TRUE(pac.IsJr("Premier Import File V2.0"));
  EXPECT_TRUE(pac.IsJr("QuikPay Import File V2.0"));
  EXPECT_TRUE(pac.IsJr("Wells Fargo Import File V2.0"));
}

TEST_F(IntuitPACTest, IsJrComparesExactlyAndUnknownTitlesAreFull) {
  EXPECT_FALSE(pac.IsJr(""));
  EXPECT_FALSE(pac.IsJr("premier import file v2.0"));
  EXPECT_FALSE(pac.IsJr("Premier Import File V2.0 "));
  EXPECT_FALSE(pac.IsJr("Premier Import File"));
}

// --- Full layout ----------------------------------------------------------------

TEST_F(IntuitPACTest, FullLayoutWritesTwoOverpunchedRecords) {
  auto ann = employee();
  ann->set("REG", std::int32_t{2400})  // 000400{
      .set("OT1", std::int32_t{2425})  // 40.4166 hours: 000404B
      .set("VAC", std::int32_t{480})   // 000080{
      .set("HOL", std::int32_t{90})    // 000015{
      .set("SIC", std::int32_t{1})     // 1.67 hundredths: 000000B
      .set("OTH", std::int32_t{7});    // 11.67 hundredths: 000001B
  ASSERT_TRUE(run(kFullTitle, kFullSetup, cards({object(ann)})));
  EXPECT_EQ(written(), "2345423458   101000400{02000404B03000000{" + std::string(39, ' ') + "\r\n" +
                           "2345423458   104000080{05000015{06000000B07000001B" +
                           std::string(30, ' ') + "\r\n");
}

TEST_F(IntuitPACTest, AllZeroEmployeeStillYieldsBothRecords) {
  ASSERT_TRUE(run(kFullTitle, kFullSetup, cards({object(employee())})));
  EXPECT_EQ(written(), kZeroRecord1 + kZeroRecord2);
}

TEST_F(IntuitPACTest, NegativeMinutesTakeTheNegativeCharacters) {
  auto c = employee();
  c->set("REG", std::int32_t{-480})   // 000080}
      .set("OT1", std::int32_t{-90})  // 0000150: 000015}
      .set("OT2", std::int32_t{-1});  // 0000002: 000000K
  ASSERT_TRUE(run(kFullTitle, kFullSetup, cards({object(c)})));
  EXPECT_EQ(written(), "2345423458   101000080}02000015}03000000K" + std::string(39, ' ') + "\r\n" +
                           kZeroRecord2);
}

TEST_F(IntuitPACTest, VacationDeductionFlagNegatesTheVacationAmount) {
  auto c = employee();
  c->set("VAC", std::int32_t{480});
  ASSERT_TRUE(run(kFullTitle, "ABCE12345,1,2,3,4,5,6,7,1,0,0,0", cards({object(c)})));
  EXPECT_EQ(written(), kZeroRecord1 + "2345423458   104000080}05000000{06000000{07000000{" +
                           std::string(30, ' ') + "\r\n");
  ASSERT_TRUE(run(kFullTitle, kFullSetup, cards({object(c)})));
  EXPECT_EQ(written(), kZeroRecord1 + "2345423458   104000080{05000000{06000000{07000000{" +
                           std::string(30, ' ') + "\r\n");
}

TEST_F(IntuitPACTest, EachDeductionFlagNegatesItsOwnCategory) {
  auto c = employee();
  c->set("VAC", std::int32_t{60})    // 100 hundredths
      .set("HOL", std::int32_t{90})  // 150
      .set("SIC", std::int32_t{1})   // 2
      .set("OTH", std::int32_t{0});  // a negated 0 stays 0: 000000{
  ASSERT_TRUE(run(kFullTitle, "ABCE12345,1,2,3,4,5,6,7,0,1,1,1", cards({object(c)})));
  EXPECT_EQ(written(), kZeroRecord1 + "2345423458   104000010{05000015}06000000K07000000{" +
                           std::string(30, ' ') + "\r\n");
}

TEST_F(IntuitPACTest, MinutesAreRoundedToWholeMinutesHalfToEven) {
  auto c = employee();
  c->set("REG", 2400.5)     // 2400 minutes: 000400{
      .set("OT1", 2401.5);  // 2402 minutes, 4003.33 hundredths: 000400C
  ASSERT_TRUE(run(kFullTitle, kFullSetup, cards({object(c)})));
  EXPECT_EQ(written(), "2345423458   101000400{02000400C03000000{" + std::string(39, ' ') + "\r\n" +
                           kZeroRecord2);
}

TEST_F(IntuitPACTest, PayCodesAreTwoDigitsAndShiftIsWrittenAsItStands) {
  auto c = employee(Variant("0315"));
  c->set("Shift", "B");
  ASSERT_TRUE(run(kFullTitle, "XYZ9876,10,20,30,40,50,60,99,0,0,0,0", cards({object(c)})));
  EXPECT_EQ(written(),
            "987640315"
            "8   B"
            "10000000{20000000{30000000{" +
                std::string(39, ' ') + "\r\n" +
                "987640315"
                "8   B"
                "40000000{50000000{60000000{99000000{" +
                std::string(30, ' ') + "\r\n");
}

TEST_F(IntuitPACTest, PremierPlusWritesTwoRecordsPerEmployee) {
  ASSERT_TRUE(run("Premier Plus Import File V2.0", kFullSetup,
                  cards({object(employee()), object(employee())})));
  EXPECT_EQ(written(), kZeroRecord1 + kZeroRecord2 + kZeroRecord1 + kZeroRecord2);
}

TEST_F(IntuitPACTest, UnknownTitleWritesTheFullLayout) {
  ASSERT_TRUE(run("Some Other Edition", kFullSetup, cards({object(employee())})));
  EXPECT_EQ(written(), kZeroRecord1 + kZeroRecord2);
}

// --- Jr layout ------------------------------------------------------------------

TEST_F(IntuitPACTest, PremierWritesOneEightyColumnRecordPerEmployee) {
  auto c = employee();
  c->set("REG", std::int32_t{2400})   // 04000
      .set("OT1", std::int32_t{90})   // 00150
      .set("OT2", std::int32_t{45})   // 00000075
      .set("VAC", std::int32_t{480})  // 00000800
      .set("HOL", std::int32_t{60})   // 00000100
      .set("SIC", std::int32_t{30})   // 00000050
      .set("OTH", std::int32_t{1});   // 1.67: 00000002
  ASSERT_TRUE(run(kJrTitle, kJrSetup, cards({object(c), object(employee())})));
  EXPECT_EQ(written(),
            "2345423458"
            "0400000150"
            "0300000075"
            "0400000800"
            "0500000100"
            "0600000050"
            "0700000002" +
                std::string(10, ' ') + "\r\n" +
                "2345423458"
                "0000000000"
                "0300000000"
                "0400000000"
                "0500000000"
                "0600000000"
                "0700000000" +
                std::string(10, ' ') + "\r\n");
}

TEST_F(IntuitPACTest, JrLayoutIgnoresDeductionFlagsAndTheFirstTwoPayCodes) {
  auto c = employee();
  c->set("VAC", std::int32_t{480});
  ASSERT_TRUE(run("Intuit PC Access Jr Import File V2.0", "ABC1234,88,77,9,8,7,6,5,1,1,1,1",
                  cards({object(c)})));
  EXPECT_EQ(written(),
            "1234423458"
            "0000000000"
            "0900000000"
            "0800000800"
            "0700000000"
            "0600000000"
            "0500000000" +
                std::string(10, ' ') + "\r\n");
}

TEST_F(IntuitPACTest, JrAmountTooLargeForItsMaskWidensTheField) {
  auto c = employee();
  c->set("REG", std::int32_t{60000});  // 100000 hundredths: six digits in a five-digit mask
  ASSERT_TRUE(run(kJrTitle, kJrSetup, cards({object(c)})));
  EXPECT_EQ(written(),
            "2345423458"
            "100000"
            "00000"
            "0300000000"
            "0400000000"
            "0500000000"
            "0600000000"
            "0700000000" +
                std::string(9, ' ') + "\r\n");
}

// --- Company and employee parts -------------------------------------------------

TEST_F(IntuitPACTest, EmployeeNumberOfTwelveFailsTheExport) {
  try {
    run(kFullTitle, kFullSetup, cards({object(employee()), object(employee(std::int32_t{12}))}));
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kInvalidProcedureCall);
    EXPECT_EQ(error.description(), "Invalid procedure call or argument");
    EXPECT_EQ(error.source(), "zorvat.IntuitPAC.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.IntuitPAC.EmployeeRecord",
                                                       "zorvat.IntuitPAC.Execute"}));
  }
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.save_requests.empty());
}

TEST_F(IntuitPACTest, ThreeCharacterNumbersFailTooEvenWhenNumeric) {
  expect_error([&] { run(kJrTitle, kJrSetup, cards({object(employee(std::int32_t{315}))})); },
               rt::kInvalidProcedureCall, "zorvat.IntuitPAC.Execute",
               "Invalid procedure call or argument");
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(IntuitPACTest, EmployeeNumberKeepsItsLastFourCharacters) {
  // 12345 gives 2345; four characters stand as they are; a non-numeric tail passes
  // unchanged; a numeric one is zero-filled.
  ASSERT_TRUE(
      run(kJrTitle, "ABC1234,1,2,3,4,5,6,7",
          cards({object(employee(std::int32_t{12345})), object(employee(Variant("0042"))),
                 object(employee(Variant("ID-A7B9"))), object(employee(Variant("X 123")))})));
  const std::string rest =
      "8"
      "0000000000"
      "0300000000"
      "0400000000"
      "0500000000"
      "0600000000"
      "0700000000" +
      std::string(10, ' ') + "\r\n";
  EXPECT_EQ(written(),
            "12344"
            "2345" +
                rest +
                "12344"
                "0042" +
                rest +
                "12344"
                "A7B9" +
                rest +
                "12344"
                "0123" +
                rest);
}

TEST_F(IntuitPACTest, EmployeeNumbersTakeTheLastFourCharactersOfTheirTextAtEveryWidth) {
  // Numbers from four digits up end in four digits; negative ones keep their sign in
  // the text, so "-123" reads as -123 and is zero-filled a column wider.
  const std::pair<std::int32_t, std::string> numbers[] = {
      {1000, "1000"},   {1001, "1001"},     {9999, "9999"},       {10000, "0000"},
      {12345, "2345"},  {99990000, "0000"}, {2147483647, "3647"}, {-2147483647 - 1, "3648"},
      {-12345, "2345"}, {-1234, "1234"},    {-123, "-0123"}};
  std::vector<Variant> all;
  for (const auto& number : numbers) all.push_back(object(employee(number.first)));
  ASSERT_TRUE(run(kJrTitle, "ABC1234,1,2,3,4,5,6,7", cards(all)));
  std::string expected;
  for (const auto& number : numbers) {
    const std::string record = "12344" + number.second + "8" + "0000000000" + "0300000000" +
                               "0400000000" + "0500000000" + "0600000000" + "0700000000";
    expected += record + std::string(80 - record.size(), ' ') + "\r\n";
  }
  EXPECT_EQ(written(), expected);
}

TEST_F(IntuitPACTest, CurrencyAndParenthesisTailsAreReadAsNumbers) {
  // "$345" is 345 and "(45)" is -45 to the classic conversion: zero-filled to four
  // digits, the negative one a column wider, which leaves one blank less.
  ASSERT_TRUE(run(kJrTitle, "ABC1234,1,2,3,4,5,6,7",
                  cards({object(employee(Variant("$345"))), object(employee(Variant("(45)")))})));
  const std::string amounts =
      "8"
      "0000000000"
      "0300000000"
      "0400000000"
      "0500000000"
      "0600000000"
      "0700000000";
  EXPECT_EQ(written(),
            "12344"
            "0345" +
                amounts + std::string(10, ' ') + "\r\n" +
                "12344"
                "-0045" +
                amounts + std::string(9, ' ') + "\r\n");
}

TEST_F(IntuitPACTest, CompanyPartIsTheLastFourCharacters) {
  ASSERT_TRUE(run(kJrTitle, "ABCQ12345,1,2,3,4,5,6,7", cards({object(employee())})));
  EXPECT_EQ(written().substr(0, 4), "2345");
  ASSERT_TRUE(run(kJrTitle, "ABC1234,1,2,3,4,5,6,7", cards({object(employee())})));
  EXPECT_EQ(written().substr(0, 4), "1234");
}

// --- Every record -----------------------------------------------------------------

TEST_F(IntuitPACTest, EveryLineIsExactlyEightyCharactersBeforeItsCrLf) {
  auto busy = employee(Variant("987654"));
  busy->set("REG", std::int32_t{5999}).set("OT1", std::int32_t{-30}).set("OTH", std::int32_t{45});
  for (const char* title : {kFullTitle, kJrTitle}) {
    ASSERT_TRUE(run(title, std::string(title) == kJrTitle ? kJrSetup : kFullSetup,
                    cards({object(employee()), object(busy)})));
    const std::string file = written();
    std::size_t start = 0;
    int lines = 0;
    while (start < file.size()) {
      const std::size_t end = file.find("\r\n", start);
      ASSERT_NE(end, std::string::npos);
      EXPECT_EQ(end - start, 80u) << title << " line " << lines;
      start = end + 2;
      ++lines;
    }
    EXPECT_EQ(lines, std::string(title) == kJrTitle ? 2 : 4);
  }
}

TEST_F(IntuitPACTest, RecordLongerThanEightyColumnsFailsTheExport) {
  // A 31-character shift makes record 2 exactly 80 columns; 32 make it 81.
  auto fits = employee();
  fits->set("Shift", std::string(31, 'S'));
  ASSERT_TRUE(run(kFullTitle, kFullSetup, cards({object(fits)})));
  EXPECT_EQ(written(), "2345423458   " + std::string(31, 'S') + "01000000{02000000{03000000{" +
                           std::string(9, ' ') + "\r\n" + "2345423458   " + std::string(31, 'S') +
                           "04000000{05000000{06000000{07000000{\r\n");

  auto wide = employee();
  wide->set("Shift", std::string(32, 'S'));
  try {
    run(kFullTitle, kFullSetup, cards({object(wide)}));
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kInvalidProcedureCall);
    EXPECT_EQ(error.source(), "zorvat.IntuitPAC.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.IntuitPAC.EmployeeRecord",
                                                       "zorvat.IntuitPAC.Execute"}));
  }
  EXPECT_EQ(host.files.writes, 1);  // only the first export
}

TEST_F(IntuitPACTest, OverPunchFailureCarriesItsSourceUpTheChain) {
  auto c = employee();
  c->set("REG", std::numeric_limits<std::int32_t>::min());
  try {
    run(kFullTitle, kFullSetup, cards({object(c)}));
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kOverflow);
    EXPECT_EQ(error.description(), "Overflow");
    EXPECT_EQ(error.source(), "zorvat.IntuitPAC.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.IntuitPAC.OverPunch",
                                                       "zorvat.IntuitPAC.EmployeeRecord",
                                                       "zorvat.IntuitPAC.Execute"}));
  }
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(IntuitPACTest, MissingPropertyReachesTheHostAsExecute) {
  auto c = employee();
  c->remove("Shift");
  try {
    run(kFullTitle, kFullSetup, cards({object(c)}));
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kObjectDoesntSupport);
    EXPECT_EQ(error.source(), "zorvat.IntuitPAC.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.IntuitPAC.EmployeeRecord",
                                                       "zorvat.IntuitPAC.Execute"}));
  }
  // The Jr layout has no shift and does not ask for it.
  ASSERT_TRUE(run(kJrTitle, kJrSetup, cards({object(c)})));
}

// --- File step ------------------------------------------------------------------

TEST_F(IntuitPACTest, FilterIsWordedExactlyAndNoNameIsProposed) {
  ASSERT_TRUE(run(kFullTitle, kFullSetup, cards({})));
  ASSERT_EQ(host.ui.save_requests.size(), 1u);
  EXPECT_EQ(host.ui.save_requests[0].filter, "Intuit PC Access Import File (*.clk) | *.clk");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "");
}

TEST_F(IntuitPACTest, EmptyCollectionWritesAnEmptyFileAndKeepsTheSettings) {
  const std::string setup = std::string(kFullSetup) + ",extra";
  ASSERT_TRUE(run(kFullTitle, setup, cards({})));
  EXPECT_TRUE(host.files.has("out.clk"));
  EXPECT_EQ(written(), "");
  EXPECT_EQ(pac.SetupData(), setup);
}

TEST_F(IntuitPACTest, CancelledDialogReturnsFalseSilently) {
  pac.Title = kFullTitle;
  pac.SetupData(kFullSetup);
  host.ui.answer_save_cancel();
  EXPECT_FALSE(pac.Execute(cards({object(employee())})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.messages.empty());
  EXPECT_EQ(pac.SetupData(), kFullSetup);
}

TEST_F(IntuitPACTest, EmptyFileNameShowsTheMessage) {
  pac.Title = kFullTitle;
  pac.SetupData(kFullSetup);
  host.ui.answer_save("");
  EXPECT_FALSE(pac.Execute(cards({object(employee())})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_EQ(host.ui.message_texts(), std::vector<std::string>{"No file name selected!"});
}

TEST_F(IntuitPACTest, FileErrorsAreRaisedWithTheExecuteSource) {
  host.files.fail_path("out.clk", rt::kPermissionDenied);
  expect_error([&] { run(kFullTitle, kFullSetup, cards({})); }, rt::kPermissionDenied,
               "zorvat.IntuitPAC.Execute", "Permission denied");
}

TEST_F(IntuitPACTest, ExecuteValidatesTheSettingsFirst) {
  try {
    run(kJrTitle, kFullSetup, cards({object(employee())}));  // 'E' is not a Jr code
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 1001);
    EXPECT_EQ(error.description(), kJrDescription);
    EXPECT_EQ(error.source(), "zorvat.IntuitPAC.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat.IntuitPAC.ValidateSetupData",
                                                       "zorvat.IntuitPAC.Execute"}));
  }
  EXPECT_TRUE(host.ui.save_requests.empty());
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(IntuitPACTest, EmptySettingsPassValidationButCannotBuildARecord) {
  ASSERT_TRUE(run(kFullTitle, "", cards({})));
  expect_error([&] { run(kFullTitle, "", cards({object(employee())})); }, rt::kSubscriptOutOfRange,
               "zorvat.IntuitPAC.Execute", "Subscript out of range");
}

TEST_F(IntuitPACTest, SetupIsNotAvailableWithoutAForm) {
  try {
    pac.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.source(), "zorvat.IntuitPAC.Setup");
  }
}

// --- ValidateSetupData ----------------------------------------------------------

TEST_F(IntuitPACTest, FullEditionWantsCOrEAsTheFourthOfNineCharacters) {
  pac.Title = kFullTitle;
  EXPECT_NO_THROW(pac.ValidateSetupData("ABCE12345"));
  EXPECT_NO_THROW(pac.ValidateSetupData("ABCC12345"));
  expect_validation(kFullTitle, "ABCQ12345", 1001, kFullDescription);
  expect_validation(kFullTitle, "ABCe12345", 1001, kFullDescription);  // exact case
}

TEST_F(IntuitPACTest, JrEditionWantsQAsTheFourthOfNineCharacters) {
  pac.Title = "QuikPay Import File V2.0";
  EXPECT_NO_THROW(pac.ValidateSetupData("ABCQ12345"));
  expect_validation("QuikPay Import File V2.0", "ABCE12345", 1001, kJrDescription);
  expect_validation("QuikPay Import File V2.0", "ABCC12345", 1001, kJrDescription);
}

TEST_F(IntuitPACTest, CompanyNameOfAnotherLengthRaisesTheEditionsDescription) {
  for (const char* code : {"", "ABC123", "ABCE1234", "ABCE123456"}) {
    expect_validation(kFullTitle, std::string(code) + ",1,2,3,4,5,6,7", 1001, kFullDescription);
    expect_validation(kJrTitle, std::string(code) + ",1,2,3,4,5,6,7", 1001, kJrDescription);
  }
  EXPECT_EQ(static_cast<long>(IntuitPACErrorsEnum::errCompanyName), 1001);
}

TEST_F(IntuitPACTest, SevenCharacterCompanyNameIsAcceptedWithAnyCharacters) {
  for (const char* title : {kFullTitle, kJrTitle}) {
    pac.Title = title;
    EXPECT_NO_THROW(pac.ValidateSetupData("abc-xyz,1,2,3,4,5,6,7"));
    EXPECT_NO_THROW(pac.ValidateSetupData("ABCQ123"));
  }
}

TEST_F(IntuitPACTest, PayCodeOf100OrABRaisesTheErrorOfItsField) {
  expect_validation(kFullTitle, "ABCE12345,100,2,3,4,5,6,7", 1002, kPayCodeDescription);
  expect_validation(kFullTitle, "ABCE12345,1,AB,3,4,5,6,7", 1003, kPayCodeDescription);
  expect_validation(kFullTitle, "ABCE12345,1,2,100,4,5,6,7", 1004, kPayCodeDescription);
  expect_validation(kFullTitle, "ABCE12345,1,2,3,AB,5,6,7", 1005, kPayCodeDescription);
  expect_validation(kFullTitle, "ABCE12345,1,2,3,4,-1,6,7", 1006, kPayCodeDescription);
  expect_validation(kFullTitle, "ABCE12345,1,2,3,4,5,100,7", 1007, kPayCodeDescription);
  expect_validation(kFullTitle, "ABCE12345,1,2,3,4,5,6,AB", 1008, kPayCodeDescription);
  EXPECT_EQ(static_cast<long>(IntuitPACErrorsEnum::errPayCode0), 1002);
  EXPECT_EQ(static_cast<long>(IntuitPACErrorsEnum::errPayCode1), 1003);
  EXPECT_EQ(static_cast<long>(IntuitPACErrorsEnum::errPayCode2), 1004);
  EXPECT_EQ(static_cast<long>(IntuitPACErrorsEnum::errVAC), 1005);
  EXPECT_EQ(static_cast<long>(IntuitPACErrorsEnum::errHOL), 1006);
  EXPECT_EQ(static_cast<long>(IntuitPACErrorsEnum::errSIC), 1007);
  EXPECT_EQ(static_cast<long>(IntuitPACErrorsEnum::errOTH), 1008);
}

TEST_F(IntuitPACTest, EmptyPayCodeRaisesToo) {
  expect_validation(kFullTitle, "ABCE12345,1,2,3,4,5,,7", 1007, kPayCodeDescription);
}

TEST_F(IntuitPACTest, PayCodeBoundsAndFractionsPass) {
  pac.Title = kFullTitle;
  EXPECT_NO_THROW(pac.ValidateSetupData("ABCE12345,0,99,2.5,4,5,6,7"));
}

TEST_F(IntuitPACTest, MissingFieldsAndFieldsPastTheSeventhAreNotChecked) {
  pac.Title = kFullTitle;
  EXPECT_NO_THROW(pac.ValidateSetupData(""));
  EXPECT_NO_THROW(pac.ValidateSetupData("ABCE12345,1"));
  EXPECT_NO_THROW(pac.ValidateSetupData("ABCE12345,1,2,3,4,5,6,7,x,y,z,w,more"));
}

TEST_F(IntuitPACTest, TheFirstBadFieldIsReported) {
  expect_validation(kFullTitle, "ABCQ12345,AB,2,3,4,5,6,7", 1001, kFullDescription);
  expect_validation(kFullTitle, "ABCE12345,1,2,3,AB,100,6,7", 1005, kPayCodeDescription);
}

TEST_F(IntuitPACTest, RunCheckValidatesTheCurrentSettingsForTheTitle) {
  pac.Title = kJrTitle;
  pac.SetupData(kJrSetup);
  EXPECT_NO_THROW(pac.run_check());
  pac.Title = kFullTitle;
  expect_error([&] { pac.run_check(); }, 1001, "zorvat.IntuitPAC.ValidateSetupData",
               kFullDescription);
}

}  // namespace
}  // namespace zorvat::formats
