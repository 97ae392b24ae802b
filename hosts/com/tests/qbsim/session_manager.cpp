#include "session_manager.h"

#include <nlohmann/json.hpp>
#include <variant>

#include "message_set.h"
#include "responses.h"
#include "zorvat/quickbooks/com_failures.h"
#include "zorvat/quickbooks/company.h"
#include "zorvat/quickbooks/simulator.h"
#include "zorvat/quickbooks/values.h"
#include "zorvat/quickbooks/versions.h"

namespace zorvat::qbsim {
namespace {

using nlohmann::json;
using namespace quickbooks;

struct SimulatedQuickBooks {
  std::unique_ptr<CompanySimulator> simulator = std::make_unique<CompanySimulator>(Company{});
  json request_sets = json::array();
  json request_documents = json::array();
  bool versions_by_reference = false;
  json created = json::array();
  bool hides_type_information = false;
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

// The company as it stands: its employees, added ones included, and its time entries
// in arrival order, each as the request that added it.
json company_record() {
  const Company& company = simulator().company();
  json entries = json::array();
  for (const TimeTrackingAdd& entry : company.time_entries) entries.push_back(time_entry(entry));
  return {{"employees", company.employees}, {"timeEntries", entries}};
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

// The members every generation's session manager shares; `Interface` is the
// generation's session manager, `SetInterface` its message set.
template <class Interface, class SetInterface>
class SessionManagerOf : public Automation<Interface> {
 public:
  explicit SessionManagerOf(std::string_view prog_id) {
    quickbooks().created.push_back(std::string(prog_id));
  }
  ~SessionManagerOf() override {
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
  HRESULT STDMETHODCALLTYPE DoRequests(SetInterface* request, IMsgSetResponse** response) override {
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

// QBFC1 and QBFC2: CreateMsgSetRequest(major, minor), any version.
class SessionManager final : public SessionManagerOf<IQBSessionManager, IMsgSetRequest> {
 public:
  using SessionManagerOf::SessionManagerOf;
  HRESULT STDMETHODCALLTYPE CreateMsgSetRequest(short major, short minor,
                                                IMsgSetRequest** request) override {
    return guarded([&] { hand_out(request, make_message_set(major, minor)); });
  }
};

// QBFC3 and later: CreateMsgSetRequest(country, major, minor) of a US edition, up to
// the generation's own version.
class NewerSessionManager final : public SessionManagerOf<IQBSessionManagerN, IMsgSetRequestN> {
 public:
  NewerSessionManager(std::string_view prog_id, int generation)
      : SessionManagerOf(prog_id), generation_(generation) {}
  HRESULT STDMETHODCALLTYPE CreateMsgSetRequest(BSTR country, short major, short minor,
                                                IMsgSetRequestN** request) override {
    return guarded([&] {
      const std::string code = com::bstr_to_utf8(country);
      // An empty country code names the edition's own from qbXML 6.0 on.
      const bool us = code == "US" || (code.empty() && major >= 6);
      const QbxmlVersionNumber asked{major, minor};
      if (!us || major < 1 || minor < 0 || asked > QbxmlVersionNumber{generation_, 0})
        com_failures::raise_failure(com_failures::unsupported_version());
      hand_out(request, make_newer_message_set(major, minor));
    });
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
    if (quickbooks().hides_type_information) {
      if (info != nullptr) *info = nullptr;
      return E_NOTIMPL;
    }
    return SessionManagerOf::GetTypeInfo(index, locale, info);
  }

 private:
  int generation_;
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
      quickbooks().created = json::array();
      quickbooks().hides_type_information = false;
    });
  }
  HRESULT STDMETHODCALLTYPE get_HidesTypeInformation(VARIANT_BOOL* hides) override {
    *hides = quickbooks().hides_type_information ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_HidesTypeInformation(VARIANT_BOOL hides) override {
    quickbooks().hides_type_information = hides != VARIANT_FALSE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_CreatedSessionManagers(BSTR* prog_ids) override {
    *prog_ids = com::make_bstr(quickbooks().created.dump());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Company(BSTR* company) override {
    *company = com::make_bstr(company_record().dump());
    return S_OK;
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

ComPtr<IQBSessionManager> make_session_manager(std::string_view prog_id) {
  return make<SessionManager>(prog_id);
}

ComPtr<IQBSessionManagerN> make_newer_session_manager(std::string_view prog_id, int generation) {
  return make<NewerSessionManager>(prog_id, generation);
}

ComPtr<IQBSimulatorControl> make_simulator_control() {
  return make<SimulatorControl>();
}

}  // namespace zorvat::qbsim
