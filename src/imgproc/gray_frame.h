// The frame that the conversions to grey and to halftones share: checks, the new image beside the old one, rows with
// progress, and taking the old image's place.
#pragma once

#include <zavo.h>

#include "color/conversion.h"
#include "color/palettes.h"
#include "core/owners.h"
#include "core/progress.h"
#include "core/row_padding.h"
#include "core/row_pass.h"
#include "core/status.h"

namespace zavo {

// Reads rows of a bitmap of any depth as levels of brightness, 0 to 255.
class BrightnessReader {
 public:
  // KSUCCESS; KERR_BAD_BITMAP for a palette image whose palette is missing or short.
  [[nodiscard]] int prepare(const BitmapHandle& bitmap) {
    if (bitmap.BitsPerPixel < 16) {
      const unsigned count = bitmap.ColorCount;
      if (bitmap.Palette == nullptr || count > 256) return KERR_BAD_BITMAP;
      if (readEntries(palette_, bitmap.Palette, 0, count) != count) return KERR_BAD_BITMAP;
    }
    return converter_.prepare(bitmap.BitsPerPixel, 0, colorOrderOf(bitmap), ORDER_RED_FIRST, palette_, nullptr);
  }
  void read(uint8_t* levels, const uint8_t* row, unsigned width) { converter_.convert(levels, row, width); }
  // Rows are levels as they are.
  [[nodiscard]] bool rowsAreLevels() const { return converter_.changesNothing(); }

 private:
  RGBQUAD palette_[256] = {};
  RowConverter converter_;
};

// Makes the new image: size, perspective, resolution and playback parameters of the old one, and a palette.
[[nodiscard]] int makeGrayTarget(OwnedBitmap& target, BitmapHandle& bitmap, int bitsPerPixel, HPALETTE palette);

// The bitmap's region moves to the target, which takes the bitmap's place.
void takeOver(BitmapHandle& bitmap, OwnedBitmap& target);

// Writes every row of the target by work(targetRow, bitmapRow, y), which leaves the row's padding alone.
template <typename Work>
[[nodiscard]] int convertRows(BitmapHandle& target, BitmapHandle& bitmap, Work work) {
  RowPass pass(target, bitmap);
  if (const int status = pass.open(); status != KSUCCESS) return status;
  const auto width = static_cast<unsigned>(target.Width);
  const auto targetBits = static_cast<unsigned>(target.BitsPerPixel);
  Progress progress(bitmap.Height);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  for (unsigned y = 0; y < static_cast<unsigned>(bitmap.Height); ++y) {
    const uint8_t* row = pass.reader.row(y);
    if (row == nullptr) return pass.reader.status();
    uint8_t* targetRow = pass.writer.row(y);
    work(targetRow, row, y);
    clearRowPadding(targetRow, width, targetBits);
    if (const int status = pass.writer.commit(y); status != KSUCCESS) return status;
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace zavo
