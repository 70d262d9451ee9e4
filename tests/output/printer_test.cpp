// A print job on the default printer, whose page is looked at as another program shows it.
#include <zavo.h>

#include <gtest/gtest.h>

#include "output/page_surface.h"
#include "output/printed_page.h"
#include "support/progress_log.h"
#include "support/seen_picture.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

// Colours may differ by so much a channel: 16-bit pictures keep five bits of it.
bool isNear(uint32_t a, uint32_t b) {
  for (int shift = 0; shift < 24; shift += 8) {
    if (std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255)) > 8) return false;
  }
  return true;
}

// The rectangle of the page shows the picture, stretched, and what lies around it is white. Edges may lie a pixel off,
// where the reader of the page rounds them.
testing::AssertionResult shows(const Picture& page, const RECT& rect, const Picture& picture) {
  const auto expectedAt = [&](LONG x, LONG y) {
    if (!PtInRect(&rect, {x, y})) return 0xFFFFFFu;
    return picture.at((x - rect.left) * picture.width / (rect.right - rect.left),
                      (y - rect.top) * picture.height / (rect.bottom - rect.top));
  };
  for (LONG y = std::max(rect.top - 2, 0L); y < std::min<LONG>(rect.bottom + 2, page.height); ++y) {
    for (LONG x = std::max(rect.left - 2, 0L); x < std::min<LONG>(rect.right + 2, page.width); ++x) {
      const uint32_t expected = expectedAt(x, y);
      bool uniform = true;
      for (LONG i = 0; i < 9; ++i) uniform = uniform && expectedAt(x + i % 3 - 1, y + i / 3 - 1) == expected;
      if (uniform && !isNear(page.at(x, y), expected)) {
        return testing::AssertionFailure() << page.at(x, y) << " instead of " << expected << " at " << x << ", " << y;
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

// In one call of the driver where it can be, at once, and row by row, as it is with a callback.
TEST(Printer, PrintsSeveralPicturesOnOnePageOfOneJob) {
  const std::string reason = whyNoPrinter();
  if (!reason.empty()) GTEST_SKIP() << reason;
  constexpr int columns = 9, width = 72, height = 48;
  ASSERT_GE(defaultPageSize().width, columns * 80);
  HDC job = nullptr;
  std::vector<std::pair<RECT, int>> cells;
  for (const int bits : allDepths) {
    for (const int perspective : allPerspectives) {
      for (const bool fast : {true, false}) {
        SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective);
        const auto number = static_cast<int>(cells.size());
        const int x = 10 + number % columns * 80, y = 20 + number / columns * 56;
        cells.push_back({{x, y, x + width, y + height}, bits});
        TestBitmap bitmap;
        makeSeen(bitmap, fields(bits), bits, perspective);
        const Snapshot before(bitmap);
        std::optional<ProgressLog> log;
        if (!fast && number % 3 == 0) log.emplace();
        const auto print = fast ? &Zv_PrintBitmapFast : &Zv_PrintBitmapExt;
        HDC printed = print(job, &bitmap, x, y, width, height, 0);
        ASSERT_NE(printed, nullptr);
        EXPECT_TRUE(job == nullptr || printed == job) << "another job";
        EXPECT_TRUE(before.unchanged()) << "it was flipped and not flipped back";
        job = printed;
      }
    }
  }
  ASSERT_EQ(Zv_PrintBitmapFast(job, nullptr, 0, 0, 0, 0, 1), job);
  const PrintedPage printed = takePrintedPage();
  ASSERT_EQ(printed.pages, 1) << printed.trouble;
  EXPECT_EQ(printed.title, "ZAVO GRAPHIC");
  for (const auto& [rect, bits] : cells) EXPECT_TRUE(shows(printed.picture, rect, fields(bits))) << bits << " bits";
  EXPECT_EQ(takePrintedPage().pages, 0) << "a second document";
}

}  // namespace
