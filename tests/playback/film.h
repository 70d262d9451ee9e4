// A playback with its list of frames, both given back at the end.
#pragma once

#include <zavo.h>

#include <array>
#include <gtest/gtest.h>
#include <initializer_list>

namespace zavotest {

// A frame for a list, which frees it: of zeros, upright, at the top left of the target.
inline BitmapHandle makeFrame(int width, int height, int bits, int memoryType = ALLOC_MEMORY,
                              int order = ORDER_BLUE_FIRST) {
  BitmapHandle frame{};
  EXPECT_EQ(Zv_CreateBitmap(&frame, memoryType, width, height, bits, order, nullptr, VIEW_UPRIGHT), KSUCCESS);
  return frame;
}

// A rectangle as left, top, right and bottom, to be compared and printed.
inline std::array<long, 4> sides(const RECT& rect) {
  return {rect.left, rect.top, rect.right, rect.bottom};
}

class Film {
 public:
  // Takes the frames over.
  explicit Film(BitmapHandle& target, std::initializer_list<BitmapHandle> frames = {}) {
    if (frames.size() != 0) {
      EXPECT_EQ(Zv_CreateBitmapList(&list_), KSUCCESS);
      for (const BitmapHandle& frame : frames) EXPECT_EQ(Zv_InsertBitmapListItem(list_, ~0u, &frame), KSUCCESS);
    }
    EXPECT_EQ(Zv_CreatePlayback(&playback_, &target, list_), KSUCCESS);
  }
  Film(const Film&) = delete;
  Film& operator=(const Film&) = delete;
  ~Film() {
    EXPECT_EQ(Zv_DestroyPlayback(playback_, &list_), KSUCCESS);
    EXPECT_EQ(Zv_DestroyBitmapList(list_), KSUCCESS);
  }

  [[nodiscard]] PlaybackHandle get() const { return playback_; }

  // One step; the new state.
  unsigned step() const {
    unsigned stepped = ~0u;
    EXPECT_EQ(Zv_ProcessPlayback(playback_, &stepped), KSUCCESS);
    EXPECT_EQ(stepped, state());
    return stepped;
  }
  // Steps until `wanted` is reached; false when that takes too long.
  [[nodiscard]] bool stepTo(unsigned wanted) const {
    for (int steps = 0; steps < 100; ++steps) {
      if (step() == wanted) return true;
    }
    return false;
  }
  [[nodiscard]] unsigned state() const {
    unsigned state = ~0u;
    EXPECT_EQ(Zv_GetPlaybackState(playback_, &state), KSUCCESS);
    return state;
  }
  [[nodiscard]] int index() const {
    int index = -99;
    EXPECT_EQ(Zv_GetPlaybackIndex(playback_, &index), KSUCCESS);
    return index;
  }
  [[nodiscard]] unsigned delay() const {
    unsigned milliseconds = ~0u;
    EXPECT_EQ(Zv_GetPlaybackDelay(playback_, &milliseconds), KSUCCESS);
    return milliseconds;
  }
  [[nodiscard]] RECT update(bool clear = false) const {
    RECT rect = {-1, -1, -1, -1};
    EXPECT_EQ(Zv_GetPlaybackUpdateRect(playback_, &rect, clear ? 1 : 0), KSUCCESS);
    return rect;
  }

 private:
  PlaybackHandle playback_ = nullptr;
  BitmapListHandle list_ = nullptr;
};

}  // namespace zavotest
