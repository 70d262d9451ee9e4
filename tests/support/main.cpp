// Entry point of every test executable. With --guard_pages all tests run in guarded memory (support/guard_pages.h).
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <windows.h>

#include "support/crash_note.h"
#include "support/guard_pages.h"
#include "support/platform_watch.h"

namespace {

// Says where the program crashed, for `addr2line -e MODULE`, instead of asking a debugger.
LONG WINAPI reportCrash(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  MEMORY_BASIC_INFORMATION code{};
  VirtualQuery(record.ExceptionAddress, &code, sizeof code);
  char module[MAX_PATH] = "?";
  GetModuleFileNameA(static_cast<HMODULE>(code.AllocationBase), module, sizeof module);
  std::printf(
      "crash: exception %08lx in %s + %#x\n", record.ExceptionCode, module,
      static_cast<unsigned>(static_cast<char*>(record.ExceptionAddress) - static_cast<char*>(code.AllocationBase)));
  if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
    std::printf("crash: %s address %#lx\n", record.ExceptionInformation[0] == 0 ? "read from" : "write to",
                record.ExceptionInformation[1]);
  }
  if (record.ExceptionCode == EXCEPTION_ILLEGAL_INSTRUCTION) {
    std::printf("crash: in the checked build, this is where undefined behaviour was met\n");
  }
  if (zavotest::crashNote[0] != '\0') std::printf("crash: %s\n", zavotest::crashNote);
  std::fflush(stdout);
  std::_Exit(3);
}

}  // namespace

int main(int argc, char** argv) {
  SetUnhandledExceptionFilter(reportCrash);
  testing::InitGoogleTest(&argc, argv);
  zavotest::startPlatformWatch();
  std::optional<zavotest::GuardPages> guard;
  if (argc > 1 && strcmp(argv[1], "--guard_pages") == 0) guard.emplace();
  return RUN_ALL_TESTS();
}
