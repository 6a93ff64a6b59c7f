#include "operators/polygon.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "host/polygon.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "operators/path.h"
#include "operators/spaces.h"
#include "run/command_queue.h"
#include "run/host_memory.h"
#include "run/import_run.h"

namespace {

// The constants are used as they stand, not as multiples of an exact pi.
constexpr double kStep = 0.174;  // radians
constexpr double kDegreesPerRadian = 57.29578;
constexpr double kFullTurn = 6.283185253783088;
constexpr double kThreeQuarterTurn = 4.712388940337316;
constexpr double kHalfTurn = 3.141592626891544;
constexpr double kQuarterTurn = 1.570796313445772;
constexpr double kAlmostFullTurn = 6.1;  // an arc that sweeps more ends on its start

void BeginPolygon() {
  DropPolygon();  // of a shape that found no memory
  run.currentPolygon = new (AllocateHost(sizeof(POLYGON))) POLYGON;
  POLYGON& polygon = *run.currentPolygon;
  polygon.flags = (polygon.flags & ~0xFu) | kPolygonInUse;
  polygon.scaleX = run.UnitScale;
  polygon.scaleY = run.UnitScale;
}

// Sides may move with each one that is added, so that they are looked up anew each time.
PolygonSide& AddSide(Point host) {
  POLYGON& polygon = *run.currentPolygon;
  const std::int64_t i = polygon.get_sides();
  polygon.add_side();
  PolygonSide& side = polygon.sides[i];
  side.x = host.x;
  side.y = host.y;
  return side;
}

void AddCurveSide(Point user) {
  PolygonSide& side = AddSide(ToHost(ToDevice(user)));
  side.flags = (side.flags & ~std::uint32_t{kSideCloses | kSideMarked}) | kSideCurve;
  run.currentPolygon->flags |= kPolygonCurved;
}

void AddStraightSide(Point user) {
  PolygonSide& side = AddSide(ToHost(ToDevice(user)));
  side.flags &= ~std::uint32_t{kSideCloses | kSideCurve | kSideMarked};
}

bool SamePlace(const PolygonSide& a, const PolygonSide& b) { return a.x == b.x && a.y == b.y; }

void FinishPolygon() {
  POLYGON* polygon = run.currentPolygon;
  const std::int64_t n = polygon->get_sides();
  if (n < 2) {
    DropPolygon();
    return;
  }
  PolygonSide* sides = polygon->sides;
  if (n == 3 && SamePlace(sides[2], sides[0])) sides[1].flags |= kSideCloses;
  if (SamePlace(sides[n - 1], sides[0])) {
    polygon->del_side();
  } else {
    sides[n - 1].flags |= kSideCloses;
  }
  ImportCommand record = {};
  record.key = KEY_PLYR;
  record.size = sizeof(POLYGON);
  record.data = polygon;
  PushCommand(record);
  run.currentPolygon = nullptr;
}

// The ellipse that an arc lies on, and the part of it.
struct Ellipse {
  Point centre;
  double rx, ry;
  double cosine, sine;            // of its rotation
  double startAngle, sweepAngle;  // degrees
};

// The angle whose cosine is x, in degrees. An argument that rounding carried beyond the ends counts as the end.
double ArcCosine(double x) {
  if (x > 1.0) x = 1.0;
  if (x < -1.0) x = -1.0;
  return std::acos(x) * kDegreesPerRadian;
}

// From end points to centre and angles; the radii come out large enough to reach.
Ellipse EllipseOfArc(const Arc& arc, Point start) {
  Ellipse ellipse;
  const double dx = (start.x - arc.end.x) * 0.5;
  const double dy = (start.y - arc.end.y) * 0.5;
  const double phi = arc.rotation / kDegreesPerRadian;
  const double c = std::cos(phi);
  const double s = std::sin(phi);
  ellipse.cosine = c;
  ellipse.sine = s;
  double rx = std::fabs(arc.rx);
  double ry = std::fabs(arc.ry);
  const double x = c * dx + s * dy;
  const double y = c * dy - s * dx;
  const double lambda = x * x / (rx * rx) + y * y / (ry * ry);
  if (lambda > 1.0) {
    rx *= std::sqrt(lambda);
    ry *= std::sqrt(lambda);
  }
  ellipse.rx = rx;
  ellipse.ry = ry;

  const double rx2 = rx * rx;
  const double ry2 = ry * ry;
  const double q = (rx2 * ry2 - rx2 * (y * y) - ry2 * (x * x)) / (ry2 * (x * x) + rx2 * (y * y));
  double k = std::sqrt(std::max(0.0, q));
  if (arc.largeArc == arc.sweep) k = -k;
  const double cx = k * y * rx / ry;
  const double cy = -k * x * ry / rx;
  ellipse.centre.x = c * cx - s * cy + (start.x + arc.end.x) * 0.5;
  ellipse.centre.y = c * cy + s * cx + (start.y + arc.end.y) * 0.5;

  const Point u = {(x - cx) / rx, (y - cy) / ry};
  const Point v = {(-x - cx) / rx, (-y - cy) / ry};
  const double lengthU = std::sqrt(u.x * u.x + u.y * u.y);
  const double lengthV = std::sqrt(v.x * v.x + v.y * v.y);
  ellipse.startAngle = ArcCosine(u.x / lengthU);
  if (u.y < 0.0) ellipse.startAngle = -ellipse.startAngle;
  double delta = ArcCosine((u.x * v.x + u.y * v.y) / (lengthU * lengthV));
  if (u.x * v.y - u.y * v.x < 0.0) delta = -delta;
  if (arc.sweep && delta < 0.0) delta += 360.0;
  if (!arc.sweep && delta > 0.0) delta -= 360.0;
  ellipse.sweepAngle = delta;
  return ellipse;
}

void EndArc() { PushCommand(KEY_NULL); }

// An arc that has no centre becomes the straight segment to its end.
void StraightArc(Point end) {
  const Point device = ToDevice(end);
  if (device != run.path.deviceCurrent) QueueDeviceLine(run.path.deviceCurrent, device);
  run.path.deviceCurrent = device;
  EndArc();
}

// The pen in user space, out of the device pen: an arc always starts there. False when the current matrix has no
// inverse.
bool DevicePenToUser(Point* user) {
  const TM& m = CurrentFrame().currentMatrix;
  const double determinant = m.d * m.a - m.c * m.b;
  if (determinant == 0.0) return false;
  TM inverse;
  inverse.a = m.d / determinant;
  inverse.b = -m.b / determinant;
  inverse.c = -m.c / determinant;
  inverse.d = m.a / determinant;
  inverse.e = -(inverse.c * m.f + inverse.a * m.e);
  inverse.f = -(inverse.d * m.f + inverse.b * m.e);
  *user = TransformPoint(inverse, run.path.deviceCurrent);
  return true;
}

// The cosines and sines of the angles from `first` on, up to `end` but without it. The angles of ellipses and corners
// are always the same, and working them out anew would be a twentieth of an import of shapes.
std::vector<Point> Directions(double first, double step, double end) {
  std::vector<Point> directions;
  for (double angle = first; step > 0.0 ? angle < end : angle > end; angle += step) {
    directions.push_back({std::cos(angle), std::sin(angle)});
  }
  return directions;
}

void AddSamples(Point centre, double rx, double ry, const std::vector<Point>& directions) {
  for (const Point& d : directions) AddCurveSide({centre.x + rx * d.x, centre.y + ry * d.y});
}

// Of a corner of a rectangle: the samples behind the first angle, which falls to the second.
std::vector<Point> CornerDirections(double from, double to) { return Directions(from - kStep, -kStep, to); }

void AddEllipse(Point centre, double rx, double ry) {
  static const std::vector<Point> turn = Directions(0.0, kStep, kFullTurn);
  BeginPolygon();
  AddSamples(centre, rx, ry, turn);
  const Point last = {centre.x + rx * turn[0].x, centre.y + ry * turn[0].y};
  AddCurveSide(last);
  FinishPolygon();
  run.path.deviceCurrent = ToDevice(last);
}

}  // namespace

void DropPolygon() {
  if (!run.currentPolygon) return;
  run.currentPolygon->~POLYGON();
  FreeHost(run.currentPolygon);
  run.currentPolygon = nullptr;
}

void ArcTo(Arc arc, bool relative) {
  PathState& path = run.path;
  Point pen;
  const bool invertible = DevicePenToUser(&pen);
  if (!invertible) pen = path.userCurrent;
  if (relative) arc.end = {arc.end.x + pen.x, arc.end.y + pen.y};
  // Onto its own start: on its way to the user's space and back the pen would move by a rounding step.
  if (invertible && arc.end == pen) {
    EndArc();
    return;
  }
  if (!invertible || arc.rx == 0.0 || arc.ry == 0.0) {
    StraightArc(arc.end);
    return;
  }

  Ellipse ellipse = EllipseOfArc(arc, pen);
  if (ellipse.startAngle < 0.0) ellipse.startAngle += 360.0;
  const double endAngle = ellipse.startAngle + ellipse.sweepAngle;
  const double start = ellipse.startAngle / kDegreesPerRadian;
  const double end = endAngle / kDegreesPerRadian;
  const double c = ellipse.cosine;
  const double s = ellipse.sine;
  const auto sample = [&](double angle) {
    const double x = ellipse.rx * std::cos(angle);
    const double y = ellipse.ry * std::sin(angle);
    return Point{c * x - s * y + ellipse.centre.x, s * x + c * y + ellipse.centre.y};
  };

  BeginPolygon();
  // The first sample is the pen itself, exactly.
  if (arc.sweep ? end > start : start > end) {
    AddCurveSide(pen);
    if (arc.sweep) {
      for (double angle = start + kStep; end > angle; angle += kStep) AddCurveSide(sample(angle));
    } else {
      for (double angle = start - kStep; angle > end; angle -= kStep) AddCurveSide(sample(angle));
    }
  }
  const Point last = sample(std::fabs(start - end) > kAlmostFullTurn ? start : end);
  AddCurveSide(last);
  FinishPolygon();
  EndArc();
  path.deviceCurrent = ToDevice(last);
}

// A, a: rx ry rotation largeArc sweep x y -> -
void OperatorArc(const OperatorCall& call) {
  Arc arc;
  arc.end.y = PopNumberOrZero();
  arc.end.x = PopNumberOrZero();
  arc.sweep = PopIntegerOrZero() != 0;
  arc.largeArc = PopIntegerOrZero() != 0;
  arc.rotation = PopNumberOrZero();
  arc.ry = PopNumberOrZero();
  if (PopNumber(&arc.rx)) ArcTo(arc, call.token[0] == u'a');
}

// rect: width height x y rx ry -> -. The path state is left alone.
void OperatorRectangle(const OperatorCall&) {
  double ry = PopNumberOrZero();
  double rx = PopNumberOrZero();
  const double y = PopNumberOrZero();
  const double x = PopNumberOrZero();
  const double height = PopNumberOrZero();
  const double width = PopNumberOrZero();
  if (rx + rx > width) rx = width * 0.5;
  if (ry + ry > height) ry = height * 0.5;
  const double right = x + width;
  const double bottom = y + height;
  const double innerRight = right - rx;
  const double innerBottom = bottom - ry;
  const double innerLeft = x + rx;
  const double innerTop = y + ry;
  const bool round = rx > 0.0 || ry > 0.0;

  BeginPolygon();
  AddStraightSide({innerRight, bottom});
  if (round) {
    static const std::vector<Point> corner = CornerDirections(kQuarterTurn, 0.0);
    AddSamples({innerRight, innerBottom}, rx, ry, corner);
    AddStraightSide({right, innerBottom});
  }
  AddStraightSide({right, innerTop});
  if (round) {
    static const std::vector<Point> corner = CornerDirections(kFullTurn, kThreeQuarterTurn);
    AddSamples({innerRight, innerTop}, rx, ry, corner);
    AddStraightSide({innerRight, y});
  }
  AddStraightSide({innerLeft, y});
  if (round) {
    static const std::vector<Point> corner = CornerDirections(kThreeQuarterTurn, kHalfTurn);
    AddSamples({innerLeft, innerTop}, rx, ry, corner);
    AddStraightSide({x, innerTop});
  }
  AddStraightSide({x, innerBottom});
  if (round) {
    static const std::vector<Point> corner = CornerDirections(kHalfTurn, kQuarterTurn);
    AddSamples({innerLeft, innerBottom}, rx, ry, corner);
    AddStraightSide({innerLeft, bottom});
  }
  const PolygonSide first = run.currentPolygon->sides[0];
  PolygonSide& closing = AddSide({first.x, first.y});
  closing.flags |= kSideCloses;
  FinishPolygon();
}

// E, wE: cx cy rx ry -> -
void OperatorEllipse(const OperatorCall&) {
  const double ry = PopNumberOrZero();
  const double rx = PopNumberOrZero();
  const double cy = PopNumberOrZero();
  const double cx = PopNumberOrZero();
  AddEllipse({cx, cy}, rx, ry);
}

// ci?: cx cy r -> -
void OperatorCircle(const OperatorCall&) {
  const double r = PopNumberOrZero();
  const double cy = PopNumberOrZero();
  const double cx = PopNumberOrZero();
  AddEllipse({cx, cy}, r, r);
}
