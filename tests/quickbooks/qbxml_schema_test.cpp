// What the qbXML schema allows, held by every backend and by the simulators alike:
// the time interval with its sign in front, IsBillable below qbXML 6.0 and
// BillableStatus from 6.0 on, the fields' maximum lengths (refused before anything
// is sent), and the optional parts of responses the reader must accept. Expected
// documents and texts are written out by hand from the schema's rules.
#include <gtest/gtest.h>

#include "zorvat/error.h"
#include "zorvat/quickbooks/qbxml.h"
#include "zorvat/quickbooks/qbxml_session.h"
#include "zorvat/quickbooks/schema.h"
#include "zorvat/quickbooks/simulator.h"
#include "zorvat/quickbooks/values.h"

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

std::string text_of_length(std::size_t length, char fill = 'a') {
  return std::string(length, fill);
}

TimeTrackingAdd day_entry(std::string name, Duration duration) {
  TimeTrackingAdd add;
  add.entity_full_name = std::move(name);
  add.duration = duration;
  add.txn_date = *parse_iso_date("2004-03-01");
  add.payroll_item_wage_full_name = "Regular Hourly Rate";
  add.notes = "HLS - Regular Hourly Rate";
  return add;
}

// --- Durations -------------------------------------------------------------------

TEST(QbxmlSchema, ANegativeDurationCarriesItsSignInFrontOfTheWholeValue) {
  EXPECT_EQ(duration_text({8, 30, 0}), "PT8H30M0S");
  EXPECT_EQ(duration_text({-8, 30, 0}), "-PT8H30M0S");
  EXPECT_EQ(duration_text({0, 0, 0}), "PT0H0M0S");
  EXPECT_EQ(duration_text({-2147483647 - 1, 0, 0}), "-PT2147483648H0M0S");
  EXPECT_EQ(parse_duration_text("-PT8H30M0S"), (Duration{-8, 30, 0}));
  EXPECT_EQ(parse_duration_text("-PT0H30M0S"), (Duration{0, -30, 0}));
  EXPECT_EQ(parse_duration_text("PT24H0M0S"), (Duration{24, 0, 0}));
  EXPECT_EQ(parse_duration_text("PT-8H30M0S"), std::nullopt);
  EXPECT_EQ(parse_duration_text("-PT-8H30M0S"), std::nullopt);
}

// --- IsBillable and BillableStatus -----------------------------------------------

TEST(QbxmlSchema, FromVersionSixAnEntrySaysNotBillableWithBillableStatus) {
  EXPECT_FALSE(uses_billable_status(1, 0));
  EXPECT_FALSE(uses_billable_status(5, 0));
  EXPECT_TRUE(uses_billable_status(6, 0));
  EXPECT_TRUE(uses_billable_status(13, 0));
  const RequestSet set{13, 0, OnError::Continue, {day_entry("Jane Doe", {8, 0, 0})}};
  EXPECT_EQ(write_qbxml_request(set),
            "<?xml version=\"1.0\"?>\n"
            "<?qbxml version=\"13.0\"?>\n"
            "<QBXML>\n"
            "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
            "    <TimeTrackingAddRq requestID=\"1\">\n"
            "      <TimeTrackingAdd>\n"
            "        <TxnDate>2004-03-01</TxnDate>\n"
            "        <EntityRef>\n"
            "          <FullName>Jane Doe</FullName>\n"
            "        </EntityRef>\n"
            "        <Duration>PT8H0M0S</Duration>\n"
            "        <PayrollItemWageRef>\n"
            "          <FullName>Regular Hourly Rate</FullName>\n"
            "        </PayrollItemWageRef>\n"
            "        <Notes>HLS - Regular Hourly Rate</Notes>\n"
            "        <BillableStatus>NotBillable</BillableStatus>\n"
            "      </TimeTrackingAdd>\n"
            "    </TimeTrackingAddRq>\n"
            "  </QBXMLMsgsRq>\n"
            "</QBXML>\n");
  EXPECT_EQ(read_qbxml_request(write_qbxml_request(set)), set);
}

TEST(QbxmlSchema, EachVersionRefusesTheOtherVersionsBillableElement) {
  const std::string entry =
      "<TimeTrackingAddRq requestID=\"1\"><TimeTrackingAdd><TxnDate>2004-03-01</TxnDate>"
      "<EntityRef><FullName>Jane Doe</FullName></EntityRef><Duration>PT1H0M0S</Duration>"
      "<PayrollItemWageRef><FullName>Reg</FullName></PayrollItemWageRef><Notes>n</Notes>";
  auto document = [&](std::string_view version, std::string_view billable) {
    return "<?xml version=\"1.0\"?><?qbxml version=\"" + std::string(version) +
           "\"?><QBXML><QBXMLMsgsRq onError=\"continueOnError\">" + entry + std::string(billable) +
           "</TimeTrackingAdd></TimeTrackingAddRq></QBXMLMsgsRq></QBXML>";
  };
  const std::string place = "QBXML/QBXMLMsgsRq/TimeTrackingAddRq[1]/TimeTrackingAdd";
  EXPECT_EQ(error_of([&] {
              read_qbxml_request(document("6.0", "<IsBillable>false</IsBillable>"));
            }).description(),
            "qbXML request: " + place + ": unexpected <IsBillable>");
  EXPECT_EQ(error_of([&] {
              read_qbxml_request(document("2.0", "<BillableStatus>NotBillable</BillableStatus>"));
            }).description(),
            "qbXML request: " + place + ": unexpected <BillableStatus>");
  EXPECT_EQ(error_of([&] {
              read_qbxml_request(document("6.0", "<BillableStatus>No</BillableStatus>"));
            }).description(),
            "qbXML request: " + place +
                "/BillableStatus: \"No\" is not Billable, NotBillable or HasBeenBilled");
  // Either element may be left out.
  EXPECT_NO_THROW(read_qbxml_request(document("6.0", "")));
  EXPECT_TRUE(std::get<TimeTrackingAdd>(read_qbxml_request(document("7.0",
                                                                    "<BillableStatus>HasBeenBilled"
                                                                    "</BillableStatus>"))
                                            .requests.front())
                  .is_billable);
}

// --- Field lengths -----------------------------------------------------------------

TEST(QbxmlSchema, CharactersAreCountedAsQuickBooksCountsThem) {
  EXPECT_EQ(character_count(""), 0u);
  EXPECT_EQ(character_count("Zo\xC3\xAB"), 3u);  // Zoë
  EXPECT_EQ(character_count("\xE2\x82\xAC"
                            "5"),
            2u);                                       // €5
  EXPECT_EQ(character_count("\xF0\x9F\x98\x80"), 1u);  // one emoji
  EXPECT_EQ(character_count("a\xFF"
                            "b"),
            3u);  // a byte that is not UTF-8
}

TEST(QbxmlSchema, EveryLimitedFieldIsCheckedAtAndOverItsLimit) {
  struct Case {
    const char* field;
    std::size_t limit;
    std::function<Request(std::string)> make;
    std::string employee_at;  // the employee the error names for a text of limit + 1
  };
  const std::string over_first = text_of_length(26);
  const std::vector<Case> cases = {
      {"EmployeeAdd/FirstName", 25,
       [](std::string text) {
         return EmployeeAdd{std::move(text), "Q", "Doe"};
       },
       over_first + " Q Doe"},
      {"EmployeeAdd/MiddleName", 5,
       [](std::string text) {
         return EmployeeAdd{"Jane", std::move(text), "Doe"};
       },
       "Jane aaaaaa Doe"},
      {"EmployeeAdd/LastName", 25,
       [](std::string text) {
         return EmployeeAdd{"Jane", "", std::move(text)};
       },
       "Jane " + over_first},
      {"TimeTrackingAdd/EntityRef/FullName", 209,
       [](std::string text) {
         return day_entry(std::move(text), {1, 0, 0});
       },
       text_of_length(210)},
      {"TimeTrackingAdd/PayrollItemWageRef/FullName", 31,
       [](std::string text) {
         TimeTrackingAdd add = day_entry("Jane Doe", {1, 0, 0});
         add.payroll_item_wage_full_name = std::move(text);
         return add;
       },
       "Jane Doe"},
      {"TimeTrackingAdd/Notes", 4095,
       [](std::string text) {
         TimeTrackingAdd add = day_entry("Jane Doe", {1, 0, 0});
         add.notes = std::move(text);
         return add;
       },
       "Jane Doe"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.field);
    const RequestSet at{1, 0, OnError::Continue, {each.make(text_of_length(each.limit))}};
    EXPECT_NO_THROW(check_field_limits(at));
    // Characters, not bytes: the limit in two-byte characters passes too.
    std::string wide;
    for (std::size_t i = 0; i < each.limit; ++i) wide += "\xC3\xA9";
    EXPECT_NO_THROW(check_field_limits(RequestSet{1, 0, OnError::Continue, {each.make(wide)}}));

    const RequestSet over{1, 0, OnError::Continue, {each.make(text_of_length(each.limit + 1))}};
    const Error error = error_of([&] { check_field_limits(over); });
    EXPECT_EQ(error.number(), kFieldTooLong);
    EXPECT_EQ(error.description(),
              std::string(each.field) + " of employee \"" + each.employee_at + "\" has " +
                  std::to_string(each.limit + 1) + " characters; QuickBooks takes at most " +
                  std::to_string(each.limit) + ". Nothing of this request set was sent.");
    // A document holding the field over its limit is not one QuickBooks reads.
    const Error refused = error_of([&] { read_qbxml_request(write_qbxml_request(over)); });
    EXPECT_EQ(refused.number(), kQbxmlParseError);
  }
}

TEST(QbxmlSchema, NoBackendSendsARequestSetWithAFieldOverItsLimit) {
  Company company;
  company.employees = {"Jane Doe"};
  CompanySimulator simulator(company);
  const RequestSet set{
      1, 0, OnError::Continue, {EmployeeQuery{}, EmployeeAdd{"Jane", "Quincy", "Doe"}}};

  SimulatorSessionFactory direct(simulator);
  std::vector<std::string> logged;
  SimulatorQbxmlSessionFactory qbxml(simulator,
                                     [&](std::string_view xml) { logged.emplace_back(xml); });
  for (SessionManagerFactory* factory :
       std::initializer_list<SessionManagerFactory*>{&direct, &qbxml}) {
    const std::unique_ptr<SessionManager> manager = factory->create();
    manager->OpenConnection("Horalis", "Horalis");
    manager->BeginSession("", OpenMode::DoNotCare);
    const Error error = error_of([&] { manager->DoRequests(set); });
    EXPECT_EQ(error.number(), kFieldTooLong);
    EXPECT_EQ(error.description(),
              "EmployeeAdd/MiddleName of employee \"Jane Quincy Doe\" has 6 characters; "
              "QuickBooks takes at most 5. Nothing of this request set was sent.");
    manager->EndSession();
    manager->CloseConnection();
  }
  // Nothing reached QuickBooks: no message set, no document.
  EXPECT_TRUE(simulator.request_sets().empty());
  EXPECT_TRUE(logged.empty());
  EXPECT_EQ(simulator.company().employees, std::vector<std::string>{"Jane Doe"});
}

TEST(QbxmlSchema, TheSimulatorRefusesAWholeSetWithAFieldOverItsLimitAsUnparsable) {
  CompanySimulator simulator(Company{});
  simulator.OpenConnection("Horalis", "Horalis");
  simulator.BeginSession("", OpenMode::DoNotCare);
  const Error error = error_of([&] {
    simulator.DoRequests(
        RequestSet{1,
                   0,
                   OnError::Continue,
                   {EmployeeAdd{"Ann", "", "Lee"}, EmployeeAdd{"Jane", "Quincy", "Doe"}}});
  });
  EXPECT_EQ(error.number(), -2147220480);
  EXPECT_EQ(error.description(),
            "QuickBooks found an error when parsing the provided XML text stream.");
  // Not even the first, valid request was answered.
  EXPECT_TRUE(simulator.company().employees.empty());
}

// --- The reader takes the schema's optional parts -----------------------------------

const RequestSet kQuery{1, 0, OnError::Continue, {EmployeeQuery{}}};
const RequestSet kAdd{1, 0, OnError::Continue, {EmployeeAdd{"Ann", "", "Lee"}}};

TEST(QbxmlSchema, TheReaderAcceptsRetCountAndIteratorAttributes) {
  const ResponseSet read = read_qbxml_response(
      "<?xml version=\"1.0\"?><QBXML><QBXMLMsgsRs><EmployeeQueryRs requestID=\"1\" "
      "statusCode=\"0\" statusSeverity=\"Info\" statusMessage=\"Status OK\" retCount=\"2\" "
      "iteratorRemainingCount=\"0\" iteratorID=\"{1}\"><EmployeeRet><Name>Ann Lee</Name>"
      "</EmployeeRet><EmployeeRet><ListID>2</ListID><Name>Doe, Jane</Name><IsActive>true"
      "</IsActive></EmployeeRet></EmployeeQueryRs></QBXMLMsgsRs></QBXML>",
      kQuery);
  EXPECT_EQ(read,
            (ResponseSet{{Response{0, "Info", "Status OK",
                                   std::vector<ReturnedObject>{{"Ann Lee"}, {"Doe, Jane"}}}}}));
}

TEST(QbxmlSchema, TheReaderAcceptsAResponseWithoutStatusMessageOrRequestID) {
  const ResponseSet read = read_qbxml_response(
      "<?xml version=\"1.0\"?><QBXML><QBXMLMsgsRs><EmployeeQueryRs statusCode=\"1\" "
      "statusSeverity=\"Info\"/></QBXMLMsgsRs></QBXML>",
      kQuery);
  EXPECT_EQ(read, (ResponseSet{{Response{1, "Info", "", std::nullopt}}}));
}

TEST(QbxmlSchema, TheReaderAcceptsErrorRecoveryAfterTheReturnedObjects) {
  const std::string xml =
      "<?xml version=\"1.0\"?><QBXML><QBXMLMsgsRs newMessageSetID=\"7\" "
      "messageSetStatusCode=\"0\"><EmployeeAddRs requestID=\"1\" statusCode=\"0\" "
      "statusSeverity=\"Info\" statusMessage=\"Status OK\"><EmployeeRet><Name>Ann Lee</Name>"
      "</EmployeeRet><ErrorRecovery><ListID>80000001-1</ListID><OwnerID>0</OwnerID>"
      "</ErrorRecovery></EmployeeAddRs></QBXMLMsgsRs></QBXML>";
  EXPECT_EQ(
      read_qbxml_response(xml, kAdd),
      (ResponseSet{{Response{0, "Info", "Status OK", std::vector<ReturnedObject>{{"Ann Lee"}}}}}));
  // ErrorRecovery closes the response.
  const Error error = error_of([&] {
    read_qbxml_response(
        "<?xml version=\"1.0\"?><QBXML><QBXMLMsgsRs><EmployeeAddRs requestID=\"1\" "
        "statusCode=\"0\" statusSeverity=\"Info\"><ErrorRecovery/><EmployeeRet><Name>A</Name>"
        "</EmployeeRet></EmployeeAddRs></QBXMLMsgsRs></QBXML>",
        kAdd);
  });
  EXPECT_EQ(error.description(),
            "qbXML response: QBXML/QBXMLMsgsRs/EmployeeAddRs[1]/EmployeeRet[2]: nothing follows "
            "<ErrorRecovery>");
  EXPECT_EQ(error_of([&] {
              read_qbxml_response(
                  "<?xml version=\"1.0\"?><QBXML><QBXMLMsgsRs "
                  "messageSetStatusCode=\"x\"/></QBXML>");
            }).description(),
            "qbXML response: QBXML/QBXMLMsgsRs messageSetStatusCode: \"x\" is not a whole number");
}

TEST(QbxmlSchema, TheReaderReadsLatin1AndUtf16Documents) {
  // "Zoë Lee" in ISO-8859-1: ë is the single byte EB.
  const std::string latin1 =
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><QBXML><QBXMLMsgsRs><EmployeeAddRs "
      "requestID=\"1\" statusCode=\"0\" statusSeverity=\"Info\" statusMessage=\"Status OK\">"
      "<EmployeeRet><Name>Zo\xEB Lee</Name></EmployeeRet></EmployeeAddRs></QBXMLMsgsRs></QBXML>";
  const ResponseSet expected{
      {Response{0, "Info", "Status OK", std::vector<ReturnedObject>{{"Zo\xC3\xAB Lee"}}}}};
  EXPECT_EQ(read_qbxml_response(latin1, kAdd), expected);

  // The same document in UTF-16LE with its byte-order mark.
  std::string utf16 = "\xFF\xFE";
  const std::string ascii_head =
      "<?xml version=\"1.0\" encoding=\"UTF-16\"?><QBXML><QBXMLMsgsRs><EmployeeAddRs "
      "requestID=\"1\" statusCode=\"0\" statusSeverity=\"Info\" statusMessage=\"Status OK\">"
      "<EmployeeRet><Name>Zo";
  const std::string ascii_tail = " Lee</Name></EmployeeRet></EmployeeAddRs></QBXMLMsgsRs></QBXML>";
  for (char c : ascii_head) utf16 += std::string{c, '\0'};
  utf16 += std::string("\xEB\x00", 2);
  for (char c : ascii_tail) utf16 += std::string{c, '\0'};
  EXPECT_EQ(read_qbxml_response(utf16, kAdd), expected);

  // A declaration that does not name the encoding the bytes are in is refused.
  EXPECT_EQ(error_of([&] {
              read_qbxml_response(
                  "<?xml version=\"1.0\" encoding=\"UTF-16\"?><QBXML><QBXMLMsgsRs/></QBXML>");
            }).description(),
            "qbXML response: XML declaration with encoding=\"UTF-16\"");
}

TEST(QbxmlSchema, TheSimulatorsTransportAnswersEveryVersionsDocuments) {
  Company company;
  company.employees = {"Jane Doe"};
  company.payroll_items = {"Regular Hourly Rate"};
  CompanySimulator simulator(company);
  SimulatorQbxmlTransport transport(simulator);
  transport.OpenConnection("Horalis", "Horalis");
  const std::string ticket = transport.BeginSession("", OpenMode::DoNotCare);
  for (const auto& [major, minor] : {std::pair{1, 0}, std::pair{6, 0}, std::pair{13, 0}}) {
    const RequestSet set{major, minor, OnError::Continue, {day_entry("Jane Doe", {8, 0, 0})}};
    const ResponseSet answered =
        read_qbxml_response(transport.ProcessRequest(ticket, write_qbxml_request(set)), set);
    ASSERT_EQ(answered.responses.size(), 1u);
    EXPECT_EQ(answered.responses[0].status_code, 0) << answered.responses[0].status_message;
  }
  EXPECT_EQ(simulator.company().time_entries.size(), 3u);
}

}  // namespace
}  // namespace zorvat::quickbooks
