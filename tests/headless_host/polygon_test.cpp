#include "host/polygon.h"

#include <memory>

#include "headless_host/inspection.h"
#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

TEST(HostPolygon, BeginsEmpty) {
  const POLYGON polygon;
  EXPECT_EQ(polygon.get_sides(), 0);
  EXPECT_TRUE(ViewSides(polygon).empty());
  EXPECT_EQ(std::uint32_t{polygon.flags}, 0u);
}

TEST(HostPolygon, AnAddedSideIsZeroEvenWhereOneWasRemoved) {
  POLYGON polygon;
  polygon.add_side();
  polygon.sides[0].x = 5;
  polygon.sides[0].flags = 7;
  polygon.del_side();
  polygon.add_side();
  ASSERT_EQ(polygon.get_sides(), 1);
  EXPECT_EQ(double{polygon.sides[0].x}, 0.0);
  EXPECT_EQ(std::uint32_t{polygon.sides[0].flags}, 0u);
}

TEST(HostPolygon, SidesKeepTheirValuesWhileTheArrayGrows) {
  POLYGON polygon;
  for (int i = 0; i < 1000; ++i) {
    polygon.add_side();
    polygon.sides[i].x = i;
    polygon.sides[i].y = -i;
    polygon.sides[i].flags = static_cast<std::uint32_t>(i);
  }
  ASSERT_EQ(polygon.get_sides(), 1000);
  ASSERT_EQ(CountPolygonSides(&polygon), 1000);
  ASSERT_EQ(ViewSides(polygon).size(), 1000u);
  for (int i = 0; i < 1000; ++i) {
    const PolygonSide side = ViewSides(polygon)[static_cast<std::size_t>(i)];
    ASSERT_EQ(side.x, i);
    ASSERT_EQ(side.y, -i);
    ASSERT_EQ(side.flags, static_cast<std::uint32_t>(i));
  }
}

TEST(HostPolygon, RemovingFromAnEmptyPolygonDoesNothing) {
  POLYGON polygon;
  polygon.del_side();
  EXPECT_EQ(polygon.get_sides(), 0);
}

TEST(HostPolygon, IsCountedWhileItLives) {
  const std::size_t before = LiveCounts().polygons;
  auto polygon = std::make_unique<POLYGON>();
  EXPECT_EQ(LiveCounts().polygons, before + 1);
  polygon.reset();
  EXPECT_EQ(LiveCounts().polygons, before);
}
