// Grey runs: source and target are grey, so that the three channels go the same way and one is enough. All that can
// become of a value is in one table.
#include <algorithm>

#include "color/dither_rows.h"

namespace zavo {
namespace {

constexpr int highest = GrayTable::lowest + GrayTable::entries - 1;

// The steps of the values `first` to `last`, 0 to 255, and of all that is clamped to them.
void setEntries(DitherRun& run, int first, int last, uint8_t index) {
  if (first == 0) first = GrayTable::lowest;
  if (last == 255) last = highest;
  const int level = run.target.palette[index].rgbGreen;
  for (int value = first; value <= last; ++value) {
    const int error = std::clamp(value, 0, 255) - level;
    run.grayTable.steps[value - GrayTable::lowest] = {
        .ahead = error * run.grayAhead, .error = static_cast<int16_t>(error), .index = index};
  }
}

}  // namespace

void setGrayTable(DitherRun& run, int ahead) {
  run.grayAhead = ahead;
  if (run.target.kind == noFixedKind) {
    for (auto& step : run.grayTable.steps) step.error = GrayTable::unknown;
    return;
  }
  const BrightnessQuantiser quantise(run.target);
  for (int level = 0; level < 256; ++level) {
    setEntries(run, level, level, quantise(static_cast<uint32_t>(level) * 0x010101));
  }
}

void fillGrayTable(DitherRun& run, int value) {
  const int level = std::clamp(value, 0, 255);
  const auto gray = static_cast<unsigned>(level);
  setEntries(run, level & ~7, level | 7, run.target.matcher.search(gray, gray, gray));
}

void plainQuantiseGray(DitherRun& run, uint8_t* indexes, const uint8_t* levels) {
  const auto* steps = run.grayTable.steps - GrayTable::lowest;
  for (unsigned x = 0; x < run.width; ++x) {
    if (steps[levels[x]].error == GrayTable::unknown) [[unlikely]]
      fillGrayTable(run, levels[x]);
    indexes[x] = steps[levels[x]].index;
  }
}

}  // namespace zavo
