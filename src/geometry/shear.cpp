// Shearing: every row moves sideways a little further than the one before.
//
// The top row as seen stays, rows below it move to the right for a positive angle. A vertical shear is a horizontal
// one of the image turned by a quarter: columns rise to the right. A negative angle is the mirrored shear, which comes
// out the same as moving every row from the far end.
#include <zavo.h>

#include <cstring>

#include "color/color_row.h"
#include "core/duplicate.h"
#include "core/owners.h"
#include "core/packed_pixels.h"
#include "core/progress.h"
#include "core/row_pass.h"
#include "core/status.h"
#include "geometry/quarter_turn.h"
#include "geometry/region_by_mask.h"
#include "geometry/sine_table.h"

namespace zavo {
namespace {

constexpr int steepest = 4500;
constexpr int64_t widestRowBytes = 32768;
constexpr int turnShare = 20;    // percent of the progress that the first quarter turn stands for
constexpr int reverseShare = 5;  // and the mirroring of a negative angle

// How the stored image is sheared so that the picture is sheared as seen.
struct ShearPlan {
  int quarters;      // clockwise quarters that the stored image is turned by before, and back after
  bool fromLastRow;  // of the turned image, which row stays
  bool mirrored;     // rows move to the left
};

ShearPlan planShear(int perspective, bool horizontal, int angle) {
  ShearPlan plan = {};
  switch (perspective) {
    case VIEW_BOTTOM_UP:
      plan = horizontal ? ShearPlan{0, true, false} : ShearPlan{1, false, true};
      break;
    case VIEW_TURNED_90:
      plan = horizontal ? ShearPlan{1, false, false} : ShearPlan{0, true, true};
      break;
    case VIEW_TURNED_270:
      plan = horizontal ? ShearPlan{3, false, false} : ShearPlan{0, false, false};
      break;
    default:
      plan = horizontal ? ShearPlan{0, false, false} : ShearPlan{1, false, false};
      break;
  }
  if (angle < 0) plan.mirrored = !plan.mirrored;
  return plan;
}

// Pixels by which rows move, row after row. The comparison with the cosine is strict, on purpose.
class ShiftSteps {
 public:
  explicit ShiftSteps(int angle)
      : cosine_(cosine(angle)), quotient_(sine(angle) / cosine_), remainder_(sine(angle) % cosine_) {}

  [[nodiscard]] int current() const { return shift_; }
  void next() {
    shift_ += quotient_;
    accumulated_ += remainder_;
    if (accumulated_ > cosine_) {
      accumulated_ -= cosine_;
      ++shift_;
    }
  }

 private:
  int cosine_;
  int quotient_;
  int remainder_;
  int shift_ = 0;
  int accumulated_ = 0;
};

int shearPixels(BitmapHandle& sheared, BitmapHandle& source, int angle, const ShearPlan& plan, COLORREF fill,
                ProgressShare share) {
  RowPass pass(sheared, source);
  if (const int status = pass.open(); status != KSUCCESS) return status;
  auto background = OsBlock<uint8_t>::allocateZeroed(sheared.BytesPerLine);
  if (!background) return KERR_NO_MEMORY;
  fillColorRow(background.get(), sheared, fill, static_cast<unsigned>(sheared.Width));

  const auto bits = static_cast<unsigned>(source.BitsPerPixel);
  const int room = sheared.Width - source.Width;
  ShiftSteps shift(angle);
  Progress progress(source.Height, share);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  for (int k = 0; k < source.Height; ++k, shift.next()) {
    const auto y = static_cast<unsigned>(plan.fromLastRow ? source.Height - 1 - k : k);
    const uint8_t* from = pass.reader.row(y);
    if (from == nullptr) return pass.reader.status();
    uint8_t* to = pass.writer.row(y);
    memcpy(to, background.get(), sheared.BytesPerLine);
    const auto offset = static_cast<unsigned>(plan.mirrored ? room - shift.current() : shift.current());
    copyBits(to, uint64_t{offset} * bits, from, 0, uint64_t{static_cast<unsigned>(source.Width)} * bits);
    if (const int status = pass.writer.commit(y); status != KSUCCESS) return status;
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

// Builds the sheared image without its region. `angle` is not negative from here on.
int buildSheared(OwnedBitmap& sheared, BitmapHandle& source, int angle, const ShearPlan& plan, COLORREF fill,
                 ProgressShare share) {
  const int64_t width = source.Width + int64_t{sine(angle)} * source.Height / cosine(angle);
  if (width * source.BitsPerPixel / 8 > widestRowBytes) return KERR_BAD_PARAMETER;
  if (const int status = duplicateEmpty(*sheared, source, static_cast<int>(width), source.Height); status != KSUCCESS) {
    return status;
  }
  return shearPixels(*sheared, source, angle, plan, fill, share);
}

// Builds the sheared image with its region.
int buildShearedWithRegion(OwnedBitmap& sheared, BitmapHandle& source, int angle, const ShearPlan& plan, COLORREF fill,
                           ProgressShare share) {
  if (const int status = buildSheared(sheared, source, angle, plan, fill, share); status != KSUCCESS) return status;
  return carryRegionByMask(*sheared, source, [&](OwnedBitmap& result, BitmapHandle& mask) {
    return buildSheared(result, mask, angle, plan, outsideMask, {});
  });
}

int shearInPlace(BitmapHandle& bitmap, int angle, bool horizontal, COLORREF fill) {
  const ShearPlan plan = planShear(bitmap.ViewPerspective, horizontal, angle);
  OwnedBitmap turned, sheared;
  BitmapHandle* source = &bitmap;
  int done = 0;  // percent
  if (plan.quarters != 0) {
    const int status = buildQuarterTurn(turned, bitmap, plan.quarters, {done, turnShare});
    if (status != KSUCCESS) return status;
    source = turned.get();
    done += turnShare;
  }
  if (angle < 0) {
    // The shear itself mirrors; in the progress that has its share all the same.
    Progress mirroring(1, {done, reverseShare});
    if (const int status = mirroring.begin(); status != KSUCCESS) return status;
    done += reverseShare;
  }
  const int steepness = angle < 0 ? -angle : angle;
  if (const int status = buildShearedWithRegion(sheared, *source, steepness, plan, fill, {done, 100 - done});
      status != KSUCCESS) {
    return status;
  }
  if (plan.quarters != 0) {
    if (const int status = turnInPlace(*sheared, 4 - plan.quarters, {100, 0}); status != KSUCCESS) return status;
  }
  (void)Zv_TrimBitmapHeap(sheared.get());
  sheared.moveInto(bitmap);
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_ShearBitmap(BitmapHandle* bitmap, int angle, int horizontal, COLORREF fill) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (angle < -steepest || angle > steepest) return KERR_BAD_PARAMETER;
  return shearInPlace(*bitmap, angle, horizontal != 0, fill);
}
