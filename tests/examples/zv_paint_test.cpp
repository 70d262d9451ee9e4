// zv paint: what a device of the screen's depth shows.
#include "zv_fixture.h"

namespace {

class ZvPaint : public Zv {
 protected:
  /// 24 for every screen of true colours.
  static int deviceBits() {
    const HDC screen = GetDC(nullptr);
    const int bits = GetDeviceCaps(screen, BITSPIXEL);
    ReleaseDC(nullptr, screen);
    return bits >= 16 ? 24 : bits;
  }

  BmpFile paint(const std::string& options, std::string* output = nullptr) const {
    const RunResult result = run("paint in.png out.bmp " + options);
    EXPECT_EQ(0u, result.exitCode) << result.output;
    if (output != nullptr) *output = result.output;
    return readBmp(file("out.bmp"));
  }
};

TEST_F(ZvPaint, TellsTheDeviceAndShowsWhatItCan) {
  std::string output;
  const BmpFile picture = paint("", &output);
  if (deviceBits() == 24) {
    EXPECT_EQ("a device of 24 bits, painted as stored\n", output);
    expectPixels(picture, [](int x, int y) { return sampleColor(sample, x, y); });
  } else {
    EXPECT_EQ("a device of 8 bits, painted dithered\n", output);
    EXPECT_EQ(8, picture.bitsPerPixel);
    EXPECT_NE(picture.colors, paint("--ordered").colors);
    EXPECT_NE(picture.colors, paint("--cube").colors);
  }
}

TEST_F(ZvPaint, PlacesTheRectangles) {
  // Black and white are shown as they are everywhere.
  const BmpFile picture = paint(
      "--size 40x30 --background ffffff --brightness -1000 --source 2,1,20,8 --source-clip 4,0,99,7 "
      "--destination 10,5,20,16 --destination-clip 0,0,25,30");
  expectPixels(
      picture, [](int x, int y) { return x >= 12 && x < 25 && y >= 5 && y < 5 + 12 ? 0u : 0xFFFFFFu; }, 40, 30);
}

TEST_F(ZvPaint, AdjustsBrightnessContrastAndGamma) {
  expectPixels(paint("--brightness 1000"), [](int, int) { return 0xFFFFFFu; });
  if (deviceBits() != 24) return;
  const BmpFile plain = paint("");
  const BmpFile gamma = paint("--gamma 2");
  const BmpFile flat = paint("--contrast -1000");
  for (size_t i = 0; i < plain.colors.size(); ++i) {
    for (int shift = 0; shift < 24; shift += 8) {
      const uint32_t level = plain.colors[i] >> shift & 255;
      EXPECT_GE(gamma.colors[i] >> shift & 255, level);
      EXPECT_EQ(32 + (level * 133 + 128) / 256, flat.colors[i] >> shift & 255) << level;
    }
  }
}

}  // namespace
