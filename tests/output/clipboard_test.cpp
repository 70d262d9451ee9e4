// The clipboard: which formats are placed and read, in which order, and what failures leave.
#include <zavo.h>

#include <gtest/gtest.h>
#include <thread>

#include "color/dib_samples.h"
#include "support/import_patch.h"
#include "support/platform_watch.h"
#include "support/refusals.h"
#include "support/seen_picture.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr unsigned everything = CLIP_EMPTY | CLIP_DIB | CLIP_DDB | CLIP_PALETTE | CLIP_REGION;

UINT regionFormat() {
  return RegisterClipboardFormatA("VANTRIXOS 8.0 Region");
}

// Opens the clipboard by itself, past the library and the watch on it.
class TestClipboard {
 public:
  explicit TestClipboard(HWND window) : open_(OpenClipboard(window)) {}
  TestClipboard(const TestClipboard&) = delete;
  TestClipboard& operator=(const TestClipboard&) = delete;
  ~TestClipboard() {
    if (open_) CloseClipboard();
  }
  [[nodiscard]] bool isOpen() const { return open_ != FALSE; }

 private:
  BOOL open_;
};

class Clipboard : public testing::Test {
 protected:
  void SetUp() override {
    window =
        CreateWindowExA(0, "STATIC", "clipboard owner", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    empty();
  }
  void TearDown() override {
    empty();
    DestroyWindow(window);
  }

  void empty() const {
    const TestClipboard clipboard(window);
    ASSERT_TRUE(clipboard.isOpen());
    EmptyClipboard();
  }
  void place(UINT format, HANDLE data) const {
    const TestClipboard clipboard(window);
    ASSERT_TRUE(clipboard.isOpen());
    ASSERT_NE(SetClipboardData(format, data), nullptr);
  }
  void place(UINT format, const Bytes& bytes) const { place(format, globalCopy(bytes)); }

  // The formats that were placed, without those that the system derives from them.
  std::vector<UINT> placed(const std::function<void()>& operation) const {
    std::vector<UINT> formats;
    const Replacement<"SetClipboardData", decltype(&SetClipboardData)> noted([&](UINT format, HANDLE data) {
      formats.push_back(format);
      return noted.original(format, data);
    });
    operation();
    return formats;
  }

  HWND window = nullptr;
};

Picture noisePicture(int width, int height, unsigned colors, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<uint32_t> palette(colors);
  for (uint32_t& color : palette) color = random() & 0xFFFFFF;
  Picture picture(width, height);
  for (uint32_t& pixel : picture.pixels) pixel = palette[random() % colors];
  return picture;
}

TEST_F(Clipboard, PlacesWhatIsAskedForAndThere) {
  TestBitmap palettised(37, 11, 8), direct(37, 11, 24), selected(37, 11, 8);
  const RECT rect = {3, 2, 20, 9};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&selected, nullptr, &rect, CombineSet), KSUCCESS);
  const UINT region = regionFormat();
  struct {
    const char* what;
    BitmapHandle* bitmap;
    unsigned flags;
    std::vector<UINT> formats;
  } const cases[] = {
      {"nothing", &selected, 0, {}},
      {"only emptied", &selected, CLIP_EMPTY, {}},
      {"the DIB", &selected, CLIP_EMPTY | CLIP_DIB, {CF_DIB}},
      {"the DDB", &selected, CLIP_EMPTY | CLIP_DDB, {CF_BITMAP}},
      {"the palette", &selected, CLIP_EMPTY | CLIP_PALETTE, {CF_PALETTE}},
      {"no palette for direct colours", &direct, CLIP_EMPTY | CLIP_PALETTE, {}},
      {"the region", &selected, CLIP_EMPTY | CLIP_REGION, {region}},
      {"no region", &palettised, CLIP_EMPTY | CLIP_REGION, {}},
      {"all, in order", &selected, everything, {CF_PALETTE, CF_DIB, region, CF_BITMAP}},
      {"all of direct colours", &direct, everything, {CF_DIB, CF_BITMAP}},
      {"other bits of the flags", &direct, 0xFFFFFFE0 | CLIP_EMPTY | CLIP_DIB, {CF_DIB}},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.what);
    const Snapshot before(*expected.bitmap);
    EXPECT_EQ(placed([&] { EXPECT_EQ(Zv_CopyToClipboardExt(window, expected.bitmap, expected.flags), KSUCCESS); }),
              expected.formats);
    EXPECT_TRUE(before.unchanged());
  }
  // With and without a window that will own the clipboard.
  for (HWND owner : {window, static_cast<HWND>(nullptr)}) {
    EXPECT_EQ(placed([&] { EXPECT_EQ(Zv_CopyToClipboard(owner, &direct), 1); }),
              (std::vector<UINT>{CF_DIB, CF_BITMAP}));
    EXPECT_NE(Zv_ClipboardReady(), 0);
  }
}

TEST_F(Clipboard, IsEmptiedOnlyWhenAskedTo) {
  TestBitmap bitmap(5, 5, 24);
  place(CF_TEXT, Bytes{'a', 0});
  EXPECT_EQ(Zv_CopyToClipboardExt(window, &bitmap, CLIP_DIB), KSUCCESS);
  EXPECT_TRUE(IsClipboardFormatAvailable(CF_TEXT));
  EXPECT_EQ(Zv_CopyToClipboardExt(window, &bitmap, CLIP_EMPTY), KSUCCESS);
  EXPECT_FALSE(IsClipboardFormatAvailable(CF_TEXT));
  EXPECT_EQ(CountClipboardFormats(), 0);
}

TEST_F(Clipboard, KnowsWhetherAPictureIsThere) {
  TestBitmap bitmap(5, 5, 24);
  EXPECT_EQ(Zv_ClipboardReady(), 0);
  place(CF_TEXT, Bytes{'a', 0});
  place(regionFormat(), packedDib({.bits = 1}));
  EXPECT_EQ(Zv_ClipboardReady(), 0);
  TestBitmap target;
  EXPECT_EQ(Zv_CopyFromClipboard(window, &target), 0) << "a region alone is no picture";
  EXPECT_EQ(target.Flags, 0u);
  for (const unsigned format : {CLIP_DIB, CLIP_DDB}) {
    ASSERT_EQ(Zv_CopyToClipboardExt(window, &bitmap, CLIP_EMPTY | format), KSUCCESS);
    EXPECT_NE(Zv_ClipboardReady(), 0);
  }
}

// The system derives CF_DIB from CF_BITMAP by itself. While this lives only what was placed is seen by the library.
class NoDerivedDib {
 public:
  NoDerivedDib() : available_([this](UINT format) { return format == CF_DIB ? FALSE : available_.original(format); }) {}

 private:
  Replacement<"IsClipboardFormatAvailable", decltype(&IsClipboardFormatAvailable)> available_;
};

// Every depth and perspective comes back as it was seen, with the region.
TEST_F(Clipboard, BringsPicturesAndRegionsBack) {
  constexpr POINT corners[] = {{1, 1}, {29, 4}, {8, 11}};
  for (const int bits : allDepths) {
    for (const int perspective : allPerspectives) {
      for (const unsigned format : {unsigned{CLIP_DIB}, unsigned{CLIP_DDB | CLIP_PALETTE}}) {
        SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective << ", flags " << format);
        TestBitmap bitmap;
        makeSeen(bitmap, noisePicture(31, 13, bits < 8 ? 1u << bits : 200, 7), bits, perspective);
        ASSERT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, corners, 3, POLYGON_WINDING, CombineSet), KSUCCESS);
        ASSERT_EQ(Zv_CopyToClipboardExt(window, &bitmap, CLIP_EMPTY | CLIP_REGION | format), KSUCCESS);
        std::optional<NoDerivedDib> noDib;
        if (format != CLIP_DIB) noDib.emplace();
        TestBitmap back;
        ASSERT_EQ(Zv_CopyFromClipboard(window, &back), 1);
        Picture sent = seenOf(bitmap), received = seenOf(back);
        if (bits == 16) {
          for (uint32_t& pixel : received.pixels) pixel &= 0xF8F8F8;
        }
        EXPECT_EQ(sent, received);
        EXPECT_EQ(seenRegionOf(bitmap), seenRegionOf(back));
      }
    }
  }
}

TEST_F(Clipboard, PrefersTheDib) {
  TestBitmap first(9, 5, 24), second(4, 7, 24);
  ASSERT_EQ(Zv_CopyToClipboardExt(window, &first, CLIP_EMPTY | CLIP_DDB), KSUCCESS);
  ASSERT_EQ(Zv_CopyToClipboardExt(window, &second, CLIP_DIB), KSUCCESS);
  const CallCount rowsOfDdb("GetDIBits");
  TestBitmap back;
  ASSERT_EQ(Zv_CopyFromClipboard(window, &back), 1);
  EXPECT_EQ(back.Width, 4);
  EXPECT_EQ(rowsOfDdb.get(), 0u);
}

TEST_F(Clipboard, ReadsADeviceDependentBitmap) {
  const NoDerivedDib noDib;
  const CallCount rowsOfDdb("GetDIBits");
  const CallCount selections("SelectPalette");
  for (const unsigned withPalette : {0u, unsigned{CLIP_PALETTE}}) {
    TestBitmap bitmap;
    makeSeen(bitmap, noisePicture(21, 9, 200, 3), 8, VIEW_TURNED_90);
    ASSERT_EQ(Zv_CopyToClipboardExt(window, &bitmap, CLIP_EMPTY | CLIP_DDB | withPalette), KSUCCESS);
    EXPECT_NE(Zv_ClipboardReady(), 0);
    TestBitmap back;
    const unsigned before = selections.get();
    ASSERT_EQ(Zv_CopyFromClipboard(window, &back), 1);
    // The palette on the clipboard is selected and taken out again; this screen has no system palette.
    EXPECT_EQ(selections.get() - before, withPalette != 0 ? 2u : 0u);
    EXPECT_EQ(seenOf(bitmap), seenOf(back));
  }
  EXPECT_EQ(rowsOfDdb.get(), 2u);
}

TEST_F(Clipboard, RefusesWhatIsNoBitmap) {
  TestBitmap none;
  EXPECT_EQ(Zv_CopyToClipboardExt(window, nullptr, everything), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CopyToClipboardExt(window, &none, everything), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CopyToClipboard(window, nullptr), 0);
  EXPECT_EQ(Zv_CopyToClipboard(window, &none), 0);
  EXPECT_EQ(Zv_CopyFromClipboard(window, nullptr), 0);
  EXPECT_EQ(Zv_CopyFromClipboard(window, &none), 0) << "the clipboard is empty";
  TestBitmap bitmap(5, 5, 24);
  const auto nowhere = reinterpret_cast<HWND>(static_cast<uintptr_t>(0x7F7F7F7E));
  EXPECT_EQ(Zv_CopyToClipboardExt(nowhere, &bitmap, CLIP_DDB), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyToClipboardExt(nowhere, &bitmap, CLIP_DIB), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyFromClipboard(nowhere, &none), 0);
}

TEST_F(Clipboard, HeldByAnotherWindowStaysAsItIs) {
  place(CF_TEXT, Bytes{'a', 0});
  TestBitmap bitmap(5, 5, 8), target;
  const RECT rect = {1, 1, 3, 3};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, CombineSet), KSUCCESS);
  HANDLE held = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  HANDLE letGo = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  std::thread holder([&] {
    HWND other = CreateWindowExA(0, "STATIC", "holder", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    EXPECT_TRUE(OpenClipboard(other));
    SetEvent(held);
    WaitForSingleObject(letGo, INFINITE);
    CloseClipboard();
    DestroyWindow(other);
  });
  WaitForSingleObject(held, INFINITE);
  {
    const Ledger ledger;
    EXPECT_EQ(Zv_CopyToClipboardExt(window, &bitmap, everything), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_CopyToClipboard(window, &bitmap), 0);
    EXPECT_EQ(Zv_CopyFromClipboard(window, &target), 0);
    EXPECT_TRUE(ledger.balanced());
  }
  SetEvent(letGo);
  holder.join();
  CloseHandle(held);
  CloseHandle(letGo);
  EXPECT_TRUE(IsClipboardFormatAvailable(CF_TEXT));
  EXPECT_EQ(CountClipboardFormats() > 0, true);
  EXPECT_FALSE(IsClipboardFormatAvailable(CF_DIB));
}

TEST_F(Clipboard, PlacingUnwinds) {
  RefusalRules rules;
  rules.codes = {KERR_NO_MEMORY, KERR_BAD_PARAMETER};  // the latter for device contexts and the clipboard
  // For the palettes alone: none is placed then, and none is selected while the DDB is painted.
  rules.survived = {"CreatePalette", "GlobalAlloc"};
  rules.leastPoints = 10;
  refuseEachResource(rules, [&](RefusalRound& round) {
    TestBitmap bitmap(37, 11, 8);
    const RECT rect = {3, 2, 20, 9};
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, CombineSet), KSUCCESS);
    empty();
    round.keeps(bitmap);
    int status = 0;
    std::vector<UINT> formats =
        placed([&] { status = round.run([&] { return Zv_CopyToClipboardExt(window, &bitmap, everything); }); });
    if (round.refused() != nullptr && !formats.empty() && formats[0] == CF_PALETTE) formats.erase(formats.begin());
    std::vector<UINT> expected;
    if (status == KSUCCESS) expected = {CF_DIB, regionFormat(), CF_BITMAP};
    if (round.refused() == nullptr) expected.insert(expected.begin(), CF_PALETTE);
    EXPECT_EQ(formats, expected);
    empty();
  });
}

TEST_F(Clipboard, WhatTheClipboardDoesNotTakeIsGivenBack) {
  const Replacement<"SetClipboardData", decltype(&SetClipboardData)> refuse(
      [](UINT, HANDLE) -> HANDLE { return nullptr; });
  TestBitmap bitmap(37, 11, 8);
  const RECT rect = {3, 2, 20, 9};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, CombineSet), KSUCCESS);
  const Ledger ledger;
  EXPECT_EQ(Zv_CopyToClipboardExt(window, &bitmap, everything), KSUCCESS);
  EXPECT_TRUE(ledger.balanced());
}

TEST_F(Clipboard, ReadingUnwinds) {
  TestBitmap bitmap(37, 11, 8);
  const RECT rect = {3, 2, 20, 9};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, CombineSet), KSUCCESS);
  ASSERT_EQ(Zv_CopyToClipboardExt(window, &bitmap, everything), KSUCCESS);
  RefusalRules rules;
  rules.codes = {0};
  // Needed for the region alone, or for the screen's resolution.
  rules.survived = {"GlobalAlloc", "GlobalReAlloc", "CreateFileMappingA", "MapViewOfFile", "CreatePalette", "GetDC"};
  rules.leastPoints = 4;
  refuseEachResource(rules, [&](RefusalRound& round) {
    TestBitmap target;
    round.keeps(target);
    if (round.run([&] { return Zv_CopyFromClipboard(window, &target); }) == 1) {
      EXPECT_EQ(target.Width, 37);
      if (round.refused() == nullptr) {
        EXPECT_EQ(seenRegionOf(bitmap), seenRegionOf(target));
      }
    }
  });
}

// Packed DIBs that are not what they say; the block's end is where the memory that may be read ends.
TEST_F(Clipboard, DoesNotTrustPackedDibs) {
  struct {
    const char* what;
    Bytes bytes;
    bool good;
  } cases[] = {
      {"a good one", packedDib({}), true},
      {"top-down", packedDib({.height = -3}), true},
      {"a long header", packedDib({.headerBytes = 124, .bits = 24}), true},
      {"a core header", packedDib({.headerBytes = 12, .bits = 24}), true},
      {"few colours", packedDib({.bits = 4, .colorsUsed = 3}), true},
      {"a colour table before direct pixels", packedDib({.bits = 24, .colorsUsed = 5}), true},
      {"a row short", packedDib({}), false},
      {"no header", Bytes(11, 0), false},
      {"half a header", packedDib({}), false},
      {"endless", packedDib({}), false},
      {"too many colours", packedDib({.bits = 8, .colorsUsed = 0}), false},
      {"a header size without end", packedDib({}), false},
      {"no width", packedDib({.width = 0}), false},
      {"negative width", packedDib({}), false},
      {"run lengths", packedDib({.compression = BI_RLE8}), false},
      {"an odd depth", packedDib({.bits = 3}), false},
      {"two planes", packedDib({.planes = 2}), false},
  };
  const auto poke = [](Bytes& bytes, size_t at, uint32_t value) { memcpy(bytes.data() + at, &value, sizeof value); };
  for (auto& spoilt : cases) {
    const std::string what = spoilt.what;
    if (what == "a row short") spoilt.bytes.resize(spoilt.bytes.size() - 1);
    if (what == "half a header") spoilt.bytes.resize(39);
    if (what == "endless") poke(spoilt.bytes, 8, 0x7FFFFFFF);
    if (what == "too many colours") poke(spoilt.bytes, 32, 0x40000001);
    if (what == "a header size without end") poke(spoilt.bytes, 0, 0xFFFFFFFF);
    if (what == "negative width") poke(spoilt.bytes, 4, 0x80000000);
    SCOPED_TRACE(what);
    empty();
    place(CF_DIB, spoilt.bytes);
    TestBitmap target;
    EXPECT_EQ(Zv_CopyFromClipboard(window, &target), spoilt.good ? 1 : 0);
    EXPECT_EQ(target.allocated(), spoilt.good);

    // The same as a region: a bad one is left out, a good one of another size than the picture too, or cut to it.
    place(CF_DIB, packedDib({.width = 7, .height = 5, .bits = 24}));
    place(regionFormat(), spoilt.bytes);
    TestBitmap picture;
    ASSERT_EQ(Zv_CopyFromClipboard(window, &picture), 1);
    EXPECT_EQ(picture.Width, 7);
    EXPECT_TRUE(spoilt.good || picture.Region == nullptr);
  }
}

}  // namespace
