// Wine starts a Unix program but gives no handle to wait for: the commands leave a file when they are done.
#include "output/unix_shell.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <windows.h>

namespace zavotest {
namespace {

// The Unix name of a file; empty where there is no Unix beneath.
std::string unixPath(const std::filesystem::path& path) {
  using NameFunction = char*(__cdecl*)(const wchar_t*);
  const auto nameOf = reinterpret_cast<NameFunction>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
  if (nameOf == nullptr) return {};
  char* name = nameOf(path.c_str());
  const std::string result = name != nullptr ? name : "";
  HeapFree(GetProcessHeap(), 0, name);
  return result;
}

ShellResult runIn(const std::filesystem::path& folder, const std::string& commands) {
  const std::string name = unixPath(folder) + "/";
  std::ofstream(folder / "run", std::ios::binary)
      << "(\n"
      << commands << "\n) </dev/null >'" << name << "output' 2>&1\n"
      << "echo $? >'" << name << "code'\nmv '" << name << "code' '" << name << "done'\n";
  char program[] = "\\\\?\\unix\\bin\\sh";
  std::string line = std::string(program) + " \"" + name + "run\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessA(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
    return {-1, "sh could not be started"};
  }
  ShellResult result;
  const ULONGLONG start = GetTickCount64();
  while (!(std::ifstream(folder / "done") >> result.exitCode)) {
    if (GetTickCount64() - start > 60000) return {-1, "no answer within a minute: " + commands};
    Sleep(10);
  }
  std::ifstream output(folder / "output", std::ios::binary);
  result.output = {std::istreambuf_iterator<char>(output), {}};
  return result;
}

}  // namespace

ShellResult shell(const std::string& commands) {
  static unsigned number = 0;
  const auto folder = std::filesystem::temp_directory_path() /
                      ("zavo-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number));
  std::filesystem::create_directories(folder);
  ShellResult result = runIn(folder, commands);
  std::filesystem::remove_all(folder);
  return result;
}

}  // namespace zavotest
