// What random calls work on: bitmaps in every state, device contexts, regions, palettes, and numbers of every kind.
#pragma once

#include <zavo.h>

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <vector>

#include "support/test_bitmap.h"

namespace zavotest {

// A record that holds nothing, for calls that do not look at what their result replaces.
struct FreshBitmap {
  BitmapHandle* record;
};

// A number that a caller would pass as a side, a row or a column; small, so that calls stay fast.
struct Coordinate {
  int value;
};

// One round's world. Everything in it comes from the seed.
class FuzzWorld {
 public:
  explicit FuzzWorld(unsigned seed);
  FuzzWorld(const FuzzWorld&) = delete;
  FuzzWorld& operator=(const FuzzWorld&) = delete;
  ~FuzzWorld();

  // 0 .. count - 1.
  unsigned below(unsigned count) { return static_cast<unsigned>(random_() % count); }
  bool oneIn(unsigned count) { return below(count) == 0; }
  std::mt19937& random() { return random_; }

  BitmapHandle* anyBitmap() { return &bitmaps_[below(static_cast<unsigned>(bitmaps_.size()))]; }
  // Gives a slot another bitmap: any size, depth, storage, perspective, order, palette, region; or a record without
  // pixels.
  void renew(BitmapHandle& bitmap);
  // Room for rows, runs and colours; longer than anything that is written to it.
  uint8_t* buffer() { return buffer_.data(); }
  static constexpr unsigned bufferBytes = 1 << 18;

  // Bitmaps that have grown too large for a fast test are replaced, and the others must be whole.
  void checkBitmaps();

  // An argument of the wanted type; pointers that the library checks are null now and then.
  template <typename T>
  T pick();

 private:
  int absurd();
  void addRegion(BitmapHandle& bitmap);

  std::mt19937 random_;
  std::array<BitmapHandle, 4> bitmaps_{};
  std::vector<uint8_t> buffer_;
  std::vector<HDC> contexts_;
  std::vector<HGDIOBJ> objects_;
  HRGN region_;
  HPALETTE palette_;
  RECT rects_[4] = {};
  unsigned nextRect_ = 0;
  RegionXForm xform_{};
  RGBQUAD colors_[256];
  int outs_[8] = {};
};

// A call with arguments of its own choosing.
struct FuzzCall {
  const char* name;
  std::function<void(FuzzWorld&)> run;
};

[[nodiscard]] const std::vector<FuzzCall>& fuzzCalls();

}  // namespace zavotest
