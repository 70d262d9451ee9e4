// Opening and ending print jobs, with what can go wrong; what the fast variant hands to the driver.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>

#include "output/page_surface.h"
#include "support/platform_watch.h"
#include "support/progress_log.h"
#include "support/seen_picture.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

// A printer that notes what is done to it: each job is a device context in memory.
class NotedPrinter {
 public:
  std::string profile = "laser,winps,LPT1:";
  int startDocResult = 7, endPageResult = 1, endDocResult = 1;
  bool canBeOpened = true;

  // What was done since the last time.
  std::string calls() { return std::exchange(calls_, {}); }

 private:
  int note(const std::string& call, int result) {
    calls_ += call + "; ";
    return result;
  }

  std::string calls_;
  Replacement<"GetProfileStringA", decltype(&GetProfileStringA)> profile_{
      [this](const char* section, const char* key, const char* otherwise, char* text, DWORD size) {
        EXPECT_EQ(std::string(section) + "|" + key + "|" + otherwise, "windows|device|");
        lstrcpynA(text, profile.c_str(), static_cast<int>(size));
        return static_cast<DWORD>(strlen(text));
      }};
  Replacement<"CreateDCA", decltype(&CreateDCA)> create_{
      [this](const char* driver, const char* device, const char* port, const DEVMODEA* mode) -> HDC {
        EXPECT_EQ(mode, nullptr);
        note(std::string("open ") + driver + "|" + device + "|" + port, 0);
        return canBeOpened ? create_.original("DISPLAY", nullptr, nullptr, nullptr) : nullptr;
      }};
  Replacement<"StartDocA", decltype(&StartDocA)> startDoc_{[this](HDC, const DOCINFOA* info) {
    EXPECT_EQ(info->cbSize, 20);
    EXPECT_TRUE(info->lpszOutput == nullptr && info->lpszDatatype == nullptr && info->fwType == 0);
    return note(std::string("document ") + info->lpszDocName, startDocResult);
  }};
  Replacement<"StartPage", decltype(&StartPage)> startPage_{[this](HDC) { return note("page", 1); }};
  Replacement<"EndPage", decltype(&EndPage)> endPage_{[this](HDC) { return note("end page", endPageResult); }};
  Replacement<"EndDoc", decltype(&EndDoc)> endDoc_{[this](HDC) { return note("end", endDocResult); }};
  Replacement<"AbortDoc", decltype(&AbortDoc)> abort_{[this](HDC) { return note("abort", 1); }};
  Replacement<"DeleteDC", decltype(&DeleteDC)> delete_{[this](HDC dc) {
    // Painting has memory device contexts of its own.
    if (GetObjectType(dc) != OBJ_MEMDC) note("close", 0);
    return delete_.original(dc);
  }};
};

const std::string opened = "open winps|laser|LPT1:; document ZAVO GRAPHIC; page; ";
const std::string ended = "end page; end; close; ";
const std::string aborted = "abort; close; ";

TEST(PrintJob, IsOpenedOnTheDefaultPrinter) {
  const struct {
    const char* profile;
    const char* open;
  } cases[] = {
      {"a printer, its driver,its port,and more", "open  its driver|a printer|its port,and more; "},
      {"no port,winps", "open winps|no port|; "},
      {"nothing else", "open |nothing else|; "},
      {"", "open ||; "},
  };
  for (const auto& printer : cases) {
    NotedPrinter noted;
    noted.profile = printer.profile;
    noted.canBeOpened = false;
    EXPECT_EQ(Zv_PrintBitmapExt(nullptr, nullptr, 0, 0, 0, 0, 1), nullptr);
    EXPECT_EQ(noted.calls(), printer.open);
    EXPECT_EQ(Zv_PrintBitmapFast(nullptr, nullptr, 0, 0, 0, 0, 0), nullptr);
    EXPECT_EQ(noted.calls(), printer.open);
  }
}

// The three ways to print, as one.
using Print = HDC (*)(HDC dc, BitmapHandle* bitmap, int endJob);
constexpr Print ways[] = {
    [](HDC dc, BitmapHandle* bitmap, int endJob) { return Zv_PrintBitmapExt(dc, bitmap, 5, 5, 40, 30, endJob); },
    [](HDC dc, BitmapHandle* bitmap, int endJob) { return Zv_PrintBitmapFast(dc, bitmap, 5, 5, 40, 30, endJob); },
    [](HDC, BitmapHandle* bitmap, int endJob) { return Zv_PrintBitmap(bitmap, 5, 5, 40, 30, endJob); }};

TEST(PrintJob, BeginsAndEnds) {
  constexpr int results[][3] = {{1, 1, 1}, {0, 1, 1}, {-1, 1, 1}, {1, 0, 1}, {1, -3, 1}, {1, 1, 0}, {1, 1, -1}};
  TestBitmap bitmap(8, 6, 8);
  for (const auto& [startDoc, endPage, endDoc] : results) {
    for (const Print& print : ways) {
      for (BitmapHandle* printed : {static_cast<BitmapHandle*>(&bitmap), static_cast<BitmapHandle*>(nullptr)}) {
        SCOPED_TRACE(testing::Message() << startDoc << ", " << endPage << ", " << endDoc << ", way " << &print - ways);
        NotedPrinter noted;
        noted.startDocResult = startDoc;
        noted.endPageResult = endPage;
        noted.endDocResult = endDoc;
        EXPECT_EQ(print(nullptr, printed, 1) != nullptr, startDoc == 1 && endPage == 1 && endDoc == 1);
        EXPECT_EQ(noted.calls(),
                  startDoc == 1 ? opened + ended : "open winps|laser|LPT1:; document ZAVO GRAPHIC; close; ");
      }
    }
  }
}

TEST(PrintJob, IsKeptForTheNextCalls) {
  NotedPrinter noted;
  TestBitmap bitmap(8, 6, 8);
  HDC job = Zv_PrintBitmap(&bitmap, 5, 5, 40, 30, 0);
  ASSERT_NE(job, nullptr);
  EXPECT_EQ(noted.calls(), opened);
  EXPECT_NE(Zv_PrintBitmapExt(nullptr, &bitmap, 5, 5, 40, 30, 1), nullptr);
  EXPECT_EQ(noted.calls(), opened + ended) << "another job of the same thread goes its own way";
  EXPECT_EQ(Zv_PrintBitmap(&bitmap, 5, 5, 40, 30, 0), job);
  EXPECT_EQ(noted.calls(), "");
  EXPECT_EQ(Zv_PrintBitmap(nullptr, 0, 0, 0, 0, 1), job);
  EXPECT_EQ(noted.calls(), ended);
  EXPECT_NE(Zv_PrintBitmap(nullptr, 0, 0, 0, 0, 1), nullptr);
  EXPECT_EQ(noted.calls(), opened + ended) << "an ended job was kept";
}

TEST(PrintJob, ThatIsStoppedIsAbortedByWhoOpenedIt) {
  TestBitmap bitmap(8, 6, 8);
  NotedPrinter noted;
  HDC mine = CreateDCA("DISPLAY", nullptr, nullptr, nullptr);
  {
    const ProgressLog stopping(2, 0);
    for (const int endJob : {0, 1}) {
      EXPECT_EQ(Zv_PrintBitmapExt(nullptr, &bitmap, 5, 5, 40, 30, endJob), nullptr);
      EXPECT_EQ(noted.calls(), opened + aborted);
      EXPECT_EQ(Zv_PrintBitmap(&bitmap, 5, 5, 40, 30, endJob), nullptr);
      EXPECT_EQ(noted.calls(), opened + aborted);
      EXPECT_EQ(Zv_PrintBitmapExt(mine, &bitmap, 5, 5, 40, 30, endJob), nullptr);
      EXPECT_EQ(noted.calls(), endJob != 0 ? ended : "") << "the caller's own";
    }
  }
  ASSERT_NE(Zv_PrintBitmap(&bitmap, 5, 5, 40, 30, 0), nullptr);
  {
    const ProgressLog stopping(1, -1);
    EXPECT_EQ(Zv_PrintBitmap(&bitmap, 5, 5, 40, 30, 0), nullptr);
  }
  EXPECT_EQ(noted.calls(), opened + aborted) << "a job that was kept";
  EXPECT_NE(Zv_PrintBitmap(nullptr, 0, 0, 0, 0, 1), nullptr);
  EXPECT_EQ(noted.calls(), opened + ended) << "an aborted job was kept";
}

// What no driver knows goes through the row-by-row printing: it is fitted and reports its progress.
TEST(PrintFast, HandsWhatTheDriverKnowsToItInOneCall) {
  std::mt19937 random(43);
  for (const int bits : allDepths) {
    for (const int perspective : {1, 2, 4, 8, 0}) {
      for (const int order : {ORDER_BLUE_FIRST, ORDER_RED_FIRST}) {
        for (const int storage : {int{ALLOC_MEMORY}, ALLOC_MEMORY | ALLOC_RUNLENGTH}) {
          SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective << ", order " << order
                                          << ", storage " << storage);
          const bool turned = perspective == VIEW_TURNED_90 || perspective == VIEW_TURNED_270;
          const bool runs = bits == 1 && storage != ALLOC_MEMORY;
          const bool known = bits == 1 || bits == 4 || bits == 8 || (bits == 24 && order == ORDER_BLUE_FIRST);
          PageSurface page({.width = 121, .height = 91});
          TestBitmap bitmap;
          Zv_CreateBitmap(&bitmap, storage, 37, 11, bits, order, nullptr, perspective);
          fillWithNoise(bitmap, random);
          if (bits <= 8) giveRandomPalette(bitmap, random);
          const Snapshot before(bitmap);
          std::vector<std::vector<int>> places;
          std::optional<Replacement<"StretchDIBits", decltype(&StretchDIBits)>> noted;
          noted.emplace([&](HDC dc, int x, int y, int w, int h, int sx, int sy, int sw, int sh, const void* pixels,
                            const BITMAPINFO* info, UINT usage, DWORD rop) {
            places.push_back({x, y, w, h});
            return w == 0 ? 0 : noted->original(dc, x, y, w, h, sx, sy, sw, sh, pixels, info, usage, rop);
          });
          const ProgressLog log;
          EXPECT_EQ(Zv_PrintBitmapFast(page.dc(), &bitmap, 0, 3, 0, -50, 0), page.dc());
          EXPECT_TRUE(before.unchanged());
          ASSERT_EQ(log.percents.empty(), known && !turned && !runs);
          if (!log.percents.empty()) continue;
          EXPECT_EQ(Zv_PrintBitmapFast(page.dc(), &bitmap, 6, 7, 37, 11, 0), page.dc());
          EXPECT_EQ(places, (std::vector<std::vector<int>>{{0, 3, 0, -50}, {6, 7, 37, 11}}))
              << "neither fitted nor centred";
          const Picture seen = seenOf(bitmap), printed = page.picture();
          Picture expected(121, 91);
          for (int y = 0; y < 91; ++y) {
            for (int x = 0; x < 121; ++x) {
              const bool inside = x >= 6 && y >= 7 && x < 43 && y < 18;
              expected.at(x, y) = inside ? seen.at(x - 6, y - 7) : 0xFFFFFF;
            }
          }
          EXPECT_EQ(printed, expected);
        }
      }
    }
  }
}

}  // namespace
