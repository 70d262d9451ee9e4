// Resampling against a slow model that follows the rules item by item.
#include <zavo.h>

#include <algorithm>
#include <gtest/gtest.h>

#include "support/progress_log.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

using Line = std::vector<int>;  // one channel of a row or a column

// Source items per destination item, or destination items per source item, by an accumulator.
std::vector<int> shares(int total, int items) {
  std::vector<int> result;
  int accumulator = 0;
  for (int i = 0; i < items; ++i) {
    int share = total / items;
    accumulator += total % items;
    if (accumulator >= items) {
      accumulator -= items;
      ++share;
    }
    result.push_back(share);
  }
  return result;
}

Line resampled(const Line& source, int size, int kept) {
  Line result;
  const int items = static_cast<int>(source.size());
  if (items > size) {
    size_t at = 0;
    for (const int count : shares(items, size)) {
      int sum = 0;
      for (int i = 0; i < count; ++i) sum += source[at++];
      result.push_back(sum / count);
    }
    return result;
  }
  const std::vector<int> spans = shares(size, items);
  for (int i = 0; i < spans[0] / 2 && size - i - 1 >= kept; ++i) result.push_back(source[0]);
  for (size_t i = 0; i < source.size(); ++i) {
    const int span = spans[i];
    const int difference = (i + 1 < source.size() ? source[i + 1] : source[i]) - source[i];
    int step = difference / span;
    int remainder = difference % span;
    if (remainder < 0) {
      remainder += span;
      --step;
    }
    int value = source[i];
    int accumulator = 0;
    for (int k = 0; k < span; ++k) {
      result.push_back(value);
      value += step;
      accumulator += remainder;
      if (accumulator >= span) {
        accumulator -= span;
        ++value;
      }
    }
  }
  result.resize(static_cast<size_t>(size));
  return result;
}

// One channel of a picture.
struct Plane {
  int width, height;
  std::vector<int> values;
};

Plane resampled(const Plane& source, int width, int height) {
  std::vector<Line> rows;
  for (int y = 0; y < source.height; ++y) {
    const auto begin = source.values.begin() + y * source.width;
    rows.push_back(resampled(Line(begin, begin + source.width), width, 2));
  }
  Plane result{width, height, std::vector<int>(static_cast<size_t>(width * height))};
  for (int x = 0; x < width; ++x) {
    Line column;
    for (const Line& row : rows) column.push_back(row[static_cast<size_t>(x)]);
    column = resampled(column, height, 1);
    for (int y = 0; y < height; ++y) result.values[static_cast<size_t>(y * width + x)] = column[static_cast<size_t>(y)];
  }
  return result;
}

struct Format {
  const char* name;
  int bits;
  int channels;
  // Channel value of a stored pixel, and the stored pixel of channel values.
  int (*take)(uint32_t pixel, int channel);
  uint32_t (*make)(const int* values);
};

uint32_t swapBytes(uint32_t pixel) {
  return (pixel & 0xFF) << 8 | pixel >> 8;
}

const Format formats[] = {
    {"rising grey", 8, 1, [](uint32_t p, int) { return static_cast<int>(p); },
     [](const int* v) { return static_cast<uint32_t>(v[0]); }},
    {"falling grey", 8, 1, [](uint32_t p, int) { return 255 - static_cast<int>(p); },
     [](const int* v) { return static_cast<uint32_t>(255 - v[0]); }},
    {"16 bits", 16, 3,
     [](uint32_t p, int c) {
       const auto five = static_cast<int>(swapBytes(p) >> 5 * c & 31);
       return five << 3 | five >> 2;
     },
     [](const int* v) { return swapBytes(static_cast<uint32_t>(v[0] >> 3 | v[1] >> 3 << 5 | v[2] >> 3 << 10)); }},
    {"24 bits", 24, 3, [](uint32_t p, int c) { return static_cast<int>(p >> (16 - 8 * c) & 0xFF); },
     [](const int* v) { return static_cast<uint32_t>(v[0] << 16 | v[1] << 8 | v[2]); }},
    {"32 bits", 32, 3, [](uint32_t p, int c) { return static_cast<int>(p >> (24 - 8 * c) & 0xFF); },
     [](const int* v) { return static_cast<uint32_t>(v[0]) << 24 | static_cast<uint32_t>(v[1] << 16 | v[2] << 8); }},
};

std::vector<Plane> planesOf(const Picture& picture, const Format& format) {
  std::vector<Plane> planes;
  for (int c = 0; c < format.channels; ++c) {
    planes.push_back({picture.width, picture.height, {}});
    for (const uint32_t pixel : picture.pixels) planes.back().values.push_back(format.take(pixel, c));
  }
  return planes;
}

Picture modelOf(const Picture& picture, const Format& format, int width, int height) {
  std::vector<Plane> planes = planesOf(picture, format);
  for (Plane& plane : planes) plane = resampled(plane, width, height);
  Picture result(width, height);
  for (size_t i = 0; i < result.pixels.size(); ++i) {
    int values[3] = {};
    for (int c = 0; c < format.channels; ++c) values[c] = planes[static_cast<size_t>(c)].values[i];
    result.pixels[i] = format.make(values);
  }
  return result;
}

void giveGrays(BitmapHandle& bitmap, bool falling) {
  RGBQUAD grays[256];
  for (int i = 0; i < 256; ++i) {
    const auto level = static_cast<BYTE>(falling ? 255 - i : i);
    grays[i] = {level, level, level, 0};
  }
  ASSERT_EQ(Zv_PutBitmapColors(&bitmap, 0, 256, grays), KSUCCESS);
}

class Resample : public testing::TestWithParam<Format> {};
INSTANTIATE_TEST_SUITE_P(Formats, Resample, testing::ValuesIn(formats), [](const auto& info) {
  std::string name = info.param.name;
  std::erase(name, ' ');
  return name;
});

TEST_P(Resample, FollowsTheRules) {
  const Format& format = GetParam();
  std::mt19937 random(41);
  const auto side = [&](int trial) {
    const int edges[] = {1, 2, 3, 4, 5, 16, 17};
    return trial % 3 == 0 ? edges[random() % std::size(edges)] : static_cast<int>(random() % 60 + 1);
  };
  for (int trial = 0; trial < 300; ++trial) {
    const int from[] = {side(trial), side(trial + 1)};
    const int to[] = {trial % 7 == 0 ? from[0] : side(trial + 2), trial % 5 == 0 ? from[1] : side(trial)};
    SCOPED_TRACE(testing::Message() << "trial " << trial << ": " << from[0] << " x " << from[1] << " to " << to[0]
                                    << " x " << to[1]);
    TestBitmap bitmap(from[0], from[1], format.bits);
    ASSERT_TRUE(bitmap.allocated());
    if (format.bits == 8) giveGrays(bitmap, format.take(0, 0) != 0);
    fillWithNoise(bitmap, random);
    const Picture before = pictureOf(bitmap);
    ASSERT_EQ(Zv_ResampleBitmap(&bitmap, to[0], to[1]), KSUCCESS);
    ASSERT_TRUE(pictureOf(bitmap) == modelOf(before, format, to[0], to[1]));
  }
}

// Spans and boxes larger than the divisors that fit a multiplication.
TEST_P(Resample, FollowsTheRulesFarFromTheOldSize) {
  const Format& format = GetParam();
  std::mt19937 random(42);
  const int cases[][4] = {{9000, 2, 2, 1}, {8191, 1, 1, 1}, {1, 9000, 1, 2},  {1, 4097, 3, 1},
                          {2, 1, 9001, 1}, {1, 2, 1, 9001}, {3, 1, 12290, 2}, {4096, 1, 1, 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c[0] << " x " << c[1] << " to " << c[2] << " x " << c[3]);
    TestBitmap bitmap(c[0], c[1], format.bits);
    if (format.bits == 8) giveGrays(bitmap, format.take(0, 0) != 0);
    fillWithNoise(bitmap, random);
    const Picture before = pictureOf(bitmap);
    ASSERT_EQ(Zv_ResampleBitmap(&bitmap, c[2], c[3]), KSUCCESS);
    ASSERT_TRUE(pictureOf(bitmap) == modelOf(before, format, c[2], c[3]));
  }
}

// The model's colours, dithered to a palette by the library's own dither run.
Picture ditheredModel(const Picture& source, const RGBQUAD* palette, unsigned colorCount, int bits, int width,
                      int height) {
  std::vector<Plane> planes;
  for (int c = 0; c < 3; ++c) {
    Plane plane{source.width, source.height, {}};
    for (const uint32_t pixel : source.pixels) {
      const RGBQUAD& color = palette[pixel];
      plane.values.push_back(c == 0 ? color.rgbBlue : c == 1 ? color.rgbGreen : color.rgbRed);
    }
    planes.push_back(resampled(plane, width, height));
  }
  BitmapHandle header;
  Zv_InitBitmap(&header, width, height, 24);
  header.ColorOrder = 1;
  header.DitheringMethod = 1;
  EXPECT_EQ(Zv_StartDithering(&header, palette, colorCount), KSUCCESS);
  TestBitmap result(width, height, bits);
  std::vector<unsigned char> row(static_cast<size_t>(width) * 3);
  std::vector<unsigned char> indexes(result.BytesPerLine);
  for (int y = 0; y < height; ++y) {
    for (size_t i = 0; i < row.size(); ++i) {
      row[i] = static_cast<unsigned char>(planes[i % 3].values[static_cast<size_t>(y * width) + i / 3]);
    }
    EXPECT_EQ(Zv_DitherLine(&header, row.data(), indexes.data()), KSUCCESS);
    Zv_PutBitmapRow(&result, indexes.data(), static_cast<unsigned>(y), result.BytesPerLine);
  }
  Zv_StopDithering(&header);
  return pictureOf(result);
}

TEST(ResampleBitmap, PalettePicturesAreDitheredBackToTheirPalette) {
  std::mt19937 random(43);
  for (const int bits : {1, 2, 3, 4, 5, 6, 7, 8}) {
    for (int trial = 0; trial < 12; ++trial) {
      const int from[] = {static_cast<int>(random() % 40 + 1), static_cast<int>(random() % 20 + 1)};
      const int to[] = {static_cast<int>(random() % 70 + 1), static_cast<int>(random() % 30 + 1)};
      SCOPED_TRACE(testing::Message() << bits << " bits, trial " << trial);
      TestBitmap bitmap(from[0], from[1], bits, trial % 3 == 0 ? ALLOC_MEMORY | ALLOC_RUNLENGTH : int{ALLOC_MEMORY});
      const unsigned count = 1u << bits;
      RGBQUAD palette[256];
      Zv_GetFixedPalette(palette, static_cast<unsigned>(bits));
      if (trial % 2 == 0) {
        for (unsigned i = 0; i < count; ++i) {
          palette[i] = {static_cast<BYTE>(random()), static_cast<BYTE>(random()), static_cast<BYTE>(random()), 0};
        }
        ASSERT_EQ(Zv_PutBitmapColors(&bitmap, 0, count, palette), KSUCCESS);
      }
      fillWithNoise(bitmap, random);
      const Picture before = pictureOf(bitmap);
      bitmap.DitheringMethod = 7;
      ASSERT_EQ(Zv_ResampleBitmap(&bitmap, to[0], to[1]), KSUCCESS);
      EXPECT_EQ(bitmap.DitheringMethod, 7);
      ASSERT_TRUE(pictureOf(bitmap) == ditheredModel(before, palette, count, bits, to[0], to[1]));
    }
  }
}

// A picture from elsewhere may have fewer colours than its depth has room for: no others are chosen.
TEST(ResampleBitmap, ShortPalettesAreKeptTo) {
  std::mt19937 random(44);
  for (const unsigned count : {1u, 2u, 3u, 10u, 100u}) {
    SCOPED_TRACE(count);
    TestBitmap bitmap(20, 20, 8);
    RGBQUAD colors[256];
    Zv_GetFixedPalette(colors, 8);
    DeleteObject(bitmap.Palette);
    bitmap.Palette = Zv_CreatePalette(colors, count);
    std::vector<unsigned char> row(bitmap.BytesPerLine);
    for (unsigned y = 0; y < 20; ++y) {
      for (auto& index : row) index = static_cast<unsigned char>(random() % count);
      Zv_PutBitmapRow(&bitmap, row.data(), y, bitmap.BytesPerLine);
    }
    ASSERT_EQ(Zv_ResampleBitmap(&bitmap, 33, 9), KSUCCESS);
    const Picture picture = pictureOf(bitmap);
    EXPECT_LT(*std::max_element(picture.pixels.begin(), picture.pixels.end()), count);
  }
}

TEST(ResampleBitmap, EnlargedSamplesStartHalfASpanLate) {
  TestBitmap bitmap(2, 1, 24);
  const unsigned char row[8] = {0, 0, 0, 100, 100, 100};
  ASSERT_EQ(Zv_PutBitmapRow(&bitmap, row, 0, 8), 8);
  ASSERT_EQ(Zv_SizeBitmap(&bitmap, 4, 1, SIZE_RESAMPLE), KSUCCESS);
  EXPECT_EQ(pictureOf(bitmap).pixels, (std::vector<uint32_t>{0, 0, 0x323232, 0x646464}));
}

TEST(ResampleBitmap, ReportsProgressAndStops) {
  for (const int height : {3, 40, 250}) {
    SCOPED_TRACE(height);
    TestBitmap bitmap(5, 40, 24);
    const Snapshot snapshot(bitmap);
    {
      const ProgressLog log(2, 0);
      EXPECT_EQ(Zv_ResampleBitmap(&bitmap, 6, height), 0);
      EXPECT_EQ(log.percents.size(), 2u);
      EXPECT_TRUE(snapshot.unchanged());
    }
    const ProgressLog log;
    ASSERT_EQ(Zv_ResampleBitmap(&bitmap, 6, height), KSUCCESS);
    EXPECT_EQ(log.percents.size(), static_cast<size_t>(std::min(height, 100) + 1));
    EXPECT_EQ(log.percents.front(), 0);
    EXPECT_EQ(log.percents.back(), 100);
  }
}

TEST(ResampleBitmap, RefusesWhatCannotBe) {
  TestBitmap bitmap(5, 5, 24);
  BitmapHandle empty{};
  const Snapshot snapshot(bitmap);
  EXPECT_EQ(Zv_ResampleBitmap(nullptr, 4, 4), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_ResampleBitmap(&empty, 4, 4), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_ResampleBitmap(&bitmap, 0, 4), KERR_EMPTY);
  EXPECT_EQ(Zv_ResampleBitmap(&bitmap, 4, -4), KERR_NO_MEMORY);
  EXPECT_TRUE(snapshot.unchanged());
}

}  // namespace
