// A smooth copy is made once per scale, in a depth that has the colours in between, and kept. Very large ones are not
// made: so far enlarged, exact pixels are what one wants to see.
#include "picture_painter.h"

namespace zavoview {

namespace {

constexpr long long largestCopy = 16'000'000;  // pixels

SIZE sizeOf(const RECT& rect) {
  return {rect.right - rect.left, rect.bottom - rect.top};
}

/// The painter of black-and-white pictures makes grey levels itself when the display mode says so.
bool paintedAsGray(const zv::Picture& picture) {
  return picture->BitsPerPixel == 1 && (Zv_GetDisplayMode() & (PAINT_GRAY_1BIT | PAINT_GRAY_1BIT_ALT)) != 0;
}

/// Painting can come in the middle of a longer operation, whose progress is not its own.
class NoProgress {
 public:
  NoProgress() : callback_(Zv_SetStatusCallBack(nullptr)) {}
  NoProgress(const NoProgress&) = delete;
  NoProgress& operator=(const NoProgress&) = delete;
  ~NoProgress() { Zv_SetStatusCallBack(callback_); }

 private:
  StatusCallback callback_;
};

/// The palette that a palette device needs for a bitmap. While it lives it is selected into the device contexts of the
/// screen and of the memory that is copied there, and the screen has its colours.
class PaintPalette {
 public:
  PaintPalette(HDC screen, HDC memory, BitmapHandle* bitmap)
      : screen_(screen), memory_(memory), palette_(Zv_CreatePaintPalette(screen, bitmap)) {
    if (palette_ == nullptr) return;
    for (const HDC dc : {screen_, memory_}) {
      SelectPalette(dc, palette_, FALSE);
      RealizePalette(dc);
    }
  }
  PaintPalette(const PaintPalette&) = delete;
  PaintPalette& operator=(const PaintPalette&) = delete;
  ~PaintPalette() {
    if (palette_ == nullptr) return;
    for (const HDC dc : {screen_, memory_})
      SelectPalette(dc, static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE)), TRUE);
    DeleteObject(palette_);
  }

 private:
  HDC screen_;
  HDC memory_;
  HPALETTE palette_;
};

}  // namespace

void PicturePainter::paint(HDC screen, HDC dc, zv::Picture& picture, const RECT& place, const RECT& dirty) {
  const SIZE size = sizeOf(place);
  const bool scaled = size.cx != picture->Width || size.cy != picture->Height;
  BitmapHandle* painted = picture.handle();
  if (smooth && scaled && !paintedAsGray(picture) && makeCopy(picture, size)) painted = copy_.handle();
  const PaintPalette palette(screen, dc, painted);
  Zv_PaintDC(dc, painted, nullptr, nullptr, &place, &dirty, SRCCOPY);
}

bool PicturePainter::makeCopy(zv::Picture& picture, SIZE size) {
  if (static_cast<long long>(size.cx) * size.cy > largestCopy) return false;
  if (copy_->Width == size.cx && copy_->Height == size.cy) return true;
  const NoProgress quiet;
  zv::Picture copy;
  int status = KSUCCESS;
  if (picture->BitsPerPixel <= 8) {
    const int depth = Zv_IsGrayScaleBitmap(picture.handle()) != 0 ? 0 : 24;
    status = Zv_ColorResBitmap(picture.handle(), copy.handle(), depth, COLORRES_BLUE_FIRST, nullptr, 0);
  } else {
    status = Zv_CopyBitmap(copy.handle(), picture.handle());
  }
  if (status != KSUCCESS) return false;
  Zv_FreeBitmapRgn(copy.handle());
  if (Zv_ResampleBitmap(copy.handle(), size.cx, size.cy) != KSUCCESS) return false;
  copy_ = std::move(copy);
  return true;
}

void paintOutline(HDC dc, zv::Picture& picture, const RECT& place, unsigned phase) {
  const SIZE size = sizeOf(place);
  const RegionXForm transform{0, size.cx, picture->Width, size.cy, picture->Height, place.left, place.top};
  Zv_FrameBitmapRgn(dc, picture.handle(), &transform, phase);
}

}  // namespace zavoview
