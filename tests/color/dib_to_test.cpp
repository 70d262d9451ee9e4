// Giving bitmaps out as device-independent ones, seen through the graphics interface and byte by byte.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>

#include "color/dib_samples.h"
#include "support/refusals.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

// A DIB's block, and what its header says.
struct Given {
  explicit Given(HGLOBAL dib) {
    if (dib == nullptr) return;
    const auto* memory = static_cast<const uint8_t*>(GlobalLock(dib));
    bytes.assign(memory, memory + GlobalSize(dib));
    GlobalUnlock(dib);
    GlobalFree(dib);
    memcpy(&header, bytes.data(), sizeof header);
  }
  [[nodiscard]] const RGBQUAD& color(unsigned index) const {
    return *reinterpret_cast<const RGBQUAD*>(&bytes[40 + size_t{index} * 4]);
  }
  [[nodiscard]] const uint8_t* row(int index) const {
    return bytes.data() + bytes.size() - header.biSizeImage +
           static_cast<size_t>(index) * (header.biSizeImage / static_cast<unsigned>(header.biHeight));
  }

  Bytes bytes;
  BITMAPINFOHEADER header{};
};

int dibBits(int bits) {
  return bits == 1 ? 1 : bits <= 4 ? 4 : bits <= 8 ? 8 : 24;
}

// Colour of a stored pixel, 0x00BBGGRR.
COLORREF colorOf(const BitmapHandle& bitmap, uint32_t pixel) {
  unsigned channels[3];  // in memory order
  switch (bitmap.BitsPerPixel) {
    case 16: {
      const unsigned word = pixel >> 8 | (pixel & 0xFF) << 8;
      for (unsigned i = 0; i < 3; ++i) channels[i] = (word >> 5 * i & 31) << 3 | (word >> 5 * i & 31) >> 2;
      break;
    }
    case 24:
      for (unsigned i = 0; i < 3; ++i) channels[i] = pixel >> (16 - 8 * i) & 0xFF;
      break;
    case 32:
      for (unsigned i = 0; i < 3; ++i) channels[i] = pixel >> (24 - 8 * i) & 0xFF;
      break;
    default: {
      RGBQUAD entry;
      if (Zv_GetPaletteEntries(bitmap.Palette, pixel, 1, &entry) != 1) return CLR_INVALID;
      return RGB(entry.rgbRed, entry.rgbGreen, entry.rgbBlue);
    }
  }
  return bitmap.ColorOrder == ORDER_BLUE_FIRST ? RGB(channels[2], channels[1], channels[0])
                                               : RGB(channels[0], channels[1], channels[2]);
}

// The colours of a DIB as the graphics interface shows it, from the top left.
class Shown {
 public:
  explicit Shown(const Given& dib) : width_(dib.header.biWidth), height_(dib.header.biHeight) {
    BITMAPINFO info{};
    info.bmiHeader = {40, width_, -height_, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    bitmap_ = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    pixels_ = static_cast<const uint32_t*>(bits);
    HGDIOBJ old = SelectObject(dc_, bitmap_);
    SetDIBitsToDevice(dc_, 0, 0, static_cast<DWORD>(width_), static_cast<DWORD>(height_), 0, 0, 0,
                      static_cast<UINT>(height_), dib.row(0), reinterpret_cast<const BITMAPINFO*>(dib.bytes.data()),
                      DIB_RGB_COLORS);
    GdiFlush();
    SelectObject(dc_, old);
  }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;
  ~Shown() {
    DeleteObject(bitmap_);
    DeleteDC(dc_);
  }
  [[nodiscard]] std::vector<COLORREF> colors() const {
    std::vector<COLORREF> result;
    for (int i = 0; i < width_ * height_; ++i) {
      const uint32_t pixel = pixels_[i];
      result.push_back(RGB(pixel >> 16 & 0xFF, pixel >> 8 & 0xFF, pixel & 0xFF));
    }
    return result;
  }

 private:
  int width_;
  int height_;
  HDC dc_ = CreateCompatibleDC(nullptr);
  HBITMAP bitmap_ = nullptr;
  const uint32_t* pixels_ = nullptr;
};

class ToDibDepths : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Depths, ToDibDepths, testing::ValuesIn(allDepths));

TEST_P(ToDibDepths, ThePictureShownIsTheBitmapsWhateverItsOrderAndPerspective) {
  std::mt19937 random(21);
  for (int width = 1; width <= 70; width += width < 34 ? 1 : 9) {
    for (const int perspective : {0, 1, 2}) {
      for (const int order : {ORDER_RED_FIRST, ORDER_BLUE_FIRST}) {
        SCOPED_TRACE(testing::Message() << width << " wide, perspective " << perspective << ", order " << order);
        TestBitmap bitmap(width, 4, GetParam());
        bitmap.ViewPerspective = perspective;
        bitmap.ColorOrder = bitmap.BitsPerPixel > 8 ? order : 0;
        fillWithNoise(bitmap, random);
        const Picture stored = pictureOf(bitmap);
        std::vector<COLORREF> seen;
        for (int y = 0; y < 4; ++y) {
          for (int x = 0; x < width; ++x) {
            seen.push_back(colorOf(bitmap, stored.at(x, perspective == VIEW_BOTTOM_UP ? 3 - y : y)));
          }
        }
        const BitmapHandle before = bitmap;
        const Given converted(Zv_ConvertToDIB(&bitmap));
        EXPECT_EQ(memcmp(&bitmap, &before, sizeof before), 0);
        const Given changed(Zv_ChangeToDIB(&bitmap));
        EXPECT_EQ(bitmap.Flags & BMF_ALLOCATED, 0u);
        EXPECT_EQ(bitmap.Palette, nullptr);
        for (const Given* dib : {&converted, &changed}) {
          ASSERT_EQ(dib->header.biBitCount, dibBits(GetParam()));
          ASSERT_EQ(Shown(*dib).colors(), seen) << (dib == &changed ? "changed" : "converted");
        }
      }
    }
  }
}

TEST_P(ToDibDepths, HeaderFieldsDifferInColoursUsedAndReservedBytes) {
  const int bits = GetParam();
  TestBitmap bitmap(11, 6, bits);
  bitmap.XResolution = 300;
  bitmap.YResolution = 72;
  const unsigned colors = bits <= 8 ? 1u << bits : 0;
  const unsigned fullTable = bits <= 8 ? 1u << dibBits(bits) : 0;
  if (bits <= 8) {
    RGBQUAD entries[256];
    for (unsigned i = 0; i < colors; ++i) entries[i] = {static_cast<BYTE>(i), 2, 3, 0};
    ASSERT_EQ(Zv_PutBitmapColors(&bitmap, 0, colors, entries), KSUCCESS);
    PALETTEENTRY flagged = {9, 8, 7, PC_NOCOLLAPSE};
    ASSERT_EQ(SetPaletteEntries(bitmap.Palette, 1, 1, &flagged), 1u);
  }
  const Given converted(Zv_ConvertToDIB(&bitmap));
  const Given changed(Zv_ChangeToDIB(&bitmap));
  for (const Given* dib : {&converted, &changed}) {
    const BITMAPINFOHEADER& header = dib->header;
    const bool isChanged = dib == &changed;
    SCOPED_TRACE(isChanged ? "changed" : "converted");
    EXPECT_EQ(header.biSize, 40u);
    EXPECT_EQ(header.biWidth, 11);
    EXPECT_EQ(header.biHeight, 6);
    EXPECT_EQ(header.biPlanes, 1);
    EXPECT_EQ(header.biCompression, static_cast<DWORD>(BI_RGB));
    EXPECT_EQ(header.biSizeImage, static_cast<DWORD>((11 * dibBits(bits) + 31) / 32 * 4 * 6));
    EXPECT_EQ(header.biXPelsPerMeter, 11811);
    EXPECT_EQ(header.biYPelsPerMeter, 2835);
    EXPECT_EQ(header.biClrUsed, isChanged ? colors : 0u);
    EXPECT_EQ(header.biClrImportant, 0u);
    const unsigned table = isChanged ? colors : fullTable;
    EXPECT_EQ(dib->bytes.size(), 40 + table * 4 + header.biSizeImage);
    for (unsigned i = 0; i < table; ++i) {
      const RGBQUAD expected = i == 1 && i < colors ? RGBQUAD{7, 8, 9, static_cast<BYTE>(isChanged ? PC_NOCOLLAPSE : 0)}
                               : i < colors         ? RGBQUAD{static_cast<BYTE>(i), 2, 3, 0}
                                                    : RGBQUAD{};
      ASSERT_EQ(memcmp(&dib->color(i), &expected, 4), 0) << "entry " << i;
    }
  }
}

TEST(ToDib, BitsPastTheLastPixelAreZeroWhereTheDepthChanged) {
  std::mt19937 random(22);
  for (const int bits : {2, 3, 5, 6, 7, 16, 32}) {
    for (int width = 1; width <= 40; ++width) {
      TestBitmap bitmap(width, 2, bits);
      fillWithNoise(bitmap, random);
      const Given dib(Zv_ChangeToDIB(&bitmap));
      const size_t rowBits = dib.header.biSizeImage / 2 * 8;
      for (auto bit = static_cast<size_t>(width * dibBits(bits)); bit < rowBits; ++bit) {
        ASSERT_EQ(dib.row(1)[bit / 8] >> (7 - bit % 8) & 1, 0) << bits << " bits, " << width << " wide, bit " << bit;
      }
    }
  }
}

TEST(ToDib, RoundTripKeepsTheBitmap) {
  std::mt19937 random(23);
  for (const int bits : {1, 4, 8, 24}) {
    SCOPED_TRACE(bits);
    TestBitmap bitmap(37, 9, bits);
    bitmap.ViewPerspective = VIEW_BOTTOM_UP;
    bitmap.XResolution = 96;
    bitmap.YResolution = 1200;
    fillWithNoise(bitmap, random);
    const Picture before = pictureOf(bitmap);
    HGLOBAL dib = Zv_ChangeToDIB(&bitmap);
    ASSERT_NE(dib, nullptr);
    TestBitmap back;
    ASSERT_EQ(Zv_ChangeFromDIB(&back, dib), KSUCCESS);
    EXPECT_TRUE(pictureOf(back) == before);
    EXPECT_EQ(back.XResolution, 96);
    EXPECT_EQ(back.YResolution, 1200);
    EXPECT_EQ(Zv_GetPaletteSize(back.Palette), bits <= 8 ? 1u << bits : 0);
  }
}

TEST(ToDib, TurnedBitmapsAreGivenAsSeen) {
  std::mt19937 random(24);
  for (const int bits : {1, 3, 8, 16, 24}) {
    for (const int perspective : {4, 8}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective);
      TestBitmap bitmap(7, 12, bits);
      bitmap.ViewPerspective = perspective;
      fillWithNoise(bitmap, random);
      const Picture stored = pictureOf(bitmap);
      std::vector<COLORREF> seen;
      for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 12; ++x) {
          int column = x, row = y;
          ASSERT_EQ(Zv_PointToBitmap(&bitmap, VIEW_UPRIGHT, &column, &row), KSUCCESS);
          seen.push_back(colorOf(bitmap, stored.at(column, row)));
        }
      }
      const Snapshot unchanged(bitmap);
      const Given converted(Zv_ConvertToDIB(&bitmap));
      EXPECT_TRUE(unchanged.unchanged());
      const Given changed(Zv_ChangeToDIB(&bitmap));
      EXPECT_FALSE(bitmap.allocated());
      EXPECT_EQ(Shown(converted).colors(), seen);
      EXPECT_EQ(Shown(changed).colors(), seen);
    }
  }
}

TEST(ToDib, KeepsTheBitmapWhenRefused) {
  for (const int perspective : {2, 4}) {
    for (const bool change : {false, true}) {
      refuseEachResource({}, [&](RefusalRound& round) {
        TestBitmap bitmap(37, 11, 5);
        bitmap.ViewPerspective = perspective;
        round.keeps(bitmap);
        HGLOBAL dib = nullptr;
        round.run([&] {
          dib = change ? Zv_ChangeToDIB(&bitmap) : Zv_ConvertToDIB(&bitmap);
          return dib != nullptr ? KSUCCESS : KERR_NO_MEMORY;
        });
        GlobalFree(dib);
      });
    }
  }
}

TEST(ToDib, BitmapWithoutPaletteTakesTheFixedOne) {
  TestBitmap bitmap(4, 4, 4);
  DeleteObject(bitmap.Palette);
  bitmap.Palette = nullptr;
  const Given dib(Zv_ConvertToDIB(&bitmap));
  EXPECT_EQ(dib.color(9).rgbRed, 255);
  EXPECT_EQ(dib.color(9).rgbBlue, 0);
}

TEST(ToDib, ResolutionsPastTheFieldAreHeldAtItsEnds) {
  TestBitmap bitmap(4, 4, 8);
  bitmap.XResolution = INT_MAX;
  bitmap.YResolution = INT_MIN;
  const Given dib(Zv_ConvertToDIB(&bitmap));
  EXPECT_EQ(dib.header.biXPelsPerMeter, INT_MAX);
  EXPECT_EQ(dib.header.biYPelsPerMeter, INT_MIN);
}

TEST(ToDib, RefusesWhatHasNoStorageOrIsLocked) {
  EXPECT_EQ(Zv_ConvertToDIB(nullptr), nullptr);
  EXPECT_EQ(Zv_ChangeToDIB(nullptr), nullptr);
  BitmapHandle empty{};
  EXPECT_EQ(Zv_ConvertToDIB(&empty), nullptr);
  EXPECT_EQ(Zv_ChangeToDIB(&empty), nullptr);

  TestBitmap locked(4, 4, 8);
  locked.Flags |= BMF_LOCKED;
  const Given converted(Zv_ConvertToDIB(&locked));
  EXPECT_EQ(converted.header.biBitCount, 8);
  EXPECT_EQ(Zv_ChangeToDIB(&locked), nullptr);
  EXPECT_TRUE(locked.allocated());
  locked.Flags &= ~static_cast<unsigned>(BMF_LOCKED);
}

}  // namespace
