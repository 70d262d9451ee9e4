// Start and stop of the library, in private instances of it.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include "core/legacy_host.h"
#include "support/import_patch.h"
#include "support/private_module.h"

namespace {

using namespace zavotest;

template <typename Function>
void* address(Function function) {
  return reinterpret_cast<void*>(function);
}

// A function of the platform that always fails.
template <typename Function, auto failure>
struct Failing;
template <typename Result, typename... Arguments, auto failure>
struct Failing<Result(WINAPI*)(Arguments...), failure> {
  static Result WINAPI call(Arguments...) { return failure; }
};

int slotsTaken = 0;
DWORD WINAPI countedTlsAlloc() {
  ++slotsTaken;
  return TlsAlloc();
}
BOOL WINAPI countedTlsFree(DWORD slot) {
  --slotsTaken;
  return TlsFree(slot);
}

TEST(Module, AttachesOnlyWithSettings) {
  const struct {
    const char* function;
    void* refusing;
    bool attaches;
  } cases[] = {{"TlsAlloc", address(&Failing<decltype(&TlsAlloc), TLS_OUT_OF_INDEXES>::call), false},
               {"GlobalAlloc", address(&Failing<decltype(&GlobalAlloc), nullptr>::call), false},
               {"TlsSetValue", address(&Failing<decltype(&TlsSetValue), FALSE>::call), false},
               {"CreateBitmap", address(&Failing<decltype(&CreateBitmap), nullptr>::call), true},
               {"CreatePatternBrush", address(&Failing<decltype(&CreatePatternBrush), nullptr>::call), true},
               {"none", nullptr, true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.function);
    slotsTaken = 0;
    PrivateModule module(
        {{c.function, c.refusing}, {"TlsAlloc", address(&countedTlsAlloc)}, {"TlsFree", address(&countedTlsFree)}});
    EXPECT_EQ(module.attach(), c.attaches);
    EXPECT_EQ(slotsTaken, c.attaches ? 1 : 0);
    module.detach();
    EXPECT_EQ(slotsTaken, 0);
  }
}

// --- A legacy host and its universal thunk

using ServiceRoutine = DWORD(WINAPI*)(LPVOID request, DWORD number);

struct Host {
  DWORD version;
  bool accepts;
  int registered = 0;
  int unregistered = 0;
  std::string names = {};
  ServiceRoutine service = nullptr;
};
Host host;

DWORD WINAPI givenVersion() {
  return host.version;
}
BOOL WINAPI utRegister(HINSTANCE, LPCSTR companion, LPCSTR init, LPCSTR procedure, void**, ServiceRoutine service,
                       LPVOID) {
  ++host.registered;
  host.names = std::string(companion) + " " + init + " " + procedure;
  host.service = service;
  return host.accepts ? TRUE : FALSE;
}
void WINAPI utUnRegister(HINSTANCE) {
  ++host.unregistered;
}
FARPROC WINAPI findThunk(HMODULE module, LPCSTR name) {
  if (strcmp(name, "UTRegister") == 0) return reinterpret_cast<FARPROC>(address(&utRegister));
  if (strcmp(name, "UTUnRegister") == 0) return reinterpret_cast<FARPROC>(address(&utUnRegister));
  return GetProcAddress(module, name);
}

// What the companion of a legacy host asks for.
void useService(BitmapHandle& bitmap) {
  uint8_t written[] = {1, 2, 3}, read[3] = {};
  zavo::ServiceRequest request{&bitmap, written, 2, 5, 3};
  EXPECT_EQ(host.service(&request, 0), DWORD{KSUCCESS});
  EXPECT_NE(bitmap.Data, nullptr);
  EXPECT_EQ(host.service(&request, 3), 3u);
  request.buffer = read;
  EXPECT_EQ(host.service(&request, 2), 3u);
  EXPECT_EQ(memcmp(read, written, 3), 0);
  EXPECT_EQ(host.service(&request, 1), DWORD{KSUCCESS});
  EXPECT_EQ(bitmap.Data, nullptr);
  EXPECT_EQ(static_cast<int>(host.service(&request, 4)), KERR_BAD_PARAMETER);
}

TEST(Module, LegacyHostsHaveAnotherStorageAndAThunkCompanion) {
  const struct {
    DWORD version;
    bool accepts, legacy;
  } cases[] = {{0x80000A03, true, true},  {0x80000A03, false, true}, {0xC0000003, true, true},
               {0x80000004, true, false}, {0x00000A03, true, false}, {0x00000005, true, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.version << ", accepts " << c.accepts);
    host = {.version = c.version, .accepts = c.accepts};
    PrivateModule module({{"GetVersion", address(&givenVersion)}, {"GetProcAddress", address(&findThunk)}});
    ASSERT_TRUE(module.attach());
    EXPECT_EQ(host.registered, c.legacy ? 1 : 0);
    EXPECT_EQ(host.names, c.legacy ? "ZAVO16.DLL UTInit UTProc" : "");
    BitmapHandle bitmap{};
    module.find<decltype(&Zv_InitBitmap)>("Zv_InitBitmap")(&bitmap, 16, 3, 8);
    EXPECT_EQ(module.find<decltype(&Zv_AllocateBitmap)>("Zv_AllocateBitmap")(&bitmap, ALLOC_MEMORY), KSUCCESS);
    EXPECT_EQ(bitmap.Data == nullptr, c.legacy) << "global memory is not addressable before it is locked";
    if (host.service != nullptr) useService(bitmap);
    module.find<decltype(&Zv_FreeBitmap)>("Zv_FreeBitmap")(&bitmap);
    EXPECT_EQ(host.unregistered, 0);
    module.detach();
    EXPECT_EQ(host.unregistered, c.legacy && c.accepts ? 1 : 0);
  }
}

}  // namespace
