// Palette indexes of 1 to 8 bits, packed most significant bit first and running on across bytes.
// Rows are unpacked to a byte a pixel, worked on, and packed again; so all depths up to 8 share one path.
#pragma once

#include <cstdint>

namespace zavo {

// Unpacks `count` pixels into a byte each. `firstPixel` counts from the first bit of `packed`.
using UnpackFunction = void (*)(uint8_t* indexes, const uint8_t* packed, unsigned firstPixel, unsigned count);

// Packs `count` indexes, starting at pixel `firstPixel` of `packed`. The bits around them are kept.
using PackFunction = void (*)(uint8_t* packed, const uint8_t* indexes, unsigned firstPixel, unsigned count);

// The functions for 1 to 8 bits.
[[nodiscard]] UnpackFunction unpackFunction(int bitsPerPixel);
[[nodiscard]] PackFunction packFunction(int bitsPerPixel);

// One pixel; for work that touches a few of them only.
[[nodiscard]] unsigned packedPixel(const uint8_t* packed, unsigned pixel, unsigned bitsPerPixel);
void setPackedPixel(uint8_t* packed, unsigned pixel, unsigned bitsPerPixel, unsigned index);

// Copies bits between packed rows. Places count from the first bit at either address; the bits around the copy are
// kept. The two must not overlap.
void copyBits(uint8_t* target, uint64_t targetBit, const uint8_t* source, uint64_t sourceBit, uint64_t count);

// Moves the content of `bytes` bytes towards the first bit by `shift` bits, 0 to 7; zeros come in at the end.
void shiftBitsLeft(uint8_t* packed, unsigned bytes, unsigned shift);

// Vector code for pixels of 1 bit: takes as many pixels as are whole groups of 16, from a byte's first bit on; the
// number taken.
unsigned packBitGroups(uint8_t* packed, const uint8_t* indexes, unsigned count);
unsigned unpackBitGroups(uint8_t* indexes, const uint8_t* packed, unsigned count);

}  // namespace zavo
