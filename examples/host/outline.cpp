#include "outline.h"

#include <algorithm>
#include <cmath>

void Box::Include(double x, double y) {
  left = empty ? x : std::min(left, x);
  right = empty ? x : std::max(right, x);
  bottom = empty ? y : std::min(bottom, y);
  top = empty ? y : std::max(top, y);
  empty = false;
}

namespace {

double CubicAt(double t, double p0, double p1, double p2, double p3) {
  const double u = 1 - t;
  return u * u * u * p0 + 3 * u * u * t * p1 + 3 * u * t * t * p2 + t * t * t * p3;
}

// The parameters, at most two, at which a coordinate turns: the roots of a*t*t + b*t + c. What is none is not in 0
// to 1.
void FindTurns(double p0, double p1, double p2, double p3, double turns[2]) {
  const double a = p3 - 3 * p2 + 3 * p1 - p0, b = 2 * (p2 - 2 * p1 + p0), c = p1 - p0;
  const double q = -(b + std::copysign(std::sqrt(b * b - 4 * a * c), b)) / 2;
  turns[0] = q / a;
  turns[1] = c / q;
}

}  // namespace

void Include(Box& box, const LineRecord& line) {
  box.Include(line.x0, line.y0);
  box.Include(line.x1, line.y1);
}

void Include(Box& box, const BezierRecord& curve) {
  box.Include(curve.x0, curve.y0);
  box.Include(curve.x3, curve.y3);
  double turns[4];
  FindTurns(curve.x0, curve.x1, curve.x2, curve.x3, turns);
  FindTurns(curve.y0, curve.y1, curve.y2, curve.y3, turns + 2);
  for (const double t : turns) {
    if (!(t > 0 && t < 1)) continue;
    box.Include(CubicAt(t, curve.x0, curve.x1, curve.x2, curve.x3), CubicAt(t, curve.y0, curve.y1, curve.y2, curve.y3));
  }
}

void Include(Box& box, const POLYGON& polygon) {
  for (std::int64_t i = 0; i < polygon.get_sides(); ++i) {
    const PolygonSide side = polygon.sides[i];
    box.Include(side.x, side.y);
  }
}
