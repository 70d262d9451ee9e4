// Colour spaces: known colours, and every colour there and back within what whole numbers lose.
#include <zavo.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

namespace {

using Pixel = std::array<uint8_t, 3>;

Pixel convert(Pixel pixel, int from, int to) {
  EXPECT_EQ(Zv_ConvertColorSpace(pixel.data(), 1, from, to), KSUCCESS);
  return pixel;
}

TEST(ColorSpace, KnownColors) {
  const struct {
    Pixel bgr, yCbCr, cmy, hsv, hls;
  } cases[] = {
      {{0, 0, 0}, {0, 128, 128}, {255, 255, 255}, {0, 0, 0}, {0, 0, 0}},
      {{255, 255, 255}, {255, 128, 128}, {0, 0, 0}, {0, 0, 255}, {0, 255, 0}},
      {{128, 128, 128}, {128, 128, 128}, {127, 127, 127}, {0, 0, 128}, {0, 128, 0}},
      {{0, 0, 255}, {76, 85, 255}, {0, 255, 255}, {0, 255, 255}, {0, 128, 255}},
      {{0, 255, 0}, {150, 44, 21}, {255, 0, 255}, {85, 255, 255}, {85, 128, 255}},
      {{255, 0, 0}, {29, 255, 107}, {255, 255, 0}, {171, 255, 255}, {171, 128, 255}},
      {{0, 255, 255}, {226, 1, 149}, {0, 0, 255}, {43, 255, 255}, {43, 128, 255}},
      {{1, 0, 255}, {76, 85, 255}, {0, 255, 254}, {0, 255, 255}, {0, 128, 255}},
      {{40, 0, 255}, {81, 105, 252}, {0, 255, 215}, {249, 255, 255}, {249, 128, 255}},
      {{100, 150, 200}, {159, 95, 157}, {55, 105, 155}, {21, 128, 200}, {21, 150, 121}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "blue " << int{c.bgr[0]} << ", green " << int{c.bgr[1]} << ", red "
                                    << int{c.bgr[2]});
    EXPECT_EQ(convert(c.bgr, SPACE_BGR, SPACE_YCBCR), c.yCbCr);
    EXPECT_EQ(convert(c.bgr, SPACE_BGR, SPACE_CMY), c.cmy);
    EXPECT_EQ(convert(c.bgr, SPACE_BGR, SPACE_HSV), c.hsv);
    EXPECT_EQ(convert(c.bgr, SPACE_BGR, SPACE_HLS), c.hls);
  }
}

// Whole-number hue has 256 steps, so that a channel of a vivid colour may come back up to 4 off.
TEST(ColorSpace, ThereAndBack) {
  const struct {
    int space, tolerance;
  } cases[] = {{SPACE_BGR, 0}, {SPACE_YCBCR, 2}, {SPACE_CMY, 0}, {SPACE_HSV, 4}, {SPACE_HLS, 4}};
  std::vector<uint8_t> colors;
  for (unsigned c = 0; c < 0x1000000; c += 0x0103) {
    colors.insert(colors.end(), {static_cast<uint8_t>(c), static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c >> 16)});
  }
  for (const auto& c : cases) {
    std::vector<uint8_t> row = colors;
    const auto width = static_cast<unsigned>(row.size() / 3);
    ASSERT_EQ(Zv_ConvertColorSpace(row.data(), width, SPACE_BGR, c.space), KSUCCESS);
    ASSERT_EQ(Zv_ConvertColorSpace(row.data(), width, c.space, SPACE_BGR), KSUCCESS);
    int worst = 0;
    for (size_t i = 0; i < row.size(); ++i) worst = std::max(worst, std::abs(row[i] - colors[i]));
    EXPECT_LE(worst, c.tolerance) << "space " << c.space;
  }
}

// The formulas as they are written for fractions.
TEST(ColorSpace, YCbCrIsRoundedToTheNearest) {
  for (unsigned c = 0; c < 0x1000000; c += 0x3FB) {
    const Pixel bgr = {static_cast<uint8_t>(c), static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c >> 16)};
    const double y = 0.299 * bgr[2] + 0.587 * bgr[1] + 0.114 * bgr[0];
    const double exact[] = {y, 128 + (bgr[0] - y) / 1.772, 128 + (bgr[2] - y) / 1.402};
    const Pixel result = convert(bgr, SPACE_BGR, SPACE_YCBCR);
    for (size_t i = 0; i < 3; ++i) {
      ASSERT_NEAR(result[i], std::min(exact[i], 255.0), 0.51) << "colour " << c << ", byte " << i;
    }
  }
}

// A third space is reached as if by way of the first.
TEST(ColorSpace, EveryPairGoesThroughColors) {
  for (int from = 0; from < 5; ++from) {
    for (int to = 0; to < 5; ++to) {
      const Pixel start = convert({90, 180, 33}, SPACE_BGR, from);
      const Pixel direct = convert(start, from, to);
      EXPECT_EQ(direct, from == to ? start : convert(convert(start, from, SPACE_BGR), SPACE_BGR, to));
    }
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
