#include "operators/polygon.h"

#include <cmath>
#include <limits>
#include <numbers>

#include "host/polygon.h"
#include "run/command_queue.h"
#include "tests/support/filter_test.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

// What all sampled shapes share; the height of the document is 100, the scale 1, and the matrix the identity, unless a
// test says otherwise.
class PolygonOperators : public FilterTest {
 protected:
  PolygonOperators() { StartMachine(); }

  std::vector<PolygonSide> SidesAt(std::size_t line) const {
    const auto sides = ViewSides(PayloadOf<POLYGON>(line));
    return {sides.begin(), sides.end()};
  }

  // A side given in user space.
  static void ExpectSide(const PolygonSide& side, double x, double y, std::uint32_t flags, double tolerance = 1e-9) {
    EXPECT_NEAR(side.x, x, tolerance);
    EXPECT_NEAR(side.y, 100.0 - y, tolerance);
    EXPECT_EQ(std::uint32_t{side.flags}, flags);
  }

  static void ExpectPoint(const Point& point, double x, double y, double tolerance = 1e-9) {
    EXPECT_NEAR(point.x, x, tolerance);
    EXPECT_NEAR(point.y, y, tolerance);
  }
};

using RectangleOperator = PolygonOperators;
using EllipseOperator = PolygonOperators;
using ArcOperator = PolygonOperators;

}  // namespace

// --- rect

TEST_F(RectangleOperator, WithSharpCornersHasFourStraightSidesAndNoMark) {
  // width 20, height 10 at (1, 2), from the lower right corner on. The closing side is taken off again.
  EXPECT_EQ(Run("20 10 1 2 0 0 rect"), Lines{"PLYR 1 : 21,88 21,98 1,98 1,88"});
  EXPECT_EQ(Operands(), Lines());
}

TEST_F(RectangleOperator, ReadsMissingOperandsAsZero) {
  EXPECT_EQ(Run("rect"), Lines{"PLYR 1 : 0,100 0,100 0,100 0,100"});
  // The four upper ones of the six: x 20, y 10, rx 2, ry 1, cut to the width and height of 0.
  EXPECT_EQ(Run("20 10 2 1 rect"), Lines{"PLYR 1 : 20,90 20,90 20,90 20,90"});
}

TEST_F(RectangleOperator, WhoseRecordFindsNoMemoryIsGivenBackByTheNext) {
  DestroyQueue(run.commands);
  const std::size_t blocks = LiveCounts().blocks;
  FailAllocation(2);  // behind the polygon's: the queue's table
  EXPECT_THROW(Run("20 10 1 2 0 0 rect"), std::bad_alloc);
  EXPECT_EQ(LiveCounts().blocks, blocks + 1);
  EXPECT_EQ(Run("20 10 1 2 0 0 rect"), Lines{"PLYR 1 : 21,88 21,98 1,98 1,88"});
  DestroyQueue(run.commands);
  EXPECT_EQ(LiveCounts().blocks, blocks + 1);  // the record's
}

TEST_F(RectangleOperator, WithRoundCornersSamplesEachFromItsSecondAngle) {
  // rx 4, ry 2 on 20 by 10 at (1, 2): the inner corners lie at x 5 and 17, y 4 and 10. A quarter turn holds nine steps
  // of 0.174 behind its first angle.
  ASSERT_EQ(Run("20 10 1 2 4 2 rect").size(), 1u);
  const auto sides = SidesAt(0);
  ASSERT_EQ(sides.size(), 44u);
  const struct {
    double fromX, fromY, toX, toY;  // the straight sides before and behind the samples
    double centreX, centreY, angle;
  } corners[] = {
      {17, 12, 21, 10, 17, 10, 1.570796313445772},
      {21, 4, 17, 2, 17, 4, 6.283185253783088},
      {5, 2, 1, 4, 5, 4, 4.712388940337316},
      {1, 10, 5, 12, 5, 10, 3.141592626891544},
  };
  std::size_t i = 0;
  for (const auto& corner : corners) {
    SCOPED_TRACE(corner.angle);
    ExpectSide(sides[i++], corner.fromX, corner.fromY, 0);
    for (int step = 1; step <= 9; ++step) {
      const double angle = corner.angle - 0.174 * step;
      ExpectSide(sides[i++], corner.centreX + 4 * std::cos(angle), corner.centreY + 2 * std::sin(angle), kSideCurve);
    }
    ExpectSide(sides[i++], corner.toX, corner.toY, 0);
  }
  EXPECT_EQ(PayloadOf<POLYGON>(0).flags + 0, kPolygonInUse | kPolygonCurved);
}

TEST_F(RectangleOperator, CutsRadiiToHalfTheSideEachForItself) {
  // rx 50 becomes 10; ry stays 3.
  ASSERT_EQ(Run("20 10 0 0 50 3 rect").size(), 1u);
  auto sides = SidesAt(0);
  ASSERT_EQ(sides.size(), 44u);
  ExpectSide(sides[0], 10, 10, 0);
  ExpectSide(sides[10], 20, 7, 0);
  // ry 50 becomes 5; rx stays 3.
  ASSERT_EQ(Run("20 10 0 0 3 50 rect").size(), 1u);
  sides = SidesAt(0);
  ASSERT_EQ(sides.size(), 44u);
  ExpectSide(sides[0], 17, 10, 0);
  ExpectSide(sides[10], 20, 5, 0);
}

TEST_F(RectangleOperator, WithOneRadiusHasFlatArcs) {
  ASSERT_EQ(Run("20 10 0 0 5 0 rect").size(), 1u);
  auto sides = SidesAt(0);
  ASSERT_EQ(sides.size(), 44u);
  for (std::size_t i = 1; i <= 9; ++i) {
    SCOPED_TRACE(i);
    ExpectSide(sides[i], 15 + 5 * std::cos(1.570796313445772 - 0.174 * static_cast<double>(i)), 10, kSideCurve);
  }
  ASSERT_EQ(Run("20 10 0 0 0 5 rect").size(), 1u);
  sides = SidesAt(0);
  ASSERT_EQ(sides.size(), 44u);
  ExpectSide(sides[5], 20, 5 + 5 * std::sin(1.570796313445772 - 0.174 * 5), kSideCurve);
}

TEST_F(RectangleOperator, OfNegativeSizeIsNotRefused) {
  // rx 0 exceeds half of -20 and becomes -10: the inner corners lie at -20 + 10 and 0 - 10.
  EXPECT_EQ(Run("-20 10 0 0 0 0 rect"), Lines{"PLYR 1 : -10,90 -20,100 -10,100 0,90"});
  // Negative radii make no round corners: inner corners at 20 + 3 and 0 - 3.
  EXPECT_EQ(Run("20 10 0 0 -3 0 rect"), Lines{"PLYR 1 : 23,90 20,100 -3,100 0,90"});
}

TEST_F(RectangleOperator, WhoseCornersAreNoNumbersKeepsItsMarkedClosingSide) {
  // x + width is infinity minus infinity, and no number equals itself.
  ASSERT_EQ(Run("-1e999 10 1e999 0 0 0 rect").size(), 1u);
  const auto sides = SidesAt(0);
  ASSERT_EQ(sides.size(), 5u);
  EXPECT_TRUE(std::isnan(sides[4].x));
  EXPECT_EQ(std::uint32_t{sides[4].flags}, kSideCloses);
}

TEST_F(RectangleOperator, LeavesThePathStateAlone) {
  Run("3 4 M 5 6 L");
  EXPECT_EQ(Run("20 10 1 2 4 2 rect").size(), 1u);
  EXPECT_EQ(run.path.PathOpen, 1u);
  EXPECT_EQ(run.path.deviceCurrent, (Point{5, 6}));
  EXPECT_EQ(run.path.deviceStart, (Point{3, 4}));
  EXPECT_EQ(run.path.userCurrent, (Point{5, 6}));
  EXPECT_EQ(run.path.userStart, (Point{3, 4}));
  EXPECT_EQ(run.path.lastControl, (Point{3, 4}));
}

TEST_F(RectangleOperator, GoesThroughTheMatrixAndTheScale) {
  StartMachine(100.0, 0.5);
  CurrentFrame().currentMatrix = {0, 2, -3, 0, 10, 20};  // (x, y) to (10 - 3 y, 20 + 2 x)
  // The corners (3, 4), (3, 2), (1, 2), (1, 4) become (-2, 26), (4, 26), (4, 22), (-2, 22).
  EXPECT_EQ(Run("2 2 1 2 0 0 rect"), Lines{"PLYR 1 : -1,37 2,37 2,39 -1,39"});
  EXPECT_EQ(PayloadOf<POLYGON>(0).scaleX + 0, 0.5);
  EXPECT_EQ(PayloadOf<POLYGON>(0).scaleY + 0, 0.5);
  EXPECT_EQ(run.currentPolygon, nullptr);
}

// --- E, wE, circle

TEST_F(EllipseOperator, HasThirtySevenCurveSidesAndNoMark) {
  for (const char* program : {"50 40 20 10 E", "50 40 20 10 wE"}) {
    SCOPED_TRACE(program);
    ASSERT_EQ(Run(program).size(), 1u);
    const auto sides = SidesAt(0);
    ASSERT_EQ(sides.size(), 37u);
    for (std::size_t i = 0; i < sides.size(); ++i) {
      SCOPED_TRACE(i);
      const double angle = 0.174 * static_cast<double>(i);
      ExpectSide(sides[i], 50 + 20 * std::cos(angle), 40 + 10 * std::sin(angle), kSideCurve);
    }
    EXPECT_EQ(PayloadOf<POLYGON>(0).flags + 0, kPolygonInUse | kPolygonCurved);
    EXPECT_EQ(Operands(), Lines());
  }
}

TEST_F(EllipseOperator, CircleTakesOneRadiusForBoth) {
  for (const char* program : {"50 40 20 circle", "50 40 20 ci", "50 40 20 cinema"}) {
    SCOPED_TRACE(program);
    ASSERT_EQ(Run(program).size(), 1u);
    const auto sides = SidesAt(0);
    ASSERT_EQ(sides.size(), 37u);
    ExpectSide(sides[0], 70, 40, kSideCurve);
    ExpectSide(sides[9], 50 + 20 * std::cos(1.566), 40 + 20 * std::sin(1.566), kSideCurve);
    EXPECT_EQ(Operands(), Lines());
  }
}

TEST_F(EllipseOperator, ReadsMissingOperandsAsZero) {
  Run("20 10 E");
  ExpectSide(SidesAt(0)[0], 20, 0, kSideCurve);
  ExpectSide(SidesAt(0)[9], 20 * std::cos(1.566), 10 * std::sin(1.566), kSideCurve);
  Run("20 circle");
  ExpectSide(SidesAt(0)[0], 20, 0, kSideCurve);
}

TEST_F(EllipseOperator, OfNoSizeIsThirtySevenEqualSides) {
  for (const char* program : {"50 40 0 0 E", "50 40 0 circle"}) {
    SCOPED_TRACE(program);
    std::string line = "PLYR 3 :";
    for (int i = 0; i < 37; ++i) line += " 50,60*";
    EXPECT_EQ(Run(program), Lines{line});
  }
}

TEST_F(EllipseOperator, OfNegativeRadiusBeginsOnTheOtherSide) {
  Run("50 40 -20 circle");
  ExpectSide(SidesAt(0)[0], 30, 40, kSideCurve);
}

TEST_F(EllipseOperator, MovesTheDevicePenToItsStartAndNothingElse) {
  for (const char* program : {"5 6 2 1 E", "5 6 2 circle"}) {
    SCOPED_TRACE(program);
    CurrentFrame().currentMatrix = kIdentity;
    Run("3 4 M 8 9 L");
    CurrentFrame().currentMatrix = {2, 0, 0, 3, 1, 1};
    EXPECT_EQ(Run(program).size(), 1u);
    EXPECT_EQ(run.path.deviceCurrent, (Point{15, 19}));  // (7, 6) through the matrix
    EXPECT_EQ(run.path.userCurrent, (Point{8, 9}));
    EXPECT_EQ(run.path.deviceStart, (Point{3, 4}));
    EXPECT_EQ(run.path.userStart, (Point{3, 4}));
    EXPECT_EQ(run.path.lastControl, (Point{3, 4}));
  }
}

TEST_F(EllipseOperator, NeedsNoPathAndOpensNone) {
  EXPECT_EQ(Run("50 40 20 circle").size(), 1u);
  EXPECT_EQ(run.path.PathOpen, 0u);
}

// --- A, a

TEST_F(ArcOperator, HalfACircleGoesFromThePenToItsEnd) {
  const Lines lines = Run("0 0 M 10 10 0 0 1 20 0 A");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "PATH");
  EXPECT_EQ(lines[2], "NULL");
  const auto sides = SidesAt(1);
  // The centre is (10, 0), and the angle runs from pi to 2 pi: 19 steps and the end.
  ASSERT_EQ(sides.size(), 20u);
  EXPECT_EQ(sides[0].x + 0, 0.0);  // the pen, exactly
  EXPECT_EQ(sides[0].y + 0, 100.0);
  for (std::size_t i = 0; i < 19; ++i) {
    SCOPED_TRACE(i);
    const double angle = std::numbers::pi + 0.174 * static_cast<double>(i);
    ExpectSide(sides[i], 10 + 10 * std::cos(angle), 10 * std::sin(angle), kSideCurve, 1e-6);
  }
  ExpectSide(sides[19], 20, 0, kSideCurve | kSideCloses, 1e-6);
  EXPECT_EQ(PayloadOf<POLYGON>(1).flags + 0, kPolygonInUse | kPolygonCurved);
  EXPECT_EQ(Operands(), Lines());
}

TEST_F(ArcOperator, FlagsChooseOneOfFourWays) {
  // From (0, 0) to (10, 10) with radius 10: centres (10, 0) and (0, 10), a quarter or three.
  const struct {
    const char* program;
    std::size_t sides;
    double centreX, centreY, start, step;
  } cases[] = {
      {"0 0 M 10 10 0 0 0 10 10 A", 11, 10, 0, std::numbers::pi, -0.174},
      {"0 0 M 10 10 0 0 1 10 10 A", 11, 0, 10, std::numbers::pi * 1.5, 0.174},
      {"0 0 M 10 10 0 1 0 10 10 A", 29, 0, 10, std::numbers::pi * 1.5, -0.174},
      {"0 0 M 10 10 0 1 1 10 10 A", 29, 10, 0, std::numbers::pi, 0.174},
      // A flag is cut to an integer and then anything but 0.
      {"0 0 M 10 10 0 0.9 -0.9 10 10 A", 11, 10, 0, std::numbers::pi, -0.174},
      {"0 0 M 10 10 0 -1 7 10 10 A", 29, 10, 0, std::numbers::pi, 0.174},
      // Only the size of the radii counts.
      {"0 0 M -10 -10 0 0 1 10 10 A", 11, 0, 10, std::numbers::pi * 1.5, 0.174},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.program);
    const Lines lines = Run(c.program);
    const std::size_t line = FindLine(lines, "PLYR");
    ASSERT_LT(line, lines.size());
    const auto sides = SidesAt(line);
    ASSERT_EQ(sides.size(), c.sides);
    for (std::size_t i = 0; i + 1 < sides.size(); ++i) {
      SCOPED_TRACE(i);
      const double angle = c.start + c.step * static_cast<double>(i);
      ExpectSide(sides[i], c.centreX + 10 * std::cos(angle), c.centreY + 10 * std::sin(angle), kSideCurve, 1e-6);
    }
    ExpectSide(sides.back(), 10, 10, kSideCurve | kSideCloses, 1e-6);
  }
}

TEST_F(ArcOperator, ConvertsDegreesByTheShortConstant) {
  // With 57.29578 degrees per radian the rotation of 30 degrees is 0.52359877: centre (3.70486409738, 8.37251207741),
  // from 4.126579891 to 5.059249063. With the exact constant the coordinates differ by about 5e-7.
  Lines lines = Run("1 2 M 10 5 30 0 1 9 6 A");
  ASSERT_EQ(lines.size(), 3u);
  auto sides = SidesAt(1);
  ASSERT_EQ(sides.size(), 7u);
  ExpectSide(sides[0], 1, 2, kSideCurve, 0.0);
  ExpectSide(sides[1], 2.529438504743, 2.403052325423, kSideCurve, 1e-10);
  ExpectSide(sides[5], 8.532756023341, 5.617976080456, kSideCurve, 1e-10);
  ExpectSide(sides[6], 8.999999610493, 5.999999670317, kSideCurve | kSideCloses, 1e-10);
  ExpectPoint(run.path.deviceCurrent, 8.999999610493, 5.999999670317, 1e-10);
  // 360 degrees are 6.283185253783088: an arc that was turned back by them ends 10 * 5.34e-8 off.
  Run("0 0 M 10 10 0 0 0 20 0 A");
  ExpectPoint(run.path.deviceCurrent, 20, 5.34e-7, 1e-9);
}

TEST_F(ArcOperator, RadiiThatDoNotReachGrowByOneFactor) {
  // Half the distance is 10: both pairs become 10 and 5.
  for (const char* program : {"0 0 M 5 2.5 0 0 1 20 0 A", "0 0 M 9.99 4.995 0 0 1 20 0 A"}) {
    SCOPED_TRACE(program);
    const Lines lines = Run(program);
    const std::size_t line = FindLine(lines, "PLYR");
    ASSERT_LT(line, lines.size());
    const auto sides = SidesAt(line);
    ASSERT_EQ(sides.size(), 20u);
    for (std::size_t i = 0; i < 19; ++i) {
      SCOPED_TRACE(i);
      const double angle = std::numbers::pi + 0.174 * static_cast<double>(i);
      ExpectSide(sides[i], 10 + 10 * std::cos(angle), 5 * std::sin(angle), kSideCurve, 1e-6);
    }
  }
}

TEST_F(ArcOperator, OfMoreThanSixPointOneRadiansEndsOnItsStart) {
  // A chord of 1.83 at radius 10 leaves 2 asin(0.0915) of the turn: a sweep of 6.09993. With 1.829 it is 6.10003.
  Run("0 0 M 10 10 0 1 1 1.83 0 A");
  ExpectPoint(run.path.deviceCurrent, 1.83, 0, 1e-6);
  Run("0 0 M 10 10 0 1 1 1.829 0 A");
  ExpectPoint(run.path.deviceCurrent, 0, 0, 1e-6);
  Run("0 0 M 10 10 0 1 0 1.829 0 A");
  ExpectPoint(run.path.deviceCurrent, 0, 0, 1e-6);
}

TEST_F(ArcOperator, OfThreeSidesThatEndsOnItsFirstMarksTheSecond) {
  // So far out that the first and last corner fall together: 2 asin(1 / 8) radians are two samples and the end. The
  // last side is taken off again.
  StartMachine(1e20);
  EXPECT_EQ(Run("1e16 0 M 4 4 0 0 1 1e16 1 A"), (Lines{"PATH", "PLYR 3 : 1e+16,1e+20* 1e+16,1e+20*!", "NULL"}));
}

TEST_F(ArcOperator, MovesTheDevicePenAlone) {
  Run("2 3 M 4 5 L 10 10 0 0 1 24 5 A");
  ExpectPoint(run.path.deviceCurrent, 24, 5, 1e-6);
  EXPECT_EQ(run.path.userCurrent, (Point{4, 5}));
  EXPECT_EQ(run.path.lastControl, (Point{2, 3}));
  EXPECT_EQ(run.path.deviceStart, (Point{2, 3}));
  EXPECT_EQ(run.path.userStart, (Point{2, 3}));
}

TEST_F(ArcOperator, IsFollowedByRelativeSegmentsFromThePointBeforeIt) {
  Run("0 0 M 10 10 0 0 1 20 0 A");
  EXPECT_EQ(Run("5 5 l"), Lines{"LINE 20,100 5,95"});
  Run("0 0 M 10 10 0 0 1 20 0 A");
  EXPECT_EQ(Run("30 H"), Lines{"LINE 0,100 30,100"});
}

TEST_F(ArcOperator, IsClosedFromItsEnd) {
  Run("0 0 M 10 10 0 0 1 20 0 A");
  EXPECT_EQ(Run("Z"), Lines{"LINE 20,100 0,100"});
}

TEST_F(ArcOperator, BeginsAtTheDevicePen) {
  // The second arc goes on from the end of the first, though the pen in user space has stayed behind.
  const Lines lines = Run("0 0 M 10 10 0 0 1 20 0 a 10 10 0 0 1 20 0 a");
  ASSERT_EQ(lines.size(), 5u);
  const auto sides = SidesAt(3);
  ASSERT_EQ(sides.size(), 20u);
  ExpectSide(sides[0], 20, 0, kSideCurve, 1e-6);
  ExpectSide(sides[19], 40, 0, kSideCurve | kSideCloses, 1e-6);
}

TEST_F(ArcOperator, IsSampledInUserSpaceUnderTheMatrix) {
  CurrentFrame().currentMatrix = {2, 1, 3, 4, 10, 20};
  // From (3, 4) to (23, 4) about (13, 4); the device point of (x, y) is (2 x + 3 y + 10, x + 4 y + 20).
  ASSERT_EQ(Run("3 4 M 10 10 0 0 1 20 0 a").size(), 3u);
  const auto sides = SidesAt(1);
  ASSERT_EQ(sides.size(), 20u);
  for (std::size_t i = 0; i < 19; ++i) {
    SCOPED_TRACE(i);
    const double x = 13 + 10 * std::cos(std::numbers::pi + 0.174 * static_cast<double>(i));
    const double y = 4 + 10 * std::sin(std::numbers::pi + 0.174 * static_cast<double>(i));
    ExpectSide(sides[i], 2 * x + 3 * y + 10, x + 4 * y + 20, kSideCurve, 1e-5);
  }
  ExpectPoint(run.path.deviceCurrent, 68, 59, 1e-5);
  EXPECT_EQ(run.path.userCurrent, (Point{3, 4}));
}

TEST_F(ArcOperator, OfTooFewOperandsOnlyPopsThem) {
  for (const char* program : {"10 0 0 1 20 0 A", "20 0 A", "A", "10 0 0 1 20 0 a"}) {
    SCOPED_TRACE(program);
    EXPECT_EQ(Run(program), Lines());
    EXPECT_EQ(Operands(), Lines());
    EXPECT_EQ(run.path.deviceCurrent, (Point{0, 0}));
  }
}

TEST_F(ArcOperator, NeedsNoPathAndOpensNone) {
  const Lines lines = Run("10 10 0 0 1 20 0 A");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(SidesAt(0).size(), 20u);
  EXPECT_EQ(run.path.PathOpen, 0u);
}

TEST_F(ArcOperator, NullRecordDoesNotReachTheHost) {
  const Lines lines = ImportBody("<path d=\"M0 0A10 10 0 0 1 20 0\" style=\"fill:none\"/>");
  EXPECT_EQ(CountOf(lines, "PLYR 3"), 1u);
  EXPECT_EQ(CountOf(lines, "NULL"), 0u);
}

// --- Arcs without a centre

TEST_F(ArcOperator, WithAZeroRadiusIsAStraightSegment) {
  for (const char* arc : {"0 10 0 0 1 20 5 A", "10 0 0 0 1 20 5 A", "0 0 0 0 1 20 5 A", "-0 10 0 0 1 20 5 A"}) {
    SCOPED_TRACE(arc);
    Run("0 0 M");
    EXPECT_EQ(Run(arc), (Lines{"LINE 0,100 20,95", "NULL"}));
    EXPECT_EQ(run.path.deviceCurrent, (Point{20, 5}));
    EXPECT_EQ(run.path.userCurrent, (Point{0, 0}));
  }
}

TEST_F(ArcOperator, OntoItsOwnStartDrawsNothing) {
  Run("3 4 M");
  for (const char* arc : {"10 10 0 1 1 3 4 A", "10 10 0 0 0 0 0 a", "0 10 0 0 1 3 4 A"}) {
    SCOPED_TRACE(arc);
    EXPECT_EQ(Run(arc), Lines{"NULL"});
    EXPECT_EQ(run.path.deviceCurrent, (Point{3, 4}));
  }
}

TEST_F(ArcOperator, OntoItsOwnStartLeavesThePenToTheLastBitUnderAnyMatrix) {
  // On its way to the user's space and back this pen would move by a rounding step with each arc.
  CurrentFrame().currentMatrix = {0.7, 0.1, -0.3, 1.1, 3.3, 4.7};
  Run("12.1 33.7 M");
  const Point pen = run.path.deviceCurrent;
  for (const char* arc : {"5 5 0 0 1 0 0 a", "5 5 0 1 0 0 0 a", "0 5 0 0 1 0 0 a"}) {
    SCOPED_TRACE(arc);
    EXPECT_EQ(Run(arc), Lines{"NULL"});
    EXPECT_EQ(run.path.deviceCurrent, pen);
  }
}

TEST_F(ArcOperator, UnderASingularMatrixIsAStraightSegmentFromTheUserPen) {
  CurrentFrame().currentMatrix = {2, 0, 0, 0, 3, 4};
  Run("1 1 M");
  // The end is (6, 6), its device point (15, 4).
  EXPECT_EQ(Run("10 10 0 0 1 5 5 a"), (Lines{"LINE 5,96 15,96", "NULL"}));
  EXPECT_EQ(run.path.deviceCurrent, (Point{15, 4}));
  EXPECT_EQ(run.path.userCurrent, (Point{1, 1}));
  // An end that falls onto the device pen draws nothing.
  EXPECT_EQ(Run("10 10 0 0 1 6 9 A"), Lines{"NULL"});
}

TEST_F(ArcOperator, WithoutNumbersIsDroppedWithoutALoop) {
  // Each of these loses its angles on the way: one sample is left, which makes no polygon.
  for (const char* arc : {"10 10 1e999 0 1 20 0 A", "1e999 10 0 0 1 20 0 A", "10 10 0 0 1 1e308 0 A",
                          "1e-308 1e-308 0 0 1 20 0 A", "10 10 0 1 0 1e999 0 A"}) {
    SCOPED_TRACE(arc);
    Run("0 0 M");
    EXPECT_EQ(Run(arc), Lines{"NULL"});
    EXPECT_EQ(run.currentPolygon, nullptr);
    EXPECT_TRUE(std::isnan(run.path.deviceCurrent.x));
  }
}

TEST_F(ArcOperator, OfExtremeNumbersOrUnderAnExtremeMatrixStaysBounded) {
  const TM matrices[] = {
      kIdentity,
      {kNoNumber, 0, 0, 1, 0, 0},
      {kInfinity, 0, 0, kInfinity, 0, 0},
      {1e308, 0, 0, 1e308, 1e308, -1e308},
      {1e-308, 0, 0, 1e-308, 0, 0},
      {1, 1, 1, 1 + 1e-15, 0, 0},
  };
  for (const TM& matrix : matrices) {
    for (const char* arc : {"10 10 0 0 1 20 0 A", "1e308 1e308 0 1 1 20 0 A", "1e-300 1e300 45 1 0 1e308 -1e308 a",
                            "10 10 1e308 1e308 -1e308 20 0 A", "1e154 1e-154 30 0 1 1e154 1e154 a"}) {
      SCOPED_TRACE(testing::Message() << arc << " with a = " << matrix.a);
      CurrentFrame().currentMatrix = matrix;
      Run("1 2 M");
      const Lines lines = Run(arc);
      ASSERT_GE(lines.size(), 1u);
      ASSERT_LE(lines.size(), 2u);
      EXPECT_EQ(lines.back(), "NULL");
      // A full turn holds 37 steps; one more for the end.
      if (CountOf(lines, "PLYR") == 1) {
        EXPECT_LE(SidesAt(0).size(), 38u);
      }
      EXPECT_EQ(Operands(), Lines());
      EXPECT_EQ(run.currentPolygon, nullptr);
    }
  }
}
