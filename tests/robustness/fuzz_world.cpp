// The state of a round of random calls, and the arguments it hands out.
#include "robustness/fuzz_world.h"

#include <gtest/gtest.h>
#include <limits.h>

namespace zavotest {
namespace {

constexpr int64_t mostPixels = 2 << 20;
constexpr int storages[] = {ALLOC_MEMORY, ALLOC_MEMORY, ALLOC_MEMORY_ONLY, ALLOC_DISK};
constexpr int perspectives[] = {0, VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_90, VIEW_TURNED_270};

int ZAVO_CALL stopNow(int) {
  return -4711;
}

int ZAVO_CALL stopAtHalf(int percent) {
  return percent < 50 ? KSUCCESS : 0;
}

int ZAVO_CALL goOn(int) {
  return KSUCCESS;
}

HDC contextOver(std::vector<HGDIOBJ>& objects, WORD bits) {
  HDC dc = CreateCompatibleDC(nullptr);
  const BITMAPINFO info = {{sizeof(BITMAPINFOHEADER), 64, 48, 1, bits, BI_RGB, 0, 0, 0, 0, 0}, {}};
  void* pixels = nullptr;
  HBITMAP section = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
  SelectObject(dc, section);
  objects.push_back(section);
  return dc;
}

}  // namespace

FuzzWorld::FuzzWorld(unsigned seed) : random_(seed), buffer_(bufferBytes) {
  for (uint8_t& byte : buffer_) byte = static_cast<uint8_t>(random_());
  for (RGBQUAD& color : colors_) color = {buffer_[below(999)], buffer_[below(999)], buffer_[below(999)], 0};
  contexts_ = {contextOver(objects_, 24), contextOver(objects_, 8), CreateCompatibleDC(nullptr)};
  region_ = CreateEllipticRgn(3, 2, 40, 30);
  palette_ = Zv_CreatePalette(colors_, 1 + below(256));
  objects_.push_back(region_);
  objects_.push_back(palette_);
  Zv_SetStatusCallBack(std::array<StatusCallback, 8>{stopNow, stopAtHalf, goOn}[below(8)]);
  for (BitmapHandle& bitmap : bitmaps_) renew(bitmap);
}

FuzzWorld::~FuzzWorld() {
  Zv_SetStatusCallBack(nullptr);
  Zv_SetDisplayMode(~0u, PAINT_INDEX_COLORS | PAINT_DITHER);
  Zv_SetPaintContrast(0);
  Zv_SetPaintIntensity(0);
  Zv_SetPaintGamma(100);
  Zv_DefaultDithering(1);
  for (BitmapHandle& bitmap : bitmaps_) Zv_FreeBitmap(&bitmap);
  for (HDC dc : contexts_) DeleteDC(dc);
  for (HGDIOBJ object : objects_) DeleteObject(object);
}

void FuzzWorld::renew(BitmapHandle& bitmap) {
  Zv_FreeBitmap(&bitmap);
  bitmap = {};
  if (oneIn(12)) return;
  const int bits = allDepths[below(std::size(allDepths))];
  const int width = static_cast<int>(oneIn(20) ? 1000 + below(3000) : 1 + below(70));
  Zv_InitBitmap(&bitmap, width, static_cast<int>(1 + below(40)), bits);
  if (oneIn(15)) return;
  int memoryType = storages[below(std::size(storages))];
  if (bits == 1 && oneIn(2)) memoryType |= ALLOC_RUNLENGTH;
  if (Zv_AllocateBitmap(&bitmap, memoryType) != KSUCCESS) return;
  if (bits <= 8 && !oneIn(4)) giveRandomPalette(bitmap, random_);
  if (!oneIn(4)) fillWithNoise(bitmap, random_);
  bitmap.ViewPerspective = perspectives[below(std::size(perspectives))];
  bitmap.ColorOrder = static_cast<int>(below(2));
  bitmap.DitheringMethod = static_cast<int>(below(10));
  if (oneIn(2)) addRegion(bitmap);
}

void FuzzWorld::addRegion(BitmapHandle& bitmap) {
  const auto edge = [&] { return static_cast<LONG>(below(60)) - 5; };
  const RECT rect = {edge(), edge(), edge(), edge()};
  Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &rect, oneIn(2) ? CombineSet : CombineSetNot);
}

void FuzzWorld::checkBitmaps() {
  for (BitmapHandle& bitmap : bitmaps_) {
    if ((bitmap.Flags & BMF_ALLOCATED) == 0) continue;
    if (int64_t{bitmap.Width} * bitmap.Height > mostPixels || bitmap.BytesPerLine > bufferBytes) {
      renew(bitmap);
      continue;
    }
    ASSERT_GT(bitmap.Width, 0);
    ASSERT_GT(bitmap.Height, 0);
    ASSERT_EQ(bitmap.Flags & BMF_LOCKED, 0u);
    unsigned area = 0;
    ASSERT_EQ(Zv_GetBitmapRgnArea(&bitmap, &area), KSUCCESS);
    ASSERT_LE(area, static_cast<unsigned>(bitmap.Width) * static_cast<unsigned>(bitmap.Height));
    const int wasLocked = Zv_LockBitmap(&bitmap);
    for (const int row : {0, bitmap.Height - 1}) {
      ASSERT_EQ(Zv_GetBitmapRow(&bitmap, buffer(), static_cast<unsigned>(row), bitmap.BytesPerLine),
                static_cast<int>(bitmap.BytesPerLine));
    }
    Zv_UnlockBitmap(&bitmap, wasLocked);
  }
}

// Numbers around the edges of types and tables; for now and then.
int FuzzWorld::absurd() {
  constexpr int numbers[] = {INT_MIN, INT_MAX, -1, 0, 256, 0x8000, 0xFFFF, 0x10000, -0x10000};
  return numbers[below(std::size(numbers))];
}

int FuzzWorld::number() {
  switch (below(8)) {
    case 0:
      return absurd();
    case 1:
      return static_cast<int>(below(72000)) - 36000;
    case 2:
      return static_cast<int>(below(150)) - 50;
    case 3:
      return allDepths[below(std::size(allDepths))];
    default:
      return static_cast<int>(below(12)) - 1;
  }
}

int FuzzWorld::coordinate() {
  return oneIn(25) ? absurd() : static_cast<int>(below(90)) - 5;
}

BitmapHandle* FuzzWorld::freed(BitmapHandle* record) {
  Zv_FreeBitmap(record);
  *record = {};
  return record;
}

RECT* FuzzWorld::rect() {
  RECT& rect = rects_[nextRect_++ % std::size(rects_)];
  rect = {coordinate(), coordinate(), coordinate(), coordinate()};
  if (!oneIn(4) && rect.right < rect.left) std::swap(rect.left, rect.right);
  if (!oneIn(4) && rect.bottom < rect.top) std::swap(rect.top, rect.bottom);
  return &rect;
}

RegionXForm* FuzzWorld::xform() {
  xform_ = {perspectives[below(5)], coordinate(), coordinate(), coordinate(), coordinate(), coordinate(), coordinate()};
  return &xform_;
}

}  // namespace zavotest
