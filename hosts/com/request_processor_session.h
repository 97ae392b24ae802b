// The QuickBooks session over the qbXML request processor that every QuickBooks Desktop
// installs (ProgID "QBXMLRP2.RequestProcessor"), called late-bound as the SDK's session
// manager is (late_bound.h): no QBFC runtime is needed. The export's request sets are
// written as qbXML documents and the responses read back by the one qbXML writer and
// reader (QbxmlSessionManager); this transport carries them:
//   OpenConnection2(appID, appName, localQBD)
//   BeginSession(companyFile, openMode)      the session's ticket
//   ProcessRequest(ticket, request)          the response document
//   QBXMLVersionsForSession(ticket)          an array of strings
//   EndSession(ticket), CloseConnection()
// The request processor builds no message sets, so the session's version list puts
// first the highest version QuickBooks lists that the export writes
// (versions_for_back_end).
#pragma once

#include <memory>

#include "raii.h"
#include "zorvat/quickbooks/qbxml_session.h"

namespace zorvat::com {

class RequestProcessorTransport final : public quickbooks::QbxmlTransport {
 public:
  explicit RequestProcessorTransport(ComPtr<IDispatch> processor)
      : processor_(std::move(processor)) {}

  void OpenConnection(std::string_view app_id, std::string_view app_name) override;
  std::string BeginSession(std::string_view company_file, quickbooks::OpenMode mode) override;
  std::string ProcessRequest(std::string_view ticket, std::string_view request_xml) override;
  std::vector<std::string> QBXMLVersionsForSession(std::string_view ticket) override;
  void EndSession(std::string_view ticket) override;
  void CloseConnection() override;

 private:
  ComPtr<IDispatch> processor_;
};

// A session manager over a created request processor.
std::unique_ptr<quickbooks::SessionManager> make_request_processor_session(
    ComPtr<IDispatch> processor);

}  // namespace zorvat::com
