// A message set request as a client builds it through the SDK's object model:
// Attributes.OnError, Append...Rq, and one SetValue call per field. Every call is
// recorded in the client's order, and the same requests are kept as the RequestSet
// the company simulator answers.
//
// The record, as the test host reads it back:
//   {"version": "1.0", "onError": 1,
//    "requests": [{"type": "TimeTrackingAdd",
//                  "set": [["EntityRef.FullName", "Jane Doe"], ["Duration", [8, 0, 0, false]],
//                          ["TxnDate", "2004-03-01"], ...]}]}
// "onError" is null until the client sets it; a SetValue of several arguments is
// recorded as their list; a date as "YYYY-MM-DD" (with "THH:MM:SS" when it carries a
// time of day).
#pragma once

#include <memory>

#include <nlohmann/json.hpp>

#include "dispatch_object.h"
#include "zorvat/quickbooks/session.h"

namespace zorvat::qbsim {

struct MessageSet {
  quickbooks::RequestSet requests;
  nlohmann::json record;

  // The requests to send: each time entry carries the order its fields were set in.
  quickbooks::RequestSet to_send() const;
};

// CreateMsgSetRequest(major, minor).
ComPtr<DispatchObject> make_message_set(std::int32_t major, std::int32_t minor);

// The message set behind an object make_message_set made; null for any other object.
std::shared_ptr<MessageSet> message_set_of(IDispatch* object);

}  // namespace zorvat::qbsim
