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

template <typename Work>
void onNewThread(Work work) {
  std::thread(work).join();
}

TEST(Settings, BelongToTheirThread) {
  Zv_DefaultDithering(3);
  Zv_SetDefaultXResolution(72);
  Zv_SetDefaultYResolution(96);
  Zv_SetStatusCallBack(&someCallback);
  std::tuple<int, int, int> elsewhere;
  StatusCallback callbackElsewhere = &someCallback;
  onNewThread([&] {
    elsewhere = bitmapDefaults();
    callbackElsewhere = Zv_GetStatusCallBack();
    Zv_DefaultDithering(5);
    Zv_SetDefaultXResolution(300);
  });
  EXPECT_EQ(elsewhere, std::tuple(7, 150, 150));
  EXPECT_EQ(callbackElsewhere, nullptr);
  EXPECT_EQ(bitmapDefaults(), std::tuple(3, 72, 96));
  EXPECT_EQ(Zv_SetStatusCallBack(nullptr), &someCallback);
  EXPECT_EQ(Zv_GetStatusCallBack(), nullptr);
  Zv_DefaultDithering(7);
  EXPECT_EQ(Zv_SetDefaultXResolution(150), 72);
  EXPECT_EQ(Zv_SetDefaultYResolution(150), 96);
}

TEST(Settings, ResolutionsBelowOneAreKeptButNotUsed) {
  for (const int dpi : {0, -1, -150}) {
    Zv_SetDefaultXResolution(dpi);
    Zv_SetDefaultYResolution(dpi);
    EXPECT_EQ(Zv_GetDefaultXResolution(), dpi);
    EXPECT_EQ(Zv_GetDefaultYResolution(), dpi);
    EXPECT_EQ(bitmapDefaults(), std::tuple(7, 150, 150));
  }
  Zv_SetDefaultXResolution(150);
  Zv_SetDefaultYResolution(150);
}

TEST(Settings, DitheringMethodsAboveEightAreRefused) {
  EXPECT_EQ(Zv_DefaultDithering(8), KSUCCESS);
  EXPECT_EQ(Zv_DefaultDithering(9), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_DefaultDithering(0xFFFFFFFF), KERR_BAD_PARAMETER);
  EXPECT_EQ(std::get<0>(bitmapDefaults()), 8);
  Zv_DefaultDithering(7);
}

// The shared block knows no defaults and no I/O functions; every call goes on all the same.
TEST(Settings, AThreadWithoutItsOwnBlockUsesTheSharedOne) {
  const struct {
    const char* refused;
    unsigned from;
  } cases[] = {{"GlobalAlloc", 1}, {"TlsSetValue", 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.refused);
    std::tuple<int, int, int> defaults;
    int resolution = -1, file = -1, written = -1, closed = -1;
    unsigned position = 0;
    void* blocks[2] = {};
    char name[260] = {};
    Zv_OsGetTempName(name);
    const Refusal refusal(c.refused, c.from, Repeat::fromThenOn);
    for (void*& block : blocks) {
      onNewThread([&] {
        defaults = bitmapDefaults();
        resolution = Zv_GetDefaultXResolution();
        file = Zv_RedirectedOpen(name, 2, 0x180);
        written = Zv_RedirectedWrite(file, "abc", 3);
        position = Zv_RedirectedSeek(file, -1, 1);
        closed = Zv_RedirectedClose(file);
        block = Zv_FilterIO(nullptr, nullptr, nullptr, nullptr, nullptr);
      });
    }
    EXPECT_NE(refusal.refused(), nullptr);
    EXPECT_EQ(defaults, std::tuple(0, 150, 150));
    EXPECT_EQ(resolution, 0);
    EXPECT_EQ(written, 3);
    EXPECT_EQ(position, 2u);
    EXPECT_EQ(closed, 0);
    EXPECT_EQ(blocks[0], blocks[1]) << "one block for the whole process";
    EXPECT_NE(blocks[0], Zv_FilterIO(nullptr, nullptr, nullptr, nullptr, nullptr));
    Zv_OsDelete(name);
  }
}

}  // namespace
