// Fill, lines and opacity of what is drawn.
#include "tests/preview/preview_bench.h"

using namespace preview_tests;

namespace {

using PaintedShapes = PreviewTest;

}  // namespace

TEST_F(PaintedShapes, ARectangleIsFilledWithItsColourAndNothingElse) {
  const Picture picture = DrawBody(R"(<rect x="20" y="10" width="30" height="40" style="fill:#ff0000"/>)");
  EXPECT_EQ(picture.At(20, 10), kRed);
  EXPECT_EQ(picture.At(49, 49), kRed);
  EXPECT_EQ(picture.At(19, 10), kNothing);
  EXPECT_EQ(picture.At(50, 49), kNothing);
  EXPECT_EQ(picture.At(20, 9), kNothing);
  EXPECT_EQ(picture.At(49, 50), kNothing);
}

TEST_F(PaintedShapes, LaterOnesLieAbove) {
  const Picture picture = DrawBody(R"(<rect width="50" height="50" style="fill:#ff0000"/>
                                      <rect x="25" width="50" height="50" style="fill:#0000ff"/>)");
  EXPECT_EQ(picture.At(10, 10), kRed);
  EXPECT_EQ(picture.At(30, 10), kBlue);
}

TEST_F(PaintedShapes, WithoutFillAndLineNothingIsDrawn) {
  const Picture picture = DrawBody(R"(<rect width="50" height="50" style="fill:none;stroke:none"/>)");
  EXPECT_EQ(picture.Ink().right, -1);
  EXPECT_TRUE(drawer.Bounds().empty);
}

TEST_F(PaintedShapes, ALineHasItsWidthHalfToEachSide) {
  const Picture picture =
      DrawBody(R"(<line x1="10" y1="50" x2="90" y2="50" style="fill:none;stroke:#0000ff;stroke-width:10"/>)");
  EXPECT_EQ(picture.At(50, 44), kNothing);
  EXPECT_EQ(picture.At(50, 45), kBlue);
  EXPECT_EQ(picture.At(50, 54), kBlue);
  EXPECT_EQ(picture.At(50, 55), kNothing);
  EXPECT_EQ(picture.At(9, 50), kNothing);
  EXPECT_EQ(picture.At(10, 50), kBlue);
}

TEST_F(PaintedShapes, ALineWithoutAWidthIsOnePixelThick) {
  const Picture picture = DrawBody(R"(<line x1="10" y1="50.5" x2="90" y2="50.5" style="fill:none;stroke:#0000ff"/>)");
  EXPECT_EQ(picture.At(50, 49), kNothing);
  EXPECT_TRUE(Near(picture.At(50, 50), kBlue, 1));
  EXPECT_EQ(picture.At(50, 51), kNothing);
}

TEST_F(PaintedShapes, ThicknessOneIsNoLineEvenWithAWidth) {
  TakeValue(KEY_FILL, -1);
  TakeWidth(1.0);
  TakeValue(KEY_THST, 3);
  TakeValue(KEY_THST, 1);
  TakeSquare(4, 4);
  EXPECT_EQ(Picture(drawer).Ink().right, -1);
}

TEST_F(PaintedShapes, AnOutlineOfNoColourIsNotDrawn) {
  TakeValue(KEY_FILL, -1);
  TakeWidth(1.0);
  TakeValue(KEY_THST, 3);
  TakeValue(KEY_OUTL, -1);
  TakeSquare(4, 4);
  EXPECT_EQ(Picture(drawer).Ink().right, -1);
}

TEST_F(PaintedShapes, ButtCapsEndWithTheLine) {
  const Picture picture =
      DrawBody(R"(<line x1="30" y1="50" x2="70" y2="50" style="stroke:#0000ff;stroke-width:20;stroke-linecap:butt"/>)");
  EXPECT_EQ(picture.Ink().left, 30);
  EXPECT_EQ(picture.Ink().right, 69);
}

TEST_F(PaintedShapes, SquareCapsReachOutByHalfTheWidthWithCorners) {
  const Picture picture = DrawBody(
      R"(<line x1="30" y1="50" x2="70" y2="50" style="stroke:#0000ff;stroke-width:20;stroke-linecap:square"/>)");
  EXPECT_EQ(picture.At(20, 40), kBlue);
  EXPECT_EQ(picture.At(79, 59), kBlue);
  EXPECT_EQ(picture.At(80, 50), kNothing);
}

TEST_F(PaintedShapes, RoundCapsReachOutByHalfTheWidthWithoutCorners) {
  const Picture picture = DrawBody(
      R"(<line x1="30" y1="50" x2="70" y2="50" style="stroke:#0000ff;stroke-width:20;stroke-linecap:round"/>)");
  EXPECT_EQ(picture.At(20, 40), kNothing);
  EXPECT_EQ(picture.At(22, 50), kBlue);
  EXPECT_EQ(picture.At(80, 50), kNothing);
}

TEST_F(PaintedShapes, AMitredJoinReachesItsTip) {
  // The outer corner of a right angle at (70, 30): its tip is (80, 20), and its ratio, 1.41, below the limit of 2.
  const Picture picture =
      DrawBody(R"(<path d="M20 30H70V80" style="fill:none;stroke:#0000ff;stroke-width:20;stroke-linejoin:miter"/>)");
  EXPECT_EQ(picture.At(79, 20), kBlue);
  EXPECT_EQ(picture.At(80, 20), kNothing);
}

TEST_F(PaintedShapes, ABevelledJoinCutsTheCornerInTheMiddle) {
  const Picture picture =
      DrawBody(R"(<path d="M20 30H70V80" style="fill:none;stroke:#0000ff;stroke-width:20;stroke-linejoin:bevel"/>)");
  EXPECT_EQ(picture.At(77, 22), kNothing);  // the cut runs from (70, 20) to (80, 30)
  EXPECT_EQ(picture.At(72, 24), kBlue);
}

TEST_F(PaintedShapes, ARoundJoinLiesBetweenTheTwo) {
  const Picture picture =
      DrawBody(R"(<path d="M20 30H70V80" style="fill:none;stroke:#0000ff;stroke-width:20;stroke-linejoin:round"/>)");
  EXPECT_EQ(picture.At(79, 20), kNothing);
  EXPECT_EQ(picture.At(76, 23), kBlue);  // 9.2 from (70, 30), outside of the bevel
}

TEST_F(PaintedShapes, AMiterBeyondTheLimitIsBevelled) {
  TakeValue(KEY_FILL, -1);
  TakeValue(KEY_THST, 3);
  TakeValue(KEY_OUTL, 0xFF0000);
  TakeWidth(2.0);
  TakeValue(KEY_CNST, 2);
  TakeValue(KEY_MLIM, 140);  // the ratio of a right angle is 1.41
  TakeValue(KEY_PATH);
  TakeLine(2, 7, 7, 7);
  TakeLine(7, 7, 7, 2);
  TakeValue(KEY_ENDP);
  EXPECT_EQ(Picture(drawer).At(79, 20), kNothing);
}

TEST_F(PaintedShapes, NonZeroWindingFillsWhatGoesRoundTwice) {
  const char* twice = R"(<path d="M10 10H90V90H10ZM30 30H70V70H30Z" style="fill:#ff0000;fill-rule:nonzero"/>)";
  EXPECT_EQ(DrawBody(twice).At(50, 50), kRed);
}

TEST_F(PaintedShapes, EvenOddLeavesAHole) {
  const Picture picture =
      DrawBody(R"(<path d="M10 10H90V90H10ZM30 30H70V70H30Z" style="fill:#ff0000;fill-rule:evenodd"/>)");
  EXPECT_EQ(picture.At(50, 50), kNothing);
  EXPECT_EQ(picture.At(20, 50), kRed);
}

TEST_F(PaintedShapes, AFlattenedCurveIsFilledAsOneOutline) {
  // The hull of the curve is the triangle; at t = 0.5 it passes through (50, 45).
  const Picture picture = DrawBody(R"(<path d="M10 85Q50 5 90 85Z" style="fill:#ff0000"/>)");
  EXPECT_EQ(picture.At(50, 43), kNothing);
  EXPECT_EQ(picture.At(50, 48), kRed);
  EXPECT_EQ(picture.At(20, 82), kRed);
  EXPECT_EQ(picture.At(50, 84), kRed);
}

TEST_F(PaintedShapes, OpacityHoldsForFillAndLineTogether) {
  const Picture picture = DrawBody(
      R"(<rect x="20" y="20" width="60" height="60" style="fill:#ff0000;stroke:#0000ff;stroke-width:20;opacity:0.5"/>)");
  // The byte is 127. The inner half of the line lies on the fill, which does not shine through it.
  EXPECT_TRUE(Near(picture.At(50, 50), {127, 0, 0, 127}, 1));
  EXPECT_TRUE(Near(picture.At(25, 50), {0, 0, 127, 127}, 1));
  EXPECT_TRUE(Near(picture.At(15, 50), {0, 0, 127, 127}, 1));
}

TEST_F(PaintedShapes, OpacityEndsWithItsShape) {
  const Picture picture = DrawBody(R"(<rect width="40" height="40" style="fill:#ff0000;fill-opacity:0.2"/>
                                      <rect x="50" width="40" height="40" style="fill:#ff0000"/>)");
  EXPECT_TRUE(Near(picture.At(10, 10), {51, 0, 0, 51}, 1));
  EXPECT_EQ(picture.At(60, 10), kRed);
}

TEST_F(PaintedShapes, SegmentsOutsideAPathAreALineOfTheirOwn) {
  TakeValue(KEY_FILL, -1);
  TakeValue(KEY_THST, 3);
  TakeWidth(1.0);
  TakeLine(1, 5, 5, 5);
  TakeLine(5, 5, 9, 5);
  TakeValue(KEY_OUTL, 0x0000FF);
  EXPECT_EQ(Picture(drawer).At(50, 50), kBlack);
}

TEST_F(PaintedShapes, APathThatNeverEndsIsDrawnAtTheEndOfTheStream) {
  TakeValue(KEY_FILL, 0x0000FF);
  TakeValue(KEY_PATH);
  TakeLine(2, 2, 8, 2);
  TakeLine(8, 2, 8, 8);
  TakeValue(KEY_ENDF);
  EXPECT_EQ(Picture(drawer).At(70, 70), kRed);
}

TEST_F(PaintedShapes, NumbersThatAreNotFiniteOrHugeDoNoHarm) {
  const double infinity = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  TakeValue(KEY_THST, 3);
  TakeValue(KEY_FILL, 0x0000FF);
  for (const double width : {infinity, -infinity, nan, 1e300, -1.0}) {
    TakeWidth(width);
    TakeValue(KEY_MLIM, std::numeric_limits<std::int32_t>::min());
    TakeValue(KEY_PATH);
    TakeLine(nan, 1, 2, infinity);
    TakeLine(1e300, -1e300, -1e300, 5);
    TakeLine(-1e300, 5, 3, 3);
    TakeValue(KEY_ENDP);
  }
  TakeWidth(0.0);
  TakeSquare(4, 4);
  EXPECT_EQ(Picture(drawer).At(50, 50), kRed);
}
