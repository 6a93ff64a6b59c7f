// Uniform opacity: from the styles into the frame and the stream, and what a pop of the frame sends.
#include "paint/transparency.h"

#include "operators/graphics_state.h"
#include "tests/support/filter_test.h"
#include "tests/support/host_journal.h"
#include "tests/support/stop_block.h"
#include "translators/style.h"

namespace {

class Transparency : public FilterTest {
 protected:
  Transparency() { StartMachine(); }

  // The TSPY records that a shape's style sends, without the replay in front of them.
  Lines ShapeStyle(std::u16string_view text) {
    ApplyShapeStyle(text);
    return Only(Drain(), "TSPY");
  }

  // What a pop sends from a frame of one opacity to a frame of another.
  Lines Pop(double from, double to) {
    CurrentFrame().opacity = to;
    PushGraphicsState();
    CurrentFrame().opacity = from;
    PopGraphicsState();
    return Drain();
  }
};

class DocumentTransparency : public FilterTest {};

// A linear gradient whose second stop is half transparent.
constexpr char kFadingGradient[] =
    "<defs><linearGradient id=\"stops\"><stop offset=\"0\" style=\"stop-color:#ff0000\"/>"
    "<stop offset=\"1\" style=\"stop-color:#0000ff;stop-opacity:0.5\"/></linearGradient>"
    "<linearGradient id=\"fade\" xlink:href=\"#stops\" x2=\"10\"/></defs>";

constexpr char kSolidGradient[] =
    "<defs><linearGradient id=\"stops\"><stop offset=\"0\" style=\"stop-color:#ff0000\"/>"
    "<stop offset=\"1\" style=\"stop-color:#0000ff;stop-opacity:1\"/></linearGradient>"
    "<linearGradient id=\"fade\" xlink:href=\"#stops\" x2=\"10\"/></defs>";

}  // namespace

// --- The value

TEST_F(Transparency, AValueIsClampedAndCutToAByte) {
  struct Case {
    std::u16string_view value;
    int byte;
  };
  const Case cases[] = {
      {u"0.5", 127},          // 127.5
      {u"1", 255},            //
      {u"0", 0},              //
      {u"2", 255},            //
      {u"-1", 0},             //
      {u"50%", 255},          // the percent sign ends a 50
      {u"0.999", 254},        // 254.745
      {u"0.00392", 0},        // 0.9996
      {u"0.004", 1},          // 1.02
      {u".25;fill:red", 63},  // 63.75
      {u"  0.5", 127},        //
      {u"5e-1", 127},         //
      {u"none", 0},           // no number reads as 0
      {u"", 0},               //
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(c.value)));
    ApplyUniformOpacity(c.value);
    EXPECT_EQ(Drain(), Lines{"TSPY " + std::to_string(c.byte)});
    EXPECT_EQ(CurrentFrame().opacity, c.byte);
  }
}

TEST_F(Transparency, TheRecordIsAnObjectOfTypeOne) {
  PushUniformTransparency(200);
  Drain();
  const auto* transparency = static_cast<const CQXTransparency*>(commands.at(0).data);
  EXPECT_EQ(commands[0].size, 0u);
  EXPECT_EQ(transparency->Type(), 1);
  EXPECT_EQ(ViewTransparency(*transparency).opacity, 200);
}

TEST_F(Transparency, AFrameWithPartlyTransparentStopsTakesNoOpacity) {
  GiveStops({{0, 0.0, 0.5}});
  EXPECT_EQ(ShapeStyle(u"opacity:0.5;fill-opacity:0.5"), Lines{});
  EXPECT_EQ(CurrentFrame().opacity, 1.0);
}

// --- The properties in a style

TEST_F(Transparency, OpacityAndFillOpacityInAShapeStyle) {
  struct Case {
    std::u16string_view style;
    Lines records;
  };
  const Case cases[] = {
      {u"opacity:0.5", {"TSPY 127"}},
      {u"fill:none;opacity: 0.25", {"TSPY 63"}},
      {u"fill-opacity:0.25", {"TSPY 63"}},
      // Two properties give two records; they are not multiplied, and the order of the text does not count.
      {u"opacity:0.5;fill-opacity:0.25", {"TSPY 127", "TSPY 63"}},
      {u"fill-opacity:0.25;opacity:0.5", {"TSPY 127", "TSPY 63"}},
      {u"stroke-opacity:0.2", {}},
      {u"stroke-opacity:0.2;opacity:0.5", {"TSPY 127"}},
      // The second occurrence of the letters has a "-" in front as well, and there is no third try.
      {u"stroke-opacity:0.2;fill-opacity:0.5", {"TSPY 127"}},
      {u"stroke-opacity:0.2;fill-opacity:0.25;opacity:0.5", {"TSPY 63"}},
      {u"stop-opacity:0.2", {}},
      {u"Opacity:0.5", {}},
      {u"opacity :0.5", {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(c.style)));
    EXPECT_EQ(ShapeStyle(c.style), c.records);
  }
}

TEST_F(Transparency, TheLaterOfTwoPropertiesStandsInTheFrame) {
  ShapeStyle(u"fill-opacity:0.25;opacity:0.5");
  EXPECT_EQ(CurrentFrame().opacity, 63.0);
}

TEST_F(Transparency, AGroupStyleTakesBothBeforeItsFill) {
  ApplyGroupStyle(u"fill:#0000ff;fill-opacity:0.25;opacity:0.5");
  const Lines lines = Drain();
  EXPECT_LT(FindLine(lines, "TSPY 127"), FindLine(lines, "TSPY 63"));
  EXPECT_LT(FindLine(lines, "TSPY 63"), FindLine(lines, "FILL 16711680"));
  EXPECT_LT(FindLine(lines, "FILL 16711680"), lines.size());
}

TEST_F(Transparency, ATextStyleTakesFillOpacityAlone) {
  ApplyTextStyle(u"opacity:0.5", false);
  EXPECT_EQ(Only(Drain(), "TSPY"), Lines{});
  ApplyTextStyle(u"opacity:0.5;fill-opacity:0.25", false);
  EXPECT_EQ(Only(Drain(), "TSPY"), Lines{"TSPY 63"});
}

// --- The pop of a frame

TEST_F(Transparency, APopSendsTheFramesOpacityTimes255CutToAByte) {
  EXPECT_EQ(Pop(128.0, 1.0), Lines{"TSPY 255"});
  EXPECT_EQ(Pop(1.0, 100.0), Lines{"TSPY 156"});    // 25500 = 99 * 256 + 156
  EXPECT_EQ(Pop(1.0, 128.0), Lines{"TSPY 128"});    // 32640 = 127 * 256 + 128
  EXPECT_EQ(Pop(255.0, 127.0), Lines{"TSPY 129"});  // 32385 = 126 * 256 + 129
  EXPECT_EQ(Pop(127.0, 255.0), Lines{"TSPY 1"});    // 65025 = 254 * 256 + 1
  EXPECT_EQ(Pop(127.0, 2.0), Lines{"TSPY 254"});    // 510 = 256 + 254
  EXPECT_EQ(Pop(127.0, 0.0), Lines{"TSPY 0"});
}

TEST_F(Transparency, APopBetweenEqualOpacitiesIsSilent) { EXPECT_EQ(Pop(128.0, 128.0), Lines{}); }

TEST_F(Transparency, TheOneOfTheFirstFrameAndAByteOfOneAreTheSameNumber) {
  PushGraphicsState();
  ApplyUniformOpacity(u"0.004");
  EXPECT_EQ(Drain(), Lines{"TSPY 1"});
  PopGraphicsState();
  EXPECT_EQ(Drain(), Lines{});
}

TEST_F(Transparency, APopSendsTheOpacityBeforeTheFillColour) {
  CurrentFrame().fill.colour = 0x112233;
  PushGraphicsState();
  CurrentFrame().opacity = 50.0;
  CurrentFrame().fill.colour = -1;
  PopGraphicsState();
  EXPECT_EQ(Drain(), (Lines{"TSPY 255", "FILL " + std::to_string(0x112233)}));
}

TEST_F(Transparency, APopSendsAFillOfNone) {
  CurrentFrame().fill.colour = -1;
  PushGraphicsState();
  CurrentFrame().fill.colour = 0;
  PopGraphicsState();
  EXPECT_EQ(Drain(), Lines{"FILL -1"});
}

TEST_F(Transparency, APopGivesTheStopsBackAndZeroesTheFrame) {
  const std::size_t blocks = LiveCounts().blocks;
  PushGraphicsState();
  GiveStops({{0x123456, 0.5, 0.5}});
  EXPECT_EQ(LiveCounts().blocks, blocks + 1);
  PopGraphicsState();
  EXPECT_EQ(LiveCounts().blocks, blocks);
  const GraphicsState& popped = run.graphics.Frame(1);
  EXPECT_EQ(popped.stops, nullptr);
  EXPECT_EQ(popped.stopCount, 0);
  EXPECT_EQ(popped.stopsPartlyTransparent, 0u);
  EXPECT_EQ(popped.opacity, 0.0);
  EXPECT_EQ(popped.currentMatrix.a, 0.0);
}

TEST_F(Transparency, FramesThatAreCopiesShareTheirStopsAndTheLastGivesThemBack) {
  const std::size_t blocks = LiveCounts().blocks;
  PushGraphicsState();
  GiveStops({{0x123456, 0.5, 1.0}, {0x654321, 1.0, 1.0}});
  PushGraphicsState();
  PushGraphicsState();
  EXPECT_EQ(LiveCounts().blocks, blocks + 1);
  PopGraphicsState();
  PopGraphicsState();
  EXPECT_EQ(LiveCounts().blocks, blocks + 1);
  EXPECT_EQ(Run("0 0 0 0 5 1 @k").at(1), "FDEF radial 1193046@50 6636321@100");
  const std::size_t queued = LiveCounts().blocks;
  PopGraphicsState();
  EXPECT_EQ(LiveCounts().blocks, queued - 1);
}

TEST_F(Transparency, AFrameThatGetsOtherStopsLeavesThoseOfTheFrameBelow) {
  PushGraphicsState();
  GiveStops({{1, 0.5, 1.0}});
  PushGraphicsState();
  GiveStops({{2, 0.25, 1.0}});
  EXPECT_EQ(Run("0 0 0 0 5 1 @k").at(1), "FDEF radial 2@25");
  PopGraphicsState();
  EXPECT_EQ(Run("0 0 0 0 5 1 @k").at(1), "FDEF radial 1@50");
  PopGraphicsState();
}

TEST_F(Transparency, TheFlagOfTransparentStopsIsCopiedAndDiesWithTheFrame) {
  PushGraphicsState();
  GiveStops({{0, 0.0, 0.5}});
  PushGraphicsState();
  EXPECT_EQ(ShapeStyle(u"opacity:0.5"), Lines{});
  PopGraphicsState();
  PopGraphicsState();
  Drain();
  EXPECT_EQ(ShapeStyle(u"opacity:0.5"), Lines{"TSPY 127"});
}

TEST_F(Transparency, StopsThatAreStillInUseAtTheEndOfARunAreGivenBack) {
  const std::size_t blocks = LiveCounts().blocks;
  PushGraphicsState();
  GiveStops({{0, 0.0, 1.0}});
  PushGraphicsState();
  ResetImportRun();
  EXPECT_LE(LiveCounts().blocks, blocks);
}

// --- Whole documents

TEST_F(DocumentTransparency, AnElementsOpacityEndsWithTheElement) {
  EXPECT_EQ(Only(ImportBody("<path style=\"opacity:0.5\" d=\"M0 0 L1 1\"/>"), "TSPY"), (Lines{"TSPY 127", "TSPY 255"}));
}

TEST_F(DocumentTransparency, AChildThatRepeatsTheOpacityOfItsGroupIsNotRestored) {
  EXPECT_EQ(Only(ImportBody("<g opacity=\"0.5\"><path style=\"opacity:0.5\" d=\"M0 0 L1 1\"/></g>"), "TSPY"),
            (Lines{"TSPY 127", "TSPY 127", "TSPY 255"}));
}

TEST_F(DocumentTransparency, AChildThatLeavesItsGroupsOpacityRestoresAnotherByte) {
  EXPECT_EQ(Only(ImportBody("<g opacity=\"0.5\"><path style=\"opacity:1\" d=\"M0 0 L1 1\"/></g>"), "TSPY"),
            (Lines{"TSPY 127", "TSPY 255", "TSPY 129", "TSPY 255"}));
}

TEST_F(DocumentTransparency, AGradientWithATransparentStopTakesTheOpacityAway) {
  EXPECT_EQ(Only(ImportBody(std::string(kFadingGradient) +
                            "<rect style=\"fill:url(#fade);fill-opacity:0.5;opacity:0.5\" width=\"1\" "
                            "height=\"1\"/>"),
                 "TSPY"),
            Lines{"TSPY linear 0:100 99:50"});
}

TEST_F(DocumentTransparency, AnOpaqueGradientLeavesTheOpacityInForce) {
  EXPECT_EQ(Only(ImportBody(std::string(kSolidGradient) +
                            "<rect style=\"fill:url(#fade);fill-opacity:0.5\" width=\"1\" height=\"1\"/>"),
                 "TSPY"),
            (Lines{"TSPY linear 0:100 99:100", "TSPY 127", "TSPY 255"}));
}

TEST_F(DocumentTransparency, TheTransparencyOfAGradientIsNotUndoneByThePop) {
  const Lines lines = ImportBody(std::string(kFadingGradient) +
                                 "<rect style=\"fill:url(#fade)\" width=\"1\" height=\"1\"/>"
                                 "<rect style=\"fill:#00ff00\" width=\"1\" height=\"1\"/>");
  EXPECT_EQ(Only(lines, "TSPY"), Lines{"TSPY linear 0:100 99:50"});
}

TEST_F(DocumentTransparency, TheOpacityOfTheNextShapeIsItsOwn) {
  EXPECT_EQ(Only(ImportBody(std::string(kFadingGradient) +
                            "<rect style=\"fill:url(#fade);opacity:0.5\" width=\"1\" height=\"1\"/>"
                            "<rect style=\"opacity:0.5\" width=\"1\" height=\"1\"/>"),
                 "TSPY"),
            (Lines{"TSPY linear 0:100 99:50", "TSPY 127", "TSPY 255"}));
}
