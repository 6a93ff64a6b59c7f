// The host's affine matrix and the helpers that work on it.
//
// A matrix maps (x, y) to (a*x + c*y + e, b*x + d*y + f).
#pragma once

struct TM {
  double a, b, c, d, e, f;
};
static_assert(sizeof(TM) == 48);

// Writes the identity into six doubles.
void SetToIdentityMatrix(double* matrix);

// Non-zero when a and b lie within `tolerance` of each other, the tolerance itself included.
int IsDoubleEqual(double a, double b, double tolerance);

// Applies m1 first, then m2, and stores the product in m1.
void mul_tm(TM* m1, const TM* m2);

// Writes the inverse of `in` into `out`. A singular matrix gives infinities or NaN.
void set_itm(TM* out, const TM* in);
