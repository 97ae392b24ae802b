#include "late_bound.h"

namespace zorvat::com {
namespace {

constexpr long kObjectNotSet = 91;

}  // namespace

ComPtr<IDispatch> dispatch_of(const unique_variant& value) {
  const VARTYPE type = V_VT(&value);
  IUnknown* held = nullptr;
  if (type == VT_DISPATCH || type == VT_UNKNOWN)
    held = V_UNKNOWN(&value);
  else if (type == (VT_DISPATCH | VT_BYREF) || type == (VT_UNKNOWN | VT_BYREF))
    held = V_UNKNOWNREF(&value) != nullptr ? *V_UNKNOWNREF(&value) : nullptr;
  else if (type != VT_EMPTY && type != VT_NULL)
    raise_runtime(rt::kTypeMismatch);
  ComPtr<IDispatch> object;
  if (held != nullptr && FAILED(held->QueryInterface(IID_PPV_ARGS(&object))))
    raise_runtime(rt::kTypeMismatch);
  return object;
}

ComPtr<IDispatch> as_object(const unique_variant& value) {
  ComPtr<IDispatch> object = dispatch_of(value);
  if (!object)
    raise(kObjectNotSet, kComponentSource, "Object variable or With block variable not set");
  return object;
}

std::string text_of(const unique_variant& value) {
  unique_variant converted;
  const HRESULT hr =
      VariantChangeType(converted.addressof(), const_cast<unique_variant*>(&value), 0, VT_BSTR);
  if (FAILED(hr)) raise_runtime(rt::kTypeMismatch);
  return bstr_to_utf8(V_BSTR(&converted));
}

std::int32_t long_of(const unique_variant& value) {
  unique_variant converted;
  const HRESULT hr =
      VariantChangeType(converted.addressof(), const_cast<unique_variant*>(&value), 0, VT_I4);
  if (FAILED(hr)) raise_runtime(rt::kTypeMismatch);
  return V_I4(&converted);
}

std::vector<std::string> texts_of(const unique_variant& value) {
  const VARTYPE type = V_VT(&value);
  if ((type & VT_ARRAY) == 0) raise_runtime(rt::kTypeMismatch);
  SAFEARRAY* array = (type & VT_BYREF) != 0
                         ? (V_ARRAYREF(&value) != nullptr ? *V_ARRAYREF(&value) : nullptr)
                         : V_ARRAY(&value);
  const VARTYPE element = type & VT_TYPEMASK;
  if (array == nullptr || SafeArrayGetDim(array) != 1 ||
      (element != VT_BSTR && element != VT_VARIANT))
    raise_runtime(rt::kTypeMismatch);
  LONG lower = 0;
  LONG upper = -1;
  if (FAILED(SafeArrayGetLBound(array, 1, &lower)) || FAILED(SafeArrayGetUBound(array, 1, &upper)))
    raise_runtime(rt::kTypeMismatch);
  std::vector<std::string> texts;
  for (LONG index = lower; index <= upper; ++index) {
    if (element == VT_BSTR) {
      BSTR text = nullptr;
      if (FAILED(SafeArrayGetElement(array, &index, &text))) raise_runtime(rt::kTypeMismatch);
      const unique_bstr owned(text);
      texts.push_back(bstr_to_utf8(owned.get()));
    } else {
      unique_variant held;
      if (FAILED(SafeArrayGetElement(array, &index, held.addressof())))
        raise_runtime(rt::kTypeMismatch);
      texts.push_back(text_of(held));
    }
  }
  return texts;
}

}  // namespace zorvat::com
