// QuickBooks export, the dates of the time entries: every date goes through a
// two-digit year and back, read through the two-digit-year window; a period holding a
// date the window gives back a century off is refused before anything is sent. Also
// names with letters beyond ASCII, which QuickBooks takes as they are.
#include <gtest/gtest.h>

#include "qb2000/qb2000_dates.h"
#include "qb2000_test_support.h"
#include "zorvat/quickbooks/qbxml_session.h"

namespace zorvat::formats::qb2000_test {
namespace {

namespace qb = quickbooks;
using Operations = std::vector<std::string>;

const Date kLastDayOf2029 = Date::from_civil(2029, 12, 31);
const Date kFirstDayOf2030 = Date::from_civil(2030, 1, 1);

const std::string kSetTheWindow =
    " Set the Region setting \"When a two-digit year is entered, interpret it as a year "
    "between\" (--two-digit-year-max on the command line) to a range that holds ";

// A card of Jane Doe with an hour of regular time on each of `dates`.
std::shared_ptr<scripted::MemoryObject> jane_on(const std::vector<Date>& dates) {
  std::vector<Variant> days;
  days.reserve(dates.size());
  for (Date date : dates) days.push_back(day(date, {.reg = std::int32_t{60}}));
  return employee_card("Jane", "", "Doe", std::move(days));
}

class QB2000DatesTest : public testing::Test {
 protected:
  // A company that knows Jane Doe and the default items, its session managers logging
  // every call and forgiving a teardown on a session never begun.
  void start_with(std::vector<std::string> employees = {"Jane Doe"}) {
    qb = std::make_unique<QuickBooksHost>(company(std::move(employees)));
    qb->faulty.forgive("EndSession");
    qb->faulty.forgive("CloseConnection");
    qb->sessions = &qb->faulty;
    exporter = std::make_unique<QB2000>(qb->context());
    exporter->SetupData(kSetup);
  }
  // The dates of the time entries QuickBooks holds.
  std::vector<Date> entry_dates() const {
    std::vector<Date> dates;
    for (const qb::TimeTrackingAdd& entry : qb->simulator.company().time_entries)
      dates.push_back(entry.txn_date);
    return dates;
  }
  // Nothing reached QuickBooks: no connection, no request, no entry; only the error
  // path's teardown, on a manager made for it.
  void expect_nothing_sent() const {
    EXPECT_EQ(qb->faulty.calls, (Operations{"EndSession", "CloseConnection"}));
    EXPECT_TRUE(qb->simulator.request_sets().empty());
    EXPECT_TRUE(qb->simulator.company().time_entries.empty());
    EXPECT_TRUE(qb->ui.progress.empty());
  }

  std::unique_ptr<QuickBooksHost> qb;
  std::unique_ptr<QB2000> exporter;
};

TEST_F(QB2000DatesTest, UnderTheWindowEndingIn2029TheLastDayOf2029IsSent) {
  const TwoDigitYearMaxScope window(2029);
  start_with();
  ASSERT_TRUE(exporter->Execute(cards({scripted::object(jane_on({kLastDayOf2029}))})));
  EXPECT_EQ(entry_dates(), (std::vector<Date>{kLastDayOf2029}));
}

TEST_F(QB2000DatesTest, UnderTheWindowEndingIn2029TheFirstDayOf2030IsRefusedBeforeAnythingIsSent) {
  const TwoDigitYearMaxScope window(2029);
  start_with();
  const Error error = raised_by([&] {
    exporter->Execute(cards({scripted::object(jane_on({kLastDayOf2029, kFirstDayOf2030}))}));
  });
  EXPECT_EQ(error.number(), 5);
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_EQ(error.trail(),
            (std::vector<std::string>{"zorvat.QB2000.VerifyTxnDates", "zorvat.QB2000.Execute"}));
  EXPECT_EQ(error.description(),
            "The card at index 0 (Jane Doe) holds the day 1/1/2030, which QuickBooks would get "
            "as 1/1/1930: two-digit years are read as 1930 to 2029." +
                kSetTheWindow + "2030. Nothing was sent to QuickBooks.");
  expect_nothing_sent();
}

TEST_F(QB2000DatesTest, UnderTheWindowEndingIn2049TheFirstDayOf2030ArrivesAs2030) {
  const TwoDigitYearMaxScope window(2049);
  start_with();
  ASSERT_TRUE(
      exporter->Execute(cards({scripted::object(jane_on({kLastDayOf2029, kFirstDayOf2030}))})));
  EXPECT_EQ(entry_dates(), (std::vector<Date>{kLastDayOf2029, kFirstDayOf2030}));
}

TEST_F(QB2000DatesTest, UnderTheWindowEndingIn2049The1940sAreRefused) {
  const TwoDigitYearMaxScope window(2049);
  start_with();
  const Error error = raised_by([&] {
    exporter->Execute(cards({scripted::object(jane_on({Date::from_civil(1949, 6, 15)}))}));
  });
  EXPECT_EQ(error.number(), 5);
  EXPECT_EQ(error.description(),
            "The card at index 0 (Jane Doe) holds the day 6/15/1949, which QuickBooks would get "
            "as 6/15/2049: two-digit years are read as 1950 to 2049." +
                kSetTheWindow + "1949. Nothing was sent to QuickBooks.");
  expect_nothing_sent();
}

TEST_F(QB2000DatesTest, ThePeriodStartOfTheEditTotalsIsLookedAtToo) {
  const TwoDigitYearMaxScope window(2029);
  start_with();
  auto card = jane_on({kLastDayOf2029});
  card->set("PeriodStart", kFirstDayOf2030).set("EditOT2", std::int32_t{90});
  const Error error = raised_by([&] { exporter->Execute(cards({scripted::object(card)})); });
  EXPECT_EQ(error.number(), 5);
  EXPECT_EQ(error.description(),
            "The card at index 0 (Jane Doe) holds the period start 1/1/2030 (the date of its "
            "edit totals), which QuickBooks would get as 1/1/1930: two-digit years are read as "
            "1930 to 2029." +
                kSetTheWindow + "2030. Nothing was sent to QuickBooks.");
  expect_nothing_sent();
}

TEST_F(QB2000DatesTest, DatesThatAreNotSentAreNotLookedAt) {
  const TwoDigitYearMaxScope window(2029);
  start_with();
  // A period start without edit totals, a day without time and a day whose minutes
  // round to none (its request set carries no entry, so no date).
  auto card =
      employee_card("Jane", "", "Doe",
                    {day(kFirstDayOf2030, {}), day(kLastDayOf2029, {.reg = std::int32_t{60}}),
                     day(kFirstDayOf2030, {.reg = 0.4})});
  card->set("PeriodStart", kFirstDayOf2030).set("EditREG", std::int32_t{-60});
  ASSERT_TRUE(exporter->Execute(cards({scripted::object(card)})));
  EXPECT_EQ(entry_dates(), (std::vector<Date>{kLastDayOf2029}));
  EXPECT_EQ(qb->simulator.request_sets().size(), 4u);  // 2 queries, 2 days
}

TEST_F(QB2000DatesTest, TheRefusalNamesTheFirstCardInCollectionOrder) {
  const TwoDigitYearMaxScope window(2029);
  start_with({"Jane Doe", "José Peña", "Ann Lee"});
  auto jose = employee_card("José", "", "Peña",
                            {day(Date::from_civil(2031, 2, 28), {.ot1 = std::int32_t{30}})});
  auto ann = employee_card("Ann", "", "Lee", {day(kFirstDayOf2030, {.reg = std::int32_t{60}})});
  const Error error = raised_by([&] {
    exporter->Execute(cards({scripted::object(jane_on({kLastDayOf2029})), scripted::object(jose),
                             scripted::object(ann)}));
  });
  EXPECT_EQ(error.description(),
            "The card at index 1 (José Peña) holds the day 2/28/2031, which QuickBooks would get "
            "as 2/28/1931: two-digit years are read as 1930 to 2029." +
                kSetTheWindow + "2031. Nothing was sent to QuickBooks.");
  expect_nothing_sent();
}

TEST_F(QB2000DatesTest, ACardTheCheckCannotReadLeavesTheExportItsOwnError) {
  const TwoDigitYearMaxScope window(2029);
  start_with({"Jane Doe", "Ann Lee"});
  // The second card's day has no date the export can write: it stops there, with its
  // own error, before the third card and its date in 2030 are reached.
  auto bad_day = std::make_shared<scripted::MemoryObject>();
  bad_day->set("DayDate", Variant("someday"))
      .set("REG", std::int32_t{60})
      .set("OT1", std::int32_t{0})
      .set("OT2", std::int32_t{0})
      .set("VAC", std::int32_t{0})
      .set("HOL", std::int32_t{0})
      .set("SIC", std::int32_t{0})
      .set("OTH", std::int32_t{0});
  auto unreadable = employee_card("Ann", "", "Lee", {scripted::object(bad_day)});
  const Error error = raised_by([&] {
    exporter->Execute(
        cards({scripted::object(jane_on({kLastDayOf2029})), scripted::object(unreadable),
               scripted::object(jane_on({kFirstDayOf2030}))}));
  });
  EXPECT_EQ(error.number(), rt::kTypeMismatch);
  EXPECT_EQ(error.trail(),
            (std::vector<std::string>{"zorvat", "zorvat.QB2000.ExportTCData",
                                      "zorvat.QB2000.ExportTimeCard", "zorvat.QB2000.Execute"}));
  // The first card went out, as it always did.
  EXPECT_EQ(entry_dates(), (std::vector<Date>{kLastDayOf2029}));
}

TEST_F(QB2000DatesTest, TheTimeOfDayIsNoDifference) {
  const TwoDigitYearMaxScope window(2029);
  start_with();
  ASSERT_TRUE(
      exporter->Execute(cards({scripted::object(jane_on({Date{kLastDayOf2029.serial + 0.75}}))})));
  EXPECT_EQ(entry_dates(), (std::vector<Date>{kLastDayOf2029}));
}

TEST(QB2000CenturyShiftedDates, EveryCardsFirstSuchDateInCardOrder) {
  const TwoDigitYearMaxScope window(2029);
  auto jane = jane_on({kLastDayOf2029, kFirstDayOf2030, Date::from_civil(2030, 1, 2)});
  auto ann = employee_card("Ann", "", "Lee");
  ann->set("PeriodStart", Date::from_civil(2035, 7, 4)).set("EditREG", std::int32_t{480});
  const auto found =
      qb2000::century_shifted_dates(cards({scripted::object(jane_on({kLastDayOf2029})),
                                           scripted::object(jane), scripted::object(ann)}));
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].card, 1u);
  EXPECT_EQ(found[0].employee, "Jane Doe");
  EXPECT_FALSE(found[0].period_start);
  EXPECT_EQ(found[0].held, kFirstDayOf2030);
  EXPECT_EQ(found[0].sent, Date::from_civil(1930, 1, 1));
  EXPECT_EQ(found[1].card, 2u);
  EXPECT_EQ(found[1].employee, "Ann Lee");
  EXPECT_TRUE(found[1].period_start);
  EXPECT_EQ(found[1].held, Date::from_civil(2035, 7, 4));
  EXPECT_EQ(found[1].sent, Date::from_civil(1935, 7, 4));
}

// --- Names beyond ASCII -----------------------------------------------------------------

// José Peña and Renée Müller-Ñúñez are in the company; Grace O’Neil (with U+2019) is
// added. Every name reaches QuickBooks as it stands.
Variant accented_cards() {
  const Date day_one = Date::from_civil(2004, 3, 1);
  return cards({scripted::object(
                    employee_card("José", "", "Peña", {day(day_one, {.reg = std::int32_t{480}})})),
                scripted::object(employee_card("Renée", "", "Müller-Ñúñez",
                                               {day(day_one, {.vac = std::int32_t{240}})})),
                scripted::object(employee_card("Grace", "", "O\u2019Neil",
                                               {day(day_one, {.sic = std::int32_t{60}})}))});
}

void expect_names_arrive_unchanged(const qb::CompanySimulator& simulator) {
  const auto sets = simulator.request_sets();
  ASSERT_EQ(sets.size(), 6u);
  EXPECT_EQ(sets[2].requests, (std::vector<qb::Request>{qb::EmployeeAdd{"Grace", "", "O’Neil"}}));
  std::vector<std::string> names;
  for (const qb::TimeTrackingAdd& entry : simulator.company().time_entries)
    names.push_back(entry.entity_full_name);
  EXPECT_EQ(names, (std::vector<std::string>{"José Peña", "Renée Müller-Ñúñez", "Grace O’Neil"}));
  EXPECT_EQ(simulator.company().employees,
            (std::vector<std::string>{"José Peña", "Renée Müller-Ñúñez", "Grace O’Neil"}));
}

TEST_F(QB2000DatesTest, AccentedNamesReachQuickBooksUnchanged) {
  start_with({"José Peña", "Renée Müller-Ñúñez"});
  qb->host.ui.answer_question(Answer::Yes);
  ASSERT_TRUE(exporter->Execute(accented_cards()));
  expect_names_arrive_unchanged(qb->simulator);
}

TEST_F(QB2000DatesTest, AccentedNamesReachQuickBooksUnchangedThroughQbxml) {
  qb = std::make_unique<QuickBooksHost>(company({"José Peña", "Renée Müller-Ñúñez"}));
  std::vector<std::string> documents;
  qb::SimulatorQbxmlSessionFactory qbxml(
      qb->simulator, [&](std::string_view xml) { documents.emplace_back(xml); });
  qb->sessions = &qbxml;
  qb->host.ui.answer_question(Answer::Yes);
  QB2000 qbxml_exporter(qb->context());
  qbxml_exporter.SetupData(kSetup);
  ASSERT_TRUE(qbxml_exporter.Execute(accented_cards()));
  expect_names_arrive_unchanged(qb->simulator);
  ASSERT_EQ(documents.size(), 6u);
  EXPECT_NE(documents[2].find("<LastName>O’Neil</LastName>"), std::string::npos) << documents[2];
  EXPECT_NE(documents[4].find("<FullName>Renée Müller-Ñúñez</FullName>"), std::string::npos)
      << documents[4];
}

}  // namespace
}  // namespace zorvat::formats::qb2000_test
