#include "zorvat/quickbooks/schema.h"

#include <initializer_list>

#include "zorvat/error.h"

namespace zorvat::quickbooks {
namespace {

struct LimitedField {
  std::string_view name;
  const std::string* text;
  std::size_t limit;
};

std::vector<FieldLimitProblem> over(std::initializer_list<LimitedField> fields,
                                    std::string_view request, const std::string& employee) {
  std::vector<FieldLimitProblem> found;
  for (const LimitedField& field : fields) {
    const std::size_t length = character_count(*field.text);
    if (length > field.limit)
      found.push_back(
          {std::string(request) + "/" + std::string(field.name), employee, length, field.limit});
  }
  return found;
}

// The parts that are not empty, joined by single spaces.
std::string employee_name(const EmployeeAdd& add) {
  std::string name;
  for (const std::string* part : {&add.first_name, &add.middle_name, &add.last_name}) {
    if (part->empty()) continue;
    if (!name.empty()) name += ' ';
    name += *part;
  }
  return name;
}

std::vector<FieldLimitProblem> problems(const PayrollItemWageQuery&) {
  return {};
}
std::vector<FieldLimitProblem> problems(const EmployeeQuery&) {
  return {};
}
std::vector<FieldLimitProblem> problems(const EmployeeAdd& add) {
  return over({{"FirstName", &add.first_name, kFirstNameLength},
               {"MiddleName", &add.middle_name, kMiddleNameLength},
               {"LastName", &add.last_name, kLastNameLength}},
              "EmployeeAdd", employee_name(add));
}
std::vector<FieldLimitProblem> problems(const TimeTrackingAdd& add) {
  return over({{"EntityRef/FullName", &add.entity_full_name, kEntityFullNameLength},
               {"PayrollItemWageRef/FullName", &add.payroll_item_wage_full_name,
                kPayrollItemFullNameLength},
               {"Notes", &add.notes, kTimeTrackingNotesLength}},
              "TimeTrackingAdd", add.entity_full_name);
}

}  // namespace

std::size_t character_count(std::string_view utf8) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < utf8.size(); ++count) {
    const auto lead = static_cast<unsigned char>(utf8[at]);
    const std::size_t size = lead < 0x80           ? 1
                             : (lead >> 5) == 0x6  ? 2
                             : (lead >> 4) == 0xE  ? 3
                             : (lead >> 3) == 0x1E ? 4
                                                   : 1;
    std::size_t taken = 1;
    while (taken < size && at + taken < utf8.size() &&
           (static_cast<unsigned char>(utf8[at + taken]) & 0xC0) == 0x80)
      ++taken;
    // A sequence cut short counts its lead byte alone.
    at += taken == size ? size : 1;
  }
  return count;
}

std::string FieldLimitProblem::description() const {
  return field + " of employee \"" + employee + "\" has " + std::to_string(length) +
         " characters; QuickBooks takes at most " + std::to_string(limit) + ".";
}

std::vector<FieldLimitProblem> field_limit_problems(const Request& request) {
  return std::visit([](const auto& typed) { return problems(typed); }, request);
}

std::optional<FieldLimitProblem> field_limit_problem(const Request& request) {
  std::vector<FieldLimitProblem> found = field_limit_problems(request);
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

void check_field_limits(const RequestSet& request_set) {
  for (const Request& request : request_set.requests)
    if (const std::optional<FieldLimitProblem> found = field_limit_problem(request))
      raise(kFieldTooLong, kSchemaSource,
            found->description() + " Nothing of this request set was sent.");
}

}  // namespace zorvat::quickbooks
