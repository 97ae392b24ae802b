// QuickBooks export, the time entries: the request sets QuickBooks receives for the
// days and edit totals of the cards, field by field, written out by hand.
#include <gtest/gtest.h>

#include "qb2000_test_support.h"
#include "zorvat/quickbooks/qbxml.h"
#include "zorvat/quickbooks/qbxml_session.h"

namespace zorvat::formats::qb2000_test {
namespace {

namespace qb = quickbooks;

Date march(int day_of_month) {
  return Date::from_civil(2004, 3, day_of_month);
}

// A day entry as ExportTCData makes it.
qb::TimeTrackingAdd day_entry(std::string name, qb::Duration duration, Date date,
                              const std::string& item) {
  return {std::move(name), duration, date, item, false, "HLS - " + item, qb::kDayEntryFieldOrder};
}
// An edit-total entry as ExportEditTotals makes it.
qb::TimeTrackingAdd edit_entry(std::string key, qb::Duration duration, Date date,
                               std::string item) {
  return {std::move(key),          duration, date, std::move(item), false, "HLS - Edit Totals",
          qb::kEditTotalFieldOrder};
}
qb::RequestSet set_of(std::vector<qb::Request> requests, std::int32_t major = 1,
                      std::int32_t minor = 0) {
  return {major, minor, qb::OnError::Continue, std::move(requests)};
}

class QB2000RequestsTest : public testing::Test {
 protected:
  // Runs the export of `time_cards` against a company holding the default items and
  // `employees`; returns the request sets after the two verification queries.
  std::vector<qb::RequestSet> export_sets(const std::vector<std::string>& employees,
                                          const Variant& time_cards) {
    qb = std::make_unique<QuickBooksHost>(company(employees));
    QB2000 exporter(qb->context());
    exporter.SetupData(kSetup);
    EXPECT_TRUE(exporter.Execute(time_cards));
    std::vector<qb::RequestSet> sets = qb->simulator.request_sets();
    EXPECT_GE(sets.size(), 2u);
    sets.erase(sets.begin(), sets.begin() + std::min<std::ptrdiff_t>(2, std::ssize(sets)));
    return sets;
  }
  // The sets of one card named Jane Doe in a company that writes names first name first.
  std::vector<qb::RequestSet> jane_sets(const std::shared_ptr<scripted::MemoryObject>& card) {
    return export_sets({"Jane Doe"}, cards({scripted::object(card)}));
  }

  std::unique_ptr<QuickBooksHost> qb;
};

// Jane Doe and John Smith in a company that speaks qbXML 2.1 and names its employees
// last name first.
qb::Company small_company() {
  qb::Company two = company({"Doe, Jane", "Smith, John"});
  two.qbxml_versions = {"2.1", "1.0"};
  return two;
}
Variant small_pay_period() {
  auto jane = employee_card(
      "Jane", "", "Doe",
      {day(march(1), {.reg = std::int32_t{480}, .ot1 = std::int32_t{90}}), day(march(2), {}),
       day(march(3), {.vac = std::int32_t{59}, .sic = std::int32_t{60}})});
  jane->set("EditOT1", std::int32_t{150});
  auto john = employee_card("John", "", "Smith", {day(march(2), {.oth = std::int32_t{150}})});
  return cards({scripted::object(jane), scripted::object(john)});
}
const std::vector<qb::RequestSet>& small_pay_period_sets() {
  static const std::vector<qb::RequestSet> sets = {
      set_of({qb::PayrollItemWageQuery{40}}, 2, 1),
      set_of({qb::EmployeeQuery{}}, 2, 1),
      // Jane, 1 March: 8:00 regular and 90 minutes of overtime as 2:30.
      set_of({day_entry("Doe, Jane", {8, 0, 0}, march(1), "Regular Hourly Rate"),
              day_entry("Doe, Jane", {2, 30, 0}, march(1), "Overtime Hourly Rate")},
             2, 1),
      // 2 March has no time; 3 March: 0:59 vacation, 1:00 sick.
      set_of({day_entry("Doe, Jane", {0, 59, 0}, march(3), "Vacation Hourly Rate"),
              day_entry("Doe, Jane", {1, 0, 0}, march(3), "Sick Hourly Rate")},
             2, 1),
      // Her overtime edit total, under the key with its commas, dated the period start.
      set_of({edit_entry("Jane,,Doe", {2, 30, 0}, march(1), "Overtime Hourly Rate")}, 2, 1),
      set_of({day_entry("Smith, John", {2, 30, 0}, march(2), "Other Hourly Rate")}, 2, 1),
  };
  return sets;
}

// The sets with every time entry's fields in one order, as a qbXML document has them.
std::vector<qb::RequestSet> in_schema_order(std::vector<qb::RequestSet> sets) {
  for (qb::RequestSet& set : sets)
    for (qb::Request& request : set.requests)
      if (auto* add = std::get_if<qb::TimeTrackingAdd>(&request))
        add->field_order = qb::kDayEntryFieldOrder;
  return sets;
}

TEST_F(QB2000RequestsTest, SmallPayPeriodSendsTheseRequestSets) {
  qb = std::make_unique<QuickBooksHost>(small_company());
  QB2000 exporter(qb->context());
  exporter.SetupData(kSetup);
  ASSERT_TRUE(exporter.Execute(small_pay_period()));
  EXPECT_EQ(qb->simulator.request_sets(), small_pay_period_sets());
  EXPECT_EQ(qb->simulator.company().time_entries.size(), 5u);
}

TEST_F(QB2000RequestsTest, TheQbxmlBackendDeliversTheSameRequestSets) {
  qb = std::make_unique<QuickBooksHost>(small_company());
  std::vector<std::string> documents;
  qb::SimulatorQbxmlSessionFactory qbxml(
      qb->simulator, [&](std::string_view xml) { documents.emplace_back(xml); });
  qb->sessions = &qbxml;
  QB2000 exporter(qb->context());
  exporter.SetupData(kSetup);
  ASSERT_TRUE(exporter.Execute(small_pay_period()));

  // The company read back from the documents what the direct backend hands it; only
  // the order the fields are set in stays behind, as a document always carries them
  // in the schema's order.
  EXPECT_EQ(in_schema_order(qb->simulator.request_sets()),
            in_schema_order(small_pay_period_sets()));
  ASSERT_EQ(documents.size(), small_pay_period_sets().size());
  for (std::size_t i = 0; i < documents.size(); ++i)
    EXPECT_EQ(documents[i], qb::write_qbxml_request(small_pay_period_sets()[i])) << i;
  EXPECT_EQ(
      operations(qb->simulator),
      (std::vector<std::string>{"OpenConnection", "BeginSession", "QBXMLVersionsForSession",
                                "DoRequests", "DoRequests", "DoRequests", "DoRequests",
                                "DoRequests", "DoRequests", "EndSession", "CloseConnection"}));
  EXPECT_EQ(qb->simulator.company().time_entries.size(), 5u);
}

TEST_F(QB2000RequestsTest, TheQbxmlBackendReportsTimeTrackingSwitchedOff) {
  qb::Company no_time = small_company();
  no_time.time_tracking = false;
  qb = std::make_unique<QuickBooksHost>(no_time);
  qb::SimulatorQbxmlSessionFactory qbxml(qb->simulator);
  qb->sessions = &qbxml;
  QB2000 exporter(qb->context());
  exporter.SetupData(kSetup);
  const Error error = raised_by([&] { exporter.Execute(small_pay_period()); });
  EXPECT_EQ(error.number(), 3250);
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
}

TEST_F(QB2000RequestsTest, EveryHourTypeGoesOutUnderItsItemInTheUsualOrder) {
  const auto sets = jane_sets(employee_card(
      "Jane", "", "Doe",
      {day(march(4), {std::int32_t{60}, std::int32_t{120}, std::int32_t{180}, std::int32_t{240},
                      std::int32_t{300}, std::int32_t{360}, std::int32_t{420}})}));
  ASSERT_EQ(sets.size(), 1u);
  EXPECT_EQ(sets[0],
            set_of({day_entry("Jane Doe", {1, 0, 0}, march(4), "Regular Hourly Rate"),
                    day_entry("Jane Doe", {2, 0, 0}, march(4), "Overtime Hourly Rate"),
                    day_entry("Jane Doe", {3, 0, 0}, march(4), "Premuim Overtime Hourly Rate"),
                    day_entry("Jane Doe", {4, 0, 0}, march(4), "Vacation Hourly Rate"),
                    day_entry("Jane Doe", {5, 0, 0}, march(4), "Holiday Hourly Rate"),
                    day_entry("Jane Doe", {6, 0, 0}, march(4), "Sick Hourly Rate"),
                    day_entry("Jane Doe", {7, 0, 0}, march(4), "Other Hourly Rate")}));
}

TEST_F(QB2000RequestsTest, HoursAreRoundedToTheNearestHalfToEvenBesideTheMinutes) {
  const auto sets = jane_sets(employee_card(
      "Jane", "", "Doe",
      {day(march(1), {.reg = std::int32_t{59}}), day(march(2), {.reg = std::int32_t{60}}),
       day(march(3), {.reg = std::int32_t{100}}), day(march(4), {.reg = std::int32_t{150}}),
       day(march(5), {.reg = std::int32_t{210}})}));
  ASSERT_EQ(sets.size(), 5u);
  const qb::Duration expected[] = {{0, 59, 0}, {1, 0, 0}, {2, 40, 0}, {2, 30, 0}, {4, 30, 0}};
  for (std::size_t i = 0; i < 5; ++i) {
    ASSERT_EQ(sets[i].requests.size(), 1u);
    EXPECT_EQ(std::get<qb::TimeTrackingAdd>(sets[i].requests[0]).duration, expected[i]) << i;
  }
}

TEST_F(QB2000RequestsTest, ADayWhoseTypesSumAboveZeroWithNoneAboveZeroSendsAnEmptySet) {
  // Fractions of a minute add up above zero, yet each rounds to no minute at all.
  const auto sets =
      jane_sets(employee_card("Jane", "", "Doe", {day(march(1), {.reg = 0.4, .ot1 = 0.4})}));
  ASSERT_EQ(sets.size(), 1u);
  EXPECT_EQ(sets[0], set_of({}));
}

TEST_F(QB2000RequestsTest, ADayWhoseTypesCancelOutSendsNothing) {
  const auto sets = jane_sets(employee_card(
      "Jane", "", "Doe", {day(march(1), {.reg = std::int32_t{120}, .ot1 = std::int32_t{-120}})}));
  EXPECT_TRUE(sets.empty());
}

TEST_F(QB2000RequestsTest, NegativeTypesOfADayAreLeftOut) {
  // -120 minutes would be no hours at all; they are not sent.
  const auto sets = jane_sets(employee_card(
      "Jane", "", "Doe", {day(march(1), {.reg = std::int32_t{-120}, .ot1 = std::int32_t{180}})}));
  ASSERT_EQ(sets.size(), 1u);
  EXPECT_EQ(sets[0], set_of({day_entry("Jane Doe", {3, 0, 0}, march(1), "Overtime Hourly Rate")}));
}

TEST_F(QB2000RequestsTest, EditTotalOf1440MinutesGives24HoursAndThenNothing) {
  auto card = employee_card("Jane", "", "Doe");
  card->set("EditREG", std::int32_t{1440});
  const auto sets = jane_sets(card);
  EXPECT_EQ(sets,
            (std::vector<qb::RequestSet>{
                set_of({edit_entry("Jane,,Doe", {24, 0, 0}, march(1), "Regular Hourly Rate")}),
                set_of({edit_entry("Jane,,Doe", {0, 0, 0}, march(1), "Regular Hourly Rate")}),
            }));
}

TEST_F(QB2000RequestsTest, EditTotalOf40HoursGives24And24AndMinus8) {
  auto card = employee_card("Jane", "", "Doe");
  card->set("EditOT2", std::int32_t{2400});
  const std::string item = "Premuim Overtime Hourly Rate";
  EXPECT_EQ(jane_sets(card), (std::vector<qb::RequestSet>{
                                 set_of({edit_entry("Jane,,Doe", {24, 0, 0}, march(1), item)}),
                                 set_of({edit_entry("Jane,,Doe", {24, 0, 0}, march(1), item)}),
                                 set_of({edit_entry("Jane,,Doe", {-8, 0, 0}, march(1), item)}),
                             }));
}

TEST_F(QB2000RequestsTest, EditTotalsUnderADayAreOneEntry) {
  auto card = employee_card("Jane", "Q", "Doe");
  card->set("EditREG", std::int32_t{59})
      .set("EditOT1", std::int32_t{90})
      .set("EditOT2", std::int32_t{0});
  EXPECT_EQ(export_sets({"Jane Q Doe"}, cards({scripted::object(card)})),
            (std::vector<qb::RequestSet>{
                set_of({edit_entry("Jane,Q,Doe", {0, 59, 0}, march(1), "Regular Hourly Rate")}),
                set_of({edit_entry("Jane,Q,Doe", {2, 30, 0}, march(1), "Overtime Hourly Rate")}),
            }));
}

TEST_F(QB2000RequestsTest, EditTotalDaysRoundHalfToEven) {
  // 24.5 hours round to 24, one whole day, and the rest keeps the 30 minutes.
  auto card = employee_card("Jane", "", "Doe");
  card->set("EditREG", std::int32_t{1470});
  EXPECT_EQ(jane_sets(card),
            (std::vector<qb::RequestSet>{
                set_of({edit_entry("Jane,,Doe", {24, 0, 0}, march(1), "Regular Hourly Rate")}),
                set_of({edit_entry("Jane,,Doe", {0, 30, 0}, march(1), "Regular Hourly Rate")}),
            }));
  // 60 hours: 2.5 days round to 2, leaving 12.
  card->set("EditREG", std::int32_t{3600});
  const auto sets = jane_sets(card);
  ASSERT_EQ(sets.size(), 3u);
  EXPECT_EQ(std::get<qb::TimeTrackingAdd>(sets[2].requests[0]).duration, (qb::Duration{12, 0, 0}));
}

TEST_F(QB2000RequestsTest, NegativeOrZeroEditTotalsAreNotSent) {
  auto card = employee_card("Jane", "", "Doe");
  card->set("EditREG", std::int32_t{-120}).set("EditOT1", std::int32_t{0});
  EXPECT_TRUE(jane_sets(card).empty());
}

TEST_F(QB2000RequestsTest, DatesGoThroughATwoDigitYear) {
  // The calendar day goes, the time of day is dropped.
  const auto sets = jane_sets(employee_card(
      "Jane", "", "Doe",
      {day(Date::from_civil(1975, 3, 8), {.reg = std::int32_t{60}}),
       day(Date{Date::from_civil(2004, 3, 9).serial + 0.75}, {.reg = std::int32_t{60}})}));
  ASSERT_EQ(sets.size(), 2u);
  EXPECT_EQ(std::get<qb::TimeTrackingAdd>(sets[0].requests[0]).txn_date,
            Date::from_civil(1975, 3, 8));
  EXPECT_EQ(std::get<qb::TimeTrackingAdd>(sets[1].requests[0]).txn_date, march(9));
}

TEST_F(QB2000RequestsTest, ADateTwoDigitsWouldMoveACenturyIsNotSent) {
  // 1925 would read back as 2025 through the window ending in 2049: refused, and
  // nothing is sent, not even the query of the payroll items.
  qb = std::make_unique<QuickBooksHost>(company({"Jane Doe"}));
  QB2000 exporter(qb->context());
  exporter.SetupData(kSetup);
  const Error error = raised_by([&] {
    exporter.Execute(cards({scripted::object(employee_card(
        "Jane", "", "Doe", {day(Date::from_civil(1925, 3, 8), {.reg = std::int32_t{60}})}))}));
  });
  EXPECT_EQ(error.number(), rt::kInvalidProcedureCall);
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_TRUE(qb->simulator.request_sets().empty());
  EXPECT_TRUE(qb->simulator.company().time_entries.empty());
}

TEST_F(QB2000RequestsTest, DayEntriesNameTheEmployeeAsQuickBooksNamesThem) {
  auto mary = employee_card("Mary", "A", "Jones", {day(march(1), {.reg = std::int32_t{60}})});
  auto jane = employee_card("Jane", "", "Doe", {day(march(1), {.reg = std::int32_t{60}})});

  const auto first_first = export_sets({"Mary A Jones", "Jane Doe"},
                                       cards({scripted::object(mary), scripted::object(jane)}));
  ASSERT_EQ(first_first.size(), 2u);
  EXPECT_EQ(std::get<qb::TimeTrackingAdd>(first_first[0].requests[0]).entity_full_name,
            "Mary A Jones");
  EXPECT_EQ(std::get<qb::TimeTrackingAdd>(first_first[1].requests[0]).entity_full_name, "Jane Doe");

  const auto last_first = export_sets({"Jones, Mary A", "Doe, Jane"},
                                      cards({scripted::object(mary), scripted::object(jane)}));
  ASSERT_EQ(last_first.size(), 2u);
  EXPECT_EQ(std::get<qb::TimeTrackingAdd>(last_first[0].requests[0]).entity_full_name,
            "Jones, Mary A");
  EXPECT_EQ(std::get<qb::TimeTrackingAdd>(last_first[1].requests[0]).entity_full_name, "Doe, Jane");
}

TEST_F(QB2000RequestsTest, OtherStatusesOfTheEntriesAreLetGo) {
  // The edit total goes out under the raw key "Jane,,Doe", which names no employee:
  // QuickBooks refuses it, and the export still succeeds.
  auto card = employee_card("Jane", "", "Doe", {day(march(1), {.reg = std::int32_t{60}})});
  card->set("EditREG", std::int32_t{60});
  const auto sets = jane_sets(card);
  EXPECT_EQ(sets.size(), 2u);
  ASSERT_EQ(qb->simulator.company().time_entries.size(), 1u);
  EXPECT_EQ(qb->simulator.company().time_entries[0].entity_full_name, "Jane Doe");
}

TEST_F(QB2000RequestsTest, TimeTrackingSwitchedOffStopsAtTheFirstEditTotal) {
  qb::Company no_time = company({"Jane Doe"});
  no_time.time_tracking = false;
  qb = std::make_unique<QuickBooksHost>(no_time);
  auto card = employee_card("Jane", "", "Doe");
  card->set("EditREG", std::int32_t{3000});
  QB2000 exporter(qb->context());
  exporter.SetupData(kSetup);
  const Error error = raised_by([&] { exporter.Execute(cards({scripted::object(card)})); });
  EXPECT_EQ(error.number(), 3250);
  EXPECT_EQ(error.trail(),
            (std::vector<std::string>{"zorvat.QB2000.ExportEditTotals",
                                      "zorvat.QB2000.ExportTimeCard", "zorvat.QB2000.Execute"}));
  EXPECT_EQ(qb->simulator.request_sets().size(), 3u);
}

TEST_F(QB2000RequestsTest, MinutesBeyondTheLongRangeOverflowInTheDaysExport) {
  qb = std::make_unique<QuickBooksHost>(company({"Jane Doe"}));
  QB2000 exporter(qb->context());
  exporter.SetupData(kSetup);
  const Error error = raised_by([&] {
    exporter.Execute(
        cards({scripted::object(employee_card("Jane", "", "Doe", {day(march(1), {.reg = 3e9})}))}));
  });
  EXPECT_EQ(error.number(), rt::kOverflow);
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_EQ(error.trail(),
            (std::vector<std::string>{"zorvat", "zorvat.QB2000.ExportTCData",
                                      "zorvat.QB2000.ExportTimeCard", "zorvat.QB2000.Execute"}));
}

}  // namespace
}  // namespace zorvat::formats::qb2000_test
