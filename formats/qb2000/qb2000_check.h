// The check before an export to QuickBooks: which cards would make the export stop
// on a field longer than QuickBooks takes (a name part of an employee it may have to
// add, an employee name, a payroll item or a note of a time entry), worked out from
// the cards and the settings alone, without a session.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zorvat/quickbooks/schema.h"
#include "zorvat/variant.h"

namespace zorvat::formats::qb2000 {

struct CardFieldProblem {
  std::size_t card = 0;  // from 1, in collection order
  quickbooks::FieldLimitProblem problem;
};

// Every field over its limit in the requests the export could send for `cards` with
// the settings `setup`: EmployeeAdd of the card's name parts, its day entries (with
// the employee named first name first and last name first, as QuickBooks may name
// them) and its edit-total entries. One problem per card and field (the first found),
// in card order.
std::vector<CardFieldProblem> field_limit_problems(const Variant& cards, std::string_view setup);

}  // namespace zorvat::formats::qb2000
