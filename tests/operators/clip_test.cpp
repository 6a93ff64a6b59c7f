// Clip groups, cuts of the current path, and drawing groups.
#include "operators/clip.h"

#include "operators/graphics_state.h"
#include "operators/path_end.h"
#include "tests/support/filter_test.h"

namespace {

class Clip : public FilterTest {
 protected:
  Clip() { StartMachine(); }

  template <class Block>
  Lines Queued(Block block) {
    block();
    return Drain();
  }
};

const Lines kStart = {"SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1"};
const Lines kFlatEnd = {"ENDP", "FDEF flat 1"};

// A cut: the bracket with empty geometry, and the paint of an untouched frame again.
Lines Cut() { return kStart + Lines{"CLIP 0", "DOCP 1", "THST 3", "WIDT8 0", "FILL 0", "OUTL 0"}; }

// --- The blocks of the bracket

TEST_F(Clip, GroupStartsWithBarePaintAndItsMarker) {
  CurrentFrame().lineWidth = 5.0;
  CurrentFrame().fill.colour = 7;
  EXPECT_EQ(Queued(StartClipGroup), kStart);
  EXPECT_EQ(run.clip.clipOpen, 1u);
}

TEST_F(Clip, GeometryEndsWithItsMarker) {
  EXPECT_EQ(Queued(EndClipGeometry), Lines({"CLIP 0"}));
  EXPECT_EQ(run.clip.clipOpen, 1u);
}

TEST_F(Clip, PaintComesBackFromTheFrameAndAlwaysThick) {
  CurrentFrame().thicknessState = 1;
  CurrentFrame().lineWidth = 2.5;
  CurrentFrame().fill.colour = -1;
  CurrentFrame().outline.colour = 0x00332211;
  EXPECT_EQ(Queued(RestorePaintAttributes), Lines({"THST 3", "WIDT8 2.5", "FILL -1", "OUTL 3351057"}));
  EXPECT_EQ(run.clip.clipOpen, 0u);
}

TEST_F(Clip, GroupEndsWithOneRecord) {
  run.clip.clipOpen = 1;
  EXPECT_EQ(Queued(EndClipGroup), Lines({"ECGR 1"}));
  EXPECT_EQ(run.clip.clipOpen, 1u);
}

// Each width is a double of its own, since the host frees each.
TEST_F(Clip, WidthsAreNotShared) {
  StartClipGroup();
  RestorePaintAttributes();
  Drain();
  EXPECT_NE(commands[1].data, commands[7].data);
}

TEST_F(Clip, GroupRecordsDependOnTheSetting) {
  EXPECT_EQ(Queued(StartGroup), Lines({"SGRP 1"}));
  EXPECT_EQ(Queued(EndGroup), Lines({"EGRP 1"}));
  for (const int enabled : {0, 2, -1}) {
    run.GroupsEnabled = enabled;
    EXPECT_EQ(Queued(StartGroup), Lines());
    EXPECT_EQ(Queued(EndGroup), Lines());
  }
}

// The setting switches drawing groups alone.
TEST_F(Clip, ClipGroupsDoNotDependOnTheSetting) {
  run.GroupsEnabled = 0;
  EXPECT_EQ(Queued(StartClipGroup), kStart);
  EXPECT_EQ(Queued(EndClipGroup), Lines({"ECGR 1"}));
}

// --- W

TEST_F(Clip, CutOutsideAnyFrameIsNothing) {
  Feed("0 0 M 5 0 L 5 5 L");
  Drain();
  for (const char* token : {"W", "W*"}) {
    EXPECT_EQ(Run(token), Lines());
    EXPECT_EQ(run.path.PathOpen, 1u);
    EXPECT_EQ(run.clip.clipDepth, 0);
    EXPECT_EQ(run.clip.clipOpen, 0u);
  }
}

// The path that was cut stands in front of the group, whose geometry is empty.
TEST_F(Clip, CutClosesAndEndsThePathAndWrapsNothing) {
  for (const char* token : {"W", "W*", "W*even"}) {
    SCOPED_TRACE(token);
    Feed("gs 0 0 M 5 0 L 5 5 L");
    Drain();
    EXPECT_EQ(Run(token), Lines({"LINE 5,95 0,100"}) + kFlatEnd + Cut());
    EXPECT_EQ(run.path.PathOpen, 0u);
    EXPECT_EQ(run.clip.clipDepth, 1);
    EXPECT_EQ(run.clip.clipLevels[1], 1u);
    EXPECT_EQ(run.clip.clipOpen, 1u);
    EXPECT_EQ(run.clip.clipPending, 0);
    Feed(" gr");
    Drain();
  }
}

TEST_F(Clip, CutNeedsNoPath) { EXPECT_EQ(Run("gs W"), Cut()); }

TEST_F(Clip, CutSendsThePaintOfItsFrameAgain) {
  Feed("gs");
  CurrentFrame().lineWidth = 1.5;
  CurrentFrame().fill.colour = 3;
  CurrentFrame().outline.colour = -1;
  EXPECT_EQ(Run("W"), kStart + Lines({"CLIP 0", "DOCP 1", "THST 3", "WIDT8 1.5", "FILL 3", "OUTL -1"}));
}

TEST_F(Clip, CutUnderAPendingClipEndsThePathWithoutAFill) {
  run.clip.clipPending = 1;
  Feed("gs 0 0 M");
  Drain();
  EXPECT_EQ(Run("W"), Lines({"ENDP"}) + Cut());
  EXPECT_EQ(run.clip.clipPending, 1);
}

TEST_F(Clip, CutLeavesTheOperands) {
  FeedPushOnly("1 2");
  Feed(" gs W W*");
  EXPECT_EQ(run.operands.size(), 2u);
  Drain();
}

TEST_F(Clip, CutInACompoundPathOnlyCountsAndIsPutOff) {
  Feed("gs 0 0 M 5 0 L 5 5 L *u");
  Drain();
  EXPECT_EQ(Run("W"), Lines());
  EXPECT_EQ(run.clip.clipDepth, 1);
  EXPECT_EQ(run.clip.clipLevels[1], 1u);
  EXPECT_EQ(run.clip.clipPending, 1);
  EXPECT_EQ(run.clip.clipOpen, 0u);
  EXPECT_EQ(run.path.PathOpen, 1u);
  EXPECT_EQ(Run("*u *U"), Lines());
  EXPECT_EQ(Run("*U"), Lines({"LINE 5,95 0,100", "ENDP"}) + Cut());
  EXPECT_EQ(run.clip.clipPending, 0);
}

// --- The end of a cut

TEST_F(Clip, GroupEndsAtThePopOfItsOwnLevel) {
  Feed("gs gs W gs gs");
  Drain();
  EXPECT_EQ(Run("gr gr"), Lines());
  EXPECT_EQ(Run("gr"), Lines({"DOCP 0", "ECGR 1"}));
  EXPECT_EQ(Run("gr"), Lines());
  EXPECT_EQ(run.graphics.saveDepth, 0);
}

TEST_F(Clip, GroupsOfSeveralLevelsEndOneByOne) {
  Feed("gs W gs W gs W");
  Drain();
  for (int depth = 2; depth >= 0; --depth) {
    EXPECT_EQ(Run("gr"), Lines({"DOCP 0", "ECGR 1"}));
    EXPECT_EQ(run.clip.clipDepth, depth);
    EXPECT_EQ(run.graphics.saveDepth, depth);
    // The inner end clears the flag for the outer groups too.
    EXPECT_EQ(run.clip.clipOpen, 0u);
  }
}

TEST_F(Clip, SecondCutOfALevelIsNeverClosed) {
  Feed("gs gs W W");
  Drain();
  EXPECT_EQ(run.clip.clipDepth, 2);
  EXPECT_EQ(Run("gr"), Lines({"DOCP 0", "ECGR 1"}));
  EXPECT_EQ(run.clip.clipDepth, 1);
  EXPECT_EQ(Run("gr"), Lines());
  EXPECT_EQ(run.clip.clipDepth, 1);
  EXPECT_EQ(run.clip.clipLevels[1], 2u);
  EXPECT_EQ(run.graphics.saveDepth, 0);
}

// --- Too many cuts

TEST_F(Clip, DebugComplainsAboveFiveCuts) {
  run.DebugMode = 1;
  Feed("gs W W W W W");
  EXPECT_TRUE(ShownMessages().empty());
  Drain();
  EXPECT_EQ(Run("W"), Cut());
  ASSERT_EQ(ShownMessages().size(), 1u);
  EXPECT_EQ(ShownMessages()[0].text, u"error");
  EXPECT_EQ(ShownMessages()[0].caption, u"wcount greater than 5");
  Feed("W");
  EXPECT_EQ(ShownMessages().size(), 2u);
  Drain();
}

// It complains before it looks whether the cut is put off.
TEST_F(Clip, DebugComplainsInACompoundPathToo) {
  run.DebugMode = 1;
  Feed("gs *u W W W W W W");
  EXPECT_EQ(ShownMessages().size(), 1u);
  Drain();
}

TEST_F(Clip, WithoutDebugManyCutsAreSilent) {
  for (const int mode : {0, 2}) {
    run.DebugMode = mode;
    Feed("gs W W W W W W W");
    EXPECT_TRUE(ShownMessages().empty());
  }
  Drain();
}

// The last level that is stored is 999; the ones above count, and read as no level.
TEST_F(Clip, LevelsAbove999AreCountedAndNotStored) {
  Feed("gs *u");
  for (int i = 1; i <= 1002; ++i) Feed("W");
  EXPECT_EQ(run.clip.clipDepth, 1002);
  EXPECT_EQ(run.clip.clipLevels[1], 1u);
  EXPECT_EQ(run.clip.clipLevels[998], 1u);
  EXPECT_EQ(run.clip.clipLevels[999], 1u);
  EXPECT_EQ(run.clip.Level(999), 1u);
  EXPECT_EQ(run.clip.Level(1000), 0u);
  EXPECT_EQ(run.clip.Level(1002), 0u);
  EXPECT_EQ(Run("gr"), Lines());
  EXPECT_EQ(run.clip.clipDepth, 1002);
  EXPECT_EQ(run.graphics.saveDepth, 0);
}

TEST_F(Clip, LastStoredLevelStillCloses) {
  Feed("gs *u");
  for (int i = 1; i <= 999; ++i) Feed("W");
  EXPECT_EQ(Run("gr"), Lines({"DOCP 0", "ECGR 1"}));
  EXPECT_EQ(run.clip.clipDepth, 998);
  EXPECT_EQ(run.clip.clipLevels[999], 0u);
  EXPECT_TRUE(ShownMessages().empty());
}

// --- wclip, XXX

TEST_F(Clip, EndOfClipClosesEndsAndMarks) {
  Feed("0 0 M 5 0 L 5 5 L 1 2 3");
  Drain();
  EXPECT_EQ(Run(" wclip"), Lines({"LINE 5,95 0,100"}) + kFlatEnd + Lines({"CLIP 0", "DOCP 1"}));
  EXPECT_EQ(Operands(), Lines());
  EXPECT_EQ(run.clip.clipOpen, 1u);
  EXPECT_EQ(run.clip.clipDepth, 0);
  EXPECT_EQ(run.path.PathOpen, 0u);
}

// It ends the path while the clip is still pending, and only then is it pending no more.
TEST_F(Clip, EndOfClipClearsThePendingClipBehindThePath) {
  run.clip.clipPending = 1;
  Feed("0 0 M");
  Drain();
  EXPECT_EQ(Run("wclip"), Lines({"ENDP", "CLIP 0", "DOCP 1"}));
  EXPECT_EQ(run.clip.clipPending, 0);
}

TEST_F(Clip, EndOfClipNeedsNoPathAndNoFrame) { EXPECT_EQ(Run("wclip"), Lines({"CLIP 0", "DOCP 1"})); }

TEST_F(Clip, EndOfClipInACompoundPathCancelsItsPaint) {
  Feed("0 0 M *u S");
  Drain();
  EXPECT_EQ(Run("wclip *U"), kFlatEnd + Lines({"CLIP 0", "DOCP 1"}));
  // Outside one it leaves the paint that was put off.
  Feed("0 0 M *u S *U wclip *u");
  Drain();
  EXPECT_EQ(Run("*U"), Lines({"NFIL none", "NOTL cmyk 0 0 0 0"}));
}

TEST_F(Clip, ContentMarkerComesOnlyWhileAClipIsOpen) {
  EXPECT_EQ(Run("XXX"), Lines());
  Feed("gs W");
  Drain();
  EXPECT_EQ(Run("XXX XXX"), Lines({"DOCP 1", "DOCP 1"}));
  Feed("gr");
  Drain();
  EXPECT_EQ(Run("XXX"), Lines());
}

// The end of a group as the translators write it leaves the clip open; only a pop at a cut's level closes it.
TEST_F(Clip, ClipStaysOpenBehindTheTranslatorsEndOfGroup) {
  StartClipGroup();
  EndClipGeometry();
  EndClipGroup();
  Feed("gs gr");
  Drain();
  EXPECT_EQ(Run("XXX"), Lines({"DOCP 1"}));
}

// --- u, U

TEST_F(Clip, GroupsNest) {
  EXPECT_EQ(Run("u u U U"), Lines({"SGRP 1", "SGRP 1", "EGRP 1", "EGRP 1"}));
  EXPECT_EQ(run.clip.groupDepth, 0);
}

TEST_F(Clip, EndOfGroupStopsAtZero) {
  EXPECT_EQ(Run("U u U U U"), Lines({"SGRP 1", "EGRP 1"}));
  EXPECT_EQ(run.clip.groupDepth, 0);
}

TEST_F(Clip, GroupsAreCountedWithTheSettingOff) {
  run.GroupsEnabled = 0;
  EXPECT_EQ(Run("u u U"), Lines());
  EXPECT_EQ(run.clip.groupDepth, 1);
  EXPECT_EQ(Run("U U"), Lines());
  EXPECT_EQ(run.clip.groupDepth, 0);
}

TEST_F(Clip, PlainGroupsDoNotTouchTheFrames) {
  Feed("1 2 u U");
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_EQ(run.graphics.saveDepth, 0);
  EXPECT_EQ(run.operands.size(), 2u);
  Drain();
}

// --- Documents

// The first clip that resolves takes the flat fill from everything that follows, and this goes on to the end.
TEST_F(Clip, DocumentWithClipsLosesItsFlatFillsFromTheFirstOnwards) {
  const Lines lines = ImportBody(
      "<defs><clipPath id=\"c\"><path d=\"M0 0L9 0L9 9Z\"/></clipPath></defs>"
      "<path d=\"M0 0L1 0\"/>"
      "<path d=\"M0 0L2 0\" clip-path=\"url(#c)\"/>"
      "<path d=\"M0 0L3 0\" clip-path=\"url(#c)\"/>"
      "<path d=\"M0 0L4 0\"/>");
  EXPECT_EQ(CountOf(lines, "FDEF"), 1u);
  EXPECT_LT(FindLine(lines, "FDEF"), FindLine(lines, "SCGR"));
  Lines brackets;
  for (const std::string& line : lines) {
    for (const char* name : {"SCGR", "CLIP", "DOCP", "ECGR"}) {
      if (line.starts_with(name)) brackets.push_back(line);
    }
  }
  const Lines bracket = {"SCGR 1", "CLIP 1", "CLIP 0", "DOCP 1", "DOCP 0", "ECGR 1"};
  EXPECT_EQ(brackets, bracket + bracket);
  // The plain path, each clip's own and its content, and the last path.
  EXPECT_EQ(CountOf(lines, "ENDP"), 6u);
  EXPECT_EQ(run.clip.clipPending, 1);
  EXPECT_EQ(run.clip.clipDepth, 0);
}

}  // namespace
