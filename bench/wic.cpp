#include "wic.h"

namespace bench {
namespace {

IWICImagingFactory* makeFactory() {
  IWICImagingFactory* factory = nullptr;
  const HRESULT made = CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                        reinterpret_cast<void**>(&factory));
  return SUCCEEDED(made) ? factory : nullptr;
}

IWICBitmap* makeBitmap(IWICImagingFactory& factory, const Bitmap& source, const GUID& format) {
  IWICBitmap* bitmap = nullptr;
  factory.CreateBitmapFromMemory(static_cast<UINT>(source.Width), static_cast<UINT>(source.Height), format,
                                 source.BytesPerLine, source.DataSize, source.Data, &bitmap);
  return bitmap;
}

bool copyPixels(IWICBitmapSource& source, Bitmap& destination) {
  return SUCCEEDED(source.CopyPixels(nullptr, destination.BytesPerLine, destination.DataSize, destination.Data));
}

}  // namespace

WicConversion::WicConversion(const Bitmap& source, const GUID& from, const GUID& to, WICBitmapDitherType dither,
                             const RGBQUAD* palette, unsigned colorCount)
    : factory_(makeFactory()), to_(to), dither_(dither) {
  if (factory_ == nullptr) return;
  bitmap_ = makeBitmap(*factory_, source, from);
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
  const bool done = SUCCEEDED(converter->Initialize(bitmap_, to_, dither_, palette_, 0, WICBitmapPaletteTypeCustom)) &&
                    copyPixels(*converter, destination);
  converter->Release();
  return done;
}

WicSource::WicSource(const Bitmap& source, const GUID& format) : factory_(makeFactory()) {
  if (factory_ != nullptr) bitmap_ = makeBitmap(*factory_, source, format);
}

WicSource::~WicSource() {
  if (bitmap_ != nullptr) bitmap_->Release();
  if (factory_ != nullptr) factory_->Release();
}

bool WicSource::scale(Bitmap& destination, WICBitmapInterpolationMode mode) const {
  IWICBitmapScaler* scaler = nullptr;
  if (bitmap_ == nullptr || FAILED(factory_->CreateBitmapScaler(&scaler))) return false;
  const auto width = static_cast<UINT>(destination.Width), height = static_cast<UINT>(destination.Height);
  const bool done = SUCCEEDED(scaler->Initialize(bitmap_, width, height, mode)) && copyPixels(*scaler, destination);
  scaler->Release();
  return done;
}

bool WicSource::turn(Bitmap& destination, WICBitmapTransformOptions options) const {
  IWICBitmapFlipRotator* rotator = nullptr;
  if (bitmap_ == nullptr || FAILED(factory_->CreateBitmapFlipRotator(&rotator))) return false;
  const bool done = SUCCEEDED(rotator->Initialize(bitmap_, options)) && copyPixels(*rotator, destination);
  rotator->Release();
  return done;
}

}  // namespace bench
