// Wine starts a Unix program but gives no handle to wait for: the commands leave a file when they are done.
#include "output/unix_shell.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <windows.h>

namespace zavotest {
namespace {

std::string readFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

bool exists(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace

std::string unixPath(const std::string& windowsPath) {
  using NameFunction = char*(__cdecl*)(const wchar_t*);
  const auto nameOf = reinterpret_cast<NameFunction>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
  if (nameOf == nullptr) return {};
  const std::wstring wide(windowsPath.begin(), windowsPath.end());
  char* name = nameOf(wide.c_str());
  if (name == nullptr) return {};
  std::string result = name;
  HeapFree(GetProcessHeap(), 0, name);
  return result;
}

ShellResult shell(const std::string& commands) {
  const ScratchFolder folder;
  std::ofstream(folder.file("commands"), std::ios::binary) << commands << "\n";
  const std::string done = folder.unixFile("done");
  std::ofstream(folder.file("run"), std::ios::binary)
      << "sh '" << folder.unixFile("commands") << "' </dev/null >'" << folder.unixFile("output") << "' 2>&1\n"
      << "echo $? >'" << done << ".new'; mv '" << done << ".new' '" << done << "'\n";

  ShellResult result;
  char program[] = "\\\\?\\unix\\bin\\sh";
  std::string line = std::string(program) + " \"" + folder.unixFile("run") + "\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessA(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
    result.output = "sh could not be started";
    return result;
  }
  for (const ULONGLONG start = GetTickCount64(); !exists(folder.file("done"));) {
    if (GetTickCount64() - start > 60000) {
      result.output = "no answer within a minute: " + commands;
      return result;
    }
    Sleep(10);
  }
  result.exitCode = std::atoi(readFile(folder.file("done")).c_str());
  result.output = readFile(folder.file("output"));
  return result;
}

ScratchFolder::ScratchFolder() {
  char base[MAX_PATH];
  GetTempPathA(MAX_PATH, base);
  static unsigned number = 0;
  path_ = std::string(base) + "zavo-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number) + "\\";
  CreateDirectoryA(path_.c_str(), nullptr);
}

ScratchFolder::~ScratchFolder() {
  WIN32_FIND_DATAA found;
  const HANDLE search = FindFirstFileA((path_ + "*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    DeleteFileA((path_ + found.cFileName).c_str());
  } while (FindNextFileA(search, &found));
  FindClose(search);
  RemoveDirectoryA(path_.c_str());
}

}  // namespace zavotest
