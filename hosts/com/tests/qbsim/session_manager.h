// The simulated session manager: the SDK's session-manager calls over the one
// company simulator of this process (QuickBooks itself, shared by every session
// manager created), and the tests' control object over the same simulator:
//   LoadCompany(json)       a fresh company (the company simulator's JSON) and no record
//   RecordedRequestSets     the JSON list of every message set sent (message_set.h)
//   RecordedCalls           the JSON list of the session calls:
//                           [{"operation": "BeginSession", "arguments": [...], "error": 0}]
//   VersionsByReference     QBXMLVersionsForSession hands its array out by reference
#pragma once

#include "automation.h"

namespace zorvat::qbsim {

ComPtr<IQBSessionManager> make_session_manager();
ComPtr<IQBSimulatorControl> make_simulator_control();

}  // namespace zorvat::qbsim
