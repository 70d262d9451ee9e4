// The library's playback takes one step per call and never waits: a timer of the window calls it when a frame's time
// is over.
#include "animation_player.h"

#include <algorithm>

#include "common/errors.h"

namespace zavoview {

namespace {

constexpr unsigned shortestTimer = 10;  // milliseconds
/// Files that ask for next to no delay were made for slower machines; everyone plays them like this.
constexpr unsigned shortestDelay = 20;
constexpr unsigned usualDelay = 100;
/// A frame takes a handful of steps; frames that cannot be drawn must not keep the window from its other work.
constexpr int mostSteps = 32;
/// Paper: the background that files name is meant for no one to see.
constexpr COLORREF background = RGB(255, 255, 255);

bool waiting(unsigned state) {
  return state == PB_WAITDELAY || state == PB_WAITINPUT || state == PB_WAITINPUTDELAY;
}

void setDelays(BitmapListHandle list, unsigned count) {
  for (unsigned index = 0; index < count; index++) {
    BitmapHandle frame;
    zv::check(Zv_GetBitmapListItem(list, index, &frame), "read a frame");
    if (frame.PlaybackDelay < shortestDelay) frame.PlaybackDelay = usualDelay;
    zv::check(Zv_SetBitmapListItem(list, index, &frame), "change a frame");
  }
}

}  // namespace

void AnimationPlayer::open(HWND window, zv::Animation animation, const std::string& path) {
  close();
  window_ = window;
  setDelays(animation.frames.handle(), animation.frames.count());
  animation_.emplace(std::move(animation));
  path_ = path;
  attach();
}

void AnimationPlayer::attach() {
  Picture target;
  zv::check(Zv_CreateBitmap(target.handle(), ALLOC_MEMORY, animation_->width, animation_->height, 24, ORDER_BLUE_FIRST,
                            nullptr, VIEW_UPRIGHT),
            "make room for the animation");
  target.handle()->PlaybackBackground = background;
  document_.adopt(std::move(target), path_, true);
  zv::check(Zv_CreatePlayback(&playback_, document_.handle(), animation_->frames.handle()), "play the animation");
  shownFrame_ = -1;
  run(true);
}

void AnimationPlayer::close() {
  release();
  animation_.reset();
}

void AnimationPlayer::release() {
  pause();
  if (playback_ == nullptr) return;
  Zv_DestroyPlayback(playback_, nullptr);
  playback_ = nullptr;
}

void AnimationPlayer::play() {
  if (!loaded() || playing_) return;
  if (!attached()) attach();
  playing_ = true;
  SetTimer(window_, timer, shortestTimer, nullptr);
}

void AnimationPlayer::pause() {
  if (playing_) KillTimer(window_, timer);
  playing_ = false;
}

void AnimationPlayer::step() {
  if (!playing_) return;
  run(false);
  unsigned delay = 0;
  Zv_GetPlaybackDelay(playback_, &delay);
  SetTimer(window_, timer, std::max(delay, shortestTimer), nullptr);
}

/// Until the next wait, or until one more frame is on the picture.
void AnimationPlayer::run(bool onlyOneFrame) {
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

void AnimationPlayer::reportUpdate() {
  RECT part;
  if (Zv_GetPlaybackUpdateRect(playback_, &part, TRUE) == KSUCCESS && !IsRectEmpty(&part) && onUpdate) onUpdate(part);
}

void AnimationPlayer::nextFrame() {
  pause();
  if (attached()) run(true);
}

void AnimationPlayer::firstFrame() {
  pause();
  if (!attached()) return;
  Zv_SetPlaybackIndex(playback_, -1);
  run(true);
}

}  // namespace zavoview
