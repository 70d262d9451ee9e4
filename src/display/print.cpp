// Printing row by row: placement on the page, progress, cancelling; and the job that the thread's record keeps.
#include "display/print.h"

#include <algorithm>
#include <utility>

#include "core/owners.h"
#include "core/perspective.h"
#include "core/progress.h"
#include "core/settings.h"
#include "core/status.h"
#include "display/paint.h"
#include "display/paint_mode.h"

namespace zavo {
namespace {

// The part of the page that pictures are placed in. It begins at 1, not at 0, as it always has: positions that
// applications have stored count on it.
RECT pageOf(HDC printer) {
  return {1, 1, GetDeviceCaps(printer, HORZRES), GetDeviceCaps(printer, VERTRES)};
}

// The chosen size; a side of 0 follows from the other, both 0 fit the picture into the page.
ImageSize printedSize(const RECT& page, ImageSize picture, const PrintPlace& place) {
  const auto [w, h] = picture;
  if (place.width != 0 && place.height != 0) return {place.width, place.height};
  if (place.height != 0) return {MulDiv(w, place.height, h), place.height};
  if (place.width != 0) return {place.width, MulDiv(h, place.width, w)};
  const ImageSize usable = {page.right - page.left, page.bottom - page.top};
  const int fitted = MulDiv(usable.height, w, h);
  if (fitted <= usable.width) return {fitted, usable.height};
  return {usable.width, MulDiv(usable.width, h, w)};
}

LONG clamped(int64_t position) {
  return static_cast<LONG>(std::clamp(position, int64_t{INT32_MIN}, int64_t{INT32_MAX}));
}

// Where a side of the picture begins: as given, or 0 for the middle of the page.
LONG beginOf(int given, LONG pageBegin, LONG pageEnd, int length) {
  return given != 0 ? given : clamped(pageBegin + (int64_t{pageEnd} - pageBegin - length) / 2);
}

RECT placedRect(const RECT& page, ImageSize picture, const PrintPlace& place) {
  const auto [width, height] = printedSize(page, picture, place);
  const LONG x = beginOf(place.x, page.left, page.right, width);
  const LONG y = beginOf(place.y, page.top, page.bottom, height);
  return {x, y, clamped(int64_t{x} + width), clamped(int64_t{y} + height)};
}

// The display mode for a printer: clustered dots where it prints black only, else the device's own rendering.
DisplayModeScope printDisplayMode(HDC printer) {
  constexpr unsigned dots = PAINT_ORDERED_DITHER | PAINT_CLUSTERED_DOT;
  const bool blackOnly = GetDeviceCaps(printer, NUMCOLORS) < 3 && deviceBitsPerPixel(printer) == 1;
  if (blackOnly) return {dots | PAINT_INDEX_COLORS, dots};
  return {PAINT_DITHER | PAINT_INDEX_COLORS, 0};
}

// One printer row at a time, so that each can be reported. KSUCCESS or the callback's result; what painting returns
// is not looked at, a page with a gap being better than none.
int paintByRows(HDC printer, BitmapHandle& bitmap, const RECT& destination, const RECT& strip) {
  Progress progress(strip.bottom - strip.top);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  for (LONG row = strip.top; row < strip.bottom; ++row) {
    const RECT clip = {strip.left, row, strip.right, row + 1};
    (void)paintBitmap(printer, bitmap, {nullptr, nullptr, &destination, &clip, nullptr}, SRCCOPY);
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

int printPicture(HDC printer, BitmapHandle& bitmap, const PrintPlace& place) {
  const PaletteObject palette(Zv_CreatePaintPalette(printer, &bitmap));
  const RECT page = pageOf(printer);
  const RECT destination = placedRect(page, sizeInFrame(bitmap, VIEW_UPRIGHT), place);
  const PaletteSelection colors(printer, palette.get());
  const DisplayModeScope mode = printDisplayMode(printer);
  if (currentSettings().statusCallback == nullptr) {
    (void)paintBitmap(printer, bitmap, {nullptr, nullptr, &destination, nullptr, nullptr}, SRCCOPY);
    return KSUCCESS;
  }
  RECT strip;
  if (!IntersectRect(&strip, &destination, &page)) strip = {};
  return paintByRows(printer, bitmap, destination, strip);
}

}  // namespace

HDC printBitmap(PrintJob job, BitmapHandle* bitmap, const PrintPlace& place, bool endJob) {
  if (!job.open()) return nullptr;
  if (isAllocated(bitmap) && printPicture(job.dc(), *bitmap, place) != KSUCCESS) {
    job.cancel(endJob);
    return nullptr;
  }
  return job.finish(endJob);
}

}  // namespace zavo

using namespace zavo;

HDC ZAVO_CALL Zv_PrintBitmapExt(HDC dc, BitmapHandle* bitmap, int x, int y, int width, int height, int endJob) {
  return printBitmap(PrintJob(dc, JobOwner::caller), bitmap, {x, y, width, height}, endJob != 0);
}

HDC ZAVO_CALL Zv_PrintBitmap(BitmapHandle* bitmap, int x, int y, int width, int height, int endJob) {
  ThreadSettings& settings = currentSettings();
  const PrintJob job(std::exchange(settings.printJobDC, nullptr), JobOwner::library);
  const HDC printed = printBitmap(job, bitmap, {x, y, width, height}, endJob != 0);
  if (endJob == 0) settings.printJobDC = printed;
  return printed;
}
