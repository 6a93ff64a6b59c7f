#include "operators/colour.h"

#include <cmath>
#include <cstdio>
#include <string>

#include "platform/narrow_text.h"
#include "tests/support/filter_test.h"

namespace {

std::string Hex(std::int32_t word) {
  char text[16];
  std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(word));
  return text;
}

// One side of the frame: "cmyk 0 0 0 1 word FF000000 tint 100 name Red"; the kind only when it is not 0.
std::string Show(const PaintColour& paint) {
  std::string text = paint.isRgb ? "rgb" : "cmyk";
  for (int i = 0; i < (paint.isRgb ? 3 : 4); ++i) text += ' ' + ShowNumber(paint.isRgb ? paint.rgb[i] : paint.cmyk[i]);
  text += " word " + Hex(paint.colour) + " tint " + std::to_string(paint.tint);
  if (paint.kind) text += " kind " + std::to_string(paint.kind);
  if (paint.name[0]) text += " name " + Utf8FromWide(paint.name);
  return text;
}

// A colour object as it was made: "00332211 space 1 correction 5 rgb 17 34 51 tint 40 name Red".
std::string Show(const ColourView& colour) {
  std::string text = Hex(static_cast<std::int32_t>(colour.id)) + " space " + std::to_string(colour.space) +
                     " correction " + std::to_string(colour.correction);
  if (colour.componentCount > 0) text += colour.componentCount == 3 ? " rgb" : " cmyk";
  for (int i = 0; i < colour.componentCount; ++i) text += ' ' + ShowNumber(colour.components[i]);
  if (colour.tint) text += " tint " + ShowNumber(*colour.tint);
  if (colour.name) text += " name " + Utf8FromWide(*colour.name);
  return text;
}

const std::string kUntouched = "cmyk 0 0 0 0 word 00000000 tint 0";
const std::string kInvisible = "FFFFFFFF space 1 correction 0";

class ColourOperators : public FilterTest {
 protected:
  ColourOperators() { StartMachine(); }

  static std::string Fill() { return Show(CurrentFrame().fill); }
  static std::string Outline() { return Show(CurrentFrame().outline); }
  std::string ObjectAt(std::size_t line) const { return Show(ViewColour(PayloadOf<CQXFullColor>(line))); }
  Lines Emit() {
    EmitPaintColours();
    return Drain();
  }
};

struct ColourCase {
  const char* program;
  const char* paint;
};

}  // namespace

// --- Gray

TEST_F(ColourOperators, GrayBecomesBlackInk) {
  const struct {
    const char* program;
    double black;
  } cases[] = {
      {"0.25 g", 0.75}, {"0 g", 1.0}, {"1 g", 0.0}, {"1.5 g", 0.0}, {"-1 g", 1.0}, {"0.25 wSg", 0.75},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.program);
    PaintColour& fill = CurrentFrame().fill;
    for (double& ink : fill.cmyk) ink = 0.5;
    fill.isRgb = 1;
    fill.colour = -1;
    EXPECT_EQ(Run(c.program), Lines());
    EXPECT_EQ(fill.cmyk[0], 0.0);
    EXPECT_EQ(fill.cmyk[1], 0.0);
    EXPECT_EQ(fill.cmyk[2], 0.0);
    EXPECT_EQ(fill.cmyk[3], c.black);
    EXPECT_EQ(fill.isRgb, 0u);
    EXPECT_NE(fill.colour, -1);
    EXPECT_EQ(Outline(), kUntouched);
  }
}

TEST_F(ColourOperators, GrayOfTheOutlineLeavesTheFill) {
  CurrentFrame().outline.colour = -1;
  CurrentFrame().outline.isRgb = 1;
  Run("0.25 G");
  EXPECT_EQ(CurrentFrame().outline.cmyk[3], 0.75);
  EXPECT_EQ(CurrentFrame().outline.isRgb, 0u);
  EXPECT_NE(CurrentFrame().outline.colour, -1);
  EXPECT_EQ(Fill(), kUntouched);
}

TEST_F(ColourOperators, GrayBelowTheSmallestStepIsBlack) {
  // 1 - 2^-52 is a number of its own, so that the gray shows unless it was taken for 0.
  Run("2.220446049250313e-16 g");
  EXPECT_EQ(CurrentFrame().fill.cmyk[3], 1.0 - 2.220446049250313e-16);
  Run("2.220446049250312e-16 g");
  EXPECT_EQ(CurrentFrame().fill.cmyk[3], 1.0);
}

TEST_F(ColourOperators, GrayKeepsNameAndTint) {
  Run("0 0 0 1 (Rot) 0 X 0.5 G");
  EXPECT_EQ(CurrentFrame().outline.cmyk[3], 0.5);
  EXPECT_EQ(CurrentFrame().outline.tint, 100);
  EXPECT_EQ(std::u16string(CurrentFrame().outline.name), u"Rot");
}

TEST_F(ColourOperators, GrayNeedsItsOperandExceptInTheLongForm) {
  CurrentFrame().fill.colour = CurrentFrame().outline.colour = -1;
  Run("g G");
  EXPECT_EQ(CurrentFrame().fill.colour, -1);
  EXPECT_EQ(CurrentFrame().outline.colour, -1);
  Run("wSg");
  EXPECT_NE(CurrentFrame().fill.colour, -1);
  EXPECT_EQ(CurrentFrame().fill.cmyk[3], 1.0);
}

// --- Inks and components

// A byte of the word is floor(255 v + 0.5): 0.125 gives 20, 0.25 gives 40, 0.375 gives 60, 0.5 gives 80, 0.75 gives BF.
TEST_F(ColourOperators, SetTheFill) {
  const ColourCase cases[] = {
      {"0.25 0.5 0.75 1 k", "cmyk 0.25 0.5 0.75 1 word FFBF8040 tint 100"},
      {"0.25 0.5 0.75 1 wCM", "cmyk 0.25 0.5 0.75 1 word FFBF8040 tint 100"},
      {"-0.5 1.5 0 1 k", "cmyk 0 1 0 1 word FF00FF00 tint 100"},
      {"0.5 k", "cmyk 0 0 0 0.5 word 80000000 tint 100"},
      {"k", "cmyk 0 0 0 0 word 00000000 tint 100"},
      {"1 0.5 0.25 wSr", "rgb 255 128 64 word 004080FF tint 100"},
      {"1.5 -1 0 wSr", "rgb 255 0 0 word 000000FF tint 100"},
      {"0.5 wSr", "rgb 0 0 128 word 00800000 tint 100"},
      {"1 0.5 0.25 Xa", "rgb 255 128 64 word 004080FF tint 100"},
      // The mean of both sets, from the black ink on as far as the second is there.
      {"0.5 0.75 1 0 0 0.25 0.5 1 9 wFt", "cmyk 0.25 0.5 0.75 0.5 word 80BF8040 tint 100"},
      {"0.75 1 0 0 0.25 0.5 1 9 wFt", "cmyk 0 0.5 0.75 0.5 word 80BF8000 tint 100"},
      {"0 0 0.25 0.5 1 9 wFt", "cmyk 0 0.25 0.5 0.5 word 80804000 tint 100"},
      {"0 0.25 0.5 1 9 wFt", "cmyk 0 0.25 0.5 1 word FF804000 tint 100"},
      // Three times 1 - 0.25, and the complement of the components.
      {"1 0.5 0 (Gelb) 0.25 7 Xx", "cmyk 0 0.375 0.75 0 word 00BF6000 tint 100 name Gelb"},
      // With one operand it is the factor itself, with none that is 0.
      {"0.25 Xx", "cmyk 0.25 0.25 0.25 0 word 00404040 tint 100"},
      {"Xx", "cmyk 0 0 0 0 word 00000000 tint 100"},
  };
  for (const ColourCase& c : cases) {
    SCOPED_TRACE(c.program);
    CurrentFrame().fill = {};
    EXPECT_EQ(Run(c.program), Lines());
    EXPECT_EQ(Fill(), c.paint);
    EXPECT_EQ(Outline(), kUntouched);
    EXPECT_EQ(Operands(), Lines());
  }
}

TEST_F(ColourOperators, SetTheOutline) {
  const ColourCase cases[] = {
      {"0.25 0.5 0.75 1 K", "cmyk 0.25 0.5 0.75 1 word FFBF8040 tint 100"},
      {"1 0.5 0.25 XA", "rgb 255 128 64 word 004080FF tint 100"},
      {"1 0.5 0.25 RG", "rgb 255 128 64 word 004080FF tint 100"},
      {"0.25 0.5 0.75 1 1 0 0 XA", "cmyk 0.25 0.5 0.75 1 word FFBF8040 tint 100"},
      {"0.25 0.5 0.75 1 1 0 0 RG", "cmyk 0.25 0.5 0.75 1 word FFBF8040 tint 100"},
      // The inks times 1 - 0.75.
      {"1 0.5 0 1 (Rot) 0.75 X", "cmyk 0.25 0.125 0 0.25 word 40002040 tint 100 name Rot"},
      // Here the tint is the factor itself, and it stands on top.
      {"1 0.5 0 (Blau) 7 0.25 XX", "cmyk 0 0.125 0.25 0 word 00402000 tint 100 name Blau"},
      // On a dry stack: the factor is 1 - 0 for X and 0 for XX.
      {"X", "cmyk 0 0 0 0 word 00000000 tint 100"},
      {"XX", "cmyk 0 0 0 0 word 00000000 tint 100"},
  };
  for (const ColourCase& c : cases) {
    SCOPED_TRACE(c.program);
    CurrentFrame().outline = {};
    EXPECT_EQ(Run(c.program), Lines());
    EXPECT_EQ(Outline(), c.paint);
    EXPECT_EQ(Fill(), kUntouched);
    EXPECT_EQ(Operands(), Lines());
  }
}

TEST_F(ColourOperators, WordRoundsToTheNearestByte) {
  // 255 * 0.1 is 25.5, which goes up; 255 * 0.098 is 24.99. The component set keeps the same whole number.
  Run("0.1 0.098 0 wSr");
  EXPECT_EQ(Fill(), "rgb 26 25 0 word 0000191A tint 100");
}

TEST_F(ColourOperators, InksBelowTheSmallestStepAreZero) {
  Run("2.220446049250313e-16 2.220446049250312e-16 0 0 k");
  EXPECT_EQ(CurrentFrame().fill.cmyk[0], 2.220446049250313e-16);
  EXPECT_EQ(CurrentFrame().fill.cmyk[1], 0.0);
}

TEST_F(ColourOperators, ColourWithoutANameDropsTheNameBefore) {
  Run("1 1 1 0 (Rot) 0 X 0 0 0 1 K");
  EXPECT_EQ(Outline(), "cmyk 0 0 0 1 word FF000000 tint 100");
}

TEST_F(ColourOperators, SettingAColourMakesItsKindPlain) {
  CurrentFrame().fill.kind = CurrentFrame().outline.kind = 1;
  Run("0 0 0 0 k 0 0 0 XA");
  EXPECT_EQ(CurrentFrame().fill.kind, 0);
  EXPECT_EQ(CurrentFrame().outline.kind, 0);
}

TEST_F(ColourOperators, FrameColoursCutTheTint) {
  SetFrameRgb(0, 0, 0, Side::Fill, {}, 49.9);
  SetFrameCmyk(0, 0, 0, 0, Side::Outline, {}, 1e10);
  EXPECT_EQ(CurrentFrame().fill.tint, 49);
  EXPECT_EQ(CurrentFrame().outline.tint, INT32_MIN);
}

TEST_F(ColourOperators, EndlessInksAreHarmless) {
  // Infinity is full ink, and infinity times 0 is no number, of which the byte is 0.
  Run("1e999 0 0 -1e999 k");
  EXPECT_EQ(Fill(), "cmyk 1 0 0 0 word 000000FF tint 100");
  Run("1e999 0 0 0 (Rot) 1 X");
  EXPECT_TRUE(std::isnan(CurrentFrame().outline.cmyk[0]));
  EXPECT_EQ(CurrentFrame().outline.colour, 0);
}

TEST_F(ColourOperators, ThreeOperandFormTakesInksAsTheEighthToken) {
  // Seven operands and the operator.
  Run("0.25 0.5 0.75 1 1 0 0 Xa");
  EXPECT_EQ(Fill(), "cmyk 0.25 0.5 0.75 1 word FFBF8040 tint 100");
  EXPECT_EQ(Operands(), Lines());
  // Six and eight operands leave what stands below the triple.
  Run("0.5 0.75 1 1 0 0 Xa");
  EXPECT_EQ(Fill(), "rgb 255 0 0 word 000000FF tint 100");
  EXPECT_EQ(Operands().size(), 3u);
  Run("9 0.25 0.5 0.75 1 0 1 0 Xa");
  EXPECT_EQ(Fill(), "rgb 0 255 0 word 0000FF00 tint 100");
  EXPECT_EQ(Operands().size(), 3u + 5u);
}

TEST_F(ColourOperators, ThreeOperandFormCountsTheTokensOfItsTextAlone) {
  FeedPushOnly("0.25 0.5 0.75 1 1 0 0");
  Run(" Xa");
  EXPECT_EQ(Fill(), "rgb 255 0 0 word 000000FF tint 100");
  EXPECT_EQ(Operands().size(), 4u);
}

TEST_F(ColourOperators, SecondThreeOperandFormOfATextIsItsEighthToken) {
  // It finds no inks on the stack.
  Run("1 0 0 Xa 0 1 0 Xa");
  EXPECT_EQ(Fill(), "cmyk 0 0 0 0 word 00000000 tint 100");
}

TEST_F(ColourOperators, AverageFillTakesNoMoreThanTwoSets) {
  Run("7 0 0 0 0 0 0 0 0 9 wFt");
  EXPECT_EQ(Operands(), Lines{"Number 7"});
}

// --- Names

TEST_F(ColourOperators, NameIsCutAtFiftyUnits) {
  const std::string fifty(50, 'n');
  Run("0 0 0 0 (" + fifty.substr(1) + ") 0 X");
  EXPECT_EQ(WideFromNarrow(fifty.substr(1)), CurrentFrame().outline.name);
  Run("0 0 0 0 (" + fifty + ") 0 X");
  EXPECT_EQ(WideFromNarrow(fifty), CurrentFrame().outline.name);
  Run("0 0 0 0 (" + fifty + "n) 0 X");
  EXPECT_EQ(WideFromNarrow(fifty), CurrentFrame().outline.name);
}

TEST_F(ColourOperators, NameMayBeALiteralWhereTheKindDoesNotCount) {
  Run("1 1 1 1 /Rot 0 X");
  EXPECT_EQ(std::u16string(CurrentFrame().outline.name), u"Rot");
  Run("1 1 1 /Blau 7 1 XX");
  EXPECT_EQ(std::u16string(CurrentFrame().outline.name), u"Blau");
  Run("1 1 1 /Gelb 1 7 Xx");
  EXPECT_EQ(std::u16string(CurrentFrame().fill.name), u"Gelb");
}

TEST_F(ColourOperators, NameThatIsNoTextIsEmpty) {
  for (const char* program : {"1 1 1 1 5 0 X", "1 1 1 1 [1 2] 0 X"}) {
    SCOPED_TRACE(program);
    Run(program);
    EXPECT_EQ(Outline(), "cmyk 1 1 1 1 word FFFFFFFF tint 100");
  }
}

// --- x and @x

TEST_F(ColourOperators, NamedFillGoesOutAtOnce) {
  // The inks times 1 - 0.5.
  EXPECT_EQ(Run("1 1 1 0.5 (Rot) 0.5 x"), (Lines{"NFIL cmyk 0.5 0.5 0.5 0.25 name Rot correction 5", "NOTL none"}));
  EXPECT_EQ(Fill(), "cmyk 0.5 0.5 0.5 0.25 word 40808080 tint 100 name Rot");
  EXPECT_EQ(run.path.fillSelector, 1);
}

TEST_F(ColourOperators, NamedFillTakesOnlyNumbersForInksAndOnlyAStringForTheName) {
  // What is no number counts as full ink.
  Run("(a) 0.5 /b [1] /Rot 0.5 x");
  EXPECT_EQ(Fill(), "cmyk 0.5 0.25 0.5 0.5 word 80804080 tint 100");
  EXPECT_EQ(Operands(), Lines());
}

TEST_F(ColourOperators, NamedFillOfFiveOperandsPopsNoneAndStillSendsColours) {
  EXPECT_EQ(Run("1 1 1 (Rot) 0.5 x"), (Lines{"NFIL cmyk 0 0 0 0", "NOTL none"}));
  EXPECT_EQ(Operands(), (Lines{"Number 0.5", "String Rot", "Number 1", "Number 1", "Number 1"}));
  EXPECT_EQ(Fill(), kUntouched);
  EXPECT_EQ(run.path.fillSelector, 1);
}

TEST_F(ColourOperators, NamedFillLeavesASeventhOperand) {
  Run("7 1 1 1 1 (Rot) 0 x");
  EXPECT_EQ(Operands(), Lines{"Number 7"});
}

TEST_F(ColourOperators, MeanNamedFill) {
  const ColourCase cases[] = {
      // Factor ((1 - 0) + (1 - 0.5)) / 2 = 0.75, inks 0.5, the name of the lower set.
      {"0 0 0 0 (Alt) 0 1 1 1 0 (Neu) 0.5 1 2 3 4 5 @x", "cmyk 0.375 0.375 0.375 0 word 00606060 tint 100 name Alt"},
      // One set alone.
      {"1 1 1 0 (Neu) 0.5 1 2 3 4 5 @x", "cmyk 0.5 0.5 0.5 0 word 00808080 tint 100 name Neu"},
      // Of the lower set only the tint: factor (1 + 0.5) / 2.
      {"0 1 1 1 0 (Neu) 0.5 1 2 3 4 5 @x", "cmyk 0.75 0.75 0.75 0 word 00BFBFBF tint 100 name Neu"},
      // Tint, name and black: factor (0 + 0.5) / 2 = 0.25, black (0 + 1) / 2 = 0.5.
      {"1 (Alt) 1 1 1 1 0 (Neu) 0.5 1 2 3 4 5 @x", "cmyk 0.25 0.25 0.25 0.125 word 20404040 tint 100 name Alt"},
      // Operands of another kind are taken off and change nothing.
      {"/a 5 (t) 1 1 1 0 (Neu) 0.5 1 2 3 4 5 @x", "cmyk 0.5 0.5 0.5 0 word 00808080 tint 100 name Neu"},
      // In the upper set likewise, where they count as full ink and no name.
      {"1 1 1 /k /Neu 0.5 1 2 3 4 5 @x", "cmyk 0.5 0.5 0.5 0.5 word 80808080 tint 100"},
  };
  for (const ColourCase& c : cases) {
    SCOPED_TRACE(c.program);
    EXPECT_EQ(Run(c.program), Lines());
    EXPECT_EQ(Fill(), c.paint);
    EXPECT_EQ(Operands(), Lines());
  }
}

TEST_F(ColourOperators, MeanNamedFillDropsFiveEvenWhenTheRestIsTooShort) {
  EXPECT_EQ(Run("1 1 1 0 (Neu) 1 2 3 4 5 @x"), Lines());
  EXPECT_EQ(Operands(), (Lines{"String Neu", "Number 0", "Number 1", "Number 1", "Number 1"}));
  EXPECT_EQ(Fill(), kUntouched);
}

TEST_F(ColourOperators, MeanNamedFillTakesNoMoreThanTwoSets) {
  Run("7 0 0 0 0 (Alt) 0 1 1 1 0 (Neu) 0 1 2 3 4 5 @x");
  EXPECT_EQ(Operands(), Lines{"Number 7"});
}

// --- Colour table, selector, overprint

TEST_F(ColourOperators, ColourTableAlwaysAnswersWithAnError) {
  for (const char* program : {"9 /0 get_csd", "9 /-1 get_csd", "9 /12 get_csd", "9 /abc get_csd"}) {
    SCOPED_TRACE(program);
    ResetHost();
    ClearOperands();
    EXPECT_EQ(Run(program), Lines());
    ASSERT_EQ(ShownMessages().size(), 1u);
    EXPECT_EQ(ShownMessages()[0].text, u"CSD error");
    EXPECT_EQ(ShownMessages()[0].caption, u"error");
    EXPECT_EQ(ShownMessages()[0].flags, 0u);
    EXPECT_EQ(Operands(), Lines{"Number 9"});
  }
}

TEST_F(ColourOperators, ColourTableIsSilentWithoutALiteralName) {
  for (const char* program : {"get_csd", "9 0 get_csd", "9 (0) get_csd", "9 [0] get_csd"}) {
    SCOPED_TRACE(program);
    ClearOperands();
    EXPECT_EQ(Run(program), Lines());
    EXPECT_EQ(ShownMessages().size(), 0u);
    EXPECT_LE(Operands().size(), 1u);
  }
}

TEST_F(ColourOperators, SelectorIsSetWithoutARecord) {
  run.path.fillSelector = -1;
  EXPECT_EQ(Run("9 @g"), Lines());
  EXPECT_EQ(run.path.fillSelector, 1);
  EXPECT_EQ(Operands(), Lines{"Number 9"});
}

TEST_F(ColourOperators, OverprintOfFillAndOutline) {
  run.OverprintEnabled = 1;
  const struct {
    const char* program;
    Lines lines;
  } cases[] = {
      {"1 O", {"LYOT 1"}},  {"1 R", {"LIOT 1"}}, {"0 O", {"LYOT 0"}}, {"0 R", {"LIOT 0"}},   {"2 O", {"LYOT 0"}},
      {"-1 R", {"LIOT 0"}}, {"O", {"LYOT 0"}},   {"R", {"LIOT 0"}},   {"1.9 O", {"LYOT 1"}}, {"0.9 R", {"LIOT 0"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.program);
    ASSERT_EQ(Run(c.program), c.lines);
    EXPECT_FALSE(ViewOverPrint(PayloadOf<CQXOverPrint>(0)).flag);
    EXPECT_EQ(Operands(), Lines());
  }
}

TEST_F(ColourOperators, OverprintThatIsOffEatsItsOperand) {
  for (std::int32_t setting : {0, 2, -1}) {
    SCOPED_TRACE(setting);
    run.OverprintEnabled = setting;
    EXPECT_EQ(Run("9 1 O 1 R"), Lines());
    EXPECT_EQ(Operands(), Lines{"Number 9"});
    ClearOperands();
  }
}

// --- The colour objects

class EmitColours : public ColourOperators {
 protected:
  EmitColours() {
    GraphicsState& frame = CurrentFrame();
    frame.fill = {{}, 0, 0x00332211, 40, {0.1, 0.2, 0.3, 0.4}, {17, 34, 51}, 0};
    frame.outline = {{}, 0, 0x00665544, 60, {0.5, 0.6, 0.7, 0.8}, {68, 85, 102}, 0};
    run.path.fillSelector = 1;
    run.path.strokeSelected = 1;
  }
};

TEST_F(EmitColours, FillObjectByKindAndForm) {
  const struct {
    std::uint8_t kind;
    std::uint32_t isRgb;
    const char* object;
  } cases[] = {
      {0, 1, "00332211 space 1 correction 0 rgb 17 34 51"},
      {0, 0, "00332211 space 3 correction 0 cmyk 0.1 0.2 0.3 0.4"},
      {1, 1, "00332211 space 1 correction 5 rgb 17 34 51 tint 40"},
      {1, 0, "00332211 space 3 correction 5 cmyk 0.1 0.2 0.3 0.4 tint 40"},
      {2, 1, "00332211 space 3 correction 0 cmyk 0.1 0.2 0.3 0.4"},
      {2, 0, "00332211 space 3 correction 0 cmyk 0.1 0.2 0.3 0.4"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "kind " << int{c.kind} << " isRgb " << c.isRgb);
    CurrentFrame().fill.kind = c.kind;
    CurrentFrame().fill.isRgb = c.isRgb;
    ASSERT_EQ(Emit().size(), 2u);
    EXPECT_EQ(commands[0].key, KEY_NFIL);
    EXPECT_EQ(commands[0].size, 0u);
    EXPECT_EQ(ObjectAt(0), c.object);
    EXPECT_EQ(ViewColour(PayloadOf<CQXFullColor>(0)).reflectivity, 0);
  }
}

TEST_F(EmitColours, OutlineObjectByKindAndForm) {
  const std::string fill = "00332211 space 3 correction 0 cmyk 0.1 0.2 0.3 0.4";
  const struct {
    std::uint8_t kind;
    std::uint32_t isRgb;
    std::string outline, fill;
  } cases[] = {
      {0, 1, "00665544 space 1 correction 0 rgb 68 85 102", fill},
      {0, 0, "00665544 space 3 correction 0 cmyk 0.5 0.6 0.7 0.8", fill},
      // The components go to the fill object, which has been sent already.
      {1, 1, "00665544 space 1 correction 5 tint 60", "00332211 space 1 correction 0 rgb 68 85 102"},
      {1, 0, "00665544 space 3 correction 5 cmyk 0.5 0.6 0.7 0.8 tint 60", fill},
      {2, 1, "00665544 space 3 correction 0", fill},
      {2, 0, "00665544 space 3 correction 0", fill},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "kind " << int{c.kind} << " isRgb " << c.isRgb);
    CurrentFrame().outline.kind = c.kind;
    CurrentFrame().outline.isRgb = c.isRgb;
    ASSERT_EQ(Emit().size(), 2u);
    EXPECT_EQ(commands[1].key, KEY_NOTL);
    EXPECT_EQ(commands[1].size, 0u);
    EXPECT_EQ(ObjectAt(1), c.outline);
    EXPECT_EQ(ObjectAt(0), c.fill);
    EXPECT_EQ(ViewColour(PayloadOf<CQXFullColor>(1)).reflectivity, 0);
  }
}

TEST_F(EmitColours, NamedRgbOutlineWithoutAFillObjectKeepsItsTintOnly) {
  CurrentFrame().outline.kind = 1;
  CurrentFrame().outline.isRgb = 1;
  run.paint.GradientFillPending = 1;
  ASSERT_EQ(Emit().size(), 1u);
  EXPECT_EQ(ObjectAt(0), "00665544 space 1 correction 5 tint 60");
}

TEST_F(EmitColours, SelectorChoosesTheFill) {
  const struct {
    std::int32_t selector;
    std::uint32_t id;
  } words[] = {{1, 0x00332211}, {-1, 0x00665544}};
  for (const auto& c : words) {
    SCOPED_TRACE(c.selector);
    run.path.fillSelector = c.selector;
    ASSERT_EQ(Emit().size(), 2u);
    EXPECT_EQ(ViewColour(PayloadOf<CQXFullColor>(0)).id, c.id);
  }
  for (std::int32_t other : {0, 2, -2}) {
    SCOPED_TRACE(other);
    run.path.fillSelector = other;
    ASSERT_EQ(Emit().size(), 2u);
    EXPECT_EQ(ObjectAt(0), kInvisible);
  }
}

TEST_F(EmitColours, FillWordOfNoneGivesTheInvisibleFill) {
  CurrentFrame().fill.colour = -1;
  CurrentFrame().fill.isRgb = 1;
  for (int kind : {0, 1, 2}) {
    SCOPED_TRACE(kind);
    CurrentFrame().fill.kind = static_cast<std::uint8_t>(kind);
    ASSERT_EQ(Emit().size(), 2u);
    EXPECT_EQ(ObjectAt(0), kInvisible);
  }
}

TEST_F(EmitColours, OutlineWordOfNoneTakenForTheFillGivesTheInvisibleFill) {
  CurrentFrame().outline.colour = -1;
  run.path.fillSelector = -1;
  ASSERT_EQ(Emit().size(), 2u);
  EXPECT_EQ(ObjectAt(0), kInvisible);
  EXPECT_EQ(ObjectAt(1), kInvisible);
}

TEST_F(EmitColours, OutlineIsInvisibleUnlessItIsSelectedAndThere) {
  run.path.strokeSelected = 0;
  ASSERT_EQ(Emit().size(), 2u);
  EXPECT_EQ(ObjectAt(1), kInvisible);
  run.path.strokeSelected = 1;
  CurrentFrame().outline.colour = -1;
  ASSERT_EQ(Emit().size(), 2u);
  EXPECT_EQ(ObjectAt(1), kInvisible);
}

TEST_F(EmitColours, NamesCorrectTheirObjects) {
  std::u16string(u"Rot").copy(CurrentFrame().fill.name, 3);
  std::u16string(u"Blau").copy(CurrentFrame().outline.name, 4);
  ASSERT_EQ(Emit().size(), 2u);
  EXPECT_EQ(ObjectAt(0), "00332211 space 3 correction 5 cmyk 0.1 0.2 0.3 0.4 name Rot");
  EXPECT_EQ(ObjectAt(1), "00665544 space 3 correction 5 cmyk 0.5 0.6 0.7 0.8 name Blau");
}

TEST_F(EmitColours, InvisibleObjectsGetNoName) {
  std::u16string(u"Rot").copy(CurrentFrame().fill.name, 3);
  std::u16string(u"Blau").copy(CurrentFrame().outline.name, 4);
  run.path.fillSelector = 0;
  run.path.strokeSelected = 0;
  ASSERT_EQ(Emit().size(), 2u);
  EXPECT_EQ(ObjectAt(0), kInvisible);
  EXPECT_EQ(ObjectAt(1), kInvisible);
}

TEST_F(EmitColours, GradientFillTakesThePlaceOfOneFillObject) {
  run.paint.GradientFillPending = 1;
  ASSERT_EQ(Emit().size(), 1u);
  EXPECT_EQ(commands[0].key, KEY_NOTL);
  EXPECT_EQ(run.paint.GradientFillPending, 0);
  ASSERT_EQ(Emit().size(), 2u);
  EXPECT_EQ(commands[0].key, KEY_NFIL);
}

TEST_F(EmitColours, SelectorsAreLeftAsTheyAre) {
  Emit();
  EXPECT_EQ(run.path.fillSelector, 1);
  EXPECT_EQ(run.path.strokeSelected, 1u);
}

TEST_F(ColourOperators, FillOfAFrameWithoutFillIsInvisible) {
  CurrentFrame().fill.colour = -1;
  EXPECT_EQ(Run("0 0 M 10 0 L f"),
            (Lines{"PATH", "LINE 0,100 10,100", "LINE 10,100 0,100", "NFIL none", "NOTL none", "ENDP", "FDEF flat 1"}));
  EXPECT_EQ(ObjectAt(3), kInvisible);
}

TEST_F(ColourOperators, FourFullInksPackToTheWordForNone) {
  // Four bytes of FF are -1, so that the darkest colour paints nothing.
  Run("1 1 1 1 k @g");
  EXPECT_EQ(Fill(), "cmyk 1 1 1 1 word FFFFFFFF tint 100");
  ASSERT_EQ(Emit().size(), 2u);
  EXPECT_EQ(ObjectAt(0), kInvisible);
}
