#include "automation.h"

#include <vector>

namespace zorvat::qbsim {
namespace {

LONG objects_alive = 0;
thread_local std::optional<Error> member_error;

struct KnownInterface {
  IID iid;
  ComPtr<ITypeInfo> info;
};

// The type libraries embedded in qbsim.dll (resources TYPELIB 1, 2, ...), loaded once
// and never registered.
const std::vector<ComPtr<ITypeLib>>& type_libraries() {
  static const std::vector<ComPtr<ITypeLib>> libraries = [] {
    std::vector<ComPtr<ITypeLib>> loaded;
    wchar_t path[MAX_PATH + 1] = {};
    if (GetModuleFileNameW(server_module(), path, MAX_PATH) == 0) return loaded;
    for (int index = 1;; ++index) {
      const std::wstring resource = std::wstring(path) + L"\\" + std::to_wstring(index);
      ComPtr<ITypeLib> library;
      if (FAILED(LoadTypeLibEx(resource.c_str(), REGKIND_NONE, &library))) break;
      loaded.push_back(library);
    }
    return loaded;
  }();
  return libraries;
}

// A dual interface's type information as the library first hands it out describes
// its dispinterface; DispInvoke calls through the vtable, so it wants the interface.
ComPtr<ITypeInfo> vtable_type_info(REFIID iid) {
  ComPtr<ITypeInfo> info;
  for (const ComPtr<ITypeLib>& library : type_libraries())
    if (SUCCEEDED(library->GetTypeInfoOfGuid(iid, &info))) break;
  if (!info) return nullptr;
  TYPEATTR* attributes = nullptr;
  if (FAILED(info->GetTypeAttr(&attributes))) return nullptr;
  const bool dispinterface = attributes->typekind == TKIND_DISPATCH;
  info->ReleaseTypeAttr(attributes);
  if (!dispinterface) return info;
  HREFTYPE reference = 0;
  ComPtr<ITypeInfo> vtable;
  if (FAILED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference)) ||
      FAILED(info->GetRefTypeInfo(reference, &vtable)))
    return nullptr;
  return vtable;
}

}  // namespace

ITypeInfo* interface_type_info(REFIID iid) {
  // Single-threaded apartment: the objects are called on their creator's thread only.
  static std::vector<KnownInterface> known;
  for (const KnownInterface& entry : known)
    if (IsEqualIID(entry.iid, iid)) return entry.info.Get();
  ComPtr<ITypeInfo> info = vtable_type_info(iid);
  if (!info) return nullptr;
  known.push_back({iid, info});
  return info.Get();
}

HRESULT check_argument_count(ITypeInfo* info, DISPID id, WORD flags, const DISPPARAMS* parameters) {
  TYPEATTR* attributes = nullptr;
  if (FAILED(info->GetTypeAttr(&attributes))) return S_OK;
  const WORD functions = attributes->cFuncs;
  info->ReleaseTypeAttr(attributes);
  const UINT given = parameters != nullptr ? parameters->cArgs : 0;
  for (UINT index = 0; index < functions; ++index) {
    FUNCDESC* function = nullptr;
    if (FAILED(info->GetFuncDesc(index, &function))) continue;
    const bool matches = function->memid == id && (function->invkind & flags) != 0;
    SHORT taken = function->cParams;
    // The [out, retval] parameter is the call's result, not an argument.
    if (taken > 0 &&
        (function->lprgelemdescParam[taken - 1].paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0)
      --taken;
    const SHORT required = static_cast<SHORT>(taken - function->cParamsOpt);
    info->ReleaseFuncDesc(function);
    if (!matches) continue;
    return given > static_cast<UINT>(taken) || given < static_cast<UINT>(required)
               ? DISP_E_BADPARAMCOUNT
               : S_OK;
  }
  return S_OK;
}

LONG live_objects() {
  return objects_alive;
}

void count_object(int change) {
  InterlockedExchangeAdd(&objects_alive, change);
}

void keep_member_error(const Error& error) {
  member_error = error;
}

std::optional<Error> take_member_error() {
  return std::exchange(member_error, std::nullopt);
}

HRESULT STDMETHODCALLTYPE ClassFactory::QueryInterface(REFIID iid, void** object) {
  if (object == nullptr) return E_POINTER;
  if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory)) {
    *object = static_cast<IClassFactory*>(this);
    return S_OK;
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

HRESULT STDMETHODCALLTYPE ClassFactory::CreateInstance(IUnknown* outer, REFIID iid, void** object) {
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  if (outer != nullptr) return CLASS_E_NOAGGREGATION;
  try {
    return create_(iid, object);
  } catch (...) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace zorvat::qbsim
