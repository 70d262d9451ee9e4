// Clipboard and capture on a palette screen of 8 bits.
#include <zavo.h>

#include <gtest/gtest.h>

#include "support/import_patch.h"
#include "support/platform_watch.h"
#include "support/refusals.h"
#include "support/seen_picture.h"

namespace {

using namespace zavotest;

// Colours that every palette screen has.
constexpr uint32_t fixedColors[] = {0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0x800000, 0xC0C0C0, 0x008080};

Picture fixedColorPicture() {
  Picture picture(45, 17);
  for (size_t i = 0; i < picture.pixels.size(); ++i) picture.pixels[i] = fixedColors[(i * 5 + i / 45) % 8];
  return picture;
}

class PaletteScreen : public testing::Test {
 protected:
  void SetUp() override {
    HDC screen = GetDC(nullptr);
    ASSERT_EQ(GetDeviceCaps(screen, BITSPIXEL), 8) << "these tests need a screen of 8 bits: script/screen 8";
    ReleaseDC(nullptr, screen);
    window = CreateWindowExA(WS_EX_TOPMOST, "STATIC", "shown", WS_POPUP | WS_VISIBLE, 30, 20, 60, 40, nullptr, nullptr,
                             nullptr, nullptr);
  }
  void TearDown() override {
    if (OpenClipboard(window)) {
      EmptyClipboard();
      CloseClipboard();
    }
    DestroyWindow(window);
  }

  HWND window = nullptr;
};

TEST_F(PaletteScreen, PlacesThePaletteThatPicturesAreDitheredTo) {
  std::vector<UINT> formats;
  std::vector<PALETTEENTRY> colors(257);
  const Replacement<"SetClipboardData", decltype(&SetClipboardData)> noted([&](UINT format, HANDLE data) {
    formats.push_back(format);
    if (format == CF_PALETTE) colors.resize(GetPaletteEntries(static_cast<HPALETTE>(data), 0, 257, colors.data()));
    return noted.original(format, data);
  });
  TestBitmap bitmap(45, 17, 24);
  ASSERT_EQ(Zv_CopyToClipboard(window, &bitmap), 1);
  EXPECT_EQ(formats, (std::vector<UINT>{CF_PALETTE, CF_DIB, CF_BITMAP}));
  const RGBQUAD* fixed = Zv_IntGetFixedPalette(8);
  ASSERT_EQ(colors.size(), 256u);
  for (size_t i = 0; i < colors.size(); ++i) {
    EXPECT_TRUE(colors[i].peRed == fixed[i].rgbRed && colors[i].peGreen == fixed[i].rgbGreen &&
                colors[i].peBlue == fixed[i].rgbBlue)
        << i;
  }
}

TEST_F(PaletteScreen, ReadsADeviceDependentBitmapInItsColours) {
  const Replacement<"IsClipboardFormatAvailable", decltype(&IsClipboardFormatAvailable)> placedOnly(
      [&](UINT format) { return format == CF_DIB ? FALSE : placedOnly.original(format); });
  const CallCount palettes("CreatePalette");
  for (const unsigned palette : {0u, unsigned{CLIP_PALETTE}}) {
    TestBitmap bitmap;
    makeSeen(bitmap, fixedColorPicture(), 8, VIEW_BOTTOM_UP);
    ASSERT_EQ(Zv_CopyToClipboardExt(window, &bitmap, CLIP_EMPTY | CLIP_DDB | palette), KSUCCESS);
    const unsigned before = palettes.get();
    TestBitmap back;
    const Ledger ledger;
    ASSERT_EQ(Zv_CopyFromClipboard(window, &back), 1);
    EXPECT_EQ(back.BitsPerPixel, 8);
    // The new bitmap's own, and without one on the clipboard a system palette for the occasion.
    EXPECT_EQ(palettes.get() - before, palette != 0 ? 1u : 2u);
    EXPECT_EQ(seenOf(back), fixedColorPicture());
    Zv_FreeBitmap(&back);
    EXPECT_TRUE(ledger.balanced());
  }
}

TEST_F(PaletteScreen, CapturesInTheScreensColours) {
  TestBitmap shown;
  makeSeen(shown, fixedColorPicture(), 24, VIEW_UPRIGHT);
  HDC dc = GetDC(window);
  const RECT rect = {0, 0, 45, 17};
  TestBitmap captured;
  MSG message;
  for (int attempt = 0; attempt < 50; ++attempt) {
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    const unsigned mode = Zv_SetDisplayMode(~0u, 0);
    Zv_PaintDC(dc, &shown, nullptr, nullptr, &rect, nullptr, SRCCOPY);
    Zv_SetDisplayMode(~0u, mode);
    GdiFlush();
    Zv_FreeBitmap(&captured);
    ASSERT_EQ(Zv_ScreenCaptureBitmap(dc, &captured, &rect), KSUCCESS);
    if (seenOf(captured) == fixedColorPicture()) break;
    Sleep(20);
  }
  EXPECT_EQ(captured.BitsPerPixel, 8);
  EXPECT_EQ(seenOf(captured), fixedColorPicture());

  RefusalRules rules;
  rules.codes = {KERR_NO_MEMORY, KERR_BAD_PARAMETER};          // the latter for the device context
  rules.survived = {"GetDC", "GlobalAlloc", "CreatePalette"};  // for the system palette and the resolution
  rules.leastPoints = 7;
  refuseEachResource(rules, [&](RefusalRound& round) {
    TestBitmap bitmap;
    round.keeps(bitmap);
    round.run([&] { return Zv_ScreenCaptureBitmap(dc, &bitmap, &rect); });
  });
  ReleaseDC(window, dc);
}

}  // namespace
