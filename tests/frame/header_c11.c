/* The public header in a C11 program, and a bitmap's life in C. */
#include <zavo.h>

int usesHeaderFromC(void);

int usesHeaderFromC(void) {
  BitmapHandle bitmap;
  const RGBQUAD palette[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
  int status = Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, 9, 4, 1, ORDER_BLUE_FIRST, palette, VIEW_UPRIGHT);
  Zv_FreeBitmap(&bitmap);
  return status;
}
