// The nearest-colour search, which every reduction of colours rests on, and maps between palettes.
#include <zavo.h>

#include <algorithm>
#include <cstring>

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

  const unsigned wantedClass = channelClass(red, green, blue);
  uint32_t bestDistance = 0xFFFFFFFFu;
  unsigned best = noEntry;
  for (unsigned i = 0; i < count; ++i) {
    const RGBQUAD& entry = palette[i];
    const uint32_t distance = squaredDifference(red, entry.rgbRed) + squaredDifference(green, entry.rgbGreen) +
                              squaredDifference(blue, entry.rgbBlue);
    if (distance > bestDistance) continue;
    if (distance == bestDistance && channelClass(entry.rgbRed, entry.rgbGreen, entry.rgbBlue) != wantedClass) continue;
    best = i;
    bestDistance = distance;
    if (distance == 0) break;
  }
  return best;
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
