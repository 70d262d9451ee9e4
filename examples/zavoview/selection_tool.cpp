#include "selection_tool.h"

#include <algorithm>

namespace zavoview {

namespace {

/// Windows' own habits: Shift extends, Ctrl toggles; Alt takes away, as painting programs have it.
int combineMode(Modifiers modifiers, int otherwise) {
  if (modifiers.shift && modifiers.alt) return CombineAnd;
  if (modifiers.shift) return CombineOr;
  if (modifiers.alt) return CombineAndNotRegion;
  if (modifiers.control) return CombineXor;
  return otherwise;
}

bool samePoint(POINT a, POINT b) {
  return a.x == b.x && a.y == b.y;
}

/// A line that shows on any ground: white below, black dashes above.
template <typename Draw>
void drawTwice(HDC dc, Draw draw) {
  const HGDIOBJ previousBrush = SelectObject(dc, GetStockObject(NULL_BRUSH));
  const int previousMode = SetBkMode(dc, TRANSPARENT);
  for (const HPEN pen : {CreatePen(PS_SOLID, 1, RGB(255, 255, 255)), CreatePen(PS_DOT, 1, RGB(0, 0, 0))}) {
    const HGDIOBJ previousPen = SelectObject(dc, pen);
    draw();
    SelectObject(dc, previousPen);
    DeleteObject(pen);
  }
  SetBkMode(dc, previousMode);
  SelectObject(dc, previousBrush);
}

}  // namespace

void SelectionTool::setTool(Tool tool) {
  tool_ = tool;
  points_.clear();
}

/// Without a selection there is nothing to add to or to toggle, though the library takes it for the whole picture.
int SelectionTool::modeFor(int mode) const {
  if (!document_.hasSelection() && (mode == CombineOr || mode == CombineXor)) return CombineSet;
  return mode;
}

void SelectionTool::dropEmpty() {
  unsigned area = 0;
  if (document_.hasSelection() && Zv_GetBitmapRgnArea(document_.handle(), &area) == KSUCCESS && area == 0)
    Zv_FreeBitmapRgn(document_.handle());
}

bool SelectionTool::press(POINT pixel, Modifiers modifiers) {
  const int mode = combineMode(modifiers, mode_);
  if (tool_ == Tool::Color) {
    const COLORREF color = Zv_GetPixelColor(document_.handle(), pixel.y, pixel.x);
    if (color == 0x80000000) return false;
    select(mode, [&](BitmapHandle* bitmap, int combine) { Zv_SetBitmapRgnColor(bitmap, color, combine); });
    return true;
  }
  if (tool_ == Tool::Hand) return false;
  if (tool_ == Tool::Polygon && drawing()) {
    points_.back() = pixel;
    points_.push_back(pixel);
    return false;
  }
  shapeMode_ = mode;
  points_ = {pixel, pixel};
  return false;
}

bool SelectionTool::move(POINT pixel) {
  if (drawing()) points_.back() = pixel;
  return false;
}

bool SelectionTool::release(POINT pixel) {
  if (!drawing() || tool_ == Tool::Polygon) return false;
  points_.back() = pixel;
  return finish();
}

RECT SelectionTool::box() const {
  const auto [left, right] = std::minmax(points_.front().x, points_.back().x);
  const auto [top, bottom] = std::minmax(points_.front().y, points_.back().y);
  return {left, top, right + 1, bottom + 1};
}

bool SelectionTool::finish() {
  if (!drawing()) return false;
  const RECT rect = box();
  std::vector<POINT> corners = std::exchange(points_, {});
  if (tool_ == Tool::Polygon) {
    // A double click sets the last corner twice, and the moving one follows.
    corners.erase(std::unique(corners.begin(), corners.end(), samePoint), corners.end());
    if (corners.size() < 3) return false;
    select(shapeMode_, [&](BitmapHandle* bitmap, int combine) {
      Zv_SetBitmapRgnPolygon(bitmap, nullptr, corners.data(), static_cast<int>(corners.size()), POLYGON_ALTERNATE,
                             combine);
    });
    return true;
  }
  if (samePoint(corners.front(), corners.back())) {
    // A click without a drag takes the selection away, and leaves it where something is to be combined with it.
    if (shapeMode_ != CombineSet || !document_.hasSelection()) return false;
    Zv_FreeBitmapRgn(document_.handle());
    return true;
  }
  select(shapeMode_, [&](BitmapHandle* bitmap, int combine) {
    // Of an ellipse the system leaves out the last row and column of its box.
    const RECT ellipse{rect.left, rect.top, rect.right + 1, rect.bottom + 1};
    if (tool_ == Tool::Ellipse)
      Zv_SetBitmapRgnEllipse(bitmap, nullptr, &ellipse, combine);
    else
      Zv_SetBitmapRgnRect(bitmap, nullptr, &rect, combine);
  });
  return true;
}

bool SelectionTool::cancel() {
  const bool wasDrawing = drawing();
  points_.clear();
  return wasDrawing;
}

void SelectionTool::paint(HDC dc, const Zoom& zoom) const {
  if (!drawing()) return;
  if (tool_ == Tool::Polygon) {
    std::vector<POINT> line;
    for (const POINT& pixel : points_) line.push_back(zoom.toView(pixel));
    drawTwice(dc, [&] { Polyline(dc, line.data(), static_cast<int>(line.size())); });
    return;
  }
  const RECT rect = box();
  const POINT first = zoom.toView({rect.left, rect.top});
  const POINT last = zoom.toView({rect.right, rect.bottom});
  drawTwice(dc, [&] {
    if (tool_ == Tool::Ellipse)
      Ellipse(dc, first.x, first.y, last.x, last.y);
    else
      Rectangle(dc, first.x, first.y, last.x, last.y);
  });
}

}  // namespace zavoview
