#include "wic.h"

namespace bench {

WicConversion::WicConversion(const Bitmap& source, const GUID& from, const GUID& to, WICBitmapDitherType dither,
                             const RGBQUAD* palette, unsigned colorCount)
    : to_(to), dither_(dither) {
  if (FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                              reinterpret_cast<void**>(&factory_)))) {
    return;
  }
  factory_->CreateBitmapFromMemory(static_cast<UINT>(source.Width), static_cast<UINT>(source.Height), from,
                                   source.BytesPerLine, source.DataSize, source.Data, &bitmap_);
  if (palette != nullptr && SUCCEEDED(factory_->CreatePalette(&palette_))) {
    std::vector<WICColor> colors;
    for (unsigned i = 0; i < colorCount; ++i) {
      colors.push_back(0xFF000000u | unsigned(palette[i].rgbRed) << 16 | unsigned(palette[i].rgbGreen) << 8 |
                       palette[i].rgbBlue);
    }
    palette_->InitializeCustom(colors.data(), colorCount);
  }
}

WicConversion::~WicConversion() {
  if (palette_ != nullptr) palette_->Release();
  if (bitmap_ != nullptr) bitmap_->Release();
  if (factory_ != nullptr) factory_->Release();
}

bool WicConversion::run(Bitmap& destination) {
  IWICFormatConverter* converter = nullptr;
  if (bitmap_ == nullptr || FAILED(factory_->CreateFormatConverter(&converter))) return false;
  const bool done =
      SUCCEEDED(converter->Initialize(bitmap_, to_, dither_, palette_, 0, WICBitmapPaletteTypeCustom)) &&
      SUCCEEDED(converter->CopyPixels(nullptr, destination.BytesPerLine, destination.DataSize, destination.Data));
  converter->Release();
  return done;
}

}  // namespace bench
