// The window itself, its size and its painting; what the user does in it is in canvas_input.cpp.
#include "canvas.h"

#include "resource.h"
#include "window_owner.h"

namespace zavoview {

namespace {

constexpr wchar_t className[] = L"ZavoviewCanvas";
constexpr UINT antTimer = 1;
constexpr UINT antMilliseconds = 120;

/// A bitmap to draw into out of sight, put on the screen at the end.
class BackBuffer {
 public:
  BackBuffer(HDC screen, const RECT& part)
      : screen_(screen),
        part_(part),
        dc_(CreateCompatibleDC(screen)),
        bitmap_(CreateCompatibleBitmap(screen, part.right - part.left, part.bottom - part.top)),
        previous_(SelectObject(dc_, bitmap_)) {
    SetViewportOrgEx(dc_, -part.left, -part.top, nullptr);
  }
  BackBuffer(const BackBuffer&) = delete;
  BackBuffer& operator=(const BackBuffer&) = delete;
  ~BackBuffer() {
    BitBlt(screen_, part_.left, part_.top, part_.right - part_.left, part_.bottom - part_.top, dc_, part_.left,
           part_.top, SRCCOPY);
    SelectObject(dc_, previous_);
    DeleteObject(bitmap_);
    DeleteDC(dc_);
  }
  [[nodiscard]] HDC dc() const { return dc_; }

 private:
  HDC screen_;
  RECT part_;
  HDC dc_;
  HBITMAP bitmap_;
  HGDIOBJ previous_;
};

}  // namespace

void Canvas::create(HWND parent) {
  WNDCLASSW type{};
  type.style = CS_DBLCLKS;
  type.lpfnWndProc = procedure;
  type.hInstance = GetModuleHandleW(nullptr);
  type.hCursor = LoadCursorW(nullptr, IDC_CROSS);
  type.lpszClassName = className;
  RegisterClassW(&type);
  window_ = CreateWindowExW(WS_EX_CLIENTEDGE, className, L"", WS_CHILD | WS_VISIBLE | WS_HSCROLL | WS_VSCROLL, 0, 0, 0,
                            0, parent, reinterpret_cast<HMENU>(IDC_CANVAS), type.hInstance, this);
  SetTimer(window_, antTimer, antMilliseconds, nullptr);
  layout();
}

LRESULT CALLBACK Canvas::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* const canvas = windowOwner<Canvas>(window, message, lParam);
  if (canvas == nullptr) return DefWindowProcW(window, message, wParam, lParam);
  canvas->window_ = window;
  switch (message) {
    case WM_SIZE:
      canvas->layout();
      return 0;
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT:
      canvas->paint();
      return 0;
    case WM_TIMER:
      if (wParam == antTimer) canvas->marchAnts();
      return 0;
    default:
      return canvas->handle(message, wParam, lParam);
  }
}

void Canvas::pictureChanged() {
  painter_.forgetCopy();
  if (document_.hasPicture()) zoom_.setPicture({document_.picture()->Width, document_.picture()->Height});
  layout();
}

void Canvas::pictureChanged(const RECT& part) {
  painter_.forgetCopy();
  const POINT first = zoom_.toView({part.left, part.top});
  const POINT last = zoom_.toView({part.right, part.bottom});
  // Smooth scaling carries a pixel's colour to its neighbours.
  const int reach = static_cast<int>(zoom_.scale()) + 2;
  const RECT seen{first.x - reach, first.y - reach, last.x + reach, last.y + reach};
  InvalidateRect(window_, &seen, FALSE);
}

void Canvas::changeZoom(const std::function<void(Zoom&, POINT)>& change, const POINT* anchor) {
  const SIZE view = zoom_.view();
  change(zoom_, anchor != nullptr ? *anchor : POINT{view.cx / 2, view.cy / 2});
  layout();
  onZoom();
}

/// Scroll bars are there only when they are needed, and each takes room that can make the other needed.
void Canvas::layout() {
  if (inLayout_ || window_ == nullptr) return;
  inLayout_ = true;
  showScrollBars();
  RECT client;
  GetClientRect(window_, &client);
  zoom_.setView({client.right, client.bottom});
  const SIZE scaled = zoom_.scaled();
  for (const int bar : {SB_HORZ, SB_VERT}) {
    const bool across = bar == SB_HORZ;
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS | SIF_DISABLENOSCROLL;
    info.nMax = (across ? scaled.cx : scaled.cy) - 1;
    info.nPage = static_cast<UINT>(across ? client.right : client.bottom);
    info.nPos = across ? zoom_.origin().x : zoom_.origin().y;
    SetScrollInfo(window_, bar, &info, TRUE);
  }
  inLayout_ = false;
  repaint();
}

void Canvas::showScrollBars() {
  RECT whole;
  GetWindowRect(window_, &whole);
  const int width = whole.right - whole.left - 2 * GetSystemMetrics(SM_CXEDGE);
  const int height = whole.bottom - whole.top - 2 * GetSystemMetrics(SM_CYEDGE);
  bool across = false;
  bool down = false;
  if (document_.hasPicture() && !zoom_.fitting()) {
    const SIZE scaled = zoom_.scaled();
    down = scaled.cy > height;
    across = scaled.cx > width - (down ? GetSystemMetrics(SM_CXVSCROLL) : 0);
    down = scaled.cy > height - (across ? GetSystemMetrics(SM_CYHSCROLL) : 0);
  }
  ShowScrollBar(window_, SB_HORZ, across);
  ShowScrollBar(window_, SB_VERT, down);
}

void Canvas::paint() {
  PAINTSTRUCT work;
  const HDC screen = BeginPaint(window_, &work);
  if (!IsRectEmpty(&work.rcPaint)) {
    const BackBuffer buffer(screen, work.rcPaint);
    drawContents(screen, buffer.dc(), work.rcPaint);
  }
  EndPaint(window_, &work);
}

void Canvas::drawContents(HDC screen, HDC dc, const RECT& dirty) {
  FillRect(dc, &dirty, GetSysColorBrush(COLOR_APPWORKSPACE));
  if (!document_.hasPicture()) return;
  const RECT place = zoom_.pictureRect();
  painter_.paint(screen, dc, document_.picture(), place, dirty);
  if (document_.hasSelection()) paintOutline(dc, document_.picture(), place, antPhase_);
  tool_.paint(dc, zoom_);
}

void Canvas::marchAnts() {
  if (!document_.hasSelection()) return;
  antPhase_ = (antPhase_ + 1) % 8;
  const HDC dc = GetDC(window_);
  paintOutline(dc, document_.picture(), zoom_.pictureRect(), antPhase_);
  ReleaseDC(window_, dc);
}

}  // namespace zavoview
