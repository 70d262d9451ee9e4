// Memory and file services, and file access redirected to an application's functions.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <tuple>

#include "support/import_patch.h"
#include "support/platform_watch.h"

namespace {

using namespace zavotest;

struct TemporaryName {
  TemporaryName() { EXPECT_EQ(Zv_OsGetTempName(text), 0); }
  ~TemporaryName() { Zv_OsDelete(text); }
  char text[260] = {};
};

TEST(OsMemory, BlocksAreZeroedKeptAndFreed) {
  auto* block = static_cast<uint8_t*>(Zv_OsAllocInit(1000, 1));
  ASSERT_NE(block, nullptr);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(block[i], 0);
  memset(block, 7, 1000);
  block = static_cast<uint8_t*>(Zv_OsReAlloc(block, 100000));
  ASSERT_NE(block, nullptr);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(block[i], 7);
  // The clipboard takes such memory: moveable, and recovered from its address.
  EXPECT_EQ(GlobalSize(GlobalHandle(block)), 100000u);
  EXPECT_EQ(Zv_OsFree(block), 0);
  EXPECT_EQ(Zv_OsFree(nullptr), 0);
  EXPECT_EQ(Zv_OsReAlloc(nullptr, 10), nullptr);
}

TEST(OsMemory, RefusedResizingKeepsTheBlock) {
  auto* block = static_cast<uint8_t*>(Zv_OsAlloc(100));
  block[99] = 42;
  {
    const Refusal refusal("GlobalReAlloc", 1);
    EXPECT_EQ(Zv_OsReAlloc(block, 200), nullptr);
  }
  EXPECT_EQ(GlobalLock(GlobalHandle(block)), block) << "it is left unlocked";
  EXPECT_EQ(block[99], 42);
  Zv_OsFree(block);
}

TEST(OsFiles, OpenFlagsBecomeWhatThePlatformTakes) {
  using Opened = std::tuple<DWORD, DWORD, DWORD, DWORD>;  // access, sharing, disposition, attributes
  constexpr DWORD both = GENERIC_READ | GENERIC_WRITE;
  constexpr DWORD shareBoth = FILE_SHARE_READ | FILE_SHARE_WRITE;
  Opened opened;
  const Replacement<"CreateFileA", decltype(&CreateFileA)> creation(
      [&](LPCSTR, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD attributes, HANDLE) {
        opened = {access, sharing, disposition, attributes};
        return INVALID_HANDLE_VALUE;
      });
  const struct {
    int openFlags, permissionFlags;
    Opened opened;
  } cases[] = {
      {0, 0x180, {GENERIC_READ, shareBoth, OPEN_EXISTING, FILE_ATTRIBUTE_READONLY}},
      {1, 0x100, {GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL}},
      {2, 0x080, {both, 0, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL}},
      {3, 0x180, {both, shareBoth, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL}},
      {0x102, 0x180, {both, shareBoth, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL}},
      {0x302, 0x180, {both, shareBoth, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL}},
      {0x201, 0x180, {GENERIC_WRITE, shareBoth, TRUNCATE_EXISTING, FILE_ATTRIBUTE_NORMAL}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Zv_OsOpen("name", c.openFlags, c.permissionFlags), -1);
    EXPECT_EQ(opened, c.opened) << std::hex << c.openFlags << ", " << c.permissionFlags;
  }
  EXPECT_EQ(Zv_OsCreat("name", 0), -1);
  EXPECT_EQ(opened, Opened(both, shareBoth, CREATE_ALWAYS, 0));
  EXPECT_EQ(Zv_OsCreat("name", 0xFF), -1);
  EXPECT_EQ(opened, Opened(GENERIC_READ, shareBoth, CREATE_ALWAYS, 7));
}

TEST(OsFiles, ReadWriteAndSeek) {
  const TemporaryName name;
  const int file = Zv_OsCreat(name.text, 0);
  ASSERT_NE(file, -1);
  EXPECT_EQ(Zv_OsWrite(file, "hello", 5), 5);
  char text[10] = {};
  const struct {
    int offset, origin;
    unsigned position;
    const char* rest;
  } cases[] = {{1, 0, 1, "ello"}, {-3, 1, 2, "llo"}, {-1, 2, 4, "o"}, {0, 7, 5, ""}, {-9, 0, 0xFFFFFFFF, ""}};
  for (const auto& c : cases) {
    EXPECT_EQ(Zv_OsSeek(file, c.offset, c.origin), c.position);
    memset(text, 0, sizeof text);
    EXPECT_EQ(Zv_OsRead(file, text, sizeof text), static_cast<int>(strlen(c.rest)));
    EXPECT_STREQ(text, c.rest);
  }
  for (const char* refused : {"ReadFile", "WriteFile", "SetFilePointer"}) {
    const Refusal refusal(refused, 1);
    const bool ok =
        Zv_OsRead(file, text, 1) != -1 && Zv_OsWrite(file, text, 0) != -1 && Zv_OsSeek(file, 0, 0) != 0xFFFFFFFF;
    EXPECT_FALSE(ok) << refused;
  }
  EXPECT_EQ(Zv_OsClose(file), 0);
  EXPECT_EQ(Zv_OsDelete(name.text), 0);
  EXPECT_EQ(Zv_OsDelete(name.text), -1);
  EXPECT_EQ(Zv_OsOpen(name.text, 0, 0x180), -1);
}

// --- Redirection

std::string calls;

int ZAVO_CALL myOpen(const char* name, int openFlags, int permissionFlags) {
  calls += "open " + std::string(name) + std::to_string(openFlags) + std::to_string(permissionFlags) + ";";
  return 5;
}
int ZAVO_CALL myRead(int file, void*, unsigned count) {
  calls += "read " + std::to_string(file) + std::to_string(count) + ";";
  return 6;
}
int ZAVO_CALL myWrite(int file, const void*, unsigned count) {
  calls += "write " + std::to_string(file) + std::to_string(count) + ";";
  return 7;
}
unsigned ZAVO_CALL mySeek(int file, int offset, int origin) {
  calls += "seek " + std::to_string(file) + std::to_string(offset) + std::to_string(origin) + ";";
  return 8;
}
int ZAVO_CALL myClose(int file) {
  calls += "close " + std::to_string(file) + ";";
  return 9;
}

struct Table {
  IoOpenFunction open = nullptr;
  IoReadFunction read = nullptr;
  IoWriteFunction write = nullptr;
  IoSeekFunction seek = nullptr;
  IoCloseFunction close = nullptr;
  bool operator==(const Table&) const = default;
};

// Installs what is not null; the table in force before.
Table exchanged(Table table) {
  Zv_FilterIO(&table.open, &table.read, &table.write, &table.seek, &table.close);
  return table;
}

TEST(RedirectedIo, GoesToTheApplicationOfTheThread) {
  const Table defaults{&Zv_OsOpen, &Zv_OsRead, &Zv_OsWrite, &Zv_OsSeek, &Zv_OsClose};
  const Table mine{&myOpen, &myRead, &myWrite, &mySeek, &myClose};
  EXPECT_EQ(exchanged({}), defaults);
  EXPECT_EQ(exchanged(mine), defaults);
  EXPECT_EQ(exchanged({}), mine);
  Table elsewhere;
  std::thread([&] { elsewhere = exchanged({}); }).join();
  EXPECT_EQ(elsewhere, defaults);

  calls.clear();
  EXPECT_EQ(Zv_RedirectedOpen("n", 1, 2), 5);
  EXPECT_EQ(Zv_RedirectedRead(3, nullptr, 4), 6);
  EXPECT_EQ(Zv_RedirectedWrite(5, nullptr, 6), 7);
  EXPECT_EQ(Zv_RedirectedSeek(7, -8, 1), 8u);
  EXPECT_EQ(Zv_RedirectedClose(9), 9);
  EXPECT_EQ(calls, "open n12;read 34;write 56;seek 7-81;close 9;");

  Zv_RedirectIO(nullptr, &myRead, nullptr, nullptr, nullptr);
  Table expected = defaults;
  expected.read = &myRead;
  EXPECT_EQ(exchanged({}), expected);
  EXPECT_EQ(Zv_FilterIO(nullptr, nullptr, nullptr, nullptr, nullptr),
            Zv_RedirectIO(nullptr, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(exchanged({}), defaults);
}

}  // namespace
