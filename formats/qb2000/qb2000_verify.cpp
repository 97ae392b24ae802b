// Verification before the time export: the payroll items of the settings and the
// employees of the time cards must exist in the company file; missing employees can
// be added.
#include <algorithm>

#include "qb2000/qb2000.h"
#include "qb2000/qb2000_requests.h"
#include "zorvat/automation.h"
#include "zorvat/error.h"
#include "zorvat/text.h"
#include "zorvat/time_card.h"

namespace zorvat::formats {
namespace {

// Only the first 40 wage items of the company file are compared.
constexpr std::int32_t kPayrollItemsCompared = 40;

constexpr std::string_view kLineEnd = "\r\n";

}  // namespace

// Every item named in fields 1 onwards that QuickBooks did not return, each followed
// by CR LF. When QuickBooks returns no items at all, every field is listed, empty
// ones too.
std::string QB2000::VerifyPayrollItemsInQB(quickbooks::SessionManager& session,
                                           const QbxmlVersion& version) {
  // The payroll items' errors have always carried the employee check's source.
  return guarded(source_of("VerifyEmpsInQB"), [&] {
    quickbooks::RequestSet request_set = qb2000::new_request_set(version);
    request_set.requests.emplace_back(quickbooks::PayrollItemWageQuery{kPayrollItemsCompared});
    const quickbooks::ResponseSet responses = session.DoRequests(request_set);
    const quickbooks::Response& response = qb2000::first_response(responses);

    const SettingsFields fields(setup_data());
    std::string missing;
    for (std::size_t position = kRegularItem; position < fields.size(); ++position) {
      const std::string& item = fields.at(position);
      if (response.detail) {
        // Names compare exactly, case included; an empty field is no item to look for.
        const bool found =
            std::any_of(response.detail->begin(), response.detail->end(),
                        [&](const quickbooks::ReturnedObject& wage) { return wage.name == item; });
        if (found || item.empty()) continue;
      }
      missing += item;
      missing += kLineEnd;
    }
    return missing;
  });
}

// The cards whose employee QuickBooks does not know, as "First:MI:Last" joined by
// ",". Also notes whether QuickBooks names its employees last name first.
std::string QB2000::VerifyEmpsInQB(const Variant& pcTimeCards, quickbooks::SessionManager& session,
                                   const QbxmlVersion& version) {
  return guarded(source_of("VerifyEmpsInQB"), [&] {
    names_last_first_ = false;
    quickbooks::RequestSet request_set = qb2000::new_request_set(version);
    request_set.requests.emplace_back(quickbooks::EmployeeQuery{});
    const quickbooks::ResponseSet responses = session.DoRequests(request_set);
    const quickbooks::Response& response = qb2000::first_response(responses);

    std::string missing;
    for_each(pcTimeCards, [&](const Variant& card) {
      const std::string first = to_concat_text(get_property(card, time_card::kFirstName));
      const std::string middle = to_concat_text(get_property(card, time_card::kMI));
      const std::string last = to_concat_text(get_property(card, time_card::kLastName));

      bool found = false;
      if (response.detail) {
        const std::string card_name =
            to_upper_ascii(middle.empty() ? first + " " + last : first + " " + middle + " " + last);
        for (const quickbooks::ReturnedObject& employee : *response.detail) {
          if (employee.name.find(',') != std::string::npos) names_last_first_ = true;
          if (to_upper_ascii(FormatName(employee.name)) == card_name) {
            found = true;
            break;
          }
        }
      }
      if (!found) missing += first + ":" + middle + ":" + last + ",";
    });
    if (!missing.empty()) missing.pop_back();
    return missing;
  });
}

// One request set per listed employee. QuickBooks' answer to an add is not checked:
// an employee it refused shows up when the time entries are sent.
void QB2000::AddEmps(const std::string& missing_employees, quickbooks::SessionManager& session,
                     const QbxmlVersion& version) {
  guarded(source_of("AddEmps"), [&] {
    for (const std::string& entry : qb2000::split_text(missing_employees, ',')) {
      qb2000::NameParts employee = qb2000::name_parts(entry, ':');
      quickbooks::RequestSet request_set = qb2000::new_request_set(version);
      request_set.requests.emplace_back(quickbooks::EmployeeAdd{
          std::move(employee.first), std::move(employee.middle), std::move(employee.last)});
      const quickbooks::ResponseSet responses = session.DoRequests(request_set);
      // Response 0 is read (a request set without one fails) and its status let go.
      static_cast<void>(qb2000::first_response(responses));
    }
  });
}

std::string QB2000::FormatName(std::string_view sName) {
  return guarded(format_name_source_, [&]() -> std::string {
    const std::vector<std::string> parts = qb2000::split_text(sName, ',');
    switch (parts.size()) {
      case 1:
        return std::string(sName);
      case 2:  // "Last, First"
        return qb2000::trim_spaces(parts[1] + " " + parts[0]);
      case 3:  // "Last, First, Middle"
        return qb2000::trim_spaces(parts[1] + " " + parts[2] + " " + parts[0]);
      default:
        return {};
    }
  });
}

}  // namespace zorvat::formats
