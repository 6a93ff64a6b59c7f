#include "host/transparency.h"

#include <memory>

#include "headless_host/inspection.h"
#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

TEST(HostTransparency, TheFactoryMakesTheClassOfTheType) {
  const std::unique_ptr<CQXTransparency> uniform(CQXTransparency::CreateTransparency(1));
  const std::unique_ptr<CQXTransparency> linear(CQXTransparency::CreateTransparency(3));
  const std::unique_ptr<CQXTransparency> radial(CQXTransparency::CreateTransparency(4));
  EXPECT_NE(dynamic_cast<CQXUniformTransparency*>(uniform.get()), nullptr);
  EXPECT_NE(dynamic_cast<CQXLinearTransparency*>(linear.get()), nullptr);
  EXPECT_NE(dynamic_cast<CQXRadialTransparency*>(radial.get()), nullptr);
  EXPECT_EQ(uniform->Type(), 1);
  EXPECT_EQ(linear->Type(), 3);
  EXPECT_EQ(radial->Type(), 4);
}

TEST(HostTransparency, TheFactoryMakesNothingOfOtherTypes) {
  for (const int type : {-1, 0, 2, 5}) EXPECT_EQ(CQXTransparency::CreateTransparency(type), nullptr);
}

TEST(HostTransparency, AUniformOneShowsItsOpacity) {
  const std::unique_ptr<CQXTransparency> made(CQXTransparency::CreateTransparency(1));
  EXPECT_EQ(ViewTransparency(*made).opacity, 255);
  static_cast<CQXUniformTransparency&>(*made).opacity = 127;
  EXPECT_EQ(ViewTransparency(*made).type, kUniformTransparency);
  EXPECT_EQ(ViewTransparency(*made).opacity, 127);
}

TEST(HostTransparency, AShapeShowsMatrixLengthAngleAndMarkers) {
  const std::unique_ptr<CQXTransparency> made(CQXTransparency::CreateTransparency(4));
  auto& shape = static_cast<CQXShapeTransparency&>(*made);
  shape.ChangeWorldToFillTm({1, 2, 3, 4, 5, 6});
  shape.length = -2.5;
  shape.angle = -90.0;
  EXPECT_EQ(shape.AddOpacityMarker({0, 100}), 1);
  EXPECT_EQ(shape.AddOpacityMarker({99, 25}), 2);
  const TransparencyView view = ViewTransparency(*made);
  EXPECT_EQ(view.type, kRadialTransparency);
  EXPECT_EQ(view.worldToFill.b, 2.0);
  EXPECT_EQ(view.worldToFill.e, 5.0);
  EXPECT_EQ(view.length, -2.5);
  EXPECT_EQ(view.angle, -90.0);
  ASSERT_EQ(view.markers.size(), 2u);
  EXPECT_EQ(view.markers[1].position, 99);
  EXPECT_EQ(view.markers[1].opacity, 25);
}

TEST(HostTransparency, IsCountedWhileItLives) {
  const std::size_t before = LiveCounts().transparencies;
  std::unique_ptr<CQXTransparency> made(CQXTransparency::CreateTransparency(3));
  EXPECT_EQ(LiveCounts().transparencies, before + 1);
  made.reset();
  EXPECT_EQ(LiveCounts().transparencies, before);
}
