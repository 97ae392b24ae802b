// QuickBooks export, the session and verification: connecting, the failed session and
// its questions, the payroll item and employee checks, adding employees, the progress
// window and the teardown on every path. Texts are written out by hand.
#include <gtest/gtest.h>

#include "qb2000_test_support.h"

namespace zorvat::formats::qb2000_test {
namespace {

namespace qb = quickbooks;

using Operations = std::vector<std::string>;

constexpr const char* kRetryQuestion =
    "The Company File couldn't be found or QuickBooks will not allow Horalis to access File.\r\n"
    "You must launch QuickBooks and then return to Horalis and retry the export.\r\n\r\n"
    "Click 'Yes' to launch QuickBooks.";
constexpr const char* kAddEmployeesTitle =
    "Add Missing Employees to QuickBooks and Continue with Export?";

class QB2000ExecuteTest : public testing::Test {
 protected:
  // A company holding the default items and `employees`.
  void start(qb::Company company_file) {
    qb = std::make_unique<QuickBooksHost>(std::move(company_file));
  }
  void start_with(std::vector<std::string> employees = {"Doe, Jane"}) {
    start(company(std::move(employees)));
  }

  QB2000& exporter() {
    if (!exporter_) {
      exporter_ = std::make_unique<QB2000>(qb->context());
      exporter_->SetupData(kSetup);
    }
    return *exporter_;
  }
  Operations operations_seen() const { return operations(qb->simulator); }
  const std::vector<MessageBoxRequest>& boxes() const { return qb->host.ui.messages; }

  std::unique_ptr<QuickBooksHost> qb;
  std::unique_ptr<QB2000> exporter_;
};

TEST_F(QB2000ExecuteTest, EmptyCollectionConnectsVerifiesAndAdvancesTheBarThreeTimes) {
  start_with();
  EXPECT_TRUE(exporter().Execute(cards({})));

  EXPECT_EQ(operations_seen(),
            (Operations{"OpenConnection", "BeginSession", "QBXMLVersionsForSession", "DoRequests",
                        "DoRequests", "EndSession", "CloseConnection"}));
  const auto& calls = qb->simulator.calls();
  EXPECT_EQ(calls[0].arguments, (std::vector<std::string>{"Horalis", "Horalis"}));
  EXPECT_EQ(calls[1].arguments, (std::vector<std::string>{kCompanyFile, "2"}));

  EXPECT_EQ(qb->ui.bar_advances(), 3);
  // 4935 / 3 steps = 1645 twips a step.
  EXPECT_EQ(qb->ui.progress.back().bar_width, 4935);
  EXPECT_EQ(qb->ui.progress.back().percent, "100%");
  EXPECT_EQ(
      qb->ui.progress_messages(),
      (std::vector<std::string>{"Connecting to QuickBooks...", "Verifying Payroll Items...",
                                "Verifying Employee Names...", "Exporting Data to QuickBooks..."}));
  EXPECT_TRUE(boxes().empty());
  EXPECT_EQ(qb->ui.events, (std::vector<std::string>{"hide: frmProgBar"}));
}

TEST_F(QB2000ExecuteTest, VerificationSendsOneItemQueryOfFortyAndOneEmployeeQuery) {
  start_with();
  ASSERT_TRUE(exporter().Execute(cards({})));
  const std::vector<qb::RequestSet> expected = {
      {1, 0, qb::OnError::Continue, {qb::PayrollItemWageQuery{40}}},
      {1, 0, qb::OnError::Continue, {qb::EmployeeQuery{}}},
  };
  EXPECT_EQ(qb->simulator.request_sets(), expected);
}

TEST_F(QB2000ExecuteTest, BarAdvancesOnceMoreForEveryCard) {
  start_with({"Doe, Jane", "Smith, John"});
  ASSERT_TRUE(exporter().Execute(cards({scripted::object(employee_card("Jane", "", "Doe")),
                                        scripted::object(employee_card("John", "", "Smith"))})));
  EXPECT_EQ(qb->ui.bar_advances(), 5);
  // 4935 / 5 steps = 987 twips a step.
  ASSERT_GE(qb->ui.progress.size(), 2u);
  EXPECT_EQ(qb->ui.progress.back().bar_width, 5 * 987);
  EXPECT_EQ(exporter().progress_window()->interval(), 987);
}

TEST_F(QB2000ExecuteTest, BlankPayrollItemPassesWhenQuickBooksReturnsItems) {
  start_with();
  exporter().SetupData(
      "C:\\Company\\Sample.QBW,Regular Hourly Rate,Overtime Hourly Rate,"
      "Premuim Overtime Hourly Rate,Vacation Hourly Rate,,Sick Hourly Rate,Other Hourly Rate");
  EXPECT_TRUE(exporter().Execute(cards({})));
  EXPECT_TRUE(boxes().empty());
}

TEST_F(QB2000ExecuteTest, BlankPayrollItemIsListedAsAnEmptyLineWhenQuickBooksReturnsNone) {
  qb::Company no_items = company({"Doe, Jane"});
  no_items.payroll_items.clear();
  start(no_items);
  exporter().SetupData(
      "C:\\Company\\Sample.QBW,Regular Hourly Rate,Overtime Hourly Rate,"
      "Premuim Overtime Hourly Rate,Vacation Hourly Rate,,Sick Hourly Rate,Other Hourly Rate");
  EXPECT_FALSE(exporter().Execute(cards({})));

  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_EQ(boxes()[0].text,
            "The Following Payroll Items were not found in Quickbooks: \r\n\r\n"
            "Regular Hourly Rate\r\nOvertime Hourly Rate\r\nPremuim Overtime Hourly Rate\r\n"
            "Vacation Hourly Rate\r\n\r\nSick Hourly Rate\r\nOther Hourly Rate\r\n"
            "\r\n\r\nThese items must be added to Quickbooks before export can continue");
  EXPECT_EQ(boxes()[0].title, "Missing Payroll Items");
  EXPECT_EQ(boxes()[0].icon, MessageIcon::Exclamation);
  EXPECT_TRUE(boxes()[0].foreground);
  EXPECT_FALSE(boxes()[0].system_modal);
  // The session ends before the window closes; the employees are never asked for.
  EXPECT_EQ(operations_seen(),
            (Operations{"OpenConnection", "BeginSession", "QBXMLVersionsForSession", "DoRequests",
                        "EndSession", "CloseConnection"}));
  EXPECT_EQ(qb->ui.events.back(), "hide: frmProgBar");
  EXPECT_EQ(qb->ui.bar_advances(), 1);
}

TEST_F(QB2000ExecuteTest, PayrollItemsCompareWithTheirLetterCase) {
  qb::Company lower = company({"Doe, Jane"});
  lower.payroll_items[0] = "regular hourly rate";
  start(lower);
  EXPECT_FALSE(exporter().Execute(cards({})));
  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_EQ(boxes()[0].text,
            "The Following Payroll Items were not found in Quickbooks: \r\n\r\n"
            "Regular Hourly Rate\r\n"
            "\r\n\r\nThese items must be added to Quickbooks before export can continue");
}

TEST_F(QB2000ExecuteTest, OnlyTheFirstFortyItemsAreCompared) {
  qb::Company crowded = company({"Doe, Jane"});
  std::vector<std::string> items;
  items.reserve(40);
  for (int i = 0; i < 40; ++i) items.push_back("Item " + std::to_string(i));
  crowded.payroll_items.insert(crowded.payroll_items.begin(), items.begin(), items.end());
  start(crowded);
  EXPECT_FALSE(exporter().Execute(cards({})));
  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_EQ(boxes()[0].title, "Missing Payroll Items");
  EXPECT_NE(boxes()[0].text.find("\r\n\r\nRegular Hourly Rate\r\nOvertime Hourly Rate\r\n"),
            std::string::npos);
}

TEST_F(QB2000ExecuteTest, LastNameFirstEmployeeMatchesACardWithoutMiddleInitial) {
  start_with({"Doe, Jane"});
  ASSERT_TRUE(exporter().Execute(cards({scripted::object(employee_card(
      "Jane", "", "Doe", {day(Date::from_civil(2004, 3, 1), {.reg = std::int32_t{480}})}))})));
  EXPECT_TRUE(boxes().empty());
  ASSERT_EQ(qb->simulator.company().time_entries.size(), 1u);
  EXPECT_EQ(qb->simulator.company().time_entries[0].entity_full_name, "Doe, Jane");
}

TEST_F(QB2000ExecuteTest, EmployeeNamesMatchWithoutRegardToCase) {
  start_with({"DOE, JANE"});
  ASSERT_TRUE(exporter().Execute(cards({scripted::object(employee_card("jane", "", "doe"))})));
  EXPECT_TRUE(boxes().empty());
}

TEST_F(QB2000ExecuteTest, ThreePartNameDoesNotMatchTheCardWithThatMiddleInitial) {
  start_with({"Doe, Jane, Q"});
  EXPECT_EQ(exporter().FormatName("Doe, Jane, Q"), "Jane  Q Doe");
  EXPECT_FALSE(exporter().Execute(cards({scripted::object(employee_card("Jane", "Q", "Doe"))})));
  ASSERT_EQ(boxes().size(), 2u);
  EXPECT_EQ(boxes()[0].text,
            "The following employees were not found in QuickBooks: \r\n"
            "Jane Q Doe\r\n"
            "\r\nDo you want to add these Employees to Quickbooks and continue with Export? ");
}

TEST_F(QB2000ExecuteTest, EveryCardIsMissingWhenQuickBooksHasNoEmployees) {
  start_with({});
  EXPECT_FALSE(exporter().Execute(cards({scripted::object(employee_card("Jane", "", "Doe")),
                                         scripted::object(employee_card("John", "", "Smith"))})));
  ASSERT_FALSE(boxes().empty());
  EXPECT_EQ(boxes()[0].text,
            "The following employees were not found in QuickBooks: \r\n"
            "Jane  Doe\r\nJohn  Smith\r\n"
            "\r\nDo you want to add these Employees to Quickbooks and continue with Export? ");
}

TEST_F(QB2000ExecuteTest, NoToAddingEmployeesAbortsTheExport) {
  start_with({"Doe, Jane"});
  qb->host.ui.answer_question(Answer::No);
  EXPECT_FALSE(exporter().Execute(cards({scripted::object(employee_card("John", "", "Smith")),
                                         scripted::object(employee_card("Jane", "", "Doe")),
                                         scripted::object(employee_card("Mary", "A", "Jones"))})));

  ASSERT_EQ(boxes().size(), 2u);
  const MessageBoxRequest& question = boxes()[0];
  EXPECT_EQ(question.text,
            "The following employees were not found in QuickBooks: \r\n"
            "John  Smith\r\nMary A Jones\r\n"
            "\r\nDo you want to add these Employees to Quickbooks and continue with Export? ");
  EXPECT_EQ(question.title, kAddEmployeesTitle);
  EXPECT_TRUE(question.system_modal);
  EXPECT_FALSE(question.foreground);

  const MessageBoxRequest& aborted = boxes()[1];
  EXPECT_EQ(aborted.text, "Data Export Aborted.");
  EXPECT_EQ(aborted.title, "");
  EXPECT_EQ(aborted.icon, MessageIcon::Exclamation);
  EXPECT_TRUE(aborted.foreground);
  EXPECT_FALSE(aborted.system_modal);

  EXPECT_EQ(qb->ui.events,
            (std::vector<std::string>{"question: " + std::string(kAddEmployeesTitle),
                                      "hide: frmProgBar", "message: Data Export Aborted."}));
  EXPECT_EQ(operations_seen(),
            (Operations{"OpenConnection", "BeginSession", "QBXMLVersionsForSession", "DoRequests",
                        "DoRequests", "EndSession", "CloseConnection"}));
  EXPECT_EQ(qb->ui.bar_advances(), 2);
}

TEST_F(QB2000ExecuteTest, YesAddsEveryMissingEmployeeInARequestSetOfItsOwn) {
  start_with({"Doe, Jane"});
  qb->host.ui.answer_question(Answer::Yes);
  EXPECT_TRUE(exporter().Execute(cards({scripted::object(employee_card("John", "", "Smith")),
                                        scripted::object(employee_card("Jane", "", "Doe")),
                                        scripted::object(employee_card("Mary", "A", "Jones"))})));

  const std::vector<qb::RequestSet> sets = qb->simulator.request_sets();
  ASSERT_EQ(sets.size(), 4u);
  EXPECT_EQ(sets[2],
            (qb::RequestSet{1, 0, qb::OnError::Continue, {qb::EmployeeAdd{"John", "", "Smith"}}}));
  EXPECT_EQ(sets[3],
            (qb::RequestSet{1, 0, qb::OnError::Continue, {qb::EmployeeAdd{"Mary", "A", "Jones"}}}));
  EXPECT_EQ(qb->simulator.company().employees,
            (std::vector<std::string>{"Doe, Jane", "John Smith", "Mary A Jones"}));
  EXPECT_EQ(qb->ui.progress_messages(),
            (std::vector<std::string>{"Connecting to QuickBooks...", "Verifying Payroll Items...",
                                      "Verifying Employee Names...", "Adding Employee Names...",
                                      "Exporting Data to QuickBooks..."}));
  EXPECT_EQ(qb->ui.bar_advances(), 6);
}

TEST_F(QB2000ExecuteTest, RefusedAddsDoNotStopTheOthers) {
  start_with({"Doe, Jane"});
  qb->host.ui.answer_question(Answer::Yes);
  // An employee without any name part is refused (a missing name); the next is added.
  EXPECT_TRUE(exporter().Execute(cards({scripted::object(employee_card("", "", "")),
                                        scripted::object(employee_card("Mary", "A", "Jones"))})));
  const std::vector<qb::RequestSet> sets = qb->simulator.request_sets();
  ASSERT_EQ(sets.size(), 4u);
  EXPECT_EQ(sets[2].requests, (std::vector<qb::Request>{qb::EmployeeAdd{"", "", ""}}));
  EXPECT_EQ(sets[3].requests, (std::vector<qb::Request>{qb::EmployeeAdd{"Mary", "A", "Jones"}}));
}

TEST_F(QB2000ExecuteTest, NoToRetryExportReachesTheHostAsAnError) {
  qb::Company closed = company({"Doe, Jane"});
  closed.begin_session_failure = qb::com_failures::could_not_start();
  start(closed);
  const Error error = raised_by([&] { exporter().Execute(cards({})); });

  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  // The next call after the failed session finds no session behind it, and that is
  // the error reported; the teardown on a fresh manager has nothing to end.
  EXPECT_EQ(error.number(), qb::com_failures::kInvalidTicket);
  EXPECT_EQ(error.description(), "The ticket parameter is invalid.");
  EXPECT_EQ(error.trail().front(), "zorvat.QuickBooksSimulator");

  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_EQ(boxes()[0].text, kRetryQuestion);
  EXPECT_EQ(boxes()[0].title, "Retry Export");
  EXPECT_TRUE(boxes()[0].foreground);
  EXPECT_FALSE(boxes()[0].system_modal);
  EXPECT_TRUE(qb->ui.launched.empty());
  EXPECT_EQ(operations_seen(),
            (Operations{"OpenConnection", "BeginSession", "EndSession", "CloseConnection",
                        "QBXMLVersionsForSession", "EndSession", "CloseConnection"}));
  // The failed session's manager was released; the later calls came from a fresh one.
  EXPECT_EQ(qb->direct.created(), 2);
  // The error path leaves the progress window up.
  EXPECT_EQ(qb->ui.events, (std::vector<std::string>{"question: Retry Export"}));
  ASSERT_NE(exporter().progress_window(), nullptr);
  EXPECT_EQ(exporter().progress_window()->message(), "Verifying Payroll Items...");
}

TEST_F(QB2000ExecuteTest, YesToRetryExportLaunchesTheCompanyFileAndReturnsFalse) {
  qb::Company closed = company({"Doe, Jane"});
  closed.begin_session_failure = qb::com_failures::could_not_start();
  start(closed);
  qb->host.ui.answer_question(Answer::Yes);
  EXPECT_FALSE(exporter().Execute(cards({})));
  EXPECT_EQ(qb->ui.launched, (std::vector<std::string>{kCompanyFile}));
  EXPECT_EQ(qb->ui.events,
            (std::vector<std::string>{"question: Retry Export", "launch: C:\\Company\\Sample.QBW",
                                      "hide: frmProgBar"}));
  EXPECT_EQ(operations_seen(),
            (Operations{"OpenConnection", "BeginSession", "EndSession", "CloseConnection"}));
}

TEST_F(QB2000ExecuteTest, DeniedAccessShowsTheDescriptionAndAborts) {
  qb::Company denied = company({"Doe, Jane"});
  denied.begin_session_failure = qb::com_failures::denied_access();
  start(denied);
  EXPECT_FALSE(exporter().Execute(cards({})));

  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_EQ(boxes()[0].text, "QuickBooks has denied Horalis access... Export Aborted.");
  EXPECT_EQ(boxes()[0].title, "");
  EXPECT_EQ(boxes()[0].icon, MessageIcon::Information);
  EXPECT_TRUE(boxes()[0].foreground);
  EXPECT_EQ(qb->ui.progress_messages(),
            (std::vector<std::string>{"Connecting to QuickBooks...",
                                      "The QuickBooks user has denied access."}));
  EXPECT_EQ(qb->ui.events, (std::vector<std::string>{
                               "message: QuickBooks has denied Horalis access... Export Aborted.",
                               "hide: frmProgBar"}));
  EXPECT_EQ(operations_seen(),
            (Operations{"OpenConnection", "BeginSession", "EndSession", "CloseConnection"}));
}

TEST_F(QB2000ExecuteTest, DeniedAccessIsLookedForInTheLastErrorCaught) {
  qb::Company denied = company({"Doe, Jane"});
  denied.begin_session_failure = qb::com_failures::denied_access();
  start(denied);
  // A session manager whose teardown fails too: that failure's description has no
  // "denied access", so the user is asked to retry instead.
  qb->faulty.fail("EndSession", -2147220001, "Cannot end.");
  qb->sessions = &qb->faulty;
  qb->host.ui.answer_question(Answer::Yes);
  EXPECT_FALSE(exporter().Execute(cards({})));
  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_EQ(boxes()[0].title, "Retry Export");
}

TEST_F(QB2000ExecuteTest, DeniedAccessIsMatchedWithItsLetterCase) {
  qb::Company denied = company({"Doe, Jane"});
  denied.begin_session_failure = qb::ComFailure{-2147220448, "The user has Denied Access."};
  start(denied);
  qb->faulty.forgive("EndSession");
  qb->sessions = &qb->faulty;
  qb->host.ui.answer_question(Answer::Yes);
  EXPECT_FALSE(exporter().Execute(cards({})));
  ASSERT_EQ(boxes().size(), 1u);
  EXPECT_EQ(boxes()[0].title, "Retry Export");
}

TEST_F(QB2000ExecuteTest, TimeTrackingSwitchedOffEndsTheSessionAndRaises3250) {
  qb::Company no_time = company({"Doe, Jane"});
  no_time.time_tracking = false;
  start(no_time);
  const Error error = raised_by([&] {
    exporter().Execute(cards({scripted::object(
        employee_card("Jane", "", "Doe",
                      {day(Date::from_civil(2004, 3, 1), {.reg = std::int32_t{480}}),
                       day(Date::from_civil(2004, 3, 2), {.reg = std::int32_t{480}})}))}));
  });
  EXPECT_EQ(error.number(), 3250);
  EXPECT_EQ(error.description(),
            "The QuickBooks Time Tracking Preference is not available or disabled.\r\n"
            "Please enable Time Tracking under QuickBooks Company Preferences.");
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_EQ(error.trail(),
            (std::vector<std::string>{"zorvat.QB2000.ExportTCData", "zorvat.QB2000.ExportTimeCard",
                                      "zorvat.QB2000.Execute"}));
  // The first day's set was the last one sent; the session was ended and closed.
  EXPECT_EQ(qb->simulator.request_sets().size(), 3u);
  EXPECT_EQ(operations_seen(),
            (Operations{"OpenConnection", "BeginSession", "QBXMLVersionsForSession", "DoRequests",
                        "DoRequests", "DoRequests", "EndSession", "CloseConnection"}));
  EXPECT_TRUE(qb->ui.events.empty());
  EXPECT_EQ(exporter().progress_window()->message(), "Exporting Data to QuickBooks...");
}

TEST_F(QB2000ExecuteTest, ATeardownErrorReplacesTheErrorThatStartedTheErrorPath) {
  start_with();
  qb->faulty.fail("QBXMLVersionsForSession", -2147220000, "No versions.");
  qb->faulty.fail("EndSession", -2147220001, "Cannot end.");
  qb->sessions = &qb->faulty;
  const Error error = raised_by([&] { exporter().Execute(cards({})); });
  EXPECT_EQ(error.number(), -2147220001);
  EXPECT_EQ(error.description(), "Cannot end.");
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_EQ(qb->faulty.calls, (Operations{"OpenConnection", "BeginSession",
                                          "QBXMLVersionsForSession", "EndSession"}));
}

TEST_F(QB2000ExecuteTest, AFailedSendEndsTheSessionAndRaisesWithTheExecuteSource) {
  start_with();
  qb->faulty.fail("DoRequests", -2147220480, "QuickBooks found an error when parsing.");
  qb->sessions = &qb->faulty;
  const Error error = raised_by([&] { exporter().Execute(cards({})); });
  EXPECT_EQ(error.number(), -2147220480);
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  // The item check's errors have always carried the employee check's source.
  EXPECT_EQ(error.trail(), (std::vector<std::string>{"QuickBooks", "zorvat.QB2000.VerifyEmpsInQB",
                                                     "zorvat.QB2000.Execute"}));
  EXPECT_EQ(qb->faulty.calls,
            (Operations{"OpenConnection", "BeginSession", "QBXMLVersionsForSession", "DoRequests",
                        "EndSession", "CloseConnection"}));
  EXPECT_EQ(qb->faulty.created, 1);
}

TEST_F(QB2000ExecuteTest, BadSettingsEndTheExportThroughTheErrorPath) {
  start_with();
  qb->faulty.forgive("EndSession");
  qb->faulty.forgive("CloseConnection");
  qb->sessions = &qb->faulty;
  exporter().SetupData("C:\\Company\\Sample.QBW,Regular Hourly Rate," + std::string(32, 'O') +
                       ",c,d,e,f,g");
  const Error error = raised_by([&] { exporter().Execute(cards({})); });
  EXPECT_EQ(error.number(), 2);
  EXPECT_EQ(error.description(), "Paycode field must be 31 chars or less");
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_EQ(error.trail(),
            (std::vector<std::string>{"zorvat.QB2000.Validate", "zorvat.QB2000.ValidateSetupData",
                                      "zorvat.QB2000.Execute"}));
  // No window was shown; the teardown still ran, on a manager made for it.
  EXPECT_TRUE(qb->ui.progress.empty());
  EXPECT_EQ(qb->faulty.calls, (Operations{"EndSession", "CloseConnection"}));
}

TEST_F(QB2000ExecuteTest, BadSettingsGiveWayToTheTeardownsOwnError) {
  start_with();
  qb->faulty.fail("EndSession", -2147220001, "Cannot end.");
  qb->sessions = &qb->faulty;
  exporter().SetupData("C:\\Company\\Sample.QBW,R," + std::string(32, 'O') + ",c,d,e,f,g");
  const Error error = raised_by([&] { exporter().Execute(cards({})); });
  // Ending the session fails, and that error is the one reported.
  EXPECT_EQ(error.number(), -2147220001);
  EXPECT_EQ(error.description(), "Cannot end.");
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_EQ(qb->faulty.calls, (Operations{"EndSession"}));
}

TEST_F(QB2000ExecuteTest, BadSettingsReachTheHostThroughTheSimulator) {
  start_with();
  exporter().SetupData("C:\\Company\\Sample.QBW,R," + std::string(32, 'O') + ",c,d,e,f,g");
  const Error error = raised_by([&] { exporter().Execute(cards({})); });
  EXPECT_EQ(error.number(), 2);
  EXPECT_EQ(error.description(), "Paycode field must be 31 chars or less");
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_EQ(operations_seen(), (Operations{"EndSession", "CloseConnection"}));
}

TEST_F(QB2000ExecuteTest, WithoutASessionManagerTheExportRaises429) {
  start_with();
  qb->sessions = nullptr;
  const Error error = raised_by([&] { exporter().Execute(cards({})); });
  EXPECT_EQ(error.number(), 429);
  EXPECT_EQ(error.description(), "ActiveX component can't create object");
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_EQ(qb->ui.progress_messages(), (std::vector<std::string>{"Connecting to QuickBooks..."}));
  EXPECT_TRUE(qb->ui.events.empty());
}

TEST_F(QB2000ExecuteTest, SessionManagerIsCreatedOnFirstUseAndReleasedAfterARun) {
  start_with();
  ASSERT_TRUE(exporter().Execute(cards({})));
  EXPECT_EQ(qb->direct.created(), 1);
  ASSERT_TRUE(exporter().Execute(cards({})));
  EXPECT_EQ(qb->direct.created(), 2);
}

TEST_F(QB2000ExecuteTest, MissingItemsEndTheSessionButKeepTheManager) {
  qb::Company no_items = company({"Doe, Jane"});
  no_items.payroll_items.clear();
  start(no_items);
  EXPECT_FALSE(exporter().Execute(cards({})));
  EXPECT_FALSE(exporter().Execute(cards({})));
  EXPECT_EQ(qb->direct.created(), 1);
}

TEST_F(QB2000ExecuteTest, AWindowLeftUpByAFailedExportMakesWayForTheNext) {
  qb::Company no_time = company({"Doe, Jane"});
  no_time.time_tracking = false;
  start(no_time);
  const Variant failing = cards({scripted::object(employee_card(
      "Jane", "", "Doe", {day(Date::from_civil(2004, 3, 1), {.reg = std::int32_t{60}})}))});
  raised_by([&] { exporter().Execute(failing); });
  EXPECT_TRUE(qb->ui.events.empty());
  EXPECT_TRUE(exporter().Execute(cards({})));
  EXPECT_EQ(qb->ui.events, (std::vector<std::string>{"hide: frmProgBar", "hide: frmProgBar"}));
  EXPECT_EQ(qb->ui.progress.back().bar_width, 4935);
}

TEST_F(QB2000ExecuteTest, CardsWithoutACountRaiseFromExecute) {
  start_with();
  qb->faulty.forgive("EndSession");
  qb->faulty.forgive("CloseConnection");
  qb->sessions = &qb->faulty;
  const Error error = raised_by([&] { exporter().Execute(Variant(std::int32_t{5})); });
  EXPECT_EQ(error.number(), rt::kTypeMismatch);
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
}

TEST_F(QB2000ExecuteTest, RequestSetsTakeTheSessionsFirstVersion) {
  qb::Company newer = company({"Doe, Jane"});
  newer.qbxml_versions = {"3.0", "2.1"};
  start(newer);
  ASSERT_TRUE(exporter().Execute(cards({})));
  for (const qb::RequestSet& set : qb->simulator.request_sets()) {
    EXPECT_EQ(set.major_version, 3);
    EXPECT_EQ(set.minor_version, 0);
  }
}

TEST_F(QB2000ExecuteTest, AVersionWithoutAMinorPartRaises9) {
  qb::Company odd = company({"Doe, Jane"});
  odd.qbxml_versions = {"2"};
  start(odd);
  const Error error = raised_by([&] { exporter().Execute(cards({})); });
  EXPECT_EQ(error.number(), rt::kSubscriptOutOfRange);
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_EQ(operations_seen(),
            (Operations{"OpenConnection", "BeginSession", "QBXMLVersionsForSession", "EndSession",
                        "CloseConnection"}));
}

TEST(QB2000Description, NamesTheSessionBackEndsInTheOrderTheyAreTried) {
  scripted::Host host;
  const ClassDescription description = QB2000(host.context()).describe();
  EXPECT_EQ(description.writes,
            "no file: time entries sent into a QuickBooks company file, after checking its "
            "payroll items and employees, through the first of these that is installed: "
            "QBFC2.QBSessionManager, QBFC1.QBSessionManager, QBFC16.QBSessionManager, "
            "QBFC15.QBSessionManager, QBFC14.QBSessionManager, QBFC13.QBSessionManager, "
            "QBFC12.QBSessionManager, QBFC11.QBSessionManager, QBFC10.QBSessionManager, "
            "QBFC9.QBSessionManager, QBFC8.QBSessionManager, QBFC7.QBSessionManager, "
            "QBFC6.QBSessionManager, QBFC5.QBSessionManager, QBFC4.QBSessionManager, "
            "QBFC3.QBSessionManager, QBXMLRP2.RequestProcessor");
}

}  // namespace
}  // namespace zorvat::formats::qb2000_test
