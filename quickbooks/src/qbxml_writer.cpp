// qbXML writers: one element per line, two spaces of indentation per level, LF line
// ends, elements in the schema's order.
#include "qbxml_names.h"
#include "xml_text.h"
#include "zorvat/error.h"
#include "zorvat/quickbooks/qbxml.h"
#include "zorvat/quickbooks/schema.h"
#include "zorvat/quickbooks/values.h"

namespace zorvat::quickbooks {
namespace {

constexpr std::string_view kSource = "zorvat.QuickBooksQbxml";

class XmlWriter {
 public:
  // One line at the current depth, from its pieces in order.
  template <class... Pieces>
  void line(const Pieces&... pieces) {
    out_.append(2 * depth_, ' ');
    ((out_ += pieces), ...);
    out_ += '\n';
  }
  void open(std::string_view name, std::string_view attributes = {}) {
    line("<", name, attributes, ">");
    ++depth_;
  }
  void close(std::string_view name) {
    --depth_;
    line("</", name, ">");
  }
  void empty(std::string_view name, std::string_view attributes = {}) {
    line("<", name, attributes, "/>");
  }
  void text(std::string_view name, std::string_view value) {
    line("<", name, ">", xml_escaped(value), "</", name, ">");
  }
  // <Name><FullName>value</FullName></Name>
  void reference(std::string_view name, std::string_view full_name) {
    open(name);
    text("FullName", full_name);
    close(name);
  }
  std::string take() { return std::move(out_); }

 private:
  std::string out_;
  std::size_t depth_ = 0;
};

std::string attribute(std::string_view name, std::string_view value) {
  std::string text(" ");
  text += name;
  text += "=\"";
  text += xml_escaped(value);
  text += '"';
  return text;
}

std::string request_id(std::size_t index) {
  return attribute("requestID", std::to_string(index + 1));
}

// The fields in the schema's order. Whether the entry is billable is IsBillable below
// qbXML 6.0 and BillableStatus from 6.0 on.
void write_time_entry_fields(XmlWriter& xml, const TimeTrackingAdd& add, bool billable_status) {
  xml.text("TxnDate", txn_date_text(add.txn_date));
  xml.reference("EntityRef", add.entity_full_name);
  xml.text("Duration", duration_text(add.duration));
  xml.reference("PayrollItemWageRef", add.payroll_item_wage_full_name);
  xml.text("Notes", add.notes);
  if (billable_status)
    xml.text("BillableStatus", add.is_billable ? "Billable" : "NotBillable");
  else
    xml.text("IsBillable", add.is_billable ? "true" : "false");
}

bool billable_status_of(const RequestSet& set) {
  return uses_billable_status(set.major_version, set.minor_version);
}

void write_request(XmlWriter& xml, const PayrollItemWageQuery& query, const std::string& id, bool) {
  if (query.max_returned == 0) return xml.empty(kPayrollItemWageQueryNames.request, id);
  xml.open(kPayrollItemWageQueryNames.request, id);
  xml.text("MaxReturned", std::to_string(query.max_returned));
  xml.close(kPayrollItemWageQueryNames.request);
}

void write_request(XmlWriter& xml, const EmployeeQuery&, const std::string& id, bool) {
  xml.empty(kEmployeeQueryNames.request, id);
}

void write_request(XmlWriter& xml, const EmployeeAdd& add, const std::string& id, bool) {
  xml.open(kEmployeeAddNames.request, id);
  // A name part left empty is not sent at all.
  if (add.first_name.empty() && add.middle_name.empty() && add.last_name.empty()) {
    xml.empty("EmployeeAdd");
  } else {
    xml.open("EmployeeAdd");
    if (!add.first_name.empty()) xml.text("FirstName", add.first_name);
    if (!add.middle_name.empty()) xml.text("MiddleName", add.middle_name);
    if (!add.last_name.empty()) xml.text("LastName", add.last_name);
    xml.close("EmployeeAdd");
  }
  xml.close(kEmployeeAddNames.request);
}

void write_request(XmlWriter& xml, const TimeTrackingAdd& add, const std::string& id,
                   bool billable_status) {
  xml.open(kTimeTrackingAddNames.request, id);
  xml.open("TimeTrackingAdd");
  write_time_entry_fields(xml, add, billable_status);
  xml.close("TimeTrackingAdd");
  xml.close(kTimeTrackingAddNames.request);
}

void write_returned(XmlWriter& xml, const Request& request, const ReturnedObject& object,
                    bool billable_status) {
  const QbxmlNames& names = qbxml_names(request);
  xml.open(names.returned);
  if (names.named) {
    xml.text("Name", object.name);
  } else {
    if (!object.name.empty()) raise(rt::kInvalidProcedureCall, kSource, "a time entry has no name");
    write_time_entry_fields(xml, std::get<TimeTrackingAdd>(request), billable_status);
  }
  xml.close(names.returned);
}

}  // namespace

std::string write_qbxml_request(const RequestSet& request_set) {
  XmlWriter xml;
  xml.line("<?xml version=\"1.0\"?>");
  xml.line("<?qbxml version=\"" +
           version_text(request_set.major_version, request_set.minor_version) + "\"?>");
  xml.open("QBXML");
  const std::string on_error = attribute("onError", on_error_text(request_set.on_error));
  if (request_set.requests.empty()) {
    xml.empty("QBXMLMsgsRq", on_error);
  } else {
    xml.open("QBXMLMsgsRq", on_error);
    for (std::size_t index = 0; index < request_set.requests.size(); ++index) {
      std::visit(
          [&](const auto& request) {
            write_request(xml, request, request_id(index), billable_status_of(request_set));
          },
          request_set.requests[index]);
    }
    xml.close("QBXMLMsgsRq");
  }
  xml.close("QBXML");
  return xml.take();
}

std::string write_qbxml_response(const ResponseSet& responses, const RequestSet& answered) {
  if (responses.responses.size() > answered.requests.size()) {
    raise(rt::kInvalidProcedureCall, kSource, "more responses than requests");
  }
  XmlWriter xml;
  xml.line("<?xml version=\"1.0\"?>");
  xml.open("QBXML");
  if (responses.responses.empty()) {
    xml.empty("QBXMLMsgsRs");
  } else {
    xml.open("QBXMLMsgsRs");
    for (std::size_t index = 0; index < responses.responses.size(); ++index) {
      const Response& response = responses.responses[index];
      const Request& request = answered.requests[index];
      const std::string attributes = request_id(index) +
                                     attribute("statusCode", std::to_string(response.status_code)) +
                                     attribute("statusSeverity", response.status_severity) +
                                     attribute("statusMessage", response.status_message);
      const std::string_view name = qbxml_names(request).response;
      // qbXML has no empty list: no objects and an empty list read back alike.
      if (!response.detail || response.detail->empty()) {
        xml.empty(name, attributes);
        continue;
      }
      xml.open(name, attributes);
      for (const ReturnedObject& object : *response.detail)
        write_returned(xml, request, object, billable_status_of(answered));
      xml.close(name);
    }
    xml.close("QBXMLMsgsRs");
  }
  xml.close("QBXML");
  return xml.take();
}

}  // namespace zorvat::quickbooks
