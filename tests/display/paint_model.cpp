#include "display/paint_model.h"

#include <algorithm>
#include <sstream>

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

int clamped(int value) {
  return std::clamp(value, 0, 255);
}

int number(std::mt19937& random, int from, int to) {
  return from + static_cast<int>(random() % static_cast<unsigned>(to - from + 1));
}

RECT randomRect(std::mt19937& random, int width, int height) {
  RECT rect = {number(random, -4, width), number(random, -4, height), 0, 0};
  rect.right = number(random, rect.left, width + 4);
  rect.bottom = number(random, rect.top, height + 4);
  return rect;
}

int luminance(int red, int green, int blue) {
  return (2 * red + 5 * green + blue + 4) >> 3;
}

}  // namespace

PaintRects randomRects(std::mt19937& random, const BitmapHandle& bitmap, int canvasWidth, int canvasHeight) {
  PaintRects rects;
  if (random() % 3 != 0) rects.source = randomRect(random, bitmap.Width, bitmap.Height);
  if (random() % 3 == 0) rects.sourceClip = randomRect(random, bitmap.Width, bitmap.Height);
  rects.destination = randomRect(random, canvasWidth, canvasHeight);
  if (random() % 3 == 0) {  // the same size
    const RECT source = rects.source.value_or(RECT{0, 0, bitmap.Width, bitmap.Height});
    const bool turned = bitmap.ViewPerspective == VIEW_TURNED_90 || bitmap.ViewPerspective == VIEW_TURNED_270;
    const LONG width = source.right - source.left;
    const LONG height = source.bottom - source.top;
    rects.destination.right = rects.destination.left + (turned ? height : width);
    rects.destination.bottom = rects.destination.top + (turned ? width : height);
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
  ViewPerspective = perspectives[random() % std::size(perspectives)];
  if (bits > 8) ColorOrder = number(random, 0, 1);
}

void giveBlackAndWhite(BitmapHandle& bitmap, bool descending) {
  RGBQUAD colors[] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
  if (descending) std::swap(colors[0], colors[1]);
  DeleteObject(bitmap.Palette);
  bitmap.Palette = Zv_CreatePalette(colors, 2);
}

std::string describe(const BitmapHandle& bitmap, const PaintRects& rects) {
  std::ostringstream text;
  const auto say = [&text](const char* name, const std::optional<RECT>& r) {
    if (r) text << name << ' ' << r->left << ',' << r->top << ',' << r->right << ',' << r->bottom << '\n';
  };
  text << bitmap.Width << " x " << bitmap.Height << ", " << bitmap.BitsPerPixel << " bits, perspective "
       << bitmap.ViewPerspective << ", order " << bitmap.ColorOrder << ", handle flags " << bitmap.Flags << '\n';
  say("source", rects.source);
  say("source clip", rects.sourceClip);
  say("destination", rects.destination);
  say("destination clip", rects.destinationClip);
  return text.str();
}

// A grey paint palette is the table.
AdjustTable currentAdjustTable() {
  const unsigned mode = Zv_SetDisplayMode(~0u, PAINT_GRAY_1BIT);
  TestBitmap gray(1, 1, 1);
  HDC dc = CreateCompatibleDC(nullptr);
  HPALETTE palette = Zv_CreatePaintPalette(dc, &gray);
  PALETTEENTRY entries[256] = {};
  GetPaletteEntries(palette, 0, 256, entries);
  DeleteObject(palette);
  DeleteDC(dc);
  Zv_SetDisplayMode(~0u, mode);
  AdjustTable table;
  for (size_t i = 0; i < 256; ++i) table[i] = entries[i].peRed;
  return table;
}

// The seen picture, and which of its pixels a pixel of the destination takes.
struct PaintModel::Source {
  Source(BitmapHandle& bitmap, const PaintRects& rects) : values_(seenValuesOf(bitmap)), colors_(seenOf(bitmap)) {
    // Five bits of a channel stand for eight.
    for (uint32_t& color : colors_.pixels) color |= bitmap.BitsPerPixel == 16 ? color >> 5 & 0x070707 : 0;
    RECT all = {0, 0, bitmap.Width, bitmap.Height};
    whole = rects.source.value_or(all);
    clip = rects.sourceClip.value_or(whole);
    IntersectRect(&clip, &clip, &whole);
    IntersectRect(&clip, &clip, &all);
    const bool turned = bitmap.ViewPerspective == VIEW_TURNED_90 || bitmap.ViewPerspective == VIEW_TURNED_270;
    if (turned) {
      Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &whole);
      Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &clip);
    }
    Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &all);
    seen = all;
    if (rects.storedRows) {
      RECT rows = *rects.storedRows;
      Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &rows);
      IntersectRect(&clip, &clip, &rows);
    }
    destination = rects.destination;
    if (destination.top > destination.bottom) std::swap(destination.top, destination.bottom);
    destinationClip = rects.destinationClip.value_or(destination);
    IntersectRect(&destinationClip, &destinationClip, &destination);
  }

  // Edges of the seen columns and rows of a destination pixel; rows count from below.
  [[nodiscard]] LONG columnAt(LONG k) const {
    return whole.left + static_cast<LONG>(int64_t{k} * (whole.right - whole.left) / width());
  }
  [[nodiscard]] LONG rowBelow(LONG k) const {
    return whole.bottom - static_cast<LONG>(int64_t{k} * (whole.bottom - whole.top) / height());
  }
  [[nodiscard]] LONG width() const { return destination.right - destination.left; }
  [[nodiscard]] LONG height() const { return destination.bottom - destination.top; }

  // The seen pixel of a destination pixel; false when that is not painted.
  [[nodiscard]] bool find(LONG x, LONG y, int& column, int& row) const {
    const POINT at = {x, y};
    if (IsRectEmpty(&whole) || IsRectEmpty(&destination) || !PtInRect(&destinationClip, at)) return false;
    column = columnAt(x - destination.left);
    row = rowBelow(destination.bottom - 1 - y) - 1;
    const POINT from = {column, row};
    return PtInRect(&clip, from) != FALSE;
  }

  // Stored value of a seen pixel.
  [[nodiscard]] uint32_t value(int column, int row) const { return values_.at(column, row); }

  [[nodiscard]] Color color(int column, int row) const {
    const uint32_t color = colors_.at(column, row);
    return {static_cast<int>(color >> 16), static_cast<int>(color >> 8 & 255), static_cast<int>(color & 255)};
  }

  RECT whole, clip, seen, destination, destinationClip;

 private:
  Picture values_;
  Picture colors_;
};

void PaintModel::paint(BitmapHandle& bitmap, const PaintRects& rects, int paintMode, int deviceBits) {
  flags_ = Zv_GetDisplayMode();
  const Source source(bitmap, rects);
  const bool turned = bitmap.ViewPerspective == VIEW_TURNED_90 || bitmap.ViewPerspective == VIEW_TURNED_270;
  if (paintMode >= 3) {
    paintGray(source, paintMode % 2 == 0);
  } else if (paintMode == 2) {
    paintDithered(source, turned, std::min(deviceBits, 8));
  } else {
    paintColors(source);
  }
}

void PaintModel::put(LONG x, LONG y, const Color& color) {
  if (x < 0 || x >= width_ || y < 0 || y >= height_) return;
  const auto value = static_cast<uint32_t>(color.red << 16 | color.green << 8 | color.blue);
  pixels_[static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x)] = value;
}

PaintModel::Color PaintModel::adjusted(const Color& color) const {
  const auto look = [this](int level) { return table_[static_cast<size_t>(level)]; };
  return {look(color.red), look(color.green), look(color.blue)};
}

void PaintModel::paintColors(const Source& source) {
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      int column, row;
      if (source.find(x, y, column, row)) put(x, y, adjusted(source.color(column, row)));
    }
  }
}

// Darkness is the share of 0 pixels of the seen pixels that shrink to one.
void PaintModel::paintGray(const Source& source, bool inverted) {
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      int column, row;
      if (!source.find(x, y, column, row)) continue;
      const LONG k = x - source.destination.left;
      const LONG j = source.destination.bottom - 1 - y;
      RECT area = {source.columnAt(k), source.rowBelow(j + 1), source.columnAt(k + 1), source.rowBelow(j)};
      area.right = std::max(area.right, area.left + 1);
      area.top = std::min(area.top, area.bottom - 1);
      int zeros = 0, all = 0;
      for (LONG sy = area.top; sy < area.bottom; ++sy) {
        for (LONG sx = area.left; sx < area.right; ++sx) {
          const POINT at = {sx, sy};
          if (!PtInRect(&source.seen, at)) continue;
          ++all;
          if (source.value(sx, sy) == 0) ++zeros;
        }
      }
      int level = zeros < all ? 255 - zeros * 255 / all : 0;
      if (inverted) level = 255 - level;
      put(x, y, adjusted({level, level, level}));
    }
  }
}

unsigned PaintModel::indexOf(const Color& color, int bits) const {
  const auto red = static_cast<unsigned>(color.red);
  const auto green = static_cast<unsigned>(color.green);
  const auto blue = static_cast<unsigned>(color.blue);
  if (bits == 4) {
    const unsigned bright = (red >= 128 ? 1u : 0) + (green >= 128 ? 2u : 0) + (blue >= 128 ? 4u : 0);
    return bright == 0 ? 0 : bright + 8;
  }
  if ((flags_ & PAINT_CUBE_PALETTE) != 0) return red / 51 * 36 + green / 51 * 6 + blue / 51;
  return (red & 0xE0) | (green >> 5) << 2 | blue >> 6;
}

PaintModel::Color PaintModel::target(unsigned index, int bits) const {
  if (bits == 1) return index != 0 ? Color{255, 255, 255} : Color{0, 0, 0};
  if (bits == 4) return {(index & 1) != 0 ? 255 : 0, (index & 2) != 0 ? 255 : 0, (index & 4) != 0 ? 255 : 0};
  if ((flags_ & PAINT_CUBE_PALETTE) != 0) {
    return {static_cast<int>(index / 36 * 51), static_cast<int>(index / 6 % 6 * 51), static_cast<int>(index % 6 * 51)};
  }
  const RGBQUAD& entry = Zv_IntGetFixedPalette(8)[index];
  return {entry.rgbRed, entry.rgbGreen, entry.rgbBlue};
}

void PaintModel::paintDithered(const Source& source, bool turned, int bits) {
  struct Errors {
    int red = 0, green = 0, blue = 0;
  };
  // Errors come from pixels beside the device as well.
  const RECT& all = source.destination;
  if (IsRectEmpty(&all)) return;
  std::vector<Errors> carried(static_cast<size_t>(source.width()) * static_cast<size_t>(source.height()));
  const auto carriedAt = [&](LONG x, LONG y) -> Errors& {
    return carried[static_cast<size_t>((y - all.top) * source.width() + x - all.left)];
  };
  const bool ordered = (flags_ & PAINT_ORDERED_DITHER) != 0;
  const LONG lines = turned ? source.width() : source.height();
  const LONG along = turned ? source.height() : source.width();
  for (LONG line = 0; line < lines; ++line) {
    for (LONG k = 0; k < along; ++k) {
      // Turned pictures go column by column, upwards, because their stored rows do.
      const LONG x = all.left + (turned ? line : k);
      const LONG y = turned ? all.bottom - 1 - k : all.top + line;
      int column, row;
      if (!source.find(x, y, column, row)) continue;
      Color color = source.color(column, row);
      if (ordered) {
        const LONG my = (y - source.destination.top) & 7;
        const LONG mx = (x - source.destination.left) & 7;
        const int m = dispersed[my][mx];
        if (bits == 1) {
          const int threshold = (flags_ & PAINT_CLUSTERED_DOT) != 0 ? clustered[my][mx] : m;
          const int level = table_[static_cast<size_t>(luminance(color.red, color.green, color.blue))];
          put(x, y, target(threshold < level ? 1 : 0, 1));
          continue;
        }
        const int term = bits == 4 ? m - 127 : (flags_ & PAINT_CUBE_PALETTE) != 0 ? m / 6 - 21 : (m >> 3) - 16;
        color = {clamped(color.red + term), clamped(color.green + term), clamped(color.blue + term)};
        put(x, y, target(indexOf(adjusted(color), bits), bits));
        continue;
      }
      const Errors& here = carriedAt(x, y);
      color = {clamped(color.red + here.red / 16), clamped(color.green + here.green / 16),
               clamped(color.blue + here.blue / 16)};
      unsigned index;
      Color measured = color;
      if (bits == 1) {
        index = table_[static_cast<size_t>(luminance(color.red, color.green, color.blue))] >> 7;
      } else {
        measured = adjusted(color);
        index = indexOf(measured, bits);
      }
      const Color chosen = target(index, bits);
      put(x, y, chosen);
      const auto spread = [&](int step, int down, int share) {
        const LONG toX = turned ? x + down : x + step;
        const LONG toY = turned ? y - step : y + down;
        int c, r;
        if (!source.find(toX, toY, c, r)) return;
        Errors& to = carriedAt(toX, toY);
        to.red += share * (measured.red - chosen.red);
        to.green += share * (measured.green - chosen.green);
        to.blue += share * (measured.blue - chosen.blue);
      };
      spread(1, 0, 7);
      spread(-1, 1, 3);
      spread(0, 1, 5);
      spread(1, 1, 1);
    }
  }
}

}  // namespace zavotest
