// Painting a bitmap, or its region, with one colour or with zeros.
#include <zavo.h>

#include <algorithm>
#include <cstring>

#include "color/color_row.h"
#include "core/memory.h"
#include "core/owners.h"
#include "core/progress.h"
#include "core/rows.h"
#include "core/status.h"
#include "region/region_queries.h"

namespace zavo {
namespace {

// Rows lie one after another and are filled whole, padding included. Rows already written are copied on, as many at a
// time as stay in the nearest cache.
void fillDirectRows(BitmapHandle& bitmap, const uint8_t* pixels) {
  constexpr size_t cachedBytes = 0x4000;
  const size_t rowBytes = bitmap.BytesPerLine;
  const size_t bytes = rowBytes * static_cast<unsigned>(bitmap.Height);
  const size_t block = std::max<size_t>(cachedBytes / rowBytes, 1) * rowBytes;
  memcpy(bitmap.Data, pixels, rowBytes);
  for (size_t filled = rowBytes; filled < bytes;) {
    const size_t copied = std::min({filled, block, bytes - filled});
    memcpy(bitmap.Data + filled, bitmap.Data, copied);
    filled += copied;
  }
}

int fillWholeRow(BitmapHandle& bitmap, const uint8_t* pixels, unsigned row) {
  return transferStatus(writeRow(bitmap, pixels, row, 0, bitmap.BytesPerLine), bitmap.BytesPerLine, KERR_WRITE);
}

int fillSegments(BitmapHandle& bitmap, const uint8_t* pixels, unsigned row, Segments segments) {
  if (segments.empty()) return KSUCCESS;
  return writeRowSegments(bitmap, pixels, row, 0, reinterpret_cast<const unsigned*>(segments.values), segments.count,
                          false);
}

// Writes the part of a row of pixels that lies in the region to every row.
int fillPixels(BitmapHandle& bitmap, const uint8_t* pixels) {
  const ClipSegments clip(bitmap);
  const RECT bounds = clipBounds(bitmap);
  const bool whole = bitmap.Region == nullptr;
  // On temporary files progress is reported row by row, elsewhere before and after the work.
  const bool onDisk = (bitmap.Flags & BMF_DISK) != 0;
  Progress progress(onDisk ? bounds.bottom - bounds.top : 1);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  if (whole && hasDirectRows(bitmap)) {
    fillDirectRows(bitmap, pixels);
    return progress.step();
  }
  // A region may reach below a bitmap whose height was cut after it was set.
  const int bottom = std::min<int>(bounds.bottom, bitmap.Height);
  for (int y = bounds.top; y < bottom; ++y) {
    const auto row = static_cast<unsigned>(y);
    const int status = whole ? fillWholeRow(bitmap, pixels, row) : fillSegments(bitmap, pixels, row, clip.row(y));
    if (status != KSUCCESS) return status;
    if (!onDisk) continue;
    if (const int stopped = progress.step(); stopped != KSUCCESS) return stopped;
  }
  return onDisk ? KSUCCESS : progress.step();
}

// Fills with a colour, or with zeros for a null one.
int fill(BitmapHandle* bitmap, const COLORREF* color) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  auto pixels = OsBlock<uint8_t>::allocateZeroed(bitmap->BytesPerLine);
  if (!pixels) return KERR_NO_MEMORY;
  if (color != nullptr) fillColorRow(pixels.get(), *bitmap, *color, static_cast<unsigned>(bitmap->Width));
  BitmapLock lock(*bitmap);
  return fillPixels(*bitmap, pixels.get());
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_FillBitmap(BitmapHandle* bitmap, COLORREF color) {
  return fill(bitmap, &color);
}

int ZAVO_CALL Zv_ClearBitmap(BitmapHandle* bitmap) {
  return fill(bitmap, nullptr);
}
