#include "zorvat/error.h"
#include "zorvat/quickbooks/com_failures.h"
#include "zorvat/quickbooks/qbxml.h"
#include "zorvat/quickbooks/qbxml_session.h"

namespace zorvat::quickbooks {

void SimulatorQbxmlTransport::OpenConnection(std::string_view app_id, std::string_view app_name) {
  simulator_.OpenConnection(app_id, app_name);
}

std::string SimulatorQbxmlTransport::BeginSession(std::string_view company_file, OpenMode mode) {
  return simulator_.BeginSession(company_file, mode);
}

std::string SimulatorQbxmlTransport::ProcessRequest(std::string_view ticket,
                                                    std::string_view request_xml) {
  RequestSet request_set;
  try {
    request_set = read_qbxml_request(request_xml);
  } catch (const Error&) {
    // QuickBooks says no more than that it could not parse the document.
    com_failures::raise_failure(com_failures::parse_error());
  }
  check_ticket(ticket);
  return write_qbxml_response(simulator_.DoRequests(request_set), request_set);
}

std::vector<std::string> SimulatorQbxmlTransport::QBXMLVersionsForSession(std::string_view ticket) {
  check_ticket(ticket);
  return simulator_.QBXMLVersionsForSession();
}

void SimulatorQbxmlTransport::EndSession(std::string_view ticket) {
  check_ticket(ticket);
  simulator_.EndSession();
}

void SimulatorQbxmlTransport::CloseConnection() {
  simulator_.CloseConnection();
}

void SimulatorQbxmlTransport::check_ticket(std::string_view ticket) const {
  if (!simulator_.ticket().empty()) simulator_.check_ticket(ticket);
}

std::unique_ptr<SessionManager> SimulatorQbxmlSessionFactory::create() {
  if (!simulator_.company().session_manager_installed) {
    raise(429, com_failures::kSource, "ActiveX component can't create object");
  }
  ++created_;
  return std::make_unique<QbxmlSessionManager>(
      std::make_unique<SimulatorQbxmlTransport>(simulator_), log_);
}

}  // namespace zorvat::quickbooks
