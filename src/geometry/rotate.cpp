// Rotation by any angle about the centre. Quarter turns that keep every pixel take the exact way; everything else is
// sampled row by row into a new image, whose uncovered pixels take the fill colour.
#include "geometry/rotate.h"

#include <cstdlib>
#include <cstring>

#include "color/color_row.h"
#include "color/palettes.h"
#include "core/duplicate.h"
#include "core/owners.h"
#include "core/packed_pixels.h"
#include "core/perspective.h"
#include "core/rows.h"
#include "core/status.h"
#include "geometry/image_rows.h"
#include "geometry/quarter_turn.h"
#include "geometry/region_by_mask.h"
#include "geometry/rotate_rows.h"
#include "geometry/sine_table.h"

namespace zavo {
namespace {

// --- Which way a pixel is sampled, decided once a call

class Sampler {
 public:
  Sampler(const BitmapHandle& bitmap, bool smooth) : bitsPerPixel_(bitmap.BitsPerPixel) {
    if (!smooth) return;
    if (bitsPerPixel_ > 8) {
      sample_ = bilinearSampling(bitsPerPixel_);
    } else if (Zv_IsGrayScaleBitmap(&bitmap) != 0) {
      takeGrayLevels(bitmap);
    }
  }

  void operator()(uint8_t* pixels, const RotationSource& source, const RotationWalk& walk, int count) const {
    if (smoothGray_) {
      sampleGrayBilinear(pixels, source, bitsPerPixel_, gray_, walk, count);
    } else {
      sample_(pixels, source, walk, count);
    }
  }

 private:
  void takeGrayLevels(const BitmapHandle& bitmap) {
    RGBQUAD palette[256];
    const unsigned count = readPalette(bitmap, palette);
    for (unsigned i = 0; i < 256; ++i) {
      gray_.levels[i] = palette[i].rgbRed;
      gray_.indexes[i] = static_cast<uint8_t>(nearestIndex(palette, count, i, i, i));
    }
    smoothGray_ = true;
  }

  int bitsPerPixel_;
  SampleFunction sample_ = nearestSampling(bitsPerPixel_);
  bool smoothGray_ = false;
  GrayLevels gray_;
};

// --- Rows of the turned image

// A row in working form: as stored for 16 bits and up, an index a byte below.
class WorkingRow {
 public:
  explicit WorkingRow(const BitmapHandle& turned)
      : bitsPerPixel_(turned.BitsPerPixel),
        width_(turned.Width),
        pixelBytes_(turned.BitsPerPixel > 8 ? static_cast<unsigned>(turned.BitsPerPixel) / 8 : 1) {}

  // Takes the buffers and the fill colour. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int open(const BitmapHandle& turned, COLORREF fill) {
    const uint64_t bytes = uint64_t{static_cast<unsigned>(width_)} * pixelBytes_;
    fill_ = OsBlock<uint8_t>::allocate(bytes);
    pixels_ = OsBlock<uint8_t>::allocate(bytes);
    auto stored = OsBlock<uint8_t>::allocateZeroed(turned.BytesPerLine);
    if (!fill_ || !pixels_ || !stored) return KERR_NO_MEMORY;
    const auto count = static_cast<unsigned>(width_);
    fillColorRow(stored.get(), turned, fill, count);
    if (bitsPerPixel_ <= 8) {
      unpackFunction(bitsPerPixel_)(fill_.get(), stored.get(), 0, count);
    } else {
      memcpy(fill_.get(), stored.get(), static_cast<size_t>(bytes));
    }
    return KSUCCESS;
  }

  // Where pixel `x` goes.
  [[nodiscard]] uint8_t* at(int x) const { return pixels_.get() + size_t{pixelBytes_} * static_cast<unsigned>(x); }

  void fill(int first, int last) const {
    memcpy(at(first), fill_.get(), size_t{pixelBytes_} * static_cast<unsigned>(last - first));
  }

  void store(uint8_t* row) const {
    if (bitsPerPixel_ <= 8) {
      packFunction(bitsPerPixel_)(row, pixels_.get(), 0, static_cast<unsigned>(width_));
    } else {
      memcpy(row, pixels_.get(), size_t{pixelBytes_} * static_cast<unsigned>(width_));
    }
  }

 private:
  int bitsPerPixel_;
  int width_;
  unsigned pixelBytes_;
  OsBlock<uint8_t> fill_;
  OsBlock<uint8_t> pixels_;
};

// The walk through the source that gives row y of the turned image: the inverse turn of its pixel centres about the
// centre of both images. Coordinates are doubled, so that centres are whole numbers.
RotationWalk walkOfRow(const BitmapHandle& turned, const BitmapHandle& source, int angle, int y) {
  const int64_t sin = sine(angle);
  const int64_t cos = cosine(angle);
  const int64_t u = -(int64_t{turned.Width} - 1);
  const int64_t v = 2 * int64_t{y} - (int64_t{turned.Height} - 1);
  return {.startX = u * cos + v * sin + int64_t{source.Width} * sineScale,
          .startY = v * cos - u * sin + int64_t{source.Height} * sineScale,
          .stepX = static_cast<int>(2 * cos),
          .stepY = static_cast<int>(-2 * sin)};
}
static_assert(positionScale == 2 * int64_t{sineScale}, "doubled coordinates times the sine's scale are positions");

int rotatePixels(BitmapHandle& turned, BitmapHandle& source, int angle, unsigned flags, COLORREF fill,
                 ProgressShare share) {
  const BitmapLock sourceLock(source);
  const BitmapLock turnedLock(turned);
  ImageRows from(source);
  if (const int status = from.openForReading(); status != KSUCCESS) return status;
  RowWriter writer(turned);
  if (const int status = writer.open(); status != KSUCCESS) return status;
  WorkingRow row(turned);
  if (const int status = row.open(turned, fill); status != KSUCCESS) return status;
  const Sampler sample(source, (flags & ROTATE_RESAMPLE) != 0);
  const RotationSource sourceRows = {from.row(0), from.stride(), source.Width, source.Height};

  Progress progress(turned.Height, share);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  for (int y = 0; y < turned.Height; ++y) {
    RotationWalk walk = walkOfRow(turned, source, angle, y);
    const StepRange inside = stepsInside(walk, turned.Width, source.Width, source.Height);
    walk.startX += int64_t{inside.first} * walk.stepX;
    walk.startY += int64_t{inside.first} * walk.stepY;
    row.fill(0, inside.first);
    sample(row.at(inside.first), sourceRows, walk, inside.last - inside.first);
    row.fill(inside.last, turned.Width);
    row.store(writer.row(static_cast<unsigned>(y)));
    if (const int status = writer.commit(static_cast<unsigned>(y)); status != KSUCCESS) return status;
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

// Builds the turned image without its region.
int buildRotated(OwnedBitmap& turned, BitmapHandle& source, int angle, unsigned flags, COLORREF fill,
                 ProgressShare share) {
  int64_t width = source.Width;
  int64_t height = source.Height;
  if ((flags & ROTATE_RESIZE) != 0) {
    const int64_t sin = std::abs(sine(angle));
    const int64_t cos = std::abs(cosine(angle));
    width = (source.Width * cos + source.Height * sin + sineScale - 1) / sineScale;
    height = (source.Width * sin + source.Height * cos + sineScale - 1) / sineScale;
    if (width > INT32_MAX || height > INT32_MAX) return KERR_NO_MEMORY;
  }
  if (const int status = duplicateEmpty(*turned, source, static_cast<int>(width), static_cast<int>(height));
      status != KSUCCESS) {
    return status;
  }
  return rotatePixels(*turned, source, angle, flags, fill, share);
}

bool isExactTurn(const BitmapHandle& bitmap, int angle, unsigned flags) {
  const bool fits = (flags & ROTATE_RESIZE) != 0 || angle == 2 * quarterTurn || bitmap.Width == bitmap.Height;
  return angle % quarterTurn == 0 && fits;
}

}  // namespace

int rotateStored(BitmapHandle& bitmap, int angle, unsigned flags, COLORREF fill, ProgressShare share) {
  angle = normalizedAngle(angle);
  if (angle == 0) return KSUCCESS;
  if (isExactTurn(bitmap, angle, flags)) return turnInPlace(bitmap, angle / quarterTurn, share);

  OwnedBitmap turned;
  if (const int status = buildRotated(turned, bitmap, angle, flags, fill, share); status != KSUCCESS) return status;
  const int status = carryRegionByMask(*turned, bitmap, [&](OwnedBitmap& result, BitmapHandle& mask) {
    return buildRotated(result, mask, angle, flags & ROTATE_RESIZE, outsideMask, {});
  });
  if (status != KSUCCESS) return status;
  (void)Zv_TrimBitmapHeap(turned.get());
  turned.moveInto(bitmap);
  return KSUCCESS;
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_IntRotateBitmapFine(BitmapHandle* bitmap, int angle, unsigned flags, COLORREF fill) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  return rotateStored(*bitmap, angle, flags, fill);
}

int ZAVO_CALL Zv_RotateBitmapFine(BitmapHandle* bitmap, int angle, unsigned flags, COLORREF fill) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  // Bottom-up rows turn the other way for the same seen turn.
  const int stored = normalizedAngle(angle);
  return rotateStored(*bitmap, isFlipped(bitmap->ViewPerspective) ? -stored : stored, flags, fill);
}

int ZAVO_CALL Zv_RotateBitmap(BitmapHandle* bitmap, int degrees, unsigned flags, COLORREF fill) {
  return Zv_RotateBitmapFine(bitmap, degrees % 360 * 100, flags, fill);
}
