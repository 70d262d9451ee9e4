// The tools that select with the mouse: what is being drawn, and what becomes of the selection.
#pragma once

#include <vector>
#include <windows.h>

#include "document.h"
#include "zoom.h"

namespace zavoview {

enum class Tool { Hand, Rectangle, Ellipse, Polygon, Color };

/// The keys that say how a new shape joins the selection, as they are when it is begun.
struct Modifiers {
  bool shift;
  bool control;
  bool alt;
};

/// Points are pixels of the picture and may lie outside it.
class SelectionTool {
 public:
  explicit SelectionTool(Document& document) : document_(document) {}

  [[nodiscard]] Tool tool() const { return tool_; }
  void setTool(Tool tool);
  /// A Combine value: how shapes join the selection when no key says otherwise.
  [[nodiscard]] int mode() const { return mode_; }
  void setMode(int mode) { mode_ = mode; }

  /// Something is drawn that is not part of the selection yet.
  [[nodiscard]] bool drawing() const { return !points_.empty(); }
  // These return true when the selection has changed.
  bool press(POINT pixel, Modifiers modifiers);
  bool move(POINT pixel);
  bool release(POINT pixel);
  /// Closes the polygon.
  bool finish();
  /// Gives up what is drawn. False: there was nothing.
  bool cancel();

  /// Draws what is being drawn.
  void paint(HDC dc, const Zoom& zoom) const;

  /// The selection of the document is set by a Combine value and a shape; an empty result is no selection.
  template <typename Shape>
  void select(int mode, Shape shape) {
    shape(document_.handle(), modeFor(mode));
    dropEmpty();
  }

 private:
  [[nodiscard]] int modeFor(int mode) const;
  void dropEmpty();
  [[nodiscard]] RECT box() const;

  Document& document_;
  Tool tool_ = Tool::Rectangle;
  int mode_ = CombineSet;
  int shapeMode_ = CombineSet;
  std::vector<POINT> points_;  /// Rectangle, ellipse: two corners. Polygon: the corners, the last follows the mouse.
};

}  // namespace zavoview
