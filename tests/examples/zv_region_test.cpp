// zv region: selections combined in their order, and what is done with them.
#include <algorithm>

#include "zv_fixture.h"

namespace {

constexpr uint32_t red = 0xFF0000;

// Pixels of a colour.
int countOf(const BmpFile& picture, uint32_t color) {
  return static_cast<int>(std::count(picture.colors.begin(), picture.colors.end(), color));
}

TEST_F(Zv, SelectsFillsAndMasks) {
  const RunResult result = run(
      "region in.png out.bmp --rect 2,1,20,8 --rect 4,3,6,4 --mode subtract --rect 30,0,90,3 --fill ff0000 --report "
      "--write-mask mask.bmp --deselect");
  ASSERT_EQ(0u, result.exitCode) << result.output;
  EXPECT_NE(std::string::npos, result.output.find("selection: 157 pixels in 35x9 at 2,0")) << result.output;
  const BmpFile picture = readBmp(file("out.bmp"));
  const BmpFile mask = readBmp(file("mask.bmp"));
  ASSERT_EQ(sampleWidth, picture.width);
  EXPECT_EQ(1, mask.bitsPerPixel);
  ASSERT_EQ(picture.colors.size(), mask.colors.size());
  for (int y = 0; y < sampleHeight; ++y) {
    for (int x = 0; x < sampleWidth; ++x) {
      const bool hole = x >= 4 && x < 10 && y >= 3 && y < 7;
      const bool selected = (x >= 2 && x < 22 && y >= 1 && y < 9 && !hole) || (x >= 30 && y < 3);
      const auto at = static_cast<size_t>(y * sampleWidth + x);
      EXPECT_EQ(picture.colors[at], selected ? red : sampleColor(sample, x, y)) << x << ", " << y;
      EXPECT_EQ(mask.colors[at], selected ? 0xFFFFFFu : 0u) << x << ", " << y;
    }
  }
  // The mask selects the same again, also in a picture that is stored bottom-up.
  const RunResult again = run("region out.bmp again.bmp --mask mask.bmp --report --color ff0000 --mode xor --report");
  EXPECT_NE(std::string::npos, again.output.find("selection: 157 pixels in 35x9 at 2,0\nselection: 0 pixels"))
      << again.output;
}

TEST_F(Zv, OutlinesASelection) {
  const RunResult result = run("region in.png out.bmp --fill 808080 --polygon 5,1,30,1,30,10,5,10 --outline");
  ASSERT_EQ(0u, result.exitCode) << result.output;
  const BmpFile picture = readBmp(file("out.bmp"));
  // The outline is one pixel wide, half of it black, half of it white, in stripes of four.
  const int outline = 2 * (25 + 9) - 4;
  EXPECT_EQ(outline, countOf(picture, 0) + countOf(picture, 0xFFFFFF));
  EXPECT_NEAR(countOf(picture, 0), outline / 2, 4);

  const RunResult shallow = run("region in.png out.bmp --bits 2 --rect 0,0,5,5 --outline");
  EXPECT_EQ(1u, shallow.exitCode);
  EXPECT_EQ("zv: cannot draw on a picture of this depth (--bits 24 helps)\n", shallow.output);
}

}  // namespace
