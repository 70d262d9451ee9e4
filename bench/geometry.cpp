// Sizes and turns.
#include <cstring>

#include "bench.h"
#include "pictures.h"
#include "wic.h"

namespace bench {
namespace {

std::string depthName(int bits) {
  return std::to_string(bits) + (bits == 1 ? " bit" : " bits");
}

std::string right() {
  return {};
}

void scaleTo(Bench& bench, Size size, int bits, Size target, const char* name) {
  const Size larger = size.width > target.width ? size : target;
  Bitmap source(size, bits), result(target, bits);
  if (bits >= 8) paint(source);
  if (bits < 8) memset(source.Data, 0x5A, source.DataSize);
  DibSection from(size, bits), to(target, bits);
  from.copyFrom(source);
  const auto stretch = [&](int mode) {
    SetStretchBltMode(to.dc(), mode);
    SetBrushOrgEx(to.dc(), 0, 0, nullptr);
    StretchBlt(to.dc(), 0, 0, target.width, target.height, from.dc(), 0, 0, size.width, size.height, SRCCOPY);
    GdiFlush();
  };
  bench.compare("nearest pixels, " + depthName(bits) + name, larger, result.DataSize,
                {{"Zv_ResizeBitmap", [&] { Zv_ResizeBitmap(&source, &result); },
                  [&] { return bits >= 8 ? sameMean(source, result, 4) : right(); }},
                 {"GDI StretchBlt, COLORONCOLOR", [&] { stretch(COLORONCOLOR); }, right}});
  if (bits < 8) return;
  Bitmap work;
  std::vector<Contender> contenders = {
      {"Zv_ResampleBitmap, with allocation", [&] { Zv_ResampleBitmap(&work, target.width, target.height); },
       [&] { return sameMean(source, work, 2); },
       [&] {
         Zv_FreeBitmap(&work);
         Zv_CopyBitmap(&work, &source);
       }},
      {"GDI StretchBlt, HALFTONE", [&] { stretch(HALFTONE); }, right}};
  if (bits == 24) {
    const WicSource picture(source, GUID_WICPixelFormat24bppBGR);
    contenders.push_back({"WIC scaler, Fant", [&] { picture.scale(result, WICBitmapInterpolationModeFant); },
                          [&] { return sameMean(source, result, 4); }});
    bench.compare("smooth, " + depthName(bits) + name, larger, result.DataSize, contenders);
    return;
  }
  bench.compare("smooth, " + depthName(bits) + name, larger, result.DataSize, contenders);
}

void favorBlack(Bench& bench, Size size) {
  Bitmap source(size, 1), work;
  memset(source.Data, 0xFF, source.DataSize);
  for (int y = 0; y < size.height; y += 5) memset(source.row(y), 0x7E, source.BytesPerLine);
  bench.compare("favouring black, 1 bit, to a quarter", size, source.DataSize / 16,
                {{"Zv_SizeBitmap, with allocation",
                  [&] { Zv_SizeBitmap(&work, size.width / 4, size.height / 4, SIZE_FAVOR_BLACK); }, right,
                  [&] {
                    Zv_FreeBitmap(&work);
                    Zv_CopyBitmap(&work, &source);
                  }}});
}

void turnInPlace(Bench& bench, Size size, int bits) {
  Bitmap source(size, bits), result(size, bits);
  if (bits >= 8) paint(source);
  if (bits < 8) memset(source.Data, 0x5A, source.DataSize);
  const WicSource picture(source, bits == 24 ? GUID_WICPixelFormat24bppBGR : GUID_WICPixelFormat8bppIndexed);
  const auto compare = [&](const char* name, const char* function, const std::function<void()>& run,
                           WICBitmapTransformOptions options) {
    std::vector<Contender> contenders = {{function, run, right}};
    if (bits == 24 && picture.turn(result, options)) {  // not every system has every turn
      contenders.push_back(
          {"WIC flip and rotate", [&] { picture.turn(result, options); }, [&] { return sameMean(source, result, 1); }});
    }
    bench.compare(name + (", " + depthName(bits)), size, source.DataSize, contenders);
  };
  Bitmap work;
  Zv_CopyBitmap(&work, &source);
  compare(
      "flip", "Zv_FlipBitmap", [&] { Zv_FlipBitmap(&work); }, WICBitmapTransformFlipVertical);
  compare(
      "mirror", "Zv_ReverseBitmap", [&] { Zv_ReverseBitmap(&work); }, WICBitmapTransformFlipHorizontal);
  compare(
      "quarter turn", "Zv_RotateBitmap", [&] { Zv_RotateBitmap(&work, 90, ROTATE_RESIZE, 0); },
      WICBitmapTransformRotate90);
  const auto refresh = [&] {
    Zv_FreeBitmap(&work);
    Zv_CopyBitmap(&work, &source);
  };
  bench.compare("turn by 10 degrees, " + depthName(bits), size, source.DataSize,
                {{"nearest pixels", [&] { Zv_RotateBitmap(&work, 10, 0, 0); }, right, refresh},
                 {"smooth", [&] { Zv_RotateBitmap(&work, 10, ROTATE_RESAMPLE, 0); }, right, refresh}});
  bench.compare("shear by 10 degrees, " + depthName(bits), size, source.DataSize,
                {{"Zv_ShearBitmap", [&] { Zv_ShearBitmap(&work, 1000, 1, 0); }, right, refresh}});
}

}  // namespace

void geometry(Bench& bench) {
  for (const Size size : {cachedSize, largeSize}) {
    if (!bench.takes(size)) continue;
    const Size quarter = {size.width / 4, size.height / 4};
    for (const int bits : {24, 1}) {
      scaleTo(bench, size, bits, quarter, ", to a quarter");
      scaleTo(bench, quarter, bits, size, ", to four times the size");
      turnInPlace(bench, size, bits);
    }
    favorBlack(bench, size);
  }
}

}  // namespace bench
