// The company simulator: answers session calls and request sets the way QuickBooks
// answers them for one company file, and records every call in arrival order so a
// test can read the whole conversation back.
//
// One simulator stands for QuickBooks itself: every session manager made over it
// shares its connection, its session and its company data.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zorvat/quickbooks/company.h"
#include "zorvat/quickbooks/session.h"

namespace zorvat::quickbooks {

struct RecordedCall {
  std::string operation;                  // "OpenConnection", "DoRequests", ...
  std::vector<std::string> arguments;     // as text; BeginSession's mode as its number
  std::optional<RequestSet> request_set;  // DoRequests only
  long error = 0;                         // the number the call raised, 0 if none
  friend bool operator==(const RecordedCall&, const RecordedCall&) = default;
};

class CompanySimulator {
 public:
  explicit CompanySimulator(Company company);

  void OpenConnection(std::string_view app_id, std::string_view app_name);
  // Returns the session's ticket.
  std::string BeginSession(std::string_view company_file, OpenMode mode);
  void EndSession();
  void CloseConnection();
  std::vector<std::string> QBXMLVersionsForSession();
  ResponseSet DoRequests(const RequestSet& request_set);

  // The ticket of the session in progress; empty without one.
  const std::string& ticket() const { return ticket_; }
  // Raises the invalid-ticket failure unless `ticket` names the session in progress.
  void check_ticket(std::string_view ticket) const;

  const std::vector<RecordedCall>& calls() const { return calls_; }
  // The request sets of every DoRequests call, in order.
  std::vector<RequestSet> request_sets() const;
  // The company as it stands: employees added by EmployeeAdd and accepted time
  // entries included.
  const Company& company() const { return company_; }

 private:
  enum class State { Closed, Connected, InSession };

  template <class Body>
  decltype(auto) recorded(RecordedCall call, Body&& body);

  Company company_;
  State state_ = State::Closed;
  std::string ticket_;
  long sessions_begun_ = 0;
  std::vector<RecordedCall> calls_;
};

// Session managers that call a simulator directly, as the SDK's object model would
// carry the same calls to QuickBooks. Every manager it creates talks to the one
// simulator; the simulator must outlive the factory and its managers.
class SimulatorSessionFactory : public SessionManagerFactory {
 public:
  explicit SimulatorSessionFactory(CompanySimulator& simulator) : simulator_(simulator) {}
  // Raises 429 when the company says no session manager is installed.
  std::unique_ptr<SessionManager> create() override;
  // How many managers create() has made.
  int created() const { return created_; }

 private:
  CompanySimulator& simulator_;
  int created_ = 0;
};

}  // namespace zorvat::quickbooks
