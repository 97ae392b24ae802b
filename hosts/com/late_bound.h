// Late-bound calls through IDispatch, as VB's late binding makes them, shared by the
// QuickBooks back ends that reach the SDK's objects by name (qbfc_session.h,
// request_processor_session.h): the arguments, the calls, and the readers of what they
// return. A failed call raises the callee's error (dispatch_view.h).
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "dispatch_view.h"
#include "raii.h"
#include "zorvat/date.h"
#include "zorvat/error.h"

namespace zorvat::com {

// An argument of a late-bound call.
class Argument {
 public:
  static Argument text(std::string_view value) {
    Argument argument;
    V_VT(&argument.value_) = VT_BSTR;
    V_BSTR(&argument.value_) = make_bstr(value);
    if (V_BSTR(&argument.value_) == nullptr) throw std::bad_alloc();
    return argument;
  }
  static Argument integer(std::int16_t value) {
    Argument argument;
    V_VT(&argument.value_) = VT_I2;
    V_I2(&argument.value_) = value;
    return argument;
  }
  static Argument long_integer(std::int32_t value) {
    Argument argument;
    V_VT(&argument.value_) = VT_I4;
    V_I4(&argument.value_) = value;
    return argument;
  }
  // An integer as the parameter type a type library declares: Integer (VT_I2) or
  // Long (VT_I4); a value the type cannot hold raises 6 Overflow.
  static Argument integer_of_type(VARTYPE type, std::int64_t value) {
    if (type == VT_I2) {
      if (value < INT16_MIN || value > INT16_MAX) raise_runtime(rt::kOverflow);
      return integer(static_cast<std::int16_t>(value));
    }
    if (value < INT32_MIN || value > INT32_MAX) raise_runtime(rt::kOverflow);
    return long_integer(static_cast<std::int32_t>(value));
  }
  static Argument boolean(bool value) {
    Argument argument;
    V_VT(&argument.value_) = VT_BOOL;
    V_BOOL(&argument.value_) = value ? VARIANT_TRUE : VARIANT_FALSE;
    return argument;
  }
  static Argument object(IDispatch* value) {
    Argument argument;
    V_VT(&argument.value_) = VT_DISPATCH;
    V_DISPATCH(&argument.value_) = value;
    if (value != nullptr) value->AddRef();
    return argument;
  }
  static Argument date(const Date& value) {
    Argument argument;
    V_VT(&argument.value_) = VT_DATE;
    V_DATE(&argument.value_) = value.serial;
    return argument;
  }

  const VARIANT& value() const { return value_; }

 private:
  unique_variant value_;
};

// The object a call returned, held by value or by reference; null for Nothing (and
// for Empty, as some callees return it for Nothing). A value that is no object is a
// type mismatch.
ComPtr<IDispatch> dispatch_of(const unique_variant& value);

// An object the caller goes on to use: Nothing raises 91 "Object variable or With
// block variable not set".
ComPtr<IDispatch> as_object(const unique_variant& value);

// One object of the SDK, reached late-bound: each member is looked up by name when it
// is called (a session makes few calls; none is worth a cache).
class LateBound {
 public:
  explicit LateBound(ComPtr<IDispatch> object) : object_(std::move(object)) {}

  // Reads a property or calls a method, as VB's late binding does for both:
  // DISPATCH_METHOD|DISPATCH_PROPERTYGET, arguments in the member's order.
  unique_variant call(const wchar_t* name,
                      std::initializer_list<const Argument*> arguments = {}) const {
    return invoke(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
  }
  // Reads a member that holds an object (a property, or a method without arguments
  // such as Append...Rq); Nothing raises 91.
  LateBound object(const wchar_t* name) const { return LateBound(as_object(call(name))); }
  // Reads a member that may hold Nothing (a response's Detail).
  LateBound maybe_object(const wchar_t* name) const { return LateBound(dispatch_of(call(name))); }
  // Assigns a property: DISPATCH_PROPERTYPUT with the value as the named argument.
  void put(const wchar_t* name, const Argument& value) const {
    VARIANTARG argument = value.value();  // borrowed: the callee does not free it
    DISPID named = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{&argument, &named, 1, 1};
    unique_excepinfo exception;
    const HRESULT hr =
        object_->Invoke(id_of(name), IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT,
                        &parameters, nullptr, &exception, nullptr);
    if (FAILED(hr)) raise_call_failure(hr, &exception);
  }
  // Whether the object has a member of this name.
  bool has(const wchar_t* name) const {
    DISPID id = DISPID_UNKNOWN;
    return SUCCEEDED(find(name, id));
  }
  explicit operator bool() const { return static_cast<bool>(object_); }
  IDispatch* get() const { return object_.Get(); }

 private:
  HRESULT find(const wchar_t* name, DISPID& id) const {
    std::wstring copy = name;
    LPOLESTR names[] = {copy.data()};
    return object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  }
  DISPID id_of(const wchar_t* name) const {
    DISPID id = DISPID_UNKNOWN;
    const HRESULT hr = find(name, id);
    if (FAILED(hr)) raise_call_failure(hr, nullptr);
    return id;
  }

  unique_variant invoke(const wchar_t* name, WORD flags,
                        std::initializer_list<const Argument*> arguments) const {
    // DISPPARAMS carry the arguments last first, borrowed from the caller.
    std::vector<VARIANTARG> reversed(arguments.size());
    std::size_t slot = arguments.size();
    for (const Argument* argument : arguments) reversed[--slot] = argument->value();
    DISPPARAMS parameters{reversed.empty() ? nullptr : reversed.data(), nullptr,
                          static_cast<UINT>(reversed.size()), 0};
    unique_variant result;
    unique_excepinfo exception;
    const HRESULT hr = object_->Invoke(id_of(name), IID_NULL, LOCALE_USER_DEFAULT, flags,
                                       &parameters, result.addressof(), &exception, nullptr);
    if (FAILED(hr)) raise_call_failure(hr, &exception);
    return result;
  }

  ComPtr<IDispatch> object_;
};

// A returned value as text (VariantChangeType to BSTR) and as a 32-bit integer; a
// value that does not convert is a type mismatch (13).
std::string text_of(const unique_variant& value);
std::int32_t long_of(const unique_variant& value);

// An array of strings as a property returns it: a SAFEARRAY of BSTR, or of VARIANTs
// holding strings, held by value or by reference. Read with the SafeArray API from
// its lower bound to its upper bound; anything else is a type mismatch (13).
std::vector<std::string> texts_of(const unique_variant& value);

}  // namespace zorvat::com
