// Drawing a region's outline. The outline is kept as a monochrome bitmap in display coordinates; where its bits are set
// the stripes of a brush are drawn.
#include <zavo.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "core/memory.h"
#include "core/module.h"
#include "core/owners.h"
#include "region/display_transform.h"
#include "region/region_builder.h"
#include "region/region_handle.h"

namespace zavo {
namespace {

// Destination where the source is 0, pattern where it is 1.
constexpr DWORD drawPatternWhereSet = 0x00E20746;

// The region in display coordinates, counted from the top left of `bounds`, its bounds there.
int buildDisplayRuns(OwnedRegion& runs, const BitmapRegion& region, const DisplayTransform& transform,
                     const RECT& bounds) {
  OwnedRegion turned;
  const BitmapRegion* const source = transform.inFrame(turned, region);
  if (source == nullptr) return KERR_NO_MEMORY;
  RegionBuilder builder;
  const RECT area = {0, 0, bounds.right - bounds.left, bounds.bottom - bounds.top};
  if (const int status = builder.start(area); status != KSUCCESS) return status;

  const auto displayX = [&](int edge) { return static_cast<int>(transform.displayX(edge) - bounds.left); };
  const auto displayY = [&](int edge) { return static_cast<int>(transform.displayY(edge) - bounds.top); };
  for (int y = source->bounds.top; y < source->bounds.bottom; ++y) {
    const int top = displayY(y);
    const int bottom = displayY(y + 1);
    if (top >= bottom) continue;
    const Segments row = regionRow(*source, y);
    for (unsigned i = 0; i < row.count; i += 2) builder.addRun(displayX(row.values[i]), displayX(row.values[i + 1]));
    if (const int status = builder.endRow(top); status != KSUCCESS) return status;
    for (int repeated = top + 1; repeated < bottom; ++repeated) {
      if (const int status = builder.repeatRow(repeated); status != KSUCCESS) return status;
    }
  }
  return builder.finish(runs);
}

// Sets the bits of a run in a row of 1-bit pixels, the most significant bit first.
void setBits(uint8_t* row, int start, int end) {
  for (int x = start; x < end; ++x) row[x / 8] |= static_cast<uint8_t>(0x80 >> x % 8);
}

// Sets the parts of a run that a neighbouring row does not cover, each a pixel wider on both sides within the run.
// `covering` has been moved past runs that end before the start.
void setUncovered(uint8_t* row, int start, int end, const int* covering, const int* coveringEnd) {
  int open = start;
  for (; open < end; covering += 2) {
    const bool none = covering == coveringEnd || covering[0] >= end;
    const int close = none ? end : covering[0];
    if (open < close) setBits(row, std::max(open - 1, start), std::min(close + 1, end));
    if (none) return;
    open = covering[1];
  }
}

void setUncovered(uint8_t* row, Segments runs, Segments neighbour) {
  const int* covering = neighbour.begin();
  for (unsigned i = 0; i < runs.count; i += 2) {
    while (covering != neighbour.end() && covering[1] <= runs.values[i]) covering += 2;
    setUncovered(row, runs.values[i], runs.values[i + 1], covering, neighbour.end());
  }
}

BitmapObject buildOutline(const BitmapRegion& region, const DisplayTransform& transform, const RECT& bounds) {
  const int64_t width = int64_t{bounds.right} - bounds.left;
  const int64_t height = int64_t{bounds.bottom} - bounds.top;
  const int64_t rowBytes = (width + 15) / 16 * 2;
  const auto bits = OsBlock<uint8_t>::allocateZeroed(static_cast<uint64_t>(rowBytes * height));
  OwnedRegion runs;
  if (!bits || buildDisplayRuns(runs, region, transform, bounds) != KSUCCESS) return {};

  for (int y = 0; y < height; ++y) {
    uint8_t* const row = bits.get() + y * rowBytes;
    const Segments segments = regionRow(*runs.get(), y);
    // Upright edges too, which have covered pixels above and below.
    for (unsigned i = 0; i < segments.count; i += 2) {
      setBits(row, segments.values[i], segments.values[i] + 1);
      setBits(row, segments.values[i + 1] - 1, segments.values[i + 1]);
    }
    setUncovered(row, segments, regionRow(*runs.get(), y - 1));
    setUncovered(row, segments, regionRow(*runs.get(), y + 1));
  }
  return BitmapObject(CreateBitmap(static_cast<int>(width), static_cast<int>(height), 1, 1, bits.get()));
}

// The cached outline, made anew when it does not fit.
HBITMAP outlineFor(BitmapHandle& bitmap, const DisplayTransform& transform, const RECT& bounds) {
  refreshCaches(bitmap);
  BitmapRegion& region = *bitmap.Region;
  if (region.outline == nullptr || !isSameScale(region.outlineKey, transform.record())) {
    BitmapObject outline = buildOutline(region, transform, bounds);
    if (!outline) return nullptr;
    if (region.outline != nullptr) DeleteObject(region.outline);
    region.outline = outline.release();
  }
  region.outlineKey = transform.record();
  return region.outline;
}

// Bits of 0 become black and bits of 1 white, in monochrome bitmaps and brushes drawn to a device context.
class MonochromeColors {
 public:
  explicit MonochromeColors(HDC dc)
      : dc_(dc), text_(SetTextColor(dc, RGB(0, 0, 0))), background_(SetBkColor(dc, RGB(255, 255, 255))) {}
  MonochromeColors(const MonochromeColors&) = delete;
  MonochromeColors& operator=(const MonochromeColors&) = delete;
  ~MonochromeColors() {
    SetTextColor(dc_, text_);
    SetBkColor(dc_, background_);
  }

 private:
  HDC dc_;
  COLORREF text_;
  COLORREF background_;
};

int drawOutline(HDC dc, BitmapHandle& bitmap, const DisplayTransform& transform, HBRUSH brush) {
  const RECT bounds = transform.displayRect(bitmap.Region->bounds);
  if (isEmptyRect(bounds)) return KSUCCESS;
  if (!isDrawable(bounds)) return KERR_NO_MEMORY;
  const MemoryDC source(CreateCompatibleDC(dc));
  if (!source || brush == nullptr) return KERR_NO_MEMORY;
  HBITMAP outline = outlineFor(bitmap, transform, bounds);
  if (outline == nullptr) return KERR_NO_MEMORY;

  const Selection bits(source.get(), outline);
  const Selection stripes(dc, brush);
  if (!bits || !stripes) return KERR_NO_MEMORY;
  const MonochromeColors colors(dc);
  const BOOL drawn = BitBlt(dc, bounds.left, bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top,
                            source.get(), 0, 0, drawPatternWhereSet);
  return drawn ? KSUCCESS : KERR_NO_MEMORY;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_FrameBitmapRgn(HDC dc, BitmapHandle* bitmap, const RegionXForm* xform, unsigned frameType) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  if (frameType >= frameBrushCount || dc == nullptr) return KERR_BAD_PARAMETER;
  if (bitmap->Region == nullptr) return KSUCCESS;
  DisplayTransform transform;
  if (const int status = transform.open(*bitmap, xform); status != KSUCCESS) return status;
  return drawOutline(dc, *bitmap, transform, frameBrush(frameType));
}
