// Walking the pixels of a bitmap that lie in its region, or all of them when it has none.
#pragma once

#include <zavo.h>

#include "region/region.h"

namespace zavo {

// The region's bounds, or the whole bitmap.
[[nodiscard]] inline RECT clipBounds(const BitmapHandle& bitmap) {
  return bitmap.Region != nullptr ? bitmap.Region->bounds : bitmapRect(bitmap);
}

// The clip segments of a bitmap row by row, where they lie: nothing is copied. The bitmap and its region must stay as
// they are while this lives.
class ClipSegments {
 public:
  explicit ClipSegments(const BitmapHandle& bitmap) : region_(bitmap.Region), whole_{0, bitmap.Width} {}

  // A row of the bitmap.
  [[nodiscard]] Segments row(int y) const {
    if (region_ == nullptr) return {whole_, 2};
    return regionRow(*region_, y);
  }

 private:
  const BitmapRegion* region_;
  int whole_[2];
};

}  // namespace zavo
