// Painting operators, compound paths, and throwing a path away.
#include "operators/painting.h"

#include "operators/graphics_state.h"
#include "tests/support/filter_test.h"

namespace {

class Painting : public FilterTest {
 protected:
  Painting() { StartMachine(); }

  // Opens a path from 0, 0 to 5, 0 and 5, 5 and takes its records away.
  void Corner() {
    Feed("0 0 M 5 0 L 5 5 L");
    Drain();
  }

  const PathState& path = run.path;
};

class Compound : public Painting {};
class Discarding : public Painting {};

const Lines kClose = {"LINE 5,95 0,100"};
const Lines kFlatEnd = {"ENDP", "FDEF flat 1"};
const Lines kFill = {"NFIL cmyk 0 0 0 0", "NOTL none"};
const Lines kStroke = {"NFIL none", "NOTL cmyk 0 0 0 0"};
const Lines kBoth = {"NFIL cmyk 0 0 0 0", "NOTL cmyk 0 0 0 0"};

struct Action {
  const char* token;
  bool closes;
  Lines colours;
  std::int32_t fillSelector;
  std::uint32_t strokeSelected;
  bool closesDeferred;  // the action that is put off closes as well
};

const Action kActions[] = {
    {"f", true, kFill, 1, 0, true},     {"F", true, kFill, 1, 0, true},     {"fill", true, kFill, 1, 0, true},
    {"Fillp", true, kFill, 1, 0, true}, {"S", false, kStroke, 0, 1, false}, {"s", true, kStroke, 0, 1, false},
    {"@", true, kStroke, 0, 1, false},  {"B", false, kBoth, 1, 1, false},   {"Pa", false, kBoth, 1, 1, false},
    {"@B", false, kBoth, 1, 1, false},  {"b", true, kBoth, 1, 1, true},     {"@b", true, kBoth, 1, 1, true},
};

TEST_F(Painting, ActionsCloseSelectSendColoursAndEndThePath) {
  for (const Action& action : kActions) {
    SCOPED_TRACE(action.token);
    Corner();
    EXPECT_EQ(Run(action.token), (action.closes ? kClose : Lines()) + action.colours + kFlatEnd);
    EXPECT_EQ(path.fillSelector, action.fillSelector);
    EXPECT_EQ(path.strokeSelected, action.strokeSelected);
    EXPECT_EQ(path.PathOpen, 0u);
    EXPECT_EQ(path.compoundDepth, 0);
  }
}

TEST_F(Painting, ActionsLeaveTheOperands) {
  for (const Action& action : kActions) {
    SCOPED_TRACE(action.token);
    FeedPushOnly("1 2");
    Corner();
    Feed(action.token);
    EXPECT_EQ(Operands(), Lines({"Number 2", "Number 1"}));
    Drain();
    Feed("D");
  }
}

// Colours go out although there is nothing to paint.
TEST_F(Painting, ActionsWithoutAPathSendTheirColours) {
  for (const Action& action : kActions) EXPECT_EQ(Run(action.token), action.colours) << action.token;
}

// A second fill sees the stroke that a paint before it selected.
TEST_F(Painting, FillLeavesTheStrokeSelected) {
  EXPECT_EQ(Run("S f"), kStroke + kBoth);
  EXPECT_EQ(path.strokeSelected, 1u);
  // Until a move opens a path.
  Feed("0 0 M");
  EXPECT_EQ(path.strokeSelected, 0u);
  EXPECT_EQ(path.fillSelector, 0);
  Drain();
  EXPECT_EQ(Run("f"), kFill + kFlatEnd);
}

TEST_F(Painting, RecordsOfOnePathComeInOrder) {
  run.clip.clipOpen = 1;
  Feed("0.1 0.2 0.3 0.4 k 0.5 0.6 0.7 0.8 K");
  EXPECT_EQ(Run("0 0 M 5 0 L 6 1 7 2 5 5 C b"),
            Lines({"PATH", "LINE 0,100 5,100", "BEZI 5,100 6,99 7,98 5,95", "DOCP 1", "LINE 5,95 0,100",
                   "NFIL cmyk 0.1 0.2 0.3 0.4", "NOTL cmyk 0.5 0.6 0.7 0.8", "ENDP", "FDEF flat 1"}));
}

TEST_F(Painting, OnlyTheClosingFillAndStrokeMarksAnOpenClip) {
  run.clip.clipOpen = 1;
  for (const Action& action : kActions) {
    SCOPED_TRACE(action.token);
    Corner();
    const Lines lines = Run(action.token);
    const bool marks = std::string_view(action.token) == "b" || std::string_view(action.token) == "@b";
    EXPECT_EQ(CountOf(lines, "DOCP 1"), marks ? 1u : 0u);
    EXPECT_EQ(lines.front() == "DOCP 1", marks);
  }
}

TEST_F(Painting, MarkComesAtOnceWithinACompoundPathAndNotAgainAtItsEnd) {
  run.clip.clipOpen = 1;
  Corner();
  EXPECT_EQ(Run("*u b"), Lines({"DOCP 1"}) + kClose);
  EXPECT_EQ(Run("*U"), kBoth + kFlatEnd);
}

TEST_F(Painting, GradientStandsInForTheFillOnce) {
  run.paint.GradientFillPending = 1;
  Corner();
  EXPECT_EQ(Run("f"), kClose + Lines({"NOTL none"}) + kFlatEnd);
  EXPECT_EQ(run.paint.GradientFillPending, 0);
  Corner();
  EXPECT_EQ(Run("f"), kClose + kFill + kFlatEnd);
}

TEST_F(Painting, PendingClipLeavesTheFlatFillOut) {
  run.clip.clipPending = 1;
  Corner();
  EXPECT_EQ(Run("B"), kBoth + Lines({"ENDP"}));
}

// --- Compound paths

TEST_F(Compound, PaintIsPutOffToTheLastEnd) {
  for (const Action& action : kActions) {
    SCOPED_TRACE(action.token);
    Corner();
    run.path.fillSelector = -1;
    run.path.strokeSelected = 0;
    Feed("*u *u");
    EXPECT_EQ(Run(action.token), action.closes ? kClose : Lines());
    EXPECT_EQ(path.fillSelector, -1);
    EXPECT_EQ(path.strokeSelected, 0u);
    EXPECT_EQ(path.PathOpen, 1u);
    EXPECT_EQ(Run("*U"), Lines());
    EXPECT_EQ(Run("*U"), action.colours + kFlatEnd);
  }
}

// The pen is taken off the start between the paint and the end, to see whether the end closes again.
TEST_F(Compound, DeferredActionClosesAgainOrNot) {
  for (const Action& action : kActions) {
    SCOPED_TRACE(action.token);
    Corner();
    Feed("*u " + std::string(action.token) + " 5 5 L");
    Drain();
    // Neither S nor B moved the pen off 5, 5; the line then has no length. Either way the pen is at 5, 5.
    ASSERT_EQ(path.deviceCurrent, (Point{5, 5}));
    EXPECT_EQ(Run("*U"), (action.closesDeferred ? kClose : Lines()) + action.colours + kFlatEnd);
  }
}

TEST_F(Compound, FillClosesEachSubpathAtOnceAndPaintsOnce) {
  EXPECT_EQ(Run("*u 0 0 M 5 0 L 5 5 L f 10 10 M 20 10 L 20 20 L f *U"),
            Lines({"PATH", "LINE 0,100 5,100", "LINE 5,100 5,95", "LINE 5,95 0,100", "LINE 10,90 20,90",
                   "LINE 20,90 20,80", "LINE 20,80 10,90"}) +
                kFill + kFlatEnd);
}

TEST_F(Compound, LastPaintCounts) {
  Corner();
  EXPECT_EQ(Run("*u f S *U"), kClose + kStroke + kFlatEnd);
}

TEST_F(Compound, CloseBehindThePaintCancelsItAndBeforeItDoesNot) {
  Corner();
  EXPECT_EQ(Run("*u f Z *U"), kClose);
  EXPECT_EQ(path.PathOpen, 1u);
  EXPECT_EQ(Run("*u Z f *U"), kFill + kFlatEnd);
}

TEST_F(Compound, EndBeforeAnyPaintDoesNothing) {
  Corner();
  EXPECT_EQ(Run("*u *U"), Lines());
  EXPECT_EQ(path.PathOpen, 1u);
}

// What ran at an end runs again at the next one that has no paint of its own.
TEST_F(Compound, PaintIsKeptBehindItsEnd) {
  Corner();
  EXPECT_EQ(Run("*u S *U"), kStroke + kFlatEnd);
  Corner();
  EXPECT_EQ(Run("*u *U"), kStroke + kFlatEnd);
}

// A paint outside any compound path is not remembered.
TEST_F(Compound, PaintThatRanAtOnceIsNotKept) {
  Corner();
  Feed("S");
  Corner();
  EXPECT_EQ(Run("*u *U"), Lines());
}

TEST_F(Compound, EndWithoutABeginGoesBelowZero) {
  Corner();
  EXPECT_EQ(Run("*U"), Lines());
  EXPECT_EQ(path.compoundDepth, -1);
  // Anything but 0 puts paint off; the next begin comes back to 0 and runs nothing.
  EXPECT_EQ(Run("S *u"), Lines());
  EXPECT_EQ(path.compoundDepth, 0);
  EXPECT_EQ(Run("*U *u *u *U"), kStroke + kFlatEnd);
}

TEST_F(Compound, CutTakesEffectAtTheEndBeforeThePaint) {
  Feed("gs");
  Corner();
  EXPECT_EQ(Run("*u W S *U"), kClose +
                                  Lines({"ENDP", "SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1",
                                         "CLIP 0", "DOCP 1", "THST 3", "WIDT8 0", "FILL 0", "OUTL 0"}) +
                                  kStroke);
  EXPECT_EQ(run.clip.clipPending, 0);
  EXPECT_EQ(run.clip.clipOpen, 1u);
}

// A clip that an element left pending is taken for a cut here.
TEST_F(Compound, PendingClipOfAnElementTakesEffectToo) {
  run.clip.clipPending = 1;
  EXPECT_EQ(CountOf(Run("*u *U"), "SCGR"), 1u);
  EXPECT_EQ(run.clip.clipPending, 0);
  EXPECT_EQ(run.clip.clipDepth, 0);
}

TEST_F(Compound, InnerEndLeavesThePendingCut) {
  Feed("gs *u *u W");
  EXPECT_EQ(Run("*U"), Lines());
  EXPECT_EQ(run.clip.clipPending, 1);
}

// --- N, n, newpath

TEST_F(Discarding, TakesThePathAndTheRecordInFrontOfIt) {
  for (const char* token : {"N", "n", "newpath", "newpaths"}) {
    SCOPED_TRACE(token);
    Feed("u u u 1 2");
    Feed(" 0 0 M");
    EXPECT_EQ(Run(token), Lines({"SGRP 1", "SGRP 1"}));
    EXPECT_EQ(path.PathOpen, 0u);
    EXPECT_EQ(run.operands.size(), 2u);
    Feed("D");
  }
}

// What an open path has queued goes with it. The host's memory behind dropped records is not given back, so that this
// path has none.
TEST_F(Discarding, TakesEverythingBehindTheMove) {
  Feed("u u 0 0 M XX u U u");
  EXPECT_EQ(Run("N"), Lines({"SGRP 1"}));
}

TEST_F(Discarding, PathAtTheHeadOfTheQueueEmptiesIt) {
  Feed("0 0 M u u");
  EXPECT_EQ(Run("N"), Lines());
  EXPECT_EQ(path.PathOpen, 0u);
  EXPECT_EQ(Run("0 0 M u"), Lines({"PATH", "SGRP 1"}));
}

TEST_F(Discarding, WithoutAPathInTheQueueOnlyTheFlagGoes) {
  Feed("0 0 M");
  Drain();
  Feed("u");
  EXPECT_EQ(Run("N"), Lines({"SGRP 1"}));
  EXPECT_EQ(path.PathOpen, 0u);
}

TEST_F(Discarding, InsideAFrameNothingIsDiscarded) {
  FeedPushOnly("1 2");
  Feed(" gs u 0 0 M N");
  EXPECT_EQ(run.operands.size(), 2u);
  EXPECT_EQ(path.PathOpen, 1u);
  EXPECT_EQ(Drain(), Lines({"SGRP 1", "PATH"}));
  for (const char* token : {"n", "newpath"}) {
    FeedPushOnly("1 2");
    Feed(token);
    EXPECT_EQ(run.operands.size(), 0u) << token;
    EXPECT_EQ(path.PathOpen, 1u);
  }
}

TEST_F(Discarding, UnderAPendingClipNothingIsDiscarded) {
  run.clip.clipPending = 1;
  FeedPushOnly("1 2");
  Feed(" 0 0 M N");
  EXPECT_EQ(run.operands.size(), 2u);
  EXPECT_EQ(path.PathOpen, 1u);
  Feed("n");
  EXPECT_EQ(run.operands.size(), 0u);
  EXPECT_EQ(path.PathOpen, 1u);
  EXPECT_EQ(Drain(), Lines({"PATH"}));
}

TEST_F(Discarding, PenStaysWhereItWas) {
  Feed("3 4 M N");
  EXPECT_EQ(path.userCurrent, (Point{3, 4}));
  EXPECT_EQ(Run("5 6 L"), Lines({"LINE 3,96 5,94"}));
}

}  // namespace
