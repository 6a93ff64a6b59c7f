#include "host/matrix.h"

#include <cmath>
#include <limits>

#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

namespace {

void ExpectMatrix(const TM& m, double a, double b, double c, double d, double e, double f) {
  EXPECT_EQ(m.a, a);
  EXPECT_EQ(m.b, b);
  EXPECT_EQ(m.c, c);
  EXPECT_EQ(m.d, d);
  EXPECT_EQ(m.e, e);
  EXPECT_EQ(m.f, f);
}

}  // namespace

TEST(HostMatrix, IdentityIsWrittenIntoSixDoubles) {
  double m[7] = {9, 9, 9, 9, 9, 9, 9};
  SetToIdentityMatrix(m);
  const double expected[7] = {1, 0, 0, 1, 0, 0, 9};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(m[i], expected[i]);
}

TEST(HostMatrix, NumbersAreEqualUpToAndAtTheTolerance) {
  EXPECT_NE(IsDoubleEqual(1.0, 1.5, 0.5), 0);
  EXPECT_NE(IsDoubleEqual(1.5, 1.0, 0.5), 0);
  EXPECT_EQ(IsDoubleEqual(1.0, 1.75, 0.5), 0);
  EXPECT_NE(IsDoubleEqual(3.0, 3.0, 0.0), 0);
  EXPECT_EQ(IsDoubleEqual(std::nan(""), 0.0, 1.0), 0);
}

TEST(HostMatrix, TheProductAppliesTheFirstMatrixFirst) {
  TM scale = {2, 0, 0, 3, 0, 0};
  const TM move = {1, 0, 0, 1, 10, 20};
  mul_tm(&scale, &move);  // (x, y) to (2x + 10, 3y + 20)
  ExpectMatrix(scale, 2, 0, 0, 3, 10, 20);

  TM moveFirst = move;
  const TM scaleOnly = {2, 0, 0, 3, 0, 0};
  mul_tm(&moveFirst, &scaleOnly);  // (x, y) to (2(x + 10), 3(y + 20))
  ExpectMatrix(moveFirst, 2, 0, 0, 3, 20, 60);
}

TEST(HostMatrix, TheProductOfFullMatrices) {
  TM m = {1, 2, 3, 4, 5, 6};
  const TM n = {7, 8, 9, 10, 11, 12};
  mul_tm(&m, &n);
  ExpectMatrix(m, 1 * 7 + 2 * 9, 1 * 8 + 2 * 10, 3 * 7 + 4 * 9, 3 * 8 + 4 * 10, 5 * 7 + 6 * 9 + 11,
               5 * 8 + 6 * 10 + 12);
}

TEST(HostMatrix, AMatrixCanBeMultipliedByItself) {
  TM m = {2, 0, 0, 2, 1, 1};
  mul_tm(&m, &m);
  ExpectMatrix(m, 4, 0, 0, 4, 3, 3);
}

TEST(HostMatrix, TheInverseTakesAPointBack) {
  const TM m = {2, 1, -1, 4, 5, 7};
  TM inverse;
  set_itm(&inverse, &m);
  // The determinant is 9.
  EXPECT_DOUBLE_EQ(inverse.a, 4.0 / 9);
  EXPECT_DOUBLE_EQ(inverse.b, -1.0 / 9);
  EXPECT_DOUBLE_EQ(inverse.c, 1.0 / 9);
  EXPECT_DOUBLE_EQ(inverse.d, 2.0 / 9);
  EXPECT_DOUBLE_EQ(inverse.e, -27.0 / 9);  // (1 * -7 - 4 * 5) / 9
  EXPECT_DOUBLE_EQ(inverse.f, -9.0 / 9);   // (1 * 5 - 2 * 7) / 9
}

TEST(HostMatrix, AMatrixCanBeReplacedByItsInverse) {
  TM m = {2, 0, 0, 4, 6, 8};
  set_itm(&m, &m);
  ExpectMatrix(m, 0.5, 0, 0, 0.25, -3, -2);
}

TEST(HostMatrix, ASingularMatrixGivesNoFiniteInverse) {
  const TM m = {1, 2, 2, 4, 0, 0};
  TM inverse;
  set_itm(&inverse, &m);
  EXPECT_FALSE(std::isfinite(inverse.a));
  EXPECT_FALSE(std::isfinite(inverse.d));
}
