// Rows of pixels from any format to any other: planned once, run for every row.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "color/color_matcher.h"
#include "color/pixel_rows.h"
#include "core/packed_pixels.h"

namespace zavo {

// Which of the two orders a bitmap's pixels are in: what is not blue first is red first.
[[nodiscard]] inline int colorOrderOf(const BitmapHandle& bitmap) {
  return bitmap.ColorOrder == ORDER_BLUE_FIRST ? ORDER_BLUE_FIRST : ORDER_RED_FIRST;
}

// A few KB, meant for the stack. The palettes and the thread's match table must outlive it.
class RowConverter {
 public:
  // Depths: 0 for 8-bit grey without a palette, 1 to 8, 16, 24, 32. Orders are looked at on sides of 16 bits and up.
  // Palettes have 1 << depth entries; null stands for the fixed palette of the depth. KSUCCESS or KERR_BAD_PARAMETER.
  [[nodiscard]] int prepare(int sourceDepth, int destinationDepth, int sourceOrder, int destinationOrder,
                            const RGBQUAD* sourcePalette, const RGBQUAD* destinationPalette);

  // Converts a row in place; it needs room for the longer of the two formats. `width` may be 0.
  void convert(uint8_t* row, unsigned width) { convert(row, row, width); }

  // Converts a row into another. Bits after the last pixel in its byte are undefined.
  void convert(uint8_t* destination, const uint8_t* source, unsigned width) {
    (this->*run_)(destination, source, width);
  }

  // Source and destination rows are the same bytes.
  [[nodiscard]] bool changesNothing() const { return run_ == &RowConverter::copyRow; }

 private:
  using RunFunction = void (RowConverter::*)(uint8_t* destination, const uint8_t* source, unsigned width);

  void copyRow(uint8_t* destination, const uint8_t* source, unsigned width);
  void convertColors(uint8_t* destination, const uint8_t* source, unsigned width);
  void mapIndexes(uint8_t* destination, const uint8_t* source, unsigned width);
  template <typename Pixel>
  void lookUpColors(uint8_t* destination, const uint8_t* source, unsigned width);
  template <typename Pixel, bool swap, bool byTable>
  void matchColors(uint8_t* destination, const uint8_t* source, unsigned width);

  void planMap(const RGBQUAD* sourcePalette, const RGBQUAD* destinationPalette);
  template <typename Pixel>
  void planLookUp(const RGBQUAD* palette, bool swap);
  template <typename Pixel>
  void planMatch(const RGBQUAD* palette, bool swap);

  RunFunction run_ = &RowConverter::copyRow;
  unsigned sourceBits_ = 8;
  unsigned destinationBits_ = 8;
  PixelRowFunction pixelRow_ = nullptr;
  UnpackFunction unpack_ = nullptr;
  PackFunction pack_ = nullptr;
  bool identity_ = false;
  uint8_t map_[256];                       // destination index of a source index
  alignas(4) uint8_t colorTable_[256][4];  // bytes of the destination pixel of a source index
  ColorMatcher matcher_;
};

}  // namespace zavo
