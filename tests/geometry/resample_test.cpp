// Resampling against a slow model that follows the rules item by item.
#include <zavo.h>

#include <algorithm>
#include <array>
#include <bit>
#include <gtest/gtest.h>
#include <numeric>

#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

using Line = std::vector<int>;  // one channel of a row or a column

// Source items per destination item, or destination items per source item.
std::vector<int> shares(int total, int items) {
  std::vector<int> result;
  for (int i = 0; i < items; ++i) result.push_back((i + 1) * total / items - i * total / items);
  return result;
}

Line resampled(const Line& source, int size, int kept) {
  Line result;
  const int items = static_cast<int>(source.size());
  if (items > size) {
    auto next = source.begin();
    for (const int count : shares(items, size)) {
      result.push_back(std::accumulate(next, next + count, 0) / count);
      next += count;
    }
    return result;
  }
  const std::vector<int> spans = shares(size, items);
  for (int i = 0; i < spans[0] / 2 && size - i - 1 >= kept; ++i) result.push_back(source[0]);
  for (size_t i = 0; i < source.size(); ++i) {
    const int difference = source[std::min(i + 1, source.size() - 1)] - source[i];
    for (int k = 0; k < spans[i]; ++k) {
      const int up = difference < 0 ? 256 : 0;  // so that the division rounds down
      result.push_back(source[i] + (difference * k + up * spans[i]) / spans[i] - up);
    }
  }
  result.resize(static_cast<size_t>(size));
  return result;
}

// One channel of a picture, its rows scaled and made columns.
Picture scaledAndTurned(const Picture& source, int size, int kept) {
  Picture result(source.height, size);
  for (int y = 0; y < source.height; ++y) {
    const auto begin = source.pixels.begin() + y * source.width;
    const Line row = resampled(Line(begin, begin + source.width), size, kept);
    for (int x = 0; x < size; ++x) result.at(y, x) = static_cast<uint32_t>(row[static_cast<size_t>(x)]);
  }
  return result;
}

uint32_t swapBytes(uint32_t pixel) {
  return (pixel & 0xFF) << 8 | pixel >> 8;
}

// A channel of a stored pixel, counted in the order of a 24-bit pixel's bytes.
uint32_t channelOf(uint32_t pixel, unsigned channel, int bits, const RGBQUAD* colors) {
  if (bits <= 8) {
    const RGBQUAD& color = colors[pixel];
    return channel == 0 ? color.rgbBlue : channel == 1 ? color.rgbGreen : color.rgbRed;
  }
  const uint32_t five = swapBytes(pixel) >> 5 * channel & 31;
  return bits == 16 ? five << 3 | five >> 2 : pixel >> (static_cast<unsigned>(bits) - 8 - 8 * channel) & 0xFF;
}

// The stored pixel of three channels, where no palette is dithered to.
uint32_t pixelOf(const Picture* channels, size_t i, int bits, bool isFallingGray) {
  const uint32_t a = channels[0].pixels[i];
  if (bits == 8) return isFallingGray ? 255 - a : a;
  const uint32_t b = channels[1].pixels[i], c = channels[2].pixels[i];
  if (bits == 16) return swapBytes(a >> 3 | b >> 3 << 5 | c >> 3 << 10);
  return (a << 16 | b << 8 | c) << (bits - 24);
}

// Every row of channels, dithered to a palette by the library's own dither run.
Picture dithered(const Picture* planes, const RGBQUAD* palette, unsigned colorCount) {
  const int width = planes[0].width, height = planes[0].height;
  BitmapHandle header;
  Zv_InitBitmap(&header, width, height, 24);
  header.ColorOrder = 1;
  header.DitheringMethod = 1;
  EXPECT_EQ(Zv_StartDithering(&header, palette, colorCount), KSUCCESS);
  TestBitmap result(width, height, std::max(static_cast<int>(std::bit_width(colorCount - 1)), 1));
  std::vector<unsigned char> row(static_cast<size_t>(width) * 3);
  std::vector<unsigned char> indexes(result.BytesPerLine);
  for (int y = 0; y < height; ++y) {
    for (int i = 0; i < width * 3; ++i) {
      row[static_cast<size_t>(i)] = static_cast<unsigned char>(planes[i % 3].at(i / 3, y));
    }
    EXPECT_EQ(Zv_DitherLine(&header, row.data(), indexes.data()), KSUCCESS);
    Zv_PutBitmapRow(&result, indexes.data(), static_cast<unsigned>(y), result.BytesPerLine);
  }
  Zv_StopDithering(&header);
  return pictureOf(result);
}

struct Format {
  int bits;
  bool isDithered;  // the others come back exactly
  void (*giveColors)(BitmapHandle& bitmap, std::mt19937& random);
};

template <bool falling>
void giveGrays(BitmapHandle& bitmap, std::mt19937&) {
  RGBQUAD grays[256];
  for (int i = 0; i < 256; ++i) {
    const auto level = static_cast<BYTE>(falling ? 255 - i : i);
    grays[i] = {level, level, level, 0};
  }
  ASSERT_EQ(Zv_PutBitmapColors(&bitmap, 0, 256, grays), KSUCCESS);
}

// A picture from elsewhere may have fewer colours than its depth has room for: no others are chosen.
void giveFewColors(BitmapHandle& bitmap, std::mt19937& random) {
  giveRandomPalette(bitmap, random);
  const unsigned count = random() % 4 == 0 ? random() % 100 + 1 : random() % 3 + 1;
  ASSERT_TRUE(ResizePalette(bitmap.Palette, count));
  for (int y = 0; y < bitmap.Height; ++y) {
    for (int x = 0; x < bitmap.Width; ++x) Zv_PutPixelColor(&bitmap, y, x, 0x01000000 | random() % count);
  }
}

void keepColors(BitmapHandle&, std::mt19937&) {}

constexpr Format formats[] = {
    {1, true, keepColors},        {1, true, giveRandomPalette}, {2, true, giveRandomPalette},
    {3, true, giveRandomPalette}, {4, true, keepColors},        {5, true, giveRandomPalette},
    {6, true, giveRandomPalette}, {7, true, giveRandomPalette}, {8, true, keepColors},
    {8, true, giveRandomPalette}, {8, true, giveFewColors},     {8, false, giveGrays<false>},
    {8, false, giveGrays<true>},  {16, false, keepColors},      {24, false, keepColors},
    {32, false, keepColors},
};

void compareWithModel(const Format& format, const std::array<int, 4>& sizes, std::mt19937& random) {
  const auto [width, height, newWidth, newHeight] = sizes;
  const int bits = format.bits;
  TestBitmap bitmap(width, height, bits, random() % 3 == 0 ? ALLOC_MEMORY | ALLOC_RUNLENGTH : int{ALLOC_MEMORY});
  ASSERT_TRUE(bitmap.allocated());
  fillWithNoise(bitmap, random);
  format.giveColors(bitmap, random);
  bitmap.DitheringMethod = 7;
  bitmap.ColorOrder = newWidth % 3;  // channels stay where they are, whatever it says
  RGBQUAD colors[256] = {};
  const unsigned colorCount = bits <= 8 ? Zv_GetPaletteEntries(bitmap.Palette, 0, 256, colors) : 0;
  const Picture before = pictureOf(bitmap);
  Picture planes[3];
  const bool isGray = bits == 8 && !format.isDithered;
  for (unsigned c = 0; c < (isGray ? 1 : 3); ++c) {
    Picture plane(width, height);
    for (size_t i = 0; i < plane.pixels.size(); ++i) {
      plane.pixels[i] = channelOf(before.pixels[i], c, bits, colors);
    }
    planes[c] = scaledAndTurned(scaledAndTurned(plane, newWidth, 2), newHeight, 1);
  }
  Picture expected(newWidth, newHeight);
  for (size_t i = 0; i < expected.pixels.size() && !format.isDithered; ++i) {
    expected.pixels[i] = pixelOf(planes, i, bits, colors[0].rgbRed != 0);
  }
  if (format.isDithered) expected = dithered(planes, colors, colorCount);

  ASSERT_EQ(Zv_ResampleBitmap(&bitmap, newWidth, newHeight), KSUCCESS);
  ASSERT_EQ(bitmap.DitheringMethod, 7);
  ASSERT_TRUE(pictureOf(bitmap) == expected);
}

class Resample : public testing::TestWithParam<Format> {};
INSTANTIATE_TEST_SUITE_P(Formats, Resample, testing::ValuesIn(formats));

TEST_P(Resample, FollowsTheRules) {
  // Spans and boxes larger than the divisors that fit a multiplication.
  static constexpr std::array<int, 4> distant[] = {{9000, 2, 2, 1}, {8191, 1, 1, 1}, {1, 9000, 1, 2},  {1, 4097, 3, 1},
                                                   {2, 1, 9001, 1}, {1, 2, 1, 9001}, {3, 1, 12290, 2}, {4096, 1, 1, 1}};
  std::mt19937 random(41);
  const auto side = [&](int trial) {
    const int edges[] = {1, 2, 3, 4, 5, 16, 17};
    return trial % 3 == 0 ? edges[random() % std::size(edges)] : static_cast<int>(random() % 60 + 1);
  };
  for (int trial = 0; trial < (GetParam().isDithered ? 24 : 300); ++trial) {
    std::array<int, 4> sizes = {side(trial), side(trial + 1), side(trial + 2), side(trial)};
    if (trial % 7 == 0) sizes[2] = sizes[0];
    if (trial % 5 == 0) sizes[3] = sizes[1];
    if (trial < 8) sizes = distant[trial];
    SCOPED_TRACE(testing::Message() << GetParam().bits << " bits, trial " << trial << ": " << sizes[0] << " x "
                                    << sizes[1] << " to " << sizes[2] << " x " << sizes[3]);
    compareWithModel(GetParam(), sizes, random);
    if (HasFatalFailure()) return;
  }
}

TEST(ResampleBitmap, EnlargedSamplesStartHalfASpanLate) {
  TestBitmap bitmap(2, 1, 24);
  const unsigned char row[8] = {0, 0, 0, 100, 100, 100};
  ASSERT_EQ(Zv_PutBitmapRow(&bitmap, row, 0, 8), 8);
  ASSERT_EQ(Zv_SizeBitmap(&bitmap, 4, 1, SIZE_RESAMPLE), KSUCCESS);
  EXPECT_EQ(pictureOf(bitmap).pixels, (std::vector<uint32_t>{0, 0, 0x323232, 0x646464}));
}

}  // namespace
