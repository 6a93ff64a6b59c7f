#include "host/matrix.h"

#include <cmath>

#include "headless_host/journal.h"

using headless::JournalCall;
using headless::journaling;

void SetToIdentityMatrix(double* matrix) {
  if (journaling) JournalCall("SetToIdentityMatrix");
  matrix[0] = matrix[3] = 1.0;
  matrix[1] = matrix[2] = matrix[4] = matrix[5] = 0.0;
}

int IsDoubleEqual(double a, double b, double tolerance) {
  const int equal = std::fabs(a - b) <= tolerance ? 1 : 0;
  if (journaling) JournalCall("IsDoubleEqual", a, b, tolerance).Result(equal);
  return equal;
}

void mul_tm(TM* m1, const TM* m2) {
  if (journaling) JournalCall("mul_tm");
  const TM p = *m1;
  const TM q = *m2;
  m1->a = p.a * q.a + p.b * q.c;
  m1->b = p.a * q.b + p.b * q.d;
  m1->c = p.c * q.a + p.d * q.c;
  m1->d = p.c * q.b + p.d * q.d;
  m1->e = p.e * q.a + p.f * q.c + q.e;
  m1->f = p.e * q.b + p.f * q.d + q.f;
}

void set_itm(TM* out, const TM* in) {
  if (journaling) JournalCall("set_itm");
  const TM m = *in;
  const double i = 1.0 / (m.d * m.a - m.c * m.b);
  out->a = m.d * i;
  out->b = -m.b * i;
  out->c = -m.c * i;
  out->d = m.a * i;
  out->e = -(m.d * i) * m.e + (m.c * i) * m.f;
  out->f = (m.b * i) * m.e - (m.a * i) * m.f;
}
