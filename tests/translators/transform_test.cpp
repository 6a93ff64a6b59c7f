#include "translators/transform.h"

#include <cmath>
#include <vector>

#include "tests/support/filter_test.h"

namespace {

// "a b c d e f"
std::string Show(const TM& m) {
  std::string text;
  for (double value : {m.a, m.b, m.c, m.d, m.e, m.f}) text += (text.empty() ? "" : " ") + ShowNumber(value);
  return text;
}

const std::string kUntouched = "1 0 0 1 0 0";

class Transform : public FilterTest {
 protected:
  Transform() { StartMachine(); }

  // The matrix that the text makes of the identity.
  static TM Parse(std::string_view text, MatrixTarget target = MatrixTarget::Current) {
    CurrentFrame().currentMatrix = CurrentFrame().gradientMatrix = kIdentity;
    // Nothing stands behind the text, so that a read past its end is seen.
    const std::vector<char16_t> units(text.begin(), text.end());
    ParseTransform({units.data(), units.size()}, target);
    return target == MatrixTarget::Current ? CurrentFrame().currentMatrix : CurrentFrame().gradientMatrix;
  }

  struct Case {
    const char* text;
    std::string matrix;
  };
  template <std::size_t n>
  static void Expect(const Case (&cases)[n]) {
    for (const Case& c : cases) {
      SCOPED_TRACE(c.text);
      EXPECT_EQ(Show(Parse(c.text)), c.matrix);
    }
  }
};

}  // namespace

// --- Functions

TEST_F(Transform, TranslateTakesBlanksOrACommaBetweenItsNumbers) {
  Expect({
      {"translate(10 20)", "1 0 0 1 10 20"},
      {"translate(10,20)", "1 0 0 1 10 20"},
      {"translate(10, 20)", "1 0 0 1 10 20"},
      {"translate( 10\t\n20 )", "1 0 0 1 10 20"},
      {"translate(10-20)", "1 0 0 1 10 -20"},
      {"translate(1.5.5)", "1 0 0 1 1.5 0.5"},
      {"translate(+1e1,-.5e-1)", "1 0 0 1 10 -0.05"},
  });
}

TEST_F(Transform, TranslateOfOneNumberMovesInXOnly) {
  Expect({
      {"translate(10)", "1 0 0 1 10 0"},
      {"translate(10 ,20)", "1 0 0 1 10 0"},  // neither scan passes a comma behind a blank
      {"translate(10px,20px)", "1 0 0 1 10 0"},
      {"translate(10,,20)", "1 0 0 1 10 0"},
      {"translate(10;20)", "1 0 0 1 10 0"},
  });
}

TEST_F(Transform, ScaleOfOneNumberScalesBothAxes) {
  Expect({
      {"scale(2)", "2 0 0 2 0 0"},
      {"scale(2,3)", "2 0 0 3 0 0"},
      {"scale(2 3)", "2 0 0 3 0 0"},
      {"scale(2, -3)", "2 0 0 -3 0 0"},
      {"scale(2 ,3)", "2 0 0 2 0 0"},
      {"scale(0)", "0 0 0 0 0 0"},
  });
}

TEST_F(Transform, MatrixTakesSixNumbersInOneManner) {
  Expect({
      {"matrix(1 2 3 4 5 6)", "1 2 3 4 5 6"},
      {"matrix(1,2,3,4,5,6)", "1 2 3 4 5 6"},
      {"matrix(1, 2, 3, 4, 5, 6)", "1 2 3 4 5 6"},
      {"matrix(1 2 3 4 5 6 7)", "1 2 3 4 5 6"},
      {"matrix(1-2-3-4-5-6)", "1 -2 -3 -4 -5 -6"},
      {"matrix(2 0,0 2,5 5)", kUntouched},
      {"matrix(2,0 0,2 5,5)", kUntouched},
      {"matrix(2 0 0 2 5)", kUntouched},
      {"matrix(2,0,0,2,5)", kUntouched},
  });
}

TEST_F(Transform, RotateReadsNoCentre) {
  const TM plain = Parse("rotate(45)");
  EXPECT_NEAR(plain.a, std::sqrt(0.5), 1e-8);
  EXPECT_NEAR(plain.b, std::sqrt(0.5), 1e-8);
  EXPECT_NEAR(plain.c, -std::sqrt(0.5), 1e-8);
  EXPECT_NEAR(plain.d, std::sqrt(0.5), 1e-8);
  EXPECT_EQ(Show(Parse("rotate(45 10 20)")), Show(plain));
  EXPECT_EQ(Show(Parse("rotate(45,10,20)")), Show(plain));
  EXPECT_EQ(Show(Parse("rotate(45deg)")), Show(plain));
}

TEST_F(Transform, AnglesAreDividedByTheShortConstant) {
  // 57.29578 exceeds 180 / pi by 4.869e-7: a quarter turn falls short by (pi / 2) * 4.869e-7 / 57.29578.
  const TM quarter = Parse("rotate(90)");
  EXPECT_NEAR(quarter.a, 1.3349e-8, 1e-12);
  EXPECT_NEAR(quarter.d, 1.3349e-8, 1e-12);
  EXPECT_DOUBLE_EQ(quarter.b, 1.0);
  EXPECT_DOUBLE_EQ(quarter.c, -1.0);
  EXPECT_DOUBLE_EQ(Parse("skewX(45)").c, std::tan(45 / 57.29578));
  EXPECT_DOUBLE_EQ(Parse("skewY(45)").b, std::tan(45 / 57.29578));
}

TEST_F(Transform, SkewsFillOneMemberEach) {
  const TM x = Parse("skewX(30)");
  EXPECT_EQ(Show({x.a, x.b, 0, x.d, x.e, x.f}), "1 0 0 1 0 0");
  EXPECT_NEAR(x.c, 0.57735, 1e-5);
  const TM y = Parse("skewY(30)");
  EXPECT_EQ(Show({y.a, 0, y.c, y.d, y.e, y.f}), "1 0 0 1 0 0");
  EXPECT_NEAR(y.b, 0.57735, 1e-5);
}

TEST_F(Transform, FunctionWithoutANumberMultipliesNothing) {
  for (const char* text : {"translate()", "translate(x)", "translate(,5)", "scale()", "scale(,5)", "matrix()",
                           "rotate()", "rotate(x)", "rotate(,1,2,3,4,5,6)", "skewX()", "skewY( )", "translate(-)"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Show(Parse(text)), kUntouched);
    // And the parse goes on behind it.
    EXPECT_EQ(Show(Parse(std::string(text) + " scale(2)")), "2 0 0 2 0 0");
  }
}

// --- How a function is told

TEST_F(Transform, FunctionsAreToldByALetterAtOnePlace) {
  const std::string rotated = Show(Parse("rotate(30)"));
  const std::string skewedX = Show(Parse("skewX(30)"));
  const std::string skewedY = Show(Parse("skewY(30)"));
  Expect({
      {"turnaround(3)", "1 0 0 1 3 0"},
      {"t(3)", "1 0 0 1 3 0"},
      {"tRANSLATE(3)", "1 0 0 1 3 0"},
      {"scX(2)", "2 0 0 2 0 0"},
      {"scalX(2)", "2 0 0 2 0 0"},  // scale is asked for before the skews
      {"saleX(30)", skewedX},
      {"s123Y(30)", skewedY},
      {"mX(1 2 3 4 5 6)", "1 2 3 4 5 6"},
      {"r(30)", rotated},
      {"rotateX(30)", rotated},
  });
}

TEST_F(Transform, UnknownWordEndsTheParse) {
  const std::string rotated = Show(Parse("rotate(30)"));
  Expect({
      {"Translate(1,2)", kUntouched},
      {"Translate(1,2) scale(2)", kUntouched},
      {"rotate(30) Matrix(1 0 0 1 5 5) scale(2)", rotated},
      {"SCALE(2)", kUntouched},
      {"skewx(30) scale(2)", kUntouched},
      {"skew(30) scale(2)", kUntouched},
      {"s(2) scale(2)", kUntouched},
      {"s", kUntouched},
      {"SkewX(30) scale(2)", kUntouched},
      {"none", kUntouched},
      {"scale(2) 5 translate(1 2)", "2 0 0 2 0 0"},
  });
}

// --- Order and separators

TEST_F(Transform, LastFunctionActsFirst) {
  Expect({
      {"translate(1,2) scale(3)", "3 0 0 3 1 2"},  // (1, 1) goes to (4, 5)
      {"scale(3) translate(1,2)", "3 0 0 3 3 6"},
      // (1, 0, 0, 1, 10, 20) times (0, 1, -1, 0, 0, 0) times (2, 0, 0, 3, 0, 0).
      {"translate(10 20) matrix(0 1 -1 0 0 0) scale(2 3)", "0 2 -3 0 10 20"},
      // a = 1*7 + 3*8, b = 2*7 + 4*8, c = 1*9 + 3*10, d = 2*9 + 4*10, e = 1*11 + 3*12 + 5, f = 2*11 + 4*12 + 6
      {"matrix(1 2 3 4 5 6) matrix(7 8 9 10 11 12)", "31 46 39 58 52 76"},
  });
}

TEST_F(Transform, MultipliesIntoWhatTheFrameHolds) {
  CurrentFrame().currentMatrix = {2, 0, 0, 3, 10, 20};
  ParseTransform(u"translate(5 7)", MatrixTarget::Current);
  EXPECT_EQ(Show(CurrentFrame().currentMatrix), "2 0 0 3 20 41");
}

TEST_F(Transform, FunctionsStandApartByBlanksByACommaOrByNothing) {
  for (const char* text : {"translate(1,2)scale(3)", "translate(1,2) scale(3)", "translate(1,2),scale(3)",
                           "translate(1,2), scale(3)", "translate(1,2)\t\r\n scale(3)", "  translate(1,2)scale(3)  ",
                           ",translate(1,2),scale(3),", "translate(1,2),\n\t scale(3)", "translate (1,2) scale\n(3)"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Show(Parse(text)), "3 0 0 3 1 2");
  }
}

TEST_F(Transform, OnlyACommaRightBehindAFunctionIsPassedOver) {
  for (const char* text : {"translate(1,2) ,scale(3)", "translate(1,2),,scale(3)", "translate(1,2)\t,scale(3)",
                           "translate(1,2), ,scale(3)", "translate(1,2)\vscale(3)", "translate(1,2)\fscale(3)"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Show(Parse(text)), "1 0 0 1 1 2");
  }
}

TEST_F(Transform, EmptyOrBlankTextChangesNothing) {
  for (const char* text : {"", " ", "\t\r\n", ",", " , "}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Show(Parse(text)), kUntouched);
  }
}

// --- Parentheses

TEST_F(Transform, ParenthesesAreTheFirstFromTheStartOfTheFunction) {
  Expect({
      // The one that opens belongs to the next function, and so does the one that closes.
      {"translate scale(2)", "1 0 0 1 2 0"},
      // The one that closes comes first: the parse goes on at "(5)", which is no function.
      {"t)(5) scale(2)", "1 0 0 1 5 0"},
      {"t)scale(2)", "2 0 0 2 2 0"},
      // Without one that opens nothing is multiplied, and the parse goes on behind the one that closes.
      {"translate 5) 6", kUntouched},
      {"scale(3) translate)", "3 0 0 3 0 0"},
  });
}

TEST_F(Transform, FunctionThatIsNotClosedIsAppliedAndEndsTheParse) {
  Expect({
      {"translate(1,2", "1 0 0 1 1 2"},
      {"scale(2", "2 0 0 2 0 0"},
      {"scale(2 translate(1,2)", "2 0 0 2 0 0"},  // closed by the next one's, behind which nothing stands
      {"scale", kUntouched},
      {"scale(", kUntouched},
      {"scale(3) scale", "3 0 0 3 0 0"},
  });
}

// --- The gradient matrix

TEST_F(Transform, GradientTargetLeavesTheCurrentMatrix) {
  const std::string rotated = Show(Parse("rotate(30)"));
  const std::string skewed = Show(Parse("skewY(30)"));
  const Case cases[] = {
      {"translate(1,2)", "1 0 0 1 1 2"},
      {"scale(2)", "2 0 0 2 0 0"},
      {"rotate(30)", rotated},
      {"skewY(30)", skewed},
      {"matrix(1 2 3 4 5 6)", "1 2 3 4 5 6"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(Show(Parse(c.text, MatrixTarget::Gradient)), c.matrix);
    EXPECT_EQ(Show(CurrentFrame().currentMatrix), kUntouched);
    Parse(c.text, MatrixTarget::Current);
    EXPECT_EQ(Show(CurrentFrame().gradientMatrix), kUntouched);
  }
}

TEST_F(Transform, SkewXAlwaysGoesIntoTheCurrentMatrix) {
  const TM gradient = Parse("scale(2) skewX(45) translate(3 4)", MatrixTarget::Gradient);
  EXPECT_EQ(Show(gradient), "2 0 0 2 6 8");
  const TM current = CurrentFrame().currentMatrix;
  EXPECT_NEAR(current.c, 1.0, 1e-7);
  EXPECT_EQ(Show({current.a, current.b, 0, current.d, current.e, current.f}), kUntouched);
}

// --- In a document

TEST_F(Transform, ElementIsDrawnThroughItsTransformWithinThatOfItsGroup) {
  // (1, 1) goes to (4, 5) and then 10 to the right; of the document's units ten make one, from 10 downwards.
  const Lines lines = ImportBody(
      "<g transform=\"translate(10)\"><path transform=\"translate(1,2) scale(3)\" style=\"fill:none\" d=\"M1 1L2 "
      "1\"/></g>");
  EXPECT_EQ(CountOf(lines, "LINE 1.4,9.5 1.7,9.5"), 1u);
}
