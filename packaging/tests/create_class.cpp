// create_class.exe: a client that creates classes as a host does and says what happened,
// for the installer's tests.
//
//   create_class.exe zorvat.Generic {0F6A003C-...} ...
//
// For each argument (a ProgID, or a CLSID in braces) prints one line:
//   "<argument>: created from <path of the DLL that was loaded>"
//   "<argument>: 0x<HRESULT> <what it means>"
// Exits 0 when every class was created.
#include <windows.h>

#include <objbase.h>

#include <cstdio>
#include <string>

namespace {

std::wstring loaded_dll() {
  HMODULE module = GetModuleHandleW(L"zorvat.dll");
  if (module == nullptr) return L"<zorvat.dll not loaded>";
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(module, path, MAX_PATH);
  return path;
}

const wchar_t* meaning(HRESULT hr) {
  switch (hr) {
    case REGDB_E_CLASSNOTREG:
      return L"class not registered";
    case CO_E_CLASSSTRING:
      return L"invalid class string (no such ProgID)";
    case CLASS_E_CLASSNOTAVAILABLE:
      return L"class not available";
    case E_NOINTERFACE:
      return L"no such interface";
    default:
      return L"failed";
  }
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 2;
  int failures = 0;
  for (int index = 1; index < argc; ++index) {
    const wchar_t* name = argv[index];
    CLSID clsid{};
    HRESULT hr = name[0] == L'{' ? CLSIDFromString(name, &clsid) : CLSIDFromProgID(name, &clsid);
    IDispatch* object = nullptr;
    if (SUCCEEDED(hr))
      hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                            reinterpret_cast<void**>(&object));
    if (SUCCEEDED(hr)) {
      std::wprintf(L"%ls: created from %ls\n", name, loaded_dll().c_str());
      object->Release();
    } else {
      std::wprintf(L"%ls: 0x%08lX %ls\n", name, static_cast<unsigned long>(hr), meaning(hr));
      ++failures;
    }
  }
  CoUninitialize();
  return failures == 0 ? 0 : 1;
}
