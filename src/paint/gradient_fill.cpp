#include "paint/gradient_fill.h"

#include <cmath>

#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "paint/transparency.h"
#include "run/command_queue.h"
#include "run/host_memory.h"
#include "run/import_run.h"
#include "run/number_text.h"

namespace {

// Four forms of one constant; each stands where it is meant.
constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr double kShortDegreesPerRadian = 57.29578;
constexpr double kRadialDegreesPerRadian = 57.2957795;

constexpr double kEpsilon = 2.220446049250313e-16;

void SetMatrices(FillDefinition& fill, const TM& forward) {
  const auto [a, b, c, d, e, f] = forward;
  const double i = 1.0 / (d * a - c * b);
  fill.forwardMatrix = forward;
  fill.inverseMatrix = TM{d * i, -b * i, -c * i, a * i, -(d * i) * e + (c * i) * f, (b * i) * e - (a * i) * f};
}

// Writes both matrices and the angle of a linear fill, and returns the forward matrix. The angle is in radians, the
// length in host units, the start in user space; y is turned here.
TM PlaceLinearFill(double angleRadians, double length, double startX, double startY, FillDefinition& fill) {
  const double degrees = angleRadians * kDegreesPerRadian;
  const double theta = (degrees - 90.0) / kShortDegreesPerRadian;
  fill.gradient.angle = degrees < 90.0 ? degrees + 270.0 : degrees - 90.0;
  const double s = IsDoubleEqual(length, 0.0, kEpsilon) ? 1.0 : length;
  const TM forward = {s * std::cos(theta),    s * std::sin(theta),
                      -s * std::sin(theta),   s * std::cos(theta),
                      run.UnitScale * startX, run.UnitScale * run.DocHeight - run.UnitScale * startY};
  SetMatrices(fill, forward);
  return forward;
}

// Both ends of the list are filled up, but by different tests: the first looks at the raw offset, the last at percent.
void FillLinearColours(FillDefinition& fill) {
  const GraphicsState& frame = CurrentFrame();
  BeginStopList(fill, kLinearFill);
  for (std::int32_t i = 0; i < frame.stopCount; ++i) {
    const GradientStop& stop = frame.stops->Stops()[i];
    const std::int32_t position = Truncate(stop.offset * 100.0);
    if (i == 0 && Truncate(stop.offset) != 0) AddStop(fill, stop.rgb, 0);
    AddStop(fill, stop.rgb, position);
    if (i == frame.stopCount - 1 && position != 100) AddStop(fill, stop.rgb, 100);
  }
}

void FillRadialColours(FillDefinition& fill) {
  const GraphicsState& frame = CurrentFrame();
  BeginStopList(fill, kRadialFill);
  for (std::int32_t i = 0; i < frame.stopCount; ++i) {
    const GradientStop& stop = frame.stops->Stops()[i];
    AddStop(fill, stop.rgb, Truncate(stop.offset * 100.0));
  }
}

struct LinearGeometry {
  double x1, y1, x2, y2;
};

// Only the start goes through the gradient matrix, and of the current matrix only the rotation counts. Returns the
// angle.
double FillLinear(const LinearGeometry& g, FillDefinition& fill, TM* forward) {
  const GraphicsState& frame = CurrentFrame();
  const TM& gradient = frame.gradientMatrix;
  const double dx = g.x2 - g.x1;
  const double dy = g.y2 - g.y1;
  const double length = std::sqrt(dy * dy + dx * dx) * run.UnitScale;
  const double angle = (-1.0 * std::atan2(dy, dx)) - (-1.0 * std::atan2(frame.currentMatrix.c, frame.currentMatrix.a));
  const double startX = g.y1 * gradient.c + g.x1 * gradient.a + gradient.e;
  const double startY = g.y1 * gradient.d + g.x1 * gradient.b + gradient.f;
  fill.fillScale = -1.0 * length;
  *forward = PlaceLinearFill(angle, length, startX, startY, fill);
  FillLinearColours(fill);
  return angle;
}

// The radius is transformed as the point (r, 0), and its matrix is in user units, where offset and scale are in host
// units: this is meant.
void FillRadial(double cx, double cy, double r, FillDefinition& fill, TM* forward) {
  const TM& gradient = CurrentFrame().gradientMatrix;
  const double centreX = gradient.a * cx + gradient.c * cy + gradient.e;
  const double centreY = gradient.d * cy + gradient.b * cx + gradient.f;
  const double radius = gradient.a * r + gradient.e;
  fill.fillScale = run.UnitScale * radius * -1.0;
  const double t = (std::atan2(gradient.b, gradient.c) * kRadialDegreesPerRadian - 90.0) / kShortDegreesPerRadian;
  fill.gradient.angle = t * kShortDegreesPerRadian - 90.0;
  const double a = radius * std::cos(t);
  *forward = {a, radius * std::sin(t),    -radius * std::sin(t),
              a, run.UnitScale * centreX, (run.DocHeight - centreY) * run.UnitScale};
  SetMatrices(fill, *forward);
  FillRadialColours(fill);
}

// As the host knows it.
TM Identity() {
  double m[6];
  SetToIdentityMatrix(m);
  return {m[0], m[1], m[2], m[3], m[4], m[5]};
}

}  // namespace

FillDefinition* NewGradientFill() {
  auto* fill = static_cast<FillDefinition*>(AllocateHostCleared(sizeof(FillDefinition)));
  fill->inverseMatrix = Identity();
  fill->forwardMatrix = Identity();
  fill->fillClass = 4;
  return fill;
}

void BeginStopList(FillDefinition& fill, unsigned type) {
  fill.fillType = type;
  fill.gradient.gradientForm = 1;
  fill.gradient.gradientFlag = 1;
  fill.gradient.stopListStart = 0;
  fill.gradient.midPoint = 0.5;
  fill.gradient.stopListFlag = 1;
  fill.gradient.stopListOn = 1;
  fill.gradient.stopCount = 0;
}

void AddStop(FillDefinition& fill, unsigned colour, int position) {
  GradientPart& gradient = fill.gradient;
  if (gradient.stopCount >= kMaxStops) return;
  gradient.stopColours[gradient.stopCount] = colour;
  gradient.stopPositions[gradient.stopCount] = position;
  ++gradient.stopCount;
}

// @k: x1 x2 y1 y2 0 -> -, or cx cy fx fy r kind -> - for a radial gradient, whose focus is dropped
void OperatorGradientFill(const OperatorCall&) {
  const double kind = PopNumberOrZero();
  const bool linear = kind == 0.0;
  LinearGeometry line = {0.0, 0.0, 0.0, 0.0};
  double cx = kind, cy = kind, r = 0.0;
  if (linear) {
    line.y2 = PopNumberOrZero();
    line.y1 = PopNumberOrZero();
    line.x2 = PopNumberOrZero();
    line.x1 = PopNumberOrZero();
  } else {
    PopNumber(&r);
    DropOperands(2);
    PopNumber(&cy);
    PopNumber(&cx);
  }
  PushValue(KEY_FILL, 0);
  FillDefinition* fill = NewGradientFill();
  TM forward;
  double angle = 0.0;
  if (linear) {
    angle = FillLinear(line, *fill, &forward);
  } else {
    FillRadial(cx, cy, r, *fill, &forward);
  }
  const double fillScale = fill->fillScale;
  PushPayload(KEY_FDEF, sizeof *fill, fill);
  BuildGradientTransparency(linear, forward, fillScale, angle);
  run.paint.GradientFillPending = 1;
}
