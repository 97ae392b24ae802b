// The simulated session manager: connection and session calls, their failures and
// the record of every call.
#include <gtest/gtest.h>

#include "zorvat/error.h"
#include "zorvat/quickbooks/simulator.h"

namespace zorvat::quickbooks {
namespace {

Company sample_company() {
  Company company;
  company.company_file = "C:\\Company\\Sample.QBW";
  company.qbxml_versions = {"1.1", "1.0"};
  return company;
}

// Runs `call` and returns the error it raised; fails the test when it raised none.
template <class Call>
Error error_of(Call&& call) {
  try {
    call();
  } catch (const Error& error) {
    return error;
  }
  ADD_FAILURE() << "no error was raised";
  return Error(0, "", "");
}

TEST(SimulatorSession, RecordsTheWholeConversationInOrder) {
  CompanySimulator simulator(sample_company());
  simulator.OpenConnection("Horalis", "Horalis App");
  const std::string ticket = simulator.BeginSession("C:\\Company\\Sample.QBW", OpenMode::DoNotCare);
  EXPECT_EQ(simulator.ticket(), ticket);
  EXPECT_FALSE(ticket.empty());
  EXPECT_EQ(simulator.QBXMLVersionsForSession(), (std::vector<std::string>{"1.1", "1.0"}));
  simulator.EndSession();
  simulator.CloseConnection();
  EXPECT_TRUE(simulator.ticket().empty());

  const std::vector<RecordedCall> expected = {
      {"OpenConnection", {"Horalis", "Horalis App"}, std::nullopt, 0},
      {"BeginSession", {"C:\\Company\\Sample.QBW", "2"}, std::nullopt, 0},
      {"QBXMLVersionsForSession", {}, std::nullopt, 0},
      {"EndSession", {}, std::nullopt, 0},
      {"CloseConnection", {}, std::nullopt, 0},
  };
  EXPECT_EQ(simulator.calls(), expected);
}

TEST(SimulatorSession, EverySessionGetsItsOwnTicket) {
  CompanySimulator simulator(sample_company());
  simulator.OpenConnection("a", "b");
  const std::string first = simulator.BeginSession("", OpenMode::SingleUser);
  simulator.EndSession();
  const std::string second = simulator.BeginSession("", OpenMode::SingleUser);
  EXPECT_NE(first, second);
  EXPECT_NO_THROW(simulator.check_ticket(second));
  EXPECT_EQ(error_of([&] { simulator.check_ticket(first); }).number(), -2147220467);
}

TEST(SimulatorSession, TheCompanyFileNameIgnoresCaseAndSlashKind) {
  CompanySimulator simulator(sample_company());
  simulator.OpenConnection("a", "b");
  EXPECT_NO_THROW(simulator.BeginSession("c:/company/SAMPLE.qbw", OpenMode::MultiUser));
}

TEST(SimulatorSession, AnEmptyNameAsksForTheOpenCompanyFile) {
  CompanySimulator simulator(sample_company());
  simulator.OpenConnection("a", "b");
  EXPECT_NO_THROW(simulator.BeginSession("", OpenMode::DoNotCare));
}

TEST(SimulatorSession, ACompanyWithoutAFileNameAcceptsAnyName) {
  CompanySimulator simulator(Company{});
  simulator.OpenConnection("a", "b");
  EXPECT_NO_THROW(simulator.BeginSession("D:\\Elsewhere\\Other.QBW", OpenMode::DoNotCare));
}

TEST(SimulatorSession, AnotherCompanyFileFailsAsQuickBooksDoes) {
  CompanySimulator simulator(sample_company());
  simulator.OpenConnection("a", "b");
  const Error error =
      error_of([&] { simulator.BeginSession("C:\\Company\\Other.QBW", OpenMode::DoNotCare); });
  EXPECT_EQ(error.number(), -2147220470);
  EXPECT_EQ(error.description(),
            "A QuickBooks company data file is already open and it is different from the one "
            "requested.");
  EXPECT_EQ(simulator.calls().back().error, -2147220470);
  // No session was begun: requests fail for want of a ticket.
  EXPECT_EQ(error_of([&] { simulator.DoRequests(RequestSet{}); }).number(), -2147220467);
}

TEST(SimulatorSession, AConfiguredBeginSessionFailureIsRaised) {
  Company company = sample_company();
  company.begin_session_failure = ComFailure{-2147220448, "The QuickBooks user has denied access."};
  CompanySimulator simulator(company);
  simulator.OpenConnection("a", "b");
  const Error error =
      error_of([&] { simulator.BeginSession("C:\\Company\\Sample.QBW", OpenMode::DoNotCare); });
  EXPECT_EQ(error.number(), -2147220448);
  EXPECT_EQ(error.description(), "The QuickBooks user has denied access.");
  EXPECT_EQ(error.source(), "zorvat.QuickBooksSimulator");
  // The connection stays open and can be closed.
  EXPECT_NO_THROW(simulator.CloseConnection());
}

TEST(SimulatorSession, AConfiguredOpenConnectionFailureIsRaised) {
  Company company = sample_company();
  company.open_connection_failure = ComFailure{-2147220472, "Could not start QuickBooks."};
  CompanySimulator simulator(company);
  const Error error = error_of([&] { simulator.OpenConnection("a", "b"); });
  EXPECT_EQ(error.number(), -2147220472);
  EXPECT_EQ(error.description(), "Could not start QuickBooks.");
  EXPECT_EQ(simulator.calls().at(0).error, -2147220472);
}

TEST(SimulatorSession, CallsWithoutASessionFailWithTheInvalidTicket) {
  CompanySimulator simulator(sample_company());
  simulator.OpenConnection("a", "b");
  for (const Error& error : {error_of([&] { simulator.DoRequests(RequestSet{}); }),
                             error_of([&] { simulator.QBXMLVersionsForSession(); })}) {
    EXPECT_EQ(error.number(), -2147220467);
    EXPECT_EQ(error.description(), "The ticket parameter is invalid.");
  }
  ASSERT_EQ(simulator.calls().size(), 3u);
  EXPECT_EQ(simulator.calls()[1].operation, "DoRequests");
  EXPECT_EQ(simulator.calls()[1].error, -2147220467);
}

TEST(SimulatorSession, TeardownWithoutASessionOrConnectionIsLetGo) {
  Company company = sample_company();
  company.begin_session_failure = ComFailure{-2147220448, "The QuickBooks user has denied access."};
  CompanySimulator simulator(company);
  // Before any connection, and after a failed BeginSession: neither call raises, so
  // the failure of BeginSession stays the last one a client caught.
  EXPECT_NO_THROW(simulator.EndSession());
  EXPECT_NO_THROW(simulator.CloseConnection());
  simulator.OpenConnection("a", "b");
  EXPECT_THROW(simulator.BeginSession("C:\\Company\\Sample.QBW", OpenMode::DoNotCare), Error);
  EXPECT_NO_THROW(simulator.EndSession());
  EXPECT_NO_THROW(simulator.CloseConnection());
  EXPECT_NO_THROW(simulator.CloseConnection());
  const std::vector<RecordedCall>& calls = simulator.calls();
  ASSERT_EQ(calls.size(), 7u);
  EXPECT_EQ(calls[0].operation, "EndSession");
  EXPECT_EQ(calls[0].error, 0);
  EXPECT_EQ(calls[3].error, -2147220448);
  EXPECT_EQ(calls[4].operation, "EndSession");
  EXPECT_EQ(calls[4].error, 0);
  // The connection really is closed: a session cannot begin on it.
  EXPECT_EQ(error_of([&] { simulator.BeginSession("", OpenMode::DoNotCare); }).number(),
            -2147220478);
}

TEST(SimulatorSession, ConnectionCallsOutOfOrderFailAsUnexpected) {
  CompanySimulator simulator(sample_company());
  const Error begin = error_of([&] { simulator.BeginSession("", OpenMode::DoNotCare); });
  EXPECT_EQ(begin.number(), -2147220478);
  EXPECT_EQ(begin.description(), "Unexpected error: no connection is open.");

  simulator.OpenConnection("a", "b");
  EXPECT_EQ(error_of([&] { simulator.OpenConnection("a", "b"); }).description(),
            "Unexpected error: a connection is already open.");
  simulator.BeginSession("", OpenMode::DoNotCare);
  EXPECT_EQ(error_of([&] { simulator.BeginSession("", OpenMode::DoNotCare); }).description(),
            "Unexpected error: a session is already in progress.");
}

TEST(SimulatorSession, ClosingTheConnectionEndsTheSession) {
  CompanySimulator simulator(sample_company());
  simulator.OpenConnection("a", "b");
  simulator.BeginSession("", OpenMode::DoNotCare);
  simulator.CloseConnection();
  EXPECT_EQ(error_of([&] { simulator.QBXMLVersionsForSession(); }).number(), -2147220467);
  EXPECT_NO_THROW(simulator.OpenConnection("a", "b"));
}

TEST(SimulatorSessionFactory, ManagersShareOneSimulator) {
  CompanySimulator simulator(sample_company());
  SimulatorSessionFactory factory(simulator);
  auto first = factory.create();
  first->OpenConnection("Horalis", "Horalis");
  first->BeginSession("C:\\Company\\Sample.QBW", OpenMode::DoNotCare);
  auto second = factory.create();
  EXPECT_EQ(second->QBXMLVersionsForSession(), (std::vector<std::string>{"1.1", "1.0"}));
  second->EndSession();
  second->CloseConnection();
  EXPECT_EQ(factory.created(), 2);
  EXPECT_EQ(simulator.calls().size(), 5u);
  EXPECT_EQ(simulator.calls()[3].operation, "EndSession");
}

TEST(SimulatorSessionFactory, WithoutASessionManagerCreationFails) {
  Company company = sample_company();
  company.session_manager_installed = false;
  CompanySimulator simulator(company);
  SimulatorSessionFactory factory(simulator);
  const Error error = error_of([&] { factory.create(); });
  EXPECT_EQ(error.number(), 429);
  EXPECT_EQ(error.description(), "ActiveX component can't create object");
  EXPECT_EQ(factory.created(), 0);
}

}  // namespace
}  // namespace zorvat::quickbooks
