// Ordered lists of bitmaps, by value.
#pragma once

#include <zavo.h>

#include <cstdint>

namespace zavo {

// The header that a list handle stands for. The items share storage, palette and region with the handles that were
// put in; the list owns them.
struct BitmapList {
  uint32_t count;
  BitmapHandle* items;  // `count` records, null for none
};

// The header behind a handle; null for a null handle or one that is not a list's.
[[nodiscard]] BitmapList* bitmapList(BitmapListHandle list);

}  // namespace zavo
