// The simulated session manager: the SDK's session-manager calls over the one
// company simulator of this process (QuickBooks itself, shared by every session
// manager created), plus the members only a test calls:
//   LoadCompany(json)       a fresh company (the company simulator's JSON) and no record
//   RecordedRequestSets     the JSON list of every message set sent (message_set.h)
//   RecordedCalls           the JSON list of the session calls:
//                           [{"operation": "BeginSession", "arguments": [...], "error": 0}]
#pragma once

#include "dispatch_object.h"

namespace zorvat::qbsim {

ComPtr<DispatchObject> make_session_manager();

}  // namespace zorvat::qbsim
