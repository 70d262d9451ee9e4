// Building a resized image aside and moving it in.
#include "core/duplicate.h"
#include "core/sizes.h"
#include "geometry/resize.h"
#include "region/region_transform.h"

namespace zavo {

int ResizedImage::create(int width, int height) {
  // Sizes that wrap can look like an image without pixels.
  if (width < 0 || height < 0) return KERR_NO_MEMORY;
  const auto bits = static_cast<unsigned>(bitmap_.BitsPerPixel);
  const uint64_t bytes = rowBytesFor(static_cast<unsigned>(width), bits) * static_cast<unsigned>(height);
  if (bytes > UINT32_MAX) return KERR_NO_MEMORY;
  return duplicateEmpty(*image_, bitmap_, width, height);
}

int ResizedImage::install() {
  if (const int status = copyScaledRegion(*image_, bitmap_); status != KSUCCESS) return status;
  Zv_TrimBitmapHeap(image_.get());
  image_.moveInto(bitmap_);
  return KSUCCESS;
}

}  // namespace zavo
