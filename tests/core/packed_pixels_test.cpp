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

class PackedPixels : public testing::TestWithParam<unsigned> {};

TEST_P(PackedPixels, UnpackTakesEachPixel) {
  const unsigned bits = GetParam();
  const UnpackFunction unpack = unpackFunction(static_cast<int>(bits));
  std::mt19937 random(bits);
  for (unsigned first = 0; first < 17; ++first) {
    for (unsigned count = 0; count <= 70; ++count) {
      SCOPED_TRACE(testing::Message() << "first " << first << " count " << count);
      const Bytes packed = randomBytes(random, ((first + count) * bits + 7) / 8);
      Bytes expected(count + 8, 0xA5);
      for (unsigned i = 0; i < count; ++i) expected[i] = static_cast<uint8_t>(modelPixel(packed, first + i, bits));
      Bytes indexes(count + 8, 0xA5);
      unpack(indexes.data(), packed.data(), first, count);
      ASSERT_EQ(indexes, expected);
    }
  }
}

TEST_P(PackedPixels, PackKeepsTheBitsAround) {
  const unsigned bits = GetParam();
  const PackFunction pack = packFunction(static_cast<int>(bits));
  std::mt19937 random(100 + bits);
  for (unsigned first = 0; first < 17; ++first) {
    for (unsigned count = 0; count <= 70; ++count) {
      SCOPED_TRACE(testing::Message() << "first " << first << " count " << count);
      Bytes packed = randomBytes(random, ((first + count) * bits + 7) / 8 + 4);
      const Bytes indexes = randomBytes(random, count);
      Bytes expected = packed;
      for (unsigned i = 0; i < count; ++i) setModelPixel(expected, first + i, bits, indexes[i]);
      pack(packed.data(), indexes.data(), first, count);
      ASSERT_EQ(packed, expected);
    }
  }
}

TEST_P(PackedPixels, SinglePixels) {
  const unsigned bits = GetParam();
  std::mt19937 random(200 + bits);
  for (unsigned pixel = 0; pixel < 40; ++pixel) {
    SCOPED_TRACE(testing::Message() << "pixel " << pixel);
    Bytes packed = randomBytes(random, ((pixel + 1) * bits + 7) / 8);
    EXPECT_EQ(packedPixel(packed.data(), pixel, bits), modelPixel(packed, pixel, bits));
    const unsigned index = random() % (1u << bits);
    Bytes expected = packed;
    setModelPixel(expected, pixel, bits, index);
    setPackedPixel(packed.data(), pixel, bits, index);
    EXPECT_EQ(packed, expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Depths, PackedPixels, testing::Range(1u, 9u));

TEST(CopyBits, KeepsTheBitsAround) {
  std::mt19937 random(8);
  for (unsigned to = 0; to < 17; ++to) {
    for (unsigned from = 0; from < 9; ++from) {
      for (unsigned count = 0; count <= 100; ++count) {
        SCOPED_TRACE(testing::Message() << count << " bits from " << from << " to " << to);
        const Bytes source = randomBytes(random, (from + count + 7) / 8);
        Bytes target = randomBytes(random, (to + count + 7) / 8 + 2);
        Bytes expected = target;
        for (unsigned i = 0; i < count; ++i) setModelPixel(expected, to + i, 1, modelPixel(source, from + i, 1));
        copyBits(target.data(), to, source.data(), from, count);
        ASSERT_EQ(target, expected);
      }
    }
  }
}

TEST(ShiftBits, MovesEveryBit) {
  std::mt19937 random(7);
  for (unsigned bytes = 0; bytes <= 20; ++bytes) {
    for (unsigned shift = 0; shift < 8; ++shift) {
      SCOPED_TRACE(testing::Message() << bytes << " bytes by " << shift);
      const Bytes original = randomBytes(random, bytes);
      Bytes left(bytes + 1, 0), right(bytes + 1, 0);
      for (unsigned bit = 0; bit < bytes * 8; ++bit) {
        const unsigned value = modelPixel(original, bit, 1);
        if (bit >= shift) setModelPixel(left, bit - shift, 1, value);
        if (bit + shift < bytes * 8) setModelPixel(right, bit + shift, 1, value);
      }
      // The byte after the end must stay as it is.
      left[bytes] = right[bytes] = 0xA5;
      Bytes shifted = original;
      shifted.push_back(0xA5);
      shiftBitsLeft(shifted.data(), bytes, shift);
      EXPECT_EQ(shifted, left);
      shifted = original;
      shifted.push_back(0xA5);
      shiftBitsRight(shifted.data(), bytes, shift);
      EXPECT_EQ(shifted, right);
    }
  }
}

}  // namespace
