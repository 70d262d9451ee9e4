// The application's match table: a thread's shortcut through the nearest-colour search.
#include <zavo.h>

#include <utility>

#include "color/palettes.h"
#include "core/memory.h"
#include "core/settings.h"

using namespace zavo;

static_assert(sizeof(unsigned) == sizeof(uint32_t));

unsigned* ZAVO_CALL Zv_CreateUserMatchTable(const RGBQUAD* palette, unsigned count) {
  if (palette == nullptr) count = 0;
  auto table = OsBlock<unsigned>::allocate(matchTableEntries);
  if (!table) return nullptr;
  for (unsigned key = 0; key < matchTableEntries; ++key) {
    // The search's answer for an empty palette becomes 0, which stands for no entry.
    table[key] = nearestIndex(palette, count, (key >> 10) * 8, (key >> 5 & 31) * 8, (key & 31) * 8) + 1;
  }
  return table.release();
}

unsigned* ZAVO_CALL Zv_SetUserMatchTable(unsigned* table) {
  return std::exchange(currentSettings().userMatchTable, table);
}

int ZAVO_CALL Zv_FreeUserMatchTable(unsigned* table) {
  Zv_OsFree(table);
  return 1;
}
