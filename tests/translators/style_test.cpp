#include "translators/style.h"

#include <cmath>

#include "operators/graphics_state.h"
#include "tests/translators/translator_fixture.h"

namespace {

constexpr std::int32_t kRed = 0x0000FF;
constexpr std::int32_t kLime = 0x00FF00;
constexpr std::int32_t kBlue = 0xFF0000;

// One user unit is half a host unit here, so that a width that was scaled shows.
class StyleText : public FilterTest {
 protected:
  StyleText() { StartMachine(100.0, 0.5); }

  Lines Group(std::string_view text) {
    ApplyGroupStyle(WideFromNarrow(text));
    return Drain();
  }
  Lines Text(std::string_view text, bool forceWidth = false) {
    ApplyTextStyle(WideFromNarrow(text), forceWidth);
    return Drain();
  }
  // What goes out behind the replay.
  Lines Shape(std::string_view text) {
    ApplyShapeStyle(WideFromNarrow(text));
    const Lines lines = Drain();
    EXPECT_GE(lines.size(), 7u);
    EXPECT_EQ(lines.at(6).substr(0, 5), "CNST ");
    return From(lines, 7);
  }
  // The colour of a shape's fill; nothing else may go out.
  std::string Fill(std::string_view value) {
    const Lines lines = Shape("fill:" + std::string(value));
    EXPECT_LE(lines.size(), 1u);
    return lines.empty() ? "nothing" : lines[0];
  }
  // The colour of a shape's stroke, a hairline each time.
  std::string Stroke(std::string_view value) {
    const Lines lines = Shape("stroke:" + std::string(value));
    EXPECT_EQ(From(lines, lines.size() - 2), Records("THST 2", "WIDT 0.0005"));
    return lines.size() == 3 ? lines[0] : "nothing";
  }

  static std::string Fill(std::int32_t colour) { return "FILL " + std::to_string(colour); }
  static std::string Outline(std::int32_t colour) { return "OUTL " + std::to_string(colour); }
};

class ShapeStyle : public StyleText {};
class GroupStyle : public StyleText {};
class TextStyle : public StyleText {};

}  // namespace

// --- The replay

TEST_F(ShapeStyle, TheReplaySendsTheFrameInItsOrder) {
  GraphicsState& frame = CurrentFrame();
  frame.lineWidth = 2.5;
  frame.thicknessState = 3;
  frame.outline.colour = 0x010203;
  frame.fill.colour = -1;
  frame.lineCap = 2;
  frame.lineJoin = 0;
  run.DefaultWindingRule = 0;
  ReplayPaintState();
  EXPECT_EQ(Drain(), Records("WIDT 2.5", "THST 3", "OUTL 66051", "FILL -1", "WRUL 0", "LNST 2", "CNST 0"));
}

TEST_F(ShapeStyle, TheWidthOfTheReplayIsTheStreamsOwn) {
  CurrentFrame().lineWidth = 2.5;
  ReplayPaintState();
  Drain();
  CurrentFrame().lineWidth = 7.0;
  EXPECT_EQ(PayloadOf<double>(0), 2.5);
}

TEST_F(ShapeStyle, TheReplayGoesAheadOfTheStyle) {
  ApplyShapeStyle(u"fill:red");
  EXPECT_EQ(Drain(), Replay() + Records(Fill(kRed)));
}

TEST_F(ShapeStyle, AnEmptyTextIsATextWithoutProperties) {
  run.paint.FillGiven = 1;
  EXPECT_EQ(Shape(""), Records());
  EXPECT_EQ(run.paint.FillGiven, 0u);
}

// --- Finding a value

TEST_F(ShapeStyle, TheFirstOfTwoPlacesCounts) { EXPECT_EQ(Shape("fill:red;fill:blue"), Records(Fill(kRed))); }

TEST_F(ShapeStyle, ANameIsFoundBehindAPrefix) { EXPECT_EQ(Shape("-x-fill:red"), Records(Fill(kRed))); }

TEST_F(ShapeStyle, EveryNameIsFoundBehindAPrefix) {
  EXPECT_EQ(Shape("xstroke:red;-stroke-width:3"), Records("OUTL 255", "THST 3", "WIDT 1.5"));
  EXPECT_EQ(Shape("xstroke-linecap:round"), Records("LNST 2"));
  EXPECT_EQ(Shape("xstroke-linejoin:bevel"), Records("CNST 1"));
  EXPECT_EQ(Shape("xstroke-miterlimit:4"), Records("MLIM 400"));
  EXPECT_EQ(Shape("xfill-rule:nonzero"), Records("WRUL 1"));
  // Behind a minus the opacity would be passed over.
  EXPECT_EQ(Shape("xfill-opacity:0.5"), Records("TSPY 127"));
}

TEST_F(ShapeStyle, ANameIsFoundInsideAValue) { EXPECT_EQ(Shape("font:'fill:red;'"), Records(Fill(kRed))); }

TEST_F(ShapeStyle, NamesAreCaseSensitiveAndNeedTheirColon) {
  EXPECT_EQ(Shape("Fill:red"), Records());
  EXPECT_EQ(Shape("fill :red"), Records());
  EXPECT_EQ(Shape("fill=red"), Records());
}

TEST_F(ShapeStyle, BlanksInFrontOfAValueAreSkipped) { EXPECT_EQ(Shape("fill:   red"), Records(Fill(kRed))); }

TEST_F(ShapeStyle, OnlyBlanksInFrontOfAValueAreSkipped) {
  EXPECT_EQ(Shape("fill:\tred"), Records());
  EXPECT_EQ(Shape("fill: \n red"), Records());
  EXPECT_EQ(Shape("stroke-linecap:\tround"), Records("LNST 0"));
  EXPECT_EQ(Shape("fill-rule:\tnonzero"), Records("WRUL 0"));
  // Numbers allow any white space in front of themselves.
  EXPECT_EQ(Shape("stroke:red;stroke-width:\t\n3"), Records("OUTL 255", "THST 3", "WIDT 1.5"));
  EXPECT_EQ(Shape("stroke-miterlimit:\n4"), Records("MLIM 400"));
  EXPECT_EQ(Shape("opacity:\t0.5"), Records("TSPY 127"));
}

TEST_F(ShapeStyle, AnEmptyValueIsNoColour) {
  EXPECT_EQ(Shape("fill:"), Records());
  EXPECT_EQ(Shape("fill:;"), Records());
  EXPECT_EQ(Shape("fill:  "), Records());
}

TEST_F(ShapeStyle, PropertiesThatAreNotReadSendNothing) {
  EXPECT_EQ(Shape("stroke-dasharray:1,2;display:none;visibility:hidden;color:red;stroke-opacity:0.5"), Records());
}

TEST_F(ShapeStyle, PropertiesAreTakenInTheirOwnOrder) {
  EXPECT_EQ(Shape("fill-rule:evenodd;fill-opacity:0.25;opacity:0.5;stroke-miterlimit:4;stroke-linejoin:round;"
                  "stroke-linecap:square;fill:lime;stroke-width:3;stroke:red"),
            Records("OUTL 255", "THST 3", "WIDT 1.5", "FILL 65280", "LNST 1", "CNST 0", "MLIM 400", "TSPY 127",
                    "TSPY 63", "WRUL 0"));
}

// --- Colours

TEST_F(ShapeStyle, SixDigitsAreThreePairs) {
  EXPECT_EQ(Fill("#ff0000"), Fill(kRed));
  EXPECT_EQ(Fill("#0102fE;"), Fill(0xFE0201));
  EXPECT_EQ(Stroke("#AbCdEf"), Outline(0xEFCDAB));
}

TEST_F(ShapeStyle, ThreeDigitsNeedASemicolonBehindThem) {
  EXPECT_EQ(Fill("#F00;"), Fill(kRed));
  EXPECT_EQ(Fill("#1a2;"), Fill(0x22AA11));
  // At the end of the text, ab, c0 and 00.
  EXPECT_EQ(Fill("#abc"), Fill(0x00C0AB));
  EXPECT_EQ(Fill("#abc ;"), Fill(0x00C0AB));
  EXPECT_EQ(Stroke("#F00;"), Outline(kRed));
}

TEST_F(ShapeStyle, DigitsThatAreNoneOrMissingCountAsZero) {
  EXPECT_EQ(Fill("#"), Fill(0));
  EXPECT_EQ(Fill("#1"), Fill(0x000010));
  EXPECT_EQ(Fill("#12345"), Fill(0x503412));
  EXPECT_EQ(Fill("#gF0z01"), Fill(0x01000F));
  EXPECT_EQ(Fill("#;;;;"), Fill(0));
}

TEST_F(ShapeStyle, SixDigitsAreReadAcrossASemicolon) {
  // A value does not end there: ab, then ";d", then ef.
  EXPECT_EQ(Fill("#ab;def"), Fill(0xEF0DAB));
}

TEST_F(ShapeStyle, RgbTakesThreeIntegersFromTheFifthCharacter) {
  EXPECT_EQ(Fill("rgb(255,0,0)"), Fill(kRed));
  EXPECT_EQ(Fill("RGB(1,2,3)"), Fill(0x030201));
  EXPECT_EQ(Fill("rGb( 1, 2, 3)"), Fill(0x030201));
  EXPECT_EQ(Fill("rgb:1,2,3"), Fill(0x030201));
  EXPECT_EQ(Fill("rgba(1,2,3)"), Fill(0));
}

TEST_F(ShapeStyle, RgbKeepsTheLowEightBits) {
  EXPECT_EQ(Fill("rgb(300,0,0)"), Fill(44));
  EXPECT_EQ(Fill("rgb(-1,256,257)"), Fill(0x0100FF));
}

TEST_F(ShapeStyle, RgbStopsAtWhatIsNoIntegerOrComma) {
  EXPECT_EQ(Fill("rgb(10%,20%,30%)"), Fill(10));
  EXPECT_EQ(Fill("rgb(1 ,2,3)"), Fill(1));
  EXPECT_EQ(Fill("rgb(1,2 ,3)"), Fill(0x000201));
  EXPECT_EQ(Fill("rgb(1.5,2,3)"), Fill(1));
  EXPECT_EQ(Fill("rgb()"), Fill(0));
  EXPECT_EQ(Fill("rgb"), Fill(0));
}

TEST_F(ShapeStyle, RgbIntegersStopAtTheEndsOf32Bits) {
  // 2147483647 and -2147483648, of which the low eight bits count.
  EXPECT_EQ(Fill("rgb(99999999999,-99999999999,2147483648)"), Fill(0xFF00FF));
}

TEST_F(ShapeStyle, NamesBeginWithALetterFromBToY) {
  EXPECT_EQ(Fill("blue"), Fill(kBlue));
  EXPECT_EQ(Fill("yellow"), Fill(0x00FFFF));
  EXPECT_EQ(Fill("aqua"), "nothing");
  EXPECT_EQ(Fill("zinc"), "nothing");
  EXPECT_EQ(Fill("Red"), "nothing");
  EXPECT_EQ(Fill("{red"), "nothing");
  EXPECT_EQ(Fill("0"), "nothing");
}

TEST_F(ShapeStyle, ANameEndsAtTheSemicolon) {
  EXPECT_EQ(Fill("red;stroke-opacity:1"), Fill(kRed));
  EXPECT_EQ(Fill("red ;"), Fill(0));
  EXPECT_EQ(Fill("red !important"), Fill(0));
}

TEST_F(ShapeStyle, UnknownNamesAreBlack) {
  EXPECT_EQ(Fill("currentColor"), Fill(0));
  EXPECT_EQ(Fill("inherit"), Fill(0));
  EXPECT_EQ(Fill("transparent"), Fill(0));
}

// --- Stroke of a shape

TEST_F(ShapeStyle, StrokeSendsItsColourAndAHairline) {
  EXPECT_EQ(Shape("stroke:red"), Records("OUTL 255", "THST 2", "WIDT 0.0005"));
}

TEST_F(ShapeStyle, StrokeOfNoKnownFormSendsNoColourButAWidth) {
  EXPECT_EQ(Shape("stroke:aqua;stroke-width:3"), Records("THST 3", "WIDT 1.5"));
  EXPECT_EQ(Shape("stroke:"), Records("THST 2", "WIDT 0.0005"));
}

TEST_F(ShapeStyle, StrokeNoneEndsTheStroke) {
  EXPECT_EQ(Shape("stroke:none;stroke-width:3"), Records("THST 1"));
  EXPECT_EQ(Shape("stroke:NONE;fill:red"), Records("THST 1", "FILL 255"));
  EXPECT_EQ(Shape("stroke:nonesuch"), Records("THST 1"));
}

TEST_F(ShapeStyle, StrokeUrlIsAName) { EXPECT_EQ(Stroke("url(#g)"), Outline(0)); }

TEST_F(ShapeStyle, StrokeNeverTouchesTheFrameButForRgb) {
  Shape("stroke:#0000FF;stroke-width:3");
  Shape("stroke:red;stroke-width:3");
  Shape("stroke:none");
  EXPECT_EQ(CurrentFrame().fill.colour, 0);
  EXPECT_EQ(CurrentFrame().outline.colour, 0);
  EXPECT_EQ(CurrentFrame().thicknessState, 0);
  EXPECT_EQ(CurrentFrame().lineWidth, 0.0);
}

TEST_F(ShapeStyle, RgbStrokeBecomesTheFramesFill) {
  EXPECT_EQ(Stroke("rgb(1,2,3)"), Outline(0x030201));
  EXPECT_EQ(CurrentFrame().fill.colour, 0x030201);
  EXPECT_EQ(CurrentFrame().outline.colour, 0);
  EXPECT_EQ(run.paint.FillGiven, 0u);
}

TEST_F(ShapeStyle, StrokeIsNotFoundInStrokeWidth) { EXPECT_EQ(Shape("stroke-width:3"), Records()); }

TEST_F(ShapeStyle, WidthIsScaledAndItsUnitIsNot) {
  EXPECT_EQ(Shape("stroke:red;stroke-width:3"), Records("OUTL 255", "THST 3", "WIDT 1.5"));
  EXPECT_EQ(Shape("stroke:red;stroke-width:3mm"), Records("OUTL 255", "THST 3", "WIDT 1.5"));
  EXPECT_EQ(Shape("stroke-width: 50%;stroke:red"), Records("OUTL 255", "THST 3", "WIDT 25"));
  EXPECT_EQ(Shape("stroke:red;stroke-width:-2"), Records("OUTL 255", "THST 3", "WIDT -1"));
  EXPECT_EQ(Shape("stroke:red;stroke-width:1e-1"), Records("OUTL 255", "THST 3", "WIDT 0.05"));
}

TEST_F(ShapeStyle, WidthZeroIsNoStrokeTwice) {
  for (const char* width : {"0", "0.0", "0px", "none", ""}) {
    EXPECT_EQ(Shape("stroke:#000;stroke-width:" + std::string(width)), Records("OUTL 0", "THST 1", "THST 1", "WIDT 0"))
        << width;
  }
}

TEST_F(ShapeStyle, WidthOfMinusZeroIsSentAsZero) {
  EXPECT_EQ(Shape("stroke:#000;stroke-width:-0"), Records("OUTL 0", "THST 1", "THST 1", "WIDT 0"));
  EXPECT_FALSE(std::signbit(PayloadOf<double>(commands.size() - 1)));
}

TEST_F(ShapeStyle, WithAWidthInTheFrameAStrokeWithoutOneSendsZero) {
  CurrentFrame().lineWidth = 2.5;
  ApplyShapeStyle(u"stroke:red");
  const Lines lines = Drain();
  EXPECT_EQ(lines.at(0), "WIDT 2.5");
  EXPECT_EQ(From(lines, 7), Records("OUTL 255", "WIDT 0"));
}

TEST_F(ShapeStyle, WithAWidthInTheFrameAGivenWidthCountsAllTheSame) {
  CurrentFrame().lineWidth = 2.5;
  EXPECT_EQ(Shape("stroke:red;stroke-width:3"), Records("OUTL 255", "THST 3", "WIDT 1.5"));
  EXPECT_EQ(CurrentFrame().lineWidth, 2.5);
}

// --- Fill of a shape

TEST_F(ShapeStyle, FillGoesIntoTheFrameAndIsGiven) {
  for (const char* value : {"#0000FF", "rgb(0,0,255)", "blue"}) {
    CurrentFrame().fill.colour = 0;
    run.paint.FillGiven = 0;
    EXPECT_EQ(Fill(value), Fill(kBlue));
    EXPECT_EQ(CurrentFrame().fill.colour, kBlue);
    EXPECT_EQ(run.paint.FillGiven, 1u);
  }
}

TEST_F(ShapeStyle, FillNoneGoesIntoTheFrameAndIsNotGiven) {
  for (const char* value : {"none", "NoNe", "nonesuch"}) {
    CurrentFrame().fill.colour = 0;
    run.paint.FillGiven = 1;
    EXPECT_EQ(Fill(value), Fill(-1));
    EXPECT_EQ(CurrentFrame().fill.colour, -1);
    EXPECT_EQ(run.paint.FillGiven, 0u);
  }
}

TEST_F(ShapeStyle, FillOfNoKnownFormSendsNothingAndIsNotGiven) {
  run.paint.FillGiven = 1;
  EXPECT_EQ(Fill("aqua"), "nothing");
  EXPECT_EQ(CurrentFrame().fill.colour, 0);
  EXPECT_EQ(run.paint.FillGiven, 0u);
}

TEST_F(ShapeStyle, AnyTextTakesAGivenFillBack) {
  run.paint.FillGiven = 1;
  Shape("stroke:none");
  EXPECT_EQ(run.paint.FillGiven, 0u);
}

TEST_F(ShapeStyle, FillUrlThatNamesNothingSendsNothing) {
  for (const char* value : {"url(#g)", "URL(#g)", "url(#g", "url(g)", "url", "url()#x"}) {
    EXPECT_EQ(Fill(value), "nothing") << value;
    EXPECT_EQ(run.paint.FillGiven, 0u);
  }
}

// --- Caps, joins, limits and rules of a shape

TEST_F(ShapeStyle, LineCaps) {
  const std::pair<const char*, const char*> cases[] = {
      {"butt", "LNST 0"},   {"BUTTER", "LNST 0"}, {"round", "LNST 2"}, {"Rounded", "LNST 2"},
      {"square", "LNST 1"}, {"SQUARE", "LNST 1"}, {"squar", "LNST 1"}, {"squa", "LNST 0"},
      {"roun", "LNST 0"},   {"", "LNST 0"},       {"other", "LNST 0"},
  };
  for (const auto& [value, record] : cases)
    EXPECT_EQ(Shape("stroke-linecap:" + std::string(value)), Records(record)) << value;
  EXPECT_EQ(CurrentFrame().lineCap, 0);
}

TEST_F(ShapeStyle, LineJoins) {
  const std::pair<const char*, const char*> cases[] = {
      {"miter", "CNST 2"}, {"miterclip", "CNST 2"}, {"MITE", "CNST 2"}, {"mit", "CNST 0"},  {"round", "CNST 0"},
      {"bevel", "CNST 1"}, {"BEVELED", "CNST 1"},   {"beve", "CNST 0"}, {"arcs", "CNST 0"}, {"", "CNST 0"},
  };
  for (const auto& [value, record] : cases) {
    EXPECT_EQ(Shape("stroke-linejoin:" + std::string(value)), Records(record)) << value;
  }
  EXPECT_EQ(CurrentFrame().lineJoin, 1);
}

TEST_F(ShapeStyle, MiterLimitIsAnIntegerTimesAHundred) {
  const std::pair<const char*, std::int32_t> cases[] = {
      {"4", 400}, {"4.5", 400}, {"4.9", 400}, {" 10", 1000}, {"-2", -200}, {"x", 0}, {"0.9", 0},
  };
  for (const auto& [value, limit] : cases) {
    EXPECT_EQ(Shape("stroke-miterlimit:" + std::string(value)), Records("MLIM " + std::to_string(limit))) << value;
    EXPECT_EQ(CurrentFrame().miterLimit, limit);
  }
}

TEST_F(ShapeStyle, AnEndlessMiterLimitIsStillOneRecord) {
  EXPECT_EQ(CountOf(Shape("stroke-miterlimit:99999999999"), "MLIM"), 1u);
  EXPECT_EQ(CountOf(Shape("stroke-miterlimit:-99999999999"), "MLIM"), 1u);
}

TEST_F(ShapeStyle, FillRuleIsNonzeroBehindALowerCaseN) {
  const std::pair<const char*, const char*> cases[] = {
      {"nonzero", "WRUL 1"}, {"n", "WRUL 1"},       {"nothing", "WRUL 1"}, {"evenodd", "WRUL 0"},
      {"Evenodd", "WRUL 0"}, {"Nonzero", "WRUL 0"}, {"", "WRUL 0"},
  };
  for (const auto& [value, record] : cases)
    EXPECT_EQ(Shape("fill-rule:" + std::string(value)), Records(record)) << value;
}

// --- Opacity

TEST_F(ShapeStyle, OpacityIsClampedAndCutToAByte) {
  const std::pair<const char*, int> cases[] = {
      // 0.5 * 255 is 127.5, 0.999 * 255 is 254.7.
      {"0.5", 127}, {"1", 255}, {"1.5", 255}, {"0", 0}, {"-1", 0}, {"50%", 255}, {"0.999", 254}, {".25", 63}, {"x", 0},
  };
  for (const char* property : {"opacity:", "fill-opacity:"}) {
    for (const auto& [value, byte] : cases) {
      SCOPED_TRACE(std::string(property) + value);
      CurrentFrame().opacity = 1.0;
      EXPECT_EQ(Shape(std::string(property) + value), Records("TSPY " + std::to_string(byte)));
      EXPECT_EQ(CurrentFrame().opacity, byte);
    }
  }
}

TEST_F(ShapeStyle, OpacityAndFillOpacityAreTwoRecordsAndTheLaterStands) {
  EXPECT_EQ(Shape("fill-opacity:0.25;opacity:0.5"), Records("TSPY 127", "TSPY 63"));
  EXPECT_EQ(CurrentFrame().opacity, 63.0);
}

TEST_F(ShapeStyle, OpacityBehindAMinusIsAnotherProperty) {
  EXPECT_EQ(Shape("stroke-opacity:0.5"), Records());
  EXPECT_EQ(Shape("fill-opacity:0.5"), Records("TSPY 127"));
  EXPECT_EQ(CurrentFrame().opacity, 127.0);
}

TEST_F(ShapeStyle, OpacityIsLookedForOnceMoreBehindAMinus) {
  EXPECT_EQ(Shape("stroke-opacity:0.5;opacity:0.25"), Records("TSPY 63"));
  // The second place is no better than the first, and the third is not looked at.
  EXPECT_EQ(Shape("stroke-opacity:0.5;fill-opacity:0.2;opacity:0.25"), Records("TSPY 51"));
}

TEST_F(ShapeStyle, OpacityBehindAnyOtherCharacterCounts) { EXPECT_EQ(Shape("xopacity:0.5"), Records("TSPY 127")); }

TEST_F(ShapeStyle, OpacityIsLeftToPartlyTransparentStops) {
  CurrentFrame().stopsPartlyTransparent = 1;
  EXPECT_EQ(Shape("opacity:0.5;fill-opacity:0.5"), Records());
  EXPECT_EQ(Group("opacity:0.5;fill-opacity:0.5"), Records("THST 2", "WIDT 0.5"));
  EXPECT_EQ(Text("stroke:none;fill-opacity:0.5"), Records("THST 1"));
  EXPECT_EQ(CurrentFrame().opacity, 1.0);
}

// --- Groups

TEST_F(GroupStyle, PropertiesAreTakenInTheirOwnOrderAndWithoutAReplay) {
  EXPECT_EQ(Group("fill:lime;stroke-width:3;stroke:red;fill-opacity:0.25;opacity:0.5"),
            Records("TSPY 127", "TSPY 63", "OUTL 255", "THST 3", "WIDT 1.5", "FILL 65280"));
}

TEST_F(GroupStyle, CapJoinLimitAndRuleAreNotRead) {
  EXPECT_EQ(Group("stroke:none;stroke-linecap:round;stroke-linejoin:round;stroke-miterlimit:4;fill-rule:evenodd"),
            Records("THST 1", "WIDT 0"));
}

TEST_F(GroupStyle, EveryRunSendsAWidth) {
  EXPECT_EQ(Group("fill:red"), Records("THST 2", "WIDT 0.5", "FILL 255"));
  EXPECT_EQ(Group(""), Records("THST 2", "WIDT 0.5"));
  EXPECT_EQ(Group("7"), Records("THST 2", "WIDT 0.5"));
}

TEST_F(GroupStyle, WithoutAWidthItIsAHairlineOfOneUnit) {
  EXPECT_EQ(Group("stroke:red"), Records("OUTL 255", "THST 2", "WIDT 0.5"));
  EXPECT_EQ(CurrentFrame().thicknessState, 2);
  EXPECT_EQ(CurrentFrame().lineWidth, 0.0);
}

TEST_F(GroupStyle, WithAWidthInTheFrameItIsZero) {
  CurrentFrame().lineWidth = 2.5;
  EXPECT_EQ(Group("stroke:red"), Records("OUTL 255", "WIDT 0"));
  EXPECT_EQ(Group("fill:red"), Records("WIDT 0", "FILL 255"));
  EXPECT_EQ(CurrentFrame().thicknessState, 0);
}

TEST_F(GroupStyle, AWidthNeedsNoStroke) {
  EXPECT_EQ(Group("stroke-width:3"), Records("THST 3", "WIDT 1.5"));
  EXPECT_EQ(CurrentFrame().thicknessState, 3);
  EXPECT_EQ(CurrentFrame().lineWidth, 0.0);
}

TEST_F(GroupStyle, AWidthOfZeroIsThick) {
  EXPECT_EQ(Group("stroke:red;stroke-width:0"), Records("OUTL 255", "THST 3", "WIDT 0"));
  EXPECT_EQ(CurrentFrame().thicknessState, 3);
}

TEST_F(GroupStyle, StrokeNoneSkipsTheWidthAndSendsZero) {
  EXPECT_EQ(Group("stroke:None;stroke-width:3;fill:red"), Records("THST 1", "WIDT 0", "FILL 255"));
  EXPECT_EQ(CurrentFrame().thicknessState, 1);
}

TEST_F(GroupStyle, HexAndNameGoToTheFramesOutline) {
  EXPECT_EQ(Group("stroke:#00F;"), Records(Outline(kBlue), "THST 2", "WIDT 0.5"));
  EXPECT_EQ(CurrentFrame().outline.colour, kBlue);
  EXPECT_EQ(Group("stroke:lime"), Records(Outline(kLime), "THST 2", "WIDT 0.5"));
  EXPECT_EQ(CurrentFrame().outline.colour, kLime);
  EXPECT_EQ(CurrentFrame().fill.colour, 0);
  EXPECT_EQ(run.paint.FillGiven, 0u);
}

TEST_F(GroupStyle, RgbGoesToTheFramesFillAndCountsAsGiven) {
  EXPECT_EQ(Group("stroke:RGB(1,2,3)"), Records(Outline(0x030201), "THST 2", "WIDT 0.5"));
  EXPECT_EQ(CurrentFrame().outline.colour, 0);
  EXPECT_EQ(CurrentFrame().fill.colour, 0x030201);
  EXPECT_EQ(run.paint.FillGiven, 1u);
}

TEST_F(GroupStyle, StrokeOfNoKnownFormSendsNoColourButAWidth) {
  EXPECT_EQ(Group("stroke:aqua"), Records("THST 2", "WIDT 0.5"));
  EXPECT_EQ(Group("stroke:Red;stroke-width:3"), Records("THST 3", "WIDT 1.5"));
  EXPECT_EQ(CurrentFrame().outline.colour, 0);
}

TEST_F(GroupStyle, FillGoesIntoTheFrameAndOnlyRgbCountsAsGiven) {
  const struct {
    const char* value;
    std::int32_t colour;
    std::uint32_t given;
  } cases[] = {
      {"none", -1, 0}, {"#0000FF", kBlue, 0}, {"#00F;", kBlue, 0}, {"blue", kBlue, 0}, {"rgb(0,0,255)", kBlue, 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    run.paint.FillGiven = 0;
    CurrentFrame().fill.colour = 7;
    EXPECT_EQ(Group("fill:" + std::string(c.value)), Records("THST 2", "WIDT 0.5", Fill(c.colour)));
    EXPECT_EQ(CurrentFrame().fill.colour, c.colour);
    EXPECT_EQ(run.paint.FillGiven, c.given);
  }
}

TEST_F(GroupStyle, AFillThatIsGivenStaysGiven) {
  for (const char* text : {"fill:red", "fill:none", "stroke:red", "opacity:0.5"}) {
    run.paint.FillGiven = 1;
    Group(text);
    EXPECT_EQ(run.paint.FillGiven, 1u) << text;
  }
}

TEST_F(GroupStyle, FillUrlIsAnUnknownNameAndSoBlack) {
  CurrentFrame().fill.colour = 7;
  EXPECT_EQ(Group("fill:url(#g)"), Records("THST 2", "WIDT 0.5", "FILL 0"));
  EXPECT_EQ(CurrentFrame().fill.colour, 0);
}

TEST_F(GroupStyle, FillOfNoKnownFormSendsNothing) {
  CurrentFrame().fill.colour = 7;
  EXPECT_EQ(Group("fill:aqua"), Records("THST 2", "WIDT 0.5"));
  EXPECT_EQ(Group("fill:Blue"), Records("THST 2", "WIDT 0.5"));
  EXPECT_EQ(CurrentFrame().fill.colour, 7);
}

TEST_F(GroupStyle, OpacityFollowsTheRulesOfShapes) {
  EXPECT_EQ(Group("opacity:0.5"), Records("TSPY 127", "THST 2", "WIDT 0.5"));
  EXPECT_EQ(CurrentFrame().opacity, 127.0);
  EXPECT_EQ(Group("stroke-opacity:0.5"), Records("THST 2", "WIDT 0.5"));
  EXPECT_EQ(Group("stroke-opacity:0.5;opacity:0.25"), Records("TSPY 63", "THST 2", "WIDT 0.5"));
  EXPECT_EQ(Group("stroke-opacity:0.5;fill-opacity:0.2;opacity:0.25"), Records("TSPY 51", "THST 2", "WIDT 0.5"));
}

// --- Texts

TEST_F(TextStyle, PropertiesAreTakenInTheirOwnOrderAndWithoutAReplay) {
  EXPECT_EQ(Text("fill-rule:evenodd;fill-opacity:0.25;stroke-linejoin:round;stroke-linecap:square;fill:lime;"
                 "stroke-width:3;stroke:red"),
            Records("OUTL 255", "THST 3", "WIDT 1.5", "FILL 65280", "LNST 1", "CNST 0", "TSPY 63", "WRUL 0"));
}

TEST_F(TextStyle, MiterLimitAndOpacityAreNotRead) {
  EXPECT_EQ(Text("stroke:none;stroke-miterlimit:4;opacity:0.5"), Records("THST 1"));
  EXPECT_EQ(CurrentFrame().miterLimit, 0);
  EXPECT_EQ(CurrentFrame().opacity, 1.0);
}

TEST_F(TextStyle, AnEmptyTextSendsAHairline) { EXPECT_EQ(Text(""), Records("THST 2", "WIDT 0.0005")); }

TEST_F(TextStyle, WithoutStrokeAndWidthItIsAHairline) {
  EXPECT_EQ(Text("fill:red"), Records("THST 2", "WIDT 0.0005", "FILL 255"));
}

TEST_F(TextStyle, StrokeWithoutAWidthIsAHairline) {
  EXPECT_EQ(Text("stroke:red"), Records("OUTL 255", "THST 2", "WIDT 0.0005"));
}

TEST_F(TextStyle, WithAWidthInTheFrameItIsZero) {
  CurrentFrame().lineWidth = 2.5;
  EXPECT_EQ(Text("stroke:red"), Records("OUTL 255", "WIDT 0"));
  EXPECT_EQ(Text("fill:red"), Records("WIDT 0", "FILL 255"));
}

TEST_F(TextStyle, AWidthNeedsNoStroke) { EXPECT_EQ(Text("stroke-width:3"), Records("THST 3", "WIDT 1.5")); }

TEST_F(TextStyle, AWidthOfZeroIsThick) {
  EXPECT_EQ(Text("stroke:red;stroke-width:0"), Records("OUTL 255", "THST 3", "WIDT 0"));
}

TEST_F(TextStyle, StrokeNoneHasAWidthOnlyByForce) {
  EXPECT_EQ(Text("stroke:none;stroke-width:3"), Records("THST 1"));
  EXPECT_EQ(Text("stroke:none;stroke-width:3", true), Records("THST 1", "THST 3", "WIDT 1.5"));
}

TEST_F(TextStyle, StrokeOfNoKnownFormHasAWidthOnlyByForce) {
  EXPECT_EQ(Text("stroke:aqua;stroke-width:3"), Records());
  EXPECT_EQ(Text("stroke:aqua;stroke-width:3", true), Records("THST 3", "WIDT 1.5"));
}

TEST_F(TextStyle, LowerCaseRgbOfAStrokeIsAnUnknownName) {
  EXPECT_EQ(Text("stroke:rgb(1,2,3)"), Records("OUTL 0", "THST 2", "WIDT 0.0005"));
  EXPECT_EQ(Text("stroke:rGB(1,2,3)"), Records("OUTL 0", "THST 2", "WIDT 0.0005"));
  EXPECT_EQ(Text("stroke:RGB(1,2,3)"), Records("OUTL 197121", "THST 2", "WIDT 0.0005"));
  EXPECT_EQ(Text("stroke:Rgb(1,2,3)"), Records("OUTL 197121", "THST 2", "WIDT 0.0005"));
}

TEST_F(TextStyle, StrokeHexAndNameAreColours) {
  EXPECT_EQ(Text("stroke:#00F;"), Records(Outline(kBlue), "THST 2", "WIDT 0.0005"));
  EXPECT_EQ(Text("stroke:lime;"), Records(Outline(kLime), "THST 2", "WIDT 0.0005"));
}

TEST_F(TextStyle, NoColourGoesIntoTheFrame) {
  CurrentFrame().fill.colour = 7;
  run.paint.FillGiven = 1;
  for (const char* text : {"stroke:red", "stroke:#00F;", "stroke:RGB(1,2,3)", "fill:red", "fill:#00F;",
                           "fill:rgb(1,2,3)", "fill:none", "stroke:none"}) {
    Text(text);
    EXPECT_EQ(CurrentFrame().fill.colour, 7) << text;
    EXPECT_EQ(CurrentFrame().outline.colour, 0) << text;
    EXPECT_EQ(CurrentFrame().thicknessState, 0) << text;
    EXPECT_EQ(run.paint.FillGiven, 1u) << text;
  }
  run.paint.FillGiven = 0;
  Text("fill:rgb(1,2,3)");
  EXPECT_EQ(run.paint.FillGiven, 0u);
}

TEST_F(TextStyle, FillTakesTheFormsOfAShapeButForUrl) {
  const std::pair<const char*, std::int32_t> cases[] = {
      {"none", -1},    {"NONE", -1},   {"#0000FF", kBlue}, {"#00F;", kBlue}, {"rgb(0,0,255)", kBlue},
      {"blue", kBlue}, {"url(#g)", 0},
  };
  for (const auto& [value, colour] : cases) {
    EXPECT_EQ(Text("fill:" + std::string(value)), Records("THST 2", "WIDT 0.0005", Fill(colour))) << value;
  }
  EXPECT_EQ(Text("fill:aqua"), Records("THST 2", "WIDT 0.0005"));
}

TEST_F(TextStyle, FillOpacityGoesIntoTheFrame) {
  EXPECT_EQ(Text("stroke:none;fill-opacity:0.5"), Records("THST 1", "TSPY 127"));
  EXPECT_EQ(CurrentFrame().opacity, 127.0);
}

TEST_F(TextStyle, FontFamilyIsWrittenOverTheOldName) {
  run.text.SetFontName(u"arial");
  Text("font-family:Sym");
  EXPECT_EQ(std::u16string(run.text.FontName), u"Symal");
  Text("font-family: Times New;fill:red");
  EXPECT_EQ(std::u16string(run.text.FontName), u"Times New");
  Text("fill:red");
  EXPECT_EQ(std::u16string(run.text.FontName), u"Times New");
}

TEST_F(TextStyle, TextAnchorIsApplied) {
  Text("text-anchor:middle");
  EXPECT_EQ(run.text.TextAnchor, 2);
  Text("text-anchor: end;");
  EXPECT_EQ(run.text.TextAnchor, 3);
  Text("text-anchor:other");
  EXPECT_EQ(run.text.TextAnchor, 3);
  Text("text-anchor:start");
  EXPECT_EQ(run.text.TextAnchor, 1);
}

TEST_F(TextStyle, FontSizeIsApplied) {
  run.text.FontSize = 7.0;
  Text("fill:red");
  EXPECT_EQ(run.text.FontSize, 7.0);
  Text("fill:red;font-size:12pt;stroke:none");
  EXPECT_EQ(run.text.FontSize, 12.0);
}

// --- Font size

TEST_F(TextStyle, FontSizeWithoutAUnitOrInPixelsIsScaled) {
  run.UnitScale = 0.035277777777777776;
  const double size = 12.0 * 1000.0 / 2.54 * 0.035277777777777776 * 0.7;
  for (const char16_t* text :
       {u"font-size:12", u"font-size:12px", u"font-size:12;fill:red", u"font-size:12%", u"font-size:12PX"}) {
    run.text.FontSize = 0.0;
    ApplyFontSize(text);
    EXPECT_DOUBLE_EQ(run.text.FontSize, size) << Utf8FromWide(text);
  }
}

TEST_F(TextStyle, FontSizeInMillimetresIsNot) {
  for (const char16_t* text : {u"font-size:12mm", u"font-size:12MM"}) {
    ApplyFontSize(text);
    EXPECT_DOUBLE_EQ(run.text.FontSize, 12.0 * 1000.0 / 25.4 * 0.7);
  }
}

TEST_F(TextStyle, FontSizeInAnyOtherUnitIsTheBareNumber) {
  for (const char16_t* text : {u"font-size:12in", u"font-size:12cm", u"font-size:12pt", u"font-size:12pc"}) {
    run.text.FontSize = 0.0;
    ApplyFontSize(text);
    EXPECT_EQ(run.text.FontSize, 12.0);
  }
}

TEST_F(TextStyle, FontSizeInEmHasItsUnitEatenByTheNumber) {
  // "2em" reads as the number 2e and no unit.
  for (const char16_t* text : {u"font-size:2em", u"font-size:2ex"}) {
    ApplyFontSize(text);
    EXPECT_DOUBLE_EQ(run.text.FontSize, 2.0 * 1000.0 / 2.54 * 0.5 * 0.7);
  }
}

TEST_F(TextStyle, FontSizeWithoutANumberIsLeft) {
  run.text.FontSize = 7.0;
  ApplyFontSize({});
  ApplyFontSize(u"font-size:");
  ApplyFontSize(u"font-size:large");
  EXPECT_EQ(run.text.FontSize, 7.0);
}

TEST_F(TextStyle, FontSizeOfABlankAndNoNumberIsZero) {
  // The blank counts as consumed.
  run.text.FontSize = 7.0;
  ApplyFontSize(u"font-size: large");
  EXPECT_EQ(run.text.FontSize, 0.0);
}

// --- Digits

TEST(HexDigits, EveryOtherCharacterIsZero) {
  for (int c = 0; c < 0x10000; ++c) {
    int value = 0;
    if (c >= '1' && c <= '9') value = c - '0';
    if (c >= 'a' && c <= 'f') value = c - 'a' + 10;
    if (c >= 'A' && c <= 'F') value = c - 'A' + 10;
    ASSERT_EQ(HexDigitValue(static_cast<char16_t>(c)), value) << c;
  }
}
