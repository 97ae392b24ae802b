// Owners for the platform's resources: interface pointers (Microsoft::WRL::ComPtr),
// BSTRs, VARIANTs, registry keys and file handles, each freed exactly once by its owner;
// and the conversions between the component's UTF-8 text and the platform's UTF-16.
#pragma once

// windows.h comes first: the other platform headers build on it.
#include <windows.h>

#include <oleauto.h>
#include <wrl/client.h>

#include <string>
#include <string_view>
#include <utility>

namespace zorvat::win32 {

using Microsoft::WRL::ComPtr;

// A BSTR owned by its holder (SysFreeString on destruction).
class unique_bstr {
 public:
  unique_bstr() = default;
  explicit unique_bstr(BSTR value) noexcept : value_(value) {}
  ~unique_bstr() { reset(); }
  unique_bstr(unique_bstr&& other) noexcept : value_(other.release()) {}
  unique_bstr& operator=(unique_bstr&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  unique_bstr(const unique_bstr&) = delete;
  unique_bstr& operator=(const unique_bstr&) = delete;

  BSTR get() const noexcept { return value_; }
  BSTR release() noexcept { return std::exchange(value_, nullptr); }
  void reset(BSTR value = nullptr) noexcept { SysFreeString(std::exchange(value_, value)); }
  // For out parameters: frees the current string and hands out the slot.
  BSTR* put() noexcept {
    reset();
    return &value_;
  }
  UINT size() const noexcept { return SysStringLen(value_); }

 private:
  BSTR value_ = nullptr;
};

// An EXCEPINFO whose strings, filled in by a failing callee, are freed with it.
struct unique_excepinfo : EXCEPINFO {
  unique_excepinfo() : EXCEPINFO{} {}
  ~unique_excepinfo() {
    SysFreeString(bstrSource);
    SysFreeString(bstrDescription);
    SysFreeString(bstrHelpFile);
  }
  unique_excepinfo(const unique_excepinfo&) = delete;
  unique_excepinfo& operator=(const unique_excepinfo&) = delete;
};

// A VARIANT owned by its holder (VariantClear on destruction).
class unique_variant : public VARIANT {
 public:
  unique_variant() noexcept { VariantInit(this); }
  ~unique_variant() { VariantClear(this); }
  unique_variant(const unique_variant&) = delete;
  unique_variant& operator=(const unique_variant&) = delete;
  unique_variant(unique_variant&& other) noexcept : VARIANT(other) { VariantInit(&other); }
  unique_variant& operator=(unique_variant&& other) noexcept {
    if (this != &other) {
      VariantClear(this);
      static_cast<VARIANT&>(*this) = other;
      VariantInit(&other);
    }
    return *this;
  }

  void reset() noexcept { VariantClear(this); }
  VARIANT* addressof() noexcept { return this; }
  // Hands the value over to `target` (which must be cleared already), leaving Empty.
  void release_to(VARIANT* target) noexcept {
    *target = *static_cast<VARIANT*>(this);
    VariantInit(this);
  }
};

// A registry key closed on destruction.
class unique_hkey {
 public:
  unique_hkey() = default;
  ~unique_hkey() { reset(); }
  unique_hkey(const unique_hkey&) = delete;
  unique_hkey& operator=(const unique_hkey&) = delete;

  HKEY get() const noexcept { return key_; }
  HKEY* put() noexcept {
    reset();
    return &key_;
  }
  void reset() noexcept {
    if (key_ != nullptr) RegCloseKey(std::exchange(key_, nullptr));
  }

 private:
  HKEY key_ = nullptr;
};

// A kernel handle closed on destruction (INVALID_HANDLE_VALUE and null both mean none).
class unique_handle {
 public:
  explicit unique_handle(HANDLE handle = nullptr) noexcept : handle_(handle) {}
  ~unique_handle() {
    if (valid()) CloseHandle(handle_);
  }
  unique_handle(const unique_handle&) = delete;
  unique_handle& operator=(const unique_handle&) = delete;

  HANDLE get() const noexcept { return handle_; }
  bool valid() const noexcept { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
  // Closes the handle now and reports whether the close succeeded.
  bool close() noexcept {
    if (!valid()) return true;
    return CloseHandle(std::exchange(handle_, nullptr)) != FALSE;
  }

 private:
  HANDLE handle_;
};

// UTF-16 to UTF-8 (a null pointer is the empty string, as a null BSTR is "").
std::string to_utf8(const wchar_t* text, std::size_t length);
inline std::string to_utf8(std::wstring_view text) {
  return to_utf8(text.data(), text.size());
}
inline std::string bstr_to_utf8(BSTR text) {
  return text == nullptr ? std::string() : to_utf8(text, SysStringLen(text));
}
std::wstring to_wide(std::string_view text);
// A new BSTR holding `text`; null (and E_OUTOFMEMORY to a caller) only when memory runs out.
BSTR make_bstr(std::string_view text);

}  // namespace zorvat::win32
