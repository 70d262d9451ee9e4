// Reversing the pixel order of one packed row in place.
#pragma once

#include <cstdint>

namespace zavo {

// Reverses the first `width` pixels of a row. Bits of the last byte beyond them become zero.
using MirrorFunction = void (*)(uint8_t* row, unsigned width);

// The function for a depth, the fastest this processor has; every depth other than 1 to 8, 16 and 24 is taken as
// 32 bits a pixel.
[[nodiscard]] MirrorFunction mirrorFunction(int bitsPerPixel);

// The plain ones, which the vector ones are held to.
[[nodiscard]] MirrorFunction plainMirrorFunction(int bitsPerPixel);

// For processors with the byte shuffle; null for a depth without one.
[[nodiscard]] MirrorFunction ssse3MirrorFunction(int bitsPerPixel);

}  // namespace zavo
