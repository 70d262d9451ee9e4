// Starts zavoview and works with it as a user does: by commands, mouse and keys; looks at its window and its texts.
#pragma once

#include <functional>
#include <string>
#include <windows.h>

#include "support/test_bitmap.h"

class ViewerDriver {
 public:
  /// Starts the program and waits for its window. The process ends with the driver.
  explicit ViewerDriver(const std::string& arguments = "");
  ViewerDriver(const ViewerDriver&) = delete;
  ViewerDriver& operator=(const ViewerDriver&) = delete;
  ~ViewerDriver();

  [[nodiscard]] HWND window() const { return window_; }
  [[nodiscard]] HWND canvas() const;
  /// The part of the window that holds a control.
  [[nodiscard]] HWND parentOf(int control) const;
  [[nodiscard]] std::string title() const;
  /// The text of a part of the status bar.
  [[nodiscard]] std::string status(int part) const;

  /// Runs a command to its end.
  void command(int id) const { SendMessageW(window_, WM_COMMAND, static_cast<WPARAM>(id), 0); }
  /// Begins a command that shows a dialog, and waits for that.
  [[nodiscard]] HWND dialogOf(int commandId) const;
  /// The dialog or message box that the program shows; null when there is none after some seconds.
  [[nodiscard]] HWND dialog() const;
  /// Presses a button of a dialog and waits until the dialog is gone.
  void press(HWND dialog, int button) const;
  /// What a message box says.
  [[nodiscard]] static std::string messageOf(HWND box);
  /// A key that goes to the canvas, without keys held down with it.
  void key(WPARAM key) const;

  /// Runs a command to its end with a key waiting in the queue, as if it were pressed during the command.
  void commandAndKey(int id, WPARAM key) const;
  /// Makes the window the one that the keyboard goes to.
  [[nodiscard]] bool bringToFront() const;
  /// Presses a key of the keyboard or lets go of it, and gives the window time to know.
  void hold(BYTE key, bool down) const;
  /// A key of the keyboard, with others held down.
  void typeKey(BYTE key, std::initializer_list<BYTE> held) const;

  // The mouse, at points of the canvas, with the keys MK_SHIFT and MK_CONTROL held down or not.
  void hover(POINT point) const;
  void drag(POINT from, POINT to, WPARAM keys = 0) const;
  void click(POINT point, WPARAM keys = 0) const;
  void doubleClick(POINT point) const;

  /// Hands over a file as if it were dropped on the window.
  void drop(const std::string& path) const;

  /// What is on the screen where the canvas is.
  [[nodiscard]] zavotest::Picture seen() const;
  /// Waits until something holds; false when it does not within some seconds.
  [[nodiscard]] static bool soon(const std::function<bool()>& holds);
  /// Waits for the end of the program; gives its exit code, or STILL_ACTIVE.
  [[nodiscard]] DWORD exitCode() const;

 private:
  PROCESS_INFORMATION process_{};
  HWND window_ = nullptr;
};
