// Turning a bitmap of any depth into an 8-bit grey image.
#include <zavo.h>

#include "imgproc/gray_frame.h"

using namespace zavo;

int ZAVO_CALL Zv_GrayScaleBitmap(BitmapHandle* bitmap) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  BrightnessReader brightness;
  if (const int status = brightness.prepare(*bitmap); status != KSUCCESS) return status;
  OwnedBitmap gray;
  if (const int status = makeGrayTarget(gray, *bitmap, 8, Zv_CreateGrayPalette(8)); status != KSUCCESS) return status;
  const auto width = static_cast<unsigned>(bitmap->Width);
  const int status = convertRows(
      *gray, *bitmap, [&](uint8_t* levels, const uint8_t* row, unsigned) { brightness.read(levels, row, width); });
  if (status == KSUCCESS) takeOver(*bitmap, gray);
  return status;
}
