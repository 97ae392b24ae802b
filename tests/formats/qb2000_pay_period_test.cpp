// The small pay period of tests/qb2000/small_pay_period.json, the one written-out
// conversation with QuickBooks that the COM server's tests also hold zorvat.dll to:
// the same settings, company and cards must produce the same session calls and the
// same message sets through the direct session manager and through qbXML documents.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "json_cards.h"
#include "qb2000_test_support.h"
#include "zorvat/quickbooks/company.h"
#include "zorvat/quickbooks/qbxml.h"
#include "zorvat/quickbooks/qbxml_session.h"

namespace zorvat::formats::qb2000_test {
namespace {

namespace qb = quickbooks;
using nlohmann::json;

json pay_period() {
  std::ifstream file(ZORVAT_QB2000_PAY_PERIOD, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return json::parse(text.str());
}

Date iso_date(const json& text) {
  const std::optional<Date> date = parse_iso_date(text.get<std::string>());
  if (!date) throw std::invalid_argument("not a YYYY-MM-DD date: " + text.dump());
  return *date;
}

qb::TimeTrackingField time_field(const std::string& name) {
  if (name == "EntityRef.FullName") return qb::TimeTrackingField::EntityRef;
  if (name == "Duration") return qb::TimeTrackingField::Duration;
  if (name == "TxnDate") return qb::TimeTrackingField::TxnDate;
  if (name == "PayrollItemWageRef.FullName") return qb::TimeTrackingField::PayrollItemWageRef;
  if (name == "IsBillable") return qb::TimeTrackingField::IsBillable;
  if (name == "Notes") return qb::TimeTrackingField::Notes;
  throw std::invalid_argument("no time entry field " + name);
}

// A time entry from its SetValue calls, whose order is the entry's field order.
qb::TimeTrackingAdd time_entry(const json& calls) {
  qb::TimeTrackingAdd entry;
  if (calls.size() != entry.field_order.size())
    throw std::invalid_argument("a time entry sets six fields: " + calls.dump());
  for (std::size_t i = 0; i < calls.size(); ++i) {
    const json& value = calls[i][1];
    switch (entry.field_order[i] = time_field(calls[i][0].get<std::string>())) {
      case qb::TimeTrackingField::EntityRef:
        entry.entity_full_name = value.get<std::string>();
        break;
      case qb::TimeTrackingField::Duration:
        if (value.size() != 3)
          throw std::invalid_argument("Duration is set with hours, minutes, seconds: " +
                                      value.dump());
        entry.duration = {value[0].get<std::int32_t>(), value[1].get<std::int32_t>(),
                          value[2].get<std::int32_t>()};
        break;
      case qb::TimeTrackingField::TxnDate:
        entry.txn_date = iso_date(value);
        break;
      case qb::TimeTrackingField::PayrollItemWageRef:
        entry.payroll_item_wage_full_name = value.get<std::string>();
        break;
      case qb::TimeTrackingField::IsBillable:
        entry.is_billable = value.get<bool>();
        break;
      case qb::TimeTrackingField::Notes:
        entry.notes = value.get<std::string>();
        break;
    }
  }
  return entry;
}

qb::Request request(const json& written) {
  const std::string type = written.at("type").get<std::string>();
  const json& calls = written.at("set");
  if (type == "PayrollItemWageQuery") {
    if (calls.size() != 1 || calls[0][0] != "ORListQuery.ListFilter.MaxReturned")
      throw std::invalid_argument("an item query sets its limit only: " + calls.dump());
    return qb::PayrollItemWageQuery{calls[0][1].get<std::int32_t>()};
  }
  if (type == "EmployeeQuery") return qb::EmployeeQuery{};
  if (type == "EmployeeAdd") {
    qb::EmployeeAdd add;
    for (const json& call : calls) {
      const std::string field = call[0].get<std::string>();
      std::string& part = field == "FirstName"    ? add.first_name
                          : field == "MiddleName" ? add.middle_name
                                                  : add.last_name;
      part = call[1].get<std::string>();
    }
    return add;
  }
  if (type == "TimeTrackingAdd") return time_entry(calls);
  throw std::invalid_argument("no request type " + type);
}

std::vector<qb::RequestSet> expected_request_sets(const json& period) {
  std::vector<qb::RequestSet> sets;
  for (const json& written : period.at("expect").at("requestSets")) {
    qb::RequestSet set;
    const std::string version = written.at("version").get<std::string>();
    const std::size_t dot = version.find('.');
    set.major_version = std::stoi(version.substr(0, dot));
    set.minor_version = std::stoi(version.substr(dot + 1));
    set.on_error = static_cast<qb::OnError>(written.at("onError").get<std::int32_t>());
    for (const json& each : written.at("requests")) set.requests.push_back(request(each));
    sets.push_back(std::move(set));
  }
  return sets;
}

// The session calls as "Operation(argument, ...)", the message sets left out.
std::vector<std::string> session_calls(const std::vector<qb::RecordedCall>& calls) {
  std::vector<std::string> seen;
  for (const qb::RecordedCall& call : calls) {
    if (call.operation == "DoRequests") continue;
    std::string text = call.operation + "(";
    for (std::size_t i = 0; i < call.arguments.size(); ++i)
      text += (i == 0 ? "" : ", ") + call.arguments[i];
    seen.push_back(text + ")");
  }
  return seen;
}

std::vector<std::string> expected_session_calls(const json& period) {
  std::vector<std::string> calls;
  for (const json& call : period.at("expect").at("sessionCalls")) {
    std::string text = call.at("operation").get<std::string>() + "(";
    const json& arguments = call.at("arguments");
    for (std::size_t i = 0; i < arguments.size(); ++i)
      text += (i == 0 ? "" : ", ") + arguments[i].get<std::string>();
    calls.push_back(text + ")");
  }
  return calls;
}

// qbXML documents carry a time entry's fields in the schema's order, not in the order
// a client set them: that order is compared through the direct backend only.
std::vector<qb::RequestSet> without_field_order(std::vector<qb::RequestSet> sets) {
  for (qb::RequestSet& set : sets)
    for (qb::Request& each : set.requests)
      if (auto* entry = std::get_if<qb::TimeTrackingAdd>(&each))
        entry->field_order = qb::kDayEntryFieldOrder;
  return sets;
}

class QB2000PayPeriodTest : public testing::Test {
 protected:
  QB2000PayPeriodTest()
      : period_(pay_period()),
        host_(qb::parse_company_json(period_.at("company").dump(), "small_pay_period.json")) {}

  bool run(qb::SessionManagerFactory& sessions) {
    host_.sessions = &sessions;
    QB2000 exporter(host_.context());
    exporter.SetupData(period_.at("setupData").get<std::string>());
    return exporter.Execute(cli::load_cards_json(period_.at("cards").dump(), "small_pay_period"));
  }

  // Runs the export over qbXML documents; every document sent is kept.
  bool run_qbxml(std::vector<std::string>& documents) {
    qbxml_ = std::make_unique<qb::SimulatorQbxmlSessionFactory>(
        host_.simulator, [&](std::string_view document) { documents.emplace_back(document); });
    return run(*qbxml_);
  }

  json period_;
  QuickBooksHost host_;
  std::unique_ptr<qb::SimulatorQbxmlSessionFactory> qbxml_;
};

// Reads every document back under the schema's rules (order, types, lengths, the
// version's billable element) and writes it again: what was sent is what is read.
void expect_schema_valid(const std::vector<std::string>& documents) {
  for (const std::string& document : documents) {
    const qb::RequestSet read = qb::read_qbxml_request(document);
    EXPECT_EQ(qb::write_qbxml_request(read), document);
  }
}

TEST_F(QB2000PayPeriodTest, TheDirectBackendReceivesTheWrittenOutConversation) {
  ASSERT_TRUE(run(host_.direct));
  EXPECT_EQ(period_["expect"]["result"], true);
  EXPECT_EQ(session_calls(host_.simulator.calls()), expected_session_calls(period_));
  EXPECT_EQ(host_.simulator.request_sets(), expected_request_sets(period_));
  // No question on the way: every employee and item is there. The bar grew once for
  // the items, the employees and the adding, and once for each of the two cards.
  EXPECT_EQ(host_.ui.events, std::vector<std::string>{"hide: frmProgBar"});
  EXPECT_EQ(host_.ui.bar_advances(), 5);
}

TEST_F(QB2000PayPeriodTest, TheQbxmlBackendReceivesTheSameConversation) {
  std::vector<std::string> documents;
  qb::SimulatorQbxmlSessionFactory qbxml(
      host_.simulator, [&](std::string_view document) { documents.emplace_back(document); });
  ASSERT_TRUE(run(qbxml));
  EXPECT_EQ(session_calls(host_.simulator.calls()), expected_session_calls(period_));
  const std::vector<qb::RequestSet> expected = expected_request_sets(period_);
  EXPECT_EQ(without_field_order(host_.simulator.request_sets()), without_field_order(expected));
  ASSERT_EQ(documents.size(), expected.size());
}

TEST_F(QB2000PayPeriodTest, EveryDocumentSentIsValidUnderTheSchemasRules) {
  std::vector<std::string> documents;
  ASSERT_TRUE(run_qbxml(documents));
  ASSERT_EQ(documents.size(), 8u);
  expect_schema_valid(documents);
}

TEST_F(QB2000PayPeriodTest, AnEditTotalOver48HoursSendsItsNegativeRestWithTheSignInFront) {
  // 2430 minutes: 40 hours (40.5 rounds to even), two days of 24 and -8 hours with the
  // 30 minutes left.
  period_["cards"]["cards"][0]["EditREG"] = 2430;
  std::vector<std::string> documents;
  ASSERT_TRUE(run_qbxml(documents));
  expect_schema_valid(documents);
  // Jane Doe: queries, two days, then the three edit-total entries.
  ASSERT_EQ(documents.size(), 2u + 2u + 3u + 3u);
  EXPECT_NE(documents[4].find("<Duration>PT24H0M0S</Duration>"), std::string::npos);
  EXPECT_NE(documents[5].find("<Duration>PT24H0M0S</Duration>"), std::string::npos);
  EXPECT_NE(documents[6].find("<Duration>-PT8H30M0S</Duration>"), std::string::npos)
      << documents[6];
  EXPECT_EQ(documents[6].find("PT-"), std::string::npos);
  const qb::RequestSet rest = qb::read_qbxml_request(documents[6]);
  EXPECT_EQ(std::get<qb::TimeTrackingAdd>(rest.requests.at(0)).duration, (qb::Duration{-8, 30, 0}));
}

TEST_F(QB2000PayPeriodTest, FromQbxml6OnTheDocumentsSayBillableStatus) {
  period_["company"]["qbxml_versions"] = {"13.0", "1.0"};
  host_.simulator =
      qb::CompanySimulator(qb::parse_company_json(period_.at("company").dump(), "company"));
  std::vector<std::string> documents;
  ASSERT_TRUE(run_qbxml(documents));
  expect_schema_valid(documents);
  for (const std::string& document : documents) {
    EXPECT_NE(document.find("<?qbxml version=\"13.0\"?>"), std::string::npos);
    EXPECT_EQ(document.find("<IsBillable>"), std::string::npos);
  }
  EXPECT_NE(documents[2].find("<BillableStatus>NotBillable</BillableStatus>"), std::string::npos);
  // The day entries (the edit totals name employees by their raw key and are refused).
  EXPECT_EQ(host_.simulator.company().time_entries.size(), 5u);
}

TEST_F(QB2000PayPeriodTest, ACanadianFirstVersionIsAClearTypeMismatch) {
  period_["company"]["qbxml_versions"] = {"CA3.0"};
  host_.simulator =
      qb::CompanySimulator(qb::parse_company_json(period_.at("company").dump(), "company"));
  const Error error = raised_by([&] { run(host_.direct); });
  EXPECT_EQ(error.number(), 13);
  EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
  EXPECT_EQ(error.description(),
            "Type mismatch: QuickBooks offers qbXML version \"CA3.0\" first, which is not a "
            "version number major.minor; this export speaks the qbXML versions of the US "
            "editions");
  EXPECT_TRUE(host_.simulator.request_sets().empty());
}

TEST_F(QB2000PayPeriodTest, ANameOverItsLimitStopsTheExportBeforeItsSetIsSent) {
  // John Smith is not in the company: the export asks to add him, with a last name
  // one character over the limit of 25.
  const std::string last(26, 'S');
  period_["cards"]["cards"][1]["LastName"] = last;
  for (const bool qbxml : {false, true}) {
    SCOPED_TRACE(qbxml ? "qbXML" : "direct");
    host_.simulator =
        qb::CompanySimulator(qb::parse_company_json(period_.at("company").dump(), "company"));
    host_.host.ui.answer_question(Answer::Yes);
    std::vector<std::string> documents;
    const Error error = raised_by([&] { qbxml ? run_qbxml(documents) : run(host_.direct); });
    EXPECT_EQ(error.number(), 380);
    EXPECT_EQ(error.source(), "zorvat.QB2000.Execute");
    EXPECT_EQ(error.description(),
              "EmployeeAdd/LastName of employee \"John Q " + last +
                  "\" has 26 characters; QuickBooks takes at most 25. Nothing of this request "
                  "set was sent.");
    // The two queries reached QuickBooks, nothing else.
    EXPECT_EQ(host_.simulator.request_sets().size(), 2u);
    if (qbxml) {
      EXPECT_EQ(documents.size(), 2u);
    }
  }
}

TEST_F(QB2000PayPeriodTest, NamesAtEveryLimitAreSent) {
  const std::string first(25, 'F');
  const std::string last(25, 'L');
  period_["cards"]["cards"][1]["FirstName"] = first;
  period_["cards"]["cards"][1]["MI"] = "MMMMM";
  period_["cards"]["cards"][1]["LastName"] = last;
  host_.host.ui.answer_question(Answer::Yes);
  std::vector<std::string> documents;
  ASSERT_TRUE(run_qbxml(documents));
  expect_schema_valid(documents);
  EXPECT_EQ(host_.simulator.request_sets().at(2).requests.at(0),
            qb::Request(qb::EmployeeAdd{first, "MMMMM", last}));
}

}  // namespace
}  // namespace zorvat::formats::qb2000_test
