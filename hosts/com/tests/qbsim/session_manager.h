// The simulated session manager: the SDK's session-manager calls over the one
// company simulator of this process (QuickBooks itself, shared by every session
// manager created), and the tests' control object over the same simulator:
//   LoadCompany(json)       a fresh company (the company simulator's JSON) and no record
//   RecordedRequestSets     the JSON list of every message set sent (message_set.h)
//   RecordedCalls           the JSON list of the session calls:
//                           [{"operation": "BeginSession", "arguments": [...], "error": 0}]
//   VersionsByReference     QBXMLVersionsForSession hands its array out by reference
//   CreatedSessionManagers  the JSON list of the ProgIDs of the session managers created
//   Company                 the company as it stands: its employees and time entries
//   HidesTypeInformation    the newer generations' managers give no type information
//   RecordedRequestDocuments  the JSON list of the request processor's documents
//   ReceivedRequests        the JSON list of the request sets the company received
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "automation.h"
#include "zorvat/quickbooks/simulator.h"

namespace zorvat::qbsim {

// The one simulated QuickBooks of this process, which the request processor answers
// from too.
quickbooks::CompanySimulator& simulated_quickbooks();
// Records a qbXML document the request processor received; `problem` is what the schema
// check found (empty: the document is valid).
void record_request_document(const std::string& document, const std::string& problem);
// A SAFEARRAY of BSTR holding `texts`, as QBXMLVersionsForSession hands its list out.
SAFEARRAY* bstr_array(const std::vector<std::string>& texts);

// A session manager of the early generations (QBFC1, QBFC2), created under `prog_id`.
ComPtr<IQBSessionManager> make_session_manager(std::string_view prog_id);
// A session manager of QBFC`generation` (3 and later), created under `prog_id`.
ComPtr<IQBSessionManagerN> make_newer_session_manager(std::string_view prog_id, int generation);
ComPtr<IQBSimulatorControl> make_simulator_control();

}  // namespace zorvat::qbsim
