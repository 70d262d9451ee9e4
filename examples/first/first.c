/* A first client in C: loads a BMP file, shrinks it to half its size, dithers it to 16 colours of its own, paints it in
 * the corner of the screen and writes it again.   first_c IN.bmp OUT.bmp */
#include <zavo.h>

#include <stdio.h>

/* The file without its 14-byte file header is a packed DIB. */
static HGLOBAL readDib(const char* name) {
  FILE* file = fopen(name, "rb");
  HGLOBAL dib = NULL;
  long size;
  if (file == NULL) return NULL;
  fseek(file, 0, SEEK_END);
  size = ftell(file) - (long)sizeof(BITMAPFILEHEADER);
  fseek(file, sizeof(BITMAPFILEHEADER), SEEK_SET);
  if (size > 0) dib = GlobalAlloc(GMEM_MOVEABLE, (SIZE_T)size);
  if (dib != NULL) {
    const size_t count = fread(GlobalLock(dib), 1, (size_t)size, file);
    GlobalUnlock(dib);
    if (count != (size_t)size) dib = GlobalFree(dib);
  }
  fclose(file);
  return dib;
}

static int writeDib(const char* name, HGLOBAL dib) {
  const BITMAPINFOHEADER* info = GlobalLock(dib);
  const DWORD size = (DWORD)(sizeof *info + info->biClrUsed * sizeof(RGBQUAD) + info->biSizeImage);
  BITMAPFILEHEADER header = {0x4D42, 0, 0, 0, 0};
  FILE* file = fopen(name, "wb");
  int written = 0;
  header.bfSize = (DWORD)sizeof header + size;
  header.bfOffBits = header.bfSize - info->biSizeImage;
  if (file != NULL) {
    written = fwrite(&header, sizeof header, 1, file) == 1 && fwrite(info, size, 1, file) == 1;
    written = fclose(file) == 0 && written;
  }
  GlobalUnlock(dib);
  return written;
}

static void paint(BitmapHandle* bitmap) {
  HDC screen = GetDC(NULL);
  RECT corner = {0, 0, 0, 0};
  corner.right = bitmap->Width;
  corner.bottom = bitmap->Height;
  Zv_PaintDC(screen, bitmap, NULL, NULL, &corner, NULL, SRCCOPY);
  ReleaseDC(NULL, screen);
}

int main(int count, char** words) {
  BitmapHandle bitmap = {0};
  HGLOBAL dib = count == 3 ? readDib(words[1]) : NULL;
  int done = 0;
  if (dib == NULL || Zv_ChangeFromDIB(&bitmap, dib) != KSUCCESS) {
    puts("usage: first_c IN.bmp OUT.bmp");
    return 2;
  }
  if (Zv_ResampleBitmap(&bitmap, bitmap.Width / 2, bitmap.Height / 2) == KSUCCESS &&
      Zv_ColorResBitmap(&bitmap, NULL, 4, COLORRES_OPTIMISED_PALETTE, NULL, 0) == KSUCCESS) {
    paint(&bitmap);
    dib = Zv_ChangeToDIB(&bitmap);
    done = dib != NULL && writeDib(words[2], dib);
    GlobalFree(dib);
  }
  Zv_FreeBitmap(&bitmap);
  return done ? 0 : 1;
}
