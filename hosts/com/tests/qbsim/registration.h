// Registration of qbsim.dll's classes under HKEY_CLASSES_ROOT (the test prefix's only):
// the ProgID, its CLSID and the in-process server's path, apartment-threaded.
#pragma once

#include <windows.h>

namespace zorvat::qbsim {

bool register_class(REFCLSID clsid, const wchar_t* prog_id, const wchar_t* path,
                    const wchar_t* description);
void unregister_class(REFCLSID clsid, const wchar_t* prog_id);

}  // namespace zorvat::qbsim
