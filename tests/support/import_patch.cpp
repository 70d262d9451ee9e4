// The import directory of a loaded module: for each DLL it needs, a list of names and a table of addresses.
#include "support/import_patch.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace zavotest {

HMODULE library() {
  return GetModuleHandleA("zavo.dll");
}

void** importSlot(HMODULE module, const std::string& function) {
  auto* base = reinterpret_cast<uint8_t*>(module);
  const auto at = [base]<typename T>(T*, DWORD address) { return reinterpret_cast<T*>(base + address); };
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* headers = at(static_cast<const IMAGE_NT_HEADERS*>(nullptr), static_cast<DWORD>(dos->e_lfanew));
  const DWORD directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  if (directory == 0) return nullptr;
  for (const auto* needed = at(static_cast<const IMAGE_IMPORT_DESCRIPTOR*>(nullptr), directory); needed->Name != 0;
       ++needed) {
    const auto* names = at(static_cast<const IMAGE_THUNK_DATA*>(nullptr), needed->OriginalFirstThunk);
    auto* addresses = at(static_cast<void**>(nullptr), needed->FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
      if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
      const auto* import = at(static_cast<const IMAGE_IMPORT_BY_NAME*>(nullptr), names->u1.AddressOfData);
      if (function == import->Name) return addresses;
    }
  }
  return nullptr;
}

void* exchangeImport(void** slot, void* replacement) {
  DWORD access = 0;
  VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &access);
  void* previous = *slot;
  *slot = replacement;
  VirtualProtect(slot, sizeof *slot, access, &access);
  return previous;
}

ImportPatch::ImportPatch(HMODULE module, const std::string& function, void* replacement)
    : slot_(importSlot(module, function)) {
  if (slot_ == nullptr) {
    ADD_FAILURE() << "the module does not import " << function;
    return;
  }
  original_ = exchangeImport(slot_, replacement);
}

ImportPatch::~ImportPatch() {
  if (slot_ != nullptr) exchangeImport(slot_, original_);
}

}  // namespace zavotest
