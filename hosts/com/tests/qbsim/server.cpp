// qbsim.dll: the company simulator as an in-process COM server, registered under the
// session manager's ProgID "QBFC2.QBSessionManager" so that zorvat.dll reaches it
// exactly as it reaches QuickBooks' own, and the tests' control object under
// "QBSim.Control". Built for the Wine tests only, and registered only in their
// throwaway Wine prefix; the CLSIDs are this simulator's own. Its objects answer
// through the type library of qbfc_subset.idl, one of this DLL's resources.
//
// A test chooses which session managers the prefix has: DllRegisterServer registers
// QBFC2's (and the control), DllUnregisterServer takes it away, and
// RegisterSessionManager(n) / UnregisterSessionManager(n) do the same for QBFCn's
// ProgID "QBFCn.QBSessionManager" (n from 1 to 16): 1 and 2 in the early
// generations' shapes, 3 and later in the newer ones', every one over the same
// simulated company.
#include <windows.h>

#include <olectl.h>

#include <string>
#include <vector>

#include "automation.h"
#include "registration.h"
#include "request_processor.h"
#include "session_manager.h"

namespace {

using namespace zorvat::qbsim;

// {17CD60EF-D49D-4560-AFA5-195DF5FBB435}
constexpr CLSID kSimulatorClsid = {
    0x17cd60ef, 0xd49d, 0x4560, {0xaf, 0xa5, 0x19, 0x5d, 0xf5, 0xfb, 0xb4, 0x35}};
// {3F6B0F7E-9B1C-4C55-8F0B-6E4B9F1D2A61}
constexpr CLSID kControlClsid = {
    0x3f6b0f7e, 0x9b1c, 0x4c55, {0x8f, 0x0b, 0x6e, 0x4b, 0x9f, 0x1d, 0x2a, 0x61}};
constexpr wchar_t kControlProgId[] = L"QBSim.Control";

HINSTANCE module = nullptr;

constexpr int kNewestGeneration = 16;
// QBFCn's session manager (n other than 2): {5E0F1A3C-7B2D-4C1E-9A6B-3D8F2C4B10nn}.
constexpr CLSID generation_clsid(int generation) {
  return {0x5e0f1a3c,
          0x7b2d,
          0x4c1e,
          {0x9a, 0x6b, 0x3d, 0x8f, 0x2c, 0x4b, 0x10, static_cast<unsigned char>(generation)}};
}
CLSID clsid_of(int generation) {
  return generation == 2 ? kSimulatorClsid : generation_clsid(generation);
}
std::wstring prog_id_of(int generation) {
  return L"QBFC" + std::to_wstring(generation) + L".QBSessionManager";
}

ClassFactory control_factory([](REFIID iid, void** object) {
  return make_simulator_control()->QueryInterface(iid, object);
});

// QBFCn's session manager, created under its ProgID.
ClassFactory& session_manager_factory(int generation) {
  static std::vector<ClassFactory> factories = [] {
    std::vector<ClassFactory> made;
    for (int each = 1; each <= kNewestGeneration; ++each)
      made.emplace_back([each](REFIID iid, void** object) {
        const std::string prog_id = zorvat::com::to_utf8(prog_id_of(each));
        if (each <= 2) return make_session_manager(prog_id)->QueryInterface(iid, object);
        return make_newer_session_manager(prog_id, each)->QueryInterface(iid, object);
      });
    return made;
  }();
  return factories[static_cast<std::size_t>(generation - 1)];
}

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
  if (IsEqualCLSID(clsid, kControlClsid)) return control_factory.QueryInterface(iid, object);
  for (int generation = 1; generation <= kNewestGeneration; ++generation)
    if (IsEqualCLSID(clsid, clsid_of(generation)))
      return session_manager_factory(generation).QueryInterface(iid, object);
  return request_processor_class_object(clsid, iid, object);
}

// The simulated QuickBooks lives as long as the process: its company and its record
// must outlive every session manager a test or the component releases.
STDAPI DllCanUnloadNow() {
  return S_FALSE;
}

// Registers QBFCn's session manager under its ProgID.
extern "C" HRESULT STDAPICALLTYPE RegisterSessionManager(int generation) {
  if (generation < 1 || generation > kNewestGeneration) return E_INVALIDARG;
  wchar_t path[MAX_PATH + 1] = {};
  if (GetModuleFileNameW(module, path, MAX_PATH) == 0) return SELFREG_E_CLASS;
  return register_class(clsid_of(generation), prog_id_of(generation).c_str(), path,
                        L"Company simulator session manager")
             ? S_OK
             : SELFREG_E_CLASS;
}

// Takes QBFCn's session manager away; the others and the control stay.
extern "C" HRESULT STDAPICALLTYPE UnregisterSessionManager(int generation) {
  if (generation < 1 || generation > kNewestGeneration) return E_INVALIDARG;
  unregister_class(clsid_of(generation), prog_id_of(generation).c_str());
  return S_OK;
}

STDAPI DllRegisterServer() {
  wchar_t path[MAX_PATH + 1] = {};
  if (GetModuleFileNameW(module, path, MAX_PATH) == 0) return SELFREG_E_CLASS;
  if (!register_class(kControlClsid, kControlProgId, path, L"Company simulator control"))
    return SELFREG_E_CLASS;
  return RegisterSessionManager(2);
}

// Takes QBFC2's session manager away (a machine without the SDK); the control stays.
STDAPI DllUnregisterServer() {
  return UnregisterSessionManager(2);
}
