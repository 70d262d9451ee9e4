#include "support/private_module.h"

#include <cstdint>
#include <gtest/gtest.h>

#include "support/import_patch.h"

namespace zavotest {

PrivateModule::PrivateModule(const std::map<std::string, void*>& replacedImports) {
  char original[MAX_PATH];
  char folder[MAX_PATH];
  GetModuleFileNameA(library(), original, sizeof original);
  GetTempPathA(sizeof folder, folder);
  GetTempFileNameA(folder, "zvc", 0, path_);
  EXPECT_TRUE(CopyFileA(original, path_, FALSE));
  module_ = LoadLibraryExA(path_, nullptr, DONT_RESOLVE_DLL_REFERENCES);
  EXPECT_NE(module_, nullptr);
  forEachImport(module_, [&](const char* neededModule, const char* function, void** slot) {
    const auto replaced = replacedImports.find(function);
    void* address = replaced != replacedImports.end()
                        ? replaced->second
                        : reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(neededModule), function));
    exchangeImport(slot, address);
  });
}

PrivateModule::~PrivateModule() {
  FreeLibrary(module_);
  DeleteFileA(path_);
}

bool PrivateModule::attach() {
  return notify(DLL_PROCESS_ATTACH);
}

void PrivateModule::detach() {
  notify(DLL_PROCESS_DETACH);
}

bool PrivateModule::notify(DWORD reason) {
  const auto* base = reinterpret_cast<const uint8_t*>(module_);
  const auto* headers =
      reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
  const auto entry = reinterpret_cast<BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID)>(
      reinterpret_cast<uintptr_t>(base) + headers->OptionalHeader.AddressOfEntryPoint);
  return entry(module_, reason, nullptr) != FALSE;
}

}  // namespace zavotest
