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

/// What a status code of the library means.
std::string statusText(int status);

/// Throws a Failure ("cannot resize: out of memory") unless the status is a success.
void check(int status, const std::string& work);

}  // namespace zv
