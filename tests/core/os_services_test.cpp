// Memory and file services, and file access redirected to an application's functions.
#include <zavo.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>
#include <tuple>
#include <vector>

#include "support/import_patch.h"
#include "support/platform_watch.h"

namespace {

using namespace zavotest;

TEST(OsMemory, BlocksAreZeroedKeptAndFreed) {
  auto* block = static_cast<uint8_t*>(Zv_OsAllocInit(1000, 1));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::count(block, block + 1000, 0), 1000);
  memset(block, 7, 1000);
  {
    const Refusal refusal("GlobalReAlloc", 1);
    EXPECT_EQ(Zv_OsReAlloc(block, 100000), nullptr);
  }
  EXPECT_EQ(GlobalLock(GlobalHandle(block)), block) << "it is left unlocked";
  block = static_cast<uint8_t*>(Zv_OsReAlloc(block, 100000));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::count(block, block + 1000, 7), 1000);
  // The clipboard takes such memory: moveable, and recovered from its address.
  EXPECT_EQ(GlobalSize(GlobalHandle(block)), 100000u);
  EXPECT_EQ(Zv_OsFree(block), 0);
  EXPECT_EQ(Zv_OsFree(nullptr), 0);
  EXPECT_EQ(Zv_OsReAlloc(nullptr, 10), nullptr);
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
  char name[260] = {};
  EXPECT_EQ(Zv_OsGetTempName(name), 0);
  const int file = Zv_OsCreat(name, 0);
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
  EXPECT_EQ(Zv_OsClose(file), 0);
  EXPECT_EQ(Zv_OsDelete(name), 0);
  EXPECT_EQ(Zv_OsDelete(name), -1);
  EXPECT_EQ(Zv_OsOpen(name, 0, 0x180), -1);

  const Replacement<"GetTempPathA", decltype(&GetTempPathA)> noFolder([](DWORD, LPSTR) { return 0u; });
  EXPECT_EQ(Zv_OsGetTempName(name), 0);
  EXPECT_STREQ(name, "");
}

// --- Redirection

std::vector<std::vector<intptr_t>> seen;

// A function of the application that notes its arguments.
template <typename Function, int result>
struct Noting;
template <typename Result, typename... Arguments, int result>
struct Noting<Result(ZAVO_CALL*)(Arguments...), result> {
  static Result ZAVO_CALL call(Arguments... arguments) {
    seen.push_back({(intptr_t)arguments...});
    return result;
  }
};

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
  const Table mine{&Noting<IoOpenFunction, 5>::call, &Noting<IoReadFunction, 6>::call,
                   &Noting<IoWriteFunction, 7>::call, &Noting<IoSeekFunction, 8>::call,
                   &Noting<IoCloseFunction, 9>::call};
  EXPECT_EQ(exchanged({}), defaults);
  EXPECT_EQ(exchanged(mine), defaults);
  EXPECT_EQ(exchanged({}), mine);
  Table elsewhere;
  std::thread([&] { elsewhere = exchanged({}); }).join();
  EXPECT_EQ(elsewhere, defaults);

  char data[1] = {};
  const auto where = reinterpret_cast<intptr_t>(data);
  EXPECT_EQ(Zv_RedirectedOpen(data, 1, 2), 5);
  EXPECT_EQ(Zv_RedirectedRead(3, data, 4), 6);
  EXPECT_EQ(Zv_RedirectedWrite(5, data, 6), 7);
  EXPECT_EQ(Zv_RedirectedSeek(7, -8, 1), 8u);
  EXPECT_EQ(Zv_RedirectedClose(9), 9);
  const std::vector<std::vector<intptr_t>> expectedCalls = {
      {where, 1, 2}, {3, where, 4}, {5, where, 6}, {7, -8, 1}, {9}};
  EXPECT_EQ(seen, expectedCalls);

  Zv_RedirectIO(nullptr, mine.read, nullptr, nullptr, nullptr);
  Table expected = defaults;
  expected.read = mine.read;
  EXPECT_EQ(exchanged({}), expected);
  EXPECT_EQ(Zv_FilterIO(nullptr, nullptr, nullptr, nullptr, nullptr),
            Zv_RedirectIO(nullptr, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(exchanged({}), defaults);
}

}  // namespace
