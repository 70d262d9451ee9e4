// Packed indexes against a model that takes every bit by itself.
#include "core/packed_pixels.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace zavo;

using Bytes = std::vector<uint8_t>;

unsigned modelPixel(const Bytes& packed, unsigned pixel, unsigned bits) {
  unsigned index = 0;
  for (unsigned bit = pixel * bits; bit < (pixel + 1) * bits; ++bit) {
    index = index * 2 + (packed[bit / 8] >> (7 - bit % 8) & 1u);
  }
  return index;
}

void setModelPixel(Bytes& packed, unsigned pixel, unsigned bits, unsigned index) {
  for (unsigned i = 0; i < bits; ++i) {
    const unsigned bit = pixel * bits + i;
    const unsigned mask = 0x80u >> bit % 8;
    const bool set = (index >> (bits - 1 - i) & 1u) != 0;
    packed[bit / 8] = static_cast<uint8_t>(set ? packed[bit / 8] | mask : packed[bit / 8] & ~mask);
  }
}

Bytes randomBytes(std::mt19937& random, size_t count) {
  Bytes bytes(count);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

TEST(PackedPixels, ArePackedAndUnpackedAnywhere) {
  std::mt19937 random(100);
  for (unsigned bits = 1; bits <= 8; ++bits) {
    for (unsigned first = 0; first < 17; ++first) {
      for (unsigned count = 0; count <= 70; ++count) {
        SCOPED_TRACE(testing::Message() << bits << " bits, first " << first << " count " << count);
        const Bytes packed = randomBytes(random, ((first + count) * bits + 7) / 8);
        Bytes indexes(count + 8, 0xA5), expected = indexes;
        for (unsigned i = 0; i < count; ++i) {
          expected[i] = static_cast<uint8_t>(modelPixel(packed, first + i, bits));
          ASSERT_EQ(packedPixel(packed.data(), first + i, bits), expected[i]);
        }
        unpackFunction(static_cast<int>(bits))(indexes.data(), packed.data(), first, count);
        ASSERT_EQ(indexes, expected);

        // Bits of an index above the depth, and bits of bytes around the pixels, are none of its business.
        indexes = randomBytes(random, count);
        Bytes together = randomBytes(random, ((first + count) * bits + 7) / 8 + 4);
        Bytes oneByOne = together;
        expected = together;
        for (unsigned i = 0; i < count; ++i) {
          setModelPixel(expected, first + i, bits, indexes[i]);
          setPackedPixel(oneByOne.data(), first + i, bits, indexes[i] & ((1u << bits) - 1));
        }
        packFunction(static_cast<int>(bits))(together.data(), indexes.data(), first, count);
        ASSERT_EQ(together, expected);
        ASSERT_EQ(oneByOne, expected);
      }
    }
  }
}

}  // namespace
