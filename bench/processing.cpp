// Filling, combining, grey and halftones. The last two replace the image they are given, so each run gets a copy, made
// outside the time that is measured.
#include <cmath>
#include <cstring>

#include "bench.h"
#include "pictures.h"

namespace bench {
namespace {

double brightness(const Mean& mean) {
  return (mean.channel[0] + 5 * mean.channel[1] + 2 * mean.channel[2]) / 8;
}

std::string sameBrightness(Bitmap& a, Bitmap& b, double tolerance) {
  const double first = brightness(meanColor(a)), second = brightness(meanColor(b));
  if (std::abs(first - second) <= tolerance) return {};
  return "brightness " + std::to_string(second) + " instead of " + std::to_string(first);
}

// A conversion in place. What the screens cannot show of the darkest and the lightest levels is the tolerance.
void replace(Bench& bench, const std::string& operation, Size size, int sourceBits, int resultBits, double tolerance,
             int (*convert)(Bitmap& bitmap)) {
  if (!bench.wants(operation, size)) return;
  Bitmap source(size, sourceBits), work;
  if (sourceBits == 8) makeGray(source);
  paint(source);
  const auto refresh = [&] {
    Zv_FreeBitmap(&work);
    Zv_CopyBitmap(&work, &source);
  };
  const size_t resultBytes = (size_t(size.width) * size_t(resultBits) + 31) / 32 * 4 * size_t(size.height);
  bench.compare(operation, size, resultBytes,
                {{"with allocation", [&] { convert(work); },
                  [&] {
                    return work.BitsPerPixel != resultBits ? std::string("not converted")
                                                           : sameBrightness(source, work, tolerance);
                  },
                  refresh}});
}

std::string sameBytes(const Bitmap& a, const unsigned char* bits) {
  return memcmp(a.Data, bits, a.DataSize) == 0 ? std::string() : std::string("pixels differ");
}

void combineAll(Bench& bench, Size size, int bits) {
  Bitmap source(size, bits), target(size, bits);
  const std::string depth = std::to_string(bits) + (bits == 1 ? " bit" : " bits");
  if (bits == 1) memset(source.Data, 0x5A, source.DataSize);
  if (bits > 1) paint(source);
  if (bits == 8) makeGray(source), makeGray(target);
  DibSection from(size, bits), to(size, bits);
  from.copyFrom(source);
  struct {
    const char* name;
    unsigned operation;
    DWORD blit;  // 0: there is none like it
  } const operations[] = {{"copy", COMBINE_COPY, SRCCOPY}, {"xor", COMBINE_XOR, SRCINVERT}, {"add", COMBINE_ADD, 0}};
  for (const auto& o : operations) {
    if (o.operation == COMBINE_ADD && bits < 8) continue;
    memset(target.Data, 0, target.DataSize);
    const auto run = [&] { Zv_CombineBitmap(&target, 0, 0, size.width, size.height, &source, 0, 0, o.operation); };
    std::vector<Contender> contenders = {{"Zv_CombineBitmap", run, [&] { return sameBytes(source, target.Data); }}};
    if (o.blit != 0) {
      contenders.push_back({"GDI BitBlt",
                            [&] { BitBlt(to.dc(), 0, 0, size.width, size.height, from.dc(), 0, 0, o.blit); },
                            [&] { return GdiFlush(), std::string(); }});
    }
    bench.compare("combine " + depth + ", " + o.name, size, source.DataSize, contenders);
  }
}

void fillAll(Bench& bench, Size size) {
  Bitmap target(size, 24);
  DibSection to(size, 24);
  const COLORREF color = RGB(10, 200, 30);
  const auto filled = [&] {
    return Zv_GetPixelColor(&target, size.height / 2, size.width / 2) == color ? std::string() : "not filled";
  };
  bench.compare("fill 24 bits", size, target.DataSize,
                {{"Zv_FillBitmap", [&] { Zv_FillBitmap(&target, color); }, filled},
                 {"memset", [&] { memset(target.Data, 7, target.DataSize); }, [] { return std::string(); }}});
  const RECT oval = {0, 0, size.width, size.height};
  Zv_SetBitmapRgnEllipse(&target, nullptr, &oval, CombineSet);
  bench.compare("fill 24 bits in an ellipse", size, target.DataSize,
                {{"Zv_FillBitmap", [&] { Zv_FillBitmap(&target, color); }, filled}});
}

}  // namespace

void processing(Bench& bench) {
  for (const Size size : allSizes) {
    if (!bench.takes(size)) continue;
    for (const int bits : {24, 32, 8, 1}) {
      replace(bench, "grey from " + std::to_string(bits), size, bits, 8, 1,
              [](Bitmap& bitmap) { return Zv_GrayScaleBitmap(&bitmap); });
    }
    for (const int bits : {8, 24}) {
      const std::string from = "halftone from " + std::to_string(bits);
      replace(bench, from + ", straight", size, bits, 1, 6,
              [](Bitmap& bitmap) { return Zv_HalfToneBitmap(&bitmap, HALFTONE_DISPERSED); });
      replace(bench, from + ", turned", size, bits, 1, 6,
              [](Bitmap& bitmap) { return Zv_HalfToneBitmapExt(&bitmap, HALFTONE_CLUSTERED, 1500); });
    }
    for (const int bits : {24, 8, 1}) combineAll(bench, size, bits);
    fillAll(bench, size);
  }
}

}  // namespace bench
