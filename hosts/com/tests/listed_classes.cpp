#include "listed_classes.h"

#include "raii.h"

namespace zorvat::com::testing {
namespace {

// The interface a coclass marks [default], or IID_NULL.
HRESULT default_interface(ITypeInfo* coclass, WORD interfaces, IID& iid) {
  iid = IID_NULL;
  for (UINT index = 0; index < interfaces; ++index) {
    INT flags = 0;
    HRESULT hr = coclass->GetImplTypeFlags(index, &flags);
    if (FAILED(hr)) return hr;
    if (!(flags & IMPLTYPEFLAG_FDEFAULT) || (flags & IMPLTYPEFLAG_FSOURCE)) continue;
    HREFTYPE reference = 0;
    hr = coclass->GetRefTypeOfImplType(index, &reference);
    if (FAILED(hr)) return hr;
    ComPtr<ITypeInfo> implemented;
    hr = coclass->GetRefTypeInfo(reference, &implemented);
    if (FAILED(hr)) return hr;
    TYPEATTR* attributes = nullptr;
    hr = implemented->GetTypeAttr(&attributes);
    if (FAILED(hr)) return hr;
    iid = attributes->guid;
    implemented->ReleaseTypeAttr(attributes);
    return S_OK;
  }
  return S_OK;
}

}  // namespace

HRESULT library_classes(const std::filesystem::path& dll, std::vector<LibraryClass>& classes) {
  classes.clear();
  ComPtr<ITypeLib> library;
  HRESULT hr = LoadTypeLibEx(dll.c_str(), REGKIND_NONE, &library);
  if (FAILED(hr)) return hr;
  const UINT count = library->GetTypeInfoCount();
  for (UINT index = 0; index < count; ++index) {
    TYPEKIND kind;
    hr = library->GetTypeInfoType(index, &kind);
    if (FAILED(hr)) return hr;
    if (kind != TKIND_COCLASS) continue;
    ComPtr<ITypeInfo> info;
    hr = library->GetTypeInfo(index, &info);
    if (FAILED(hr)) return hr;
    LibraryClass coclass;
    unique_bstr name;
    hr = info->GetDocumentation(MEMBERID_NIL, name.put(), nullptr, nullptr, nullptr);
    if (FAILED(hr)) return hr;
    coclass.name.assign(name.get(), name.size());
    TYPEATTR* attributes = nullptr;
    hr = info->GetTypeAttr(&attributes);
    if (FAILED(hr)) return hr;
    coclass.clsid = attributes->guid;
    const WORD interfaces = attributes->cImplTypes;
    info->ReleaseTypeAttr(attributes);
    hr = default_interface(info.Get(), interfaces, coclass.default_interface);
    if (FAILED(hr)) return hr;
    classes.push_back(std::move(coclass));
  }
  return S_OK;
}

}  // namespace zorvat::com::testing
