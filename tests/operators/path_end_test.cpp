// Closing and ending a path.
#include "operators/path_end.h"

#include <cstring>
#include <new>

#include "operators/graphics_state.h"
#include "tests/support/filter_test.h"

namespace {

class PathEnd : public FilterTest {
 protected:
  PathEnd() { StartMachine(); }

  // What the program queues behind an open path from 0, 0 to 10, 0 and 10, 10.
  Lines RunOnCorner(std::string_view program) {
    Feed("0 0 M 10 0 L 10 10 L");
    Drain();
    return Run(program);
  }
  Lines End() {
    EndPath();
    return Drain();
  }

  const PathState& path = run.path;
};

const Lines kCloseOfCorner = {"LINE 10,90 0,100"};
const Lines kFlatEnd = {"ENDP", "FDEF flat 1"};

// --- Closing

TEST_F(PathEnd, CloseDrawsToTheStartOfTheSubpath) {
  for (const char* token : {"Z", "z", "@c", "wCp", "zz"}) {
    SCOPED_TRACE(token);
    EXPECT_EQ(RunOnCorner(token), kCloseOfCorner);
    EXPECT_EQ(path.deviceCurrent, (Point{0, 0}));
    EXPECT_EQ(path.userCurrent, (Point{0, 0}));
    EXPECT_EQ(path.PathOpen, 1u);
  }
}

TEST_F(PathEnd, CloseLeavesTheControl) {
  Feed("0 0 M 10 0 L 3 4 5 6 10 10 C Z");
  Drain();
  EXPECT_EQ(path.lastControl, (Point{5, 6}));
}

TEST_F(PathEnd, CloseJoinsDeviceAndUserPoints) {
  CurrentFrame().currentMatrix = {2, 0, 0, 2, 5, 6};
  EXPECT_EQ(Run("1 1 M 3 1 L 3 3 L Z"), Lines({"PATH", "LINE 7,92 11,92", "LINE 11,92 11,88", "LINE 11,88 7,92"}));
  EXPECT_EQ(path.deviceCurrent, (Point{7, 8}));
  EXPECT_EQ(path.userCurrent, (Point{1, 1}));
}

TEST_F(PathEnd, CloseOnTheStartQueuesNothing) {
  EXPECT_EQ(Run("0 0 M 10 0 L 0 0 L Z"), Lines({"PATH", "LINE 0,100 10,100", "LINE 10,100 0,100"}));
  EXPECT_EQ(Run("5 5 M Z z @c wCp Z2"), Lines());
}

TEST_F(PathEnd, CloseWithoutAPathQueuesNothing) {
  EXPECT_EQ(Run("10 10 L Z z Z2 @c wCp"), Lines({"LINE 0,100 10,90"}));
  EXPECT_EQ(path.deviceCurrent, (Point{10, 10}));
}

// It is the device pen that counts: an arc leaves the user pen behind.
TEST_F(PathEnd, CloseBehindAnArcStartsAtTheDevicePen) {
  Feed("0 10 M 10 10 0 0 1 20 10 A");
  Drain();
  ASSERT_EQ(path.userCurrent, (Point{0, 10}));
  const Lines lines = Run("z");
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(PayloadOf<LineRecord>(0).x0, 20.0, 1e-5);
  EXPECT_EQ(PayloadOf<LineRecord>(0).x1, 0.0);
}

TEST_F(PathEnd, ModeDecidesWhatCloses) {
  Feed("0 0 M 0.05 0 L");
  Drain();
  ClosePath(kLeaveOpen);
  EXPECT_EQ(Drain(), Lines());
  ClosePath(kCloseIfNear);
  EXPECT_EQ(Drain(), Lines({"LINE 0.05,100 0,100"}));
  Feed("0 0 M 7 0 L");
  Drain();
  ClosePath(kCloseIfNear);
  EXPECT_EQ(Drain(), Lines());
  ClosePath(kClose);
  EXPECT_EQ(Drain(), Lines({"LINE 7,100 0,100"}));
}

// The gap is measured on both axes, and 0.05 itself is near.
TEST_F(PathEnd, NearCloseDrawsOverAGapOfAtMostATwentieth) {
  struct Row {
    const char* pen;
    bool closes;
  };
  for (const Row& row :
       {Row{"0.05 0", true}, Row{"0 0.05", true}, Row{"0.05 0.05", true}, Row{"-0.05 -0.05", true},
        Row{"0.0499999 0", true}, Row{"0.0500001 0", false}, Row{"0 0.0500001", false}, Row{"-0.0500001 0", false},
        Row{"0 -0.0500001", false}, Row{"0.05 0.0500001", false}, Row{"0.0500001 0.05", false},
        Row{"0.05000000000000001 0", false}, Row{"0 0.05000000000000001", false}, Row{"1 0", false}}) {
    SCOPED_TRACE(row.pen);
    for (const char* token : {"Z2", "z2"}) {
      Feed("0 0 M " + std::string(row.pen) + " L");
      Drain();
      EXPECT_EQ(Run(token).size(), row.closes ? 1u : 0u);
      EXPECT_EQ(path.deviceCurrent == path.deviceStart, row.closes);
      EXPECT_EQ(path.userCurrent == path.userStart, row.closes);
    }
  }
}

TEST_F(PathEnd, GapIsMeasuredInDeviceUnits) {
  CurrentFrame().currentMatrix = {0.01, 0, 0, 0.01, 0, 0};
  Feed("0 0 M 4 4 L");
  Drain();
  EXPECT_EQ(Run("Z2"), Lines({"LINE 0.04,99.96 0,100"}));
  CurrentFrame().currentMatrix = {10, 0, 0, 10, 0, 0};
  Feed("0 0 M 0.04 0.04 L");
  Drain();
  EXPECT_EQ(Run("Z2"), Lines());
}

TEST_F(PathEnd, NearCloseBehindACloseFindsThePenOnTheStart) { EXPECT_EQ(RunOnCorner("Z Z2"), kCloseOfCorner); }

TEST_F(PathEnd, TwoSubpathsCloseEachToItsOwnStart) {
  EXPECT_EQ(Run("0 0 M 10 0 L 20 20 M 30 20 L 30 30 L Z Z2"),
            Lines({"PATH", "LINE 0,100 10,100", "LINE 20,80 30,80", "LINE 30,80 30,70", "LINE 30,70 20,80"}));
  EXPECT_EQ(End(), kFlatEnd);
}

// Inside a compound path the plain closes cancel the paint that was put off, and the other two do not.
TEST_F(PathEnd, CloseInACompoundPathCancelsItsPaint) {
  for (const char* token : {"Z", "z", "wCp"}) {
    EXPECT_EQ(RunOnCorner("*u S " + std::string(token) + " *U"), kCloseOfCorner) << token;
    End();
  }
  for (const char* token : {"@c", "Z2"}) {
    EXPECT_EQ(CountOf(RunOnCorner("*u S " + std::string(token) + " *U"), "NOTL"), 1u) << token;
  }
}

// The paint is cancelled even where there is nothing to close, below zero too, and is kept outside compound paths.
TEST_F(PathEnd, CloseCancelsThePaintWheneverTheDepthIsNotZero) {
  EXPECT_EQ(Run("*u S Z *U"), Lines());
  Feed("*u S");
  run.path.compoundDepth = -1;
  Feed("Z");
  EXPECT_EQ(path.deferredPaint, PaintNothing);
  run.path.compoundDepth = 1;
  Feed("S");
  run.path.compoundDepth = 0;
  Feed("Z");
  EXPECT_NE(path.deferredPaint, PaintNothing);
}

// --- Ending

TEST_F(PathEnd, EndQueuesItsMarkAndAFlatFill) {
  EXPECT_EQ(Run("0 0 M 10 0 L"), Lines({"PATH", "LINE 0,100 10,100"}));
  EXPECT_EQ(End(), kFlatEnd);
  EXPECT_EQ(path.PathOpen, 0u);
}

TEST_F(PathEnd, FlatFillIsZeroButForMatricesTypeAndScale) {
  Feed("0 0 M");
  EndPath();
  Drain();
  const auto& fill = PayloadOf<FillDefinition>(2);
  EXPECT_EQ(commands[2].size, 1216u);
  FillDefinition expected;
  std::memset(static_cast<void*>(&expected), 0, sizeof expected);
  expected.inverseMatrix = kIdentity;
  expected.forwardMatrix = kIdentity;
  expected.fillType = 1;
  expected.fillScale = 1.0;
  EXPECT_EQ(std::memcmp(&fill, &expected, sizeof fill), 0);
}

TEST_F(PathEnd, EndWithoutAPathIsNothing) {
  EXPECT_EQ(End(), Lines());
  Feed("10 0 L");
  Drain();
  EXPECT_EQ(End(), Lines());
}

TEST_F(PathEnd, SecondEndIsNothing) {
  Feed("0 0 M");
  EndPath();
  EndPath();
  EXPECT_EQ(Drain(), Lines({"PATH"}) + kFlatEnd);
}

TEST_F(PathEnd, PendingClipLeavesTheFillOut) {
  run.clip.clipPending = 1;
  Feed("0 0 M 10 0 L");
  Drain();
  EXPECT_EQ(End(), Lines({"ENDP"}));
  EXPECT_EQ(path.PathOpen, 0u);
  EXPECT_EQ(run.clip.clipPending, 1);
}

TEST_F(PathEnd, EndLeavesThePen) {
  Feed("1 1 M 10 20 L");
  EndPath();
  Drain();
  EXPECT_EQ(path.userCurrent, (Point{10, 20}));
  EXPECT_EQ(path.deviceCurrent, (Point{10, 20}));
  EXPECT_EQ(Run("1 1 l"), Lines({"LINE 10,80 11,79"}));
}

TEST_F(PathEnd, MoveBehindTheEndOpensANewPath) {
  Feed("0 0 M");
  EndPath();
  Drain();
  EXPECT_EQ(Run("0 0 M"), Lines({"PATH"}));
}

// --- BB

TEST_F(PathEnd, FlatFillOfItsOwnHasNoScaleAndClearsTheStack) {
  EXPECT_EQ(Run("0 0 M 1 2 3 BB"), Lines({"PATH", "FDEF flat 0"}));
  EXPECT_EQ(Operands(), Lines());
  EXPECT_EQ(path.PathOpen, 1u);
  const auto& fill = PayloadOf<FillDefinition>(1);
  EXPECT_EQ(commands[1].size, 1216u);
  FillDefinition expected;
  std::memset(static_cast<void*>(&expected), 0, sizeof expected);
  expected.inverseMatrix = kIdentity;
  expected.forwardMatrix = kIdentity;
  expected.fillType = 1;
  EXPECT_EQ(std::memcmp(&fill, &expected, sizeof fill), 0);
}

TEST_F(PathEnd, FlatFillOfItsOwnStandsBackForAGradient) {
  run.paint.GradientFillPending = 1;
  EXPECT_EQ(Run("1 2 3 BB"), Lines());
  EXPECT_EQ(Operands(), Lines());
  EXPECT_EQ(run.paint.GradientFillPending, 1);
}

// A pending clip matters to the end of a path alone.
TEST_F(PathEnd, FlatFillOfItsOwnComesUnderAPendingClip) {
  run.clip.clipPending = 1;
  EXPECT_EQ(Run("BB"), Lines({"FDEF flat 0"}));
}

// --- Whole elements

// Elements end their paths by force: closed when a fill was given, else only over a near gap.
TEST_F(PathEnd, ElementWithFillClosesAndEndsInOrder) {
  const Lines lines = ImportBody("<path d=\"M0 0L10 0L10 10\" style=\"fill:#ff0000;stroke:#0000ff\"/>");
  const std::size_t begin = FindLine(lines, "PATH");
  ASSERT_LT(begin, lines.size());
  for (const char* attribute : {"WIDT", "THST", "OUTL", "FILL"}) EXPECT_LT(FindLine(lines, attribute), begin);
  // The pop goes back to the first frame's fill.
  EXPECT_EQ(Lines(lines.begin() + static_cast<std::ptrdiff_t>(begin), lines.end()),
            Lines({"PATH", "LINE 0,10 1,10", "LINE 1,10 1,9", "LINE 1,9 0,10", "ENDP", "FDEF flat 1", "FILL 0"}));
}

TEST_F(PathEnd, ElementWithoutFillIsClosedOverANearGapOnly) {
  const auto segments = [this](const char* d) {
    return CountOf(ImportBody("<path style=\"fill:none;stroke:#0000ff\" d=\"" + std::string(d) + "\"/>"), "LINE");
  };
  EXPECT_EQ(segments("M0 0L10 0L0 1"), 2u);
  ResetImportRun();
  EXPECT_EQ(segments("M0 0L10 0L0 0.05"), 3u);
}

TEST_F(PathEnd, ElementWithoutSegmentsEndsNoPath) {
  const Lines lines = ImportBody("<rect width=\"5\" height=\"5\"/><circle r=\"0\"/>");
  EXPECT_EQ(CountOf(lines, "PLYR"), 2u);
  EXPECT_EQ(CountOf(lines, "ENDP"), 0u);
  EXPECT_EQ(CountOf(lines, "FDEF"), 0u);
}

}  // namespace
