#include "company_answers.h"

#include <algorithm>

#include "zorvat/quickbooks/values.h"
#include "zorvat/text.h"

namespace zorvat::quickbooks {
namespace {

// Status codes of qbXML responses and the messages QuickBooks gives them.
constexpr std::int32_t kStatusOk = 0;
constexpr std::int32_t kNoMatch = 1;
constexpr std::int32_t kInvalidTimeInterval = 3035;
constexpr std::int32_t kNameInUse = 3100;
constexpr std::int32_t kInvalidReference = 3140;
constexpr std::int32_t kMissingElement = 3150;
constexpr std::int32_t kCannotSave = 3180;
constexpr std::int32_t kInvalidValue = 3210;
constexpr std::int32_t kFeatureNotEnabled = 3250;

// 0-499 inform, 500-999 warn, from 1000 on the request failed.
std::string severity_of(std::int32_t code) {
  if (code < 500) return "Info";
  if (code < 1000) return "Warn";
  return "Error";
}

Response status(std::int32_t code, std::string message,
                std::optional<std::vector<ReturnedObject>> detail = std::nullopt) {
  return Response{code, severity_of(code), std::move(message), std::move(detail)};
}

std::string quoted(std::string_view text) {
  std::string result(1, '"');
  result += text;
  result += '"';
  return result;
}

// Names in QuickBooks lists are unique without regard to letter case, and references
// find them the same way.
bool holds_name(const std::vector<std::string>& names, std::string_view name) {
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& held) { return iequals(held, name); });
}

// A query without filters: every name of the list, or "no match" with no objects.
Response list_answer(const std::vector<std::string>& names, std::size_t limit) {
  if (names.empty()) {
    return status(kNoMatch, "A query request did not find a matching object in QuickBooks");
  }
  std::vector<ReturnedObject> found;
  for (std::size_t index = 0; index < names.size() && index < limit; ++index) {
    found.push_back(ReturnedObject{names[index]});
  }
  return status(kStatusOk, "Status OK", std::move(found));
}

Response answer(Company& company, const PayrollItemWageQuery& query) {
  if (query.max_returned < 0) {
    return status(kInvalidValue, "The \"MaxReturned\" field has an invalid value " +
                                     quoted(std::to_string(query.max_returned)) + ".");
  }
  const std::size_t limit =
      query.max_returned == 0 ? company.payroll_items.size() : std::size_t(query.max_returned);
  return list_answer(company.payroll_items, limit);
}

Response answer(Company& company, const EmployeeQuery&) {
  return list_answer(company.employees, company.employees.size());
}

// The parts that are not empty, joined by single spaces.
std::string joined_parts(std::initializer_list<std::string_view> parts) {
  std::string joined;
  for (const std::string_view part : parts) {
    if (part.empty()) continue;
    if (!joined.empty()) joined += ' ';
    joined += part;
  }
  return joined;
}

// The employee name QuickBooks makes of the name parts, in the company's name order.
std::string employee_name(const Company& company, const EmployeeAdd& add) {
  if (company.employee_names_last_first && !add.last_name.empty()) {
    const std::string given = joined_parts({add.first_name, add.middle_name});
    return given.empty() ? add.last_name : add.last_name + ", " + given;
  }
  return joined_parts({add.first_name, add.middle_name, add.last_name});
}

Response answer(Company& company, const EmployeeAdd& add) {
  const std::string name = employee_name(company, add);
  if (name.empty()) return status(kMissingElement, "There is a missing element: \"Name\".");
  if (holds_name(company.employees, name)) {
    return status(kNameInUse,
                  "The name " + quoted(name) + " of the list element is already in use.");
  }
  company.employees.push_back(name);
  return status(kStatusOk, "Status OK", std::vector<ReturnedObject>{ReturnedObject{name}});
}

bool has_negative_count(const Duration& duration) {
  return duration.hours < 0 || duration.minutes < 0 || duration.seconds < 0;
}
bool is_zero(const Duration& duration) {
  return duration.hours == 0 && duration.minutes == 0 && duration.seconds == 0;
}

std::string invalid_reference(std::string_view kind, std::string_view name) {
  return "There is an invalid reference to QuickBooks " + std::string(kind) + " " + quoted(name) +
         " in the time tracking transaction.";
}

Response answer(Company& company, const TimeTrackingAdd& add) {
  // The preference closes the whole transaction type before anything is looked at.
  if (!company.time_tracking) {
    return status(kFeatureNotEnabled,
                  "This feature is not enabled or not available in this version of QuickBooks.");
  }
  if (has_negative_count(add.duration)) {
    return status(kInvalidTimeInterval, "There was an error when converting the time interval " +
                                            quoted(duration_text(add.duration)) +
                                            " in the field \"Duration\".");
  }
  if (!holds_name(company.employees, add.entity_full_name)) {
    return status(kInvalidReference, invalid_reference("Entity", add.entity_full_name));
  }
  if (!holds_name(company.payroll_items, add.payroll_item_wage_full_name)) {
    return status(kInvalidReference,
                  invalid_reference("PayrollItemWage", add.payroll_item_wage_full_name));
  }
  // Billable time is billed to a customer for a service item, neither of which is sent.
  if (add.is_billable)
    return status(kMissingElement, "There is a missing element: \"CustomerRef\".");
  if (is_zero(add.duration)) {
    return status(kCannotSave,
                  "There was an error when saving a time tracking transaction: its duration is "
                  "zero.");
  }
  company.time_entries.push_back(add);
  // A time entry has no name; its returned object carries none.
  return status(kStatusOk, "Status OK", std::vector<ReturnedObject>{ReturnedObject{}});
}

}  // namespace

Response answer_request(Company& company, const Request& request) {
  return std::visit([&](const auto& kind) { return answer(company, kind); }, request);
}

CompanyEnds ends_of(const Company& company) {
  return {company.employees.size(), company.time_entries.size()};
}

void undo_additions_since(Company& company, const CompanyEnds& ends) {
  company.employees.resize(ends.employees);
  company.time_entries.resize(ends.time_entries);
}

}  // namespace zorvat::quickbooks
