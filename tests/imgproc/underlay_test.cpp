// Pictures shown under others, against a model that goes pixel by pixel.
#include <zavo.h>

#include <gtest/gtest.h>
#include <random>

#include "imgproc/pixel_model.h"
#include "support/progress_log.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

// Where in the underlay's stored pixels the pixel under (x, y) is.
POINT placeUnder(BitmapHandle& bitmap, BitmapHandle& underlay, unsigned flags, int x, int y) {
  int frame = VIEW_UPRIGHT;
  if (flags == UNDERLAY_STRETCH) frame = bitmap.ViewPerspective;
  RECT size = {0, 0, underlay.Width, underlay.Height};
  Zv_RectFromBitmap(&underlay, frame, &size);
  if (flags == UNDERLAY_STRETCH) {
    x = x * size.right / bitmap.Width;
    y = y * size.bottom / bitmap.Height;
  } else {
    Zv_PointFromBitmap(&bitmap, frame, &x, &y);
    x %= size.right;
    y %= size.bottom;
  }
  Zv_PointToBitmap(&underlay, frame, &x, &y);
  return {x, y};
}

uint32_t blended(uint32_t pixel, uint32_t under) {
  const uint32_t alpha = pixel & 0xFF;
  uint32_t result = alpha;
  for (int shift = 8; shift < 32; shift += 8) {
    const double exact = ((pixel >> shift & 255) * alpha + (under >> shift & 255) * (255 - alpha)) / 255.0;
    result |= static_cast<uint32_t>(exact + 0.5) << shift;
  }
  return result;
}

uint32_t seenPixel(uint32_t pixel, uint32_t under, int depth, bool inside) {
  if (depth == 32) return inside ? blended(pixel, under) : (pixel & 0xFF) | (under & 0xFFFFFF00);
  const uint32_t alpha = depth == 16 ? 0x80 : 0;
  const bool opaque = depth != 16 || (pixel & alpha) != 0;
  return inside && opaque ? pixel : (pixel & alpha) | (under & ~alpha);
}

Picture model(BitmapHandle& bitmap, BitmapHandle& underlay, unsigned flags) {
  const Format format = formatOf(bitmap);
  const Format underFormat = formatOf(underlay);
  Picture result = pictureOf(bitmap);
  const Picture under = pictureOf(underlay);
  for (int y = 0; y < result.height; ++y) {
    for (int x = 0; x < result.width; ++x) {
      const POINT place = placeUnder(bitmap, underlay, flags, x, y);
      const bool inside = !Zv_BitmapHasRgn(&bitmap) || Zv_IsPtInBitmapRgn(&bitmap, y, x) == 1;
      const uint32_t pixel = convertedPixel(under.at(place.x, place.y), underFormat, format);
      result.at(x, y) = seenPixel(result.at(x, y), pixel, format.depth, inside);
    }
  }
  return result;
}

TEST(Underlay, ShowsOutsideTheRegionAndThroughTheAlpha) {
  for (unsigned number = 0; number < 800; ++number) {
    std::mt19937 random(number);
    const int bits = random() % 3 == 0 ? (random() % 2 == 0 ? 16 : 32) : allDepths[random() % std::size(allDepths)];
    const int kinds[] = {ALLOC_MEMORY, ALLOC_MEMORY | ALLOC_RUNLENGTH};
    TestBitmap bitmap(random() % 70 + 1, random() % 20 + 1, bits, kinds[random() % 2]);
    TestBitmap other(random() % 40 + 1, random() % 12 + 1, allDepths[random() % std::size(allDepths)],
                     kinds[random() % 2]);
    makeRandom(bitmap, random);
    makeRandom(other, random);
    if (number % 5 == 0) other.ViewPerspective = bitmap.ViewPerspective;
    BitmapHandle alias = bitmap;
    alias.ViewPerspective = perspectives[random() % std::size(perspectives)];
    BitmapHandle& underlay = number % 9 == 0 ? alias : other;
    const unsigned flags = random() % 2 == 0 ? UNDERLAY_TILE : UNDERLAY_STRETCH;
    SCOPED_TRACE(testing::Message() << "case " << number << ": " << underlay.BitsPerPixel << " bits under " << bits
                                    << ", perspective " << underlay.ViewPerspective << " under "
                                    << bitmap.ViewPerspective << (flags == UNDERLAY_TILE ? ", tiled" : ", stretched"));
    const Snapshot otherBefore(other);
    const RegionExtent region = regionExtentOf(bitmap);
    const Picture expected = model(bitmap, underlay, flags);
    ASSERT_EQ(Zv_UnderlayBitmap(&bitmap, &underlay, flags), KSUCCESS);
    ASSERT_NO_FATAL_FAILURE(expectSame(pictureOf(bitmap), expected));
    EXPECT_TRUE(regionExtentOf(bitmap) == region);
    EXPECT_TRUE(otherBefore.unchanged());
  }
}

TEST(Underlay, RefusesAndStopsWithoutATrace) {
  TestBitmap bitmap(30, 10, 32), underlay(7, 5, 8);
  BitmapHandle empty{};
  const Snapshot before(bitmap);
  EXPECT_EQ(Zv_UnderlayBitmap(nullptr, &underlay, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_UnderlayBitmap(&bitmap, nullptr, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_UnderlayBitmap(&empty, &underlay, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_UnderlayBitmap(&bitmap, &empty, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_UnderlayBitmap(&bitmap, &underlay, 2), KERR_BAD_PARAMETER);
  const ProgressLog log(3, -55);
  EXPECT_EQ(Zv_UnderlayBitmap(&bitmap, &underlay, UNDERLAY_STRETCH), -55);
  EXPECT_TRUE(before.unchanged());
}

}  // namespace
