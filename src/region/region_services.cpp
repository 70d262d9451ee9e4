// Copying and freeing a bitmap's region as a whole.
#include "core/region_services.h"

namespace zavo {

// No operation makes a region yet, so there is none to copy.
int copyRegion(BitmapHandle& destination, const BitmapHandle&, int, int) {
  destination.Region = nullptr;
  return KSUCCESS;
}

void freeRegion(BitmapHandle& bitmap) {
  bitmap.Region = nullptr;
}

}  // namespace zavo
