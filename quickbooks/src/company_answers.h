// How a company file answers each kind of request: the status QuickBooks gives it and
// the objects it returns, and what the request changes in the company.
#pragma once

#include "zorvat/quickbooks/company.h"
#include "zorvat/quickbooks/session.h"

namespace zorvat::quickbooks {

Response answer_request(Company& company, const Request& request);

// Where the company's lists ended at some moment. A request changes the company only
// by adding to the end of its employees or its time entries, so what a run of
// requests changed is undone by cutting both lists back to where they ended before
// it: a rolled-back request set costs what it added, not a copy of the company.
struct CompanyEnds {
  std::size_t employees = 0;
  std::size_t time_entries = 0;
};
CompanyEnds ends_of(const Company& company);
// Removes everything added to the company since `ends` was taken.
void undo_additions_since(Company& company, const CompanyEnds& ends);

}  // namespace zorvat::quickbooks
