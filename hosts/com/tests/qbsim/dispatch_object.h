// A late-bound object built from a table of members: each name (matched without
// regard to case) has a handler for reads and calls and, for a writable property, one
// for writes. Enough to stand in for an object model that clients reach only through
// IDispatch::GetIDsOfNames and Invoke.
//
// A handler raises a zorvat::Error to fail the call: the client gets
// DISP_E_EXCEPTION with the number as the EXCEPINFO's scode (a positive number as the
// control facility's code) and the description.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "raii.h"

namespace zorvat::qbsim {

using com::ComPtr;

// The arguments of one call, in the member's order (by-reference ones followed).
class Arguments {
 public:
  explicit Arguments(const DISPPARAMS& parameters);

  std::size_t size() const { return values_.size(); }
  const VARIANT& operator[](std::size_t index) const { return *values_.at(index); }
  // Raises 450 "Wrong number of arguments" unless there are exactly `count`.
  void expect(std::size_t count) const;

  // Conversions as a late-bound callee makes them; 13 Type mismatch when impossible.
  std::string text(std::size_t index) const;
  std::int32_t integer(std::size_t index) const;
  bool boolean(std::size_t index) const;
  double date(std::size_t index) const;
  IDispatch* object(std::size_t index) const;  // null for Nothing

 private:
  std::vector<const VARIANT*> values_;
};

// Results a handler hands back.
void return_text(VARIANT* result, std::string_view text);
void return_integer(VARIANT* result, std::int32_t value);
void return_object(VARIANT* result, IDispatch* object);  // null: Nothing

class DispatchObject final : public IDispatch {
 public:
  using Handler = std::function<void(const Arguments&, VARIANT* result)>;

  static ComPtr<DispatchObject> create();

  // A method, or a property that is read.
  DispatchObject& on(std::wstring name, Handler handler);
  // The write of a property; the value is argument 0.
  DispatchObject& on_put(std::wstring name, Handler handler);
  // A property that returns the same child object on every read.
  DispatchObject& child(std::wstring name, ComPtr<IDispatch> object);

  // The payload an owner keeps with the object; `from` finds the object again behind
  // an IDispatch a client hands back (null for a foreign object).
  std::shared_ptr<void> payload;
  static DispatchObject* from(IDispatch* object);

  // IUnknown
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  // IDispatch
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) override;
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* exception,
                                   UINT* argument_error) override;

 private:
  DispatchObject() = default;
  ~DispatchObject() = default;

  struct Member {
    std::wstring upper_name;
    Handler read;
    Handler write;
  };
  Member& member(std::wstring name);

  LONG references_ = 1;
  std::vector<Member> members_;
};

// Objects alive in this server (DllCanUnloadNow).
LONG live_objects();

}  // namespace zorvat::qbsim
