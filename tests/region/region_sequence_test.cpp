// Random sequences of everything that changes a region, against a set of pixels.
#include <string>

#include "region/region_model.h"

namespace zavotest {
namespace {

using Random = std::mt19937;

int between(Random& random, int lowest, int highest) {
  return lowest + static_cast<int>(random() % static_cast<unsigned>(highest - lowest + 1));
}

enum class Kind { rectangle, ellipse, roundedRectangle, polygon, handle };

// A shape in its own coordinates.
struct Shape {
  Kind kind = Kind::rectangle;
  RECT rect = {};
  int corner = 0;
  std::vector<POINT> points = {};
  bool winding = false;
  HRGN system = nullptr;  // its pixels; null for a rectangle without any

  Shape() = default;
  Shape(const Shape&) = delete;
  ~Shape() {
    if (system != nullptr) DeleteObject(system);
  }
};

RECT randomRect(Random& random, int width, int height) {
  RECT rect = {between(random, -8, width + 4), between(random, -8, height + 4), 0, 0};
  rect.right = rect.left + between(random, 0, width);
  rect.bottom = rect.top + between(random, 0, height);
  return rect;
}

void makeShape(Shape& shape, Random& random, int width, int height) {
  shape.kind = static_cast<Kind>(random() % 5);
  shape.rect = randomRect(random, width, height);
  RECT& rect = shape.rect;
  if (shape.kind == Kind::ellipse || shape.kind == Kind::roundedRectangle) {
    // The system's curves have undefined rows when they are tall and narrow.
    rect.right = std::max(rect.right, rect.left + 4);
    rect.bottom = rect.top + std::max<LONG>(2, std::min(rect.bottom - rect.top, rect.right - rect.left));
  }
  switch (shape.kind) {
    case Kind::rectangle:
      if (rect.left < rect.right && rect.top < rect.bottom) shape.system = CreateRectRgnIndirect(&rect);
      break;
    case Kind::ellipse:
      shape.system = CreateEllipticRgnIndirect(&rect);
      break;
    case Kind::roundedRectangle:
      shape.corner = between(random, 0, 12);
      shape.system = CreateRoundRectRgn(rect.left, rect.top, rect.right, rect.bottom, shape.corner, shape.corner);
      break;
    case Kind::polygon:
      shape.points.resize(random() % 6 + 3);
      for (POINT& point : shape.points) point = {between(random, -8, width + 8), between(random, -8, height + 8)};
      shape.winding = random() % 2 != 0;
      shape.system = CreatePolygonRgn(shape.points.data(), static_cast<int>(shape.points.size()),
                                      shape.winding ? WINDING : ALTERNATE);
      break;
    case Kind::handle:
      shape.system = CreateRectRgn(0, 0, 0, 0);
      for (unsigned i = random() % 12 + 1; i > 0; --i) {
        const RECT part = randomRect(random, width / 2 + 1, height / 2 + 1);
        HRGN piece = CreateRectRgnIndirect(&part);
        CombineRgn(shape.system, shape.system, piece, RGN_XOR);
        DeleteObject(piece);
      }
      break;
  }
}

int setRegion(BitmapHandle& bitmap, const Shape& shape, const RegionXForm* xform, int mode) {
  switch (shape.kind) {
    case Kind::rectangle:
      return Zv_SetBitmapRgnRect(&bitmap, xform, &shape.rect, mode);
    case Kind::ellipse:
      return Zv_SetBitmapRgnEllipse(&bitmap, xform, &shape.rect, mode);
    case Kind::roundedRectangle:
      return Zv_SetBitmapRgnRoundRect(&bitmap, xform, &shape.rect, shape.corner, shape.corner, mode);
    case Kind::polygon:
      return Zv_SetBitmapRgnPolygon(&bitmap, xform, shape.points.data(), static_cast<int>(shape.points.size()),
                                    shape.winding ? POLYGON_WINDING : POLYGON_ALTERNATE, mode);
    default:
      return Zv_SetBitmapRgnHandle(&bitmap, xform, shape.system, mode);
  }
}

RegionXForm randomTransform(Random& random) {
  static constexpr int perspectives[] = {0, 2, 4, 8};
  static constexpr int scales[] = {1, 1, 2, 3, 5};
  return {perspectives[random() % 4], scales[random() % 5],   scales[random() % 5],  scales[random() % 5],
          scales[random() % 5],       between(random, -6, 6), between(random, -6, 6)};
}

// The pixels of the bitmap that a shape covers. `vanished`: nothing is left of its bounding box.
PointSet covered(BitmapHandle& bitmap, HRGN system, const RegionXForm* given, bool& vanished) {
  const RegionXForm xform = given != nullptr ? *given : RegionXForm{bitmap.ViewPerspective, 1, 1, 1, 1, 0, 0};
  const auto mapX = [&](int x) { return (x + xform.XOffset) * xform.XScaleNumerator / xform.XScaleDenominator; };
  const auto mapY = [&](int y) { return (y + xform.YOffset) * xform.YScaleNumerator / xform.YScaleDenominator; };
  PointSet set(bitmap.Width, bitmap.Height);
  RECT box = {};
  GetRgnBox(system, &box);
  vanished = mapX(box.left) >= mapX(box.right) || mapY(box.top) >= mapY(box.bottom);

  for (int y = box.top; y < box.bottom; ++y) {
    for (int x = box.left; x < box.right; ++x) {
      if (PtInRegion(system, x, y) == 0) continue;
      // Runs are scaled as wholes, so a pixel's share of its run is what lies between its own scaled edges.
      for (int mappedY = mapY(y); mappedY < mapY(y + 1); ++mappedY) {
        for (int mappedX = mapX(x); mappedX < mapX(x + 1); ++mappedX) {
          int storedX = mappedX;
          int storedY = mappedY;
          Zv_PointToBitmap(&bitmap, xform.ViewPerspective, &storedX, &storedY);
          set.put(storedX, storedY);
        }
      }
    }
  }
  return set;
}

bool combined(int mode, bool existing, bool shape) {
  switch (mode) {
    case CombineAnd:
      return existing && shape;
    case CombineSet:
      return shape;
    case CombineAndNotBitmap:
      return shape && !existing;
    case CombineAndNotRegion:
      return existing && !shape;
    case CombineOr:
      return existing || shape;
    case CombineXor:
      return existing != shape;
    default:
      return !shape;
  }
}

// The answers about a region, and about what lies outside the bitmap.
void expectAnswers(BitmapHandle& bitmap, const PointSet& model) {
  unsigned area = 0;
  EXPECT_EQ(Zv_GetBitmapRgnArea(&bitmap, &area), KSUCCESS);
  EXPECT_EQ(area, model.count());
  for (int y = -2; y < bitmap.Height + 2; ++y) {
    for (int x = -2; x < bitmap.Width + 2; ++x) ASSERT_EQ(Zv_IsPtInBitmapRgn(&bitmap, y, x), model.has(x, y) ? 1 : 0);
  }
  EXPECT_EQ(Zv_IsPtInBitmapRgn(&bitmap, 0x7FFFFFFF, 0), 0);
  for (const int row : {-1, bitmap.Height, 0x7FFFFFFF}) {
    unsigned count = 99;
    int segments[2] = {};
    EXPECT_EQ(Zv_GetBitmapClipSegments(&bitmap, row, segments, &count), KSUCCESS);
    EXPECT_EQ(count, Zv_BitmapHasRgn(&bitmap) == 0 ? 2u : 0u) << "row " << row;
  }
  RECT bounds = {};
  unsigned most = 0;
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
  EXPECT_EQ(Zv_GetBitmapClipSegmentsMax(&bitmap, &most), KSUCCESS);
  const auto width = static_cast<unsigned>(bounds.right - bounds.left);
  EXPECT_EQ(most, Zv_BitmapHasRgn(&bitmap) == 0 ? 2u : (width + 1) / 2 * 2) << "room for single pixels";
}

TEST(RegionSequence, FollowsASetOfPixels) {
  static constexpr int perspectives[] = {1, 2, 4, 8};
  for (unsigned seed = 1; seed <= 60; ++seed) {
    Random random(seed);
    const int width = between(random, 1, 40);
    const int height = between(random, 1, 30);
    RegionBitmap bitmap(width, height, perspectives[seed % 4]);
    PointSet model(width, height);
    model.putRect({0, 0, width, height});

    bool present = false;
    for (int step = 0; step < 25; ++step) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
      if (random() % 6 == 0) {
        present = true;
        const int rows = between(random, -height / 2, height / 2);
        const int columns = between(random, -width / 2, width / 2);
        ASSERT_EQ(Zv_OffsetBitmapRgn(&bitmap, rows, columns), KSUCCESS);
        const PointSet before = model;
        model.fill([&](int x, int y) { return before.has(x - columns, y - rows); });
      } else if (random() % 6 == 0) {
        ASSERT_EQ(Zv_FreeBitmapRgn(&bitmap), KSUCCESS);
        present = false;
        model.putRect({0, 0, width, height});
      } else {
        Shape shape;
        makeShape(shape, random, width, height);
        const RegionXForm transform = randomTransform(random);
        const RegionXForm* const xform = random() % 2 != 0 ? &transform : nullptr;
        const int mode = between(random, 0, 6);
        SCOPED_TRACE(testing::Message() << "shape " << static_cast<int>(shape.kind) << ", mode " << mode);

        RECT box = {};
        const bool noPixels = shape.system == nullptr || GetRgnBox(shape.system, &box) == NULLREGION;
        const bool fails = noPixels && shape.kind != Kind::rectangle;
        ASSERT_EQ(setRegion(bitmap, shape, xform, mode), fails ? KERR_BAD_PARAMETER : KSUCCESS);
        if (!noPixels) {
          bool vanished = false;
          const PointSet pixels = covered(bitmap, shape.system, xform, vanished);
          const PointSet before = model;
          if (!vanished) model.fill([&](int x, int y) { return combined(mode, before.has(x, y), pixels.has(x, y)); });
          present = present || !vanished;
        }
      }
      ASSERT_TRUE(isWellFormed(bitmap));
      ASSERT_EQ(pointsOf(bitmap), model);
      ASSERT_EQ(Zv_BitmapHasRgn(&bitmap), present ? 1 : 0) << "an empty region is one";
      expectAnswers(bitmap, model);
    }
  }
}

}  // namespace
}  // namespace zavotest
