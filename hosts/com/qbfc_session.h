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
// The session manager is created by ProgID, in the order of quickbooks/back_ends.h:
// first the SDK's session managers of the qbXML 1.x era, called with
// CreateMsgSetRequest(major, minor) and SetValue(hours, minutes, seconds) exactly as
// always, then the newer generations, newest first. A newer session manager is called
// in the shapes its own type information gives (IDispatch::GetTypeInfo: the
// parameters of CreateMsgSetRequest on the manager and of SetValue on a time entry's
// Duration): a country code "US" before the version when it takes one, and a
// duration's sign as SetValue's fourth argument with the counts without sign when it
// takes that. It creates message sets of the highest version QuickBooks lists that it
// builds and the export writes (quickbooks::versions_for_back_end).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "raii.h"
#include "zorvat/quickbooks/session.h"
#include "zorvat/quickbooks/versions.h"

namespace zorvat::com {

// How a newer generation's members are called, read from its type information once.
struct NewerQbfcShapes;

class QbfcSessionManager final : public quickbooks::SessionManager {
 public:
  // A session manager of the qbXML 1.x era.
  explicit QbfcSessionManager(ComPtr<IDispatch> manager);
  // A newer generation's, created from `prog_id`, building message sets up to
  // `newest_built`.
  QbfcSessionManager(ComPtr<IDispatch> manager, std::wstring prog_id,
                     quickbooks::QbxmlVersionNumber newest_built);
  ~QbfcSessionManager() override;

  void OpenConnection(std::string_view app_id, std::string_view app_name) override;
  void BeginSession(std::string_view company_file, quickbooks::OpenMode mode) override;
  void EndSession() override;
  void CloseConnection() override;
  std::vector<std::string> QBXMLVersionsForSession() override;
  quickbooks::ResponseSet DoRequests(const quickbooks::RequestSet& request_set) override;

 private:
  ComPtr<IDispatch> manager_;
  std::unique_ptr<NewerQbfcShapes> newer_;  // null for the early generations
};

class QbfcSessionManagerFactory final : public quickbooks::SessionManagerFactory {
 public:
  // The back ends of quickbooks::kSessionBackEnds, tried in their order (the QBFC
  // generations, then the qbXML request processor, request_processor_session.h): the
  // first whose object can be created serves. When none can, raises 429 "ActiveX component
  // can't create object" with a sentence saying what to install. In the 64-bit DLL,
  // a session manager registered for 32-bit processes only (as the SDK's is in most
  // releases) raises 429 with a description saying so: QuickBooks needs the 32-bit
  // host.
  std::unique_ptr<quickbooks::SessionManager> create() override;
};

// The factory of the objects this server creates.
quickbooks::SessionManagerFactory& server_session_factory();

}  // namespace zorvat::com
