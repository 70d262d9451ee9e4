// Scaling images by taking the nearest pixels.
#include "geometry/resize.h"

#include "core/perspective.h"
#include "core/progress.h"
#include "core/row_padding.h"
#include "core/row_pass.h"
#include "geometry/row_stretch.h"
#include "geometry/stepping.h"

namespace zavo {
namespace {

// What Zv_IsGrayScaleBitmap says of a palette whose first entry is white.
constexpr int fallingGrays = 2;

}  // namespace

int resizeNearest(BitmapHandle& destination, BitmapHandle& source) {
  const auto width = static_cast<unsigned>(destination.Width);
  const auto height = static_cast<unsigned>(destination.Height);
  const auto bits = static_cast<unsigned>(destination.BitsPerPixel);
  const bool flips = !sameFrame(destination.ViewPerspective, source.ViewPerspective);

  Progress progress(destination.Height);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  RowPass pass(destination, source);
  RowStretch stretch;
  if (const int status = pass.open(); status != KSUCCESS) return status;
  if (const int status = stretch.plan(width, static_cast<unsigned>(source.Width), destination.BitsPerPixel);
      status != KSUCCESS) {
    return status;
  }

  Stepping rows(static_cast<unsigned>(source.Height), height);
  unsigned previous = 0;
  bool repeats = false;
  for (unsigned row = 0; row < height; ++row) {
    const unsigned target = flips ? height - 1 - row : row;
    if (repeats) {
      if (const int status = pass.writer.repeat(target, previous); status != KSUCCESS) return status;
    } else {
      const uint8_t* pixels = pass.reader.row(rows.position());
      if (pixels == nullptr) return pass.reader.status();
      uint8_t* stretched = pass.writer.row(target);
      stretch.stretch(stretched, pixels);
      clearRowPadding(stretched, width, bits);
      if (const int status = pass.writer.commit(target); status != KSUCCESS) return status;
    }
    previous = target;
    repeats = rows.advance() == 0;
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_SizeBitmap(BitmapHandle* bitmap, int width, int height, unsigned flags) {
  if (!isAllocated(bitmap)) return KERR_BAD_PARAMETER;
  if (width == bitmap->Width && height == bitmap->Height) return KSUCCESS;
  // Favouring black means something for black and white pictures only, and there it wins over resampling.
  const int gray = (flags & SIZE_FAVOR_BLACK) != 0 && bitmap->BitsPerPixel == 1 ? Zv_IsGrayScaleBitmap(bitmap) : 0;
  if (gray == 0 && (flags & SIZE_RESAMPLE) != 0) return Zv_ResampleBitmap(bitmap, width, height);

  ResizedImage resized(*bitmap);
  if (const int status = resized.create(width, height); status != KSUCCESS) return status;
  const int status =
      gray != 0 ? resizeFavorBlack(*resized, *bitmap, gray == fallingGrays) : resizeNearest(*resized, *bitmap);
  if (status != KSUCCESS) return status;
  return resized.install();
}

int ZAVO_CALL Zv_ResizeBitmap(BitmapHandle* source, BitmapHandle* destination) {
  if (!isAllocated(source) || !isAllocated(destination)) return KERR_BAD_BITMAP;
  if (source->BitsPerPixel != destination->BitsPerPixel) return KERR_BAD_PARAMETER;
  if (source == destination) return KSUCCESS;
  OwnedBitmap turned;
  BitmapHandle* from = source;
  if (!sameFrame(source->ViewPerspective, destination->ViewPerspective) &&
      (isRotated(source->ViewPerspective) || isRotated(destination->ViewPerspective))) {
    from = turned.get();
    const int status = Zv_ChangeBitmapViewPerspective(from, source, destination->ViewPerspective);
    if (status != KSUCCESS) return status;
  }
  const int status = resizeNearest(*destination, *from);
  Zv_TrimBitmapHeap(destination);
  return status;
}
