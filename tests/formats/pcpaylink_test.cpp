// PCPayLink export: every expected record below is written out by hand from the
// header, detail and trailer layouts (tags, line numbers, hours, counts), not taken
// from a run.
#include "pcpaylink/pcpaylink.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// Office 7, client A001, site 3, sequence 12; earning codes VA, HO, QS, R3.
constexpr const char* kSetup = "7,A001,3,12,VA,HO,QS,R3";
constexpr const char* kHeader = "00000IM0005|0010007A001|\n";

class PCPayLinkTest : public testing::Test {
 protected:
  bool run(const std::string& setup, const Variant& cards) {
    paylink.SetupData(setup);
    host.ui.answer_save("out.txt");
    return paylink.Execute(cards);
  }
  std::string written() const { return host.files.at("out.txt"); }

  // Employee 315 with the given minutes in REG, OT1, OT2, VAC, HOL, SIC, OTH.
  static std::shared_ptr<scripted::MemoryObject> employee(std::vector<std::int32_t> minutes) {
    auto result = card("E1", std::int32_t{315});
    const char* categories[] = {"REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"};
    for (std::size_t i = 0; i < minutes.size(); ++i) result->set(categories[i], minutes[i]);
    return result;
  }

  void expect_validation(const std::string& setup, long number, const std::string& description) {
    expect_error([&] { paylink.ValidateSetupData(setup); }, number,
                 "zorvat.PCPayLink.ValidateSetupData", description);
  }

  scripted::Host host;
  PCPayLink paylink{host.context()};
};

// --- Layout ---------------------------------------------------------------------

TEST_F(PCPayLinkTest, EmptyCollectionWritesHeaderAndEmptyTrailer) {
  ASSERT_TRUE(run(kSetup, cards({})));
  EXPECT_EQ(written(), std::string(kHeader) + "FF05B1|05C2|05D0|05E0|");
}

TEST_F(PCPayLinkTest, RegularAndOvertimeGiveTwoNumberedRecords) {
  ASSERT_TRUE(run(kSetup, cards({object(employee({2400, 150}))})));
  EXPECT_EQ(written(), std::string(kHeader) +
                           "01E030315|E04C|E0501|E0601|E09R1|E0A40.00|\n"
                           "01E030315|E04C|E0501|E0602|E09R1|E0C2.50|\n"
                           "FF05B3|05C14|05D1|05E2|");
}

TEST_F(PCPayLinkTest, EveryCategoryHasItsRatePieceInTableOrder) {
  ASSERT_TRUE(run(kSetup, cards({object(employee({60, 30, 15, 120, 480, 45, 1}))})));
  EXPECT_EQ(written(), std::string(kHeader) +
                           "01E030315|E04C|E0501|E0601|E09R1|E0A1.00|\n"
                           "01E030315|E04C|E0501|E0602|E09R1|E0C.50|\n"
                           "01E030315|E04C|E0501|E0603|E09R2|E0C.25|\n"
                           "01E030315|E04C|E0501|E0604|E09VA|E0C2.00|\n"
                           "01E030315|E04C|E0501|E0605|E09HO|E0C8.00|\n"
                           "01E030315|E04C|E0501|E0606|E09QS|E0C.75|\n"
                           "01E030315|E04C|E0501|E0607|E09R3|E0C.02|\n"
                           "FF05B8|05C44|05D1|05E7|");
}

TEST_F(PCPayLinkTest, VacationOnlyGivesOneRecordAndLeavesTheEmployeeCount) {
  ASSERT_TRUE(run(kSetup, cards({object(employee({0, 0, 0, 90}))})));
  EXPECT_EQ(written(), std::string(kHeader) +
                           "01E030315|E04C|E0501|E0601|E09VA|E0C1.50|\n"
                           "FF05B2|05C8|05D0|05E1|");
}

TEST_F(PCPayLinkTest, ZeroSumEmployeeYieldsNoRecords) {
  ASSERT_TRUE(
      run(kSetup, cards({object(employee({0, 0, 0, 0, 0, 0, 0})), object(employee({60, -60}))})));
  EXPECT_EQ(written(), std::string(kHeader) + "FF05B1|05C2|05D0|05E0|");
}

TEST_F(PCPayLinkTest, NegativeCategoriesAreSkippedWithoutNotice) {
  ASSERT_TRUE(run(kSetup, cards({object(employee({-60, 120}))})));
  EXPECT_EQ(written(), std::string(kHeader) +
                           "01E030315|E04C|E0501|E0601|E09R1|E0C2.00|\n"
                           "FF05B2|05C8|05D0|05E1|");
}

TEST_F(PCPayLinkTest, LineNumbersStartAgainForEachEmployeeAndCountsAddUp) {
  auto second = employee({480, 0, 0, 0, 60});
  second->set("Number", std::int32_t{7});
  ASSERT_TRUE(run(kSetup, cards({object(employee({2400, 150})), object(second)})));
  EXPECT_EQ(written(), std::string(kHeader) +
                           "01E030315|E04C|E0501|E0601|E09R1|E0A40.00|\n"
                           "01E030315|E04C|E0501|E0602|E09R1|E0C2.50|\n"
                           "01E030007|E04C|E0501|E0601|E09R1|E0A8.00|\n"
                           "01E030007|E04C|E0501|E0602|E09HO|E0C1.00|\n"
                           "FF05B5|05C26|05D2|05E4|");
}

TEST_F(PCPayLinkTest, EmployeeNumberFormats) {
  auto text_number = employee({60});
  text_number->set("Number", "A-17");
  auto long_number = employee({60});
  long_number->set("Number", std::int32_t{123456});
  ASSERT_TRUE(run(kSetup, cards({object(text_number), object(long_number)})));
  EXPECT_EQ(written(), std::string(kHeader) +
                           "01E03A-17|E04C|E0501|E0601|E09R1|E0A1.00|\n"
                           "01E03123456|E04C|E0501|E0601|E09R1|E0A1.00|\n"
                           "FF05B3|05C14|05D2|05E2|");
}

TEST_F(PCPayLinkTest, HoursHaveNoLeadingZeroAndRoundToHundredths) {
  // 30 minutes are .50; 1 minute .0166 is .02; 599999 minutes 9999.98.
  ASSERT_TRUE(run(kSetup, cards({object(employee({30, 1, 599999}))})));
  EXPECT_EQ(written(), std::string(kHeader) +
                           "01E030315|E04C|E0501|E0601|E09R1|E0A.50|\n"
                           "01E030315|E04C|E0501|E0602|E09R1|E0C.02|\n"
                           "01E030315|E04C|E0501|E0603|E09R2|E0C9999.98|\n"
                           "FF05B4|05C20|05D1|05E3|");
}

TEST_F(PCPayLinkTest, OfficeNumberIsFourDigitsAndClientIdAsItStands) {
  ASSERT_TRUE(run("7,AB,0,0,VA,HO,QS,R3", cards({})));
  EXPECT_EQ(written(), "00000IM0005|0010007AB|\nFF05B1|05C2|05D0|05E0|");
  ASSERT_TRUE(run("1295,,9,0,VA,HO,QS,R3", cards({})));
  EXPECT_EQ(written(), "00000IM0005|0011295|\nFF05B1|05C2|05D0|05E0|");
}

TEST_F(PCPayLinkTest, RecordsEndWithLineFeedAloneAndTheTrailerWithNothing) {
  ASSERT_TRUE(run(kSetup, cards({object(employee({2400, 150, 0, 90}))})));
  const std::string file = written();
  EXPECT_EQ(file.find('\r'), std::string::npos);
  EXPECT_EQ(file.back(), '|');
  EXPECT_EQ(std::count(file.begin(), file.end(), '\n'), 4);
}

TEST_F(PCPayLinkTest, CountersStartAfreshForEachExport) {
  ASSERT_TRUE(run(kSetup, cards({object(employee({2400, 150}))})));
  ASSERT_TRUE(run(kSetup, cards({object(employee({60}))})));
  EXPECT_EQ(written(), std::string(kHeader) +
                           "01E030315|E04C|E0501|E0601|E09R1|E0A1.00|\n"
                           "FF05B2|05C8|05D1|05E1|");
}

// --- File step and sequence -----------------------------------------------------

TEST_F(PCPayLinkTest, FilterAndNameAreBuiltFromSequenceClientAndSite) {
  ASSERT_TRUE(run("7,A001,3,7,VA,HO,QS,R3", cards({})));
  ASSERT_EQ(host.ui.save_requests.size(), 1u);
  EXPECT_EQ(host.ui.save_requests[0].filter, "PayChex PayLink Import File (*.007) | *.007");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "JJA001I3");
}

TEST_F(PCPayLinkTest, SequencesOfFourDigitsAndMoreKeepAllTheirDigits) {
  ASSERT_TRUE(run("7,AB,0,1000,VA,HO,QS,R3", cards({})));
  EXPECT_EQ(host.ui.save_requests[0].filter, "PayChex PayLink Import File (*.1000) | *.1000");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "JJABI0");
}

TEST_F(PCPayLinkTest, SequenceAdvancesAfterTheFileIsWritten) {
  ASSERT_TRUE(run(kSetup, cards({})));
  EXPECT_EQ(paylink.SetupData(), "7,A001,3,13,VA,HO,QS,R3");
}

TEST_F(PCPayLinkTest, SequenceAfter46655IsZero) {
  ASSERT_TRUE(run("7,A001,3,46655,VA,HO,QS,R3", cards({})));
  EXPECT_EQ(paylink.SetupData(), "7,A001,3,0,VA,HO,QS,R3");
  EXPECT_EQ(host.ui.save_requests[0].filter, "PayChex PayLink Import File (*.46655) | *.46655");
  ASSERT_TRUE(run("7,A001,3,46654,VA,HO,QS,R3", cards({})));
  EXPECT_EQ(paylink.SetupData(), "7,A001,3,46655,VA,HO,QS,R3");
}

TEST_F(PCPayLinkTest, CancellingTheDialogReturnsFalseAndKeepsTheSequence) {
  paylink.SetupData(kSetup);
  host.ui.answer_save_cancel();
  EXPECT_FALSE(paylink.Execute(cards({object(employee({60}))})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.messages.empty());
  EXPECT_EQ(paylink.SetupData(), kSetup);
}

TEST_F(PCPayLinkTest, EmptyFileNameShowsTheMessageAndKeepsTheSequence) {
  paylink.SetupData(kSetup);
  host.ui.answer_save("");
  EXPECT_FALSE(paylink.Execute(cards({object(employee({60}))})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_EQ(host.ui.message_texts(), std::vector<std::string>{"No file name selected!"});
  EXPECT_EQ(paylink.SetupData(), kSetup);
}

TEST_F(PCPayLinkTest, FileErrorsKeepTheSequence) {
  host.files.fail_path("out.txt", rt::kDiskFull);
  expect_error([&] { run(kSetup, cards({})); }, rt::kDiskFull, "zorvat.PCPayLink.Execute",
               "Disk full");
  EXPECT_EQ(paylink.SetupData(), kSetup);
}

// --- Run-time failures ----------------------------------------------------------

TEST_F(PCPayLinkTest, ExecuteValidatesTheSettingsFirst) {
  try {
    run("1296,A001,3,12,VA,HO,QS,R3", cards({object(employee({60}))}));
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 2001);
    EXPECT_EQ(error.description(), "Office Number must be between 0 and 1295");
    EXPECT_EQ(error.source(), "zorvat.PCPayLink.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat.PCPayLink.ValidateSetupData",
                                                       "zorvat.PCPayLink.Execute"}));
  }
  EXPECT_TRUE(host.ui.save_requests.empty());
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PCPayLinkTest, MissingPropertyReachesTheHostAsExecute) {
  auto broken = employee({60});
  broken->remove("Number");
  try {
    run(kSetup, cards({object(broken)}));
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kObjectDoesntSupport);
    EXPECT_EQ(error.source(), "zorvat.PCPayLink.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.PCPayLink.EmployeeRecord",
                                                       "zorvat.PCPayLink.Execute"}));
  }
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_EQ(paylink.SetupData(), kSetup);
}

TEST_F(PCPayLinkTest, Min2HrsFailureCarriesItsSourceUpTheChain) {
  auto broken = employee({});
  broken->set("OT1", std::numeric_limits<double>::infinity());
  try {
    run(kSetup, cards({object(broken)}));
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kOverflow);
    EXPECT_EQ(error.source(), "zorvat.PCPayLink.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat.PCPayLink.Min2Hrs",
                                                       "zorvat.PCPayLink.EmployeeRecord",
                                                       "zorvat.PCPayLink.Execute"}));
  }
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PCPayLinkTest, MissingEarningCodeFailsOnlyWhenItIsNeeded) {
  ASSERT_TRUE(run("7,A001,3,12", cards({object(employee({60}))})));
  expect_error(
      [&] {
        run("7,A001,3,12", cards({object(employee({0, 0, 0, 60}))}));
      },
      rt::kSubscriptOutOfRange, "zorvat.PCPayLink.Execute", "Subscript out of range");
}

TEST_F(PCPayLinkTest, ShortSettingsAreAnIndexFailure) {
  for (const char* setup : {"", "7,A001,3"})
    expect_error([&] { run(setup, cards({})); }, rt::kSubscriptOutOfRange,
                 "zorvat.PCPayLink.Execute", "Subscript out of range");
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PCPayLinkTest, SetupIsNotAvailableWithoutAForm) {
  try {
    paylink.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.source(), "zorvat.PCPayLink.Setup");
  }
}

// --- ValidateSetupData ----------------------------------------------------------

TEST_F(PCPayLinkTest, OfficeNumberFrom0To1295) {
  expect_validation("1296,A001,3,12", 2001, "Office Number must be between 0 and 1295");
  expect_validation("-1,A001,3,12", 2001, "Office Number must be between 0 and 1295");
  expect_validation(",A001,3,12", 2001, "Office Number must be between 0 and 1295");
  expect_validation("A,A001,3,12", 2001, "Office Number must be between 0 and 1295");
  EXPECT_NO_THROW(paylink.ValidateSetupData("1295,A001,3,12"));
  EXPECT_NO_THROW(paylink.ValidateSetupData("0,A001,3,12"));
  EXPECT_NO_THROW(paylink.ValidateSetupData("12.5,A001,3,12"));
  EXPECT_EQ(static_cast<long>(PCPayLinkErrorsEnum::errOfficeNumber), 2001);
}

TEST_F(PCPayLinkTest, ClientIdOfAtMostFourCharacters) {
  expect_validation("7,ABCDE,3,12", 2002, "Client ID must be 4 chars or less");
  EXPECT_NO_THROW(paylink.ValidateSetupData("7,,3,12"));
  EXPECT_NO_THROW(paylink.ValidateSetupData("7,a b!,3,12"));
  EXPECT_EQ(static_cast<long>(PCPayLinkErrorsEnum::errClientID), 2002);
}

TEST_F(PCPayLinkTest, SiteNumberFrom0To9) {
  expect_validation("7,A001,10,12", 2003, "Site Number must be between 0 and 9");
  expect_validation("7,A001,,12", 2003, "Site Number must be between 0 and 9");
  EXPECT_NO_THROW(paylink.ValidateSetupData("7,A001,9,12"));
  EXPECT_EQ(static_cast<long>(PCPayLinkErrorsEnum::errSiteNumber), 2003);
}

TEST_F(PCPayLinkTest, SequenceNumberFrom0To46655) {
  expect_validation("7,A001,3,46656", 2004, "Sequence Number must be between 0 and 46655");
  expect_validation("7,A001,3,ZZZ", 2004, "Sequence Number must be between 0 and 46655");
  EXPECT_NO_THROW(paylink.ValidateSetupData("7,A001,3,46655"));
  EXPECT_NO_THROW(paylink.ValidateSetupData("7,A001,3,0"));
  EXPECT_EQ(static_cast<long>(PCPayLinkErrorsEnum::errSeqNumber), 2004);
}

TEST_F(PCPayLinkTest, EarningCodesAndMissingFieldsAreNotChecked) {
  EXPECT_NO_THROW(paylink.ValidateSetupData(""));
  EXPECT_NO_THROW(paylink.ValidateSetupData("7"));
  EXPECT_NO_THROW(paylink.ValidateSetupData("7,A001,3,12,,,,,extra"));
}

TEST_F(PCPayLinkTest, TheFirstBadFieldIsReported) {
  expect_validation("7,ABCDE,10,46656", 2002, "Client ID must be 4 chars or less");
  expect_validation("7,A001,10,46656", 2003, "Site Number must be between 0 and 9");
}

TEST_F(PCPayLinkTest, RunCheckValidatesTheCurrentSettings) {
  paylink.SetupData("7,A001,3,46656,VA,HO,QS,R3");
  expect_error([&] { paylink.run_check(); }, 2004, "zorvat.PCPayLink.ValidateSetupData",
               "Sequence Number must be between 0 and 46655");
  paylink.SetupData(kSetup);
  EXPECT_NO_THROW(paylink.run_check());
}

}  // namespace
}  // namespace zorvat::formats
