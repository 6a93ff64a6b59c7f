// The operators of the named gradients, the filter's only use of CMYK gradient colours and of spot fills. Nothing in
// the filter fills the table of named gradients, so that an ordinary document never comes here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/matrix.h"

struct OperatorCall;

struct NamedStop {
  std::uint32_t cyan, magenta, yellow, black;  // 0 to 255; the low byte counts
  std::uint32_t tint;                          // percent, of a spot marker
  std::u16string colourName;
};

// An entry that was never filled is blank: an empty name, linear, no stops.
struct NamedGradient {
  std::u16string name;
  std::int32_t type = 0;      // 0 linear, 1 radial
  std::int32_t spotFill = 0;  // 1: a spot fill object is made
  std::vector<NamedStop> stops;
  std::vector<double> positions;  // percent, one for each stop
};

struct GradientPlacement {
  std::u16string gradientName;
  double gradientMatrix[4] = {};  // a, b, c, d
  double gradientOriginX = 0.0, gradientOriginY = 0.0;
  double gradientLength = 0.0;
  double gradientAngle = 0.0;  // degrees
  double gradientAnchorX = 0.0, gradientAnchorY = 0.0;
  double gradientP0[2] = {}, gradientP1[2] = {}, gradientP2[2] = {};
  double gradientVectorAngle = 0.0, gradientVectorLength = 0.0;
};

void OperatorNamedGradient(const OperatorCall&);
void OperatorNamedGradientMatrix(const OperatorCall&);
