#include "operators/line_attributes.h"

#include <cmath>

#include "tests/support/filter_test.h"

namespace {

class LineAttributes : public FilterTest {
 protected:
  LineAttributes() { StartMachine(100.0, 0.5); }

  static double Width() { return CurrentFrame().lineWidth; }
};

}  // namespace

// --- w

TEST_F(LineAttributes, WidthIsScaledStoredAndSent) {
  EXPECT_EQ(Run("3 w"), Lines{"WIDT 1.5"});
  EXPECT_EQ(Width(), 1.5);
}

TEST_F(LineAttributes, WidthZeroBecomesAThousandthBeforeTheScale) {
  EXPECT_EQ(Run("0 w"), Lines{"WIDT 0.0005"});
  EXPECT_EQ(Width(), 0.0005);
  EXPECT_EQ(Run("-0 w"), Lines{"WIDT 0.0005"});
}

TEST_F(LineAttributes, OnlyZeroItselfBecomesAThousandth) {
  EXPECT_EQ(Run("0.00002 w"), Lines{"WIDT 1e-05"});
  EXPECT_EQ(Run("-4 w"), Lines{"WIDT -2"});
}

TEST_F(LineAttributes, WidthWithoutAnOperandDoesNothing) {
  CurrentFrame().lineWidth = 7.0;
  EXPECT_EQ(Run("w"), Lines());
  EXPECT_EQ(Width(), 7.0);
}

TEST_F(LineAttributes, WidthIsStoredEvenWhenItsRecordFindsNoMemory) {
  FailAllocation(1);
  EXPECT_EQ(Run("3 w"), Lines());
  EXPECT_EQ(Width(), 1.5);
}

// --- wPn

TEST_F(LineAttributes, WidthOfTwoAxesIsTheirGeometricMean) {
  CurrentFrame().currentMatrix = {3, 0, 4, 5, 7, 8};  // not looked at
  EXPECT_EQ(Run("4 9 1 wPn"), Lines{"WIDT 3"});       // sqrt(36) * 0.5
  EXPECT_EQ(Width(), 3.0);
  EXPECT_EQ(Operands(), Lines());
}

TEST_F(LineAttributes, WidthOfTwoAxesAsTheEighthTokenGoesThroughTheMatrix) {
  CurrentFrame().currentMatrix = {3, 0, 4, 5, 7, 8};
  // hypot(b, d) = hypot(0, 5) = 5, hypot(a, c) = hypot(3, 4) = 5: 6 * sqrt(25) * 0.5
  EXPECT_EQ(Run("1 1 1 1 4 9 1 wPn"), Lines{"WIDT 15"});
  EXPECT_EQ(Operands(), (Lines{"Number 1", "Number 1", "Number 1", "Number 1"}));
  // The seventh and the ninth token do not.
  EXPECT_EQ(Run("1 1 1 4 9 1 wPn"), Lines{"WIDT 3"});
  EXPECT_EQ(Run("1 1 1 1 1 4 9 1 wPn"), Lines{"WIDT 3"});
}

TEST_F(LineAttributes, WidthOfTwoAxesReadsMissingOnesAsZero) {
  // And zero stays zero here.
  for (const char* program : {"wPn", "1 wPn", "9 1 wPn"}) {
    SCOPED_TRACE(program);
    EXPECT_EQ(Run(program), Lines{"WIDT 0"});
  }
}

TEST_F(LineAttributes, WidthOfAxesOfOppositeSignsIsNoNumber) {
  ASSERT_EQ(Run("-4 9 1 wPn").size(), 1u);
  EXPECT_TRUE(std::isnan(PayloadOf<double>(0)));
}

TEST_F(LineAttributes, WidthOfTwoAxesGivesTheFillWordToTheOutline) {
  CurrentFrame().fill.colour = 0x112233;
  CurrentFrame().fill.isRgb = 1;
  CurrentFrame().outline.colour = -1;
  Run("4 9 1 wPn");
  EXPECT_EQ(CurrentFrame().outline.colour, 0x112233);
  EXPECT_EQ(CurrentFrame().outline.isRgb, 0u);  // the word alone
}

TEST_F(LineAttributes, WidthOfTwoAxesIsLostWhenItsRecordFindsNoMemory) {
  CurrentFrame().lineWidth = 7.0;
  CurrentFrame().fill.colour = 0x112233;
  FailAllocation(1);
  EXPECT_EQ(Run("4 9 1 wPn"), Lines());
  EXPECT_EQ(Width(), 7.0);
  EXPECT_EQ(CurrentFrame().outline.colour, 0x112233);  // which was written before
}

// --- @w

// The scale is 0.5. Without a matrix or an angle the width is sqrt(sx * sy).
TEST_F(LineAttributes, WidthThroughAMatrix) {
  const struct {
    const char* program;
    const char* line;
  } cases[] = {
      // Matrix under the top: sx sy angle [matrix] flag.
      {"2 8 0 [1 0.75 0 1 0 0] 0 @w", "WIDT8 2"},
      // (1, 0.75, 0, 1) then (10, 0, 0, 8): a 10, b 6, c 0, d 8: sqrt(hypot(10, 0) * hypot(6, 8)) = 10.
      {"10 8 0 [1 0.75 0 1 0 0] 1 @w", "WIDT8 5"},
      {"10 8 0 [1 0.75 0 1 0 0] -0.5 @w", "WIDT8 5"},
      // The offsets of the matrix and what stands behind its sixth number do not matter.
      {"10 8 0 [1 0.75 0 1 90 70 5 5] 1 @w", "WIDT8 5"},
      // At 45 degrees both lengths are sqrt((sx * sx + sy * sy) / 2) = sqrt(50).
      {"6 8 45 [] 0 @w", "WIDT8 3.535533906"},
      // A short matrix is zero behind its numbers: a 4, the rest 0.
      {"2 2 0 [2] 1 @w", "WIDT8 0"},
      {"2 2 0 [2 3] 1 @w", "WIDT8 2.449489743"},  // a 4, b 6, c and d 0: sqrt(4 * 6) * 0.5

      // Angle on top: [matrix] flag sx sy angle.
      {"[1 0.75 0 1 0 0] 0 2 8 0 @w", "WIDT8 2"},
      {"[1 0.75 0 1 0 0] 1 10 8 0 @w", "WIDT8 5"},
      {"0 6 8 45 @w", "WIDT8 3.535533906"},
      // A flag without an array below: the matrix is zero.
      {"1 10 8 0 @w", "WIDT8 0"},
      // A number in the array's place is no matrix either.
      {"5 1 10 8 0 @w", "WIDT8 0"},
      // Without a flag the angle is the flag.
      {"2 8 0 @w", "WIDT8 2"},
      {"2 8 45 @w", "WIDT8 0"},
      // Without sx it is 0.
      {"8 0 @w", "WIDT8 0"},
      // The same with the matrix under the top.
      {"[1 0 0 1 0 0] 0 @w", "WIDT8 0"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.program);
    ClearOperands();
    EXPECT_EQ(Run(c.program), Lines{c.line});
    EXPECT_EQ(Width(), PayloadOf<double>(0));
  }
}

TEST_F(LineAttributes, WidthThroughAMatrixTurnsByTheAngleThenByTheMatrix) {
  // sx 4, sy 2, 30 degrees: M = (2 sqrt 3, 2, -1, sqrt 3). With (1, 3, 0, 1) in front:
  // a = 2 sqrt 3 - 3, b = 2 + 3 sqrt 3, c = -1, d = sqrt 3.
  const double root3 = std::sqrt(3.0);
  const double expected = 0.5 * std::sqrt(std::hypot(2 * root3 - 3, -1.0) * std::hypot(2 + 3 * root3, root3));
  ASSERT_EQ(Run("4 2 30 [1 3 0 1 0 0] 1 @w").size(), 1u);
  EXPECT_NEAR(PayloadOf<double>(0), expected, 1e-14);
  ASSERT_EQ(Run("[1 3 0 1 0 0] 1 4 2 30 @w").size(), 1u);
  EXPECT_NEAR(PayloadOf<double>(0), expected, 1e-14);
}

TEST_F(LineAttributes, WidthThroughAMatrixTakesTheArrayOnlyWithAFlag) {
  Run("9 [1 2] 0 2 8 0 @w");
  EXPECT_EQ(Operands(), (Lines{"Array 1 2", "Number 9"}));
  ClearOperands();
  Run("9 [1 2] 1 2 8 0 @w");
  EXPECT_EQ(Operands(), Lines{"Number 9"});
  ClearOperands();
  Run("9 2 8 0 [1 2] 0 @w");
  EXPECT_EQ(Operands(), Lines{"Number 9"});
}

TEST_F(LineAttributes, WidthThroughAMatrixOfOneOperandPopsIt) {
  CurrentFrame().lineWidth = 7.0;
  EXPECT_EQ(Run("@w"), Lines());
  EXPECT_EQ(Run("5 @w"), Lines());
  EXPECT_EQ(Operands(), Lines());
  EXPECT_EQ(Width(), 7.0);
}

TEST_F(LineAttributes, WidthThroughAMatrixIsLostWhenItsRecordFindsNoMemory) {
  CurrentFrame().lineWidth = 7.0;
  FailAllocation(1);
  EXPECT_EQ(Run("2 8 0 @w"), Lines());
  EXPECT_EQ(Width(), 7.0);
}

// --- Caps and joins

TEST_F(LineAttributes, CapsAreNumberedAnew) {
  const struct {
    const char* program;
    std::int32_t cap;
  } cases[] = {{"0 J", 0}, {"1 J", 2}, {"2 J", 1}, {"3 J", 0}, {"-1 J", 0}, {"1.9 J", 2}, {"J", 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.program);
    CurrentFrame().lineCap = 7;
    EXPECT_EQ(Run(c.program), Lines{"LNST " + std::to_string(c.cap)});
    EXPECT_EQ(CurrentFrame().lineCap, c.cap);
  }
}

TEST_F(LineAttributes, JoinsAndTheirLimits) {
  const struct {
    const char* program;
    Lines lines;
    std::int32_t join, limit, active;
  } cases[] = {
      {"0 j", {"CNST 2", "MLIM 100"}, 2, 100, 2},
      {"j", {"CNST 2", "MLIM 100"}, 2, 100, 2},
      {"0.9 j", {"CNST 2", "MLIM 100"}, 2, 100, 2},
      {"1 j", {"CNST 0"}, 0, 0, 0},
      {"2 j", {"CNST 2", "MLIM 600"}, 2, 600, 2},
      {"3 j", {"CNST 3"}, 3, 0, 0},
      {"-1 j", {"CNST -1"}, -1, 0, 0},
      {"1e10 j", {"CNST -2147483648"}, INT32_MIN, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.program);
    GraphicsState& frame = CurrentFrame();
    frame.lineJoin = 7;
    frame.miterLimit = frame.miterLimitActive = 0;
    EXPECT_EQ(Run(c.program), c.lines);
    EXPECT_EQ(frame.lineJoin, c.join);
    EXPECT_EQ(frame.miterLimit, c.limit);
    EXPECT_EQ(frame.miterLimitActive, c.active);
  }
}

TEST_F(LineAttributes, LimitOnceSetGoesOutAfterEveryJoin) {
  EXPECT_EQ(Run("0 j 1 j 5 j"), (Lines{"CNST 2", "MLIM 100", "CNST 0", "MLIM 100", "CNST 5", "MLIM 100"}));
  EXPECT_EQ(Run("2 j 1 j"), (Lines{"CNST 2", "MLIM 600", "CNST 0", "MLIM 600"}));
}

TEST_F(LineAttributes, LimitIsInherited) {
  EXPECT_EQ(Run("2 j gs 1 j gr"), (Lines{"CNST 2", "MLIM 600", "CNST 0", "MLIM 600"}));
}

TEST_F(LineAttributes, LimitEndsWithItsFrame) {
  EXPECT_EQ(Run("gs 2 j gr 1 j"), (Lines{"CNST 2", "MLIM 600", "CNST 0"}));
}

TEST_F(LineAttributes, LimitIsSentOnlyWhenItsFlagIsTwo) {
  CurrentFrame().miterLimit = 300;
  for (std::int32_t active : {1, 3}) {
    SCOPED_TRACE(active);
    CurrentFrame().miterLimitActive = active;
    EXPECT_EQ(Run("1 j"), Lines{"CNST 0"});
  }
}

// --- Dashes and flatness

TEST_F(LineAttributes, DashesAreTakenOffAndForgotten) {
  EXPECT_EQ(Run("9 [3 1] 0 d"), Lines());
  EXPECT_EQ(Operands(), Lines{"Number 9"});
  EXPECT_EQ(Run("d d"), Lines());
  EXPECT_EQ(Operands(), Lines());
}

TEST_F(LineAttributes, FlatnessIsTakenOffAndForgotten) {
  EXPECT_EQ(Run("9 3 i"), Lines());
  EXPECT_EQ(Operands(), Lines{"Number 9"});
  EXPECT_EQ(Run("i i"), Lines());
  EXPECT_EQ(Operands(), Lines());
}
