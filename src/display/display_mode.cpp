// The display-mode flags of a thread.
#include <zavo.h>

#include "core/settings.h"

using namespace zavo;

unsigned ZAVO_CALL Zv_SetDisplayMode(unsigned mask, unsigned values) {
  ThreadSettings& settings = currentSettings();
  const uint32_t previous = settings.displayMode;
  settings.displayMode = (previous & ~mask) | (values & mask);
  // Painting by colour has used the slots for colours meanwhile.
  if ((settings.displayMode & ~previous & PAINT_INDEX_COLORS) != 0) writeIndexTable(settings.paintBitmapInfo);
  return previous;
}

unsigned ZAVO_CALL Zv_GetDisplayMode() {
  return currentSettings().displayMode;
}
