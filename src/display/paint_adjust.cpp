// The adjustment table and the accessors of what it is made from. Every setter rebuilds it at once, so that painting
// computes neither powers nor logarithms.
#include "display/paint_adjust.h"

#include <algorithm>
#include <cmath>

namespace zavo {
namespace {

constexpr int adjustmentLimit = 1000;

int clampLevel(int level) {
  return std::clamp(level, 0, 255);
}

// Levels between the knees are stretched to the full range, or the full range is pressed between them.
void applyContrast(uint8_t* table, int contrast) {
  const int amount = contrast < 0 ? -contrast : contrast;
  const int lower = clampLevel(MulDiv(amount, 128, 4000));
  const int upper = 256 + static_cast<int>(-5.34 * std::pow(1.5, std::log2(0.128 * amount)));
  for (int i = 0; i < 256; ++i) {
    int level;
    if (contrast < 0) {
      level = lower + clampLevel(MulDiv(i, upper - lower, 256));  // added as bytes
    } else if (i < lower) {
      level = 0;
    } else {
      level = i < upper ? clampLevel(MulDiv(i - lower, 256, upper - lower)) : 255;
    }
    table[i] = static_cast<uint8_t>(level);
  }
}

// From the three adjustments.
void rebuildAdjustTable(ThreadSettings& settings) {
  uint8_t* table = settings.paintAdjustTable;
  for (unsigned i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
  if (settings.paintContrast != 0) applyContrast(table, settings.paintContrast);

  const int offset = (settings.paintIntensity * 255 + 500) / 1000;
  // The gamma counts as unsigned, so that a negative one gives a tiny exponent; kept so on purpose.
  const double exponent = 100.0 / static_cast<uint32_t>(settings.paintGamma);
  settings.paintAdjustActive = 0;
  for (unsigned i = 0; i < 256; ++i) {
    const int level = clampLevel(table[i] + offset);
    const double bent = std::pow(level / 255.0, exponent) * 255.0;
    table[i] = static_cast<uint8_t>(bent + 0.5);  // NOLINT(bugprone-incorrect-roundings): never negative
    if (table[i] != i) settings.paintAdjustActive = 1;
  }
}

int setAdjustment(int32_t ThreadSettings::*adjustment, int value) {
  if (value < -adjustmentLimit || value > adjustmentLimit) return KERR_BAD_PARAMETER;
  ThreadSettings& settings = currentSettings();
  settings.*adjustment = value;
  rebuildAdjustTable(settings);
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_SetPaintIntensity(int value) {
  return setAdjustment(&ThreadSettings::paintIntensity, value);
}

int ZAVO_CALL Zv_SetPaintContrast(int value) {
  return setAdjustment(&ThreadSettings::paintContrast, value);
}

int ZAVO_CALL Zv_SetPaintGamma(int value) {
  if (value == 0) return KERR_BAD_PARAMETER;
  ThreadSettings& settings = currentSettings();
  settings.paintGamma = value;
  rebuildAdjustTable(settings);
  return KSUCCESS;
}

int ZAVO_CALL Zv_GetPaintIntensity() {
  return currentSettings().paintIntensity;
}

int ZAVO_CALL Zv_GetPaintContrast() {
  return currentSettings().paintContrast;
}

int ZAVO_CALL Zv_GetPaintGamma() {
  return currentSettings().paintGamma;
}
