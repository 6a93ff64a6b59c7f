#include "paint/named_gradient.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "filter_limits.h"
#include "host/colour.h"
#include "host/fills.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "paint/gradient_fill.h"
#include "run/command_queue.h"
#include "run/import_run.h"
#include "run/number_text.h"

namespace {

constexpr double kDegreesPerRadian = 57.29578;
constexpr double kHalfTurn = 3.141592653589793;
constexpr double kEpsilon = 2.220446049250313e-16;
constexpr double kThinning = 2.0;  // percent: closer stops of a reverse list are left out

enum GradientType { kLinearType = 0, kRadialType = 1 };

const NamedGradient kBlankGradient;

// Whether the 2 by 2 part is taken as it was popped, d c b a, or as it was written.
enum class MatrixOrder { Popped, Written };

double PositionOf(const NamedGradient& gradient, std::size_t i) {
  return i < gradient.positions.size() ? gradient.positions[i] : 0.0;
}

NamedStop StopOf(const NamedGradient& gradient, std::size_t i) {
  return i < gradient.stops.size() ? gradient.stops[i] : NamedStop{0, 0, 0, 0, 0, {}};
}

// The entry with the name of the last Bg, or null. Behind the entries that were filled the table is blank.
const NamedGradient* FindNamedGradient() {
  const std::u16string& name = run.paint.placement.gradientName;
  for (std::size_t i = 0; i < kNamedGradientsVisited; ++i) {
    const NamedGradient& entry = i < run.namedGradients.size() ? run.namedGradients[i] : kBlankGradient;
    if (entry.name == name) return &entry;
    if (&entry == &kBlankGradient) return nullptr;
  }
  return nullptr;
}

void PlacePoints(GradientPlacement& p) {
  p.gradientP0[0] = p.gradientAnchorX;
  p.gradientP0[1] = p.gradientAnchorY;
  p.gradientP1[0] = p.gradientP2[0] = p.gradientAnchorX + p.gradientLength;
  p.gradientP1[1] = p.gradientP2[1] = p.gradientAnchorY;
}

// Angle and length from the first point to the last; the first point becomes the origin. The comparison of y with x is
// meant.
void ComputeVector(GradientPlacement& p) {
  const double dx = p.gradientP2[0] - p.gradientP0[0];
  const double dy = p.gradientP2[1] - p.gradientP0[1];
  if (dx != 0.0 && dy != 0.0) {
    p.gradientVectorAngle = std::atan2(dy, dx) * kDegreesPerRadian;
  } else if (dx != 0.0) {
    p.gradientVectorAngle = p.gradientP2[0] > p.gradientP0[0] ? 0.0 : 180.0;
  } else {
    p.gradientVectorAngle = p.gradientP2[1] > p.gradientP0[0] ? 90.0 : 270.0;
  }
  p.gradientVectorLength = std::sqrt(dx * dx + dy * dy);
  p.gradientOriginX = p.gradientP0[0];
  p.gradientOriginY = p.gradientP0[1];
}

// Writes both matrices of the record. A length of 0 leaves the identity for the 2 by 2 part, and so does one of
// exactly 1.
void PlaceNamedFill(TM m, double radians, double length, FillDefinition& fill) {
  const double s = IsDoubleEqual(length, 0.0, kEpsilon) ? 1.0 : length;
  double a = 1.0, b = 0.0, c = 0.0, d = 1.0;
  if (s != 1.0) {
    a = m.a * s;
    b = m.b * s;
    c = m.c * s;
    d = m.d * s;
  }
  const double cosine = std::cos(radians);
  const double sine = std::sin(radians);
  m.a = a * cosine - b * sine;
  m.b = a * sine + b * cosine;
  m.c = c * cosine - d * sine;
  m.d = c * sine + d * cosine;
  const double i = 1.0 / (m.d * m.a - m.c * m.b);
  fill.forwardMatrix = m;
  fill.inverseMatrix =
      TM{m.d * i, -m.b * i, -m.c * i, m.a * i, -(m.d * i) * m.e + (m.c * i) * m.f, (m.b * i) * m.e - (m.a * i) * m.f};
}

struct InkFloats {
  float c, m, y, k;
};

InkFloats InksOf(const NamedStop& stop) {
  return {static_cast<float>(stop.cyan & 0xFF), static_cast<float>(stop.magenta & 0xFF),
          static_cast<float>(stop.yellow & 0xFF), static_cast<float>(stop.black & 0xFF)};
}

struct RgbBytes {
  unsigned char r = 0, g = 0, b = 0;
};

RgbBytes TwoColourRgb(const NamedStop& stop) {
  const InkFloats ink = InksOf(stop);
  RgbBytes rgb;
  BmpCMYKtoRGB(ink.c, ink.m, ink.y, ink.k, &rgb.r, &rgb.g, &rgb.b);
  return rgb;
}

unsigned ListRgb(const NamedStop& stop) {
  const InkFloats ink = InksOf(stop);
  RgbBytes rgb;
  if (VectorCMYKtoRGB(ink.c, ink.m, ink.y, ink.k, &rgb.r, &rgb.g, &rgb.b) == 0) {
    const auto component = [&ink](float c) { return static_cast<unsigned char>(std::max(255.0f - c - ink.k, 0.0f)); };
    rgb = {component(ink.c), component(ink.m), component(ink.y)};
  }
  return rgb.r | unsigned{rgb.g} << 8 | unsigned{rgb.b} << 16;
}

// The first stop is colour B of a linear fill and colour A of a radial one: it is meant.
void TwoColours(const NamedGradient& gradient, FillDefinition& fill, unsigned type) {
  GradientPart& part = fill.gradient;
  fill.fillType = type;
  part.gradientForm = 3;
  part.gradientFlag = 1;
  part.stopListFlag = 0;
  part.midPoint = 0.5;
  const RgbBytes first = TwoColourRgb(StopOf(gradient, 0));
  const RgbBytes second = TwoColourRgb(StopOf(gradient, 1));
  const RgbBytes& a = type == kLinearFill ? second : first;
  const RgbBytes& b = type == kLinearFill ? first : second;
  part.colourA[0] = a.r;
  part.colourA[1] = a.g;
  part.colourA[2] = a.b;
  part.colourB[0] = b.r;
  part.colourB[1] = b.g;
  part.colourB[2] = b.b;
}

void RadialColourList(const NamedGradient& gradient, FillDefinition& fill) {
  BeginStopList(fill, kRadialFill);
  const std::size_t n = gradient.stops.size();
  for (std::size_t i = 0; i < n; ++i) {
    const unsigned colour = ListRgb(gradient.stops[i]);
    const std::int32_t position = Truncate(PositionOf(gradient, i));
    if (i == 0 && position != 0) AddStop(fill, colour, 0);
    AddStop(fill, colour, position);
    if (i == n - 1 && position != 100) AddStop(fill, colour, 100);
  }
}

// Falling positions are walked from the last stop to the first and thinned out; only then are the ends filled up.
void LinearColourList(const NamedGradient& gradient, FillDefinition& fill) {
  BeginStopList(fill, kLinearFill);
  const std::size_t n = gradient.stops.size();
  if (!(PositionOf(gradient, 0) > PositionOf(gradient, 1))) {
    for (std::size_t i = 0; i < n; ++i) AddStop(fill, ListRgb(gradient.stops[i]), Truncate(PositionOf(gradient, i)));
    return;
  }
  for (std::size_t i = n; i-- > 0;) {
    const unsigned colour = ListRgb(gradient.stops[i]);
    const double position = PositionOf(gradient, i);
    const double before = i > 0 ? PositionOf(gradient, i - 1) : 0.0;
    if (i == n - 1 && Truncate(position) != 0) AddStop(fill, colour, 0);
    if (std::fabs(position - before) > kThinning) AddStop(fill, colour, Truncate(position));
    if (i == 0 && Truncate(position) != 100) AddStop(fill, colour, 100);
  }
}

void PushNamedFill(const NamedGradient& gradient, MatrixOrder order) {
  const GradientPlacement& p = run.paint.placement;
  FillDefinition* fill = NewGradientFill();
  fill->fillScale = p.gradientVectorLength * -1.0;
  const auto [a, b, c, d] = p.gradientMatrix;
  const TM m = order == MatrixOrder::Popped ? TM{d, c, b, a, p.gradientOriginX, p.gradientOriginY}
                                            : TM{a, b, c, d, p.gradientOriginX, p.gradientOriginY};
  PlaceNamedFill(m, (p.gradientAngle - 90.0) / kDegreesPerRadian, p.gradientLength, *fill);

  const bool twoColours = gradient.stops.size() < 3;
  if (gradient.type == kLinearType) {
    const double angle = p.gradientVectorAngle + p.gradientAngle;
    if (twoColours) {
      TwoColours(gradient, *fill, kLinearFill);
    } else {
      LinearColourList(gradient, *fill);
    }
    fill->gradient.angle = angle < 90.0 ? angle + 270.0 : angle - 90.0;
  } else if (twoColours) {
    TwoColours(gradient, *fill, kRadialFill);
  } else {
    RadialColourList(gradient, *fill);
  }
  PushPayload(KEY_FDEF, sizeof *fill, fill);
}

// Rising positions are summed up and cut at 98, falling ones taken from the end and cut at 99: it is meant.
void AddMarkers(const NamedGradient& gradient, CQXSpotFill& fill) {
  if (PositionOf(gradient, 0) > PositionOf(gradient, 1)) {
    for (std::size_t i = gradient.stops.size(); i-- > 0;) {
      fill.AddFromColorMarker(
          {std::min(99, Truncate(PositionOf(gradient, i))), static_cast<int>(gradient.stops[i].tint)});
    }
    return;
  }
  std::int32_t position = 0;
  for (std::size_t i = 0; i < gradient.stops.size(); ++i) {
    position = std::min(98, Truncate(position + PositionOf(gradient, i)));
    fill.AddFromColorMarker({position, static_cast<int>(gradient.stops[i].tint)});
  }
}

// The angle in the range of the fill, in degrees.
double FoldAngle(double angle) {
  if (angle > 360.0) return 0.0;
  if (angle > 270.0) return std::fabs(angle - 360.0) + 90.0;
  if (angle > 180.0) return std::fabs(angle - 270.0) + 180.0;
  if (angle > 90.0) return std::fabs(angle - 180.0) + 270.0;
  return 90.0 - angle;
}

// The angle brought into 0 to 360, both ends included, by whole turns.
double WholeTurn(double angle) {
  if (angle >= 0.0 && angle <= 360.0) return angle;
  const double rest = std::fmod(angle, 360.0);
  if (rest < 0.0) return rest + 360.0;
  return rest == 0.0 && angle > 0.0 ? 360.0 : rest + 0.0;
}

void BuildSpotFill(const NamedGradient& gradient) {
  const GradientPlacement& p = run.paint.placement;
  auto fill = std::make_unique<CQXLinearSpotFill>();
  const NamedStop first = StopOf(gradient, 0);
  const std::uint32_t value =
      (first.cyan & 0xFF) | (first.magenta & 0xFF) << 8 | (first.yellow & 0xFF) << 16 | (first.black & 0xFF) << 24;
  CQXColor baseColour(value, kCmykSpace, kNamedColourCorrection, kMatt);
  baseColour.SetCartridge(0);
  baseColour.SetTint(100.0);
  AddMarkers(gradient, *fill);

  const double radians = FoldAngle(p.gradientAngle) * (kHalfTurn / 180.0);
  const double length = p.gradientLength;
  TM m = kIdentity;
  if (!IsDoubleEqual(length, 0.0, kEpsilon)) {
    m.a = length * std::cos(radians);
    m.b = length * -1.0 * std::sin(radians);
    m.c = length * std::sin(radians);
    m.d = length * std::cos(radians);
  }
  const double i = 1.0 / (m.d * m.a - m.b * m.c);
  const double x = p.gradientOriginX;
  const double y = p.gradientOriginY;
  const TM worldToFill = {
      m.d * i, -m.b * i, -m.c * i, m.a * i, -(m.d * i) * x - (-m.c * i) * y, -(-m.b * i) * x - (m.a * i) * y};

  fill->ChangeFillAngle(WholeTurn(p.gradientAngle - 90.0));
  fill->ChangeXOffset(0.0);
  fill->ChangeYOffset(0.0);
  fill->ChangeWorldToFillTm(worldToFill);
  fill->ChangeFromColor(baseColour);
  fill->ChangeToColor(CQXColor(0xFFFFFFFF, kRgbSpace, kNoCorrection, kMatt));
  fill->ChangeDuotone(0);
  fill->ChangeFillLengthRatio(length * -1.0);
  auto colour = std::make_unique<CQXFullColor>(value, kCmykSpace, kNamedColourCorrection, kMatt);
  colour->SetColorName(first.colourName.c_str());
  PushObject(KEY_NFIL, std::move(colour));
  PushObject(KEY_SPFL, std::move(fill));
}

void SendNamedGradient(const NamedGradient& gradient, MatrixOrder order) {
  PushValue(KEY_FILL, 0);
  if (gradient.spotFill == 1) {
    BuildSpotFill(gradient);
  } else {
    PushNamedFill(gradient, order);
  }
  run.paint.GradientFillPending = 1;
}

}  // namespace

// Bg: flag (name) anchorX anchorY angle length a b c d tx ty -> (cleared)
void OperatorNamedGradient(const OperatorCall&) {
  GradientPlacement& p = run.paint.placement;
  const auto popScaled = [](double* value) {
    if (!PopNumber(value)) return false;
    *value *= run.UnitScale;
    return true;
  };
  if (!popScaled(&p.gradientOriginY) || !popScaled(&p.gradientOriginX)) return;
  for (int i = 3; i >= 0; --i) {
    if (!PopNumber(&p.gradientMatrix[i])) return;
  }
  if (!popScaled(&p.gradientLength) || !PopNumber(&p.gradientAngle)) return;
  if (!popScaled(&p.gradientAnchorY) || !popScaled(&p.gradientAnchorX)) return;
  {
    const PoppedOperand name;
    if (!name) return;
    p.gradientName = name.OwnedText();
  }
  double flag;
  if ((PopNumber(&flag) && flag == 2.0) || p.gradientLength == 0.0) {
    run.paint.GradientFillPending = 0;
    return;
  }
  PlacePoints(p);
  ComputeVector(p);
  const NamedGradient* gradient = FindNamedGradient();
  if (gradient) SendNamedGradient(*gradient, MatrixOrder::Popped);
}

// Bm: a b c d tx ty -> (cleared); Xm: a b c d tx ty -> -. Under Bm linear gradients are left to Bg, with nothing
// popped.
void OperatorNamedGradientMatrix(const OperatorCall& call) {
  GradientPlacement& p = run.paint.placement;
  const NamedGradient* gradient = FindNamedGradient();
  if (!gradient) return;
  if (call.token[0] == u'B' && gradient->type == kLinearType) return;

  TM m = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  for (double* member : {&m.f, &m.e, &m.d, &m.c, &m.b, &m.a}) {
    if (!PopNumber(member)) break;
  }
  const double r = p.gradientAngle / -kDegreesPerRadian;
  const TM rotation = {std::cos(r), std::sin(r), -std::sin(r), std::cos(r), 0.0, 0.0};
  mul_tm(&m, &rotation);

  p.gradientMatrix[0] = p.gradientMatrix[3] = 1.0;
  p.gradientMatrix[1] = p.gradientMatrix[2] = 0.0;
  if (gradient->type != kLinearType) {
    p.gradientOriginX = m.e * run.UnitScale;
    p.gradientOriginY = m.f * run.UnitScale;
    p.gradientLength = p.gradientVectorLength = m.a * run.UnitScale;
  } else {
    const double h = m.a * -0.5;
    const double w = m.d * -0.5;
    const double t = p.gradientAngle / kDegreesPerRadian;
    const double x = std::cos(t) * h - (std::cos(t) * h - std::sin(t) * w) + m.e;
    const double y = std::sin(t) * h - (std::cos(t) * w + std::sin(t) * h) + m.f;
    p.gradientLength = m.a * run.UnitScale;
    p.gradientAnchorX = x * run.UnitScale;
    p.gradientAnchorY = y * run.UnitScale;
    PlacePoints(p);
    ComputeVector(p);
  }
  SendNamedGradient(*gradient, MatrixOrder::Written);
}
