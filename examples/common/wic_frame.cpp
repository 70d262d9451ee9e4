// A frame becomes a packed DIB with the top row first. Indexed and grey frames are taken as they are, as indexes with
// their palette: they are the smallest form, and WIC's converter cannot be relied on for them.
#include "common/wic_frame.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>
#include <wincodec.h>
#include <windows.h>

#include "common/com.h"
#include "common/dib.h"
#include "common/text.h"

namespace zv {

namespace {

/// A WIC format whose pixels are palette indexes or grey levels.
struct IndexedFormat {
  const GUID& guid;
  int bitsPerPixel;
  bool gray;
};

const IndexedFormat indexedFormats[] = {
    {GUID_WICPixelFormat1bppIndexed, 1, false}, {GUID_WICPixelFormat2bppIndexed, 2, false},
    {GUID_WICPixelFormat4bppIndexed, 4, false}, {GUID_WICPixelFormat8bppIndexed, 8, false},
    {GUID_WICPixelFormatBlackWhite, 1, true},   {GUID_WICPixelFormat2bppGray, 2, true},
    {GUID_WICPixelFormat4bppGray, 4, true},     {GUID_WICPixelFormat8bppGray, 8, true},
};

/// Pixels of two bits have no form as a DIB: spreads them over four bits, from the end so that it works in place.
void widenTwoToFourBits(unsigned char* row, int width) {
  for (int x = (width - 1) & ~1; x >= 0; x -= 2) {
    const int pair = row[x / 4] >> (4 - x % 4 * 2);
    row[x / 2] = static_cast<unsigned char>((pair & 0x0C) << 2 | (pair & 0x03));
  }
}

/// 16-bit grey keeps its upper byte.
void narrowGray(unsigned char* row, const unsigned char* levels, int width) {
  for (int x = 0; x < width; x++) row[x] = levels[2 * x + 1];
}

void setGrayPalette(std::span<RGBQUAD> colors) {
  for (size_t i = 0; i < colors.size(); i++) {
    const BYTE level = static_cast<BYTE>(i * 255 / (colors.size() - 1));
    colors[i] = {level, level, level, 0};
  }
}

Dib readIndexed(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame, const IndexedFormat& format, UINT width,
                UINT height) {
  Dib dib(width, height, format.bitsPerPixel == 2 ? 4 : format.bitsPerPixel);
  const std::span<RGBQUAD> colors = dib.palette();
  if (format.gray) {
    setGrayPalette(colors.first(size_t{1} << format.bitsPerPixel));
  } else {
    ComPtr<IWICPalette> palette;
    require(factory->CreatePalette(palette.out()));
    require(frame->CopyPalette(palette.get()));
    std::array<WICColor, 256> values{};
    UINT count = 0;
    require(palette->GetColors(static_cast<UINT>(values.size()), values.data(), &count));
    for (size_t i = 0; i < std::min<size_t>(count, colors.size()); i++)
      colors[i] = {static_cast<BYTE>(values[i]), static_cast<BYTE>(values[i] >> 8), static_cast<BYTE>(values[i] >> 16),
                   0};
  }
  require(frame->CopyPixels(nullptr, static_cast<UINT>(dib.rowBytes()), static_cast<UINT>(dib.pixels().size()),
                            dib.pixels().data()));
  if (format.bitsPerPixel == 2)
    for (int y = 0; y < dib.height(); y++) widenTwoToFourBits(dib.row(y), dib.width());
  return dib;
}

Dib readDeepGray(IWICBitmapFrameDecode* frame, UINT width, UINT height) {
  Dib dib(width, height, 8);
  setGrayPalette(dib.palette());
  std::vector<unsigned char> levels(size_t{width} * 2);
  for (int y = 0; y < dib.height(); y++) {
    const WICRect line = {0, y, dib.width(), 1};
    const UINT bytes = static_cast<UINT>(levels.size());
    require(frame->CopyPixels(&line, bytes, bytes, levels.data()));
    narrowGray(dib.row(y), levels.data(), dib.width());
  }
  return dib;
}

bool hasAlpha(const GUID& pixelFormat) {
  static const GUID* const formats[] = {&GUID_WICPixelFormat32bppBGRA, &GUID_WICPixelFormat32bppPBGRA,
                                        &GUID_WICPixelFormat32bppRGBA, &GUID_WICPixelFormat64bppRGBA};
  return std::ranges::any_of(formats, [&](const GUID* format) { return pixelFormat == *format; });
}

Dib readDirect(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame, const GUID& pixelFormat, UINT width,
               UINT height) {
  const bool alpha = hasAlpha(pixelFormat);
  ComPtr<IWICFormatConverter> converter;
  require(factory->CreateFormatConverter(converter.out()));
  require(converter->Initialize(frame, alpha ? GUID_WICPixelFormat32bppBGRA : GUID_WICPixelFormat24bppBGR,
                                WICBitmapDitherTypeNone, nullptr, 0, WICBitmapPaletteTypeCustom));
  Dib dib(width, height, alpha ? 32 : 24);
  require(converter->CopyPixels(nullptr, static_cast<UINT>(dib.rowBytes()), static_cast<UINT>(dib.pixels().size()),
                                dib.pixels().data()));
  return dib;
}

Dib readPixels(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame) {
  UINT width = 0;
  UINT height = 0;
  WICPixelFormatGUID pixelFormat;
  require(frame->GetSize(&width, &height));
  require(frame->GetPixelFormat(&pixelFormat));
  for (const IndexedFormat& format : indexedFormats)
    if (pixelFormat == format.guid) return readIndexed(factory, frame, format, width, height);
  if (pixelFormat == GUID_WICPixelFormat16bppGray) return readDeepGray(frame, width, height);
  return readDirect(factory, frame, pixelFormat, width, height);
}

Dib readFrame(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame) {
  Dib dib = readPixels(factory, frame);
  double dpiX = 0;
  double dpiY = 0;
  if (SUCCEEDED(frame->GetResolution(&dpiX, &dpiY))) {
    dib.header()->biXPelsPerMeter = std::lround(dpiX / 0.0254);
    dib.header()->biYPelsPerMeter = std::lround(dpiY / 0.0254);
  }
  return dib;
}

}  // namespace

ComPtr<IWICImagingFactory> makeWicFactory() {
  ComPtr<IWICImagingFactory> factory;
  require(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                           reinterpret_cast<void**>(factory.out())));
  return factory;
}

ComPtr<IWICBitmapDecoder> openDecoder(IWICImagingFactory* factory, const std::wstring& path) {
  ComPtr<IWICBitmapDecoder> decoder;
  require(factory->CreateDecoderFromFilename(path.c_str(), nullptr, GENERIC_READ, WICDecodeMetadataCacheOnDemand,
                                             decoder.out()));
  return decoder;
}

Picture pictureOfFrame(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame) {
  Picture picture;
  Dib dib = readFrame(factory, frame);
  const HGLOBAL memory = dib.release();
  if (const int status = Zv_ChangeFromDIB(picture.handle(), memory); status != KSUCCESS) {
    GlobalFree(memory);
    throw Failure(statusText(status));
  }
  return picture;
}

std::string wicReadErrorText(HRESULT code) {
  switch (code) {
    case WINCODEC_ERR_COMPONENTNOTFOUND:
    case WINCODEC_ERR_UNKNOWNIMAGEFORMAT:
      return "not a picture in a known format";
    case WINCODEC_ERR_BADIMAGE:
    case WINCODEC_ERR_BADHEADER:
    case WINCODEC_ERR_BADSTREAMDATA:
    case WINCODEC_ERR_STREAMREAD:
    case WINCODEC_ERR_FRAMEMISSING:
      return "the picture is damaged";
    case E_OUTOFMEMORY:
      return "out of memory";
    default:
      if (HRESULT_FACILITY(code) == FACILITY_WIN32) return windowsErrorText(static_cast<DWORD>(HRESULT_CODE(code)));
      return format("the decoder failed (0x%08lX)", static_cast<unsigned long>(code));
  }
}

}  // namespace zv
