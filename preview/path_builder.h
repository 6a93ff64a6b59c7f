// Joins the segments of the stream, each of which carries its own start and end, to subpaths.
#pragma once

#include <span>

#include "host/polygon.h"
#include "preview/geometry.h"

namespace preview {

class PathBuilder {
 public:
  // A straight segment (two points) or a cubic one (four). It goes on from the pen if it begins there, is walked
  // backwards if it ends there, and otherwise begins a subpath. Where a subpath begins is not told, so that its first
  // segment, if it is straight, is turned round when the second touches its start alone. A segment with a point that
  // is not finite is passed over.
  void AddSegment(std::span<const Point> points);
  // A polygon among the segments: a run of straight segments. It is open if its last side is marked as the one that
  // closes, and else a full turn.
  void AddPolygon(std::span<const PolygonSide> sides);
  // The path so far; the builder is empty behind it. A subpath that ends where it began is closed.
  Path Finish();

 private:
  // Moves the pen to the near end of a run from `first` to `last`; true if the run is to be walked backwards.
  bool Join(Point first, Point last);
  void EndSubpath();
  // True if the subpath is one straight segment.
  bool IsOneLine() const;

  Path path_;
  Point start_ = {}, pen_ = {};
};

// A polygon that stands by itself, closed.
Path PolygonPath(std::span<const PolygonSide> sides);

}  // namespace preview
