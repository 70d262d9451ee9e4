// Rows of a bitmap as resampling works on them: 3 bytes a pixel, or a grey level.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "color/conversion.h"
#include "color/dither.h"
#include "core/memory.h"
#include "core/rows.h"

namespace zavo {

// How the rows of a bitmap are brought to the working form and back.
struct ResampleFormat {
  explicit ResampleFormat(const BitmapHandle& bitmap);

  [[nodiscard]] bool isGray() const { return workingDepth == 0; }
  [[nodiscard]] unsigned channels() const { return isGray() ? 1 : 3; }

  int workingDepth = 24;     // 24, or 0 for grey levels
  int workingOrder;          // of the three bytes
  bool dithersBack = false;  // to the bitmap's palette
  unsigned colorCount = 0;   // entries of the palette
  RGBQUAD palette[256];
};

// Reads rows in working form: where they lie in the bitmap if they lie there in that form. The bitmap must be locked;
// it and the format must outlive this.
class WorkingRowReader {
 public:
  WorkingRowReader(BitmapHandle& bitmap, const ResampleFormat& format)
      : bitmap_(bitmap), format_(format), reader_(bitmap) {}

  [[nodiscard]] int open();
  // Valid until the next call; null when the row could not be read, see status().
  [[nodiscard]] const uint8_t* row(unsigned index);
  [[nodiscard]] int status() const { return reader_.status(); }

 private:
  BitmapHandle& bitmap_;
  const ResampleFormat& format_;
  RowReader reader_;
  RowConverter converter_;
  OsBlock<uint8_t> buffer_;
};

// Writes rows in working form, in order from the first. As WorkingRowReader.
class WorkingRowWriter {
 public:
  WorkingRowWriter(BitmapHandle& bitmap, const ResampleFormat& format)
      : bitmap_(bitmap), format_(format), writer_(bitmap) {}

  [[nodiscard]] int open();
  // Where to write the next row in working form.
  [[nodiscard]] uint8_t* row() { return direct_ ? writer_.row(next_) : buffer_.get(); }
  // Stores it. KSUCCESS or the code of the failed write.
  [[nodiscard]] int commit();

 private:
  int openDither();

  BitmapHandle& bitmap_;
  const ResampleFormat& format_;
  RowWriter writer_;
  RowConverter converter_;
  OwnedDitherRun dither_;
  OsBlock<uint8_t> buffer_;
  bool direct_ = false;
  unsigned next_ = 0;
};

}  // namespace zavo
