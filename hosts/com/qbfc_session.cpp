#include "qbfc_session.h"

#include <initializer_list>
#include <optional>
#include <type_traits>
#include <variant>
#include <vector>

#include "dispatch_view.h"
#include "late_bound.h"
#include "request_processor_session.h"
#include "zorvat/error.h"
#include "zorvat/quickbooks/schema.h"

namespace zorvat::com {
namespace {

using namespace quickbooks;

constexpr long kCantCreateObject = 429;

// ENBillableStatus.
constexpr std::int32_t kBillable = 0;
constexpr std::int32_t kNotBillable = 1;

// The field objects of a request are set with SetValue, one call per field.
void set_value(const LateBound& field, const Argument& value) {
  field.call(L"SetValue", {&value});
}

void append(const LateBound& set, const PayrollItemWageQuery& query) {
  const LateBound request = set.object(L"AppendPayrollItemWageQueryRq");
  if (query.max_returned > 0) {
    const LateBound filter = request.object(L"ORListQuery").object(L"ListFilter");
    set_value(filter.object(L"MaxReturned"), Argument::long_integer(query.max_returned));
  }
}

void append(const LateBound& set, const EmployeeQuery&) {
  set.call(L"AppendEmployeeQueryRq");
}

void append(const LateBound& set, const EmployeeAdd& add) {
  const LateBound request = set.object(L"AppendEmployeeAddRq");
  set_value(request.object(L"FirstName"), Argument::text(add.first_name));
  set_value(request.object(L"MiddleName"), Argument::text(add.middle_name));
  set_value(request.object(L"LastName"), Argument::text(add.last_name));
}

// A time entry's fields, set one call at a time in the entry's own order. The
// duration is SetValue(hours, minutes, seconds), the hours as they are (the
// edit-total split can make them zero or negative). Whether it is billable is
// IsBillable below qbXML 6.0 and BillableStatus from 6.0 on.
void append(const LateBound& set, const TimeTrackingAdd& add, bool billable_status) {
  const LateBound request = set.object(L"AppendTimeTrackingAddRq");
  for (const TimeTrackingField field : add.field_order) {
    switch (field) {
      case TimeTrackingField::EntityRef:
        set_value(request.object(L"EntityRef").object(L"FullName"),
                  Argument::text(add.entity_full_name));
        break;
      case TimeTrackingField::Duration: {
        const Argument hours = Argument::integer(static_cast<std::int16_t>(add.duration.hours));
        const Argument minutes = Argument::integer(static_cast<std::int16_t>(add.duration.minutes));
        const Argument seconds = Argument::integer(static_cast<std::int16_t>(add.duration.seconds));
        request.object(L"Duration").call(L"SetValue", {&hours, &minutes, &seconds});
        break;
      }
      case TimeTrackingField::TxnDate:
        set_value(request.object(L"TxnDate"), Argument::date(add.txn_date));
        break;
      case TimeTrackingField::PayrollItemWageRef:
        set_value(request.object(L"PayrollItemWageRef").object(L"FullName"),
                  Argument::text(add.payroll_item_wage_full_name));
        break;
      case TimeTrackingField::IsBillable:
        if (billable_status)
          set_value(request.object(L"BillableStatus"),
                    Argument::long_integer(add.is_billable ? kBillable : kNotBillable));
        else
          set_value(request.object(L"IsBillable"), Argument::boolean(add.is_billable));
        break;
      case TimeTrackingField::Notes:
        set_value(request.object(L"Notes"), Argument::text(add.notes));
        break;
    }
  }
}

// The Name of a returned object; objects without one (a time entry) have none.
std::string name_of(const LateBound& returned) {
  if (!returned.has(L"Name")) return {};
  const LateBound name = returned.maybe_object(L"Name");
  if (!name) return {};
  return text_of(name.call(L"GetValue"));
}

// A response's Detail: Nothing, a list of returned objects (Count, GetAt), or the
// one object an add returns.
std::optional<std::vector<ReturnedObject>> detail_of(const LateBound& response) {
  const LateBound detail = response.maybe_object(L"Detail");
  if (!detail) return std::nullopt;
  std::vector<ReturnedObject> objects;
  if (!detail.has(L"Count") || !detail.has(L"GetAt")) {
    objects.push_back({name_of(detail)});
    return objects;
  }
  const std::int32_t count = long_of(detail.call(L"Count"));
  for (std::int32_t index = 0; index < count; ++index) {
    const Argument at = Argument::long_integer(index);
    const unique_variant element = detail.call(L"GetAt", {&at});
    const ComPtr<IDispatch> object = dispatch_of(element);
    objects.push_back({object ? name_of(LateBound(object)) : std::string()});
  }
  return objects;
}

Response response_of(const LateBound& response) {
  Response result;
  result.status_code = long_of(response.call(L"StatusCode"));
  result.status_severity = text_of(response.call(L"StatusSeverity"));
  result.status_message = text_of(response.call(L"StatusMessage"));
  result.detail = detail_of(response);
  return result;
}

}  // namespace

void QbfcSessionManager::OpenConnection(std::string_view app_id, std::string_view app_name) {
  const Argument id = Argument::text(app_id);
  const Argument name = Argument::text(app_name);
  LateBound(manager_).call(L"OpenConnection", {&id, &name});
}

void QbfcSessionManager::BeginSession(std::string_view company_file, OpenMode mode) {
  const Argument file = Argument::text(company_file);
  const Argument open_mode = Argument::long_integer(static_cast<std::int32_t>(mode));
  LateBound(manager_).call(L"BeginSession", {&file, &open_mode});
}

void QbfcSessionManager::EndSession() {
  LateBound(manager_).call(L"EndSession");
}

void QbfcSessionManager::CloseConnection() {
  LateBound(manager_).call(L"CloseConnection");
}

std::vector<std::string> QbfcSessionManager::QBXMLVersionsForSession() {
  return texts_of(LateBound(manager_).call(L"QBXMLVersionsForSession"));
}

ResponseSet QbfcSessionManager::DoRequests(const RequestSet& request_set) {
  // The SDK's field objects refuse a text longer than the field on SetValue; checked
  // before the message set is created, nothing of the set is built or sent.
  check_field_limits(request_set);
  const LateBound manager(manager_);
  const Argument major = Argument::integer(static_cast<std::int16_t>(request_set.major_version));
  const Argument minor = Argument::integer(static_cast<std::int16_t>(request_set.minor_version));
  const ComPtr<IDispatch> created =
      as_object(manager.call(L"CreateMsgSetRequest", {&major, &minor}));
  const LateBound set(created);
  set.object(L"Attributes")
      .put(L"OnError", Argument::long_integer(static_cast<std::int32_t>(request_set.on_error)));
  const bool billable_status =
      uses_billable_status(request_set.major_version, request_set.minor_version);
  for (const Request& request : request_set.requests) {
    std::visit(
        [&](const auto& typed) {
          if constexpr (std::is_same_v<std::decay_t<decltype(typed)>, TimeTrackingAdd>)
            append(set, typed, billable_status);
          else
            append(set, typed);
        },
        request);
  }

  const Argument sent = Argument::object(created.Get());
  const LateBound reply = LateBound(as_object(manager.call(L"DoRequests", {&sent})));
  const LateBound list = reply.object(L"ResponseList");
  const std::int32_t count = long_of(list.call(L"Count"));
  ResponseSet responses;
  for (std::int32_t index = 0; index < count; ++index) {
    const Argument at = Argument::long_integer(index);
    responses.responses.push_back(response_of(LateBound(as_object(list.call(L"GetAt", {&at})))));
  }
  return responses;
}

std::vector<std::wstring> QbfcSessionManagerFactory::default_prog_ids() {
  return {L"QBFC2.QBSessionManager", L"QBFC1.QBSessionManager"};
}

namespace {

// Whether the class is registered as an in-process server for 32-bit processes only
// (under the 32-bit view of the registry), as the SDK's session manager is in most of
// its releases.
[[maybe_unused]] bool registered_for_32_bit_only(const CLSID& clsid) {
  wchar_t text[40] = {};
  StringFromGUID2(clsid, text, 40);
  const std::wstring key = std::wstring(L"Software\\Classes\\CLSID\\") + text + L"\\InprocServer32";
  auto exists = [&](REGSAM view) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ | view, &opened) !=
        ERROR_SUCCESS)
      return false;
    RegCloseKey(opened);
    return true;
  };
  return exists(KEY_WOW64_32KEY) && !exists(KEY_WOW64_64KEY);
}

}  // namespace

std::unique_ptr<SessionManager> QbfcSessionManagerFactory::create() {
  [[maybe_unused]] std::optional<std::wstring> thirty_two_bit;
  // The object registered under `prog_id`, or null; a class registered for 32-bit
  // processes only is noted.
  const auto created = [&](const std::wstring& prog_id) {
    ComPtr<IDispatch> object;
    CLSID clsid{};
    if (FAILED(CLSIDFromProgID(prog_id.c_str(), &clsid))) return object;
    if (SUCCEEDED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                   IID_PPV_ARGS(&object))))
      return object;
    object.Reset();
#ifdef _WIN64
    if (!thirty_two_bit && registered_for_32_bit_only(clsid)) thirty_two_bit = prog_id;
#endif
    return object;
  };
  for (const std::wstring& prog_id : prog_ids_)
    if (ComPtr<IDispatch> manager = created(prog_id))
      return std::make_unique<QbfcSessionManager>(std::move(manager));
  // Without QBFC, the request processor every QuickBooks Desktop installs carries the
  // export's own qbXML documents.
  if (ComPtr<IDispatch> processor = created(kRequestProcessorProgId))
    return make_request_processor_session(std::move(processor));
#ifdef _WIN64
  // A 64-bit process cannot load a 32-bit in-process library: say so, and what to do.
  if (thirty_two_bit)
    raise(kCantCreateObject, kComponentSource,
          "ActiveX component can't create object: QuickBooks' session manager " +
              to_utf8(*thirty_two_bit) +
              " is a 32-bit library, which the 64-bit zorvat.dll cannot load. Export to "
              "QuickBooks from a 32-bit host, which uses the 32-bit zorvat.dll.");
#endif
  raise(kCantCreateObject, kComponentSource, "ActiveX component can't create object");
}

quickbooks::SessionManagerFactory& server_session_factory() {
  static QbfcSessionManagerFactory factory;
  return factory;
}

}  // namespace zorvat::com
