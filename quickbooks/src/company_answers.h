// How a company file answers each kind of request: the status QuickBooks gives it and
// the objects it returns, and what the request changes in the company.
#pragma once

#include "zorvat/quickbooks/company.h"
#include "zorvat/quickbooks/session.h"

namespace zorvat::quickbooks {

Response answer_request(Company& company, const Request& request);

}  // namespace zorvat::quickbooks
