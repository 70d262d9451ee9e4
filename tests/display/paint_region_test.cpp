// Painting through a region, compared with the model: a device pixel is painted when the pixel it shows is in it.
#include <zavo.h>

#include <gtest/gtest.h>

#include "display/paint_model.h"
#include "support/canvas.h"

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

}  // namespace
}  // namespace zavotest
