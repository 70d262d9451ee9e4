// 1-bit rows as plain pixels, and the run records and packed bits that stand for them, made the slow way.
#pragma once

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace zavotest {

using Bytes = std::vector<uint8_t>;
using Pixels = std::vector<bool>;

// Even-aligned room for records; what a call must not touch stays at the filler.
constexpr uint8_t filler = 0xA5;

// Rows with runs of all lengths: single pixels, runs around byte edges, long ones.
inline Pixels randomPixels(std::mt19937& random, size_t count) {
  constexpr unsigned lengths[] = {1, 1, 2, 3, 5, 7, 8, 9, 15, 16, 17, 40};
  Pixels pixels;
  bool set = random() % 2 != 0;
  while (pixels.size() < count) {
    for (unsigned left = lengths[random() % std::size(lengths)]; left > 0 && pixels.size() < count; --left) {
      pixels.push_back(set);
    }
    set = !set;
  }
  return pixels;
}

inline Pixels part(const Pixels& pixels, size_t start, size_t count) {
  Pixels piece;
  for (size_t i = start; i < start + count; ++i) piece.push_back(i < pixels.size() && pixels[i]);
  return piece;
}

// Packed from bit `startBit` of the first byte on; other bits are 0.
inline Bytes packed(const Pixels& pixels, size_t startBit = 0) {
  Bytes bits((startBit + pixels.size() + 7) / 8);
  for (size_t i = 0; i < pixels.size(); ++i) {
    const size_t bit = startBit + i;
    if (pixels[i]) bits[bit / 8] = static_cast<uint8_t>(bits[bit / 8] | 0x80u >> bit % 8);
  }
  return bits;
}

inline Pixels unpacked(const uint8_t* bits, size_t count) {
  Pixels pixels;
  for (size_t i = 0; i < count; ++i) pixels.push_back((bits[i / 8] >> (7 - i % 8) & 1) != 0);
  return pixels;
}

// The runs of pixels, none longer than 16 bits can say.
inline std::vector<uint16_t> runsOf(const Pixels& pixels) {
  std::vector<uint16_t> runs{0};
  bool color = false;
  for (const bool pixel : pixels) {
    if (pixel != color) runs.push_back(0);
    if (pixel == color && runs.back() == 0xFFFF) runs.insert(runs.end(), {0, 0});
    color = pixel;
    ++runs.back();
  }
  return runs;
}

inline void append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

inline Bytes record(const std::vector<uint16_t>& runs) {
  const auto entries = static_cast<uint32_t>(runs.size());
  Bytes bytes(4 + runs.size() * 2);
  memcpy(bytes.data(), &entries, 4);
  if (!runs.empty()) memcpy(bytes.data() + 4, runs.data(), runs.size() * 2);
  return bytes;
}

inline Bytes recordOf(const Pixels& pixels) {
  return record(runsOf(pixels));
}

}  // namespace zavotest
