// Changing the size of whole images.
#pragma once

#include <zavo.h>

#include "core/owners.h"
#include "core/status.h"

namespace zavo {

// An image of new dimensions, built aside while the bitmap it will replace stays whole.
class ResizedImage {
 public:
  explicit ResizedImage(BitmapHandle& bitmap) : bitmap_(bitmap) {}

  // Allocates the new image, with what it inherits from the bitmap. KSUCCESS or the code of the allocation.
  [[nodiscard]] int create(int width, int height);

  BitmapHandle& operator*() { return *image_; }
  BitmapHandle* operator->() { return image_.get(); }

  // Scales the bitmap's region and puts the new image in the bitmap's place. On failure the bitmap is untouched.
  [[nodiscard]] int install();

 private:
  BitmapHandle& bitmap_;
  OwnedBitmap image_;
};

// Fills an allocated bitmap of any size with the nearest pixels of another of the same depth, with progress reports.
// Rows are turned upside down when one of the two is bottom-up. KSUCCESS, a storage code or the callback's value.
[[nodiscard]] int resizeNearest(BitmapHandle& destination, BitmapHandle& source);

// The same for 1-bit images, with pixels black when enough of the box they stand for is black. `blackIsSet`: black is
// the bit 1. Boxes are laid out from the top of the picture.
[[nodiscard]] int resizeFavorBlack(BitmapHandle& destination, BitmapHandle& source, bool blackIsSet);

}  // namespace zavo
