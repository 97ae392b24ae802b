// The QuickBooks session as the QuickBooks export talks to it: a session manager that
// opens a connection and a session on a company file, answers which qbXML versions
// the session speaks, and carries request sets to the company file and their
// responses back.
//
// Three backends speak it: the QuickBooks SDK's COM session manager called late-bound
// (Windows), qbXML documents carried by a transport (everywhere), and the company
// simulator used by tests and demos. A failure of any call is raised as a
// zorvat::Error; a failure of the session manager itself (a COM failure) carries a
// negative number, as every COM failure does, and the description the manager gave.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "zorvat/date.h"

namespace zorvat::quickbooks {

// What a request set does when one of its requests fails (the SDK's numbering).
enum class OnError : std::int32_t { Stop = 0, Continue = 1, Rollback = 2 };

// How BeginSession opens the company file (the SDK's numbering).
enum class OpenMode : std::int32_t { SingleUser = 0, MultiUser = 1, DoNotCare = 2 };

// The payroll wage items of the company file; max_returned 0 sends no list filter.
struct PayrollItemWageQuery {
  std::int32_t max_returned = 0;
  friend bool operator==(const PayrollItemWageQuery&, const PayrollItemWageQuery&) = default;
};

// Every employee of the company file, without filters.
struct EmployeeQuery {
  friend bool operator==(const EmployeeQuery&, const EmployeeQuery&) = default;
};

struct EmployeeAdd {
  std::string first_name;
  std::string middle_name;
  std::string last_name;
  friend bool operator==(const EmployeeAdd&, const EmployeeAdd&) = default;
};

// A time entry's length. Hours may come out zero or negative from the edit-total
// split; they are sent as they are.
struct Duration {
  std::int32_t hours = 0;
  std::int32_t minutes = 0;
  std::int32_t seconds = 0;
  friend bool operator==(const Duration&, const Duration&) = default;
};

// The fields of a time entry, in the order a backend that sets them one by one (the
// SDK's object model) sets them. qbXML documents always carry them in the schema's
// order; the order matters only where fields are set one call at a time.
enum class TimeTrackingField : std::uint8_t {
  EntityRef,
  Duration,
  TxnDate,
  PayrollItemWageRef,
  IsBillable,
  Notes,
};
using TimeTrackingFieldOrder = std::array<TimeTrackingField, 6>;

// The order of a day's entries: employee, length, date, payroll item, billable, notes.
inline constexpr TimeTrackingFieldOrder kDayEntryFieldOrder = {
    TimeTrackingField::EntityRef,  TimeTrackingField::Duration,
    TimeTrackingField::TxnDate,    TimeTrackingField::PayrollItemWageRef,
    TimeTrackingField::IsBillable, TimeTrackingField::Notes};
// The order of an edit-total entry: the date comes first.
inline constexpr TimeTrackingFieldOrder kEditTotalFieldOrder = {
    TimeTrackingField::TxnDate,    TimeTrackingField::EntityRef,
    TimeTrackingField::Duration,   TimeTrackingField::PayrollItemWageRef,
    TimeTrackingField::IsBillable, TimeTrackingField::Notes};

struct TimeTrackingAdd {
  std::string entity_full_name;             // EntityRef.FullName
  Duration duration;                        // Duration
  Date txn_date;                            // TxnDate, a calendar day
  std::string payroll_item_wage_full_name;  // PayrollItemWageRef.FullName
  bool is_billable = false;                 // IsBillable
  std::string notes;                        // Notes
  TimeTrackingFieldOrder field_order = kDayEntryFieldOrder;
  friend bool operator==(const TimeTrackingAdd&, const TimeTrackingAdd&) = default;
};

using Request = std::variant<PayrollItemWageQuery, EmployeeQuery, EmployeeAdd, TimeTrackingAdd>;

// A message set: the qbXML version it was created for, its OnError attribute and its
// requests in the order they were appended.
struct RequestSet {
  std::int32_t major_version = 1;
  std::int32_t minor_version = 0;
  OnError on_error = OnError::Stop;
  std::vector<Request> requests;
  friend bool operator==(const RequestSet&, const RequestSet&) = default;
};

// One object a query or an add returned. Only its Name is ever read; objects without
// a name (a time entry) leave it empty.
struct ReturnedObject {
  std::string name;
  friend bool operator==(const ReturnedObject&, const ReturnedObject&) = default;
};

// The response to one request.
struct Response {
  std::int32_t status_code = 0;
  std::string status_severity;  // "Info", "Warn" or "Error"
  std::string status_message;
  // The returned objects; none when the request returned no object at all (a query
  // that found nothing, a failed add), which is not the same as an empty list.
  std::optional<std::vector<ReturnedObject>> detail;
  friend bool operator==(const Response&, const Response&) = default;
};

// The responses of a request set, one per request, in request order.
struct ResponseSet {
  std::vector<Response> responses;
  friend bool operator==(const ResponseSet&, const ResponseSet&) = default;
};

class SessionManager {
 public:
  virtual ~SessionManager() = default;

  virtual void OpenConnection(std::string_view app_id, std::string_view app_name) = 0;
  // company_file empty: the company file open in QuickBooks.
  virtual void BeginSession(std::string_view company_file, OpenMode mode) = 0;
  virtual void EndSession() = 0;
  virtual void CloseConnection() = 0;
  // The qbXML versions the session speaks, as text ("1.0", "1.1", ...), first the one
  // a client is to use.
  virtual std::vector<std::string> QBXMLVersionsForSession() = 0;
  // Sends a request set and returns its responses.
  virtual ResponseSet DoRequests(const RequestSet& request_set) = 0;
};

// Creates session managers; the QuickBooks export creates one on first use and
// again after releasing the last. A machine without QuickBooks' session manager
// raises 429 "ActiveX component can't create object".
class SessionManagerFactory {
 public:
  virtual ~SessionManagerFactory() = default;
  virtual std::unique_ptr<SessionManager> create() = 0;
};

}  // namespace zorvat::quickbooks
