// Replaces functions that a loaded module imports, by writing to its import address table.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <windows.h>

namespace zavotest {

// zavo.dll, which this program is linked to.
[[nodiscard]] HMODULE library();

// Calls `visit` for each function that `module` imports by name, with the name of the module it comes from and its
// entry in the import address table.
void forEachImport(HMODULE module,
                   const std::function<void(const char* neededModule, const char* function, void** slot)>& visit);

// The entry of `module`'s import address table that holds `function`; null when it imports no such function.
[[nodiscard]] void** importSlot(HMODULE module, const std::string& function);

// Writes one entry; returns what it held. A null entry, of what is not imported, fails the running test.
void* exchangeImport(void** slot, void* replacement);

// A function name as a template argument.
template <size_t size>
struct FunctionName {
  char text[size];
  consteval FunctionName(const char (&name)[size]) {
    for (size_t i = 0; i < size; ++i) text[i] = name[i];
  }
};

// An import of zavo.dll answered by any callable, for instance
//   Replacement<"GetDeviceCaps", decltype(&GetDeviceCaps)> caps([&](HDC dc, int index) {
//     return index == BITSPIXEL ? 4 : caps.original(dc, index);
//   });
// One at a time for each function.
template <FunctionName name, typename Function>
class Replacement;

template <FunctionName name, typename Result, typename... Arguments>
class Replacement<name, Result(WINAPI*)(Arguments...)> {
 public:
  explicit Replacement(std::function<Result(Arguments...)> answer) : slot_(importSlot(library(), name.text)) {
    current = std::move(answer);
    original_ = exchangeImport(slot_, reinterpret_cast<void*>(&call));
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement() {
    exchangeImport(slot_, original_);
    current = nullptr;
  }

  Result original(Arguments... arguments) const {
    return reinterpret_cast<Result(WINAPI*)(Arguments...)>(original_)(arguments...);
  }

 private:
  static Result WINAPI call(Arguments... arguments) { return current(arguments...); }

  static inline std::function<Result(Arguments...)> current;
  void** slot_;
  void* original_;
};

}  // namespace zavotest
