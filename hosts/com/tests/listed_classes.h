// The export classes as the test host meets them: the classes of the class list
// (export_class_list.h) with the CLSID and interface the IDL gives each name, and the
// coclasses the DLL's own type library declares.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <filesystem>
#include <string>
#include <vector>

#include "export_class_list.h"
#include "zorvat.h"

namespace zorvat::com::testing {

struct ClassInfo {
  const wchar_t* name;  // the class name, zorvat.<name> its ProgID
  const CLSID* clsid;
  const IID* iid;  // its dual interface
};

// Every class of the list, in the list's order.
#define ZORVAT_LISTED_CLASS(Class, folder) ClassInfo{L"" #Class, &CLSID_##Class, &IID__##Class},
inline const ClassInfo kListedClasses[] = {ZORVAT_EXPORT_CLASSES(ZORVAT_LISTED_CLASS)};
#undef ZORVAT_LISTED_CLASS

inline std::wstring prog_id(const ClassInfo& info) {
  return std::wstring(L"zorvat.") + info.name;
}

struct LibraryClass {
  std::wstring name;
  CLSID clsid{};
  IID default_interface{};  // IID_NULL when the coclass names none
};

// The coclasses of the type library embedded in `dll`, in the library's order, read
// without registering anything.
HRESULT library_classes(const std::filesystem::path& dll, std::vector<LibraryClass>& classes);

}  // namespace zorvat::com::testing
