#include "session_manager.h"

#include <nlohmann/json.hpp>
#include <variant>

#include "message_set.h"
#include "responses.h"
#include "zorvat/quickbooks/com_failures.h"
#include "zorvat/quickbooks/company.h"
#include "zorvat/quickbooks/simulator.h"
#include "zorvat/quickbooks/values.h"

namespace zorvat::qbsim {
namespace {

using nlohmann::json;
using namespace quickbooks;

struct SimulatedQuickBooks {
  std::unique_ptr<CompanySimulator> simulator = std::make_unique<CompanySimulator>(Company{});
  json request_sets = json::array();
  json request_documents = json::array();
  bool versions_by_reference = false;
};

SimulatedQuickBooks& quickbooks() {
  static SimulatedQuickBooks instance;
  return instance;
}

CompanySimulator& simulator() {
  return *quickbooks().simulator;
}

json time_entry(const TimeTrackingAdd& entry) {
  return {{"date", txn_date_text(entry.txn_date)},
          {"entity", entry.entity_full_name},
          {"hours", entry.duration.hours},
          {"minutes", entry.duration.minutes},
          {"seconds", entry.duration.seconds},
          {"payrollItem", entry.payroll_item_wage_full_name},
          {"notes", entry.notes},
          {"billable", entry.is_billable}};
}

json company_time_entries() {
  json entries = json::array();
  for (const TimeTrackingAdd& entry : simulator().company().time_entries)
    entries.push_back(time_entry(entry));
  return entries;
}

json request_json(const PayrollItemWageQuery& query) {
  return {{"type", "PayrollItemWageQuery"}, {"maxReturned", query.max_returned}};
}
json request_json(const EmployeeQuery&) {
  return {{"type", "EmployeeQuery"}};
}
json request_json(const EmployeeAdd& add) {
  return {{"type", "EmployeeAdd"},
          {"firstName", add.first_name},
          {"middleName", add.middle_name},
          {"lastName", add.last_name}};
}
json request_json(const TimeTrackingAdd& add) {
  json request = time_entry(add);
  request["type"] = "TimeTrackingAdd";
  return request;
}

json received_requests() {
  json sets = json::array();
  for (const RequestSet& set : simulator().request_sets()) {
    json requests = json::array();
    for (const Request& request : set.requests)
      requests.push_back(
          std::visit([](const auto& typed) { return request_json(typed); }, request));
    sets.push_back({{"onError", static_cast<int>(set.on_error)}, {"requests", requests}});
  }
  return sets;
}

json recorded_calls() {
  json calls = json::array();
  for (const RecordedCall& call : simulator().calls())
    calls.push_back(
        {{"operation", call.operation}, {"arguments", call.arguments}, {"error", call.error}});
  return calls;
}

class SessionManager final : public Automation<IQBSessionManager> {
 public:
  ~SessionManager() override {
    if (held_versions_ != nullptr) SafeArrayDestroy(held_versions_);
  }

  HRESULT STDMETHODCALLTYPE OpenConnection(BSTR app_id, BSTR app_name) override {
    return guarded([&] {
      simulator().OpenConnection(com::bstr_to_utf8(app_id), com::bstr_to_utf8(app_name));
    });
  }
  HRESULT STDMETHODCALLTYPE BeginSession(BSTR file, ENOpenMode mode) override {
    return guarded(
        [&] { simulator().BeginSession(com::bstr_to_utf8(file), static_cast<OpenMode>(mode)); });
  }
  HRESULT STDMETHODCALLTYPE EndSession() override {
    return guarded([&] { simulator().EndSession(); });
  }
  HRESULT STDMETHODCALLTYPE CloseConnection() override {
    return guarded([&] { simulator().CloseConnection(); });
  }
  HRESULT STDMETHODCALLTYPE CreateMsgSetRequest(short major, short minor,
                                                IMsgSetRequest** request) override {
    return guarded([&] { hand_out(request, make_message_set(major, minor)); });
  }
  HRESULT STDMETHODCALLTYPE DoRequests(IMsgSetRequest* request,
                                       IMsgSetResponse** response) override {
    return guarded([&] {
      const std::shared_ptr<MessageSet> set = message_set_of(request);
      if (!set) raise_runtime(rt::kTypeMismatch);
      quickbooks().request_sets.push_back(set->record);
      // The SDK writes the set as a qbXML document; one QuickBooks cannot parse is
      // refused whole, before any of its requests is answered.
      if (!set->schema_problem().empty()) com_failures::raise_failure(com_failures::parse_error());
      const RequestSet sent = set->to_send();
      const ResponseSet responses = simulator().DoRequests(sent);
      hand_out(response, make_response_set(sent, responses));
    });
  }
  HRESULT STDMETHODCALLTYPE get_QBXMLVersionsForSession(SAFEARRAY** versions) override {
    return guarded([&] { *versions = bstr_array(simulator().QBXMLVersionsForSession()); });
  }

 protected:
  // With VersionsByReference, the array goes out as VT_BYREF|VT_ARRAY|VT_BSTR pointing
  // at a copy this manager keeps until the next read or its release.
  HRESULT after_invoke(DISPID, HRESULT hr, VARIANT* result) override {
    if (FAILED(hr) || result == nullptr || !quickbooks().versions_by_reference ||
        V_VT(result) != (VT_ARRAY | VT_BSTR))
      return hr;
    if (held_versions_ != nullptr) SafeArrayDestroy(held_versions_);
    held_versions_ = V_ARRAY(result);
    V_VT(result) = VT_ARRAY | VT_BSTR | VT_BYREF;
    V_ARRAYREF(result) = &held_versions_;
    return hr;
  }

 private:
  SAFEARRAY* held_versions_ = nullptr;
};

class SimulatorControl final : public Automation<IQBSimulatorControl> {
 public:
  HRESULT STDMETHODCALLTYPE LoadCompany(BSTR company) override {
    return guarded([&] {
      Company loaded = parse_company_json(com::bstr_to_utf8(company), "LoadCompany");
      quickbooks().simulator = std::make_unique<CompanySimulator>(std::move(loaded));
      quickbooks().request_sets = json::array();
      quickbooks().request_documents = json::array();
      quickbooks().versions_by_reference = false;
    });
  }
  HRESULT STDMETHODCALLTYPE get_RecordedRequestSets(BSTR* sets) override {
    *sets = com::make_bstr(quickbooks().request_sets.dump());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_RecordedCalls(BSTR* calls) override {
    *calls = com::make_bstr(recorded_calls().dump());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_VersionsByReference(VARIANT_BOOL* by_reference) override {
    *by_reference = quickbooks().versions_by_reference ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_VersionsByReference(VARIANT_BOOL by_reference) override {
    quickbooks().versions_by_reference = by_reference != VARIANT_FALSE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_RecordedRequestDocuments(BSTR* documents) override {
    *documents = com::make_bstr(quickbooks().request_documents.dump());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_CompanyTimeEntries(BSTR* entries) override {
    *entries = com::make_bstr(company_time_entries().dump());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_CompanyEmployees(BSTR* employees) override {
    *employees = com::make_bstr(json(simulator().company().employees).dump());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_ReceivedRequests(BSTR* requests) override {
    *requests = com::make_bstr(received_requests().dump());
    return S_OK;
  }
};

}  // namespace

SAFEARRAY* bstr_array(const std::vector<std::string>& texts) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(texts.size()));
  if (array == nullptr) throw std::bad_alloc();
  for (LONG index = 0; index < static_cast<LONG>(texts.size()); ++index) {
    com::unique_bstr text(com::make_bstr(texts[static_cast<std::size_t>(index)]));
    SafeArrayPutElement(array, &index, text.get());
  }
  return array;
}

quickbooks::CompanySimulator& simulated_quickbooks() {
  return simulator();
}

void record_request_document(const std::string& document, const std::string& problem) {
  quickbooks().request_documents.push_back(
      {{"document", document}, {"valid", problem.empty()}, {"problem", problem}});
}

ComPtr<IQBSessionManager> make_session_manager() {
  return make<SessionManager>();
}

ComPtr<IQBSimulatorControl> make_simulator_control() {
  return make<SimulatorControl>();
}

}  // namespace zorvat::qbsim
