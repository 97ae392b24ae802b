#include "message_set.h"

#include <algorithm>
#include <cstdio>

#include "zorvat/error.h"
#include "zorvat/quickbooks/values.h"

namespace zorvat::qbsim {
namespace {

using nlohmann::json;
using namespace quickbooks;

// A SetValue argument as the record shows it.
json recorded_value(const VARIANT& value) {
  switch (V_VT(&value)) {
    case VT_BSTR:
      return com::bstr_to_utf8(V_BSTR(&value));
    case VT_I2:
      return V_I2(&value);
    case VT_I4:
      return V_I4(&value);
    case VT_BOOL:
      return V_BOOL(&value) != VARIANT_FALSE;
    case VT_DATE: {
      const Date date{V_DATE(&value)};
      std::string text = txn_date_text(date);
      if (const int seconds = date.seconds_of_day(); seconds != 0) {
        char time[16];
        std::snprintf(time, sizeof time, "T%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
        text += time;
      }
      return text;
    }
    default:
      return "<variant type " + std::to_string(V_VT(&value)) + ">";
  }
}

// Applies a field's SetValue to the request it belongs to.
using Apply = std::function<void(const Arguments&, Request&)>;

struct Field {
  const wchar_t* holder;  // the aggregate the field sits in ("EntityRef"), or null
  const wchar_t* name;
  std::size_t arguments;
  Apply apply;
};

std::string narrow(const wchar_t* text) {
  return com::to_utf8(text);
}

// The object a field is set through: SetValue records the call and applies it.
ComPtr<IDispatch> field_object(const std::shared_ptr<MessageSet>& set, std::size_t index,
                               const Field& field) {
  std::string path = field.holder != nullptr ? narrow(field.holder) + "." : std::string();
  path += narrow(field.name);
  ComPtr<DispatchObject> object = DispatchObject::create();
  object->on(L"SetValue", [set, index, path, field](const Arguments& arguments, VARIANT*) {
    arguments.expect(field.arguments);
    json value;
    if (field.arguments == 1) {
      value = recorded_value(arguments[0]);
    } else {
      value = json::array();
      for (std::size_t at = 0; at < arguments.size(); ++at)
        value.push_back(recorded_value(arguments[at]));
    }
    set->record["requests"][index]["set"].push_back(json::array({path, value}));
    field.apply(arguments, set->requests.requests[index]);
  });
  return object;
}

// The object at `path` ("ORListQuery.ListFilter") under `root`, made on first use.
DispatchObject& holder_at(DispatchObject& root, const std::wstring& path,
                          std::vector<std::pair<std::wstring, ComPtr<DispatchObject>>>& made) {
  for (auto& [made_path, object] : made)
    if (made_path == path) return *object.Get();
  const auto dot = path.rfind(L'.');
  DispatchObject& parent =
      dot == std::wstring::npos ? root : holder_at(root, path.substr(0, dot), made);
  ComPtr<DispatchObject> object = DispatchObject::create();
  parent.child(dot == std::wstring::npos ? path : path.substr(dot + 1), object);
  made.emplace_back(path, object);
  return *object.Get();
}

// Appends a request of `type` whose fields are `fields`; returns the request object.
ComPtr<DispatchObject> append_request(const std::shared_ptr<MessageSet>& set, const char* type,
                                      Request request, const std::vector<Field>& fields) {
  const std::size_t index = set->requests.requests.size();
  set->requests.requests.push_back(std::move(request));
  set->record["requests"].push_back({{"type", type}, {"set", json::array()}});
  ComPtr<DispatchObject> object = DispatchObject::create();
  std::vector<std::pair<std::wstring, ComPtr<DispatchObject>>> holders;
  for (const Field& field : fields) {
    DispatchObject& holder =
        field.holder == nullptr ? *object.Get() : holder_at(*object.Get(), field.holder, holders);
    holder.child(field.name, field_object(set, index, field));
  }
  return object;
}

template <class Typed>
Typed& as(Request& request) {
  return std::get<Typed>(request);
}

std::vector<Field> payroll_item_query_fields() {
  return {{L"ORListQuery.ListFilter", L"MaxReturned", 1,
           [](const Arguments& arguments, Request& typed) {
             as<PayrollItemWageQuery>(typed).max_returned = arguments.integer(0);
           }}};
}

std::vector<Field> employee_fields() {
  return {
      {nullptr, L"FirstName", 1,
       [](const Arguments& arguments, Request& typed) {
         as<EmployeeAdd>(typed).first_name = arguments.text(0);
       }},
      {nullptr, L"MiddleName", 1,
       [](const Arguments& arguments, Request& typed) {
         as<EmployeeAdd>(typed).middle_name = arguments.text(0);
       }},
      {nullptr, L"LastName", 1,
       [](const Arguments& arguments, Request& typed) {
         as<EmployeeAdd>(typed).last_name = arguments.text(0);
       }},
  };
}

std::vector<Field> time_entry_fields() {
  return {
      {L"EntityRef", L"FullName", 1,
       [](const Arguments& arguments, Request& typed) {
         as<TimeTrackingAdd>(typed).entity_full_name = arguments.text(0);
       }},
      // SetValue(hours, minutes, seconds, isNegative).
      {nullptr, L"Duration", 4,
       [](const Arguments& arguments, Request& typed) {
         Duration& duration = as<TimeTrackingAdd>(typed).duration;
         duration.hours = arguments.integer(0);
         duration.minutes = arguments.integer(1);
         duration.seconds = arguments.integer(2);
         if (arguments.boolean(3)) duration.hours = -duration.hours;
       }},
      {nullptr, L"TxnDate", 1,
       [](const Arguments& arguments, Request& typed) {
         as<TimeTrackingAdd>(typed).txn_date = Date{arguments.date(0)};
       }},
      {L"PayrollItemWageRef", L"FullName", 1,
       [](const Arguments& arguments, Request& typed) {
         as<TimeTrackingAdd>(typed).payroll_item_wage_full_name = arguments.text(0);
       }},
      {nullptr, L"IsBillable", 1,
       [](const Arguments& arguments, Request& typed) {
         as<TimeTrackingAdd>(typed).is_billable = arguments.boolean(0);
       }},
      {nullptr, L"Notes", 1,
       [](const Arguments& arguments, Request& typed) {
         as<TimeTrackingAdd>(typed).notes = arguments.text(0);
       }},
  };
}

std::optional<TimeTrackingField> time_entry_field(const std::string& path) {
  if (path == "EntityRef.FullName") return TimeTrackingField::EntityRef;
  if (path == "Duration") return TimeTrackingField::Duration;
  if (path == "TxnDate") return TimeTrackingField::TxnDate;
  if (path == "PayrollItemWageRef.FullName") return TimeTrackingField::PayrollItemWageRef;
  if (path == "IsBillable") return TimeTrackingField::IsBillable;
  if (path == "Notes") return TimeTrackingField::Notes;
  return std::nullopt;
}

// The order a time entry's fields were first set in, the fields never set after them.
TimeTrackingFieldOrder order_set(const json& calls) {
  std::vector<TimeTrackingField> order;
  auto note = [&](TimeTrackingField field) {
    if (std::find(order.begin(), order.end(), field) == order.end()) order.push_back(field);
  };
  for (const json& call : calls)
    if (auto field = time_entry_field(call.at(0).get<std::string>())) note(*field);
  for (TimeTrackingField field : kDayEntryFieldOrder) note(field);
  TimeTrackingFieldOrder result{};
  std::copy(order.begin(), order.end(), result.begin());
  return result;
}

}  // namespace

RequestSet MessageSet::to_send() const {
  RequestSet sent = requests;
  for (std::size_t index = 0; index < sent.requests.size(); ++index)
    if (auto* entry = std::get_if<TimeTrackingAdd>(&sent.requests[index]))
      entry->field_order = order_set(record["requests"][index]["set"]);
  return sent;
}

ComPtr<DispatchObject> make_message_set(std::int32_t major, std::int32_t minor) {
  auto set = std::make_shared<MessageSet>();
  set->requests.major_version = major;
  set->requests.minor_version = minor;
  set->record = {
      {"version", version_text(major, minor)}, {"onError", nullptr}, {"requests", json::array()}};

  ComPtr<DispatchObject> attributes = DispatchObject::create();
  attributes->on_put(L"OnError", [set](const Arguments& arguments, VARIANT*) {
    arguments.expect(1);
    const std::int32_t value = arguments.integer(0);
    set->requests.on_error = static_cast<OnError>(value);
    set->record["onError"] = value;
  });
  attributes->on(L"OnError", [set](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_integer(result, static_cast<std::int32_t>(set->requests.on_error));
  });

  ComPtr<DispatchObject> object = DispatchObject::create();
  object->payload = set;
  object->child(L"Attributes", attributes);
  object->on(L"AppendPayrollItemWageQueryRq", [set](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_object(result, append_request(set, "PayrollItemWageQuery", PayrollItemWageQuery{},
                                         payroll_item_query_fields())
                              .Get());
  });
  object->on(L"AppendEmployeeQueryRq", [set](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_object(result, append_request(set, "EmployeeQuery", EmployeeQuery{}, {}).Get());
  });
  object->on(L"AppendEmployeeAddRq", [set](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_object(result,
                  append_request(set, "EmployeeAdd", EmployeeAdd{}, employee_fields()).Get());
  });
  object->on(L"AppendTimeTrackingAddRq", [set](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_object(
        result,
        append_request(set, "TimeTrackingAdd", TimeTrackingAdd{}, time_entry_fields()).Get());
  });
  return object;
}

std::shared_ptr<MessageSet> message_set_of(IDispatch* object) {
  DispatchObject* ours = DispatchObject::from(object);
  if (ours == nullptr) return nullptr;
  return std::static_pointer_cast<MessageSet>(ours->payload);
}

}  // namespace zorvat::qbsim
