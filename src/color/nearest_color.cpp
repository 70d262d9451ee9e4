// The nearest-colour search, which every reduction of colours rests on.
#include <zavo.h>

#include <algorithm>
#include <climits>

#include "color/color_distance.h"
#include "color/palettes.h"

namespace zavo {
namespace {

constexpr unsigned noEntry = 0xFFFFFFFFu;

bool isColor(const RGBQUAD& entry, unsigned red, unsigned green, unsigned blue) {
  return entry.rgbRed == red && entry.rgbGreen == green && entry.rgbBlue == blue;
}

// Most entries measured at a time.
constexpr unsigned blockEntries = 64;

unsigned squaredDifference(unsigned a, unsigned b) {
  return squareTable[a > b ? a - b : b - a];
}

// The best entry so far of a walk from the first entry to the last.
struct Search {
  unsigned wantedClass;
  unsigned best = noEntry;
  int bestDistance = INT_MAX;  // a sum of three squares stays far below

  void offer(unsigned index, const RGBQUAD& entry, int distance) {
    if (distance > bestDistance) return;
    if (distance == bestDistance && (distance == 0 || channelClass(entry) != wantedClass)) return;
    best = index;
    bestDistance = distance;
  }
};

// Squared distances of `count` entries, a multiple of 4; the smallest of them.
int measure(__m128i* distances, const RGBQUAD* entries, unsigned count, __m128i color) {
  __m128i smallest = _mm_set1_epi32(INT_MAX);
  for (unsigned i = 0; i < count; i += 4) {
    distances[i / 4] = distancesOfFour(entries + i, color);
    smallest = smallerOf(smallest, distances[i / 4]);
  }
  return smallestOf(smallest);
}

// Offers the entries that are at `distance`; `first` is the index of the first one.
void offerEqual(Search& search, const __m128i* distances, const RGBQUAD* entries, unsigned first, unsigned count,
                int distance) {
  for (unsigned i = 0; i < count; i += 4) {
    auto hits = lanesEqual(distances[i / 4], distance);
    for (unsigned k = i; hits != 0; ++k, hits >>= 1) {
      if ((hits & 1) != 0) search.offer(first + k, entries[k], distance);
    }
  }
}

}  // namespace

unsigned nearestIndex(const RGBQUAD* palette, unsigned count, unsigned red, unsigned green, unsigned blue) {
  if (count == 0) return noEntry;
  // Black looks at the first entry before the last, white the other way round, so that a palette with both ends
  // alike gives black the low and white the high index.
  const unsigned last = count - 1;
  if ((red | green | blue) == 0) {
    if (isColor(palette[0], 0, 0, 0)) return 0;
    if (isColor(palette[last], 0, 0, 0)) return last;
  }
  if ((red & green & blue) == 255) {
    if (isColor(palette[last], 255, 255, 255)) return last;
    if (isColor(palette[0], 255, 255, 255)) return 0;
  }

  // Only the nearest entries of a block can change the outcome of the walk, so the others are passed over.
  Search search{channelClass(red, green, blue)};
  const __m128i color = distanceOperand(red, green, blue);
  unsigned i = 0;
  while (count - i >= 4 && search.bestDistance > 0) {
    __m128i distances[blockEntries / 4];
    const unsigned measured = std::min(blockEntries, (count - i) & ~3u);
    const int smallest = measure(distances, palette + i, measured, color);
    if (smallest <= search.bestDistance) offerEqual(search, distances, palette + i, i, measured, smallest);
    i += measured;
  }
  for (; i < count && search.bestDistance > 0; ++i) {
    const RGBQUAD& entry = palette[i];
    search.offer(i, entry,
                 static_cast<int>(squaredDifference(red, entry.rgbRed) + squaredDifference(green, entry.rgbGreen) +
                                  squaredDifference(blue, entry.rgbBlue)));
  }
  return search.best;
}

}  // namespace zavo

using namespace zavo;

unsigned ZAVO_CALL Zv_FindPaletteIndex(const RGBQUAD* palette, unsigned count, unsigned red, unsigned green,
                                       unsigned blue) {
  if (palette == nullptr) return noEntry;
  return nearestIndex(palette, count, red & 255, green & 255, blue & 255);
}
