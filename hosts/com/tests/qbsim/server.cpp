// qbsim.dll: the company simulator as an in-process COM server, registered under the
// session manager's ProgID "QBFC2.QBSessionManager" so that zorvat.dll reaches it
// exactly as it reaches QuickBooks' own, and the tests' control object under
// "QBSim.Control". Built for the Wine tests only, and registered only in their
// throwaway Wine prefix; the CLSIDs are this simulator's own. Its objects answer
// through the type library of qbfc_subset.idl, one of this DLL's resources.
#include <windows.h>

#include <olectl.h>

#include <string>

#include "automation.h"
#include "registration.h"
#include "request_processor.h"
#include "session_manager.h"

namespace {

using namespace zorvat::qbsim;

// {17CD60EF-D49D-4560-AFA5-195DF5FBB435}
constexpr CLSID kSimulatorClsid = {
    0x17cd60ef, 0xd49d, 0x4560, {0xaf, 0xa5, 0x19, 0x5d, 0xf5, 0xfb, 0xb4, 0x35}};
constexpr wchar_t kProgId[] = L"QBFC2.QBSessionManager";
// {3F6B0F7E-9B1C-4C55-8F0B-6E4B9F1D2A61}
constexpr CLSID kControlClsid = {
    0x3f6b0f7e, 0x9b1c, 0x4c55, {0x8f, 0x0b, 0x6e, 0x4b, 0x9f, 0x1d, 0x2a, 0x61}};
constexpr wchar_t kControlProgId[] = L"QBSim.Control";

HINSTANCE module = nullptr;

class ClassFactory final : public IClassFactory {
 public:
  explicit ClassFactory(bool control) : control_(control) {}

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
      if (control_) return make_simulator_control()->QueryInterface(iid, object);
      return make_session_manager()->QueryInterface(iid, object);
    } catch (...) {
      return E_OUTOFMEMORY;
    }
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  bool control_;
};

ClassFactory factory(false);
ClassFactory control_factory(true);

}  // namespace

HINSTANCE zorvat::qbsim::server_module() {
  return module;
}

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
  if (IsEqualCLSID(clsid, kSimulatorClsid)) return factory.QueryInterface(iid, object);
  if (IsEqualCLSID(clsid, kControlClsid)) return control_factory.QueryInterface(iid, object);
  return request_processor_class_object(clsid, iid, object);
}

// The simulated QuickBooks lives as long as the process: its company and its record
// must outlive every session manager a test or the component releases.
STDAPI DllCanUnloadNow() {
  return S_FALSE;
}

STDAPI DllRegisterServer() {
  wchar_t path[MAX_PATH + 1] = {};
  if (GetModuleFileNameW(module, path, MAX_PATH) == 0) return SELFREG_E_CLASS;
  const bool done =
      register_class(kSimulatorClsid, kProgId, path, L"Company simulator session manager") &&
      register_class(kControlClsid, kControlProgId, path, L"Company simulator control");
  return done ? S_OK : SELFREG_E_CLASS;
}

// Takes the session manager away (a machine without the SDK); the control stays.
STDAPI DllUnregisterServer() {
  unregister_class(kSimulatorClsid, kProgId);
  return S_OK;
}
