// Where pictures go on a page and how they are painted there, on a page in memory.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>

#include "output/page_surface.h"
#include "support/progress_log.h"
#include "support/refusals.h"
#include "support/seen_picture.h"

namespace {

using namespace zavotest;

testing::AssertionResult isRect(const RECT& actual, const RECT& expected) {
  if (EqualRect(&actual, &expected)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << actual.left << ", " << actual.top << ", " << actual.right << ", "
                                     << actual.bottom << " instead of " << expected.left << ", " << expected.top << ", "
                                     << expected.right << ", " << expected.bottom;
}

TEST(PrintPlacement, FitsCentresAndTakesWhatIsGiven) {
  struct {
    const char* what;
    int pageWidth, pageHeight;
    int pictureWidth, pictureHeight;
    int perspective;
    int x, y, width, height;
    RECT expected;
  } const cases[] = {
      // Half of the 1500 rows left over, below the page's first row.
      {"fitted to the width", 1001, 2001, 100, 50, VIEW_UPRIGHT, 0, 0, 0, 0, {1, 751, 1001, 1251}},
      {"fitted to the height", 1001, 501, 100, 100, VIEW_UPRIGHT, 0, 0, 0, 0, {251, 1, 751, 501}},
      {"as seen, not as stored", 1001, 2001, 50, 100, VIEW_TURNED_90, 0, 0, 0, 0, {1, 751, 1001, 1251}},
      {"as seen, not as stored", 1001, 2001, 50, 100, VIEW_TURNED_270, 0, 0, 0, 0, {1, 751, 1001, 1251}},
      {"bottom-up", 1001, 2001, 100, 50, VIEW_BOTTOM_UP, 0, 0, 0, 0, {1, 751, 1001, 1251}},
      {"exactly the page", 101, 51, 100, 50, VIEW_UPRIGHT, 0, 0, 0, 0, {1, 1, 101, 51}},
      {"centred", 401, 301, 100, 50, VIEW_UPRIGHT, 0, 0, 200, 100, {101, 101, 301, 201}},
      {"centred, an odd rest", 401, 301, 100, 50, VIEW_UPRIGHT, 0, 0, 199, 99, {101, 101, 300, 200}},
      {"at the first usable column", 401, 301, 100, 50, VIEW_UPRIGHT, 1, 0, 200, 100, {1, 101, 201, 201}},
      {"at the first usable row", 401, 301, 100, 50, VIEW_UPRIGHT, 0, 1, 200, 100, {101, 1, 301, 101}},
      {"as given", 401, 301, 100, 50, VIEW_UPRIGHT, 7, 9, 30, 60, {7, 9, 37, 69}},
      {"the width follows", 401, 301, 100, 50, VIEW_UPRIGHT, 7, 9, 0, 60, {7, 9, 127, 69}},
      {"the height follows, rounded", 401, 301, 100, 50, VIEW_UPRIGHT, 7, 9, 31, 0, {7, 9, 38, 25}},
      {"the height follows, turned", 401, 301, 100, 50, VIEW_TURNED_90, 7, 9, 31, 0, {7, 9, 38, 71}},
      {"past the page's edges", 401, 301, 100, 50, VIEW_UPRIGHT, -20, 250, 100, 100, {0, 250, 80, 301}},
      {"wider than the page, centred", 401, 301, 100, 50, VIEW_UPRIGHT, 0, 0, 500, 100, {0, 101, 401, 201}},
  };
  for (const auto& place : cases) {
    SCOPED_TRACE(place.what);
    const PageSurface page({.width = place.pageWidth, .height = place.pageHeight});
    TestBitmap bitmap;
    Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, place.pictureWidth, place.pictureHeight, 24, ORDER_BLUE_FIRST, nullptr,
                    place.perspective);
    ASSERT_TRUE(bitmap.allocated());
    EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, place.x, place.y, place.width, place.height, 0), page.dc());
    EXPECT_TRUE(isRect(page.drawn(), place.expected));
  }
}

TEST(PrintPlacement, SurvivesSizesThatCannotBe) {
  const PageSurface page({.width = 101, .height = 51});
  TestBitmap bitmap(10, 5, 24), tall(1, 4000, 1);
  for (const bool reported : {false, true}) {
    std::optional<ProgressLog> log;
    if (reported) log.emplace();
    for (const int position : {INT_MIN, -1, 1, INT_MAX}) {
      for (const int size : {INT_MIN, -1, 1, INT_MAX}) {
        SCOPED_TRACE(testing::Message() << position << ", " << size);
        EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, position, position, size, size, 0), page.dc());
        EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 0, 0, size, 0, 0), page.dc());
        EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 0, 0, 0, size, 0), page.dc());
        EXPECT_EQ(Zv_PrintBitmapFast(page.dc(), &bitmap, position, position, size, size, 0), page.dc());
      }
    }
    // So thin that its fitted width is nothing.
    EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &tall, 0, 0, 0, 0, 0), page.dc());
  }
}

// What each call of the callback is to report for a number of printer rows.
std::vector<int> reportsFor(int rows) {
  std::vector<int> reports = {0};
  int percent = 0;
  for (int row = 1, carried = 0; row <= rows; ++row) {
    percent += 100 / rows;
    carried += 100 % rows;
    if (carried >= rows) {
      carried -= rows;
      ++percent;
    } else if (100 / rows == 0) {
      continue;
    }
    reports.push_back(percent);
  }
  return reports;
}

TEST(PrintPlacement, ReportsEachPrinterRowOfThePage) {
  const PageSurface page({.width = 401, .height = 301});
  TestBitmap bitmap(10, 5, 24);
  struct {
    int y, height;
    int rows;
  } const cases[] = {{10, 1, 1},     {10, 3, 3},     {10, 7, 7},     {10, 99, 99},
                     {10, 100, 100}, {10, 101, 101}, {10, 250, 250}, {-20, 60, 39},  // the page begins at row 1
                     {280, 90, 21},  {400, 10, 0},   {-90, 20, 0}};
  for (const auto& strip : cases) {
    SCOPED_TRACE(testing::Message() << strip.height << " rows at " << strip.y);
    const ProgressLog log;
    EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 5, strip.y, 20, strip.height, 0), page.dc());
    EXPECT_EQ(log.percents, reportsFor(strip.rows));
  }
}

// Row by row or at once, the page looks the same; but only the rows reported keep to the page's first row and column.
TEST(PrintPlacement, PaintsByRowsWhatItPaintsAtOnce) {
  std::mt19937 random(41);
  for (const PageDevice& device :
       {PageDevice{.width = 120, .height = 90}, PageDevice{.width = 120, .height = 90, .bits = 1, .colors = 2},
        PageDevice{.width = 120, .height = 90, .technology = DT_METAFILE}}) {
    PageSurface page(device);
    for (const int bits : allDepths) {
      for (const int perspective : allPerspectives) {
        SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective << ", device of " << device.bits
                                        << " bits");
        TestBitmap bitmap;
        Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, 37, 23, bits, ORDER_BLUE_FIRST, nullptr, perspective);
        fillWithNoise(bitmap, random);
        for (const int width : {37, 80, 19}) {
          page.clear();
          Zv_PrintBitmapExt(page.dc(), &bitmap, 6, 7, width, 50, 0);
          const Picture atOnce = page.picture();
          page.clear();
          const ProgressLog log;
          Zv_PrintBitmapExt(page.dc(), &bitmap, 6, 7, width, 50, 0);
          ASSERT_EQ(page.picture(), atOnce) << width << " wide";
        }
      }
    }
  }
}

TEST(PrintPlacement, LeavesOutTheFirstRowAndColumnWhenReporting) {
  PageSurface page({.width = 120, .height = 90});
  TestBitmap bitmap(10, 10, 24);
  Zv_PrintBitmapExt(page.dc(), &bitmap, -5, -5, 50, 50, 0);
  EXPECT_TRUE(isRect(page.drawn(), {0, 0, 45, 45}));
  page.clear();
  const ProgressLog log;
  Zv_PrintBitmapExt(page.dc(), &bitmap, -5, -5, 50, 50, 0);
  EXPECT_TRUE(isRect(page.drawn(), {1, 1, 45, 45}));
}

// The display mode as the callback sees it.
unsigned modeSeen = 0;
int ZAVO_CALL noteMode(int) {
  modeSeen = Zv_GetDisplayMode();
  return KSUCCESS;
}

TEST(PrintPlacement, SetsTheDisplayModeForTheTimeBeing) {
  constexpr unsigned dots = PAINT_ORDERED_DITHER | PAINT_CLUSTERED_DOT;
  constexpr unsigned all = 0x1FF & ~0x002u;
  struct {
    const char* what;
    PageDevice device;
    unsigned before, during;
  } const cases[] = {
      {"black only", {.bits = 1, .colors = 2}, PAINT_INDEX_COLORS | PAINT_DITHER, dots | PAINT_DITHER},
      {"black only", {.bits = 1, .colors = 2}, PAINT_GRAY_1BIT, dots | PAINT_GRAY_1BIT},
      {"black only, all flags", {.bits = 1, .colors = 2}, all, all & ~unsigned{PAINT_INDEX_COLORS}},
      {"more colours", {.bits = 1, .colors = 3}, PAINT_INDEX_COLORS | PAINT_DITHER, 0},
      {"deeper", {.bits = 4, .colors = 2}, PAINT_INDEX_COLORS | PAINT_DITHER, 0},
      {"a metafile",
       {.bits = 1, .colors = 2, .technology = DT_METAFILE},
       PAINT_DITHER | PAINT_CLUSTERED_DOT,
       PAINT_CLUSTERED_DOT},
      {"colour, all flags", {}, all, all & ~unsigned{PAINT_INDEX_COLORS | PAINT_DITHER}},
  };
  TestBitmap bitmap(10, 10, 8);
  for (const auto& mode : cases) {
    SCOPED_TRACE(mode.what);
    const PageSurface page(mode.device);
    const unsigned original = Zv_SetDisplayMode(~0u, mode.before);
    Zv_SetStatusCallBack(&noteMode);
    Zv_PrintBitmapExt(page.dc(), &bitmap, 1, 1, 10, 10, 0);
    Zv_SetStatusCallBack(nullptr);
    EXPECT_EQ(modeSeen, mode.during);
    EXPECT_EQ(Zv_GetDisplayMode(), mode.before);
    {
      const ProgressLog stopping(2, 0);
      EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 1, 1, 10, 10, 0), nullptr);
      EXPECT_EQ(Zv_GetDisplayMode(), mode.before) << "after it was stopped";
    }
    Zv_PrintBitmapExt(page.dc(), &bitmap, 1, 1, 10, 10, 0);
    EXPECT_EQ(Zv_GetDisplayMode(), mode.before) << "without a callback";
    Zv_SetDisplayMode(~0u, original);
  }
}

// On a printer that prints black only, greys become clustered dots: as the painter makes them, and neither diffused
// nor by the dispersed matrix.
TEST(PrintPlacement, PrintsClusteredDotsInBlack) {
  PageSurface page({.width = 101, .height = 81, .bits = 1, .colors = 2});
  Picture ramp(64, 16);
  for (int y = 0; y < ramp.height; ++y) {
    for (int x = 0; x < ramp.width; ++x) ramp.at(x, y) = static_cast<uint32_t>(x * 4) * 0x010101;
  }
  TestBitmap bitmap;
  makeSeen(bitmap, ramp, 24, VIEW_UPRIGHT);
  Zv_PrintBitmapExt(page.dc(), &bitmap, 8, 8, 64, 16, 0);
  const Picture printed = page.picture();
  // Rows 0 to 3 of the matrix; the rest mirrors them.
  constexpr int matrix[4][8] = {{112, 40, 72, 104, 144, 176, 208, 136},
                                {88, 8, 16, 48, 192, 232, 240, 168},
                                {56, 24, 0, 80, 160, 224, 248, 200},
                                {96, 64, 32, 120, 128, 216, 184, 152}};
  for (int y = 0; y < 16; ++y) {
    if (y % 8 >= 4) continue;
    for (int x = 0; x < 64; ++x) {
      const int level = (8 * x * 4 + 4) >> 3;
      ASSERT_EQ(printed.at(8 + x, 8 + y), matrix[y % 8][x % 8] < level ? 0xFFFFFFu : 0u) << x << ", " << y;
    }
  }
}

TEST(PrintPlacement, StopsWhenTheCallbackSaysSo) {
  PageSurface page({.width = 120, .height = 90});
  TestBitmap bitmap(10, 10, 24);
  {
    const Ledger ledger;
    const ProgressLog stopping(1, 0);
    EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 10, 10, 50, 50, 0), nullptr);
    EXPECT_EQ(stopping.percents.size(), 1u);
    EXPECT_TRUE(ledger.balanced());
  }
  EXPECT_TRUE(isRect(page.drawn(), {})) << "something was printed";
  {
    const ProgressLog stopping(11, -13);
    EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 10, 10, 50, 50, 0), nullptr);
  }
  EXPECT_TRUE(isRect(page.drawn(), {10, 10, 60, 20})) << "the rows before the stop";
  // The caller's device context was left alone.
  EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 10, 10, 50, 50, 0), page.dc());
}

TEST(PrintPlacement, WithoutABitmapOnlyTheJobIsHandled) {
  const PageSurface page({});
  TestBitmap none;
  for (BitmapHandle* bitmap : {static_cast<BitmapHandle*>(nullptr), static_cast<BitmapHandle*>(&none)}) {
    EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), bitmap, 1, 1, 10, 10, 0), page.dc());
    EXPECT_EQ(Zv_PrintBitmapFast(page.dc(), bitmap, 1, 1, 10, 10, 0), page.dc());
  }
  EXPECT_TRUE(isRect(page.drawn(), {}));
}

// Painting that fails is not reported; whatever is refused is given back, and what the bitmap holds stays.
TEST(PrintPlacement, SurvivesRefusals) {
  const PageSurface page({.width = 120, .height = 90});
  RefusalRules rules;
  rules.survived = {"GlobalAlloc", "GlobalReAlloc", "CreatePalette", "CreateFileMappingA", "MapViewOfFile"};
  for (const bool fast : {false, true}) {
    refuseEachResource(rules, [&](RefusalRound& round) {
      TestBitmap bitmap(37, 11, 8);
      const Snapshot before(bitmap);
      round.run([&] {
        const HDC printed = fast ? Zv_PrintBitmapFast(page.dc(), &bitmap, 5, 5, 60, 40, 0)
                                 : Zv_PrintBitmapExt(page.dc(), &bitmap, 5, 5, 60, 40, 0);
        return printed == page.dc() ? KSUCCESS : 0;
      });
      EXPECT_TRUE(before.unchanged());
    });
  }
}

}  // namespace
