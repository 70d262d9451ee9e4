// Writing: the library makes a packed DIB of the picture; a BMP file is that DIB behind a file header, a PNG file is
// encoded from it row by row.
#include <algorithm>
#include <array>
#include <cmath>
#include <wincodec.h>
#include <windows.h>

#include "common/com.h"
#include "common/dib.h"
#include "common/text.h"
#include "common/wic.h"
#include "common/wic_frame.h"

namespace zv {

namespace {

struct FileHandle {
  HANDLE handle;
  ~FileHandle() {
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  }
};

void requireWindows(bool success) {
  if (!success) throw ComError{HRESULT_FROM_WIN32(GetLastError())};
}

void writeBmp(const std::wstring& path, Dib& dib) {
  const std::span<const unsigned char> pixels = dib.pixels();
  const auto* start = reinterpret_cast<const unsigned char*>(dib.header());
  const auto headerBytes = static_cast<DWORD>(pixels.data() - start);
  const auto bytes = static_cast<DWORD>(headerBytes + pixels.size());

  BITMAPFILEHEADER header{};
  header.bfType = 0x4D42;  // "BM"
  header.bfOffBits = DWORD{sizeof header} + headerBytes;
  header.bfSize = DWORD{sizeof header} + bytes;

  FileHandle file{CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)};
  requireWindows(file.handle != INVALID_HANDLE_VALUE);
  DWORD written = 0;
  requireWindows(WriteFile(file.handle, &header, sizeof header, &written, nullptr));
  requireWindows(WriteFile(file.handle, start, bytes, &written, nullptr));
}

/// Grey palettes that rise evenly over the whole depth need no palette in the file.
bool isGrayRamp(std::span<const RGBQUAD> palette) {
  for (size_t i = 0; i < palette.size(); i++) {
    const size_t level = i * 255 / (palette.size() - 1);
    if (palette[i].rgbRed != level || palette[i].rgbGreen != level || palette[i].rgbBlue != level) return false;
  }
  return true;
}

const GUID& pngFormat(int bitsPerPixel, bool gray) {
  switch (bitsPerPixel) {
    case 1:
      return gray ? GUID_WICPixelFormatBlackWhite : GUID_WICPixelFormat1bppIndexed;
    case 4:
      return gray ? GUID_WICPixelFormat4bppGray : GUID_WICPixelFormat4bppIndexed;
    case 8:
      return gray ? GUID_WICPixelFormat8bppGray : GUID_WICPixelFormat8bppIndexed;
    case 32:
      return GUID_WICPixelFormat32bppBGRA;
    default:
      return GUID_WICPixelFormat24bppBGR;
  }
}

void setPalette(IWICImagingFactory* factory, IWICBitmapFrameEncode* frame, std::span<const RGBQUAD> colors) {
  std::array<WICColor, 256> values;
  const size_t count = std::min(colors.size(), values.size());
  for (size_t i = 0; i < count; i++)
    values[i] = 0xFF000000u | static_cast<WICColor>(colors[i].rgbRed) << 16 |
                static_cast<WICColor>(colors[i].rgbGreen) << 8 | colors[i].rgbBlue;
  ComPtr<IWICPalette> palette;
  require(factory->CreatePalette(palette.out()));
  require(palette->InitializeCustom(values.data(), static_cast<UINT>(count)));
  require(frame->SetPalette(palette.get()));
}

void writePng(const std::wstring& path, Dib& dib) {
  const ComPtr<IWICImagingFactory> factory = makeWicFactory();
  ComPtr<IWICStream> stream;
  require(factory->CreateStream(stream.out()));
  require(stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE));
  ComPtr<IWICBitmapEncoder> encoder;
  require(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.out()));
  require(encoder->Initialize(stream.get(), WICBitmapEncoderNoCache));
  ComPtr<IWICBitmapFrameEncode> frame;
  ComPtr<IPropertyBag2> options;
  require(encoder->CreateNewFrame(frame.out(), options.out()));
  require(frame->Initialize(options.get()));
  require(frame->SetSize(static_cast<UINT>(dib.width()), static_cast<UINT>(dib.height())));
  require(frame->SetResolution(dib.header()->biXPelsPerMeter * 0.0254, dib.header()->biYPelsPerMeter * 0.0254));

  const bool gray = dib.bitsPerPixel() <= 8 && isGrayRamp(dib.palette());
  WICPixelFormatGUID format = pngFormat(dib.bitsPerPixel(), gray);
  require(frame->SetPixelFormat(&format));
  if (format != pngFormat(dib.bitsPerPixel(), gray)) throw ComError{WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT};
  if (dib.bitsPerPixel() <= 8 && !gray) setPalette(factory.get(), frame.get(), dib.palette());

  const UINT rowBytes = static_cast<UINT>(dib.rowBytes());
  for (int y = 0; y < dib.height(); y++) require(frame->WritePixels(1, rowBytes, rowBytes, dib.row(y)));
  require(frame->Commit());
  require(encoder->Commit());
}

/// DIBs that the library makes have no alpha: this one is of the picture's own rows.
Dib makeAlphaDib(Picture& picture) {
  BitmapHandle* bitmap = picture.handle();
  check(Zv_ChangeBitmapViewPerspective(nullptr, bitmap, VIEW_UPRIGHT), "turn upright");
  Dib dib(static_cast<UINT>(bitmap->Width), static_cast<UINT>(bitmap->Height), 32);
  dib.header()->biXPelsPerMeter = std::lround(bitmap->XResolution / 0.0254);
  dib.header()->biYPelsPerMeter = std::lround(bitmap->YResolution / 0.0254);
  const PixelLock lock(picture);
  for (int y = 0; y < dib.height(); y++)
    Zv_GetBitmapRow(bitmap, dib.row(y), static_cast<unsigned>(y), bitmap->BytesPerLine);
  return dib;
}

std::string writeErrorText(HRESULT code) {
  if (HRESULT_FACILITY(code) == FACILITY_WIN32) return windowsErrorText(static_cast<DWORD>(HRESULT_CODE(code)));
  return format("the encoder failed (0x%08lX)", static_cast<unsigned long>(code));
}

void write(const std::string& path, OutputFormat kind, Picture& picture, Dib (*makeDib)(Picture&)) try {
  Dib dib = makeDib(picture);
  if (kind == OutputFormat::Bmp)
    writeBmp(wide(path), dib);
  else
    writePng(wide(path), dib);
} catch (const ComError& error) {
  throw Failure("cannot write " + path + ": " + writeErrorText(error.code));
} catch (const Failure& failure) {
  throw Failure("cannot write " + path + ": " + failure.what());
}

}  // namespace

OutputFormat outputFormat(const std::string& path) {
  std::string ending = path.substr(path.find_last_of('.') + 1);
  std::ranges::transform(ending, ending.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
  if (ending == "png") return OutputFormat::Png;
  if (ending == "bmp") return OutputFormat::Bmp;
  throw UsageError("cannot write " + path + ": the name must end in .png or .bmp");
}

void writePicture(const std::string& path, Picture& picture) {
  write(path, outputFormat(path), picture, makeDib);
}

void writePictureWithAlpha(const std::string& path, Picture& picture) {
  if (outputFormat(path) != OutputFormat::Png)
    throw UsageError("cannot write " + path + ": with an alpha the name must end in .png");
  write(path, OutputFormat::Png, picture, makeAlphaDib);
}

}  // namespace zv
