// The qbXML readers on malformed and hostile documents: each is refused with a
// zorvat::Error that says what is wrong and where, and nothing else happens.
#include <gtest/gtest.h>

#include "zorvat/error.h"
#include "zorvat/quickbooks/qbxml.h"

namespace zorvat::quickbooks {
namespace {

const std::string kProlog = "<?xml version=\"1.0\"?><?qbxml version=\"1.0\"?>";

template <class Read>
std::string refusal(Read&& read) {
  try {
    read();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), kQbxmlParseError);
    EXPECT_EQ(error.source(), "zorvat.QuickBooksQbxml");
    return error.description();
  }
  return "(accepted)";
}

std::string request_refusal(std::string_view xml) {
  return refusal([&] { read_qbxml_request(xml); });
}
std::string response_refusal(std::string_view xml) {
  return refusal([&] { read_qbxml_response(xml); });
}

// A request document holding `requests` in a continue-on-error set.
std::string request_document(std::string_view requests) {
  return kProlog + "<QBXML><QBXMLMsgsRq onError=\"continueOnError\">" + std::string(requests) +
         "</QBXMLMsgsRq></QBXML>";
}

// A time entry whose TimeTrackingAdd holds `fields`.
std::string time_entry_document(std::string_view fields) {
  return request_document("<TimeTrackingAddRq requestID=\"1\"><TimeTrackingAdd>" +
                          std::string(fields) + "</TimeTrackingAdd></TimeTrackingAddRq>");
}

const std::string kEntity = "<EntityRef><FullName>Doe, Jane</FullName></EntityRef>";
const std::string kItem = "<PayrollItemWageRef><FullName>Reg</FullName></PayrollItemWageRef>";

std::string time_entry_fields(std::string_view date, std::string_view duration,
                              std::string_view billable) {
  return "<TxnDate>" + std::string(date) + "</TxnDate>" + kEntity + "<Duration>" +
         std::string(duration) + "</Duration>" + kItem + "<Notes>n</Notes><IsBillable>" +
         std::string(billable) + "</IsBillable>";
}

// A response document holding `responses`.
std::string response_document(std::string_view responses) {
  return "<?xml version=\"1.0\"?><QBXML><QBXMLMsgsRs>" + std::string(responses) +
         "</QBXMLMsgsRs></QBXML>";
}

TEST(QbxmlHostile, TheValidBaseDocumentsAreAccepted) {
  EXPECT_NO_THROW(read_qbxml_request(
      time_entry_document(time_entry_fields("2004-03-01", "PT1H0M0S", "false"))));
  EXPECT_NO_THROW(read_qbxml_response(response_document(
      "<EmployeeQueryRs requestID=\"1\" statusCode=\"0\" statusSeverity=\"Info\" "
      "statusMessage=\"Status OK\"><EmployeeRet><Name>A</Name></EmployeeRet></EmployeeQueryRs>")));
}

TEST(QbxmlHostile, BytesThatAreNotUtf8) {
  EXPECT_EQ(request_refusal("<QBXML>\xFF</QBXML>"), "qbXML request: byte 7: not UTF-8");
  EXPECT_EQ(request_refusal("<QBXML>\xC0\xAF</QBXML>"), "qbXML request: byte 7: not UTF-8");
  EXPECT_EQ(request_refusal("<QBXML>\xED\xA0\x80</QBXML>"), "qbXML request: byte 7: not UTF-8");
  EXPECT_EQ(request_refusal("<QBXML>\xE2\x82"), "qbXML request: byte 7: not UTF-8");
}

TEST(QbxmlHostile, CharactersXmlDoesNotAllow) {
  EXPECT_EQ(request_refusal(std::string("<QBXML>\0</QBXML>", 16)),
            "qbXML request: byte 7: character U+0000 is not allowed in XML");
  EXPECT_EQ(request_refusal("<QBXML>\x1B</QBXML>"),
            "qbXML request: byte 7: character U+001B is not allowed in XML");
  EXPECT_EQ(request_refusal("<QBXML>\xEF\xBF\xBF</QBXML>"),
            "qbXML request: byte 7: character U+FFFF is not allowed in XML");
}

TEST(QbxmlHostile, References) {
  EXPECT_EQ(request_refusal("<QBXML>&foo;</QBXML>"),
            "qbXML request: byte 7: unknown entity \"&foo;\"");
  EXPECT_EQ(request_refusal("<QBXML>Smith & Sons</QBXML>"),
            "qbXML request: byte 13: \"&\" that starts no reference (write &amp;)");
  EXPECT_EQ(request_refusal("<QBXML a=\"&#0;\"/>"),
            "qbXML request: byte 10: character reference \"&#0;\" to no character XML allows");
  EXPECT_EQ(request_refusal("<QBXML>&#xD800;</QBXML>"),
            "qbXML request: byte 7: character reference \"&#xD800;\" to no character XML allows");
  EXPECT_EQ(request_refusal("<QBXML>&#x110000;</QBXML>"),
            "qbXML request: byte 7: character reference \"&#x110000;\" to no character XML allows");
  EXPECT_EQ(request_refusal("<QBXML>&#;</QBXML>"),
            "qbXML request: byte 7: character reference \"&#;\" to no character XML allows");
  // Inside comments an ampersand is only a character.
  EXPECT_EQ(request_refusal("<!-- A & B --><QBXML/>"),
            "qbXML request: the qbxml version instruction is missing");
}

TEST(QbxmlHostile, ReferencesAreCheckedAgainAfterACommentInstructionOrCdata) {
  // The ampersand inside each region is only a character; the one after it is read.
  EXPECT_EQ(request_refusal("<QBXML><!-- A & B -->&c;</QBXML>"),
            "qbXML request: byte 21: unknown entity \"&c;\"");
  EXPECT_EQ(request_refusal("<?note A & B?><QBXML>&c;</QBXML>"),
            "qbXML request: byte 21: unknown entity \"&c;\"");
  EXPECT_EQ(request_refusal("<QBXML><![CDATA[A & B]]>&c;</QBXML>"),
            "qbXML request: byte 24: unknown entity \"&c;\"");
  // A '<' that opens no region is no region.
  EXPECT_EQ(request_refusal("<QBXML><!- & -></QBXML>"),
            "qbXML request: byte 11: \"&\" that starts no reference (write &amp;)");
}

TEST(QbxmlHostile, EntityExpansionIsRefused) {
  EXPECT_EQ(request_refusal("<?xml version=\"1.0\"?><!DOCTYPE QBXML [<!ENTITY a \"aaaa\">"
                            "<!ENTITY b \"&a;&a;&a;&a;\">]><QBXML>&b;</QBXML>"),
            "qbXML request: byte 68: unknown entity \"&a;\"");
  EXPECT_EQ(
      request_refusal("<?xml version=\"1.0\"?><!DOCTYPE QBXML [<!ENTITY a \"aaaa\">]><QBXML/>"),
      "qbXML request: a document type declaration is not allowed");
  EXPECT_EQ(request_refusal(
                "<?xml version=\"1.0\"?><!DOCTYPE QBXML SYSTEM \"file:///etc/passwd\"><QBXML/>"),
            "qbXML request: a document type declaration is not allowed");
}

TEST(QbxmlHostile, NotWellFormed) {
  for (const std::string_view xml :
       {std::string_view(""), std::string_view("   "), std::string_view("<QBXML>"),
        std::string_view("<QBXML></QBXMLX>"), std::string_view("<QBXML a=\"1></QBXML>"),
        std::string_view("<?xml version=\"1.0\"?><?qbxml version=\"1.0\"?><QBXML><QBXMLMsgsRq")}) {
    const std::string description = request_refusal(xml);
    EXPECT_TRUE(description.starts_with("qbXML request: byte ")) << xml << " -> " << description;
  }
}

TEST(QbxmlHostile, TheDocumentFrame) {
  EXPECT_EQ(request_refusal("<QBXML/>"), "qbXML request: the qbxml version instruction is missing");
  EXPECT_EQ(request_refusal("<?qbxml version=\"one\"?><QBXML/>"),
            "qbXML request: qbxml instruction \"version=\"one\"\" names no version M.m");
  EXPECT_EQ(request_refusal("<?qbxml version=\"1.0\"?><?qbxml version=\"1.0\"?><QBXML/>"),
            "qbXML request: a second qbxml version");
  EXPECT_EQ(request_refusal("<?xml version=\"1.1\"?><QBXML/>"),
            "qbXML request: XML declaration with version=\"1.1\"");
  EXPECT_EQ(request_refusal("<?xml version=\"1.0\" encoding=\"windows-1252\"?><QBXML/>"),
            "qbXML request: XML declaration with encoding=\"windows-1252\"");
  EXPECT_EQ(request_refusal("<?xml version=\"1.0\" encoding=\"UTF-16\"?><QBXML/>"),
            "qbXML request: XML declaration with encoding=\"UTF-16\"");
  EXPECT_EQ(request_refusal("<?qbxml version=\"1.0\"?><?php echo ?><QBXML/>"),
            "qbXML request: unknown processing instruction \"php\"");
  EXPECT_EQ(request_refusal(kProlog + "<QBXMLX/>"),
            "qbXML request: the document element is <QBXMLX>, not <QBXML>");
  EXPECT_EQ(request_refusal(kProlog + "<QBXML/><QBXML/>"),
            "qbXML request: a second document element <QBXML>");
  EXPECT_EQ(request_refusal(kProlog + "<QBXML/>"),
            "qbXML request: QBXML: <QBXMLMsgsRq> is missing");
  EXPECT_EQ(request_refusal(kProlog + "<QBXML version=\"1\"/>"),
            "qbXML request: QBXML: unexpected attribute version");
  EXPECT_EQ(request_refusal(kProlog + "<QBXML><QBXMLMsgsRs/></QBXML>"),
            "qbXML request: QBXML: expected <QBXMLMsgsRq>, found <QBXMLMsgsRs>");
  EXPECT_EQ(request_refusal(kProlog + "<QBXML><QBXMLMsgsRq/></QBXML>"),
            "qbXML request: QBXML/QBXMLMsgsRq: attribute onError is missing");
  EXPECT_EQ(request_refusal(kProlog + "<QBXML><QBXMLMsgsRq onError=\"ignore\"/></QBXML>"),
            "qbXML request: QBXML/QBXMLMsgsRq: onError \"ignore\" is not stopOnError, "
            "continueOnError or rollbackOnError");
  EXPECT_EQ(request_refusal(kProlog + "<QBXML><QBXMLMsgsRq onError=\"stopOnError\" "
                                      "onError=\"stopOnError\"/></QBXML>"),
            "qbXML request: QBXML/QBXMLMsgsRq: attribute onError given twice");
}

TEST(QbxmlHostile, RequestsAndTheirIds) {
  EXPECT_EQ(
      request_refusal(request_document("<CustomerQueryRq requestID=\"1\"/>")),
      "qbXML request: QBXML/QBXMLMsgsRq/CustomerQueryRq[1]: not a request this session sends");
  EXPECT_EQ(request_refusal(request_document("<EmployeeQueryRq/>")),
            "qbXML request: QBXML/QBXMLMsgsRq/EmployeeQueryRq[1]: attribute requestID is missing");
  EXPECT_EQ(request_refusal(request_document("<EmployeeQueryRq requestID=\"1\"/>"
                                             "<EmployeeQueryRq requestID=\"1\"/>")),
            "qbXML request: QBXML/QBXMLMsgsRq/EmployeeQueryRq[2]: requestID \"1\" where 2 belongs");
  EXPECT_EQ(request_refusal(request_document("<EmployeeQueryRq requestID=\"1\" metaData=\"x\"/>")),
            "qbXML request: QBXML/QBXMLMsgsRq/EmployeeQueryRq[1]: unexpected attribute metaData");
  EXPECT_EQ(
      request_refusal(request_document("<EmployeeQueryRq requestID=\"1\">hello</EmployeeQueryRq>")),
      "qbXML request: QBXML/QBXMLMsgsRq/EmployeeQueryRq[1]: unexpected text \"hello\"");
  EXPECT_EQ(request_refusal(request_document("<EmployeeQueryRq requestID=\"1\"><MaxReturned>1"
                                             "</MaxReturned></EmployeeQueryRq>")),
            "qbXML request: QBXML/QBXMLMsgsRq/EmployeeQueryRq[1]: unexpected <MaxReturned>");
  EXPECT_EQ(request_refusal(request_document("<PayrollItemWageQueryRq requestID=\"1\"><MaxReturned>"
                                             "40x</MaxReturned></PayrollItemWageQueryRq>")),
            "qbXML request: QBXML/QBXMLMsgsRq/PayrollItemWageQueryRq[1]/MaxReturned: \"40x\" is "
            "not a whole number");
  EXPECT_EQ(request_refusal(request_document("<PayrollItemWageQueryRq requestID=\"1\"><MaxReturned>"
                                             "99999999999</MaxReturned></PayrollItemWageQueryRq>")),
            "qbXML request: QBXML/QBXMLMsgsRq/PayrollItemWageQueryRq[1]/MaxReturned: "
            "\"99999999999\" is not a whole number");
  EXPECT_EQ(
      request_refusal(request_document("<EmployeeAddRq requestID=\"1\"><EmployeeAdd>"
                                       "<LastName>Doe</LastName><FirstName>Jane</FirstName>"
                                       "</EmployeeAdd></EmployeeAddRq>")),
      "qbXML request: QBXML/QBXMLMsgsRq/EmployeeAddRq[1]/EmployeeAdd: unexpected <FirstName>");
  EXPECT_EQ(request_refusal(request_document("<EmployeeAddRq requestID=\"1\"/>")),
            "qbXML request: QBXML/QBXMLMsgsRq/EmployeeAddRq[1]: <EmployeeAdd> is missing");
}

TEST(QbxmlHostile, TimeEntryFields) {
  const std::string place = "qbXML request: QBXML/QBXMLMsgsRq/TimeTrackingAddRq[1]/TimeTrackingAdd";
  EXPECT_EQ(request_refusal(time_entry_document("<TxnDate>2004-03-01</TxnDate><Duration>PT1H0M0S"
                                                "</Duration>" +
                                                kEntity)),
            place + ": expected <EntityRef>, found <Duration>");
  EXPECT_EQ(request_refusal(time_entry_document(
                time_entry_fields("2004-03-01", "PT1H0M0S", "false") + "<BillableStatus>NotBillable"
                                                                       "</BillableStatus>")),
            place + ": unexpected <BillableStatus>");
  EXPECT_EQ(request_refusal(time_entry_document(
                time_entry_fields("2004-03-01", "PT1H0M0S", "false") + "<ClassRef/>")),
            place + ": unexpected <ClassRef>");
  EXPECT_EQ(
      request_refusal(time_entry_document(time_entry_fields("2004-02-30", "PT1H0M0S", "false"))),
      place + "/TxnDate: \"2004-02-30\" is not a date YYYY-MM-DD");
  EXPECT_EQ(
      request_refusal(time_entry_document(time_entry_fields("03/01/04", "PT1H0M0S", "false"))),
      place + "/TxnDate: \"03/01/04\" is not a date YYYY-MM-DD");
  for (const std::string_view duration :
       {"PT8H", "P1D", "PT-8H0M0S", "PT+8H0M0S", "+PT8H0M0S", "--PT8H0M0S", "PT8H-30M0S",
        "PT8H0M0S ", "PT99999999999H0M0S", ""}) {
    EXPECT_EQ(
        request_refusal(time_entry_document(time_entry_fields("2004-03-01", duration, "false"))),
        place + "/Duration: \"" + std::string(duration) + "\" is not a duration PTnHnMnS");
  }
  EXPECT_EQ(
      request_refusal(time_entry_document(time_entry_fields("2004-03-01", "PT1H0M0S", "yes"))),
      place + "/IsBillable: \"yes\" is not true or false");
  EXPECT_EQ(request_refusal(time_entry_document("<TxnDate>2004-03-01</TxnDate><EntityRef>"
                                                "<ListID>1</ListID></EntityRef>")),
            place + "/EntityRef: expected <FullName>, found <ListID>");
  EXPECT_EQ(request_refusal(time_entry_document("<TxnDate>2004-03-01<b/></TxnDate>")),
            place + "/TxnDate: holds more than text");
  EXPECT_EQ(request_refusal(time_entry_document("<TxnDate x=\"1\">2004-03-01</TxnDate>")),
            place + "/TxnDate: unexpected attribute x");
  EXPECT_EQ(request_refusal(time_entry_document("<TxnDate><![CDATA[2004-03-01]]></TxnDate>")),
            place + "/TxnDate: holds more than text");
}

TEST(QbxmlHostile, DeepNestingIsRefusedWithoutCrashing) {
  std::string deep;
  for (int level = 0; level < 200000; ++level) deep += "<a>";
  for (int level = 0; level < 200000; ++level) deep += "</a>";
  EXPECT_EQ(request_refusal(time_entry_document("<TxnDate>" + deep + "</TxnDate>")),
            "qbXML request: QBXML/QBXMLMsgsRq/TimeTrackingAddRq[1]/TimeTrackingAdd/TxnDate: holds "
            "more than text");
  EXPECT_EQ(response_refusal(response_document("<EmployeeQueryRs requestID=\"1\" statusCode=\"0\" "
                                               "statusSeverity=\"Info\" statusMessage=\"\">"
                                               "<EmployeeRet><Name>A</Name><X>" +
                                               deep + "</X></EmployeeRet>" + deep +
                                               "</EmployeeQueryRs>")),
            "qbXML response: QBXML/QBXMLMsgsRs/EmployeeQueryRs[1]/a[2]: expected <EmployeeRet>");
}

TEST(QbxmlHostile, ResponseStatuses) {
  const std::string place = "qbXML response: QBXML/QBXMLMsgsRs/EmployeeQueryRs[1]";
  EXPECT_EQ(
      response_refusal(response_document("<EmployeeQueryRs requestID=\"1\" statusCode=\"abc\" "
                                         "statusSeverity=\"Info\" statusMessage=\"\"/>")),
      place + " statusCode: \"abc\" is not a whole number");
  EXPECT_EQ(response_refusal(response_document("<EmployeeQueryRs requestID=\"1\" statusCode=\"0\" "
                                               "statusSeverity=\"Fatal\" statusMessage=\"\"/>")),
            place + ": statusSeverity \"Fatal\" is not Info, Warn or Error");
  EXPECT_EQ(response_refusal(response_document("<EmployeeQueryRs requestID=\"1\" statusCode=\"0\" "
                                               "statusSeverity=\"Info\" statusMessage=\"\" "
                                               "retCnt=\"1\"/>")),
            place + ": unexpected attribute retCnt");
  EXPECT_EQ(response_refusal(response_document("<EmployeeQueryRs requestID=\"2\" statusCode=\"0\" "
                                               "statusSeverity=\"Info\" statusMessage=\"\"/>")),
            place + ": requestID \"2\" where 1 belongs");
  EXPECT_EQ(response_refusal(response_document("<CustomerQueryRs requestID=\"1\"/>")),
            "qbXML response: QBXML/QBXMLMsgsRs/CustomerQueryRs[1]: not a response this session "
            "sends requests for");
}

TEST(QbxmlHostile, ReturnedObjects) {
  const std::string open =
      "<EmployeeQueryRs requestID=\"1\" statusCode=\"0\" statusSeverity=\"Info\" "
      "statusMessage=\"\">";
  const std::string place = "qbXML response: QBXML/QBXMLMsgsRs/EmployeeQueryRs[1]";
  EXPECT_EQ(response_refusal(response_document(open + "<PayrollItemWageRet><Name>A</Name>"
                                                      "</PayrollItemWageRet></EmployeeQueryRs>")),
            place + "/PayrollItemWageRet[1]: expected <EmployeeRet>");
  EXPECT_EQ(
      response_refusal(response_document(open + "<EmployeeRet><ListID>1</ListID></EmployeeRet>"
                                                "</EmployeeQueryRs>")),
      place + "/EmployeeRet[1]: <Name> is missing");
  EXPECT_EQ(response_refusal(response_document(open + "<EmployeeRet><Name>A</Name><Name>B</Name>"
                                                      "</EmployeeRet></EmployeeQueryRs>")),
            place + "/EmployeeRet[1]: a second <Name>");
  EXPECT_EQ(
      response_refusal(response_document(open + "<EmployeeRet>stray<Name>A</Name></EmployeeRet>"
                                                "</EmployeeQueryRs>")),
      place + "/EmployeeRet[1]: unexpected text \"stray\"");
  EXPECT_EQ(response_refusal(response_document(
                "<TimeTrackingAddRs requestID=\"1\" statusCode=\"0\" statusSeverity=\"Info\" "
                "statusMessage=\"\"><TimeTrackingRet><Name>A</Name></TimeTrackingRet>"
                "</TimeTrackingAddRs>")),
            "qbXML response: QBXML/QBXMLMsgsRs/TimeTrackingAddRs[1]/TimeTrackingRet[1]: a time "
            "entry has no <Name>");
  EXPECT_EQ(response_refusal("<?xml version=\"1.0\"?><QBXML><QBXMLMsgsRq/></QBXML>"),
            "qbXML response: QBXML: expected <QBXMLMsgsRs>, found <QBXMLMsgsRq>");
}

// Every cut of a valid document, and every byte of it replaced, is either read or
// refused with a zorvat::Error.
TEST(QbxmlHostile, EveryTruncationAndByteChangeIsReadOrRefused) {
  TimeTrackingAdd add;
  add.entity_full_name = "Zo\xC3\xAB & Co";
  add.duration = {-8, 30, 0};
  add.txn_date = Date::from_civil(2004, 3, 1);
  const RequestSet request_set{1, 0, OnError::Continue, {PayrollItemWageQuery{40}, add}};
  const std::string request = write_qbxml_request(request_set);
  const std::string response = write_qbxml_response(
      ResponseSet{{Response{0, "Info", "Status OK", std::vector<ReturnedObject>{{"A\"B"}}},
                   Response{0, "Info", "Status OK", std::vector<ReturnedObject>{{""}}}}},
      request_set);
  for (const std::string& document : {request, response}) {
    for (std::size_t length = 0; length < document.size(); ++length) {
      const std::string cut = document.substr(0, length);
      try {
        read_qbxml_request(cut);
        read_qbxml_response(cut);
      } catch (const Error&) {
      }
    }
    for (std::size_t at = 0; at < document.size(); ++at) {
      for (const char replacement : {'\0', '<', '&', '"', 'x', '\xFF'}) {
        std::string changed = document;
        changed[at] = replacement;
        try {
          read_qbxml_request(changed);
        } catch (const Error&) {
        }
        try {
          read_qbxml_response(changed);
        } catch (const Error&) {
        }
      }
    }
  }
  SUCCEED();
}

}  // namespace
}  // namespace zorvat::quickbooks
