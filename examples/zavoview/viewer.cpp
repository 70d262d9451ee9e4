// The main window: its parts, opening and saving, and what it tells in its title and its status bar.
#include "viewer.h"

#include "busy.h"
#include "commands.h"
#include "common/errors.h"
#include "common/text.h"
#include "common/wic.h"
#include "file_dialogs.h"
#include "resource.h"
#include "window_owner.h"

namespace zavoview {

namespace {

constexpr wchar_t className[] = L"ZavoviewWindow";
constexpr char programName[] = "zavoview";
constexpr COLORREF noPixel = 0x80000000;

}  // namespace

Viewer::Viewer() {
  canvas.onHover = [this](POINT pixel) { showPixel(pixel); };
  canvas.onZoom = [this] { showStatus(); };
  canvas.onSelectionBegin = [this] { animation.release(); };
  canvas.onSelection = [this] { selectionChanged(); };
  animation.onUpdate = [this](const RECT& part) {
    canvas.pictureChanged(part);
    showStatus();
  };
  adjust.onChange = [this] { canvas.repaint(); };
}

void Viewer::create(int show) {
  WNDCLASSW type{};
  type.lpfnWndProc = procedure;
  type.hInstance = GetModuleHandleW(nullptr);
  type.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  type.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
  type.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
  type.lpszMenuName = MAKEINTRESOURCEW(IDR_MAIN);
  type.lpszClassName = className;
  RegisterClassW(&type);
  CreateWindowExW(WS_EX_ACCEPTFILES, className, L"", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT,
                  CW_USEDEFAULT, 960, 680, nullptr, nullptr, type.hInstance, this);
  ShowWindow(window_, show);
  UpdateWindow(window_);
}

void Viewer::createChildren() {
  status.create(window_);
  adjust.create(window_);
  canvas.create(window_);
  showTitle();
  showStatus();
}

LRESULT CALLBACK Viewer::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* const viewer = windowOwner<Viewer>(window, message, lParam);
  if (viewer == nullptr) return DefWindowProcW(window, message, wParam, lParam);
  viewer->window_ = window;
  try {
    return viewer->handle(message, wParam, lParam);
  } catch (const std::exception& error) {
    viewer->pictureChanged();
    viewer->complain(error.what());
    return 0;
  }
}

LRESULT Viewer::handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE:
      createChildren();
      return 0;
    case WM_SIZE:
      layout();
      return 0;
    case WM_SETFOCUS:
      SetFocus(canvas.window());
      return 0;
    case WM_MOUSEWHEEL:
      return SendMessageW(canvas.window(), message, wParam, lParam);
    case WM_COMMAND:
      runCommand(*this, LOWORD(wParam));
      return 0;
    case WM_INITMENUPOPUP:
      showCommandStates(*this, reinterpret_cast<HMENU>(wParam));
      return 0;
    case WM_DROPFILES:
      openDropped(reinterpret_cast<HDROP>(wParam));
      return 0;
    case WM_TIMER:
      if (wParam == AnimationPlayer::timer) animation.step();
      return 0;
    case WM_SYSCOMMAND:
      if ((wParam & 0xFFF0) == SC_KEYMENU && lParam == 0 && canvas.takeAltUse()) return 0;
      return DefWindowProcW(window_, message, wParam, lParam);
    case WM_QUERYNEWPALETTE:
    case WM_PALETTECHANGED:
      // Painting realises the palette of the picture.
      if (message == WM_QUERYNEWPALETTE || reinterpret_cast<HWND>(wParam) != window_) canvas.repaint();
      return TRUE;
    case WM_CLOSE:
      if (confirmDiscard()) DestroyWindow(window_);
      return 0;
    case WM_DESTROY:
      animation.close();
      PostQuitMessage(0);
      return 0;
    default:
      return DefWindowProcW(window_, message, wParam, lParam);
  }
}

void Viewer::layout() {
  RECT client;
  GetClientRect(window_, &client);
  const int bottom = client.bottom - status.layout(client.right);
  const int top = adjust.layout(client.right);
  MoveWindow(canvas.window(), 0, top, client.right, std::max(0, bottom - top), TRUE);
  showStatus();
}

void Viewer::openDropped(HDROP drop) {
  std::wstring path(DragQueryFileW(drop, 0, nullptr, 0), L'\0');
  DragQueryFileW(drop, 0, path.data(), static_cast<UINT>(path.size() + 1));
  DragFinish(drop);
  SetForegroundWindow(window_);
  if (confirmDiscard()) open(zv::narrow(path));
}

void Viewer::open(const std::string& path) {
  try {
    const Busy busy(status, "Opening");
    load(path);
  } catch (const std::exception& error) {
    complain(error.what());
  }
  pictureChanged();
  if (animation.attached()) animation.play();
}

void Viewer::load(const std::string& path) {
  zv::PictureFile file = zv::readPicture(path);
  std::optional<zv::Animation> film;
  if (file.format == "GIF") film.emplace(zv::readAnimation(path));
  tool.cancel();
  if (film && film->frames.count() > 1) {
    animation.open(window_, std::move(*film), path);
    return;
  }
  animation.close();
  document.adopt(std::move(file.picture), path, true);
  message_.clear();
}

void Viewer::openUnnamed(Picture picture, const std::string& title) {
  animation.close();
  tool.cancel();
  document.adopt(std::move(picture), title, false);
  pictureChanged();
}

bool Viewer::confirmDiscard() {
  if (!document.modified()) return true;
  const std::wstring question = zv::wide("Save the changes of " + document.name() + "?");
  const int answer =
      MessageBoxW(window_, question.c_str(), zv::wide(programName).c_str(), MB_YESNOCANCEL | MB_ICONQUESTION);
  return answer == IDNO || (answer == IDYES && save(false));
}

bool Viewer::save(bool askName) {
  std::string path = document.path();
  if (askName || !document.hasFile() || !canWrite(path)) {
    const std::optional<std::string> chosen = askSavePath(window_, document.name());
    if (!chosen) return false;
    path = *chosen;
  }
  document.save(path);
  showTitle();
  return true;
}

void Viewer::change(const std::string& work, const Document::Operation& operation) {
  animation.release();
  message_.clear();
  {
    const Busy busy(status, work);
    message_ = document.change(work, operation) ? "" : "Stopped";
  }
  pictureChanged();
}

void Viewer::pictureChanged() {
  canvas.pictureChanged();
  showTitle();
  showStatus();
}

void Viewer::selectionChanged() {
  canvas.repaint();
  showStatus();
}

void Viewer::showTitle() {
  std::string title = programName;
  if (document.hasPicture()) title = document.name() + " - " + title;
  if (document.modified()) title.insert(0, 1, '*');
  SetWindowTextW(window_, zv::wide(title).c_str());
}

void Viewer::showStatus() {
  if (!document.hasPicture()) {
    status.set(StatusBar::Message, "Open a picture with Ctrl+O, or drop one here");
    return;
  }
  const Picture& picture = document.picture();
  const double percent = canvas.zoom().scale() * 100;
  status.set(StatusBar::Scale, zv::format("%.*f %%", percent < 10 ? 1 : 0, percent));
  status.set(StatusBar::Picture, zv::format("%d x %d, %d bit%s", picture->Width, picture->Height, picture->BitsPerPixel,
                                            picture->BitsPerPixel == 1 ? "" : "s"));
  std::string selection;
  RECT bounds;
  if (document.hasSelection() && Zv_GetBitmapRgnBounds(document.handle(), nullptr, &bounds) == KSUCCESS)
    selection = zv::format("%ld, %ld: %ld x %ld", bounds.left, bounds.top, bounds.right - bounds.left,
                           bounds.bottom - bounds.top);
  status.set(StatusBar::Selection, selection);
  if (animation.attached())
    status.set(StatusBar::Message, zv::format("Frame %d of %u", animation.frame() + 1, animation.frameCount()));
  else
    status.set(StatusBar::Message, message_);
  showPixel(hover_);
}

void Viewer::showPixel(POINT pixel) {
  hover_ = pixel;
  const COLORREF color = document.hasPicture() ? Zv_GetPixelColor(document.handle(), pixel.y, pixel.x) : noPixel;
  if (color == noPixel) {
    status.set(StatusBar::Position, "");
    status.set(StatusBar::Color, "");
    return;
  }
  status.set(StatusBar::Position, zv::format("%ld, %ld", pixel.x, pixel.y));
  status.set(StatusBar::Color, zv::format("RGB %d, %d, %d", GetRValue(color), GetGValue(color), GetBValue(color)));
}

void Viewer::toggleFullScreen() {
  const auto style = static_cast<DWORD>(GetWindowLongW(window_, GWL_STYLE));
  fullScreen_ = !fullScreen_;
  ShowWindow(status.window(), fullScreen_ ? SW_HIDE : SW_SHOW);
  if (fullScreen_) {
    placement_.length = sizeof placement_;
    GetWindowPlacement(window_, &placement_);
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(window_, MONITOR_DEFAULTTONEAREST), &monitor);
    const RECT& rect = monitor.rcMonitor;
    SetWindowLongW(window_, GWL_STYLE, static_cast<LONG>(style & ~DWORD{WS_OVERLAPPEDWINDOW}));
    menu_ = GetMenu(window_);
    SetMenu(window_, nullptr);
    SetWindowPos(window_, HWND_TOP, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                 SWP_FRAMECHANGED);
  } else {
    SetWindowLongW(window_, GWL_STYLE, static_cast<LONG>(style | WS_OVERLAPPEDWINDOW));
    SetMenu(window_, menu_);
    SetWindowPlacement(window_, &placement_);
    SetWindowPos(window_, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_FRAMECHANGED);
  }
}

void Viewer::cancel() {
  if (tool.cancel()) {
    canvas.repaint();
  } else if (animation.playing()) {
    animation.pause();
  } else if (document.hasSelection()) {
    Zv_FreeBitmapRgn(document.handle());
    selectionChanged();
  } else if (fullScreen_) {
    toggleFullScreen();
  }
}

void Viewer::complain(const std::string& message) {
  MessageBoxW(window_, zv::wide(message).c_str(), zv::wide(programName).c_str(), MB_OK | MB_ICONWARNING);
}

}  // namespace zavoview
