#include "qbfc_session.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <type_traits>
#include <variant>
#include <vector>

#include "dispatch_view.h"
#include "late_bound.h"
#include "request_processor_session.h"
#include "zorvat/error.h"
#include "zorvat/quickbooks/back_ends.h"
#include "zorvat/quickbooks/schema.h"
#include "zorvat/quickbooks/time_interval.h"

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

// Sets a time entry's Duration field object to a duration.
using DurationSetter = std::function<void(const LateBound& field, const Duration& duration)>;

// The early generations' SetValue(hours, minutes, seconds), the hours as they are
// (the edit-total split can make them zero or negative).
void set_counts(const LateBound& field, const Duration& duration) {
  const Argument hours = Argument::integer(static_cast<std::int16_t>(duration.hours));
  const Argument minutes = Argument::integer(static_cast<std::int16_t>(duration.minutes));
  const Argument seconds = Argument::integer(static_cast<std::int16_t>(duration.seconds));
  field.call(L"SetValue", {&hours, &minutes, &seconds});
}

// A time entry's fields, set one call at a time in the entry's own order. Whether it
// is billable is IsBillable below qbXML 6.0 and BillableStatus from 6.0 on.
void append(const LateBound& set, const TimeTrackingAdd& add, bool billable_status,
            const DurationSetter& set_duration) {
  const LateBound request = set.object(L"AppendTimeTrackingAddRq");
  for (const TimeTrackingField field : add.field_order) {
    switch (field) {
      case TimeTrackingField::EntityRef:
        set_value(request.object(L"EntityRef").object(L"FullName"),
                  Argument::text(add.entity_full_name));
        break;
      case TimeTrackingField::Duration:
        set_duration(request.object(L"Duration"), add.duration);
        break;
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

// --- The newer generations' shapes, read from their type information ---------------

// The types of a method's arguments as the object's type information declares them,
// its [out, retval] result left out; nothing when the object gives no type
// information or none for a method of that name.
std::optional<std::vector<VARTYPE>> argument_types(IDispatch* object, const wchar_t* method) {
  ComPtr<ITypeInfo> info;
  if (FAILED(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info)) || !info) return std::nullopt;
  std::wstring name = method;
  LPOLESTR names[] = {name.data()};
  MEMBERID id = MEMBERID_NIL;
  if (FAILED(info->GetIDsOfNames(names, 1, &id))) return std::nullopt;
  TYPEATTR* attributes = nullptr;
  if (FAILED(info->GetTypeAttr(&attributes))) return std::nullopt;
  const WORD functions = attributes->cFuncs;
  info->ReleaseTypeAttr(attributes);
  for (UINT index = 0; index < functions; ++index) {
    FUNCDESC* function = nullptr;
    if (FAILED(info->GetFuncDesc(index, &function))) continue;
    std::optional<std::vector<VARTYPE>> types;
    if (function->memid == id && (function->invkind & INVOKE_FUNC) != 0) {
      types.emplace();
      for (SHORT parameter = 0; parameter < function->cParams; ++parameter) {
        const ELEMDESC& described = function->lprgelemdescParam[parameter];
        if ((described.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) == 0)
          types->push_back(described.tdesc.vt);
      }
    }
    info->ReleaseFuncDesc(function);
    if (types) return types;
  }
  return std::nullopt;
}

bool is_integer(VARTYPE type) {
  return type == VT_I2 || type == VT_I4;
}

std::string type_name(VARTYPE type) {
  switch (type) {
    case VT_I2:
      return "Integer";
    case VT_I4:
      return "Long";
    case VT_BSTR:
      return "String";
    case VT_BOOL:
      return "Boolean";
    case VT_DATE:
      return "Date";
    case VT_R8:
      return "Double";
    case VT_VARIANT:
      return "Variant";
    default:
      return "type " + std::to_string(type);
  }
}

// 438, naming the session manager, the method and the shape it was found in.
[[noreturn]] void raise_unknown_shape(const std::wstring& prog_id, const std::string& method,
                                      const std::optional<std::vector<VARTYPE>>& types) {
  std::string shape;
  if (types) {
    for (const VARTYPE type : *types) shape += (shape.empty() ? "" : ", ") + type_name(type);
    shape = method + "(" + shape + ")";
  }
  raise(rt::kObjectDoesntSupport, kComponentSource,
        "Object doesn't support this property or method: QuickBooks' session manager " +
            to_utf8(prog_id) +
            (types ? " declares " + shape + ", which this export does not know how to call"
                   : " gives no type information for " + method +
                         ", so this export does not know how to call it"));
}

}  // namespace

// CreateMsgSetRequest as (major, minor) or ("US", major, minor), and Duration's
// SetValue as (hours, minutes, seconds) or (hours, minutes, seconds, isNegative),
// each with the integer types declared; read when first needed.
struct NewerQbfcShapes {
  std::wstring prog_id;
  QbxmlVersionNumber newest_built;
  std::optional<std::vector<VARTYPE>> create_set;  // the version's two integers, after any country
  bool with_country = false;
  std::optional<std::vector<VARTYPE>> set_value;  // the three counts' types
  bool with_sign = false;

  void read_create_set(IDispatch* manager) {
    if (create_set) return;
    const auto types = argument_types(manager, L"CreateMsgSetRequest");
    if (types && types->size() == 2 && is_integer((*types)[0]) && is_integer((*types)[1])) {
      create_set = types;
    } else if (types && types->size() == 3 && (*types)[0] == VT_BSTR && is_integer((*types)[1]) &&
               is_integer((*types)[2])) {
      create_set = std::vector<VARTYPE>{(*types)[1], (*types)[2]};
      with_country = true;
    } else {
      raise_unknown_shape(prog_id, "CreateMsgSetRequest", types);
    }
  }

  void read_set_value(IDispatch* field) {
    if (set_value) return;
    const auto types = argument_types(field, L"SetValue");
    const bool counts = types && types->size() >= 3 && is_integer((*types)[0]) &&
                        is_integer((*types)[1]) && is_integer((*types)[2]);
    if (counts && types->size() == 3) {
      set_value = types;
    } else if (counts && types->size() == 4 && (*types)[3] == VT_BOOL) {
      set_value = std::vector<VARTYPE>{(*types)[0], (*types)[1], (*types)[2]};
      with_sign = true;
    } else {
      raise_unknown_shape(prog_id, "Duration.SetValue", types);
    }
  }

  // A negative duration is negative as a whole (-8 hours and 30 minutes is minus
  // eight and a half hours, as qbXML's "-PT8H30M0S"): with a sign argument, the counts
  // go without sign and the sign apart; without one, the counts go as they are.
  void set_duration(const LateBound& field, const Duration& duration) {
    read_set_value(field.get());
    const std::vector<VARTYPE>& types = *set_value;
    if (!with_sign) {
      const Argument hours = Argument::integer_of_type(types[0], duration.hours);
      const Argument minutes = Argument::integer_of_type(types[1], duration.minutes);
      const Argument seconds = Argument::integer_of_type(types[2], duration.seconds);
      field.call(L"SetValue", {&hours, &minutes, &seconds});
      return;
    }
    const SignedTimeInterval interval = signed_interval(duration);
    const Argument hours = Argument::integer_of_type(types[0], interval.hours);
    const Argument minutes = Argument::integer_of_type(types[1], interval.minutes);
    const Argument seconds = Argument::integer_of_type(types[2], interval.seconds);
    const Argument negative = Argument::boolean(interval.negative);
    field.call(L"SetValue", {&hours, &minutes, &seconds, &negative});
  }
};

QbfcSessionManager::QbfcSessionManager(ComPtr<IDispatch> manager) : manager_(std::move(manager)) {}

QbfcSessionManager::QbfcSessionManager(ComPtr<IDispatch> manager, std::wstring prog_id,
                                       QbxmlVersionNumber newest_built)
    : manager_(std::move(manager)),
      newer_(std::make_unique<NewerQbfcShapes>(
          NewerQbfcShapes{std::move(prog_id), newest_built, {}, false, {}, false})) {}

QbfcSessionManager::~QbfcSessionManager() = default;

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
  std::vector<std::string> listed = texts_of(LateBound(manager_).call(L"QBXMLVersionsForSession"));
  if (!newer_) return listed;
  return versions_for_back_end(listed, newer_->newest_built);
}

ResponseSet QbfcSessionManager::DoRequests(const RequestSet& request_set) {
  // The SDK's field objects refuse a text longer than the field on SetValue; checked
  // before the message set is created, nothing of the set is built or sent.
  check_field_limits(request_set);
  const LateBound manager(manager_);
  ComPtr<IDispatch> created;
  if (!newer_) {
    const Argument major = Argument::integer(static_cast<std::int16_t>(request_set.major_version));
    const Argument minor = Argument::integer(static_cast<std::int16_t>(request_set.minor_version));
    created = as_object(manager.call(L"CreateMsgSetRequest", {&major, &minor}));
  } else {
    newer_->read_create_set(manager_.Get());
    const Argument major =
        Argument::integer_of_type((*newer_->create_set)[0], request_set.major_version);
    const Argument minor =
        Argument::integer_of_type((*newer_->create_set)[1], request_set.minor_version);
    // The export writes the requests of the US editions.
    const Argument country = Argument::text("US");
    created = newer_->with_country
                  ? as_object(manager.call(L"CreateMsgSetRequest", {&country, &major, &minor}))
                  : as_object(manager.call(L"CreateMsgSetRequest", {&major, &minor}));
  }
  const LateBound set(created);
  set.object(L"Attributes")
      .put(L"OnError", Argument::long_integer(static_cast<std::int32_t>(request_set.on_error)));
  const bool billable_status =
      uses_billable_status(request_set.major_version, request_set.minor_version);
  const DurationSetter set_duration =
      newer_ ? DurationSetter([this](const LateBound& field, const Duration& duration) {
        newer_->set_duration(field, duration);
      })
             : DurationSetter(&set_counts);
  for (const Request& request : request_set.requests) {
    std::visit(
        [&](const auto& typed) {
          if constexpr (std::is_same_v<std::decay_t<decltype(typed)>, TimeTrackingAdd>)
            append(set, typed, billable_status, set_duration);
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
  [[maybe_unused]] const SessionBackEnd* thirty_two_bit = nullptr;
  for (const SessionBackEnd& back_end : kSessionBackEnds) {
    const std::wstring prog_id = win32::to_wide(back_end.prog_id);
    CLSID clsid{};
    if (FAILED(CLSIDFromProgID(prog_id.c_str(), &clsid))) continue;
    ComPtr<IDispatch> object;
    if (SUCCEEDED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                   IID_PPV_ARGS(&object)))) {
      switch (back_end.kind) {
        case BackEndKind::EarlyQbfc:
          return std::make_unique<QbfcSessionManager>(std::move(object));
        case BackEndKind::NewerQbfc:
          return std::make_unique<QbfcSessionManager>(std::move(object), prog_id,
                                                      back_end.newest_built);
        case BackEndKind::RequestProcessor:
          // Without QBFC, the request processor every QuickBooks Desktop installs
          // carries the export's own qbXML documents.
          return make_request_processor_session(std::move(object));
      }
    }
#ifdef _WIN64
    if (!thirty_two_bit && registered_for_32_bit_only(clsid)) thirty_two_bit = &back_end;
#endif
  }
#ifdef _WIN64
  // A 64-bit process cannot load a 32-bit in-process library: say so, and what to do.
  if (thirty_two_bit)
    raise(kCantCreateObject, kComponentSource,
          std::string("ActiveX component can't create object: QuickBooks' ") +
              (thirty_two_bit->kind == BackEndKind::RequestProcessor ? "request processor "
                                                                     : "session manager ") +
              std::string(thirty_two_bit->prog_id) +
              " is a 32-bit library, which the 64-bit zorvat.dll cannot load. Export to "
              "QuickBooks from a 32-bit host, which uses the 32-bit zorvat.dll.");
#endif
  raise(kCantCreateObject, kComponentSource,
        "ActiveX component can't create object: no QuickBooks session manager is installed; "
        "install QuickBooks Desktop, or the QuickBooks SDK's QBFC runtime, to export to "
        "QuickBooks.");
}

quickbooks::SessionManagerFactory& server_session_factory() {
  static QbfcSessionManagerFactory factory;
  return factory;
}

}  // namespace zorvat::com
