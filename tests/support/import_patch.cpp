// The import directory of a loaded module: for each DLL it needs, a list of names and a table of addresses.
#include "support/import_patch.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace zavotest {

HMODULE library() {
  return GetModuleHandleA("zavo.dll");
}

void forEachImport(HMODULE module, const std::function<void(const char*, const char*, void**)>& visit) {
  auto* base = reinterpret_cast<uint8_t*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const DWORD directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  if (directory == 0) return;
  const auto* needed = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory);
  for (; needed->Name != 0; ++needed) {
    const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + needed->OriginalFirstThunk);
    auto* slots = reinterpret_cast<void**>(base + needed->FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++slots) {
      if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
      const auto* import = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
      visit(reinterpret_cast<const char*>(base + needed->Name), import->Name, slots);
    }
  }
}

void** importSlot(HMODULE module, const std::string& function) {
  void** found = nullptr;
  forEachImport(module, [&](const char*, const char* name, void** slot) {
    if (function == name) found = slot;
  });
  return found;
}

void* exchangeImport(void** slot, void* replacement) {
  if (slot == nullptr) {
    ADD_FAILURE() << "the module does not import that function";
    return nullptr;
  }
  DWORD access = 0;
  VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &access);
  void* previous = *slot;
  *slot = replacement;
  VirtualProtect(slot, sizeof *slot, access, &access);
  return previous;
}

}  // namespace zavotest
