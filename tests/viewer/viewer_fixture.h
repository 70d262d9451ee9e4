// What the tests of zavoview share: a small picture that is open in the program, and a plain model of it.
#pragma once

#include <algorithm>
#include <gtest/gtest.h>
#include <objbase.h>
#include <string>
#include <vector>
#include <wincodec.h>
#include <windows.h>

#include "examples/picture_files.h"
#include "viewer/viewer_driver.h"
#include "zavoview/resource.h"

/// Parts of the status bar, from the left.
enum StatusPart { MessagePart, ScalePart, PicturePart, SelectionPart, PositionPart, ColorPart };

/// Colours, 0xRRGGBB, row by row from the top.
struct Model {
  int width = 0;
  int height = 0;
  std::vector<uint32_t> colors;
  [[nodiscard]] uint32_t at(int x, int y) const { return colors[static_cast<size_t>(y * width + x)]; }
  uint32_t& at(int x, int y) { return colors[static_cast<size_t>(y * width + x)]; }
};

/// Every pixel by a rule.
template <typename Rule>
Model makeModel(int width, int height, Rule rule) {
  Model model{width, height, {}};
  for (int y = 0; y < height; y++)
    for (int x = 0; x < width; x++) model.colors.push_back(rule(x, y));
  return model;
}

inline uint32_t rgbOf(COLORREF color) {
  return static_cast<uint32_t>(GetRValue(color) << 16 | GetGValue(color) << 8 | GetBValue(color));
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

  static void waitForPicture(const ViewerDriver& viewer) {
    ASSERT_TRUE(viewer.soon([&] { return viewer.status(ScalePart) == "100 %"; }));
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

  /// Saves the picture under its own name and reads the file.
  [[nodiscard]] Model saved(const ViewerDriver& viewer, const std::string& name = "in.bmp") const {
    viewer.command(ID_SAVE);
    BmpFile bmp = readBmp(file(name));
    return {bmp.width, bmp.height, std::move(bmp.colors)};
  }

  static void expectSame(const Model& expected, const Model& model) {
    ASSERT_EQ(expected.width, model.width);
    ASSERT_EQ(expected.height, model.height);
    int wrong = 0;
    for (int y = 0; y < model.height; y++)
      for (int x = 0; x < model.width; x++)
        if (model.at(x, y) != expected.at(x, y) && wrong++ < 5)
          ADD_FAILURE() << "pixel " << x << ", " << y << " is " << std::hex << model.at(x, y) << " instead of "
                        << expected.at(x, y);
    EXPECT_EQ(0, wrong) << "wrong pixels";
  }

  inline static const FrameFormat sample = {"bmp 24", GUID_ContainerFormatBmp, GUID_WICPixelFormat24bppBGR, 24, false};
  TemporaryDirectory directory;
};
