// Points, boxes and outlines in host units: centimetres, y up.
#pragma once

#include <cmath>
#include <span>
#include <vector>

namespace preview {

struct Point {
  double x, y;
};

inline bool IsFinite(Point point) { return std::isfinite(point.x) && std::isfinite(point.y); }

// Empty until the first point is added.
struct Box {
  double left = 0.0, bottom = 0.0, right = 0.0, top = 0.0;
  bool empty = true;

  double Width() const { return right - left; }
  double Height() const { return top - bottom; }
  void Add(Point point);  // a point that is not finite is passed over
  void Add(const Box& other);
  void Grow(double margin);  // on all sides, unless empty
  void Intersect(const Box& other);
};

// Subpaths of straight lines and cubic curves. All points are finite.
struct Path {
  enum class Verb : unsigned char { kMove, kLine, kCurve, kClose };
  std::vector<Verb> verbs;
  std::vector<Point> points;  // one for each kMove and kLine, three for each kCurve

  bool IsEmpty() const { return verbs.empty(); }
  // Tight: a curve counts with its turning points and not with its controls.
  Box Bounds() const;
};

}  // namespace preview
