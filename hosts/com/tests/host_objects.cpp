#include "host_objects.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace zorvat::com::testing {
namespace {

long long total_reads = 0;
long long total_name_lookups = 0;

// Every property name the host knows, upper case; a name's DISPID is its index + 1.
std::vector<std::wstring>& known_names() {
  static std::vector<std::wstring> names;
  return names;
}

constexpr DISPID kCountId = 100000;

DISPID name_id(const std::wstring& upper_name, bool add) {
  std::vector<std::wstring>& names = known_names();
  for (std::size_t index = 0; index < names.size(); ++index)
    if (names[index] == upper_name) return static_cast<DISPID>(index + 1);
  if (!add) return DISPID_UNKNOWN;
  names.push_back(upper_name);
  return static_cast<DISPID>(names.size());
}

bool is_absent(const VARIANT& value) {
  return V_VT(&value) == VT_ERROR && V_ERROR(&value) == DISP_E_PARAMNOTFOUND;
}

std::wstring upper(const wchar_t* text) {
  std::wstring result(text);
  CharUpperBuffW(result.data(), static_cast<DWORD>(result.size()));
  return result;
}

// A for-each over a collection's elements (shared with the collection).
class HostEnumerator final : public IEnumVARIANT {
 public:
  HostEnumerator(std::shared_ptr<std::vector<VARIANT>> elements, std::size_t position)
      : elements_(std::move(elements)), position_(position) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IEnumVARIANT)) {
      *object = static_cast<IEnumVARIANT*>(this);
      AddRef();
      return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
  }
  ULONG STDMETHODCALLTYPE Release() override {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
  }
  HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* values, ULONG* fetched) override {
    ULONG done = 0;
    while (done < count && position_ < elements_->size()) {
      VariantInit(&values[done]);
      VariantCopy(&values[done], &(*elements_)[position_++]);
      ++done;
    }
    if (fetched != nullptr) *fetched = done;
    return done == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    position_ += count;
    return position_ <= elements_->size() ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    position_ = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** copy) override {
    *copy = new HostEnumerator(elements_, position_);
    return S_OK;
  }

 private:
  ~HostEnumerator() = default;
  LONG references_ = 1;
  std::shared_ptr<std::vector<VARIANT>> elements_;
  std::size_t position_;
};

void free_all(std::vector<VARIANT>& values) {
  for (VARIANT& value : values) VariantClear(&value);
}

}  // namespace

HostObject::HostObject()
    : elements_(new std::vector<VARIANT>(), [](std::vector<VARIANT>* values) {
        free_all(*values);
        delete values;
      }) {}

HostObject::~HostObject() {
  free_all(values_);
}

long long HostObject::reads() {
  return total_reads;
}

long long HostObject::name_lookups() {
  return total_name_lookups;
}

void HostObject::set(const std::wstring& name, VARIANT value) {
  const auto index = static_cast<std::size_t>(name_id(upper(name.c_str()), true) - 1);
  if (values_.size() <= index) {
    VARIANT absent;
    VariantInit(&absent);
    V_VT(&absent) = VT_ERROR;
    V_ERROR(&absent) = DISP_E_PARAMNOTFOUND;
    values_.resize(index + 1, absent);
  }
  VariantClear(&values_[index]);
  values_[index] = value;
}

void HostObject::add_element(VARIANT value) {
  collection_ = true;
  elements_->push_back(value);
}

HRESULT HostObject::QueryInterface(REFIID iid, void** object) {
  if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch)) {
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

ULONG HostObject::AddRef() {
  return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG HostObject::Release() {
  const LONG left = InterlockedDecrement(&references_);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

HRESULT HostObject::GetTypeInfoCount(UINT* count) {
  *count = 0;
  return S_OK;
}

HRESULT HostObject::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
  *info = nullptr;
  return DISP_E_BADINDEX;
}

HRESULT HostObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  HRESULT result = S_OK;
  total_name_lookups += count;
  for (UINT index = 0; index < count; ++index) {
    const std::wstring name = upper(names[index]);
    ids[index] = DISPID_UNKNOWN;
    if (collection_ && name == L"COUNT") {
      ids[index] = kCountId;
      continue;
    }
    const DISPID id = name_id(name, false);
    if (id != DISPID_UNKNOWN && static_cast<std::size_t>(id) <= values_.size() &&
        !is_absent(values_[static_cast<std::size_t>(id - 1)]))
      ids[index] = id;
    else
      result = DISP_E_UNKNOWNNAME;
  }
  return result;
}

HRESULT HostObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                           VARIANT* result, EXCEPINFO* exception, UINT*) {
  if ((flags & (DISPATCH_PROPERTYGET | DISPATCH_METHOD)) == 0) return DISP_E_MEMBERNOTFOUND;
  if (parameters != nullptr && parameters->cArgs != 0) return DISP_E_BADPARAMCOUNT;
  ++total_reads;
  if (id == DISPID_NEWENUM && collection_) {
    if (result == nullptr) return S_OK;
    V_VT(result) = VT_UNKNOWN;
    V_UNKNOWN(result) = new HostEnumerator(elements_, 0);
    return S_OK;
  }
  if (id == kCountId && collection_) {
    if (result == nullptr) return S_OK;
    V_VT(result) = VT_I4;
    V_I4(result) = static_cast<LONG>(elements_->size());
    return S_OK;
  }
  if (id < 1 || static_cast<std::size_t>(id) > values_.size()) return DISP_E_MEMBERNOTFOUND;
  const VARIANT& value = values_[static_cast<std::size_t>(id - 1)];
  if (is_absent(value)) return DISP_E_MEMBERNOTFOUND;
  if (V_VT(&value) == VT_ERROR) {
    // A property whose reading fails on the host's side.
    if (exception != nullptr) {
      *exception = EXCEPINFO{};
      exception->scode = V_ERROR(&value);
      exception->bstrSource = SysAllocString(kFailureSource);
      exception->bstrDescription = SysAllocString(kFailureDescription);
    }
    return DISP_E_EXCEPTION;
  }
  if (result == nullptr) return S_OK;
  return VariantCopy(result, const_cast<VARIANT*>(&value));
}

double iso_date(const std::string& text) {
  int year = 0, month = 0, day = 0;
  if (std::sscanf(text.c_str(), "%d-%d-%d", &year, &month, &day) != 3)
    throw std::runtime_error("not an ISO date: " + text);
  SYSTEMTIME time{};
  time.wYear = static_cast<WORD>(year);
  time.wMonth = static_cast<WORD>(month);
  time.wDay = static_cast<WORD>(day);
  double date = 0.0;
  SystemTimeToVariantTime(&time, &date);
  return date;
}

VARIANT failing_value(HRESULT failure) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_ERROR;
  V_ERROR(&value) = failure;
  return value;
}

VARIANT json_value(const std::string& name, const nlohmann::json& value) {
  VARIANT result;
  VariantInit(&result);
  if (value.is_null()) {
    V_VT(&result) = VT_NULL;
  } else if (value.is_boolean()) {
    V_VT(&result) = VT_BOOL;
    V_BOOL(&result) = value.get<bool>() ? VARIANT_TRUE : VARIANT_FALSE;
  } else if (value.is_number_integer() &&
             value.get<long long>() >= std::numeric_limits<std::int32_t>::min() &&
             value.get<long long>() <= std::numeric_limits<std::int32_t>::max()) {
    V_VT(&result) = VT_I4;
    V_I4(&result) = static_cast<LONG>(value.get<long long>());
  } else if (value.is_number()) {
    const double number = value.get<double>();
    if (std::floor(number) == number && std::fabs(number) <= 2147483647.0) {
      V_VT(&result) = VT_I4;
      V_I4(&result) = static_cast<LONG>(number);
    } else {
      V_VT(&result) = VT_R8;
      V_R8(&result) = number;
    }
  } else if (value.is_string()) {
    const std::string& text = value.get_ref<const std::string&>();
    if (name == "PeriodEnd" || name == "PeriodStart" || name == "DayDate") {
      V_VT(&result) = VT_DATE;
      V_DATE(&result) = iso_date(text);
    } else {
      V_VT(&result) = VT_BSTR;
      V_BSTR(&result) = make_bstr(text);
    }
  } else {
    throw std::runtime_error("unsupported JSON value for " + name);
  }
  return result;
}

namespace {

VARIANT object_variant(HostObject* object) {
  VARIANT result;
  VariantInit(&result);
  V_VT(&result) = VT_DISPATCH;
  V_DISPATCH(&result) = object;  // takes over the creator's reference
  return result;
}

HostObject* make_object(const nlohmann::json& properties);

HostObject* make_list(const nlohmann::json& elements) {
  auto* list = new HostObject();
  list->make_collection();
  for (const nlohmann::json& element : elements)
    list->add_element(object_variant(make_object(element)));
  return list;
}

HostObject* make_object(const nlohmann::json& properties) {
  auto* object = new HostObject();
  for (const auto& [name, value] : properties.items()) {
    if (value.is_array())
      object->set(to_wide(name), object_variant(make_list(value)));
    else
      object->set(to_wide(name), json_value(name, value));
  }
  return object;
}

}  // namespace

ComPtr<IDispatch> make_collection(const nlohmann::json& document) {
  auto* collection = new HostObject();
  collection->make_collection();
  for (const auto& [name, value] : document.items()) {
    if (name == "cards") continue;
    collection->set(to_wide(name), json_value(name, value));
  }
  if (document.contains("cards"))
    for (const nlohmann::json& card : document.at("cards"))
      collection->add_element(object_variant(make_object(card)));
  ComPtr<IDispatch> result;
  result.Attach(collection);
  return result;
}

}  // namespace zorvat::com::testing
