#include "support/test_bitmap.h"

namespace zavotest {

TestBitmap::TestBitmap(int width, int height, int bits, int memoryType) : BitmapHandle{} {
  Zv_CreateBitmap(this, memoryType, width, height, bits, ORDER_BLUE_FIRST, nullptr, VIEW_UPRIGHT);
}

Picture pictureOf(BitmapHandle& bitmap) {
  Picture picture(bitmap.Width, bitmap.Height);
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (int y = 0; y < bitmap.Height; ++y) {
    Zv_GetBitmapRow(&bitmap, row.data(), static_cast<unsigned>(y), bitmap.BytesPerLine);
    size_t bit = 0;
    for (int x = 0; x < bitmap.Width; ++x) {
      for (int k = 0; k < bitmap.BitsPerPixel; ++k, ++bit) {
        picture.at(x, y) = picture.at(x, y) << 1 | (row[bit / 8] >> (7 - bit % 8) & 1u);
      }
    }
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
  return picture;
}

void fillWithNoise(BitmapHandle& bitmap, std::mt19937& random) {
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (int y = 0; y < bitmap.Height; ++y) {
    for (auto& byte : row) byte = static_cast<uint8_t>(random());
    Zv_PutBitmapRow(&bitmap, row.data(), static_cast<unsigned>(y), bitmap.BytesPerLine);
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
}

}  // namespace zavotest
