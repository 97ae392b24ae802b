// The responses of a request set as the SDK's object model hands them out:
// ResponseList (Count, GetAt) of responses with StatusCode, StatusSeverity,
// StatusMessage and Detail. A query's Detail is a Ret list (Count, GetAt), an add's
// the one Ret object it returned, and Nothing when nothing came back; a returned
// employee's or wage item's Name is read with Name.GetValue (a time entry has no Name).
#pragma once

#include "automation.h"
#include "zorvat/quickbooks/session.h"

namespace zorvat::qbsim {

ComPtr<IMsgSetResponse> make_response_set(const quickbooks::RequestSet& requests,
                                          const quickbooks::ResponseSet& responses);

}  // namespace zorvat::qbsim
