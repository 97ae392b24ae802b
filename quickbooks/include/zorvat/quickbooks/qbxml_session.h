// The qbXML backend: a session manager that writes each request set as a qbXML
// document, hands it to a transport with the session's ticket, and reads the
// response document back. The transport is shaped like the SDK's request processor;
// failures are raised as zorvat::Errors with negative numbers.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/quickbooks/session.h"
#include "zorvat/quickbooks/simulator.h"

namespace zorvat::quickbooks {

class QbxmlTransport {
 public:
  virtual ~QbxmlTransport() = default;
  virtual void OpenConnection(std::string_view app_id, std::string_view app_name) = 0;
  // Returns the session's ticket.
  virtual std::string BeginSession(std::string_view company_file, OpenMode mode) = 0;
  // Returns the response document to `request_xml`.
  virtual std::string ProcessRequest(std::string_view ticket, std::string_view request_xml) = 0;
  virtual std::vector<std::string> QBXMLVersionsForSession(std::string_view ticket) = 0;
  virtual void EndSession(std::string_view ticket) = 0;
  virtual void CloseConnection() = 0;
};

// Receives every request document before it is sent.
using QbxmlLog = std::function<void(std::string_view request_xml)>;

class QbxmlSessionManager : public SessionManager {
 public:
  // Over a transport that outlives the manager.
  explicit QbxmlSessionManager(QbxmlTransport& transport, QbxmlLog log = {});
  // Over a transport of its own.
  explicit QbxmlSessionManager(std::unique_ptr<QbxmlTransport> transport, QbxmlLog log = {});

  void OpenConnection(std::string_view app_id, std::string_view app_name) override;
  void BeginSession(std::string_view company_file, OpenMode mode) override;
  void EndSession() override;
  void CloseConnection() override;
  std::vector<std::string> QBXMLVersionsForSession() override;
  ResponseSet DoRequests(const RequestSet& request_set) override;

 private:
  std::unique_ptr<QbxmlTransport> owned_;
  QbxmlTransport& transport_;
  QbxmlLog log_;
  std::string ticket_;  // empty outside a session
};

// A transport to the company simulator: reads each request document as QuickBooks
// would (refusing a malformed one with QuickBooks' parse failure), lets the
// simulator answer it and writes the response document.
class SimulatorQbxmlTransport : public QbxmlTransport {
 public:
  explicit SimulatorQbxmlTransport(CompanySimulator& simulator) : simulator_(simulator) {}

  void OpenConnection(std::string_view app_id, std::string_view app_name) override;
  std::string BeginSession(std::string_view company_file, OpenMode mode) override;
  std::string ProcessRequest(std::string_view ticket, std::string_view request_xml) override;
  std::vector<std::string> QBXMLVersionsForSession(std::string_view ticket) override;
  void EndSession(std::string_view ticket) override;
  void CloseConnection() override;

 private:
  // Raises the invalid-ticket failure when a session is in progress and `ticket`
  // is not its ticket. Without a session the simulator itself refuses the call.
  void check_ticket(std::string_view ticket) const;

  CompanySimulator& simulator_;
};

// qbXML session managers over one simulator, each with a transport of its own;
// `log` receives every request document any of them sends.
class SimulatorQbxmlSessionFactory : public SessionManagerFactory {
 public:
  explicit SimulatorQbxmlSessionFactory(CompanySimulator& simulator, QbxmlLog log = {})
      : simulator_(simulator), log_(std::move(log)) {}
  // Raises 429 when the company says no session manager is installed.
  std::unique_ptr<SessionManager> create() override;
  int created() const { return created_; }

 private:
  CompanySimulator& simulator_;
  QbxmlLog log_;
  int created_ = 0;
};

}  // namespace zorvat::quickbooks
