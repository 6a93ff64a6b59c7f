// Small functions of the host's headers that the filter exports. The import itself does not call them.
#pragma once

#include "host/export.h"
#include "host/matrix.h"

// Reports a math error with two numbers, if the setting LogMathErrors is not 0. The setting is read once. A message
// that arises while one is being shown is dropped.
HOST_VISIBLE void FloatErrorMsg(int a, int b);

// x' = a*x + c*y + e, y' = b*x + d*y + f, in place.
HOST_VISIBLE void translate_point(double* x, double* y, const TM* m);
