// Maps from the indexes of one palette to those of another.
#include <zavo.h>

#include <algorithm>
#include <cstring>

#include "color/palettes.h"

namespace zavo {
namespace {

bool isIdentity(const uint8_t* map, unsigned count) {
  for (unsigned i = 0; i < count; ++i) {
    if (map[i] != i) return false;
  }
  return true;
}

}  // namespace

bool buildPaletteMap(uint8_t map[256], const RGBQUAD* source, unsigned sourceCount, const RGBQUAD* destination,
                     unsigned destinationCount) {
  const unsigned count = source != nullptr ? std::min(sourceCount, 256u) : 256;
  std::fill(map, map + 256, uint8_t{0});

  const bool sameColors = source != nullptr && destination != nullptr && destinationCount >= count &&
                          memcmp(source, destination, count * sizeof(RGBQUAD)) == 0;
  if (sameColors || (source == nullptr && destination == nullptr)) {
    for (unsigned i = 0; i < count; ++i) map[i] = static_cast<uint8_t>(i);
    return true;
  }
  for (unsigned i = 0; i < count; ++i) {
    const auto level = static_cast<uint8_t>(i);
    const RGBQUAD color = source != nullptr ? source[i] : RGBQUAD{level, level, level, 0};
    map[i] = destination != nullptr ? static_cast<uint8_t>(nearestIndex(destination, destinationCount, color.rgbRed,
                                                                        color.rgbGreen, color.rgbBlue))
                                    : luminance(color.rgbRed, color.rgbGreen, color.rgbBlue);
  }
  return isIdentity(map, count);
}

}  // namespace zavo
