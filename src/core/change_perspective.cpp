// Re-storing a bitmap's pixels in another view perspective: a flip, a quarter turn, or both.
#include <zavo.h>

#include "core/duplicate.h"
#include "core/perspective.h"
#include "core/progress.h"
#include "core/status.h"

namespace zavo {
namespace {

int restore(BitmapHandle& bitmap, int perspective) {
  if (bitmap.ViewPerspective == perspective) return KSUCCESS;
  const auto [flip, angle] = passage(bitmap.ViewPerspective, perspective);
  const SilentProgress silent;
  if (flip) {
    // It is the stored rows that are flipped, whatever they show: as in an upright bitmap.
    const int before = bitmap.ViewPerspective;
    bitmap.ViewPerspective = 0;
    const int status = Zv_FlipBitmap(&bitmap);
    if (status != KSUCCESS || before != VIEW_BOTTOM_UP) bitmap.ViewPerspective = before;
    if (status != KSUCCESS) return status;
  }
  if (angle != 0) {
    const int status = Zv_IntRotateBitmapFine(&bitmap, angle * 100, ROTATE_RESIZE, 0);
    if (status != KSUCCESS) return status;
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
