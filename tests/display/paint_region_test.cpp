// Painting through a region, compared with the model: a device pixel is painted when the pixel it shows is in it.
#include <zavo.h>

#include <gtest/gtest.h>

#include "display/canvas.h"
#include "display/paint_model.h"
#include "support/platform_watch.h"

namespace zavotest {
namespace {

void giveRandomRegion(BitmapHandle& bitmap, std::mt19937& random) {
  int mode = CombineSet;
  for (unsigned part = random() % 12 + 1; part > 0; --part) {
    RECT rect = {static_cast<LONG>(random() % 30), static_cast<LONG>(random() % 30), 0, 0};
    rect.right = rect.left + static_cast<LONG>(random() % 15) + 1;
    rect.bottom = rect.top + static_cast<LONG>(random() % 15) + 1;
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, mode), KSUCCESS);
    mode = CombineXor;
  }
}

bool sameClip(HDC dc, HRGN clip) {
  HRGN now = CreateRectRgn(0, 0, 0, 0);
  const bool same = GetClipRgn(dc, now) == 1 && EqualRgn(now, clip) != FALSE;
  DeleteObject(now);
  return same;
}

TEST(PaintRegion, ShowsThePixelsOfTheRegionAlone) {
  Canvas canvas(60, 50);
  HRGN clip = CreateRectRgn(10, 10, 20, 20);
  for (unsigned index = 0; index < 400; ++index) {
    SCOPED_TRACE(testing::Message() << "case " << index);
    std::mt19937 random(index);
    RandomBitmap bitmap(random, index % 2 != 0 ? 24 : 8);
    if (random() % 6 != 0) giveRandomRegion(bitmap, random);
    if (HasFatalFailure()) return;
    PaintRects rects = randomRects(random, bitmap, canvas.width(), canvas.height());

    const PaintSettings settings;
    canvas.clear();
    std::vector<uint32_t> expected = canvas.pixels();
    const std::vector<uint32_t> before = expected;
    PaintModel(canvas.width(), canvas.height(), expected).paint(bitmap, rects, 0, 24);
    // The region lies on the destination as the whole picture does, whatever part of it is painted.
    TestBitmap mask;
    ASSERT_EQ(Zv_CreateMaskFromBitmapRgn(&bitmap, &mask), KSUCCESS);
    PaintRects whole;
    whole.destination = rects.destination;
    std::vector<uint32_t> inside(before.size());
    PaintModel(canvas.width(), canvas.height(), inside).paint(mask, whole, 0, 24);
    for (size_t i = 0; i < expected.size(); ++i) {
      if (inside[i] != 0xFFFFFF) expected[i] = before[i];
    }

    // The region takes the place of the clip for this one paint.
    SelectClipRgn(canvas.dc(), clip);
    const RECT* source = PaintRects::pointer(rects.source);
    const RECT* sourceClip = PaintRects::pointer(rects.sourceClip);
    const RECT* destinationClip = PaintRects::pointer(rects.destinationClip);
    int status;
    if (random() % 2 != 0) {
      status = Zv_PaintRgnDC(canvas.dc(), &bitmap, source, sourceClip, &rects.destination, destinationClip, SRCCOPY);
    } else {
      const std::vector<uint8_t> rows = bytesOf(bitmap);
      status = Zv_PaintRgnDCBuffer(canvas.dc(), &bitmap, source, sourceClip, &rects.destination, destinationClip,
                                   SRCCOPY, rows.data(), 0, bitmap.Height);
    }
    ASSERT_EQ(status, KSUCCESS);
    EXPECT_TRUE(sameClip(canvas.dc(), clip));
    SelectClipRgn(canvas.dc(), nullptr);
    EXPECT_TRUE(shows(canvas, expected)) << describe(bitmap, rects);
    if (HasFailure()) break;
  }
  DeleteObject(clip);
}

TEST(PaintRegion, RefusesMissingArgumentsInOrder) {
  const Canvas canvas(8, 8);
  TestBitmap bitmap(8, 8, 8);
  const RECT all = {0, 0, 8, 8};
  EXPECT_EQ(Zv_PaintRgnDC(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, SRCCOPY), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_PaintRgnDC(canvas.dc(), &bitmap, nullptr, nullptr, nullptr, nullptr, SRCCOPY), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PaintRgnDC(nullptr, &bitmap, nullptr, nullptr, &all, nullptr, SRCCOPY), KERR_BAD_PARAMETER);
  EXPECT_EQ(
      Zv_PaintRgnDCBuffer(canvas.dc(), &bitmap, nullptr, nullptr, &all, nullptr, SRCCOPY, nullptr, 0, bitmap.Height),
      KERR_BAD_BITMAP);
}

TEST(PaintRegion, DrawsNothingWhenTheRegionCannotBeMade) {
  const PaintSettings settings;
  const RECT part = {2, 2, 9, 9}, destination = {0, 0, 30, 30};
  Canvas canvas(30, 30);
  unsigned points = 0;
  for (bool refused = true; refused; ++points) {
    SCOPED_TRACE(points);
    canvas.clear();
    const std::vector<uint32_t> before = canvas.pixels();
    const Ledger ledger;
    {
      TestBitmap bitmap(20, 20, 8);
      ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &part, CombineSet), KSUCCESS);
      const Refusal refusal(anyResource, points + 1);
      const int status = Zv_PaintRgnDC(canvas.dc(), &bitmap, nullptr, nullptr, &destination, nullptr, SRCCOPY);
      refused = refusal.refused() != nullptr;
      EXPECT_EQ(status, refused ? KERR_NO_MEMORY : KSUCCESS);
      EXPECT_EQ(canvas.pixels() == before, refused);
    }
    ASSERT_TRUE(ledger.balanced());
  }
  EXPECT_GE(points, 4u);
}

}  // namespace
}  // namespace zavotest
