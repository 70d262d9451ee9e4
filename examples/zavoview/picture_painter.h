// Puts the picture on the screen: the library paints it, exactly or from a smoothly scaled copy.
#pragma once

#include <windows.h>

#include "common/picture.h"

namespace zavoview {

class PicturePainter {
 public:
  /// Smooth: scaled by averages and straight lines between pixels; else by the nearest pixels.
  bool smooth = true;

  /// The picture has changed: a copy of it is no longer right.
  void forgetCopy() { copy_ = zv::Picture(); }

  /// Paints the picture, scaled to `place`, where `dirty` needs it, into memory that is to be copied to the screen.
  void paint(HDC screen, HDC dc, zv::Picture& picture, const RECT& place, const RECT& dirty);

 private:
  bool makeCopy(zv::Picture& picture, SIZE size);

  zv::Picture copy_;
};

/// Draws the selection's outline; the stripes move with the phase, 0 to 7.
void paintOutline(HDC dc, zv::Picture& picture, const RECT& place, unsigned phase);

}  // namespace zavoview
