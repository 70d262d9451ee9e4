// Device-independent bitmaps taken in and given out, byte by byte: headers of every kind, palettes, orders, resolution,
// and malformed ones.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>

#include "color/colors.h"
#include "color/dib_samples.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

int fromParts(BitmapHandle* bitmap, const uint8_t* header, const uint8_t* rows) {
  return Zv_ConvertFromDIB(bitmap, reinterpret_cast<const BITMAPINFO*>(header), rows);
}

int screenDpi(int pixels, int millimetres) {
  HDC screen = GetDC(nullptr);
  const int perMetre = MulDiv(GetDeviceCaps(screen, pixels), 1000, GetDeviceCaps(screen, millimetres));
  ReleaseDC(nullptr, screen);
  return (perMetre * 254 + 5000) / 10000;
}

// Expects what a sample says of a bitmap made of it; `colors` are the entries of its table, of 3 or 4 bytes.
void expectSample(BitmapHandle& bitmap, const DibSpec& layout, const Bytes& dib, size_t table, size_t entryBytes) {
  EXPECT_EQ(bitmap.Width, layout.width);
  EXPECT_EQ(bitmap.Height, 3);
  EXPECT_EQ(bitmap.BitsPerPixel, layout.bits);
  EXPECT_EQ(bitmap.ViewPerspective, layout.height < 0 ? VIEW_UPRIGHT : VIEW_BOTTOM_UP);
  ASSERT_EQ(bytesOf(bitmap), Bytes(dib.end() - static_cast<ptrdiff_t>(layout.rowBytes() * 3), dib.end()));
  const Palette palette = entriesOf(bitmap.Palette);
  // A table can have more entries than the pixels can name.
  ASSERT_EQ(palette.size(), layout.bits <= 8 ? std::min(layout.colors(), 1u << layout.bits) : layout.colors());
  for (size_t i = 0; i < palette.size(); ++i) {
    ASSERT_EQ(memcmp(&palette[i], &dib[table + i * entryBytes], 3), 0) << "entry " << i;
    ASSERT_EQ(palette[i].rgbReserved, 0);
  }
  // Only the plain header is asked for the resolution.
  const auto dpi = [&](int perMetre, int screen) -> int64_t {
    return perMetre == 0 || layout.headerBytes != 40 ? screen : (int64_t{perMetre} * 254 + 5000) / 10000;
  };
  static const int screenX = screenDpi(HORZRES, HORZSIZE), screenY = screenDpi(VERTRES, VERTSIZE);
  EXPECT_EQ(bitmap.XResolution, dpi(layout.xPixelsPerMetre, screenX));
  EXPECT_EQ(bitmap.YResolution, dpi(layout.yPixelsPerMetre, screenY));
}

TEST(FromDib, PackedAndInPartsTheyDifferInOrderAndInThePlaceOfTheTable) {
  std::mt19937 random(20);
  constexpr int resolutions[] = {3937, 2835, 19, 20, 0, 1, INT_MAX};
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    for (const unsigned headerBytes : {12u, 40u, 108u}) {
      for (int width = 1; width <= 40; ++width) {
        DibSpec layout = {.headerBytes = headerBytes, .width = width, .bits = bits};
        if (headerBytes != 12 && width % 2 == 0) layout.height = -3;
        if (width % 3 == 0) layout.colorsUsed = random() % 40 + 1;
        layout.xPixelsPerMetre = resolutions[random() % std::size(resolutions)];
        layout.yPixelsPerMetre = resolutions[random() % std::size(resolutions)];
        SCOPED_TRACE(testing::Message() << bits << " bits, header of " << headerBytes << ", " << width << " x "
                                        << layout.height << ", " << layout.colorsUsed << " colours");
        Bytes dib = packedDib(layout, static_cast<unsigned>(width));
        TestBitmap packed, parts;
        ASSERT_EQ(Zv_ChangeFromDIB(&packed, globalCopy(dib)), KSUCCESS);
        EXPECT_EQ(packed.ColorOrder, bits > 8 ? ORDER_BLUE_FIRST : ORDER_RED_FIRST);
        ASSERT_NO_FATAL_FAILURE(
            expectSample(packed, layout, dib, headerBytes, headerBytes == 12 ? sizeof(RGBTRIPLE) : sizeof(RGBQUAD)));

        // In parts the table is read forty bytes on, whatever the header.
        dib.insert(dib.begin() + headerBytes, 1100, uint8_t{0x3C});
        for (size_t i = 40; i < 1100; ++i) dib[i] = i < headerBytes ? dib[i] : static_cast<uint8_t>(random());
        ASSERT_EQ(fromParts(&parts, dib.data(), dib.data() + dib.size() - layout.rowBytes() * 3), KSUCCESS);
        EXPECT_EQ(parts.ColorOrder, ORDER_BLUE_FIRST);
        ASSERT_NO_FATAL_FAILURE(expectSample(parts, layout, dib, 40, sizeof(RGBQUAD)));
      }
    }
  }
}

// Both ways, the record untouched and the memory still the caller's. Of a block the first `bytes` are there.
void expectRefused(const Bytes& dib, size_t bytes, size_t rowsAt) {
  BitmapHandle bitmap;
  memset(&bitmap, 0x5A, sizeof bitmap);
  const BitmapHandle before = bitmap;
  HGLOBAL memory = globalCopy(Bytes(dib.begin(), dib.begin() + static_cast<ptrdiff_t>(bytes)));
  EXPECT_EQ(Zv_ChangeFromDIB(&bitmap, memory), KERR_BAD_DIB);
  EXPECT_EQ(GlobalFlags(memory) & GMEM_LOCKCOUNT, 0u);
  const auto* address = static_cast<const uint8_t*>(GlobalLock(memory));
  if (rowsAt <= bytes) {
    EXPECT_EQ(fromParts(&bitmap, address, address + rowsAt), KERR_BAD_DIB);
  }
  GlobalUnlock(memory);
  EXPECT_EQ(GlobalFree(memory), nullptr);
  EXPECT_EQ(memcmp(&bitmap, &before, sizeof bitmap), 0);
}

TEST(FromDib, MalformedHeadersAreRefused) {
  std::vector<DibSpec> cases = {
      {.width = 0},
      {.width = -5},
      {.width = INT_MIN},
      {.height = 0},
      {.height = INT_MIN},
      {.planes = 0},
      {.planes = 2},
      {.compression = BI_RLE8},
      {.bits = 16, .compression = BI_BITFIELDS},
      {.width = 70000, .height = 70000},                  // an image past 32 bits
      {.width = INT_MAX, .height = INT_MAX, .bits = 32},  // past 64 bits of bits
      {.colorsUsed = 257},
      {.colorsUsed = 0x40000001},  // past 32 bits of bytes
      {.colorsUsed = 0xFFFFFFFF},
      {.bits = 24, .colorsUsed = 1 << 24},
  };
  for (const int bits : {0, 2, 3, 5, 6, 7, 9, 15, 64}) cases.push_back({.bits = bits});
  for (size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(i);
    Bytes dib = packedDib({});
    const Bytes bad = dibHeader(cases[i]);
    memcpy(dib.data(), bad.data(), bad.size());
    expectRefused(dib, dib.size(), 0);
  }
  BitmapHandle bitmap;
  const Bytes dib = packedDib({});
  HGLOBAL memory = globalCopy(dib);
  EXPECT_EQ(Zv_ChangeFromDIB(nullptr, memory), KERR_BAD_PARAMETER);
  EXPECT_EQ(GlobalFree(memory), nullptr);
  EXPECT_EQ(Zv_ChangeFromDIB(&bitmap, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(fromParts(nullptr, dib.data(), dib.data()), KERR_BAD_PARAMETER);
  EXPECT_EQ(fromParts(&bitmap, nullptr, dib.data()), KERR_BAD_PARAMETER);
  EXPECT_EQ(fromParts(&bitmap, dib.data(), nullptr), KERR_BAD_PARAMETER);
}

TEST(FromDib, MemoryThatHoldsLessThanItClaimsIsRefused) {
  for (const unsigned headerBytes : {12u, 40u, 64u}) {
    Bytes dib = packedDib({.headerBytes = headerBytes});
    for (const size_t bytes : {size_t{1}, size_t{4}, size_t{11}, size_t{headerBytes}, dib.size() / 2, dib.size() - 1}) {
      SCOPED_TRACE(testing::Message() << "header of " << headerBytes << ", " << bytes << " bytes");
      expectRefused(dib, bytes, dib.size() - 24);
    }
    const unsigned longHeader = 0xFFFFFFF0;
    memcpy(dib.data(), &longHeader, 4);
    expectRefused(dib, dib.size(), dib.size() + 1);
  }
}

TEST(FromDib, InPartsRowsThatRunIntoUnreadablePagesAreRefused) {
  constexpr size_t page = 4096;
  auto* pages = static_cast<uint8_t*>(VirtualAlloc(nullptr, 3 * page, MEM_RESERVE, PAGE_NOACCESS));
  ASSERT_NE(VirtualAlloc(pages, 2 * page, MEM_COMMIT, PAGE_READWRITE), nullptr);
  uint8_t* end = pages + 2 * page;
  const Bytes dib = packedDib({.width = 100, .height = 50, .colorsUsed = 200});
  TestBitmap refused, fits, shortTable;
  EXPECT_EQ(fromParts(&refused, dib.data(), end - 5000 + 1), KERR_BAD_DIB);
  EXPECT_EQ(fromParts(&refused, dib.data(), end), KERR_BAD_DIB);
  EXPECT_EQ(fromParts(&fits, dib.data(), end - 5000), KSUCCESS);

  // A colour table that runs out of memory is black from there on; a header that does is none.
  memcpy(end - 48, dib.data(), 48);
  ASSERT_EQ(fromParts(&shortTable, end - 48, pages), KSUCCESS);
  const Palette colors = entriesOf(shortTable.Palette);
  ASSERT_EQ(colors.size(), 200u);
  for (unsigned i = 0; i < 200; ++i) EXPECT_EQ(colors[i].rgbGreen, i < 2 ? tableChannel(i, 1) : 0) << "entry " << i;
  memcpy(end - 39, dib.data(), 39);
  EXPECT_EQ(fromParts(&refused, end - 39, pages), KERR_BAD_DIB);
  VirtualFree(pages, 0, MEM_RELEASE);
}

Bytes bytesOf(HGLOBAL dib) {
  const auto* memory = static_cast<const uint8_t*>(GlobalLock(dib));
  const Bytes bytes(memory, memory + GlobalSize(dib));
  GlobalUnlock(dib);
  return bytes;
}

std::vector<Color> colorsAsSeen(BitmapHandle& bitmap) {
  const std::vector<Color> stored = colorsOf(bitmap);
  RECT size = {0, 0, bitmap.Width, bitmap.Height};
  Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &size);
  std::vector<Color> seen;
  for (int y = 0; y < size.bottom; ++y) {
    for (int x = 0; x < size.right; ++x) {
      int column = x, row = y;
      Zv_PointToBitmap(&bitmap, VIEW_UPRIGHT, &column, &row);
      seen.push_back(stored[static_cast<size_t>(row * bitmap.Width + column)]);
    }
  }
  return seen;
}

// Expects header and table, in which the two ways to a DIB differ: in the colours used and the reserved bytes. Then
// the picture, which comes in again.
void expectGiven(HGLOBAL dib, const BitmapHandle& before, const std::vector<Color>& seen, const Palette& palette,
                 bool changed) {
  ASSERT_NE(dib, nullptr);
  const Bytes bytes = bytesOf(dib);
  const bool turned = before.ViewPerspective >= VIEW_TURNED_90;
  const int bits = before.BitsPerPixel, dibBits = bits == 1 ? 1 : bits <= 4 ? 4 : bits <= 8 ? 8 : 24;
  const LONG width = turned ? before.Height : before.Width, height = turned ? before.Width : before.Height;
  const auto imageBytes = static_cast<DWORD>((width * dibBits + 31) / 32 * 4 * height);
  const DWORD used = changed ? static_cast<DWORD>(palette.size()) : 0;
  const SIZE perMetre = turned ? SIZE{2835, 11811} : SIZE{11811, 2835};
  const BITMAPINFOHEADER expected = {
      40, width, height, 1, static_cast<WORD>(dibBits), BI_RGB, imageBytes, perMetre.cx, perMetre.cy, used, 0};
  const size_t table = bits > 8 ? 0 : changed ? palette.size() : 1u << dibBits;
  ASSERT_EQ(bytes.size(), 40 + table * 4 + imageBytes);
  EXPECT_EQ(memcmp(bytes.data(), &expected, sizeof expected), 0);
  for (size_t i = 0; i < table; ++i) {
    RGBQUAD color = i < palette.size() ? palette[i] : RGBQUAD{};
    if (!changed) color.rgbReserved = 0;
    ASSERT_EQ(memcmp(&bytes[40 + i * 4], &color, 4), 0) << "entry " << i;
  }
  TestBitmap back;
  ASSERT_EQ(Zv_ChangeFromDIB(&back, dib), KSUCCESS);
  EXPECT_EQ(colorsAsSeen(back), seen);
  EXPECT_TRUE(bits == dibBits || paddingIsZero(back));
}

TEST(ToDib, GivesThePictureAsSeenWhateverItsOrderAndPerspective) {
  std::mt19937 random(21);
  for (const int bits : allDepths) {
    for (int width = 1; width <= 70; width += width < 34 ? 1 : 9) {
      for (const int perspective : {0, 1, 2, 4, 8}) {
        SCOPED_TRACE(testing::Message() << bits << " bits, " << width << " wide, perspective " << perspective);
        TestBitmap bitmap(width, 4, bits);
        bitmap.ViewPerspective = perspective;
        if (bits > 8) bitmap.ColorOrder = static_cast<int>(random() % 3);  // what is not 1 is red first
        bitmap.XResolution = 300;
        bitmap.YResolution = 72;
        fillWithNoise(bitmap, random);
        Palette palette = noisePalette(bits <= 8 ? 1u << bits : 0, random);
        if (bits <= 8) palette[1].rgbReserved = PC_NOCOLLAPSE;
        if (bits <= 8) setPalette(bitmap, palette);
        const std::vector<Color> seen = colorsAsSeen(bitmap);
        const BitmapHandle record = bitmap;
        const Snapshot before(bitmap);
        HGLOBAL converted = Zv_ConvertToDIB(&bitmap);
        EXPECT_TRUE(before.unchanged());
        ASSERT_NO_FATAL_FAILURE(expectGiven(converted, record, seen, palette, false));
        ASSERT_NO_FATAL_FAILURE(expectGiven(Zv_ChangeToDIB(&bitmap), record, seen, palette, true));
        EXPECT_FALSE(bitmap.allocated());
        EXPECT_EQ(bitmap.Palette, nullptr);
      }
    }
  }
}

TEST(ToDib, OddBitmaps) {
  BitmapHandle empty{};
  for (BitmapHandle* bitmap : {&empty, static_cast<BitmapHandle*>(nullptr)}) {
    EXPECT_EQ(Zv_ConvertToDIB(bitmap), nullptr);
    EXPECT_EQ(Zv_ChangeToDIB(bitmap), nullptr);
  }
  // Resolutions past the field are held at its ends; a bitmap without a palette has the fixed one.
  TestBitmap bitmap(4, 4, 4);
  bitmap.XResolution = INT_MAX;
  bitmap.YResolution = INT_MIN;
  setPalette(bitmap, {});
  bitmap.Flags |= BMF_LOCKED;
  EXPECT_EQ(Zv_ChangeToDIB(&bitmap), nullptr);
  EXPECT_TRUE(bitmap.allocated());
  HGLOBAL dib = Zv_ConvertToDIB(&bitmap);
  const Bytes bytes = bytesOf(dib);
  GlobalFree(dib);
  const LONG perMetre[] = {INT_MAX, INT_MIN};
  EXPECT_EQ(memcmp(&bytes[offsetof(BITMAPINFOHEADER, biXPelsPerMeter)], perMetre, 8), 0);
  EXPECT_EQ(memcmp(&bytes[40], Zv_IntGetFixedPalette(4), 64), 0);
  bitmap.Flags &= ~static_cast<unsigned>(BMF_LOCKED);
}

}  // namespace
