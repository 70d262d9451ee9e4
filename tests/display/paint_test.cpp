// Painting compared pixel by pixel with a model: every depth, perspective and storage, every kind of rectangle, on
// devices of every depth, from the bitmap or from rows that the caller holds, all of it or through a region.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>

#include "display/paint_model.h"
#include "support/canvas.h"
#include "support/platform_watch.h"

namespace zavotest {
namespace {

// Rows `first` to `first` + `count` - 1, as the bitmap stores them or as run records.
struct HeldRows {
  int first, count;
  bool asRuns;
};

// What is to be painted, and how.
struct Paint {
  PaintRects rects;
  bool throughRegion = false;
  std::optional<HeldRows> held = {};
  DWORD rop = SRCCOPY;
};

// The rows in memory that ends with them, with filler where the bitmap has none.
std::vector<uint8_t> heldBytes(const HeldRows& held, BitmapHandle& bitmap) {
  const std::vector<uint8_t> stored = bytesOf(bitmap);
  const size_t rowBytes = bitmap.BytesPerLine;
  std::vector<uint8_t> rows(static_cast<size_t>(held.count) * rowBytes, 0x5A);
  for (int k = 0; k < held.count; ++k) {
    const int row = held.first + k;
    if (row < 0 || row >= bitmap.Height) continue;
    memcpy(&rows[static_cast<size_t>(k) * rowBytes], &stored[static_cast<size_t>(row) * rowBytes], rowBytes);
  }
  if (!held.asRuns) return rows;
  std::vector<uint8_t> records(static_cast<size_t>(held.count) * (static_cast<size_t>(bitmap.Width) * 2 + 8));
  Zv_CompressRows(records.data(), rows.data(), static_cast<unsigned>(bitmap.Width), static_cast<unsigned>(held.count));
  return records;
}

int run(const Paint& paint, HDC dc, BitmapHandle& bitmap) {
  const RECT* source = PaintRects::pointer(paint.rects.source);
  const RECT* sourceClip = PaintRects::pointer(paint.rects.sourceClip);
  const RECT* clip = PaintRects::pointer(paint.rects.destinationClip);
  if (!paint.held) {
    const auto paintOf = paint.throughRegion ? &Zv_PaintRgnDC : &Zv_PaintDC;
    return paintOf(dc, &bitmap, source, sourceClip, &paint.rects.destination, clip, paint.rop);
  }
  const HeldRows& held = *paint.held;
  const std::vector<uint8_t> given = heldBytes(held, bitmap);
  std::vector<uint8_t> rows = given;
  BitmapHandle record = bitmap;  // which will do alone
  record.StorageHandle = nullptr;
  record.Data = nullptr;
  record.Flags = 0;
  const auto paintOf = paint.throughRegion ? &Zv_PaintRgnDCBuffer : &Zv_PaintDCBuffer;
  // An address even for no rows.
  const int status = paintOf(dc, &record, source, sourceClip, &paint.rects.destination, clip, paint.rop,
                             rows.empty() ? &std::vector<uint8_t>(1)[0] : rows.data(), held.first,
                             held.asRuns ? -held.count : held.count);
  bitmap.Region = record.Region;
  EXPECT_EQ(rows, given);
  return status;
}

// Pixels that the model did not paint.
constexpr uint32_t unpainted = 0xFF000000;

// Paints with the settings of the thread, by colour or through a selected palette, and holds the canvas against the
// model.
void expectPainted(Canvas& canvas, BitmapHandle& bitmap, const Paint& paint, int deviceBits) {
  const AdjustTable table = currentAdjustTable();
  Picture inside(canvas.width(), canvas.height());
  std::fill(inside.pixels.begin(), inside.pixels.end(), 1);
  if (paint.throughRegion) {
    // The region lies on the destination as the whole picture does, whatever part of it is painted.
    TestBitmap mask;
    ASSERT_EQ(Zv_CreateMaskFromBitmapRgn(&bitmap, &mask), KSUCCESS);
    PaintRects whole;
    whole.destination = paint.rects.destination;
    AdjustTable none;
    for (size_t i = 0; i < 256; ++i) none[i] = static_cast<uint8_t>(i);
    std::fill(inside.pixels.begin(), inside.pixels.end(), 0);
    paintModel(inside, mask, whole, 0, 24, none);
  }
  const FakeDevice device(deviceBits);
  int mode = -1;
  Zv_GetDitherFlags(canvas.dc(), &bitmap, nullptr, &mode);
  Picture shown(canvas.width(), canvas.height());
  std::fill(shown.pixels.begin(), shown.pixels.end(), unpainted);
  PaintRects rects = paint.rects;
  if (paint.held) rects.storedRows = RECT{0, paint.held->first, bitmap.Width, paint.held->first + paint.held->count};
  // Held rows are never turned into grey.
  paintModel(shown, bitmap, rects, paint.held && mode >= 3 ? 0 : mode, deviceBits, table);
  for (size_t i = 0; i < shown.pixels.size(); ++i) {
    uint32_t& pixel = shown.pixels[i];
    if (pixel == unpainted || inside.pixels[i] == 0) {
      pixel = untouched;
    } else if (paint.rop == SRCINVERT) {
      pixel ^= untouched;  // which tells what is painted twice, too
    }
  }

  canvas.clear();
  HRGN clip = CreateRectRgn(10, 10, 20, 20), after = CreateRectRgn(0, 0, 0, 0);
  if (paint.throughRegion) SelectClipRgn(canvas.dc(), clip);  // the region takes its place for this one paint
  const bool byIndex = (Zv_GetDisplayMode() & PAINT_INDEX_COLORS) != 0;
  const SelectedPalette palette(canvas.dc(), byIndex ? Zv_CreatePaintPalette(canvas.dc(), &bitmap) : nullptr);
  EXPECT_EQ(run(paint, canvas.dc(), bitmap), KSUCCESS);
  EXPECT_EQ(bitmap.Flags & BMF_LOCKED, 0u);
  EXPECT_TRUE(!paint.throughRegion || (GetClipRgn(canvas.dc(), after) == 1 && EqualRgn(after, clip)));
  SelectClipRgn(canvas.dc(), nullptr);
  DeleteObject(clip);
  DeleteObject(after);
  EXPECT_TRUE(shows(canvas, shown.pixels)) << bitmap.BitsPerPixel << " bits, perspective " << bitmap.ViewPerspective
                                           << ", device of " << deviceBits << " bits, mode " << mode;
}

void giveRandomRegion(BitmapHandle& bitmap, std::mt19937& random) {
  int mode = CombineSet;
  for (unsigned part = random() % 12 + 1; part > 0; --part, mode = CombineXor) {
    RECT rect = {static_cast<LONG>(random() % 30), static_cast<LONG>(random() % 30), 0, 0};
    rect.right = rect.left + static_cast<LONG>(random() % 15) + 1;
    rect.bottom = rect.top + static_cast<LONG>(random() % 15) + 1;
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, mode), KSUCCESS);
  }
}

class PaintDepths : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Depths, PaintDepths, testing::ValuesIn(allDepths));

TEST_P(PaintDepths, ShowsWhatTheModelShows) {
  Canvas canvas(60, 50);
  constexpr int adjustments[][3] = {{0, 0, 100}, {0, 0, 100}, {150, 400, 180}, {-200, -300, 70}};
  constexpr int devices[] = {1, 4, 8, 24};
  constexpr unsigned used =
      PAINT_ORDERED_DITHER | PAINT_INDEX_COLORS | PAINT_CLUSTERED_DOT | PAINT_FIXED_PALETTE | PAINT_CUBE_PALETTE;
  for (unsigned index = 0; index < (GetParam() == 1 ? 1500 : 450); ++index) {
    SCOPED_TRACE(testing::Message() << "case " << index);
    std::mt19937 random(index * 64 + static_cast<unsigned>(GetParam()));
    RandomBitmap bitmap(random, GetParam());
    if (random() % 4 == 0) giveRandomRegion(bitmap, random);
    Paint paint = {randomRects(random, bitmap, canvas.width(), canvas.height())};
    paint.throughRegion = random() % 4 == 0;
    if (random() % 3 == 0) {
      const int first = static_cast<int>(random() % static_cast<unsigned>(bitmap.Height + 6)) - 3;
      const int count = static_cast<int>(random() % static_cast<unsigned>(bitmap.Height + 4));
      paint.held = {first, count, GetParam() == 1 && count != 0 && random() % 2 != 0};
    }
    unsigned flags = (random() & used) | (random() % 4 != 0 ? unsigned{PAINT_DITHER} : 0u);
    const unsigned gray = random() % 4;
    if (gray == 2) flags |= PAINT_GRAY_1BIT;
    if (gray == 3) flags |= PAINT_GRAY_1BIT_ALT;
    // Where the palette is not that of what is painted: held rows, the second grey painter, what cannot be dithered.
    if (GetParam() == 1 && gray >= 2 && (paint.held || gray == 3 || (flags & PAINT_FIXED_PALETTE) != 0)) {
      flags &= ~unsigned{PAINT_INDEX_COLORS};
    }
    const PaintSettings settings(flags);
    const auto& a = adjustments[random() % 4];
    PaintSettings::adjust(a[0], a[1], a[2]);
    if (random() % 4 == 0 && (flags & PAINT_INDEX_COLORS) == 0) paint.rop = SRCINVERT;
    expectPainted(canvas, bitmap, paint, devices[random() % 4]);
    if (HasFailure()) return;
  }
}

// --- What is handed to the graphics interface

class BandWatch {
 public:
  BandWatch()
      : calls_([this](HDC dc, int x, int y, int width, int height, int sx, int sy, int sw, int sh, const void* pixels,
                      const BITMAPINFO* info, UINT usage, DWORD rop) {
          EXPECT_LE(info->bmiHeader.biSizeImage, 0x40000u);
          headers.push_back(info);
          return calls_.original(dc, x, y, width, height, sx, sy, sw, sh, pixels, info, usage, rop);
        }) {}
  std::vector<const void*> headers;

 private:
  Replacement<"StretchDIBits", decltype(&StretchDIBits)> calls_;
};

TEST(PaintBands, StayWithin256KilobytesAndCoverThePictureOnce) {
  Canvas canvas(1000, 700);
  std::mt19937 random(6);
  const struct {
    int width, height, bits, deviceBits;
  } cases[] = {{640, 410, 24, 24}, {500, 333, 1, 24}, {700, 690, 8, 24}, {512, 512, 24, 8},
               {600, 400, 3, 24},  {90, 60, 1, 24},   {333, 700, 5, 4},  {410, 640, 32, 24}};
  const PaintSettings settings(PAINT_DITHER | PAINT_ORDERED_DITHER);
  for (const auto& c : cases) {
    for (const int perspective : {1, 2, 4, 8}) {
      SCOPED_TRACE(testing::Message() << c.width << " x " << c.height);
      TestBitmap bitmap(c.width, c.height, c.bits);
      fillWithNoise(bitmap, random);
      bitmap.ViewPerspective = perspective;
      Paint paint;
      paint.rects.destination = {5, 3, 990, 695};
      paint.rop = SRCINVERT;
      const BandWatch watch;
      expectPainted(canvas, bitmap, paint, c.deviceBits);
      if (HasFailure()) return;
    }
  }
}

// So that the colours in use while printing are not disturbed by painting elsewhere. A device that refuses bands is not
// reported.
TEST(PaintBands, ARasterPrinterHasAHeaderOfItsOwn) {
  const PaintSettings settings;
  Canvas canvas(8, 8);
  TestBitmap bitmap(8, 8, 8);
  const RECT all = {0, 0, 8, 8};
  const Refusal refusal("StretchDIBits", 1, Repeat::fromThenOn);
  const BandWatch watch;
  for (const int technology : {DT_RASDISPLAY, DT_RASPRINTER, DT_RASDISPLAY}) {
    const FakeDevice device(24, 1, technology);
    ASSERT_EQ(Zv_PaintDC(canvas.dc(), &bitmap, nullptr, nullptr, &all, nullptr, SRCCOPY), KSUCCESS);
  }
  EXPECT_STREQ(refusal.refused(), "StretchDIBits");
  ASSERT_EQ(watch.headers.size(), 3u);
  EXPECT_NE(watch.headers[0], watch.headers[1]);
  EXPECT_EQ(watch.headers[0], watch.headers[2]);
}

// --- Arguments

TEST(Paint, RefusesMissingArguments) {
  const Canvas canvas(8, 8);
  const RECT all = {0, 0, 8, 8};
  TestBitmap bitmap(8, 8, 8), none;
  const std::vector<uint8_t> rows(64);
  EXPECT_EQ(Zv_PaintDC(canvas.dc(), &none, nullptr, nullptr, &all, nullptr, SRCCOPY), KERR_BAD_BITMAP);
  for (const auto paintOf : {&Zv_PaintDC, &Zv_PaintRgnDC}) {
    const auto paint = [&](HDC dc, BitmapHandle* handle, const RECT* destination) {
      return paintOf(dc, handle, nullptr, nullptr, destination, nullptr, SRCCOPY);
    };
    EXPECT_EQ(paint(nullptr, nullptr, nullptr), KERR_BAD_BITMAP);
    EXPECT_EQ(paint(nullptr, &bitmap, &all), KERR_BAD_PARAMETER);
    EXPECT_EQ(paint(canvas.dc(), &bitmap, nullptr), KERR_BAD_PARAMETER);
  }
  for (const auto paintOf : {&Zv_PaintDCBuffer, &Zv_PaintRgnDCBuffer}) {
    const auto paint = [&](HDC dc, BitmapHandle* handle, const RECT* destination, const uint8_t* from, int count) {
      return paintOf(dc, handle, nullptr, nullptr, destination, nullptr, SRCCOPY, from, 0, count);
    };
    EXPECT_EQ(paint(nullptr, nullptr, nullptr, nullptr, 8), KERR_BAD_BITMAP);
    EXPECT_EQ(paint(nullptr, &bitmap, &all, nullptr, 8), KERR_BAD_BITMAP);
    EXPECT_EQ(paint(nullptr, &bitmap, &all, rows.data(), 8), KERR_BAD_PARAMETER);
    EXPECT_EQ(paint(canvas.dc(), &bitmap, nullptr, rows.data(), 8), KERR_BAD_PARAMETER);
    EXPECT_EQ(paint(canvas.dc(), &bitmap, &all, rows.data(), -8), KERR_BAD_PARAMETER) << "run records of 8 bits";
  }
  BitmapHandle record;
  Zv_InitBitmap(&record, -5, 8, 1);
  std::vector<uint8_t> records(8 * 136);
  Zv_CompressRows(records.data(), rows.data(), 64, 8);
  const auto paintRecord = [&](int count) {
    return Zv_PaintDCBuffer(canvas.dc(), &record, nullptr, nullptr, &all, nullptr, SRCCOPY, records.data(), 0, count);
  };
  EXPECT_EQ(paintRecord(-8), KSUCCESS) << "a negative width";
  record.BitsPerPixel = 9;
  EXPECT_EQ(paintRecord(8), KERR_BAD_PARAMETER);
}

// Coordinates whose differences or products do not fit 32 bits.
TEST(Paint, SurvivesHugeRectanglesAndRowNumbers) {
  const PaintSettings settings;
  Canvas canvas(40, 30);
  std::mt19937 random(8);
  TestBitmap bitmap(700, 5, 8);
  fillWithNoise(bitmap, random);
  for (const LONG scale : {1000, 100000, 3000000}) {
    SCOPED_TRACE(scale);
    Paint paint;
    paint.rects.destination = {-350 * scale, -2 * scale, 350 * scale, 3 * scale};
    paint.rects.destinationClip = RECT{0, 0, 40, 30};
    expectPainted(canvas, bitmap, paint, 24);
  }
  canvas.clear();
  const RECT all = {0, 0, 40, 30}, endless = {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
  EXPECT_EQ(Zv_PaintDC(canvas.dc(), &bitmap, &endless, nullptr, &all, nullptr, SRCCOPY), KSUCCESS);
  EXPECT_EQ(Zv_PaintDC(canvas.dc(), &bitmap, nullptr, nullptr, &endless, &all, SRCCOPY), KSUCCESS);
  const std::vector<uint8_t> rows(64);
  for (const auto& [first, count] : {std::pair{INT32_MAX, INT32_MAX}, std::pair{INT32_MIN, INT32_MAX}}) {
    EXPECT_EQ(
        Zv_PaintDCBuffer(canvas.dc(), &bitmap, nullptr, nullptr, &all, nullptr, SRCCOPY, rows.data(), first, count),
        KSUCCESS);
  }
  EXPECT_EQ(canvas.pixels(), std::vector<uint32_t>(40 * 30, untouched));
}

}  // namespace
}  // namespace zavotest
