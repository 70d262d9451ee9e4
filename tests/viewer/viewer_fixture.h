// What the tests of zavoview share: a small picture that is open in the program, and a plain model of it.
#pragma once

#include <gtest/gtest.h>
#include <objbase.h>
#include <string>
#include <wincodec.h>
#include <windows.h>

#include "examples/picture_files.h"
#include "support/test_bitmap.h"
#include "viewer/viewer_driver.h"
#include "zavoview/resource.h"

/// Parts of the status bar, from the left.
enum StatusPart { MessagePart, ScalePart, PicturePart, SelectionPart, PositionPart, ColorPart };

/// Colours, 0xRRGGBB, row by row from the top.
using Model = zavotest::Picture;

/// Every pixel by a rule.
template <typename Rule>
Model makeModel(int width, int height, Rule rule) {
  Model model(width, height);
  for (int y = 0; y < height; y++)
    for (int x = 0; x < width; x++) model.at(x, y) = rule(x, y);
  return model;
}

class ViewerTest : public testing::Test {
 protected:
  void SetUp() override {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    writeSample(sample, file("in.bmp"), 96, 96);
  }
  void TearDown() override { CoUninitialize(); }

  [[nodiscard]] std::string file(const std::string& name) const { return directory.file(name); }
  [[nodiscard]] std::string quoted(const std::string& name) const { return "\"" + file(name) + "\""; }

  static Model sampleModel() {
    return makeModel(sampleWidth, sampleHeight, [](int x, int y) { return sampleColor(sample, x, y); });
  }

  static void waitForPicture(const ViewerDriver& viewer) { expectSoon(viewer, ScalePart, "100 %"); }
  /// A part of the status bar says this within some seconds.
  static void expectSoon(const ViewerDriver& viewer, StatusPart part, const std::string& text) {
    EXPECT_TRUE(viewer.soon([&] { return viewer.status(part) == text; }))
        << viewer.status(part) << " instead of " << text;
  }

  /// Where a pixel of a picture that fits into the canvas at its actual size is.
  static POINT pointOf(const ViewerDriver& viewer, SIZE picture, int x, int y) {
    RECT client;
    GetClientRect(viewer.canvas(), &client);
    return {(client.right - picture.cx) / 2 + x, (client.bottom - picture.cy) / 2 + y};
  }
  static POINT samplePoint(const ViewerDriver& viewer, int x, int y) {
    return pointOf(viewer, {sampleWidth, sampleHeight}, x, y);
  }

  [[nodiscard]] Model read(const std::string& name) const {
    BmpFile bmp = readBmp(file(name));
    Model model(bmp.width, bmp.height);
    model.pixels = std::move(bmp.colors);
    return model;
  }
  /// Saves the picture under its own name and reads the file.
  [[nodiscard]] Model saved(const ViewerDriver& viewer, const std::string& name = "in.bmp") const {
    viewer.command(ID_SAVE);
    return read(name);
  }

  inline static const FrameFormat sample = {"bmp 24", GUID_ContainerFormatBmp, GUID_WICPixelFormat24bppBGR, 24, false};
  TemporaryDirectory directory;
};
