#include "raii.h"

namespace zorvat::win32 {

std::string to_utf8(const wchar_t* text, std::size_t length) {
  if (text == nullptr || length == 0) return {};
  const int count = static_cast<int>(length);
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, count, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, count, result.data(), size, nullptr, nullptr);
  return result;
}

std::wstring to_wide(std::string_view text) {
  if (text.empty()) return {};
  const int count = static_cast<int>(text.size());
  const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), count, nullptr, 0);
  std::wstring result(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), count, result.data(), size);
  return result;
}

BSTR make_bstr(std::string_view text) {
  if (text.empty()) return SysAllocStringLen(L"", 0);
  const int count = static_cast<int>(text.size());
  const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), count, nullptr, 0);
  BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(size));
  if (result != nullptr) MultiByteToWideChar(CP_UTF8, 0, text.data(), count, result, size);
  return result;
}

}  // namespace zorvat::win32
