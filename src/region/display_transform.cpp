// The way to display coordinates, and its rounding.
#include "region/display_transform.h"

#include <algorithm>
#include <climits>

#include "core/division.h"
#include "region/region_transform.h"

namespace zavo {
namespace {

LONG nearestLong(int64_t value) {
  return static_cast<LONG>(std::clamp<int64_t>(value, LONG_MIN, LONG_MAX));
}

}  // namespace

bool isValid(const RegionXForm& xform) {
  const int perspective = xform.ViewPerspective;
  return xform.XScaleDenominator != 0 && xform.YScaleDenominator != 0 &&
         (perspective == 0 || isFlipped(perspective) || isRotated(perspective));
}

int DisplayTransform::open(const BitmapHandle& bitmap, const RegionXForm* xform) {
  if (xform != nullptr && !isValid(*xform)) return KERR_BAD_PARAMETER;
  xform_ = xform != nullptr ? *xform : RegionXForm{bitmap.ViewPerspective, 1, 1, 1, 1, 0, 0};
  storedPerspective_ = bitmap.ViewPerspective;
  storedSize_ = {bitmap.Width, bitmap.Height};
  return KSUCCESS;
}

int64_t DisplayTransform::displayX(int edge) const {
  return dividedUp(int64_t{edge} * xform_.XScaleNumerator, xform_.XScaleDenominator) + xform_.XOffset;
}

int64_t DisplayTransform::displayY(int edge) const {
  return dividedDown(int64_t{edge} * xform_.YScaleNumerator, xform_.YScaleDenominator) + xform_.YOffset;
}

RECT DisplayTransform::displayRect(const RECT& stored) const {
  RECT rect = stored;
  convertRect(rect, storedPerspective_, xform_.ViewPerspective, storedSize_);
  return {nearestLong(displayX(rect.left)), nearestLong(displayY(rect.top)), nearestLong(displayX(rect.right)),
          nearestLong(displayY(rect.bottom))};
}

const BitmapRegion* DisplayTransform::inFrame(OwnedRegion& copy, const BitmapRegion& region) const {
  const auto [flip, angle] = passage(storedPerspective_, xform_.ViewPerspective);
  if (!flip && angle == 0) return &region;
  if (copyInFrame(copy, region, storedPerspective_, xform_.ViewPerspective, storedSize_) != KSUCCESS) return nullptr;
  return copy.get();
}

}  // namespace zavo
