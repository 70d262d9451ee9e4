// A picture held by the library: the owner of a BitmapHandle.
#pragma once

#include <zavo.h>

#include <string>
#include <utility>

namespace zv {

/// Frees its bitmap at the end. Moved from, or fresh, it holds nothing.
class Picture {
 public:
  Picture() = default;
  Picture(Picture&& other) noexcept : bitmap_(std::exchange(other.bitmap_, {})) {}
  Picture& operator=(Picture&& other) noexcept {
    std::swap(bitmap_, other.bitmap_);
    return *this;
  }
  ~Picture() { Zv_FreeBitmap(&bitmap_); }

  BitmapHandle* handle() { return &bitmap_; }
  const BitmapHandle* operator->() const { return &bitmap_; }

 private:
  BitmapHandle bitmap_{};
};

/// Keeps the pixels of a picture addressable while it lives: what the row functions ask for.
class PixelLock {
 public:
  explicit PixelLock(Picture& picture) : bitmap_(picture.handle()), wasLocked_(Zv_LockBitmap(bitmap_)) {}
  PixelLock(const PixelLock&) = delete;
  PixelLock& operator=(const PixelLock&) = delete;
  ~PixelLock() { Zv_UnlockBitmap(bitmap_, wasLocked_); }

 private:
  BitmapHandle* bitmap_;
  int wasLocked_;
};

/// What a status code of the library means.
std::string statusText(int status);

/// Throws a Failure ("cannot resize: out of memory") unless the status is a success.
void check(int status, const std::string& work);

}  // namespace zv
