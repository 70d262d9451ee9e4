// A quarter turn is a transposition with one side walked upwards; a half turn copies rows mirrored, end for end.
#include "geometry/quarter_turn.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "core/duplicate.h"
#include "core/region_services.h"
#include "core/rows.h"
#include "geometry/image_rows.h"
#include "geometry/mirror_row.h"
#include "geometry/sine_table.h"
#include "geometry/transpose.h"
#include "region/region_transform.h"

namespace zavo {
namespace {

// Destination rows made between two progress reports; a multiple of the transposition's blocks at every depth.
constexpr unsigned bandRows = 512;

int turnByQuarter(BitmapHandle& turned, BitmapHandle& source, bool clockwise, ProgressShare share) {
  ImageRows from(source);
  ImageRows to(turned);
  if (const int status = from.openForReading(); status != KSUCCESS) return status;
  if (const int status = to.openForWriting(); status != KSUCCESS) return status;

  const auto width = static_cast<unsigned>(source.Width);
  const auto height = static_cast<unsigned>(source.Height);
  const TransposeFunction transpose = transposeFunction(source.BitsPerPixel);
  const auto bits = static_cast<unsigned>(source.BitsPerPixel);
  Progress progress(static_cast<int>((width + bandRows - 1) / bandRows), share);
  if (const int status = progress.begin(); status != KSUCCESS) return status;

  // Source columns from x on become destination rows from x on (clockwise) or down to width - 1 - x.
  for (unsigned x = 0; x < width; x += bandRows) {
    const unsigned columns = std::min(bandRows, width - x);
    const size_t columnBytes = size_t{x} / 8 * bits;
    if (clockwise) {
      transpose(to.row(x), to.stride(), from.row(height - 1) + columnBytes, -from.stride(), columns, height);
    } else {
      transpose(to.row(width - 1 - x), -to.stride(), from.row(0) + columnBytes, from.stride(), columns, height);
    }
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return to.commit();
}

int turnByHalf(BitmapHandle& turned, BitmapHandle& source, ProgressShare share) {
  RowReader reader(source);
  RowWriter writer(turned);
  if (const int status = reader.open(); status != KSUCCESS) return status;
  if (const int status = writer.open(); status != KSUCCESS) return status;

  const auto height = static_cast<unsigned>(source.Height);
  const MirrorFunction mirror = mirrorFunction(source.BitsPerPixel);
  Progress progress(source.Height, share);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  for (unsigned y = 0; y < height; ++y) {
    const uint8_t* from = reader.row(y);
    if (from == nullptr) return reader.status();
    uint8_t* to = writer.row(height - 1 - y);
    memcpy(to, from, source.BytesPerLine);
    mirror(to, static_cast<unsigned>(source.Width));
    if (const int status = writer.commit(height - 1 - y); status != KSUCCESS) return status;
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace

int buildQuarterTurn(OwnedBitmap& turned, BitmapHandle& source, int quarters, ProgressShare share) {
  int width = source.Width;
  int height = source.Height;
  if (quarters != 2) std::swap(width, height);
  if (const int status = duplicateEmpty(*turned, source, width, height); status != KSUCCESS) return status;
  if (quarters != 2) std::swap(turned->XResolution, turned->YResolution);
  {
    const BitmapLock sourceLock(source);
    const BitmapLock turnedLock(*turned);
    const int status =
        quarters == 2 ? turnByHalf(*turned, source, share) : turnByQuarter(*turned, source, quarters == 1, share);
    if (status != KSUCCESS) return status;
  }
  return copyTurnedRegion(*turned, source, quarters);
}

int turnInPlace(BitmapHandle& bitmap, int quarters, ProgressShare share) {
  OwnedBitmap turned;
  if (const int status = buildQuarterTurn(turned, bitmap, quarters, share); status != KSUCCESS) return status;
  turned.moveInto(bitmap);
  return KSUCCESS;
}

}  // namespace zavo
