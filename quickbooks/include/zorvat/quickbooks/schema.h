// What QuickBooks' qbXML schema allows in the requests the export sends, shared by
// every backend (which refuse a request set before sending anything of it) and by
// the simulators (which refuse what QuickBooks refuses):
// - the longest text of each field, counted in characters as QuickBooks counts them;
// - which element says whether a time entry is billable: IsBillable below qbXML 6.0,
//   BillableStatus from 6.0 on (6.0 replaced the one with the other).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/quickbooks/session.h"

namespace zorvat::quickbooks {

// Maximum lengths from the SDK's reference.
inline constexpr std::size_t kFirstNameLength = 25;            // EmployeeAdd FirstName
inline constexpr std::size_t kMiddleNameLength = 5;            // EmployeeAdd MiddleName
inline constexpr std::size_t kLastNameLength = 25;             // EmployeeAdd LastName
inline constexpr std::size_t kEntityFullNameLength = 209;      // TimeTrackingAdd EntityRef
inline constexpr std::size_t kPayrollItemFullNameLength = 31;  // PayrollItemWageRef
inline constexpr std::size_t kTimeTrackingNotesLength = 4095;  // TimeTrackingAdd Notes

// "Invalid property value": a field given a text longer than QuickBooks takes, raised
// as the SDK's field objects raise it on SetValue, before anything is sent.
inline constexpr long kFieldTooLong = 380;
inline constexpr std::string_view kSchemaSource = "zorvat.QuickBooks";

// Whether a request set of this qbXML version says "not billable" with
// BillableStatus (6.0 and later) rather than IsBillable.
constexpr bool uses_billable_status(std::int32_t major_version, std::int32_t /*minor*/) {
  return major_version >= 6;
}

// Characters as QuickBooks counts them: the code points of UTF-8 text (a byte that
// is not UTF-8 counts as one character, as it becomes one replacement character).
std::size_t character_count(std::string_view utf8);

// A field whose text is longer than QuickBooks takes.
struct FieldLimitProblem {
  std::string field;     // "EmployeeAdd/FirstName", "TimeTrackingAdd/Notes"
  std::string employee;  // the employee the request is about, as the request names them
  std::size_t length = 0;
  std::size_t limit = 0;
  // "TimeTrackingAdd/Notes of employee "Jane Doe" has 4096 characters; QuickBooks
  // takes at most 4095."
  std::string description() const;
};

// Every field of `request` over its limit, in the schema's order.
std::vector<FieldLimitProblem> field_limit_problems(const Request& request);
// The first of them.
std::optional<FieldLimitProblem> field_limit_problem(const Request& request);

// Raises kFieldTooLong naming the first field over its limit in the request set,
// the employee and the limit, and adding that nothing of the set was sent.
void check_field_limits(const RequestSet& request_set);

}  // namespace zorvat::quickbooks
