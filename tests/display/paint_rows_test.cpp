// Painting rows that the caller holds, plain and as run records, compared with the model.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>

#include "display/paint_model.h"
#include "support/canvas.h"

namespace zavotest {
namespace {

int paintRows(HDC dc, BitmapHandle& bitmap, const PaintRects& rects, const uint8_t* rows, int first, int count) {
  return Zv_PaintDCBuffer(dc, &bitmap, PaintRects::pointer(rects.source), PaintRects::pointer(rects.sourceClip),
                          &rects.destination, PaintRects::pointer(rects.destinationClip), SRCCOPY, rows, first, count);
}

// Rows `first` to `first` + `count` - 1 of the bitmap, with filler where it has none.
std::vector<uint8_t> heldRows(BitmapHandle& bitmap, int first, int count) {
  const std::vector<uint8_t> all = bytesOf(bitmap);
  std::vector<uint8_t> held(static_cast<size_t>(count) * bitmap.BytesPerLine, 0x5A);
  for (int k = 0; k < count; ++k) {
    const int row = first + k;
    if (row < 0 || row >= bitmap.Height) continue;
    memcpy(&held[static_cast<size_t>(k) * bitmap.BytesPerLine], &all[static_cast<size_t>(row) * bitmap.BytesPerLine],
           bitmap.BytesPerLine);
  }
  return held;
}

std::vector<uint8_t> runRecords(const std::vector<uint8_t>& rows, int width, int count) {
  std::vector<uint8_t> records(static_cast<size_t>(count) * (static_cast<size_t>(width) * 2 + 8));
  Zv_CompressRows(records.data(), rows.data(), static_cast<unsigned>(width), static_cast<unsigned>(count));
  return records;
}

class HeldRows : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Depths, HeldRows, testing::ValuesIn(allDepths));

TEST_P(HeldRows, AreShownWhereTheyBelongAndStayUntouched) {
  Canvas canvas(50, 50);
  for (unsigned index = 0; index < 150; ++index) {
    SCOPED_TRACE(testing::Message() << "case " << index);
    std::mt19937 random(index * 64 + static_cast<unsigned>(GetParam()));
    RandomBitmap bitmap(random, GetParam());
    if (GetParam() == 1 && random() % 2 != 0) giveBlackAndWhite(bitmap, random() % 2 != 0);
    PaintRects rects = randomRects(random, bitmap, canvas.width(), canvas.height());
    const int first = static_cast<int>(random() % static_cast<unsigned>(bitmap.Height + 6)) - 3;
    const int count = static_cast<int>(random() % static_cast<unsigned>(bitmap.Height + 4));
    rects.storedRows = RECT{0, first, bitmap.Width, first + count};
    const std::vector<uint8_t> plain = heldRows(bitmap, first, count);
    const bool asRuns = bitmap.BitsPerPixel == 1 && count != 0 && random() % 2 != 0;
    const std::vector<uint8_t> given = asRuns ? runRecords(plain, bitmap.Width, count) : plain;

    const PaintSettings settings((random() & (PAINT_ORDERED_DITHER | PAINT_GRAY_1BIT)) | PAINT_DITHER);
    if (random() % 2 != 0) PaintSettings::adjust(100, 100, 150);
    canvas.clear();
    std::vector<uint32_t> expected = canvas.pixels();
    PaintModel model(canvas.width(), canvas.height(), expected);
    const int deviceBits = random() % 2 != 0 ? 24 : 8;
    const FakeDevice device(deviceBits);
    int mode = 0;
    Zv_GetDitherFlags(canvas.dc(), &bitmap, nullptr, &mode);
    model.paint(bitmap, rects, mode >= 3 ? 0 : mode, deviceBits);  // rows are never turned into grey

    // The record alone will do.
    BitmapHandle record = bitmap;
    record.StorageHandle = nullptr;
    record.Data = nullptr;
    record.Flags = 0;
    std::vector<uint8_t> held = given;
    held.push_back(0);  // an address even for no rows
    ASSERT_EQ(paintRows(canvas.dc(), record, rects, held.data(), first, asRuns ? -count : count), KSUCCESS);
    held.pop_back();
    EXPECT_EQ(held, given);
    EXPECT_TRUE(shows(canvas, expected)) << count << " rows from " << first << ", mode " << mode << "\n"
                                         << describe(bitmap, rects);
    if (HasFailure()) return;
  }
}

TEST(HeldRows, LeavesOutRowsBeyondTheBitmap) {
  const PaintSettings settings;
  const Canvas canvas(8, 8);
  TestBitmap bitmap(8, 8, 8);
  const std::vector<uint8_t> rows(64);
  PaintRects rects;
  rects.destination = {0, 0, 8, 8};
  constexpr int beyond[][2] = {{0, 0}, {8, 8}, {INT32_MAX, INT32_MAX}, {INT32_MIN, INT32_MAX}};
  const std::vector<uint32_t> before = canvas.pixels();
  for (const auto& [first, count] : beyond) {
    EXPECT_EQ(paintRows(canvas.dc(), bitmap, rects, rows.data(), first, count), KSUCCESS);
    EXPECT_EQ(canvas.pixels(), before);
  }
}

}  // namespace
}  // namespace zavotest
