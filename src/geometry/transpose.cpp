// Blocks of pixels are gathered from source rows, transposed in a buffer in the first cache, and written out as whole
// cache lines of destination rows.
#include "geometry/transpose.h"

#include <algorithm>
#include <cstring>
#include <emmintrin.h>

#include "core/packed_pixels.h"
#include "core/sizes.h"

namespace zavo {
namespace {

constexpr unsigned blockSide = 64;  // pixels of a block of whole-byte pixels; 64 of them are whole cache lines

// --- Pixels of whole bytes

// Bytes from one column of the buffer to the next, with room for the byte too many of scatterRow<3>.
template <unsigned pixelBytes>
constexpr size_t columnStep = blockSide* pixelBytes + (pixelBytes == 3 ? 1 : 0);

// One source row of a block goes down one row of the buffer's columns.
template <unsigned pixelBytes>
void scatterRow(uint8_t* column, const uint8_t* row, unsigned count) {
  for (; count != 0; --count, row += pixelBytes, column += columnStep<pixelBytes>) memcpy(column, row, pixelBytes);
}

// Four bytes move at once: the one too many is overwritten by the next source row or lies behind the column. The last
// pixel is moved alone, because nothing may be read behind it.
template <>
void scatterRow<3>(uint8_t* column, const uint8_t* row, unsigned count) {
  for (; count > 1; --count, row += 3, column += columnStep<3>) memcpy(column, row, 4);
  memcpy(column, row, 3);
}

template <unsigned pixelBytes>
void transposeWhole(uint8_t* destination, ptrdiff_t destinationStride, const uint8_t* source, ptrdiff_t sourceStride,
                    unsigned width, unsigned height) {
  uint8_t block[blockSide * columnStep<pixelBytes>];
  for (unsigned y = 0; y < height; y += blockSide) {
    const unsigned rows = std::min(blockSide, height - y);
    for (unsigned x = 0; x < width; x += blockSide) {
      const unsigned columns = std::min(blockSide, width - x);
      const uint8_t* from = source + static_cast<ptrdiff_t>(y) * sourceStride + size_t{x} * pixelBytes;
      for (unsigned k = 0; k < rows; ++k, from += sourceStride) {
        scatterRow<pixelBytes>(block + k * pixelBytes, from, columns);
      }
      uint8_t* to = destination + static_cast<ptrdiff_t>(x) * destinationStride + size_t{y} * pixelBytes;
      for (unsigned k = 0; k < columns; ++k, to += destinationStride) {
        memcpy(to, block + k * columnStep<pixelBytes>, rows * pixelBytes);
      }
    }
  }
}

// --- Packed pixels of 2 to 7 bits: a block side is a whole number of bytes at every depth

template <int bits>
void transposePacked(uint8_t* destination, ptrdiff_t destinationStride, const uint8_t* source, ptrdiff_t sourceStride,
                     unsigned width, unsigned height) {
  const UnpackFunction unpack = unpackFunction(bits);
  const PackFunction pack = packFunction(bits);
  constexpr unsigned blockBytes = blockSide * bits / 8;
  uint8_t block[blockSide * blockSide];
  uint8_t indexes[blockSide];
  for (unsigned y = 0; y < height; y += blockSide) {
    const unsigned rows = std::min(blockSide, height - y);
    for (unsigned x = 0; x < width; x += blockSide) {
      const unsigned columns = std::min(blockSide, width - x);
      const uint8_t* from = source + static_cast<ptrdiff_t>(y) * sourceStride + x / blockSide * blockBytes;
      for (unsigned k = 0; k < rows; ++k, from += sourceStride) {
        unpack(indexes, from, 0, columns);
        scatterRow<1>(block + k, indexes, columns);
      }
      uint8_t* to = destination + static_cast<ptrdiff_t>(x) * destinationStride + y / blockSide * blockBytes;
      for (unsigned k = 0; k < columns; ++k, to += destinationStride) pack(to, block + k * blockSide, 0, rows);
    }
  }
}

// --- Single bits

constexpr unsigned tileColumns = 128;  // source pixels of a tile: 16 bytes of 16 rows
constexpr unsigned tileRows = 16;
constexpr unsigned bandRows = 512;  // source rows that fill a cache line of a destination row

__m128i loadBytes(const uint8_t* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

// 16 x 16 bytes: lane k of rows[j] becomes lane j of rows[k].
void transposeBytes(__m128i rows[16]) {
  __m128i a[16], b[16];
  for (int i = 0; i < 8; ++i) {
    a[2 * i] = _mm_unpacklo_epi8(rows[i], rows[i + 8]);
    a[2 * i + 1] = _mm_unpackhi_epi8(rows[i], rows[i + 8]);
  }
  for (int i = 0; i < 8; ++i) {
    b[2 * i] = _mm_unpacklo_epi8(a[i], a[i + 8]);
    b[2 * i + 1] = _mm_unpackhi_epi8(a[i], a[i + 8]);
  }
  for (int i = 0; i < 8; ++i) {
    a[2 * i] = _mm_unpacklo_epi8(b[i], b[i + 8]);
    a[2 * i + 1] = _mm_unpackhi_epi8(b[i], b[i + 8]);
  }
  for (int i = 0; i < 8; ++i) {
    rows[2 * i] = _mm_unpacklo_epi8(a[i], a[i + 8]);
    rows[2 * i + 1] = _mm_unpackhi_epi8(a[i], a[i + 8]);
  }
}

// 16 rows of 128 pixels become 128 pieces of 16 pixels, `pieceStride` bytes apart. Lane j of a column vector gives bit
// j of the mask, and the first row belongs into the top bit of the first byte: so rows enter the lanes in the order
// 7 .. 0, 15 .. 8.
void transposeTile(uint8_t* pieces, size_t pieceStride, const uint8_t* source, ptrdiff_t stride) {
  __m128i lanes[16];
  for (int j = 0; j < 16; ++j) lanes[j] = loadBytes(source + (j ^ 7) * stride);
  transposeBytes(lanes);
  for (const __m128i& lane : lanes) {
    __m128i column = lane;
    for (int bit = 0; bit < 8; ++bit, pieces += pieceStride) {
      const auto mask = static_cast<uint16_t>(_mm_movemask_epi8(column));
      memcpy(pieces, &mask, 2);
      column = _mm_add_epi8(column, column);
    }
  }
}

void transposeBits(uint8_t* destination, ptrdiff_t destinationStride, const uint8_t* source, ptrdiff_t sourceStride,
                   unsigned width, unsigned height) {
  uint8_t block[tileColumns * bandRows / 8];
  uint8_t edge[tileRows * 16];
  for (unsigned y = 0; y < height; y += bandRows) {
    const unsigned rows = std::min(bandRows, height - y);
    for (unsigned x = 0; x < width; x += tileColumns) {
      const unsigned columns = std::min(tileColumns, width - x);
      const unsigned columnBytes = (columns + 7) / 8;
      for (unsigned k = 0; k < rows; k += tileRows) {
        const uint8_t* from = source + static_cast<ptrdiff_t>(y + k) * sourceStride + x / 8;
        uint8_t* pieces = block + k / 8;
        if (columnBytes == 16 && rows - k >= tileRows) {
          transposeTile(pieces, bandRows / 8, from, sourceStride);
          continue;
        }
        memset(edge, 0, sizeof edge);
        for (unsigned j = 0; j < std::min(tileRows, rows - k); ++j, from += sourceStride) {
          memcpy(edge + j * 16, from, columnBytes);
        }
        transposeTile(pieces, bandRows / 8, edge, 16);
      }
      uint8_t* to = destination + static_cast<ptrdiff_t>(x) * destinationStride + y / 8;
      for (unsigned k = 0; k < columns; ++k, to += destinationStride) {
        memcpy(to, block + k * (bandRows / 8), size_t{(rows + 7) / 8});
      }
    }
  }
}

}  // namespace

TransposeFunction transposeFunction(int bitsPerPixel) {
  switch (bitsPerPixel) {
    case 1:
      return transposeBits;
    case 2:
      return transposePacked<2>;
    case 3:
      return transposePacked<3>;
    case 4:
      return transposePacked<4>;
    case 5:
      return transposePacked<5>;
    case 6:
      return transposePacked<6>;
    case 7:
      return transposePacked<7>;
    case 8:
      return transposeWhole<1>;
    case 16:
      return transposeWhole<2>;
    case 24:
      return transposeWhole<3>;
    default:
      return transposeWhole<4>;
  }
}

}  // namespace zavo
