// Bands as device-independent bitmaps, bottom row first.
#include "display/paint_bands.h"

#include <algorithm>

#include "core/sizes.h"
#include "display/paint_adjust.h"

namespace zavo {
namespace {

constexpr unsigned bandBytes = 0x40000;  // no band is larger, so that large pictures need little memory

}  // namespace

int BandPainter::open(HDC dc, ThreadSettings& settings, const RECT& area, const BandFormat& format, bool turned,
                      DWORD rop) {
  dc_ = dc;
  rop_ = rop;
  area_ = area;
  bits_ = format.bits;
  turned_ = turned;
  if (bits_ == 24 && settings.paintAdjustActive != 0) adjust_ = settings.paintAdjustTable;

  const auto width = static_cast<unsigned>(area.right - area.left);
  const auto height = static_cast<unsigned>(area.bottom - area.top);
  const auto depth = static_cast<unsigned>(bits_);
  const uint64_t lineBytes = rowBytesFor(turned ? height : width, depth);
  // A turned band is measured after the turn, where its lines are columns.
  const uint64_t lines = turned ? uint64_t{bandBytes} / height * 8 / depth & ~uint64_t{31} : bandBytes / lineBytes;
  linesPerBand_ = static_cast<unsigned>(std::clamp<uint64_t>(lines, 1, turned ? width : height));
  lineBytes_ = static_cast<unsigned>(lineBytes);
  band_ = OsBlock<uint8_t>::allocate((uint64_t{linesPerBand_} + 1) * lineBytes);
  if (!band_) return KERR_NO_MEMORY;
  if (turned) {
    turnedBand_ = OsBlock<uint8_t>::allocate(rowBytesFor(linesPerBand_, depth) * height);
    if (!turnedBand_) return KERR_NO_MEMORY;
  }
  choosePalette(settings, format);
  return KSUCCESS;
}

// A raster printer gets a header of its own, so that the colours in use while printing are not disturbed by painting
// elsewhere.
void BandPainter::choosePalette(ThreadSettings& settings, const BandFormat& format) {
  header_ = &settings.paintBitmapInfo;
  if (GetDeviceCaps(dc_, TECHNOLOGY) == DT_RASPRINTER) {
    settings.printerBitmapInfo = settings.paintBitmapInfo;
    header_ = &settings.printerBitmapInfo;
  }
  header_->header.biBitCount = static_cast<WORD>(bits_);
  header_->header.biClrUsed = bits_ <= 8 ? 1u << bits_ : 0;
  if (bits_ > 8) return;
  if ((settings.displayMode & PAINT_INDEX_COLORS) != 0) {
    usage_ = DIB_PAL_COLORS;
    return;
  }
  const bool adjust = format.adjustColors && settings.paintAdjustActive != 0;
  for (unsigned i = 0; i < 1u << bits_; ++i) {
    header_->slots[i] = adjust ? adjusted(settings, format.colors[i]) : format.colors[i];
  }
}

// Upright lines come from the top and fill the band from its end, because its lowest row lies first.
size_t BandPainter::offsetOf(unsigned line) const {
  return size_t{turned_ ? line : linesPerBand_ - 1 - line} * lineBytes_;
}

uint8_t* BandPainter::line() {
  return band_.get() + offsetOf(lines_);
}

const uint8_t* BandPainter::previousLine() const {
  return lines_ != 0 ? band_.get() + offsetOf(lines_ - 1) : nullptr;
}

void BandPainter::endLine() {
  if (++lines_ == linesPerBand_) paintBand();
}

void BandPainter::finish() {
  if (lines_ != 0) paintBand();
}

void BandPainter::paintBand() {
  const auto lines = static_cast<int>(lines_);
  const auto done = static_cast<int>(linesDone_);
  const int width = area_.right - area_.left;
  const int height = area_.bottom - area_.top;
  if (turned_) {
    const auto stride = static_cast<ptrdiff_t>(rowBytesFor(lines_, static_cast<unsigned>(bits_)));
    transposeFunction(bits_)(turnedBand_.get(), stride, band_.get(), static_cast<ptrdiff_t>(lineBytes_),
                             static_cast<unsigned>(height), lines_);
    output(turnedBand_.get(), area_.left + done, area_.top, lines, height);
  } else {
    output(band_.get() + size_t{linesPerBand_ - lines_} * lineBytes_, area_.left, area_.top + done, width, lines);
  }
  linesDone_ += lines_;
  lines_ = 0;
}

// Adjusts the pixels where they lie and hands them over. The device's own failures are not reported.
void BandPainter::output(uint8_t* pixels, int x, int y, int width, int height) {
  const auto rowBytes = static_cast<size_t>(rowBytesFor(static_cast<unsigned>(width), static_cast<unsigned>(bits_)));
  const size_t bytes = rowBytes * static_cast<unsigned>(height);
  if (adjust_ != nullptr) {
    for (size_t i = 0; i < bytes; ++i) pixels[i] = adjust_[pixels[i]];
  }
  header_->header.biWidth = width;
  header_->header.biHeight = height;
  header_->header.biSizeImage = static_cast<DWORD>(bytes);
  StretchDIBits(dc_, x, y, width, height, 0, 0, width, height, pixels, reinterpret_cast<const BITMAPINFO*>(header_),
                usage_, rop_);
}

}  // namespace zavo
