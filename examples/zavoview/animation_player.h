// An animation that is open: its frames, and the playback of them onto the picture of the document.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <windows.h>

#include "common/animation.h"
#include "document.h"

namespace zavoview {

class AnimationPlayer {
 public:
  /// Its timer runs on this window: the window hands WM_TIMER of `timer` to step().
  static constexpr UINT_PTR timer = 7;
  explicit AnimationPlayer(Document& document) : document_(document) {}
  AnimationPlayer(const AnimationPlayer&) = delete;
  AnimationPlayer& operator=(const AnimationPlayer&) = delete;
  ~AnimationPlayer() { close(); }

  /// Takes the frames over and makes the area they are shown on the document's picture.
  void open(HWND window, zv::Animation animation, const std::string& path);
  /// Forgets the frames.
  void close();
  [[nodiscard]] bool loaded() const { return animation_.has_value(); }
  /// The playback has the picture; else it was released and is like any other picture.
  [[nodiscard]] bool attached() const { return playback_ != nullptr; }
  [[nodiscard]] bool playing() const { return playing_; }

  void play();
  void pause();
  /// Leaves the picture as it is at this moment, to be worked on. Playing begins again with the first frame.
  void release();
  void step();
  void nextFrame();
  void firstFrame();
  /// The frame that is seen, from 0 on, and how many there are.
  [[nodiscard]] int frame() const { return shownFrame_; }
  [[nodiscard]] unsigned frameCount() const { return loaded() ? animation_->frames.count() : 0; }

  std::function<void(const RECT& part)> onUpdate;  /// These pixels of the picture are others now.

 private:
  void attach();
  void run(bool onlyOneFrame);
  void reportUpdate();

  Document& document_;
  std::optional<zv::Animation> animation_;
  PlaybackHandle playback_ = nullptr;
  std::string path_;
  HWND window_ = nullptr;
  bool playing_ = false;
  int shownFrame_ = -1;
};

}  // namespace zavoview
