// Optimised palettes against a model that splits a plain list of colours, seen through the colour reduction of bitmaps
// and of lists.
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

struct Box {
  std::vector<unsigned> keys;
  uint64_t mean[3] = {}, variance[3] = {}, total = 0;
};

// The slow obvious way: everything is computed anew from the colours of a box.
class Model {
 public:
  void add(const std::vector<Color>& colors) {
    for (const Color& color : colors) {
      uint64_t& count = counts_[keyOf(color)];
      if (count == 0) all_.push_back(keyOf(color));
      if (count == 32768) {
        for (auto& each : counts_) each.second = (each.second + 1) / 2;
      }
      ++count;
    }
  }

  // The palette's entries, sorted, and the colours that each stands for.
  [[nodiscard]] std::vector<std::pair<Color, std::vector<unsigned>>> split(size_t wanted) const {
    std::vector<Box> boxes = {measured(all_)};
    while (boxes.size() < wanted) {
      Box& box = *std::max_element(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) {
        return a.total < b.total || (a.total == b.total && a.keys.size() < b.keys.size());
      });
      if (box.keys.size() < 2) break;
      // Whole-number variances may hide that a channel does not differ at all.
      std::vector<unsigned> low, high;
      for (auto axis = std::max_element(box.variance, box.variance + 3) - box.variance; high.empty();
           axis = (axis + 1) % 3) {
        low.clear();
        for (const unsigned key : box.keys) {
          (part(key, static_cast<int>(axis)) > box.mean[axis] ? high : low).push_back(key);
        }
      }
      box = measured(low);
      boxes.push_back(measured(high));
    }
    std::vector<std::pair<Color, std::vector<unsigned>>> entries;
    const auto wide = [](uint64_t c) { return static_cast<unsigned>(c << 3 | c >> 2); };
    for (const Box& box : boxes)
      entries.push_back({{wide(box.mean[0]), wide(box.mean[1]), wide(box.mean[2])}, box.keys});
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    return entries;
  }

 private:
  [[nodiscard]] Box measured(const std::vector<unsigned>& keys) const {
    Box box = {.keys = keys};
    for (int c = 0; c < 3; ++c) {
      uint64_t pixels = 0, sum = 0, squares = 0;
      for (const unsigned key : keys) pixels += counts_.at(key), sum += counts_.at(key) * part(key, c);
      box.mean[c] = sum / pixels;
      for (const unsigned key : keys) {
        const int64_t d = static_cast<int64_t>(part(key, c)) - static_cast<int64_t>(box.mean[c]);
        squares += counts_.at(key) * static_cast<uint64_t>(d * d);
      }
      box.total += box.variance[c] = squares / pixels;
    }
    return box;
  }

  std::map<unsigned, uint64_t> counts_;
  std::vector<unsigned> all_;  // in the order of their appearance
};

TEST(OptimisedPalette, AgreesWithTheModel) {
  std::mt19937 random(241);
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    constexpr int depths[] = {16, 24, 32, 24};
    BitmapListHandle list = nullptr;
    Zv_CreateBitmapList(&list);
    Model model;
    std::vector<Color> colors;
    const unsigned items = round % 4 == 0 ? 3 : 1;
    for (unsigned i = 0; i < items; ++i) {
      // 40000 pixels of nearly one colour halve the counts; what occurs once still counts.
      const bool flat = round % 20 == 1;
      BitmapHandle source;
      Zv_CreateBitmap(&source, ALLOC_MEMORY, flat ? 250 : random() % 90 + 1, flat ? 170 : random() % 40 + 1,
                      depths[random() % 4], ORDER_BLUE_FIRST, nullptr, VIEW_UPRIGHT);
      source.ColorOrder = round / 2 % 3;  // what is not 1 is red first
      if (flat) {
        for (unsigned x = 0; x < 200; ++x) Zv_PutPixelColor(&source, x % 9, static_cast<int>(x), random() & 0xFFFFFF);
      } else {
        random() % 3 == 0 ? fillWithNoise(source, random) : fillWithPicture(source, random);
      }
      colors = colorsOf(source);
      model.add(colors);
      Zv_InsertBitmapListItem(list, 0xFFFFFFFF, &source);
    }
    const int bits = 1 + static_cast<int>(random() % 8);
    const unsigned count = random() % 2 == 0 ? 0 : 1 + static_cast<unsigned>(random() % (1u << bits));
    const unsigned options = (random() % 2 == 0 ? 0 : COLORRES_OPTIMISED_PALETTE) | COLORRES_NEAREST;
    TestBitmap alone;
    BitmapHandle item;
    Zv_GetBitmapListItem(list, 0, &item);
    ASSERT_EQ(items == 1 ? Zv_ColorResBitmap(&item, &alone, bits, options, nullptr, count)
                         : Zv_ColorResBitmapList(list, bits, options, nullptr, count),
              KSUCCESS);

    const auto entries = model.split(count == 0 ? 1u << bits : count);
    // Every colour goes to the entry of its box; boxes of one mean are told apart by nothing but their colours.
    std::map<unsigned, Color> entryOf;
    for (const auto& [entry, keys] : entries) {
      for (const unsigned key : keys) entryOf[key] = entry;
    }
    for (unsigned i = 0; i < items; ++i) {
      Zv_GetBitmapListItem(list, i, &item);
      BitmapHandle& made = items == 1 ? alone : item;
      const Palette palette = entriesOf(made.Palette);
      ASSERT_EQ(palette.size(), 1u << bits);
      for (size_t k = 0; k < palette.size(); ++k) {
        ASSERT_EQ(colorOf(palette[k]), k < entries.size() ? entries[k].first : Color{}) << "entry " << k;
      }
      if (i + 1 < items) continue;
      const auto reduced = colorsOf(made);
      for (size_t k = 0; k < colors.size(); ++k) ASSERT_EQ(reduced[k], entryOf[keyOf(colors[k])]) << "pixel " << k;
    }
    Zv_DestroyBitmapList(list);
  }
}

}  // namespace
