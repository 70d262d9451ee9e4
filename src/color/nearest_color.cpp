// The nearest-colour search, which every reduction of colours rests on, and maps between palettes.
#include <zavo.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <emmintrin.h>

#include "color/palettes.h"

namespace zavo {
namespace {

constexpr unsigned noEntry = 0xFFFFFFFFu;

// The order of a colour's channels as a number; decides between equally near entries.
unsigned channelClass(unsigned red, unsigned green, unsigned blue) {
  unsigned result = blue > red ? 4 : 0;
  if (green < std::min(red, blue)) result |= 2;
  if (green > std::max(red, blue)) result |= 1;
  return result;
}

bool isColor(const RGBQUAD& entry, unsigned red, unsigned green, unsigned blue) {
  return entry.rgbRed == red && entry.rgbGreen == green && entry.rgbBlue == blue;
}

unsigned squaredDifference(unsigned a, unsigned b) {
  return squareTable[a > b ? a - b : b - a];
}

// The search while it walks: the best entry so far and its distance.
struct Search {
  unsigned wantedClass;
  unsigned best = noEntry;
  int bestDistance = INT_MAX;  // a sum of three squares stays far below

  void offer(unsigned index, const RGBQUAD& entry, int distance) {
    if (distance > bestDistance) return;
    if (distance == bestDistance &&
        (distance == 0 || channelClass(entry.rgbRed, entry.rgbGreen, entry.rgbBlue) != wantedClass)) {
      return;
    }
    best = index;
    bestDistance = distance;
  }
};

// Squared distances of four entries; `color` holds blue, green, red, 0 twice.
__m128i distancesOfFour(const RGBQUAD* entries, __m128i color) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i colorBytes = _mm_set1_epi32(0x00FFFFFF);
  const __m128i bytes = _mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(entries)), colorBytes);
  const __m128i low = _mm_sub_epi16(_mm_unpacklo_epi8(bytes, zero), color);
  const __m128i high = _mm_sub_epi16(_mm_unpackhi_epi8(bytes, zero), color);
  const __m128 lowSums = _mm_castsi128_ps(_mm_madd_epi16(low, low));  // blue + green, red, blue + green, red
  const __m128 highSums = _mm_castsi128_ps(_mm_madd_epi16(high, high));
  return _mm_add_epi32(_mm_castps_si128(_mm_shuffle_ps(lowSums, highSums, _MM_SHUFFLE(2, 0, 2, 0))),
                       _mm_castps_si128(_mm_shuffle_ps(lowSums, highSums, _MM_SHUFFLE(3, 1, 3, 1))));
}

bool isIdentity(const uint8_t* map, unsigned count) {
  for (unsigned i = 0; i < count; ++i) {
    if (map[i] != i) return false;
  }
  return true;
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

  Search search{channelClass(red, green, blue)};
  const auto r = static_cast<short>(red), g = static_cast<short>(green), b = static_cast<short>(blue);
  const __m128i color = _mm_setr_epi16(b, g, r, 0, b, g, r, 0);
  unsigned i = 0;
  for (; i + 4 <= count && search.bestDistance > 0; i += 4) {
    const __m128i distances = distancesOfFour(palette + i, color);
    const __m128i farther = _mm_cmpgt_epi32(distances, _mm_set1_epi32(search.bestDistance));
    if (_mm_movemask_epi8(farther) == 0xFFFF) continue;
    alignas(16) int values[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(values), distances);
    for (unsigned k = 0; k < 4; ++k) search.offer(i + k, palette[i + k], values[k]);
  }
  for (; i < count && search.bestDistance > 0; ++i) {
    const RGBQUAD& entry = palette[i];
    search.offer(i, entry,
                 static_cast<int>(squaredDifference(red, entry.rgbRed) + squaredDifference(green, entry.rgbGreen) +
                                  squaredDifference(blue, entry.rgbBlue)));
  }
  return search.best;
}

bool buildPaletteMap(uint8_t map[256], const RGBQUAD* source, unsigned sourceCount, const RGBQUAD* destination,
                     unsigned destinationCount) {
  if (source == nullptr) sourceCount = 256;
  sourceCount = std::min(sourceCount, 256u);
  std::fill(map, map + 256, uint8_t{0});

  const bool sameColors = source != nullptr && destination != nullptr && destinationCount >= sourceCount &&
                          memcmp(source, destination, sourceCount * sizeof(RGBQUAD)) == 0;
  if (sameColors || (source == nullptr && destination == nullptr)) {
    for (unsigned i = 0; i < sourceCount; ++i) map[i] = static_cast<uint8_t>(i);
    return true;
  }
  for (unsigned i = 0; i < sourceCount; ++i) {
    const auto grayLevel = static_cast<uint8_t>(i);
    const RGBQUAD color = source != nullptr ? source[i] : RGBQUAD{grayLevel, grayLevel, grayLevel, 0};
    map[i] = destination == nullptr ? luminance(color.rgbRed, color.rgbGreen, color.rgbBlue)
                                    : static_cast<uint8_t>(nearestIndex(destination, destinationCount, color.rgbRed,
                                                                        color.rgbGreen, color.rgbBlue));
  }
  return isIdentity(map, sourceCount);
}

}  // namespace zavo

using namespace zavo;

unsigned ZAVO_CALL Zv_FindPaletteIndex(const RGBQUAD* palette, unsigned count, unsigned red, unsigned green,
                                       unsigned blue) {
  if (palette == nullptr) return noEntry;
  return nearestIndex(palette, count, red & 255, green & 255, blue & 255);
}
