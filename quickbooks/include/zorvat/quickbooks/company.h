// A QuickBooks company file as data: what the company simulator answers from. Tests,
// demos and the command-line host describe one in a small JSON file (README.md of
// this folder) or build it in code.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/quickbooks/session.h"

namespace zorvat::quickbooks {

// A failure of a session-manager call as COM reports it: a negative number and the
// description QuickBooks gave.
struct ComFailure {
  long number = 0;
  std::string description;
  friend bool operator==(const ComFailure&, const ComFailure&) = default;
};
using BeginSessionFailure = ComFailure;

struct Company {
  // The path BeginSession must name (letter case and the kind of slash aside); empty:
  // any name is accepted.
  std::string company_file;
  // Answered by QBXMLVersionsForSession, first the one a client is to use.
  std::vector<std::string> qbxml_versions = {"1.0"};
  // The time-tracking preference; off, every TimeTrackingAdd answers status 3250.
  bool time_tracking = true;
  // Wage item names in the company's list order.
  std::vector<std::string> payroll_items;
  // Employee names as the company holds them ("Doe, Jane" or "Jane Doe").
  std::vector<std::string> employees;
  // How EmployeeAdd builds a new employee's name: "Last, First Middle" when true,
  // "First Middle Last" otherwise.
  bool employee_names_last_first = false;
  // False: the machine has no session manager, so creating one fails (error 429).
  bool session_manager_installed = true;
  // When set, OpenConnection or BeginSession fails with it.
  std::optional<ComFailure> open_connection_failure;
  std::optional<BeginSessionFailure> begin_session_failure;
  // The time entries the company accepted, in arrival order.
  std::vector<TimeTrackingAdd> time_entries;
};

// Reads a company from its JSON description; `origin` (a file name) starts every
// error message. Unknown keys, wrong types and malformed JSON raise a zorvat::Error
// that names the origin and the place.
Company parse_company_json(std::string_view json, std::string_view origin);
// Reads and parses the JSON file at `path`.
Company load_company_file(const std::string& path);

}  // namespace zorvat::quickbooks
