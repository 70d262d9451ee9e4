// The main window and what belongs to it.
#pragma once

#include <string>
#include <windows.h>
// Needs the rest of windows.h first.
#include <shellapi.h>

#include "adjust_bar.h"
#include "animation_player.h"
#include "canvas.h"
#include "document.h"
#include "selection_tool.h"
#include "status_bar.h"

namespace zavoview {

class Viewer {
 public:
  Viewer();
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;

  void create(int show);
  [[nodiscard]] HWND window() const { return window_; }

  /// Opens a picture or an animation; tells the user when that fails.
  void open(const std::string& path);
  /// Puts in a picture that has no file.
  void openUnnamed(Picture picture, const std::string& title);
  /// Asks what becomes of changes. False: the user wants to stay.
  bool confirmDiscard();
  /// Asks for a name when there is none, or always. False: the user cancelled.
  bool save(bool askName);
  /// Runs a change of the picture that can be undone and shows the result. Throws a Failure.
  void change(const std::string& work, const Document::Operation& operation);

  void pictureChanged();
  void selectionChanged();
  void layout();
  void toggleFullScreen();
  /// Ends what is going on: a shape that is drawn, the animation, the selection, the full screen.
  void cancel();
  /// Shows a message box.
  void complain(const std::string& message);

  Document document;
  SelectionTool tool{document};
  Canvas canvas{document, tool};
  AnimationPlayer animation{document};
  StatusBar status;
  AdjustBar adjust;
  COLORREF fillColor = RGB(200, 60, 40);

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);
  void createChildren();
  void load(const std::string& path);
  void openDropped(HDROP drop);
  void showTitle();
  void showStatus();
  void showPixel(POINT pixel);

  HWND window_ = nullptr;
  std::string message_;          /// What came of the last change, where that is not plain to see.
  WINDOWPLACEMENT placement_{};  /// Before the full screen.
  HMENU menu_ = nullptr;         /// Taken off the window for the full screen.
  bool fullScreen_ = false;
  POINT hover_{-1, -1};
};

}  // namespace zavoview
