// Peachtree export: every expected ticket line below is written out by hand from
// the column table (23 columns, Duration and Unit Duration formats), not taken from
// a run.
#include "peachtree/peachtree.h"

#include <gtest/gtest.h>

#include <array>

#include "raised.h"
#include "scripted_host.h"
#include "zorvat/error.h"

namespace zorvat::formats {
namespace {

using scripted::card;
using scripted::cards;
using scripted::collection;
using scripted::MemoryObject;
using scripted::object;

// Pay levels 1 to 7, one pay item code per hour type, no titles, next ticket 17.
constexpr const char* kSetup =
    "1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,"
    "ADMN-02003,0,17";
// The same with the next ticket number given.
std::string setup_with_ticket(std::string_view ticket) {
  return "1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,"
         "ADMN-02003,0," +
         std::string(ticket);
}
constexpr const char* kSetupWithTitles =
    "1,2,3,4,5,6,7,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,ADMN-02002,"
    "ADMN-02003,1,17";

constexpr const char* kTitleRow =
    "Employee/Vendor,Recorded by ID,Ticket Number,Ticket Date,Has been used in "
    "Sales/Invoicing,Invoice Number Used,Activity Item ID,Customer/Job/Adm,Completed for ID,"
    "Pay Level,Has been used in Payroll,Manual/Timed Option,Start Time,End Time,Break,Duration,"
    "Internal Memo,Billing Type,Billing Rate,Billing Status,Unit Duration,Billing Amount,"
    "Ticket Description for Invoicing\r\n";

// A day record: its date, its "Hours" and its minutes REG, OT1, OT2, VAC, HOL, SIC,
// OTH.
Variant day(int month, int day_of_month, std::int32_t hours, std::array<std::int32_t, 7> minutes) {
  auto result = std::make_shared<MemoryObject>();
  result->set("DayDate", Date::from_civil(2004, month, day_of_month)).set("Hours", hours);
  const char* names[] = {"REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"};
  for (std::size_t i = 0; i < 7; ++i) result->set(names[i], minutes[i]);
  return object(result);
}

// A card of the given employee with the given days.
Variant employee(std::string export_id, std::vector<Variant> days) {
  auto result = card(std::move(export_id), std::int32_t{315});
  result->set("Days", object(collection(std::move(days))));
  return object(result);
}

class PeachtreeTest : public testing::Test {
 protected:
  // Runs Execute with `setup` on `cards`, answering the Save dialog with "out.csv".
  bool run(const std::string& setup, const Variant& cards) {
    peachtree.SetupData(setup);
    host.ui.answer_save("out.csv");
    return peachtree.Execute(cards);
  }
  std::string written() const { return host.files.at("out.csv"); }

  Error execute_error(const std::string& setup, const Variant& cards) {
    return testing_support::raised_by([&] { run(setup, cards); });
  }
  Error validate_error(const std::string& setup) {
    SCOPED_TRACE(setup);
    return testing_support::raised_by([&] { peachtree.ValidateSetupData(setup); });
  }

  scripted::Host host;
  Peachtree peachtree{host.context()};
};

TEST_F(PeachtreeTest, TicketForFourHundredFiftyMinutesOnThirdOfMarch) {
  ASSERT_TRUE(run(kSetup, cards({employee("E100", {day(3, 3, 450, {450, 0, 0, 0, 0, 0, 0})})})));
  EXPECT_EQ(written(),
            "0,E100,17,03/03/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,8:30,,0,0,2,7.50,0,From "
            "Horalis\r\n");
  EXPECT_EQ(peachtree.SetupData(), setup_with_ticket("18"));
  ASSERT_EQ(host.ui.save_requests.size(), 1u);
  EXPECT_EQ(host.ui.save_requests[0].filter, "Peachtree Complete Import File (*.csv) | *.csv");
  EXPECT_EQ(host.ui.save_requests[0].file_name, "");
}

TEST_F(PeachtreeTest, TitlesOffStartsDirectlyWithTheFirstTicket) {
  ASSERT_TRUE(run(kSetup, cards({employee("E100", {day(3, 1, 60, {60, 0, 0, 0, 0, 0, 0})})})));
  EXPECT_EQ(written(),
            "0,E100,17,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n");
}

TEST_F(PeachtreeTest, TitlesOnWritesTheTitleRowFirst) {
  ASSERT_TRUE(
      run(kSetupWithTitles, cards({employee("E100", {day(3, 1, 60, {60, 0, 0, 0, 0, 0, 0})})})));
  EXPECT_EQ(written(), std::string(kTitleRow) +
                           "0,E100,17,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,1:00,,0,0,2,"
                           "1.00,0,From Horalis\r\n");
}

TEST_F(PeachtreeTest, EmptyCollectionWithTitlesWritesOnlyTheTitleRow) {
  ASSERT_TRUE(run(kSetupWithTitles, cards({})));
  EXPECT_EQ(written(), kTitleRow);
  EXPECT_EQ(peachtree.SetupData(), kSetupWithTitles);
}

TEST_F(PeachtreeTest, EmptyCollectionWithoutTitlesWritesAnEmptyFile) {
  ASSERT_TRUE(run(kSetup, cards({})));
  EXPECT_TRUE(host.files.has("out.csv"));
  EXPECT_EQ(written(), "");
}

TEST_F(PeachtreeTest, DayWithZeroHoursWritesNothingWhateverItsMinutes) {
  ASSERT_TRUE(run(kSetup, cards({employee("E100", {day(3, 1, 0, {480, 60, 0, 0, 0, 0, 0})})})));
  EXPECT_EQ(written(), "");
  EXPECT_EQ(peachtree.SetupData(), kSetup);
}

TEST_F(PeachtreeTest, RegularAndOvertimeOfADayGetConsecutiveTicketsRegularFirst) {
  ASSERT_TRUE(run(kSetup, cards({employee("E100", {day(3, 1, 540, {480, 60, 0, 0, 0, 0, 0})})})));
  EXPECT_EQ(written(),
            "0,E100,17,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,8:00,,0,0,2,8.00,0,From "
            "Horalis\r\n"
            "0,E100,18,03/01/04,FALSE,,ADMN-01001,3,,2,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n");
  EXPECT_EQ(peachtree.SetupData(), setup_with_ticket("19"));
}

TEST_F(PeachtreeTest, TicketNumbersContinueAcrossCardsAndDays) {
  const Variant ann = employee(
      "E100", {day(3, 1, 480, {480, 0, 0, 0, 0, 0, 0}), day(3, 2, 510, {480, 30, 0, 0, 0, 0, 0})});
  const Variant bob = employee(
      "E200", {day(3, 1, 0, {0, 0, 0, 0, 0, 0, 0}), day(3, 5, 480, {0, 0, 0, 480, 0, 0, 0})});
  ASSERT_TRUE(run(kSetup, cards({ann, bob})));
  EXPECT_EQ(written(),
            "0,E100,17,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,8:00,,0,0,2,8.00,0,From "
            "Horalis\r\n"
            "0,E100,18,03/02/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,8:00,,0,0,2,8.00,0,From "
            "Horalis\r\n"
            "0,E100,19,03/02/04,FALSE,,ADMN-01001,3,,2,FALSE,1,,,,1:30,,0,0,2,0.50,0,From "
            "Horalis\r\n"
            "0,E200,20,03/05/04,FALSE,,ADMN-02000,3,,4,FALSE,1,,,,8:00,,0,0,2,8.00,0,From "
            "Horalis\r\n");
  // The last ticket was 20; the next export starts at 21.
  EXPECT_EQ(peachtree.SetupData(), setup_with_ticket("21"));
}

TEST_F(PeachtreeTest, TicketNumberWithAFractionIsRoundedHalfToEvenAtEachTicket) {
  // 7.5 numbers its ticket 8, 8.5 also 8, 9.5 10, 10.5 also 10; 11.5 is left for the
  // next export.
  const Variant ann = employee("E100", {day(3, 1, 240, {60, 60, 60, 60, 0, 0, 0})});
  ASSERT_TRUE(run(setup_with_ticket("7.5"), cards({ann})));
  EXPECT_EQ(written(),
            "0,E100,8,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n"
            "0,E100,8,03/01/04,FALSE,,ADMN-01001,3,,2,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n"
            "0,E100,10,03/01/04,FALSE,,ADMN-01002,3,,3,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n"
            "0,E100,10,03/01/04,FALSE,,ADMN-02000,3,,4,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n");
  EXPECT_EQ(peachtree.SetupData(), setup_with_ticket("11.5"));
}

TEST_F(PeachtreeTest, EachExportTakesItsPayLevelsAndTicketNumberFromItsOwnSettings) {
  const Variant ann = employee("E100", {day(3, 1, 90, {60, 30, 0, 0, 0, 0, 0})});
  ASSERT_TRUE(run(kSetup, cards({ann})));
  // A second export by the same object, with other pay levels and ticket number.
  ASSERT_TRUE(
      run("9,8,7,6,5,4,3,ADMN-01000,ADMN-01001,ADMN-01002,ADMN-02000,ADMN-02001,"
          "ADMN-02002,ADMN-02003,0,40",
          cards({ann})));
  EXPECT_EQ(written(),
            "0,E100,40,03/01/04,FALSE,,ADMN-01000,3,,9,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n"
            "0,E100,41,03/01/04,FALSE,,ADMN-01001,3,,8,FALSE,1,,,,1:30,,0,0,2,0.50,0,From "
            "Horalis\r\n");
}

TEST_F(PeachtreeTest, EachHourTypeTakesItsOwnPayLevelAndItem) {
  ASSERT_TRUE(run(kSetup, cards({employee("E100", {day(3, 1, 1, {60, 60, 60, 60, 60, 60, 60})})})));
  EXPECT_EQ(written(),
            "0,E100,17,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n"
            "0,E100,18,03/01/04,FALSE,,ADMN-01001,3,,2,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n"
            "0,E100,19,03/01/04,FALSE,,ADMN-01002,3,,3,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n"
            "0,E100,20,03/01/04,FALSE,,ADMN-02000,3,,4,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n"
            "0,E100,21,03/01/04,FALSE,,ADMN-02001,3,,5,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n"
            "0,E100,22,03/01/04,FALSE,,ADMN-02002,3,,6,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n"
            "0,E100,23,03/01/04,FALSE,,ADMN-02003,3,,7,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n");
}

TEST_F(PeachtreeTest, NegativeMinutesWriteATicket) {
  ASSERT_TRUE(run(kSetup, cards({employee("E100", {day(3, 1, 60, {-90, 0, 0, 0, 0, 0, 0})})})));
  EXPECT_EQ(written(),
            "0,E100,17,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,-2:-30,,0,0,2,-1.50,0,From "
            "Horalis\r\n");
}

TEST_F(PeachtreeTest, DurationRoundsTheHoursToTheNearestWholeHour) {
  // 89 minutes: 1.48 hours, "1:29"; 90: 1.5 hours rounded up, "2:30"; 150: 2.5 hours
  // rounded up, "3:30"; 20: "0:20" and 0.33 hours.
  ASSERT_TRUE(run(kSetup, cards({employee("E1", {day(3, 1, 89, {89, 0, 0, 0, 0, 0, 0}),
                                                 day(3, 2, 90, {90, 0, 0, 0, 0, 0, 0}),
                                                 day(3, 3, 150, {150, 0, 0, 0, 0, 0, 0}),
                                                 day(3, 4, 20, {20, 0, 0, 0, 0, 0, 0})})})));
  EXPECT_EQ(written(),
            "0,E1,17,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,1:29,,0,0,2,1.48,0,From Horalis\r\n"
            "0,E1,18,03/02/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,2:30,,0,0,2,1.50,0,From Horalis\r\n"
            "0,E1,19,03/03/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,3:30,,0,0,2,2.50,0,From Horalis\r\n"
            "0,E1,20,03/04/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,0:20,,0,0,2,0.33,0,From "
            "Horalis\r\n");
}

TEST_F(PeachtreeTest, TicketDateIsTwoDigitMonthDayAndYear) {
  auto december = std::make_shared<MemoryObject>();
  december->set("DayDate", Date::from_civil(2010, 12, 5)).set("Hours", std::int32_t{480});
  for (const char* name : {"REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"})
    december->set(name, std::int32_t{0});
  december->set("HOL", std::int32_t{480});
  ASSERT_TRUE(run(kSetup, cards({employee("E1", {object(december)})})));
  EXPECT_EQ(written(),
            "0,E1,17,12/05/10,FALSE,,ADMN-02001,3,,5,FALSE,1,,,,8:00,,0,0,2,8.00,0,From "
            "Horalis\r\n");
}

TEST_F(PeachtreeTest, EveryDayOfALongPeriodCarriesItsOwnDateWhateverTheOrderOfTheDays) {
  // Thirty-one days of March, then the first three again, then February's last days:
  // more dates than a pay period has, met again after others.
  std::vector<Variant> days;
  std::vector<std::string> expected_dates;
  auto add = [&](int month, int day_of_month, const char* text) {
    days.push_back(day(month, day_of_month, 60, {60, 0, 0, 0, 0, 0, 0}));
    expected_dates.push_back(text);
  };
  const char* march[] = {"03/01/04", "03/02/04", "03/03/04", "03/04/04", "03/05/04", "03/06/04",
                         "03/07/04", "03/08/04", "03/09/04", "03/10/04", "03/11/04", "03/12/04",
                         "03/13/04", "03/14/04", "03/15/04", "03/16/04", "03/17/04", "03/18/04",
                         "03/19/04", "03/20/04", "03/21/04", "03/22/04", "03/23/04", "03/24/04",
                         "03/25/04", "03/26/04", "03/27/04", "03/28/04", "03/29/04", "03/30/04",
                         "03/31/04"};
  for (int d = 1; d <= 31; ++d) add(3, d, march[d - 1]);
  add(3, 1, "03/01/04");
  add(3, 2, "03/02/04");
  add(3, 3, "03/03/04");
  add(2, 28, "02/28/04");
  add(2, 29, "02/29/04");
  ASSERT_TRUE(run(kSetup, cards({employee("E1", std::move(days))})));
  const std::string file = written();
  std::size_t line_start = 0;
  for (std::size_t i = 0; i < expected_dates.size(); ++i) {
    SCOPED_TRACE(i);
    const std::size_t line_end = file.find("\r\n", line_start);
    ASSERT_NE(line_end, std::string::npos);
    EXPECT_EQ(file.substr(line_start, line_end - line_start),
              "0,E1," + std::to_string(17 + i) + "," + expected_dates[i] +
                  ",FALSE,,ADMN-01000,3,,1,FALSE,1,,,,1:00,,0,0,2,1.00,0,From Horalis");
    line_start = line_end + 2;
  }
  EXPECT_EQ(line_start, file.size());
}

TEST_F(PeachtreeTest, ValuesArriveAsTheHostHandsThem) {
  // Minutes as a double and as numeric text, the employee identifier as a number.
  auto numeric_id = card("x", std::int32_t{1});
  auto first = std::make_shared<MemoryObject>();
  first->set("DayDate", Date::from_civil(2004, 3, 1)).set("Hours", 450.0);
  for (const char* name : {"REG", "OT1", "OT2", "VAC", "HOL", "SIC", "OTH"}) first->set(name, 0.0);
  first->set("REG", 450.0).set("SIC", "45");
  numeric_id->set("ExportID", std::int32_t{100}).set("Days", object(collection({object(first)})));
  ASSERT_TRUE(run(kSetup, cards({object(numeric_id)})));
  EXPECT_EQ(written(),
            "0,100,17,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,8:30,,0,0,2,7.50,0,From "
            "Horalis\r\n"
            "0,100,18,03/01/04,FALSE,,ADMN-02002,3,,6,FALSE,1,,,,1:45,,0,0,2,0.75,0,From "
            "Horalis\r\n");
}

TEST_F(PeachtreeTest, CancelledDialogKeepsTheOldTicketNumber) {
  const Variant work = cards({employee("E100", {day(3, 1, 60, {60, 0, 0, 0, 0, 0, 0})})});
  peachtree.SetupData(kSetup);
  host.ui.answer_save_cancel();
  EXPECT_FALSE(peachtree.Execute(work));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.messages.empty());
  EXPECT_EQ(peachtree.SetupData(), kSetup);
  // The next run numbers its tickets from 17 again.
  host.ui.answer_save("out.csv");
  ASSERT_TRUE(peachtree.Execute(work));
  EXPECT_EQ(written(),
            "0,E100,17,03/01/04,FALSE,,ADMN-01000,3,,1,FALSE,1,,,,1:00,,0,0,2,1.00,0,From "
            "Horalis\r\n");
  EXPECT_EQ(peachtree.SetupData(), setup_with_ticket("18"));
}

TEST_F(PeachtreeTest, EmptyFileNameShowsTheMessageAndKeepsTheTicketNumber) {
  peachtree.SetupData(kSetup);
  host.ui.answer_save("");
  EXPECT_FALSE(
      peachtree.Execute(cards({employee("E100", {day(3, 1, 60, {60, 0, 0, 0, 0, 0, 0})})})));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_EQ(host.ui.message_texts(), std::vector<std::string>{"No file name selected!"});
  EXPECT_EQ(peachtree.SetupData(), kSetup);
}

TEST_F(PeachtreeTest, FileErrorKeepsTheTicketNumber) {
  host.files.fail_path("out.csv", rt::kPermissionDenied);
  const Error error =
      execute_error(kSetup, cards({employee("E100", {day(3, 1, 60, {60, 0, 0, 0, 0, 0, 0})})}));
  EXPECT_EQ(error.number(), rt::kPermissionDenied);
  EXPECT_EQ(error.source(), "zorvat.Peachtree.Execute");
  EXPECT_EQ(peachtree.SetupData(), kSetup);
}

TEST_F(PeachtreeTest, NonNumericTicketNumberPassesValidationAndFailsAtTheFirstTicket) {
  const std::string setup = setup_with_ticket("x");
  EXPECT_NO_THROW(peachtree.ValidateSetupData(setup));
  const Error error =
      execute_error(setup, cards({employee("E100", {day(3, 1, 60, {60, 0, 0, 0, 0, 0, 0})})}));
  EXPECT_EQ(error.number(), rt::kTypeMismatch);
  EXPECT_EQ(error.description(), "Type mismatch");
  EXPECT_EQ(error.source(), "zorvat.Peachtree.Execute");
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.Peachtree.EmployeeRecord",
                                                     "zorvat.Peachtree.Execute"}));
  EXPECT_EQ(host.files.writes, 0);
  EXPECT_TRUE(host.ui.save_requests.empty());
  EXPECT_EQ(peachtree.SetupData(), setup);
}

TEST_F(PeachtreeTest, NonNumericTicketNumberIsNeverReadWithoutTickets) {
  const std::string setup = setup_with_ticket("x");
  ASSERT_TRUE(run(setup, cards({employee("E100", {day(3, 1, 0, {60, 0, 0, 0, 0, 0, 0})})})));
  EXPECT_EQ(written(), "");
  EXPECT_EQ(peachtree.SetupData(), setup);
}

TEST_F(PeachtreeTest, TicketNumberBeyondThirtyTwoBitsOverflows) {
  const Error error =
      execute_error(setup_with_ticket("2147483647"),
                    cards({employee("E100", {day(3, 1, 120, {60, 60, 0, 0, 0, 0, 0})})}));
  // The first ticket still takes 2147483647; the second cannot be numbered.
  EXPECT_EQ(error.number(), rt::kOverflow);
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.Peachtree.EmployeeRecord",
                                                     "zorvat.Peachtree.Execute"}));
  EXPECT_EQ(host.files.writes, 0);
}

TEST_F(PeachtreeTest, MissingDayPropertyReachesTheHostAsExecute) {
  auto broken = std::make_shared<MemoryObject>();
  broken->set("Hours", std::int32_t{60}).set("REG", std::int32_t{60});
  for (const char* name : {"OT1", "OT2", "VAC", "HOL", "SIC", "OTH"})
    broken->set(name, std::int32_t{0});
  const Error error = execute_error(kSetup, cards({employee("E100", {object(broken)})}));
  EXPECT_EQ(error.number(), rt::kObjectDoesntSupport);
  EXPECT_EQ(error.source(), "zorvat.Peachtree.Execute");
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"zorvat", "zorvat.Peachtree.EmployeeRecord",
                                                     "zorvat.Peachtree.Execute"}));
}

TEST_F(PeachtreeTest, PayLevelOutOfRangeOrNotNumericRaisesItsNumber) {
  const PeachtreeErrorsEnum expected[] = {
      PeachtreeErrorsEnum::errLevelReg, PeachtreeErrorsEnum::errLevelOT1,
      PeachtreeErrorsEnum::errLevelOT2, PeachtreeErrorsEnum::errLevelVAC,
      PeachtreeErrorsEnum::errLevelHOL, PeachtreeErrorsEnum::errLevelSIC,
      PeachtreeErrorsEnum::errLevelOTH};
  for (std::size_t position = 0; position <= 6; ++position) {
    for (const char* level : {"21", "abc", "-1", ""}) {
      SettingsFields fields(kSetup);
      fields.at(position) = level;
      const Error error = validate_error(fields.join());
      EXPECT_EQ(error.number(), 4002 + static_cast<long>(position)) << level;
      EXPECT_EQ(error.number(), static_cast<long>(expected[position]));
      EXPECT_EQ(error.description(), "Pay Level invalid - Must be between 0 and 20");
      EXPECT_EQ(error.source(), "zorvat.Peachtree.Validate");
    }
  }
}

TEST_F(PeachtreeTest, PayLevelsZeroAndTwentyPass) {
  EXPECT_NO_THROW(peachtree.ValidateSetupData(
      "0,20,0,20,0,20,0,ADMN-01000,ADMN-01000,ADMN-01000,ADMN-02000,ADMN-02000,ADMN-02000,"
      "ADMN-02000,0,1"));
}

TEST_F(PeachtreeTest, ItemCodeOfThirtyThreeCharactersRaisesItsNumber) {
  const PeachtreeErrorsEnum expected[] = {
      PeachtreeErrorsEnum::errCodeReg, PeachtreeErrorsEnum::errCodeOT1,
      PeachtreeErrorsEnum::errCodeOT2, PeachtreeErrorsEnum::errCodeVAC,
      PeachtreeErrorsEnum::errCodeHOL, PeachtreeErrorsEnum::errCodeSIC,
      PeachtreeErrorsEnum::errCodeOTH};
  const std::string code33 = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456";
  ASSERT_EQ(code33.size(), 33u);
  for (std::size_t position = 7; position <= 13; ++position) {
    SettingsFields fields(kSetup);
    fields.at(position) = code33;
    const Error error = validate_error(fields.join());
    EXPECT_EQ(error.number(), 4009 + static_cast<long>(position - 7));
    EXPECT_EQ(error.number(), static_cast<long>(expected[position - 7]));
    EXPECT_EQ(error.description(), "Pay Item Code must be 32 chars or less");
    EXPECT_EQ(error.source(), "zorvat.Peachtree.Validate");
    // 32 characters pass.
    fields.at(position) = code33.substr(0, 32);
    EXPECT_NO_THROW(peachtree.ValidateSetupData(fields.join()));
  }
}

TEST_F(PeachtreeTest, PlaceHolderNumberIsNeverRaised) {
  EXPECT_EQ(static_cast<long>(PeachtreeErrorsEnum::errPlaceHolder), 4001);
  EXPECT_EQ(validate_error("x").number(), 4002);
}

TEST_F(PeachtreeTest, TitlesFlagAndBatchSequenceAreNotChecked) {
  EXPECT_NO_THROW(peachtree.ValidateSetupData("1,2,3,4,5,6,7,A,B,C,D,E,F,G,maybe,x"));
  EXPECT_NO_THROW(peachtree.ValidateSetupData(""));
  EXPECT_NO_THROW(peachtree.ValidateSetupData("1,2,3"));
}

TEST_F(PeachtreeTest, OnlyTheFirstBadFieldIsReported) {
  EXPECT_EQ(validate_error("1,2,30,4,5,99,7").number(), 4004);
}

TEST_F(PeachtreeTest, RunCheckRaisesWithTheValidateSource) {
  peachtree.SetupData(setup_with_ticket("1").replace(0, 1, "21"));
  try {
    peachtree.run_check();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 4002);
    EXPECT_EQ(error.source(), "zorvat.Peachtree.Validate");
  }
}

TEST_F(PeachtreeTest, ValidationErrorOfExecuteCarriesTheExecuteSource) {
  const Error error = execute_error("1,2,3,4,5,6,21,A,B,C,D,E,F,G,0,1", cards({}));
  EXPECT_EQ(error.number(), 4008);
  EXPECT_EQ(error.description(), "Pay Level invalid - Must be between 0 and 20");
  EXPECT_EQ(error.source(), "zorvat.Peachtree.Execute");
  EXPECT_TRUE(host.ui.save_requests.empty());
}

TEST_F(PeachtreeTest, SettingsWithoutTheTitlesFlagFail) {
  const Error error = execute_error("1,2,3,4,5,6,7,A,B,C,D,E,F,G", cards({}));
  EXPECT_EQ(error.number(), rt::kSubscriptOutOfRange);
  EXPECT_EQ(error.source(), "zorvat.Peachtree.Execute");
}

TEST_F(PeachtreeTest, SetupIsNotAvailableWithoutAForm) {
  try {
    peachtree.Setup();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.source(), "zorvat.Peachtree.Setup");
  }
}

}  // namespace
}  // namespace zorvat::formats
