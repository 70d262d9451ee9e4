#include "common/dib.h"

#include <cstdint>

#include "common/errors.h"
#include "common/text.h"

namespace zv {

namespace {

size_t entriesFor(int bitsPerPixel) {
  return bitsPerPixel <= 8 ? size_t{1} << bitsPerPixel : 0;
}

uint64_t rowBytesFor(UINT width, int bitsPerPixel) {
  return (uint64_t{width} * static_cast<unsigned>(bitsPerPixel) + 31) / 32 * 4;
}

}  // namespace

Dib::Dib(HGLOBAL memory) : memory_(memory), header_(static_cast<BITMAPINFOHEADER*>(GlobalLock(memory))) {}

Dib::Dib(UINT width, UINT height, int bitsPerPixel) {
  const size_t entries = entriesFor(bitsPerPixel);
  const uint64_t imageBytes = rowBytesFor(width, bitsPerPixel) * height;
  const uint64_t bytes = sizeof(BITMAPINFOHEADER) + entries * sizeof(RGBQUAD) + imageBytes;
  if (width == 0 || height == 0) throw Failure("the picture has no pixels");
  memory_ = bytes <= INT32_MAX ? GlobalAlloc(GHND, static_cast<size_t>(bytes)) : nullptr;
  if (memory_ == nullptr) throw Failure(format("%u x %u pixels do not fit in memory", width, height));
  header_ = static_cast<BITMAPINFOHEADER*>(GlobalLock(memory_));
  header_->biSize = sizeof(BITMAPINFOHEADER);
  header_->biWidth = static_cast<LONG>(width);
  header_->biHeight = -static_cast<LONG>(height);
  header_->biPlanes = 1;
  header_->biBitCount = static_cast<WORD>(bitsPerPixel);
  header_->biSizeImage = static_cast<DWORD>(imageBytes);
}

Dib::~Dib() {
  if (memory_ != nullptr) GlobalFree(release());
}

HGLOBAL Dib::release() {
  GlobalUnlock(memory_);
  return std::exchange(memory_, nullptr);
}

size_t Dib::rowBytes() const {
  return static_cast<size_t>(rowBytesFor(static_cast<UINT>(width()), bitsPerPixel()));
}

std::span<RGBQUAD> Dib::palette() {
  const size_t entries = header_->biClrUsed != 0 ? header_->biClrUsed : entriesFor(bitsPerPixel());
  return {reinterpret_cast<RGBQUAD*>(header_ + 1), entries};
}

std::span<unsigned char> Dib::pixels() {
  const std::span<RGBQUAD> colors = palette();
  return {reinterpret_cast<unsigned char*>(colors.data() + colors.size()), rowBytes() * static_cast<size_t>(height())};
}

unsigned char* Dib::row(int index) {
  const int stored = header_->biHeight < 0 ? index : height() - 1 - index;
  return pixels().data() + rowBytes() * static_cast<size_t>(stored);
}

Dib makeDib(Picture& picture) {
  const HGLOBAL memory = Zv_ConvertToDIB(picture.handle());
  if (memory == nullptr) throw Failure("the library could not make a DIB of the picture");
  return Dib(memory);
}

}  // namespace zv
