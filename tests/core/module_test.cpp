// Start and stop of the library, in private instances of it.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "core/legacy_host.h"
#include "support/import_patch.h"
#include "support/private_module.h"

namespace {

using namespace zavotest;

template <typename Function>
void* address(Function function) {
  return reinterpret_cast<void*>(function);
}

DWORD WINAPI noSlot() {
  return TLS_OUT_OF_INDEXES;
}
HGLOBAL WINAPI noMemory(UINT, SIZE_T) {
  return nullptr;
}
BOOL WINAPI noValue(DWORD, LPVOID) {
  return FALSE;
}
HBITMAP WINAPI noBitmap(int, int, UINT, UINT, const void*) {
  return nullptr;
}
HBRUSH WINAPI noBrush(HBITMAP) {
  return nullptr;
}

int slotsTaken = 0;
DWORD WINAPI countedTlsAlloc() {
  ++slotsTaken;
  return TlsAlloc();
}
BOOL WINAPI countedTlsFree(DWORD slot) {
  --slotsTaken;
  return TlsFree(slot);
}

TEST(Module, IsNotLoadedWithoutATlsSlot) {
  const LibraryCopy copy;
  std::vector<DWORD> slots;
  for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) slots.push_back(slot);
  const HMODULE refused = LoadLibraryA(copy.path());
  const DWORD error = GetLastError();
  for (const DWORD slot : slots) TlsFree(slot);
  EXPECT_EQ(refused, nullptr);
  EXPECT_EQ(error, DWORD{ERROR_DLL_INIT_FAILED});
  HMODULE loaded = LoadLibraryA(copy.path());
  EXPECT_NE(loaded, nullptr);
  FreeLibrary(loaded);
}

TEST(Module, AttachesOnlyWithSettings) {
  const struct {
    const char* function;
    void* refusing;
    bool attaches;
  } cases[] = {{"TlsAlloc", address(&noSlot), false},           {"GlobalAlloc", address(&noMemory), false},
               {"TlsSetValue", address(&noValue), false},       {"CreateBitmap", address(&noBitmap), true},
               {"CreatePatternBrush", address(&noBrush), true}, {"none", nullptr, true}};
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

DWORD version = 0;
DWORD WINAPI givenVersion() {
  return version;
}

TEST(Module, LegacyHostsAreToldByTheirVersion) {
  const struct {
    DWORD version;
    bool legacy;
  } cases[] = {{0x80000A03, true}, {0x80000004, false}, {0x00000A03, false}, {0xC0000003, true}, {0x00000005, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.version);
    version = c.version;
    PrivateModule module({{"GetVersion", address(&givenVersion)}});
    ASSERT_TRUE(module.attach());
    BitmapHandle bitmap{};
    module.find<decltype(&Zv_InitBitmap)>("Zv_InitBitmap")(&bitmap, 5, 5, 8);
    EXPECT_EQ(module.find<decltype(&Zv_AllocateBitmap)>("Zv_AllocateBitmap")(&bitmap, ALLOC_MEMORY), KSUCCESS);
    EXPECT_EQ(bitmap.Data == nullptr, c.legacy) << "global memory is not addressable before it is locked";
    module.find<decltype(&Zv_FreeBitmap)>("Zv_FreeBitmap")(&bitmap);
    module.detach();
  }
}

// --- The universal thunk of a legacy host

using ServiceRoutine = DWORD(WINAPI*)(LPVOID request, DWORD number);

struct Thunk {
  bool accepts = true;
  int registered = 0;
  int unregistered = 0;
  std::string names;
  ServiceRoutine service = nullptr;
};
Thunk thunk;

BOOL WINAPI utRegister(HINSTANCE, LPCSTR companion, LPCSTR init, LPCSTR procedure, void**, ServiceRoutine service,
                       LPVOID) {
  ++thunk.registered;
  thunk.names = std::string(companion) + " " + init + " " + procedure;
  thunk.service = service;
  return thunk.accepts ? TRUE : FALSE;
}
void WINAPI utUnRegister(HINSTANCE) {
  ++thunk.unregistered;
}
FARPROC WINAPI findThunk(HMODULE module, LPCSTR name) {
  if (strcmp(name, "UTRegister") == 0) return reinterpret_cast<FARPROC>(address(&utRegister));
  if (strcmp(name, "UTUnRegister") == 0) return reinterpret_cast<FARPROC>(address(&utUnRegister));
  return GetProcAddress(module, name);
}

TEST(Module, RegistersWithTheThunkCompanionOfALegacyHost) {
  const struct {
    DWORD version;
    bool accepts;
    int registered, unregistered;
  } cases[] = {{0x80000A03, true, 1, 1}, {0x80000A03, false, 1, 0}, {0x00000005, true, 0, 0}};
  for (const auto& c : cases) {
    version = c.version;
    thunk = {};
    thunk.accepts = c.accepts;
    PrivateModule module({{"GetVersion", address(&givenVersion)}, {"GetProcAddress", address(&findThunk)}});
    ASSERT_TRUE(module.attach());
    EXPECT_EQ(thunk.registered, c.registered);
    EXPECT_EQ(thunk.unregistered, 0);
    EXPECT_EQ(thunk.names, c.registered != 0 ? "ZAVO16.DLL UTInit UTProc" : "");
    module.detach();
    EXPECT_EQ(thunk.unregistered, c.unregistered);
  }
}

TEST(Module, ServesTheThunkCompanion) {
  version = 0x80000A03;
  thunk = {};
  PrivateModule module({{"GetVersion", address(&givenVersion)}, {"GetProcAddress", address(&findThunk)}});
  ASSERT_TRUE(module.attach());
  BitmapHandle bitmap{};
  module.find<decltype(&Zv_InitBitmap)>("Zv_InitBitmap")(&bitmap, 16, 3, 8);
  module.find<decltype(&Zv_AllocateBitmap)>("Zv_AllocateBitmap")(&bitmap, ALLOC_MEMORY);

  uint8_t written[] = {1, 2, 3};
  uint8_t read[3] = {};
  zavo::ServiceRequest request{&bitmap, nullptr, 0, 0, 0};
  EXPECT_EQ(thunk.service(&request, 0), DWORD{KSUCCESS});
  EXPECT_NE(bitmap.Data, nullptr);
  request = {&bitmap, written, 2, 5, 3};
  EXPECT_EQ(thunk.service(&request, 3), 3u);
  request.buffer = read;
  EXPECT_EQ(thunk.service(&request, 2), 3u);
  EXPECT_EQ(memcmp(read, written, 3), 0);
  EXPECT_EQ(thunk.service(&request, 1), DWORD{KSUCCESS});
  EXPECT_EQ(bitmap.Data, nullptr);
  EXPECT_EQ(static_cast<int>(thunk.service(&request, 4)), KERR_BAD_PARAMETER);

  module.find<decltype(&Zv_FreeBitmap)>("Zv_FreeBitmap")(&bitmap);
  module.detach();
}

}  // namespace
