// Dither runs, row by row into memory of the caller.
#include "bench.h"
#include "pictures.h"
#include "wic.h"

namespace bench {
namespace {

const char* methodName(int method) {
  switch (method) {
    case 0:
      return "nearest";
    case 5:
      return "error diffusion 5, 3 rows";
    case 1:
      return "error diffusion 1, 1 row";
    case 2:
      return "error diffusion 2, 2 rows";
    default:
      return "ordered 7";
  }
}

void ditherAll(Bitmap& result, Bitmap& source, int method, const RGBQUAD* palette, unsigned colors) {
  source.DitheringMethod = method;
  Zv_StartDithering(&source, palette, colors);
  for (int y = 0; y < source.Height; ++y) Zv_DitherLine(&source, source.row(y), result.row(y));
  Zv_StopDithering(&source);
}

void ditherTo(Bench& bench, const std::string& name, Bitmap& source, Size size, const RGBQUAD* palette, int bits) {
  for (const int method : {0, 1, 2, 5, 7}) {
    const std::string operation = "dither " + name + ", " + methodName(method);
    if (!bench.wants(operation, size)) continue;
    Bitmap result(size, bits);
    if (palette != nullptr) Zv_PutBitmapColors(&result, 0, result.ColorCount, palette);
    std::vector<Contender> contenders = {
        {"Zv_DitherLine", [&] { ditherAll(result, source, method, palette, result.ColorCount); },
         // Diffusion keeps the mean but for what is clamped; without it, levels that are cut shift colours.
         [&] {
           return sameMean(source, result, method == 0 ? 100 : method <= 6 ? 8 : 40);
         }}};
    Bitmap peer(size, bits);
    if (source.BitsPerPixel == 24 && bits == 8 && size.width <= cachedSize.width) {
      WicConversion conversion(source, GUID_WICPixelFormat24bppBGR, GUID_WICPixelFormat8bppIndexed,
                               WICBitmapDitherTypeErrorDiffusion,
                               palette != nullptr ? palette : Zv_IntGetFixedPalette(bits), 1u << bits);
      if (conversion.run(peer)) {
        contenders.push_back(
            {"WIC format converter", [&] { conversion.run(peer); }, [&] { return sameMean(source, peer, 40); }});
      }
      bench.compare(operation, size, result.DataSize, contenders);
    } else {
      bench.compare(operation, size, result.DataSize, contenders);
    }
  }
}

}  // namespace

void dithering(Bench& bench) {
  for (const Size size : allSizes) {
    if (!bench.takes(size)) continue;
    Bitmap color(size, 24), gray(size, 8);
    paint(color);
    paint(gray);
    makeGray(gray);
    RGBQUAD palette[256];
    Bitmap reduced;
    Zv_ColorResBitmap(&color, &reduced, 8, COLORRES_OPTIMISED_PALETTE | COLORRES_NEAREST, nullptr, 0);
    Zv_GetBitmapColors(&reduced, 0, 256, palette);
    ditherTo(bench, "24 bits to the fixed palette of 8", color, size, nullptr, 8);
    ditherTo(bench, "24 bits to another palette of 8", color, size, palette, 8);
    ditherTo(bench, "24 bits to the fixed palette of 4", color, size, nullptr, 4);
    ditherTo(bench, "8 bits grey to 1", gray, size, nullptr, 1);
  }
}

}  // namespace bench
