// zorvat.dll: the in-process automation server. Class factories for the creatable
// classes, self-registration from the type library embedded in the DLL, and the
// server's lifetime (DllCanUnloadNow).
//
// The creatable classes are the export classes of the class list (export_class_list.h):
// each is served under the coclass and the interface the IDL gives its name, CLSID_Class
// and _Class, so a listed class without its coclass does not compile.
#include <windows.h>

#include <olectl.h>

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "export_class_list.h"
#include "export_object.h"
#include "raii.h"
#include "zorvat.h"

namespace zorvat::com {
namespace {

HINSTANCE server_instance = nullptr;
LONG server_locks = 0;

// --- The creatable classes ------------------------------------------------------

// The dual interface of each listed class: _Class in the IDL.
template <class Class>
struct InterfaceOf;
#define ZORVAT_INTERFACE_OF(Class, folder) \
  template <>                              \
  struct InterfaceOf<formats::Class> {     \
    using type = _##Class;                 \
  };
ZORVAT_EXPORT_CLASSES(ZORVAT_INTERFACE_OF)
#undef ZORVAT_INTERFACE_OF

// The COM object behind a class: its interface's six common members and
// ValidateSetupData. A class whose interface has members of its own names its object
// below.
template <class Class>
struct ComObjectOf {
  using type = SetupCheckedObject<typename InterfaceOf<Class>::type, Class>;
};

class GenericObject final : public ExportObject<_Generic, formats::Generic> {
 public:
  // Generic checks nothing: the value is handed back only if the class changed it.
  HRESULT STDMETHODCALLTYPE Validate(BSTR psProperty, VARIANT* pvValue) override {
    return guard("Validate", [&] {
      const Variant before =
          pvValue != nullptr ? from_variant(*pvValue, std::make_shared<MemberCache>()) : Variant();
      Variant value = before;
      impl().Validate(bstr_to_utf8(psProperty), value);
      if (pvValue != nullptr && !same_value(before, value)) {
        unique_variant changed;
        to_variant(value, changed.addressof());
        VariantClear(pvValue);
        changed.release_to(pvValue);
      }
    });
  }
};

class IntuitPACObject final : public SetupCheckedObject<_IntuitPAC, formats::IntuitPAC> {
 public:
  HRESULT STDMETHODCALLTYPE IsJr(BSTR psTitle, VARIANT_BOOL* result) override {
    if (result == nullptr) return E_POINTER;
    *result = VARIANT_FALSE;
    return guard("IsJr", [&] {
      *result = impl().IsJr(bstr_to_utf8(psTitle)) ? VARIANT_TRUE : VARIANT_FALSE;
    });
  }
};

class QB2000Object final : public SetupCheckedObject<_QB2000, formats::QB2000> {
 public:
  HRESULT STDMETHODCALLTYPE FormatName(BSTR sName, BSTR* result) override {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    return guard("FormatName", [&] {
      const std::string name = impl().FormatName(bstr_to_utf8(sName));
      *result = make_bstr(name);
      if (*result == nullptr) throw std::bad_alloc();
    });
  }
};

template <>
struct ComObjectOf<formats::Generic> {
  using type = GenericObject;
};
template <>
struct ComObjectOf<formats::IntuitPAC> {
  using type = IntuitPACObject;
};
template <>
struct ComObjectOf<formats::QB2000> {
  using type = QB2000Object;
};

// One factory per class; factories live as long as the DLL and are not counted.
template <class Object>
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
    Object* created = nullptr;
    try {
      created = new Object();
    } catch (...) {
      return E_OUTOFMEMORY;
    }
    const HRESULT hr = created->QueryInterface(iid, object);
    created->Release();
    return hr;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    if (lock)
      lock_server();
    else
      unlock_server();
    return S_OK;
  }
};

template <class Object>
IClassFactory* factory() {
  static ClassFactory<Object> instance;
  return &instance;
}

struct ServerClass {
  const CLSID* clsid;
  const IID* iid;
  IClassFactory* (*factory)();
};

// One row per listed class, in the list's order.
#define ZORVAT_SERVER_CLASS(Class, folder) \
  ServerClass{&CLSID_##Class, &IID__##Class, &factory<ComObjectOf<formats::Class>::type>},
const std::array server_classes{ZORVAT_EXPORT_CLASSES(ZORVAT_SERVER_CLASS)};
#undef ZORVAT_SERVER_CLASS

// --- The type library -----------------------------------------------------------

// Loaded on first use and released by DllCanUnloadNow once no object is left: not
// owners with destructors, which would call into oleaut32 while the process unloads.
ITypeLib* type_library = nullptr;
std::array<ITypeInfo*, server_classes.size()> type_infos{};

std::wstring module_path() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length =
        GetModuleFileNameW(server_instance, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0) return {};
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

HRESULT load_type_library(ITypeLib** library) {
  if (type_library == nullptr) {
    const std::wstring path = module_path();
    const HRESULT hr = LoadTypeLibEx(path.c_str(), REGKIND_NONE, &type_library);
    if (FAILED(hr)) return hr;
  }
  *library = type_library;
  return S_OK;
}

void release_type_library() {
  for (ITypeInfo*& info : type_infos)
    if (info != nullptr) std::exchange(info, nullptr)->Release();
  if (type_library != nullptr) std::exchange(type_library, nullptr)->Release();
}

// --- Registration ----------------------------------------------------------------

std::wstring guid_text(REFGUID guid) {
  wchar_t text[40] = {};
  StringFromGUID2(guid, text, 40);
  return text;
}

LSTATUS set_value(HKEY root, const std::wstring& key, const wchar_t* name,
                  const std::wstring& value) {
  unique_hkey handle;
  LSTATUS status = RegCreateKeyExW(root, key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                   KEY_WRITE, nullptr, handle.put(), nullptr);
  if (status != ERROR_SUCCESS) return status;
  const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
  return RegSetValueExW(handle.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                        bytes);
}

LSTATUS delete_tree(const std::wstring& key) {
  const LSTATUS status = RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
  if (status == ERROR_SUCCESS) RegDeleteKeyW(HKEY_CLASSES_ROOT, key.c_str());
  return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}

struct CoClass {
  std::wstring name;
  CLSID clsid;
};

// The coclasses the type library declares, in its order.
HRESULT library_classes(ITypeLib* library, std::vector<CoClass>& classes) {
  const UINT count = library->GetTypeInfoCount();
  for (UINT index = 0; index < count; ++index) {
    TYPEKIND kind;
    if (FAILED(library->GetTypeInfoType(index, &kind)) || kind != TKIND_COCLASS) continue;
    ComPtr<ITypeInfo> info;
    HRESULT hr = library->GetTypeInfo(index, &info);
    if (FAILED(hr)) return hr;
    TYPEATTR* attributes = nullptr;
    hr = info->GetTypeAttr(&attributes);
    if (FAILED(hr)) return hr;
    const CLSID clsid = attributes->guid;
    info->ReleaseTypeAttr(attributes);
    unique_bstr name;
    hr = library->GetDocumentation(static_cast<INT>(index), name.put(), nullptr, nullptr, nullptr);
    if (FAILED(hr)) return hr;
    classes.push_back({std::wstring(name.get(), name.size()), clsid});
  }
  return S_OK;
}

// Writes, for each coclass: HKCR\zorvat.<Class>\CLSID, and HKCR\CLSID\{clsid} with
// InprocServer32 (ThreadingModel Apartment), ProgID, TypeLib, VERSION, Programmable.
HRESULT register_classes(ITypeLib* library, const std::wstring& path) {
  std::vector<CoClass> classes;
  HRESULT hr = library_classes(library, classes);
  if (FAILED(hr)) return hr;
  TLIBATTR* attributes = nullptr;
  hr = library->GetLibAttr(&attributes);
  if (FAILED(hr)) return hr;
  const std::wstring libid = guid_text(attributes->guid);
  const std::wstring version =
      std::to_wstring(attributes->wMajorVerNum) + L"." + std::to_wstring(attributes->wMinorVerNum);
  library->ReleaseTLibAttr(attributes);

  for (const CoClass& coclass : classes) {
    const std::wstring prog_id = L"zorvat." + coclass.name;
    const std::wstring clsid = guid_text(coclass.clsid);
    const std::wstring key = L"CLSID\\" + clsid;
    const LSTATUS failures[] = {
        set_value(HKEY_CLASSES_ROOT, prog_id, nullptr, prog_id),
        set_value(HKEY_CLASSES_ROOT, prog_id + L"\\Clsid", nullptr, clsid),
        set_value(HKEY_CLASSES_ROOT, key, nullptr, prog_id),
        set_value(HKEY_CLASSES_ROOT, key + L"\\InprocServer32", nullptr, path),
        set_value(HKEY_CLASSES_ROOT, key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"),
        set_value(HKEY_CLASSES_ROOT, key + L"\\ProgID", nullptr, prog_id),
        set_value(HKEY_CLASSES_ROOT, key + L"\\TypeLib", nullptr, libid),
        set_value(HKEY_CLASSES_ROOT, key + L"\\VERSION", nullptr, version),
        set_value(HKEY_CLASSES_ROOT, key + L"\\Programmable", nullptr, L""),
    };
    for (LSTATUS status : failures)
      if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
  }
  return S_OK;
}

// Whether the other registry view of 64-bit Windows (the 32-bit one for the 64-bit DLL,
// and the other way round) still has an in-process server for the class.
bool registered_in_other_view(const std::wstring& clsid) {
#ifdef _WIN64
  const REGSAM other_view = KEY_WOW64_32KEY;
#else
  BOOL wow64 = FALSE;
  if (!IsWow64Process(GetCurrentProcess(), &wow64) || !wow64) return false;
  const REGSAM other_view = KEY_WOW64_64KEY;
#endif
  unique_hkey key;
  const std::wstring server = L"CLSID\\" + clsid + L"\\InprocServer32";
  return RegOpenKeyExW(HKEY_CLASSES_ROOT, server.c_str(), 0, KEY_READ | other_view, key.put()) ==
         ERROR_SUCCESS;
}

// Removes what register_classes wrote. The CLSID keys belong to this DLL's registry view;
// the ProgID keys lie in the part of HKEY_CLASSES_ROOT both views share, so they stay
// while the other DLL (32- or 64-bit) is still registered for the class.
HRESULT unregister_classes(ITypeLib* library) {
  std::vector<CoClass> classes;
  const HRESULT hr = library_classes(library, classes);
  if (FAILED(hr)) return hr;
  LSTATUS result = ERROR_SUCCESS;
  for (const CoClass& coclass : classes) {
    const std::wstring clsid = guid_text(coclass.clsid);
    std::vector<std::wstring> keys = {L"CLSID\\" + clsid};
    if (!registered_in_other_view(clsid)) keys.push_back(L"zorvat." + coclass.name);
    for (const std::wstring& key : keys) {
      const LSTATUS status = delete_tree(key);
      if (status != ERROR_SUCCESS) result = status;
    }
  }
  return HRESULT_FROM_WIN32(static_cast<DWORD>(result));
}

}  // namespace

void lock_server() noexcept {
  InterlockedIncrement(&server_locks);
}

void unlock_server() noexcept {
  InterlockedDecrement(&server_locks);
}

HRESULT interface_type_info(REFIID iid, ITypeInfo** info) noexcept {
  for (std::size_t index = 0; index < server_classes.size(); ++index) {
    if (!IsEqualIID(iid, *server_classes[index].iid)) continue;
    if (type_infos[index] == nullptr) {
      ITypeLib* library = nullptr;
      HRESULT hr = load_type_library(&library);
      if (FAILED(hr)) return hr;
      hr = library->GetTypeInfoOfGuid(iid, &type_infos[index]);
      if (FAILED(hr)) return hr;
    }
    *info = type_infos[index];
    return S_OK;
  }
  return TYPE_E_ELEMENTNOTFOUND;
}

HRESULT report_error(REFIID iid, long number, const std::string& source,
                     const std::string& description) noexcept {
  // Classic automation servers raise the control facility's code for an error number;
  // numbers that are already failure codes (an automation error passed on) stay as
  // they are.
  HRESULT code = E_FAIL;
  if (number > 0 && number <= 0xFFFF)
    code = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number);
  else if (number < 0)
    code = static_cast<HRESULT>(number);
  try {
    ComPtr<ICreateErrorInfo> creator;
    if (SUCCEEDED(CreateErrorInfo(&creator))) {
      creator->SetGUID(iid);
      creator->SetSource(to_wide(source).data());
      creator->SetDescription(to_wide(description).data());
      ComPtr<IErrorInfo> info;
      if (SUCCEEDED(creator.As(&info))) SetErrorInfo(0, info.Get());
    }
  } catch (...) {
    // Out of memory while describing the error: the code alone reaches the client.
  }
  return code;
}

}  // namespace zorvat::com

using namespace zorvat::com;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    server_instance = instance;
    DisableThreadLibraryCalls(instance);
  }
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  for (const ServerClass& server_class : server_classes) {
    if (!IsEqualCLSID(clsid, *server_class.clsid)) continue;
    return server_class.factory()->QueryInterface(iid, object);
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
  if (server_locks != 0) return S_FALSE;
  release_type_library();
  return S_OK;
}

STDAPI DllRegisterServer() {
  try {
    std::wstring path = module_path();
    ComPtr<ITypeLib> library;
    HRESULT hr = LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library);
    if (FAILED(hr)) return SELFREG_E_TYPELIB;
    hr = RegisterTypeLib(library.Get(), path.data(), nullptr);
    if (FAILED(hr)) return SELFREG_E_TYPELIB;
    hr = register_classes(library.Get(), path);
    return FAILED(hr) ? SELFREG_E_CLASS : S_OK;
  } catch (...) {
    return E_OUTOFMEMORY;
  }
}

STDAPI DllUnregisterServer() {
  try {
    const std::wstring path = module_path();
    ComPtr<ITypeLib> library;
    HRESULT hr = LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library);
    if (FAILED(hr)) return SELFREG_E_TYPELIB;
    const HRESULT classes = unregister_classes(library.Get());
    TLIBATTR* attributes = nullptr;
    hr = library->GetLibAttr(&attributes);
    if (SUCCEEDED(hr)) {
      const TLIBATTR copy = *attributes;
      library->ReleaseTLibAttr(attributes);
      hr = UnRegisterTypeLib(copy.guid, copy.wMajorVerNum, copy.wMinorVerNum, copy.lcid,
                             copy.syskind);
      if (hr == TYPE_E_REGISTRYACCESS) hr = S_OK;  // nothing left to remove
    }
    if (FAILED(classes)) return SELFREG_E_CLASS;
    return FAILED(hr) ? SELFREG_E_TYPELIB : S_OK;
  } catch (...) {
    return E_OUTOFMEMORY;
  }
}
