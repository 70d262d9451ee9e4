// From a bitmap's stored coordinates to display coordinates: the one place where that direction is settled.
//
// A RegionXForm that describes a display says how the picture lies on it. The stored image is first brought into the
// frame of the transform's perspective; then coordinates are multiplied by numerator / denominator; then the offset is
// added. Edges are rounded as painting rounds them, x up and y down, so that the display region covers exactly the
// device pixels that show pixels of the region.
//
// A null transform stands for the bitmap's own frame, unscaled, without offsets.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/perspective.h"
#include "region/region.h"

namespace zavo {

// The record is usable: no denominator is 0 and the perspective is 0, 2, 4 or 8.
[[nodiscard]] bool isValid(const RegionXForm& xform);

class DisplayTransform {
 public:
  // KSUCCESS, or KERR_BAD_PARAMETER for an unusable record.
  [[nodiscard]] int open(const BitmapHandle& bitmap, const RegionXForm* xform);

  // The record in force.
  [[nodiscard]] const RegionXForm& record() const { return xform_; }

  // Edges in the transform's frame to display coordinates.
  [[nodiscard]] int64_t displayX(int edge) const;
  [[nodiscard]] int64_t displayY(int edge) const;

  // A rectangle of the stored image in display coordinates; values beyond 32 bits become the nearest.
  [[nodiscard]] RECT displayRect(const RECT& stored) const;

  // A region of the stored image in the transform's frame, not yet scaled or moved: `region` itself, or a copy put
  // into `copy` when the frames differ. Null without memory.
  [[nodiscard]] const BitmapRegion* inFrame(OwnedRegion& copy, const BitmapRegion& region) const;

 private:
  RegionXForm xform_ = {};
  int storedPerspective_ = 0;
  ImageSize storedSize_ = {};
};

}  // namespace zavo
