// Quarter turns of the seen picture, by the perspective code alone where the turned picture has one.
#include <zavo.h>

#include "core/perspective.h"
#include "core/status.h"

using namespace zavo;

int ZAVO_CALL Zv_RotateBitmapViewPerspective(BitmapHandle* bitmap, int degrees) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (degrees % 90 != 0) return KERR_BAD_PARAMETER;
  const int turn = (degrees % 360 + 360) % 360;
  if (turn == 0) return KSUCCESS;
  constexpr int noCode = -1;  // none shows a flipped picture turned
  const int present = bitmap->ViewPerspective;
  switch (isFlipped(present) ? noCode : (angleOf(present) + turn) % 360) {
    case 0:
      bitmap->ViewPerspective = VIEW_UPRIGHT;
      return KSUCCESS;
    case 90:
      bitmap->ViewPerspective = VIEW_TURNED_90;
      return KSUCCESS;
    case 270:
      bitmap->ViewPerspective = VIEW_TURNED_270;
      return KSUCCESS;
    default:  // the pixels move
      return Zv_RotateBitmapFine(bitmap, turn * 100, ROTATE_RESIZE, 0);
  }
}
