// zv gray, halftone, combine, underlay, alpha and region: that each does its own work, on the right pixels.
#include <algorithm>

#include "zv_fixture.h"

namespace {

uint32_t sampleAt(int x, int y) {
  return sampleColor(sample, x, y);
}

unsigned channelOf(uint32_t color, int shift) {
  return color >> shift & 255;
}

unsigned brightnessAt(int x, int y) {
  const uint32_t color = sampleAt(x, y);
  return (2 * channelOf(color, 16) + 5 * channelOf(color, 8) + channelOf(color, 0) + 4) / 8;
}

uint32_t greyAt(int x, int y) {
  return brightnessAt(x, y) * 0x010101;
}

TEST_F(Zv, GreysAndHalftones) {
  expectPixels(made("gray in.png out.bmp"), greyAt);
  const BmpFile clustered = made("halftone in.png out.bmp --screen clustered");
  EXPECT_EQ(1, clustered.bitsPerPixel);
  EXPECT_NE(clustered.colors, made("halftone in.png out.bmp --screen dispersed").colors);
  EXPECT_EQ(clustered.colors, made("halftone in.png out.bmp --screen clustered --angle -360").colors);
  EXPECT_NE(clustered.colors, made("halftone in.png out.bmp --screen clustered --angle 22.5").colors);
}

TEST_F(Zv, CombinesPictures) {
  const auto black = [](int, int) { return 0u; };
  expectPixels(made("combine in.png in.png out.bmp --with difference"), black);
  expectPixels(made("combine in.png in.png out.bmp --with xor --invert-other --invert"), black);
  // A part elsewhere, in a selection, onto a picture that is stored bottom-up.
  run("convert in.png in.bmp");
  expectPixels(made("combine in.bmp in.png out.bmp --from 20,5,9,4 --at 3,2 --rect 0,0,8,20"), [](int x, int y) {
    return x >= 3 && x < 8 && y >= 2 && y < 6 ? sampleAt(x + 17, y + 3) : sampleAt(x, y);
  });
}

TEST_F(Zv, ShowsPicturesUnderOthersByAlpha) {
  run("region in.png white.png --fill ffffff");
  run("alpha in.png alpha.png --set in.png");
  expectPixels(made("alpha alpha.png out.bmp"), greyAt);
  const auto shown = [](int x, int y) {
    const unsigned alpha = brightnessAt(x, y);
    uint32_t result = 0;
    for (int shift = 0; shift < 24; shift += 8) {
      result |= (channelOf(sampleAt(x, y), shift) * alpha + 255 * (255 - alpha) + 127) / 255 << shift;
    }
    return result;
  };
  expectPixels(made("underlay alpha.png white.png out.bmp"), shown);
  expectPixels(made("underlay in.png white.png out.bmp --alpha in.png --stretch"), shown);
  // Around a selection, tiles of a part.
  run("convert in.png small.bmp --size 5x3");
  EXPECT_NE(made("underlay alpha.png small.bmp out.bmp --stretch").colors,
            made("underlay alpha.png small.bmp out.bmp").colors);
  const BmpFile tile = readBmp(file("small.bmp"));
  expectPixels(made("underlay in.png small.bmp out.bmp --rect 4,2,10,5"), [&](int x, int y) {
    return x >= 4 && x < 14 && y >= 2 && y < 7 ? sampleAt(x, y) : tile.at(x % 5, y % 3);
  });
}

TEST_F(Zv, SelectsFillsAndMasks) {
  const RunResult result = run(
      "region in.png out.bmp --rect 2,1,20,8 --rect 4,3,6,4 --mode subtract --rect 30,0,90,3 --fill ff0000 --report "
      "--write-mask mask.bmp --deselect --report");
  EXPECT_NE(std::string::npos, result.output.find("selection: 157 pixels in 35x9 at 2,0\nselection: 407 pixels"))
      << result.output;
  const auto selected = [](int x, int y) {
    const bool hole = x >= 4 && x < 10 && y >= 3 && y < 7;
    return (x >= 2 && x < 22 && y >= 1 && y < 9 && !hole) || (x >= 30 && y < 3);
  };
  expectPixels(readBmp(file("out.bmp")), [&](int x, int y) { return selected(x, y) ? 0xFF0000u : sampleAt(x, y); });
  expectPixels(readBmp(file("mask.bmp")), [&](int x, int y) { return selected(x, y) ? 0xFFFFFFu : 0u; });
  // The mask selects the same again, also in a picture that is stored bottom-up.
  const RunResult again = run("region out.bmp again.bmp --mask mask.bmp --report --color ff0000 --mode xor --report");
  EXPECT_NE(std::string::npos, again.output.find("selection: 157 pixels in 35x9 at 2,0\nselection: 0 pixels"))
      << again.output;
}

TEST_F(Zv, OutlinesASelection) {
  const BmpFile picture = made("region in.png out.bmp --fill 808080 --polygon 5,1,30,1,30,10,5,10 --outline");
  // The outline is one pixel wide, half of it black, half of it white, in stripes of four.
  const auto countOf = [&](uint32_t color) { return std::count(picture.colors.begin(), picture.colors.end(), color); };
  constexpr int outline = 2 * (25 + 9) - 4;
  EXPECT_EQ(outline, countOf(0) + countOf(0xFFFFFF));
  EXPECT_NEAR(countOf(0), outline / 2, 4);
}

}  // namespace
