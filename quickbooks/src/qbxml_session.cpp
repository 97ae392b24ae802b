#include "zorvat/quickbooks/qbxml_session.h"

#include "zorvat/quickbooks/qbxml.h"
#include "zorvat/quickbooks/schema.h"

namespace zorvat::quickbooks {

QbxmlSessionManager::QbxmlSessionManager(QbxmlTransport& transport, QbxmlLog log)
    : transport_(transport), log_(std::move(log)) {}

QbxmlSessionManager::QbxmlSessionManager(std::unique_ptr<QbxmlTransport> transport, QbxmlLog log)
    : owned_(std::move(transport)), transport_(*owned_), log_(std::move(log)) {}

void QbxmlSessionManager::OpenConnection(std::string_view app_id, std::string_view app_name) {
  transport_.OpenConnection(app_id, app_name);
}

void QbxmlSessionManager::BeginSession(std::string_view company_file, OpenMode mode) {
  ticket_ = transport_.BeginSession(company_file, mode);
}

void QbxmlSessionManager::EndSession() {
  transport_.EndSession(ticket_);
  ticket_.clear();
}

void QbxmlSessionManager::CloseConnection() {
  transport_.CloseConnection();
  ticket_.clear();
}

std::vector<std::string> QbxmlSessionManager::QBXMLVersionsForSession() {
  return transport_.QBXMLVersionsForSession(ticket_);
}

ResponseSet QbxmlSessionManager::DoRequests(const RequestSet& request_set) {
  // A field longer than the schema allows stops the set before it is written.
  check_field_limits(request_set);
  const std::string request_xml = write_qbxml_request(request_set);
  if (log_) log_(request_xml);
  return read_qbxml_response(transport_.ProcessRequest(ticket_, request_xml), request_set);
}

}  // namespace zorvat::quickbooks
