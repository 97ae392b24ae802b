// Replaces one function a loaded module imports, for as long as the patch lives: the
// entry of the module's import address table is pointed at the replacement and put
// back afterwards. The tests use it to give the DLL a user setting Wine does not let a
// prefix change (the two-digit-year window GetCalendarInfoW answers).
#pragma once

#include <windows.h>

namespace zorvat::com::testing {

class ImportPatch {
 public:
  // Patches `function` as `module` imports it from `dll` (matched without regard to
  // case). `patched()` is false when the module imports no such function.
  ImportPatch(HMODULE module, const char* dll, const char* function, void* replacement);
  ~ImportPatch();
  ImportPatch(const ImportPatch&) = delete;
  ImportPatch& operator=(const ImportPatch&) = delete;

  bool patched() const { return slot_ != nullptr; }

 private:
  void** slot_ = nullptr;
  void* original_ = nullptr;
};

}  // namespace zorvat::com::testing
