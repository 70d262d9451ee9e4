// Copies of whole bitmaps and of rectangles.
#include <cstring>

#include "bench.h"
#include "pictures.h"

namespace bench {
namespace {

std::string sameBytes(const Bitmap& a, const unsigned char* bits) {
  return memcmp(a.Data, bits, a.DataSize) == 0 ? std::string() : std::string("pixels differ");
}

void copyDepth(Bench& bench, Size size, int bits) {
  const std::string depth = std::to_string(bits) + (bits == 1 ? " bit" : " bits");
  Bitmap source(size, bits), target(size, bits), made;
  if (bits >= 8) paint(source);
  if (bits < 8) memset(source.Data, 0x5A, source.DataSize);
  DibSection from(size, bits), to(size, bits);
  from.copyFrom(source);
  const Contender blit = {"GDI BitBlt",
                          [&] { BitBlt(to.dc(), 0, 0, size.width, size.height, from.dc(), 0, 0, SRCCOPY); },
                          [&] { return GdiFlush(), sameBytes(source, to.bits()); }};
  bench.compare("copy pixels, " + depth, size, source.DataSize,
                {{"Zv_CopyBitmapData", [&] { Zv_CopyBitmapData(&target, &source); },
                  [&] { return sameBytes(source, target.Data); }},
                 blit});
  bench.compare("copy a bitmap, " + depth, size, source.DataSize,
                {{"Zv_CopyBitmap, with allocation",
                  [&] {
                    Zv_FreeBitmap(&made);
                    Zv_CopyBitmap(&made, &source);
                  },
                  [&] { return sameBytes(source, made.Data); }},
                 blit});
  bench.compare(
      "copy a rectangle, " + depth + ", from column 3", size, source.DataSize,
      {{"Zv_CopyBitmapRect, with allocation",
        [&] {
          Zv_FreeBitmap(&made);
          Zv_CopyBitmapRect(&made, &source, 3, 1, static_cast<unsigned>(size.width - 3),
                            static_cast<unsigned>(size.height - 1));
        },
        [&] {
          return Zv_GetPixelColor(&made, 5, 7) == Zv_GetPixelColor(&source, 6, 10) ? std::string()
                                                                                   : std::string("moved wrong");
        }},
       {"GDI BitBlt", [&] { BitBlt(to.dc(), 0, 0, size.width - 3, size.height - 1, from.dc(), 3, 1, SRCCOPY); },
        [&] { return std::string(); }}});
}

}  // namespace

void copying(Bench& bench) {
  bench.emptyCall("Zv_GetStatusCallBack", [] { Zv_GetStatusCallBack(); });
  for (const Size size : allSizes) {
    for (const int bits : {24, 1}) {
      if (bench.takes(size)) copyDepth(bench, size, bits);
    }
  }
}

}  // namespace bench
