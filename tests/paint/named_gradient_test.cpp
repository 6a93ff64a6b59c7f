#include "paint/named_gradient.h"

#include <cmath>

#include "host/colour.h"
#include "host/fills.h"
#include "platform/narrow_text.h"
#include "tests/support/filter_test.h"
#include "tests/support/host_journal.h"

namespace {

// "a b c d e f"
std::string Show(const TM& m) {
  std::string text;
  for (double value : {m.a, m.b, m.c, m.d, m.e, m.f}) text += (text.empty() ? "" : " ") + ShowNumber(value);
  return text;
}

NamedStop Inks(std::uint32_t c, std::uint32_t m, std::uint32_t y, std::uint32_t k) { return {c, m, y, k, 0, {}}; }

// A stop whose red, green and blue are all `v`: v * 0x010101 in a list.
NamedStop Gray(std::uint32_t v) { return Inks(0, 0, 0, 255 - v); }
constexpr unsigned kGrayStep = 0x010101;

enum { kLinear = 0, kRadial = 1 };

// One user unit is half a host unit.
class NamedGradients : public FilterTest {
 protected:
  NamedGradients() { StartMachine(100.0, 0.5); }

  static NamedGradient& Add(std::u16string name, int type, std::vector<NamedStop> stops,
                            std::vector<double> positions) {
    run.namedGradients.push_back({std::move(name), type, 0, std::move(stops), std::move(positions)});
    return run.namedGradients.back();
  }
  static void AddLinear() { Add(u"g", kLinear, {Gray(1), Gray(2)}, {0, 100}); }
  static void AddRadial() { Add(u"r", kRadial, {Gray(1), Gray(2)}, {0, 100}); }

  // Uses the gradient at anchor (5, 10) with length 20, in host units, under an identity matrix.
  Lines Use(std::string_view name, double angle = 90.0) {
    return Run("0 (" + std::string(name) + ") 10 20 " + ShowNumber(angle) + " 40 1 0 0 1 7 9 Bg");
  }
  const FillDefinition& Fill() const { return PayloadOf<FillDefinition>(1); }
  TM Forward() const { return Fill().forwardMatrix; }
  TM Inverse() const { return Fill().inverseMatrix; }
  double Angle() const { return Fill().gradient.angle; }
  double Scale() const { return Fill().fillScale; }
};

const Lines kTwoColourLinear = {"FILL 0", "FDEF linear two colours"};
const Lines kTwoColourRadial = {"FILL 0", "FDEF radial two colours"};

void ExpectMatrix(const TM& m, const TM& expected, double tolerance) {
  EXPECT_NEAR(m.a, expected.a, tolerance);
  EXPECT_NEAR(m.b, expected.b, tolerance);
  EXPECT_NEAR(m.c, expected.c, tolerance);
  EXPECT_NEAR(m.d, expected.d, tolerance);
  EXPECT_NEAR(m.e, expected.e, tolerance);
  EXPECT_NEAR(m.f, expected.f, tolerance);
}

}  // namespace

// --- Finding the gradient

TEST_F(NamedGradients, UnknownNameDrawsNothingAndClearsTheOperands) {
  run.paint.GradientFillPending = 1;
  EXPECT_EQ(Run("8 0 (x) 10 20 90 40 1 0 0 1 7 9 Bg"), Lines());
  EXPECT_EQ(Operands(), Lines());
  EXPECT_EQ(run.paint.GradientFillPending, 1);
}

TEST_F(NamedGradients, NamesAreComparedExactly) {
  AddLinear();
  EXPECT_EQ(Use("G"), Lines());
  EXPECT_EQ(Use("g "), Lines());
  EXPECT_EQ(Use("gg"), Lines());
  EXPECT_EQ(Use("g"), kTwoColourLinear);
}

TEST_F(NamedGradients, FirstOfTwoEntriesWithOneNameIsTaken) {
  AddRadial();
  Add(u"r", kLinear, {}, {});
  EXPECT_EQ(Use("r"), kTwoColourRadial);
}

TEST_F(NamedGradients, LookupVisitsTwoHundredAndFiftySixEntries) {
  for (int i = 0; i < 257; ++i) Add(WideFromNarrow("n" + std::to_string(i)), kLinear, {}, {});
  EXPECT_EQ(Use("n0"), kTwoColourLinear);
  EXPECT_EQ(Use("n255"), kTwoColourLinear);
  EXPECT_EQ(Use("n256"), Lines());
  // None of those visited is blank.
  EXPECT_EQ(Use(""), Lines());
}

TEST_F(NamedGradients, EmptyNameFindsTheFirstBlankEntry) {
  EXPECT_EQ(Use(""), kTwoColourLinear);
  // Without stops, both colours are those of a stop without ink.
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Fill().gradient.colourA[i] + 0, 255.0);
    EXPECT_EQ(Fill().gradient.colourB[i] + 0, 255.0);
  }
  AddRadial();
  EXPECT_EQ(Use(""), kTwoColourLinear);
}

TEST_F(NamedGradients, NameThatIsNoTextIsEmpty) {
  AddRadial();
  EXPECT_EQ(Run("0 5 10 20 90 40 1 0 0 1 7 9 Bg"), kTwoColourLinear);
  EXPECT_EQ(Run("0 /r 10 20 90 40 1 0 0 1 7 9 Bg"), kTwoColourRadial);
}

// --- Operands of Bg

TEST_F(NamedGradients, UseKeepsItsPlacement) {
  AddLinear();
  Run("0 (g) 10 20 90 40 1 2 3 5 7 9 Bg");
  const GradientPlacement& p = run.paint.placement;
  EXPECT_EQ(p.gradientName, u"g");
  EXPECT_EQ(p.gradientMatrix[0], 1.0);
  EXPECT_EQ(p.gradientMatrix[1], 2.0);
  EXPECT_EQ(p.gradientMatrix[2], 3.0);
  EXPECT_EQ(p.gradientMatrix[3], 5.0);
  EXPECT_EQ(p.gradientLength, 20.0);
  EXPECT_EQ(p.gradientAngle, 90.0);
  EXPECT_EQ(p.gradientAnchorX, 5.0);
  EXPECT_EQ(p.gradientAnchorY, 10.0);
  EXPECT_EQ(p.gradientP0[0], 5.0);
  EXPECT_EQ(p.gradientP0[1], 10.0);
  EXPECT_EQ(p.gradientP1[0], 25.0);
  EXPECT_EQ(p.gradientP1[1], 10.0);
  EXPECT_EQ(p.gradientP2[0], 25.0);
  EXPECT_EQ(p.gradientP2[1], 10.0);
  EXPECT_EQ(p.gradientOriginX, 5.0);  // the anchor in place of the offsets
  EXPECT_EQ(p.gradientOriginY, 10.0);
  EXPECT_EQ(p.gradientVectorAngle, 0.0);
  EXPECT_EQ(p.gradientVectorLength, 20.0);
}

TEST_F(NamedGradients, OffsetsReachTheOriginWhenNothingIsDrawn) {
  Run("2 (g) 10 20 90 40 1 0 0 1 7 9 Bg");
  EXPECT_EQ(run.paint.placement.gradientOriginX, 3.5);
  EXPECT_EQ(run.paint.placement.gradientOriginY, 4.5);
}

TEST_F(NamedGradients, UseNeedsElevenOperandsAndMayGoWithoutTheFlag) {
  AddLinear();
  const char* const operands[] = {"(g)", "10", "20", "90", "40", "1", "0", "0", "1", "7", "9"};
  for (std::size_t n = 0; n <= 11; ++n) {
    SCOPED_TRACE(n);
    run.paint.placement = {};
    run.paint.GradientFillPending = 1;
    std::string program;
    for (std::size_t i = 11 - n; i < 11; ++i) program += std::string(operands[i]) + ' ';
    EXPECT_EQ(Run(program + "Bg"), n == 11 ? kTwoColourLinear : Lines());
    EXPECT_EQ(run.paint.GradientFillPending, 1);
    EXPECT_EQ(Operands(), Lines());
  }
}

TEST_F(NamedGradients, FlagOfTwoTakesThePendingFillBack) {
  AddLinear();
  run.paint.GradientFillPending = 1;
  EXPECT_EQ(Run("2 (g) 10 20 90 40 1 0 0 1 7 9 Bg"), Lines());
  EXPECT_EQ(run.paint.GradientFillPending, 0);
  for (const char* flag : {"0", "1", "2.5", "1.999", "-2", "3"}) {
    SCOPED_TRACE(flag);
    run.paint.GradientFillPending = 0;
    EXPECT_EQ(Run(std::string(flag) + " (g) 10 20 90 40 1 0 0 1 7 9 Bg"), kTwoColourLinear);
    EXPECT_EQ(run.paint.GradientFillPending, 1);
  }
}

TEST_F(NamedGradients, LengthOfZeroTakesThePendingFillBack) {
  AddLinear();
  run.paint.GradientFillPending = 1;
  EXPECT_EQ(Run("0 (g) 10 20 90 0 1 0 0 1 7 9 Bg"), Lines());
  EXPECT_EQ(run.paint.GradientFillPending, 0);
}

TEST_F(NamedGradients, UseTakesThePlaceOfTheNextFillObject) {
  AddLinear();
  EXPECT_EQ(Run("0 0 M 10 0 L 0 (g) 10 20 90 40 1 0 0 1 7 9 Bg f"),
            (Lines{"PATH", "LINE 0,50 5,50", "FILL 0", "FDEF linear two colours", "LINE 5,50 0,50", "NOTL none", "ENDP",
                   "FDEF flat 1"}));
  EXPECT_EQ(run.paint.GradientFillPending, 0);
}

TEST_F(NamedGradients, PlainFillIsLeftOutWhileAGradientIsPending) {
  AddLinear();
  Use("g");
  EXPECT_EQ(Run("7 8 BB"), Lines());
  EXPECT_EQ(Operands(), Lines());
  EXPECT_EQ(run.paint.GradientFillPending, 1);
}

// --- The fill definition

TEST_F(NamedGradients, FillIsPlacedAtTheAnchorAndScaledByTheLength) {
  AddLinear();
  Use("g");
  EXPECT_EQ(Fill().fillClass + 0, 4u);
  EXPECT_EQ(Show(Forward()), "20 0 0 20 5 10");
  EXPECT_EQ(Show(Inverse()), "0.05 0 0 0.05 -0.25 -0.5");
  EXPECT_EQ(Scale(), -20.0);
}

TEST_F(NamedGradients, UseTakesItsMatrixBackwards) {
  AddLinear();
  // d c b a times 20. The determinant is 20 * 100 - 40 * 60 = -400; e = 0.05 * 5 - 0.1 * 10, f = -0.15 * 5 + 0.25 * 10.
  Run("0 (g) 10 20 90 40 1 2 3 5 7 9 Bg");
  EXPECT_EQ(Show(Forward()), "100 60 40 20 5 10");
  EXPECT_EQ(Show(Inverse()), "-0.05 0.15 0.1 -0.25 -0.75 1.75");
}

TEST_F(NamedGradients, FillTurnsByTheAngleLessAQuarter) {
  AddLinear();
  Run("0 (g) 10 20 30 40 1 2 3 5 7 9 Bg");
  const double c = std::cos(-60 / 57.29578);
  const double s = std::sin(-60 / 57.29578);
  ExpectMatrix(Forward(), {100 * c - 60 * s, 100 * s + 60 * c, 40 * c - 20 * s, 40 * s + 20 * c, 5, 10}, 1e-12);
  ExpectMatrix(ConcatMatrix(Forward(), Inverse()), kIdentity, 1e-12);
}

TEST_F(NamedGradients, LengthOfExactlyOneLeavesTheMatrixOut) {
  AddLinear();
  Run("0 (g) 10 20 90 2 5 0 0 5 7 9 Bg");
  EXPECT_EQ(Show(Forward()), "1 0 0 1 5 10");
  EXPECT_EQ(Scale(), -1.0);
  Run("0 (g) 10 20 90 3 5 0 0 5 7 9 Bg");
  EXPECT_EQ(Show(Forward()), "7.5 0 0 7.5 5 10");
}

TEST_F(NamedGradients, LengthWithinOneStepOfZeroLeavesTheMatrixOut) {
  AddLinear();
  // Half of it is the step itself, which still counts as 0.
  Run("0 (g) 0 0 90 4.440892098500626e-16 5 0 0 5 7 9 Bg");
  EXPECT_EQ(Show(Forward()), "1 0 0 1 0 0");
  Run("0 (g) 0 0 90 5e-16 5 0 0 5 7 9 Bg");
  EXPECT_EQ(Show(Forward()), "1.25e-15 0 0 1.25e-15 0 0");
}

TEST_F(NamedGradients, LinearAngleIsTurnedBackByAQuarter) {
  AddLinear();
  const struct {
    double angle, expected;
  } cases[] = {{0, 270}, {89, 359}, {90, 0}, {100, 10}, {360, 270}, {-90, 180}, {500, 410}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.angle);
    Use("g", c.angle);
    EXPECT_EQ(Angle(), c.expected);
  }
}

TEST_F(NamedGradients, NegativeLengthPointsBackwards) {
  AddLinear();
  Run("0 (g) 10 20 0 -40 1 0 0 1 7 9 Bg");
  EXPECT_EQ(Angle(), 90.0);  // 180 - 90
  EXPECT_EQ(Scale(), -20.0);
}

TEST_F(NamedGradients, VectorWithoutLengthComparesItsEndsYWithItsStartsX) {
  AddLinear();
  // So far out that the length is swallowed. Upwards is 90, which becomes 0, and downwards 270, which becomes 180.
  const struct {
    const char* anchor;
    double angle;
  } cases[] = {{"1e20 2e20", 0}, {"1e20 1e20", 180}, {"1e20 0", 180}, {"-1e20 0", 0}, {"-1e20 -2e20", 180}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.anchor);
    Run("0 (g) " + std::string(c.anchor) + " 0 2 1 0 0 1 7 9 Bg");
    EXPECT_EQ(Angle(), c.angle);
    EXPECT_EQ(Scale(), 0.0);
  }
}

TEST_F(NamedGradients, AFillCallsTheHostInThisOrder) {
  Add(u"g", kLinear, {Gray(0), Gray(0), Gray(0)}, {0, 50, 100});
  HostJournal journal;
  Use("g");
  const std::string conversion = "VectorCMYKtoRGB(0,0,0,255)=0";
  EXPECT_EQ(Without(journal.Take(), "MemInitBaseT"),
            (Lines{"SetToIdentityMatrix()", "SetToIdentityMatrix()", "IsDoubleEqual(20,0,2.220446049250313e-16)=0",
                   conversion, conversion, conversion}));
}

// --- Two colours

TEST_F(NamedGradients, FewerThanThreeStopsMakeTwoColours) {
  // 255 - ink - black, not below 0: stop 0 gives 0, 255, 255 and stop 1 gives 200, 0, 200. Only the low byte counts.
  const std::vector<NamedStop> stops = {Inks(0xFFFFFFFF, 0x100, 0, 0), Inks(0, 255, 0, 55)};
  Add(u"l", kLinear, stops, {0, 100});
  Add(u"c", kRadial, stops, {0, 100});
  const double first[] = {0, 255, 255};
  const double second[] = {200, 0, 200};
  const struct {
    const char* name;
    unsigned type;
    const double *a, *b;  // a linear gradient has them the other way round
  } cases[] = {{"l", kLinearFill, second, first}, {"c", kRadialFill, first, second}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ASSERT_EQ(Use(c.name, 0).size(), 2u);
    EXPECT_EQ(Fill().fillType + 0, c.type);
    const GradientPart gradient = Fill().gradient;
    EXPECT_EQ(gradient.gradientForm + 0, 3u);
    EXPECT_EQ(gradient.gradientFlag + 0, 1u);
    EXPECT_EQ(gradient.stopListFlag + 0, 0u);
    EXPECT_EQ(gradient.midPoint + 0, 0.5);
    EXPECT_EQ(gradient.stopListOn + 0, 0);
    EXPECT_EQ(gradient.stopCount + 0, 0u);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(gradient.colourA[i] + 0, c.a[i]);
      EXPECT_EQ(gradient.colourB[i] + 0, c.b[i]);
    }
  }
}

TEST_F(NamedGradients, TwoColoursAreConvertedInTheOrderOfTheStops) {
  const std::vector<NamedStop> stops = {Inks(1, 2, 3, 4), Inks(0x105, 6, 7, 0xFF08)};
  Add(u"l", kLinear, stops, {0, 100});
  Add(u"c", kRadial, stops, {0, 100});
  for (const char* name : {"l", "c"}) {
    SCOPED_TRACE(name);
    HostJournal journal;
    Use(name);
    EXPECT_EQ(Only(journal.Take(), "BmpCMYKtoRGB"), (Lines{"BmpCMYKtoRGB(1,2,3,4)", "BmpCMYKtoRGB(5,6,7,8)"}));
  }
}

TEST_F(NamedGradients, SingleStopFadesToNoInk) {
  Add(u"c", kRadial, {Gray(1)}, {50});
  EXPECT_EQ(Use("c"), kTwoColourRadial);
  EXPECT_EQ(Fill().gradient.colourA[0] + 0, 1.0);
  EXPECT_EQ(Fill().gradient.colourB[0] + 0, 255.0);
}

TEST_F(NamedGradients, RadialAngleStaysZero) {
  AddRadial();
  Use("r", 30);
  EXPECT_EQ(Angle(), 0.0);
  Add(u"list", kRadial, {Gray(1), Gray(2), Gray(3)}, {0, 50, 100});
  Use("list", 30);
  EXPECT_EQ(Angle(), 0.0);
}

// --- Stop lists

class NamedStopLists : public NamedGradients {
 protected:
  // Stop i is the gray i + 1; gives "1@0 2@50 3@100".
  std::string ListOf(int type, std::vector<double> positions) {
    run.namedGradients.clear();
    std::vector<NamedStop> stops;
    for (std::size_t i = 0; i < positions.size(); ++i) stops.push_back(Gray(static_cast<std::uint32_t>(i + 1)));
    Add(u"g", type, std::move(stops), std::move(positions));
    EXPECT_EQ(Use("g").size(), 2u);
    const GradientPart gradient = Fill().gradient;
    EXPECT_EQ(Fill().fillType + 0, type == kLinear ? kLinearFill : kRadialFill);
    EXPECT_EQ(gradient.gradientForm + 0, 1u);
    EXPECT_EQ(gradient.gradientFlag + 0, 1u);
    EXPECT_EQ(gradient.stopListFlag + 0, 1u);
    EXPECT_EQ(gradient.stopListStart + 0, 0);
    EXPECT_EQ(gradient.midPoint + 0, 0.5);
    EXPECT_EQ(gradient.stopListOn + 0, 1);
    std::string list;
    for (std::uint32_t i = 0; i < gradient.stopCount; ++i) {
      EXPECT_EQ(gradient.stopColours[i] % kGrayStep, 0u);
      list += (i ? " " : "") + std::to_string(gradient.stopColours[i] / kGrayStep) + '@' +
              std::to_string(gradient.stopPositions[i]);
    }
    return list;
  }
};

TEST_F(NamedStopLists, RadialListIsFilledUpAtBothEnds) {
  EXPECT_EQ(ListOf(kRadial, {10, 50, 90}), "1@0 1@10 2@50 3@90 3@100");
  EXPECT_EQ(ListOf(kRadial, {0, 50, 100}), "1@0 2@50 3@100");
  // Positions are cut to whole numbers first.
  EXPECT_EQ(ListOf(kRadial, {0.9, 50.9, 100.9}), "1@0 2@50 3@100");
  EXPECT_EQ(ListOf(kRadial, {1, 50, 99.9}), "1@0 1@1 2@50 3@99 3@100");
  EXPECT_EQ(ListOf(kRadial, {0, 10, 20, 30}), "1@0 2@10 3@20 4@30 4@100");
}

TEST_F(NamedStopLists, RadialListKeepsItsOrder) {
  EXPECT_EQ(ListOf(kRadial, {100, 50, 0}), "1@0 1@100 2@50 3@0 3@100");
}

TEST_F(NamedStopLists, RisingLinearListStandsAsItIs) {
  EXPECT_EQ(ListOf(kLinear, {10, 50, 90}), "1@10 2@50 3@90");
  EXPECT_EQ(ListOf(kLinear, {10.9, 11.9, 12.9}), "1@10 2@11 3@12");
  // Only the first two positions tell.
  EXPECT_EQ(ListOf(kLinear, {50, 50, 20}), "1@50 2@50 3@20");
  EXPECT_EQ(ListOf(kLinear, {10, 90, 50, 0}), "1@10 2@90 3@50 4@0");
}

TEST_F(NamedStopLists, FallingLinearListIsTurnedRoundAndFilledUp) {
  EXPECT_EQ(ListOf(kLinear, {100, 50, 0}), "3@0 2@50 1@100");
  EXPECT_EQ(ListOf(kLinear, {90, 50, 10}), "3@0 3@10 2@50 1@90 1@100");
  EXPECT_EQ(ListOf(kLinear, {100.9, 50.9, 0.9}), "3@0 2@50 1@100");
  EXPECT_EQ(ListOf(kLinear, {90, 60, 30, 0}), "4@0 3@30 2@60 1@90 1@100");
}

TEST_F(NamedStopLists, FallingLinearListIsThinnedOut) {
  // A stop needs more than 2 percent to the one before it, the first to 0.
  EXPECT_EQ(ListOf(kLinear, {60, 58, 10}), "3@0 3@10 1@60 1@100");
  EXPECT_EQ(ListOf(kLinear, {60.5, 58, 10}), "3@0 3@10 2@58 1@60 1@100");
  EXPECT_EQ(ListOf(kLinear, {100, 50, 48}), "3@0 2@50 1@100");
  EXPECT_EQ(ListOf(kLinear, {2, 1, 0}), "1@100");
  EXPECT_EQ(ListOf(kLinear, {2.5, 1, 0}), "1@2 1@100");
}

TEST_F(NamedStopLists, ListHoldsAHundredAndOneEntries) {
  // 99 stops and both ends fill it; with 100 stops the entry at the end is dropped.
  for (int n : {99, 100}) {
    SCOPED_TRACE(n);
    std::vector<double> positions;
    for (int i = 0; i < n; ++i) positions.push_back(i < n - 1 ? 5 : 90);
    ListOf(kRadial, positions);
    EXPECT_EQ(Fill().gradient.stopCount + 0, 101u);
    EXPECT_EQ(Fill().gradient.stopPositions[0] + 0, 0);
    EXPECT_EQ(Fill().gradient.stopPositions[100] + 0, n == 99 ? 100 : 90);
    EXPECT_EQ(Fill().gradient.stopColours[100] + 0, static_cast<unsigned>(n) * kGrayStep);
  }
}

TEST_F(NamedStopLists, ColoursHaveRedInTheLowByte) {
  // 255 - ink - black, not below 0: 0, 200, 200; 255, 0, 255; 255, 255, 0. Only the low byte of an ink counts.
  Add(u"g", kLinear, {Inks(0xFFFFFFFF, 0x100, 0, 55), Inks(0, 255, 0, 0), Inks(0, 0, 255, 0)}, {0, 50, 100});
  Use("g");
  EXPECT_EQ(Fill().gradient.stopColours[0] + 0, 0xC8C800u);
  EXPECT_EQ(Fill().gradient.stopColours[1] + 0, 0xFF00FFu);
  EXPECT_EQ(Fill().gradient.stopColours[2] + 0, 0x00FFFFu);
}

// --- Spot fills

class NamedSpotFills : public NamedGradients {
 protected:
  NamedSpotFills() {
    Add(u"s", kLinear, {{0x10A, 0x114, 0x11E, 0x128, 50, u"Rot"}, {0, 0, 0, 0, 60, u"Blau"}, {0, 0, 0, 0, 70, u""}},
        {10, 20, 30})
        .spotFill = 1;
  }
  NamedGradient& Entry() { return run.namedGradients[0]; }

  SpotFillView View() const { return ViewSpotFill(PayloadOf<CQXLinearSpotFill>(2)); }
  // "10/50 30/60": position and tint of each marker.
  std::string MarkersOf(std::vector<double> positions) {
    Entry().positions = std::move(positions);
    EXPECT_EQ(Use("s").size(), 3u);
    std::string text;
    for (const CSpotMarker& marker : View().markers) {
      text += (text.empty() ? "" : " ") + std::to_string(marker.position) + '/' + std::to_string(marker.tint);
    }
    return text;
  }
};

TEST_F(NamedSpotFills, GoOutBehindTheirColour) {
  EXPECT_EQ(Use("s"), (Lines{"FILL 0", "NFIL empty name Rot correction 5", "SPFL"}));
  EXPECT_EQ(run.paint.GradientFillPending, 1);
  // The low bytes of the four inks, cyan the lowest.
  const ColourView colour = ViewColour(PayloadOf<CQXFullColor>(1));
  EXPECT_EQ(colour.id, 0x281E140Au);
  EXPECT_EQ(colour.space, kCmykSpace);
  EXPECT_EQ(colour.reflectivity, 0);
  EXPECT_FALSE(colour.tint);
}

// Colours pass by value, so that they are copied on their way.
TEST_F(NamedSpotFills, CallTheHostInThisOrder) {
  HostJournal journal;
  Use("s", 90);
  Lines calls = Without(Without(journal.Take(), "MemInitBaseT"), "CQXColor::~CQXColor");
  calls = Without(calls, "CQXColor::CQXColor()");
  // 0x281E140A and three markers; 20 times the identity at (5, 10), inverted, with the minus of its sine.
  EXPECT_EQ(calls, (Lines{"CQXSpotFill::operator new(688)",
                          "CQXLinearSpotFill::CQXLinearSpotFill()",
                          "CQXColor::CQXColor(673059850,3,5,0)",
                          "CQXColor::SetCartridge(0)",
                          "CQXColor::SetTint(100)",
                          "CQXSpotFill::AddFromColorMarker([10,50])",
                          "CQXSpotFill::AddFromColorMarker([30,60])",
                          "CQXSpotFill::AddFromColorMarker([60,70])",
                          "IsDoubleEqual(20,0,2.220446049250313e-16)=0",
                          "CQXGradientFill::ChangeFillAngle(0)",
                          "CQXGradientFill::ChangeXOffset(0)",
                          "CQXGradientFill::ChangeYOffset(0)",
                          "CQXGradientFill::ChangeWorldToFillTm([0.05,0,-0,0.05,-0.25,-0.5])",
                          "CQXSpotFill::ChangeFromColor()",
                          "CQXColor::CQXColor(4294967295,1,0,0)",
                          "CQXSpotFill::ChangeToColor()",
                          "CQXSpotFill::ChangeDuotone(0)",
                          "CQXGradientFill::ChangeFillLengthRatio(-20)",
                          "CQXFullColor::CQXFullColor(673059850,3,5,0)",
                          "CQXFullColor::SetColorName(Rot)"}));
}

TEST_F(NamedSpotFills, FadeFromTheFirstColourToTheInvisibleOne) {
  Use("s");
  const SpotFillView fill = View();
  EXPECT_EQ(fill.from.id, 0x281E140Au);
  EXPECT_EQ(fill.from.space, kCmykSpace);
  EXPECT_EQ(fill.from.correction, 5);
  EXPECT_EQ(fill.from.reflectivity, 0);
  EXPECT_EQ(fill.from.cartridge, 0);
  EXPECT_EQ(fill.from.tint, 100.0);
  EXPECT_EQ(fill.to.id, 0xFFFFFFFFu);
  EXPECT_EQ(fill.to.space, kRgbSpace);
  EXPECT_EQ(fill.to.correction, 0);
  EXPECT_FALSE(fill.to.tint);
  EXPECT_EQ(fill.xOffset, 0.0);
  EXPECT_EQ(fill.yOffset, 0.0);
  EXPECT_EQ(fill.duotone, 0);
  EXPECT_EQ(fill.lengthRatio, -20.0);
}

TEST_F(NamedSpotFills, AreMadeForTheFlagOfOneAlone) {
  for (int flag : {0, 2, -1}) {
    SCOPED_TRACE(flag);
    Entry().spotFill = flag;
    EXPECT_EQ(Use("s").size(), 2u);
    EXPECT_EQ(commands[1].key, KEY_FDEF);
  }
}

TEST_F(NamedSpotFills, RisingPositionsAreSummedUp) {
  EXPECT_EQ(MarkersOf({10, 20, 30}), "10/50 30/60 60/70");
  EXPECT_EQ(MarkersOf({10.6, 10.6, 10.6}), "10/50 20/60 30/70");
  EXPECT_EQ(MarkersOf({60, 60, 10}), "60/50 98/60 98/70");
  EXPECT_EQ(MarkersOf({97, 98, 0}), "97/50 98/60 98/70");
  EXPECT_EQ(MarkersOf({99, 99, 0}), "98/50 98/60 98/70");
}

TEST_F(NamedSpotFills, FallingPositionsAreTakenFromTheEnd) {
  EXPECT_EQ(MarkersOf({100, 50, 0}), "0/70 50/60 99/50");
  EXPECT_EQ(MarkersOf({98.9, 50.9, 60.9}), "60/70 50/60 98/50");
}

TEST_F(NamedSpotFills, SingleStopFallsToTheZeroBehindIt) {
  Entry().stops.resize(1);
  EXPECT_EQ(MarkersOf({99.5}), "99/50");
}

TEST_F(NamedSpotFills, ArePlacedAtTheAnchor) {
  // An angle of 90 folds to 0: 20 times the identity at (5, 10), inverted.
  Use("s", 90);
  EXPECT_EQ(Show(View().worldToFill), "0.05 0 0 0.05 -0.25 -0.5");
  // An angle of 0 folds to 90: M = (0, -20, 20, 0).
  Use("s", 0);
  ExpectMatrix(View().worldToFill, {0, 0.05, -0.05, 0, 0.5, -0.25}, 1e-15);
}

TEST_F(NamedSpotFills, FoldTheirAngle) {
  const struct {
    double angle, folded;
  } cases[] = {{0, 90},    {45, 45},  {91, 359}, {135, 315}, {180, 270}, {225, 225}, {270, 180},
               {300, 150}, {360, 90}, {361, 0},  {500, 0},   {-30, 120}, {-300, 390}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.angle);
    Use("s", c.angle);
    const double radians = c.folded * (3.141592653589793 / 180.0);
    EXPECT_NEAR(View().worldToFill.a * 20, std::cos(radians), 1e-14);
    EXPECT_NEAR(View().worldToFill.b * 20, std::sin(radians), 1e-14);
  }
}

TEST_F(NamedSpotFills, BringTheirFillAngleIntoOneTurn) {
  const struct {
    double angle, fillAngle;
  } cases[] = {{90, 0},    {0, 270},  {89, 359}, {450, 360},  {451, 1},
               {810, 360}, {900, 90}, {-270, 0}, {-300, 330}, {-700, 290}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.angle);
    Use("s", c.angle);
    EXPECT_EQ(View().angle, c.fillAngle);
  }
}

TEST_F(NamedSpotFills, OfNoLengthAreNotScaled) {
  // Only Bm comes here with a length of 0. The origin is (3, 4) in user space.
  Entry().type = kRadial;
  Use("s", 0);
  ASSERT_EQ(Run("0 0 0 1 3 4 Bm").size(), 3u);
  EXPECT_EQ(Show(View().worldToFill), "1 0 0 1 -1.5 -2");
  EXPECT_EQ(View().lengthRatio, 0.0);
}

// --- Bm and Xm

TEST_F(NamedGradients, MatrixOperatorsUseTheNameOfTheLastUse) {
  AddRadial();
  EXPECT_EQ(Run("4 0 0 4 3 4 Bm"), Lines());
  // Also of one that drew nothing.
  Run("2 (r) 10 20 0 40 1 0 0 1 7 9 Bg");
  EXPECT_EQ(Run("4 0 0 4 3 4 Bm"), kTwoColourRadial);
  EXPECT_EQ(run.paint.GradientFillPending, 1);
  Run("2 (x) 10 20 0 40 1 0 0 1 7 9 Bg");
  EXPECT_EQ(Run("4 0 0 4 3 4 Bm"), Lines());
  EXPECT_EQ(run.paint.GradientFillPending, 0);
}

TEST_F(NamedGradients, MatrixOfARadialGradientPlacesIt) {
  AddRadial();
  Run("0 (r) 10 20 0 40 5 6 7 8 7 9 Bg");
  for (const char* program : {"4 0 0 9 3 4 Bm", "4 0 0 9 3 4 Xm"}) {
    SCOPED_TRACE(program);
    EXPECT_EQ(Run(program), kTwoColourRadial);
    // Length 4 / 2, origin (3, 4) / 2; what Bg left of a matrix is gone. The fill is turned by -90 degrees.
    const double c = 2 * std::cos(-90 / 57.29578);
    const double s = 2 * std::sin(-90 / 57.29578);
    ExpectMatrix(Forward(), {c, s, -s, c, 1.5, 2}, 1e-14);
    EXPECT_EQ(Scale(), -2.0);
    EXPECT_EQ(Angle(), 0.0);
    EXPECT_EQ(Operands(), Lines());
  }
}

TEST_F(NamedGradients, MatrixIsTurnedBackByTheAngle) {
  AddRadial();
  Use("r", 60);
  Run("4 1 2 6 3 5 Xm");
  // Times (1/2, -r, r, 1/2) with r = sqrt(3) / 2: a = 4/2 + r, e = 3/2 + 5 r, f = -3 r + 5/2.
  const double r = std::sqrt(3.0) / 2;
  EXPECT_NEAR(Scale(), -(2 + r) / 2, 1e-7);
  EXPECT_NEAR(Forward().e, (1.5 + 5 * r) / 2, 1e-7);
  EXPECT_NEAR(Forward().f, (2.5 - 3 * r) / 2, 1e-7);
  EXPECT_NEAR(run.paint.placement.gradientLength, (2 + r) / 2, 1e-7);
  // To the digit by the short constant.
  const double t = -60 / 57.29578;
  EXPECT_NEAR(Forward().e, (3 * std::cos(t) - 5 * std::sin(t)) / 2, 1e-14);
}

TEST_F(NamedGradients, MatrixOfALinearGradientIsLeftToItsUseUnderBm) {
  AddLinear();
  Use("g");
  run.paint.GradientFillPending = 0;
  EXPECT_EQ(Run("4 0 0 6 3 5 Bm"), Lines());
  EXPECT_EQ(run.paint.GradientFillPending, 0);
  EXPECT_EQ(run.paint.placement.gradientLength, 20.0);
  EXPECT_EQ(Operands(), Lines());  // cleared behind every Bm
}

TEST_F(NamedGradients, MatrixOfALinearGradientPlacesItsMiddleUnderXm) {
  AddLinear();
  Run("0 (g) 10 20 0 40 5 6 7 8 7 9 Bg");
  EXPECT_EQ(Run("4 0 0 6 3 5 Xm"), kTwoColourLinear);
  // w = 6 * -0.5: x = 0 * w + 3, y = -1 * w + 5, then half of both; length 4 / 2.
  const GradientPlacement& p = run.paint.placement;
  EXPECT_EQ(p.gradientAnchorX, 1.5);
  EXPECT_EQ(p.gradientAnchorY, 4.0);
  EXPECT_EQ(p.gradientLength, 2.0);
  EXPECT_EQ(p.gradientP2[0], 3.5);
  EXPECT_EQ(p.gradientP2[1], 4.0);
  EXPECT_EQ(Forward().e, 1.5);
  EXPECT_EQ(Forward().f, 4.0);
  EXPECT_EQ(Scale(), -2.0);
  EXPECT_EQ(Angle(), 270.0);
  EXPECT_EQ(p.gradientMatrix[0], 1.0);
  EXPECT_EQ(p.gradientMatrix[1], 0.0);
  EXPECT_EQ(p.gradientMatrix[2], 0.0);
  EXPECT_EQ(p.gradientMatrix[3], 1.0);
  EXPECT_EQ(run.paint.GradientFillPending, 1);
}

TEST_F(NamedGradients, MatrixOfATurnedLinearGradient) {
  AddLinear();
  Use("g", 60);
  Run("4 1 2 6 3 5 Xm");
  // With r = sqrt(3) / 2 the product has a = 2 + r, d = 3 - 2 r, e = 1.5 + 5 r, f = 2.5 - 3 r; w = d * -0.5.
  const double r = std::sqrt(3.0) / 2;
  const double w = (3 - 2 * r) * -0.5;
  const double length = (2 + r) / 2;
  EXPECT_NEAR(Forward().e, (r * w + 1.5 + 5 * r) / 2, 1e-7);
  EXPECT_NEAR(Forward().f, (-0.5 * w + 2.5 - 3 * r) / 2, 1e-7);
  // Turned by 60 - 90 degrees.
  EXPECT_NEAR(Forward().a, length * r, 1e-7);
  EXPECT_NEAR(Forward().b, length * -0.5, 1e-7);
  EXPECT_NEAR(Angle(), 330.0, 1e-9);
}

TEST_F(NamedGradients, MatrixOperatorReadsMissingOperandsAsZero) {
  AddRadial();
  Use("r", 0);
  EXPECT_EQ(Run("4 Xm"), kTwoColourRadial);  // ty alone
  EXPECT_EQ(Forward().e, 0.0);
  EXPECT_EQ(Forward().f, 2.0);
  EXPECT_EQ(Scale(), 0.0);
  ExpectMatrix(Forward(), {0, -1, 1, 0, 0, 2}, 1e-7);  // a length of 0 leaves the matrix out
}

TEST_F(NamedGradients, OnlyTheSecondMatrixOperatorLeavesTheRestOfTheStack) {
  AddRadial();
  Use("r", 0);
  Run("9 4 0 0 4 3 4 Xm");
  EXPECT_EQ(Operands(), Lines{"Number 9"});
  Run("9 4 0 0 4 3 4 Bm");
  EXPECT_EQ(Operands(), Lines());
  // Nothing is popped for a name that is not found.
  Use("x", 0);
  Run("1 2 3 4 5 6 Xm");
  EXPECT_EQ(Operands().size(), 6u);
}

TEST_F(NamedGradients, SecondMatrixOperatorBeforeAnyUseFindsTheBlankEntry) {
  EXPECT_EQ(Run("4 0 0 6 3 5 Xm"), kTwoColourLinear);
}
