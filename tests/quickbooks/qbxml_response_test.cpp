// qbXML response documents: hand-written expected documents for the writer, and the
// reader on them and on responses laid out the way QuickBooks lays them out.
#include <gtest/gtest.h>

#include "zorvat/error.h"
#include "zorvat/quickbooks/qbxml.h"

namespace zorvat::quickbooks {
namespace {

const std::string kNoMatch = "A query request did not find a matching object in QuickBooks";

TimeTrackingAdd day_entry() {
  TimeTrackingAdd add;
  add.entity_full_name = "Doe, Jane";
  add.duration = {8, 0, 0};
  add.txn_date = Date::from_civil(2004, 3, 2);
  add.payroll_item_wage_full_name = "Sick Hourly Rate";
  add.notes = "HLS - Sick Hourly Rate";
  return add;
}

TEST(QbxmlResponse, EveryKindOfResponse) {
  const RequestSet answered{1,
                            0,
                            OnError::Continue,
                            {PayrollItemWageQuery{40}, EmployeeQuery{},
                             EmployeeAdd{"Ann", "", "Lee"}, day_entry(), day_entry()}};
  const ResponseSet responses{{
      Response{0, "Info", "Status OK",
               std::vector<ReturnedObject>{{"Regular Hourly Rate"}, {"Sick Hourly Rate"}}},
      Response{1, "Info", kNoMatch, std::nullopt},
      Response{0, "Info", "Status OK", std::vector<ReturnedObject>{{"Ann Lee"}}},
      Response{0, "Info", "Status OK", std::vector<ReturnedObject>{{""}}},
      Response{3250, "Error",
               "This feature is not enabled or not available in this version of QuickBooks.",
               std::nullopt},
  }};
  const std::string expected =
      "<?xml version=\"1.0\"?>\n"
      "<QBXML>\n"
      "  <QBXMLMsgsRs>\n"
      "    <PayrollItemWageQueryRs requestID=\"1\" statusCode=\"0\" statusSeverity=\"Info\" "
      "statusMessage=\"Status OK\">\n"
      "      <PayrollItemWageRet>\n"
      "        <Name>Regular Hourly Rate</Name>\n"
      "      </PayrollItemWageRet>\n"
      "      <PayrollItemWageRet>\n"
      "        <Name>Sick Hourly Rate</Name>\n"
      "      </PayrollItemWageRet>\n"
      "    </PayrollItemWageQueryRs>\n"
      "    <EmployeeQueryRs requestID=\"2\" statusCode=\"1\" statusSeverity=\"Info\" "
      "statusMessage=\"A query request did not find a matching object in QuickBooks\"/>\n"
      "    <EmployeeAddRs requestID=\"3\" statusCode=\"0\" statusSeverity=\"Info\" "
      "statusMessage=\"Status OK\">\n"
      "      <EmployeeRet>\n"
      "        <Name>Ann Lee</Name>\n"
      "      </EmployeeRet>\n"
      "    </EmployeeAddRs>\n"
      "    <TimeTrackingAddRs requestID=\"4\" statusCode=\"0\" statusSeverity=\"Info\" "
      "statusMessage=\"Status OK\">\n"
      "      <TimeTrackingRet>\n"
      "        <TxnDate>2004-03-02</TxnDate>\n"
      "        <EntityRef>\n"
      "          <FullName>Doe, Jane</FullName>\n"
      "        </EntityRef>\n"
      "        <Duration>PT8H0M0S</Duration>\n"
      "        <PayrollItemWageRef>\n"
      "          <FullName>Sick Hourly Rate</FullName>\n"
      "        </PayrollItemWageRef>\n"
      "        <Notes>HLS - Sick Hourly Rate</Notes>\n"
      "        <IsBillable>false</IsBillable>\n"
      "      </TimeTrackingRet>\n"
      "    </TimeTrackingAddRs>\n"
      "    <TimeTrackingAddRs requestID=\"5\" statusCode=\"3250\" statusSeverity=\"Error\" "
      "statusMessage=\"This feature is not enabled or not available in this version of "
      "QuickBooks.\"/>\n"
      "  </QBXMLMsgsRs>\n"
      "</QBXML>\n";
  EXPECT_EQ(write_qbxml_response(responses, answered), expected);
  EXPECT_EQ(read_qbxml_response(expected), responses);
  EXPECT_EQ(read_qbxml_response(expected, answered), responses);
}

TEST(QbxmlResponse, QuotesInStatusMessagesAreEscaped) {
  const RequestSet answered{1, 0, OnError::Continue, {EmployeeAdd{"Ann", "", "Lee"}}};
  const ResponseSet responses{{Response{
      3100, "Error", "The name \"Ann Lee\" of the list element is already in use.", std::nullopt}}};
  const std::string expected =
      "<?xml version=\"1.0\"?>\n"
      "<QBXML>\n"
      "  <QBXMLMsgsRs>\n"
      "    <EmployeeAddRs requestID=\"1\" statusCode=\"3100\" statusSeverity=\"Error\" "
      "statusMessage=\"The name &quot;Ann Lee&quot; of the list element is already in use.\"/>\n"
      "  </QBXMLMsgsRs>\n"
      "</QBXML>\n";
  EXPECT_EQ(write_qbxml_response(responses, answered), expected);
  EXPECT_EQ(read_qbxml_response(expected), responses);
}

TEST(QbxmlResponse, AStoppedSetHasFewerResponses) {
  const RequestSet answered{1, 0, OnError::Stop, {EmployeeQuery{}, EmployeeQuery{}}};
  const ResponseSet responses{{Response{1, "Info", kNoMatch, std::nullopt}}};
  EXPECT_EQ(read_qbxml_response(write_qbxml_response(responses, answered), answered), responses);
}

TEST(QbxmlResponse, AnEmptyResponseSet) {
  const std::string expected =
      "<?xml version=\"1.0\"?>\n"
      "<QBXML>\n"
      "  <QBXMLMsgsRs/>\n"
      "</QBXML>\n";
  EXPECT_EQ(write_qbxml_response(ResponseSet{}, RequestSet{}), expected);
  EXPECT_EQ(read_qbxml_response(expected), ResponseSet{});
}

TEST(QbxmlResponse, MessagesWithLineEndsAndTabsSurvive) {
  const RequestSet answered{1, 0, OnError::Continue, {EmployeeQuery{}}};
  const ResponseSet responses{{Response{500, "Warn", "first\r\nsecond\tthird", std::nullopt}}};
  EXPECT_EQ(read_qbxml_response(write_qbxml_response(responses, answered)), responses);
}

TEST(QbxmlResponse, AnEmptyListReadsBackAsNoObjects) {
  const RequestSet answered{1, 0, OnError::Continue, {EmployeeQuery{}}};
  const ResponseSet written{{Response{0, "Info", "Status OK", std::vector<ReturnedObject>{}}}};
  EXPECT_EQ(read_qbxml_response(write_qbxml_response(written, answered)).responses.at(0).detail,
            std::nullopt);
}

TEST(QbxmlResponse, WritingMoreResponsesThanRequestsIsRefused) {
  const ResponseSet responses{{Response{}, Response{}}};
  EXPECT_THROW(
      write_qbxml_response(responses, RequestSet{1, 0, OnError::Continue, {EmployeeQuery{}}}),
      Error);
}

TEST(QbxmlResponse, ReadsTheFieldsQuickBooksAddsAndSkipsThem) {
  const std::string document = R"(<?xml version="1.0" ?>
<QBXML>
<QBXMLMsgsRs>
<EmployeeQueryRs requestID="1" statusCode="0" statusSeverity="Info" statusMessage="Status OK">
<EmployeeRet>
<ListID>80000001-1071514230</ListID>
<TimeCreated>2003-12-15T10:50:30-08:00</TimeCreated>
<EditSequence>1071514230</EditSequence>
<Name>Doe, Jane</Name>
<IsActive>true</IsActive>
<FirstName>Jane</FirstName>
<EmployeeAddress><Addr1>1 Main St</Addr1></EmployeeAddress>
</EmployeeRet>
<EmployeeRet><Name>John Q Public</Name></EmployeeRet>
</EmployeeQueryRs>
<TimeTrackingAddRs requestID="2" statusCode="0" statusSeverity="Info" statusMessage="Status OK">
<TimeTrackingRet><TxnID>5-1071514300</TxnID><Duration>PT8H0M0S</Duration></TimeTrackingRet>
</TimeTrackingAddRs>
</QBXMLMsgsRs>
</QBXML>
)";
  const ResponseSet expected{{
      Response{0, "Info", "Status OK",
               std::vector<ReturnedObject>{{"Doe, Jane"}, {"John Q Public"}}},
      Response{0, "Info", "Status OK", std::vector<ReturnedObject>{{""}}},
  }};
  EXPECT_EQ(read_qbxml_response(document), expected);
}

TEST(QbxmlResponse, ResponsesMustAnswerTheirRequests) {
  const std::string document =
      "<?xml version=\"1.0\"?><QBXML><QBXMLMsgsRs>"
      "<EmployeeQueryRs requestID=\"1\" statusCode=\"1\" statusSeverity=\"Info\" "
      "statusMessage=\"x\"/>"
      "</QBXMLMsgsRs></QBXML>";
  try {
    read_qbxml_response(document, RequestSet{1, 0, OnError::Continue, {PayrollItemWageQuery{40}}});
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.description(),
              "qbXML response: response 1 is <EmployeeQueryRs>, not <PayrollItemWageQueryRs> as "
              "its request needs");
  }
  try {
    read_qbxml_response(document, RequestSet{});
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.description(), "qbXML response: 1 responses to 0 requests");
  }
}

}  // namespace
}  // namespace zorvat::quickbooks
