// Conversion of pixel rows between all depths. Grey takes part as an 8-bit index whose palette is the grey ramp. Rows
// of indexes go through a chunk of single bytes on the stack; a row that becomes longer is walked from its end, so
// that in place nothing is overwritten before it was read.
#include "color/conversion.h"

#include <algorithm>
#include <cstring>

#include "color/color_pixels.h"
#include "core/module.h"
#include "core/settings.h"
#include "core/sizes.h"

namespace zavo {
namespace {

// A multiple of 8, so that a chunk of any depth begins at a byte.
constexpr unsigned chunkPixels = 512;

// What a row size too large for 32 bits is reported as; no block of it can be had.
constexpr unsigned maxRowBytes = 0xFFFFFFFCu;

constexpr bool isIndexDepth(int depth) {
  return depth >= 1 && depth <= 8;
}

constexpr bool isColorDepth(int depth) {
  return depth == 16 || depth == 24 || depth == 32;
}

constexpr bool isDepth(int depth) {
  return depth == 0 || isIndexDepth(depth) || isColorDepth(depth);
}

constexpr bool isOrder(int order) {
  return order == ORDER_RED_FIRST || order == ORDER_BLUE_FIRST;
}

constexpr PixelSize pixelSize(int depth) {
  if (depth == 16) return PixelSize::bits16;
  if (depth == 24) return PixelSize::bits24;
  return depth == 32 ? PixelSize::bits32 : PixelSize::gray8;
}

// The fastest function on this processor; null where rows stay as they are.
PixelRowFunction pixelRowFunction(PixelSize source, PixelSize destination, bool swap) {
  const PixelRowFunction fast = cpuHasSsse3() ? ssse3PixelRows.find(source, destination, swap) : nullptr;
  return fast != nullptr ? fast : plainPixelRows.find(source, destination, swap);
}

// The palette of one side: the given one, else the fixed one; null for grey, which is how the map builder knows it.
const RGBQUAD* paletteOf(int depth, const RGBQUAD* given) {
  if (depth == 0) return nullptr;
  return given != nullptr ? given : fixedPalette(depth);
}

// Calls work(first, count) for every chunk of a row.
template <typename Work>
void forEachChunk(unsigned width, bool fromTheEnd, Work work) {
  const unsigned chunks = width / chunkPixels + (width % chunkPixels != 0 ? 1 : 0);
  for (unsigned k = 0; k < chunks; ++k) {
    const unsigned first = (fromTheEnd ? chunks - 1 - k : k) * chunkPixels;
    work(first, std::min(chunkPixels, width - first));
  }
}

void replace(uint8_t* indexes, const uint8_t* map, unsigned count) {
  for (unsigned i = 0; i < count; ++i) indexes[i] = map[indexes[i]];
}

template <typename Pixel>
void storeColors(uint8_t* destination, const uint8_t* indexes, const uint8_t (*colorTable)[4], unsigned count) {
  // A store of 4 bytes costs less than one of 3; what it writes too much is overwritten by the next pixel.
  constexpr size_t storeBytes = Pixel::bytes == 3 ? 4 : Pixel::bytes;
  for (unsigned i = 0; i + 1 < count; ++i, destination += Pixel::bytes) {
    memcpy(destination, colorTable[indexes[i]], storeBytes);
  }
  memcpy(destination, colorTable[indexes[count - 1]], Pixel::bytes);
}

}  // namespace

void RowConverter::copyRow(uint8_t* destination, const uint8_t* source, unsigned width) {
  if (destination != source) memcpy(destination, source, static_cast<size_t>(packedBytesFor(width, sourceBits_)));
}

void RowConverter::convertColors(uint8_t* destination, const uint8_t* source, unsigned width) {
  pixelRow_(destination, source, width);
}

void RowConverter::mapIndexes(uint8_t* destination, const uint8_t* source, unsigned width) {
  forEachChunk(width, destinationBits_ > sourceBits_, [=, this](unsigned first, unsigned count) {
    uint8_t indexes[chunkPixels];
    unpack_(indexes, source, first, count);
    if (!identity_) replace(indexes, map_, count);
    pack_(destination, indexes, first, count);
  });
}

template <typename Pixel>
void RowConverter::lookUpColors(uint8_t* destination, const uint8_t* source, unsigned width) {
  forEachChunk(width, true, [=, this](unsigned first, unsigned count) {
    uint8_t indexes[chunkPixels];
    unpack_(indexes, source, first, count);
    storeColors<Pixel>(destination + size_t{first} * Pixel::bytes, indexes, colorTable_, count);
  });
}

template <typename Pixel, bool swap, bool byTable>
void RowConverter::matchColors(uint8_t* destination, const uint8_t* source, unsigned width) {
  forEachChunk(width, false, [=, this](unsigned first, unsigned count) {
    uint8_t indexes[chunkPixels];
    const uint8_t* pixel = source + size_t{first} * Pixel::bytes;
    for (unsigned i = 0; i < count; ++i, pixel += Pixel::bytes) {
      const PixelColor color = swap ? swapEnds(Pixel::load(pixel)) : Pixel::load(pixel);
      indexes[i] = byTable ? matcher_.lookUp(color.third, color.second, color.first)
                           : matcher_.search(color.third, color.second, color.first);
    }
    pack_(destination, indexes, first, count);
  });
}

void RowConverter::planMap(const RGBQUAD* sourcePalette, const RGBQUAD* destinationPalette) {
  unpack_ = unpackFunction(static_cast<int>(sourceBits_));
  pack_ = packFunction(static_cast<int>(destinationBits_));
  identity_ = buildPaletteMap(map_, sourcePalette, 1u << sourceBits_, destinationPalette, 1u << destinationBits_);
  run_ = identity_ && sourceBits_ == destinationBits_ ? &RowConverter::copyRow : &RowConverter::mapIndexes;
}

template <typename Pixel>
void RowConverter::planLookUp(const RGBQUAD* palette, bool swap) {
  unpack_ = unpackFunction(static_cast<int>(sourceBits_));
  for (unsigned i = 0; i < 1u << sourceBits_; ++i) {
    const PixelColor color = {palette[i].rgbBlue, palette[i].rgbGreen, palette[i].rgbRed, 0};
    Pixel::store(colorTable_[i], swap ? swapEnds(color) : color);
  }
  run_ = &RowConverter::lookUpColors<Pixel>;
}

template <typename Pixel>
void RowConverter::planMatch(const RGBQUAD* palette, bool swap) {
  pack_ = packFunction(static_cast<int>(destinationBits_));
  matcher_.prepare(palette, 1u << destinationBits_, currentSettings().userMatchTable);
  static constexpr RunFunction functions[2][2] = {
      {&RowConverter::matchColors<Pixel, false, false>, &RowConverter::matchColors<Pixel, false, true>},
      {&RowConverter::matchColors<Pixel, true, false>, &RowConverter::matchColors<Pixel, true, true>}};
  run_ = functions[swap ? 1 : 0][matcher_.hasTable() ? 1 : 0];
}

int RowConverter::prepare(int sourceDepth, int destinationDepth, int sourceOrder, int destinationOrder,
                          const RGBQUAD* sourcePalette, const RGBQUAD* destinationPalette) {
  if (!isDepth(sourceDepth) || !isDepth(destinationDepth)) return KERR_BAD_PARAMETER;
  if (isColorDepth(sourceDepth) && !isOrder(sourceOrder)) return KERR_BAD_PARAMETER;
  if (isColorDepth(destinationDepth) && !isOrder(destinationOrder)) return KERR_BAD_PARAMETER;

  sourceBits_ = sourceDepth == 0 ? 8 : static_cast<unsigned>(sourceDepth);
  destinationBits_ = destinationDepth == 0 ? 8 : static_cast<unsigned>(destinationDepth);
  // Grey and palettes count as blue first.
  const bool redFirst = isColorDepth(sourceDepth) && sourceOrder == ORDER_RED_FIRST;
  const bool toRedFirst = isColorDepth(destinationDepth) && destinationOrder == ORDER_RED_FIRST;
  const bool swap = redFirst != toRedFirst;

  if (!isIndexDepth(sourceDepth) && !isIndexDepth(destinationDepth)) {
    pixelRow_ = pixelRowFunction(pixelSize(sourceDepth), pixelSize(destinationDepth), swap);
    run_ = pixelRow_ != nullptr ? &RowConverter::convertColors : &RowConverter::copyRow;
    return KSUCCESS;
  }
  sourcePalette = paletteOf(sourceDepth, sourcePalette);
  destinationPalette = paletteOf(destinationDepth, destinationPalette);
  if (isColorDepth(destinationDepth)) {
    if (destinationDepth == 16) planLookUp<Pixel16>(sourcePalette, swap);
    if (destinationDepth == 24) planLookUp<Pixel24>(sourcePalette, swap);
    if (destinationDepth == 32) planLookUp<Pixel32>(sourcePalette, swap);
  } else if (isColorDepth(sourceDepth)) {
    if (sourceDepth == 16) planMatch<Pixel16>(destinationPalette, swap);
    if (sourceDepth == 24) planMatch<Pixel24>(destinationPalette, swap);
    if (sourceDepth == 32) planMatch<Pixel32>(destinationPalette, swap);
  } else {
    planMap(sourcePalette, destinationPalette);
  }
  return KSUCCESS;
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_ConvertBuffer(unsigned char* buffer, int width, int sourceDepth, int destinationDepth, int sourceOrder,
                               int destinationOrder, const RGBQUAD* sourcePalette, const RGBQUAD* destinationPalette) {
  if (buffer == nullptr || width <= 0) return KERR_BAD_PARAMETER;
  RowConverter converter;
  if (const int status = converter.prepare(sourceDepth, destinationDepth, sourceOrder, destinationOrder, sourcePalette,
                                           destinationPalette);
      status != KSUCCESS) {
    return status;
  }
  converter.convert(buffer, static_cast<unsigned>(width));
  return KSUCCESS;
}

unsigned ZAVO_CALL Zv_CalcConvertSize(unsigned widthA, unsigned bitsA, unsigned widthB, unsigned bitsB) {
  bitsA = bitsA == 0 ? 8 : bitsA;
  bitsB = bitsB == 0 ? 8 : bitsB;
  const uint64_t bytes = std::max({rowBytesFor(widthB, bitsA), rowBytesFor(widthB, bitsB), rowBytesFor(widthA, bitsA)});
  return static_cast<unsigned>(std::min<uint64_t>(bytes, maxRowBytes));
}
