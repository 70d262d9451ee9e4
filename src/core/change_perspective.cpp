// Re-storing a bitmap's pixels in another view perspective: a flip, a quarter turn, or both.
#include <zavo.h>

#include "core/duplicate.h"
#include "core/perspective.h"
#include "core/progress.h"
#include "core/status.h"

namespace zavo {
namespace {

// What brings the stored image of one perspective into another: first the flip, then the turn.
struct Restoring {
  bool flip;
  int turn;  // hundredths of a degree, clockwise, 0 .. 35999
};

Restoring restoring(int from, int to) {
  Restoring steps = {.flip = isFlipped(from), .turn = angleOf(from) * 100};
  if (to == VIEW_BOTTOM_UP) {
    steps.turn = 36000 - steps.turn;
    steps.flip = true;
  } else {
    steps.turn -= angleOf(to) * 100;
  }
  steps.turn = (steps.turn + 36000) % 36000;
  return steps;
}

int restore(BitmapHandle& bitmap, int perspective) {
  if (bitmap.ViewPerspective == perspective) return KSUCCESS;
  const Restoring steps = restoring(bitmap.ViewPerspective, perspective);
  const SilentProgress silent;
  if (steps.flip) {
    // It is the stored rows that are flipped, whatever they show: as in an upright bitmap.
    const int before = bitmap.ViewPerspective;
    bitmap.ViewPerspective = 0;
    const int status = Zv_FlipBitmap(&bitmap);
    if (status != KSUCCESS || before != VIEW_BOTTOM_UP) bitmap.ViewPerspective = before;
    if (status != KSUCCESS) return status;
  }
  if (steps.turn != 0) {
    if (const int status = Zv_IntRotateBitmapFine(&bitmap, steps.turn, ROTATE_RESIZE, 0); status != KSUCCESS) {
      return status;
    }
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
