// qbXML request documents: every expected document below is written out by hand
// from the schema's element order and the layout of the writer (two-space indents,
// LF line ends), and every one is read back to the request set it came from.
#include <gtest/gtest.h>

#include "zorvat/quickbooks/qbxml.h"

namespace zorvat::quickbooks {
namespace {

RequestSet one_request(Request request, OnError on_error = OnError::Continue) {
  return RequestSet{1, 0, on_error, {std::move(request)}};
}

TimeTrackingAdd day_entry() {
  TimeTrackingAdd add;
  add.entity_full_name = "Doe, Jane";
  add.duration = {2, 30, 0};
  add.txn_date = Date::from_civil(2004, 3, 1);
  add.payroll_item_wage_full_name = "Regular Hourly Rate";
  add.notes = "HLS - Regular Hourly Rate";
  return add;
}

// Writes the set, compares with the expected document and reads it back.
void expect_document(const RequestSet& request_set, const std::string& expected) {
  EXPECT_EQ(write_qbxml_request(request_set), expected);
  EXPECT_EQ(read_qbxml_request(expected), request_set);
}

TEST(QbxmlRequest, PayrollItemWageQueryWithMaxReturned) {
  expect_document(one_request(PayrollItemWageQuery{40}),
                  "<?xml version=\"1.0\"?>\n"
                  "<?qbxml version=\"1.0\"?>\n"
                  "<QBXML>\n"
                  "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
                  "    <PayrollItemWageQueryRq requestID=\"1\">\n"
                  "      <MaxReturned>40</MaxReturned>\n"
                  "    </PayrollItemWageQueryRq>\n"
                  "  </QBXMLMsgsRq>\n"
                  "</QBXML>\n");
}

TEST(QbxmlRequest, PayrollItemWageQueryWithoutFilter) {
  expect_document(one_request(PayrollItemWageQuery{0}),
                  "<?xml version=\"1.0\"?>\n"
                  "<?qbxml version=\"1.0\"?>\n"
                  "<QBXML>\n"
                  "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
                  "    <PayrollItemWageQueryRq requestID=\"1\"/>\n"
                  "  </QBXMLMsgsRq>\n"
                  "</QBXML>\n");
}

TEST(QbxmlRequest, EmployeeQueryInAStopOnErrorSetOfVersion2_1) {
  expect_document(RequestSet{2, 1, OnError::Stop, {EmployeeQuery{}}},
                  "<?xml version=\"1.0\"?>\n"
                  "<?qbxml version=\"2.1\"?>\n"
                  "<QBXML>\n"
                  "  <QBXMLMsgsRq onError=\"stopOnError\">\n"
                  "    <EmployeeQueryRq requestID=\"1\"/>\n"
                  "  </QBXMLMsgsRq>\n"
                  "</QBXML>\n");
}

TEST(QbxmlRequest, EmployeeAddWithAllNameParts) {
  expect_document(one_request(EmployeeAdd{"Jane", "Q", "Doe"}, OnError::Rollback),
                  "<?xml version=\"1.0\"?>\n"
                  "<?qbxml version=\"1.0\"?>\n"
                  "<QBXML>\n"
                  "  <QBXMLMsgsRq onError=\"rollbackOnError\">\n"
                  "    <EmployeeAddRq requestID=\"1\">\n"
                  "      <EmployeeAdd>\n"
                  "        <FirstName>Jane</FirstName>\n"
                  "        <MiddleName>Q</MiddleName>\n"
                  "        <LastName>Doe</LastName>\n"
                  "      </EmployeeAdd>\n"
                  "    </EmployeeAddRq>\n"
                  "  </QBXMLMsgsRq>\n"
                  "</QBXML>\n");
}

TEST(QbxmlRequest, EmployeeAddLeavesOutAnEmptyMiddleName) {
  expect_document(one_request(EmployeeAdd{"Jane", "", "Doe"}),
                  "<?xml version=\"1.0\"?>\n"
                  "<?qbxml version=\"1.0\"?>\n"
                  "<QBXML>\n"
                  "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
                  "    <EmployeeAddRq requestID=\"1\">\n"
                  "      <EmployeeAdd>\n"
                  "        <FirstName>Jane</FirstName>\n"
                  "        <LastName>Doe</LastName>\n"
                  "      </EmployeeAdd>\n"
                  "    </EmployeeAddRq>\n"
                  "  </QBXMLMsgsRq>\n"
                  "</QBXML>\n");
}

TEST(QbxmlRequest, EmployeeAddWithoutAnyName) {
  expect_document(one_request(EmployeeAdd{}),
                  "<?xml version=\"1.0\"?>\n"
                  "<?qbxml version=\"1.0\"?>\n"
                  "<QBXML>\n"
                  "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
                  "    <EmployeeAddRq requestID=\"1\">\n"
                  "      <EmployeeAdd/>\n"
                  "    </EmployeeAddRq>\n"
                  "  </QBXMLMsgsRq>\n"
                  "</QBXML>\n");
}

TEST(QbxmlRequest, TimeTrackingAddInSchemaOrder) {
  expect_document(one_request(day_entry()),
                  "<?xml version=\"1.0\"?>\n"
                  "<?qbxml version=\"1.0\"?>\n"
                  "<QBXML>\n"
                  "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
                  "    <TimeTrackingAddRq requestID=\"1\">\n"
                  "      <TimeTrackingAdd>\n"
                  "        <TxnDate>2004-03-01</TxnDate>\n"
                  "        <EntityRef>\n"
                  "          <FullName>Doe, Jane</FullName>\n"
                  "        </EntityRef>\n"
                  "        <Duration>PT2H30M0S</Duration>\n"
                  "        <PayrollItemWageRef>\n"
                  "          <FullName>Regular Hourly Rate</FullName>\n"
                  "        </PayrollItemWageRef>\n"
                  "        <Notes>HLS - Regular Hourly Rate</Notes>\n"
                  "        <IsBillable>false</IsBillable>\n"
                  "      </TimeTrackingAdd>\n"
                  "    </TimeTrackingAddRq>\n"
                  "  </QBXMLMsgsRq>\n"
                  "</QBXML>\n");
}

TEST(QbxmlRequest, ZeroAndNegativeHourCountsAreSentAsTheyAre) {
  TimeTrackingAdd add = day_entry();
  add.entity_full_name = "Jane,,Doe";
  add.duration = {-8, 30, 0};
  add.notes = "HLS - Edit Totals";
  add.is_billable = true;
  TimeTrackingAdd zero = add;
  zero.duration = {0, 0, 0};
  expect_document(RequestSet{1, 0, OnError::Continue, {add, zero}},
                  "<?xml version=\"1.0\"?>\n"
                  "<?qbxml version=\"1.0\"?>\n"
                  "<QBXML>\n"
                  "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
                  "    <TimeTrackingAddRq requestID=\"1\">\n"
                  "      <TimeTrackingAdd>\n"
                  "        <TxnDate>2004-03-01</TxnDate>\n"
                  "        <EntityRef>\n"
                  "          <FullName>Jane,,Doe</FullName>\n"
                  "        </EntityRef>\n"
                  "        <Duration>-PT8H30M0S</Duration>\n"
                  "        <PayrollItemWageRef>\n"
                  "          <FullName>Regular Hourly Rate</FullName>\n"
                  "        </PayrollItemWageRef>\n"
                  "        <Notes>HLS - Edit Totals</Notes>\n"
                  "        <IsBillable>true</IsBillable>\n"
                  "      </TimeTrackingAdd>\n"
                  "    </TimeTrackingAddRq>\n"
                  "    <TimeTrackingAddRq requestID=\"2\">\n"
                  "      <TimeTrackingAdd>\n"
                  "        <TxnDate>2004-03-01</TxnDate>\n"
                  "        <EntityRef>\n"
                  "          <FullName>Jane,,Doe</FullName>\n"
                  "        </EntityRef>\n"
                  "        <Duration>PT0H0M0S</Duration>\n"
                  "        <PayrollItemWageRef>\n"
                  "          <FullName>Regular Hourly Rate</FullName>\n"
                  "        </PayrollItemWageRef>\n"
                  "        <Notes>HLS - Edit Totals</Notes>\n"
                  "        <IsBillable>true</IsBillable>\n"
                  "      </TimeTrackingAdd>\n"
                  "    </TimeTrackingAddRq>\n"
                  "  </QBXMLMsgsRq>\n"
                  "</QBXML>\n");
}

TEST(QbxmlRequest, SeveralRequestsAreNumberedInOrder) {
  expect_document(
      RequestSet{
          1, 1, OnError::Continue, {PayrollItemWageQuery{3}, EmployeeQuery{}, EmployeeQuery{}}},
      "<?xml version=\"1.0\"?>\n"
      "<?qbxml version=\"1.1\"?>\n"
      "<QBXML>\n"
      "  <QBXMLMsgsRq onError=\"continueOnError\">\n"
      "    <PayrollItemWageQueryRq requestID=\"1\">\n"
      "      <MaxReturned>3</MaxReturned>\n"
      "    </PayrollItemWageQueryRq>\n"
      "    <EmployeeQueryRq requestID=\"2\"/>\n"
      "    <EmployeeQueryRq requestID=\"3\"/>\n"
      "  </QBXMLMsgsRq>\n"
      "</QBXML>\n");
}

TEST(QbxmlRequest, AnEmptySet) {
  expect_document(RequestSet{1, 0, OnError::Continue, {}},
                  "<?xml version=\"1.0\"?>\n"
                  "<?qbxml version=\"1.0\"?>\n"
                  "<QBXML>\n"
                  "  <QBXMLMsgsRq onError=\"continueOnError\"/>\n"
                  "</QBXML>\n");
}

TEST(QbxmlRequest, MarkupCharactersAndLineEndsAreEscaped) {
  TimeTrackingAdd add = day_entry();
  add.entity_full_name = "O'Brien & <Sons> \"Ltd\"";
  add.notes = "line 1\r\nline 2\ttab";
  const std::string document = write_qbxml_request(one_request(add));
  EXPECT_NE(document.find("<FullName>O&apos;Brien &amp; &lt;Sons&gt; &quot;Ltd&quot;</FullName>"),
            std::string::npos)
      << document;
  EXPECT_NE(document.find("<Notes>line 1&#13;&#10;line 2&#9;tab</Notes>"), std::string::npos)
      << document;
  EXPECT_EQ(read_qbxml_request(document), one_request(add));
}

TEST(QbxmlRequest, NonAsciiTextIsWrittenAsUtf8) {
  // "Zoë Müller" and a character beyond the basic plane.
  const std::string name = "Zo\xC3\xAB M\xC3\xBCller \xF0\x9F\x98\x80";
  const std::string document = write_qbxml_request(one_request(EmployeeAdd{name, "", ""}));
  EXPECT_NE(document.find("<FirstName>" + name + "</FirstName>"), std::string::npos) << document;
  EXPECT_EQ(read_qbxml_request(document), one_request(EmployeeAdd{name, "", ""}));
}

TEST(QbxmlRequest, TextXmlCannotCarryBecomesReplacementCharacters) {
  // A Latin-1 byte, a control character and a truncated sequence.
  const std::string document =
      write_qbxml_request(one_request(EmployeeAdd{"Jos\xE9", "\x01", "Doe\xC3"}));
  EXPECT_NE(document.find("<FirstName>Jos\xEF\xBF\xBD</FirstName>"), std::string::npos);
  EXPECT_NE(document.find("<MiddleName>\xEF\xBF\xBD</MiddleName>"), std::string::npos);
  EXPECT_NE(document.find("<LastName>Doe\xEF\xBF\xBD</LastName>"), std::string::npos);
  EXPECT_EQ(read_qbxml_request(document),
            one_request(EmployeeAdd{"Jos\xEF\xBF\xBD", "\xEF\xBF\xBD", "Doe\xEF\xBF\xBD"}));
}

TEST(QbxmlRequest, BlankTextSurvives) {
  TimeTrackingAdd add = day_entry();
  add.notes = "  ";
  add.payroll_item_wage_full_name = "";
  EXPECT_EQ(read_qbxml_request(write_qbxml_request(one_request(add))), one_request(add));
}

TEST(QbxmlRequest, TheFieldOrderOfTheObjectModelIsNotCarried) {
  TimeTrackingAdd add = day_entry();
  add.field_order = kEditTotalFieldOrder;
  const RequestSet read = read_qbxml_request(write_qbxml_request(one_request(add)));
  EXPECT_EQ(std::get<TimeTrackingAdd>(read.requests.at(0)).field_order, kDayEntryFieldOrder);
}

TEST(QbxmlRequest, ReadsDocumentsLaidOutDifferently) {
  const RequestSet read = read_qbxml_request(
      "<?xml version='1.0' encoding='utf-8'?><?qbxml version = \"3.0\" ?>"
      "<!-- sent by hand --><QBXML><QBXMLMsgsRq onError='stopOnError'>"
      "<EmployeeAddRq requestID='1'><EmployeeAdd><LastName>Doe</LastName></EmployeeAdd>"
      "</EmployeeAddRq><EmployeeQueryRq requestID='2'></EmployeeQueryRq>"
      "<PayrollItemWageQueryRq requestID='3'><MaxReturned>007</MaxReturned>"
      "</PayrollItemWageQueryRq></QBXMLMsgsRq></QBXML>");
  EXPECT_EQ(read,
            (RequestSet{3,
                        0,
                        OnError::Stop,
                        {EmployeeAdd{"", "", "Doe"}, EmployeeQuery{}, PayrollItemWageQuery{7}}}));
}

}  // namespace
}  // namespace zorvat::quickbooks
