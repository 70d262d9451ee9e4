// Colour spaces: known colours, and colours there and back within what whole numbers lose.
#include <zavo.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using Pixel = std::array<uint8_t, 3>;

Pixel convert(Pixel pixel, int from, int to) {
  Pixel row[] = {pixel, {7, 8, 9}, pixel, pixel};
  EXPECT_EQ(Zv_ConvertColorSpace(row[0].data(), 3, from, to), KSUCCESS);
  EXPECT_EQ(row[2], row[0]);
  EXPECT_EQ(row[3], pixel) << "behind the row";
  return row[0];
}

TEST(ColorSpace, KnownColors) {
  const struct {
    Pixel bgr, yCbCr, cmy, hsv, hls;
  } cases[] = {
      {{0, 0, 0}, {0, 128, 128}, {255, 255, 255}, {0, 0, 0}, {0, 0, 0}},
      {{255, 255, 255}, {255, 128, 128}, {0, 0, 0}, {0, 0, 255}, {0, 255, 0}},
      {{0, 0, 255}, {76, 85, 255}, {0, 255, 255}, {0, 255, 255}, {0, 128, 255}},
      {{0, 255, 0}, {150, 44, 21}, {255, 0, 255}, {85, 255, 255}, {85, 128, 255}},
      {{255, 0, 0}, {29, 255, 107}, {255, 255, 0}, {171, 255, 255}, {171, 128, 255}},
      {{40, 0, 255}, {81, 105, 252}, {0, 255, 215}, {249, 255, 255}, {249, 128, 255}},
      {{100, 150, 200}, {159, 95, 157}, {55, 105, 155}, {21, 128, 200}, {21, 150, 121}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "blue " << int{c.bgr[0]} << ", green " << int{c.bgr[1]});
    EXPECT_EQ(convert(c.bgr, SPACE_BGR, SPACE_YCBCR), c.yCbCr);
    EXPECT_EQ(convert(c.bgr, SPACE_BGR, SPACE_CMY), c.cmy);
    EXPECT_EQ(convert(c.bgr, SPACE_BGR, SPACE_HSV), c.hsv);
    EXPECT_EQ(convert(c.bgr, SPACE_BGR, SPACE_HLS), c.hls);
  }
}

// Whole-number hue has 256 steps, so that a channel of a vivid colour may come back up to 4 off.
TEST(ColorSpace, ThereAndBackAndByWayOfColors) {
  constexpr int tolerances[] = {0, 2, 0, 4, 4};
  for (unsigned c = 0; c < 0x1000000; c += 0x0BFB) {
    const Pixel bgr = {static_cast<uint8_t>(c), static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c >> 16)};
    for (int space = 0; space < 5; ++space) {
      const Pixel made = convert(bgr, SPACE_BGR, space), back = convert(made, space, SPACE_BGR);
      for (size_t i = 0; i < 3; ++i) ASSERT_LE(std::abs(back[i] - bgr[i]), tolerances[space]) << c << " to " << space;
      const int third = static_cast<int>(c) % 5;
      ASSERT_EQ(convert(made, space, third), third == space ? made : convert(back, SPACE_BGR, third)) << c;
    }
    // The formulas as they are written for fractions.
    const double y = 0.299 * bgr[2] + 0.587 * bgr[1] + 0.114 * bgr[0];
    const double exact[] = {y, 128 + (bgr[0] - y) / 1.772, 128 + (bgr[2] - y) / 1.402};
    const Pixel result = convert(bgr, SPACE_BGR, SPACE_YCBCR);
    for (size_t i = 0; i < 3; ++i) ASSERT_NEAR(result[i], std::min(exact[i], 255.0), 0.51) << c << ", byte " << i;
  }
}

TEST(ColorSpace, RefusesBadArguments) {
  Pixel pixel = {1, 2, 3};
  EXPECT_EQ(Zv_ConvertColorSpace(nullptr, 1, 0, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ConvertColorSpace(pixel.data(), 0, 0, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ConvertColorSpace(pixel.data(), 1, -1, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ConvertColorSpace(pixel.data(), 1, 0, 5), KERR_BAD_PARAMETER);
  EXPECT_EQ(pixel, (Pixel{1, 2, 3}));
}

}  // namespace
