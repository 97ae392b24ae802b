#include "responses.h"

#include "zorvat/error.h"

namespace zorvat::qbsim {
namespace {

using namespace quickbooks;

// A list object: Count and GetAt(index).
ComPtr<DispatchObject> make_list(std::vector<ComPtr<IDispatch>> elements) {
  ComPtr<DispatchObject> list = DispatchObject::create();
  const auto shared = std::make_shared<std::vector<ComPtr<IDispatch>>>(std::move(elements));
  list->on(L"Count", [shared](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_integer(result, static_cast<std::int32_t>(shared->size()));
  });
  list->on(L"GetAt", [shared](const Arguments& arguments, VARIANT* result) {
    arguments.expect(1);
    const std::int32_t index = arguments.integer(0);
    if (index < 0 || static_cast<std::size_t>(index) >= shared->size())
      raise_runtime(rt::kSubscriptOutOfRange);
    return_object(result, (*shared)[static_cast<std::size_t>(index)].Get());
  });
  return list;
}

// A value of the object model: GetValue returns it.
ComPtr<DispatchObject> make_text_value(const std::string& text) {
  ComPtr<DispatchObject> value = DispatchObject::create();
  value->on(L"GetValue", [text](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_text(result, text);
  });
  return value;
}

ComPtr<IDispatch> make_returned(const ReturnedObject& returned, bool named) {
  ComPtr<DispatchObject> object = DispatchObject::create();
  if (named) object->child(L"Name", make_text_value(returned.name));
  return object;
}

ComPtr<IDispatch> make_detail(const Request& request, const Response& response) {
  if (!response.detail) return nullptr;
  const bool query = std::holds_alternative<PayrollItemWageQuery>(request) ||
                     std::holds_alternative<EmployeeQuery>(request);
  const bool named = !std::holds_alternative<TimeTrackingAdd>(request);
  if (!query && response.detail->size() == 1) return make_returned(response.detail->front(), named);
  std::vector<ComPtr<IDispatch>> elements;
  for (const ReturnedObject& returned : *response.detail)
    elements.push_back(make_returned(returned, named));
  return make_list(std::move(elements));
}

ComPtr<IDispatch> make_response(const Request* request, const Response& response) {
  ComPtr<DispatchObject> object = DispatchObject::create();
  object->on(L"StatusCode",
             [code = response.status_code](const Arguments& arguments, VARIANT* result) {
               arguments.expect(0);
               return_integer(result, code);
             });
  object->on(L"StatusSeverity",
             [text = response.status_severity](const Arguments& arguments, VARIANT* result) {
               arguments.expect(0);
               return_text(result, text);
             });
  object->on(L"StatusMessage",
             [text = response.status_message](const Arguments& arguments, VARIANT* result) {
               arguments.expect(0);
               return_text(result, text);
             });
  ComPtr<IDispatch> detail =
      request != nullptr ? make_detail(*request, response) : ComPtr<IDispatch>();
  object->on(L"Detail", [detail](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_object(result, detail.Get());
  });
  return object;
}

}  // namespace

ComPtr<DispatchObject> make_response_set(const RequestSet& requests, const ResponseSet& responses) {
  std::vector<ComPtr<IDispatch>> list;
  for (std::size_t index = 0; index < responses.responses.size(); ++index) {
    const Request* request = index < requests.requests.size() ? &requests.requests[index] : nullptr;
    list.push_back(make_response(request, responses.responses[index]));
  }
  ComPtr<DispatchObject> set = DispatchObject::create();
  set->child(L"ResponseList", make_list(std::move(list)));
  return set;
}

}  // namespace zorvat::qbsim
