// What the QuickBooks export's tests share: a host whose UI answers through the
// scripted UI and keeps what the progress window showed, a simulated company, session
// managers that can be made to fail, and time cards with their days.
#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "qb2000/qb2000.h"
#include "raised.h"
#include "scripted_host.h"
#include "zorvat/error.h"
#include "zorvat/quickbooks/com_failures.h"
#include "zorvat/quickbooks/simulator.h"

namespace zorvat::quickbooks {

// Readable failure messages for the request sets the tests compare.
inline void PrintTo(const Request& request, std::ostream* out) {
  if (const auto* add = std::get_if<TimeTrackingAdd>(&request)) {
    *out << "TimeTrackingAdd{" << add->entity_full_name << ", " << add->duration.hours << ":"
         << add->duration.minutes << ":" << add->duration.seconds << ", serial "
         << add->txn_date.serial << ", " << add->payroll_item_wage_full_name << ", "
         << (add->is_billable ? "billable" : "not billable") << ", " << add->notes << ", "
         << (add->field_order == kEditTotalFieldOrder ? "edit order" : "day order") << "}";
  } else if (const auto* employee = std::get_if<EmployeeAdd>(&request)) {
    *out << "EmployeeAdd{" << employee->first_name << ", " << employee->middle_name << ", "
         << employee->last_name << "}";
  } else if (const auto* items = std::get_if<PayrollItemWageQuery>(&request)) {
    *out << "PayrollItemWageQuery{" << items->max_returned << "}";
  } else {
    *out << "EmployeeQuery{}";
  }
}
inline void PrintTo(const RequestSet& set, std::ostream* out) {
  *out << "RequestSet{" << set.major_version << "." << set.minor_version << ", OnError "
       << static_cast<int>(set.on_error) << ", [";
  for (const Request& request : set.requests) {
    PrintTo(request, out);
    *out << "; ";
  }
  *out << "]}";
}

}  // namespace zorvat::quickbooks

namespace zorvat::formats::qb2000_test {

// Answers as the scripted UI does and keeps, besides, every state the progress window
// was shown in and the order of what the user saw.
class RecordingUi final : public UiServices {
 public:
  explicit RecordingUi(scripted::ScriptedUi& scripted) : scripted_(scripted) {}

  SaveDialogResult save_dialog(const SaveDialogRequest& request) override {
    return scripted_.save_dialog(request);
  }
  void message_box(const MessageBoxRequest& request) override {
    events.push_back("message: " + request.text);
    scripted_.message_box(request);
  }
  Answer question(const MessageBoxRequest& request, QuestionButtons buttons) override {
    events.push_back("question: " + request.title);
    return scripted_.question(request, buttons);
  }
  void show_help(std::string_view help_file, std::string_view window,
                 unsigned long context) override {
    scripted_.show_help(help_file, window, context);
  }
  OpenDialogResult open_dialog(const OpenDialogRequest& request) override {
    return scripted_.open_dialog(request);
  }
  void show_form(FormModel& form) override { scripted_.show_form(form); }
  void show_modeless(FormModel& form) override {
    scripted_.show_modeless(form);
    if (form.name() != "frmProgBar") return;
    const ProgressView view{form.control("lblMessage").caption, form.control("shpBar").layout.width,
                            form.control("lblPercentComplete").caption};
    if (progress.empty() || !(progress.back() == view)) progress.push_back(view);
  }
  void hide_modeless(FormModel& form) override {
    events.push_back("hide: " + form.name());
    scripted_.hide_modeless(form);
  }
  void launch_associated_program(std::string_view document) override {
    events.push_back("launch: " + std::string(document));
    launched.emplace_back(document);
  }

  struct ProgressView {
    std::string message;
    int bar_width = 0;
    std::string percent;
    friend bool operator==(const ProgressView&, const ProgressView&) = default;
  };
  // The progress window's states, one for each change it was shown with.
  std::vector<ProgressView> progress;
  // Message boxes, questions (by title), hidden windows and started programs, in order.
  std::vector<std::string> events;
  std::vector<std::string> launched;

  // The messages the window showed, each once, in order (the blank line it opens with
  // is no message).
  std::vector<std::string> progress_messages() const {
    std::vector<std::string> messages;
    for (const ProgressView& view : progress) {
      if (view.message.empty()) continue;
      if (messages.empty() || messages.back() != view.message) messages.push_back(view.message);
    }
    return messages;
  }
  // How many times the bar grew.
  int bar_advances() const {
    int advances = 0;
    int width = 0;
    for (const ProgressView& view : progress) {
      if (view.bar_width > width) ++advances;
      width = view.bar_width;
    }
    return advances;
  }

 private:
  scripted::ScriptedUi& scripted_;
};

// Session managers over a simulated company whose calls can be made to fail, or whose
// failures can be forgiven (a session manager that ends a session never begun without
// complaint). Every call is logged, failed or not.
class FaultySessions final : public quickbooks::SessionManagerFactory {
 public:
  explicit FaultySessions(quickbooks::CompanySimulator& simulator) : inner_(simulator) {}

  // Every later call of `operation` raises this error instead of reaching the company.
  void fail(const std::string& operation, long number, std::string description) {
    failures_[operation] = {number, std::move(description)};
  }
  // The company's failures of `operation` are swallowed.
  void forgive(const std::string& operation) { forgiven_.push_back(operation); }

  std::unique_ptr<quickbooks::SessionManager> create() override;

  std::vector<std::string> calls;
  int created = 0;

 private:
  class Manager;
  quickbooks::SimulatorSessionFactory inner_;
  std::map<std::string, std::pair<long, std::string>> failures_;
  std::vector<std::string> forgiven_;
};

class FaultySessions::Manager final : public quickbooks::SessionManager {
 public:
  Manager(FaultySessions& owner, std::unique_ptr<quickbooks::SessionManager> inner)
      : owner_(owner), inner_(std::move(inner)) {}

  void OpenConnection(std::string_view app_id, std::string_view app_name) override {
    call("OpenConnection", [&] { inner_->OpenConnection(app_id, app_name); });
  }
  void BeginSession(std::string_view company_file, quickbooks::OpenMode mode) override {
    call("BeginSession", [&] { inner_->BeginSession(company_file, mode); });
  }
  void EndSession() override {
    call("EndSession", [&] { inner_->EndSession(); });
  }
  void CloseConnection() override {
    call("CloseConnection", [&] { inner_->CloseConnection(); });
  }
  std::vector<std::string> QBXMLVersionsForSession() override {
    std::vector<std::string> versions;
    call("QBXMLVersionsForSession", [&] { versions = inner_->QBXMLVersionsForSession(); });
    return versions;
  }
  quickbooks::ResponseSet DoRequests(const quickbooks::RequestSet& request_set) override {
    quickbooks::ResponseSet responses;
    call("DoRequests", [&] { responses = inner_->DoRequests(request_set); });
    return responses;
  }

 private:
  template <class Body>
  void call(const std::string& operation, Body&& body) {
    owner_.calls.push_back(operation);
    if (auto failure = owner_.failures_.find(operation); failure != owner_.failures_.end())
      throw Error(failure->second.first, "QuickBooks", failure->second.second);
    try {
      body();
    } catch (const Error&) {
      for (const std::string& forgiven : owner_.forgiven_)
        if (forgiven == operation) return;
      throw;
    }
  }

  FaultySessions& owner_;
  std::unique_ptr<quickbooks::SessionManager> inner_;
};

inline std::unique_ptr<quickbooks::SessionManager> FaultySessions::create() {
  ++created;
  return std::make_unique<Manager>(*this, inner_.create());
}

// The company file of the tests and its payroll items as the setup form's defaults
// name them.
inline constexpr const char* kCompanyFile = "C:\\Company\\Sample.QBW";
inline const std::vector<std::string>& default_items() {
  static const std::vector<std::string> items = {
      "Regular Hourly Rate",  "Overtime Hourly Rate", "Premuim Overtime Hourly Rate",
      "Vacation Hourly Rate", "Holiday Hourly Rate",  "Sick Hourly Rate",
      "Other Hourly Rate"};
  return items;
}
inline constexpr const char* kSetup =
    "C:\\Company\\Sample.QBW,Regular Hourly Rate,Overtime Hourly Rate,"
    "Premuim Overtime Hourly Rate,Vacation Hourly Rate,Holiday Hourly Rate,Sick Hourly Rate,"
    "Other Hourly Rate";

// A company that knows the default items and the given employees.
inline quickbooks::Company company(std::vector<std::string> employees) {
  quickbooks::Company result;
  result.company_file = kCompanyFile;
  result.qbxml_versions = {"1.0"};
  result.payroll_items = default_items();
  result.employees = std::move(employees);
  return result;
}

// Minutes of one day by hour type, REG to OTH.
struct DayMinutes {
  Variant reg = std::int32_t{0};
  Variant ot1 = std::int32_t{0};
  Variant ot2 = std::int32_t{0};
  Variant vac = std::int32_t{0};
  Variant hol = std::int32_t{0};
  Variant sic = std::int32_t{0};
  Variant oth = std::int32_t{0};
};

inline Variant day(Date date, const DayMinutes& minutes) {
  auto result = std::make_shared<scripted::MemoryObject>();
  result->set("DayDate", date)
      .set("Hours", std::int32_t{0})
      .set("REG", minutes.reg)
      .set("OT1", minutes.ot1)
      .set("OT2", minutes.ot2)
      .set("VAC", minutes.vac)
      .set("HOL", minutes.hol)
      .set("SIC", minutes.sic)
      .set("OTH", minutes.oth);
  return scripted::object(result);
}

// A card of the named employee with the given days, starting its period on 1 March
// 2004.
inline std::shared_ptr<scripted::MemoryObject> employee_card(std::string first, std::string middle,
                                                             std::string last,
                                                             std::vector<Variant> days = {}) {
  auto result = scripted::card("E1", std::int32_t{1});
  result->set("FirstName", std::move(first))
      .set("MI", std::move(middle))
      .set("LastName", std::move(last))
      .set("PeriodStart", Date::from_civil(2004, 3, 1))
      .set("Days", scripted::object(scripted::collection(std::move(days))));
  return result;
}

inline Variant cards(std::vector<Variant> elements) {
  return scripted::object(scripted::collection(std::move(elements)));
}

// A host with a simulated company behind the session managers; `sessions` can be
// pointed at a FaultySessions (or at nothing) before the export is created.
struct QuickBooksHost {
  explicit QuickBooksHost(quickbooks::Company company_file)
      : simulator(std::move(company_file)), direct(simulator), faulty(simulator) {}

  ExportContext context() { return {ui, host.files, host.clock, sessions}; }

  scripted::Host host;
  RecordingUi ui{host.ui};
  quickbooks::CompanySimulator simulator;
  quickbooks::SimulatorSessionFactory direct;
  FaultySessions faulty;
  quickbooks::SessionManagerFactory* sessions = &direct;
};

// The operations the company saw, in order.
inline std::vector<std::string> operations(const quickbooks::CompanySimulator& simulator) {
  std::vector<std::string> names;
  for (const quickbooks::RecordedCall& call : simulator.calls()) names.push_back(call.operation);
  return names;
}

using testing_support::raised_by;

}  // namespace zorvat::formats::qb2000_test
