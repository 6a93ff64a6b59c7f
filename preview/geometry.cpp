#include "preview/geometry.h"

#include <algorithm>

namespace preview {

namespace {

double CurveAt(double t, double p0, double p1, double p2, double p3) {
  const double u = 1.0 - t;
  return u * u * u * p0 + 3.0 * u * u * t * p1 + 3.0 * u * t * t * p2 + t * t * t * p3;
}

// Where one coordinate of the curve turns, at most two places inside of it.
int TurningPoints(double p0, double p1, double p2, double p3, double out[2]) {
  const double a = p3 - 3.0 * p2 + 3.0 * p1 - p0, b = 2.0 * (p2 - 2.0 * p1 + p0), c = p1 - p0;
  const double root = std::sqrt(std::max(0.0, b * b - 4.0 * a * c));
  // The form that loses no digits when a is small.
  const double q = -0.5 * (b + std::copysign(root, b));
  int count = 0;
  for (const double t : {q / a, c / q}) {
    if (t > 0.0 && t < 1.0) out[count++] = t;
  }
  return count;
}

}  // namespace

void Box::Add(Point point) {
  if (!IsFinite(point)) return;
  if (empty) {
    *this = {point.x, point.y, point.x, point.y, false};
    return;
  }
  left = std::min(left, point.x);
  right = std::max(right, point.x);
  bottom = std::min(bottom, point.y);
  top = std::max(top, point.y);
}

void Box::Add(const Box& other) {
  if (other.empty) return;
  Add(Point{other.left, other.bottom});
  Add(Point{other.right, other.top});
}

void Box::Grow(double margin) {
  if (empty || !std::isfinite(margin)) return;
  left -= margin;
  right += margin;
  bottom -= margin;
  top += margin;
}

void Box::Intersect(const Box& other) {
  if (empty) return;
  left = std::max(left, other.left);
  right = std::min(right, other.right);
  bottom = std::max(bottom, other.bottom);
  top = std::min(top, other.top);
  if (other.empty || left > right || bottom > top) *this = {};
}

Box Path::Bounds() const {
  Box box;
  const Point* next = points.data();
  for (const Verb verb : verbs) {
    if (verb == Verb::kClose) continue;
    if (verb == Verb::kCurve) {
      const Point p0 = next[-1], p1 = next[0], p2 = next[1], p3 = next[2];
      double turns[2];
      for (int i = TurningPoints(p0.x, p1.x, p2.x, p3.x, turns); i-- > 0;) {
        box.Add(Point{CurveAt(turns[i], p0.x, p1.x, p2.x, p3.x), p3.y});
      }
      for (int i = TurningPoints(p0.y, p1.y, p2.y, p3.y, turns); i-- > 0;) {
        box.Add(Point{p3.x, CurveAt(turns[i], p0.y, p1.y, p2.y, p3.y)});
      }
      next += 2;
    }
    box.Add(*next++);
  }
  return box;
}

}  // namespace preview
