#include "display/paint_model.h"

#include <algorithm>

#include "support/canvas.h"
#include "support/seen_picture.h"

namespace zavotest {
namespace {

// The two matrices of ordered dithering.
constexpr int dispersed[8][8] = {{0, 128, 32, 160, 8, 136, 40, 168},   {192, 64, 224, 96, 200, 72, 232, 104},
                                 {48, 176, 16, 144, 56, 184, 24, 152}, {236, 112, 208, 80, 244, 120, 216, 88},
                                 {12, 140, 44, 172, 4, 132, 36, 164},  {204, 76, 232, 108, 196, 68, 228, 100},
                                 {60, 188, 28, 156, 52, 180, 20, 148}, {248, 124, 220, 92, 240, 116, 212, 84}};
constexpr int clustered[8][8] = {{112, 40, 72, 104, 144, 176, 208, 136}, {88, 8, 16, 48, 192, 232, 240, 168},
                                 {56, 24, 0, 80, 160, 224, 248, 200},    {96, 64, 32, 120, 128, 216, 184, 152},
                                 {148, 180, 212, 140, 116, 44, 76, 108}, {196, 236, 244, 172, 92, 12, 20, 52},
                                 {164, 228, 252, 204, 60, 28, 4, 84},    {132, 220, 188, 156, 100, 68, 36, 124}};

using Color = std::array<int, 3>;  // red, green, blue

int number(std::mt19937& random, int from, int to) {
  return from + static_cast<int>(random() % static_cast<unsigned>(to - from + 1));
}

RECT randomRect(std::mt19937& random, int width, int height) {
  RECT rect = {number(random, -4, width), number(random, -4, height), 0, 0};
  rect.right = number(random, rect.left, width + 4);
  rect.bottom = number(random, rect.top, height + 4);
  if (random() % 16 == 0) std::swap(rect.left, rect.right);
  return rect;
}

bool isTurned(const BitmapHandle& bitmap) {
  return bitmap.ViewPerspective == VIEW_TURNED_90 || bitmap.ViewPerspective == VIEW_TURNED_270;
}

// The seen picture, and which of its pixels a pixel of the destination takes.
class Source {
 public:
  Source(BitmapHandle& bitmap, const PaintRects& rects) : values_(seenValuesOf(bitmap)), colors_(seenOf(bitmap)) {
    // Five bits of a channel stand for eight.
    for (uint32_t& color : colors_.pixels) color |= bitmap.BitsPerPixel == 16 ? color >> 5 & 0x070707 : 0;
    const RECT all = {0, 0, bitmap.Width, bitmap.Height};
    whole = rects.source.value_or(all);
    clip_ = rects.sourceClip.value_or(whole);
    IntersectRect(&clip_, &clip_, &whole);
    IntersectRect(&clip_, &clip_, &all);
    if (isTurned(bitmap)) {
      Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &whole);
      Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &clip_);
    }
    if (rects.storedRows) {
      RECT rows = *rects.storedRows;
      Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &rows);
      IntersectRect(&clip_, &clip_, &rows);
    }
    destination = rects.destination;
    if (destination.top > destination.bottom) std::swap(destination.top, destination.bottom);
    destinationClip_ = rects.destinationClip.value_or(destination);
    IntersectRect(&destinationClip_, &destinationClip_, &destination);
  }

  [[nodiscard]] LONG width() const { return destination.right - destination.left; }
  [[nodiscard]] LONG height() const { return destination.bottom - destination.top; }

  // The seen pixel of a destination pixel; false when that is not painted.
  [[nodiscard]] bool find(LONG x, LONG y, POINT& seen) const {
    if (IsRectEmpty(&whole) || IsRectEmpty(&destination) || !PtInRect(&destinationClip_, {x, y})) return false;
    seen = {columnAt(x - destination.left), rowBelow(destination.bottom - 1 - y) - 1};
    return PtInRect(&clip_, seen) != FALSE;
  }

  [[nodiscard]] Color color(const POINT& seen) const {
    const uint32_t color = colors_.at(seen.x, seen.y);
    return {static_cast<int>(color >> 16), static_cast<int>(color >> 8 & 255), static_cast<int>(color & 255)};
  }

  // 255 without the share of 0 pixels of the seen pixels that shrink to this one of the destination.
  [[nodiscard]] int coverage(LONG x, LONG y) const {
    const LONG k = x - destination.left;
    const LONG j = destination.bottom - 1 - y;
    RECT area = {columnAt(k), rowBelow(j + 1), columnAt(k + 1), rowBelow(j)};
    area.right = std::max(area.right, area.left + 1);
    area.top = std::min(area.top, area.bottom - 1);
    int zeros = 0, all = 0;
    for (LONG sy = std::max(area.top, 0L); sy < std::min<LONG>(area.bottom, values_.height); ++sy) {
      for (LONG sx = std::max(area.left, 0L); sx < std::min<LONG>(area.right, values_.width); ++sx, ++all) {
        if (values_.at(sx, sy) == 0) ++zeros;
      }
    }
    return zeros < all ? 255 - zeros * 255 / all : 0;
  }

  RECT whole, destination;

 private:
  // Edges of the seen columns and rows of a destination pixel; rows count from below.
  [[nodiscard]] LONG columnAt(LONG k) const {
    return whole.left + static_cast<LONG>(int64_t{k} * (whole.right - whole.left) / width());
  }
  [[nodiscard]] LONG rowBelow(LONG k) const {
    return whole.bottom - static_cast<LONG>(int64_t{k} * (whole.bottom - whole.top) / height());
  }

  RECT clip_, destinationClip_;
  Picture values_, colors_;
};

// What a device of up to 8 bits shows.
class Ditherer {
 public:
  Ditherer(int bits, const AdjustTable& table) : bits_(bits), flags_(Zv_GetDisplayMode()), table_(table) {}

  [[nodiscard]] bool isOrdered() const { return (flags_ & PAINT_ORDERED_DITHER) != 0; }
  [[nodiscard]] Color adjusted(Color color) const {
    for (int& level : color) level = table_[static_cast<size_t>(level)];
    return color;
  }
  // One bit measures the colour and adjusts its luminance, more measure what is adjusted.
  [[nodiscard]] Color measured(const Color& color) const { return bits_ == 1 ? color : adjusted(color); }

  // The device's colour for a colour that was measured.
  [[nodiscard]] Color nearest(const Color& measured, int threshold = 127) const {
    const auto red = static_cast<unsigned>(measured[0]);
    const auto green = static_cast<unsigned>(measured[1]);
    const auto blue = static_cast<unsigned>(measured[2]);
    const auto full = [](bool bright) { return bright ? 255 : 0; };
    if (bits_ == 1) {
      const int level = full(table_[(2 * red + 5 * green + blue + 4) >> 3] > threshold);
      return {level, level, level};
    }
    if (bits_ == 4) return {full(red >= 128), full(green >= 128), full(blue >= 128)};
    if (isCube()) return {measured[0] / 51 * 51, measured[1] / 51 * 51, measured[2] / 51 * 51};
    const RGBQUAD& entry = Zv_IntGetFixedPalette(8)[(red & 0xE0) | (green >> 5) << 2 | blue >> 6];
    return {entry.rgbRed, entry.rgbGreen, entry.rgbBlue};
  }

  // The device's colour at a place, by the matrices.
  [[nodiscard]] Color ordered(Color color, LONG x, LONG y) const {
    const int m = dispersed[y & 7][x & 7];
    if (bits_ == 1) return nearest(color, (flags_ & PAINT_CLUSTERED_DOT) != 0 ? clustered[y & 7][x & 7] : m);
    const int term = bits_ == 4 ? m - 127 : isCube() ? m / 6 - 21 : (m >> 3) - 16;
    for (int& level : color) level = std::clamp(level + term, 0, 255);
    return nearest(measured(color));
  }

 private:
  [[nodiscard]] bool isCube() const { return (flags_ & PAINT_CUBE_PALETTE) != 0; }

  int bits_;
  unsigned flags_;
  const AdjustTable& table_;
};

void put(Picture& canvas, LONG x, LONG y, const Color& color) {
  if (x < 0 || x >= canvas.width || y < 0 || y >= canvas.height) return;
  canvas.at(x, y) = static_cast<uint32_t>(color[0] << 16 | color[1] << 8 | color[2]);
}

void paintDithered(Picture& canvas, const Source& source, bool turned, const Ditherer& ditherer) {
  const RECT& all = source.destination;
  if (IsRectEmpty(&all)) return;
  // In 16ths. They come from pixels beside the canvas as well.
  std::vector<Color> errors(static_cast<size_t>(source.width()) * static_cast<size_t>(source.height()));
  const auto errorsAt = [&](LONG x, LONG y) -> Color& {
    return errors[static_cast<size_t>((y - all.top) * source.width() + x - all.left)];
  };
  const LONG lines = turned ? source.width() : source.height();
  const LONG along = turned ? source.height() : source.width();
  for (LONG line = 0; line < lines; ++line) {
    for (LONG k = 0; k < along; ++k) {
      // Turned pictures go column by column, upwards, because their stored rows do.
      const LONG x = all.left + (turned ? line : k);
      const LONG y = turned ? all.bottom - 1 - k : all.top + line;
      POINT seen;
      if (!source.find(x, y, seen)) continue;
      Color color = source.color(seen);
      if (ditherer.isOrdered()) {
        put(canvas, x, y, ditherer.ordered(color, x - all.left, y - all.top));
        continue;
      }
      for (size_t i = 0; i < 3; ++i) color[i] = std::clamp(color[i] + errorsAt(x, y)[i] / 16, 0, 255);
      const Color measured = ditherer.measured(color);
      const Color chosen = ditherer.nearest(measured);
      put(canvas, x, y, chosen);
      const auto spread = [&](int step, int down, int share) {
        const LONG toX = turned ? x + down : x + step;
        const LONG toY = turned ? y - step : y + down;
        if (!source.find(toX, toY, seen)) return;
        for (size_t i = 0; i < 3; ++i) errorsAt(toX, toY)[i] += share * (measured[i] - chosen[i]);
      };
      spread(1, 0, 7);
      spread(-1, 1, 3);
      spread(0, 1, 5);
      spread(1, 1, 1);
    }
  }
}

}  // namespace

PaintRects randomRects(std::mt19937& random, const BitmapHandle& bitmap, int canvasWidth, int canvasHeight) {
  PaintRects rects;
  if (random() % 3 != 0) rects.source = randomRect(random, bitmap.Width, bitmap.Height);
  if (random() % 3 == 0) rects.sourceClip = randomRect(random, bitmap.Width, bitmap.Height);
  rects.destination = randomRect(random, canvasWidth, canvasHeight);
  if (random() % 3 == 0) {  // the same size
    const RECT source = rects.source.value_or(RECT{0, 0, bitmap.Width, bitmap.Height});
    const LONG width = source.right - source.left;
    const LONG height = source.bottom - source.top;
    rects.destination.right = rects.destination.left + (isTurned(bitmap) ? height : width);
    rects.destination.bottom = rects.destination.top + (isTurned(bitmap) ? width : height);
  }
  if (random() % 3 == 0) rects.destinationClip = randomRect(random, canvasWidth, canvasHeight);
  if (random() % 5 == 0) std::swap(rects.destination.top, rects.destination.bottom);
  return rects;
}

RandomBitmap::RandomBitmap(std::mt19937& random, int bits)
    : TestBitmap(number(random, 1, 40), number(random, 1, 40), bits,
                 bits == 1 && random() % 2 != 0 ? ALLOC_MEMORY | ALLOC_RUNLENGTH : ALLOC_MEMORY) {
  constexpr int perspectives[] = {1, 2, 4, 8, 0, 3};
  fillWithNoise(*this, random);
  if (bits <= 8) giveRandomPalette(*this, random);
  if (bits == 1 && random() % 3 != 0) {
    RGBQUAD blackAndWhite[] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
    if (random() % 2 != 0) std::swap(blackAndWhite[0], blackAndWhite[1]);
    DeleteObject(Palette);
    Palette = Zv_CreatePalette(blackAndWhite, 2);
  }
  ViewPerspective = perspectives[random() % std::size(perspectives)];
  if (bits > 8) ColorOrder = number(random, 0, 1);
}

// A grey paint palette is the table.
AdjustTable currentAdjustTable() {
  const unsigned mode = Zv_SetDisplayMode(~0u, PAINT_GRAY_1BIT);
  TestBitmap gray(1, 1, 1);
  const Canvas canvas(1, 1);
  HPALETTE palette = Zv_CreatePaintPalette(canvas.dc(), &gray);
  PALETTEENTRY entries[256] = {};
  GetPaletteEntries(palette, 0, 256, entries);
  DeleteObject(palette);
  Zv_SetDisplayMode(~0u, mode);
  AdjustTable table;
  for (size_t i = 0; i < 256; ++i) table[i] = entries[i].peRed;
  return table;
}

void paintModel(Picture& canvas, BitmapHandle& bitmap, const PaintRects& rects, int paintMode, int deviceBits,
                const AdjustTable& table) {
  const Source source(bitmap, rects);
  const Ditherer ditherer(std::min(deviceBits, 8), table);
  if (paintMode == 2 && (bitmap.BitsPerPixel > 1 || deviceBits >= 8)) {  // one bit is dithered to 256 colours only
    paintDithered(canvas, source, isTurned(bitmap), ditherer);
    return;
  }
  const bool gray = paintMode >= 3;  // at the same size these are black and white, as the picture is
  for (int y = 0; y < canvas.height; ++y) {
    for (int x = 0; x < canvas.width; ++x) {
      POINT seen;
      if (!source.find(x, y, seen)) continue;
      Color color = source.color(seen);
      if (gray) color.fill(paintMode % 2 == 0 ? 255 - source.coverage(x, y) : source.coverage(x, y));
      put(canvas, x, y, ditherer.adjusted(color));
    }
  }
}

}  // namespace zavotest
