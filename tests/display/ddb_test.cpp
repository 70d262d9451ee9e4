// Device-dependent bitmaps of the screen that the tests run on, there and back.
#include <zavo.h>

#include <gtest/gtest.h>

#include "display/paint_model.h"
#include "support/canvas.h"
#include "support/platform_watch.h"
#include "support/screen.h"
#include "support/seen_picture.h"

namespace zavotest {
namespace {

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
      EXPECT_TRUE(showsOnScreen(seenOf(back).pixels, expected)) << "mode " << mode;
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
    const Picture shown = seenOf(bitmap);
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < width; ++x) {
        const bool set = (bits[static_cast<size_t>(y * stride + x / 8)] >> (7 - x % 8) & 1) != 0;
        ASSERT_EQ(shown.at(x, y), set ? 0xFFFFFFu : 0u) << width << ": " << x << ", " << y;
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

}  // namespace
}  // namespace zavotest
