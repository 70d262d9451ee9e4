// The state machine: one step a call, waiting, seeking, and frames that arrive while they are played.
#include <zavo.h>

#include <gtest/gtest.h>
#include <vector>

#include "playback/film.h"
#include "support/import_patch.h"
#include "support/platform_watch.h"
#include "support/test_bitmap.h"

namespace zavotest {
namespace {

using States = std::vector<unsigned>;

States steps(const Film& film, size_t count) {
  States states;
  while (states.size() < count) states.push_back(film.step());
  return states;
}

// The system's tick counter as the library sees it, beginning shortly before it wraps.
class Clock {
 public:
  uint32_t now = 0xFFFFFFF0;

 private:
  Replacement<"GetTickCount", decltype(&GetTickCount)> replacement_{[this] { return now; }};
};

BitmapHandle makeFrame(unsigned delay, bool waitsForUser) {
  BitmapHandle frame = zavotest::makeFrame(3, 3, 24);
  frame.PlaybackDelay = delay;
  if (waitsForUser) frame.Flags |= BMF_PLAYBACK_WAITUSER;
  return frame;
}

TEST(States, OneStepACallAndRoundAgain) {
  TestBitmap target(10, 10, 24);
  const Film film(target, {makeFrame(0, false), makeFrame(0, false)});
  EXPECT_EQ(film.state(), unsigned{PB_PRECLEAR});
  EXPECT_EQ(film.index(), -1);
  EXPECT_EQ(steps(film, 1), States{PB_POSTCLEAR});
  EXPECT_EQ(film.index(), -1);
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(film.step(), unsigned{PB_RENDER});
    EXPECT_EQ(film.index(), 0);
    EXPECT_EQ(steps(film, 4), (States{PB_POSTRENDER, PB_DISPOSE, PB_NEXT, PB_RENDER}));
    EXPECT_EQ(film.index(), 1);
    EXPECT_EQ(steps(film, 4), (States{PB_POSTRENDER, PB_DISPOSE, PB_NEXT, PB_END}));
    EXPECT_EQ(film.index(), 2);
  }
  EXPECT_EQ(Zv_ProcessPlayback(film.get(), nullptr), KSUCCESS);
  EXPECT_EQ(film.state(), unsigned{PB_RENDER}) << "no place for the state given, and none needed";
}

TEST(States, TheSecondRoundDoesNotClear) {
  TestBitmap target(10, 10, 8);
  target.PlaybackBackground = 0x01000007;
  const Film film(target, {makeFrame(0, false)});
  ASSERT_TRUE(film.stepTo(PB_END));
  EXPECT_EQ(pictureOf(target).at(9, 9), 7u);
  ASSERT_EQ(Zv_PutPixelColor(&target, 9, 9, 0x01000005), KSUCCESS);
  ASSERT_EQ(film.step(), unsigned{PB_RENDER});
  ASSERT_TRUE(film.stepTo(PB_END));
  EXPECT_EQ(pictureOf(target).at(9, 9), 5u);
}

TEST(States, DelaysPassAcrossTheWrapOfTheTickCounter) {
  for (const bool waitsForUser : {false, true}) {
    SCOPED_TRACE(waitsForUser ? "ends with the user too" : "time alone");
    Clock clock;
    TestBitmap target(10, 10, 24);
    const Film film(target, {makeFrame(50, waitsForUser)});
    ASSERT_TRUE(film.stepTo(PB_POSTRENDER));
    EXPECT_EQ(film.delay(), 0u) << "the wait has not begun";
    clock.now += 3;
    const unsigned waiting = waitsForUser ? PB_WAITINPUTDELAY : PB_WAITDELAY;
    ASSERT_EQ(film.step(), waiting);
    const struct { uint32_t passed, left; } moments[] = {{0, 50}, {1, 49}, {12, 38}, {13, 37}, {49, 1}};
    const uint32_t start = clock.now;
    for (const auto& moment : moments) {
      clock.now = start + moment.passed;
      EXPECT_EQ(film.delay(), moment.left);
      EXPECT_EQ(film.step(), waiting) << moment.passed;
    }
    clock.now = start + 75;
    EXPECT_EQ(film.delay(), 0u);
    clock.now = start + 50;
    EXPECT_EQ(film.delay(), 0u);
    EXPECT_EQ(film.step(), unsigned{PB_DISPOSE});
    clock.now = start + 10;
    EXPECT_EQ(film.delay(), 0u) << "no wait any more";
  }
}

TEST(States, WaitsForTheSystemsTicks) {
  TestBitmap target(10, 10, 24);
  const Film film(target, {makeFrame(60, false)});
  ASSERT_TRUE(film.stepTo(PB_WAITDELAY));
  const DWORD start = GetTickCount();
  while (film.step() == PB_WAITDELAY) {
    ASSERT_LE(film.delay(), 60u);
    ASSERT_LT(GetTickCount() - start, 5000u) << "the wait does not end";
    Sleep(5);
  }
  EXPECT_GE(GetTickCount() - start, 40u);
}

TEST(States, CancellingEndsEveryWaitAndNothingElse) {
  Clock clock;
  struct {
    unsigned delay;
    bool waitsForUser;
    unsigned waiting;
  } const cases[] = {{0, true, PB_WAITINPUT}, {90, false, PB_WAITDELAY}, {90, true, PB_WAITINPUTDELAY}};
  for (const auto& wait : cases) {
    SCOPED_TRACE(wait.waiting);
    TestBitmap target(10, 10, 24);
    const Film film(target, {makeFrame(wait.delay, wait.waitsForUser)});
    for (unsigned before = film.state(); before != wait.waiting; before = film.step()) {
      ASSERT_LT(before, unsigned{PB_DISPOSE});
      EXPECT_EQ(Zv_CancelPlaybackWait(film.get()), KSUCCESS);
      EXPECT_EQ(film.state(), before);
    }
    EXPECT_EQ(steps(film, 3), States(3, wait.waiting));
    EXPECT_EQ(Zv_CancelPlaybackWait(film.get()), KSUCCESS);
    EXPECT_EQ(film.state(), unsigned{PB_DISPOSE});
    for (const unsigned next : {PB_NEXT, PB_END, PB_RENDER}) {
      EXPECT_EQ(Zv_CancelPlaybackWait(film.get()), KSUCCESS);
      EXPECT_EQ(film.step(), next);
    }
  }
  // A user who never comes is waited for longer than any delay.
  TestBitmap target(10, 10, 24);
  const Film film(target, {makeFrame(0, true)});
  ASSERT_TRUE(film.stepTo(PB_WAITINPUT));
  clock.now += 0x7FFFFFFF;
  EXPECT_EQ(film.step(), unsigned{PB_WAITINPUT});
}

// --- Seeking

// Frame i of three sets pixel i of the first row to index i + 1.
struct Row {
  TestBitmap target{4, 1, 8};
  std::vector<BitmapHandle> frames;

  Row() {
    target.PlaybackBackground = 0x01000009;
    for (int i = 0; i < 3; ++i) {
      frames.push_back(zavotest::makeFrame(1, 1, 8));
      Zv_FillBitmap(&frames.back(), 0x01000001u + static_cast<unsigned>(i));
      frames.back().PlaybackLeft = i;
      frames.back().PlaybackDelay = 1000;
      frames.back().Flags |= BMF_PLAYBACK_WAITUSER;
    }
  }
  std::vector<uint32_t> pixels() { return pictureOf(target).pixels; }
};

TEST(Seeking, DrawsAndDisposesWithoutWaiting) {
  Row row;
  row.frames[0].PlaybackDisposal = 2;
  row.frames[1].PlaybackDelay = 0;
  const Film film(row.target, {row.frames[0], row.frames[1], row.frames[2]});
  using Pixels = std::vector<uint32_t>;
  struct {
    int index;
    unsigned state;
    Pixels pixels;
  } const cases[] = {
      {0, PB_RENDER, {9, 9, 9, 9}},    {2, PB_RENDER, {9, 2, 9, 9}},     // forward: what was drawn stays
      {2, PB_RENDER, {9, 2, 9, 9}},    {1, PB_RENDER, {9, 9, 9, 9}},     // back: from a cleared target
      {3, PB_END, {9, 2, 3, 9}},       {-1, PB_PRECLEAR, {9, 2, 3, 9}},  // cleared by the next step only
      {-1, PB_PRECLEAR, {9, 2, 3, 9}}, {3, PB_END, {9, 2, 3, 9}},
  };
  for (const auto& wanted : cases) {
    SCOPED_TRACE(wanted.index);
    EXPECT_EQ(Zv_SetPlaybackIndex(film.get(), wanted.index), KSUCCESS);
    EXPECT_EQ(film.index(), wanted.index);
    EXPECT_EQ(film.state(), wanted.state);
    EXPECT_EQ(row.pixels(), wanted.pixels);
  }
  EXPECT_EQ(Zv_SetPlaybackIndex(film.get(), -2), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetPlaybackIndex(film.get(), 4), KERR_BAD_PARAMETER);
  EXPECT_EQ(film.index(), 3) << "a refused index moves nothing";
}

TEST(Seeking, GoesOnFromTheMiddleOfAWait) {
  Row row;
  const Film film(row.target, {row.frames[0], row.frames[1], row.frames[2]});
  ASSERT_TRUE(film.stepTo(PB_WAITINPUTDELAY));
  EXPECT_EQ(Zv_SetPlaybackIndex(film.get(), 2), KSUCCESS);
  EXPECT_EQ(film.state(), unsigned{PB_RENDER});
  EXPECT_EQ(row.pixels(), (std::vector<uint32_t>{1, 2, 9, 9}));
}

TEST(Seeking, BackForgetsWhatWasKeptUnderAFrame) {
  Row row;
  row.frames[1].PlaybackDisposal = 3;
  const Film film(row.target, {row.frames[0], row.frames[1], row.frames[2]});
  ASSERT_EQ(Zv_SetPlaybackIndex(film.get(), 1), KSUCCESS);
  ASSERT_EQ(film.step(), unsigned{PB_POSTRENDER});
  const Ledger ledger;
  ASSERT_EQ(Zv_SetPlaybackIndex(film.get(), 0), KSUCCESS);
  EXPECT_FALSE(ledger.balanced()) << "the pixels kept were given back";
  ASSERT_EQ(Zv_SetPlaybackIndex(film.get(), 3), KSUCCESS);
  EXPECT_EQ(row.pixels(), (std::vector<uint32_t>{1, 9, 3, 9}));
}

// --- Frames that arrive

TEST(Appending, ShowsAFrameWhenAllItsRowsAreThere) {
  TestBitmap target(20, 20, 8);
  const Film film(target);
  EXPECT_EQ(steps(film, 2), (States{PB_POSTCLEAR, PB_END})) << "no frames yet";

  BitmapHandle frame = zavotest::makeFrame(5, 19, 8);
  ASSERT_EQ(Zv_FillBitmap(&frame, 0x01000003), KSUCCESS);
  ASSERT_EQ(Zv_AppendPlayback(film.get(), &frame), KSUCCESS);
  EXPECT_EQ(film.state(), unsigned{PB_RENDER});
  EXPECT_EQ(film.index(), 0);
  const struct {
    int first, count;
  } arrivals[] = {{0, 0},   {3, -2},         {-5, 5}, {19, 4}, {100, 7}, {0, 1},
                  {-3, 5},  {1, 1},          {9, 8},  {9, 8},  {2, 6},   {0x7FFFFFFF, 0x7FFFFFFF},
                  {17, 99}, {-5, 0x7FFFFFFF}};
  for (const auto& rows : arrivals) {
    EXPECT_EQ(steps(film, 2), States(2, PB_WAITLINES)) << "before rows " << rows.first << " + " << rows.count;
    EXPECT_EQ(pictureOf(target).at(0, 0), 0u);
    EXPECT_EQ(Zv_ValidatePlaybackLines(film.get(), rows.first, rows.count), KSUCCESS);
  }
  EXPECT_EQ(film.step(), unsigned{PB_POSTRENDER});
  EXPECT_EQ(pictureOf(target).at(0, 18), 3u);
  EXPECT_EQ(Zv_ValidatePlaybackLines(film.get(), 0, 19), KSUCCESS) << "late, and no matter";
}

TEST(Appending, OnlyTheLastFrameIsWaitedFor) {
  TestBitmap target(4, 4, 8);
  const Film film(target);
  BitmapHandle first = zavotest::makeFrame(2, 2, 8);
  BitmapHandle second = zavotest::makeFrame(2, 2, 8);
  ASSERT_EQ(Zv_AppendPlayback(film.get(), &first), KSUCCESS);
  ASSERT_EQ(Zv_AppendPlayback(film.get(), &second), KSUCCESS);
  EXPECT_EQ(steps(film, 6), (States{PB_POSTCLEAR, PB_RENDER, PB_POSTRENDER, PB_DISPOSE, PB_NEXT, PB_RENDER}));
  EXPECT_EQ(film.step(), unsigned{PB_WAITLINES});
  ASSERT_EQ(Zv_SetPlaybackIndex(film.get(), 2), KSUCCESS) << "who seeks takes the rows as they are";
  EXPECT_EQ(film.state(), unsigned{PB_END});

  BitmapHandle third = zavotest::makeFrame(2, 2, 8);
  ASSERT_EQ(Zv_AppendPlayback(film.get(), &third), KSUCCESS);
  EXPECT_EQ(film.index(), 2);
  EXPECT_EQ(steps(film, 2), (States{PB_WAITLINES, PB_WAITLINES}));
  ASSERT_EQ(Zv_ValidatePlaybackLines(film.get(), 0, 2), KSUCCESS);
  EXPECT_EQ(steps(film, 4), (States{PB_POSTRENDER, PB_DISPOSE, PB_NEXT, PB_END}));
}

TEST(Appending, AnEmptyAnimationLosesNoFrame) {
  for (size_t before = 0; before < 8; ++before) {
    TestBitmap target(4, 4, 8);
    const Film film(target);
    steps(film, before);
    BitmapHandle frame = zavotest::makeFrame(4, 4, 8);
    ASSERT_EQ(Zv_FillBitmap(&frame, 0x01000003), KSUCCESS);
    ASSERT_EQ(Zv_AppendPlayback(film.get(), &frame), KSUCCESS);
    ASSERT_EQ(Zv_ValidatePlaybackLines(film.get(), 0, 4), KSUCCESS);
    ASSERT_TRUE(film.stepTo(PB_POSTRENDER));
    EXPECT_EQ(film.index(), 0) << before << " steps before the first frame came";
    EXPECT_EQ(pictureOf(target).at(1, 1), 3u);
  }
}

// Only where storage is locked for access at all: in global memory.
TEST(Appending, TheListHoldsItsFrameUnlocked) {
  TestBitmap target(4, 4, 8);
  BitmapListHandle list = nullptr;
  PlaybackHandle playback = nullptr;
  ASSERT_EQ(Zv_CreateBitmapList(&list), KSUCCESS);
  ASSERT_EQ(Zv_CreatePlayback(&playback, &target, list), KSUCCESS);
  BitmapHandle frame = zavotest::makeFrame(2, 2, 8);
  Zv_LockBitmap(&frame);
  EXPECT_EQ(Zv_AppendPlayback(playback, &frame), KSUCCESS);
  BitmapHandle item{};
  EXPECT_EQ(Zv_GetBitmapListItem(list, 0, &item), KSUCCESS);
  EXPECT_EQ(item.Flags & BMF_LOCKED, 0u);
  EXPECT_EQ(Zv_DestroyPlayback(playback, nullptr), KSUCCESS);
  EXPECT_EQ(Zv_DestroyBitmapList(list), KSUCCESS);
}

TEST(Appending, SurvivesATallerFrameInTheList) {
  TestBitmap target(4, 4, 8);
  BitmapListHandle list = nullptr;
  ASSERT_EQ(Zv_CreateBitmapList(&list), KSUCCESS);
  PlaybackHandle playback = nullptr;
  ASSERT_EQ(Zv_CreatePlayback(&playback, &target, list), KSUCCESS);
  const BitmapHandle taller = zavotest::makeFrame(1, 5000, 1);
  BitmapHandle frame = zavotest::makeFrame(2, 2, 8);
  EXPECT_EQ(Zv_AppendPlayback(playback, &frame), KSUCCESS);
  EXPECT_EQ(Zv_InsertBitmapListItem(list, ~0u, &taller), KSUCCESS);
  EXPECT_EQ(Zv_ValidatePlaybackLines(playback, 1, 5000), KSUCCESS);
  EXPECT_EQ(Zv_DestroyPlayback(playback, nullptr), KSUCCESS);
  EXPECT_EQ(Zv_DestroyBitmapList(list), KSUCCESS);
}

// --- Arguments and failures

TEST(Playback, RefusesBadArguments) {
  TestBitmap target(4, 4, 8);
  BitmapHandle unallocated{};
  PlaybackHandle playback = reinterpret_cast<PlaybackHandle>(4);
  EXPECT_EQ(Zv_CreatePlayback(nullptr, &target, nullptr), KERR_BAD_PARAMETER);
  for (BitmapHandle* bad : {static_cast<BitmapHandle*>(nullptr), &unallocated}) {
    playback = reinterpret_cast<PlaybackHandle>(4);
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
    EXPECT_EQ(number, 77u);
    EXPECT_EQ(index, 77);
  }
  GlobalFree(unlockable);

  const Film film(target);
  EXPECT_EQ(Zv_GetPlaybackState(film.get(), nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetPlaybackIndex(film.get(), nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetPlaybackDelay(film.get(), nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_AppendPlayback(film.get(), nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetPlaybackIndex(film.get(), 1), KERR_BAD_PARAMETER) << "no frames, so 0 is the end";
  EXPECT_EQ(Zv_SetPlaybackIndex(film.get(), 0), KSUCCESS);
  EXPECT_EQ(film.state(), unsigned{PB_END});
}

TEST(Playback, HandsItsListBack) {
  TestBitmap target(4, 4, 8);
  PlaybackHandle playback = nullptr;
  BitmapListHandle list = nullptr;
  ASSERT_EQ(Zv_CreateBitmapList(&list), KSUCCESS);
  ASSERT_EQ(Zv_CreatePlayback(&playback, &target, list), KSUCCESS);
  EXPECT_EQ(Zv_DestroyPlayback(playback, nullptr), KSUCCESS) << "whose list it is knows it";
  ASSERT_EQ(Zv_CreatePlayback(&playback, &target, list), KSUCCESS);
  BitmapListHandle back = nullptr;
  EXPECT_EQ(Zv_DestroyPlayback(playback, &back), KSUCCESS);
  EXPECT_EQ(back, list);
  EXPECT_EQ(Zv_DestroyBitmapList(list), KSUCCESS);
}

}  // namespace
}  // namespace zavotest
