// Flip and reversal in place. In a rotated perspective stored rows run along seen columns, so the two exchange roles.
#include "geometry/flip.h"

#include <algorithm>
#include <utility>

#include "core/owners.h"
#include "core/perspective.h"
#include "core/row_table.h"
#include "core/rows.h"
#include "core/run_rows.h"
#include "core/status.h"
#include "geometry/mirror_row.h"
#include "region/region_transform.h"

namespace zavo {
namespace {

// Exchanges stored rows, where they lie or, of a temporary file, in buffers.
class RowExchanger {
 public:
  explicit RowExchanger(BitmapHandle& bitmap) : upper_(bitmap), lower_(bitmap) {}

  [[nodiscard]] int open() {
    const int status = upper_.open();
    return status == KSUCCESS ? lower_.open() : status;
  }

  [[nodiscard]] int exchange(unsigned upperRow, unsigned lowerRow, unsigned bytes) {
    uint8_t* upper = upper_.edit(upperRow);
    if (upper == nullptr) return upper_.status();
    uint8_t* lower = lower_.edit(lowerRow);
    if (lower == nullptr) return lower_.status();
    std::swap_ranges(upper, upper + bytes, lower);
    const int status = upper_.commit(upperRow);
    return status == KSUCCESS ? lower_.commit(lowerRow) : status;
  }

 private:
  RowWriter upper_;
  RowWriter lower_;
};

// Calls exchange(i, Height - 1 - i) for every pair of rows, counting progress.
template <typename Exchange>
int forEachPair(const BitmapHandle& bitmap, ProgressShare share, Exchange exchange) {
  Progress progress(bitmap.Height / 2, share);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  const auto height = static_cast<unsigned>(bitmap.Height);
  for (unsigned i = 0; i < height / 2; ++i) {
    if (const int status = exchange(i, height - 1 - i); status != KSUCCESS) return status;
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

int flipPixels(BitmapHandle& bitmap, ProgressShare share) {
  if (isRunLength(bitmap)) {
    RowTable& table = rowTable(bitmap);
    return forEachPair(bitmap, share, [&](unsigned upper, unsigned lower) {
      std::swap(table.rows[upper], table.rows[lower]);
      return KSUCCESS;
    });
  }
  RowExchanger rows(bitmap);
  if (const int status = rows.open(); status != KSUCCESS) return status;
  return forEachPair(bitmap, share,
                     [&](unsigned upper, unsigned lower) { return rows.exchange(upper, lower, bitmap.BytesPerLine); });
}

int reversePixels(BitmapHandle& bitmap, ProgressShare share) {
  const auto width = static_cast<unsigned>(bitmap.Width);
  const MirrorFunction mirror = mirrorFunction(bitmap.BitsPerPixel);
  RowWriter rows(bitmap);
  if (const int status = rows.open(); status != KSUCCESS) return status;
  Progress progress(bitmap.Height, share);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  for (unsigned y = 0; y < static_cast<unsigned>(bitmap.Height); ++y) {
    if (isRunLength(bitmap)) {
      if (const int status = mirrorRunRow(bitmap, y); status != KSUCCESS) return status;
    } else {
      uint8_t* row = rows.edit(y);
      if (row == nullptr) return rows.status();
      mirror(row, width);
      if (const int status = rows.commit(y); status != KSUCCESS) return status;
    }
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace

int flipRows(BitmapHandle& bitmap, ProgressShare share) {
  const BitmapLock lock(bitmap);
  if (const int status = flipPixels(bitmap, share); status != KSUCCESS) return status;
  flipRegion(bitmap);
  return KSUCCESS;
}

int reverseColumns(BitmapHandle& bitmap, ProgressShare share) {
  const BitmapLock lock(bitmap);
  if (const int status = reversePixels(bitmap, share); status != KSUCCESS) return status;
  mirrorRegion(bitmap);
  return KSUCCESS;
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_FlipBitmap(BitmapHandle* bitmap) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  return isRotated(bitmap->ViewPerspective) ? reverseColumns(*bitmap) : flipRows(*bitmap);
}

int ZAVO_CALL Zv_ReverseBitmap(BitmapHandle* bitmap) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  return isRotated(bitmap->ViewPerspective) ? flipRows(*bitmap) : reverseColumns(*bitmap);
}
