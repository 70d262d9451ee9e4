// The settings of a thread, and what stands in for them when they cannot be made.
#include <zavo.h>

#include <gtest/gtest.h>
#include <thread>
#include <tuple>

#include "support/platform_watch.h"

namespace {

using namespace zavotest;

int ZAVO_CALL someCallback(int) {
  return KSUCCESS;
}

// What a new bitmap of this thread gets: dithering method and resolutions.
std::tuple<int, int, int> bitmapDefaults() {
  BitmapHandle bitmap;
  Zv_InitBitmap(&bitmap, 1, 1, 24);
  return {bitmap.DitheringMethod, bitmap.XResolution, bitmap.YResolution};
}

TEST(Settings, BelongToTheirThread) {
  EXPECT_EQ(Zv_DefaultDithering(8), KSUCCESS);
  EXPECT_EQ(Zv_DefaultDithering(9), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_DefaultDithering(0xFFFFFFFF), KERR_BAD_PARAMETER);
  Zv_SetDefaultXResolution(72);
  Zv_SetDefaultYResolution(96);
  Zv_SetStatusCallBack(&someCallback);
  std::tuple<int, int, int> elsewhere;
  StatusCallback callbackElsewhere = &someCallback;
  std::thread([&] {
    elsewhere = bitmapDefaults();
    callbackElsewhere = Zv_GetStatusCallBack();
    Zv_DefaultDithering(5);
    Zv_SetDefaultXResolution(300);
  }).join();
  EXPECT_EQ(elsewhere, std::tuple(7, 150, 150));
  EXPECT_EQ(callbackElsewhere, nullptr);
  EXPECT_EQ(bitmapDefaults(), std::tuple(8, 72, 96));
  EXPECT_EQ(Zv_SetStatusCallBack(nullptr), &someCallback);
  EXPECT_EQ(Zv_GetStatusCallBack(), nullptr);
  Zv_DefaultDithering(7);
  EXPECT_EQ(Zv_SetDefaultXResolution(-1), 72);
  EXPECT_EQ(Zv_SetDefaultYResolution(0), 96);
  EXPECT_EQ(bitmapDefaults(), std::tuple(7, 150, 150)) << "resolutions below 1 are kept but not used";
  EXPECT_EQ(Zv_GetDefaultXResolution(), -1);
  EXPECT_EQ(Zv_SetDefaultXResolution(150), -1);
  EXPECT_EQ(Zv_GetDefaultYResolution(), 0);
  EXPECT_EQ(Zv_SetDefaultYResolution(150), 0);
}

// The shared block knows no defaults and no I/O functions; every call goes on all the same.
TEST(Settings, AThreadWithoutItsOwnBlockUsesTheSharedOne) {
  for (const char* refused : {"GlobalAlloc", "TlsSetValue"}) {
    SCOPED_TRACE(refused);
    char name[260] = {};
    Zv_OsGetTempName(name);
    const void* const own = Zv_FilterIO(nullptr, nullptr, nullptr, nullptr, nullptr);
    const void* shared = own;
    const Refusal refusal(refused, 1, Repeat::fromThenOn);
    for (const bool first : {true, false}) {
      std::thread([&] {
        EXPECT_EQ(bitmapDefaults(), std::tuple(0, 150, 150));
        EXPECT_EQ(Zv_GetDefaultXResolution(), 0);
        const int file = Zv_RedirectedOpen(name, 2, 0x180);
        EXPECT_EQ(Zv_RedirectedWrite(file, "abc", 3), 3);
        EXPECT_EQ(Zv_RedirectedSeek(file, -1, 1), 2u);
        EXPECT_EQ(Zv_RedirectedClose(file), 0);
        const void* block = Zv_FilterIO(nullptr, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(block == shared, !first) << "one block for the whole process, not the main thread's";
        shared = block;
      }).join();
    }
    EXPECT_NE(refusal.refused(), nullptr);
    Zv_OsDelete(name);
  }
}

}  // namespace
