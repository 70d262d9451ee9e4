// The box of colours with the largest variance is cut at its mean until there are as many boxes as colours wanted;
// the mean of each box becomes a palette entry. A box is a slice of the list of colours that occur.
#include "color/optimised_palette.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "color/color_histogram.h"
#include "color/palettes.h"
#include "core/bitmap_list.h"
#include "core/status.h"

namespace zavo {
namespace {

constexpr unsigned channels = 3;  // red, green, blue

constexpr unsigned channelOf(unsigned key, unsigned channel) {
  return key >> (10 - 5 * channel) & 31u;
}

// A slice of the colour list. Means and channel values are of 5 bits.
struct Box {
  unsigned first;  // of the slice
  unsigned count;  // of distinct colours
  uint64_t pixels;
  std::array<uint64_t, channels> sums;  // of channel values over all pixels
  std::array<unsigned, channels> means;
  std::array<uint64_t, channels> variances;
  uint64_t totalVariance;
};

class BoxSplitter {
 public:
  BoxSplitter(ColorHistogram& histogram, Box* boxes) : histogram_(histogram), boxes_(boxes) {}

  // Makes at most `wanted` boxes; the number made.
  unsigned split(unsigned wanted) {
    boxes_[0] = {};
    boxes_[0].count = histogram_.keyCount();
    sumUp(boxes_[0]);
    measure(boxes_[0]);
    boxCount_ = 1;
    while (boxCount_ < wanted) {
      Box& box = mostVaried();
      if (box.count < 2) break;
      cut(box, boxes_[boxCount_]);
      ++boxCount_;
    }
    return boxCount_;
  }

 private:
  // Pixels and sums from the colours of the box.
  void sumUp(Box& box) const {
    box.pixels = 0;
    box.sums = {};
    for (unsigned i = box.first; i < box.first + box.count; ++i) {
      const unsigned key = histogram_.keys()[i];
      const uint64_t pixels = histogram_.count(key);
      box.pixels += pixels;
      for (unsigned c = 0; c < channels; ++c) box.sums[c] += pixels * channelOf(key, c);
    }
  }

  // Means and variances from the sums and the colours of the box, which is not empty.
  void measure(Box& box) const {
    for (unsigned c = 0; c < channels; ++c) box.means[c] = static_cast<unsigned>(box.sums[c] / box.pixels);
    box.variances = {};
    for (unsigned i = box.first; i < box.first + box.count; ++i) {
      const unsigned key = histogram_.keys()[i];
      const uint64_t pixels = histogram_.count(key);
      for (unsigned c = 0; c < channels; ++c) {
        const unsigned value = channelOf(key, c);
        box.variances[c] += pixels * squareTable[value > box.means[c] ? value - box.means[c] : box.means[c] - value];
      }
    }
    box.totalVariance = 0;
    for (unsigned c = 0; c < channels; ++c) {
      box.variances[c] /= box.pixels;
      box.totalVariance += box.variances[c];
    }
  }

  // Among equal variances the box with more colours, then the earlier one.
  [[nodiscard]] Box& mostVaried() const {
    return *std::max_element(boxes_, boxes_ + boxCount_, [](const Box& a, const Box& b) {
      return a.totalVariance < b.totalVariance || (a.totalVariance == b.totalVariance && a.count < b.count);
    });
  }

  [[nodiscard]] bool differs(const Box& box, unsigned channel) const {
    const uint16_t* colors = histogram_.keys() + box.first;
    return std::any_of(colors, colors + box.count,
                       [&](unsigned key) { return channelOf(key, channel) != channelOf(colors[0], channel); });
  }

  // The most varied channel. When whole-number variances hide that a channel does not differ at all, another one does,
  // for the colours are distinct.
  [[nodiscard]] unsigned cutChannel(const Box& box) const {
    const auto& variances = box.variances;
    unsigned channel = 2;
    if (variances[1] >= variances[2]) channel = 1;
    if (variances[0] >= variances[1] && variances[0] >= variances[2]) channel = 0;
    while (!differs(box, channel)) channel = (channel + 1) % channels;
    return channel;
  }

  // Keeps the colours up to the mean in `box` and moves those above it to `added`. Neither side is empty: the mean,
  // rounded down, is below the largest value and not below the smallest.
  void cut(Box& box, Box& added) {
    const unsigned channel = cutChannel(box);
    const unsigned threshold = box.means[channel];
    uint16_t* colors = histogram_.keys();
    const uint16_t* middle = std::partition(colors + box.first, colors + box.first + box.count,
                                            [&](unsigned key) { return channelOf(key, channel) <= threshold; });

    const Box whole = box;
    added = {};
    added.first = static_cast<unsigned>(middle - colors);
    added.count = box.first + box.count - added.first;
    box.count -= added.count;
    Box& smaller = box.count < added.count ? box : added;
    Box& larger = box.count < added.count ? added : box;
    sumUp(smaller);
    larger.pixels = whole.pixels - smaller.pixels;
    for (unsigned c = 0; c < channels; ++c) larger.sums[c] = whole.sums[c] - smaller.sums[c];
    measure(box);
    measure(added);
  }

  ColorHistogram& histogram_;
  Box* boxes_;
  unsigned boxCount_ = 0;
};

unsigned sortValue(const RGBQUAD& color) {
  return static_cast<unsigned>(color.rgbRed << 16 | color.rgbGreen << 8 | color.rgbBlue);
}

// Sorts by red, green, blue and calls exchanged(i, j) for every exchange, so that a companion can follow.
template <typename Exchanged>
void sortPalette(RGBQUAD* palette, unsigned count, Exchanged exchanged) {
  for (unsigned i = 0; i < count; ++i) {
    for (unsigned j = i + 1; j < count; ++j) {
      if (sortValue(palette[i]) <= sortValue(palette[j])) continue;
      std::swap(palette[i], palette[j]);
      exchanged(i, j);
    }
  }
}

// The palette of a histogram's colours.
int paletteOf(RGBQUAD* palette, unsigned count, OsBlock<uint32_t>* inverseMap, ColorHistogram& histogram) {
  const unsigned wanted = std::min(count, std::max(histogram.keyCount(), 1u));
  const auto boxes = OsBlock<Box>::allocate(wanted);
  const auto order = OsBlock<unsigned>::allocate(wanted);
  if (!boxes || !order) return KERR_NO_MEMORY;

  memset(palette, 0, size_t{count} * sizeof(RGBQUAD));
  if (histogram.keyCount() == 0) return KSUCCESS;
  const unsigned made = BoxSplitter(histogram, boxes.get()).split(wanted);
  for (unsigned i = 0; i < made; ++i) {
    const auto& means = boxes[i].means;
    palette[i] = {
        .rgbBlue = widen5(means[2]), .rgbGreen = widen5(means[1]), .rgbRed = widen5(means[0]), .rgbReserved = 0};
    order[i] = i;
  }
  sortPalette(palette, made, [&](unsigned i, unsigned j) { std::swap(order[i], order[j]); });
  if (inverseMap == nullptr) return KSUCCESS;

  // Every colour that occurs lies in a box, so no count is left in the table.
  OsBlock<uint32_t> map = histogram.releaseCounts();
  for (unsigned i = 0; i < made; ++i) {
    const Box& box = boxes[order[i]];
    for (unsigned k = box.first; k < box.first + box.count; ++k) map[histogram.keys()[k]] = i + 1;
  }
  *inverseMap = std::move(map);
  return KSUCCESS;
}

bool givesOwnPalette(const BitmapHandle& bitmap, unsigned count) {
  return bitmap.BitsPerPixel <= 8 && bitmap.ColorCount <= count;
}

void sortedOwnPalette(RGBQUAD* palette, unsigned count, const BitmapHandle& bitmap) {
  RGBQUAD own[256];
  const unsigned known = std::min(readPaletteOrFixed(bitmap, own), bitmap.ColorCount);
  memset(palette, 0, size_t{count} * sizeof(RGBQUAD));
  memcpy(palette, own, known * sizeof(RGBQUAD));
  sortPalette(palette, known, [](unsigned, unsigned) {});
}

}  // namespace

int optimisePalette(RGBQUAD* palette, unsigned count, OsBlock<uint32_t>* inverseMap, BitmapHandle* bitmap) {
  if (inverseMap != nullptr) inverseMap->reset();
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (palette == nullptr || count == 0) return KERR_BAD_PARAMETER;
  if (givesOwnPalette(*bitmap, count)) {
    sortedOwnPalette(palette, count, *bitmap);
    return KSUCCESS;
  }
  ColorHistogram histogram;
  if (const int status = histogram.open(); status != KSUCCESS) return status;
  if (const int status = histogram.add(*bitmap); status != KSUCCESS) return status;
  return paletteOf(palette, count, inverseMap, histogram);
}

int optimiseListPalette(RGBQUAD* palette, unsigned count, OsBlock<uint32_t>* inverseMap, BitmapListHandle list) {
  if (inverseMap != nullptr) inverseMap->reset();
  BitmapList* header = bitmapList(list);
  if (header == nullptr) return KERR_BAD_PARAMETER;
  if (header->count == 0) return KERR_BAD_BITMAP;
  if (header->count == 1) return optimisePalette(palette, count, inverseMap, &header->items[0]);
  if (palette == nullptr || count == 0) return KERR_BAD_PARAMETER;

  ColorHistogram histogram;
  if (const int status = histogram.open(); status != KSUCCESS) return status;
  for (unsigned i = 0; i < header->count; ++i) {
    BitmapHandle& bitmap = header->items[i];
    if (!isAllocated(&bitmap)) return KERR_BAD_BITMAP;
    if (const int status = histogram.add(bitmap); status != KSUCCESS) return status;
  }
  return paletteOf(palette, count, inverseMap, histogram);
}

}  // namespace zavo
