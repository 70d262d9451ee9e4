// Rows to the working form of resampling and back.
#include "geometry/resample_format.h"

#include <algorithm>
#include <bit>

#include "color/dither_targets.h"
#include "color/palettes.h"
#include "core/row_padding.h"

namespace zavo {
namespace {

constexpr int ditheringMethod = 1;  // whatever the bitmap's own

}  // namespace

ResampleFormat::ResampleFormat(const BitmapHandle& bitmap) : workingOrder(colorOrderOf(bitmap)) {
  if (bitmap.BitsPerPixel > 8) return;
  workingOrder = ORDER_BLUE_FIRST;
  colorCount = std::min(readPaletteOrFixed(bitmap, palette), 1u << bitmap.BitsPerPixel);
  if (bitmap.BitsPerPixel == 8 && Zv_IsGrayScaleBitmap(&bitmap) != 0) {
    workingDepth = 0;
  } else {
    dithersBack = true;
  }
}

int WorkingRowReader::open() {
  if (const int status = reader_.open(); status != KSUCCESS) return status;
  if (const int status = converter_.prepare(bitmap_.BitsPerPixel, format_.workingDepth, colorOrderOf(bitmap_),
                                            format_.workingOrder, format_.palette, nullptr);
      status != KSUCCESS) {
    return status;
  }
  if (converter_.changesNothing()) return KSUCCESS;
  buffer_ = OsBlock<uint8_t>::allocate(uint64_t{static_cast<unsigned>(bitmap_.Width)} * format_.channels());
  return buffer_ ? KSUCCESS : KERR_NO_MEMORY;
}

const uint8_t* WorkingRowReader::row(unsigned index) {
  const uint8_t* stored = reader_.row(index);
  if (stored == nullptr || !buffer_) return stored;
  converter_.convert(buffer_.get(), stored, static_cast<unsigned>(bitmap_.Width));
  return buffer_.get();
}

int WorkingRowWriter::open() {
  if (const int status = writer_.open(); status != KSUCCESS) return status;
  if (format_.dithersBack) {
    if (const int status = openDither(); status != KSUCCESS) return status;
  } else if (const int status = converter_.prepare(format_.workingDepth, bitmap_.BitsPerPixel, format_.workingOrder,
                                                   colorOrderOf(bitmap_), nullptr, format_.palette);
             status != KSUCCESS) {
    return status;
  }
  direct_ = !format_.dithersBack && converter_.changesNothing();
  if (direct_) return KSUCCESS;
  buffer_ = OsBlock<uint8_t>::allocate(uint64_t{static_cast<unsigned>(bitmap_.Width)} * format_.channels());
  return buffer_ ? KSUCCESS : KERR_NO_MEMORY;
}

// Only a whole fixed palette is dithered to as such: of a part of one, entries would be chosen that are not there.
int WorkingRowWriter::openDither() {
  const unsigned count = format_.colorCount;
  const int kind = std::has_single_bit(count) && count > 1 ? fixedKindOf(format_.palette, count) : noFixedKind;
  DitherRun* run = nullptr;
  const int status =
      openDitherRun(run, {bitmap_.Width, format_.workingDepth, format_.workingOrder, nullptr, ditheringMethod},
                    {kind, format_.palette, count, bitmap_.BitsPerPixel});
  dither_.reset(run);
  return status;
}

int WorkingRowWriter::commit() {
  const auto width = static_cast<unsigned>(bitmap_.Width);
  uint8_t* stored = writer_.row(next_);
  if (dither_) {
    ditherRow(*dither_.get(), stored, buffer_.get());
  } else if (!direct_) {
    converter_.convert(stored, buffer_.get(), width);
  }
  clearRowPadding(stored, width, static_cast<unsigned>(bitmap_.BitsPerPixel));
  return writer_.commit(next_++);
}

}  // namespace zavo
