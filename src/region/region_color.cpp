// Finding the pixels of one colour. Each row becomes a bit a pixel, the first the lowest, and the runs lie between the
// places where neighbouring bits differ.
#include "region/region_color.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <utility>

#include "color/palettes.h"
#include "core/memory.h"
#include "core/owners.h"
#include "core/packed_pixels.h"
#include "core/rows.h"
#include "region/combine_shape.h"
#include "region/region_builder.h"

namespace zavo {
namespace {

constexpr unsigned wordBits = 32;

// Sets bit x of `matches` for every pixel x that equals `value`; bits beyond the width are left undefined.
using MatchFunction = void (*)(uint32_t* matches, const uint8_t* row, unsigned width, uint32_t value);

void matchBits(uint32_t* matches, const uint8_t* row, unsigned width, uint32_t value) {
  const uint32_t inverted = value != 0 ? 0 : ~0u;
  for (unsigned word = 0; word < (width + wordBits - 1) / wordBits; ++word) {
    uint32_t bits;
    memcpy(&bits, row + word * sizeof bits, sizeof bits);
    bits = (bits & 0x55555555u) << 1 | (bits >> 1 & 0x55555555u);
    bits = (bits & 0x33333333u) << 2 | (bits >> 2 & 0x33333333u);
    bits = (bits & 0x0F0F0F0Fu) << 4 | (bits >> 4 & 0x0F0F0F0Fu);
    matches[word] = bits ^ inverted;
  }
}

// For pixels found by `pixel(row, x)`.
template <typename Pixel>
void matchEach(uint32_t* matches, const uint8_t* row, unsigned width, uint32_t value, Pixel pixel) {
  for (unsigned first = 0; first < width; first += wordBits) {
    const unsigned count = std::min(width - first, wordBits);
    uint32_t bits = 0;
    for (unsigned k = 0; k < count; ++k) bits |= uint32_t{pixel(row, first + k) == value} << k;
    matches[first / wordBits] = bits;
  }
}

void matchBytes(uint32_t* matches, const uint8_t* row, unsigned width, uint32_t value) {
  const __m128i wanted = _mm_set1_epi8(static_cast<char>(value));
  const auto half = [&](const uint8_t* bytes) {
    const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(pixels, wanted)));
  };
  const unsigned whole = width / wordBits * wordBits;
  for (unsigned x = 0; x < whole; x += wordBits) matches[x / wordBits] = half(row + x) | half(row + x + 16) << 16;
  matchEach(matches + whole / wordBits, row + whole, width - whole, value,
            [](const uint8_t* bytes, unsigned x) { return uint32_t{bytes[x]}; });
}

// The alpha bit does not count.
void match16(uint32_t* matches, const uint8_t* row, unsigned width, uint32_t value) {
  matchEach(matches, row, width, value, [](const uint8_t* pixels, unsigned x) {
    uint16_t pixel;
    memcpy(&pixel, pixels + x * sizeof pixel, sizeof pixel);
    return pixel & 0x7FFFu;
  });
}

void match24(uint32_t* matches, const uint8_t* row, unsigned width, uint32_t value) {
  matchEach(matches, row, width, value, [](const uint8_t* pixels, unsigned x) {
    const uint8_t* const pixel = pixels + size_t{x} * 3;
    return uint32_t{pixel[0]} | uint32_t{pixel[1]} << 8 | uint32_t{pixel[2]} << 16;
  });
}

void match32(uint32_t* matches, const uint8_t* row, unsigned width, uint32_t value) {
  matchEach(matches, row, width, value, [](const uint8_t* pixels, unsigned x) {
    uint32_t pixel;
    memcpy(&pixel, pixels + x * sizeof pixel, sizeof pixel);
    return pixel & 0xFFFFFFu;
  });
}

// What a row is searched for, and how.
struct Search {
  MatchFunction match;
  UnpackFunction unpack;  // to a byte a pixel first, or null
  uint32_t value;
};

// The first palette entry of that colour, or the index the colour names. False when there is none.
bool findIndex(uint32_t& index, const BitmapHandle& bitmap, COLORREF color) {
  if (color >> 24 == 1) {
    index = color & ((1u << bitmap.BitsPerPixel) - 1);
    return true;
  }
  RGBQUAD palette[256];
  const unsigned count = std::min(readPaletteOrFixed(bitmap, palette), 1u << bitmap.BitsPerPixel);
  for (index = 0; index < count; ++index) {
    const RGBQUAD& entry = palette[index];
    if (RGB(entry.rgbRed, entry.rgbGreen, entry.rgbBlue) == (color & 0xFFFFFF)) return true;
  }
  return false;
}

// A 16-bit pixel has only colours whose channels are widened 5-bit values.
bool findPixel16(uint32_t& pixel, unsigned first, unsigned second, unsigned third) {
  pixel = (first >> 3) << 10 | (second >> 3) << 5 | third >> 3;
  return widen5(first >> 3) == first && widen5(second >> 3) == second && widen5(third >> 3) == third;
}

// False when no pixel can have the colour.
bool planSearch(Search& search, const BitmapHandle& bitmap, COLORREF color) {
  const unsigned red = GetRValue(color);
  const unsigned green = GetGValue(color);
  const unsigned blue = GetBValue(color);
  const bool blueFirst = bitmap.ColorOrder == ORDER_BLUE_FIRST;
  search = {};
  switch (bitmap.BitsPerPixel) {
    case 16:
      search.match = match16;
      return blueFirst ? findPixel16(search.value, red, green, blue) : findPixel16(search.value, blue, green, red);
    case 24:
    case 32:
      search.match = bitmap.BitsPerPixel == 24 ? match24 : match32;
      search.value = blueFirst ? red << 16 | green << 8 | blue : blue << 16 | green << 8 | red;
      return true;
    case 1:
      search.match = matchBits;
      break;
    case 8:
      search.match = matchBytes;
      break;
    default:
      search.match = matchBytes;
      search.unpack = unpackFunction(bitmap.BitsPerPixel);
      break;
  }
  return findIndex(search.value, bitmap, color);
}

void addRuns(RegionBuilder& builder, const uint32_t* matches, unsigned width) {
  uint32_t carried = 0;
  unsigned start = 0;
  bool open = false;
  for (unsigned first = 0; first < width; first += wordBits) {
    const uint32_t bits = matches[first / wordBits];
    uint32_t edges = bits ^ (bits << 1 | carried);
    carried = bits >> (wordBits - 1);
    for (; edges != 0; edges &= edges - 1) {
      const unsigned x = first + static_cast<unsigned>(std::countr_zero(edges));
      if (x >= width) break;
      if (open) builder.addRun(static_cast<int>(start), static_cast<int>(x));
      start = x;
      open = !open;
    }
  }
  if (open) builder.addRun(static_cast<int>(start), static_cast<int>(width));
}

}  // namespace

int makeColorRegion(OwnedRegion& region, BitmapHandle& bitmap, COLORREF color) {
  region.reset();
  Search search;
  if (!planSearch(search, bitmap, color)) return KSUCCESS;

  const auto width = static_cast<unsigned>(bitmap.Width);
  const auto matches = OsBlock<uint32_t>::allocate((width + wordBits - 1) / wordBits);
  OsBlock<uint8_t> indexes;
  if (search.unpack != nullptr) indexes = OsBlock<uint8_t>::allocate(width);
  if (!matches || (search.unpack != nullptr && !indexes)) return KERR_NO_MEMORY;

  const BitmapLock lock(bitmap);
  RowReader reader(bitmap);
  if (const int status = reader.open(); status != KSUCCESS) return status;
  RegionBuilder builder;
  if (const int status = builder.start(bitmapRect(bitmap)); status != KSUCCESS) return status;
  for (int y = 0; y < bitmap.Height; ++y) {
    const uint8_t* row = reader.row(static_cast<unsigned>(y));
    if (row == nullptr) return reader.status();
    if (search.unpack != nullptr) {
      search.unpack(indexes.get(), row, 0, width);
      row = indexes.get();
    }
    search.match(matches.get(), row, width, search.value);
    addRuns(builder, matches.get(), width);
    if (const int status = builder.endRow(y); status != KSUCCESS) return status;
  }
  OwnedRegion found;
  if (const int status = builder.finish(found); status != KSUCCESS) return status;
  if (!isEmptyRect(found.get()->bounds)) region = std::move(found);
  return KSUCCESS;
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_SetBitmapRgnColor(BitmapHandle* bitmap, COLORREF color, int combineMode) {
  if (bitmap == nullptr) return KERR_BAD_PARAMETER;
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  OwnedRegion shape;
  if (const int status = makeColorRegion(shape, *bitmap, color); status != KSUCCESS) return status;
  return combineShape(*bitmap, std::move(shape), combineMode);
}
