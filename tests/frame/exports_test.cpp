// The library as the loader sees it: what it exports and what it asks for.
#include <zavo.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "support/import_patch.h"

namespace {

using namespace zavotest;

// The promise to callers: what the library exports in every release, a name a line.
std::vector<std::string> promisedNames() {
  std::ifstream file(ZAVO_EXPORTED_NAMES_PATH);
  std::vector<std::string> names;
  for (std::string name; file >> name;) names.push_back(name);
  return names;
}

// Names of the functions that the public header declares.
std::vector<std::string> declaredNames() {
  std::ifstream file(ZAVO_HEADER_PATH);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  std::vector<std::string> names;
  const std::string convention = "ZAVO_CALL";
  for (size_t at = text.find(convention); at != std::string::npos; at = text.find(convention, at + 1)) {
    const size_t name = text.find_first_not_of(" \r\n", at + convention.size());
    if (text.compare(name, 3, "Zv_") == 0) names.push_back(text.substr(name, text.find('(', name) - name));
  }
  std::sort(names.begin(), names.end());
  return names;
}

// Names in the export table, in its order.
std::vector<std::string> exportedNames() {
  const auto* base = reinterpret_cast<const uint8_t*>(library());
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
  const auto* table = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + directory.VirtualAddress);
  const auto* names = reinterpret_cast<const DWORD*>(base + table->AddressOfNames);
  EXPECT_EQ(table->NumberOfFunctions, table->NumberOfNames) << "nothing is exported by number alone";
  std::vector<std::string> exported;
  for (DWORD i = 0; i < table->NumberOfNames; ++i)
    exported.emplace_back(reinterpret_cast<const char*>(base + names[i]));
  return exported;
}

TEST(Library, ExportsWhatIsPromisedAndDeclaredByPlainNames) {
  const std::vector<std::string> exported = exportedNames();
  EXPECT_EQ(exported, promisedNames());
  EXPECT_EQ(exported, declaredNames());
}

TEST(Library, NeedsTheSystemAlone) {
  std::set<std::string> needed;
  forEachImport(library(), [&](const char* module, const char*, void**) {
    std::string name = module;
    std::transform(name.begin(), name.end(), name.begin(), [](char c) { return static_cast<char>(tolower(c)); });
    needed.insert(name);
  });
  EXPECT_EQ(needed, (std::set<std::string>{"gdi32.dll", "kernel32.dll", "msvcrt.dll", "user32.dll"}));
}

}  // namespace
