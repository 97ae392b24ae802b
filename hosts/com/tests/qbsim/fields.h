// The SDK's field objects: a request's fields are set one SetValue call at a time,
// and a returned object's Name is read with GetValue. A text longer than the field
// takes is refused on SetValue (number 380 "Invalid property value" with a
// description naming the field and its limit), as the SDK's field objects refuse it.
//
// Each SetValue reports to the field's sink, which records the call and applies the
// value to the request the field belongs to.
#pragma once

#include <functional>
#include <string>

#include <nlohmann/json.hpp>

#include "automation.h"

namespace zorvat::qbsim {

// Receives a field's value as the record shows it, and applies it.
using FieldSink = std::function<void(const nlohmann::json& recorded)>;

class StringField final : public Automation<IQBStringType> {
 public:
  // A field of a request being built.
  StringField(std::string name, std::size_t max_length, FieldSink sink)
      : name_(std::move(name)), max_length_(max_length), sink_(std::move(sink)) {}
  // A value of a returned object.
  explicit StringField(std::string value)
      : max_length_(static_cast<std::size_t>(-1)), value_(std::move(value)), set_(true) {}

  HRESULT STDMETHODCALLTYPE SetValue(BSTR val) override;
  HRESULT STDMETHODCALLTYPE GetValue(BSTR* val) override;
  HRESULT STDMETHODCALLTYPE IsSet(VARIANT_BOOL* set) override;
  HRESULT STDMETHODCALLTYPE GetMaxLength(LONG* length) override;

 private:
  std::string name_;
  std::size_t max_length_;
  FieldSink sink_;
  std::string value_;
  bool set_ = false;
};

class IntField final : public Automation<IQBIntType> {
 public:
  explicit IntField(FieldSink sink) : sink_(std::move(sink)) {}
  HRESULT STDMETHODCALLTYPE SetValue(LONG val) override;
  HRESULT STDMETHODCALLTYPE GetValue(LONG* val) override;
  HRESULT STDMETHODCALLTYPE IsSet(VARIANT_BOOL* set) override;

 private:
  FieldSink sink_;
  LONG value_ = 0;
  bool set_ = false;
};

class BoolField final : public Automation<IQBBoolType> {
 public:
  explicit BoolField(FieldSink sink) : sink_(std::move(sink)) {}
  HRESULT STDMETHODCALLTYPE SetValue(VARIANT_BOOL val) override;
  HRESULT STDMETHODCALLTYPE GetValue(VARIANT_BOOL* val) override;
  HRESULT STDMETHODCALLTYPE IsSet(VARIANT_BOOL* set) override;

 private:
  FieldSink sink_;
  VARIANT_BOOL value_ = VARIANT_FALSE;
  bool set_ = false;
};

class DateField final : public Automation<IQBDateType> {
 public:
  explicit DateField(FieldSink sink) : sink_(std::move(sink)) {}
  HRESULT STDMETHODCALLTYPE SetValue(DATE val) override;
  HRESULT STDMETHODCALLTYPE GetValue(DATE* val) override;
  HRESULT STDMETHODCALLTYPE IsSet(VARIANT_BOOL* set) override;

 private:
  FieldSink sink_;
  DATE value_ = 0;
  bool set_ = false;
};

class TimeIntervalField final : public Automation<IQBTimeIntervalType> {
 public:
  explicit TimeIntervalField(FieldSink sink) : sink_(std::move(sink)) {}
  HRESULT STDMETHODCALLTYPE SetValue(short hour, short minute, short second) override;
  HRESULT STDMETHODCALLTYPE IsSet(VARIANT_BOOL* set) override;

 private:
  FieldSink sink_;
  bool set_ = false;
};

// The newer generations' time interval: counts without sign and the sign apart. A
// negative count is refused (380).
class SignedTimeIntervalField final : public Automation<IQBTimeIntervalTypeN> {
 public:
  explicit SignedTimeIntervalField(FieldSink sink) : sink_(std::move(sink)) {}
  HRESULT STDMETHODCALLTYPE SetValue(short hour, short minute, short second,
                                     VARIANT_BOOL is_negative) override;
  HRESULT STDMETHODCALLTYPE IsSet(VARIANT_BOOL* set) override;

 private:
  FieldSink sink_;
  bool set_ = false;
};

class BillableStatusField final : public Automation<IQBENBillableStatusType> {
 public:
  explicit BillableStatusField(FieldSink sink) : sink_(std::move(sink)) {}
  HRESULT STDMETHODCALLTYPE SetValue(ENBillableStatus val) override;
  HRESULT STDMETHODCALLTYPE GetValue(ENBillableStatus* val) override;
  HRESULT STDMETHODCALLTYPE IsSet(VARIANT_BOOL* set) override;

 private:
  FieldSink sink_;
  ENBillableStatus value_ = bsNotBillable;
  bool set_ = false;
};

// A reference to a list object by its FullName.
class BaseRef final : public Automation<IQBBaseRef> {
 public:
  explicit BaseRef(ComPtr<StringField> full_name) : full_name_(std::move(full_name)) {}
  HRESULT STDMETHODCALLTYPE get_FullName(IQBStringType** name) override;

 private:
  ComPtr<StringField> full_name_;
};

}  // namespace zorvat::qbsim
