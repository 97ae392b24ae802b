// ADP7 export: every expected line below is written out by hand from the EPIP and
// CSV layouts (tags, hundredths, fill to 79 columns), not taken from a run.
#include "adp7/adp7.h"

#include <gtest/gtest.h>

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

// Company ABC, batch 5, pay number 1, the five pay codes with their names, EPIP.
constexpr const char* kEpipSetup =
    "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP";
constexpr const char* kCsvSetup =
    "ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,CSV";

// "A001" ABC "002" 05 "z" is 13 characters; 66 blanks fill it to 79, "7" is column 80.
const std::string kEpipHeader = "A001ABC00205z" + std::string(66, ' ') + "7\r\n";
// A trailer without totals: "Cz" and 77 blanks.
const std::string kEmptyTrailer = "Cz" + std::string(77, ' ') + "\r\n";

constexpr const char* kCsvTitleLine =
    "Co Code,Batch ID,File #,Pay #,Shift,Reg Hours,O/T Hours,Hours 3 Code,Hours 3 Amount,"
    "Vacation Hours Code,Vacation Hours Amount,Holiday Hours Code,Holiday Hours Amount,"
    "Sick Hours Code,Sick Hours Amount,Hours 4 Code,Hours 4 Amount\r\n";

class ADP7Test : public testing::Test {
 protected:
  bool run(const std::string& setup, const Variant& cards) {
    adp7.SetupData(setup);
    host.ui.answer_save("out.adp");
    return adp7.Execute(cards);
  }
  std::string written() const { return host.files.at("out.adp"); }

  // A card with the given regular, first- and second-level overtime minutes.
  static std::shared_ptr<scripted::MemoryObject> worker(const char* id, std::int32_t reg,
                                                        std::int32_t ot1, std::int32_t ot2) {
    auto result = card(id, std::int32_t{315});
    result->set("REG", reg).set("OT1", ot1).set("OT2", ot2);
    return result;
  }

  void expect_validation(const std::string& setup, long number, const std::string& description) {
    expect_error([&] { adp7.ValidateSetupData(setup); }, number, "zorvat.ADP7.ValidateSetupData",
                 description);
  }

  scripted::Host host;
  ADP7 adp7{host.context()};
};

// --- EPIP -----------------------------------------------------------------------

TEST_F(ADP7Test, EpipWritesHeaderEmployeeLinesAndTrailer) {
  ASSERT_TRUE(run(kEpipSetup, cards({object(worker("E100", 2400, 90, 0)),
                                     object(worker("E200", 480, 0, 45))})));
  const std::string trailer = "C03000000004800 03100000000150 03200000000075z";  // 46 characters
  EXPECT_EQ(written(), kEpipHeader +
                           "B003E1000041010010120004000 0130000150 z\r\n"
                           "B003E2000041010010120000800 016H30000075 z\r\n" +
                           trailer + std::string(33, ' ') + "\r\n");
}

TEST_F(ADP7Test, EpipHeaderIsExactlyEightyCharactersBeforeCrLf) {
  ASSERT_TRUE(run(kEpipSetup, cards({})));
  const std::string file = written();
  const std::size_t end = file.find("\r\n");
  ASSERT_EQ(end, 80u);
  EXPECT_EQ(file[79], '7');
  EXPECT_EQ(file.substr(0, end + 2), kEpipHeader);
}

TEST_F(ADP7Test, EpipEmptyCollectionWritesHeaderAndBareTrailer) {
  ASSERT_TRUE(run(kEpipSetup, cards({})));
  EXPECT_EQ(written(), kEpipHeader + kEmptyTrailer);
}

TEST_F(ADP7Test, EpipCardWithoutRegularTimeHasNoRegularPart) {
  ASSERT_TRUE(run(kEpipSetup, cards({object(worker("E1", 0, 30, 0))})));
  EXPECT_EQ(written(), kEpipHeader + "B003E10041010010130000050 z\r\n" + "C03100000000050 z" +
                           std::string(62, ' ') + "\r\n");
}

TEST_F(ADP7Test, EpipHundredthsAreRoundedToWholeNumbers) {
  // 1 minute is 1.67 hundredths, 7 minutes 11.67: both round up.
  ASSERT_TRUE(run(kEpipSetup, cards({object(worker("E1", 1, 7, 0))})));
  EXPECT_EQ(written(), kEpipHeader + "B003E10041010010120000002 0130000012 z\r\n" +
                           "C03000000000002 03100000000012 z" + std::string(47, ' ') + "\r\n");
}

TEST_F(ADP7Test, EpipShiftAndPayNumberAndBatchFormats) {
  auto c = worker("X9", 60, 0, 0);
  c->set("Shift", "3");
  ASSERT_TRUE(run("Q1,0,22,H3,,VA,,HO,,SI,,OT,,EPIP", cards({object(c)})));
  EXPECT_EQ(written(), "A001Q100200z" + std::string(67, ' ') + "7\r\n" +
                           "B003X900422010030120000100 z\r\n" + "C03000000000100 z" +
                           std::string(62, ' ') + "\r\n");
}

TEST_F(ADP7Test, EpipSecondLevelOvertimeTotalUpTo32767MinutesIsWritten) {
  // 32,767 minutes are 54,611.67 hundredths.
  ASSERT_TRUE(run(kEpipSetup, cards({object(worker("E1", 0, 0, 32767))})));
  EXPECT_EQ(written(), kEpipHeader + "B003E1004101001016H30054612 z\r\n" + "C03200000054612z" +
                           std::string(63, ' ') + "\r\n");
}

TEST_F(ADP7Test, EpipSecondLevelOvertimeTotalPast32767MinutesOverflows) {
  expect_error(
      [&] {
        run(kEpipSetup,
            cards({object(worker("E1", 0, 0, 20000)), object(worker("E2", 0, 0, 12768))}));
      },
      rt::kOverflow, "zorvat.ADP7.Execute", "Overflow");
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.save_requests.empty());
  EXPECT_EQ(adp7.SetupData(), kEpipSetup);
}

TEST_F(ADP7Test, EpipRegularTotalsAreNotLimited) {
  // 3,000,000 minutes: 5,000,000 hundredths on the line, eleven digits in the trailer.
  ASSERT_TRUE(run(kEpipSetup, cards({object(worker("E1", 3000000, 0, 0))})));
  EXPECT_EQ(written(), kEpipHeader + "B003E10041010010125000000 z\r\n" + "C03000005000000 z" +
                           std::string(62, ' ') + "\r\n");
}

TEST_F(ADP7Test, EpipFilterLacksTheDotAndNameLeadsWithTheBatch) {
  ASSERT_TRUE(run(kEpipSetup, cards({})));
  ASSERT_EQ(host.ui.save_requests.size(), 1u);
  EXPECT_EQ(host.ui.save_requests[0].filter, "EPIP (*.ABC) | *ABC");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "05EXTPAY.ABC");
}

TEST_F(ADP7Test, EpipHeaderLongerThan79CharactersRaises) {
  // A 69-character company code makes the header exactly 79 before the "7".
  const std::string company69(69, 'C');
  ASSERT_TRUE(run(company69 + ",5,1,H3,,VA,,HO,,SI,,OT,,EPIP", cards({})));
  EXPECT_EQ(written().substr(0, 82), "A001" + company69 + "00205z7\r\n");

  const std::string company70(70, 'C');
  const std::string setup = company70 + ",5,1,H3,,VA,,HO,,SI,,OT,,EPIP";
  expect_error([&] { run(setup, cards({})); }, rt::kInvalidProcedureCall, "zorvat.ADP7.Execute",
               "Invalid procedure call or argument");
  EXPECT_EQ(host.files.writes, 1);  // only the first export
  EXPECT_EQ(adp7.SetupData(), setup);
}

// --- CSV ------------------------------------------------------------------------

TEST_F(ADP7Test, CsvWritesTitleLineAndOneLinePerExportedCard) {
  auto ann = worker("E100", 2400, 90, 0);
  ann->set("VAC", std::int32_t{480});
  auto bob = worker("E200", 30, 0, 45);
  bob->set("Shift", std::int32_t{2}).set("OTH", std::int32_t{15});
  ASSERT_TRUE(run(kCsvSetup, cards({object(ann), object(bob)})));
  EXPECT_EQ(written(), std::string(kCsvTitleLine) +
                           "ABC,5,E100,1,1,40.00,1.50,VA,8.00\r\n"
                           "ABC,5,E200,1,2,.50,.00,H3,.75,OT,.25\r\n");
}

TEST_F(ADP7Test, CsvLeavesOutExtraPayCodesThatAreEmpty) {
  auto ann = worker("E100", 60, 0, 30);
  ann->set("VAC", std::int32_t{120}).set("HOL", std::int32_t{480}).set("SIC", std::int32_t{90});
  ASSERT_TRUE(run("ABC,7,2,,Hours 3,VA,Vacation Hours,,Holiday Hours,SI,Sick Hours,,Hours 4,CSV",
                  cards({object(ann)})));
  EXPECT_EQ(written(),
            "Co Code,Batch ID,File #,Pay #,Shift,Reg Hours,O/T Hours,Vacation Hours Code,"
            "Vacation Hours Amount,Sick Hours Code,Sick Hours Amount\r\n"
            "ABC,7,E100,2,1,1.00,.00,VA,2.00,SI,1.50\r\n");
}

TEST_F(ADP7Test, CsvEmptyCollectionWritesTheTitleLineOnly) {
  ASSERT_TRUE(run(kCsvSetup, cards({})));
  EXPECT_EQ(written(), kCsvTitleLine);
}

TEST_F(ADP7Test, AnyFormatOtherThanEpipWritesCsv) {
  ASSERT_TRUE(
      run("ABC,5,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,"
          "Hours 4,epip",
          cards({})));
  EXPECT_EQ(written(), kCsvTitleLine);
}

TEST_F(ADP7Test, CsvFilterAndProposedName) {
  ASSERT_TRUE(run(kCsvSetup, cards({})));
  ASSERT_EQ(host.ui.save_requests.size(), 1u);
  EXPECT_EQ(host.ui.save_requests[0].filter, "CSV (*.csv) | *.csv");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "EPIABC05.CSV");
}

TEST_F(ADP7Test, CsvKeepsNoTotalsSoLargeOvertimeDoesNotOverflow) {
  ASSERT_TRUE(run(kCsvSetup,
                  cards({object(worker("E1", 0, 0, 20000)), object(worker("E2", 0, 0, 12768))})));
  EXPECT_EQ(written(), std::string(kCsvTitleLine) +
                           "ABC,5,E1,1,1,.00,.00,H3,333.33\r\n"
                           "ABC,5,E2,1,1,.00,.00,H3,212.80\r\n");
}

// --- Which cards are exported ---------------------------------------------------

TEST_F(ADP7Test, CardWithOnlyVacationIsNotExportedInEitherLayout) {
  auto vacation = worker("V1", 0, 0, 0);
  vacation->set("VAC", std::int32_t{480});
  ASSERT_TRUE(run(kEpipSetup, cards({object(vacation)})));
  EXPECT_EQ(written(), kEpipHeader + kEmptyTrailer);
  ASSERT_TRUE(run(kCsvSetup, cards({object(vacation)})));
  EXPECT_EQ(written(), kCsvTitleLine);
}

TEST_F(ADP7Test, CardWhoseTimeCancelsOutIsNotExported) {
  const Variant cancelling = cards({object(worker("Z1", 60, -60, 0))});
  ASSERT_TRUE(run(kEpipSetup, cancelling));
  EXPECT_EQ(written(), kEpipHeader + kEmptyTrailer);
  ASSERT_TRUE(run(kCsvSetup, cancelling));
  EXPECT_EQ(written(), kCsvTitleLine);
}

// --- Batch number ---------------------------------------------------------------

TEST_F(ADP7Test, BatchNumberAdvancesAfterTheFileIsWritten) {
  ASSERT_TRUE(run(kEpipSetup, cards({})));
  EXPECT_EQ(adp7.SetupData(),
            "ABC,6,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP");
  ASSERT_TRUE(run(adp7.SetupData(), cards({})));
  EXPECT_EQ(adp7.SetupData(),
            "ABC,7,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP");
}

TEST_F(ADP7Test, BatchNumberAfter99IsZero) {
  ASSERT_TRUE(run("ABC,99,1,H3,,VA,,HO,,SI,,OT,,CSV", cards({})));
  EXPECT_EQ(adp7.SetupData(), "ABC,0,1,H3,,VA,,HO,,SI,,OT,,CSV");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "EPIABC99.CSV");
  ASSERT_TRUE(run("ABC,98,1,H3,,VA,,HO,,SI,,OT,,CSV", cards({})));
  EXPECT_EQ(adp7.SetupData(), "ABC,99,1,H3,,VA,,HO,,SI,,OT,,CSV");
}

TEST_F(ADP7Test, CancelledDialogReturnsFalseWritesNothingAndKeepsTheBatch) {
  adp7.SetupData(kEpipSetup);
  host.ui.answer_save_cancel();
  EXPECT_FALSE(adp7.Execute(cards({object(worker("E1", 60, 0, 0))})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.messages.empty());
  EXPECT_EQ(adp7.SetupData(), kEpipSetup);
}

TEST_F(ADP7Test, EmptyFileNameShowsTheMessageAndKeepsTheBatch) {
  adp7.SetupData(kCsvSetup);
  host.ui.answer_save("");
  EXPECT_FALSE(adp7.Execute(cards({object(worker("E1", 60, 0, 0))})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_EQ(host.ui.message_texts(), std::vector<std::string>{"No file name selected!"});
  EXPECT_EQ(adp7.SetupData(), kCsvSetup);
}

TEST_F(ADP7Test, ANonNumericBatchFailsWhenItIsAdvancedAfterTheWrite) {
  // The export checks nothing itself; the host runs ValidateSetupData first.
  const std::string setup = "ABC,A,1,H3,,VA,,HO,,SI,,OT,,CSV";
  expect_error([&] { run(setup, cards({})); }, rt::kTypeMismatch, "zorvat.ADP7.Execute",
               "Type mismatch");
  EXPECT_EQ(host.files.writes, 1);
  EXPECT_EQ(host.ui.save_requests[0].file_name, "EPIABCA.CSV");
  EXPECT_EQ(adp7.SetupData(), setup);
}

TEST_F(ADP7Test, ExecuteDoesNotValidateTheSettings) {
  // A one-character pay code would fail ValidateSetupData; the export writes it.
  ASSERT_TRUE(run("ABC,5,1,H,,VA,,HO,,SI,,OT,,EPIP", cards({object(worker("E1", 0, 0, 60))})));
  EXPECT_EQ(written(), kEpipHeader + "B003E1004101001016H0000100 z\r\n" + "C03200000000100z" +
                           std::string(63, ' ') + "\r\n");
}

TEST_F(ADP7Test, SettingsAreRewrittenAsSplitAndJoined) {
  const std::string setup = kEpipSetup + std::string(",extra");
  ASSERT_TRUE(run(setup, cards({})));
  EXPECT_EQ(adp7.SetupData(),
            "ABC,6,1,H3,Hours 3,VA,Vacation Hours,HO,Holiday Hours,SI,Sick Hours,OT,Hours 4,EPIP,"
            "extra");
}

// --- Run-time failures ----------------------------------------------------------

TEST_F(ADP7Test, MissingPropertyReachesTheHostAsExecute) {
  auto broken = worker("E1", 60, 0, 0);
  broken->remove("ExportID");
  try {
    run(kEpipSetup, cards({object(broken)}));
    FAIL() << "no error raised";
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), rt::kObjectDoesntSupport);
    EXPECT_EQ(error.description(), "Object doesn't support this property or method");
    EXPECT_EQ(error.source(), "zorvat.ADP7.Execute");
    EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.ADP7.Execute"}));
  }
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_EQ(adp7.SetupData(), kEpipSetup);
}

TEST_F(ADP7Test, NonNumericMinutesAreATypeMismatch) {
  auto broken = worker("E1", 60, 0, 0);
  broken->set("OT1", "lots");
  expect_error([&] { run(kCsvSetup, cards({object(broken)})); }, rt::kTypeMismatch,
               "zorvat.ADP7.Execute", "Type mismatch");
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(ADP7Test, ShortSettingsAreAnIndexFailure) {
  for (const char* setup : {"", "ABC,5,1", "ABC,5,1,H3,,VA,,HO,,SI,,OT,"}) {
    expect_error([&] { run(setup, cards({})); }, rt::kSubscriptOutOfRange, "zorvat.ADP7.Execute",
                 "Subscript out of range");
  }
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(ADP7Test, FileErrorsAreRaisedWithTheExecuteSourceAndKeepTheBatch) {
  host.files.fail_path("out.adp", rt::kPathNotFound);
  expect_error([&] { run(kCsvSetup, cards({})); }, rt::kPathNotFound, "zorvat.ADP7.Execute",
               "Path not found");
  EXPECT_EQ(adp7.SetupData(), kCsvSetup);
}

TEST_F(ADP7Test, SetupIsNotAvailableWithoutAForm) {
  adp7.SetupData(kCsvSetup);
  try {
    adp7.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.source(), "zorvat.ADP7.Setup");
  }
  EXPECT_EQ(adp7.SetupData(), kCsvSetup);
}

// --- ValidateSetupData ----------------------------------------------------------

TEST_F(ADP7Test, BatchOutsideZeroTo99RaisesErrBatchSeqNum) {
  for (const char* batch : {"100", "-1", "A", "", "99.5"})
    expect_validation(std::string("ABC,") + batch + ",1,H3,,VA,,HO,,SI,,OT,,EPIP", 1002,
                      "Batch Sequence Number must be between 0 and 99");
  EXPECT_EQ(static_cast<long>(ADP7ErrorsEnum::errBatchSeqNum), 1002);
}

TEST_F(ADP7Test, BatchZeroAnd99Pass) {
  EXPECT_NO_THROW(adp7.ValidateSetupData("ABC,0,1,H3,,VA,,HO,,SI,,OT,,EPIP"));
  EXPECT_NO_THROW(adp7.ValidateSetupData("ABC,99,1,H3,,VA,,HO,,SI,,OT,,EPIP"));
  EXPECT_NO_THROW(adp7.ValidateSetupData("ABC,2.5,1,H3,,VA,,HO,,SI,,OT,,EPIP"));
}

TEST_F(ADP7Test, OneCharacterVacationPayCodeRaises1006) {
  expect_validation("ABC,5,1,H3,,V,,HO,,SI,,OT,,EPIP", 1006,
                    "Paycode field must be at least 2 characters in length");
  EXPECT_EQ(static_cast<long>(ADP7ErrorsEnum::errVACPayCode), 1006);
}

TEST_F(ADP7Test, EachShortPayCodeRaisesItsOwnNumber) {
  const std::string description = "Paycode field must be at least 2 characters in length";
  expect_validation("ABC,5,1,H,,VA,,HO,,SI,,OT,,EPIP", 1004, description);
  expect_validation("ABC,5,1,H3,,VA,,,,SI,,OT,,EPIP", 1008, description);  // empty
  expect_validation("ABC,5,1,H3,,VA,,HO,,S,,OT,,EPIP", 1010, description);
  expect_validation("ABC,5,1,H3,,VA,,HO,,SI,,O,,EPIP", 1012, description);
  EXPECT_EQ(static_cast<long>(ADP7ErrorsEnum::errOT2PayCode), 1004);
  EXPECT_EQ(static_cast<long>(ADP7ErrorsEnum::errHOLPayCode), 1008);
  EXPECT_EQ(static_cast<long>(ADP7ErrorsEnum::errSICPayCode), 1010);
  EXPECT_EQ(static_cast<long>(ADP7ErrorsEnum::errOTHPayCode), 1012);
}

TEST_F(ADP7Test, OnlyBatchAndPayCodesAreChecked) {
  // Company code, pay number (the third field), code names and format pass as they are.
  EXPECT_NO_THROW(adp7.ValidateSetupData(",5,,H3,,VA,,HO,,SI,,OT,,"));
  EXPECT_NO_THROW(adp7.ValidateSetupData("A,5,X,H3,x,VA,x,HO,x,SI,x,OT,x,anything,more,x"));
}

TEST_F(ADP7Test, FewerFieldsAreCheckedOnlyAsFarAsTheyGo) {
  EXPECT_NO_THROW(adp7.ValidateSetupData(""));
  EXPECT_NO_THROW(adp7.ValidateSetupData("ABC"));
  EXPECT_NO_THROW(adp7.ValidateSetupData("ABC,5,1"));
  EXPECT_NO_THROW(adp7.ValidateSetupData("ABC,5,1,H3,,VA,,HO,,SI,,OT"));
  expect_validation("ABC,100", 1002, "Batch Sequence Number must be between 0 and 99");
  expect_validation("ABC,5,1,H", 1004, "Paycode field must be at least 2 characters in length");
}

TEST_F(ADP7Test, TheFirstBadFieldIsReported) {
  expect_validation("ABC,A,1,H,,V,,HO,,SI,,OT,,EPIP", 1002,
                    "Batch Sequence Number must be between 0 and 99");
  expect_validation("ABC,5,1,H3,,V,,H,,SI,,OT,,EPIP", 1006,
                    "Paycode field must be at least 2 characters in length");
}

TEST_F(ADP7Test, RunCheckValidatesTheCurrentSettings) {
  EXPECT_EQ(adp7.check_method_name(), "ValidateSetupData");
  adp7.SetupData("ABC,5,1,H3,,VA,,HO,,SI,,O,,EPIP");
  expect_error([&] { adp7.run_check(); }, 1012, "zorvat.ADP7.ValidateSetupData",
               "Paycode field must be at least 2 characters in length");
  adp7.SetupData(kEpipSetup);
  EXPECT_NO_THROW(adp7.run_check());
}

}  // namespace
}  // namespace zorvat::formats
