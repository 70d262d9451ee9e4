// The window that shows the picture: scrolling, zooming, painting, and the mouse for the selection tools.
#pragma once

#include <functional>
#include <utility>
#include <windows.h>

#include "document.h"
#include "picture_painter.h"
#include "selection_tool.h"
#include "zoom.h"

namespace zavoview {

class Canvas {
 public:
  Canvas(Document& document, SelectionTool& tool) : document_(document), tool_(tool) {}
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  void create(HWND parent);
  [[nodiscard]] HWND window() const { return window_; }
  [[nodiscard]] const Zoom& zoom() const { return zoom_; }
  PicturePainter& painter() { return painter_; }

  /// Pixels or size of the picture are others now.
  void pictureChanged();
  /// Pixels within a rectangle are.
  void pictureChanged(const RECT& part);
  void repaint() { InvalidateRect(window_, nullptr, FALSE); }
  /// Whether Alt served a selection since the last call: letting go of it is no call for the menu then.
  bool takeAltUse() { return std::exchange(altUsed_, false); }
  /// Changes the zoom about the middle of the view, or of the mouse when that is given.
  void changeZoom(const std::function<void(Zoom&, POINT anchor)>& change, const POINT* anchor = nullptr);

  std::function<void(POINT pixel)> onHover;  /// The mouse is over this pixel, or outside the picture.
  std::function<void()> onZoom;              /// The scale is another one.
  std::function<void()> onSelectionBegin;    /// Before a tool changes the selection.
  std::function<void()> onSelection;         /// After it.

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);
  void layout();
  void showScrollBars();
  void paint();
  void drawContents(HDC screen, HDC dc, const RECT& dirty);
  void marchAnts();
  void scroll(int bar, int request);
  void scrollBy(int x, int y);
  bool key(WPARAM key);
  void wheel(WPARAM wParam, LPARAM lParam);
  void mousePress(POINT point, WPARAM keys);
  void mouseMove(POINT point, WPARAM keys);
  void mouseRelease(POINT point);
  void selectionDone(bool changed);

  Document& document_;
  SelectionTool& tool_;
  HWND window_ = nullptr;
  Zoom zoom_;
  PicturePainter painter_;
  unsigned antPhase_ = 0;
  bool inLayout_ = false;
  bool dragging_ = false;  /// The hand holds the picture.
  bool altUsed_ = false;
  POINT dragStart_{};
  POINT dragOrigin_{};
};

}  // namespace zavoview
