// Combining a rectangle of one picture with another: where it lies, and which pixels of it the regions allow.
#include <zavo.h>

#include <algorithm>

#include "core/owners.h"
#include "core/perspective.h"
#include "core/row_pass.h"
#include "core/status.h"
#include "imgproc/combine_operators.h"
#include "imgproc/combine_rows.h"
#include "region/region.h"
#include "region/run_operations.h"

namespace zavo {
namespace {

struct Placement {
  RECT area;          // in the destination
  int sourceOffsetX;  // source column minus destination column
  int sourceOffsetY;
};

// Clips the rectangle to both bitmaps. Sums are formed in 64 bits, so that absurd positions clip as others do.
Placement place(const BitmapHandle& destination, int left, int top, int width, int height, const BitmapHandle& source,
                int sourceLeft, int sourceTop) {
  const int64_t shiftX = int64_t{sourceLeft} - left;
  const int64_t shiftY = int64_t{sourceTop} - top;
  const int64_t x0 = std::max({int64_t{left}, int64_t{0}, -shiftX});
  const int64_t y0 = std::max({int64_t{top}, int64_t{0}, -shiftY});
  const int64_t x1 = std::min({int64_t{left} + width, int64_t{destination.Width}, source.Width - shiftX});
  const int64_t y1 = std::min({int64_t{top} + height, int64_t{destination.Height}, source.Height - shiftY});
  if (x0 >= x1 || y0 >= y1) return {};
  return {.area = {static_cast<LONG>(x0), static_cast<LONG>(y0), static_cast<LONG>(x1), static_cast<LONG>(y1)},
          .sourceOffsetX = static_cast<int>(shiftX),
          .sourceOffsetY = static_cast<int>(shiftY)};
}

// The pixels of the area that both regions allow, in destination coordinates.
int allowedRegion(OwnedRegion& allowed, const BitmapHandle& destination, const BitmapHandle& source,
                  const Placement& where) {
  if (const int status = makeRectRegion(allowed, where.area); status != KSUCCESS) return status;
  const auto limitTo = [&](const BitmapRegion& limit, int rowOffset, int columnOffset) {
    OwnedRegion moved, common;
    if (const int status = copyMoved(moved, limit, rowOffset, columnOffset, where.area); status != KSUCCESS) {
      return status;
    }
    const int status = combineRuns(common, allowed.get(), moved.get(), RunOperation::both, where.area);
    if (status == KSUCCESS) allowed = std::move(common);
    return status;
  };
  if (destination.Region != nullptr) {
    if (const int status = limitTo(*destination.Region, 0, 0); status != KSUCCESS) return status;
  }
  if (source.Region == nullptr) return KSUCCESS;
  return limitTo(*source.Region, -where.sourceOffsetY, -where.sourceOffsetX);
}

int combineRows(BitmapHandle& destination, BitmapHandle& source, const Placement& where,
                const CombineOperation& operation) {
  // Without regions every row of the rectangle is a single run.
  const int whole[] = {static_cast<int>(where.area.left), static_cast<int>(where.area.right)};
  OwnedRegion allowed;
  if (destination.Region != nullptr || source.Region != nullptr) {
    if (const int status = allowedRegion(allowed, destination, source, where); status != KSUCCESS) return status;
  }
  RowCombiner combiner;
  if (const int status = combiner.prepare(destination, source, operation); status != KSUCCESS) return status;

  RowPass pass(destination, source);
  if (const int status = pass.open(); status != KSUCCESS) return status;
  for (int y = where.area.top; y < where.area.bottom; ++y) {
    const Segments runs = allowed ? regionRow(*allowed.get(), y) : Segments{whole, 2};
    if (runs.empty()) continue;
    const uint8_t* from = pass.reader.row(static_cast<unsigned>(y + where.sourceOffsetY));
    if (from == nullptr) return pass.reader.status();
    uint8_t* to = pass.writer.edit(static_cast<unsigned>(y));
    if (to == nullptr) return pass.writer.status();
    for (unsigned i = 0; i < runs.count; i += 2) {
      const auto first = static_cast<unsigned>(runs.values[i]);
      const auto sourceFirst = static_cast<unsigned>(runs.values[i] + where.sourceOffsetX);
      combiner.run(to, first, from, sourceFirst, static_cast<unsigned>(runs.values[i + 1]) - first);
    }
    if (const int status = pass.writer.commit(static_cast<unsigned>(y)); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_CombineBitmap(BitmapHandle* destination, int left, int top, int width, int height,
                               BitmapHandle* source, int sourceLeft, int sourceTop, unsigned operation) {
  if (!isAllocated(destination) || !isAllocated(source)) return KERR_BAD_BITMAP;
  CombineOperation parsed;
  if (!parseCombineOperation(parsed, operation) || width < 0 || height < 0) return KERR_BAD_PARAMETER;
  if (isArithmetic(parsed.op) && !hasLevels(*destination)) return KERR_BAD_BPP;

  // Rows of a picture stored another way round, or of the destination itself, come from a copy.
  OwnedBitmap copy;
  BitmapHandle* rows = source;
  if (!sameFrame(source->ViewPerspective, destination->ViewPerspective)) {
    rows = copy.get();
    const int status = Zv_ChangeBitmapViewPerspective(rows, source, destination->ViewPerspective);
    if (status != KSUCCESS) return status;
  } else if (sharesPixels(*source, *destination)) {
    rows = copy.get();
    if (const int status = Zv_CopyBitmap(rows, source); status != KSUCCESS) return status;
  }
  const Placement where = place(*destination, left, top, width, height, *rows, sourceLeft, sourceTop);
  if (isEmptyRect(where.area)) return KSUCCESS;
  return combineRows(*destination, *rows, where, parsed);
}
