#include "dispatch_object.h"

#include "zorvat/error.h"

namespace zorvat::qbsim {
namespace {

// {B6DCBC45-F028-4DDD-9B80-0C5066671340}: asks an object whether it is one of ours.
constexpr IID kDispatchObjectIid = {
    0xb6dcbc45, 0xf028, 0x4ddd, {0x9b, 0x80, 0x0c, 0x50, 0x66, 0x67, 0x13, 0x40}};

constexpr long kWrongArgumentCount = 450;

LONG objects_alive = 0;

std::wstring upper(std::wstring text) {
  CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
  return text;
}

// The value converted to `type`; 13 Type mismatch when it cannot be.
com::unique_variant converted(const VARIANT& value, VARTYPE type) {
  com::unique_variant result;
  if (FAILED(VariantChangeType(result.addressof(), const_cast<VARIANT*>(&value), 0, type)))
    raise_runtime(rt::kTypeMismatch);
  return result;
}

HRESULT report(const Error& error, EXCEPINFO* exception) {
  const HRESULT code = error.number() < 0
                           ? static_cast<HRESULT>(error.number())
                           : MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, error.number());
  if (exception == nullptr) return code;
  *exception = EXCEPINFO{};
  exception->scode = code;
  exception->bstrSource = com::make_bstr(error.source());
  exception->bstrDescription = com::make_bstr(error.description());
  return DISP_E_EXCEPTION;
}

}  // namespace

Arguments::Arguments(const DISPPARAMS& parameters) {
  // DISPPARAMS hold the arguments last first; named ones (a property write's value)
  // come first and are the only ones a write has.
  for (UINT index = parameters.cArgs; index > 0; --index) {
    const VARIANT* value = &parameters.rgvarg[index - 1];
    if (V_VT(value) == (VT_VARIANT | VT_BYREF)) value = V_VARIANTREF(value);
    values_.push_back(value);
  }
}

void Arguments::expect(std::size_t count) const {
  if (values_.size() != count)
    raise(kWrongArgumentCount, kComponentSource,
          "Wrong number of arguments or invalid property assignment");
}

std::string Arguments::text(std::size_t index) const {
  const com::unique_variant value = converted((*this)[index], VT_BSTR);
  return com::bstr_to_utf8(V_BSTR(&value));
}

std::int32_t Arguments::integer(std::size_t index) const {
  const com::unique_variant value = converted((*this)[index], VT_I4);
  return V_I4(&value);
}

bool Arguments::boolean(std::size_t index) const {
  const com::unique_variant value = converted((*this)[index], VT_BOOL);
  return V_BOOL(&value) != VARIANT_FALSE;
}

double Arguments::date(std::size_t index) const {
  const com::unique_variant value = converted((*this)[index], VT_DATE);
  return V_DATE(&value);
}

IDispatch* Arguments::object(std::size_t index) const {
  const VARIANT& value = (*this)[index];
  if (V_VT(&value) == VT_DISPATCH) return V_DISPATCH(&value);
  if (V_VT(&value) == (VT_DISPATCH | VT_BYREF)) return *V_DISPATCHREF(&value);
  raise_runtime(rt::kTypeMismatch);
}

void return_text(VARIANT* result, std::string_view text) {
  if (result == nullptr) return;
  V_VT(result) = VT_BSTR;
  V_BSTR(result) = com::make_bstr(text);
}

void return_integer(VARIANT* result, std::int32_t value) {
  if (result == nullptr) return;
  V_VT(result) = VT_I4;
  V_I4(result) = value;
}

void return_object(VARIANT* result, IDispatch* object) {
  if (result == nullptr) return;
  V_VT(result) = VT_DISPATCH;
  V_DISPATCH(result) = object;
  if (object != nullptr) object->AddRef();
}

ComPtr<DispatchObject> DispatchObject::create() {
  ComPtr<DispatchObject> object;
  object.Attach(new DispatchObject());
  InterlockedIncrement(&objects_alive);
  return object;
}

DispatchObject::Member& DispatchObject::member(std::wstring name) {
  name = upper(std::move(name));
  for (Member& existing : members_)
    if (existing.upper_name == name) return existing;
  return members_.emplace_back(Member{std::move(name), nullptr, nullptr});
}

DispatchObject& DispatchObject::on(std::wstring name, Handler handler) {
  member(std::move(name)).read = std::move(handler);
  return *this;
}

DispatchObject& DispatchObject::on_put(std::wstring name, Handler handler) {
  member(std::move(name)).write = std::move(handler);
  return *this;
}

DispatchObject& DispatchObject::child(std::wstring name, ComPtr<IDispatch> object) {
  return on(std::move(name), [object](const Arguments& arguments, VARIANT* result) {
    arguments.expect(0);
    return_object(result, object.Get());
  });
}

DispatchObject* DispatchObject::from(IDispatch* object) {
  if (object == nullptr) return nullptr;
  void* ours = nullptr;
  if (FAILED(object->QueryInterface(kDispatchObjectIid, &ours))) return nullptr;
  // Not AddRef'ed: the caller holds the object through `object`.
  return static_cast<DispatchObject*>(ours);
}

HRESULT DispatchObject::QueryInterface(REFIID iid, void** object) {
  if (object == nullptr) return E_POINTER;
  if (IsEqualIID(iid, kDispatchObjectIid)) {
    *object = this;
    return S_OK;
  }
  if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch)) {
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

ULONG DispatchObject::AddRef() {
  return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG DispatchObject::Release() {
  const LONG left = InterlockedDecrement(&references_);
  if (left == 0) {
    delete this;
    InterlockedDecrement(&objects_alive);
  }
  return static_cast<ULONG>(left);
}

HRESULT DispatchObject::GetTypeInfoCount(UINT* count) {
  if (count == nullptr) return E_POINTER;
  *count = 0;
  return S_OK;
}

HRESULT DispatchObject::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
  if (info != nullptr) *info = nullptr;
  return DISP_E_BADINDEX;
}

HRESULT DispatchObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
  for (UINT index = 0; index < count; ++index) ids[index] = DISPID_UNKNOWN;
  const std::wstring name = upper(names[0]);
  for (std::size_t index = 0; index < members_.size(); ++index) {
    if (members_[index].upper_name == name) {
      ids[0] = static_cast<DISPID>(index + 1);
      return count == 1 ? S_OK : DISP_E_UNKNOWNNAME;
    }
  }
  return DISP_E_UNKNOWNNAME;
}

HRESULT DispatchObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                               VARIANT* result, EXCEPINFO* exception, UINT*) {
  if (id < 1 || static_cast<std::size_t>(id) > members_.size()) return DISP_E_MEMBERNOTFOUND;
  const Member& called = members_[static_cast<std::size_t>(id - 1)];
  const bool write = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  const Handler& handler = write ? called.write : called.read;
  if (!handler) return DISP_E_MEMBERNOTFOUND;
  if (result != nullptr) VariantInit(result);
  static const DISPPARAMS no_arguments{nullptr, nullptr, 0, 0};
  try {
    // Keeps the object alive while its own handler runs.
    ComPtr<DispatchObject> self(this);
    handler(Arguments(parameters != nullptr ? *parameters : no_arguments), result);
    return S_OK;
  } catch (const Error& error) {
    if (result != nullptr) VariantClear(result);
    return report(error, exception);
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_UNEXPECTED;
  }
}

LONG live_objects() {
  return objects_alive;
}

}  // namespace zorvat::qbsim
