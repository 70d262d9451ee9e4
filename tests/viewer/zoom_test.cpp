// The arithmetic of the view.
#include "zavoview/zoom.h"

#include <gtest/gtest.h>
#include <random>

using zavoview::Zoom;

TEST(Zoom, FitsTheWholePictureAndNeverEnlargesIt) {
  constexpr SIZE cases[][3] = {{{2048, 1024}, {1000, 600}, {1000, 500}},
                               {{1024, 2048}, {1000, 600}, {300, 600}},
                               {{30, 20}, {1000, 600}, {30, 20}},
                               {{5000, 1}, {100, 100}, {100, 1}},
                               {{10, 10}, {0, 0}, {1, 1}}};
  for (const auto& [picture, view, scaled] : cases) {
    Zoom zoom;
    zoom.setView(view);
    zoom.setPicture(picture);
    EXPECT_EQ(scaled.cx, zoom.scaled().cx);
    EXPECT_EQ(scaled.cy, zoom.scaled().cy);
  }
}

TEST(Zoom, KeepsThePixelUnderTheMouse) {
  std::mt19937 random(20260718);
  const auto number = [&](int from, int to) { return std::uniform_int_distribution(from, to)(random); };
  for (int round = 0; round < 500; round++) {
    SCOPED_TRACE(round);
    Zoom zoom;
    const SIZE view{number(200, 1200), number(200, 900)};
    const SIZE picture{number(1, 4000), number(1, 4000)};
    zoom.setView(view);
    zoom.setPicture(picture);
    zoom.setActualSize({0, 0});
    for (int step = 0; step < 8; step++) {
      const POINT mouse{number(0, static_cast<int>(view.cx) - 1), number(0, static_cast<int>(view.cy) - 1)};
      const POINT before = zoom.toPicture(mouse);
      number(0, 2) != 0 ? zoom.zoomIn(mouse) : zoom.zoomOut(mouse);
      const RECT rect = zoom.pictureRect();
      // Where the picture is smaller than the view it is centred, and at its ends scrolling stops.
      const POINT after = zoom.toPicture(mouse);
      const double slack = 1 + 2 / zoom.scale();
      EXPECT_TRUE(rect.left >= 0 || rect.right <= view.cx || std::abs(before.x - after.x) <= slack);
      EXPECT_TRUE(rect.top >= 0 || rect.bottom <= view.cy || std::abs(before.y - after.y) <= slack);
      EXPECT_TRUE(rect.left == -zoom.origin().x || rect.right <= view.cx);
      EXPECT_TRUE(rect.right >= std::min(view.cx, zoom.scaled().cx)) << "no gap beyond the right edge";
      if (zoom.scale() < 1) continue;
      // A pixel's corner lies on that pixel, where pixels are not smaller than those of the screen.
      const POINT pixel{number(0, static_cast<int>(picture.cx) - 1), number(0, static_cast<int>(picture.cy) - 1)};
      const POINT corner = zoom.toView(pixel);
      const POINT back = zoom.toPicture({corner.x + 1, corner.y + 1});
      EXPECT_LE(std::abs(back.x - pixel.x), 1);
      EXPECT_LE(std::abs(back.y - pixel.y), 1);
    }
  }
}
