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
  NotedPrinter() = default;

  std::string profile = "laser,winps,LPT1:";
  int startDocResult = 7, endPageResult = 1, endDocResult = 1;
  bool canBeOpened = true;
  std::string calls;
  DOCINFOA document{};

 private:
  Replacement<"GetProfileStringA", decltype(&GetProfileStringA)> profile_{
      [this](const char* section, const char* key, const char* otherwise, char* text, DWORD size) {
        EXPECT_STREQ(section, "windows");
        EXPECT_STREQ(key, "device");
        EXPECT_STREQ(otherwise, "");
        EXPECT_EQ(size, 81u);
        lstrcpynA(text, profile.c_str(), static_cast<int>(size));
        return static_cast<DWORD>(strlen(text));
      }};
  Replacement<"CreateDCA", decltype(&CreateDCA)> create_{
      [this](const char* driver, const char* device, const char* port, const DEVMODEA* mode) -> HDC {
        calls += std::string("open ") + driver + "|" + device + "|" + port + (mode == nullptr ? "; " : " mode; ");
        return canBeOpened ? create_.original("DISPLAY", nullptr, nullptr, nullptr) : nullptr;
      }};
  Replacement<"StartDocA", decltype(&StartDocA)> startDoc_{[this](HDC, const DOCINFOA* info) {
    calls += "document " + std::string(info->lpszDocName) + "; ";
    document = *info;
    return startDocResult;
  }};
  Replacement<"StartPage", decltype(&StartPage)> startPage_{[this](HDC) { return note("page", 1); }};
  Replacement<"EndPage", decltype(&EndPage)> endPage_{[this](HDC) { return note("end page", endPageResult); }};
  Replacement<"EndDoc", decltype(&EndDoc)> endDoc_{[this](HDC) { return note("end", endDocResult); }};
  Replacement<"AbortDoc", decltype(&AbortDoc)> abort_{[this](HDC) { return note("abort", 1); }};
  Replacement<"DeleteDC", decltype(&DeleteDC)> delete_{[this](HDC dc) {
    // Painting has memory device contexts of its own.
    if (GetObjectType(dc) != OBJ_MEMDC) calls += "close; ";
    return delete_.original(dc);
  }};

  int note(const char* call, int result) {
    calls += std::string(call) + "; ";
    return result;
  }
};

const std::string opened = "open winps|laser|LPT1:; document ZAVO GRAPHIC; page; ";

TEST(PrintJob, IsOpenedOnTheDefaultPrinter) {
  struct {
    const char* profile;
    const char* open;
  } const cases[] = {
      {"laser,winps,LPT1:", "open winps|laser|LPT1:; "},
      {"a printer, its driver,its port,and more", "open  its driver|a printer|its port,and more; "},
      {"no port,winps", "open winps|no port|; "},
      {"nothing else", "open |nothing else|; "},
      {"", "open ||; "},
  };
  for (const auto& printer : cases) {
    NotedPrinter noted;
    noted.profile = printer.profile;
    noted.canBeOpened = false;
    const Ledger ledger;
    EXPECT_EQ(Zv_PrintBitmapExt(nullptr, nullptr, 0, 0, 0, 0, 1), nullptr);
    EXPECT_EQ(Zv_PrintBitmapFast(nullptr, nullptr, 0, 0, 0, 0, 0), nullptr);
    EXPECT_EQ(noted.calls, std::string(printer.open) + printer.open);
    EXPECT_TRUE(ledger.balanced());
  }
}

// The three ways to print, as one.
using Print = HDC (*)(HDC dc, BitmapHandle* bitmap, int endJob);
constexpr Print ways[] = {
    [](HDC dc, BitmapHandle* bitmap, int endJob) { return Zv_PrintBitmapExt(dc, bitmap, 5, 5, 40, 30, endJob); },
    [](HDC dc, BitmapHandle* bitmap, int endJob) { return Zv_PrintBitmapFast(dc, bitmap, 5, 5, 40, 30, endJob); },
    [](HDC, BitmapHandle* bitmap, int endJob) { return Zv_PrintBitmap(bitmap, 5, 5, 40, 30, endJob); }};

TEST(PrintJob, BeginsAndEnds) {
  struct {
    const char* what;
    int startDoc, endPage, endDoc;
    bool printed;
    std::string calls;
  } const cases[] = {
      {"all well", 1, 1, 1, true, opened + "end page; end; close; "},
      {"no document", 0, 1, 1, false, "open winps|laser|LPT1:; document ZAVO GRAPHIC; close; "},
      {"a document refused", -1, 1, 1, false, "open winps|laser|LPT1:; document ZAVO GRAPHIC; close; "},
      {"the page does not end", 1, 0, 1, false, opened + "end page; end; close; "},
      {"the page ends in an error", 1, -3, 1, false, opened + "end page; end; close; "},
      {"the document does not end", 1, 1, 0, false, opened + "end page; end; close; "},
      {"the document ends in an error", 1, 1, -1, false, opened + "end page; end; close; "},
  };
  TestBitmap bitmap(8, 6, 8);
  for (const auto& job : cases) {
    for (const Print& print : ways) {
      for (BitmapHandle* printed : {static_cast<BitmapHandle*>(&bitmap), static_cast<BitmapHandle*>(nullptr)}) {
        SCOPED_TRACE(testing::Message() << job.what << ", way " << &print - ways);
        NotedPrinter noted;
        noted.startDocResult = job.startDoc;
        noted.endPageResult = job.endPage;
        noted.endDocResult = job.endDoc;
        const Ledger ledger;
        EXPECT_EQ(print(nullptr, printed, 1) != nullptr, job.printed);
        EXPECT_EQ(noted.calls, job.calls);
        EXPECT_TRUE(ledger.balanced());
        const DOCINFOA& document = noted.document;
        EXPECT_EQ(document.cbSize, 20);
        EXPECT_TRUE(document.lpszOutput == nullptr && document.lpszDatatype == nullptr && document.fwType == 0);
      }
    }
  }
}

TEST(PrintJob, IsKeptForTheNextCalls) {
  NotedPrinter noted;
  TestBitmap bitmap(8, 6, 8);
  HDC job = Zv_PrintBitmap(&bitmap, 5, 5, 40, 30, 0);
  ASSERT_NE(job, nullptr);
  EXPECT_EQ(noted.calls, opened);
  // Another job of the same thread goes its own way.
  EXPECT_NE(Zv_PrintBitmapExt(nullptr, &bitmap, 5, 5, 40, 30, 1), nullptr);
  noted.calls.clear();
  EXPECT_EQ(Zv_PrintBitmap(&bitmap, 5, 5, 40, 30, 0), job);
  EXPECT_EQ(noted.calls, "");
  EXPECT_EQ(Zv_PrintBitmap(nullptr, 0, 0, 0, 0, 1), job);
  EXPECT_EQ(noted.calls, "end page; end; close; ");
  noted.calls.clear();
  EXPECT_NE(Zv_PrintBitmap(nullptr, 0, 0, 0, 0, 1), nullptr) << "an ended job was kept";
  EXPECT_EQ(noted.calls, opened + "end page; end; close; ");
}

TEST(PrintJob, IsAbortedWhenTheLibraryOpenedIt) {
  TestBitmap bitmap(8, 6, 8);
  for (const int endJob : {0, 1}) {
    NotedPrinter noted;
    const ProgressLog stopping(2, 0);
    EXPECT_EQ(Zv_PrintBitmapExt(nullptr, &bitmap, 5, 5, 40, 30, endJob), nullptr);
    EXPECT_EQ(Zv_PrintBitmap(&bitmap, 5, 5, 40, 30, endJob), nullptr);
    EXPECT_EQ(noted.calls, opened + "abort; close; " + opened + "abort; close; ");
  }
  NotedPrinter noted;
  ASSERT_NE(Zv_PrintBitmap(&bitmap, 5, 5, 40, 30, 0), nullptr);
  {
    const ProgressLog stopping(1, -1);
    EXPECT_EQ(Zv_PrintBitmap(&bitmap, 5, 5, 40, 30, 0), nullptr);
  }
  EXPECT_EQ(noted.calls, opened + "abort; close; ") << "a job that was kept";
  noted.calls.clear();
  EXPECT_NE(Zv_PrintBitmap(nullptr, 0, 0, 0, 0, 1), nullptr);
  EXPECT_EQ(noted.calls, opened + "end page; end; close; ") << "an aborted job was kept";
}

TEST(PrintJob, OfTheCallerIsEndedOnlyWhenAskedTo) {
  TestBitmap bitmap(8, 6, 8);
  NotedPrinter noted;
  HDC mine = CreateDCA("DISPLAY", nullptr, nullptr, nullptr);
  const ProgressLog stopping(2, 0);
  EXPECT_EQ(Zv_PrintBitmapExt(mine, &bitmap, 5, 5, 40, 30, 0), nullptr);
  EXPECT_EQ(noted.calls, "");
  EXPECT_EQ(Zv_PrintBitmapExt(mine, &bitmap, 5, 5, 40, 30, 1), nullptr);
  EXPECT_EQ(noted.calls, "end page; end; close; ");
}

// What the graphics interface was given.
struct Stretch {
  RECT destination, source;  // right and bottom hold sizes
  BITMAPINFOHEADER header;
  std::vector<RGBQUAD> colors;
  std::vector<uint8_t> pixels;
  UINT usage;
  DWORD rop;
};

TEST(PrintFast, HandsThePictureToTheDriverInOneCall) {
  std::mt19937 random(43);
  for (const int bits : {1, 4, 8, 24}) {
    for (const int perspective : {int{VIEW_UPRIGHT}, int{VIEW_BOTTOM_UP}, 0}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective);
      const PageSurface page({.width = 120, .height = 90});
      TestBitmap bitmap;
      Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, 37, 11, bits, ORDER_BLUE_FIRST, nullptr, perspective);
      fillWithNoise(bitmap, random);
      if (bits <= 8) giveRandomPalette(bitmap, random);
      const Snapshot before(bitmap);
      const auto stored = bytesOf(bitmap);
      std::vector<Stretch> stretches;
      const Replacement<"StretchDIBits", decltype(&StretchDIBits)> noted(
          [&](HDC, int x, int y, int width, int height, int sourceX, int sourceY, int sourceWidth, int sourceHeight,
              const void* pixels, const BITMAPINFO* info, UINT usage, DWORD rop) {
            const auto* bytes = static_cast<const uint8_t*>(pixels);
            stretches.push_back({{x, y, width, height},
                                 {sourceX, sourceY, sourceWidth, sourceHeight},
                                 info->bmiHeader,
                                 {info->bmiColors, info->bmiColors + info->bmiHeader.biClrUsed},
                                 {bytes, bytes + info->bmiHeader.biSizeImage},
                                 usage,
                                 rop});
            return sourceHeight;
          });
      const ProgressLog log;
      // Neither fitted nor centred.
      EXPECT_EQ(Zv_PrintBitmapFast(page.dc(), &bitmap, 0, 3, 0, -50, 0), page.dc());
      EXPECT_TRUE(log.percents.empty());
      EXPECT_TRUE(before.unchanged());
      ASSERT_EQ(stretches.size(), 1u);
      const Stretch& stretch = stretches[0];
      const RECT destination = {0, 3, 0, -50}, source = {0, 0, 37, 11};
      EXPECT_TRUE(EqualRect(&stretch.destination, &destination));
      EXPECT_TRUE(EqualRect(&stretch.source, &source));
      const BITMAPINFOHEADER& header = stretch.header;
      EXPECT_EQ(header.biSize, 40u);
      EXPECT_EQ(header.biWidth, 37);
      EXPECT_EQ(header.biHeight, 11);
      EXPECT_EQ(header.biPlanes, 1);
      EXPECT_EQ(header.biBitCount, bits);
      EXPECT_EQ(header.biCompression, DWORD{BI_RGB});
      EXPECT_EQ(header.biSizeImage, bitmap.BytesPerLine * 11);
      EXPECT_EQ(header.biClrUsed, bits <= 8 ? bitmap.ColorCount : 0u);
      const auto palette = colorsOf(bitmap);
      ASSERT_EQ(stretch.colors.size(), palette.size());
      for (size_t i = 0; i < palette.size(); ++i) {
        EXPECT_EQ(stretch.colors[i].rgbRed, palette[i].peRed);
        EXPECT_EQ(stretch.colors[i].rgbGreen, palette[i].peGreen);
        EXPECT_EQ(stretch.colors[i].rgbBlue, palette[i].peBlue);
      }
      EXPECT_EQ(stretch.usage, UINT{DIB_RGB_COLORS});
      EXPECT_EQ(stretch.rop, DWORD{SRCCOPY});
      // Bottom-up, whatever the bitmap's own order.
      ASSERT_EQ(stretch.pixels.size(), stored.size());
      for (size_t row = 0; row < 11; ++row) {
        const size_t from = perspective == VIEW_BOTTOM_UP ? row : 10 - row;
        EXPECT_EQ(memcmp(&stretch.pixels[row * bitmap.BytesPerLine], &stored[from * bitmap.BytesPerLine],
                         static_cast<size_t>(37 * bits) / 8),
                  0)
            << "row " << row;
      }
    }
  }
}

// What goes through the row-by-row printing is fitted and reports its progress.
TEST(PrintFast, LeavesTheRestToPrintingByRows) {
  struct {
    const char* what;
    int bits, perspective, memoryType, colorOrder;
  } const cases[] = {
      {"16 bits", 16, VIEW_UPRIGHT, ALLOC_MEMORY, ORDER_BLUE_FIRST},
      {"32 bits", 32, VIEW_UPRIGHT, ALLOC_MEMORY, ORDER_BLUE_FIRST},
      {"turned", 24, VIEW_TURNED_90, ALLOC_MEMORY, ORDER_BLUE_FIRST},
      {"turned the other way", 8, VIEW_TURNED_270, ALLOC_MEMORY, ORDER_BLUE_FIRST},
      {"a depth that no driver knows", 3, VIEW_UPRIGHT, ALLOC_MEMORY, ORDER_BLUE_FIRST},
      {"red first", 24, VIEW_BOTTOM_UP, ALLOC_MEMORY, ORDER_RED_FIRST},
      {"run lengths", 1, VIEW_UPRIGHT, ALLOC_MEMORY | ALLOC_RUNLENGTH, ORDER_BLUE_FIRST},
  };
  for (const auto& other : cases) {
    SCOPED_TRACE(other.what);
    PageSurface page({.width = 121, .height = 91});
    TestBitmap bitmap;
    ASSERT_EQ(
        Zv_CreateBitmap(&bitmap, other.memoryType, 40, 40, other.bits, other.colorOrder, nullptr, other.perspective),
        KSUCCESS);
    const ProgressLog log;
    EXPECT_EQ(Zv_PrintBitmapFast(page.dc(), &bitmap, 0, 0, 0, 0, 0), page.dc());
    EXPECT_FALSE(log.percents.empty());
    const RECT drawn = page.drawn(), fitted = {16, 1, 106, 91};
    EXPECT_TRUE(EqualRect(&drawn, &fitted)) << drawn.left << ", " << drawn.top;
  }
}

}  // namespace
