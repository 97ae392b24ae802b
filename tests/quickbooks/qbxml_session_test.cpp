// The qbXML session manager over a transport, the simulator's qbXML transport, and
// one pay period's conversation carried by the direct and the qbXML backends alike.
#include <gtest/gtest.h>

#include "zorvat/error.h"
#include "zorvat/quickbooks/qbxml.h"
#include "zorvat/quickbooks/qbxml_session.h"

namespace zorvat::quickbooks {
namespace {

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

// A transport that answers from a script and remembers what it was given.
class ScriptedTransport : public QbxmlTransport {
 public:
  void OpenConnection(std::string_view app_id, std::string_view app_name) override {
    seen.push_back("OpenConnection " + std::string(app_id) + " " + std::string(app_name));
  }
  std::string BeginSession(std::string_view company_file, OpenMode mode) override {
    seen.push_back("BeginSession " + std::string(company_file) + " " +
                   std::to_string(static_cast<int>(mode)));
    return "T-1";
  }
  std::string ProcessRequest(std::string_view ticket, std::string_view request_xml) override {
    seen.push_back("ProcessRequest " + std::string(ticket));
    requests.emplace_back(request_xml);
    return response;
  }
  std::vector<std::string> QBXMLVersionsForSession(std::string_view ticket) override {
    seen.push_back("QBXMLVersionsForSession " + std::string(ticket));
    return {"2.0"};
  }
  void EndSession(std::string_view ticket) override {
    seen.push_back("EndSession " + std::string(ticket));
  }
  void CloseConnection() override { seen.push_back("CloseConnection"); }

  std::vector<std::string> seen;
  std::vector<std::string> requests;
  std::string response;
};

const std::string kNoEmployees =
    "<?xml version=\"1.0\"?>\n<QBXML><QBXMLMsgsRs><EmployeeQueryRs requestID=\"1\" "
    "statusCode=\"1\" "
    "statusSeverity=\"Info\" statusMessage=\"A query request did not find a matching object in "
    "QuickBooks\"/></QBXMLMsgsRs></QBXML>";

TEST(QbxmlSessionManager, CarriesTheTicketAndLogsEveryDocumentBeforeSending) {
  ScriptedTransport transport;
  transport.response = kNoEmployees;
  std::vector<std::string> logged;
  QbxmlSessionManager manager(transport, [&](std::string_view xml) {
    logged.emplace_back(xml);
    EXPECT_TRUE(transport.requests.size() < logged.size()) << "logged after sending";
  });
  manager.OpenConnection("Horalis", "Horalis");
  manager.BeginSession("C:\\Co.QBW", OpenMode::DoNotCare);
  EXPECT_EQ(manager.QBXMLVersionsForSession(), std::vector<std::string>{"2.0"});
  const RequestSet request_set{2, 0, OnError::Continue, {EmployeeQuery{}}};
  const ResponseSet responses = manager.DoRequests(request_set);
  manager.EndSession();
  manager.QBXMLVersionsForSession();
  manager.CloseConnection();

  EXPECT_EQ(responses.responses.at(0).status_code, 1);
  EXPECT_EQ(responses.responses.at(0).detail, std::nullopt);
  EXPECT_EQ(transport.seen, (std::vector<std::string>{
                                "OpenConnection Horalis Horalis", "BeginSession C:\\Co.QBW 2",
                                "QBXMLVersionsForSession T-1", "ProcessRequest T-1",
                                "EndSession T-1", "QBXMLVersionsForSession ", "CloseConnection"}));
  ASSERT_EQ(logged.size(), 1u);
  EXPECT_EQ(logged[0],
            "<?xml version=\"1.0\"?>\n"
            "<?qbxml version=\"2.0\"?>\n"
            "<QBXML>\n"
            "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
            "    <EmployeeQueryRq requestID=\"1\"/>\n"
            "  </QBXMLMsgsRq>\n"
            "</QBXML>\n");
  EXPECT_EQ(transport.requests, logged);
}

TEST(QbxmlSessionManager, AResponseThatDoesNotAnswerTheRequestsIsAnError) {
  ScriptedTransport transport;
  transport.response = kNoEmployees;
  QbxmlSessionManager manager(transport);
  const Error error = error_of([&] {
    manager.DoRequests(RequestSet{1, 0, OnError::Continue, {PayrollItemWageQuery{40}}});
  });
  EXPECT_EQ(error.number(), kQbxmlParseError);
  transport.response = "<QBXML>";
  EXPECT_EQ(error_of([&] {
              manager.DoRequests(RequestSet{1, 0, OnError::Continue, {EmployeeQuery{}}});
            }).number(),
            kQbxmlParseError);
}

class SimulatorTransportTest : public testing::Test {
 protected:
  SimulatorTransportTest() : simulator(company()), transport(simulator) {}
  static Company company() {
    Company result;
    result.employees = {"Doe, Jane"};
    return result;
  }
  CompanySimulator simulator;
  SimulatorQbxmlTransport transport;
};

TEST_F(SimulatorTransportTest, AnswersADocumentWithADocument) {
  transport.OpenConnection("a", "b");
  const std::string ticket = transport.BeginSession("", OpenMode::DoNotCare);
  EXPECT_EQ(transport.ProcessRequest(ticket, write_qbxml_request(RequestSet{
                                                 1, 0, OnError::Continue, {EmployeeQuery{}}})),
            "<?xml version=\"1.0\"?>\n"
            "<QBXML>\n"
            "  <QBXMLMsgsRs>\n"
            "    <EmployeeQueryRs requestID=\"1\" statusCode=\"0\" statusSeverity=\"Info\" "
            "statusMessage=\"Status OK\">\n"
            "      <EmployeeRet>\n"
            "        <Name>Doe, Jane</Name>\n"
            "      </EmployeeRet>\n"
            "    </EmployeeQueryRs>\n"
            "  </QBXMLMsgsRs>\n"
            "</QBXML>\n");
}

TEST_F(SimulatorTransportTest, ARolledBackDocumentLeavesTheCompanyAsItWas) {
  transport.OpenConnection("a", "b");
  const std::string ticket = transport.BeginSession("", OpenMode::DoNotCare);
  const RequestSet adds{1,
                        0,
                        OnError::Rollback,
                        {EmployeeAdd{"Ann", "", "Lee"}, EmployeeAdd{"Tom", "", "Ray"},
                         EmployeeAdd{"ANN", "", "LEE"}, EmployeeAdd{"Eve", "", "Ng"}}};
  const ResponseSet answers =
      read_qbxml_response(transport.ProcessRequest(ticket, write_qbxml_request(adds)), adds);
  ASSERT_EQ(answers.responses.size(), 3u);
  EXPECT_EQ(answers.responses[0].status_code, 0);
  EXPECT_EQ(answers.responses[1].status_code, 0);
  EXPECT_EQ(answers.responses[2],
            (Response{3100, "Error", "The name \"ANN LEE\" of the list element is already in use.",
                      std::nullopt}));
  EXPECT_EQ(simulator.company().employees, std::vector<std::string>{"Doe, Jane"});
  // The next document finds the company without the two employees the set added.
  EXPECT_EQ(transport.ProcessRequest(ticket, write_qbxml_request(RequestSet{
                                                 1, 0, OnError::Continue, {EmployeeQuery{}}})),
            "<?xml version=\"1.0\"?>\n"
            "<QBXML>\n"
            "  <QBXMLMsgsRs>\n"
            "    <EmployeeQueryRs requestID=\"1\" statusCode=\"0\" statusSeverity=\"Info\" "
            "statusMessage=\"Status OK\">\n"
            "      <EmployeeRet>\n"
            "        <Name>Doe, Jane</Name>\n"
            "      </EmployeeRet>\n"
            "    </EmployeeQueryRs>\n"
            "  </QBXMLMsgsRs>\n"
            "</QBXML>\n");
}

TEST_F(SimulatorTransportTest, AMalformedDocumentFailsAsQuickBooksParseFailure) {
  transport.OpenConnection("a", "b");
  const std::string ticket = transport.BeginSession("", OpenMode::DoNotCare);
  const Error error = error_of([&] { transport.ProcessRequest(ticket, "<QBXML><Oops/></QBXML>"); });
  EXPECT_EQ(error.number(), -2147220480);
  EXPECT_EQ(error.description(),
            "QuickBooks found an error when parsing the provided XML text stream.");
  // The company never saw it.
  EXPECT_TRUE(simulator.request_sets().empty());
}

TEST_F(SimulatorTransportTest, AnotherSessionsTicketIsInvalid) {
  transport.OpenConnection("a", "b");
  const std::string old_ticket = transport.BeginSession("", OpenMode::DoNotCare);
  transport.EndSession(old_ticket);
  transport.BeginSession("", OpenMode::DoNotCare);
  const std::string document = write_qbxml_request(RequestSet{});
  EXPECT_EQ(error_of([&] { transport.ProcessRequest(old_ticket, document); }).number(),
            -2147220467);
  EXPECT_EQ(error_of([&] { transport.QBXMLVersionsForSession(old_ticket); }).number(), -2147220467);
  EXPECT_EQ(error_of([&] { transport.EndSession(""); }).number(), -2147220467);
}

TEST_F(SimulatorTransportTest, WithoutASessionTheCallReachesTheSimulatorAndFailsThere) {
  transport.OpenConnection("a", "b");
  const RequestSet request_set{1, 0, OnError::Continue, {EmployeeQuery{}}};
  EXPECT_EQ(
      error_of([&] { transport.ProcessRequest("", write_qbxml_request(request_set)); }).number(),
      -2147220467);
  EXPECT_EQ(simulator.calls().back(), (RecordedCall{"DoRequests", {}, request_set, -2147220467}));
}

TEST(SimulatorQbxmlSessionFactory, CreatesLoggingManagersOverOneSimulator) {
  CompanySimulator simulator(Company{});
  std::vector<std::string> logged;
  SimulatorQbxmlSessionFactory factory(simulator,
                                       [&](std::string_view xml) { logged.emplace_back(xml); });
  auto first = factory.create();
  first->OpenConnection("a", "b");
  first->BeginSession("", OpenMode::DoNotCare);
  first->DoRequests(RequestSet{});
  first->EndSession();
  auto second = factory.create();
  second->CloseConnection();
  EXPECT_EQ(factory.created(), 2);
  EXPECT_EQ(logged.size(), 1u);
  EXPECT_EQ(simulator.calls().back().operation, "CloseConnection");
  EXPECT_EQ(simulator.calls().back().error, 0);
}

TEST(SimulatorQbxmlSessionFactory, WithoutASessionManagerCreationFails) {
  Company company;
  company.session_manager_installed = false;
  CompanySimulator simulator(company);
  SimulatorQbxmlSessionFactory factory(simulator);
  EXPECT_EQ(error_of([&] { factory.create(); }).number(), 429);
}

// One pay period as the QuickBooks export holds it: verify items and employees, add
// the missing one, send a day's entries and the edit totals of a long period.
std::vector<ResponseSet> pay_period(SessionManagerFactory& factory) {
  std::vector<ResponseSet> answers;
  auto manager = factory.create();
  manager->OpenConnection("Horalis", "Horalis");
  manager->BeginSession("C:\\Company\\Sample.QBW", OpenMode::DoNotCare);
  const std::vector<std::string> versions = manager->QBXMLVersionsForSession();
  const auto send = [&](std::vector<Request> requests) {
    answers.push_back(
        manager->DoRequests(RequestSet{1, 0, OnError::Continue, std::move(requests)}));
  };
  send({PayrollItemWageQuery{40}});
  send({EmployeeQuery{}});
  send({EmployeeAdd{"Zo\xC3\xAB", "", "O'Neil & Sons"}});

  TimeTrackingAdd day;
  day.entity_full_name = "Doe, Jane";
  day.txn_date = Date::from_civil(2004, 3, 1);
  day.duration = {2, 30, 0};
  day.payroll_item_wage_full_name = "Regular Hourly Rate";
  day.notes = "HLS - Regular Hourly Rate";
  TimeTrackingAdd overtime = day;
  overtime.duration = {1, 15, 0};
  overtime.payroll_item_wage_full_name = "Premuim Overtime Hourly Rate";
  overtime.notes = "HLS - Premuim Overtime Hourly Rate";
  TimeTrackingAdd added = day;
  added.entity_full_name = "Zo\xC3\xAB O'Neil & Sons";
  send({day, overtime, added});

  // 40 hours of edit totals: 24, 24 and -8, each in a set of its own, named by the
  // employee key.
  for (const std::int32_t hours : {24, 24, -8}) {
    TimeTrackingAdd edit;
    edit.field_order = kEditTotalFieldOrder;
    edit.txn_date = Date::from_civil(2004, 2, 23);
    edit.entity_full_name = "Jane,,Doe";
    edit.duration = {hours, 0, 0};
    edit.payroll_item_wage_full_name = "Regular Hourly Rate";
    edit.notes = "HLS - Edit Totals";
    send({edit});
  }
  manager->EndSession();
  manager->CloseConnection();
  EXPECT_EQ(versions, std::vector<std::string>{"1.0"});
  return answers;
}

Company sample_company() {
  Company company;
  company.company_file = "C:\\Company\\Sample.QBW";
  company.payroll_items = {"Regular Hourly Rate", "Overtime Hourly Rate",
                           "Premuim Overtime Hourly Rate"};
  company.employees = {"Doe, Jane"};
  return company;
}

// The calls with the field order of time entries set aside: it lives only in the
// object model, and a document carries the fields in the schema's order.
std::vector<RecordedCall> without_field_order(std::vector<RecordedCall> calls) {
  for (RecordedCall& call : calls) {
    if (!call.request_set) continue;
    for (Request& request : call.request_set->requests) {
      if (auto* add = std::get_if<TimeTrackingAdd>(&request))
        add->field_order = kDayEntryFieldOrder;
    }
  }
  return calls;
}

TEST(Backends, APayPeriodGivesTheSameConversationDirectAndAsQbxml) {
  CompanySimulator direct_company(sample_company());
  SimulatorSessionFactory direct(direct_company);
  const std::vector<ResponseSet> direct_answers = pay_period(direct);

  CompanySimulator qbxml_company(sample_company());
  std::vector<std::string> documents;
  SimulatorQbxmlSessionFactory qbxml(qbxml_company,
                                     [&](std::string_view xml) { documents.emplace_back(xml); });
  const std::vector<ResponseSet> qbxml_answers = pay_period(qbxml);

  EXPECT_EQ(qbxml_answers, direct_answers);
  EXPECT_EQ(qbxml_company.calls(), without_field_order(direct_company.calls()));
  EXPECT_EQ(qbxml_company.request_sets().size(), 7u);
  EXPECT_EQ(documents.size(), 7u);
  EXPECT_EQ(qbxml_company.company().employees, direct_company.company().employees);
  EXPECT_EQ(qbxml_company.company().time_entries.size(), 3u);

  // What the company answered along the way.
  EXPECT_EQ(direct_answers[2].responses.at(0).detail,
            (std::vector<ReturnedObject>{{"Zo\xC3\xAB O'Neil & Sons"}}));
  ASSERT_EQ(direct_answers[3].responses.size(), 3u);
  for (const Response& response : direct_answers[3].responses) EXPECT_EQ(response.status_code, 0);
  // The employee key names nobody, and -8 hours is no time interval.
  EXPECT_EQ(direct_answers[4].responses.at(0).status_code, 3140);
  EXPECT_EQ(direct_answers[6].responses.at(0).status_code, 3035);
}

}  // namespace
}  // namespace zorvat::quickbooks
