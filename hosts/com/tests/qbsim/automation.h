// The automation base of every qbsim object: IUnknown, and IDispatch answered by the
// type library of qbfc_subset.idl through DispGetIDsOfNames and DispInvoke, so that
// the flags, argument counts and argument types of every late-bound call are checked
// by the platform's type-library dispatcher (ITypeInfo::Invoke) before any member of
// the simulator runs. The one check Wine's dispatcher leaves out, surplus arguments,
// is made here from the same type information, as Windows' dispatcher makes it.
//
// A member fails by raising a zorvat::Error inside `guarded`: the client gets
// DISP_E_EXCEPTION with the number as the EXCEPINFO's scode (a positive number as the
// control facility's code) and the description, as from a server reporting its errors
// through IErrorInfo.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "qbfc_subset.h"
#include "raii.h"
#include "zorvat/error.h"

namespace zorvat::qbsim {

using com::ComPtr;

// qbsim.dll's module handle (its type library is one of its resources).
HINSTANCE server_module();

// The type information of the vtable interface `iid` in qbsim.dll's type library;
// null when the library cannot be loaded.
ITypeInfo* interface_type_info(REFIID iid);

// Objects alive in this server.
LONG live_objects();
void count_object(int change);

// What Windows' dispatcher refuses and Wine's lets go: an argument count the member
// does not take (Wine drops surplus arguments unremarked). DISP_E_BADPARAMCOUNT for
// more arguments than the member has, or fewer than it requires; S_OK otherwise, and
// for a member the type information does not hold (DispInvoke refuses that itself).
HRESULT check_argument_count(ITypeInfo* info, DISPID id, WORD flags, const DISPPARAMS* parameters);

// The error a member raised during the current call, taken by Invoke.
void keep_member_error(const Error& error);
std::optional<Error> take_member_error();

// Runs a member's body; a zorvat::Error becomes the call's failure.
template <class Body>
HRESULT guarded(Body&& body) {
  try {
    std::forward<Body>(body)();
    return S_OK;
  } catch (const Error& error) {
    keep_member_error(error);
    return DISP_E_EXCEPTION;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_UNEXPECTED;
  }
}

// Hands out `object` through an [out, retval] pointer.
template <class Interface, class Object>
void hand_out(Interface** out, const ComPtr<Object>& object) {
  *out = object.Get();
  if (*out != nullptr) (*out)->AddRef();
}

template <class Interface>
class Automation : public Interface {
 public:
  Automation(const Automation&) = delete;
  Automation& operator=(const Automation&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch) ||
        IsEqualIID(iid, __uuidof(Interface))) {
      *object = static_cast<Interface*>(this);
      this->AddRef();
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

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    ITypeInfo* found = interface_type_info(__uuidof(Interface));
    if (found == nullptr) return TYPE_E_ELEMENTNOTFOUND;
    found->AddRef();
    *info = found;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    ITypeInfo* info = interface_type_info(__uuidof(Interface));
    if (info == nullptr) return E_UNEXPECTED;
    return DispGetIDsOfNames(info, names, count, ids);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* exception,
                                   UINT* argument_error) override {
    ITypeInfo* info = interface_type_info(__uuidof(Interface));
    if (info == nullptr) return E_UNEXPECTED;
    // Keeps the object alive while its own member runs.
    ComPtr<Interface> self(static_cast<Interface*>(this));
    take_member_error();
    if (const HRESULT counted = check_argument_count(info, id, flags, parameters); FAILED(counted))
      return counted;
    HRESULT hr = DispInvoke(static_cast<Interface*>(this), info, id, flags, parameters, result,
                            exception, argument_error);
    if (std::optional<Error> error = take_member_error()) hr = report(*error, exception);
    return after_invoke(id, hr, result);
  }

 protected:
  Automation() { count_object(1); }
  virtual ~Automation() { count_object(-1); }

  // A hook on every call's outcome (the session manager hands an array out by
  // reference through it).
  virtual HRESULT after_invoke(DISPID, HRESULT hr, VARIANT*) { return hr; }

 private:
  static HRESULT report(const Error& error, EXCEPINFO* exception) {
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

  LONG references_ = 1;
};

// A new object of class T (its one reference owned by the result).
template <class T, class... Arguments>
ComPtr<T> make(Arguments&&... arguments) {
  ComPtr<T> object;
  object.Attach(new T(std::forward<Arguments>(arguments)...));
  return object;
}

// The class factory of one of qbsim.dll's classes: `create` makes a new object and hands
// out its interface `iid` (QueryInterface's result). The factories live as long as the
// process, so their reference count is not kept; aggregation is refused.
class ClassFactory final : public IClassFactory {
 public:
  using Create = std::function<HRESULT(REFIID iid, void** object)>;
  explicit ClassFactory(Create create) : create_(std::move(create)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  Create create_;
};

}  // namespace zorvat::qbsim
