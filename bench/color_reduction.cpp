// Whole bitmaps to fewer colours: memory, palette and pixels.
#include "bench.h"
#include "pictures.h"

namespace bench {
namespace {

struct Reduction {
  const char* name;
  int bits;
  unsigned options;
  int method;
};

constexpr Reduction reductions[] = {
    {"to 8 bits, fixed palette, nearest", 8, COLORRES_FIXED_PALETTE | COLORRES_NEAREST, 0},
    {"to 8 bits, fixed palette, error diffusion", 8, COLORRES_FIXED_PALETTE, 1},
    {"to 8 bits, optimised palette, nearest", 8, COLORRES_OPTIMISED_PALETTE | COLORRES_NEAREST, 0},
    {"to 8 bits, optimised palette, error diffusion", 8, COLORRES_OPTIMISED_PALETTE, 1},
    {"to 8 bits grey", 0, 0, 0},
    {"to 1 bit, error diffusion", 1, COLORRES_GRAY_PALETTE, 1},
    {"to 1 bit, ordered", 1, COLORRES_GRAY_PALETTE, 7},
    {"to 16 bits", 16, COLORRES_BLUE_FIRST, 0},
    {"to 32 bits", 32, COLORRES_BLUE_FIRST, 0},
};

}  // namespace

void colorReduction(Bench& bench) {
  for (const Size size : allSizes) {
    if (!bench.takes(size)) continue;
    Bitmap source(size, 24);
    paint(source);
    for (const Reduction& r : reductions) {
      const std::string operation = std::string("reduce 24 bits ") + r.name;
      if (!bench.wants(operation, size)) continue;
      source.DitheringMethod = r.method;
      const bool exact = r.bits > 8;
      const auto reduce = [&](Bitmap& result) {
        Zv_FreeBitmap(&result);
        Zv_ColorResBitmap(&source, &result, r.bits, r.options, nullptr, 0);
      };
      Bitmap result;
      reduce(result);
      std::vector<Contender> contenders = {{"Zv_ColorResBitmap", [&] { reduce(result); },
                                            [&] {
                                              // Fewer colours shift; grey and black and white keep brightness alone.
                                              return r.bits < 8 ? std::string()
                                                                : sameMean(source, result, exact ? 4 : 25);
                                            }}};
      DibSection from(size, 24);
      from.copyFrom(source);
      const int peerBits = r.bits == 0 ? 8 : r.bits;
      RGBQUAD palette[256] = {};
      if (!exact) Zv_GetBitmapColors(&result, 0, result.ColorCount, palette);
      DibSection to(size, peerBits, exact ? nullptr : palette);
      contenders.push_back({"GDI BitBlt, nearest, no allocation",
                            [&] { BitBlt(to.dc(), 0, 0, size.width, size.height, from.dc(), 0, 0, SRCCOPY); },
                            [&] {
                              GdiFlush();
                              bool touched = false;
                              for (unsigned i = 0; i < result.DataSize; ++i) touched = touched || to.bits()[i] != 0;
                              return touched ? std::string() : std::string("nothing was written");
                            }});
      bench.compare(operation, size, result.DataSize, contenders);
    }
  }
}

}  // namespace bench
