// zv gray, halftone, combine, underlay and alpha.
#include <algorithm>

#include "zv_fixture.h"

namespace {

unsigned channelOf(uint32_t color, int shift) {
  return color >> shift & 255;
}

unsigned brightnessOf(uint32_t color) {
  return (2 * channelOf(color, 16) + 5 * channelOf(color, 8) + channelOf(color, 0) + 4) / 8;
}

// Expects of every pixel of out.bmp what expected(x, y) gives.
template <typename Expected>
void expectPixels(const BmpFile& picture, Expected expected) {
  ASSERT_EQ(sampleWidth, picture.width);
  ASSERT_EQ(sampleHeight, picture.height);
  for (int y = 0; y < sampleHeight; ++y) {
    for (int x = 0; x < sampleWidth; ++x) {
      ASSERT_EQ(expected(x, y), picture.colors[static_cast<size_t>(y * sampleWidth + x)]) << x << ", " << y;
    }
  }
}

TEST_F(Zv, TurnsPicturesGrey) {
  EXPECT_EQ("", run("gray in.png out.bmp").output);
  const BmpFile picture = readBmp(file("out.bmp"));
  EXPECT_EQ(8, picture.bitsPerPixel);
  expectPixels(picture, [](int x, int y) { return brightnessOf(sampleColor(sample, x, y)) * 0x010101; });
}

TEST_F(Zv, MakesHalftones) {
  constexpr unsigned firstRow[2][8] = {{112, 40, 72, 104, 144, 176, 208, 136}, {0, 128, 32, 160, 8, 136, 40, 168}};
  const char* const names[] = {"clustered", "dispersed"};
  for (int type = 0; type < 2; ++type) {
    SCOPED_TRACE(names[type]);
    EXPECT_EQ("", run(std::string("halftone in.png out.bmp --screen ") + names[type]).output);
    const BmpFile straight = readBmp(file("out.bmp"));
    EXPECT_EQ(1, straight.bitsPerPixel);
    for (const int y : {0, 8}) {
      for (int x = 0; x < sampleWidth; ++x) {
        const bool white = brightnessOf(sampleColor(sample, x, y)) > firstRow[type][x % 8];
        EXPECT_EQ(white ? 0xFFFFFFu : 0u, straight.colors[static_cast<size_t>(y * sampleWidth + x)]) << x << ", " << y;
      }
    }
    EXPECT_EQ("", run(std::string("halftone in.png out.bmp --angle -360 --screen ") + names[type]).output);
    EXPECT_EQ(straight.colors, readBmp(file("out.bmp")).colors);
    EXPECT_EQ("", run(std::string("halftone in.png out.bmp --angle 22.5 --screen ") + names[type]).output);
    EXPECT_NE(straight.colors, readBmp(file("out.bmp")).colors);
  }
}

TEST_F(Zv, CombinesPictures) {
  const auto colorAt = [](int x, int y) { return sampleColor(sample, x, y); };
  EXPECT_EQ("", run("combine in.png in.png out.bmp --with difference").output);
  expectPixels(readBmp(file("out.bmp")), [](int, int) { return 0u; });
  EXPECT_EQ("", run("combine in.png in.png out.bmp --with xor --invert-other --invert").output);
  expectPixels(readBmp(file("out.bmp")), [](int, int) { return 0u; });
  // A part elsewhere, in a selection, onto a picture that is stored bottom-up.
  EXPECT_EQ("", run("convert in.png in.bmp").output);
  EXPECT_EQ("", run("combine in.bmp in.png out.bmp --from 20,5,9,4 --at 3,2 --rect 0,0,8,20").output);
  expectPixels(readBmp(file("out.bmp")), [&](int x, int y) {
    return x >= 3 && x < 8 && y >= 2 && y < 6 ? colorAt(x + 17, y + 3) : colorAt(x, y);
  });
}

TEST_F(Zv, ShowsPicturesUnderOthersByAlpha) {
  EXPECT_EQ("", run("region in.png white.png --fill ffffff").output);
  EXPECT_EQ("", run("alpha in.png alpha.png --set in.png").output);
  EXPECT_EQ("", run("alpha alpha.png out.bmp").output);
  expectPixels(readBmp(file("out.bmp")),
               [](int x, int y) { return brightnessOf(sampleColor(sample, x, y)) * 0x010101; });

  const auto shown = [](int x, int y) {
    const uint32_t color = sampleColor(sample, x, y);
    const unsigned alpha = brightnessOf(color);
    uint32_t result = 0;
    for (int shift = 0; shift < 24; shift += 8) {
      result |= (channelOf(color, shift) * alpha + 255 * (255 - alpha) + 127) / 255 << shift;
    }
    return result;
  };
  EXPECT_EQ("", run("underlay alpha.png white.png out.bmp").output);
  expectPixels(readBmp(file("out.bmp")), shown);
  EXPECT_EQ("", run("underlay in.png white.png out.bmp --alpha in.png --stretch").output);
  expectPixels(readBmp(file("out.bmp")), shown);
  // Around a selection, tiles of a part.
  EXPECT_EQ("", run("convert in.png small.png --size 5x3").output);
  EXPECT_EQ("", run("convert small.png small.bmp").output);
  EXPECT_EQ("", run("underlay in.png small.bmp out.bmp --rect 4,2,10,5").output);
  const BmpFile tile = readBmp(file("small.bmp"));
  expectPixels(readBmp(file("out.bmp")), [&](int x, int y) {
    const bool inside = x >= 4 && x < 14 && y >= 2 && y < 7;
    return inside ? sampleColor(sample, x, y) : tile.colors[static_cast<size_t>(y % 3 * 5 + x % 5)];
  });
}

TEST_F(Zv, SaysWhyPicturesDoNotGoTogether) {
  run("gray in.png gray.png");
  run("convert in.png four.png --bits 4");
  run("convert in.png small.png --size 5x3");
  struct {
    const char* arguments;
    DWORD exitCode;
    const char* message;
  } const cases[] = {
      {"combine four.png in.png out.bmp --with add", 1, "zv: cannot combine: not possible at this depth\n"},
      {"combine in.png in.png out.bmp --with magic", 2,
       "zv: --with takes one of and, or, xor, copy, add, other-minus, minus-other, difference, multiply, average, "
       "minimum, maximum, not 'magic'\n"},
      {"combine in.png out.bmp", 2, "zv: the file to write is missing\n"},
      {"halftone in.png out.bmp --screen square", 2, "zv: --screen takes one of clustered, dispersed, not 'square'\n"},
      {"alpha in.png out.bmp", 1, "zv: cannot take the alpha: not possible at this depth\n"},
      {"alpha in.png out.bmp --set gray.png", 2, "zv: cannot write out.bmp: with an alpha the name must end in .png\n"},
      {"alpha in.png out.png --set small.png", 1,
       "zv: cannot set the alpha (is small.png of another size?): a value is out of range\n"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.arguments);
    const RunResult result = run(expected.arguments);
    EXPECT_EQ(expected.exitCode, result.exitCode);
    EXPECT_EQ(expected.message, result.output);
  }
  EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(file("out.bmp").c_str()));
}

}  // namespace
