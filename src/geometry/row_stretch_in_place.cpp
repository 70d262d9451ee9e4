// The row stretch within one piece of memory: shrinking walks forwards, enlarging backwards, so that a source pixel is
// read before anything is written over it.
#include <cstring>

#include "core/sizes.h"
#include "geometry/packed_fetch.h"
#include "geometry/row_stretch.h"
#include "geometry/stepping.h"

namespace zavo {
namespace {

template <size_t bytes>
struct Pixel {
  uint8_t content[bytes];
};

template <size_t bytes>
void stretchBytes(uint8_t* row, unsigned destinationWidth, unsigned sourceWidth) {
  auto* pixels = reinterpret_cast<Pixel<bytes>*>(row);
  if (destinationWidth < sourceWidth) {
    Stepping stepping(sourceWidth, destinationWidth);
    for (unsigned i = 0; i < destinationWidth; ++i, stepping.advance()) pixels[i] = pixels[stepping.position()];
  } else {
    Stepping stepping(sourceWidth, destinationWidth, destinationWidth - 1);
    for (unsigned i = destinationWidth; i-- > 0; stepping.retreat()) pixels[i] = pixels[stepping.position()];
  }
}

// Bits are gathered and stored as whole bytes, which hold none of a pixel still to be read: a destination pixel never
// lies behind its source pixel when shrinking, and never before it when enlarging.
template <unsigned bits>
void shrinkPacked(uint8_t* row, unsigned destinationWidth, unsigned sourceWidth) {
  Stepping stepping(sourceWidth, destinationWidth);
  uint8_t* next = row;
  uint32_t gathered = 0;
  unsigned gatheredBits = 0;
  for (unsigned i = 0; i < destinationWidth; ++i, stepping.advance()) {
    gathered = gathered << bits | packedAt<bits>(row, stepping.position());
    gatheredBits += bits;
    if (gatheredBits >= 8) {
      gatheredBits -= 8;
      *next++ = static_cast<uint8_t>(gathered >> gatheredBits);
    }
  }
  if (gatheredBits != 0) *next = static_cast<uint8_t>(gathered << (8 - gatheredBits));
}

template <unsigned bits>
void enlargePacked(uint8_t* row, unsigned destinationWidth, unsigned sourceWidth) {
  Stepping stepping(sourceWidth, destinationWidth, destinationWidth - 1);
  uint8_t* next = row + static_cast<size_t>(packedBytesFor(destinationWidth, bits));
  uint32_t gathered = 0;
  unsigned gatheredBits = (8 - destinationWidth % 8 * bits % 8) % 8;
  for (unsigned i = destinationWidth; i-- > 0; stepping.retreat()) {
    gathered |= packedAt<bits>(row, stepping.position()) << gatheredBits;
    gatheredBits += bits;
    if (gatheredBits >= 8) {
      *--next = static_cast<uint8_t>(gathered);
      gathered >>= 8;
      gatheredBits -= 8;
    }
  }
}

template <unsigned bits>
void stretchPacked(uint8_t* row, unsigned destinationWidth, unsigned sourceWidth) {
  if (destinationWidth < sourceWidth) {
    shrinkPacked<bits>(row, destinationWidth, sourceWidth);
  } else {
    enlargePacked<bits>(row, destinationWidth, sourceWidth);
  }
}

using InPlaceFunction = void (*)(uint8_t* row, unsigned destinationWidth, unsigned sourceWidth);

InPlaceFunction functionFor(int bitsPerPixel) {
  static constexpr InPlaceFunction packed[] = {stretchPacked<1>, stretchPacked<2>, stretchPacked<3>, stretchPacked<4>,
                                               stretchPacked<5>, stretchPacked<6>, stretchPacked<7>};
  static constexpr InPlaceFunction whole[] = {stretchBytes<1>, stretchBytes<2>, stretchBytes<3>, stretchBytes<4>};
  return bitsPerPixel < 8 ? packed[bitsPerPixel - 1] : whole[bitsPerPixel / 8 - 1];
}

}  // namespace

void stretchInPlace(uint8_t* row, unsigned destinationWidth, unsigned sourceWidth, int bitsPerPixel) {
  if (destinationWidth != sourceWidth) functionFor(bitsPerPixel)(row, destinationWidth, sourceWidth);
}

}  // namespace zavo
