// Duplicating descriptions and copying pixels, against the pixels one by one.
#include <zavo.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>

#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr int runLength = ALLOC_MEMORY | ALLOC_RUNLENGTH;
constexpr int kinds[] = {ALLOC_MEMORY, runLength};

TEST(DupBitmap, TakesOverTheDescription) {
  TestBitmap source(10, 20, 8);
  source.ViewPerspective = VIEW_TURNED_90;
  source.XResolution = 72;
  source.YResolution = 96;
  source.Flags |= 0x020 | BMF_PLAYBACK_WAITUSER | BMF_PLAYBACK_TRANSPARENT;
  source.PlaybackLeft = -3;
  source.PlaybackTop = 4;
  source.PlaybackDelay = 500;
  source.PlaybackDisposal = 3;
  source.PlaybackBackground = 0x01000007;
  source.PlaybackTransparentColor = 0x00123456;

  TestBitmap duplicate;
  ASSERT_EQ(Zv_DupBitmapNewDim(&duplicate, &source, 33, 7, 24, DUP_STORAGE | DUP_PALETTE), KSUCCESS);
  EXPECT_NE(duplicate.Palette, source.Palette);
  EXPECT_EQ(Zv_GetPaletteSize(duplicate.Palette), 256u);
  BitmapHandle expected = source;
  expected.Width = 33;
  expected.Height = 7;
  expected.BitsPerPixel = 24;
  expected.BytesPerLine = 100;
  expected.DataSize = 700;
  expected.ColorCount = 0;
  expected.PlaybackBackground = RGB(0, 36, 255);  // entry 7 of the fixed palette
  expected.Data = duplicate.Data;
  expected.StorageHandle = duplicate.StorageHandle;
  expected.Palette = duplicate.Palette;
  EXPECT_EQ(memcmp(static_cast<BitmapHandle*>(&duplicate), &expected, sizeof expected), 0);

  BitmapHandle shared;
  ASSERT_EQ(Zv_DupBitmapNewDim(&shared, &source, 4, 4, 4, 0), KSUCCESS);
  EXPECT_EQ(shared.Palette, source.Palette);
  EXPECT_EQ(shared.Flags & BMF_ALLOCATED, 0u);
}

TEST(DupBitmap, RefusesAndLeavesNothingBehind) {
  TestBitmap source(10, 10, 8);
  BitmapHandle empty{};
  EXPECT_EQ(Zv_DupBitmapNewDim(nullptr, &source, 1, 1, 8, DUP_STORAGE), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_DupBitmapNewDim(&empty, nullptr, 1, 1, 8, DUP_STORAGE), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_DupBitmapNewDim(&source, &empty, 1, 1, 8, DUP_STORAGE), KERR_BAD_BITMAP);
  const BitmapHandle before = source;
  EXPECT_EQ(Zv_DupBitmapNewDim(&source, &source, 1, 1, 8, DUP_STORAGE), KERR_BAD_PARAMETER);
  EXPECT_EQ(memcmp(&before, &source, sizeof before), 0);

  const struct {
    int width, height, bits, status;
  } cases[] = {{0, 5, 8, KERR_EMPTY}, {5, 5, 9, KERR_EMPTY}, {5, -5, 8, KERR_NO_MEMORY}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.width << " x " << c.height << ", " << c.bits << " bits");
    for (const unsigned flags : {1u, 3u, 5u, 7u}) {
      BitmapHandle duplicate;
      EXPECT_EQ(Zv_DupBitmapNewDim(&duplicate, &source, c.width, c.height, c.bits, flags), c.status);
      EXPECT_EQ(duplicate.Flags & BMF_ALLOCATED, 0u);
      EXPECT_EQ(duplicate.Palette, nullptr);
      EXPECT_EQ(duplicate.Region, nullptr);
    }
  }
  EXPECT_EQ(Zv_GetPaletteSize(source.Palette), 256u) << "a shared palette was deleted";
}

TEST(DupBitmap, RunLengthRowsOnlyForOneBit) {
  TestBitmap source(40, 4, 1, runLength);
  for (const int bits : {1, 8}) {
    for (const unsigned flags : {unsigned{DUP_PALETTE}, unsigned{DUP_PALETTE | DUP_STORAGE}}) {
      TestBitmap duplicate;
      ASSERT_EQ(Zv_DupBitmapNewDim(&duplicate, &source, 50, 5, bits, flags), KSUCCESS);
      if (!duplicate.allocated()) Zv_AllocateBitmap(&duplicate, runLength);
      EXPECT_EQ((duplicate.Flags & BMF_RUNLENGTH) != 0, bits == 1) << "flags " << flags;
    }
  }
}

// Layouts that differ are the caller's mistake, but no reason to leave either image.
TEST(CopyBitmapData, TakesTheRowsAndBytesThatBothHave) {
  constexpr unsigned seed = 1601;
  std::mt19937 random(seed);
  for (int number = 0; number < 400; ++number) {
    const int bits = number % 3 == 0 ? 1 : allDepths[random() % std::size(allDepths)];
    const auto side = [&](unsigned most) { return static_cast<int>(1 + random() % most); };
    TestBitmap from(side(100), side(5), bits, kinds[random() % 2]);
    TestBitmap to(random() % 2 != 0 ? from.Width : side(100), side(5), bits, kinds[random() % 2]);
    SCOPED_TRACE(testing::Message() << "seed " << seed << ", case " << number << ": " << bits << " bits, flags "
                                    << from.Flags << " to " << to.Flags << ", widths " << from.Width << " to "
                                    << to.Width);
    if (random() % 4 != 0) fillWithNoise(from, random);
    if (random() % 4 != 0) fillWithNoise(to, random);
    const auto source = bytesOf(from);
    auto expected = bytesOf(to);
    const unsigned shared = std::min(from.BytesPerLine, to.BytesPerLine);
    for (unsigned row = 0; row < static_cast<unsigned>(std::min(from.Height, to.Height)); ++row) {
      uint8_t* target = expected.data() + row * to.BytesPerLine;
      memcpy(target, source.data() + row * from.BytesPerLine, shared);
      // Run-length rows have no bits behind their end.
      for (auto bit = static_cast<unsigned>(to.Width); (to.Flags & BMF_RUNLENGTH) != 0 && bit < shared * 8; ++bit) {
        target[bit / 8] = static_cast<uint8_t>(target[bit / 8] & ~(0x80u >> bit % 8));
      }
    }
    ASSERT_EQ(Zv_CopyBitmapData(&to, &from), KSUCCESS);
    ASSERT_EQ(bytesOf(to), expected);
    ASSERT_EQ(bytesOf(from), source);
  }
}

Picture cut(const Picture& picture, int left, int top, int width, int height) {
  Picture result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) result.at(x, y) = picture.orZero(left + x, top + y);
  }
  return result;
}

TEST(CopyBitmap, WholeAndRectanglesAtAnyDepthAndPlace) {
  constexpr unsigned seed = 1603;
  std::mt19937 random(seed);
  const auto between = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  for (const int bits : allDepths) {
    for (int number = 0; number < 300; ++number) {
      TestBitmap source(between(1, 70), between(1, 6), bits, kinds[number % 3 / 2]);
      ASSERT_TRUE(source.allocated());
      fillWithNoise(source, random);
      const int left = between(-20, source.Width + 3);
      const int top = between(-3, source.Height + 1);
      const int width = between(1, 90);
      const int height = between(1, 9);
      SCOPED_TRACE(testing::Message() << "seed " << seed << ", " << bits << " bits, case " << number << ": "
                                      << source.Width << " x " << source.Height << ", rectangle " << left << ", " << top
                                      << ", " << width << " x " << height);
      const Picture before = pictureOf(source);
      const int insideLeft = std::max(left, 0);
      const int insideTop = std::max(top, 0);
      const int insideWidth = std::min(left + width, source.Width) - insideLeft;
      const int insideHeight = std::min(top + height, source.Height) - insideTop;
      const bool shares = insideWidth > 0 && insideHeight > 0;
      const auto columns = static_cast<unsigned>(width);
      const auto rows = static_cast<unsigned>(height);

      TestBitmap copy;
      ASSERT_EQ(Zv_CopyBitmapRect(&copy, &source, left, top, columns, rows), KSUCCESS);
      ASSERT_EQ(copy.allocated(), shares);
      ASSERT_EQ(pictureOf(source), before);
      const Picture wanted = cut(before, left, top, width, height);
      ASSERT_TRUE(!shares || pictureOf(copy) == wanted);

      TestBitmap whole;
      ASSERT_EQ(Zv_CopyBitmap(&whole, &source), KSUCCESS);
      ASSERT_EQ(whole.Flags, source.Flags);
      ASSERT_EQ(whole.DataSize < source.DataSize, (source.Flags & BMF_RUNLENGTH) != 0) << "its heap is trimmed";
      ASSERT_EQ(Zv_TrimBitmap(&whole, left, top, columns, rows), shares ? KSUCCESS : KERR_EMPTY);
      ASSERT_EQ(pictureOf(whole), shares ? cut(before, insideLeft, insideTop, insideWidth, insideHeight) : before);

      BitmapHandle* const inPlace = number % 2 == 0 ? nullptr : &source;
      ASSERT_EQ(Zv_CopyBitmapRect(inPlace, &source, left, top, columns, rows), KSUCCESS);
      ASSERT_EQ(pictureOf(source), shares ? wanted : before);
    }
  }
}

TEST(CopyBitmap, SidesBeyondTheSignedRange) {
  TestBitmap source(20, 20, 1);
  const BitmapHandle before = source;
  const struct {
    int left, top;
    unsigned width, height;
    int status;
  } cases[] = {{0, 0, 0, 5, KERR_EMPTY},
               {0, 0, 5, 0, KERR_EMPTY},
               {INT_MAX, 0, 10, 10, KSUCCESS},  // wraps in 32 bits, and yet begins right of the image
               {INT_MIN, INT_MIN, 10, 10, KSUCCESS},
               {INT_MIN, 0, 0x80000010u, 1, KERR_NO_MEMORY},
               {0, 0, 0xFFFFFFFFu, 1, KERR_NO_MEMORY},
               {0, 0, 1, 0xFFFFFFFFu, KERR_NO_MEMORY},
               {0, 0, 0x7FFFFFFFu, 0x7FFFFFFFu, KERR_NO_MEMORY}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.left << ", " << c.top << ", " << c.width << " x " << c.height);
    TestBitmap copy;
    EXPECT_EQ(Zv_CopyBitmapRect(&copy, &source, c.left, c.top, c.width, c.height), c.status);
    EXPECT_FALSE(copy.allocated());
    EXPECT_EQ(copy.Palette, nullptr);
    EXPECT_EQ(Zv_CopyBitmapRect(nullptr, &source, c.left, c.top, c.width, c.height), c.status);
    EXPECT_EQ(memcmp(&before, &source, sizeof before), 0);
  }
  EXPECT_EQ(Zv_TrimBitmap(&source, 4, 0, UINT_MAX, UINT_MAX), KSUCCESS);
  EXPECT_EQ(source.Width, 16);
  EXPECT_EQ(source.Height, 20);
}

TEST(CopyBitmap, ChecksItsArguments) {
  TestBitmap source(3, 3, 24);
  BitmapHandle empty{};
  EXPECT_EQ(Zv_CopyBitmap(nullptr, &source), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyBitmapData(nullptr, &source), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CopyBitmapData(&empty, &source), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CopyPlaybackParms(nullptr, &source), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyPlaybackParms(&source, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_TrimBitmap(nullptr, 0, 0, 5, 5), KERR_BAD_PARAMETER);
  for (BitmapHandle* bad : {static_cast<BitmapHandle*>(nullptr), &empty}) {
    EXPECT_EQ(Zv_CopyBitmap(&source, bad), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_CopyBitmapData(&source, bad), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_CopyBitmapRect(&source, bad, 0, 0, 1, 1), KERR_BAD_PARAMETER);
  }
  EXPECT_EQ(Zv_CopyBitmap(&source, &source), KSUCCESS);
  EXPECT_EQ(Zv_CopyBitmapData(&source, &source), KSUCCESS);
  EXPECT_TRUE(source.allocated());
}

TEST(TranslateColor, ByDepthOfTheDestination) {
  TestBitmap eight(1, 1, 8), four(1, 1, 4), full(1, 1, 24), empty;
  const struct {
    BitmapHandle *to, *from;
    COLORREF color, expected;
  } cases[] = {{&full, &four, 0x01000009, RGB(255, 0, 0)}, {&eight, &four, 0x01000009, 0x010000E0},  // red is 7 * 32
               {&four, &eight, 0x010000E0, 0x01000009},    {&full, &eight, RGB(1, 2, 3), RGB(1, 2, 3)},
               {&eight, &full, 0x01000009, 0x01000009},  // no palette to look in
               {&full, &four, 0x01000010, 0x01000010},   // no such entry
               {&empty, &four, 0x01000009, 0x01000009},    {nullptr, &four, 0x01000009, 0x01000009},
               {&full, nullptr, 0x01000009, 0x01000009}};
  for (const auto& c : cases) EXPECT_EQ(Zv_TranslateBitmapColor(c.to, c.from, c.color), c.expected) << &c - cases;

  // A colour that is in the palette twice keeps the number it was named by.
  const RGBQUAD twins[4] = {{0, 0, 0, 0}, {9, 9, 9, 0}, {9, 9, 9, 0}, {255, 255, 255, 0}};
  ASSERT_EQ(Zv_PutBitmapColors(&four, 4, 4, twins), KSUCCESS);
  TestBitmap copy;
  ASSERT_EQ(Zv_CopyBitmap(&copy, &four), KSUCCESS);
  for (const COLORREF color : {0x01000004u, 0x01000005u, 0x01000006u, 0x01000007u}) {
    EXPECT_EQ(Zv_TranslateBitmapColor(&copy, &four, color), color);
  }
}

}  // namespace
