// qbsim.dll: the company simulator as an in-process COM server, registered under the
// session manager's ProgID "QBFC2.QBSessionManager" so that zorvat.dll reaches it
// exactly as it reaches QuickBooks' own. Built for the Wine tests only, and registered
// only in their throwaway Wine prefix; the CLSID is this simulator's own.
#include <windows.h>

#include <olectl.h>

#include <string>

#include "dispatch_object.h"
#include "session_manager.h"

namespace {

using namespace zorvat::qbsim;

// {17CD60EF-D49D-4560-AFA5-195DF5FBB435}
constexpr CLSID kSimulatorClsid = {
    0x17cd60ef, 0xd49d, 0x4560, {0xaf, 0xa5, 0x19, 0x5d, 0xf5, 0xfb, 0xb4, 0x35}};
constexpr wchar_t kProgId[] = L"QBFC2.QBSessionManager";

HINSTANCE module = nullptr;

class ClassFactory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory)) {
      *object = static_cast<IClassFactory*>(this);
      return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    try {
      return make_session_manager()->QueryInterface(iid, object);
    } catch (...) {
      return E_OUTOFMEMORY;
    }
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

ClassFactory factory;

std::wstring clsid_text() {
  wchar_t text[40] = {};
  StringFromGUID2(kSimulatorClsid, text, 40);
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

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    module = instance;
    DisableThreadLibraryCalls(instance);
  }
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  if (!IsEqualCLSID(clsid, kSimulatorClsid)) return CLASS_E_CLASSNOTAVAILABLE;
  return factory.QueryInterface(iid, object);
}

// The simulated QuickBooks lives as long as the process: its company and its record
// must outlive every session manager a test or the component releases.
STDAPI DllCanUnloadNow() {
  return S_FALSE;
}

STDAPI DllRegisterServer() {
  wchar_t path[MAX_PATH + 1] = {};
  if (GetModuleFileNameW(module, path, MAX_PATH) == 0) return SELFREG_E_CLASS;
  const std::wstring clsid = clsid_text();
  const std::wstring key = L"CLSID\\" + clsid;
  const bool done = set_value(kProgId, nullptr, L"Company simulator session manager") &&
                    set_value(std::wstring(kProgId) + L"\\CLSID", nullptr, clsid) &&
                    set_value(key, nullptr, L"Company simulator session manager") &&
                    set_value(key + L"\\ProgID", nullptr, kProgId) &&
                    set_value(key + L"\\InprocServer32", nullptr, path) &&
                    set_value(key + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
  return done ? S_OK : SELFREG_E_CLASS;
}

STDAPI DllUnregisterServer() {
  RegDeleteTreeW(HKEY_CLASSES_ROOT, kProgId);
  RegDeleteKeyW(HKEY_CLASSES_ROOT, kProgId);
  const std::wstring key = L"CLSID\\" + clsid_text();
  RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
  RegDeleteKeyW(HKEY_CLASSES_ROOT, key.c_str());
  return S_OK;
}
