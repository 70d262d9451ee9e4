// zv paint: what a device of the screen's depth shows.
#include <algorithm>
#include <set>

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

  BmpFile paint(const std::string& options) const {
    const RunResult result = run("paint in.png out.bmp " + options);
    EXPECT_EQ(0u, result.exitCode) << result.output;
    return readBmp(file("out.bmp"));
  }
};

uint32_t at(const BmpFile& picture, int x, int y) {
  return picture.colors[static_cast<size_t>(y * picture.width + x)];
}

TEST_F(ZvPaint, TellsTheDeviceAndShowsWhatItCan) {
  const RunResult result = run("paint in.png out.bmp");
  ASSERT_EQ(0u, result.exitCode) << result.output;
  const BmpFile picture = readBmp(file("out.bmp"));
  ASSERT_EQ(sampleWidth, picture.width);
  ASSERT_EQ(sampleHeight, picture.height);
  if (deviceBits() == 24) {
    EXPECT_EQ("a device of 24 bits, painted as stored\n", result.output);
    for (int y = 0; y < sampleHeight; ++y) {
      for (int x = 0; x < sampleWidth; ++x) EXPECT_EQ(sampleColor(sample, x, y), at(picture, x, y)) << x << ", " << y;
    }
  } else {
    EXPECT_EQ("a device of 8 bits, painted dithered\n", result.output);
    EXPECT_EQ(8, picture.bitsPerPixel);
    const BmpFile ordered = paint("--ordered");
    EXPECT_NE(picture.colors, ordered.colors);
    EXPECT_NE(picture.colors, paint("--cube").colors);
    const std::set<uint32_t> colors(picture.colors.begin(), picture.colors.end());
    EXPECT_GT(colors.size(), 4u);
  }
}

TEST_F(ZvPaint, PlacesTheRectangles) {
  // Black and white are shown as they are everywhere.
  const BmpFile picture = paint(
      "--size 40x30 --background ffffff --brightness -1000 --source 2,1,20,8 --source-clip 4,0,99,7 "
      "--destination 10,5,20,16 --destination-clip 0,0,25,30");
  ASSERT_EQ(40, picture.width);
  ASSERT_EQ(30, picture.height);
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 40; ++x) {
      const bool painted = x >= 12 && x < 25 && y >= 5 && y < 5 + 12;
      EXPECT_EQ(painted ? 0u : 0xFFFFFFu, at(picture, x, y)) << x << ", " << y;
    }
  }
}

TEST_F(ZvPaint, AdjustsBrightnessContrastAndGamma) {
  for (const uint32_t color : paint("--brightness 1000").colors) EXPECT_EQ(0xFFFFFFu, color);
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

TEST_F(ZvPaint, SaysWhatIsWrong) {
  const struct {
    const char* options;
    DWORD exitCode;
    const char* message;
  } cases[] = {{"--contrast 1001", 2, "zv: --contrast takes a number from -1000 to 1000, not '1001'\n"},
               {"--source 1,2,3", 2, ""},
               {"--source 1,2,3,4,5", 2, "zv: --source takes four numbers, not '1,2,3,4,5'\n"},
               {"--flip", 2, "zv: unknown option --flip (zv paint --help lists them)\n"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.options);
    const RunResult result = run(std::string("paint in.png out.png ") + c.options);
    EXPECT_EQ(c.exitCode, result.exitCode);
    EXPECT_NE(std::string::npos, result.output.find(c.message)) << result.output;
  }
}

}  // namespace
