#include "core/run_rows.h"

namespace zavo {

int readRunRows(const BitmapHandle&, uint8_t*, unsigned, unsigned, unsigned) {
  return KERR_NO_MEMORY;
}

int writeRunRows(BitmapHandle&, const uint8_t*, unsigned, unsigned, unsigned) {
  return KERR_NO_MEMORY;
}

}  // namespace zavo
