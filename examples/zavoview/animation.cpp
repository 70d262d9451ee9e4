// The library's playback takes one step per call and never waits: a timer of the window calls it when a frame's time
// is over.
#include "animation.h"

#include <algorithm>

#include "common/errors.h"

namespace zavoview {

namespace {

constexpr unsigned shortestDelay = 10;  // milliseconds
/// A frame takes a handful of steps; frames without delay must not keep the window from its other work.
constexpr int mostSteps = 32;

bool waiting(unsigned state) {
  return state == PB_WAITDELAY || state == PB_WAITINPUT || state == PB_WAITINPUTDELAY || state == PB_WAITLINES;
}

}  // namespace

unsigned AnimationFrames::count() const {
  unsigned count = 0;
  if (list != nullptr) Zv_GetBitmapListCount(list, &count);
  return count;
}

void Animation::open(HWND window, AnimationFrames frames, const std::string& path) {
  close();
  window_ = window;
  Picture target;
  zv::check(Zv_CreateBitmap(target.handle(), ALLOC_MEMORY, frames.width, frames.height, 24, ORDER_BLUE_FIRST, nullptr,
                            VIEW_UPRIGHT),
            "make room for the animation");
  target.handle()->PlaybackBackground = RGB(255, 255, 255);
  document_.adopt(std::move(target), path, true);
  frames_ = std::move(frames);
  attach();
}

void Animation::attach() {
  zv::check(Zv_CreatePlayback(&playback_, document_.handle(), frames_.list), "play the animation");
  shownFrame_ = -1;
  run(true);
}

void Animation::close() {
  release();
  frames_ = AnimationFrames();
}

void Animation::release() {
  pause();
  if (playback_ == nullptr) return;
  Zv_DestroyPlayback(playback_, nullptr);
  playback_ = nullptr;
}

void Animation::play() {
  if (!loaded() || playing_) return;
  if (!attached()) {
    AnimationFrames frames = std::move(frames_);
    open(window_, std::move(frames), std::string(document_.path()));
  }
  playing_ = true;
  SetTimer(window_, timer, shortestDelay, nullptr);
}

void Animation::pause() {
  if (playing_) KillTimer(window_, timer);
  playing_ = false;
}

void Animation::step() {
  if (!playing_) return;
  run(false);
  unsigned delay = 0;
  Zv_GetPlaybackDelay(playback_, &delay);
  SetTimer(window_, timer, std::max(delay, shortestDelay), nullptr);
}

/// Until the next wait, or until one more frame is on the picture.
void Animation::run(bool onlyOneFrame) {
  unsigned state = PB_PRECLEAR;
  for (int i = 0; i < mostSteps; i++) {
    Zv_ProcessPlayback(playback_, &state);
    if (state == PB_POSTRENDER) Zv_GetPlaybackIndex(playback_, &shownFrame_);
    if (onlyOneFrame) {
      if (state == PB_POSTRENDER) break;
      Zv_CancelPlaybackWait(playback_);
    } else if (waiting(state)) {
      break;
    }
  }
  reportUpdate();
}

void Animation::reportUpdate() {
  RECT part;
  if (Zv_GetPlaybackUpdateRect(playback_, &part, TRUE) == KSUCCESS && !IsRectEmpty(&part) && onUpdate) onUpdate(part);
}

void Animation::nextFrame() {
  pause();
  if (!attached()) return;
  run(true);
}

void Animation::firstFrame() {
  pause();
  if (!attached()) return;
  Zv_SetPlaybackIndex(playback_, -1);
  run(true);
}

int Animation::frame() const {
  return shownFrame_;
}

}  // namespace zavoview
