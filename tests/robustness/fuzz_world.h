// What random calls work on: bitmaps in every state, device contexts, regions, palettes, and numbers of every kind.
#pragma once

#include <zavo.h>

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <type_traits>
#include <vector>

#include "support/test_bitmap.h"

namespace zavotest {

// A record that holds nothing, for calls that do not look at what their result replaces.
struct FreshBitmap {
  BitmapHandle* record;
  operator BitmapHandle*() const { return record; }
};

// A number that a caller would pass as a side, a row or a column; small, so that calls stay fast.
struct Coordinate {
  int value;
  operator int() const { return value; }
  operator unsigned() const { return static_cast<unsigned>(value); }
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
  int number();
  int coordinate();
  BitmapHandle* freed(BitmapHandle* record);
  RECT* rect();
  RegionXForm* xform();
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

template <typename T>
T FuzzWorld::pick() {
  using std::is_same_v;
  if constexpr (is_same_v<T, BitmapHandle*> || is_same_v<T, const BitmapHandle*>) {
    return oneIn(40) ? nullptr : anyBitmap();
  } else if constexpr (is_same_v<T, std::nullptr_t>) {
    return nullptr;
  } else if constexpr (is_same_v<T, FreshBitmap>) {
    return {oneIn(40) ? nullptr : freed(anyBitmap())};
  } else if constexpr (is_same_v<T, int>) {
    return number();
  } else if constexpr (is_same_v<T, Coordinate>) {
    return {coordinate()};
  } else if constexpr (is_same_v<T, unsigned>) {
    return oneIn(3) ? below(0x10000) : static_cast<unsigned>(number());
  } else if constexpr (is_same_v<T, DWORD>) {
    const DWORD values[] = {SRCCOPY, SRCINVERT, RGB(255, 255, 255), 0, 0x01000002, random_()};
    return values[below(std::size(values))];
  } else if constexpr (is_same_v<T, RECT*> || is_same_v<T, const RECT*>) {
    return oneIn(4) ? nullptr : rect();
  } else if constexpr (is_same_v<T, const RegionXForm*>) {
    return oneIn(3) ? nullptr : xform();
  } else if constexpr (is_same_v<T, HDC>) {
    return oneIn(20) ? nullptr : contexts_[below(static_cast<unsigned>(contexts_.size()))];
  } else if constexpr (is_same_v<T, HRGN>) {
    return oneIn(8) ? nullptr : region_;
  } else if constexpr (is_same_v<T, HPALETTE>) {
    return oneIn(8) ? nullptr : palette_;
  } else if constexpr (is_same_v<T, const RGBQUAD*>) {
    return oneIn(5) ? nullptr : colors_;
  } else {
    static_assert(is_same_v<T, int*> || is_same_v<T, unsigned*>);
    int& out = outs_[below(std::size(outs_))];
    out = coordinate();
    return oneIn(20) ? nullptr : reinterpret_cast<T>(&out);
  }
}

// A call with arguments of its own choosing.
struct FuzzCall {
  const char* name;
  std::function<void(FuzzWorld&)> run;
};

[[nodiscard]] const std::vector<FuzzCall>& fuzzCalls();

}  // namespace zavotest
