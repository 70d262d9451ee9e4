// Converted copies of bitmaps at another depth or with another palette, of one bitmap or of a whole list. The new image
// is built aside and moved in when all has gone well.
#include <zavo.h>

#include "color/palettes.h"
#include "color/reduction_rows.h"
#include "color/reduction_target.h"
#include "core/bitmap_list.h"
#include "core/duplicate.h"
#include "core/memory.h"
#include "core/owners.h"
#include "core/progress.h"
#include "core/rows.h"
#include "core/status.h"

namespace zavo {
namespace {

// Gives the work bitmap the target's format and all of the source but its pixels.
int describe(OwnedBitmap& work, BitmapHandle& source, const ReductionTarget& target) {
  const int status =
      duplicateBitmap(*work, source, source.Width, source.Height, target.bitsPerPixel, DUP_STORAGE | DUP_REGION);
  if (status != KSUCCESS) return status;
  work->Palette = nullptr;
  work->ColorOrder = target.colorOrder;
  work->DitheringMethod = source.DitheringMethod;
  work->Reserved1 = source.Reserved1;
  if (target.bitsPerPixel <= 8) {
    work->Palette = createPalette(target.palette, work->ColorCount);
    if (work->Palette == nullptr) return KERR_NO_MEMORY;
  }
  // Once more, for colours of frames are translated by the palette.
  Zv_CopyPlaybackParms(work.get(), &source);
  return KSUCCESS;
}

int convertRows(BitmapHandle& work, BitmapHandle& source, const ReductionTarget& target, Progress& progress) {
  ReductionRows rows;
  if (const int status = rows.prepare(source, target); status != KSUCCESS) return status;
  const BitmapLock workLock(work);
  const BitmapLock sourceLock(source);
  RowReader reader(source);
  RowWriter writer(work);
  if (const int status = reader.open(); status != KSUCCESS) return status;
  if (const int status = writer.open(); status != KSUCCESS) return status;
  for (unsigned row = 0; row < static_cast<unsigned>(source.Height); ++row) {
    const uint8_t* pixels = reader.row(row);
    if (pixels == nullptr) return reader.status();
    rows.convert(writer.row(row), pixels);
    if (const int status = writer.commit(row); status != KSUCCESS) return status;
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

int reduce(OwnedBitmap& work, BitmapHandle& source, const ReductionTarget& target, Progress& progress) {
  if (const int status = describe(work, source, target); status != KSUCCESS) return status;
  if (const int status = convertRows(*work, source, target, progress); status != KSUCCESS) return status;
  Zv_TrimBitmapHeap(work.get());
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_ColorResBitmap(BitmapHandle* source, BitmapHandle* destination, int bitsPerPixel, unsigned options,
                                const RGBQUAD* palette, unsigned colorCount) {
  if (!isAllocated(source)) return KERR_BAD_BITMAP;
  const ReductionRequest request = {bitsPerPixel, options, palette, colorCount};
  if (const int status = checkReduction(request); status != KSUCCESS) return status;

  Progress progress(source->Height);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  ReductionTarget target;
  if (const int status = chooseTarget(target, request, *source); status != KSUCCESS) return status;
  OwnedBitmap work;
  if (const int status = reduce(work, *source, target, progress); status != KSUCCESS) return status;
  if (destination == nullptr || destination == source) {
    work->DitherState = source->DitherState;
    work.moveInto(*source);
  } else {
    *destination = work.release();
  }
  return KSUCCESS;
}
