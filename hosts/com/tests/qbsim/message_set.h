// A message set request as a client builds it through the SDK's object model:
// Attributes.OnError, Append...Rq, and one SetValue call per field. Every call is
// recorded in the client's order, and the same requests are kept as the RequestSet
// the company simulator answers.
//
// The record, as the test host reads it back:
//   {"version": "1.0", "onError": 1,
//    "requests": [{"type": "TimeTrackingAdd",
//                  "set": [["EntityRef.FullName", "Jane Doe"], ["Duration", [8, 0, 0]],
//                          ["TxnDate", "2004-03-01"], ...]}]}
// "onError" is null until the client sets it; Duration's SetValue(hour, minute,
// second) is recorded as their list; BillableStatus as its number; a date as
// "YYYY-MM-DD" (with "THH:MM:SS" when it carries a time of day).
#pragma once

#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "automation.h"
#include "zorvat/quickbooks/session.h"

namespace zorvat::qbsim {

struct MessageSet {
  quickbooks::RequestSet requests;
  nlohmann::json record;

  // The requests to send: each time entry carries the order its fields were set in.
  quickbooks::RequestSet to_send() const;
  // What QuickBooks would refuse the whole set for, as the qbXML document the SDK
  // writes of it breaks the schema: a time entry's billable flag set through the
  // element of the other qbXML versions. Empty when nothing.
  std::string schema_problem() const;
};

// The message set behind a message set object this server made (of either
// generation); null for any other.
std::shared_ptr<MessageSet> message_set_of(IUnknown* object);

// The early generations' CreateMsgSetRequest(major, minor).
ComPtr<IMsgSetRequest> make_message_set(std::int32_t major, std::int32_t minor);
// The newer generations' message set: the same requests, its time entries' Duration
// set with SetValue(hour, minute, second, isNegative), recorded as
// ["Duration", [hour, minute, second, isNegative]].
ComPtr<IMsgSetRequestN> make_newer_message_set(std::int32_t major, std::int32_t minor);

}  // namespace zorvat::qbsim
