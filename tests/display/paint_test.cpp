// Painting compared pixel by pixel with a model: every depth, perspective and storage, every kind of rectangle, on
// devices of every depth.
#include <zavo.h>

#include <gtest/gtest.h>

#include "display/paint_model.h"
#include "support/canvas.h"
#include "support/platform_watch.h"

namespace zavotest {
namespace {

int paint(HDC dc, BitmapHandle& bitmap, const PaintRects& rects) {
  return Zv_PaintDC(dc, &bitmap, PaintRects::pointer(rects.source), PaintRects::pointer(rects.sourceClip),
                    &rects.destination, PaintRects::pointer(rects.destinationClip), SRCCOPY);
}

// Paints by colour or through a selected palette and holds the canvas against the model.
void expectPainted(Canvas& canvas, BitmapHandle& bitmap, const PaintRects& rects, int deviceBits, unsigned flags) {
  const PaintSettings settings(flags);
  canvas.clear();
  std::vector<uint32_t> expected = canvas.pixels();
  PaintModel model(canvas.width(), canvas.height(), expected);
  const FakeDevice device(deviceBits);
  int mode = -1;
  Zv_GetDitherFlags(canvas.dc(), &bitmap, nullptr, &mode);
  model.paint(bitmap, rects, mode, deviceBits);
  const bool byIndex = (flags & PAINT_INDEX_COLORS) != 0;
  const SelectedPalette palette(canvas.dc(), byIndex ? Zv_CreatePaintPalette(canvas.dc(), &bitmap) : nullptr);
  ASSERT_EQ(paint(canvas.dc(), bitmap, rects), KSUCCESS);
  EXPECT_EQ(bitmap.Flags & BMF_LOCKED, 0u);
  EXPECT_TRUE(shows(canvas, expected)) << "mode " << mode << ", display mode " << std::hex << flags << std::dec << "\n"
                                       << describe(bitmap, rects);
}

class PaintDepths : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Depths, PaintDepths, testing::ValuesIn(allDepths));

TEST_P(PaintDepths, ShowsWhatTheModelShows) {
  Canvas canvas(60, 50);
  constexpr int adjustments[][3] = {{0, 0, 100}, {0, 0, 100}, {150, 400, 180}, {-200, -300, 70}};
  for (unsigned index = 0; index < 400; ++index) {
    SCOPED_TRACE(testing::Message() << "case " << index);
    std::mt19937 random(index * 64 + static_cast<unsigned>(GetParam()));
    RandomBitmap bitmap(random, GetParam());
    const PaintRects rects = randomRects(random, bitmap, canvas.width(), canvas.height());
    constexpr int devices[] = {1, 4, 8, 24};
    constexpr unsigned used =
        PAINT_ORDERED_DITHER | PAINT_INDEX_COLORS | PAINT_CLUSTERED_DOT | PAINT_FIXED_PALETTE | PAINT_CUBE_PALETTE;
    const unsigned flags = (random() & used) | (random() % 4 != 0 ? unsigned{PAINT_DITHER} : 0u);
    const auto& a = adjustments[random() % 4];
    const PaintSettings settings;
    PaintSettings::adjust(a[0], a[1], a[2]);
    expectPainted(canvas, bitmap, rects, devices[random() % 4], flags);
    if (HasFailure()) return;
  }
}

TEST(PaintGray, ShowsTheCoverageOfBlackAndWhite) {
  Canvas canvas(40, 40);
  for (unsigned index = 0; index < 600; ++index) {
    SCOPED_TRACE(testing::Message() << "case " << index);
    std::mt19937 random(index);
    RandomBitmap bitmap(random, 1);
    giveBlackAndWhite(bitmap, random() % 2 != 0);
    const PaintRects rects = randomRects(random, bitmap, canvas.width(), canvas.height());
    const bool same = rects.destination.right - rects.destination.left ==
                      (rects.source ? rects.source->right - rects.source->left : bitmap.Width);
    // The second painter leaves pictures of the same size as they are; the model knows it by its mode only.
    const unsigned painter = same || random() % 2 != 0 ? PAINT_GRAY_1BIT : PAINT_GRAY_1BIT_ALT;
    const PaintSettings settings;
    if (random() % 3 == 0) PaintSettings::adjust(0, 300, 160);
    // Only the first painter's palette holds the grey levels.
    const unsigned byIndex = painter == PAINT_GRAY_1BIT && random() % 3 == 0 ? unsigned{PAINT_INDEX_COLORS} : 0u;
    expectPainted(canvas, bitmap, rects, 24, painter | byIndex);
    if (HasFailure()) return;
  }
}

TEST(Paint, TheSecondGrayPainterLeavesTheSameSizeBlackAndWhite) {
  Canvas canvas(20, 20);
  std::mt19937 random(5);
  TestBitmap bitmap(20, 10, 1);
  fillWithNoise(bitmap, random);
  const PaintSettings settings(PAINT_GRAY_1BIT_ALT);
  PaintRects rects;
  rects.destination = {0, 0, 20, 10};
  std::vector<uint32_t> expected = canvas.pixels();
  PaintModel(20, 20, expected).paint(bitmap, rects, 0, 24);
  ASSERT_EQ(paint(canvas.dc(), bitmap, rects), KSUCCESS);
  EXPECT_EQ(canvas.pixels(), expected);
}

TEST(Paint, RasterOperationIsPassedOn) {
  const PaintSettings settings;
  Canvas canvas(8, 8);
  TestBitmap bitmap(8, 8, 24);
  std::vector<uint8_t> row(bitmap.BytesPerLine, 0xF0);
  for (unsigned y = 0; y < 8; ++y) Zv_PutBitmapRow(&bitmap, row.data(), y, bitmap.BytesPerLine);
  const RECT all = {0, 0, 8, 8};
  ASSERT_EQ(Zv_PaintDC(canvas.dc(), &bitmap, nullptr, nullptr, &all, nullptr, SRCINVERT), KSUCCESS);
  EXPECT_EQ(canvas.pixels(), std::vector<uint32_t>(64, untouched ^ 0xF0F0F0));
}

// --- Bands

struct Band {
  RECT area;
  size_t bytes;
  const void* header;
};

// Notes the bands handed to the graphics interface.
class BandWatch {
 public:
  BandWatch()
      : calls_([this](HDC dc, int x, int y, int width, int height, int sx, int sy, int sw, int sh, const void* pixels,
                      const BITMAPINFO* info, UINT usage, DWORD rop) {
          bands.push_back({{x, y, x + width, y + height}, info->bmiHeader.biSizeImage, info});
          return calls_.original(dc, x, y, width, height, sx, sy, sw, sh, pixels, info, usage, rop);
        }) {}
  std::vector<Band> bands;

 private:
  Replacement<"StretchDIBits", decltype(&StretchDIBits)> calls_;
};

TEST(PaintBands, StayWithin256KilobytesAndCoverThePicture) {
  Canvas canvas(1000, 700);
  std::mt19937 random(6);
  const struct {
    int width, height, bits, deviceBits;
  } cases[] = {{640, 410, 24, 24}, {500, 333, 1, 24}, {700, 690, 8, 24}, {512, 512, 24, 8},
               {600, 400, 3, 24},  {90, 60, 1, 24},   {333, 700, 5, 4},  {410, 640, 32, 24}};
  for (const auto& c : cases) {
    for (const int perspective : {1, 2, 4, 8}) {
      SCOPED_TRACE(testing::Message() << c.width << " x " << c.height << ", " << c.bits << " bits to " << c.deviceBits
                                      << ", perspective " << perspective);
      TestBitmap bitmap(c.width, c.height, c.bits);
      fillWithNoise(bitmap, random);
      bitmap.ViewPerspective = perspective;
      PaintRects rects;
      rects.destination = {5, 3, 990, 695};
      const BandWatch watch;
      expectPainted(canvas, bitmap, rects, c.deviceBits, PAINT_DITHER | PAINT_ORDERED_DITHER);
      RECT covered = {};
      int64_t area = 0;
      for (const Band& band : watch.bands) {
        EXPECT_LE(band.bytes, 0x40000u);
        UnionRect(&covered, &covered, &band.area);
        area += int64_t{band.area.right - band.area.left} * (band.area.bottom - band.area.top);
      }
      EXPECT_TRUE(EqualRect(&covered, &rects.destination));
      EXPECT_EQ(area, int64_t{985} * 692);
      if (HasFailure()) return;
    }
  }
}

TEST(PaintBands, ARasterPrinterHasAHeaderOfItsOwn) {
  const PaintSettings settings;
  Canvas canvas(8, 8);
  TestBitmap bitmap(8, 8, 8);
  const RECT all = {0, 0, 8, 8};
  const BandWatch watch;
  for (const int technology : {DT_RASDISPLAY, DT_RASPRINTER, DT_RASDISPLAY}) {
    const FakeDevice device(24, 1, technology);
    ASSERT_EQ(Zv_PaintDC(canvas.dc(), &bitmap, nullptr, nullptr, &all, nullptr, SRCCOPY), KSUCCESS);
  }
  ASSERT_EQ(watch.bands.size(), 3u);
  EXPECT_NE(watch.bands[0].header, watch.bands[1].header);
  EXPECT_EQ(watch.bands[0].header, watch.bands[2].header);
}

// --- Arguments and failures

// Bitmap, device, destination and rows are looked at in this order.
TEST(Paint, RefusesMissingArguments) {
  const PaintSettings settings;
  const Canvas canvas(8, 8);
  const RECT all = {0, 0, 8, 8};
  TestBitmap bitmap(8, 8, 8), none;
  EXPECT_EQ(Zv_PaintDC(canvas.dc(), &none, nullptr, nullptr, &all, nullptr, SRCCOPY), KERR_BAD_BITMAP);
  const std::vector<uint8_t> rows(64);
  const struct {
    HDC dc;
    BitmapHandle* bitmap;
    const RECT* destination;
    const uint8_t* rows;
    int count;
    int status, statusOfRows;
  } cases[] = {
      {nullptr, nullptr, nullptr, nullptr, 8, KERR_BAD_BITMAP, KERR_BAD_BITMAP},
      {nullptr, &bitmap, &all, nullptr, 8, KERR_BAD_PARAMETER, KERR_BAD_BITMAP},
      {nullptr, &bitmap, &all, rows.data(), 8, KERR_BAD_PARAMETER, KERR_BAD_PARAMETER},
      {canvas.dc(), &bitmap, nullptr, rows.data(), 8, KERR_BAD_PARAMETER, KERR_BAD_PARAMETER},
      {canvas.dc(), &bitmap, &all, nullptr, 8, KSUCCESS, KERR_BAD_BITMAP},
      {canvas.dc(), &bitmap, &all, rows.data(), -8, KSUCCESS, KERR_BAD_PARAMETER},  // run records of 8 bits
  };
  for (size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(i);
    const auto& c = cases[i];
    for (const auto paintOf : {&Zv_PaintDC, &Zv_PaintRgnDC}) {
      EXPECT_EQ(paintOf(c.dc, c.bitmap, nullptr, nullptr, c.destination, nullptr, SRCCOPY), c.status);
    }
    for (const auto paintOf : {&Zv_PaintDCBuffer, &Zv_PaintRgnDCBuffer}) {
      EXPECT_EQ(paintOf(c.dc, c.bitmap, nullptr, nullptr, c.destination, nullptr, SRCCOPY, c.rows, 0, c.count),
                c.statusOfRows);
    }
  }
}

TEST(Paint, PaintsNothingWhereNothingIsLeft) {
  const PaintSettings settings;
  const Canvas canvas(8, 8);
  TestBitmap bitmap(8, 8, 8);
  const RECT all = {0, 0, 8, 8}, beside = {9, 0, 12, 8}, flat = {0, 3, 8, 3}, thin = {4, 0, 4, 8};
  const RECT inverted = {8, 0, 0, 8}, endless = {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
  const RECT* const cases[][4] = {
      {&beside, nullptr, &all, nullptr},  {&all, &beside, &all, nullptr},     {&all, &flat, &all, nullptr},
      {&flat, nullptr, &all, nullptr},    {&thin, nullptr, &all, nullptr},    {&inverted, nullptr, &all, nullptr},
      {nullptr, nullptr, &flat, nullptr}, {nullptr, nullptr, &thin, nullptr}, {nullptr, nullptr, &inverted, nullptr},
      {nullptr, nullptr, &all, &beside},  {nullptr, nullptr, &all, &flat},    {&endless, nullptr, &all, nullptr},
      {nullptr, nullptr, &endless, &all}};
  const std::vector<uint32_t> before = canvas.pixels();
  for (size_t i = 0; i < std::size(cases); ++i) {
    const auto& c = cases[i];
    EXPECT_EQ(Zv_PaintDC(canvas.dc(), &bitmap, c[0], c[1], c[2], c[3], SRCCOPY), KSUCCESS) << i;
    EXPECT_EQ(canvas.pixels(), before) << i;
  }
}

// Coordinates whose products do not fit 32 bits.
TEST(Paint, HugeRectanglesShowTheRightPart) {
  const PaintSettings settings;
  Canvas canvas(40, 30);
  std::mt19937 random(8);
  TestBitmap bitmap(700, 5, 8);
  fillWithNoise(bitmap, random);
  for (const LONG scale : {1000, 100000, 3000000}) {
    SCOPED_TRACE(scale);
    PaintRects rects;
    rects.destination = {-350 * scale, -2 * scale, 350 * scale, 3 * scale};
    rects.destinationClip = RECT{0, 0, 40, 30};
    expectPainted(canvas, bitmap, rects, 24, 0);
  }
}

TEST(Paint, ADeviceThatRefusesIsNotReported) {
  const PaintSettings settings;
  Canvas canvas(8, 8);
  TestBitmap bitmap(8, 8, 8);
  const RECT all = {0, 0, 8, 8};
  const Refusal refusal("StretchDIBits", 1, Repeat::fromThenOn);
  EXPECT_EQ(Zv_PaintDC(canvas.dc(), &bitmap, nullptr, nullptr, &all, nullptr, SRCCOPY), KSUCCESS);
  EXPECT_STREQ(refusal.refused(), "StretchDIBits");
}

}  // namespace
}  // namespace zavotest
