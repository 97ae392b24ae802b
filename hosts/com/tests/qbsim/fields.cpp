#include "fields.h"

#include "zorvat/quickbooks/schema.h"

namespace zorvat::qbsim {
namespace {

constexpr long kInvalidPropertyValue = 380;

VARIANT_BOOL to_variant_bool(bool value) {
  return value ? VARIANT_TRUE : VARIANT_FALSE;
}

}  // namespace

HRESULT StringField::SetValue(BSTR val) {
  return guarded([&] {
    std::string text = com::bstr_to_utf8(val);
    const std::size_t length = quickbooks::character_count(text);
    if (length > max_length_)
      raise(kInvalidPropertyValue, kComponentSource,
            name_ + ": the value has " + std::to_string(length) +
                " characters; the field takes at most " + std::to_string(max_length_) + ".");
    value_ = std::move(text);
    set_ = true;
    if (sink_) sink_(value_);
  });
}

HRESULT StringField::GetValue(BSTR* val) {
  *val = com::make_bstr(value_);
  return *val != nullptr || value_.empty() ? S_OK : E_OUTOFMEMORY;
}

HRESULT StringField::IsSet(VARIANT_BOOL* set) {
  *set = to_variant_bool(set_);
  return S_OK;
}

HRESULT StringField::GetMaxLength(LONG* length) {
  *length = static_cast<LONG>(max_length_);
  return S_OK;
}

HRESULT IntField::SetValue(LONG val) {
  return guarded([&] {
    value_ = val;
    set_ = true;
    if (sink_) sink_(static_cast<std::int32_t>(val));
  });
}

HRESULT IntField::GetValue(LONG* val) {
  *val = value_;
  return S_OK;
}

HRESULT IntField::IsSet(VARIANT_BOOL* set) {
  *set = to_variant_bool(set_);
  return S_OK;
}

HRESULT BoolField::SetValue(VARIANT_BOOL val) {
  return guarded([&] {
    value_ = val;
    set_ = true;
    if (sink_) sink_(val != VARIANT_FALSE);
  });
}

HRESULT BoolField::GetValue(VARIANT_BOOL* val) {
  *val = value_;
  return S_OK;
}

HRESULT BoolField::IsSet(VARIANT_BOOL* set) {
  *set = to_variant_bool(set_);
  return S_OK;
}

HRESULT DateField::SetValue(DATE val) {
  return guarded([&] {
    value_ = val;
    set_ = true;
    if (sink_) sink_(val);
  });
}

HRESULT DateField::GetValue(DATE* val) {
  *val = value_;
  return S_OK;
}

HRESULT DateField::IsSet(VARIANT_BOOL* set) {
  *set = to_variant_bool(set_);
  return S_OK;
}

HRESULT TimeIntervalField::SetValue(short hour, short minute, short second) {
  return guarded([&] {
    set_ = true;
    if (sink_) sink_(nlohmann::json::array({hour, minute, second}));
  });
}

HRESULT TimeIntervalField::IsSet(VARIANT_BOOL* set) {
  *set = to_variant_bool(set_);
  return S_OK;
}

HRESULT SignedTimeIntervalField::SetValue(short hour, short minute, short second,
                                          VARIANT_BOOL is_negative) {
  return guarded([&] {
    if (hour < 0 || minute < 0 || second < 0)
      raise(kInvalidPropertyValue, kComponentSource,
            "Duration: the counts are " + std::to_string(hour) + ", " + std::to_string(minute) +
                " and " + std::to_string(second) +
                "; a count takes no sign (the sign is the fourth argument).");
    set_ = true;
    if (sink_) sink_(nlohmann::json::array({hour, minute, second, is_negative != VARIANT_FALSE}));
  });
}

HRESULT SignedTimeIntervalField::IsSet(VARIANT_BOOL* set) {
  *set = to_variant_bool(set_);
  return S_OK;
}

HRESULT BillableStatusField::SetValue(ENBillableStatus val) {
  return guarded([&] {
    if (val != bsBillable && val != bsNotBillable && val != bsHasBeenBilled)
      raise(kInvalidPropertyValue, kComponentSource,
            "BillableStatus: " + std::to_string(static_cast<int>(val)) +
                " is not a billable status.");
    value_ = val;
    set_ = true;
    if (sink_) sink_(static_cast<int>(val));
  });
}

HRESULT BillableStatusField::GetValue(ENBillableStatus* val) {
  *val = value_;
  return S_OK;
}

HRESULT BillableStatusField::IsSet(VARIANT_BOOL* set) {
  *set = to_variant_bool(set_);
  return S_OK;
}

HRESULT BaseRef::get_FullName(IQBStringType** name) {
  hand_out(name, full_name_);
  return S_OK;
}

}  // namespace zorvat::qbsim
