// Frames: what the first one holds, what a push copies, what a pop sends and gives back, and the matrices.
#include "operators/graphics_state.h"
#include "operators/spaces.h"

#include <cstring>

#include "operators/operand_stack.h"
#include "operators/path.h"
#include "run/host_memory.h"
#include "tests/support/filter_test.h"

namespace {

class Frames : public FilterTest {
 protected:
  Frames() { StartMachine(); }

  // A pop from one opacity to another.
  Lines PopOpacity(double from, double to) {
    CurrentFrame().opacity = to;
    PushGraphicsState();
    CurrentFrame().opacity = from;
    PopGraphicsState();
    return Drain();
  }

  Lines PopFill(std::int32_t from, std::int32_t to) {
    CurrentFrame().fill.colour = to;
    PushGraphicsState();
    CurrentFrame().fill.colour = from;
    PopGraphicsState();
    return Drain();
  }

  // A stop block as a frame owns it.
  static StopBlock* NewStops() {
    auto* block = static_cast<StopBlock*>(AllocateHostCleared(sizeof(StopBlock) + sizeof(GradientStop)));
    block->references = 1;
    block->room = 1;
    block->Stops()[0] = {0x00332211, 0.5, 0.75};
    return block;
  }
};

class Matrices : public Frames {
 protected:
  static void Set(const TM& matrix) { CurrentFrame().currentMatrix = matrix; }
};

bool Same(const TM& m, const TM& n) { return std::memcmp(&m, &n, sizeof m) == 0; }

// --- The first frame

TEST_F(Frames, FirstFrameBeginsWithTheseValues) {
  const GraphicsState& frame = CurrentFrame();
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_EQ(run.graphics.saveDepth, 0);
  EXPECT_EQ(&frame, &run.graphics.Frame(0));
  for (const PaintColour* side : {&frame.fill, &frame.outline}) {
    EXPECT_EQ(side->name[0], 0);
    EXPECT_EQ(side->kind, 0);
    EXPECT_EQ(side->colour, 0);
    EXPECT_EQ(side->tint, 0);
    EXPECT_EQ(side->isRgb, 0u);
    for (const double value : side->cmyk) EXPECT_EQ(value, 0.0);
    for (const double value : side->rgb) EXPECT_EQ(value, 0.0);
  }
  EXPECT_EQ(frame.lineCap, 0);
  EXPECT_EQ(frame.lineJoin, 1);
  EXPECT_EQ(frame.miterLimit, 0);
  EXPECT_EQ(frame.miterLimitActive, 0);
  EXPECT_EQ(frame.thicknessState, 0);
  EXPECT_EQ(frame.lineWidth, 0.0);
  EXPECT_TRUE(Same(frame.currentMatrix, kIdentity));
  EXPECT_TRUE(Same(frame.gradientMatrix, kIdentity));
  EXPECT_EQ(frame.opacity, 1.0);
  EXPECT_EQ(frame.stopCount, 0);
  EXPECT_EQ(frame.stopsPartlyTransparent, 0u);
  EXPECT_EQ(frame.stops, nullptr);
  EXPECT_TRUE(Same(run.graphics.defaultMatrix, kIdentity));
}

TEST_F(Frames, ColourNameHoldsFiftyUnitsAndItsEnd) { EXPECT_EQ(sizeof(PaintColour::name), 51 * sizeof(char16_t)); }

// --- The start of an import: the current frame is made ready, and only the join goes to the first one. Frames,
// operands and pen stay as they are; they come back to nothing by balance.

TEST_F(Frames, StartOfAnImportMakesTheCurrentFrameReady) {
  CurrentFrame().lineJoin = 5;
  CurrentFrame().fill.colour = 7;
  PushGraphicsState();
  GraphicsState& frame = CurrentFrame();
  frame.currentMatrix = {1, 2, 3, 4, 5, 6};
  frame.gradientMatrix = {7, 8, 9, 10, 11, 12};
  frame.opacity = 99.0;
  frame.lineJoin = 6;
  StartMachine();
  EXPECT_EQ(run.graphics.frameIndex, 1);
  EXPECT_EQ(run.graphics.saveDepth, 1);
  EXPECT_TRUE(Same(frame.currentMatrix, kIdentity));
  EXPECT_TRUE(Same(frame.gradientMatrix, kIdentity));
  EXPECT_TRUE(Same(run.graphics.defaultMatrix, kIdentity));
  EXPECT_EQ(frame.opacity, 1.0);
  EXPECT_EQ(frame.lineJoin, 6);
  EXPECT_EQ(frame.fill.colour, 0);
  EXPECT_EQ(run.graphics.Frame(0).lineJoin, 1);
  EXPECT_EQ(run.graphics.Frame(0).fill.colour, 7);
}

TEST_F(Frames, StartOfAnImportLeavesOperandsAndPen) {
  Feed("10 20 M 30 40 L *u u 1 2");
  Drain();
  run.path.lastControl = {7, 8};
  run.clip.clipPending = 1;
  StartMachine();
  EXPECT_EQ(run.operands.size(), 2u);
  EXPECT_EQ(run.path.PathOpen, 0u);
  EXPECT_EQ(run.path.lastControl, (Point{0, 0}));
  EXPECT_EQ(run.path.userCurrent, (Point{30, 40}));
  EXPECT_EQ(run.path.deviceStart, (Point{10, 20}));
  EXPECT_EQ(run.path.compoundDepth, 1);
  EXPECT_EQ(run.clip.groupDepth, 1);
  EXPECT_EQ(run.clip.clipPending, 1);
}

// --- Push

TEST_F(Frames, PushCopiesEveryField) {
  GraphicsState& first = CurrentFrame();
  first.fill = {u"Moss", 1, 0x123456, 40, {0.1, 0.2, 0.3, 0.4}, {1, 2, 3}, 1};
  first.outline = {u"Fern", 2, -1, 60, {0.5, 0.6, 0.7, 0.8}, {4, 5, 6}, 0};
  first.lineCap = 2;
  first.lineJoin = 3;
  first.miterLimit = 600;
  first.miterLimitActive = 2;
  first.thicknessState = 3;
  first.lineWidth = 1.5;
  first.currentMatrix = {1, 2, 3, 4, 5, 6};
  first.gradientMatrix = {7, 8, 9, 10, 11, 12};
  first.opacity = 99.0;
  first.stopCount = 1;
  first.stopsPartlyTransparent = 1;
  first.stops = NewStops();

  PushGraphicsState();
  const GraphicsState& second = CurrentFrame();
  EXPECT_NE(&second, &first);
  EXPECT_EQ(run.graphics.frameIndex, 1);
  EXPECT_EQ(run.graphics.saveDepth, 1);
  for (const auto& [copy, original] :
       {std::pair(&second.fill, &first.fill), std::pair(&second.outline, &first.outline)}) {
    EXPECT_EQ(std::u16string_view(copy->name), original->name);
    EXPECT_EQ(copy->kind, original->kind);
    EXPECT_EQ(copy->colour, original->colour);
    EXPECT_EQ(copy->tint, original->tint);
    EXPECT_TRUE(std::equal(copy->cmyk, copy->cmyk + 4, original->cmyk));
    EXPECT_TRUE(std::equal(copy->rgb, copy->rgb + 3, original->rgb));
    EXPECT_EQ(copy->isRgb, original->isRgb);
  }
  EXPECT_EQ(second.lineCap, 2);
  EXPECT_EQ(second.lineJoin, 3);
  EXPECT_EQ(second.miterLimit, 600);
  EXPECT_EQ(second.miterLimitActive, 2);
  EXPECT_EQ(second.thicknessState, 3);
  EXPECT_EQ(second.lineWidth, 1.5);
  EXPECT_TRUE(Same(second.currentMatrix, first.currentMatrix));
  EXPECT_TRUE(Same(second.gradientMatrix, first.gradientMatrix));
  EXPECT_EQ(second.opacity, 99.0);
  EXPECT_EQ(second.stopCount, 1);
  EXPECT_EQ(second.stopsPartlyTransparent, 1u);
  EXPECT_EQ(second.stops, first.stops);
  EXPECT_EQ(Drain(), Lines());
}

TEST_F(Frames, ChangeToAPushedFrameEndsWithIt) {
  Feed("gs 3 4 tr 0.5 0.5 0.5 0.5 k 5 w");
  Feed(" gr");
  EXPECT_TRUE(Same(CurrentFrame().currentMatrix, kIdentity));
  EXPECT_EQ(CurrentFrame().fill.cmyk[0], 0.0);
  EXPECT_EQ(CurrentFrame().lineWidth, 0.0);
  Drain();
}

TEST_F(Frames, DefaultMatrixBelongsToNoFrame) {
  Feed("gs 3 4 tr @sv gr @rs");
  EXPECT_TRUE(Same(CurrentFrame().currentMatrix, {1, 0, 0, 1, 3, 4}));
}

// --- Pop

TEST_F(Frames, PopWithoutAPushIsNothing) {
  FeedPushOnly("1 2");
  run.clip.clipDepth = 1000;
  EXPECT_EQ(Run(" gr"), Lines());
  EXPECT_EQ(run.operands.size(), 2u);
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_EQ(run.graphics.saveDepth, 0);
  EXPECT_EQ(run.clip.clipDepth, 1000);
  EXPECT_TRUE(ShownMessages().empty());
}

TEST_F(Frames, PopOfAnUnchangedFrameIsSilent) {
  EXPECT_EQ(Run("gs gr"), Lines());
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_EQ(run.graphics.saveDepth, 0);
}

// The frame's value goes out times 255, cut to a byte: right for the first frame's 1.0, and an oddity for the values of
// the style parsers, which are on the scale to 255 already. 25500 is 63 9C, 65025 is FE 01, 51000 is C7 38.
TEST_F(Frames, PopSendsTheOpacityBelowTimes255AsAByte) {
  EXPECT_EQ(PopOpacity(128, 1), Lines({"TSPY 255"}));
  EXPECT_EQ(PopOpacity(1, 128), Lines({"TSPY 128"}));
  EXPECT_EQ(PopOpacity(1, 100), Lines({"TSPY 156"}));
  EXPECT_EQ(PopOpacity(1, 255), Lines({"TSPY 1"}));
  EXPECT_EQ(PopOpacity(1, 200), Lines({"TSPY 56"}));
  EXPECT_EQ(PopOpacity(1, 0), Lines({"TSPY 0"}));
  EXPECT_EQ(PopOpacity(1, 0.5), Lines({"TSPY 127"}));
  EXPECT_EQ(PopOpacity(254, 255), Lines({"TSPY 1"}));
}

// A style's value of 1 out of 255 and the first frame's 1.0 are the same number.
TEST_F(Frames, PopBetweenEqualOpacitiesIsSilent) {
  EXPECT_EQ(PopOpacity(1, 1), Lines());
  EXPECT_EQ(PopOpacity(128, 128), Lines());
}

TEST_F(Frames, PopSendsTheFillBelow) {
  EXPECT_EQ(PopFill(-1, 0), Lines({"FILL 0"}));
  EXPECT_EQ(PopFill(0, -1), Lines({"FILL -1"}));
  EXPECT_EQ(PopFill(0x0000FF, 0xFF0000), Lines({"FILL 16711680"}));
  EXPECT_EQ(PopFill(0x0000FF, 0x0000FF), Lines());
}

TEST_F(Frames, PopSendsTransparencyBeforeFill) {
  PushGraphicsState();
  CurrentFrame().opacity = 10;
  CurrentFrame().fill.colour = 5;
  EXPECT_EQ(Run(" gr"), Lines({"TSPY 255", "FILL 0"}));
}

TEST_F(Frames, PopSendsNothingElse) {
  PushGraphicsState();
  GraphicsState& frame = CurrentFrame();
  frame.outline = {u"Fern", 1, 0x123456, 60, {1, 1, 1, 1}, {4, 5, 6}, 1};
  frame.fill.kind = 1;
  frame.fill.tint = 50;
  frame.fill.cmyk[0] = 1;
  frame.fill.rgb[0] = 255;
  frame.fill.isRgb = 1;
  frame.fill.name[0] = u'x';
  frame.lineCap = 2;
  frame.lineJoin = 0;
  frame.miterLimit = 100;
  frame.miterLimitActive = 2;
  frame.thicknessState = 3;
  frame.lineWidth = 9;
  frame.currentMatrix = {2, 0, 0, 2, 0, 0};
  EXPECT_EQ(Run(" gr"), Lines());
}

TEST_F(Frames, PopZeroesTheFrame) {
  PushGraphicsState();
  const GraphicsState& popped = CurrentFrame();
  PopGraphicsState();
  const GraphicsState zero{};
  EXPECT_EQ(std::memcmp(&popped, &zero, sizeof zero), 0);
}

TEST_F(Frames, PopClearsTheOperandsWhenNoCutIsOpen) {
  EXPECT_EQ(Run("gs 1 (two) [3] gr"), Lines());
  EXPECT_TRUE(run.operands.empty());
  run.clip.clipDepth = -1;
  Feed("gs 1 2 gr");
  EXPECT_TRUE(run.operands.empty());
}

// --- Pop of a clip level

TEST_F(Frames, PopInsideACutKeepsTheOperands) {
  Feed("gs W gs 1 2");
  Drain();
  EXPECT_EQ(Run(" gr"), Lines());
  EXPECT_EQ(run.operands.size(), 2u);
  EXPECT_EQ(run.graphics.saveDepth, 1);
  EXPECT_EQ(run.clip.clipDepth, 1);
  EXPECT_EQ(run.clip.clipOpen, 1u);
}

TEST_F(Frames, PopOfTheLevelOfACutClosesItsGroup) {
  Feed("gs W 1 2");
  Drain();
  EXPECT_EQ(Run(" gr"), Lines({"DOCP 0", "ECGR 1"}));
  EXPECT_EQ(run.operands.size(), 2u);
  EXPECT_EQ(run.graphics.saveDepth, 0);
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_EQ(run.clip.clipDepth, 0);
  EXPECT_EQ(run.clip.clipOpen, 0u);
  EXPECT_EQ(run.clip.clipLevels[1], 0u);
}

TEST_F(Frames, ClosingAGroupComesBehindTheFrameRecords) {
  Feed("gs W");
  Drain();
  CurrentFrame().opacity = 10;
  CurrentFrame().fill.colour = 5;
  EXPECT_EQ(Run(" gr"), Lines({"TSPY 255", "FILL 0", "DOCP 0", "ECGR 1"}));
}

TEST_F(Frames, PopComplainsAbove999CutsAndGoesOn) {
  for (const int depth : {998, 999}) {
    run.clip.clipDepth = depth;
    Feed("gs gr");
    EXPECT_TRUE(ShownMessages().empty()) << depth;
  }
  for (const int depth : {1000, 1001, 100'000}) {
    run.clip.clipDepth = depth;
    const std::size_t shown = ShownMessages().size();
    Feed("gs 1 2 gr");
    ASSERT_EQ(ShownMessages().size(), shown + 1) << depth;
    EXPECT_EQ(ShownMessages().back().text, u"error");
    EXPECT_EQ(ShownMessages().back().caption, u"wcount greater than 999");
    EXPECT_EQ(run.graphics.saveDepth, 0);
    EXPECT_EQ(run.clip.clipDepth, depth);
    EXPECT_EQ(run.operands.size(), 2u);
    ClearOperands();
  }
  EXPECT_EQ(Drain(), Lines());
}

// --- @rax

TEST_F(Frames, ReplacedFrameBecomesTheOneBelow) {
  Feed("gs 3 4 tr 1 2");
  CurrentFrame().opacity = 10;
  CurrentFrame().fill.colour = 5;
  EXPECT_EQ(Run(" @rax"), Lines({"TSPY 255", "FILL 0"}));
  EXPECT_TRUE(Same(CurrentFrame().currentMatrix, kIdentity));
  EXPECT_EQ(CurrentFrame().opacity, 1.0);
  EXPECT_EQ(CurrentFrame().fill.colour, 0);
  EXPECT_EQ(run.graphics.frameIndex, 1);
  EXPECT_EQ(run.graphics.saveDepth, 1);
  EXPECT_EQ(run.operands.size(), 2u);
}

TEST_F(Frames, ReplacingTheFirstFrameAddsOneWithoutAPush) {
  CurrentFrame().fill.colour = 7;
  EXPECT_EQ(Run("@rax"), Lines());
  EXPECT_EQ(run.graphics.frameIndex, 1);
  EXPECT_EQ(run.graphics.saveDepth, 0);
  EXPECT_EQ(CurrentFrame().fill.colour, 7);
  EXPECT_EQ(Run("gr"), Lines());
  EXPECT_EQ(run.graphics.frameIndex, 1);
}

// --- Many frames

TEST_F(Frames, FramesBeyondAHundredCountOn) {
  for (const int depth : {99, 100, 101, 1000}) {
    for (int i = 1; i <= depth; ++i) {
      PushGraphicsState();
      CurrentFrame().lineWidth = i;
    }
    EXPECT_EQ(run.graphics.frameIndex, depth);
    EXPECT_EQ(run.graphics.saveDepth, depth);
    for (int i = depth; i >= 1; --i) {
      ASSERT_EQ(CurrentFrame().lineWidth, i);
      PopGraphicsState();
    }
    EXPECT_EQ(CurrentFrame().lineWidth, 0.0);
    EXPECT_EQ(run.graphics.frameIndex, 0);
    EXPECT_EQ(run.graphics.saveDepth, 0);
  }
}

// A reference to a frame stays good while others are pushed.
TEST_F(Frames, FramesDoNotMove) {
  GraphicsState& first = CurrentFrame();
  for (int i = 0; i < 500; ++i) PushGraphicsState();
  EXPECT_EQ(&run.graphics.Frame(0), &first);
}

// --- Stop blocks

TEST_F(Frames, StopBlockOutlivesTheFramesThatInheritedIt) {
  const std::size_t blocks = LiveCounts().blocks;
  PushGraphicsState();
  CurrentFrame().stops = NewStops();
  CurrentFrame().stopCount = 1;
  for (int i = 0; i < 3; ++i) {
    PushGraphicsState();
    PushGraphicsState();
    EXPECT_EQ(CurrentFrame().stops->Stops()[0].rgb, 0x00332211u);
    PopGraphicsState();
    PopGraphicsState();
    EXPECT_EQ(LiveCounts().blocks, blocks + 1);
    ASSERT_NE(CurrentFrame().stops, nullptr);
    EXPECT_EQ(CurrentFrame().stops->Stops()[0].opacity, 0.75);
  }
  PopGraphicsState();
  EXPECT_EQ(LiveCounts().blocks, blocks);
  EXPECT_EQ(CurrentFrame().stops, nullptr);
}

TEST_F(Frames, StopBlockSurvivesAReplacedCopy) {
  const std::size_t blocks = LiveCounts().blocks;
  CurrentFrame().stops = NewStops();
  Feed("gs @rax @rax");
  EXPECT_EQ(LiveCounts().blocks, blocks + 1);
  EXPECT_EQ(CurrentFrame().stops, run.graphics.Frame(0).stops);
  Feed("gr");
  EXPECT_EQ(LiveCounts().blocks, blocks + 1);
  EXPECT_EQ(CurrentFrame().stops->Stops()[0].offset, 0.5);
}

TEST_F(Frames, ReplacedFrameGivesItsOwnStopsBack) {
  const std::size_t blocks = LiveCounts().blocks;
  Feed("gs");
  CurrentFrame().stops = NewStops();
  Feed("@rax");
  EXPECT_EQ(LiveCounts().blocks, blocks);
  EXPECT_EQ(CurrentFrame().stops, nullptr);
}

// --- Matrices and spaces

TEST_F(Matrices, PointGoesThroughTheMatrix) {
  // x' = 2*10 + 5*100 + 11, y' = 3*10 + 7*100 + 13.
  EXPECT_EQ(TransformPoint({2, 3, 5, 7, 11, 13}, {10, 100}), (Point{531, 743}));
  Set({2, 3, 5, 7, 11, 13});
  EXPECT_EQ(ToDevice({10, 100}), (Point{531, 743}));
}

TEST_F(Matrices, HostSpaceScalesAndTurnsYAgainstTheHeight) {
  StartMachine(50.0, 0.5);
  EXPECT_EQ(ToHost({10, 20}), (Point{5, 15}));
  EXPECT_EQ(ToHost({0, 0}), (Point{0, 25}));
  EXPECT_EQ(ToHost({-4, 60}), (Point{-2, -5}));
}

// Height and y are scaled each by itself; scaling their difference would end on another digit here.
TEST_F(Matrices, HostSpaceScalesHeightAndYApart) {
  constexpr double kScale = 0.02822222222222222;
  StartMachine(100.0, kScale);
  ASSERT_NE((100.0 - 13.1) * kScale, 100.0 * kScale - 13.1 * kScale);
  EXPECT_EQ(ToHost({13.1, 13.1}), (Point{13.1 * kScale, 100.0 * kScale - 13.1 * kScale}));
  Run("0 0 M 13.1 13.1 L");
  EXPECT_EQ(PayloadOf<LineRecord>(1).y1, 100.0 * kScale - 13.1 * kScale);
}

// A matrix that mirrors y does not change the one turn of y on the way out.
TEST_F(Matrices, MirroringMatrixKeepsTheOneTurnOfY) {
  Set({1, 0, 0, -1, 0, 0});
  EXPECT_EQ(Run("0 0 M 1 2 L"), Lines({"PATH", "LINE 0,100 1,102"}));
}

TEST_F(Matrices, ConcatAppliesTheFirstThenTheSecond) {
  const TM first = {2, 3, 5, 7, 11, 13};
  const TM second = {17, 19, 23, 29, 31, 37};
  const TM product = ConcatMatrix(first, second);
  EXPECT_EQ(product.a, 2 * 17 + 3 * 23);
  EXPECT_EQ(product.b, 2 * 19 + 3 * 29);
  EXPECT_EQ(product.c, 5 * 17 + 7 * 23);
  EXPECT_EQ(product.d, 5 * 19 + 7 * 29);
  EXPECT_EQ(product.e, 11 * 17 + 13 * 23 + 31);
  EXPECT_EQ(product.f, 11 * 19 + 13 * 29 + 37);
  const Point p = {3, 4};
  EXPECT_EQ(TransformPoint(product, p), TransformPoint(second, TransformPoint(first, p)));
}

TEST_F(Matrices, TranslationMovesTheOriginInTheMatrixsOwnAxes) {
  for (const char* program : {"10 100 tr", "10 100 wTl"}) {
    Set({2, 3, 5, 7, 11, 13});
    Feed(program);
    EXPECT_TRUE(Same(CurrentFrame().currentMatrix, {2, 3, 5, 7, 531, 743})) << program;
  }
}

TEST_F(Matrices, SavedMatrixComesBack) {
  for (const auto& [save, restore] : {std::pair("@sv", "@rs"), {"@sv", "wRe"}, {"@sv", "wDocm"}, {"wSav", "@rs"}}) {
    Set({2, 3, 5, 7, 11, 13});
    Feed(save);
    Set(kIdentity);
    EXPECT_TRUE(Same(run.graphics.defaultMatrix, {2, 3, 5, 7, 11, 13}));
    Feed(restore);
    EXPECT_TRUE(Same(CurrentFrame().currentMatrix, {2, 3, 5, 7, 11, 13})) << save << restore;
    EXPECT_TRUE(Same(run.graphics.defaultMatrix, {2, 3, 5, 7, 11, 13}));
  }
}

TEST_F(Matrices, GradientMatrixIsLeftAlone) {
  CurrentFrame().gradientMatrix = {2, 0, 0, 2, 0, 0};
  Feed("10 20 tr @sv 1 1 wTl @rs");
  EXPECT_TRUE(Same(CurrentFrame().gradientMatrix, {2, 0, 0, 2, 0, 0}));
}

}  // namespace
