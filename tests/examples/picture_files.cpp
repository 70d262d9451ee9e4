#include "picture_files.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <wincodec.h>
#include <windows.h>

namespace {

std::filesystem::path freshDirectory() {
  wchar_t base[MAX_PATH];
  GetTempPathW(MAX_PATH, base);
  const std::filesystem::path path = std::filesystem::path(base) / ("zv" + std::to_string(GetCurrentProcessId()));
  std::filesystem::create_directories(path);
  return path;
}

/// A different colour for every index, no two channels alike.
uint32_t samplePaletteColor(unsigned index) {
  return (index * 97 + 5) % 256 << 16 | (255 - index) << 8 | index * 31 % 256;
}

/// The pixel value: an index, a grey level of the depth, or a colour. Colours change slowly, for the sake of JPEG.
uint32_t sampleValue(const FrameFormat& format, int x, int y) {
  if (format.bitsPerPixel == 24) return static_cast<uint32_t>((x * 6) << 16 | (y * 23) << 8 | (255 - x * 3 - y * 10));
  return static_cast<uint32_t>(x * 7 + y * 13) % (1u << format.bitsPerPixel);
}

std::vector<unsigned char> sampleRow(const FrameFormat& format, int y) {
  std::vector<unsigned char> row(static_cast<size_t>((sampleWidth * format.bitsPerPixel + 7) / 8));
  for (int x = 0; x < sampleWidth; x++) {
    const uint32_t value = sampleValue(format, x, y);
    if (format.bitsPerPixel == 24) {
      for (int channel = 0; channel < 3; channel++)
        row[static_cast<size_t>(x * 3 + channel)] = static_cast<unsigned char>(value >> channel * 8);
      continue;
    }
    const int bit = x * format.bitsPerPixel;
    row[static_cast<size_t>(bit / 8)] |= static_cast<unsigned char>(value << (8 - format.bitsPerPixel - bit % 8));
  }
  return row;
}

template <typename Number>
Number numberAt(const std::vector<unsigned char>& bytes, size_t offset) {
  Number number{};
  if (offset + sizeof number <= bytes.size()) memcpy(&number, bytes.data() + offset, sizeof number);
  return number;
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() : path_(freshDirectory().string() + "\\") {}
TemporaryDirectory::~TemporaryDirectory() {
  std::filesystem::remove_all(path_);
}

void writeSample(const FrameFormat& format, const std::string& path, double dpiX, double dpiY) {
  IWICImagingFactory* factory = nullptr;
  IWICStream* stream = nullptr;
  IWICBitmapEncoder* encoder = nullptr;
  IWICBitmapFrameEncode* frame = nullptr;
  IWICPalette* palette = nullptr;
  ASSERT_EQ(S_OK, CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                   reinterpret_cast<void**>(&factory)));
  ASSERT_EQ(S_OK, factory->CreateStream(&stream));
  ASSERT_EQ(S_OK, stream->InitializeFromFilename(std::filesystem::path(path).c_str(), GENERIC_WRITE));
  ASSERT_EQ(S_OK, factory->CreateEncoder(format.container, nullptr, &encoder));
  ASSERT_EQ(S_OK, encoder->Initialize(stream, WICBitmapEncoderNoCache));
  ASSERT_EQ(S_OK, encoder->CreateNewFrame(&frame, nullptr));
  ASSERT_EQ(S_OK, frame->Initialize(nullptr));
  ASSERT_EQ(S_OK, frame->SetSize(sampleWidth, sampleHeight));
  ASSERT_EQ(S_OK, frame->SetResolution(dpiX, dpiY));
  WICPixelFormatGUID pixelFormat = format.pixelFormat;
  ASSERT_EQ(S_OK, frame->SetPixelFormat(&pixelFormat));
  ASSERT_TRUE(pixelFormat == format.pixelFormat) << "the encoder chose another format";
  if (format.indexed) {
    std::vector<WICColor> colors;
    for (unsigned i = 0; i < 1u << format.bitsPerPixel; i++) colors.push_back(0xFF000000 | samplePaletteColor(i));
    ASSERT_EQ(S_OK, factory->CreatePalette(&palette));
    ASSERT_EQ(S_OK, palette->InitializeCustom(colors.data(), static_cast<UINT>(colors.size())));
    ASSERT_EQ(S_OK, frame->SetPalette(palette));
    palette->Release();
  }
  for (int y = 0; y < sampleHeight; y++) {
    std::vector<unsigned char> row = sampleRow(format, y);
    const UINT bytes = static_cast<UINT>(row.size());
    ASSERT_EQ(S_OK, frame->WritePixels(1, bytes, bytes, row.data()));
  }
  ASSERT_EQ(S_OK, frame->Commit());
  ASSERT_EQ(S_OK, encoder->Commit());
  frame->Release();
  encoder->Release();
  stream->Release();
  factory->Release();
}

uint32_t sampleColor(const FrameFormat& format, int x, int y) {
  const uint32_t value = sampleValue(format, x, y);
  if (format.indexed) return samplePaletteColor(value);
  if (format.bitsPerPixel == 24) return value;
  return value * 255 / ((1u << format.bitsPerPixel) - 1) * 0x010101;
}

BmpFile readBmp(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  const std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(stream), {}};
  BmpFile file;
  EXPECT_EQ(0x4D42, numberAt<uint16_t>(bytes, 0)) << path;
  EXPECT_EQ(bytes.size(), numberAt<uint32_t>(bytes, 2)) << path;
  const uint32_t pixelOffset = numberAt<uint32_t>(bytes, 10);
  file.width = numberAt<int32_t>(bytes, 18);
  file.height = numberAt<int32_t>(bytes, 22);
  file.bitsPerPixel = numberAt<uint16_t>(bytes, 28);
  file.pixelsPerMeterX = numberAt<int32_t>(bytes, 38);
  file.pixelsPerMeterY = numberAt<int32_t>(bytes, 42);
  const auto bits = static_cast<size_t>(file.bitsPerPixel);
  const size_t rowBytes = (static_cast<size_t>(file.width) * bits + 31) / 32 * 4;
  for (int y = file.height - 1; y >= 0; y--) {
    for (size_t x = 0; x < static_cast<size_t>(file.width); x++) {
      const size_t at = pixelOffset + static_cast<size_t>(y) * rowBytes + x * bits / 8;
      if (bits == 24) {
        file.colors.push_back(numberAt<uint16_t>(bytes, at) | numberAt<uint8_t>(bytes, at + 2) << 16);
        continue;
      }
      const size_t index = numberAt<uint8_t>(bytes, at) >> (8 - bits - x * bits % 8) & ((1u << bits) - 1);
      file.colors.push_back(numberAt<uint32_t>(bytes, 54 + index * 4));
    }
  }
  return file;
}
