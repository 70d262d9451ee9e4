// Printing in one call of the printer's driver.
#include <climits>

#include "color/dib_layout.h"
#include "core/owners.h"
#include "core/perspective.h"
#include "core/progress.h"
#include "core/rows.h"
#include "core/status.h"
#include "display/print.h"

namespace zavo {
namespace {

// The driver reads the stored rows as they are: in memory, at a depth and order that it knows, not turned.
bool isDriverReady(const BitmapHandle& bitmap) {
  const bool known = bitmap.BitsPerPixel == 1 || bitmap.BitsPerPixel == 4 || bitmap.BitsPerPixel == 8 ||
                     (bitmap.BitsPerPixel == 24 && bitmap.ColorOrder == ORDER_BLUE_FIRST);
  return known && (bitmap.Flags & (BMF_DISK | BMF_RUNLENGTH)) == 0 && !isRotated(bitmap.ViewPerspective);
}

// A bitmap stored with the top row first, turned bottom-up for the driver while this lives.
class BottomUpRows {
 public:
  explicit BottomUpRows(BitmapHandle& bitmap) : bitmap_(bitmap) {
    if (isUpright(bitmap.ViewPerspective)) status_ = flip();
  }
  BottomUpRows(const BottomUpRows&) = delete;
  BottomUpRows& operator=(const BottomUpRows&) = delete;
  ~BottomUpRows() {
    if (isUpright(bitmap_.ViewPerspective) && status_ == KSUCCESS) (void)flip();
  }
  [[nodiscard]] int status() const { return status_; }

 private:
  // A callback that stopped the way back would leave the caller with another picture.
  int flip() {
    const SilentProgress silent;
    return Zv_FlipBitmap(&bitmap_);
  }

  BitmapHandle& bitmap_;
  int status_ = KSUCCESS;
};

void handToDriver(HDC printer, BitmapHandle& bitmap, const PrintPlace& place) {
  // A size without a magnitude; the graphics interface divides by it.
  if (place.width == INT_MIN || place.height == INT_MIN) return;
  StoredRowsInfo info;
  describeStoredRows(info, bitmap, bitmap.Height);
  const PaletteObject palette(bitmap.BitsPerPixel <= 8 ? Zv_CreatePaintPalette(printer, &bitmap) : nullptr);
  const PaletteSelection colors(printer, palette.get());
  const BitmapLock lock(bitmap);
  if (!hasDirectRows(bitmap)) return;
  StretchDIBits(printer, place.x, place.y, place.width, place.height, 0, 0, bitmap.Width, bitmap.Height,
                directRow(bitmap, 0), info.get(), DIB_RGB_COLORS, SRCCOPY);
}

}  // namespace
}  // namespace zavo

using namespace zavo;

HDC ZAVO_CALL Zv_PrintBitmapFast(HDC dc, BitmapHandle* bitmap, int x, int y, int width, int height, int endJob) {
  PrintJob job(dc, JobOwner::caller);
  const PrintPlace place = {x, y, width, height};
  if (!isAllocated(bitmap) || !isDriverReady(*bitmap)) return printBitmap(job, bitmap, place, endJob != 0);
  const BottomUpRows bottomUp(*bitmap);
  if (bottomUp.status() != KSUCCESS) return printBitmap(job, bitmap, place, endJob != 0);
  if (!job.open()) return nullptr;
  handToDriver(job.dc(), *bitmap, place);
  return job.finish(endJob != 0);
}
