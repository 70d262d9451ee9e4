// A second instance of the library in this process, whose start the test sees and steers.
#pragma once

#include <map>
#include <string>
#include <windows.h>

namespace zavotest {

// A copy of zavo.dll under another file name, which the platform takes for another module. It is loaded without being
// started; its imports are filled in here, some of them with the test's functions.
class PrivateModule {
 public:
  explicit PrivateModule(const std::map<std::string, void*>& replacedImports);
  PrivateModule(const PrivateModule&) = delete;
  PrivateModule& operator=(const PrivateModule&) = delete;
  ~PrivateModule();

  // What the platform does when a process loads the library; false when the library refuses.
  [[nodiscard]] bool attach();
  void detach();

  // An exported function.
  template <typename Function>
  [[nodiscard]] Function find(const char* name) const {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

 private:
  bool notify(DWORD reason);

  char path_[MAX_PATH] = {};
  HMODULE module_ = nullptr;
};

}  // namespace zavotest
