// How a picture lies in the view: its scale and the part that is scrolled to. Plain arithmetic without windows.
#pragma once

#include <windows.h>

namespace zavoview {

class Zoom {
 public:
  /// The picture's size; another size than before starts at the top left.
  void setPicture(SIZE picture);
  /// The room there is.
  void setView(SIZE view);
  [[nodiscard]] SIZE view() const { return view_; }

  /// Follows the view: the whole picture is seen, never enlarged.
  void fit();
  [[nodiscard]] bool fitting() const { return fitting_; }
  void setActualSize(POINT anchor) { setScale(1.0, anchor); }
  /// The next scale of a series; the pixel under the anchor, a point of the view, stays there.
  void zoomIn(POINT anchor);
  void zoomOut(POINT anchor);
  [[nodiscard]] double scale() const { return scale_; }

  void scrollTo(POINT origin);
  /// What of the scaled picture is at the view's top left corner.
  [[nodiscard]] POINT origin() const { return origin_; }
  [[nodiscard]] SIZE scaled() const { return scaled_; }

  /// Where the whole picture lies in the view; centred where there is room left.
  [[nodiscard]] RECT pictureRect() const;
  /// The pixel that is seen at a point of the view; may lie outside the picture.
  [[nodiscard]] POINT toPicture(POINT point) const;
  /// The top left corner of a pixel in the view.
  [[nodiscard]] POINT toView(POINT pixel) const;

 private:
  void setScale(double scale, POINT anchor);
  void fitScale();
  void clampOrigin();

  SIZE picture_{1, 1};
  SIZE view_{1, 1};
  SIZE scaled_{1, 1};
  POINT origin_{0, 0};
  double scale_ = 1;
  bool fitting_ = true;
};

}  // namespace zavoview
