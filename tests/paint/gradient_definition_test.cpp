// Gradients and patterns from the document: how a fill finds them, what of them is read, and how ones that lead back to
// themselves end. In these documents one unit is 0.1 host units, and y becomes 10 - y / 10.
#include <gmock/gmock.h>

#include <cmath>
#include <cstring>

#include "operators/graphics_state.h"
#include "paint/paint_servers.h"
#include "tests/support/filter_test.h"
#include "tests/support/stop_block.h"

namespace {

using testing::ElementsAre;

// Definitions of two stops, red at 0 and blue at 1, under the id "stops".
constexpr char kStops[] =
    "<linearGradient id=\"stops\"><stop offset=\"0\" style=\"stop-color:#ff0000\"/>"
    "<stop offset=\"1\" style=\"stop-color:#0000ff\"/></linearGradient>";

// What a linear and a radial gradient with those stops send.
const Lines kLinearRecords = {"FILL 0", "FDEF linear 255@0 16711680@100", "TSPY linear 0:100 99:100"};
const Lines kRadialRecords = {"FILL 0", "FDEF radial 255@0 16711680@100", "TSPY radial 0:100 99:100"};

// The outline of the path that most tests fill.
const Lines kOutline = {"PATH", "LINE 0.1,9.9 0.2,9.8", "ENDP", "FDEF flat 1"};

class PaintServers : public FilterTest {
 protected:
  // Imports these definitions and one path with this fill that runs from (1, 1) to (2, 2), and returns what stands
  // between the replay of the path's paint state and its outline.
  Lines FillRecords(const std::string& definitions, const std::string& fill) {
    const Lines lines = ImportBody("<defs>" + definitions + "</defs><path style=\"" + fill + "\" d=\"M1 1 L2 2\"/>");
    const std::size_t first = Replay().size();
    const auto path = static_cast<std::ptrdiff_t>(FindLine(lines, "PATH"));
    if (path < static_cast<std::ptrdiff_t>(first)) return lines;
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(first)), Replay());
    commands.erase(commands.begin(), commands.begin() + static_cast<std::ptrdiff_t>(first));
    return Lines(lines.begin() + static_cast<std::ptrdiff_t>(first), lines.begin() + path);
  }

  // The fill of the gradient "g", alone in the definitions but for the stops.
  const FillDefinition& FillOf(const std::string& gradient) {
    EXPECT_THAT(FillRecords(std::string(kStops) + gradient, "fill:url(#g)"),
                ElementsAre("FILL 0", testing::StartsWith("FDEF"), testing::StartsWith("TSPY")));
    return PayloadOf<FillDefinition>(1);
  }

  // Checks a document with these definitions, so that they can be used by hand.
  void Open(const std::string& definitions) {
    ASSERT_EQ(Check(Document("<defs>" + definitions + "</defs>")), 1);
    Drain();
  }
  IXMLDOMNode* GradientNode(int index) { return run.definitions.GradientDefs.records[index].node; }
  IXMLDOMNode* PatternNode(int index) { return run.definitions.PatternDefs.records[index].node; }
};

class StopStyle : public PaintServers {
 protected:
  // Two entries, of which the first takes the styles.
  StopStyle() {
    StartMachine();
    GiveStops({{0x777777, 0.25, 7.0}, {0x888888, 0.75, 8.0}});
  }
  GradientStop& Entry(int index) { return CurrentFrame().stops->Stops()[index]; }
};

void ExpectMatrix(TM matrix, const TM& expected) {
  EXPECT_NEAR(matrix.a, expected.a, 1e-6);
  EXPECT_NEAR(matrix.b, expected.b, 1e-6);
  EXPECT_NEAR(matrix.c, expected.c, 1e-6);
  EXPECT_NEAR(matrix.d, expected.d, 1e-6);
  EXPECT_NEAR(matrix.e, expected.e, 1e-6);
  EXPECT_NEAR(matrix.f, expected.f, 1e-6);
}

}  // namespace

// --- How a fill finds its paint server

TEST_F(PaintServers, TheFormsOfAReference) {
  const std::string definitions = std::string(kStops) + "<linearGradient id=\"g\" xlink:href=\"#stops\" x2=\"1\"/>";
  for (const char* fill :
       {"fill:url(#g)", "fill: URL(#g)", "fill:Url(#G)", "fill:url(other.svg#g)", "fill:url#g)", "fill:url ) #g)"}) {
    EXPECT_EQ(FillRecords(definitions, fill), kLinearRecords) << fill;
    ResetImportRun();
  }
  for (const char* fill : {"fill:url(g)", "fill:url(#g", "fill:url(#)", "fill:url(#unknown)", "fill:url(# g)",
                           "fill:url(#g )", "fill:url('#g')", "fill:uri(#g)"}) {
    const Lines records = FillRecords(definitions, fill);
    EXPECT_EQ(CountOf(records, "FDEF"), 0u) << fill;
    ResetImportRun();
  }
}

TEST_F(PaintServers, AReferenceThatFindsNothingLeavesTheFillAsItWas) {
  EXPECT_EQ(FillRecords(kStops, "fill:url(#unknown)"), Lines{});
}

TEST_F(PaintServers, AReferenceFindsTheFirstIdThatBeginsWithItInAnyCase) {
  const std::string definitions = std::string(kStops) +
                                  "<radialGradient id=\"Gradual\" xlink:href=\"#stops\" r=\"1\"/>"
                                  "<linearGradient id=\"grad\" xlink:href=\"#stops\" x2=\"1\"/>";
  EXPECT_EQ(FillRecords(definitions, "fill:url(#grad)"), kRadialRecords);
  ResetImportRun();
  EXPECT_EQ(FillRecords(definitions, "fill:url(#GRADU)"), kRadialRecords);
  ResetImportRun();
  // Longer than the id of either row.
  EXPECT_EQ(FillRecords(definitions, "fill:url(#gradually)"), Lines{});
}

TEST_F(PaintServers, AGradientIsFoundBeforeAPatternAndAPatternWithoutOne) {
  const std::string pattern = "<pattern id=\"paint\"><line x2=\"1\" y2=\"1\"/></pattern>";
  const std::string gradient = "<linearGradient id=\"paint2\" xlink:href=\"#stops\" x2=\"1\"/>";
  EXPECT_EQ(FillRecords(pattern + kStops + gradient, "fill:url(#paint)"), kLinearRecords);
  ResetImportRun();
  const Lines lines =
      ImportBody("<defs>" + pattern + kStops + "</defs><path style=\"fill:url(#paint)\" d=\"M5 5 L6 6\"/>");
  EXPECT_EQ(lines.at(Replay().size()), "PATH");
  EXPECT_EQ(lines.at(Replay().size() + 1), "LINE 0,10 0.1,9.9") << "the pattern's line";
}

TEST_F(PaintServers, AGradientIsTranslatedAnewForEachShape) {
  const std::string shape = "<path style=\"fill:url(#g)\" d=\"M1 1 L2 2\"/>";
  const Lines lines = ImportBody("<defs>" + std::string(kStops) +
                                 "<linearGradient id=\"g\" xlink:href=\"#stops\" x2=\"1\"/></defs>" + shape + shape);
  EXPECT_EQ(CountOf(lines, "FDEF linear"), 2u);
  EXPECT_EQ(CountOf(lines, "TSPY linear"), 2u);
}

TEST_F(PaintServers, TheRecordsOfTheGradientStandBetweenTheReplayAndTheOutline) {
  const Lines lines = ImportBody("<defs>" + std::string(kStops) +
                                 "<linearGradient id=\"g\" xlink:href=\"#stops\" x2=\"1\"/></defs>"
                                 "<path style=\"fill:url(#g)\" d=\"M1 1 L2 2\"/>");
  EXPECT_EQ(lines, Replay() + kLinearRecords + kOutline);
}

// --- The geometry of a gradient

TEST_F(PaintServers, TheCoordinatesOfALinearGradient) {
  // dx = 4 - 1, dy = 6 - 2: 5 units are 0.5. The start is at (0.1, 10 - 0.2).
  const FillDefinition& fill = FillOf("<linearGradient id=\"g\" x1=\"1\" x2=\"4\" y1=\"2\" y2=\"6\"/>");
  EXPECT_EQ(fill.fillType, 15u);
  EXPECT_DOUBLE_EQ(fill.fillScale, -0.5);
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.e, 0.1);
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.f, 9.8);
  // -53.13010235415598 + 270
  EXPECT_NEAR(fill.gradient.angle, 216.86989764584402, 1e-12);
}

TEST_F(PaintServers, TheCoordinatesOfARadialGradient) {
  const FillDefinition& fill = FillOf("<radialGradient id=\"g\" cx=\"3\" cy=\"4\" fx=\"50\" fy=\"60\" r=\"2\"/>");
  EXPECT_EQ(fill.fillType, 5u);
  EXPECT_DOUBLE_EQ(fill.fillScale, -0.2);
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.e, 0.3);
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.f, 9.6);
}

TEST_F(PaintServers, TheFocusMovesNothing) {
  const FillDefinition with = FillOf("<radialGradient id=\"g\" cx=\"3\" cy=\"4\" fx=\"50\" fy=\"60\" r=\"2\"/>");
  ResetImportRun();
  const FillDefinition& without = FillOf("<radialGradient id=\"g\" cx=\"3\" cy=\"4\" r=\"2\"/>");
  EXPECT_EQ(std::memcmp(&with, &without, sizeof with), 0);
}

TEST_F(PaintServers, MissingCoordinatesAreZero) {
  const FillDefinition& linear = FillOf("<linearGradient id=\"g\" y2=\"\"/>");
  EXPECT_EQ(linear.fillScale, 0.0);
  EXPECT_DOUBLE_EQ(linear.forwardMatrix.e, 0.0);
  EXPECT_DOUBLE_EQ(linear.forwardMatrix.f, 10.0);
  ResetImportRun();
  // The centre is the corner, not the middle.
  const FillDefinition& radial = FillOf("<radialGradient id=\"g\" r=\"2\"/>");
  EXPECT_DOUBLE_EQ(radial.fillScale, -0.2);
  EXPECT_DOUBLE_EQ(radial.forwardMatrix.e, 0.0);
  EXPECT_DOUBLE_EQ(radial.forwardMatrix.f, 10.0);
}

TEST_F(PaintServers, UnitsPercentSignsAndBoundingBoxesAreDropped) {
  EXPECT_DOUBLE_EQ(FillOf("<linearGradient id=\"g\" x2=\"100%\"/>").fillScale, -10.0);
  ResetImportRun();
  EXPECT_DOUBLE_EQ(FillOf("<linearGradient id=\"g\" gradientUnits=\"objectBoundingBox\" x2=\"1\"/>").fillScale, -0.1);
  ResetImportRun();
  EXPECT_DOUBLE_EQ(FillOf("<linearGradient id=\"g\" gradientUnits=\"userSpaceOnUse\" x2=\"7mm\"/>").fillScale, -0.7);
}

TEST_F(PaintServers, ACoordinateWithoutANumberShiftsThoseBelow) {
  // x1 = 1, x2 = 2, y1 = 3 and no y2 are taken for x2 = 1, y1 = 2, y2 = 3 over a dry stack: from (0, 2) to (1, 3).
  const FillDefinition& fill = FillOf("<linearGradient id=\"g\" x1=\"1\" x2=\"2\" y1=\"3\" y2=\"abc\"/>");
  EXPECT_DOUBLE_EQ(fill.fillScale, -0.1 * std::sqrt(2.0));
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.e, 0.0);
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.f, 9.8);
}

TEST_F(PaintServers, AGradientTransformMovesTheStartAlone) {
  // (1, 2) goes to (2 * 1 + 10, 2 * 2 + 20) = (12, 24); the length stays.
  const FillDefinition& fill = FillOf(
      "<linearGradient id=\"g\" x1=\"1\" y1=\"2\" x2=\"4\" y2=\"6\" "
      "gradientTransform=\"translate(10 20) scale(2)\"/>");
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.e, 1.2);
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.f, 7.6);
  EXPECT_DOUBLE_EQ(fill.fillScale, -0.5);
}

TEST_F(PaintServers, ATransformOnAGradientMovesTheShapeAndNotThePaint) {
  const Lines lines =
      ImportBody("<defs>" + std::string(kStops) +
                 "<linearGradient id=\"g\" xlink:href=\"#stops\" x2=\"1\" transform=\"translate(30 40)\"/></defs>"
                 "<path style=\"fill:url(#g)\" d=\"M1 1 L2 2\"/><path d=\"M1 1 L2 2\"/>");
  // (1 + 30, 1 + 40), and untouched for the next shape.
  EXPECT_EQ(lines.at(FindLine(lines, "LINE")), "LINE 3.1,5.9 3.2,5.8");
  EXPECT_EQ(CountOf(lines, "LINE 0.1,9.9 0.2,9.8"), 1u);
  const FillDefinition& fill = PayloadOf<FillDefinition>(FindLine(lines, "FDEF linear"));
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.e, 0.0);
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.f, 10.0);
}

TEST_F(PaintServers, ATransformOnAGradientIsInForceWhenItsFillIsMade) {
  // A turn by 90 degrees takes 90 off the angle of 270, but for the error of the parser's degrees.
  const FillDefinition& fill = FillOf("<linearGradient id=\"g\" x2=\"1\" transform=\"rotate(90)\"/>");
  EXPECT_NEAR(fill.gradient.angle, 180.0, 1e-5);
}

TEST_F(PaintServers, EachGradientStartsFromTheIdentityAndAPatternDoesNot) {
  Open(
      "<linearGradient id=\"g\" gradientTransform=\"translate(3 4)\"/>"
      "<pattern id=\"p\" patternTransform=\"scale(2)\" transform=\"translate(50 60)\"/>");
  TranslateGradient(GradientNode(0), kLinearGradient);
  ExpectMatrix(CurrentFrame().gradientMatrix, {1, 0, 0, 1, 3, 4});
  TranslateGradient(GradientNode(0), kLinearGradient);
  ExpectMatrix(CurrentFrame().gradientMatrix, {1, 0, 0, 1, 3, 4});
  TranslatePattern(PatternNode(0));
  ExpectMatrix(CurrentFrame().gradientMatrix, {2, 0, 0, 2, 3, 4});
  TranslatePattern(PatternNode(0));
  ExpectMatrix(CurrentFrame().gradientMatrix, {4, 0, 0, 4, 3, 4});
  Drain();
  // A pattern's own transform is not read.
  ExpectMatrix(CurrentFrame().currentMatrix, {1, 0, 0, 1, 0, 0});
}

// --- Stops

TEST_F(PaintServers, AGradientDoesNotReadItsOwnStops) {
  EXPECT_EQ(FillRecords("<linearGradient id=\"g\" x2=\"1\"><stop offset=\"0\" style=\"stop-color:#ff0000\"/>"
                        "</linearGradient>",
                        "fill:url(#g)"),
            (Lines{"FILL 0", "FDEF linear", "TSPY linear"}));
}

TEST_F(PaintServers, AGradientWithoutALinkTakesTheStopsThatTheFrameHolds) {
  // The ellipse within "outer" is drawn in a copy of the frame that holds the stops of "outer".
  const Lines lines = FillRecords(std::string(kStops) +
                                      "<linearGradient id=\"bare\" x2=\"1\"/>"
                                      "<radialGradient id=\"outer\" r=\"1\" xlink:href=\"#stops\">"
                                      "<ellipse cx=\"1\" cy=\"1\" rx=\"1\" ry=\"1\" style=\"fill:url(#bare)\"/>"
                                      "</radialGradient>",
                                  "fill:url(#outer)");
  EXPECT_EQ(Lines(lines.begin(), lines.begin() + 3), kRadialRecords);
  EXPECT_EQ(CountOf(lines, "FDEF linear 255@0 16711680@100"), 1u);
}

TEST_F(PaintServers, ALinkLeadsOneStepAndNotFurther) {
  EXPECT_EQ(FillRecords(std::string(kStops) + "<linearGradient id=\"middle\" xlink:href=\"#stops\"/>"
                                              "<linearGradient id=\"g\" x2=\"1\" xlink:href=\"#middle\"/>",
                        "fill:url(#g)")
                .at(1),
            "FDEF linear");
}

TEST_F(PaintServers, TheKindOfTheLinkedGradientDoesNotMatter) {
  EXPECT_EQ(FillRecords("<radialGradient id=\"stops\"><stop offset=\"0.5\" style=\"stop-color:#00ff00\"/>"
                        "</radialGradient><linearGradient id=\"g\" x2=\"1\" xlink:href=\"#stops\"/>",
                        "fill:url(#g)")
                .at(1),
            "FDEF linear 65280@50 65280@100");
}

TEST_F(PaintServers, ALinkIsTheTextBehindTheFirstNumberSign) {
  Open(kStops);
  const struct {
    const char16_t* href;
    std::int32_t stops;
  } cases[] = {
      {u"#stops", 2},  {u"other.svg#stops", 2}, {u"#STO", 2},    {u"#s", 2}, {u"stops", 0}, {u"#", 0},
      {u"#stops2", 0}, {u"#stops#x", 0},        {u"# stops", 0}, {u"", 0},   {u"##s", 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ReadGradientStops(c.href), c.stops) << testing::PrintToString(std::u16string(c.href));
  }
}

TEST_F(PaintServers, ALinkThatFindsNothingLeavesTheFramesStops) {
  Open(kStops);
  ReadGradientStops(u"#stops");
  const StopBlock* block = CurrentFrame().stops;
  EXPECT_EQ(ReadGradientStops(u"#unknown"), 0);
  EXPECT_EQ(CurrentFrame().stopCount, 2);
  EXPECT_EQ(CurrentFrame().stops, block);
}

TEST_F(PaintServers, ALinkToAnEmptyTableFindsNothing) {
  Open("<pattern id=\"stops\"><stop/></pattern>");
  EXPECT_EQ(ReadGradientStops(u"#stops"), 0);
  EXPECT_EQ(CurrentFrame().stopCount, 0);
}

TEST_F(PaintServers, ALinkToAGradientWithoutChildrenSetsTheCountToZero) {
  Open(std::string(kStops) + "<linearGradient id=\"empty\"/>");
  ReadGradientStops(u"#stops");
  EXPECT_EQ(ReadGradientStops(u"#empty"), 0);
  EXPECT_EQ(CurrentFrame().stopCount, 0);
}

TEST_F(PaintServers, NewStopsInAFrameGiveTheOldOnesBack) {
  Open(kStops);
  const std::size_t blocks = LiveCounts().blocks;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(ReadGradientStops(u"#stops"), 2);
    EXPECT_EQ(LiveCounts().blocks, blocks + 1);
  }
}

TEST_F(PaintServers, EveryChildOfTheLinkedGradientHasAnEntryAndStopsAloneAreCounted) {
  Open(
      "<linearGradient id=\"g\"><stop offset=\"0.25\" style=\"stop-color:#102030;stop-opacity:0.5\"/><!-- no stop -->"
      "<Stop offset=\"0.5\" style=\"stop-color:#ffffff\"/><stop offset=\"0.75\"/><ellipse/></linearGradient>");
  EXPECT_EQ(ReadGradientStops(u"#g"), 2);
  const GraphicsState& frame = CurrentFrame();
  ASSERT_EQ(frame.stopCount, 5);
  const GradientStop expected[] = {{0x302010, 0.25, 0.5}, {0, 0.0, 1.0}, {0, 0.0, 1.0}, {0, 0.75, 1.0}, {0, 0.0, 1.0}};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(frame.stops->Stops()[i].rgb, expected[i].rgb) << i;
    EXPECT_EQ(frame.stops->Stops()[i].offset, expected[i].offset) << i;
    EXPECT_EQ(frame.stops->Stops()[i].opacity, expected[i].opacity) << i;
  }
  EXPECT_EQ(frame.stopsPartlyTransparent, 1u);
}

TEST_F(PaintServers, AListThatIsReadAgainLeavesWhatItLeftTheFirstTime) {
  Open(
      "<linearGradient id=\"g\"><stop offset=\"0.25\" style=\"stop-color:#102030;stop-opacity:0.5\"/><ellipse/>"
      "</linearGradient><linearGradient id=\"h\"><stop offset=\"1\"/></linearGradient>");
  for (int reading = 0; reading < 2; ++reading) {
    SCOPED_TRACE(reading);
    PushGraphicsState();
    EXPECT_EQ(ReadGradientStops(u"#h"), 1);
    EXPECT_EQ(CurrentFrame().stopCount, 1);
    EXPECT_EQ(CurrentFrame().stopsPartlyTransparent, 0u);
    const std::uint64_t work = run.definitionGuard.work;
    EXPECT_EQ(ReadGradientStops(u"#g"), 1);
    EXPECT_EQ(run.definitionGuard.work - work, 2u);
    const GraphicsState& frame = CurrentFrame();
    ASSERT_EQ(frame.stopCount, 2);
    EXPECT_EQ(frame.stopsPartlyTransparent, 1u);
    EXPECT_EQ(frame.stops->Stops()[0].rgb, 0x302010u);
    EXPECT_EQ(frame.stops->Stops()[0].offset, 0.25);
    EXPECT_EQ(frame.stops->Stops()[0].opacity, 0.5);
    EXPECT_EQ(frame.stops->Stops()[1].rgb, 0u);
    EXPECT_EQ(frame.stops->Stops()[1].opacity, 1.0);
    frame.stops->Stops()[1].rgb = 7;  // the frame's own
    PopGraphicsState();
  }
}

TEST_F(PaintServers, ACommentAmongTheStopsIsAnEntryOfTheFill) {
  EXPECT_EQ(FillRecords("<linearGradient id=\"stops\"><stop offset=\"0.5\" style=\"stop-color:#ff0000\"/><!-- c -->"
                        "<stop offset=\"1\" style=\"stop-color:#0000ff\"/></linearGradient>"
                        "<linearGradient id=\"g\" x2=\"1\" xlink:href=\"#stops\"/>",
                        "fill:url(#g)"),
            (Lines{"FILL 0", "FDEF linear 255@50 0@0 16711680@100", "TSPY linear 50:100 0:100 99:100"}));
}

TEST_F(PaintServers, OffsetsAreReadAsTheyStand) {
  const struct {
    const char* text;
    double offset;
  } cases[] = {
      {"0.5", 0.5}, {"50%", 50.0}, {"1e-1", 0.1}, {"-0.5", -0.5}, {".25", 0.25}, {"2.5x", 2.5}, {"abc", 0.0}, {"", 0.0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    Open("<linearGradient id=\"g\"><stop offset=\"" + std::string(c.text) + "\"/></linearGradient>");
    EXPECT_EQ(ReadGradientStops(u"#g"), 1);
    EXPECT_EQ(CurrentFrame().stops->Stops()[0].offset, c.offset);
    ResetImportRun();
  }
}

TEST_F(PaintServers, ColourAndOpacityOutsideTheStyleAreNotRead) {
  Open("<linearGradient id=\"g\"><stop offset=\"1\" stop-color=\"#ffffff\" stop-opacity=\"0.5\"/></linearGradient>");
  ReadGradientStops(u"#g");
  EXPECT_EQ(CurrentFrame().stops->Stops()[0].rgb, 0u);
  EXPECT_EQ(CurrentFrame().stops->Stops()[0].opacity, 1.0);
  EXPECT_EQ(CurrentFrame().stopsPartlyTransparent, 0u);
}

TEST_F(StopStyle, ColoursOfAStop) {
  const struct {
    const char16_t* style;
    std::uint32_t rgb;
  } cases[] = {
      {u"stop-color:#102030", 0x302010},
      {u"stop-color:  #102030;", 0x302010},
      {u"stop-color :#102030", 0x302010},
      {u"fill:red;stop-color:#aAbBcC", 0xCCBBAA},
      {u"stop-color:#abc;", 0xCCBBAA},
      {u"stop-color:#F0a;stop-opacity:1", 0xAA00FF},
      // Without the ";" three digits are the first three of six.
      {u"stop-color:#abc", 0x00C0AB},
      {u"stop-color:#ab;", 0x0000AB},
      {u"stop-color:#", 0x000000},
      // Only the fifth character of the value is looked at.
      {u"stop-color:#12;456", 0x560412},
      {u"stop-color:#12G4z6", 0x060412},
      {u"stop-color:#10 203", 0x030210},
      // The first of two.
      {u"stop-color:#010203;stop-color:#040506", 0x030201},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(c.style)));
    Entry(0).rgb = 0x777777;
    ParseStopStyle(c.style, 0);
    EXPECT_EQ(Entry(0).rgb, c.rgb);
  }
  EXPECT_EQ(Entry(0).offset, 0.25);
}

TEST_F(StopStyle, AnotherFormOfColourLeavesTheEntrysColour) {
  for (const char16_t* style : {u"stop-color:red", u"stop-color:rgb(1,2,3)", u"stop-color:", u"stop-color",
                                u"Stop-Color:#102030", u"fill:#102030", u"color:#102030"}) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(style)));
    ParseStopStyle(style, 0);
    EXPECT_EQ(Entry(0).rgb, 0x777777u);
    EXPECT_EQ(Entry(0).opacity, 1.0);
  }
}

TEST_F(StopStyle, OpacitiesOfAStop) {
  const struct {
    const char16_t* style;
    double opacity;
    std::uint32_t partly;
  } cases[] = {
      {u"stop-color:#000000", 1.0, 0},
      {u"stop-color:#000000;stop-opacity:0.5", 0.5, 1},
      {u"stop-opacity: 0.25;stop-color:#000000", 0.25, 1},
      {u"stop-color:red;stop-opacity:.5", 0.5, 1},
      // Without a colour the opacity is not read.
      {u"stop-opacity:0.5", 1.0, 0},
      {u"", 1.0, 0},
      // Not clamped, and transparent only below 1.
      {u"stop-color:#000000;stop-opacity:1", 1.0, 0},
      {u"stop-color:#000000;stop-opacity:0.9999999", 0.9999999, 1},
      {u"stop-color:#000000;stop-opacity:1.5", 1.5, 0},
      {u"stop-color:#000000;stop-opacity:50%", 50.0, 0},
      {u"stop-color:#000000;stop-opacity:-0.5", -0.5, 1},
      {u"stop-color:#000000;stop-opacity:none", 0.0, 1},
      {u"stop-color:#000000;stop-opacity", 0.0, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(c.style)));
    CurrentFrame().stopsPartlyTransparent = 0;
    Entry(0).opacity = 7.0;
    ParseStopStyle(c.style, 0);
    EXPECT_EQ(Entry(0).opacity, c.opacity);
    EXPECT_EQ(CurrentFrame().stopsPartlyTransparent, c.partly);
  }
}

TEST_F(StopStyle, AnOpaqueStopDoesNotTakeTheFlagBack) {
  ParseStopStyle(u"stop-color:#000000;stop-opacity:0.5", 0);
  ParseStopStyle(u"stop-color:#000000;stop-opacity:1", 1);
  EXPECT_EQ(CurrentFrame().stopsPartlyTransparent, 1u);
}

TEST_F(StopStyle, OnlyTheNamedEntryIsWritten) {
  ParseStopStyle(u"stop-color:#102030;stop-opacity:0.5", 1);
  EXPECT_EQ(Entry(0).rgb, 0x777777u);
  EXPECT_EQ(Entry(0).opacity, 7.0);
  EXPECT_EQ(Entry(1).rgb, 0x302010u);
  EXPECT_EQ(Entry(1).opacity, 0.5);
  EXPECT_EQ(Entry(1).offset, 0.75);
}

TEST_F(PaintServers, AStopsStyleOfTheDocument) {
  EXPECT_EQ(
      FillRecords("<linearGradient id=\"stops\">"
                  "<stop offset=\"0\" style=\"stop-color:#abc;\"/><stop offset=\"1\" style=\"stop-color:#abc\"/>"
                  "<stop offset=\"1\" style=\"stop-opacity:0.5\"/></linearGradient>"
                  "<linearGradient id=\"g\" x2=\"1\" xlink:href=\"#stops\"/>",
                  "fill:url(#g)"),
      (Lines{"FILL 0", "FDEF linear " + std::to_string(0xCCBBAA) + "@0 " + std::to_string(0x00C0AB) + "@100 0@100",
             "TSPY linear 0:100 99:100 99:100"}));
}

// --- What a gradient or pattern holds beside its stops

TEST_F(PaintServers, AGradientDrawsWhatItHoldsBehindItsRecords) {
  const Lines records =
      FillRecords(std::string(kStops) +
                      "<linearGradient id=\"g\" x2=\"1\" xlink:href=\"#stops\"><ellipse cx=\"5\" cy=\"5\" rx=\"1\" "
                      "ry=\"1\"/><g fill=\"#00ff00\"/></linearGradient>",
                  "fill:url(#g)");
  EXPECT_EQ(Lines(records.begin(), records.begin() + 3), kLinearRecords);
  EXPECT_EQ(Lines(records.begin() + 3, records.begin() + 10), Replay());
  EXPECT_EQ(records.at(10).substr(0, 4), "PLYR");
  // The group: a width of its own run and its colour, which the pop takes back.
  EXPECT_EQ(Lines(records.begin() + 11, records.end()),
            (Lines{"SGRP 1", "THST 2", "WIDT 0.1", "FILL 65280", "EGRP 1", "FILL 0"}));
}

TEST_F(PaintServers, TheChildrenThatAGradientTranslates) {
  const struct {
    const char* element;
    const char* record;  // that shows its translation
  } cases[] = {
      {"<ellipse cx=\"5\" cy=\"5\" rx=\"1\" ry=\"1\"/>", "PLYR"},
      {"<line x2=\"3\" y2=\"4\"/>", "LINE 0,10 0.3,9.6"},
      {"<text>a</text>", "PARA \"a\""},
      {"<tspan>b</tspan>", "PARA \"b\""},
      {"<g fill=\"#00ff00\"/>", "FILL 65280"},
      {"<svg:line x2=\"3\" y2=\"4\"/>", "LINE 0,10 0.3,9.6"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.element);
    const Lines lines = ImportBody("<defs><linearGradient id=\"g\" x2=\"1\">" + std::string(c.element) +
                                   "</linearGradient></defs><rect width=\"1\" height=\"1\" style=\"fill:url(#g)\"/>");
    EXPECT_EQ(CountOf(lines, c.record), std::string(c.record) == "PLYR" ? 2u : 1u);
    ResetImportRun();
  }
}

TEST_F(PaintServers, TheChildrenThatAGradientPassesOver) {
  const std::string passedOver =
      "<rect width=\"1\" height=\"1\"/><circle r=\"1\"/><path d=\"M0 0 L1 1\"/><polygon points=\"0,0 1,1\"/>"
      "<polyline points=\"0,0 1,1\"/><image xlink:href=\"a.png\"/><Ellipse cx=\"5\" cy=\"5\" rx=\"1\" ry=\"1\"/>"
      "<stop/><lines/><use/><defs/>text<!-- comment -->";
  EXPECT_EQ(ImportBody("<defs>" + std::string(kStops) + "<linearGradient id=\"g\" x2=\"1\" xlink:href=\"#stops\">" +
                       passedOver + "</linearGradient></defs><path style=\"fill:url(#g)\" d=\"M1 1 L2 2\"/>"),
            Replay() + kLinearRecords + kOutline);
}

TEST_F(PaintServers, DefinitionsInAGradientAreRecordedWhenItIsTranslated) {
  const std::string definitions =
      std::string(kStops) +
      "<linearGradient id=\"outer\" x2=\"1\"><radialGradient id=\"inner\" r=\"1\" xlink:href=\"#stops\"/>"
      "<clipPath id=\"clip\"><rect width=\"1\" height=\"1\"/></clipPath><linearGradient id=\"other\"/>"
      "<pattern id=\"pattern\"/></linearGradient>";
  EXPECT_EQ(FillRecords(definitions, "fill:url(#inner)"), Lines{});
  ResetImportRun();
  const Lines lines = ImportBody("<defs>" + definitions + "</defs><path style=\"fill:url(#outer)\" d=\"M1 1\"/>" +
                                 "<path style=\"fill:url(#inner)\" clip-path=\"url(#clip)\" d=\"M1 1\"/>");
  EXPECT_EQ(CountOf(lines, "FDEF radial 255@0 16711680@100"), 1u);
  EXPECT_EQ(CountOf(lines, "SCGR 1"), 1u);
  EXPECT_EQ(run.definitions.GradientDefs.count, 1 + 4);
  EXPECT_EQ(run.definitions.ClipDefs.count, 1 + 1);
  EXPECT_EQ(run.definitions.PatternDefs.count, 1);
  EXPECT_EQ(run.definitions.GradientDefs.records[2].kind, kRadialGradient);
  EXPECT_EQ(run.definitions.GradientDefs.records[3].kind, kLinearGradient);
}

// --- Patterns

TEST_F(PaintServers, APatternLeavesItsFourOperandsAndSendsNothing) {
  Open("<pattern id=\"p\" x=\"1\" y=\"2mm\" width=\"3%\" height=\"4\" patternUnits=\"userSpaceOnUse\"/>");
  TranslatePattern(PatternNode(0));
  EXPECT_EQ(Drain(), Lines{});
  EXPECT_EQ(Operands(), (Lines{"Number 4", "Number 3", "Number 2", "Number 1"}));
}

TEST_F(PaintServers, AMissingOperandOfAPatternIsZeroAndOneWithoutANumberIsLeftOut) {
  Open("<pattern id=\"p\" y=\"\" width=\"abc\" height=\"4\"/>");
  TranslatePattern(PatternNode(0));
  EXPECT_EQ(Operands(), (Lines{"Number 4", "Number 0", "Number 0"}));
}

TEST_F(PaintServers, TheOperandsOfAPatternWithoutAnImageWaitForTheShape) {
  // The ellipse has no centre: it takes the pattern's width and height, 3 and 4.
  const std::string ellipse = "<ellipse rx=\"2\" ry=\"1\" style=\"fill:";
  const Lines lines = ImportBody("<defs><pattern id=\"p\" x=\"1\" y=\"2\" width=\"3\" height=\"4\"/></defs>" + ellipse +
                                 "url(#p)\"/><ellipse cx=\"3\" cy=\"4\" rx=\"2\" ry=\"1\" style=\"fill:url(#none)\"/>");
  ASSERT_EQ(CountOf(lines, "PLYR"), 2u);
  const std::size_t first = FindLine(lines, "PLYR");
  EXPECT_EQ(lines.at(first), lines.at(first + 1 + Replay().size()));
}

TEST_F(PaintServers, TheChildrenThatAPatternTranslatesAndThoseThatItPassesOver) {
  Open(
      "<pattern id=\"p\"><line x2=\"3\" y2=\"4\"/><g fill=\"#00ff00\"/><ellipse cx=\"5\" cy=\"5\" rx=\"1\" ry=\"1\"/>"
      "<text>a</text><tspan>b</tspan><rect width=\"1\" height=\"1\"/><path d=\"M0 0 L1 1\"/><circle r=\"1\"/>"
      "<pattern id=\"inner\"/><linearGradient id=\"l\"/><radialGradient id=\"r\"/><clipPath id=\"c\"/></pattern>");
  TranslatePattern(PatternNode(0));
  const Lines records = Drain();
  EXPECT_EQ(CountOf(records, "LINE"), 1u);
  EXPECT_EQ(CountOf(records, "FILL 65280"), 1u);
  EXPECT_EQ(CountOf(records, "PLYR"), 1u);
  EXPECT_EQ(CountOf(records, "PARA"), 0u);
  EXPECT_EQ(run.definitions.PatternDefs.count, 2);
  EXPECT_EQ(run.definitions.GradientDefs.count, 3);
  EXPECT_EQ(run.definitions.GradientDefs.records[0].kind, kLinearGradient);
  EXPECT_EQ(run.definitions.GradientDefs.records[1].kind, kRadialGradient);
  EXPECT_EQ(run.definitions.ClipDefs.count, 2);
}

// --- Definitions that lead back to themselves

namespace {

std::string LinkingEllipse(const std::string& reference) {
  return "<ellipse cx=\"5\" cy=\"5\" rx=\"1\" ry=\"1\" style=\"fill:url(#" + reference + ")\"/>";
}

// Gradients n0, n1, ..., each of which draws an ellipse filled with the next.
std::string GradientChain(std::size_t length) {
  std::string definitions;
  for (std::size_t i = 0; i < length; ++i) {
    const std::string index = std::to_string(1000 + i);
    definitions += "<linearGradient id=\"n" + index + "\" x2=\"1\">" + LinkingEllipse("n" + std::to_string(1001 + i)) +
                   "</linearGradient>";
  }
  return definitions;
}

}  // namespace

TEST_F(PaintServers, AGradientWithinItselfCountsAsNotFound) {
  const Lines lines =
      FillRecords("<linearGradient id=\"g\" x2=\"1\">" + LinkingEllipse("g") + "</linearGradient>", "fill:url(#g)");
  // Its own records, then the ellipse with no fill of its own.
  EXPECT_EQ(CountOf(lines, "FDEF linear"), 1u);
  EXPECT_EQ(CountOf(lines, "PLYR"), 1u);
}

TEST_F(PaintServers, APatternIsNotLookedForInPlaceOfAGradientThatIsBeingTranslated) {
  const Lines lines = FillRecords("<linearGradient id=\"g\" x2=\"1\">" + LinkingEllipse("g") +
                                      "</linearGradient><pattern id=\"g\"><line x2=\"3\" y2=\"4\"/></pattern>",
                                  "fill:url(#g)");
  EXPECT_EQ(CountOf(lines, "FDEF linear"), 1u);
  EXPECT_EQ(CountOf(lines, "LINE"), 0u);
}

TEST_F(PaintServers, APatternWithinItselfCountsAsNotFound) {
  const Lines lines = ImportBody("<defs><pattern id=\"p\"><line x2=\"3\" y2=\"4\"/>" + LinkingEllipse("p") +
                                 "</pattern></defs><rect width=\"1\" height=\"1\" style=\"fill:url(#p)\"/>");
  EXPECT_EQ(CountOf(lines, "LINE"), 1u);
  EXPECT_EQ(CountOf(lines, "PLYR"), 2u);
}

TEST_F(PaintServers, AClipWithinItselfCountsAsNotFound) {
  const Lines lines = ImportBody(
      "<defs><clipPath id=\"c\"><rect width=\"1\" height=\"1\" clip-path=\"url(#c)\"/></clipPath></defs>"
      "<rect width=\"2\" height=\"2\" clip-path=\"url(#c)\"/>");
  // The inner reference opens no group, and is closed all the same.
  EXPECT_EQ(CountOf(lines, "SCGR"), 1u);
  EXPECT_EQ(CountOf(lines, "PLYR"), 2u);
  EXPECT_EQ(CountOf(lines, "CLIP 1"), 1u);
  EXPECT_EQ(CountOf(lines, "CLIP 0"), 2u);
  EXPECT_EQ(CountOf(lines, "ECGR"), 2u);
}

TEST_F(PaintServers, TwoThatContainEachOtherEndAtTheSecondVisit) {
  const std::string definitions = "<linearGradient id=\"first\" x2=\"1\">" + LinkingEllipse("second") +
                                  "</linearGradient><radialGradient id=\"second\" r=\"1\">" + LinkingEllipse("first") +
                                  "</radialGradient>";
  const Lines lines = FillRecords(definitions, "fill:url(#first)");
  EXPECT_EQ(CountOf(lines, "FDEF linear"), 1u);
  EXPECT_EQ(CountOf(lines, "FDEF radial"), 1u);
  EXPECT_EQ(CountOf(lines, "PLYR"), 2u);
}

TEST_F(PaintServers, ACircleThroughClipPatternAndGradientEnds) {
  const Lines lines = ImportBody(
      "<defs><clipPath id=\"c\"><rect width=\"1\" height=\"1\" style=\"fill:url(#p)\"/></clipPath>"
      "<pattern id=\"p\"><line x2=\"3\" y2=\"4\" style=\"fill:url(#g)\"/></pattern>"
      "<linearGradient id=\"g\" x2=\"1\"><g clip-path=\"url(#c)\"/></linearGradient></defs>"
      "<rect width=\"2\" height=\"2\" clip-path=\"url(#c)\"/>");
  EXPECT_EQ(CountOf(lines, "SCGR"), 1u);
  EXPECT_EQ(CountOf(lines, "FDEF linear"), 1u);
  EXPECT_EQ(CountOf(lines, "LINE 0,10 0.3,9.6"), 1u);
  EXPECT_EQ(CountOf(lines, "PLYR"), 2u);
  // Of the clip that was found, and of the one within the group, which was not.
  EXPECT_EQ(CountOf(lines, "CLIP 0"), 2u);
}

TEST_F(PaintServers, ADefinitionIsFoundAgainOnceItsTranslationHasEnded) {
  const Lines lines =
      FillRecords("<linearGradient id=\"outer\" x2=\"1\">" + LinkingEllipse("inner") + LinkingEllipse("inner") +
                      "</linearGradient><radialGradient id=\"inner\" r=\"1\"/>",
                  "fill:url(#outer)");
  EXPECT_EQ(CountOf(lines, "FDEF radial"), 2u);
}

TEST_F(PaintServers, ADefinitionIsFoundAgainAfterAnErrorLeftItsTranslation) {
  Open("<linearGradient id=\"g\" x2=\"1\">" + LinkingEllipse("g") + "</linearGradient>");
  FailAllocation(1);
  EXPECT_THROW(TranslatePaintServer(u"g"), std::bad_alloc);
  FailAllocation(0);
  Drain();
  TranslatePaintServer(u"g");
  EXPECT_EQ(CountOf(Drain(), "FDEF linear"), 1u);
}

TEST_F(PaintServers, DefinitionsNest32DeepAndNoDeeper) {
  for (const std::size_t length : {31u, 32u, 33u}) {
    const Lines lines = FillRecords(GradientChain(length), "fill:url(#n1000)");
    EXPECT_EQ(CountOf(lines, "FDEF linear"), length < 32 ? length : 32) << length;
    ResetImportRun();
  }
}

TEST_F(PaintServers, AnImportEntersAMillionDefinitionsAndNoMore) {
  Open("<linearGradient id=\"g\" x2=\"1\"/>");
  run.definitionGuard.entries = 1'000'000 - 2;
  for (const std::size_t found : {1u, 1u, 0u, 0u}) {
    TranslatePaintServer(u"g");
    EXPECT_EQ(CountOf(Drain(), "FDEF linear"), found);
  }
}

TEST_F(PaintServers, AGradientThatLinksToItselfReadsItsStops) {
  EXPECT_EQ(FillRecords("<linearGradient id=\"g\" x2=\"1\" xlink:href=\"#g\"><stop offset=\"0.5\" "
                        "style=\"stop-color:#ff0000\"/></linearGradient>",
                        "fill:url(#g)")
                .at(1),
            "FDEF linear 255@50 255@100");
}

// --- Memory

TEST_F(PaintServers, StopsInheritedByDrawingWithinAGradientAreGivenBackOnce) {
  // Frames of the path, of the group within its gradient, and of the ellipses within that hold one block of stops.
  const std::string definitions =
      std::string(kStops) + "<linearGradient id=\"g\" x2=\"1\" xlink:href=\"#stops\"><g><g>" +
      "<ellipse cx=\"5\" cy=\"5\" rx=\"1\" ry=\"1\"/><ellipse cx=\"6\" cy=\"6\" rx=\"1\" ry=\"1\"/></g></g>" +
      LinkingEllipse("bare") + "</linearGradient><radialGradient id=\"bare\" r=\"1\"/>";
  ASSERT_EQ(Check(Document("<defs>" + definitions + "</defs>")), 1);
  Drain();
  PushGraphicsState();
  TranslatePaintServer(u"g");
  EXPECT_EQ(CountOf(Drain(), "FDEF radial 255@0 16711680@100"), 1u);
  const std::size_t blocks = LiveCounts().blocks;
  PopGraphicsState();
  EXPECT_EQ(LiveCounts().blocks, blocks - 1);
  EXPECT_EQ(CurrentFrame().stops, nullptr);
}
