// A packed device-independent bitmap in global memory: the form in which pictures enter and leave the library.
#pragma once

#include <span>
#include <utility>
#include <vector>
#include <windows.h>

#include "common/picture.h"

namespace zv {

/// Owns the memory and keeps it locked, so that header and rows are plain pointers.
class Dib {
 public:
  /// Takes over memory that holds a 40-byte header, its colour table and its rows.
  explicit Dib(HGLOBAL memory);
  /// Makes one whose first row is the top row, all zero. Throws a Failure when memory is short.
  Dib(UINT width, UINT height, int bitsPerPixel);
  Dib(Dib&& other) noexcept : memory_(std::exchange(other.memory_, nullptr)), header_(other.header_) {}
  Dib& operator=(Dib&&) = delete;
  ~Dib();

  /// Gives the memory away, unlocked.
  HGLOBAL release();

  BITMAPINFOHEADER* header() { return header_; }
  [[nodiscard]] int width() const { return header_->biWidth; }
  [[nodiscard]] int height() const { return header_->biHeight < 0 ? -header_->biHeight : header_->biHeight; }
  [[nodiscard]] int bitsPerPixel() const { return header_->biBitCount; }
  [[nodiscard]] size_t rowBytes() const;
  std::span<RGBQUAD> palette();
  /// A row of the picture, row 0 at the top.
  unsigned char* row(int index);
  /// All rows, in the order they are stored.
  std::span<unsigned char> pixels();

 private:
  HGLOBAL memory_;
  BITMAPINFOHEADER* header_;
};

/// A copy of the picture in the nearest depth that DIBs have, made by the library.
Dib makeDib(Picture& picture);

}  // namespace zv
