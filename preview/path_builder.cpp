#include "preview/path_builder.h"

#include <algorithm>
#include <utility>

namespace preview {

namespace {

// Ends that were computed in two ways differ in their last digits. A thousandth of a thousandth of a centimetre is far
// below what can be seen.
constexpr double kJoinDistance = 1e-6;

bool Touch(Point a, Point b) { return std::abs(a.x - b.x) <= kJoinDistance && std::abs(a.y - b.y) <= kJoinDistance; }

std::vector<Point> FinitePoints(std::span<const PolygonSide> sides) {
  std::vector<Point> points;
  points.reserve(sides.size() + 1);
  for (const PolygonSide& side : sides) {
    const Point point{side.x, side.y};
    if (IsFinite(point)) points.push_back(point);
  }
  return points;
}

}  // namespace

bool PathBuilder::IsOneLine() const {
  const std::size_t count = path_.verbs.size();
  return count >= 2 && path_.verbs[count - 2] == Path::Verb::kMove && path_.verbs[count - 1] == Path::Verb::kLine;
}

bool PathBuilder::Join(Point first, Point last) {
  if (!path_.IsEmpty()) {
    if (Touch(first, pen_)) return false;
    if (Touch(last, pen_)) return true;
    if (IsOneLine() && (Touch(first, start_) || Touch(last, start_))) {
      std::swap(path_.points.back(), *(path_.points.end() - 2));
      std::swap(start_, pen_);
      return !Touch(first, pen_);
    }
    EndSubpath();
  }
  path_.verbs.push_back(Path::Verb::kMove);
  path_.points.push_back(first);
  start_ = pen_ = first;
  return false;
}

void PathBuilder::AddSegment(std::span<const Point> points) {
  if (!std::all_of(points.begin(), points.end(), IsFinite)) return;
  const bool backwards = Join(points.front(), points.back());
  path_.verbs.push_back(points.size() == 4 ? Path::Verb::kCurve : Path::Verb::kLine);
  for (std::size_t i = 1; i < points.size(); ++i) {
    path_.points.push_back(backwards ? points[points.size() - 1 - i] : points[i]);
  }
  pen_ = path_.points.back();
}

void PathBuilder::AddPolygon(std::span<const PolygonSide> sides) {
  std::vector<Point> points = FinitePoints(sides);
  if (points.size() < 2) return;
  if ((sides.back().flags & kSideCloses) == 0) points.push_back(points.front());
  if (Join(points.front(), points.back())) std::reverse(points.begin(), points.end());
  path_.points.insert(path_.points.end(), points.begin() + 1, points.end());
  path_.verbs.insert(path_.verbs.end(), points.size() - 1, Path::Verb::kLine);
  pen_ = points.back();
}

void PathBuilder::EndSubpath() {
  if (path_.IsEmpty() || path_.verbs.back() == Path::Verb::kMove) return;
  if (Touch(pen_, start_)) path_.verbs.push_back(Path::Verb::kClose);
}

Path PathBuilder::Finish() {
  EndSubpath();
  return std::exchange(path_, {});
}

Path PolygonPath(std::span<const PolygonSide> sides) {
  Path path;
  path.points = FinitePoints(sides);
  if (path.points.empty()) return path;
  path.verbs.assign(path.points.size(), Path::Verb::kLine);
  path.verbs.front() = Path::Verb::kMove;
  path.verbs.push_back(Path::Verb::kClose);
  return path;
}

}  // namespace preview
