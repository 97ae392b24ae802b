#include "import_patch.h"

#include <cstring>

namespace zorvat::com::testing {
namespace {

void write_slot(void** slot, void* value) {
  DWORD protection = 0;
  VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
  *slot = value;
  VirtualProtect(slot, sizeof *slot, protection, &protection);
}

}  // namespace

ImportPatch::ImportPatch(HMODULE module, const char* dll, const char* function, void* replacement) {
  if (module == nullptr) return;
  auto* base = reinterpret_cast<BYTE*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& imports =
      nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  if (imports.VirtualAddress == 0) return;
  for (auto* descriptor = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
       descriptor->Name != 0; ++descriptor) {
    if (_stricmp(reinterpret_cast<const char*>(base + descriptor->Name), dll) != 0) continue;
    // The names are in the lookup table; the addresses the loader filled in, in the
    // address table beside it.
    auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(base + (descriptor->OriginalFirstThunk != 0
                                                                  ? descriptor->OriginalFirstThunk
                                                                  : descriptor->FirstThunk));
    auto* addresses = reinterpret_cast<IMAGE_THUNK_DATA*>(base + descriptor->FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
      if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
      const auto* by_name =
          reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
      if (std::strcmp(reinterpret_cast<const char*>(by_name->Name), function) != 0) continue;
      slot_ = reinterpret_cast<void**>(&addresses->u1.Function);
      original_ = *slot_;
      write_slot(slot_, replacement);
      return;
    }
  }
}

ImportPatch::~ImportPatch() {
  if (slot_ != nullptr) write_slot(slot_, original_);
}

}  // namespace zorvat::com::testing
