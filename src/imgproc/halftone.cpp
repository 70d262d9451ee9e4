// Turning a bitmap into black and white by holding its brightness against an 8 x 8 screen, straight or turned.
#include <zavo.h>

#include "color/threshold.h"
#include "core/memory.h"
#include "core/module.h"
#include "geometry/sine_table.h"
#include "imgproc/gray_frame.h"
#include "imgproc/turned_screen.h"

namespace zavo {
namespace {

// A screen turned by an angle: the cell of a pixel is the one at its turned coordinates, rounded down.
class TurnedScreen {
 public:
  TurnedScreen(const ThresholdMatrix& matrix, int angle)
      : matrix_(matrix),
        sine_(static_cast<uint32_t>(sine(angle))),
        cosine_(static_cast<uint32_t>(cosine(angle))),
        row_(cpuHasSsse3() ? turnedRowSsse3 : turnedRowPlain) {}

  // Writes bit 1 for every level above its threshold.
  void apply(uint8_t* packed, const uint8_t* levels, unsigned width, unsigned y) const {
    row_(packed, levels, width, matrix_, {.column = 0 - y * sine_, .row = y * cosine_},
         {.column = cosine_, .row = sine_});
  }

 private:
  const ThresholdMatrix& matrix_;
  uint32_t sine_;
  uint32_t cosine_;
  TurnedRowFunction row_;
};

int makeHalftone(BitmapHandle& bitmap, const ThresholdMatrix& matrix, int angle) {
  BrightnessReader brightness;
  if (const int status = brightness.prepare(bitmap); status != KSUCCESS) return status;
  OwnedBitmap halftone;
  if (const int status = makeGrayTarget(halftone, bitmap, 1, Zv_CreateFixedPalette(1)); status != KSUCCESS) {
    return status;
  }
  const auto width = static_cast<unsigned>(bitmap.Width);
  auto levels = OsBlock<uint8_t>::allocate(width);
  if (!levels) return KERR_NO_MEMORY;

  // The screen turns the opposite way to the angle given.
  const int turn = normalizedAngle(-normalizedAngle(angle));
  const TurnedScreen screen(matrix, turn);
  const int status = convertRows(*halftone, bitmap, [&](uint8_t* packed, const uint8_t* row, unsigned y) {
    const uint8_t* rowLevels = row;
    if (!brightness.rowsAreLevels()) {
      brightness.read(levels.get(), row, width);
      rowLevels = levels.get();
    }
    if (turn == 0) {
      thresholdRow(packed, rowLevels, width, matrix[y & 7]);
    } else {
      screen.apply(packed, rowLevels, width, y);
    }
  });
  if (status == KSUCCESS) takeOver(bitmap, halftone);
  return status;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_HalfToneBitmapExt(BitmapHandle* bitmap, int type, int angle) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (type != HALFTONE_CLUSTERED && type != HALFTONE_DISPERSED) return KERR_BAD_PARAMETER;
  return makeHalftone(*bitmap, type == HALFTONE_CLUSTERED ? clusteredMatrix : dispersedMatrix, angle);
}

int ZAVO_CALL Zv_HalfToneBitmap(BitmapHandle* bitmap, int type) {
  return Zv_HalfToneBitmapExt(bitmap, type, 0);
}
