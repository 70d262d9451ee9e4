// Where pictures go on a page and how they are painted there, on a page in memory.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>

#include "output/page_surface.h"
#include "support/progress_log.h"
#include "support/seen_picture.h"

namespace {

using namespace zavotest;

testing::AssertionResult isRect(const RECT& actual, const RECT& expected) {
  if (EqualRect(&actual, &expected)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << actual.left << ", " << actual.top << ", " << actual.right << ", "
                                     << actual.bottom;
}

TEST(PrintPlacement, FitsCentresAndTakesWhatIsGiven) {
  struct Page {
    int width, height;
  };
  constexpr Page tall = {1001, 2001}, wide = {1001, 501}, small = {401, 301};
  const struct {
    const char* what;
    Page page;
    int width, height, perspective;  // of the picture
    int given[4];
    RECT expected;
  } cases[] = {
      // Half of the 1500 rows left over, below the page's first row.
      {"fitted to the width", tall, 100, 50, VIEW_BOTTOM_UP, {}, {1, 751, 1001, 1251}},
      {"fitted to the height", wide, 100, 100, VIEW_UPRIGHT, {}, {251, 1, 751, 501}},
      {"as seen, not as stored", tall, 50, 100, VIEW_TURNED_90, {}, {1, 751, 1001, 1251}},
      {"as seen, not as stored", tall, 50, 100, VIEW_TURNED_270, {}, {1, 751, 1001, 1251}},
      {"centred", small, 100, 50, VIEW_UPRIGHT, {0, 0, 200, 100}, {101, 101, 301, 201}},
      {"centred, an odd rest", small, 100, 50, VIEW_UPRIGHT, {0, 0, 199, 99}, {101, 101, 300, 200}},
      {"at the first usable column", small, 100, 50, VIEW_UPRIGHT, {1, 0, 200, 100}, {1, 101, 201, 201}},
      {"at the first usable row", small, 100, 50, VIEW_UPRIGHT, {0, 1, 200, 100}, {101, 1, 301, 101}},
      {"as given", small, 100, 50, VIEW_UPRIGHT, {7, 9, 30, 60}, {7, 9, 37, 69}},
      {"the width follows", small, 100, 50, VIEW_UPRIGHT, {7, 9, 0, 60}, {7, 9, 127, 69}},
      {"the height follows, rounded", small, 100, 50, VIEW_UPRIGHT, {7, 9, 31, 0}, {7, 9, 38, 25}},
      {"the height follows, turned", small, 100, 50, VIEW_TURNED_90, {7, 9, 31, 0}, {7, 9, 38, 71}},
      {"past the page's edges", small, 100, 50, VIEW_UPRIGHT, {-20, 250, 100, 100}, {0, 250, 80, 301}},
      {"wider than the page, centred", small, 100, 50, VIEW_UPRIGHT, {0, 0, 500, 100}, {0, 101, 401, 201}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    PageSurface page({.width = c.page.width, .height = c.page.height});
    TestBitmap bitmap(c.width, c.height, 24);
    bitmap.ViewPerspective = c.perspective;
    const auto print = [&] {
      EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, c.given[0], c.given[1], c.given[2], c.given[3], 0), page.dc());
    };
    print();
    EXPECT_TRUE(isRect(page.drawn(), c.expected));
    // Only rows that are reported keep to the page's first row and column.
    page.clear();
    const ProgressLog log;
    print();
    RECT usable = {1, 1, c.page.width, c.page.height};
    IntersectRect(&usable, &usable, &c.expected);
    EXPECT_TRUE(isRect(page.drawn(), usable));
  }
}

TEST(PrintPlacement, SurvivesSizesThatCannotBeAndBitmapsThatAreNone) {
  const PageSurface page({.width = 101, .height = 51});
  TestBitmap bitmap(10, 5, 24), tall(1, 4000, 1), none;
  for (BitmapHandle* const missing : {static_cast<BitmapHandle*>(nullptr), static_cast<BitmapHandle*>(&none)}) {
    EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), missing, 1, 1, 10, 10, 0), page.dc());
    EXPECT_EQ(Zv_PrintBitmapFast(page.dc(), missing, 1, 1, 10, 10, 0), page.dc());
  }
  EXPECT_TRUE(isRect(page.drawn(), {}));
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
  for (int row = 1; row <= rows; ++row) {
    if (row * 100 / rows != reports.back()) reports.push_back(row * 100 / rows);
  }
  return reports;
}

TEST(PrintPlacement, ReportsEachPrinterRowOfThePage) {
  const PageSurface page({.width = 401, .height = 301});
  TestBitmap bitmap(10, 5, 24);
  constexpr int strips[][3] = {{10, 1, 1},     {10, 7, 7},    {10, 99, 99},  {10, 100, 100}, {10, 101, 101},
                               {10, 250, 250}, {-20, 60, 39}, {280, 90, 21}, {400, 10, 0},   {-90, 20, 0}};
  for (const auto& [y, height, rows] : strips) {  // the page begins at row 1
    SCOPED_TRACE(testing::Message() << height << " rows at " << y);
    const ProgressLog log;
    EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 5, y, 20, height, 0), page.dc());
    EXPECT_EQ(log.percents, reportsFor(rows));
  }
}

// Row by row or at once, the page looks the same.
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
        TestBitmap bitmap(37, 23, bits);
        bitmap.ViewPerspective = perspective;
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

// The display mode as the callback sees it.
unsigned modeSeen = 0;
int ZAVO_CALL noteMode(int) {
  modeSeen = Zv_GetDisplayMode();
  return KSUCCESS;
}

// On a printer that prints black only, greys become clustered dots; other devices are left to themselves.
TEST(PrintPlacement, SetsTheDisplayModeForTheTimeBeing) {
  constexpr unsigned dots = PAINT_ORDERED_DITHER | PAINT_CLUSTERED_DOT;
  constexpr unsigned indexed = PAINT_INDEX_COLORS | PAINT_DITHER;
  constexpr unsigned all = 0x1FF & ~0x002u;
  const struct {
    PageDevice device;
    unsigned before, during;
  } cases[] = {
      {{.bits = 1, .colors = 2}, indexed, dots | PAINT_DITHER},
      {{.bits = 1, .colors = 2}, PAINT_GRAY_1BIT, dots | PAINT_GRAY_1BIT},
      {{.bits = 1, .colors = 2}, all, all & ~unsigned{PAINT_INDEX_COLORS}},
      {{.bits = 1, .colors = 3}, indexed, 0},
      {{.bits = 4, .colors = 2}, indexed, 0},
      {{.bits = 1, .colors = 2, .technology = DT_METAFILE}, PAINT_DITHER | PAINT_CLUSTERED_DOT, PAINT_CLUSTERED_DOT},
      {{}, all, all & ~indexed},
  };
  TestBitmap bitmap(10, 10, 8);
  for (const auto& mode : cases) {
    SCOPED_TRACE(testing::Message() << mode.device.bits << " bits, " << mode.device.colors << " colours");
    const PageSurface page(mode.device);
    const PaintSettings settings(mode.before);
    const auto expectPrinted = [&](HDC result) {
      EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 1, 1, 10, 10, 0), result);
      EXPECT_EQ(Zv_GetDisplayMode(), mode.before);
    };
    expectPrinted(page.dc());
    Zv_SetStatusCallBack(&noteMode);
    expectPrinted(page.dc());
    Zv_SetStatusCallBack(nullptr);
    EXPECT_EQ(modeSeen, mode.during);
    const ProgressLog stopping(2, 0);
    expectPrinted(nullptr);
  }
}

TEST(PrintPlacement, StopsWhenTheCallbackSaysSo) {
  PageSurface page({.width = 120, .height = 90});
  TestBitmap bitmap(10, 10, 24);
  for (const size_t call : {1u, 11u}) {
    const ProgressLog stopping(call, call == 1 ? 0 : -13);
    EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 10, 10, 50, 50, 0), nullptr);
    EXPECT_EQ(stopping.percents.size(), call);
    EXPECT_TRUE(isRect(page.drawn(), call == 1 ? RECT{} : RECT{10, 10, 60, 20})) << "the rows before the stop";
  }
  // The caller's device context was left alone.
  EXPECT_EQ(Zv_PrintBitmapExt(page.dc(), &bitmap, 10, 10, 50, 50, 0), page.dc());
}

}  // namespace
