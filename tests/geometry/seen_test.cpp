// Pictures flipped, turned, sheared and stored in other perspectives: what a user sees before and after.
#include <zavo.h>

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string_view>

#include "support/platform_watch.h"
#include "support/seen_picture.h"

namespace {

using namespace zavotest;

constexpr COLORREF indexZero = 0x01000000;

TEST(MirrorLine, ReversesPixelsAtEveryDepthAndWidth) {
  std::mt19937 random(20);
  for (const int bits : allDepths) {
    for (int width = 1; width <= 130; ++width) {
      SCOPED_TRACE(testing::Message() << bits << " bits, width " << width);
      TestBitmap bitmap(width, 1, bits);
      fillWithNoise(bitmap, random);
      const Picture before = pictureOf(bitmap);
      std::vector<uint8_t> row = bytesOf(bitmap);
      const auto bytes = static_cast<size_t>((width * bits + 7) / 8);
      row.resize(bytes);
      row.resize(bytes + 4, 0xA5);
      ASSERT_EQ(Zv_MirrorLine(row.data(), static_cast<unsigned>(width), bits), KSUCCESS);
      for (size_t i = bytes; i < row.size(); ++i) ASSERT_EQ(row[i], 0xA5) << "byte behind the row";
      if (const size_t unused = bytes * 8 - static_cast<size_t>(width * bits); unused != 0) {
        ASSERT_EQ(row[bytes - 1] & ((1 << unused) - 1), 0) << "bits behind the last pixel";
      }
      Zv_PutBitmapRow(&bitmap, row.data(), 0, static_cast<unsigned>(bytes));
      const Picture after = pictureOf(bitmap);
      for (int x = 0; x < width; ++x) ASSERT_EQ(after.at(x, 0), before.at(width - 1 - x, 0)) << x;
    }
  }
}

// Each pixel is that of `picture` at from(x, y), or 0 outside.
template <typename From>
Picture moved(const Picture& picture, int width, int height, From from) {
  Picture result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const POINT at = from(x, y);
      result.at(x, y) = picture.orZero(at.x, at.y);
    }
  }
  return result;
}

// One clockwise quarter at a time: what was on the left comes to the top.
Picture turned(const Picture& picture, int quarters) {
  if (quarters == 0) return picture;
  const Picture once = moved(picture, picture.height, picture.width, [&](int x, int y) {
    return POINT{y, picture.height - 1 - x};
  });
  return turned(once, quarters - 1);
}

// Rows move to the right, the lower the further; columns rise to the right, from the bottom of the room they have.
Picture sheared(const Picture& picture, int angle, bool horizontal) {
  const int sine = Zv_SinValue(std::abs(angle)), cosine = Zv_SinValue(9000 - std::abs(angle));
  const int room = sine * (horizontal ? picture.height : picture.width) / cosine;
  return moved(picture, picture.width + (horizontal ? room : 0), picture.height + (horizontal ? 0 : room),
               [&](int x, int y) -> POINT {
                 // The remainder has to be exceeded, not only reached.
                 const int line = horizontal ? y : x, rest = line * (sine % cosine);
                 const int shift = line * (sine / cosine) + (rest > 0 ? (rest - 1) / cosine : 0);
                 const int there = angle < 0 ? room - shift : shift;
                 return horizontal ? POINT{x - there, y} : POINT{x, y - (room - there)};
               });
}

// At 8.13 and 33.69 degrees the shift is a ratio of small numbers: 1 / 7 and 2 / 3.
constexpr int angles[] = {0, 700, 813, 3369, 4500, -813, -1500, -4500};

// `number` picks an angle or a perspective.
struct Operation {
  const char* name;
  int (*run)(BitmapHandle& bitmap, size_t number);
  Picture (*model)(const Picture& before, size_t number);
  bool exchangesSides = false;
};

COLORREF zeroIn(const BitmapHandle& bitmap) {
  return bitmap.BitsPerPixel <= 8 ? indexZero : 0;
}

// A change that fails at first leaves the picture, so that the second comes to the same.
int changePerspective(BitmapHandle& bitmap, size_t number) {
  const Picture before = seenValuesOf(bitmap);
  {
    const Refusal refusal(anyResource, 1);
    (void)Zv_ChangeBitmapViewPerspective(nullptr, &bitmap, allPerspectives[number]);
  }
  EXPECT_TRUE(seenValuesOf(bitmap) == before);
  return Zv_ChangeBitmapViewPerspective(nullptr, &bitmap, allPerspectives[number]);
}

int copyInPerspective(BitmapHandle& bitmap, size_t number) {
  TestBitmap copy;
  const int status = Zv_ChangeBitmapViewPerspective(&copy, &bitmap, allPerspectives[number]);
  std::swap(bitmap, static_cast<BitmapHandle&>(copy));
  return status;
}

template <int horizontal>
int shear(BitmapHandle& bitmap, size_t number) {
  return Zv_ShearBitmap(&bitmap, angles[number], horizontal, zeroIn(bitmap));
}

template <int degrees>
int turnAsSeen(BitmapHandle& bitmap, size_t) {
  return Zv_RotateBitmapViewPerspective(&bitmap, degrees);
}

Picture same(const Picture& picture, size_t) {
  return picture;
}

Picture flipped(const Picture& picture, size_t) {
  return moved(picture, picture.width, picture.height, [&](int x, int y) { return POINT{x, picture.height - 1 - y}; });
}

template <int quarters>
Picture turnedBy(const Picture& picture, size_t) {
  return turned(picture, quarters);
}

template <bool horizontal>
Picture shearedBy(const Picture& picture, size_t number) {
  return sheared(picture, angles[number], horizontal);
}

constexpr Operation operations[] = {
    {"flip", [](BitmapHandle& bitmap, size_t) { return Zv_FlipBitmap(&bitmap); }, flipped},
    {"reverse", [](BitmapHandle& bitmap, size_t) { return Zv_ReverseBitmap(&bitmap); },
     [](const Picture& picture, size_t) { return turned(flipped(picture, 0), 2); }},
    {"quarter", [](BitmapHandle& bitmap, size_t) { return Zv_RotateBitmap(&bitmap, -630, ROTATE_RESIZE, 0); },
     turnedBy<1>, true},
    {"half", [](BitmapHandle& bitmap, size_t) { return Zv_RotateBitmapFine(&bitmap, 18000, 0, 0); }, turnedBy<2>},
    {"three quarters", [](BitmapHandle& bitmap, size_t) { return Zv_RotateBitmap(&bitmap, 270, ROTATE_RESIZE, 0); },
     turnedBy<3>, true},
    {"quarter as seen", turnAsSeen<90>, turnedBy<1>, true},
    {"half as seen", turnAsSeen<-180>, turnedBy<2>},
    {"three quarters as seen", turnAsSeen<270>, turnedBy<3>, true},
    {"perspective", changePerspective, same},
    {"copy in a perspective", copyInPerspective, same},
    {"shear along", shear<1>, shearedBy<true>},
    {"shear across", shear<0>, shearedBy<false>},
};

bool isTurned(const BitmapHandle& bitmap) {
  return bitmap.ViewPerspective == VIEW_TURNED_90 || bitmap.ViewPerspective == VIEW_TURNED_270;
}

TEST(SeenPicture, GoesWhereEveryOperationSays) {
  static constexpr SIZE sizes[] = {{1, 1}, {9, 5}, {64, 64}, {131, 40}, {9, 530}, {530, 9}, {5, 1}, {38, 13}};
  std::mt19937 random(30);
  for (const Operation& operation : operations) {
    for (const int bits : allDepths) {
      for (const auto& [width, height] : sizes) {
        const int memoryType = random() % 2 != 0 ? int{ALLOC_MEMORY} : ALLOC_MEMORY | ALLOC_RUNLENGTH;
        TestBitmap bitmap(width, height, bits, memoryType);
        const int perspective = allPerspectives[random() % 4];
        bitmap.ViewPerspective = perspective;
        const size_t number = random() % (operation.model == same ? 4 : 8);
        SCOPED_TRACE(testing::Message() << operation.name << ", " << bits << " bits, " << width << " x " << height
                                        << ", perspective " << perspective << ", number " << number);
        fillWithNoise(bitmap, random);
        const Picture before = seenValuesOf(bitmap);
        bitmap.XResolution = isTurned(bitmap) ? 100 : 200;
        bitmap.YResolution = isTurned(bitmap) ? 200 : 100;
        ASSERT_EQ(operation.run(bitmap, number), KSUCCESS);
        ASSERT_TRUE(seenValuesOf(bitmap) == operation.model(before, number));
        ASSERT_EQ(bitmap.XResolution, isTurned(bitmap) != operation.exchangesSides ? 100 : 200) << "goes with the rows";
        if (std::string_view(operation.name).ends_with("as seen")) continue;
        ASSERT_EQ(bitmap.ViewPerspective, operation.model == same ? allPerspectives[number] : perspective);
      }
    }
  }
}

TEST(SeenPicture, TurnsByItsCodeAloneWhereThereIsOne) {
  TestBitmap bitmap(12, 7, 8);
  const unsigned char* const pixels = bitmap.Data;
  ASSERT_EQ(Zv_RotateBitmapViewPerspective(&bitmap, 450), KSUCCESS);
  EXPECT_EQ(bitmap.ViewPerspective, VIEW_TURNED_90);
  EXPECT_EQ(bitmap.Data, pixels);
}

}  // namespace
