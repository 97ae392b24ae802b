// The direct backend: a session manager whose calls go straight to the simulator.
#include "zorvat/error.h"
#include "zorvat/quickbooks/com_failures.h"
#include "zorvat/quickbooks/schema.h"
#include "zorvat/quickbooks/simulator.h"

namespace zorvat::quickbooks {
namespace {

// "ActiveX component can't create object": no session manager on the machine.
constexpr long kCannotCreateObject = 429;

class SimulatorSessionManager : public SessionManager {
 public:
  explicit SimulatorSessionManager(CompanySimulator& simulator) : simulator_(simulator) {}

  void OpenConnection(std::string_view app_id, std::string_view app_name) override {
    simulator_.OpenConnection(app_id, app_name);
  }
  void BeginSession(std::string_view company_file, OpenMode mode) override {
    simulator_.BeginSession(company_file, mode);
  }
  void EndSession() override { simulator_.EndSession(); }
  void CloseConnection() override { simulator_.CloseConnection(); }
  std::vector<std::string> QBXMLVersionsForSession() override {
    return simulator_.QBXMLVersionsForSession();
  }
  // A field longer than the SDK's field takes is refused as its SetValue refuses it,
  // before the set is sent.
  ResponseSet DoRequests(const RequestSet& request_set) override {
    check_field_limits(request_set);
    return simulator_.DoRequests(request_set);
  }

 private:
  CompanySimulator& simulator_;
};

}  // namespace

std::unique_ptr<SessionManager> SimulatorSessionFactory::create() {
  if (!simulator_.company().session_manager_installed) {
    raise(kCannotCreateObject, com_failures::kSource, "ActiveX component can't create object");
  }
  ++created_;
  return std::make_unique<SimulatorSessionManager>(simulator_);
}

}  // namespace zorvat::quickbooks
