// The @k operator: from the operands of a gradient and the frame's stops to the fill and the transparency over it.
#include "paint/gradient_fill.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "host/transparency.h"
#include "tests/support/filter_test.h"
#include "tests/support/host_journal.h"
#include "tests/support/raw_record.h"
#include "tests/support/stop_block.h"

namespace {

constexpr std::uint32_t kBlue = 0xFF0000;
constexpr std::uint32_t kGreen = 0x00FF00;
constexpr std::uint32_t kRed = 0x0000FF;

class GradientFill : public FilterTest {
 protected:
  // The FDEF of a gradient, with opaque stops of the colours 1, 2, 3 ... at these offsets.
  std::string StopsOf(const char* operands, const std::vector<double>& offsets) {
    if (run.DocHeight == 0.0) StartMachine();
    std::vector<GradientStop> stops;
    for (const double offset : offsets) stops.push_back({static_cast<std::uint32_t>(stops.size() + 1), offset, 1.0});
    GiveStops(stops);
    return Run(operands).at(1);
  }
  std::string LinearStops(const std::vector<double>& offsets) { return StopsOf("0 10 0 0 0 @k", offsets); }
  std::string RadialStops(const std::vector<double>& offsets) { return StopsOf("0 0 0 0 5 1 @k", offsets); }

  // The TSPY of a linear gradient with these stops, offset and opacity each.
  std::string Markers(const std::vector<std::pair<double, double>>& stops) {
    if (run.DocHeight == 0.0) StartMachine();
    std::vector<GradientStop> given;
    for (const auto& [offset, opacity] : stops) given.push_back({0, offset, opacity});
    GiveStops(given);
    return Run("0 10 0 0 0 @k").at(2);
  }

  TransparencyView TransparencyOf(std::size_t line) {
    return ViewTransparency(*static_cast<const CQXTransparency*>(commands.at(line).data));
  }

  // The record's angle of a linear gradient from the origin.
  double AngleTo(const char* operands) {
    Run(operands);
    return PayloadOf<FillDefinition>(1).gradient.angle;
  }
};

void ExpectMatrix(RawRecord& record, std::size_t offset, const TM& expected) {
  const double values[] = {expected.a, expected.b, expected.c, expected.d, expected.e, expected.f};
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_NEAR(record.At<double>(offset + 8 * i), values[i], 1e-12) << "value " << i << " of the matrix at " << offset;
  }
}

void ExpectMatrix(TM matrix, const TM& expected) {
  EXPECT_NEAR(matrix.a, expected.a, 1e-12);
  EXPECT_NEAR(matrix.b, expected.b, 1e-12);
  EXPECT_NEAR(matrix.c, expected.c, 1e-12);
  EXPECT_NEAR(matrix.d, expected.d, 1e-12);
  EXPECT_NEAR(matrix.e, expected.e, 1e-12);
  EXPECT_NEAR(matrix.f, expected.f, 1e-12);
}

}  // namespace

TEST_F(GradientFill, PushesBlackTheFillAndItsTransparencyInThisOrder) {
  StartMachine();
  GiveStops({{kRed, 0.0, 1.0}, {kBlue, 1.0, 1.0}});
  EXPECT_EQ(Run("0 10 0 0 0 @k"), (Lines{"FILL 0", "FDEF linear 255@0 16711680@100", "TSPY linear 0:100 99:100"}));
  EXPECT_EQ(Run("0 0 0 0 5 1 @k"), (Lines{"FILL 0", "FDEF radial 255@0 16711680@100", "TSPY radial 0:100 99:100"}));
  EXPECT_EQ(commands[1].size, 1216u);
  EXPECT_EQ(commands[2].size, 0u);
}

// From (10, 20) to (40, 60), half a centimetre to the unit, the document 100 high.
//   dx = 30, dy = 40: the length is 50 units, 25 cm. The start lies at 0.5 * 10 = 5 and 0.5 * 100 - 0.5 * 20 = 40.
//   The direction is -atan2(40, 30) = -53.13010235415598 degrees, below 90, so the angle is that + 270.
//   theta = (-53.13010235415598 - 90) / 57.29578 = -2.498091523566936, and
//   A = 25 cos theta = -19.999999681556403, B = 25 sin theta = -15.000000424591454: not quite -20 and -15, since
//   degrees were made with another constant than they are unmade. The determinant is 25 * 25 = 625. With i = 1 / 625: D
//   i = -0.0319999994904903, B i = -0.0240000006793463, and the offsets of the inverse are -(D i) 5 + (C i) 40 and (B
//   i) 5 - (A i) 40.
TEST_F(GradientFill, TheBytesOfALinearFill) {
  StartMachine(100.0, 0.5);
  GiveStops({{kRed, 0.25, 1.0}, {kGreen, 0.5, 1.0}, {kBlue, 0.75, 1.0}});
  Run("10 40 20 60 0 @k");
  ASSERT_EQ(commands.at(1).size, 1216u);
  RawRecord fill(commands[1].data, 1216);

  EXPECT_EQ(fill.At<std::uint32_t>(0), 4u) << "fillClass";
  ExpectMatrix(fill, 4,
               {-0.03199999949049025, 0.024000000679346326, -0.024000000679346326, -0.03199999949049025,
                1.1200000246263042, 1.1599999762228783});
  ExpectMatrix(fill, 52,
               {-19.999999681556403, -15.000000424591454, 15.000000424591454, -19.999999681556403, 5.0, 40.0});
  EXPECT_EQ(fill.At<std::uint32_t>(100), 15u) << "fillType";
  EXPECT_EQ(fill.At<std::uint32_t>(104), 1u) << "gradientForm";
  EXPECT_EQ(fill.At<std::uint32_t>(108), 1u) << "gradientFlag";
  EXPECT_EQ(fill.At<std::uint32_t>(112), 1u) << "stopListFlag";
  EXPECT_EQ(fill.At<std::uint16_t>(216), 0u) << "stopListStart";
  EXPECT_EQ(fill.At<double>(224), 0.5) << "midPoint";
  EXPECT_EQ(fill.At<std::uint16_t>(232), 1u) << "stopListOn";
  EXPECT_EQ(fill.At<std::uint32_t>(236), 4u) << "stopCount";
  const std::uint32_t colours[] = {kRed, kGreen, kBlue, kBlue};
  const std::int32_t positions[] = {25, 50, 75, 100};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(fill.At<std::uint32_t>(240 + 4 * i), colours[i]);
    EXPECT_EQ(fill.At<std::int32_t>(644 + 4 * i), positions[i]);
  }
  EXPECT_NEAR(fill.At<double>(1048), 216.86989764584402, 1e-12) << "angle";
  EXPECT_EQ(fill.At<double>(1152), -25.0) << "fillScale";
  EXPECT_EQ(fill.FirstOther(), 1216u);
}

// Centre (10, 20), radius 4, through the gradient matrix (2, 0.5, 0.25, 3, 5, 7), half a centimetre to the unit.
//   centre = (2 * 10 + 0.25 * 20 + 5, 3 * 20 + 0.5 * 10 + 7) = (30, 72), on the page (15, (100 - 72) * 0.5 = 14).
//   radius = 2 * 4 + 5 = 13, of which the scale is -6.5 and the matrices take 13.
//   t = (atan2(0.5, 0.25) * 57.2957795 - 90) / 57.29578 = -0.46364760531337684; the angle is t * 57.29578 - 90.
//   A = 13 cos t = 11.627553504436797, B = 13 sin t = -5.8137766986236725. The determinant is 169.
TEST_F(GradientFill, TheBytesOfARadialFill) {
  StartMachine(100.0, 0.5);
  CurrentFrame().gradientMatrix = {2.0, 0.5, 0.25, 3.0, 5.0, 7.0};
  GiveStops({{kRed, 0.25, 1.0}, {kBlue, 0.75, 1.0}});
  Run("10 20 0 0 4 1 @k");
  ASSERT_EQ(commands.at(1).size, 1216u);
  RawRecord fill(commands[1].data, 1216);

  EXPECT_EQ(fill.At<std::uint32_t>(0), 4u) << "fillClass";
  ExpectMatrix(fill, 4,
               {0.06880209174222957, 0.03440104555398623, -0.03440104555398623, 0.06880209174222957,
                -0.5504167383776362, -1.4792449677010073});
  ExpectMatrix(fill, 52, {11.627553504436797, -5.8137766986236725, 5.8137766986236725, 11.627553504436797, 15.0, 14.0});
  EXPECT_EQ(fill.At<std::uint32_t>(100), 5u) << "fillType";
  EXPECT_EQ(fill.At<std::uint32_t>(104), 1u) << "gradientForm";
  EXPECT_EQ(fill.At<std::uint32_t>(108), 1u) << "gradientFlag";
  EXPECT_EQ(fill.At<std::uint32_t>(112), 1u) << "stopListFlag";
  EXPECT_EQ(fill.At<std::uint16_t>(216), 0u) << "stopListStart";
  EXPECT_EQ(fill.At<double>(224), 0.5) << "midPoint";
  EXPECT_EQ(fill.At<std::uint16_t>(232), 1u) << "stopListOn";
  EXPECT_EQ(fill.At<std::uint32_t>(236), 2u) << "stopCount";
  EXPECT_EQ(fill.At<std::uint32_t>(240), kRed);
  EXPECT_EQ(fill.At<std::uint32_t>(244), kBlue);
  EXPECT_EQ(fill.At<std::int32_t>(644), 25);
  EXPECT_EQ(fill.At<std::int32_t>(648), 75);
  EXPECT_NEAR(fill.At<double>(1048), -116.56505119156208, 1e-11) << "angle";
  EXPECT_EQ(fill.At<double>(1152), -6.5) << "fillScale";
  EXPECT_EQ(fill.FirstOther(), 1216u);
}

// --- Operands

TEST_F(GradientFill, ExactlyZeroIsLinearAndAnyOtherKindRadial) {
  StartMachine();
  EXPECT_EQ(Run("0 10 0 0 0 @k").at(1), "FDEF linear");
  EXPECT_EQ(Run("0 10 0 0 -0.0 @k").at(1), "FDEF linear");
  for (const char* kind : {"1", "2", "-1", "0.5", "1e-300"}) {
    EXPECT_EQ(Run("0 0 0 0 5 " + std::string(kind) + " @k").at(1), "FDEF radial") << kind;
  }
}

TEST_F(GradientFill, TakesTheOperandsOfItsKindAndLeavesTheRest) {
  StartMachine();
  Run("77 10 40 20 60 0 @k");
  EXPECT_EQ(Operands(), Lines{"Number 77"});
  Run("10 20 30 40 5 1 @k");
  EXPECT_EQ(Operands(), Lines{"Number 77"});
}

TEST_F(GradientFill, TheFocusOfARadialGradientHasNoEffect) {
  StartMachine();
  Run("10 20 10 20 5 1 @k");
  const FillDefinition plain = PayloadOf<FillDefinition>(1);
  Run("10 20 33 -44 5 1 @k");
  EXPECT_EQ(std::memcmp(&plain, commands[1].data, sizeof plain), 0);
}

TEST_F(GradientFill, TheLinearValuesThatADryStackLeavesOutAreZero) {
  StartMachine();
  // y2 alone is there: from (0, 0) to (0, 7).
  Run("7 0 @k");
  EXPECT_EQ(PayloadOf<FillDefinition>(1).fillScale, -7.0);
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.e, 0.0);
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.f, 100.0);
  // All but x1, which stands lowest: from (0, 2) to (3, 6).
  Run("3 2 6 0 @k");
  EXPECT_EQ(PayloadOf<FillDefinition>(1).fillScale, -5.0);
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.e, 0.0);
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.f, 98.0);
}

TEST_F(GradientFill, WithoutAnyOperandItIsALinearGradientOfNoLength) {
  StartMachine();
  EXPECT_EQ(Run("@k"), (Lines{"FILL 0", "FDEF linear", "TSPY linear"}));
}

TEST_F(GradientFill, ACentreThatADryStackLeavesOutTakesTheValueOfTheKind) {
  StartMachine();
  // fx, fy and r are there, cx and cy are not.
  Run("0 0 8 3 @k");
  EXPECT_EQ(PayloadOf<FillDefinition>(1).fillScale, -8.0);
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.e, 3.0);
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.f, 97.0);
  // cy is there as well.
  Run("40 0 0 8 3 @k");
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.e, 3.0);
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.f, 60.0);
}

TEST_F(GradientFill, ARadiusThatADryStackLeavesOutIsZero) {
  StartMachine();
  Run("3 @k");
  EXPECT_EQ(PayloadOf<FillDefinition>(1).fillScale, 0.0);
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.e, 3.0);
}

// --- Placement of a linear gradient

TEST_F(GradientFill, TheAngleIsTurnedIntoTheRangeOfTheHost) {
  StartMachine();
  // With y down: degrees of the direction, and the angle 270 above it, or 90 below it from 90 degrees on.
  EXPECT_NEAR(AngleTo("0 10 0 0 0 @k"), 270.0, 1e-12);    // right: 0
  EXPECT_NEAR(AngleTo("0 10 0 10 0 @k"), 225.0, 1e-12);   // right and down: -45
  EXPECT_NEAR(AngleTo("0 0 0 10 0 @k"), 180.0, 1e-12);    // down: -90
  EXPECT_NEAR(AngleTo("0 -10 0 0 0 @k"), 90.0, 1e-12);    // left: -180
  EXPECT_NEAR(AngleTo("0 10 0 -10 0 @k"), 315.0, 1e-12);  // right and up: 45
  EXPECT_NEAR(AngleTo("0 0 0 -10 0 @k"), 0.0, 1e-12);     // up: exactly 90
  EXPECT_NEAR(AngleTo("0 -10 0 -10 0 @k"), 45.0, 1e-12);  // left and up: 135
  // Just below 90: 89.99999427 degrees.
  EXPECT_NEAR(AngleTo("0 1 0 -10000000 0 @k"), 359.99999427, 1e-8);
}

TEST_F(GradientFill, ARotatedMatrixTurnsTheAngleAndAScaledOneDoesNot) {
  StartMachine();
  CurrentFrame().currentMatrix = {0.0, 1.0, -1.0, 0.0, 0.0, 0.0};
  // 0 - 90 degrees, so 90 less than the 270 of the untransformed gradient.
  EXPECT_NEAR(AngleTo("0 10 0 0 0 @k"), 180.0, 1e-12);
  EXPECT_EQ(PayloadOf<FillDefinition>(1).fillScale, -10.0);
  CurrentFrame().currentMatrix = {3.0, 0.0, 0.0, 5.0, 11.0, 13.0};
  EXPECT_NEAR(AngleTo("0 10 0 0 0 @k"), 270.0, 1e-12);
  EXPECT_EQ(PayloadOf<FillDefinition>(1).fillScale, -10.0);
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.e, 0.0);
  EXPECT_DOUBLE_EQ(PayloadOf<FillDefinition>(1).forwardMatrix.f, 100.0);
}

TEST_F(GradientFill, OfTheCurrentMatrixOnlyAAndCTurnTheAngle) {
  StartMachine();
  // atan2(c, a) = atan2(1, 1): 45 degrees more, whatever b and d say.
  CurrentFrame().currentMatrix = {1.0, 7.0, 1.0, -9.0, 0.0, 0.0};
  EXPECT_NEAR(AngleTo("0 10 0 0 0 @k"), 315.0, 1e-12);
}

TEST_F(GradientFill, OnlyTheStartPointGoesThroughTheGradientMatrix) {
  StartMachine(100.0, 0.5);
  CurrentFrame().gradientMatrix = {2.0, 0.5, 0.25, 3.0, 5.0, 7.0};
  Run("10 40 20 60 0 @k");
  const FillDefinition& fill = PayloadOf<FillDefinition>(1);
  EXPECT_EQ(fill.fillScale, -25.0);
  EXPECT_NEAR(fill.gradient.angle, 216.86989764584402, 1e-12);
  // (20 * 0.25 + 10 * 2 + 5, 20 * 3 + 10 * 0.5 + 7) = (30, 72)
  ExpectMatrix(fill.forwardMatrix,
               {-19.999999681556403, -15.000000424591454, 15.000000424591454, -19.999999681556403, 15.0, 14.0});
}

TEST_F(GradientFill, AGradientOfNoLengthHasUnitScale) {
  StartMachine();
  Run("10 10 20 20 0 @k");
  const FillDefinition& fill = PayloadOf<FillDefinition>(1);
  EXPECT_EQ(fill.fillScale, 0.0);
  EXPECT_TRUE(std::signbit(fill.fillScale));
  EXPECT_EQ(fill.gradient.angle, 270.0);
  // theta = (0 - 90) / 57.29578 = -1.570796313445772, whose cosine is 1.3349124533716048e-08.
  ExpectMatrix(fill.forwardMatrix, {1.3349124533716048e-08, -1.0, 1.0, 1.3349124533716048e-08, 10.0, 80.0});
}

TEST_F(GradientFill, TheLengthThatCountsAsNoneIsTwoToTheMinus52) {
  StartMachine();
  Run("0 2.220446049250313e-16 0 0 0 @k");
  EXPECT_NEAR(PayloadOf<FillDefinition>(1).forwardMatrix.b, -1.0, 1e-12);
  EXPECT_EQ(PayloadOf<FillDefinition>(1).fillScale, -2.220446049250313e-16);
  // The next number that a double can hold.
  Run("0 2.2204460492503136e-16 0 0 0 @k");
  EXPECT_NEAR(PayloadOf<FillDefinition>(1).forwardMatrix.b, -2.2204460492503136e-16, 1e-27);
}

// --- Placement of a radial gradient

TEST_F(GradientFill, AnUntransformedRadialGradientHasTheAngleMinus180) {
  StartMachine();
  Run("10 20 0 0 4 1 @k");
  const FillDefinition& fill = PayloadOf<FillDefinition>(1);
  EXPECT_NEAR(fill.gradient.angle, -180.0, 1e-12);
  // t = -90 / 57.29578: 4 cos t = 5.339649813486419e-08, 4 sin t = -4.
  ExpectMatrix(fill.forwardMatrix, {5.339649813486419e-08, -4.0, 4.0, 5.339649813486419e-08, 10.0, 80.0});
}

TEST_F(GradientFill, ANegativeRadiusKeepsItsSign) {
  StartMachine();
  Run("10 20 0 0 -4 1 @k");
  const FillDefinition& fill = PayloadOf<FillDefinition>(1);
  EXPECT_EQ(fill.fillScale, 4.0);
  ExpectMatrix(fill.forwardMatrix, {-5.339649813486419e-08, 4.0, -4.0, -5.339649813486419e-08, 10.0, 80.0});
  EXPECT_EQ(TransparencyOf(2).length, 4.0);
}

TEST_F(GradientFill, TheCurrentMatrixHasNoPartInARadialGradient) {
  StartMachine();
  Run("10 20 0 0 4 1 @k");
  const FillDefinition plain = PayloadOf<FillDefinition>(1);
  CurrentFrame().currentMatrix = {0.0, 2.0, -3.0, 0.0, 50.0, 60.0};
  Run("10 20 0 0 4 1 @k");
  EXPECT_EQ(std::memcmp(&plain, commands[1].data, sizeof plain), 0);
}

TEST_F(GradientFill, AZeroRadiusSendsItsQuotientsAsTheyAre) {
  StartMachine();
  GiveStops({{kRed, 0.0, 1.0}});
  EXPECT_EQ(Run("10 20 0 0 0 1 @k"), (Lines{"FILL 0", "FDEF radial 255@0", "TSPY radial 0:100"}));
  // The determinant is 0, its reciprocal infinite, and the products with the zeros of the forward matrix are NaN.
  const FillDefinition& fill = PayloadOf<FillDefinition>(1);
  EXPECT_DOUBLE_EQ(fill.forwardMatrix.a, 0.0);
  EXPECT_TRUE(std::isnan(fill.inverseMatrix.a));
  EXPECT_TRUE(std::isnan(fill.inverseMatrix.e));
}

// --- Stop lists

TEST_F(GradientFill, ALinearListIsExtendedToTheEndAndNotToTheStart) {
  EXPECT_EQ(LinearStops({0.0, 0.5, 1.0}), "FDEF linear 1@0 2@50 3@100");
  EXPECT_EQ(LinearStops({0.25, 0.75}), "FDEF linear 1@25 2@75 2@100");
  EXPECT_EQ(LinearStops({0.0}), "FDEF linear 1@0 1@100");
  EXPECT_EQ(LinearStops({1.0, 0.0}), "FDEF linear 1@0 1@100 2@0 2@100");
}

TEST_F(GradientFill, AnOffsetOfAlmostOneIsCutAndTheColourRepeated) {
  EXPECT_EQ(LinearStops({0.0, 0.999}), "FDEF linear 1@0 2@99 2@100");
}

TEST_F(GradientFill, AFirstStopAtOneIsAddedAtZeroToo) {
  EXPECT_EQ(LinearStops({1.0}), "FDEF linear 1@0 1@100");
  EXPECT_EQ(LinearStops({1.0, 1.0}), "FDEF linear 1@0 1@100 2@100");
  EXPECT_EQ(LinearStops({0.9999999999999999, 1.0}), "FDEF linear 1@99 2@100");
  // A whole unit below zero counts as well.
  EXPECT_EQ(LinearStops({-1.0, 1.0}), "FDEF linear 1@0 1@-100 2@100");
  EXPECT_EQ(LinearStops({-0.5, 1.0}), "FDEF linear 1@-50 2@100");
}

TEST_F(GradientFill, AnOffsetOfFiftyPercentGivesFiveThousand) {
  EXPECT_EQ(LinearStops({0.0, 50.0}), "FDEF linear 1@0 2@5000 2@100");
  EXPECT_EQ(LinearStops({50.0}), "FDEF linear 1@0 1@5000 1@100");
  EXPECT_EQ(RadialStops({50.0}), "FDEF radial 1@5000");
}

TEST_F(GradientFill, PositionsAreCutTowardsZero) {
  // 0.29 * 100.0 is 28.999999999999996 and 0.57 * 100.0 is 56.99999999999999.
  EXPECT_EQ(LinearStops({0.0, 0.29, 0.57, 1.0}), "FDEF linear 1@0 2@28 3@56 4@100");
  EXPECT_EQ(RadialStops({-0.019, 0.019}), "FDEF radial 1@-1 2@1");
}

TEST_F(GradientFill, AnOffsetThatNoIntegerHoldsGivesTheLeastOne) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(RadialStops({infinity, 1e300, -infinity}), "FDEF radial 1@-2147483648 2@-2147483648 3@-2147483648");
  EXPECT_EQ(LinearStops({infinity}), "FDEF linear 1@0 1@-2147483648 1@100");
}

TEST_F(GradientFill, ARadialListHoldsTheStopsAlone) {
  EXPECT_EQ(RadialStops({0.5}), "FDEF radial 1@50");
  EXPECT_EQ(RadialStops({1.0}), "FDEF radial 1@100");
  EXPECT_EQ(RadialStops({0.25, 0.75}), "FDEF radial 1@25 2@75");
}

TEST_F(GradientFill, NoStopsGiveEmptyLists) {
  StartMachine();
  EXPECT_EQ(Run("0 10 0 0 0 @k"), (Lines{"FILL 0", "FDEF linear", "TSPY linear"}));
  EXPECT_EQ(Run("0 0 0 0 5 1 @k"), (Lines{"FILL 0", "FDEF radial", "TSPY radial"}));
}

TEST_F(GradientFill, AStopListTakes101EntriesAndDropsTheRest) {
  struct Case {
    std::size_t stops;
    double last;
    std::uint32_t count;
  };
  // A last stop short of 1 takes one entry more.
  for (const Case& c : {Case{99, 0.5, 100}, Case{100, 0.5, 101}, Case{101, 1.0, 101}, Case{101, 0.5, 101},
                        Case{102, 1.0, 101}, Case{300, 0.5, 101}}) {
    SCOPED_TRACE(testing::Message() << c.stops << " stops, the last at " << c.last);
    std::vector<double> offsets(c.stops, 0.0);
    offsets.back() = c.last;
    LinearStops(offsets);
    RawRecord fill(commands.at(1).data, 1216);
    ASSERT_EQ(fill.At<std::uint32_t>(236), c.count);
    const auto kept = static_cast<std::uint32_t>(c.stops < c.count ? c.stops : c.count);
    EXPECT_EQ(fill.At<std::uint32_t>(240 + 4 * (c.count - 1)), kept);
    // The markers of the transparency know no such bound.
    EXPECT_EQ(TransparencyOf(2).markers.size(), c.stops);
  }
}

TEST_F(GradientFill, ARadialStopListTakes101EntriesAsWell) {
  for (const std::size_t stops : {100u, 101u, 102u}) {
    RadialStops(std::vector<double>(stops, 0.5));
    EXPECT_EQ(PayloadOf<FillDefinition>(1).gradient.stopCount, stops < 101 ? stops : 101) << stops;
    EXPECT_NEAR(PayloadOf<FillDefinition>(1).gradient.angle, -180.0, 1e-12) << "behind the list";
  }
}

// --- The transparency over the fill

TEST_F(GradientFill, TheTransparencyLiesOverTheGeometryOfTheLinearFill) {
  StartMachine(100.0, 0.5);
  Run("10 40 20 60 0 @k");
  const TransparencyView view = TransparencyOf(2);
  EXPECT_EQ(view.type, 3);
  // The forward matrix it is, whatever the name of the call.
  ExpectMatrix(view.worldToFill,
               {-19.999999681556403, -15.000000424591454, 15.000000424591454, -19.999999681556403, 5.0, 40.0});
  EXPECT_EQ(view.length, -25.0);
  // -53.13010235415598 - 90, not brought into any range
  EXPECT_NEAR(view.angle, -143.13010235415598, 1e-12);
}

TEST_F(GradientFill, TheTransparencyLiesOverTheGeometryOfTheRadialFill) {
  StartMachine(100.0, 0.5);
  CurrentFrame().gradientMatrix = {2.0, 0.5, 0.25, 3.0, 5.0, 7.0};
  Run("10 20 0 0 4 1 @k");
  const TransparencyView view = TransparencyOf(2);
  EXPECT_EQ(view.type, 4);
  ExpectMatrix(view.worldToFill,
               {11.627553504436797, -5.8137766986236725, 5.8137766986236725, 11.627553504436797, 15.0, 14.0});
  EXPECT_EQ(view.length, -6.5);
  EXPECT_EQ(view.angle, -90.0);
}

TEST_F(GradientFill, AnOpaqueGradientHasMarkersOf100AllTheSame) {
  EXPECT_EQ(Markers({{0.0, 1.0}, {0.5, 1.0}}), "TSPY linear 0:100 50:100");
}

TEST_F(GradientFill, AMarkerStandsAt99AtMost) {
  EXPECT_EQ(Markers({{0.0, 1.0}, {1.0, 1.0}}), "TSPY linear 0:100 99:100");
  EXPECT_EQ(Markers({{0.98, 1.0}, {0.99, 1.0}, {1.0, 1.0}, {50.0, 1.0}}), "TSPY linear 98:100 99:100 99:100 99:100");
}

TEST_F(GradientFill, NoMarkerIsAddedAtEitherEnd) {
  EXPECT_EQ(Markers({{0.25, 1.0}, {0.75, 0.5}}), "TSPY linear 25:100 75:50");
  EXPECT_EQ(Markers({{1.0, 0.5}}), "TSPY linear 99:50");
}

TEST_F(GradientFill, MarkerOpacitiesAreCutAndNotClamped) {
  // 0.29 * 100.0 is 28.999999999999996.
  EXPECT_EQ(Markers({{0.0, 1.5}, {0.1, 0.29}, {0.2, 0.999}, {0.3, -0.5}, {0.4, 50.0}}),
            "TSPY linear 0:150 10:28 20:99 30:-50 40:5000");
}

TEST_F(GradientFill, CallsTheHostInThisOrder) {
  StartMachine();
  GiveStops({{kRed, 0.0, 1.0}, {kBlue, 1.0, 0.5}});
  const Lines markers = {"CQXShapeTransparency::AddOpacityMarker([0,100])=1",
                         "CQXShapeTransparency::AddOpacityMarker([99,50])=2"};
  HostJournal journal;
  const auto calls = [&] {
    Lines lines = Without(journal.Take(), "MemInitBaseT");
    for (std::string& line : lines) {
      if (line.starts_with("CQXShapeTransparency::ChangeWorldToFillTm(")) line = "matrix";
    }
    return lines;
  };
  Run("0 10 0 0 0 @k");
  EXPECT_EQ(calls(),
            (Lines{"SetToIdentityMatrix()", "SetToIdentityMatrix()", "IsDoubleEqual(10,0,2.220446049250313e-16)=0",
                   "CQXTransparency::CreateTransparency(3)", "matrix"}) +
                markers);
  Run("0 0 0 0 5 1 @k");
  EXPECT_EQ(calls(), (Lines{"SetToIdentityMatrix()", "SetToIdentityMatrix()", "CQXTransparency::CreateTransparency(4)",
                            "matrix"}) +
                         markers);
}

// --- What it leaves behind

TEST_F(GradientFill, TheFillOfTheNextShapeCountsAsGiven) {
  StartMachine();
  EXPECT_EQ(run.paint.GradientFillPending, 0);
  Run("0 10 0 0 0 @k");
  EXPECT_EQ(run.paint.GradientFillPending, 1);
}

TEST_F(GradientFill, TheStopsStayInTheFrame) {
  StartMachine();
  GiveStops({{kRed, 0.0, 1.0}, {kBlue, 1.0, 1.0}});
  const Lines first = Run("0 10 0 0 0 @k");
  EXPECT_EQ(CurrentFrame().stopCount, 2);
  EXPECT_EQ(Run("0 10 0 0 0 @k"), first);
}

TEST_F(GradientFill, AnotherSpellingIsNoGradientFill) {
  StartMachine();
  EXPECT_EQ(Run("0 10 0 0 0 @kk"), Lines{});
  EXPECT_EQ(Run("0 10 0 0 0 @K"), Lines{});
}

TEST_F(GradientFill, NothingIsLostWhereverMemoryRunsOut) {
  StartMachine();
  GiveStops({{kRed, 0.0, 1.0}});
  std::size_t failed = 0;
  for (bool threw = true; threw; ++failed) {
    FailAllocation(failed + 1);
    try {
      threw = false;
      Feed("0 10 0 0 0 @k");
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    FailAllocation(0);
    const Lines lines = Drain();
    EXPECT_EQ(lines.size() == 3, !threw) << failed;
  }
  EXPECT_GT(failed, 1u);
}
