#include "viewer/viewer_driver.h"

#include <zavo.h>

#include <gtest/gtest.h>
// These need the rest of windows.h first.
#include <commctrl.h>
#include <shlobj.h>

#include "support/seen_picture.h"
#include "zavoview/resource.h"

namespace {

constexpr DWORD patience = 15000;  // milliseconds

std::string textOf(HWND window) {
  char text[1024] = "";
  SendMessageA(window, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
  return text;
}

/// A visible top window of a process.
HWND findWindow(DWORD process, const char* className) {
  HWND window = nullptr;
  while ((window = FindWindowExA(nullptr, window, className, nullptr)) != nullptr) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == process && IsWindowVisible(window)) break;
  }
  return window;
}

/// Memory of another process.
class RemoteMemory {
 public:
  RemoteMemory(HANDLE process, size_t bytes)
      : process_(process), address_(VirtualAllocEx(process, nullptr, bytes, MEM_COMMIT, PAGE_READWRITE)) {}
  RemoteMemory(const RemoteMemory&) = delete;
  RemoteMemory& operator=(const RemoteMemory&) = delete;
  ~RemoteMemory() { VirtualFreeEx(process_, address_, 0, MEM_RELEASE); }
  [[nodiscard]] void* address() const { return address_; }

 private:
  HANDLE process_;
  void* address_;
};

LPARAM pointParameter(POINT point) {
  return MAKELPARAM(point.x, point.y);
}

}  // namespace

ViewerDriver::ViewerDriver(const std::string& arguments) {
  char program[MAX_PATH];
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  const std::string folder = std::string(program).substr(0, std::string(program).find_last_of('\\') + 1);
  std::string line = "\"" + folder + "zavoview.exe\" " + arguments;
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  EXPECT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process_));
  EXPECT_TRUE(soon([this] { return (window_ = findWindow(process_.dwProcessId, "ZavoviewWindow")) != nullptr; }));
  WaitForInputIdle(process_.hProcess, patience);
  SetWindowPos(window_, nullptr, 0, 0, 900, 600, SWP_NOZORDER);
}

ViewerDriver::~ViewerDriver() {
  TerminateProcess(process_.hProcess, 1);
  WaitForSingleObject(process_.hProcess, patience);
  CloseHandle(process_.hProcess);
  CloseHandle(process_.hThread);
}

HWND ViewerDriver::canvas() const {
  return GetDlgItem(window_, IDC_CANVAS);
}

HWND ViewerDriver::parentOf(int control) const {
  HWND part = GetWindow(window_, GW_CHILD);
  while (part != nullptr && GetDlgItem(part, control) == nullptr) part = GetWindow(part, GW_HWNDNEXT);
  return part;
}

std::string ViewerDriver::title() const {
  return textOf(window_);
}

std::string ViewerDriver::status(int part) const {
  const RemoteMemory memory(process_.hProcess, 1024);
  SendMessageW(GetDlgItem(window_, IDC_STATUS), SB_GETTEXTA, static_cast<WPARAM>(part),
               reinterpret_cast<LPARAM>(memory.address()));
  char text[512] = "";
  ReadProcessMemory(process_.hProcess, memory.address(), text, sizeof text - 1, nullptr);
  return text;
}

HWND ViewerDriver::dialog() const {
  HWND found = nullptr;
  EXPECT_TRUE(soon([&] { return (found = findWindow(process_.dwProcessId, "#32770")) != nullptr; })) << "no dialog";
  return found;
}

HWND ViewerDriver::dialogOf(int commandId) const {
  PostMessageW(window_, WM_COMMAND, static_cast<WPARAM>(commandId), 0);
  return dialog();
}

void ViewerDriver::press(HWND dialog, int button) const {
  PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(button), reinterpret_cast<LPARAM>(GetDlgItem(dialog, button)));
  EXPECT_TRUE(soon([dialog] { return !IsWindow(dialog); })) << "the dialog stays";
}

std::string ViewerDriver::messageOf(HWND box) {
  std::string result;
  for (HWND child = nullptr; (child = FindWindowExA(box, child, "Static", nullptr)) != nullptr;)
    result += textOf(child);
  return result;
}

void ViewerDriver::key(WPARAM key) const {
  PostMessageW(canvas(), WM_KEYDOWN, key, 1);
  PostMessageW(canvas(), WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}

void ViewerDriver::commandAndKey(int id, WPARAM key) const {
  // Messages that are sent go before those in the queue.
  SuspendThread(process_.hThread);
  this->key(key);
  SendNotifyMessageW(window_, WM_COMMAND, static_cast<WPARAM>(id), 0);
  ResumeThread(process_.hThread);
  SendMessageW(window_, WM_NULL, 0, 0);
}

bool ViewerDriver::bringToFront() const {
  SetForegroundWindow(window_);
  return soon([this] { return GetForegroundWindow() == window_; });
}

void ViewerDriver::hold(BYTE key, bool down) const {
  keybd_event(key, 0, down ? 0 : KEYEVENTF_KEYUP, 0);
  Sleep(200);
}

void ViewerDriver::typeKey(BYTE key, std::initializer_list<BYTE> held) const {
  for (const BYTE other : held) keybd_event(other, 0, 0, 0);
  keybd_event(key, 0, 0, 0);
  keybd_event(key, 0, KEYEVENTF_KEYUP, 0);
  for (const BYTE other : held) keybd_event(other, 0, KEYEVENTF_KEYUP, 0);
}

void ViewerDriver::hover(POINT point) const {
  SendMessageW(canvas(), WM_MOUSEMOVE, 0, pointParameter(point));
}

void ViewerDriver::drag(POINT from, POINT to, WPARAM keys) const {
  const POINT middle{(from.x + to.x) / 2, (from.y + to.y) / 2};
  SendMessageW(canvas(), WM_LBUTTONDOWN, MK_LBUTTON | keys, pointParameter(from));
  SendMessageW(canvas(), WM_MOUSEMOVE, MK_LBUTTON | keys, pointParameter(middle));
  SendMessageW(canvas(), WM_MOUSEMOVE, MK_LBUTTON, pointParameter(to));
  SendMessageW(canvas(), WM_LBUTTONUP, 0, pointParameter(to));
}

void ViewerDriver::click(POINT point, WPARAM keys) const {
  hover(point);
  SendMessageW(canvas(), WM_LBUTTONDOWN, MK_LBUTTON | keys, pointParameter(point));
  SendMessageW(canvas(), WM_LBUTTONUP, keys, pointParameter(point));
}

void ViewerDriver::doubleClick(POINT point) const {
  click(point);
  SendMessageW(canvas(), WM_LBUTTONDBLCLK, MK_LBUTTON, pointParameter(point));
  SendMessageW(canvas(), WM_LBUTTONUP, 0, pointParameter(point));
}

void ViewerDriver::drop(const std::string& path) const {
  std::string bytes(sizeof(DROPFILES), '\0');
  DROPFILES header{};
  header.pFiles = sizeof header;
  memcpy(bytes.data(), &header, sizeof header);
  bytes += path + std::string(2, '\0');
  // The receiver frees it. Memory that is not moveable is its own handle.
  void* const memory = VirtualAllocEx(process_.hProcess, nullptr, bytes.size(), MEM_COMMIT, PAGE_READWRITE);
  WriteProcessMemory(process_.hProcess, memory, bytes.data(), bytes.size(), nullptr);
  SendMessageW(window_, WM_DROPFILES, reinterpret_cast<WPARAM>(memory), 0);
}

zavotest::Picture ViewerDriver::seen() const {
  RECT rect;
  GetClientRect(canvas(), &rect);
  MapWindowPoints(canvas(), nullptr, reinterpret_cast<POINT*>(&rect), 2);
  const HDC screen = GetDC(nullptr);
  zavotest::TestBitmap bitmap;
  EXPECT_EQ(KSUCCESS, Zv_ScreenCaptureBitmap(screen, &bitmap, &rect));
  ReleaseDC(nullptr, screen);
  return zavotest::seenOf(bitmap);
}

bool ViewerDriver::soon(const std::function<bool()>& holds) {
  const DWORD start = GetTickCount();
  while (!holds()) {
    if (GetTickCount() - start > patience) return false;
    Sleep(20);
  }
  return true;
}

DWORD ViewerDriver::exitCode() const {
  DWORD code = STILL_ACTIVE;
  WaitForSingleObject(process_.hProcess, patience);
  GetExitCodeProcess(process_.hProcess, &code);
  return code;
}
