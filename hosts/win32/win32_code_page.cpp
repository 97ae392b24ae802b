#include "win32/win32_code_page.h"

#include <windows.h>

#include <string>

namespace zorvat::win32 {
namespace {

// Both conversions go through UTF-16; the text comes in pieces of at most a few
// megabytes (the file step's), so an int holds every length.
std::wstring to_utf16(unsigned code_page, std::string_view bytes) {
  if (bytes.empty()) return {};
  const int count = static_cast<int>(bytes.size());
  const int size = MultiByteToWideChar(code_page, 0, bytes.data(), count, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(code_page, 0, bytes.data(), count, wide.data(), size);
  return wide;
}

void append_from_utf16(unsigned code_page, const std::wstring& wide, std::string& out) {
  if (wide.empty()) return;
  const int count = static_cast<int>(wide.size());
  const int size =
      WideCharToMultiByte(code_page, 0, wide.data(), count, nullptr, 0, nullptr, nullptr);
  const std::size_t start = out.size();
  out.resize(start + static_cast<std::size_t>(size));
  WideCharToMultiByte(code_page, 0, wide.data(), count, out.data() + start, size, nullptr, nullptr);
}

}  // namespace

unsigned system_ansi_code_page() {
  DWORD number = 0;
  if (GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                     reinterpret_cast<LPWSTR>(&number), sizeof number / sizeof(WCHAR)) == 0 ||
      number == 0)
    return GetACP();
  return number;
}

void Win32CodePage::encode(std::string_view text, std::string& out) const {
  append_from_utf16(number_, to_utf16(CP_UTF8, text), out);
}

void Win32CodePage::decode(std::string_view bytes, std::string& out) const {
  append_from_utf16(CP_UTF8, to_utf16(number_, bytes), out);
}

const CodePage& ansi_code_page() {
  static const Win32CodePage code_page(GetACP(), code_page_name(GetACP()));
  return code_page;
}

bool has_code_page(unsigned number) {
  return IsValidCodePage(number) != FALSE;
}

}  // namespace zorvat::win32
