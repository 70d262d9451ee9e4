// Quarter turns of the seen picture, by the perspective code alone where the turned picture has one.
#include <zavo.h>

#include "core/status.h"
#include "geometry/rotate.h"
#include "geometry/sine_table.h"

namespace zavo {
namespace {

constexpr int noTurn = -1;

// Degrees by which the stored image is turned clockwise to be seen; noTurn for the flipped perspective.
int seenTurn(int perspective) {
  switch (perspective) {
    case VIEW_BOTTOM_UP:
      return noTurn;
    case VIEW_TURNED_90:
      return 90;
    case VIEW_TURNED_270:
      return 270;
    default:
      return 0;
  }
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_RotateBitmapViewPerspective(BitmapHandle* bitmap, int degrees) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (degrees % 90 != 0) return KERR_BAD_PARAMETER;
  const int turn = (degrees % 360 + 360) % 360;
  if (turn == 0) return KSUCCESS;
  const int present = seenTurn(bitmap->ViewPerspective);
  const int wanted = present == noTurn ? noTurn : (present + turn) % 360;
  switch (wanted) {
    case 0:
      bitmap->ViewPerspective = VIEW_UPRIGHT;
      return KSUCCESS;
    case 90:
      bitmap->ViewPerspective = VIEW_TURNED_90;
      return KSUCCESS;
    case 270:
      bitmap->ViewPerspective = VIEW_TURNED_270;
      return KSUCCESS;
    default:  // no code shows this picture: the pixels move
      return Zv_RotateBitmapFine(bitmap, turn * 100, ROTATE_RESIZE, 0);
  }
}
