#include "responses.h"

#include <vector>

#include "fields.h"

namespace zorvat::qbsim {
namespace {

using namespace quickbooks;

// A returned object that carries a Name (IEmployeeRet, IPayrollItemWageRet).
template <class Interface>
class NamedRet final : public Automation<Interface> {
 public:
  explicit NamedRet(const std::string& name) : name_(make<StringField>(name)) {}
  HRESULT STDMETHODCALLTYPE get_Name(IQBStringType** name) override {
    hand_out(name, name_);
    return S_OK;
  }

 private:
  ComPtr<StringField> name_;
};

class TimeTrackingRet final : public Automation<ITimeTrackingRet> {
 public:
  explicit TimeTrackingRet(double date) : date_(make<DateField>(nullptr)) { date_->SetValue(date); }
  HRESULT STDMETHODCALLTYPE get_TxnDate(IQBDateType** date) override {
    hand_out(date, date_);
    return S_OK;
  }

 private:
  ComPtr<DateField> date_;
};

// A list of returned objects: Count and GetAt(index).
template <class ListInterface, class ElementInterface>
class RetList final : public Automation<ListInterface> {
 public:
  explicit RetList(std::vector<ComPtr<ElementInterface>> elements)
      : elements_(std::move(elements)) {}
  HRESULT STDMETHODCALLTYPE get_Count(LONG* count) override {
    *count = static_cast<LONG>(elements_.size());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetAt(LONG index, ElementInterface** element) override {
    return guarded([&] {
      if (index < 0 || static_cast<std::size_t>(index) >= elements_.size())
        raise_runtime(rt::kSubscriptOutOfRange);
      hand_out(element, elements_[static_cast<std::size_t>(index)]);
    });
  }

 private:
  std::vector<ComPtr<ElementInterface>> elements_;
};

template <class RetInterface, class ListInterface>
ComPtr<IDispatch> named_detail(const std::vector<ReturnedObject>& objects, bool query) {
  std::vector<ComPtr<RetInterface>> rets;
  for (const ReturnedObject& object : objects)
    rets.push_back(make<NamedRet<RetInterface>>(object.name));
  if (!query && rets.size() == 1) return ComPtr<IDispatch>(rets.front().Get());
  return ComPtr<IDispatch>(make<RetList<ListInterface, RetInterface>>(std::move(rets)).Get());
}

ComPtr<IDispatch> make_detail(const Request& request, const Response& response) {
  if (!response.detail) return nullptr;
  if (std::holds_alternative<PayrollItemWageQuery>(request))
    return named_detail<IPayrollItemWageRet, IPayrollItemWageRetList>(*response.detail, true);
  if (std::holds_alternative<EmployeeQuery>(request))
    return named_detail<IEmployeeRet, IEmployeeRetList>(*response.detail, true);
  if (std::holds_alternative<EmployeeAdd>(request))
    return named_detail<IEmployeeRet, IEmployeeRetList>(*response.detail, false);
  return ComPtr<IDispatch>(
      make<TimeTrackingRet>(std::get<TimeTrackingAdd>(request).txn_date.serial).Get());
}

class ResponseObject final : public Automation<IResponse> {
 public:
  ResponseObject(Response response, ComPtr<IDispatch> detail)
      : response_(std::move(response)), detail_(std::move(detail)) {}
  HRESULT STDMETHODCALLTYPE get_StatusCode(LONG* code) override {
    *code = response_.status_code;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_StatusSeverity(BSTR* severity) override {
    *severity = com::make_bstr(response_.status_severity);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_StatusMessage(BSTR* message) override {
    *message = com::make_bstr(response_.status_message);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Detail(IDispatch** detail) override {
    hand_out(detail, detail_);
    return S_OK;
  }

 private:
  Response response_;
  ComPtr<IDispatch> detail_;
};

class MsgSetResponse final : public Automation<IMsgSetResponse> {
 public:
  explicit MsgSetResponse(ComPtr<IResponseList> list) : list_(std::move(list)) {}
  HRESULT STDMETHODCALLTYPE get_ResponseList(IResponseList** list) override {
    hand_out(list, list_);
    return S_OK;
  }

 private:
  ComPtr<IResponseList> list_;
};

}  // namespace

ComPtr<IMsgSetResponse> make_response_set(const RequestSet& requests,
                                          const ResponseSet& responses) {
  std::vector<ComPtr<IResponse>> list;
  for (std::size_t index = 0; index < responses.responses.size(); ++index) {
    const Response& response = responses.responses[index];
    ComPtr<IDispatch> detail = index < requests.requests.size()
                                   ? make_detail(requests.requests[index], response)
                                   : ComPtr<IDispatch>();
    list.push_back(make<ResponseObject>(response, std::move(detail)));
  }
  ComPtr<IResponseList> response_list = make<RetList<IResponseList, IResponse>>(std::move(list));
  return make<MsgSetResponse>(std::move(response_list));
}

}  // namespace zorvat::qbsim
