// The imaging component of Windows as a peer: conversions between pixel formats, sizes, turns.
#pragma once

#include <wincodec.h>
#include <windows.h>

#include "pictures.h"

namespace bench {

// Converts a bitmap's rows into a buffer as often as wanted. `palette`: colours of an indexed destination.
class WicConversion {
 public:
  WicConversion(const Bitmap& source, const GUID& from, const GUID& to, WICBitmapDitherType dither,
                const RGBQUAD* palette, unsigned colorCount);
  WicConversion(const WicConversion&) = delete;
  WicConversion& operator=(const WicConversion&) = delete;
  ~WicConversion();

  // False when the component does not convert this way; `destination` has the rows of a bitmap.
  bool run(Bitmap& destination);

 private:
  IWICImagingFactory* factory_ = nullptr;
  IWICBitmap* bitmap_ = nullptr;
  IWICPalette* palette_ = nullptr;
  GUID to_;
  WICBitmapDitherType dither_;
};

// A bitmap of up to 24 bits as a source of scaled and turned pictures.
class WicSource {
 public:
  WicSource(const Bitmap& source, const GUID& format);
  WicSource(const WicSource&) = delete;
  WicSource& operator=(const WicSource&) = delete;
  ~WicSource();

  // To the size of the destination. False when the component cannot.
  bool scale(Bitmap& destination, WICBitmapInterpolationMode mode) const;
  bool turn(Bitmap& destination, WICBitmapTransformOptions options) const;

 private:
  IWICImagingFactory* factory_ = nullptr;
  IWICBitmap* bitmap_ = nullptr;
};

}  // namespace bench
