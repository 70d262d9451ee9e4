// Taking in device-independent bitmaps: headers of every kind, palettes, orders, resolution, and malformed ones.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>

#include "color/dib_samples.h"
#include "support/refusals.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

int fromParts(BitmapHandle* bitmap, const uint8_t* header, const uint8_t* rows) {
  return Zv_ConvertFromDIB(bitmap, reinterpret_cast<const BITMAPINFO*>(header), rows);
}

void expectRows(BitmapHandle& bitmap, const uint8_t* rows) {
  Bytes row(bitmap.BytesPerLine);
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (int i = 0; i < bitmap.Height; ++i) {
    Zv_GetBitmapRow(&bitmap, row.data(), static_cast<unsigned>(i), bitmap.BytesPerLine);
    ASSERT_EQ(memcmp(row.data(), rows + static_cast<size_t>(i) * row.size(), row.size()), 0) << "row " << i;
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
}

int screenDpi(int pixels, int millimetres) {
  HDC screen = GetDC(nullptr);
  const int perMetre = MulDiv(GetDeviceCaps(screen, pixels), 1000, GetDeviceCaps(screen, millimetres));
  ReleaseDC(nullptr, screen);
  return (perMetre * 254 + 5000) / 10000;
}

class FromDibDepths : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Depths, FromDibDepths, testing::Values(1, 4, 8, 16, 24, 32));

TEST_P(FromDibDepths, PackedAndInPartsGiveTheSameRowsAndDifferInOrder) {
  DibSpec layout;
  layout.bits = GetParam();
  for (const unsigned headerBytes : {12u, 40u, 108u}) {
    for (layout.width = 1; layout.width <= 40; ++layout.width) {
      for (const int height : {3, -3}) {
        if (headerBytes == 12 && height < 0) continue;
        SCOPED_TRACE(testing::Message() << "header of " << headerBytes << ", " << layout.width << " x " << height);
        layout.headerBytes = headerBytes;
        layout.height = height;
        const Bytes dib = packedDib(layout, static_cast<unsigned>(layout.width));
        const uint8_t* rows = dib.data() + dib.size() - layout.rowBytes() * 3;

        TestBitmap packed;
        ASSERT_EQ(Zv_ChangeFromDIB(&packed, globalCopy(dib)), KSUCCESS);
        EXPECT_EQ(packed.Width, layout.width);
        EXPECT_EQ(packed.Height, 3);
        EXPECT_EQ(packed.BitsPerPixel, layout.bits);
        EXPECT_EQ(packed.ViewPerspective, height < 0 ? VIEW_UPRIGHT : VIEW_BOTTOM_UP);
        EXPECT_EQ(packed.ColorOrder, layout.bits > 8 ? ORDER_BLUE_FIRST : ORDER_RED_FIRST);
        expectRows(packed, rows);

        TestBitmap parts;
        ASSERT_EQ(fromParts(&parts, dib.data(), rows), KSUCCESS);
        EXPECT_EQ(parts.ColorOrder, ORDER_BLUE_FIRST);
        EXPECT_EQ(parts.ViewPerspective, packed.ViewPerspective);
        expectRows(parts, rows);
      }
    }
  }
}

TEST(FromDib, PaletteHasTheColoursUsedWithoutReservedBytes) {
  const struct {
    unsigned headerBytes;
    int bits;
    unsigned used, entries;
  } cases[] = {{40, 1, 0, 2},  {40, 4, 0, 16}, {40, 8, 0, 256}, {40, 8, 10, 10}, {40, 4, 40, 16}, {40, 24, 0, 0},
               {40, 24, 7, 7}, {12, 1, 0, 2},  {12, 8, 0, 256}, {12, 24, 0, 0},  {64, 4, 12, 12}, {64, 4, 0, 16}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "header of " << c.headerBytes << ", " << c.bits << " bits, " << c.used);
    DibSpec layout;
    layout.headerBytes = c.headerBytes;
    layout.bits = c.bits;
    layout.colorsUsed = c.used;
    TestBitmap bitmap;
    ASSERT_EQ(Zv_ChangeFromDIB(&bitmap, globalCopy(packedDib(layout))), KSUCCESS);
    ASSERT_EQ(Zv_GetPaletteSize(bitmap.Palette), c.entries);
    RGBQUAD colors[256];
    ASSERT_EQ(Zv_GetPaletteEntries(bitmap.Palette, 0, c.entries, colors), c.entries);
    for (unsigned i = 0; i < c.entries; ++i) {
      ASSERT_EQ(colors[i].rgbBlue, tableChannel(i, 0));
      ASSERT_EQ(colors[i].rgbGreen, tableChannel(i, 1));
      ASSERT_EQ(colors[i].rgbRed, tableChannel(i, 2));
      ASSERT_EQ(colors[i].rgbReserved, 0);
    }
  }
}

TEST(FromDib, InPartsThePaletteIsReadFortyBytesOnWhateverTheHeader) {
  for (const unsigned headerBytes : {12u, 40u, 64u}) {
    SCOPED_TRACE(headerBytes);
    DibSpec layout;
    layout.headerBytes = headerBytes;
    layout.bits = 4;
    layout.height = 30;
    const Bytes dib = packedDib(layout);
    TestBitmap bitmap;
    ASSERT_EQ(fromParts(&bitmap, dib.data(), dib.data() + dib.size() - 4 * 30), KSUCCESS);
    RGBQUAD colors[16];
    ASSERT_EQ(Zv_GetPaletteEntries(bitmap.Palette, 0, 16, colors), 16u);
    for (size_t i = 0; i < 16; ++i) EXPECT_EQ(memcmp(&colors[i], &dib[40 + 4 * i], 3), 0);
  }
}

TEST(FromDib, ResolutionIsRoundedAndTheScreensWhereThereIsNone) {
  const int screenX = screenDpi(HORZRES, HORZSIZE);
  const int screenY = screenDpi(VERTRES, VERTSIZE);
  const struct {
    unsigned headerBytes;
    int x, y, dpiX, dpiY;
  } cases[] = {
      {40, 3937, 7874, 100, 200},         {40, 2835, 11811, 72, 300},    {40, 19, 20, 0, 1},
      {40, 0, 3937, screenX, 100},        {40, 0, 0, screenX, screenY},  {12, 0, 0, screenX, screenY},
      {64, 3937, 3937, screenX, screenY}, {40, INT_MAX, 1, 54546085, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.headerBytes << ": " << c.x << ", " << c.y);
    DibSpec layout;
    layout.headerBytes = c.headerBytes;
    layout.xPixelsPerMetre = c.x;
    layout.yPixelsPerMetre = c.y;
    const Bytes dib = packedDib(layout);
    TestBitmap parts, packed;
    ASSERT_EQ(fromParts(&parts, dib.data(), dib.data()), KSUCCESS);
    ASSERT_EQ(Zv_ChangeFromDIB(&packed, globalCopy(dib)), KSUCCESS);
    for (const BitmapHandle* bitmap : {&parts, &packed}) {
      EXPECT_EQ(bitmap->XResolution, c.dpiX);
      EXPECT_EQ(bitmap->YResolution, c.dpiY);
    }
  }
}

// Each is refused both ways, the record untouched and the memory still the caller's.
TEST(FromDib, MalformedHeadersAreRefused) {
  const DibSpec good;
  std::vector<std::pair<const char*, DibSpec>> cases;
  const auto add = [&](const char* name, auto change) {
    cases.emplace_back(name, good);
    change(cases.back().second);
  };
  add("width 0", [](DibSpec& s) { s.width = 0; });
  add("negative width", [](DibSpec& s) { s.width = -5; });
  add("least width", [](DibSpec& s) { s.width = INT_MIN; });
  add("height 0", [](DibSpec& s) { s.height = 0; });
  add("least height", [](DibSpec& s) { s.height = INT_MIN; });
  add("no planes", [](DibSpec& s) { s.planes = 0; });
  add("two planes", [](DibSpec& s) { s.planes = 2; });
  add("run lengths", [](DibSpec& s) { s.compression = BI_RLE8; });
  add("bit fields", [](DibSpec& s) { s.compression = BI_BITFIELDS, s.bits = 16; });
  add("an image past 32 bits", [](DibSpec& s) { s.width = s.height = 70000; });
  add("an image past 64 bits of bits", [](DibSpec& s) { s.width = s.height = INT_MAX, s.bits = 32; });
  add("257 colours", [](DibSpec& s) { s.colorsUsed = 257; });
  add("colours past 32 bits of bytes", [](DibSpec& s) { s.colorsUsed = 0x40000001; });
  add("all colours", [](DibSpec& s) { s.colorsUsed = 0xFFFFFFFF; });
  add("colours of 24 bits", [](DibSpec& s) { s.colorsUsed = 1 << 24, s.bits = 24; });
  for (const int bits : {0, 2, 3, 5, 6, 7, 9, 15, 64}) {
    add("depth", [bits](DibSpec& s) { s.bits = bits; });
  }
  for (const auto& [name, layout] : cases) {
    SCOPED_TRACE(testing::Message() << name << ", " << layout.bits << " bits");
    Bytes dib = packedDib(good);
    const Bytes bad = dibHeader(layout);
    memcpy(dib.data(), bad.data(), bad.size());
    BitmapHandle bitmap;
    memset(&bitmap, 0x5A, sizeof bitmap);
    const BitmapHandle before = bitmap;
    HGLOBAL memory = globalCopy(dib);
    EXPECT_EQ(Zv_ChangeFromDIB(&bitmap, memory), KERR_BAD_DIB);
    EXPECT_EQ(GlobalFlags(memory) & GMEM_LOCKCOUNT, 0u);
    EXPECT_EQ(GlobalFree(memory), nullptr);
    EXPECT_EQ(fromParts(&bitmap, dib.data(), dib.data()), KERR_BAD_DIB);
    EXPECT_EQ(memcmp(&bitmap, &before, sizeof bitmap), 0);
  }
}

TEST(FromDib, MemoryThatHoldsLessThanItClaimsIsRefused) {
  for (const unsigned headerBytes : {12u, 40u, 64u}) {
    DibSpec layout;
    layout.headerBytes = headerBytes;
    const Bytes dib = packedDib(layout);
    for (const size_t bytes : {size_t{1}, size_t{4}, size_t{11}, size_t{headerBytes}, dib.size() / 2, dib.size() - 1}) {
      SCOPED_TRACE(testing::Message() << "header of " << headerBytes << ", " << bytes << " bytes");
      HGLOBAL memory = globalCopy(Bytes(dib.begin(), dib.begin() + static_cast<ptrdiff_t>(bytes)));
      BitmapHandle bitmap;
      EXPECT_EQ(Zv_ChangeFromDIB(&bitmap, memory), KERR_BAD_DIB);
      const auto* address = static_cast<const uint8_t*>(GlobalLock(memory));
      const size_t rowsAt = dib.size() - layout.rowBytes() * 3;
      if (rowsAt <= bytes) {
        EXPECT_EQ(fromParts(&bitmap, address, address + rowsAt), KERR_BAD_DIB);
      }
      GlobalUnlock(memory);
      GlobalFree(memory);
    }
  }
  Bytes dib = packedDib({});
  const unsigned longHeader = 0xFFFFFFF0;
  memcpy(dib.data(), &longHeader, 4);
  HGLOBAL memory = globalCopy(dib);
  BitmapHandle bitmap;
  EXPECT_EQ(Zv_ChangeFromDIB(&bitmap, memory), KERR_BAD_DIB);
  GlobalFree(memory);
}

TEST(FromDib, InPartsRowsThatRunIntoUnreadablePagesAreRefused) {
  constexpr size_t page = 4096;
  auto* pages = static_cast<uint8_t*>(VirtualAlloc(nullptr, 3 * page, MEM_RESERVE, PAGE_NOACCESS));
  ASSERT_NE(VirtualAlloc(pages, 2 * page, MEM_COMMIT, PAGE_READWRITE), nullptr);
  uint8_t* end = pages + 2 * page;
  DibSpec layout;
  layout.width = 100;
  layout.height = 50;
  layout.colorsUsed = 200;
  const Bytes dib = packedDib(layout);
  BitmapHandle refused;
  EXPECT_EQ(fromParts(&refused, dib.data(), end - 5000 + 1), KERR_BAD_DIB);
  EXPECT_EQ(fromParts(&refused, dib.data(), end), KERR_BAD_DIB);
  TestBitmap fits;
  EXPECT_EQ(fromParts(&fits, dib.data(), end - 5000), KSUCCESS);

  // A colour table that runs out of memory is black from there on; a header that does is none.
  memcpy(end - 48, dib.data(), 48);
  TestBitmap shortTable;
  ASSERT_EQ(fromParts(&shortTable, end - 48, pages), KSUCCESS);
  RGBQUAD colors[200];
  ASSERT_EQ(Zv_GetPaletteEntries(shortTable.Palette, 0, 200, colors), 200u);
  EXPECT_EQ(colors[1].rgbGreen, tableChannel(1, 1));
  EXPECT_EQ(colors[2].rgbGreen, 0);
  EXPECT_EQ(colors[199].rgbRed, 0);
  memcpy(end - 39, dib.data(), 39);
  EXPECT_EQ(fromParts(&refused, end - 39, pages), KERR_BAD_DIB);
  VirtualFree(pages, 0, MEM_RELEASE);
}

TEST(FromDib, LeavesNothingBehindWhenRefused) {
  for (const bool packed : {true, false}) {
    refuseEachResource({.leastPoints = 3}, [&](RefusalRound& round) {
      const Bytes dib = packedDib({});
      HGLOBAL memory = packed ? globalCopy(dib) : nullptr;
      TestBitmap bitmap;
      const int status = round.run([&] {
        return packed ? Zv_ChangeFromDIB(&bitmap, memory)
                      : fromParts(&bitmap, dib.data(), dib.data() + dib.size() - 24);
      });
      if (packed && status != KSUCCESS) GlobalFree(memory);
    });
  }
}

TEST(FromDib, NullArgumentsAreRefused) {
  const Bytes dib = packedDib({});
  BitmapHandle bitmap;
  EXPECT_EQ(fromParts(nullptr, dib.data(), dib.data()), KERR_BAD_PARAMETER);
  EXPECT_EQ(fromParts(&bitmap, nullptr, dib.data()), KERR_BAD_PARAMETER);
  EXPECT_EQ(fromParts(&bitmap, dib.data(), nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ChangeFromDIB(&bitmap, nullptr), KERR_BAD_PARAMETER);
  HGLOBAL memory = globalCopy(dib);
  EXPECT_EQ(Zv_ChangeFromDIB(nullptr, memory), KERR_BAD_PARAMETER);
  EXPECT_EQ(GlobalFree(memory), nullptr);
}

}  // namespace
