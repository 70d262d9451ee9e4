// Wine starts a Unix program but gives no handle to wait for: the commands leave a file when they are done.
#include "output/unix_shell.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <windows.h>

namespace zavotest {

std::string unixPath(const std::string& windowsPath) {
  using NameFunction = char*(__cdecl*)(const wchar_t*);
  const auto nameOf = reinterpret_cast<NameFunction>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
  if (nameOf == nullptr) return {};
  char* name = nameOf(std::wstring(windowsPath.begin(), windowsPath.end()).c_str());
  const std::string result = name != nullptr ? name : "";
  HeapFree(GetProcessHeap(), 0, name);
  return result;
}

ShellResult shell(const std::string& commands) {
  const ScratchFolder folder;
  std::ofstream(folder.file("run"), std::ios::binary)
      << "(\n"
      << commands << "\n) </dev/null >'" << folder.unixFile("output") << "' 2>&1\n"
      << "echo $? >'" << folder.unixFile("code") << "'\nmv '" << folder.unixFile("code") << "' '"
      << folder.unixFile("done") << "'\n";
  char program[] = "\\\\?\\unix\\bin\\sh";
  std::string line = std::string(program) + " \"" + folder.unixFile("run") + "\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessA(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
    return {-1, "sh could not be started"};
  }
  ShellResult result;
  const ULONGLONG start = GetTickCount64();
  while (!(std::ifstream(folder.file("done")) >> result.exitCode)) {
    if (GetTickCount64() - start > 60000) return {-1, "no answer within a minute: " + commands};
    Sleep(10);
  }
  std::ifstream output(folder.file("output"), std::ios::binary);
  result.output = {std::istreambuf_iterator<char>(output), {}};
  return result;
}

ScratchFolder::ScratchFolder() {
  static unsigned number = 0;
  const std::string name = "zavo-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number);
  path_ = (std::filesystem::temp_directory_path() / name).string() + "\\";
  std::filesystem::create_directories(path_);
}

ScratchFolder::~ScratchFolder() {
  std::filesystem::remove_all(path_);
}

}  // namespace zavotest
