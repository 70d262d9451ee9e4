// Counting the colours of a bitmap.
#include "color/color_histogram.h"

#include <cstring>

#include "color/conversion.h"
#include "color/palettes.h"
#include "core/owners.h"
#include "core/rows.h"

namespace zavo {
namespace {

constexpr uint32_t largestCount = 32768;

}  // namespace

int ColorHistogram::open() {
  counts_ = OsBlock<uint32_t>::allocateZeroed(matchTableEntries);
  keys_ = OsBlock<uint16_t>::allocate(matchTableEntries);
  return counts_ && keys_ ? KSUCCESS : KERR_NO_MEMORY;
}

int ColorHistogram::add(BitmapHandle& bitmap) {
  RGBQUAD palette[256];
  if (bitmap.BitsPerPixel <= 8) readPaletteOrFixed(bitmap, palette);
  RowConverter toColors;
  const int prepared =
      toColors.prepare(bitmap.BitsPerPixel, 32, colorOrderOf(bitmap), ORDER_BLUE_FIRST, palette, nullptr);
  // A depth without colours has nothing to count.
  if (prepared != KSUCCESS) return KSUCCESS;

  const auto width = static_cast<unsigned>(bitmap.Width);
  const auto colors = OsBlock<uint8_t>::allocate(uint64_t{width} * 4);
  if (!colors) return KERR_NO_MEMORY;
  const BitmapLock lock(bitmap);
  RowReader reader(bitmap);
  if (const int status = reader.open(); status != KSUCCESS) return status;
  for (unsigned row = 0; row < static_cast<unsigned>(bitmap.Height); ++row) {
    const uint8_t* pixels = reader.row(row);
    if (pixels == nullptr) return reader.status();
    toColors.convert(colors.get(), pixels, width);
    addRow(colors.get(), width);
  }
  return KSUCCESS;
}

void ColorHistogram::addRow(const uint8_t* colors, unsigned width) {
  for (unsigned x = 0; x < width; ++x, colors += 4) {
    const unsigned key = colorKey(colors[2], colors[1], colors[0]);
    if (counts_[key] == 0) keys_[keyCount_++] = static_cast<uint16_t>(key);
    if (counts_[key] >= largestCount) halve();
    ++counts_[key];
  }
}

void ColorHistogram::halve() {
  for (unsigned key = 0; key < matchTableEntries; ++key) counts_[key] = (counts_[key] + 1) >> 1;
}

}  // namespace zavo
