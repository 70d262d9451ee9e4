// Optimised palettes against a model that splits a plain list of colours, seen through the colour reduction.
#include <zavo.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>

#include "color/colors.h"

namespace {

using namespace zavotest;

unsigned keyOf(const Color& c) {
  return c.red / 8 << 10 | c.green / 8 << 5 | c.blue / 8;
}

unsigned part(unsigned key, int channel) {
  return key >> (10 - 5 * channel) & 31;
}

struct ModelBox {
  std::vector<unsigned> keys;
  uint64_t mean[3] = {}, variance[3] = {}, total = 0;
};

// The slow obvious way: everything is computed anew from the colours of a box.
class Model {
 public:
  void add(const std::vector<Color>& colors) {
    for (const Color& color : colors) {
      uint64_t& count = counts_[keyOf(color)];
      if (count == 0) order_.push_back(keyOf(color));
      if (count == 32768) {
        for (auto& each : counts_) each.second = (each.second + 1) / 2;
      }
      ++count;
    }
  }

  void split(size_t wanted) {
    boxes_ = {ModelBox{.keys = order_}};
    measure(boxes_[0]);
    while (boxes_.size() < wanted) {
      size_t chosen = 0;
      for (size_t i = 1; i < boxes_.size(); ++i) {
        const ModelBox &best = boxes_[chosen], &box = boxes_[i];
        if (box.total > best.total || (box.total == best.total && box.keys.size() > best.keys.size())) chosen = i;
      }
      if (boxes_[chosen].keys.size() < 2) break;
      ModelBox low, high;
      for (int axis = axisOf(boxes_[chosen]); high.keys.empty(); axis = (axis + 1) % 3) {
        low.keys.clear();
        for (const unsigned key : boxes_[chosen].keys) {
          (part(key, axis) > boxes_[chosen].mean[axis] ? high : low).keys.push_back(key);
        }
      }
      measure(low);
      measure(high);
      boxes_[chosen] = low;
      boxes_.push_back(high);
    }
  }

  // Sorted palette entries, each with the colours it stands for.
  std::vector<std::pair<Color, std::vector<unsigned>>> entries() const {
    std::vector<std::pair<Color, std::vector<unsigned>>> result;
    const auto wide = [](uint64_t c) { return static_cast<unsigned>(c << 3 | c >> 2); };
    for (const ModelBox& box : boxes_) {
      result.push_back({{wide(box.mean[0]), wide(box.mean[1]), wide(box.mean[2])}, box.keys});
    }
    std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    return result;
  }

 private:
  static int axisOf(const ModelBox& box) {
    const uint64_t* v = box.variance;
    if (v[0] >= v[1] && v[0] >= v[2]) return 0;
    return v[1] >= v[2] ? 1 : 2;
  }

  void measure(ModelBox& box) const {
    for (int c = 0; c < 3; ++c) {
      uint64_t pixels = 0, sum = 0, squares = 0;
      for (const unsigned key : box.keys) pixels += counts_.at(key), sum += counts_.at(key) * part(key, c);
      box.mean[c] = sum / pixels;
      for (const unsigned key : box.keys) {
        const int64_t d = static_cast<int64_t>(part(key, c)) - static_cast<int64_t>(box.mean[c]);
        squares += counts_.at(key) * static_cast<uint64_t>(d * d);
      }
      box.variance[c] = squares / pixels;
      box.total += box.variance[c];
    }
  }

  std::map<unsigned, uint64_t> counts_;
  std::vector<unsigned> order_;
  std::vector<ModelBox> boxes_;
};

int optimise(BitmapHandle& source, BitmapHandle& result, int bits, unsigned count) {
  return Zv_ColorResBitmap(&source, &result, bits, COLORRES_OPTIMISED_PALETTE | COLORRES_NEAREST, nullptr, count);
}

void expectPalette(const Model& model, const Palette& palette) {
  const auto entries = model.entries();
  ASSERT_LE(entries.size(), palette.size());
  for (size_t i = 0; i < palette.size(); ++i) {
    EXPECT_EQ(colorOf(palette[i]), i < entries.size() ? entries[i].first : Color{}) << "entry " << i;
  }
}

TEST(OptimisedPalette, AgreesWithTheModel) {
  std::mt19937 random(241);
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    constexpr int depths[] = {16, 24, 32, 24};
    const int width = 1 + static_cast<int>(random() % 90), height = 1 + static_cast<int>(random() % 40);
    TestBitmap source(width, height, depths[random() % 4]);
    ASSERT_TRUE(source.allocated());
    if (source.BitsPerPixel == 24 && round % 3 == 0) {
      fillWithNoise(source, random);
    } else {
      fillWithPicture(source, random);
    }
    const int bits = 1 + static_cast<int>(random() % 8);
    const unsigned count = random() % 2 == 0 ? 0 : 1 + static_cast<unsigned>(random() % (1u << bits));
    TestBitmap result;
    ASSERT_EQ(optimise(source, result, bits, count), KSUCCESS);

    Model model;
    const auto colors = colorsOf(source);
    model.add(colors);
    model.split(count == 0 ? 1u << bits : count);
    expectPalette(model, entriesOf(result.Palette));

    // Every colour goes to the entry of its box; boxes of one mean are told apart by nothing but their colours.
    std::map<unsigned, Color> entryOf;
    for (const auto& [entry, keys] : model.entries()) {
      for (const unsigned key : keys) entryOf[key] = entry;
    }
    const auto reduced = colorsOf(result);
    for (size_t i = 0; i < colors.size(); ++i) ASSERT_EQ(reduced[i], entryOf[keyOf(colors[i])]) << "pixel " << i;
  }
}

// An image that is nearly all one colour: whole-number variances are 0, and yet every colour gets its entry.
TEST(OptimisedPalette, FewColorsEachGetAnEntry) {
  TestBitmap source(300, 300, 24);
  ASSERT_TRUE(source.allocated());
  const uint8_t rare[][3] = {{8, 0, 0}, {0, 8, 0}, {0, 0, 8}, {1, 2, 3}};  // the last is black in 15 bits
  for (unsigned i = 0; i < 4; ++i) Zv_PutBitmapRowCol(&source, rare[i], 299, 296 + i, 3);
  TestBitmap result;
  ASSERT_EQ(optimise(source, result, 4, 0), KSUCCESS);
  Palette expected(16);
  expected[1] = {8, 0, 0, 0}, expected[2] = {0, 8, 0, 0}, expected[3] = {0, 0, 8, 0};
  const Palette palette = entriesOf(result.Palette);
  for (size_t i = 0; i < 16; ++i) EXPECT_EQ(colorOf(palette[i]), colorOf(expected[i])) << i;
}

// 40000 pixels of one colour halve the histogram once; what occurs once still counts.
TEST(OptimisedPalette, HalvesLargeCounts) {
  std::mt19937 random(242);
  TestBitmap source(250, 200, 24);
  ASSERT_TRUE(source.allocated());
  std::vector<uint8_t> row(source.BytesPerLine);
  for (unsigned y = 0; y < 40; ++y) {
    for (auto& byte : row) byte = static_cast<uint8_t>(random());
    Zv_PutBitmapRow(&source, row.data(), y * 5, source.BytesPerLine);
  }
  TestBitmap result;
  ASSERT_EQ(optimise(source, result, 6, 0), KSUCCESS);
  Model model;
  model.add(colorsOf(source));
  model.split(64);
  expectPalette(model, entriesOf(result.Palette));
}

TEST(OptimisedPalette, SmallPalettesAreKeptSorted) {
  std::mt19937 random(243);
  TestBitmap source(40, 9, 4);
  ASSERT_TRUE(source.allocated());
  fillWithNoise(source, random);
  setPalette(source, noisePalette(16, random));
  for (const unsigned count : {16u, 200u}) {
    TestBitmap result;
    ASSERT_EQ(optimise(source, result, 8, count), KSUCCESS);
    std::vector<Color> expected;
    for (const RGBQUAD& entry : entriesOf(source.Palette)) expected.push_back(colorOf(entry));
    std::sort(expected.begin(), expected.end());
    const Palette palette = entriesOf(result.Palette);
    for (size_t i = 0; i < 256; ++i) EXPECT_EQ(colorOf(palette[i]), i < 16 ? expected[i] : Color{}) << i;
    EXPECT_EQ(colorsOf(result), colorsOf(source));
  }
}

}  // namespace
