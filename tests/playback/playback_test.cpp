// Random films beside a slow model, what frames and lists become, bad arguments, and steps that cannot have what they
// need.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>
#include <random>

#include "playback/film_model.h"
#include "support/import_patch.h"
#include "support/refusals.h"
#include "support/seen_picture.h"

namespace zavotest {
namespace {

using Random = std::mt19937;

int between(Random& random, int low, int high) {
  return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
}

bool oneIn(Random& random, unsigned n) {
  return random() % n == 0;
}

// A frame for a list, which frees it: of zeros, upright, at the top left of the target.
BitmapHandle makeFrame(int width, int height, int bits) {
  BitmapHandle frame{};
  EXPECT_EQ(Zv_CreateBitmap(&frame, ALLOC_MEMORY, width, height, bits, 0, nullptr, VIEW_UPRIGHT), KSUCCESS);
  return frame;
}

// A playback with its list of frames, both given back at the end.
class Film {
 public:
  explicit Film(BitmapHandle& target) {
    EXPECT_EQ(Zv_CreateBitmapList(&list), KSUCCESS);
    EXPECT_EQ(Zv_CreatePlayback(&playback, &target, list), KSUCCESS);
  }
  Film(const Film&) = delete;
  Film& operator=(const Film&) = delete;
  ~Film() {
    BitmapListHandle back = nullptr;
    EXPECT_EQ(Zv_DestroyPlayback(playback, &back), KSUCCESS);
    EXPECT_EQ(back, list);
    EXPECT_EQ(Zv_DestroyBitmapList(list), KSUCCESS);
  }
  void add(const BitmapHandle& frame) const { EXPECT_EQ(Zv_InsertBitmapListItem(list, ~0u, &frame), KSUCCESS); }
  // Steps until `wanted` is reached.
  void stepTo(unsigned wanted) const {
    unsigned state = ~0u;
    for (int steps = 0; steps < 100 && state != wanted; ++steps)
      EXPECT_EQ(Zv_ProcessPlayback(playback, &state), KSUCCESS);
    EXPECT_EQ(state, wanted);
  }

  PlaybackHandle playback = nullptr;
  BitmapListHandle list = nullptr;
};

// --- Random films

// Any form, in few colours, so that a transparent colour matters, and often with a region.
BitmapHandle randomBitmap(Random& random, int width, int height, int bits) {
  constexpr int perspectives[] = {VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_90, VIEW_TURNED_270, 0};
  BitmapHandle bitmap{};
  const int memoryType = oneIn(random, 2) ? int{ALLOC_MEMORY} : ALLOC_MEMORY | ALLOC_RUNLENGTH;
  const int order = oneIn(random, 2) ? ORDER_BLUE_FIRST : ORDER_RED_FIRST;
  EXPECT_EQ(Zv_CreateBitmap(&bitmap, memoryType, width, height, bits, order, nullptr, perspectives[random() % 5]),
            KSUCCESS);
  if (bits <= 8) giveRandomPalette(bitmap, random);
  const uint8_t bytes[] = {static_cast<uint8_t>(random()), static_cast<uint8_t>(random())};
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (unsigned y = 0; y < static_cast<unsigned>(height); ++y) {
    for (auto& byte : row) byte = bytes[random() % 2];
    Zv_PutBitmapRow(&bitmap, row.data(), y, bitmap.BytesPerLine);
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
  if (oneIn(random, 3)) {
    const int left = between(random, -3, width - 1);
    const int top = between(random, -3, height - 1);
    const RECT box = {left, top, left + between(random, 1, 20), top + between(random, 1, 20)};
    EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &box, oneIn(random, 3) ? CombineSetNot : CombineSet), KSUCCESS);
  }
  return bitmap;
}

// A frame somewhere on the target, beside it, far off, or over its edge; every second one in the target's own form.
BitmapHandle randomFrame(Random& random, const BitmapHandle& target) {
  const bool likeTarget = oneIn(random, 2);
  const int bits = likeTarget ? target.BitsPerPixel : allDepths[random() % std::size(allDepths)];
  BitmapHandle frame = randomBitmap(random, between(random, 1, 25), between(random, 1, 20), bits);
  if (likeTarget && bits <= 8) {
    DeleteObject(frame.Palette);
    frame.Palette = Zv_DupPalette(target.Palette);
    const RGBQUAD other = {static_cast<BYTE>(random()), static_cast<BYTE>(random()), 0, 0};
    if (oneIn(random, 3)) Zv_SetPaletteEntries(frame.Palette, frame.ColorCount - 1, 1, &other);
  }
  if (likeTarget && bits > 8) frame.ColorOrder = target.ColorOrder;
  const COLORREF color = Zv_GetPixelColor(&frame, frame.Height / 2, frame.Width / 2);
  frame.PlaybackTransparentColor = oneIn(random, 5) ? random() & 0xFFFFFF : color;
  if (bits <= 8 && oneIn(random, 2)) {
    frame.PlaybackTransparentColor = 0x01000000 | (random() & 0xFF00) | pictureOf(frame).at(0, 0);
  }
  if (oneIn(random, 2)) frame.Flags |= BMF_PLAYBACK_TRANSPARENT;
  if (oneIn(random, 6)) frame.Flags |= BMF_PLAYBACK_WAITUSER;
  const int utmost = oneIn(random, 2) ? INT_MAX - between(random, 0, 5) : INT_MIN;
  frame.PlaybackLeft = oneIn(random, 20) ? utmost : between(random, -28, 32);
  frame.PlaybackTop = oneIn(random, 20) ? utmost : between(random, -23, 27);
  frame.PlaybackDelay = oneIn(random, 2) ? random() % 200 : 0;
  frame.PlaybackDisposal = random() % 5;
  return frame;
}

void expectLikeModel(const Film& film, const FilmModel& model, BitmapHandle& target, uint32_t ticks) {
  unsigned state = ~0u;
  unsigned delay = ~0u;
  int index = -99;
  RECT update = {-1, -1, -1, -1};
  EXPECT_EQ(Zv_GetPlaybackState(film.playback, &state), KSUCCESS);
  EXPECT_EQ(Zv_GetPlaybackIndex(film.playback, &index), KSUCCESS);
  EXPECT_EQ(Zv_GetPlaybackDelay(film.playback, &delay), KSUCCESS);
  EXPECT_EQ(Zv_GetPlaybackUpdateRect(film.playback, &update, 0), KSUCCESS);
  if (!IsRectEmpty(&update)) Zv_RectFromBitmap(&target, VIEW_UPRIGHT, &update);
  ASSERT_EQ(state, model.state);
  ASSERT_EQ(index, model.index);
  ASSERT_EQ(delay, model.delay(ticks));
  ASSERT_TRUE(EqualRect(&update, &model.update));
  ASSERT_EQ(seenValuesOf(target), model.seen);
}

// Two rounds and more of a random film: steps, cancelled waits, seeking, frames that arrive row by row.
void playBesideModel(unsigned number) {
  Random random(number);
  TestBitmap target;
  static_cast<BitmapHandle&>(target) =
      randomBitmap(random, between(random, 1, 30), between(random, 1, 25), allDepths[random() % std::size(allDepths)]);
  target.PlaybackBackground = target.BitsPerPixel <= 8 ? 0x01000000 | (random() & 0x7F) : random() & 0xFFFFFF;
  if (oneIn(random, 8)) target.PlaybackLeft = between(random, -20, 20);
  const RegionExtent region = regionExtentOf(target);
  // Across the wrap of the system's counter.
  uint32_t ticks = 0xFFFFFF00;
  const Replacement<"GetTickCount", decltype(&GetTickCount)> clock([&] { return ticks; });
  const Film film(target);
  FilmModel model(target);
  const auto append = [&] {
    BitmapHandle frame = randomFrame(random, target);
    model.append(frame);
    EXPECT_EQ(Zv_AppendPlayback(film.playback, &frame), KSUCCESS);
  };
  const auto validate = [&](int first, int count) {
    model.validate(first, count);
    EXPECT_EQ(Zv_ValidatePlaybackLines(film.playback, first, count), KSUCCESS);
  };
  for (unsigned frames = random() % 6; frames > 0; --frames) append();
  if (oneIn(random, 2)) validate(-5, INT_MAX);
  for (int action = 0; action < 80; ++action) {
    SCOPED_TRACE(testing::Message() << "action " << action << ", from state " << model.state << " of frame "
                                    << model.index);
    ticks += random() % 100;
    if (oneIn(random, 6)) {
      model.cancelWait();
      EXPECT_EQ(Zv_CancelPlaybackWait(film.playback), KSUCCESS);
    } else if (oneIn(random, 15)) {
      const int index = between(random, -1, model.frameCount());
      model.seek(index, ticks);
      EXPECT_EQ(Zv_SetPlaybackIndex(film.playback, index), KSUCCESS);
    } else if (oneIn(random, 20) && model.frameCount() < 8) {
      append();
    } else if (oneIn(random, 6)) {
      validate(between(random, -5, 25), oneIn(random, 5) ? INT_MAX : between(random, -2, 20));
    } else {
      model.step(ticks);
      EXPECT_EQ(Zv_ProcessPlayback(film.playback, nullptr), KSUCCESS) << "no place for the state given";
    }
    expectLikeModel(film, model, target, ticks);
    for (const int outside : {-2, model.frameCount() + 1}) {
      EXPECT_EQ(Zv_SetPlaybackIndex(film.playback, outside), KERR_BAD_PARAMETER);
    }
    if (testing::Test::HasFailure()) return;
    if (!oneIn(random, 4)) continue;
    model.update = {};
    EXPECT_EQ(Zv_GetPlaybackUpdateRect(film.playback, nullptr, 1), KSUCCESS);
  }
  EXPECT_TRUE(regionExtentOf(target) == region);
}

TEST(Playback, GoesAsASlowModelDoes) {
  for (unsigned number = 1; number <= 150 && !HasFailure(); ++number) {
    SCOPED_TRACE(testing::Message() << "film " << number);
    playBesideModel(number);
  }
}

// --- Frames and lists

TEST(Playback, PassesOverWhatCannotBeDrawn) {
  TestBitmap target(6, 1, 8);
  const Film film(target);
  film.add(BitmapHandle{});
  BitmapHandle frame = makeFrame(3, 1, 8);
  ASSERT_EQ(Zv_FillBitmap(&frame, 0x01000007), KSUCCESS);
  film.add(frame);
  film.stepTo(PB_POSTRENDER);
  film.stepTo(PB_RENDER);
  EXPECT_EQ(pictureOf(target).pixels, (std::vector<uint32_t>{0, 0, 0, 0, 0, 0}));
  film.stepTo(PB_END);
  EXPECT_EQ(pictureOf(target).pixels, (std::vector<uint32_t>{7, 7, 7, 0, 0, 0}));
}

TEST(Playback, SharesItsList) {
  TestBitmap target(4, 4, 8);
  const Film film(target);
  // The list holds its frame unlocked, where storage is locked for access at all: in global memory.
  BitmapHandle frame = makeFrame(2, 2, 8);
  Zv_LockBitmap(&frame);
  EXPECT_EQ(Zv_AppendPlayback(film.playback, &frame), KSUCCESS);
  BitmapHandle item{};
  EXPECT_EQ(Zv_GetBitmapListItem(film.list, 0, &item), KSUCCESS);
  EXPECT_EQ(item.Flags & BMF_LOCKED, 0u);
  // Rows of a taller frame that has been put behind the one appended.
  film.add(makeFrame(1, 5000, 1));
  EXPECT_EQ(Zv_ValidatePlaybackLines(film.playback, 1, 5000), KSUCCESS);
  // Whose list it is need not be told.
  PlaybackHandle other = nullptr;
  ASSERT_EQ(Zv_CreatePlayback(&other, &target, film.list), KSUCCESS);
  EXPECT_EQ(Zv_DestroyPlayback(other, nullptr), KSUCCESS);
}

// --- Arguments and failures

TEST(Playback, RefusesBadArguments) {
  TestBitmap target(4, 4, 8);
  BitmapHandle unallocated{};
  EXPECT_EQ(Zv_CreatePlayback(nullptr, &target, nullptr), KERR_BAD_PARAMETER);
  for (BitmapHandle* bad : {static_cast<BitmapHandle*>(nullptr), &unallocated}) {
    PlaybackHandle playback = reinterpret_cast<PlaybackHandle>(4);
    EXPECT_EQ(Zv_CreatePlayback(&playback, bad, nullptr), KERR_BAD_PARAMETER);
    EXPECT_EQ(playback, nullptr);
  }
  const HGLOBAL unlockable = GlobalAlloc(GMEM_MOVEABLE, 0);
  for (const PlaybackHandle bad : {PlaybackHandle{nullptr}, unlockable}) {
    unsigned number = 77;
    int index = 77;
    RECT rect = {};
    BitmapListHandle list = nullptr;
    EXPECT_EQ(Zv_DestroyPlayback(bad, &list), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_ProcessPlayback(bad, &number), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GetPlaybackState(bad, &number), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GetPlaybackDelay(bad, &number), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GetPlaybackIndex(bad, &index), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_CancelPlaybackWait(bad), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GetPlaybackUpdateRect(bad, &rect, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_ClearPlaybackUpdateRect(bad), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_SetPlaybackIndex(bad, 0), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_AppendPlayback(bad, &target), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_ValidatePlaybackLines(bad, 0, 1), KERR_BAD_PARAMETER);
    EXPECT_TRUE(number == 77 && index == 77);
  }
  GlobalFree(unlockable);
  const Film film(target);
  EXPECT_EQ(Zv_GetPlaybackState(film.playback, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetPlaybackIndex(film.playback, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetPlaybackDelay(film.playback, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_AppendPlayback(film.playback, nullptr), KERR_BAD_PARAMETER);
  film.stepTo(PB_POSTCLEAR);
  EXPECT_EQ(Zv_ClearPlaybackUpdateRect(film.playback), KSUCCESS);
  RECT update = {1, 1, 1, 1};
  EXPECT_EQ(Zv_GetPlaybackUpdateRect(film.playback, &update, 0), KSUCCESS);
  EXPECT_TRUE(IsRectEmpty(&update) && update.left == 0);
}

// A step that cannot have what it needs goes on all the same; what it could not draw it leaves alone, and no region is
// lost.
TEST(Playback, GoesOnWithoutWhatIsRefused) {
  const std::vector<std::string> any = {"GlobalAlloc", "GlobalReAlloc", "CreateFileMappingA", "MapViewOfFile",
                                        "CreatePalette"};
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
        const Film film(target);
        film.add(frame);
        film.stepTo(stage);
        const Picture before = pictureOf(target);
        unsigned state = 0;
        round.run([&] { return Zv_ProcessPlayback(film.playback, &state); });
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
