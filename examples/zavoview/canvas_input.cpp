// What the user does in the canvas with mouse, wheel and keys.
#include <windowsx.h>

#include "canvas.h"

namespace zavoview {

namespace {

constexpr int lineStep = 40;  // pixels of the view that an arrow moves

POINT pointOf(LPARAM lParam) {
  return {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
}

}  // namespace

LRESULT Canvas::handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_HSCROLL:
      scroll(SB_HORZ, LOWORD(wParam));
      return 0;
    case WM_VSCROLL:
      scroll(SB_VERT, LOWORD(wParam));
      return 0;
    case WM_MOUSEWHEEL:
      wheel(wParam, lParam);
      return 0;
    case WM_KEYDOWN:
      if (key(wParam)) return 0;
      break;
    case WM_LBUTTONDOWN:
      SetFocus(window_);
      mousePress(pointOf(lParam), wParam);
      return 0;
    case WM_LBUTTONDBLCLK:
      if (tool_.drawing())
        selectionDone(tool_.finish());
      else
        mousePress(pointOf(lParam), wParam);
      return 0;
    case WM_MOUSEMOVE:
      mouseMove(pointOf(lParam), wParam);
      return 0;
    case WM_LBUTTONUP:
      mouseRelease(pointOf(lParam));
      return 0;
    case WM_CAPTURECHANGED:
      dragging_ = false;
      return 0;
    case WM_SETCURSOR:
      if (LOWORD(lParam) == HTCLIENT && tool_.tool() == Tool::Hand) {
        SetCursor(LoadCursorW(nullptr, IDC_SIZEALL));
        return TRUE;
      }
      break;
    default:
      break;
  }
  return DefWindowProcW(window_, message, wParam, lParam);
}

void Canvas::scroll(int bar, int request) {
  SCROLLINFO info{};
  info.cbSize = sizeof info;
  info.fMask = SIF_ALL;
  GetScrollInfo(window_, bar, &info);
  int position = info.nPos;
  switch (request) {
    case SB_LINEUP:
      position -= lineStep;
      break;
    case SB_LINEDOWN:
      position += lineStep;
      break;
    case SB_PAGEUP:
      position -= static_cast<int>(info.nPage);
      break;
    case SB_PAGEDOWN:
      position += static_cast<int>(info.nPage);
      break;
    case SB_TOP:
      position = 0;
      break;
    case SB_BOTTOM:
      position = info.nMax;
      break;
    case SB_THUMBTRACK:
      position = info.nTrackPos;
      break;
    default:
      return;
  }
  const int step = position - info.nPos;
  if (bar == SB_HORZ)
    scrollBy(step, 0);
  else
    scrollBy(0, step);
}

void Canvas::scrollBy(int x, int y) {
  const POINT origin = zoom_.origin();
  zoom_.scrollTo({origin.x + x, origin.y + y});
  layout();
}

bool Canvas::key(WPARAM key) {
  switch (key) {
    case VK_LEFT:
      scroll(SB_HORZ, SB_LINEUP);
      return true;
    case VK_RIGHT:
      scroll(SB_HORZ, SB_LINEDOWN);
      return true;
    case VK_UP:
      scroll(SB_VERT, SB_LINEUP);
      return true;
    case VK_DOWN:
      scroll(SB_VERT, SB_LINEDOWN);
      return true;
    case VK_PRIOR:
      scroll(SB_VERT, SB_PAGEUP);
      return true;
    case VK_NEXT:
      scroll(SB_VERT, SB_PAGEDOWN);
      return true;
    case VK_HOME:
      scroll(SB_VERT, SB_TOP);
      return true;
    case VK_END:
      scroll(SB_VERT, SB_BOTTOM);
      return true;
    case VK_RETURN:
      selectionDone(tool_.finish());
      return true;
    default:
      return false;
  }
}

/// Ctrl zooms about the mouse, Shift scrolls sideways.
void Canvas::wheel(WPARAM wParam, LPARAM lParam) {
  const int delta = GET_WHEEL_DELTA_WPARAM(wParam);
  if ((LOWORD(wParam) & MK_CONTROL) == 0) {
    const int step = -delta * 3 * lineStep / WHEEL_DELTA;
    if ((LOWORD(wParam) & MK_SHIFT) != 0)
      scrollBy(step, 0);
    else
      scrollBy(0, step);
    return;
  }
  POINT mouse = pointOf(lParam);
  ScreenToClient(window_, &mouse);
  changeZoom(
      [delta](Zoom& zoom, POINT anchor) {
        if (delta > 0)
          zoom.zoomIn(anchor);
        else
          zoom.zoomOut(anchor);
      },
      &mouse);
}

void Canvas::mousePress(POINT point, WPARAM keys) {
  if (!document_.hasPicture()) return;
  SetCapture(window_);
  if (tool_.tool() == Tool::Hand) {
    dragging_ = true;
    dragStart_ = point;
    dragOrigin_ = zoom_.origin();
    return;
  }
  onSelectionBegin();
  const Modifiers modifiers{(keys & MK_SHIFT) != 0, (keys & MK_CONTROL) != 0, GetKeyState(VK_MENU) < 0};
  altUsed_ = modifiers.alt;
  selectionDone(tool_.press(zoom_.toPicture(point), modifiers));
}

void Canvas::mouseMove(POINT point, WPARAM keys) {
  if (!document_.hasPicture()) return;
  const POINT pixel = zoom_.toPicture(point);
  onHover(pixel);
  if (dragging_ && (keys & MK_LBUTTON) != 0) {
    zoom_.scrollTo({dragOrigin_.x + dragStart_.x - point.x, dragOrigin_.y + dragStart_.y - point.y});
    layout();
  } else if (tool_.drawing()) {
    tool_.move(pixel);
    repaint();
  }
}

void Canvas::mouseRelease(POINT point) {
  if (GetCapture() == window_) ReleaseCapture();
  if (tool_.drawing()) selectionDone(tool_.release(zoom_.toPicture(point)));
}

void Canvas::selectionDone(bool changed) {
  if (changed) onSelection();
  repaint();
}

}  // namespace zavoview
