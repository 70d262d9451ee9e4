// An animation that is open: its frames, and the playback of them onto the picture of the document.
#pragma once

#include <functional>
#include <windows.h>

#include "document.h"

namespace zavoview {

/// The frames of a file in a list of the library, and the area they are shown on.
class AnimationFrames {
 public:
  AnimationFrames() = default;
  AnimationFrames(AnimationFrames&& other) noexcept
      : list(std::exchange(other.list, nullptr)), width(other.width), height(other.height) {}
  AnimationFrames& operator=(AnimationFrames&& other) noexcept {
    std::swap(list, other.list);
    width = other.width;
    height = other.height;
    return *this;
  }
  ~AnimationFrames() {
    if (list != nullptr) Zv_DestroyBitmapList(list);
  }
  [[nodiscard]] unsigned count() const;

  BitmapListHandle list = nullptr;
  int width = 0;
  int height = 0;
};

/// Reads all frames of a file with their places, delays and transparency. No frames: the file is no animation, it
/// holds a single picture. Throws a Failure that names the file.
AnimationFrames readAnimation(const std::string& path);

class Animation {
 public:
  /// Its timer runs on this window: the window hands WM_TIMER of `timer` to step().
  static constexpr UINT_PTR timer = 7;
  Animation(Document& document) : document_(document) {}
  Animation(const Animation&) = delete;
  Animation& operator=(const Animation&) = delete;
  ~Animation() { close(); }

  /// Takes the frames over and makes the area they are shown on the document's picture.
  void open(HWND window, AnimationFrames frames, const std::string& path);
  /// Forgets the frames.
  void close();
  [[nodiscard]] bool loaded() const { return frames_.list != nullptr; }
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
  [[nodiscard]] int frame() const;
  [[nodiscard]] unsigned frameCount() const { return frames_.count(); }

  std::function<void(const RECT& part)> onUpdate;  /// These pixels of the picture are others now.

 private:
  void attach();
  void run(bool onlyOneFrame);
  void reportUpdate();

  Document& document_;
  AnimationFrames frames_;
  PlaybackHandle playback_ = nullptr;
  HWND window_ = nullptr;
  bool playing_ = false;
  int shownFrame_ = -1;
};

}  // namespace zavoview
