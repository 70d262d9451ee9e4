// The new image of a conversion to grey, and how it replaces the old one.
#include "imgproc/gray_frame.h"

#include <utility>

namespace zavo {

int makeGrayTarget(OwnedBitmap& target, BitmapHandle& bitmap, int bitsPerPixel, HPALETTE palette) {
  PaletteObject owned(palette);
  (void)Zv_InitBitmap(target.get(), bitmap.Width, bitmap.Height, bitsPerPixel);
  if (!owned || Zv_AllocateBitmap(target.get(), ALLOC_MEMORY) != KSUCCESS) return KERR_NO_MEMORY;
  target->Palette = owned.release();
  target->ViewPerspective = bitmap.ViewPerspective;
  target->XResolution = bitmap.XResolution;
  target->YResolution = bitmap.YResolution;
  (void)Zv_CopyPlaybackParms(target.get(), &bitmap);
  return KSUCCESS;
}

void takeOver(BitmapHandle& bitmap, OwnedBitmap& target) {
  target->Region = std::exchange(bitmap.Region, nullptr);
  target.moveInto(bitmap);
}

}  // namespace zavo
