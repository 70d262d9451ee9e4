// Reading and writing pictures: every form of file comes through unharmed, at its own depth.
#include "picture_files.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <wincodec.h>
#include <windows.h>

#include "common/wic.h"

namespace {

TEST(PictureFiles, ComeThroughAtTheirOwnDepth) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  const TemporaryDirectory directory;
  const FrameFormat formats[] = {
      {"png 1 indexed", GUID_ContainerFormatPng, GUID_WICPixelFormat1bppIndexed, 1, true},
      {"png 2 indexed", GUID_ContainerFormatPng, GUID_WICPixelFormat2bppIndexed, 2, true},
      {"png 4 indexed", GUID_ContainerFormatPng, GUID_WICPixelFormat4bppIndexed, 4, true},
      {"png 8 indexed", GUID_ContainerFormatPng, GUID_WICPixelFormat8bppIndexed, 8, true},
      {"png 1 grey", GUID_ContainerFormatPng, GUID_WICPixelFormatBlackWhite, 1, false},
      {"png 2 grey", GUID_ContainerFormatPng, GUID_WICPixelFormat2bppGray, 2, false},
      {"png 4 grey", GUID_ContainerFormatPng, GUID_WICPixelFormat4bppGray, 4, false},
      {"png 8 grey", GUID_ContainerFormatPng, GUID_WICPixelFormat8bppGray, 8, false},
      {"png 24", GUID_ContainerFormatPng, GUID_WICPixelFormat24bppBGR, 24, false},
      {"bmp 4 indexed", GUID_ContainerFormatBmp, GUID_WICPixelFormat4bppIndexed, 4, true},
      {"bmp 24", GUID_ContainerFormatBmp, GUID_WICPixelFormat24bppBGR, 24, false},
      {"tiff 1 grey", GUID_ContainerFormatTiff, GUID_WICPixelFormatBlackWhite, 1, false},
      {"tiff 8 grey", GUID_ContainerFormatTiff, GUID_WICPixelFormat8bppGray, 8, false},
      {"tiff 24", GUID_ContainerFormatTiff, GUID_WICPixelFormat24bppBGR, 24, false},
      {"gif", GUID_ContainerFormatGif, GUID_WICPixelFormat8bppIndexed, 8, true},
      {"jpeg grey", GUID_ContainerFormatJpeg, GUID_WICPixelFormat8bppGray, 8, false},
      {"jpeg colour", GUID_ContainerFormatJpeg, GUID_WICPixelFormat24bppBGR, 24, false},
  };
  for (const FrameFormat& format : formats) {
    SCOPED_TRACE(format.name);
    const std::string input = directory.file("in.picture");
    writeSample(format, input, 300, 150);
    // Once through a PNG file, so that writing one is tried at every depth too.
    zv::PictureFile file = zv::readPicture(input);
    zv::writePicture(directory.file("out.png"), file.picture);
    zv::PictureFile again = zv::readPicture(directory.file("out.png"));
    zv::writePicture(directory.file("out.bmp"), again.picture);
    const BmpFile result = readBmp(directory.file("out.bmp"));

    ASSERT_EQ(sampleWidth, result.width);
    ASSERT_EQ(sampleHeight, result.height);
    EXPECT_EQ(format.bitsPerPixel == 2 ? 4 : format.bitsPerPixel, result.bitsPerPixel);
    const int tolerance = format.container == GUID_ContainerFormatJpeg ? 40 : 0;
    for (int i = 0; i < sampleWidth * sampleHeight * 3; ++i) {
      const int x = i / 3 % sampleWidth;
      const int y = i / 3 / sampleWidth;
      const auto channel = [&](uint32_t color) { return static_cast<int>(color >> i % 3 * 8 & 255); };
      ASSERT_NEAR(channel(result.at(x, y)), channel(sampleColor(format, x, y)), tolerance) << x << ", " << y;
    }
    if (format.container != GUID_ContainerFormatGif) {  // which has no resolution
      EXPECT_EQ(300, file.picture->XResolution);
      EXPECT_EQ(150, file.picture->YResolution);
      EXPECT_NEAR(300 / 0.0254, result.pixelsPerMeterX, 1);
      EXPECT_NEAR(150 / 0.0254, result.pixelsPerMeterY, 1);
    }
    const bool grey = !format.indexed && format.bitsPerPixel <= 8 && format.container == GUID_ContainerFormatPng;
    EXPECT_TRUE(!grey || Zv_IsGrayScaleBitmap(again.picture.handle()) != 0);
  }
  CoUninitialize();
}

}  // namespace
