// Palette objects of the graphics interface and palette arrays: making, reading, copying, comparing.
#include "color/palettes.h"

#include <algorithm>
#include <cstring>

#include "core/memory.h"
#include "core/owners.h"

namespace zavo {
namespace {

constexpr WORD paletteVersion = 0x300;
constexpr unsigned maxEntries = 65535;
// Entries converted at a time in work areas on the stack.
constexpr unsigned chunkEntries = 256;

PALETTEENTRY toEntry(const RGBQUAD& color) {
  return {color.rgbRed, color.rgbGreen, color.rgbBlue, color.rgbReserved};
}

RGBQUAD toColor(const PALETTEENTRY& entry) {
  return {entry.peBlue, entry.peGreen, entry.peRed, entry.peFlags};
}

// The record that a palette object is made from.
class LogicalPalette {
 public:
  // Tests false when the memory cannot be had or the count is out of range.
  explicit LogicalPalette(unsigned count) {
    if (count == 0 || count > maxEntries) return;
    block_ = OsBlock<uint8_t>::allocate(sizeof(LOGPALETTE) + (count - 1) * sizeof(PALETTEENTRY));
    if (!block_) return;
    record().palVersion = paletteVersion;
    record().palNumEntries = static_cast<WORD>(count);
  }
  explicit operator bool() const { return static_cast<bool>(block_); }
  [[nodiscard]] PALETTEENTRY* entries() const { return record().palPalEntry; }
  [[nodiscard]] HPALETTE create() const { return CreatePalette(&record()); }

 private:
  [[nodiscard]] LOGPALETTE& record() const { return *reinterpret_cast<LOGPALETTE*>(block_.get()); }

  OsBlock<uint8_t> block_;
};

// How many of `count` entries from `first` on a palette holds.
unsigned availableEntries(HPALETTE palette, unsigned first, unsigned count) {
  const unsigned size = paletteSize(palette);
  return first < size ? std::min(count, size - first) : 0;
}

}  // namespace

unsigned paletteSize(HPALETTE palette) {
  WORD count = 0;
  if (palette == nullptr || GetObjectA(palette, sizeof count, &count) == 0) return 0;
  return count;
}

HPALETTE createPalette(const RGBQUAD* colors, unsigned count) {
  if (colors == nullptr) return nullptr;
  const LogicalPalette logical(count);
  if (!logical) return nullptr;
  std::transform(colors, colors + count, logical.entries(), toEntry);
  return logical.create();
}

unsigned readEntries(RGBQUAD* colors, HPALETTE palette, unsigned first, unsigned count) {
  const unsigned available = availableEntries(palette, first, count);
  unsigned done = 0;
  while (done < available) {
    PALETTEENTRY entries[chunkEntries];
    const unsigned wanted = std::min(available - done, chunkEntries);
    const unsigned got = GetPaletteEntries(palette, first + done, wanted, entries);
    std::transform(entries, entries + got, colors + done, toColor);
    done += got;
    if (got < wanted) break;
  }
  return done;
}

unsigned readPalette(const BitmapHandle& bitmap, RGBQUAD palette[256]) {
  const unsigned count = readEntries(palette, bitmap.Palette, 0, 256);
  std::fill(palette + count, palette + 256, RGBQUAD{});
  return count;
}

unsigned readPaletteOrFixed(const BitmapHandle& bitmap, RGBQUAD palette[256]) {
  const unsigned count = readPalette(bitmap, palette);
  const RGBQUAD* fixed = fixedPalette(bitmap.BitsPerPixel);
  if (count != 0 || fixed == nullptr) return count;
  const unsigned fixedCount = 1u << bitmap.BitsPerPixel;
  std::copy(fixed, fixed + fixedCount, palette);
  return fixedCount;
}

}  // namespace zavo

using namespace zavo;

HPALETTE ZAVO_CALL Zv_CreatePalette(const RGBQUAD* palette, unsigned count) {
  return createPalette(palette, count);
}

unsigned ZAVO_CALL Zv_GetPaletteSize(HPALETTE palette) {
  return paletteSize(palette);
}

unsigned ZAVO_CALL Zv_GetPaletteEntries(HPALETTE palette, unsigned first, unsigned count, RGBQUAD* colors) {
  return colors != nullptr ? readEntries(colors, palette, first, count) : 0;
}

unsigned ZAVO_CALL Zv_SetPaletteEntries(HPALETTE palette, unsigned first, unsigned count, const RGBQUAD* colors) {
  if (colors == nullptr) return 0;
  const unsigned available = availableEntries(palette, first, count);
  unsigned done = 0;
  while (done < available) {
    PALETTEENTRY entries[chunkEntries];
    const unsigned wanted = std::min(available - done, chunkEntries);
    std::transform(colors + done, colors + done + wanted, entries, toEntry);
    const unsigned changed = SetPaletteEntries(palette, first + done, wanted, entries);
    done += changed;
    if (changed < wanted) break;
  }
  return done;
}

HPALETTE ZAVO_CALL Zv_CreateSystemPalette() {
  const ScreenDC screen;
  if (!screen || (GetDeviceCaps(screen.get(), RASTERCAPS) & RC_PALETTE) == 0) return nullptr;
  const auto count = static_cast<unsigned>(GetDeviceCaps(screen.get(), SIZEPALETTE));
  const LogicalPalette logical(count);
  if (!logical || GetSystemPaletteEntries(screen.get(), 0, count, logical.entries()) != count) return nullptr;
  return logical.create();
}

HPALETTE ZAVO_CALL Zv_DupPalette(HPALETTE palette) {
  const unsigned count = paletteSize(palette);
  const LogicalPalette logical(count);
  if (!logical || GetPaletteEntries(palette, 0, count, logical.entries()) != count) return nullptr;
  return logical.create();
}

int ZAVO_CALL Zv_CompareHandleToPalette(HPALETTE palette, const RGBQUAD* colors, unsigned count) {
  const unsigned available = availableEntries(palette, 0, count);
  if (available == 0) return 1;
  if (colors == nullptr) return 0;
  for (unsigned first = 0; first < available; first += chunkEntries) {
    RGBQUAD entries[chunkEntries];
    const unsigned got = readEntries(entries, palette, first, std::min(available - first, chunkEntries));
    if (!std::equal(entries, entries + got, colors + first, sameColor)) return 0;
  }
  return 1;
}
