// The QuickBooks session over the QuickBooks SDK's COM session manager, called
// late-bound: every call goes through IDispatch by name, so nothing of the SDK is
// needed to build and a machine without it fails only when a session is wanted.
//
// One calling convention, VB's: every read and call goes with
// DISPATCH_METHOD|DISPATCH_PROPERTYGET (a type-library dispatcher matches the flags
// against the member's kind, and Append...Rq are methods), every assignment with
// DISPATCH_PROPERTYPUT; arrays come back as SAFEARRAYs, by value or by reference, read
// with the SafeArray API; objects may come back by reference too.
//
// The session manager is created by ProgID. The export speaks qbXML 1.x and creates
// its message sets with CreateMsgSetRequest(major, minor), the argument list of the
// SDK's session managers of that era; the later ones take a country first and are
// not tried. The default list, newest first, is "QBFC2.QBSessionManager" then
// "QBFC1.QBSessionManager".
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "raii.h"
#include "zorvat/quickbooks/session.h"

namespace zorvat::com {

class QbfcSessionManager final : public quickbooks::SessionManager {
 public:
  explicit QbfcSessionManager(ComPtr<IDispatch> manager) : manager_(std::move(manager)) {}

  void OpenConnection(std::string_view app_id, std::string_view app_name) override;
  void BeginSession(std::string_view company_file, quickbooks::OpenMode mode) override;
  void EndSession() override;
  void CloseConnection() override;
  std::vector<std::string> QBXMLVersionsForSession() override;
  quickbooks::ResponseSet DoRequests(const quickbooks::RequestSet& request_set) override;

 private:
  ComPtr<IDispatch> manager_;
};

class QbfcSessionManagerFactory final : public quickbooks::SessionManagerFactory {
 public:
  // The session managers' ProgIDs to try, in order.
  explicit QbfcSessionManagerFactory(std::vector<std::wstring> prog_ids = default_prog_ids())
      : prog_ids_(std::move(prog_ids)) {}

  static std::vector<std::wstring> default_prog_ids();

  // The first ProgID that creates an object wins, then the qbXML request processor
  // (request_processor_session.h); when none does, raises 429
  // "ActiveX component can't create object". In the 64-bit DLL, a session manager
  // registered for 32-bit processes only (as the SDK's is in most releases) raises 429
  // with a description saying so: QuickBooks needs the 32-bit host.
  std::unique_ptr<quickbooks::SessionManager> create() override;

 private:
  std::vector<std::wstring> prog_ids_;
};

// The factory of the objects this server creates.
quickbooks::SessionManagerFactory& server_session_factory();

}  // namespace zorvat::com
