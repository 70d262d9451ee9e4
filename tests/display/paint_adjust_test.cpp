// Brightness, contrast and gamma: the table they make, and the settings themselves.
#include <zavo.h>

#include <gtest/gtest.h>
#include <thread>

#include "display/paint_model.h"
#include "support/canvas.h"

namespace zavotest {
namespace {

TEST(PaintAdjust, TablesOfTheThreeAdjustments) {
  constexpr int inputs[] = {0, 1, 16, 31, 32, 64, 100, 128, 164, 165, 200, 254, 255};
  const struct {
    int intensity, contrast, gamma;
    int levels[13];
  } cases[] = {
      {-1000, 0, 100, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},  // (-255000 + 500) / 1000 is -254
      {100, 0, 100, {26, 27, 42, 57, 58, 90, 126, 154, 190, 191, 226, 255, 255}},
      {0, 1000, 100, {0, 0, 0, 0, 0, 62, 131, 185, 254, 255, 255, 255, 255}},
      {0, 1, 100, {0, 1, 16, 31, 32, 64, 100, 129, 165, 166, 201, 255, 255}},
      {0, 500, 100, {0, 0, 0, 21, 23, 68, 119, 159, 210, 212, 255, 255, 255}},
      {0, -1000, 100, {32, 33, 40, 48, 49, 65, 84, 99, 117, 118, 136, 164, 164}},
      {0, 0, 220, {0, 21, 72, 98, 99, 136, 167, 186, 209, 209, 228, 255, 255}},
      {0, 0, -100, {0, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255}},  // taken as unsigned
      {0, 0, 1, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 172, 255}},
      {200, 300, 150, {87, 87, 96, 116, 117, 154, 192, 218, 250, 250, 255, 255, 255}},
      {-300, -700, 80, {0, 0, 0, 0, 0, 0, 4, 15, 32, 32, 52, 84, 84}},
  };
  const PaintSettings settings;
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.intensity << ", " << c.contrast << ", " << c.gamma);
    PaintSettings::adjust(c.intensity, c.contrast, c.gamma);
    const AdjustTable table = currentAdjustTable();
    for (size_t i = 0; i < 13; ++i) {
      EXPECT_EQ(table[static_cast<size_t>(inputs[i])], c.levels[i]) << "level " << inputs[i];
    }
  }
}

TEST(PaintAdjust, SettingsAreOfTheThreadAndStayWhenNewOnesAreRefused) {
  const PaintSettings settings;
  PaintSettings::adjust(-1000, 1000, -7);
  for (const int bad : {1001, -1001, INT32_MIN}) {
    EXPECT_EQ(Zv_SetPaintIntensity(bad), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_SetPaintContrast(bad), KERR_BAD_PARAMETER);
  }
  EXPECT_EQ(Zv_SetPaintGamma(0), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetPaintIntensity(), -1000);
  EXPECT_EQ(Zv_GetPaintContrast(), 1000);
  EXPECT_EQ(Zv_GetPaintGamma(), -7);
  std::thread([] {
    EXPECT_EQ(Zv_GetPaintIntensity(), 0);
    EXPECT_EQ(Zv_GetDisplayMode(), unsigned{PAINT_INDEX_COLORS | PAINT_DITHER});
  }).join();
}

}  // namespace
}  // namespace zavotest
