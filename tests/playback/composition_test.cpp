// What the target shows, against a slow model and against pictures written out.
#include <zavo.h>

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "playback/film.h"
#include "playback/film_model.h"
#include "support/import_patch.h"
#include "support/refusals.h"

namespace zavotest {
namespace {

using Random = std::mt19937;

int between(Random& random, int low, int high) {
  return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
}

bool oneIn(Random& random, unsigned n) {
  return random() % n == 0;
}

template <typename T, size_t count>
T oneOf(Random& random, const T (&values)[count]) {
  return values[random() % count];
}

constexpr int perspectives[] = {VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_90, VIEW_TURNED_270, 0};

// Noise of few colours, so that a transparent colour matters.
void fillWithFewColors(BitmapHandle& bitmap, Random& random) {
  fillWithNoise(bitmap, random);
  if (bitmap.BitsPerPixel < 8) return;
  const auto pixelBytes = static_cast<unsigned>(bitmap.BitsPerPixel) / 8;
  const uint32_t colors[] = {random(), random(), random()};
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  for (unsigned y = 0; y < static_cast<unsigned>(bitmap.Height); ++y) {
    for (size_t at = 0; at + pixelBytes <= row.size(); at += pixelBytes) {
      const uint32_t color = oneOf(random, colors);
      memcpy(&row[at], &color, pixelBytes);
    }
    const int wasLocked = Zv_LockBitmap(&bitmap);
    Zv_PutBitmapRow(&bitmap, row.data(), y, bitmap.BytesPerLine);
    Zv_UnlockBitmap(&bitmap, wasLocked);
  }
}

BitmapHandle randomBitmap(Random& random, int width, int height, int bits) {
  const int order = oneIn(random, 2) ? ORDER_BLUE_FIRST : ORDER_RED_FIRST;
  const int memoryType = oneIn(random, 2) ? int{ALLOC_MEMORY} : ALLOC_MEMORY | ALLOC_RUNLENGTH;
  BitmapHandle bitmap = makeFrame(width, height, bits, memoryType, order);
  bitmap.ViewPerspective = oneOf(random, perspectives);
  if (bits <= 8) giveRandomPalette(bitmap, random);
  fillWithFewColors(bitmap, random);
  return bitmap;
}

void giveRandomRegion(BitmapHandle& bitmap, Random& random) {
  const int left = between(random, -3, bitmap.Width - 1);
  const int top = between(random, -3, bitmap.Height - 1);
  const RECT box = {left, top, left + between(random, 1, 30), top + between(random, 1, 30)};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &box, oneIn(random, 3) ? CombineSetNot : CombineSet), KSUCCESS);
}

COLORREF randomTransparentColor(BitmapHandle& frame, Random& random) {
  if (frame.BitsPerPixel <= 8 && oneIn(random, 2)) return 0x01000000 | (random() & 0xFF);
  const uint32_t pixel = pictureOf(frame).at(frame.Width / 2, frame.Height / 2);
  if (frame.BitsPerPixel <= 8) {
    const PALETTEENTRY color = colorsOf(frame)[pixel];
    return RGB(color.peRed, color.peGreen, color.peBlue);
  }
  return oneIn(random, 5) ? random() & 0xFFFFFF : Zv_GetPixelColor(&frame, frame.Height / 2, frame.Width / 2);
}

// A frame somewhere on the target, beside it, or over its edge; every second one in the target's own form.
BitmapHandle randomFrame(Random& random, const BitmapHandle& target) {
  const bool likeTarget = oneIn(random, 2);
  const int bits = likeTarget ? target.BitsPerPixel : oneOf(random, allDepths);
  BitmapHandle frame = randomBitmap(random, between(random, 1, 40), between(random, 1, 30), bits);
  if (likeTarget && bits <= 8) {
    DeleteObject(frame.Palette);
    frame.Palette = Zv_DupPalette(target.Palette);
    const auto other = RGBQUAD{static_cast<BYTE>(random()), static_cast<BYTE>(random()), 0, 0};
    if (oneIn(random, 3)) Zv_SetPaletteEntries(frame.Palette, frame.ColorCount - 1, 1, &other);
  }
  if (likeTarget && bits > 8) frame.ColorOrder = target.ColorOrder;
  frame.PlaybackTransparentColor = randomTransparentColor(frame, random);
  if (oneIn(random, 2)) frame.Flags |= BMF_PLAYBACK_TRANSPARENT;
  if (oneIn(random, 3)) giveRandomRegion(frame, random);
  if (oneIn(random, 6)) frame.Flags |= BMF_PLAYBACK_WAITUSER;
  frame.PlaybackLeft = between(random, -45, 45);
  frame.PlaybackTop = between(random, -35, 35);
  frame.PlaybackDelay = oneIn(random, 2) ? random() % 200 : 0;
  frame.PlaybackDisposal = random() % 5;
  return frame;
}

// Plays a random film, two rounds and more, beside its model.
void playBesideModel(unsigned number) {
  Random random(number);
  TestBitmap target;
  static_cast<BitmapHandle&>(target) =
      randomBitmap(random, between(random, 1, 50), between(random, 1, 40), oneOf(random, allDepths));
  target.PlaybackBackground = target.BitsPerPixel <= 8 ? 0x01000000 | (random() & 0x7F) : random() & 0xFFFFFF;
  if (oneIn(random, 4)) giveRandomRegion(target, random);
  if (oneIn(random, 8)) target.PlaybackLeft = between(random, -20, 20);

  Film film(target);
  FilmModel model(target);
  unsigned frames = random() % 6;
  for (unsigned i = 0; i < frames; ++i) {
    BitmapHandle frame = randomFrame(random, target);
    model.add(modelOf(frame, target));
    ASSERT_EQ(Zv_AppendPlayback(film.get(), &frame), KSUCCESS);
    ASSERT_EQ(Zv_ValidatePlaybackLines(film.get(), 0, frame.Height), KSUCCESS);
  }

  uint32_t ticks = 0xFFFFFF00;
  const Replacement<"GetTickCount", decltype(&GetTickCount)> clock([&] { return ticks; });
  for (int steps = 0; steps < 70 && frames != 0; ++steps) {
    SCOPED_TRACE(testing::Message() << "step " << steps << ", from state " << model.state << " of frame "
                                    << model.index);
    ticks += random() % 100;
    model.step(ticks);
    ASSERT_EQ(film.step(), model.state);
    ASSERT_EQ(film.index(), model.index);
    ASSERT_EQ(seenPicture(target), model.seen);
    const bool clear = oneIn(random, 4);
    ASSERT_EQ(sides(seenRect(target, film.update(clear))), sides(model.update));
    if (clear) model.update = {};
    if (oneIn(random, 6)) {
      model.cancelWait();
      ASSERT_EQ(Zv_CancelPlaybackWait(film.get()), KSUCCESS);
    }
  }
}

TEST(Composition, LikeASlowModelStepByStep) {
  for (unsigned number = 1; number <= 150; ++number) {
    SCOPED_TRACE(testing::Message() << "film " << number);
    playBesideModel(number);
    if (HasFatalFailure() || HasNonfatalFailure()) return;
  }
}

// --- Pictures written out

// A frame of rows of digits, each an index of an 8-bit frame with the fixed palette.
BitmapHandle drawnFrame(std::initializer_list<const char*> rows, int left, int top) {
  const auto width = static_cast<int>(strlen(*rows.begin()));
  BitmapHandle frame = makeFrame(width, static_cast<int>(rows.size()), 8);
  int y = 0;
  for (const char* row : rows) {
    for (int x = 0; x < width; ++x) Zv_PutPixelColor(&frame, y, x, 0x01000000u + static_cast<unsigned>(row[x] - '0'));
    ++y;
  }
  frame.PlaybackLeft = left;
  frame.PlaybackTop = top;
  return frame;
}

std::vector<std::string> drawn(BitmapHandle& target) {
  const Picture picture = seenPicture(target);
  std::vector<std::string> rows(static_cast<size_t>(picture.height));
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) rows[static_cast<size_t>(y)] += static_cast<char>('0' + picture.at(x, y));
  }
  return rows;
}

using Rows = std::vector<std::string>;
using Sides = std::array<long, 4>;

TEST(Composition, EveryDisposalOnATargetStoredAnyWay) {
  struct {
    int perspective;
    Sides whole, corner, middle;  // stored: 6 x 4 seen, the frames at 4, -1 and at 1, 1
  } const cases[] = {
      {VIEW_UPRIGHT, {0, 0, 6, 4}, {4, 0, 6, 1}, {1, 1, 4, 3}},
      {VIEW_BOTTOM_UP, {0, 0, 6, 4}, {4, 3, 6, 4}, {1, 1, 4, 3}},
      {VIEW_TURNED_90, {0, 0, 4, 6}, {0, 0, 1, 2}, {1, 2, 3, 5}},
      {VIEW_TURNED_270, {0, 0, 4, 6}, {3, 4, 4, 6}, {1, 1, 3, 4}},
  };
  for (const auto& stored : cases) {
    SCOPED_TRACE(testing::Message() << "perspective " << stored.perspective);
    const bool turned = stored.perspective == VIEW_TURNED_90 || stored.perspective == VIEW_TURNED_270;
    TestBitmap target(turned ? 4 : 6, turned ? 6 : 4, 8);
    target.ViewPerspective = stored.perspective;
    target.PlaybackBackground = 0x01000008;
    BitmapHandle corner = drawnFrame({"111", "234"}, 4, -1);
    corner.PlaybackDisposal = 3;
    BitmapHandle middle = drawnFrame({"505", "655"}, 1, 1);
    middle.PlaybackDisposal = 2;
    middle.Flags |= BMF_PLAYBACK_TRANSPARENT;
    middle.PlaybackTransparentColor = 0x01000005;
    const Film film(target, {corner, middle, drawnFrame({"7"}, 5, 3)});

    EXPECT_EQ(sides(film.update()), (Sides{0, 0, 0, 0}));
    ASSERT_TRUE(film.stepTo(PB_RENDER));
    EXPECT_EQ(drawn(target), (Rows{"888888", "888888", "888888", "888888"}));
    EXPECT_EQ(sides(film.update(true)), stored.whole);
    ASSERT_EQ(film.step(), unsigned{PB_POSTRENDER});
    EXPECT_EQ(drawn(target), (Rows{"888823", "888888", "888888", "888888"}));
    EXPECT_EQ(sides(film.update()), stored.corner);
    EXPECT_EQ(Zv_ClearPlaybackUpdateRect(film.get()), KSUCCESS);
    EXPECT_EQ(sides(film.update()), (Sides{0, 0, 0, 0}));
    const Ledger ledger;
    ASSERT_TRUE(film.stepTo(PB_RENDER));
    EXPECT_FALSE(ledger.balanced()) << "what was kept is not needed any more";
    EXPECT_EQ(drawn(target), (Rows{"888888", "888888", "888888", "888888"})) << "what was under it is back";
    EXPECT_EQ(sides(film.update(true)), stored.corner);
    ASSERT_EQ(film.step(), unsigned{PB_POSTRENDER});
    EXPECT_EQ(drawn(target), (Rows{"888888", "880888", "868888", "888888"}));
    EXPECT_EQ(sides(film.update(true)), stored.middle);
    ASSERT_TRUE(film.stepTo(PB_RENDER));
    EXPECT_EQ(drawn(target), (Rows{"888888", "888888", "888888", "888888"})) << "background where it was";
    EXPECT_EQ(sides(film.update(true)), stored.middle);
    ASSERT_TRUE(film.stepTo(PB_END));
    EXPECT_EQ(drawn(target), (Rows{"888888", "888888", "888888", "888887"})) << "the last frame stays";
  }
}

TEST(Composition, TransparentColoursByIndexAndByColour) {
  const RGBQUAD* fixed = Zv_IntGetFixedPalette(8);
  const COLORREF colorOfFive = RGB(fixed[5].rgbRed, fixed[5].rgbGreen, fixed[5].rgbBlue);
  struct {
    const char* what;
    COLORREF color;
    bool inForce;
    const char* result;
  } const cases[] = {
      {"an index", 0x01000005, true, "38437"},
      {"the low bits of an index", 0x01ABCD05, true, "38437"},
      {"a colour of the palette", colorOfFive, true, "38437"},
      {"a colour that is not in the palette", 0x00123456, true, "35437"},
      {"an index without a pixel", 0x01000009, true, "35437"},
      {"a colour that is not in force", 0x01000005, false, "35437"},
  };
  for (const auto& transparent : cases) {
    TestBitmap target(5, 1, 8);
    target.PlaybackBackground = 0x01000008;
    BitmapHandle frame = drawnFrame({"35437"}, 0, 0);
    frame.PlaybackTransparentColor = transparent.color;
    if (transparent.inForce) frame.Flags |= BMF_PLAYBACK_TRANSPARENT;
    const Film film(target, {frame});
    ASSERT_TRUE(film.stepTo(PB_POSTRENDER));
    EXPECT_EQ(drawn(target), Rows{transparent.result}) << transparent.what;
  }
}

TEST(Composition, TheFramesOwnRegionIsWhatItWasAfterwards) {
  TestBitmap target(5, 1, 8);
  ASSERT_EQ(Zv_ClearBitmap(&target), KSUCCESS);
  BitmapHandle frame = drawnFrame({"35537"}, 0, 0);
  frame.PlaybackTransparentColor = 0x01000005;
  frame.PlaybackDisposal = 2;
  frame.Flags |= BMF_PLAYBACK_TRANSPARENT;
  const RECT part = {0, 0, 4, 1};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&frame, nullptr, &part, CombineSet), KSUCCESS);
  ASSERT_EQ(Zv_SetBitmapRgnRect(&target, nullptr, &part, CombineSet), KSUCCESS);
  const Snapshot frameBefore(frame);
  const RegionExtent targetBefore = regionExtentOf(target);
  const Film film(target, {frame});
  ASSERT_TRUE(film.stepTo(PB_POSTRENDER));
  EXPECT_EQ(drawn(target), Rows{"30030"});
  EXPECT_EQ(sides(film.update()), (Sides{0, 0, 4, 1}));
  ASSERT_TRUE(film.stepTo(PB_END));
  EXPECT_TRUE(frameBefore.unchanged());
  EXPECT_TRUE(regionExtentOf(target) == targetBefore);
}

TEST(Composition, ColoursSurviveEveryDepth) {
  // Colours that every form has, drawn on every target from every kind of frame, must be seen as they are.
  const COLORREF colors[] = {RGB(0, 0, 0), RGB(255, 255, 255)};
  for (const int targetBits : allDepths) {
    for (const int frameBits : allDepths) {
      for (const int order : {ORDER_BLUE_FIRST, ORDER_RED_FIRST}) {
        SCOPED_TRACE(testing::Message() << frameBits << " bits on " << targetBits << ", order " << order);
        TestBitmap target(3, 2, targetBits);
        BitmapHandle frame = makeFrame(2, 1, frameBits, ALLOC_MEMORY, order);
        if (frameBits <= 8) {  // the colours at the ends of the palette, the other way round than on the target
          const auto last = frame.ColorCount - 1;
          const RGBQUAD black = {0, 0, 0, 0};
          const RGBQUAD white = {255, 255, 255, 0};
          ASSERT_EQ(Zv_SetPaletteEntries(frame.Palette, 0, 1, &white), 1u);
          ASSERT_EQ(Zv_SetPaletteEntries(frame.Palette, last, 1, &black), 1u);
        }
        for (int x = 0; x < 2; ++x) ASSERT_EQ(Zv_PutPixelColor(&frame, 0, x, colors[x]), KSUCCESS);
        frame.PlaybackLeft = 1;
        frame.PlaybackTop = 1;
        const Film film(target, {frame});
        ASSERT_TRUE(film.stepTo(PB_POSTRENDER));
        TestBitmap shown;
        ASSERT_EQ(Zv_ColorResBitmap(&target, &shown, 24, COLORRES_BLUE_FIRST, nullptr, 0), KSUCCESS);
        for (int x = 0; x < 2; ++x) EXPECT_EQ(Zv_GetPixelColor(&shown, 1, 1 + x), colors[x]) << x;
      }
    }
  }
}

TEST(Composition, FramesFarAwayChangeNothing) {
  constexpr int utmost = 0x7FFFFFFF;
  const POINT places[] = {{utmost, 0}, {0, utmost}, {-utmost - 1, 0}, {0, -utmost - 1}, {utmost - 2, utmost - 2},
                          {6, 0},      {0, 4},      {-3, 0}};
  for (const int perspective : perspectives) {
    for (const unsigned disposal : {0, 2, 3}) {
      for (const POINT place : places) {
        TestBitmap target(6, 4, 8);
        target.ViewPerspective = perspective;
        target.PlaybackBackground = 0x01000008;
        BitmapHandle frame = drawnFrame({"777", "777", "777", "777"}, place.x, place.y);
        if (perspective == VIEW_TURNED_90 || perspective == VIEW_TURNED_270) {
          if (place.x == 6) frame.PlaybackLeft = 4;  // seen, it is 4 wide and 6 high
          if (place.y == 4) frame.PlaybackTop = 6;
        }
        frame.PlaybackDisposal = disposal;
        const Film film(target, {frame});
        ASSERT_TRUE(film.stepTo(PB_RENDER));
        target.PlaybackBackground = 0x01000001;
        EXPECT_EQ(Zv_ClearPlaybackUpdateRect(film.get()), KSUCCESS);
        ASSERT_TRUE(film.stepTo(PB_END));
        EXPECT_EQ(sides(film.update()), (Sides{0, 0, 0, 0}));
        for (const uint32_t pixel : pictureOf(target).pixels) ASSERT_EQ(pixel, 8u) << place.x << ", " << place.y;
      }
    }
  }
}

TEST(Composition, WhatCannotBeDrawnIsPassedOver) {
  TestBitmap target(6, 1, 8);
  const Film film(target, {BitmapHandle{}, drawnFrame({"123"}, 1, 0)});
  ASSERT_TRUE(film.stepTo(PB_RENDER));
  EXPECT_EQ(film.step(), unsigned{PB_POSTRENDER});
  EXPECT_EQ(drawn(target), Rows{"000000"});
  ASSERT_TRUE(film.stepTo(PB_RENDER));
  ASSERT_TRUE(film.stepTo(PB_END));
  EXPECT_EQ(drawn(target), Rows{"012300"});
}

// --- Refusals

TEST(Refusals, AppendingAFrame) {
  refuseEachResource({.leastPoints = 2}, [](RefusalRound& round) {
    TestBitmap target(4, 4, 8);
    const Film film(target, {makeFrame(2, 2, 8)});
    EXPECT_TRUE(film.stepTo(PB_END));
    BitmapHandle frame = makeFrame(2, 2, 8);
    if (round.run([&] { return Zv_AppendPlayback(film.get(), &frame); }) == KSUCCESS) return;
    EXPECT_EQ(film.state(), unsigned{PB_END});
    EXPECT_EQ(Zv_SetPlaybackIndex(film.get(), 2), KERR_BAD_PARAMETER) << "the list is as long as before";
    Zv_FreeBitmap(&frame);
  });
}

// A step that cannot have what it needs goes on all the same; what it could not draw it leaves alone, and no region is
// lost.
TEST(Refusals, DrawingAndDisposing) {
  std::vector<std::string> any;
  for (const char* function :
       {"GlobalAlloc", "GlobalReAlloc", "CreateFileMappingA", "MapViewOfFile", "CreatePalette"}) {
    any.push_back(function);
  }
  for (const unsigned disposal : {2, 3}) {
    for (const unsigned stage : {PB_RENDER, PB_DISPOSE}) {
      SCOPED_TRACE(testing::Message() << "disposal " << disposal << ", state " << stage);
      refuseEachResource({.survived = any, .leastPoints = 3}, [&](RefusalRound& round) {
        TestBitmap target(20, 10, 24);
        target.ViewPerspective = VIEW_BOTTOM_UP;
        target.PlaybackBackground = RGB(9, 9, 9);
        BitmapHandle frame = makeFrame(8, 6, 8);
        frame.Flags |= BMF_PLAYBACK_TRANSPARENT;
        frame.PlaybackDisposal = disposal;
        const RECT part = {1, 1, 9, 5};
        const RECT seenPart = {1, 4, 9, 9};
        ASSERT_EQ(Zv_FillBitmap(&frame, 0x010000FF), KSUCCESS);
        ASSERT_EQ(Zv_SetBitmapRgnRect(&frame, nullptr, &part, CombineSet), KSUCCESS);
        ASSERT_EQ(Zv_SetBitmapRgnRect(&target, nullptr, &seenPart, CombineSet), KSUCCESS);
        const RegionExtent frameRegion = regionExtentOf(frame);
        const RegionExtent targetRegion = regionExtentOf(target);
        const Film film(target, {frame});
        ASSERT_TRUE(film.stepTo(stage));
        const Picture before = pictureOf(target);
        unsigned state = 0;
        round.run([&] { return Zv_ProcessPlayback(film.get(), &state); });
        EXPECT_EQ(state, stage == PB_RENDER ? unsigned{PB_POSTRENDER} : unsigned{PB_NEXT});
        EXPECT_TRUE(regionExtentOf(frame) == frameRegion);
        EXPECT_TRUE(regionExtentOf(target) == targetRegion);
        const Picture after = pictureOf(target);
        if (round.refused() == nullptr) {
          EXPECT_NE(after, before) << "nothing refused, and nothing done";
        }
        const uint32_t wanted = stage == PB_RENDER ? 0xFFFFFF : 0x090909;
        for (size_t i = 0; i < after.pixels.size(); ++i) {
          ASSERT_TRUE(after.pixels[i] == before.pixels[i] || after.pixels[i] == wanted) << after.pixels[i];
        }
      });
    }
  }
}

}  // namespace
}  // namespace zavotest
