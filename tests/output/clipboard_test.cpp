// The clipboard, on screens of 24 and of 8 bits: which formats are placed and read, in which order, and what failures
// leave.
#include <zavo.h>

#include <gtest/gtest.h>

#include "color/dib_samples.h"
#include "support/import_patch.h"
#include "support/platform_watch.h"
#include "support/refusals.h"
#include "support/screen.h"
#include "support/seen_picture.h"

namespace {

using namespace zavotest;

constexpr unsigned everything = CLIP_EMPTY | CLIP_DIB | CLIP_DDB | CLIP_PALETTE | CLIP_REGION;

bool isPaletteScreen() {
  return screenBits() == 8;
}

UINT regionFormat() {
  return RegisterClipboardFormatA("VANTRIXOS 8.0 Region");
}

struct SelectedBitmap : TestBitmap {
  SelectedBitmap() : TestBitmap(37, 11, 8) {
    const RECT rect = {3, 2, 20, 9};
    EXPECT_EQ(Zv_SetBitmapRgnRect(this, nullptr, &rect, CombineSet), KSUCCESS);
  }
};

class Clipboard : public testing::Test {
 protected:
  void SetUp() override {
    window = CreateWindowExA(0, "STATIC", "owner", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    empty();
  }
  void TearDown() override {
    empty();
    DestroyWindow(window);
  }

  // These go past the library and the watch on it.
  void place(UINT format, HANDLE data) const {
    ASSERT_TRUE(OpenClipboard(window));
    EXPECT_TRUE(data == nullptr ? EmptyClipboard() != FALSE : SetClipboardData(format, data) != nullptr);
    CloseClipboard();
  }
  void place(UINT format, const Bytes& bytes) const { place(format, globalCopy(bytes)); }
  void empty() const { place(0, nullptr); }

  // The formats that were placed, without those that the system derives from them.
  static std::vector<UINT> placed(const std::function<void()>& operation) {
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

TEST_F(Clipboard, PlacesWhatIsAskedForAndThere) {
  TestBitmap palettised(37, 11, 8), direct(37, 11, 24);
  SelectedBitmap selected;
  const UINT region = regionFormat();
  std::vector<UINT> ofDirect = {CF_DIB, CF_BITMAP};
  if (isPaletteScreen()) ofDirect.insert(ofDirect.begin(), CF_PALETTE);  // to which they are dithered
  const struct {
    BitmapHandle* bitmap;
    unsigned flags;
    std::vector<UINT> formats;
  } cases[] = {
      {&selected, 0, {}},
      {&selected, CLIP_EMPTY, {}},
      {&selected, CLIP_EMPTY | CLIP_DIB, {CF_DIB}},
      {&selected, CLIP_DDB, {CF_BITMAP}},
      {&selected, CLIP_EMPTY | CLIP_PALETTE, {CF_PALETTE}},
      {&selected, CLIP_EMPTY | CLIP_REGION, {region}},
      {&palettised, CLIP_EMPTY | CLIP_REGION, {}},
      {&selected, everything, {CF_PALETTE, CF_DIB, region, CF_BITMAP}},
      {&direct, everything, ofDirect},
      {&direct, 0xFFFFFFE0 | CLIP_EMPTY | CLIP_DIB, {CF_DIB}},  // other bits say nothing
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "flags " << c.flags << ", " << c.bitmap->BitsPerPixel << " bits");
    place(CF_TEXT, Bytes{'a', 0});
    const Snapshot before(*c.bitmap);
    EXPECT_EQ(placed([&] { EXPECT_EQ(Zv_CopyToClipboardExt(window, c.bitmap, c.flags), KSUCCESS); }), c.formats);
    EXPECT_TRUE(before.unchanged());
    EXPECT_EQ(IsClipboardFormatAvailable(CF_TEXT) == FALSE, (c.flags & CLIP_EMPTY) != 0);
  }
  // With and without a window that will own the clipboard.
  for (HWND owner : {window, static_cast<HWND>(nullptr)}) {
    EXPECT_EQ(placed([&] { EXPECT_EQ(Zv_CopyToClipboard(owner, &direct), 1); }), ofDirect);
  }
}

// The system derives CF_DIB from CF_BITMAP by itself. While this lives only what was placed is seen by the library.
class NoDerivedDib {
  Replacement<"IsClipboardFormatAvailable", decltype(&IsClipboardFormatAvailable)> available_{
      [this](UINT format) { return format == CF_DIB ? FALSE : available_.original(format); }};
};

// Every depth and perspective comes back as it was seen, with the region. A device-dependent bitmap is read only where
// there is no other, in the colours of the palette that lies by it or of the screen.
TEST_F(Clipboard, BringsPicturesAndRegionsBack) {
  // Colours that every palette screen has.
  constexpr uint32_t colors[] = {0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0x800000, 0xC0C0C0, 0x008080};
  constexpr POINT corners[] = {{1, 1}, {29, 4}, {8, 11}};
  const CallCount rowsOfDdb("GetDIBits"), selections("SelectPalette");
  for (const int bits : allDepths) {
    for (const int perspective : allPerspectives) {
      for (const unsigned format :
           {unsigned{CLIP_DIB | CLIP_DDB}, unsigned{CLIP_DDB | CLIP_PALETTE}, unsigned{CLIP_DDB}}) {
        if (isPaletteScreen() && bits > 8 && format != (CLIP_DIB | CLIP_DDB)) continue;  // dithered
        SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective << ", flags " << format);
        Picture picture(31, 13);
        for (size_t i = 0; i < picture.pixels.size(); ++i) {
          picture.pixels[i] = colors[(i * 5 + i / 31) % (bits < 3 ? 1u << bits : 8)];
          if (bits >= 8 && !isPaletteScreen() && i % 3 != 0) picture.pixels[i] ^= i % 90 * 0x010307;
        }
        TestBitmap bitmap, back;
        makeSeen(bitmap, picture, bits, perspective);
        ASSERT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, corners, 3, POLYGON_WINDING, CombineSet), KSUCCESS);
        ASSERT_EQ(Zv_CopyToClipboardExt(window, &bitmap, CLIP_EMPTY | CLIP_REGION | format), KSUCCESS);
        std::optional<NoDerivedDib> noDib;
        if ((format & CLIP_DIB) == 0) noDib.emplace();
        EXPECT_NE(Zv_ClipboardReady(), 0);
        const unsigned rowsBefore = rowsOfDdb.get(), selectionsBefore = selections.get();
        ASSERT_EQ(Zv_CopyFromClipboard(window, &back), 1);
        EXPECT_EQ(rowsOfDdb.get() - rowsBefore, noDib ? 1u : 0u);
        const bool withPalette = noDib && (isPaletteScreen() || (format == (CLIP_DDB | CLIP_PALETTE) && bits <= 8));
        EXPECT_EQ(selections.get() - selectionsBefore, withPalette ? 2u : 0u) << "selected and taken out again";
        Picture received = seenOf(back);
        for (uint32_t& pixel : received.pixels) pixel &= bits == 16 ? 0xF8F8F8 : 0xFFFFFF;
        EXPECT_EQ(seenOf(bitmap), received);
        EXPECT_EQ(seenRegionOf(bitmap), seenRegionOf(back));
      }
    }
  }
}

TEST_F(Clipboard, RefusesWhatIsNoBitmapAndWindowsThatAreNone) {
  place(CF_TEXT, Bytes{'a', 0});
  TestBitmap none, bitmap(5, 5, 24);
  for (BitmapHandle* const bad : {static_cast<BitmapHandle*>(nullptr), static_cast<BitmapHandle*>(&none)}) {
    EXPECT_EQ(Zv_CopyToClipboardExt(window, bad, everything), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_CopyToClipboard(window, bad), 0);
    EXPECT_EQ(Zv_CopyFromClipboard(window, bad), 0);
  }
  const auto nowhere = reinterpret_cast<HWND>(static_cast<uintptr_t>(0x7F7F7F7E));
  EXPECT_EQ(Zv_CopyToClipboardExt(nowhere, &bitmap, CLIP_EMPTY | CLIP_DDB), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyToClipboardExt(nowhere, &bitmap, CLIP_EMPTY | CLIP_DIB), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyToClipboard(nowhere, &bitmap), 0);
  EXPECT_EQ(Zv_CopyFromClipboard(nowhere, &none), 0);
  EXPECT_TRUE(IsClipboardFormatAvailable(CF_TEXT));
  place(regionFormat(), packedDib({.bits = 1}));
  EXPECT_EQ(Zv_ClipboardReady(), 0);
  EXPECT_EQ(Zv_CopyFromClipboard(window, &none), 0) << "a region alone is no picture";
  EXPECT_EQ(none.Flags, 0u);
  ASSERT_EQ(Zv_CopyToClipboardExt(window, &bitmap, CLIP_DIB), KSUCCESS);
  EXPECT_EQ(Zv_CopyFromClipboard(nowhere, &none), 0);

  const Replacement<"SetClipboardData", decltype(&SetClipboardData)> full(
      [](UINT, HANDLE) -> HANDLE { return nullptr; });
  SelectedBitmap selected;
  const Ledger ledger;
  EXPECT_EQ(Zv_CopyToClipboardExt(window, &selected, everything), KSUCCESS);
  EXPECT_TRUE(ledger.balanced()) << "what the clipboard does not take is given back";
}

TEST_F(Clipboard, PlacingUnwinds) {
  RefusalRules rules;
  rules.codes = {KERR_NO_MEMORY, KERR_BAD_PARAMETER};  // the latter for device contexts and the clipboard
  // For the palettes alone: none is placed then, and none is selected while the DDB is painted.
  rules.survived = {"CreatePalette", "GlobalAlloc"};
  rules.leastPoints = 10;
  refuseEachResource(rules, [&](RefusalRound& round) {
    SelectedBitmap bitmap;
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

TEST_F(Clipboard, ReadingUnwinds) {
  SelectedBitmap bitmap;
  ASSERT_EQ(Zv_CopyToClipboardExt(window, &bitmap, everything), KSUCCESS);
  RefusalRules rules;
  rules.codes = {0};
  // Needed for the region alone, or for the screen's resolution.
  rules.survived = {"GlobalAlloc", "GlobalReAlloc", "CreateFileMappingA", "MapViewOfFile", "CreatePalette", "GetDC"};
  rules.leastPoints = 4;
  refuseEachResource(rules, [&](RefusalRound& round) {
    TestBitmap target;
    round.keeps(target);
    const int read = round.run([&] { return Zv_CopyFromClipboard(window, &target); });
    EXPECT_EQ(target.Width, read == 1 ? 37 : 0);
    EXPECT_TRUE(round.refused() != nullptr || seenRegionOf(bitmap) == seenRegionOf(target));
  });
}

// Packed DIBs that are not what they say; the block's end is where the memory that may be read ends.
TEST_F(Clipboard, DoesNotTrustPackedDibs) {
  constexpr size_t whole = ~size_t{0}, nowhere = ~size_t{0};
  const struct {
    const char* what;
    bool good;
    DibSpec layout;
    size_t bytes = whole;  // that are there
    size_t at = nowhere;   // where `value` is written
    uint32_t value = 0;
  } cases[] = {
      {"a good one", true, {}},
      {"a colour table before direct pixels", true, {.bits = 24, .colorsUsed = 5}},
      {"a byte short", false, {}, 40 + 1024 + 8 * 3 - 1},
      {"part of a header size", false, {}, 3},
      {"half a header", false, {}, 39},
      {"endless", false, {}, whole, 8, 0x7FFFFFFF},
      {"too many colours", false, {}, whole, 32, 0x40000001},
      {"a header size without end", false, {}, whole, 0, 0xFFFFFFFF},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Bytes bytes = packedDib(c.layout);
    if (c.at != nowhere) memcpy(bytes.data() + c.at, &c.value, sizeof c.value);
    bytes.resize(std::min(bytes.size(), c.bytes));
    empty();
    place(CF_DIB, bytes);
    TestBitmap target, picture;
    EXPECT_EQ(Zv_CopyFromClipboard(window, &target), c.good ? 1 : 0);
    EXPECT_EQ(target.allocated(), c.good);

    // The same as a region: a bad one is left out, a good one of another size than the picture too, or cut to it.
    place(CF_DIB, packedDib({.width = 7, .height = 5, .bits = 24}));
    place(regionFormat(), bytes);
    ASSERT_EQ(Zv_CopyFromClipboard(window, &picture), 1);
    EXPECT_EQ(picture.Width, 7);
    EXPECT_TRUE(c.good || picture.Region == nullptr);
  }
}

}  // namespace
