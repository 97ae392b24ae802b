// The COM object behind each creatable class: one export class of the framework
// behind the class's dual interface.
//
// The object implements IUnknown, IDispatch through the type library (names and
// DISPIDs are the library's, calls reach the vtable through ITypeInfo::Invoke) and
// ISupportErrorInfo. Every member runs under `guard`: an error the class raises is
// handed to the client as error info with the control-facility code 0x800A0000 +
// number, which ITypeInfo::Invoke reports as DISP_E_EXCEPTION with that number,
// source and description. No exception leaves a member.
//
// A class plugs in by naming its interface and its framework class:
//   ExportObject<_Generic, formats::Generic>       slots 1-6 (Title ... Setup)
//   SetupCheckedObject<_ADP7, formats::ADP7>       + ValidateSetupData(psSetup)
// and a class with a member of its own adds it in a small derived class.
#pragma once

#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "dispatch_view.h"
#include "raii.h"
#include "win32/calendar_setting.h"
#include "win32_services.h"
#include "zorvat/date.h"
#include "zorvat/error.h"

namespace zorvat::com {

// Objects and LockServer calls alive in this server (DllCanUnloadNow).
void lock_server() noexcept;
void unlock_server() noexcept;

// The type information of one of the library's interfaces (cached; not AddRef'ed).
HRESULT interface_type_info(REFIID iid, ITypeInfo** info) noexcept;

// Sets the error info of a raised error and returns the code for the client.
HRESULT report_error(REFIID iid, long number, const std::string& source,
                     const std::string& description) noexcept;

template <class Interface, class Impl>
class ExportObject : public Interface, public ISupportErrorInfo {
 public:
  ExportObject() : impl_(server_context()) { lock_server(); }
  virtual ~ExportObject() { unlock_server(); }
  ExportObject(const ExportObject&) = delete;
  ExportObject& operator=(const ExportObject&) = delete;

  // IUnknown
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch) ||
        IsEqualIID(iid, __uuidof(Interface))) {
      *object = static_cast<Interface*>(this);
    } else if (IsEqualIID(iid, IID_ISupportErrorInfo)) {
      *object = static_cast<ISupportErrorInfo*>(this);
    } else {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
  }
  ULONG STDMETHODCALLTYPE Release() override {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
  }

  // IDispatch
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    const HRESULT hr = interface_type_info(__uuidof(Interface), info);
    if (SUCCEEDED(hr)) (*info)->AddRef();
    return hr;
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    ITypeInfo* info = nullptr;
    const HRESULT hr = interface_type_info(__uuidof(Interface), &info);
    if (FAILED(hr)) return hr;
    return DispGetIDsOfNames(info, names, count, ids);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* exception,
                                   UINT* argument_error) override {
    if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    ITypeInfo* info = nullptr;
    const HRESULT hr = interface_type_info(__uuidof(Interface), &info);
    if (FAILED(hr)) return hr;
    return info->Invoke(static_cast<Interface*>(this), id, flags, parameters, result, exception,
                        argument_error);
  }

  // ISupportErrorInfo
  HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
    return IsEqualIID(iid, __uuidof(Interface)) || IsEqualIID(iid, IID_IDispatch) ? S_OK : S_FALSE;
  }

  // Title: a data member with no code behind it.
  HRESULT STDMETHODCALLTYPE get_Title(BSTR* value) override { return get_text(value, impl_.Title); }
  HRESULT STDMETHODCALLTYPE put_Title(BSTR value) override {
    return guard("Title", [&] { impl_.Title = bstr_to_utf8(value); });
  }

  // SetupData: get returns a copy, let stores a copy; nothing is checked.
  HRESULT STDMETHODCALLTYPE get_SetupData(BSTR* value) override {
    return get_text(value, impl_.SetupData());
  }
  HRESULT STDMETHODCALLTYPE put_SetupData(BSTR value) override {
    return guard("SetupData", [&] { impl_.SetupData(bstr_to_utf8(value)); });
  }

  HRESULT STDMETHODCALLTYPE Execute(IDispatch* pcTimeCards, VARIANT_BOOL* result) override {
    if (result == nullptr) return E_POINTER;
    *result = VARIANT_FALSE;
    return guard("Execute", [&] {
      // A fresh member cache per export: each name is resolved once in it.
      const Variant cards = wrap_dispatch(pcTimeCards, std::make_shared<MemberCache>());
      *result = impl_.Execute(cards) ? VARIANT_TRUE : VARIANT_FALSE;
    });
  }

  HRESULT STDMETHODCALLTYPE Setup(VARIANT_BOOL* result) override {
    if (result == nullptr) return E_POINTER;
    *result = VARIANT_FALSE;
    return guard("Setup", [&] { *result = impl_.Setup() ? VARIANT_TRUE : VARIANT_FALSE; });
  }

 protected:
  Impl& impl() { return impl_; }

  // Runs a member's body; whatever it raises goes to the client as error info. An
  // error not raised under one of the class's own handlers takes the member's source.
  //
  // Two-digit years are read through the user's calendar setting as it is when the
  // call begins, as OLE Automation reads it: a change of the setting holds from the
  // next call on, without loading the DLL again.
  template <class Body>
  HRESULT guard(std::string_view member, Body&& body) noexcept {
    try {
      set_two_digit_year_max(win32::users_two_digit_year_max());
      std::forward<Body>(body)();
      return S_OK;
    } catch (const Error& error) {
      std::string source = error.source();
      if (source == kComponentSource) source = member_source(member);
      return report_error(__uuidof(Interface), error.number(), source, error.description());
    } catch (const std::bad_alloc&) {
      return report_error(__uuidof(Interface), rt::kOutOfMemory, member_source(member),
                          std::string(runtime_error_text(rt::kOutOfMemory)));
    } catch (...) {
      return report_error(__uuidof(Interface), rt::kInternalError, member_source(member),
                          std::string(runtime_error_text(rt::kInternalError)));
    }
  }

 private:
  std::string member_source(std::string_view member) const {
    std::string source = impl_.prog_id();
    source += '.';
    source += member;
    return source;
  }

  static HRESULT get_text(BSTR* value, const std::string& text) noexcept {
    if (value == nullptr) return E_POINTER;
    try {
      *value = make_bstr(text);
    } catch (...) {
      *value = nullptr;
    }
    return *value != nullptr ? S_OK : E_OUTOFMEMORY;
  }

  LONG references_ = 1;
  Impl impl_;
};

// The classes whose check method is ValidateSetupData(psSetup).
template <class Interface, class Impl>
class SetupCheckedObject : public ExportObject<Interface, Impl> {
 public:
  HRESULT STDMETHODCALLTYPE ValidateSetupData(BSTR psSetup) override {
    return this->guard("ValidateSetupData",
                       [&] { this->impl().ValidateSetupData(bstr_to_utf8(psSetup)); });
  }
};

}  // namespace zorvat::com
