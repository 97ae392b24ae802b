#include "dispatch_view.h"

#include <cstdint>
#include <limits>

#include "zorvat/error.h"

namespace zorvat::com {
namespace {

constexpr WORD kReadFlags = DISPATCH_PROPERTYGET | DISPATCH_METHOD;

class DispatchEnumerator final : public Enumerator {
 public:
  DispatchEnumerator(ComPtr<IEnumVARIANT> enumerator, std::shared_ptr<MemberCache> cache)
      : enumerator_(std::move(enumerator)), cache_(std::move(cache)) {}

  bool next(Variant& element) override {
    unique_variant value;
    ULONG fetched = 0;
    const HRESULT hr = enumerator_->Next(1, value.addressof(), &fetched);
    if (FAILED(hr)) raise_call_failure(hr, nullptr);
    if (hr != S_OK || fetched == 0) return false;
    element = from_variant(value, cache_);
    return true;
  }

 private:
  ComPtr<IEnumVARIANT> enumerator_;
  std::shared_ptr<MemberCache> cache_;
};

class DispatchObject final : public AutomationObject {
 public:
  DispatchObject(ComPtr<IDispatch> object, std::shared_ptr<MemberCache> cache)
      : object_(std::move(object)), cache_(std::move(cache)) {}

  Variant get(std::string_view property) const override {
    MemberCache::Member* member = cache_->find(property);
    if (member == nullptr) member = &cache_->add(property, resolve(property));
    return read_member(*member, property);
  }
  Variant get(const PropertyName& property) const override {
    MemberCache::Member* member = cache_->find(property);
    if (member == nullptr) member = &cache_->add(property, resolve(property.text()));
    return read_member(*member, property.text());
  }

  std::unique_ptr<Enumerator> enumerate() const override {
    unique_variant result;
    unique_excepinfo exception;
    const HRESULT hr = read(DISPID_NEWENUM, result, exception);
    if (FAILED(hr)) raise_call_failure(hr, &exception);
    ComPtr<IUnknown> unknown;
    if (V_VT(&result) == VT_UNKNOWN || V_VT(&result) == VT_DISPATCH) unknown = V_UNKNOWN(&result);
    ComPtr<IEnumVARIANT> enumerator;
    if (!unknown || FAILED(unknown.As(&enumerator))) raise_not_supported();
    return std::make_unique<DispatchEnumerator>(std::move(enumerator), cache_->elements());
  }

  IDispatch* dispatch() const { return object_.Get(); }

 private:
  Variant read_member(MemberCache::Member& member, std::string_view property) const {
    unique_variant result;
    unique_excepinfo exception;
    HRESULT hr = read(member.id, result, exception);
    if (hr == DISP_E_MEMBERNOTFOUND) {
      // This object is not of the class the cache was filled from: ask it directly.
      result.reset();
      hr = read(resolve(property), result, exception);
    }
    if (FAILED(hr)) raise_call_failure(hr, &exception);
    if (V_VT(&result) == VT_DISPATCH || V_VT(&result) == VT_UNKNOWN) {
      if (!member.objects) member.objects = std::make_shared<MemberCache>();
      return from_variant(result, member.objects);
    }
    return from_variant(result, cache_);
  }

  DISPID resolve(std::string_view property) const {
    std::wstring name = to_wide(property);
    LPOLESTR names[] = {name.data()};
    DISPID id = DISPID_UNKNOWN;
    const HRESULT hr = object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(hr)) raise_call_failure(hr, nullptr);
    return id;
  }

  HRESULT read(DISPID id, unique_variant& result, EXCEPINFO& exception) const {
    DISPPARAMS no_arguments{nullptr, nullptr, 0, 0};
    return object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kReadFlags, &no_arguments,
                           result.addressof(), &exception, nullptr);
  }

  ComPtr<IDispatch> object_;
  std::shared_ptr<MemberCache> cache_;
};

[[noreturn]] void raise_type_mismatch() {
  raise_runtime(rt::kTypeMismatch);
}

Variant from_integer(std::int64_t value) {
  if (value >= std::numeric_limits<std::int32_t>::min() &&
      value <= std::numeric_limits<std::int32_t>::max())
    return Variant(static_cast<std::int32_t>(value));
  return Variant(static_cast<double>(value));
}

// The classic number of a standard failure code, or 0 when it has none.
long classic_number(HRESULT failure) {
  switch (failure) {
    case DISP_E_UNKNOWNNAME:
    case DISP_E_MEMBERNOTFOUND:
      return rt::kObjectDoesntSupport;
    case DISP_E_TYPEMISMATCH:
      return rt::kTypeMismatch;
    case DISP_E_OVERFLOW:
      return rt::kOverflow;
    case DISP_E_BADINDEX:
      return rt::kSubscriptOutOfRange;
    case DISP_E_DIVBYZERO:
      return rt::kDivisionByZero;
    case E_OUTOFMEMORY:
      return rt::kOutOfMemory;
    case E_INVALIDARG:
      return rt::kInvalidProcedureCall;
    default:
      if (HRESULT_FACILITY(failure) == FACILITY_CONTROL) return HRESULT_CODE(failure);
      return 0;
  }
}

}  // namespace

MemberCache::Member* MemberCache::find(std::string_view name) {
  for (Member& member : members_)
    if (member.name == name) return &member;
  return nullptr;
}

MemberCache::Member& MemberCache::add(std::string_view name, DISPID id) {
  members_.push_back({std::string(name), id, nullptr});
  return members_.back();
}

MemberCache::Member* MemberCache::find(const PropertyName& name) {
  const std::uint32_t ordinal = name.ordinal();
  if (ordinal < by_ordinal_.size() && by_ordinal_[ordinal] != 0)
    return &members_[by_ordinal_[ordinal] - 1];
  Member* member = find(name.text());
  if (member != nullptr) remember(ordinal, *member);
  return member;
}

MemberCache::Member& MemberCache::add(const PropertyName& name, DISPID id) {
  Member& member = add(name.text(), id);
  remember(name.ordinal(), member);
  return member;
}

void MemberCache::remember(std::uint32_t ordinal, const Member& member) {
  // Declared names are a few dozen constants; past that the name is looked up by text.
  if (ordinal >= kMostOrdinals) return;
  if (ordinal >= by_ordinal_.size()) by_ordinal_.resize(ordinal + 1, 0);
  by_ordinal_[ordinal] = static_cast<std::uint32_t>(&member - members_.data()) + 1;
}

const std::shared_ptr<MemberCache>& MemberCache::elements() {
  if (!elements_) elements_ = std::make_shared<MemberCache>();
  return elements_;
}

Variant wrap_dispatch(IDispatch* object, std::shared_ptr<MemberCache> cache) {
  if (object == nullptr) return Variant(ObjectRef());
  return Variant(ObjectRef(std::make_shared<DispatchObject>(object, std::move(cache))));
}

Variant from_variant(const VARIANT& value, const std::shared_ptr<MemberCache>& cache) {
  VARTYPE type = V_VT(&value);
  if (type & VT_BYREF) {
    if (type == (VT_BYREF | VT_VARIANT)) return from_variant(*V_VARIANTREF(&value), cache);
    unique_variant copy;
    if (FAILED(VariantCopyInd(copy.addressof(), const_cast<VARIANT*>(&value))))
      raise_type_mismatch();
    return from_variant(copy, cache);
  }
  switch (type) {
    case VT_EMPTY:
      return Variant();
    case VT_NULL:
      return Variant::null();
    case VT_I1:
      return Variant(static_cast<std::int32_t>(V_I1(&value)));
    case VT_UI1:
      return Variant(static_cast<std::int32_t>(V_UI1(&value)));
    case VT_I2:
      return Variant(static_cast<std::int32_t>(V_I2(&value)));
    case VT_UI2:
      return Variant(static_cast<std::int32_t>(V_UI2(&value)));
    case VT_I4:
      return Variant(static_cast<std::int32_t>(V_I4(&value)));
    case VT_INT:
      return Variant(static_cast<std::int32_t>(V_INT(&value)));
    case VT_UI4:
      return from_integer(V_UI4(&value));
    case VT_UINT:
      return from_integer(V_UINT(&value));
    case VT_I8:
      return from_integer(V_I8(&value));
    case VT_UI8:
      if (V_UI8(&value) > static_cast<ULONGLONG>(std::numeric_limits<std::int32_t>::max()))
        return Variant(static_cast<double>(V_UI8(&value)));
      return Variant(static_cast<std::int32_t>(V_UI8(&value)));
    case VT_R4:
      return Variant(static_cast<double>(V_R4(&value)));
    case VT_R8:
      return Variant(V_R8(&value));
    case VT_CY:
      return Variant(static_cast<double>(V_CY(&value).int64) / 10000.0);
    case VT_DECIMAL: {
      double number = 0.0;
      DECIMAL decimal = V_DECIMAL(&value);
      if (FAILED(VarR8FromDec(&decimal, &number))) raise_runtime(rt::kOverflow);
      return Variant(number);
    }
    case VT_BOOL:
      return Variant(V_BOOL(&value) != VARIANT_FALSE);
    case VT_BSTR:
      return Variant(bstr_to_utf8(V_BSTR(&value)));
    case VT_DATE:
      return Variant(Date{V_DATE(&value)});
    case VT_DISPATCH:
      return wrap_dispatch(V_DISPATCH(&value), cache);
    case VT_UNKNOWN: {
      if (V_UNKNOWN(&value) == nullptr) return Variant(ObjectRef());
      ComPtr<IDispatch> dispatch;
      if (FAILED(V_UNKNOWN(&value)->QueryInterface(IID_PPV_ARGS(&dispatch)))) raise_type_mismatch();
      return wrap_dispatch(dispatch.Get(), cache);
    }
    default:
      raise_type_mismatch();
  }
}

void to_variant(const Variant& value, VARIANT* target) {
  VariantInit(target);
  switch (value.type()) {
    case Variant::Type::Empty:
      break;
    case Variant::Type::Null:
      V_VT(target) = VT_NULL;
      break;
    case Variant::Type::Boolean:
      V_VT(target) = VT_BOOL;
      V_BOOL(target) = value.as_boolean() ? VARIANT_TRUE : VARIANT_FALSE;
      break;
    case Variant::Type::Long:
      V_VT(target) = VT_I4;
      V_I4(target) = value.as_long();
      break;
    case Variant::Type::Double:
      V_VT(target) = VT_R8;
      V_R8(target) = value.as_double();
      break;
    case Variant::Type::String: {
      BSTR text = make_bstr(value.as_string());
      if (text == nullptr) raise_runtime(rt::kOutOfMemory);
      V_VT(target) = VT_BSTR;
      V_BSTR(target) = text;
      break;
    }
    case Variant::Type::Date:
      V_VT(target) = VT_DATE;
      V_DATE(target) = value.as_date().serial;
      break;
    case Variant::Type::Object: {
      const auto* object = dynamic_cast<const DispatchObject*>(value.as_object().get());
      V_VT(target) = VT_DISPATCH;
      V_DISPATCH(target) = object != nullptr ? object->dispatch() : nullptr;
      if (V_DISPATCH(target) != nullptr) V_DISPATCH(target)->AddRef();
      break;
    }
  }
}

bool same_value(const Variant& a, const Variant& b) {
  if (a.type() != b.type()) return false;
  switch (a.type()) {
    case Variant::Type::Empty:
    case Variant::Type::Null:
      return true;
    case Variant::Type::Boolean:
      return a.as_boolean() == b.as_boolean();
    case Variant::Type::Long:
      return a.as_long() == b.as_long();
    case Variant::Type::Double:
      return a.as_double() == b.as_double();
    case Variant::Type::String:
      return a.as_string() == b.as_string();
    case Variant::Type::Date:
      return a.as_date() == b.as_date();
    case Variant::Type::Object:
      return a.as_object() == b.as_object();
  }
  return false;
}

void raise_call_failure(HRESULT failure, EXCEPINFO* exception) {
  if (failure == DISP_E_EXCEPTION && exception != nullptr) {
    if (exception->pfnDeferredFillIn != nullptr) exception->pfnDeferredFillIn(exception);
    const HRESULT code = exception->scode != 0 ? exception->scode : exception->wCode;
    long number = exception->scode != 0 ? classic_number(exception->scode) : exception->wCode;
    if (number == 0) number = static_cast<long>(code);
    std::string description = bstr_to_utf8(exception->bstrDescription);
    if (description.empty()) description = runtime_error_text(number);
    raise(number, kComponentSource, description);
  }
  const long number = classic_number(failure);
  if (number != 0) raise_runtime(number);
  raise(static_cast<long>(failure), kComponentSource, "Automation error");
}

}  // namespace zorvat::com
