// Animations: the frames of a GIF file, in a list of the library's, ready to be played. COM must be initialised.
#pragma once

#include <zavo.h>

#include <string>
#include <utility>

namespace zv {

/// Owns a list of bitmaps and the bitmaps in it.
class FrameList {
 public:
  /// An empty list. Throws a Failure when memory is short.
  FrameList();
  FrameList(FrameList&& other) noexcept : list_(std::exchange(other.list_, nullptr)) {}
  FrameList& operator=(FrameList&&) = delete;
  ~FrameList() { Zv_DestroyBitmapList(list_); }

  [[nodiscard]] BitmapListHandle handle() const { return list_; }
  [[nodiscard]] unsigned count() const;
  /// A look at a frame, which stays the list's.
  [[nodiscard]] BitmapHandle at(unsigned index) const;

 private:
  BitmapListHandle list_ = nullptr;
};

struct Animation {
  FrameList frames;  /// With position, delay, disposal, transparent colour and waiting for the user.
  int width = 0;     /// Of the whole picture.
  int height = 0;
  COLORREF background = 0;
};

/// Reads a GIF file; a file of another format is an animation of its frames, with no delay. Throws a Failure that names
/// the file.
Animation readAnimation(const std::string& path);

}  // namespace zv
