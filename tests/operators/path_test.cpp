// Path construction: which record each operator queues, where it leaves the pen, and what the smooth curves mirror.
#include "operators/path.h"

#include <cmath>
#include <cstring>
#include <new>

#include "operators/graphics_state.h"
#include "run/command_queue.h"
#include "tests/support/filter_test.h"

namespace {

class Path : public FilterTest {
 protected:
  Path() { StartMachine(); }

  // From here on points go through this matrix.
  static void SetMatrix(const TM& matrix) { CurrentFrame().currentMatrix = matrix; }
  // The slots of the queue exist, so that the next allocations are the payloads'.
  void WarmQueue() {
    Feed("0 0 M 1 1 L 2 2 L 3 3 L 4 4 L");
    Drain();
  }

  const PathState& path = run.path;
};

class MoveOperators : public Path {};
class LineOperators : public Path {};
class AxisOperators : public Path {};
class CurveOperators : public Path {};
class SmoothCurveOperators : public Path {};
class QuadraticOperators : public Path {};
class SmoothQuadraticOperators : public Path {};
class CurveToEndOperators : public Path {};

constexpr TM kNothing = {0, 0, 0, 0, 0, 0};
constexpr TM kDoubled = {2, 0, 0, 2, 5, 6};

// --- M, m

TEST_F(MoveOperators, FirstMoveOpensThePath) {
  EXPECT_EQ(Run("10 20 M"), Lines({"PATH"}));
  EXPECT_EQ(path.PathOpen, 1u);
  EXPECT_EQ(Run("30 40 M 1 2 m"), Lines());
}

TEST_F(MoveOperators, MoveSetsAllPoints) {
  SetMatrix(kDoubled);
  Feed("10 20 M");
  for (const Point& user : {path.userStart, path.userCurrent, path.lastControl}) EXPECT_EQ(user, (Point{10, 20}));
  for (const Point& device : {path.deviceStart, path.deviceCurrent}) EXPECT_EQ(device, (Point{25, 46}));
  Feed("1 2 m");
  for (const Point& user : {path.userStart, path.userCurrent, path.lastControl}) EXPECT_EQ(user, (Point{11, 22}));
  for (const Point& device : {path.deviceStart, path.deviceCurrent}) EXPECT_EQ(device, (Point{27, 50}));
  Drain();
}

TEST_F(MoveOperators, MoveOntoThePenMovesNothing) {
  EXPECT_EQ(Run("0 0 M 0 0 M"), Lines({"PATH"}));
  EXPECT_EQ(path.userCurrent, (Point{0, 0}));
}

TEST_F(MoveOperators, APathWhoseRecordFindsNoMemoryIsNotOpen) {
  DestroyQueue(run.commands);
  FailAllocation(1);  // the queue's table
  EXPECT_THROW(Feed("1 2 M"), std::bad_alloc);
  EXPECT_EQ(path.PathOpen, 0u);
  EXPECT_EQ(Run("1 2 M"), Lines({"PATH"}));
}

TEST_F(MoveOperators, OpeningMoveClearsTheSelectors) {
  run.path.fillSelector = -1;
  run.path.strokeSelected = 1;
  Feed("1 2 M");
  EXPECT_EQ(path.fillSelector, 0);
  EXPECT_EQ(path.strokeSelected, 0u);
  run.path.fillSelector = 1;
  run.path.strokeSelected = 1;
  Feed("3 4 M");
  EXPECT_EQ(path.fillSelector, 1);
  EXPECT_EQ(path.strokeSelected, 1u);
  Drain();
}

TEST_F(MoveOperators, NewSubpathShowsOnlyInTheStartOfItsFirstSegment) {
  EXPECT_EQ(Run("0 0 M 5 5 L 20 20 M 25 25 L"), Lines({"PATH", "LINE 0,100 5,95", "LINE 20,80 25,75"}));
}

// A path element ends on the user origin, and the next relative move counts from there or from wherever the pen was.
TEST_F(MoveOperators, RelativeMoveCountsFromThePenOfThePathBefore) {
  Feed("0 0 M 10 20 L f");
  Drain();
  EXPECT_EQ(Run("5 5 m 0 0 L"), Lines({"PATH", "LINE 5,95 0,100"}));
}

// --- L, l

TEST_F(LineOperators, LineLeavesThePenBeforeItAsTheControl) {
  EXPECT_EQ(Run("1 2 M 10 20 L 1 1 l"), Lines({"PATH", "LINE 1,98 10,80", "LINE 10,80 11,79"}));
  EXPECT_EQ(path.userCurrent, (Point{11, 21}));
  EXPECT_EQ(path.deviceCurrent, (Point{11, 21}));
  EXPECT_EQ(path.lastControl, (Point{10, 20}));
  EXPECT_EQ(path.userStart, (Point{1, 2}));
  EXPECT_EQ(path.deviceStart, (Point{1, 2}));
}

TEST_F(LineOperators, LineOntoThePenQueuesAndChangesNothing) {
  Feed("10 10 M 1 2 3 4 10 10 C");
  Drain();
  EXPECT_EQ(Run("10 10 L 0 0 l"), Lines());
  EXPECT_EQ(path.lastControl, (Point{3, 4}));
}

// The comparison is of device points: here the user pen is elsewhere, and stays there.
TEST_F(LineOperators, LineOntoTheDevicePenLeavesTheUserPen) {
  Feed("10 10 M");
  SetMatrix({1, 0, 0, 1, 5, 5});
  EXPECT_EQ(Run("5 5 L"), Lines({"PATH"}));
  EXPECT_EQ(path.userCurrent, (Point{10, 10}));
  EXPECT_EQ(path.lastControl, (Point{10, 10}));
}

TEST_F(LineOperators, TheLeastDifferenceMakesALine) {
  Feed("1 1 M");
  Drain();
  Feed("1.0000000000000002 1 L");
  ASSERT_EQ(Drain().size(), 1u);
  EXPECT_EQ(PayloadOf<LineRecord>(0).x1, 1.0000000000000002);
  Feed("1.0000000000000002 1.0000000000000002 L");
  EXPECT_EQ(Drain().size(), 1u);
}

TEST_F(LineOperators, MinusZeroIsZero) {
  Feed("0 0 M");
  Drain();
  EXPECT_EQ(Run("-0 -0 L"), Lines());
}

TEST_F(LineOperators, LineStartsAtTheDevicePenAsItWas) {
  Feed("1 1 M");
  SetMatrix(kDoubled);
  EXPECT_EQ(Run("1 1 L"), Lines({"PATH", "LINE 1,99 7,92"}));
  EXPECT_EQ(path.userCurrent, (Point{1, 1}));
}

TEST_F(LineOperators, SegmentsNeedNoOpenPath) {
  EXPECT_EQ(Run("5 5 L 7 H 8 V 1 2 3 4 5 6 C"),
            Lines({"LINE 0,100 5,95", "LINE 5,95 7,95", "LINE 7,95 7,92", "BEZI 7,92 1,98 3,96 5,94"}));
  EXPECT_EQ(path.PathOpen, 0u);
}

TEST_F(LineOperators, LostPayloadLosesTheRecordAndMovesThePen) {
  WarmQueue();
  FailAllocation(1);
  EXPECT_EQ(Run("9 9 L"), Lines());
  EXPECT_EQ(path.userCurrent, (Point{9, 9}));
  EXPECT_EQ(path.deviceCurrent, (Point{9, 9}));
  EXPECT_EQ(path.lastControl, (Point{4, 4}));
  EXPECT_EQ(Run("8 8 L"), Lines({"LINE 9,91 8,92"}));
}

// --- H, h, V, v

TEST_F(AxisOperators, AxisLinesKeepTheOtherCoordinate) {
  EXPECT_EQ(Run("1 2 M 10 H 20 V 5 h 6 v"),
            Lines({"PATH", "LINE 1,98 10,98", "LINE 10,98 10,80", "LINE 10,80 15,80", "LINE 15,80 15,74"}));
  EXPECT_EQ(path.userCurrent, (Point{15, 26}));
  EXPECT_EQ(path.deviceCurrent, (Point{15, 26}));
  EXPECT_EQ(path.lastControl, (Point{15, 20}));
}

TEST_F(AxisOperators, WithoutAnOperandTheyGoToZeroOrStay) {
  EXPECT_EQ(Run("10 20 M H"), Lines({"PATH", "LINE 10,80 0,80"}));
  EXPECT_EQ(Run("V"), Lines({"LINE 0,80 0,100"}));
  EXPECT_EQ(Run("10 20 M h v"), Lines());
}

TEST_F(AxisOperators, LineOntoThePenIsDroppedUnderTheIdentity) {
  Feed("10 20 M 1 2 3 4 10 20 C");
  Drain();
  EXPECT_EQ(Run("10 H 20 V 0 h 0 v"), Lines());
  EXPECT_EQ(path.lastControl, (Point{3, 4}));
}

// The new point in user space is compared with the pen in device space, which is meant.
TEST_F(AxisOperators, LineIsDroppedWhereItsUserPointIsTheDevicePen) {
  SetMatrix({1, 0, 0, 1, 5, 0});
  Feed("0 0 M");
  Drain();
  EXPECT_EQ(Run("5 H"), Lines());
  EXPECT_EQ(path.userCurrent, (Point{0, 0}));
  EXPECT_EQ(Run("5 h"), Lines());
  EXPECT_EQ(Run("6 H"), Lines({"LINE 5,100 11,100"}));

  SetMatrix({1, 0, 0, 1, 0, 5});
  Feed("0 0 M");
  EXPECT_EQ(Run("5 V"), Lines());
  EXPECT_EQ(Run("5 v"), Lines());
}

TEST_F(AxisOperators, LineWithoutLengthIsKeptWhereTheSpacesDiffer) {
  SetMatrix({1, 0, 0, 1, 5, 5});
  Feed("1 1 M");
  Drain();
  EXPECT_EQ(Run("1 H"), Lines({"LINE 6,94 6,94"}));
  EXPECT_EQ(Run("1 V"), Lines({"LINE 6,94 6,94"}));
  EXPECT_EQ(Run("0 h"), Lines({"LINE 6,94 6,94"}));
}

// L starts at the device pen; H and V at the user pen, wherever the matrix now puts it.
TEST_F(AxisOperators, StartIsWorkedOutFromTheUserPen) {
  Feed("1 1 M 0 0 9 9 Y");  // which moves the device pen alone
  Drain();
  EXPECT_EQ(Run("7 H"), Lines({"LINE 1,99 7,99"}));
  EXPECT_EQ(path.deviceCurrent, (Point{7, 1}));
  SetMatrix(kDoubled);
  EXPECT_EQ(Run("3 V"), Lines({"LINE 19,92 19,88"}));
}

TEST_F(AxisOperators, LostPayloadLosesTheRecordAndMovesThePen) {
  WarmQueue();
  FailAllocation(1);
  EXPECT_EQ(Run("9 H"), Lines());
  EXPECT_EQ(path.userCurrent, (Point{9, 4}));
}

// --- C, c

TEST_F(CurveOperators, CurveTakesTwoControlsAndItsEnd) {
  EXPECT_EQ(Run("1 1 M 2 3 4 5 6 7 C"), Lines({"PATH", "BEZI 1,99 2,97 4,95 6,93"}));
  EXPECT_EQ(path.lastControl, (Point{4, 5}));
  EXPECT_EQ(path.userCurrent, (Point{6, 7}));
  EXPECT_EQ(path.deviceCurrent, (Point{6, 7}));
  EXPECT_EQ(Run("1 1 2 2 3 3 c"), Lines({"BEZI 6,93 7,92 8,91 9,90"}));
  EXPECT_EQ(path.lastControl, (Point{8, 9}));
}

TEST_F(CurveOperators, AllPointsGoThroughTheMatrix) {
  SetMatrix(kDoubled);
  EXPECT_EQ(Run("1 1 M 1 2 3 4 5 6 C"), Lines({"PATH", "BEZI 7,92 7,90 11,86 15,82"}));
  EXPECT_EQ(path.deviceCurrent, (Point{15, 18}));
  EXPECT_EQ(path.userCurrent, (Point{5, 6}));
  EXPECT_EQ(path.lastControl, (Point{3, 4}));
}

TEST_F(CurveOperators, RecordIsZeroOutsideItsPoints) {
  Feed("1 1 M 2 3 4 5 6 7 C");
  Drain();
  const auto& record = PayloadOf<BezierRecord>(1);
  const unsigned char zeros[28] = {};
  EXPECT_EQ(commands[1].size, 108u);
  EXPECT_EQ(std::memcmp(record.reserved0, zeros, sizeof record.reserved0), 0);
  EXPECT_EQ(std::memcmp(record.reserved1, zeros, sizeof record.reserved1), 0);
}

TEST_F(CurveOperators, CurveAllOnThePenQueuesNothingButSetsTheControl) {
  Feed("5 5 M 1 1 L 5 5 L");
  Drain();
  ASSERT_EQ(path.lastControl, (Point{1, 1}));
  EXPECT_EQ(Run("5 5 5 5 5 5 C"), Lines());
  EXPECT_EQ(path.lastControl, (Point{5, 5}));
  EXPECT_EQ(path.userCurrent, (Point{5, 5}));
}

// The comparison is of device points; the user pen stays where it was.
TEST_F(CurveOperators, CurveAllOnTheDevicePenLeavesTheUserPen) {
  SetMatrix(kNothing);
  Feed("1 1 M");
  Drain();
  EXPECT_EQ(Run("2 3 4 5 6 7 C"), Lines());
  EXPECT_EQ(path.userCurrent, (Point{1, 1}));
  EXPECT_EQ(path.lastControl, (Point{4, 5}));
}

TEST_F(CurveOperators, OnePointOffThePenMakesACurve) {
  EXPECT_EQ(Run("5 5 M 5 5 5 5 6 5 C").size(), 2u);
  EXPECT_EQ(Run("5 5 M 5 5 5 6 5 5 C").size(), 1u);
  EXPECT_EQ(Run("5 5 M 6 5 5 5 5 5 C").size(), 1u);
}

// Only a pair that was popped whole counts as the second control.
TEST_F(CurveOperators, ShortStackStillSetsTheControlOnceItsPairIsPopped) {
  struct Row {
    const char* operands;
    Point absolute, relative;
  };
  for (const Row& row :
       {Row{"", {10, 20}, {10, 20}}, Row{"6", {10, 20}, {10, 20}}, Row{"5 6", {10, 20}, {10, 20}},
        Row{"4 5 6", {10, 20}, {10, 20}}, Row{"3 4 5 6", {3, 4}, {13, 24}}, Row{"2 3 4 5 6", {3, 4}, {13, 24}}}) {
    SCOPED_TRACE(row.operands);
    Feed("10 20 M " + std::string(row.operands) + " C");
    EXPECT_EQ(path.lastControl, row.absolute);
    EXPECT_EQ(path.userCurrent, (Point{10, 20}));
    Feed("10 20 M " + std::string(row.operands) + " c");
    EXPECT_EQ(path.lastControl, row.relative);
    EXPECT_EQ(path.userCurrent, (Point{10, 20}));
    EXPECT_EQ(path.deviceCurrent, (Point{10, 20}));
    EXPECT_EQ(Operands(), Lines());
  }
  EXPECT_EQ(Drain(), Lines({"PATH"}));
}

TEST_F(CurveOperators, LostPayloadLosesTheRecordAndMovesThePen) {
  WarmQueue();
  FailAllocation(1);
  EXPECT_EQ(Run("1 2 3 4 5 6 C"), Lines());
  EXPECT_EQ(path.userCurrent, (Point{5, 6}));
  EXPECT_EQ(path.deviceCurrent, (Point{5, 6}));
  EXPECT_EQ(path.lastControl, (Point{3, 4}));
}

// --- Sc, sc

TEST_F(SmoothCurveOperators, FirstControlMirrorsTheLastSecondControl) {
  Feed("0 0 M 1 2 8 5 10 10 C");
  Drain();
  // 2 * (10, 10) - (8, 5).
  EXPECT_EQ(Run("20 30 40 50 Sc"), Lines({"BEZI 10,90 12,85 20,70 40,50"}));
  EXPECT_EQ(path.lastControl, (Point{20, 30}));
  EXPECT_EQ(path.userCurrent, (Point{40, 50}));
  // 2 * (40, 50) - (20, 30); the others from 40, 50.
  EXPECT_EQ(Run("1 2 3 4 sc"), Lines({"BEZI 40,50 60,30 41,48 43,46"}));
  EXPECT_EQ(path.lastControl, (Point{41, 52}));
}

TEST_F(SmoothCurveOperators, BehindAMoveTheFirstControlIsThePen) {
  EXPECT_EQ(Run("10 20 M 30 40 50 60 Sc"), Lines({"PATH", "BEZI 10,80 10,80 30,60 50,40"}));
}

// What stands there is the pen before the line: 2 * (10, 0) - (0, 0).
TEST_F(SmoothCurveOperators, BehindALineTheFirstControlRunsOn) {
  EXPECT_EQ(Run("0 0 M 10 0 L 30 10 40 0 Sc"), Lines({"PATH", "LINE 0,100 10,100", "BEZI 10,100 20,100 30,90 40,100"}));
}

// The mirror is the device pen, and lastControl goes through the matrix of now.
TEST_F(SmoothCurveOperators, MirrorsInDeviceSpace) {
  Feed("1 1 M 3 3 L");
  Drain();
  SetMatrix(kDoubled);
  // lastControl (1, 1) is at (7, 8); the pen at (3, 3): 2 * 3 - 7 and 2 * 3 - 8.
  EXPECT_EQ(Run("0 0 1 0 Sc"), Lines({"BEZI 3,97 -1,102 5,94 7,94"}));
}

TEST_F(SmoothCurveOperators, ShortStackChangesNothing) {
  Feed("10 20 M");
  Drain();
  for (const char* program : {"Sc", "1 Sc", "1 2 Sc", "1 2 3 Sc", "1 2 3 sc"}) {
    EXPECT_EQ(Run(program), Lines()) << program;
    EXPECT_EQ(path.lastControl, (Point{10, 20})) << program;
    EXPECT_EQ(path.userCurrent, (Point{10, 20})) << program;
    EXPECT_EQ(Operands(), Lines()) << program;
  }
}

TEST_F(SmoothCurveOperators, CurveAllOnThePenChangesNothing) {
  SetMatrix(kNothing);
  Feed("1 1 M");
  Drain();
  EXPECT_EQ(Run("2 3 4 5 Sc"), Lines());
  EXPECT_EQ(path.lastControl, (Point{1, 1}));
  EXPECT_EQ(path.userCurrent, (Point{1, 1}));
}

TEST_F(SmoothCurveOperators, MirroredControlOffThePenMakesACurve) {
  Feed("0 0 M 5 5 L");
  Drain();
  EXPECT_EQ(Run("5 5 5 5 Sc"), Lines({"BEZI 5,95 10,90 5,95 5,95"}));
}

// --- Q, q

// The polygon is 20 + 20 long: four steps of 0.25. With P0 = (1, 1), C = (1, 21), P1 = (21, 21):
//   t = 1     (1, 1)
//   t = 0.75  0.5625 P0 + 0.375 C + 0.0625 P1 = (2.25, 9.75)
//   t = 0.5   0.25 P0   + 0.5 C   + 0.25 P1   = (6, 16)
//   t = 0.25  0.0625 P0 + 0.375 C + 0.5625 P1 = (12.25, 19.75)
const Lines kFourSteps = {"LINE 2.25,90.25 1,99", "LINE 6,84 2.25,90.25", "LINE 12.25,80.25 6,84",
                          "LINE 12.25,80.25 21,79"};

TEST_F(QuadraticOperators, PiecesRunBackwardsAndTheLastOneForwards) {
  EXPECT_EQ(Run("1 1 M 1 21 21 21 Q"), Lines({"PATH"}) + kFourSteps);
  EXPECT_EQ(path.lastControl, (Point{1, 21}));
  EXPECT_EQ(path.userCurrent, (Point{21, 21}));
  EXPECT_EQ(path.deviceCurrent, (Point{21, 21}));
}

TEST_F(QuadraticOperators, RelativePointsCountFromThePen) {
  EXPECT_EQ(Run("1 1 M 0 20 20 20 q"), Lines({"PATH"}) + kFourSteps);
  EXPECT_EQ(path.lastControl, (Point{1, 21}));
}

// The step counts user units, whatever the matrix makes of them.
TEST_F(QuadraticOperators, StepIsMeasuredInUserSpace) {
  SetMatrix({0.5, 0, 0, 0.5, 3, 4});
  EXPECT_EQ(Run("1 1 M 1 21 21 21 Q"), Lines({"PATH", "LINE 4.125,91.125 3.5,95.5", "LINE 6,88 4.125,91.125",
                                              "LINE 9.125,86.125 6,88", "LINE 9.125,86.125 13.5,85.5"}));
  EXPECT_EQ(path.deviceCurrent, (Point{13.5, 14.5}));
}

// The step is the inverse of the length times ten, which is not always ten divided by the length.
TEST_F(QuadraticOperators, StepIsTenTimesTheInverseOfTheLength) {
  const auto sampleX = [](double step) {
    const double t = 1.0 - step;
    return t * t * 1.0 + 2.0 * t * (1.0 - t) * 1.0 + (1.0 - t) * (1.0 - t) * 7.0;
  };
  ASSERT_NE(sampleX(1.0 / 12.0 * 10.0), sampleX(10.0 / 12.0));
  Feed("1 1 M 1 7 7 7 Q");
  ASSERT_EQ(Drain().size(), 3u);
  EXPECT_EQ(PayloadOf<LineRecord>(1).x0, sampleX(1.0 / 12.0 * 10.0));
}

// Where the device pen stands does not matter.
TEST_F(QuadraticOperators, StartsAtTheUserPen) {
  Feed("1 1 M 0 0 50 50 Y");
  Drain();
  EXPECT_EQ(Run("1 21 21 21 Q"), kFourSteps);
}

TEST_F(QuadraticOperators, PolygonUpToTenLongIsOneLine) {
  EXPECT_EQ(Run("1 1 M 1 6 6 6 Q"), Lines({"PATH", "LINE 1,99 6,94"}));
  EXPECT_EQ(Run("1 1 M 1 2 2 2 Q"), Lines({"LINE 1,99 2,98"}));
}

TEST_F(QuadraticOperators, PolygonALittleLongerIsTwo) {
  // 5 + 5.01: the step is 10 / 10.01, so that a second sample comes at t = 0.01 / 10.01.
  const Lines lines = Run("1 1 M 1 6 6.01 6 Q");
  ASSERT_EQ(lines.size(), 3u);
  const double t = 0.01 / 10.01;
  const double x = t * t + 2 * t * (1 - t) + (1 - t) * (1 - t) * 6.01;
  const double y = t * t + 2 * t * (1 - t) * 6 + (1 - t) * (1 - t) * 6;
  EXPECT_NEAR(PayloadOf<LineRecord>(1).x0, x, 1e-12);
  EXPECT_NEAR(PayloadOf<LineRecord>(1).y0, 100 - y, 1e-12);
  EXPECT_EQ(PayloadOf<LineRecord>(1).x1, 1.0);
  EXPECT_EQ(PayloadOf<LineRecord>(2).x0, PayloadOf<LineRecord>(1).x0);
  EXPECT_EQ(PayloadOf<LineRecord>(2).x1, 6.01);
}

TEST_F(QuadraticOperators, PolygonWithoutLengthIsOneLineWithoutLength) {
  EXPECT_EQ(Run("3 4 M 3 4 3 4 Q"), Lines({"PATH", "LINE 3,96 3,96"}));
}

// On an axis every sample has a coordinate of 0. The step is a sixth that rounds down, so that a seventh sample comes
// almost at the end.
TEST_F(QuadraticOperators, SamplesOnAnAxisAreDropped) {
  const Lines lines = Run("0 0 M 30 0 60 0 Q");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[1], "LINE 60,100 60,100");
  EXPECT_LT(PayloadOf<LineRecord>(1).x0, 60.0);
  EXPECT_NEAR(PayloadOf<LineRecord>(1).x0, 60.0, 1e-12);
}

// The piece that ends on the sample at the axis is missing, the others are there: t = 0.5 gives (0, 16).
TEST_F(QuadraticOperators, PieceFromASampleOnAnAxisIsLost) {
  EXPECT_EQ(Run("-5 1 M -5 21 15 21 Q"),
            Lines({"PATH", "LINE -3.75,90.25 -5,99", "LINE 0,84 -3.75,90.25", "LINE 6.25,80.25 15,79"}));
}

TEST_F(QuadraticOperators, CurveThatStartsOnAnAxisLosesItsFirstPiece) {
  EXPECT_EQ(Run("0 1 M 0 21 20 21 Q"),
            Lines({"PATH", "LINE 5,84 1.25,90.25", "LINE 11.25,80.25 5,84", "LINE 11.25,80.25 20,79"}));
}

TEST_F(QuadraticOperators, MissingOperandsAreZero) {
  EXPECT_EQ(Run("3 4 M Q"), Lines({"PATH", "LINE 3,96 0,100"}));
  EXPECT_EQ(path.lastControl, (Point{0, 0}));
  EXPECT_EQ(path.userCurrent, (Point{0, 0}));
  EXPECT_EQ(Run("3 4 M q"), Lines({"LINE 3,96 3,96"}));
}

// 500 000 000 units twice over would take a hundred million steps of 1e-8. After a million samples the parameter has
// come to 1 - 999 999e-8, which is 9 999 990 on the way.
TEST_F(QuadraticOperators, SamplesEndAtAMillion) {
  const Lines lines = Run("0 0 M 500000000 0 1000000000 0 Q");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NEAR(PayloadOf<LineRecord>(1).x0, 9999990.0, 5.0);
  EXPECT_EQ(PayloadOf<LineRecord>(1).x1, 1000000000.0);
}

// The length overflows, the step is 0 and every sample is the pen.
TEST_F(QuadraticOperators, EndlessPolygonComesToAnEnd) {
  EXPECT_EQ(Run("0 0 M 1e200 0 1e300 0 Q"), Lines({"PATH", "LINE 0,100 1e+300,100"}));
  EXPECT_EQ(path.userCurrent, (Point{1e300, 0}));
}

TEST_F(QuadraticOperators, LostPayloadLosesOnePiece) {
  WarmQueue();
  Feed("1 1 M");
  FailAllocation(2);
  EXPECT_EQ(Run("1 21 21 21 Q"), Lines({kFourSteps[0], kFourSteps[2], kFourSteps[3]}));
}

// --- Tp, tp

// lastControl is the pen before the line, (0, 0): the control is (20, 0), and the cubic's are
// (20 + 20 + 10) / 3 and (20 + 20 + 20) / 3.
TEST_F(SmoothQuadraticOperators, BehindALineTheControlRunsOn) {
  EXPECT_EQ(Run("0 0 M 10 0 L 20 0 Tp"),
            Lines({"PATH", "LINE 0,100 10,100", "BEZI 10,100 16.66666667,100 20,100 20,100"}));
}

TEST_F(SmoothQuadraticOperators, MirrorsTheControlOfAQuadratic) {
  Feed("1 1 M 4 7 7 1 Q");
  Drain();
  // 2 * (7, 1) - (4, 7) = (10, -5); ((27, -9)) / 3 and ((33, -9)) / 3 for the end (13, 1).
  EXPECT_EQ(Run("13 1 Tp"), Lines({"BEZI 7,99 9,103 11,103 13,99"}));
  EXPECT_EQ(path.lastControl, (Point{13, 1}));
  EXPECT_EQ(path.userCurrent, (Point{13, 1}));
  EXPECT_EQ(path.deviceCurrent, (Point{13, 1}));
}

TEST_F(SmoothQuadraticOperators, RelativeEndCountsFromThePen) {
  Feed("1 1 M 4 7 7 1 Q");
  Drain();
  EXPECT_EQ(Run("6 0 tp"), Lines({"BEZI 7,99 9,103 11,103 13,99"}));
}

// The first leaves its end as the control, which the second mirrors onto itself: the controls lie at the pen and a
// third of the way.
TEST_F(SmoothQuadraticOperators, SecondInARowHasThePenForItsControl) {
  Feed("1 1 M 4 7 7 1 Q 13 1 Tp");
  Drain();
  EXPECT_EQ(Run("16 4 Tp"), Lines({"BEZI 13,99 13,99 14,98 16,96"}));
}

TEST_F(SmoothQuadraticOperators, MirrorsInUserSpace) {
  SetMatrix(kDoubled);
  Feed("1 1 M 4 7 7 1 Q");
  Drain();
  EXPECT_EQ(Run("13 1 Tp"), Lines({"BEZI 19,92 23,100 27,100 31,92"}));
}

// The third is the constant, not a division by 3: 5 * 0.3333333333333333 ends on another digit than 5 / 3.
TEST_F(SmoothQuadraticOperators, ThirdIsAConstant) {
  ASSERT_NE(5.0 * 0.3333333333333333, 5.0 / 3.0);
  Feed("0 1 M 1 1 L");
  Drain();
  ASSERT_EQ(path.lastControl, (Point{0, 1}));
  Feed("7 1 Tp");  // the control is (2, 1): 2 + 2 + 1
  Drain();
  EXPECT_EQ(PayloadOf<BezierRecord>(0).x1, 5.0 * 0.3333333333333333);
}

// The user pen goes to the end before anything is compared.
TEST_F(SmoothQuadraticOperators, CurveAllOnTheDevicePenStillMovesTheUserPen) {
  SetMatrix(kNothing);
  Feed("1 1 M");
  Drain();
  EXPECT_EQ(Run("2 3 Tp"), Lines());
  EXPECT_EQ(path.userCurrent, (Point{2, 3}));
  EXPECT_EQ(path.lastControl, (Point{1, 1}));
  EXPECT_EQ(path.deviceCurrent, (Point{0, 0}));
}

TEST_F(SmoothQuadraticOperators, LostPayloadLosesTheRecordAndMovesThePen) {
  WarmQueue();
  FailAllocation(1);
  EXPECT_EQ(Run("9 9 Tp"), Lines());
  EXPECT_EQ(path.userCurrent, (Point{9, 9}));
  EXPECT_EQ(path.deviceCurrent, (Point{9, 9}));
  EXPECT_EQ(path.lastControl, (Point{9, 9}));
}

// --- Y, y

// Device coordinates times the scale, and y is not turned.
TEST_F(CurveToEndOperators, WritesItsPointsUnturned) {
  StartMachine(100.0, 0.5);
  SetMatrix(kDoubled);
  for (const char* token : {"Y", "y"}) {
    SCOPED_TRACE(token);
    Feed("1 1 M");
    Drain();
    EXPECT_EQ(Run("2 3 4 5 " + std::string(token)), Lines({"BEZI 3.5,4 4.5,6 6.5,8 6.5,8"}));
  }
}

TEST_F(CurveToEndOperators, MovesTheDevicePenAlone) {
  Feed("1 1 M 2 3 4 5 Y");
  Drain();
  EXPECT_EQ(path.deviceCurrent, (Point{4, 5}));
  EXPECT_EQ(path.userCurrent, (Point{1, 1}));
  EXPECT_EQ(path.lastControl, (Point{1, 1}));
  EXPECT_EQ(Run("6 7 L"), Lines({"LINE 4,95 6,93"}));
}

TEST_F(CurveToEndOperators, CurveAllOnThePenIsDropped) {
  Feed("1 1 M");
  Drain();
  EXPECT_EQ(Run("1 1 1 1 Y"), Lines());
  EXPECT_EQ(Run("2 1 1 1 Y").size(), 1u);
  EXPECT_EQ(Run("1 1 2 1 Y").size(), 1u);
}

TEST_F(CurveToEndOperators, RecordIsZeroOutsideItsPoints) {
  Feed("1 1 M 2 3 4 5 Y");
  Drain();
  const auto& record = PayloadOf<BezierRecord>(1);
  const unsigned char zeros[28] = {};
  EXPECT_EQ(std::memcmp(record.reserved0, zeros, sizeof record.reserved0), 0);
  EXPECT_EQ(std::memcmp(record.reserved1, zeros, sizeof record.reserved1), 0);
}

TEST_F(CurveToEndOperators, LostPayloadLosesTheRecordAndMovesThePen) {
  WarmQueue();
  FailAllocation(1);
  EXPECT_EQ(Run("1 2 3 4 Y"), Lines());
  EXPECT_EQ(path.deviceCurrent, (Point{3, 4}));
}

// --- Numbers without end

TEST_F(Path, InfiniteNumbersAreDrawnAsTheyAre) {
  for (const char* program : {"1e999 -1e999 L", "1e999 H", "-1e999 V", "1e999 1 2 3 4 -1e999 C", "1 2 1e999 4 Sc",
                              "1e999 1e999 Tp", "1 2 1e999 4 Y", "1e999 1e999 m", "1 1 l", "Z2", "Z"}) {
    SCOPED_TRACE(program);
    Feed("1 1 M");
    Feed(program);
    Drain();
  }
}

}  // namespace
