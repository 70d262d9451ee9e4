// Duplicating descriptions and copying pixels.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>

#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

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
  EXPECT_EQ(duplicate.Width, 33);
  EXPECT_EQ(duplicate.Height, 7);
  EXPECT_EQ(duplicate.BitsPerPixel, 24);
  EXPECT_EQ(duplicate.BytesPerLine, 100u);
  EXPECT_EQ(duplicate.ViewPerspective, VIEW_TURNED_90);
  EXPECT_EQ(duplicate.XResolution, 72);
  EXPECT_EQ(duplicate.YResolution, 96);
  EXPECT_EQ(duplicate.ColorOrder, source.ColorOrder);
  EXPECT_EQ(duplicate.Flags,
            unsigned{BMF_ALLOCATED | BMF_MEMORY | 0x020 | BMF_PLAYBACK_WAITUSER | BMF_PLAYBACK_TRANSPARENT});
  EXPECT_EQ(duplicate.PlaybackLeft, -3);
  EXPECT_EQ(duplicate.PlaybackTop, 4);
  EXPECT_EQ(duplicate.PlaybackDelay, 500u);
  EXPECT_EQ(duplicate.PlaybackDisposal, 3u);
  // Entry 7 of the fixed palette is red 0, green 36, blue 255.
  EXPECT_EQ(duplicate.PlaybackBackground, RGB(0, 36, 255));
  EXPECT_EQ(duplicate.PlaybackTransparentColor, 0x00123456u);
}

TEST(DupBitmap, SharesWhatIsNotAskedFor) {
  TestBitmap source(4, 4, 4);
  BitmapHandle shared;
  ASSERT_EQ(Zv_DupBitmapNewDim(&shared, &source, 4, 4, 4, 0), KSUCCESS);
  EXPECT_EQ(shared.Palette, source.Palette);
  EXPECT_EQ(shared.Flags & BMF_ALLOCATED, 0u);
  TestBitmap own;
  ASSERT_EQ(Zv_DupBitmapNewDim(&own, &source, 4, 4, 4, DUP_PALETTE), KSUCCESS);
  EXPECT_NE(own.Palette, source.Palette);
  EXPECT_EQ(Zv_GetPaletteSize(own.Palette), 16u);
}

TEST(DupBitmap, RefusesAndLeavesNothingBehind) {
  TestBitmap source(10, 10, 8);
  BitmapHandle empty{};
  EXPECT_EQ(Zv_DupBitmapNewDim(nullptr, &source, 1, 1, 8, DUP_STORAGE), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_DupBitmapNewDim(&empty, nullptr, 1, 1, 8, DUP_STORAGE), KERR_BAD_BITMAP);
  BitmapHandle unallocated{};
  EXPECT_EQ(Zv_DupBitmapNewDim(&empty, &unallocated, 1, 1, 8, DUP_STORAGE), KERR_BAD_BITMAP);
  const BitmapHandle before = source;
  EXPECT_EQ(Zv_DupBitmapNewDim(&source, &source, 1, 1, 8, DUP_STORAGE), KERR_BAD_PARAMETER);
  EXPECT_EQ(memcmp(&before, &source, sizeof before), 0);

  const struct {
    int width, height, bits, status;
  } cases[] = {{0, 5, 8, KERR_EMPTY},
               {5, 0, 8, KERR_EMPTY},
               {5, 5, 9, KERR_EMPTY},
               {-5, 5, 8, KERR_NO_MEMORY},
               {5, -5, 8, KERR_NO_MEMORY},
               {0x10000, 0x10001, 8, KERR_NO_MEMORY},
               {0x20000001, 1, 32, KERR_NO_MEMORY}};
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
  TestBitmap source(40, 4, 1, ALLOC_MEMORY | ALLOC_RUNLENGTH);
  TestBitmap oneBit;
  ASSERT_EQ(Zv_DupBitmapNewDim(&oneBit, &source, 50, 5, 1, DUP_STORAGE), KSUCCESS);
  EXPECT_NE(oneBit.Flags & BMF_RUNLENGTH, 0u);
  oneBit.Palette = nullptr;
  TestBitmap eightBits;
  ASSERT_EQ(Zv_DupBitmapNewDim(&eightBits, &source, 50, 5, 8, DUP_STORAGE), KSUCCESS);
  EXPECT_EQ(eightBits.Flags & BMF_RUNLENGTH, 0u);
  eightBits.Palette = nullptr;
  // Described first, allocated by the caller.
  TestBitmap described;
  ASSERT_EQ(Zv_DupBitmapNewDim(&described, &source, 50, 5, 8, 0), KSUCCESS);
  described.Palette = nullptr;
  ASSERT_EQ(Zv_AllocateBitmap(&described, ALLOC_MEMORY | ALLOC_RUNLENGTH), KSUCCESS);
  EXPECT_EQ(described.Flags & BMF_RUNLENGTH, 0u);
}

TEST(CopyBitmap, OwnsAnEqualImage) {
  std::mt19937 random(1601);
  for (const int bits : allDepths) {
    SCOPED_TRACE(testing::Message() << bits << " bits");
    TestBitmap source(37, 11, bits);
    ASSERT_TRUE(source.allocated());
    fillWithNoise(source, random);
    const Picture picture = pictureOf(source);
    TestBitmap copy;
    ASSERT_EQ(Zv_CopyBitmap(&copy, &source), KSUCCESS);
    Zv_FreeBitmap(&source);
    EXPECT_TRUE(pictureOf(copy) == picture);
    if (bits <= 8) {
      EXPECT_EQ(Zv_GetPaletteSize(copy.Palette), 1u << bits);
    }
  }
}

TEST(CopyBitmap, ChecksItsArguments) {
  TestBitmap source(3, 3, 24);
  BitmapHandle empty{};
  EXPECT_EQ(Zv_CopyBitmap(nullptr, &source), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyBitmap(&empty, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyBitmap(&source, &empty), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyBitmap(&source, &source), KSUCCESS);
  EXPECT_TRUE(source.allocated());
  EXPECT_EQ(Zv_CopyBitmapData(nullptr, &source), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CopyBitmapData(&source, nullptr), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CopyBitmapData(&empty, &source), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CopyBitmapData(&source, &empty), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CopyBitmapData(&source, &source), KSUCCESS);
}

TEST(CopyBitmap, RunLengthRowsStayRunLengthRows) {
  std::mt19937 random(1607);
  for (const int width : {1, 31, 200}) {
    SCOPED_TRACE(testing::Message() << "width " << width);
    TestBitmap source(width, 12, 1, ALLOC_MEMORY | ALLOC_RUNLENGTH);
    TestBitmap packed(width, 12, 1);
    fillWithNoise(packed, random);
    // From packed rows into runs and back; rows 3 and 4 of the run-length bitmap are then new, that is blank.
    ASSERT_EQ(Zv_CopyBitmapData(&source, &packed), KSUCCESS);
    ASSERT_EQ(Zv_ChangeBitmapHeight(&source, 3), KSUCCESS);
    ASSERT_EQ(Zv_ChangeBitmapHeight(&source, 5), KSUCCESS);
    const Picture picture = pictureOf(source);
    TestBitmap copy;
    ASSERT_EQ(Zv_CopyBitmap(&copy, &source), KSUCCESS);
    EXPECT_NE(copy.Flags & BMF_RUNLENGTH, 0u);
    EXPECT_TRUE(pictureOf(copy) == picture);
    EXPECT_LT(copy.DataSize, source.DataSize) << "the copy's heap is trimmed";

    // Into rows that hold something already, blank rows included.
    TestBitmap used(width, 5, 1, ALLOC_MEMORY | ALLOC_RUNLENGTH);
    fillWithNoise(used, random);
    ASSERT_EQ(Zv_CopyBitmapData(&used, &source), KSUCCESS);
    EXPECT_TRUE(pictureOf(used) == picture);
    ASSERT_EQ(Zv_CopyBitmapData(&packed, &source), KSUCCESS);
    for (int x = 0; x < width; ++x) ASSERT_EQ(pictureOf(packed).at(x, 4), 0u);
  }
}

// Layouts that differ are the caller's mistake, but no reason to leave either image.
TEST(CopyBitmapData, KeepsToWhatBothHave) {
  std::mt19937 random(1602);
  TestBitmap small(5, 4, 24);
  TestBitmap large(9, 7, 24);
  fillWithNoise(small, random);
  fillWithNoise(large, random);
  const Picture before = pictureOf(large);
  const Picture source = pictureOf(small);
  ASSERT_EQ(Zv_CopyBitmapData(&large, &small), KSUCCESS);
  const Picture after = pictureOf(large);
  for (int y = 0; y < 7; ++y) {
    for (int x = 0; x < 9; ++x) {
      if (x == 5) continue;  // shares its bytes with the padding
      EXPECT_EQ(after.at(x, y), x < 5 && y < 4 ? source.at(x, y) : before.at(x, y)) << x << ", " << y;
    }
  }
  ASSERT_EQ(Zv_CopyBitmapData(&small, &large), KSUCCESS);
  EXPECT_TRUE(pictureOf(small) == source);
}

TEST(TranslateColor, ByDepthOfTheDestination) {
  TestBitmap eight(1, 1, 8);
  TestBitmap four(1, 1, 4);
  TestBitmap full(1, 1, 24);
  BitmapHandle empty{};
  EXPECT_EQ(Zv_TranslateBitmapColor(&full, &four, 0x01000009), RGB(255, 0, 0));
  EXPECT_EQ(Zv_TranslateBitmapColor(&eight, &four, 0x01000009), 0x010000E0u) << "red is 7 * 32";
  EXPECT_EQ(Zv_TranslateBitmapColor(&four, &eight, 0x010000E0), 0x01000009u);
  EXPECT_EQ(Zv_TranslateBitmapColor(&full, &eight, RGB(1, 2, 3)), RGB(1, 2, 3));
  EXPECT_EQ(Zv_TranslateBitmapColor(&eight, &full, 0x01000009), 0x01000009u) << "no palette to look in";
  EXPECT_EQ(Zv_TranslateBitmapColor(&full, &four, 0x01000010), 0x01000010u) << "no such entry";
  EXPECT_EQ(Zv_TranslateBitmapColor(&empty, &four, 0x01000009), 0x01000009u);
  EXPECT_EQ(Zv_TranslateBitmapColor(nullptr, &four, 0x01000009), 0x01000009u);
  EXPECT_EQ(Zv_TranslateBitmapColor(&full, nullptr, 0x01000009), 0x01000009u);

  // A colour that is in the palette twice keeps the number it was named by.
  const RGBQUAD twins[4] = {{0, 0, 0, 0}, {9, 9, 9, 0}, {9, 9, 9, 0}, {255, 255, 255, 0}};
  ASSERT_EQ(Zv_PutBitmapColors(&four, 4, 4, twins), KSUCCESS);
  TestBitmap copy;
  ASSERT_EQ(Zv_CopyBitmap(&copy, &four), KSUCCESS);
  for (const COLORREF color : {0x01000004u, 0x01000005u, 0x01000006u, 0x01000007u}) {
    EXPECT_EQ(Zv_TranslateBitmapColor(&copy, &four, color), color);
  }
}

TEST(CopyPlaybackParms, RefusesNull) {
  TestBitmap bitmap(1, 1, 8);
  EXPECT_EQ(Zv_CopyPlaybackParms(&bitmap, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyPlaybackParms(nullptr, &bitmap), KERR_BAD_PARAMETER);
  TestBitmap frame(1, 1, 8);
  frame.Flags |= BMF_PLAYBACK_TRANSPARENT;
  bitmap.Flags |= BMF_PLAYBACK_WAITUSER;
  EXPECT_EQ(Zv_CopyPlaybackParms(&bitmap, &frame), KSUCCESS);
  EXPECT_EQ(bitmap.Flags & (BMF_PLAYBACK_WAITUSER | BMF_PLAYBACK_TRANSPARENT), unsigned{BMF_PLAYBACK_TRANSPARENT});
}

}  // namespace
