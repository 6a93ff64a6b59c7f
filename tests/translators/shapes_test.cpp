#include "translators/shapes.h"

#include <ostream>

#include "operators/operator_machine.h"
#include "tests/translators/translator_fixture.h"
#include "translators/path_data.h"

namespace {

enum class FoldedAttributes { All, WidthStrokeAndFill };
enum class BareShape { Replays, SendsNothing };

// Of the steps that all shapes could take, those that each takes.
struct Shape {
  const char* element;
  const char* geometry;
  const char* program;  // the operator text of that geometry
  void (*translate)(IXMLDOMNode*);
  FoldedAttributes folds;
  BareShape bare;
  bool clips;
  bool readsOpacity;
};

void PrintTo(const Shape& shape, std::ostream* out) { *out << shape.element; }

constexpr auto kAll = FoldedAttributes::All;
constexpr auto kThree = FoldedAttributes::WidthStrokeAndFill;
constexpr auto kReplays = BareShape::Replays;
constexpr auto kSilent = BareShape::SendsNothing;

const Shape kShapes[] = {
    {"path", "d='M10 0L20 5'", "10 0 M 20 5 L Z2 0 0 M", TranslatePath, kAll, kSilent, true, false},
    {"polygon", "points='10,0 20,5'", "10 0 M 20 5 L 10 0 L 0 0 M", TranslatePolygon, kThree, kSilent, true, false},
    {"polyline", "points='10,0 20,5'", "10 0 M 20 5 L Z2 0 0 M", TranslatePolyline, kThree, kSilent, true, false},
    {"rect", "width='10' height='20' x='1' y='2'", "10 20 1 2 0 0 rect", TranslateRect, kAll, kReplays, true, false},
    {"ellipse", "cx='1' cy='2' rx='3' ry='4'", "1 2 3 4 E", TranslateEllipse, kAll, kReplays, false, false},
    {"circle", "cx='1' cy='2' r='3'", "1 2 3 circle", TranslateCircle, kAll, kReplays, false, true},
    {"line", "x1='1' y1='2' x2='3' y2='4'", "1 2 M 3 4 L", TranslateLine, kAll, kSilent, false, false},
};

class ShapeBrackets : public TranslatorTest, public testing::WithParamInterface<Shape> {
 protected:
  const Shape& shape = GetParam();

  std::string Element(std::string_view attributes) {
    return "<" + std::string(shape.element) + " " + shape.geometry + " " + std::string(attributes) + "/>";
  }
  Lines Translate(std::string_view attributes) { return Fresh(Element(attributes)); }

  bool IsPath() const { return shape.translate == TranslatePath; }

  Lines Drawn() { return MachinePath(shape.program); }
  // A solid fill closes a path, and no other shape.
  Lines DrawnFilled() { return IsPath() ? MachinePath("10 0 M 20 5 L Z 0 0 M") : Drawn(); }
  Lines Bare() { return shape.bare == kReplays ? Replay() : Records(); }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(, ShapeBrackets, testing::ValuesIn(kShapes),
                         [](const testing::TestParamInfo<Shape>& shape) { return std::string(shape.param.element); });

TEST_P(ShapeBrackets, AFrameIsPushedForTheElement) {
  // What the style writes into the frame doesn't reach the frame below.
  IXMLDOMNode* node = Load(Element("style='stroke:none;fill:#010203;stroke-miterlimit:7' transform='scale(3)'"));
  shape.translate(node);
  Drain();
  EXPECT_EQ(CurrentFrame().fill.colour, 0);
  EXPECT_EQ(CurrentFrame().miterLimit, 0);
  EXPECT_EQ(CurrentFrame().currentMatrix.a, 1.0);
}

TEST_P(ShapeBrackets, TheFrameIsPoppedAtTheEnd) {
  EXPECT_EQ(Translate("style='fill:lime;opacity:0.5'"),
            Replay() + Records("FILL 65280", "TSPY 127") + DrawnFilled() + Records("TSPY 255", "FILL 0"));
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_EQ(run.graphics.saveDepth, 0);
  EXPECT_TRUE(run.operands.empty());
}

TEST_P(ShapeBrackets, OpacityAsAnAttributeCountsOnACircleAlone) {
  const Lines opacity = shape.readsOpacity ? Replay() + Records("TSPY 127") : Records();
  const Lines end = shape.readsOpacity ? Records("TSPY 255") : Records();
  EXPECT_EQ(Translate("opacity='0.5'"), opacity + Bare() + Drawn() + end);
  EXPECT_EQ(Translate("opacity='0.5' style='fill:none'"),
            opacity + Replay() + Records("FILL -1") + Drawn() + end + Records("FILL 0"));
}

TEST_P(ShapeBrackets, TransformMovesTheShape) {
  EXPECT_EQ(Translate("transform='translate(5 7)'"), Bare() + MachinePath("5 7 tr " + std::string(shape.program)));
}

TEST_P(ShapeBrackets, ClipPathIsTranslatedUnderTheTransformAndBeforeTheStyle) {
  const std::string clip = "<defs><clipPath id='c'><rect width='10' height='10'/></clipPath></defs>";
  const Lines lines = Fresh(clip + Element("clip-path='url(#c)' style='fill:none' transform='translate(0 50)'"));
  const Lines drawn = MachinePath("0 50 tr " + std::string(shape.program));
  if (!shape.clips) {
    EXPECT_EQ(lines, Replay() + Records("FILL -1") + drawn + Records("FILL 0"));
    return;
  }
  // The clip's rect from (0, 50) to (10, 60).
  Lines content = drawn;
  std::erase(content, "FDEF flat 1");
  EXPECT_EQ(lines, Records("SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1") + Replay() +
                       Records("PLYR 1 : 1,4 1,5 0,5 0,4", "CLIP 0", "DOCP 1") + Replay() + Records("FILL -1") +
                       content + Records("FILL 0", "DOCP 0", "ECGR 1"));
}

TEST_P(ShapeBrackets, AClipPathThatNamesNothingIsClosedAllTheSame) {
  const Lines behind = shape.clips ? Records("DOCP 0", "ECGR 1") : Records();
  EXPECT_EQ(Translate("clip-path='none'"), Bare() + Drawn() + behind);
  const Lines before = shape.clips ? Records("CLIP 0", "DOCP 1") : Records();
  EXPECT_EQ(Translate("clip-path='url(#nothing)'"), before + Bare() + Drawn() + behind);
}

TEST_P(ShapeBrackets, AnEmptyClipPathIsNone) { EXPECT_EQ(Translate("clip-path=''"), Bare() + Drawn()); }

TEST_P(ShapeBrackets, AStyleIsAppliedBehindAReplay) {
  EXPECT_EQ(Translate("style='fill:lime'"), Replay() + Records("FILL 65280") + DrawnFilled() + Records("FILL 0"));
}

TEST_P(ShapeBrackets, AStyleKeepsAllPresentationAttributesOut) {
  EXPECT_EQ(Translate("style='fill:lime' fill='blue' stroke='red' stroke-width='3' fill-opacity='0.5' "
                      "fill-rule='evenodd' stroke-linecap='round' stroke-linejoin='round'"),
            Replay() + Records("FILL 65280") + DrawnFilled() + Records("FILL 0"));
}

TEST_P(ShapeBrackets, AStyleOfBlanksIsAStyle) { EXPECT_EQ(Translate("style=' ' stroke='red'"), Replay() + Drawn()); }

TEST_P(ShapeBrackets, PresentationAttributesAreFoldedWithoutAStyle) {
  const Lines three = Replay() + Records("OUTL 255", "THST 3", "WIDT 0.2", "FILL 65280");
  const Lines more = Records("LNST 2", "CNST 1", "TSPY 127", "WRUL 0");
  const std::string_view attributes =
      "fill='lime' stroke='red' stroke-width='2' fill-opacity='0.5' fill-rule='evenodd' stroke-linecap='round' "
      "stroke-linejoin='bevel'";
  if (shape.folds == kAll) {
    EXPECT_EQ(Translate(attributes), three + more + DrawnFilled() + Records("TSPY 255", "FILL 0"));
  } else {
    EXPECT_EQ(Translate(attributes), three + DrawnFilled() + Records("FILL 0"));
  }
}

TEST_P(ShapeBrackets, AStrokeAttributeAloneIsOneUnitWideOnlyInTheFullFold) {
  const Lines width = shape.folds == kAll ? Records("THST 3", "WIDT 0.1") : Records("THST 2", "WIDT 0.0001");
  EXPECT_EQ(Translate("stroke='red'"), Replay() + Records("OUTL 255") + width + Drawn());
}

TEST_P(ShapeBrackets, WidthStrokeAndFillAreFoldedInThisOrder) {
  // A property is found at its first place in the text. So where a value holds another property, the value of the
  // attribute that was folded first counts.
  EXPECT_EQ(Translate("stroke='red' stroke-width='2;stroke:blue;'"),
            Replay() + Records("OUTL 16711680", "THST 3", "WIDT 0.2") + Drawn());
  EXPECT_EQ(
      Translate("fill='red' stroke='lime;fill:blue;' stroke-width='2'"),
      Replay() + Records("OUTL 65280", "THST 3", "WIDT 0.2", "FILL 16711680") + DrawnFilled() + Records("FILL 0"));
}

TEST_P(ShapeBrackets, AttributesThatNoFoldKnowsAreNoStyle) {
  EXPECT_EQ(
      Translate("stroke-miterlimit='4' stroke-opacity='0.5' stroke-dasharray='1' display='none' visibility='hidden'"),
      Bare() + Drawn());
  if (shape.folds == kThree) {
    EXPECT_EQ(Translate("fill-opacity='0.5' fill-rule='evenodd' stroke-linecap='round' stroke-linejoin='bevel'"),
              Drawn());
  }
}

TEST_P(ShapeBrackets, ABareShapeReplaysOrSendsNoPaintAtAll) { EXPECT_EQ(Translate(""), Bare() + Drawn()); }

TEST_P(ShapeBrackets, ABareShapeLeavesAGivenFillStanding) {
  IXMLDOMNode* node = Load(Element(""));
  run.paint.FillGiven = 1;
  shape.translate(node);
  Drain();
  // A path's trailer takes it.
  EXPECT_EQ(run.paint.FillGiven, IsPath() ? 0u : 1u);
}

TEST_P(ShapeBrackets, ASolidFillStaysGivenBehindAllButAPath) {
  IXMLDOMNode* node = Load(Element("style='fill:red'"));
  shape.translate(node);
  Drain();
  EXPECT_EQ(run.paint.FillGiven, IsPath() ? 0u : 1u);
}

TEST_P(ShapeBrackets, AnOpenPathIsEndedBeforeTheFrame) {
  IXMLDOMNode* node = Load(Element("style='fill:none'"));
  Feed("0 0 M");
  Drain();
  shape.translate(node);
  const Lines lines = Drain();
  EXPECT_EQ(From(lines, lines.size() - 3), Records("ENDP", "FDEF flat 1", "FILL 0"));
  EXPECT_EQ(run.path.PathOpen, 0u);
}

// --- Polygon and polyline

namespace {

class Shapes : public TranslatorTest {
 protected:
  Lines Polygon(std::string_view points) { return Fresh("<polygon points='" + std::string(points) + "'/>"); }
  Lines Polyline(std::string_view points) { return Fresh("<polyline points='" + std::string(points) + "'/>"); }

  // Both under their common trailer; `closing` is the polygon's last line.
  void ExpectPoints(std::string_view points, const std::string& program, const std::string& closing) {
    SCOPED_TRACE(points);
    EXPECT_EQ(Polygon(points), MachinePath(program + " " + closing + " 0 0 M"));
    EXPECT_EQ(Polyline(points), MachinePath(program + " Z2 0 0 M"));
  }

  // Elements that replay bare.
  Lines Sampled(std::string_view element) {
    const Lines lines = Fresh(element);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 7), Replay());
    return From(lines, 7);
  }
};

}  // namespace

TEST_F(Shapes, PolygonClosesWithALineAndPolylineDoesNot) {
  EXPECT_EQ(Polygon("0,0 10,0 10,10"),
            Records("PATH", "LINE 0,10 1,10", "LINE 1,10 1,9", "LINE 1,9 0,10", "ENDP", "FDEF flat 1"));
  EXPECT_EQ(Polyline("0,0 10,0 10,10"), Records("PATH", "LINE 0,10 1,10", "LINE 1,10 1,9", "ENDP", "FDEF flat 1"));
}

TEST_F(Shapes, AFillClosesNeither) {
  for (const char* element : {"polygon", "polyline"}) {
    const Lines lines = Fresh("<" + std::string(element) + " points='0,0 10,0 10,10' fill='red'/>");
    EXPECT_EQ(CountOf(lines, "LINE"), std::string_view(element) == "polygon" ? 3u : 2u);
  }
}

TEST_F(Shapes, ANearlyClosedPolylineIsClosed) {
  EXPECT_EQ(Polyline("0,0 10,0 0.04,0"),
            Records("PATH", "LINE 0,10 1,10", "LINE 1,10 0.004,10", "LINE 0.004,10 0,10", "ENDP", "FDEF flat 1"));
  EXPECT_EQ(Polyline("0,0 10,0 0.06,0"),
            Records("PATH", "LINE 0,10 1,10", "LINE 1,10 0.006,10", "ENDP", "FDEF flat 1"));
}

TEST_F(Shapes, APolygonThatEndsOnItsStartGetsNoSecondClosingLine) {
  EXPECT_EQ(Polygon("0,0 10,0 0,0"), Records("PATH", "LINE 0,10 1,10", "LINE 1,10 0,10", "ENDP", "FDEF flat 1"));
}

TEST_F(Shapes, PointsAreSeparatedByBlanksCommasAndMinusSigns) {
  ExpectPoints("0,0 10,0", "0 0 M 10 0 L", "0 0 L");
  ExpectPoints("5,1,10,2", "5 1 M 10 2 L", "5 1 L");
  ExpectPoints("5 1 10 2", "5 1 M 10 2 L", "5 1 L");
  ExpectPoints("1-2-3-4", "1 -2 M -3 -4 L", "1 -2 L");
  ExpectPoints("  5,1   10,2  ", "5 1 M 10 2 L", "5 1 L");
  ExpectPoints("5 , 1 10 , 2", "5 1 M 10 2 L", "5 1 L");
}

TEST_F(Shapes, ControlsBetweenPointsAreSkipped) {
  ExpectPoints("&#9;5,1 &#10;&#13;&#9; 10,2", "5 1 M 10 2 L", "5 1 L");
}

TEST_F(Shapes, ALineEndRightBehindAPointJoinsItWithTheNextNumber) {
  // "5,1 line feed 10,2": the second number is 110; what is left of the second point is 2, no line.
  ExpectPoints("5,1&#10;10,2 7,8", "5 110 M 7 8 L", "5 110 L");
  ExpectPoints("5,1&#13;10,2 7,8", "5 110 M 7 8 L", "5 110 L");
  ExpectPoints("5,1&#9;10,2 7,8", "5 110 M 7 8 L", "5 110 L");
}

TEST_F(Shapes, ANumberThatGoesOnBehindAnotherIsTwo) {
  // The unit behind the first is lost in the operator text.
  ExpectPoints("5,5 1,2/3", "5 5 M 1 2 3 L", "5 5 L");
  ExpectPoints("5,5 1,2*3", "5 5 M 1 2 3 L", "5 5 L");
  ExpectPoints("5,5 1,2+3", "5 5 M 1 2 3 L", "5 5 L");
  ExpectPoints("5,5 1,2.5.3", "5 5 M 1 2.5 3 L", "5 5 L");
}

TEST_F(Shapes, APointInANumberNeverSplitsIt) {
  // Of the pair ".5.5 9" the machine makes three numbers; a line takes two, and the first waits for the next line.
  ExpectPoints("1,1 .5.5 9,9", "1 1 M .5 5 9 L 9 L", "1 1 L");
}

TEST_F(Shapes, ALastPointOfOneNumberDrawsNothing) {
  ExpectPoints("0,0 10,0 5", "0 0 M 10 0 L", "0 0 L");
  ExpectPoints("7", "", "");
}

TEST_F(Shapes, ACharacterThatIsNoNumberEndsThePoints) {
  ExpectPoints("1,1 10,2 x 5,5", "1 1 M 10 2 L", "1 1 L");
  ExpectPoints("1,1 10px,2 5,5", "1 1 M", "1 1 L");
  ExpectPoints("x 1,1", "", "");
  ExpectPoints(";", "", "");
}

TEST_F(Shapes, ACommaBetweenPointsBehindABlankShiftsThem) {
  // The blank is the one separator of the pair; the comma then separates nothing from 10.
  ExpectPoints("1,2 ,10,4 5,6", "1 2 M 10 L 4 5 L 6 L", "1 2 L");
}

TEST_F(Shapes, NoPointsStillMoveToTheOrigin) {
  // The closing step has no operands, and the move opens a path of nothing.
  EXPECT_EQ(Polygon(""), Records("PATH", "ENDP", "FDEF flat 1"));
  EXPECT_EQ(Polyline(""), Records("PATH", "ENDP", "FDEF flat 1"));
  EXPECT_EQ(Fresh("<polygon/><polyline/>"), Records("PATH", "ENDP", "FDEF flat 1", "PATH", "ENDP", "FDEF flat 1"));
}

TEST_F(Shapes, TheClosingLineOfNoPointsTakesWhatAPatternLeft) {
  // A pattern without an image leaves x, y, width and height; the line goes from the pen to (width, height).
  EXPECT_EQ(Fresh("<defs><pattern id='p' x='1' y='2' width='30' height='40'/></defs><polygon fill='url(#p)'/>"),
            Replay() + Records("LINE 0,10 3,6", "PATH", "ENDP", "FDEF flat 1"));
}

TEST_F(Shapes, OnePointDrawsNothing) {
  EXPECT_EQ(Polygon("5,5"), Records("PATH", "ENDP", "FDEF flat 1"));
  EXPECT_EQ(Polyline("5,5"), Records("PATH", "ENDP", "FDEF flat 1"));
}

TEST_F(Shapes, TheMoveAtTheEndOfPointsPutsThePenOnTheOrigin) {
  for (const char* element : {"polygon", "polyline"}) {
    Load("<" + std::string(element) + " points='5,5 9,9'/>");
    (std::string_view(element) == "polygon" ? TranslatePolygon : TranslatePolyline)(run.NodeList.At(0));
    Drain();
    EXPECT_EQ(run.path.userCurrent, (Point{0, 0}));
  }
}

// --- Rect

TEST_F(Shapes, RectGivesItsFourCorners) {
  // 10 by 20 at (1, 2): bottom right, top right, top left, bottom left.
  EXPECT_EQ(Sampled("<rect x='1' y='2' width='10' height='20'/>"), Records("PLYR 1 : 1.1,7.8 1.1,9.8 0.1,9.8 0.1,7.8"));
}

TEST_F(Shapes, RectWritesWidthHeightXYAndBothRadii) {
  const struct {
    const char* attributes;
    const char* program;
  } cases[] = {
      {"width='10' height='20' x='3' y='4' rx='1' ry='2'", "10 20 3 4 1 2 rect"},
      {"width='10' height='20'", "10 20 0 0 0 0 rect"},
      {"width='10' height='20' rx='3'", "10 20 0 0 3 3 rect"},
      {"width='10' height='20' ry='3'", "10 20 0 0 3 3 rect"},
      {"width='10' height='20' rx='3' ry='0'", "10 20 0 0 3 0 rect"},
      {"width='10mm' height='50%' x='2px' y='3in' rx='1cm'", "10 50 2 3 1 1 rect"},
      {"width='10' height='20' rx='30' ry='40'", "10 20 0 0 30 40 rect"},
      // A missing size has no default: the operands slide, and the machine reads 0 for what is missing at the bottom.
      {"height='20' x='3' y='4' rx='1' ry='2'", "0 20 3 4 1 2 rect"},
      {"width='10' x='3' y='4' rx='1' ry='2'", "0 10 3 4 1 2 rect"},
      {"x='3' y='4' rx='1' ry='2'", "0 0 3 4 1 2 rect"},
      // So does a number that is none, for which there is no default either.
      {"width='10' height='20' x='a' y='4'", "0 10 20 4 0 0 rect"},
      {"width='10' height='20' x='1' y='b'", "0 10 20 1 0 0 rect"},
      {"width='10' height='20' rx='c'", "0 0 10 20 0 0 rect"},
      {"width='10' height='20' rx='3' ry='c'", "0 10 20 0 0 3 rect"},
      // Each is one number.
      {"width='10 11' height='20,21' x='1-2'", "10 20 1 0 0 0 rect"},
      // The unit behind a number is lost, and what follows is a number of its own.
      {"width='10+11' height='20'", "10 11 20 0 0 0 0 rect"},
      {"width='10' height='20/21'", "10 20 21 0 0 0 0 rect"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.attributes);
    EXPECT_EQ(Sampled("<rect " + std::string(c.attributes) + "/>"), Machine(c.program));
  }
}

TEST_F(Shapes, RectDoesNotTouchThePen) {
  Load("<rect width='10' height='20'/>");
  Feed("7 8 M");
  TranslateRect(run.NodeList.At(0));
  Drain();
  EXPECT_EQ(run.path.userCurrent, (Point{7, 8}));
  EXPECT_EQ(run.path.deviceCurrent, (Point{7, 8}));
}

// --- Ellipse and circle

TEST_F(Shapes, EllipseWritesItsNumbersWithoutDefaults) {
  const struct {
    const char* attributes;
    const char* program;
  } cases[] = {
      {"cx='1' cy='2' rx='3' ry='4'", "1 2 3 4 E"},
      {"ry='4' rx='3' cy='2' cx='1'", "1 2 3 4 E"},
      {"cx='1px' cy='2mm' rx='3%' ry='4in'", "1 2 3 4 E"},
      {"rx='5' ry='3'", "0 0 5 3 E"},
      {"cx='1' rx='5' ry='3'", "0 1 5 3 E"},
      // The last two are the radii whatever they were meant for.
      {"cx='1' cy='2' rx='3'", "0 1 2 3 E"},
      {"cx='1' cy='2'", "0 0 1 2 E"},
      {"", "0 0 0 0 E"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.attributes);
    EXPECT_EQ(Sampled("<ellipse " + std::string(c.attributes) + "/>"), Machine(c.program));
  }
}

TEST_F(Shapes, EllipseHasThirtySevenCurveSidesFromItsRightEnd) {
  const Lines lines = Sampled("<ellipse cx='1' cy='2' rx='3' ry='4'/>");
  ASSERT_EQ(lines.size(), 1u);
  const auto sides = ViewSides(PayloadOf<POLYGON>(7));
  ASSERT_EQ(sides.size(), 37u);
  EXPECT_DOUBLE_EQ(double{sides[0].x}, 0.4);
  EXPECT_DOUBLE_EQ(double{sides[0].y}, 9.8);
  for (const PolygonSide& side : sides) EXPECT_EQ(std::uint32_t{side.flags} & kSideCurve, kSideCurve);
}

TEST_F(Shapes, CircleWritesItsCentreWithDefaultsAndItsRadiusWithout) {
  const struct {
    const char* attributes;
    const char* program;
  } cases[] = {
      {"cx='1' cy='2' r='3'", "1 2 3 circle"},
      {"r='5'", "0 0 5 circle"},
      {"cx='4' r='5'", "4 0 5 circle"},
      {"cy='4' r='5'", "0 4 5 circle"},
      {"r='5mm'", "0 0 5 circle"},
      {"cx='7' cy='8'", "0 7 8 circle"},
      {"", "0 0 0 circle"},
      {"cx='a' r='5'", "0 0 5 circle"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.attributes);
    EXPECT_EQ(Sampled("<circle " + std::string(c.attributes) + "/>"), Machine(c.program));
  }
}

TEST_F(Shapes, ACircleWithOpacityTwiceSendsTheAttributesFirst) {
  const Lines lines = Fresh("<circle r='5' opacity='0.5' style='opacity:0.25'/>");
  EXPECT_EQ(lines, Replay() + Records("TSPY 127") + Replay() + Records("TSPY 63") + From(lines, 16));
  EXPECT_EQ(From(lines, 17), Records("TSPY 255"));
}

TEST_F(Shapes, ACirclesOpacityIsAWholeStyle) {
  // Its properties stand in the frame by the time the style is applied.
  const Lines lines = Fresh("<circle opacity='0.5;fill:lime;' style='stroke:none'/>");
  EXPECT_EQ(Lines(lines.begin(), lines.end() - 3),
            Replay() + Records("FILL 65280", "TSPY 127", "WIDT 0", "THST 0", "OUTL 0", "FILL 65280", "WRUL 1", "LNST 0",
                               "CNST 1", "THST 1"));
  EXPECT_EQ(From(lines, lines.size() - 2), Records("TSPY 255", "FILL 0"));
}

// --- Line

TEST_F(Shapes, LineIsOneSegment) {
  EXPECT_EQ(Fresh("<line x1='10' y1='20' x2='30' y2='40'/>"), Records("PATH", "LINE 1,8 3,6", "ENDP", "FDEF flat 1"));
}

TEST_F(Shapes, LineDefaultsEachCoordinateToZero) {
  const struct {
    const char* attributes;
    const char* program;
  } cases[] = {
      {"x1='1' y1='2' x2='3' y2='4'", "1 2 M 3 4 L"},
      {"y1='2' x2='3' y2='4'", "0 2 M 3 4 L"},
      {"x1='1' x2='3' y2='4'", "1 0 M 3 4 L"},
      {"x1='1' y1='2' y2='4'", "1 2 M 0 4 L"},
      {"x1='1' y1='2' x2='3'", "1 2 M 3 0 L"},
      {"x1='1px' y1='2%' x2='3in' y2='4mm'", "1 2 M 3 4 L"},
      {"", "0 0 M 0 0 L"},
      // No number, no operand, and the move or line has too few.
      {"x1='a' y1='2' x2='3' y2='4'", "3 4 L"},
      {"x1='1' y1='2' x2='3' y2='a'", "1 2 M"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.attributes);
    EXPECT_EQ(Fresh("<line " + std::string(c.attributes) + "/>"), MachinePath(c.program));
  }
}

TEST_F(Shapes, ALineWithoutLengthIsAnEmptyPath) { EXPECT_EQ(Fresh("<line/>"), Records("PATH", "ENDP", "FDEF flat 1")); }

TEST_F(Shapes, ALineLeavesThePenAtItsEnd) {
  Load("<line x1='1' y1='2' x2='3' y2='4'/>");
  TranslateLine(run.NodeList.At(0));
  Drain();
  EXPECT_EQ(run.path.userCurrent, (Point{3, 4}));
}
