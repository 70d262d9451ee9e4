// Print jobs on the default printer, whose pages are looked at as another program shows them.
#include <zavo.h>

#include <gtest/gtest.h>

#include "output/page_surface.h"
#include "output/printed_page.h"
#include "support/progress_log.h"
#include "support/seen_picture.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

class Printer : public testing::Test {
 protected:
  void SetUp() override {
    const std::string reason = whyNoPrinter();
    if (!reason.empty()) GTEST_SKIP() << reason;
    page = defaultPageSize();
    ASSERT_GE(page.width, 500);
    ASSERT_GE(page.height, 500);
  }

  PageSize page{};
};

// Edges may lie a pixel off, where the reader of the page rounds them.
constexpr int edge = 1;
// Colours may differ by so much a channel: 16-bit pictures keep five bits of it.
constexpr int colorTolerance = 8;

bool isNear(uint32_t a, uint32_t b) {
  for (int shift = 0; shift < 24; shift += 8) {
    if (std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255)) > colorTolerance)
      return false;
  }
  return true;
}

// The rectangle of the page shows the picture, stretched, and nothing of it lies outside.
testing::AssertionResult shows(const Picture& page, const RECT& rect, const Picture& picture) {
  const int width = rect.right - rect.left, height = rect.bottom - rect.top;
  for (int y = rect.top - edge - 1; y <= rect.bottom + edge; ++y) {
    for (int x = rect.left - edge - 1; x <= rect.right + edge; ++x) {
      if (x < 0 || y < 0 || x >= page.width || y >= page.height) continue;
      const bool outside =
          x < rect.left - edge || y < rect.top - edge || x >= rect.right + edge || y >= rect.bottom + edge;
      // A pixel that is as far from the border between two colours as edges may be off.
      const auto sourceAt = [&](int px, int py) {
        return picture.at((px - rect.left) * picture.width / width, (py - rect.top) * picture.height / height);
      };
      const bool inside =
          x >= rect.left + edge && y >= rect.top + edge && x < rect.right - edge && y < rect.bottom - edge;
      if (!inside && !outside) continue;
      const uint32_t expected = outside ? 0xFFFFFF : sourceAt(x, y);
      if (inside) {
        bool uniform = true;
        for (int dy = -edge; dy <= edge; ++dy) {
          for (int dx = -edge; dx <= edge; ++dx) uniform = uniform && sourceAt(x + dx, y + dy) == expected;
        }
        if (!uniform) continue;
      }
      if (!isNear(page.at(x, y), expected)) {
        return testing::AssertionFailure()
               << std::hex << page.at(x, y) << " instead of " << expected << std::dec << " at " << x << ", " << y;
      }
    }
  }
  return testing::AssertionSuccess();
}

// Six by four fields of different colours, none of them white; of so few colours as a depth has.
Picture fields(int bits) {
  constexpr uint32_t colors[] = {0x000000, 0xC00000, 0x00A000, 0x0000FF, 0xE0C000, 0x8000C0, 0x00B0B0, 0x606060};
  Picture picture(6, 4);
  const size_t count = bits == 1 ? 2 : bits == 2 ? 4 : 8;
  for (size_t i = 0; i < picture.pixels.size(); ++i) picture.pixels[i] = colors[(i + i / 6 + i / 11) % count];
  return picture;
}

TEST_F(Printer, FitsAndCentresOnThePage) {
  const Picture wide = fields(24);
  TestBitmap bitmap;
  makeSeen(bitmap, wide, 24, VIEW_BOTTOM_UP);
  const Snapshot before(bitmap);
  ASSERT_NE(Zv_PrintBitmapExt(nullptr, &bitmap, 0, 0, 0, 0, 1), nullptr);
  EXPECT_TRUE(before.unchanged());
  const PrintedPage printed = takePrintedPage();
  ASSERT_EQ(printed.pages, 1) << printed.trouble;
  EXPECT_EQ(printed.title, "ZAVO GRAPHIC");
  // A picture 6 by 4 on an upright page: as wide as the page from its column 1 on, the rest of the rows left over in
  // two halves.
  const int width = page.width - 1, height = MulDiv(width, 4, 6);
  const int top = 1 + (page.height - 1 - height) / 2;
  EXPECT_TRUE(shows(printed.picture, {1, top, 1 + width, top + height}, wide));
}

TEST_F(Printer, PrintsSeveralPicturesOnOnePageOfOneJob) {
  // A callback makes it print row by row.
  for (const bool reported : {false, true}) {
    SCOPED_TRACE(reported ? "row by row" : "at once");
    std::optional<ProgressLog> log;
    if (reported) log.emplace();
    TestBitmap bitmaps[3];
    constexpr int bits[] = {24, 8, 1}, perspectives[] = {VIEW_UPRIGHT, VIEW_TURNED_90, VIEW_BOTTOM_UP};
    HDC first = nullptr;
    for (int i = 0; i < 3; ++i) {
      makeSeen(bitmaps[i], fields(bits[i]), bits[i], perspectives[i]);
      HDC printed = Zv_PrintBitmap(&bitmaps[i], 100, 100 + 250 * i, 300, 0, i == 2 ? 1 : 0);
      ASSERT_NE(printed, nullptr);
      if (i == 0) first = printed;
      EXPECT_EQ(printed, first) << "another job";
    }
    const PrintedPage page = takePrintedPage();
    ASSERT_EQ(page.pages, 1) << page.trouble;
    for (int i = 0; i < 3; ++i) {
      EXPECT_TRUE(shows(page.picture, {100, 100 + 250 * i, 400, 300 + 250 * i}, fields(bits[i]))) << "picture " << i;
    }
    EXPECT_EQ(takePrintedPage().pages, 0) << "a second document";
  }
}

TEST_F(Printer, PrintsFastWhatTheDriverTakesAndTheRestRowByRow) {
  HDC job = nullptr;
  int cell = 0;
  const auto cellRect = [](int number) {
    const int x = 60 + number % 7 * 130, y = 50 + number / 7 * 110;
    return RECT{x, y, x + 120, y + 80};
  };
  for (const int bits : allDepths) {
    for (const int perspective : allPerspectives) {
      SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective);
      TestBitmap bitmap;
      makeSeen(bitmap, fields(bits), bits, perspective);
      ASSERT_TRUE(bitmap.allocated());
      const Snapshot before(bitmap);
      const RECT rect = cellRect(cell++);
      job = Zv_PrintBitmapFast(job, &bitmap, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, 0);
      ASSERT_NE(job, nullptr);
      EXPECT_TRUE(before.unchanged()) << "it was flipped and not flipped back";
    }
  }
  ASSERT_EQ(Zv_PrintBitmapFast(job, nullptr, 0, 0, 0, 0, 1), job);
  const PrintedPage page = takePrintedPage();
  ASSERT_EQ(page.pages, 1) << page.trouble;
  cell = 0;
  for (const int bits : allDepths) {
    for (const int perspective : allPerspectives) {
      EXPECT_TRUE(shows(page.picture, cellRect(cell++), fields(bits))) << bits << " bits, perspective " << perspective;
    }
  }
}

TEST_F(Printer, LeavesNoDocumentWhenStopped) {
  TestBitmap bitmap;
  makeSeen(bitmap, fields(24), 24, VIEW_UPRIGHT);
  for (const size_t call : {1u, 30u}) {
    SCOPED_TRACE(testing::Message() << "stopped at call " << call);
    const ProgressLog stopping(call, 0);
    EXPECT_EQ(Zv_PrintBitmapExt(nullptr, &bitmap, 0, 0, 300, 200, 0), nullptr);
    EXPECT_EQ(Zv_PrintBitmap(&bitmap, 0, 0, 300, 200, 1), nullptr);
  }
  {
    // A job that the thread's record keeps is the library's too.
    ASSERT_NE(Zv_PrintBitmap(&bitmap, 10, 10, 300, 200, 0), nullptr);
    const ProgressLog stopping(3, 0);
    EXPECT_EQ(Zv_PrintBitmap(&bitmap, 10, 300, 300, 200, 0), nullptr);
  }
  EXPECT_EQ(takePrintedPage().pages, 0);
  // And nothing of it is left for the next job.
  ASSERT_NE(Zv_PrintBitmap(&bitmap, 10, 600, 300, 200, 1), nullptr);
  const PrintedPage page = takePrintedPage();
  ASSERT_EQ(page.pages, 1) << page.trouble;
  EXPECT_TRUE(shows(page.picture, {10, 600, 310, 800}, fields(24)));
  EXPECT_EQ(page.picture.at(60, 60), 0xFFFFFFu);
}

TEST_F(Printer, EndsACallersStoppedJobOnlyWhenAskedTo) {
  TestBitmap bitmap;
  makeSeen(bitmap, fields(24), 24, VIEW_UPRIGHT);
  HDC job = Zv_PrintBitmapExt(nullptr, &bitmap, 100, 100, 300, 200, 0);
  ASSERT_NE(job, nullptr);
  const ProgressLog stopping(11, 0);
  EXPECT_EQ(Zv_PrintBitmapExt(job, &bitmap, 100, 400, 300, 200, 0), nullptr);
  EXPECT_EQ(Zv_PrintBitmapExt(job, &bitmap, 100, 700, 300, 200, 1), nullptr);
  EXPECT_EQ(GetObjectType(job), 0u) << "the device context is still there";
  const PrintedPage page = takePrintedPage();
  ASSERT_EQ(page.pages, 1) << page.trouble;
  EXPECT_TRUE(shows(page.picture, {100, 100, 400, 300}, fields(24)));
}

}  // namespace
