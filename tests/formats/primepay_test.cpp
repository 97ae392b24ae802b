// PrimePay export: every expected line below is written out by hand from the header
// and detail layouts (positions, zero-filled columns, blanks), not taken from a run.
#include "primepay/primepay.h"

#include <gtest/gtest.h>

#include "raised.h"
#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

using scripted::card;
using scripted::collection;
using scripted::object;

// Batch 4; pay codes OT1 02, OT2 20, VAC 23, HOL 24, SIC 25, OTH 28.
constexpr const char* kSetup = "4,02,20,23,24,25,28";

// Today 8 March 2004 (the scripted host's clock), period ending 6 March 2004.
constexpr const char* kHeader =
    "HPTA1000103/08/04Brantell Time Recorder               N03/06/04\r\n";

// A regular line: "D", the number (2-7), a blank (8), the hundredths (9-14), 48
// blanks (15-62) and the batch (63-65).
std::string regular_line(std::string_view number, std::string_view hundredths,
                         std::string_view batch) {
  return "D" + std::string(number) + " " + std::string(hundredths) + std::string(48, ' ') +
         std::string(batch) + "\r\n";
}
// Any other line: "D", the number (2-7), a blank (8), 11 blanks (9-19), the
// hundredths (20-26), the pay code (27-28), 34 blanks (29-62) and the batch (63-65).
std::string other_line(std::string_view number, std::string_view hundredths, std::string_view code,
                       std::string_view batch) {
  return "D" + std::string(number) + " " + std::string(11, ' ') + std::string(hundredths) +
         std::string(code) + std::string(34, ' ') + std::string(batch) + "\r\n";
}

class PrimePayTest : public testing::Test {
 protected:
  // Runs Execute with `setup` on `cards`, answering the Save dialog with "out.dat".
  bool run(const std::string& setup, const Variant& cards) {
    primepay.SetupData(setup);
    host.ui.answer_save("out.dat");
    return primepay.Execute(cards);
  }
  std::string written() const { return host.files.at("out.dat"); }

  // Employee 315 with the given minutes by category.
  static Variant employee(std::int32_t reg, std::int32_t ot1 = 0, std::int32_t ot2 = 0,
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
  // A collection for the period ending 6 March 2004.
  static Variant cards(std::vector<Variant> elements) {
    auto result = collection(std::move(elements));
    result->set("PeriodEnd", Date::from_civil(2004, 3, 6));
    return object(result);
  }

  Error execute_error(const std::string& setup, const Variant& cards) {
    return testing_support::raised_by([&] { run(setup, cards); });
  }
  Error validate_error(const std::string& setup) {
    SCOPED_TRACE(setup);
    return testing_support::raised_by([&] { primepay.ValidateSetupData(setup); });
  }

  scripted::Host host;
  PrimePay primepay{host.context()};
};

TEST_F(PrimePayTest, EmployeeWithRegularAndOvertimeGivesTheTwoLines) {
  ASSERT_TRUE(run(kSetup, cards({employee(450, 90)})));
  EXPECT_EQ(written(), std::string(kHeader) +
                           "D000315 000750                                                004\r\n"
                           "D000315            000015002                                  004\r\n");
  EXPECT_EQ(primepay.SetupData(), kSetup);
  ASSERT_EQ(host.ui.save_requests.size(), 1u);
  EXPECT_EQ(host.ui.save_requests[0].filter, "PrimePay PrimeLink Import File (*.DAT) | *.DAT");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "");
}

TEST_F(PrimePayTest, LinesHaveTheirFixedLengths) {
  ASSERT_TRUE(run(kSetup, cards({employee(450, 90)})));
  const std::string text = written();
  ASSERT_EQ(text.size(), (63u + 2u) + 2u * (65u + 2u));
  EXPECT_EQ(text.substr(63, 2), "\r\n");
  EXPECT_EQ(text.substr(65 + 65, 2), "\r\n");
  EXPECT_EQ(text.substr(65 + 67 + 65, 2), "\r\n");
}

TEST_F(PrimePayTest, EmptyCollectionWritesOnlyTheHeaderLine) {
  ASSERT_TRUE(run(kSetup, cards({})));
  EXPECT_EQ(written(), kHeader);
}

TEST_F(PrimePayTest, HeaderTakesTodayFromTheClockAndTheCollectionsPeriodEnd) {
  host.clock.set(Date::from_civil(2026, 11, 21));
  auto period = collection();
  period->set("PeriodEnd", Date::from_civil(2026, 1, 4));
  ASSERT_TRUE(run(kSetup, object(period)));
  EXPECT_EQ(written(), "HPTA1000111/21/26Brantell Time Recorder               N01/04/26\r\n");
}

TEST_F(PrimePayTest, HeaderNameFieldIsThirtySevenCharactersWide) {
  ASSERT_TRUE(run(kSetup, cards({})));
  const std::string header = written();
  EXPECT_EQ(header.size(), 65u);
  EXPECT_EQ(header.substr(17, 37), "Brantell Time Recorder               ");
  EXPECT_EQ(header[54], 'N');
}

TEST_F(PrimePayTest, BatchZeroWritesThreeBlanks) {
  ASSERT_TRUE(run("0,02,20,23,24,25,28", cards({employee(60, 60)})));
  EXPECT_EQ(written(), std::string(kHeader) + regular_line("000315", "000100", "   ") +
                           other_line("000315", "0000100", "02", "   "));
}

TEST_F(PrimePayTest, BatchSevenWritesZeroFilledThreeDigits) {
  ASSERT_TRUE(run("7,02,20,23,24,25,28", cards({employee(60)})));
  EXPECT_EQ(written(), std::string(kHeader) + regular_line("000315", "000100", "007"));
  ASSERT_TRUE(run("127,02,20,23,24,25,28", cards({employee(60)})));
  EXPECT_EQ(written(), std::string(kHeader) + regular_line("000315", "000100", "127"));
}

TEST_F(PrimePayTest, OtherTimeIsWrittenWithTheSickPayCode) {
  ASSERT_TRUE(run(kSetup, cards({employee(0, 0, 0, 0, 0, 0, 120)})));
  EXPECT_EQ(written(), std::string(kHeader) + other_line("000315", "0000200", "25", "004"));
}

TEST_F(PrimePayTest, EveryHourTypeInOrderWithItsPayCode) {
  ASSERT_TRUE(run(kSetup, cards({employee(60, 120, 180, 240, 300, 360, 420)})));
  EXPECT_EQ(written(), std::string(kHeader) + regular_line("000315", "000100", "004") +
                           other_line("000315", "0000200", "02", "004") +
                           other_line("000315", "0000300", "20", "004") +
                           other_line("000315", "0000400", "23", "004") +
                           other_line("000315", "0000500", "24", "004") +
                           other_line("000315", "0000600", "25", "004") +
                           other_line("000315", "0000700", "25", "004"));
}

TEST_F(PrimePayTest, PayCodesAreTwoDigits) {
  ASSERT_TRUE(run("4,2,20,23,24,25,28", cards({employee(0, 60)})));
  EXPECT_EQ(written(), std::string(kHeader) + other_line("000315", "0000100", "02", "004"));
}

TEST_F(PrimePayTest, OneMinuteIsTwoHundredthsAndFiveMinutesEight) {
  ASSERT_TRUE(run(kSetup, cards({employee(1), employee(5), employee(30)})));
  EXPECT_EQ(written(), std::string(kHeader) + regular_line("000315", "000002", "004") +
                           regular_line("000315", "000008", "004") +
                           regular_line("000315", "000050", "004"));
  EXPECT_EQ(written().substr(65 + 8, 6), "000002");
}

TEST_F(PrimePayTest, HundredthsRoundToTheNearestWholeNumber) {
  // 2 minutes are 3.33 hundredths, 3 exactly 5, 4 are 6.67.
  ASSERT_TRUE(run(kSetup, cards({employee(2, 3, 4)})));
  EXPECT_EQ(written(), std::string(kHeader) + regular_line("000315", "000003", "004") +
                           other_line("000315", "0000005", "02", "004") +
                           other_line("000315", "0000007", "20", "004"));
}

TEST_F(PrimePayTest, FractionalMinutesBecomeWholeMinutesHalfToEvenFirst) {
  // 2.5 minutes are taken as 2 (3 hundredths), 3.5 as 4 (7 hundredths).
  auto fractions = card("E100", std::int32_t{315});
  fractions->set("REG", 2.5).set("OT1", 3.5);
  ASSERT_TRUE(run(kSetup, cards({object(fractions)})));
  EXPECT_EQ(written(), std::string(kHeader) + regular_line("000315", "000003", "004") +
                           other_line("000315", "0000007", "02", "004"));
}

TEST_F(PrimePayTest, CardWhoseTotalsSumToZeroWritesNothing) {
  ASSERT_TRUE(run(kSetup, cards({employee(0), employee(60, -60), employee(0, 0, 0, 30, 0, -30)})));
  EXPECT_EQ(written(), kHeader);
}

TEST_F(PrimePayTest, ZeroAndNegativeTypesAreSkipped) {
  ASSERT_TRUE(run(kSetup, cards({employee(-30, 90)})));
  EXPECT_EQ(written(), std::string(kHeader) + other_line("000315", "0000150", "02", "004"));
}

TEST_F(PrimePayTest, CardsFollowInCollectionOrder) {
  auto bob = card("E7", "7");
  bob->set("VAC", std::int32_t{480});
  ASSERT_TRUE(run(kSetup, cards({object(bob), employee(60)})));
  EXPECT_EQ(written(), std::string(kHeader) + other_line("000007", "0000800", "23", "004") +
                           regular_line("000315", "000100", "004"));
}

TEST_F(PrimePayTest, WideValuesMakeTheLineLonger) {
  auto big = card("E1", std::int32_t{1234567});
  big->set("REG", std::int32_t{600000});  // 10,000 hours: seven digits of hundredths
  ASSERT_TRUE(run(kSetup, cards({object(big)})));
  EXPECT_EQ(written(),
            std::string(kHeader) + "D1234567 1000000" + std::string(48, ' ') + "004\r\n");
}

TEST_F(PrimePayTest, CurrencyAndParenthesisNumbersAreReadAsNumbers) {
  // "$315" is 315 and "(315)" is -315 to the classic conversion; the sign widens the line.
  auto dollars = card("E1", "$315");
  dollars->set("REG", std::int32_t{60});
  auto negative = card("E2", "(315)");
  negative->set("REG", std::int32_t{60});
  ASSERT_TRUE(run(kSetup, cards({object(dollars), object(negative)})));
  EXPECT_EQ(written(), std::string(kHeader) + regular_line("000315", "000100", "004") +
                           regular_line("-000315", "000100", "004"));
}

TEST_F(PrimePayTest, SettingsAreNotRewrittenByTheExport) {
  ASSERT_TRUE(run(kSetup, cards({employee(60)})));
  EXPECT_EQ(primepay.SetupData(), kSetup);
}

TEST_F(PrimePayTest, CancelledSaveDialogReturnsFalseSilently) {
  primepay.SetupData(kSetup);
  host.ui.answer_save_cancel();
  EXPECT_FALSE(primepay.Execute(cards({employee(60)})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.messages.empty());
}

TEST_F(PrimePayTest, EmptyFileNameShowsTheMessageAndReturnsFalse) {
  primepay.SetupData(kSetup);
  host.ui.answer_save("");
  EXPECT_FALSE(primepay.Execute(cards({employee(60)})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_EQ(host.ui.message_texts(), std::vector<std::string>{"No file name selected!"});
}

TEST_F(PrimePayTest, MissingPeriodEndFailsInTheHeader) {
  const Error error = execute_error(kSetup, object(collection({employee(60)})));
  EXPECT_EQ(error.number(), rt::kObjectDoesntSupport);
  EXPECT_EQ(error.source(), "zorvat.PrimePay.Execute");
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.PrimePay.OutputHeader",
                                                     "zorvat.PrimePay.Execute"}));
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PrimePayTest, MissingCardPropertyFailsInEmployeeRecord) {
  auto broken = card("E1", std::int32_t{1});
  broken->remove("OTH");
  const Error error = execute_error(kSetup, cards({employee(60), object(broken)}));
  EXPECT_EQ(error.number(), rt::kObjectDoesntSupport);
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.PrimePay.EmployeeRecord",
                                                     "zorvat.PrimePay.Execute"}));
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PrimePayTest, HundredthsBeyondThirtyTwoBitsOverflowInMin2HrsinHun) {
  const Error error = execute_error(kSetup, cards({employee(2147483647)}));
  EXPECT_EQ(error.number(), rt::kOverflow);
  EXPECT_EQ(error.description(), "Overflow");
  EXPECT_EQ(error.source(), "zorvat.PrimePay.Execute");
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat.PrimePay.Min2HrsinHun",
                                                     "zorvat.PrimePay.EmployeeRecord",
                                                     "zorvat.PrimePay.Execute"}));
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PrimePayTest, BatchSequenceOutOfRangeOrNotNumericRaises5001) {
  for (const char* batch : {"128", "-1", "abc", ""}) {
    const Error error = validate_error(std::string(batch) + ",02,20,23,24,25,28");
    EXPECT_EQ(error.number(), 5001) << batch;
    EXPECT_EQ(error.number(), static_cast<long>(PrimePayErrorsEnum::errBatchSequenceNumber));
    EXPECT_EQ(error.description(), "Batch Sequence Number invalid") << batch;
    EXPECT_EQ(error.source(), "zorvat.PrimePay.Validate") << batch;
  }
  EXPECT_NO_THROW(primepay.ValidateSetupData("0,02,20,23,24,25,28"));
  EXPECT_NO_THROW(primepay.ValidateSetupData("127,02,20,23,24,25,28"));
}

TEST_F(PrimePayTest, PayCodeOutOfRangeRaisesItsNumber) {
  const PrimePayErrorsEnum expected[] = {PrimePayErrorsEnum::errOT1, PrimePayErrorsEnum::errOT2,
                                         PrimePayErrorsEnum::errVAC, PrimePayErrorsEnum::errHOL,
                                         PrimePayErrorsEnum::errSIC, PrimePayErrorsEnum::errOTH};
  for (std::size_t position = 1; position <= 6; ++position) {
    for (const char* code : {"100", "-1"}) {
      SettingsFields fields(kSetup);
      fields.at(position) = code;
      const Error error = validate_error(fields.join());
      EXPECT_EQ(error.number(), 5001 + static_cast<long>(position)) << code;
      EXPECT_EQ(error.number(), static_cast<long>(expected[position - 1]));
      EXPECT_EQ(error.description(), "Paycode field invalid");
      EXPECT_EQ(error.source(), "zorvat.PrimePay.Validate");
    }
  }
  EXPECT_NO_THROW(primepay.ValidateSetupData("4,0,99,0,99,0,99"));
}

TEST_F(PrimePayTest, NonNumericPayCodeIsATypeMismatchInValidation) {
  const Error error = validate_error("4,AB,20,23,24,25,28");
  EXPECT_EQ(error.number(), rt::kTypeMismatch);
  EXPECT_EQ(error.description(), "Type mismatch");
  EXPECT_EQ(error.source(), "zorvat.PrimePay.Validate");
}

TEST_F(PrimePayTest, ShortSettingsValidateOnlyThePresentFields) {
  EXPECT_NO_THROW(primepay.ValidateSetupData(""));
  EXPECT_NO_THROW(primepay.ValidateSetupData("4,02"));
  EXPECT_EQ(validate_error("4,02,100").number(), 5003);
}

TEST_F(PrimePayTest, ShortSettingsFailOnlyWhereAMissingFieldIsRead) {
  ASSERT_TRUE(run("4", cards({employee(60)})));
  EXPECT_EQ(written(), std::string(kHeader) + regular_line("000315", "000100", "004"));
  const Error error = execute_error("4", cards({employee(0, 60)}));
  EXPECT_EQ(error.number(), rt::kSubscriptOutOfRange);
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.PrimePay.EmployeeRecord",
                                                     "zorvat.PrimePay.Execute"}));
}

TEST_F(PrimePayTest, RunCheckRaisesWithTheValidateSource) {
  primepay.SetupData("4,02,20,23,24,25,100");
  try {
    primepay.run_check();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 5007);
    EXPECT_EQ(error.source(), "zorvat.PrimePay.Validate");
  }
}

TEST_F(PrimePayTest, ValidationErrorOfExecuteCarriesTheExecuteSource) {
  const Error error = execute_error("128,02,20,23,24,25,28", cards({employee(60)}));
  EXPECT_EQ(error.number(), 5001);
  EXPECT_EQ(error.description(), "Batch Sequence Number invalid");
  EXPECT_EQ(error.source(), "zorvat.PrimePay.Execute");
  EXPECT_TRUE(host.ui.save_requests.empty());
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PrimePayTest, SetupIsNotAvailableWithoutAForm) {
  try {
    primepay.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.source(), "zorvat.PrimePay.Setup");
  }
}

}  // namespace
}  // namespace zorvat::formats
