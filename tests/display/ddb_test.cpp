// Device-dependent bitmaps of the screen that the tests run on, there and back.
#include <zavo.h>

#include <gtest/gtest.h>

#include "display/canvas.h"
#include "display/paint_model.h"
#include "display/screen.h"
#include "support/platform_watch.h"
#include "support/refusals.h"

namespace zavotest {
namespace {

// What a bitmap that came from the device shows, 0xRRGGBB from the top.
std::vector<uint32_t> shownPixels(BitmapHandle& bitmap, const RGBQUAD* colors) {
  const Picture stored = pictureOf(bitmap);
  std::vector<uint32_t> pixels;
  for (int y = 0; y < bitmap.Height; ++y) {
    for (int x = 0; x < bitmap.Width; ++x) {
      int column = x, row = y;
      Zv_PointToBitmap(&bitmap, VIEW_UPRIGHT, &column, &row);
      const uint32_t value = stored.at(column, row);
      const RGBQUAD color =
          bitmap.BitsPerPixel <= 8
              ? colors[value]
              : RGBQUAD{static_cast<BYTE>(value >> 16), static_cast<BYTE>(value >> 8), static_cast<BYTE>(value), 0};
      pixels.push_back(static_cast<uint32_t>(color.rgbRed << 16 | color.rgbGreen << 8 | color.rgbBlue));
    }
  }
  return pixels;
}

TEST(Ddb, HoldsThePictureAsThePaintEngineShowsIt) {
  HDC screen = GetDC(nullptr);
  for (const int bits : allDepths) {
    for (const int perspective : {1, 2, 4, 8}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective);
      std::mt19937 random(static_cast<unsigned>(bits * 16 + perspective));
      TestBitmap bitmap(41, 27, bits);
      fillWithNoise(bitmap, random);
      bitmap.ViewPerspective = perspective;
      const bool turned = perspective == VIEW_TURNED_90 || perspective == VIEW_TURNED_270;
      const int width = turned ? 27 : 41, height = turned ? 41 : 27;

      // The thread's own flags do not matter, and are there again.
      const PaintSettings settings(PAINT_INDEX_COLORS);
      HBITMAP ddb = Zv_ConvertToDDB(bits % 2 != 0 ? nullptr : screen, &bitmap);
      ASSERT_NE(ddb, nullptr);
      EXPECT_EQ(Zv_GetDisplayMode(), unsigned{PAINT_INDEX_COLORS});
      BITMAP described = {};
      GetObjectA(ddb, sizeof described, &described);
      EXPECT_EQ(described.bmWidth, width);
      EXPECT_EQ(described.bmHeight, height);
      EXPECT_EQ(described.bmBitsPixel, screenBits());

      Zv_SetDisplayMode(~0u, PAINT_DITHER);
      int deviceBits = 0, mode = 0;
      Zv_GetDitherFlags(screen, &bitmap, &deviceBits, &mode);
      HPALETTE palette = Zv_CreatePaintPalette(screen, &bitmap);
      std::vector<uint32_t> expected(static_cast<size_t>(width * height));
      PaintRects rects;
      rects.destination = {0, 0, width, height};
      PaintModel(width, height, expected).paint(bitmap, rects, mode, deviceBits);

      TestBitmap back;
      ASSERT_EQ(Zv_ChangeFromDDB(screen, &back, ddb, palette), KSUCCESS);
      EXPECT_EQ(GetObjectType(ddb), 0u);
      EXPECT_EQ(back.Width, width);
      EXPECT_EQ(back.Height, height);
      EXPECT_EQ(back.BitsPerPixel, screenBits() == 8 ? 8 : 24);
      RGBQUAD colors[256] = {};
      if (back.BitsPerPixel <= 8) Zv_GetPaletteEntries(back.Palette, 0, back.ColorCount, colors);
      EXPECT_TRUE(showsOnScreen(shownPixels(back, colors), expected)) << "mode " << mode;
    }
  }
  ReleaseDC(nullptr, screen);
}

TEST(Ddb, OneBitBitmapsComeBackAsTheyAre) {
  HDC screen = GetDC(nullptr);
  std::mt19937 random(3);
  for (int width = 1; width <= 70; ++width) {
    const int stride = (width + 15) / 16 * 2;
    std::vector<uint8_t> bits(static_cast<size_t>(stride) * 9);
    for (auto& byte : bits) byte = static_cast<uint8_t>(random());
    HBITMAP mono = CreateBitmap(width, 9, 1, 1, bits.data());
    TestBitmap bitmap;
    ASSERT_EQ(Zv_ConvertFromDDB(screen, &bitmap, mono, nullptr), KSUCCESS);
    EXPECT_EQ(bitmap.BitsPerPixel, 1);
    const RGBQUAD blackWhite[] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
    const std::vector<uint32_t> shown = shownPixels(bitmap, blackWhite);
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < width; ++x) {
        const bool set = (bits[static_cast<size_t>(y * stride + x / 8)] >> (7 - x % 8) & 1) != 0;
        ASSERT_EQ(shown[static_cast<size_t>(y * width + x)], set ? 0xFFFFFFu : 0u) << width << ": " << x << ", " << y;
      }
    }
    DeleteObject(mono);
  }
  ReleaseDC(nullptr, screen);
}

TEST(Ddb, ChangingFreesTheBitmapOnSuccessOnly) {
  TestBitmap bitmap(9, 9, 24);
  {
    const Refusal refusal("CreateCompatibleBitmap", 1);
    EXPECT_EQ(Zv_ChangeToDDB(nullptr, &bitmap), nullptr);
  }
  EXPECT_TRUE(bitmap.allocated());
  HBITMAP ddb = Zv_ChangeToDDB(nullptr, &bitmap);
  EXPECT_NE(ddb, nullptr);
  EXPECT_FALSE(bitmap.allocated());
  EXPECT_EQ(Zv_ChangeToDDB(nullptr, &bitmap), nullptr);
  EXPECT_EQ(Zv_ConvertToDDB(nullptr, nullptr), nullptr);

  HDC screen = GetDC(nullptr);
  EXPECT_EQ(Zv_ChangeFromDDB(screen, nullptr, ddb, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ChangeFromDDB(screen, &bitmap, nullptr, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ConvertFromDDB(screen, &bitmap, static_cast<HBITMAP>(GetStockObject(WHITE_BRUSH)), nullptr),
            KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ConvertFromDDB(screen, &bitmap, ddb, nullptr), KSUCCESS);
  EXPECT_NE(GetObjectType(ddb), 0u);
  DeleteObject(ddb);
  ReleaseDC(nullptr, screen);
}

TEST(Ddb, GivesEverythingBackWhenAResourceIsRefused) {
  // Where a paint palette is wanted, the picture comes out without it.
  const std::vector<std::string> survived = {"CreatePalette", "GlobalAlloc"};
  refuseEachResource(
      {.codes = {0}, .survived = screenBits() == 8 ? survived : std::vector<std::string>(), .leastPoints = 5},
      [](RefusalRound& round) {
        TestBitmap bitmap(30, 20, 24);
        bitmap.ViewPerspective = VIEW_TURNED_90;
        round.keeps(bitmap);
        HBITMAP ddb = nullptr;
        round.run([&] {
          ddb = Zv_ConvertToDDB(nullptr, &bitmap);
          return ddb != nullptr ? 1 : 0;
        });
        if (ddb != nullptr) DeleteObject(ddb);
      });
  HDC screen = GetDC(nullptr);
  TestBitmap picture(30, 20, 24);
  HBITMAP ddb = Zv_ConvertToDDB(screen, &picture);
  // Without the screen's device context there is a resolution still.
  refuseEachResource({.survived = {"GetDC"}, .leastPoints = 3}, [&](RefusalRound& round) {
    TestBitmap bitmap;
    round.keeps(bitmap);
    round.run([&] { return Zv_ConvertFromDDB(screen, &bitmap, ddb, nullptr); });
  });
  DeleteObject(ddb);
  ReleaseDC(nullptr, screen);
}

}  // namespace
}  // namespace zavotest
