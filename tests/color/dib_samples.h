// Device-independent bitmaps for tests, built byte by byte.
#pragma once

#include <zavo.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace zavotest {

using Bytes = std::vector<uint8_t>;

struct DibSpec {
  unsigned headerBytes = 40;
  int width = 5;
  int height = 3;
  int bits = 8;
  unsigned colorsUsed = 0;
  unsigned compression = BI_RGB;
  unsigned planes = 1;
  int xPixelsPerMetre = 3937;
  int yPixelsPerMetre = 7874;

  [[nodiscard]] size_t rowBytes() const {
    return (static_cast<size_t>(width) * static_cast<size_t>(bits) + 31) / 32 * 4;
  }
  [[nodiscard]] size_t rows() const { return static_cast<size_t>(height < 0 ? -height : height); }
  [[nodiscard]] unsigned colors() const {
    if (headerBytes != 12 && colorsUsed != 0) return colorsUsed;
    return bits <= 8 ? 1u << bits : 0;
  }
};

template <typename T>
void put(Bytes& bytes, T value) {
  const auto* raw = reinterpret_cast<const uint8_t*>(&value);
  bytes.insert(bytes.end(), raw, raw + sizeof value);
}

inline Bytes dibHeader(const DibSpec& layout) {
  const auto planes = static_cast<WORD>(layout.planes), bits = static_cast<WORD>(layout.bits);
  Bytes bytes;
  if (layout.headerBytes == sizeof(BITMAPCOREHEADER)) {
    put(bytes, BITMAPCOREHEADER{layout.headerBytes, static_cast<WORD>(layout.width), static_cast<WORD>(layout.height),
                                planes, bits});
    return bytes;
  }
  put(bytes, BITMAPINFOHEADER{layout.headerBytes, layout.width, layout.height, planes, bits, layout.compression, 0,
                              layout.xPixelsPerMetre, layout.yPixelsPerMetre, layout.colorsUsed, 0});
  bytes.resize(layout.headerBytes, 0xEE);
  return bytes;
}

// Byte `which` (blue, green, red) of a colour table entry.
inline uint8_t tableChannel(unsigned entry, unsigned which) {
  return static_cast<uint8_t>(entry * 37 + which * 11 + 1);
}

// Header, colour table (reserved bytes 0x77) and random rows in one block.
inline Bytes packedDib(const DibSpec& layout, unsigned seed = 1) {
  Bytes bytes = dibHeader(layout);
  for (unsigned i = 0; i < layout.colors(); ++i) {
    for (unsigned c = 0; c < 3; ++c) bytes.push_back(tableChannel(i, c));
    if (layout.headerBytes != 12) bytes.push_back(0x77);
  }
  std::mt19937 random(seed);
  for (size_t i = 0; i < layout.rowBytes() * layout.rows(); ++i) bytes.push_back(static_cast<uint8_t>(random()));
  return bytes;
}

inline HGLOBAL globalCopy(const Bytes& bytes) {
  HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
  memcpy(GlobalLock(memory), bytes.data(), bytes.size());
  GlobalUnlock(memory);
  return memory;
}

}  // namespace zavotest
