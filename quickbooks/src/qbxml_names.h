// The element names of each kind of request in qbXML.
#pragma once

#include <string_view>

#include "zorvat/quickbooks/session.h"

namespace zorvat::quickbooks {

struct QbxmlNames {
  std::string_view request;   // "EmployeeQueryRq"
  std::string_view response;  // "EmployeeQueryRs"
  std::string_view returned;  // "EmployeeRet"
  bool named;                 // whether the returned object carries a Name
};

inline constexpr QbxmlNames kPayrollItemWageQueryNames = {
    "PayrollItemWageQueryRq", "PayrollItemWageQueryRs", "PayrollItemWageRet", true};
inline constexpr QbxmlNames kEmployeeQueryNames = {"EmployeeQueryRq", "EmployeeQueryRs",
                                                   "EmployeeRet", true};
inline constexpr QbxmlNames kEmployeeAddNames = {"EmployeeAddRq", "EmployeeAddRs", "EmployeeRet",
                                                 true};
inline constexpr QbxmlNames kTimeTrackingAddNames = {"TimeTrackingAddRq", "TimeTrackingAddRs",
                                                     "TimeTrackingRet", false};

// Indexed like the alternatives of Request.
inline constexpr QbxmlNames kQbxmlNames[] = {kPayrollItemWageQueryNames, kEmployeeQueryNames,
                                             kEmployeeAddNames, kTimeTrackingAddNames};

inline const QbxmlNames& qbxml_names(const Request& request) {
  return kQbxmlNames[request.index()];
}

inline constexpr std::string_view on_error_text(OnError on_error) {
  switch (on_error) {
    case OnError::Stop:
      return "stopOnError";
    case OnError::Continue:
      return "continueOnError";
    case OnError::Rollback:
      return "rollbackOnError";
  }
  return "stopOnError";
}

}  // namespace zorvat::quickbooks
