// Re-storing a bitmap's pixels in another view perspective: a flip, a quarter turn, or both.
#include <zavo.h>

#include <utility>

#include "core/duplicate.h"
#include "core/perspective.h"
#include "core/progress.h"
#include "core/status.h"

namespace zavo {
namespace {

// Flips the stored rows, whatever they show: as in an upright bitmap, which it is afterwards. A failure leaves the
// perspective.
int flipStored(BitmapHandle& bitmap) {
  const int before = std::exchange(bitmap.ViewPerspective, 0);
  const int status = Zv_FlipBitmap(&bitmap);
  if (status != KSUCCESS) bitmap.ViewPerspective = before;
  return status;
}

// A flip and a turn take the order that has the bitmap upright between them, with the perspective to match: should the
// second one fail, it still shows the same picture.
int restore(BitmapHandle& bitmap, int perspective) {
  const int before = bitmap.ViewPerspective;
  if (before == perspective) return KSUCCESS;
  const SilentProgress silent;
  if (isFlipped(before)) {
    if (const int status = flipStored(bitmap); status != KSUCCESS) return status;
  }
  if (const int degrees = passage(bitmap.ViewPerspective, isFlipped(perspective) ? 0 : perspective).angle;
      degrees != 0) {
    if (const int status = Zv_IntRotateBitmapFine(&bitmap, degrees * 100, ROTATE_RESIZE, 0); status != KSUCCESS) {
      return status;
    }
    bitmap.ViewPerspective = 0;
  }
  if (isFlipped(perspective)) {
    if (const int status = flipStored(bitmap); status != KSUCCESS) return status;
  }
  bitmap.ViewPerspective = perspective;
  (void)Zv_TrimBitmapHeap(&bitmap);
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_ChangeBitmapViewPerspective(BitmapHandle* destination, BitmapHandle* source, int perspective) {
  if (!isAllocated(source)) return KERR_BAD_PARAMETER;
  if (destination == nullptr || destination == source) return restore(*source, perspective);
  if (const int status = copyBitmap(*destination, *source); status != KSUCCESS) return status;
  const int status = restore(*destination, perspective);
  if (status != KSUCCESS) Zv_FreeBitmap(destination);
  return status;
}
