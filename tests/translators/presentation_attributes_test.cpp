#include "operators/graphics_state.h"
#include "tests/translators/translator_fixture.h"
#include "translators/style.h"

namespace {

class PresentationAttributes : public TranslatorTest {
 protected:
  // The style text of an element with these attributes, under a frame with this line width.
  std::string Fold(std::string_view attributes, double frameWidth = 0.0) {
    IXMLDOMNode* node = Load("<path " + std::string(attributes) + "/>");
    CurrentFrame().lineWidth = frameWidth;
    GrowingText out;
    FoldPresentationAttributes(out, node);
    return Utf8FromWide(out);
  }
  // The records behind the replay of an element that draws nothing, up to its frame's end.
  Lines Paint(std::string_view attributes) {
    const Lines lines = Fresh("<path " + std::string(attributes) + "/>");
    EXPECT_GE(lines.size(), 7u);
    return From(lines, 7);
  }
};

}  // namespace

TEST_F(PresentationAttributes, AllSevenAreFoldedInTheirOrder) {
  EXPECT_EQ(
      Fold(
          "stroke-linejoin='g' stroke-linecap='f' fill-rule='e' fill-opacity='d' fill='c' stroke='b' stroke-width='a'"),
      "stroke-width:a; stroke:b; fill:c; fill-opacity:d; fill-rule:e; stroke-linecap:f; stroke-linejoin:g; ");
}

TEST_F(PresentationAttributes, EachIsFoldedAlone) {
  EXPECT_EQ(Fold("stroke-width='2'"), "stroke-width:2; ");
  EXPECT_EQ(Fold("fill='red'"), "fill:red; ");
  EXPECT_EQ(Fold("fill-opacity='0.5'"), "fill-opacity:0.5; ");
  EXPECT_EQ(Fold("fill-rule='evenodd'"), "fill-rule:evenodd; ");
  EXPECT_EQ(Fold("stroke-linecap='round'"), "stroke-linecap:round; ");
  EXPECT_EQ(Fold("stroke-linejoin='round'"), "stroke-linejoin:round; ");
}

TEST_F(PresentationAttributes, AStrokeWithoutAWidthIsOneUnitWide) {
  EXPECT_EQ(Fold("stroke='red'"), "stroke:red; stroke-width:1; ");
  EXPECT_EQ(Fold("stroke='red' stroke-width=''"), "stroke:red; stroke-width:1; ");
  EXPECT_EQ(Fold("stroke='none' fill='red'"), "stroke:none; stroke-width:1; fill:red; ");
}

TEST_F(PresentationAttributes, AStrokeWithAWidthOfItsOwnOrOfTheFrameGetsNoDefault) {
  EXPECT_EQ(Fold("stroke='red' stroke-width='2'"), "stroke-width:2; stroke:red; ");
  EXPECT_EQ(Fold("stroke='red'", 0.5), "stroke:red; ");
}

TEST_F(PresentationAttributes, EmptyAttributesAreLeftOut) {
  EXPECT_EQ(Fold("stroke='' fill='' stroke-width='' fill-opacity='' fill-rule='' stroke-linecap='' stroke-linejoin=''"),
            "");
  EXPECT_EQ(Fold("fill='' stroke-linecap='x'"), "stroke-linecap:x; ");
}

TEST_F(PresentationAttributes, OthersAreNotFolded) {
  EXPECT_EQ(
      Fold("opacity='0.5' stroke-miterlimit='4' stroke-opacity='0.5' stroke-dasharray='1' font-size='3' display='none' "
           "style='fill:red' d='M0 0' id='x' transform='scale(2)' clip-path='url(#c)'"),
      "");
}

TEST_F(PresentationAttributes, NamesAreMatchedWholeAndWithTheirCase) {
  EXPECT_EQ(Fold("Fill='red' svg:fill='blue' FILL='lime'"), "");
}

TEST_F(PresentationAttributes, ValuesAreCopiedWhole) {
  const std::string value(5000, 'x');
  EXPECT_EQ(Fold("fill='" + value + "'"), "fill:" + value + "; ");
  EXPECT_EQ(Fold("fill=' red;stroke:blue'"), "fill: red;stroke:blue; ");
}

// --- What becomes of them

TEST_F(PresentationAttributes, StrokeIsThickWhereItsStyleWouldBeAHairline) {
  EXPECT_EQ(Paint("stroke='red'"), Records("OUTL 255", "THST 3", "WIDT 0.1"));
  EXPECT_EQ(Paint("style='stroke:red'"), Records("OUTL 255", "THST 2", "WIDT 0.0001"));
}

TEST_F(PresentationAttributes, StrokeWithoutAWidthUnderAFrameWithOne) {
  IXMLDOMNode* node = Load("<path stroke='red'/>");
  CurrentFrame().lineWidth = 0.5;
  GrowingText out;
  FoldPresentationAttributes(out, node);
  ApplyShapeStyle(out);
  EXPECT_EQ(From(Drain(), 7), Records("OUTL 255", "WIDT 0"));
}

TEST_F(PresentationAttributes, AWidthWithoutAStrokeDrawsNoStroke) { EXPECT_EQ(Paint("stroke-width='3'"), Records()); }

TEST_F(PresentationAttributes, StrokeNoneSendsNoWidth) {
  EXPECT_EQ(Paint("stroke='none' stroke-width='3'"), Records("THST 1"));
  EXPECT_EQ(Paint("stroke='none'"), Records("THST 1"));
}

TEST_F(PresentationAttributes, ShortHexWorksSinceASemicolonFollows) {
  EXPECT_EQ(Paint("stroke='#f00' stroke-width='1'"), Records("OUTL 255", "THST 3", "WIDT 0.1"));
  EXPECT_EQ(Paint("fill='#00f'"), Records("FILL 16711680", "FILL 0"));
}

TEST_F(PresentationAttributes, ACapitalNameIsNoColour) { EXPECT_EQ(Paint("fill='Red'"), Records()); }

TEST_F(PresentationAttributes, ABlankBehindANameMakesItUnknown) {
  // Black, which is the frame's colour already.
  EXPECT_EQ(Paint("fill='red '"), Records("FILL 0"));
}

TEST_F(PresentationAttributes, FillOpacityAndRuleAndCapAndJoinCount) {
  EXPECT_EQ(Paint("fill-opacity='0.5'"), Records("TSPY 127", "TSPY 255"));
  EXPECT_EQ(Paint("fill-rule='evenodd'"), Records("WRUL 0"));
  EXPECT_EQ(Paint("stroke-linecap='round'"), Records("LNST 2"));
  EXPECT_EQ(Paint("stroke-linejoin='bevel'"), Records("CNST 1"));
}

TEST_F(PresentationAttributes, AttributesThatAreNotReadLeaveThePathWithoutAnyPaint) {
  EXPECT_EQ(Fresh("<path opacity='0.5' stroke-miterlimit='4' stroke-opacity='0.5'/>"), Records());
}

TEST_F(PresentationAttributes, AStrokeOfAGroupIsNoDefaultWidthForItsShapes) {
  // A group leaves no width in the frame, so that the shape's own default still counts.
  const Lines lines = Fresh("<g stroke-width='5'><path stroke='red'/></g>");
  EXPECT_EQ(From(lines, lines.size() - 4), Records("OUTL 255", "THST 3", "WIDT 0.1", "EGRP 1"));
}

// --- Paint servers

TEST_F(PresentationAttributes, FillUrlFindsAGradientAheadOfAPattern) {
  const std::string defs =
      "<defs><pattern id='both'><line/></pattern><pattern id='pattern'><line/></pattern><linearGradient "
      "id='both'/></defs>";
  // A gradient sends its fill and transparency; the pattern its line.
  const Lines gradient = Fresh(defs + "<path fill='url(#both)'/>");
  EXPECT_EQ(CountOf(gradient, "FDEF linear"), 1u);
  EXPECT_EQ(CountOf(gradient, "PATH"), 0u);
  const Lines pattern = Fresh(defs + "<path fill='url(#pattern)'/>");
  EXPECT_EQ(CountOf(pattern, "FDEF linear"), 0u);
  EXPECT_EQ(CountOf(pattern, "PATH"), 1u);
}

TEST_F(PresentationAttributes, FillUrlIsMatchedAsABeginningWithoutRegardToCase) {
  const std::string defs = "<defs><linearGradient id='Grad10'/></defs>";
  EXPECT_EQ(CountOf(Fresh(defs + "<path fill='url(#gRAD1)'/>"), "FDEF linear"), 1u);
  EXPECT_EQ(CountOf(Fresh(defs + "<path fill='URL(#Grad10) red'/>"), "FDEF linear"), 1u);
  EXPECT_EQ(CountOf(Fresh(defs + "<path fill='url(#Grad100)'/>"), "FDEF"), 0u);
  EXPECT_EQ(CountOf(Fresh(defs + "<path fill='url(#)'/>"), "FDEF"), 0u);
}

TEST_F(PresentationAttributes, FillUrlNeedsAClosingParenthesisBehindItsHash) {
  const std::string defs = "<defs><linearGradient id='g'/></defs>";
  EXPECT_EQ(CountOf(Fresh(defs + "<path fill='url(#g'/>"), "FDEF"), 0u);
  EXPECT_EQ(CountOf(Fresh(defs + "<path fill='url(g)'/>"), "FDEF"), 0u);
  EXPECT_EQ(CountOf(Fresh(defs + "<path fill='url)(#g)'/>"), "FDEF linear"), 1u);
}

TEST_F(PresentationAttributes, FillUrlTakesTheFirstHashOfAllThatFollows) {
  const std::string defs = "<defs><linearGradient id='g'/></defs>";
  EXPECT_EQ(CountOf(Fresh(defs + "<path style='fill:url(x);marker:url(#g)'/>"), "FDEF linear"), 1u);
  EXPECT_EQ(CountOf(Fresh(defs + "<path style='fill:url(x);color:#000;marker:url(#g)'/>"), "FDEF"), 0u);
}

TEST_F(PresentationAttributes, FillUrlIsNoGivenFill) {
  // So the path is not closed: a gradient's records, then the two lines of the data.
  const Lines lines = Fresh("<defs><linearGradient id='g'/></defs><path d='M0 0 10 0 10 10' fill='url(#g)'/>");
  EXPECT_EQ(CountOf(lines, "LINE"), 2u);
  EXPECT_EQ(run.paint.FillGiven, 0u);
}

TEST_F(PresentationAttributes, GradientRecordsStandBetweenStrokeAndCaps) {
  const Lines lines = Paint("fill='none' stroke-linecap='round' stroke='red'");
  EXPECT_EQ(lines, Records("OUTL 255", "THST 3", "WIDT 0.1", "FILL -1", "LNST 2", "FILL 0"));
  const Lines gradient =
      From(Fresh("<defs><linearGradient id='g'/></defs><path fill='url(#g)' stroke-linecap='round' stroke='red'/>"), 7);
  ASSERT_EQ(gradient.size(), 7u);
  EXPECT_EQ(Lines(gradient.begin(), gradient.begin() + 4), Records("OUTL 255", "THST 3", "WIDT 0.1", "FILL 0"));
  EXPECT_EQ(gradient[4].substr(0, 11), "FDEF linear");
  EXPECT_EQ(gradient[5].substr(0, 11), "TSPY linear");
  EXPECT_EQ(gradient[6], "LNST 2");
}

TEST_F(PresentationAttributes, AGradientWithTransparentStopsKeepsUniformOpacityOut) {
  const std::string defs =
      "<defs><linearGradient id='stops'><stop style='stop-color:#ff0000;stop-opacity:0.5'/></linearGradient>"
      "<linearGradient id='g' xlink:href='#stops'/></defs>";
  const Lines lines = Fresh(defs + "<path style='fill:url(#g);opacity:0.5;fill-opacity:0.5'/>");
  EXPECT_EQ(CountOf(lines, "TSPY linear"), 1u);
  EXPECT_EQ(CountOf(lines, "TSPY"), 1u);
}
