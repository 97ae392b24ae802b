#include "registration.h"

#include <objbase.h>

#include <string>

namespace zorvat::qbsim {
namespace {

std::wstring clsid_text(REFCLSID clsid) {
  wchar_t text[40] = {};
  StringFromGUID2(clsid, text, 40);
  return text;
}

bool set_value(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
  HKEY handle = nullptr;
  if (RegCreateKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                      KEY_WRITE, nullptr, &handle, nullptr) != ERROR_SUCCESS)
    return false;
  const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
  const bool done =
      RegSetValueExW(handle, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                     bytes) == ERROR_SUCCESS;
  RegCloseKey(handle);
  return done;
}

}  // namespace

bool register_class(REFCLSID clsid, const wchar_t* prog_id, const wchar_t* path,
                    const wchar_t* description) {
  const std::wstring clsid_key = L"CLSID\\" + clsid_text(clsid);
  return set_value(prog_id, nullptr, description) &&
         set_value(std::wstring(prog_id) + L"\\CLSID", nullptr, clsid_text(clsid)) &&
         set_value(clsid_key, nullptr, description) &&
         set_value(clsid_key + L"\\ProgID", nullptr, prog_id) &&
         set_value(clsid_key + L"\\InprocServer32", nullptr, path) &&
         set_value(clsid_key + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
}

void unregister_class(REFCLSID clsid, const wchar_t* prog_id) {
  RegDeleteTreeW(HKEY_CLASSES_ROOT, prog_id);
  RegDeleteKeyW(HKEY_CLASSES_ROOT, prog_id);
  const std::wstring key = L"CLSID\\" + clsid_text(clsid);
  RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
  RegDeleteKeyW(HKEY_CLASSES_ROOT, key.c_str());
}
}  // namespace zorvat::qbsim
