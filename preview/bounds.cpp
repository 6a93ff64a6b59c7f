#include "preview/bounds.h"

#include "preview/text.h"

namespace preview {

namespace {

Box BoundsOf(const Shape& shape, bool silhouette) {
  const Stroke& stroke = shape.ink.stroke;
  const bool strokes = !silhouette && stroke.IsVisible();
  if (!silhouette && !strokes && !shape.ink.Fills()) return {};
  Box box = shape.path.Bounds();
  if (strokes && stroke.kind == Stroke::Kind::kThick) box.Grow(stroke.width / 2.0);
  return box;
}

Box BoundsOf(const Picture& picture) {
  Box box;
  const TM& m = picture.squareToHost;
  for (const double x : {0.0, 1.0}) {
    for (const double y : {0.0, 1.0}) box.Add(Point{m.a * x + m.c * y + m.e, m.b * x + m.d * y + m.f});
  }
  return box;
}

Box BoundsOf(const std::vector<Item>& items, bool silhouette);

Box BoundsOf(const Item& item, bool silhouette) {
  if (const auto* shape = std::get_if<Shape>(&item.what)) return BoundsOf(*shape, silhouette);
  if (const auto* text = std::get_if<Text>(&item.what)) {
    return silhouette || text->ink.Fills() ? TextBounds(*text) : Box();
  }
  if (const auto* picture = std::get_if<Picture>(&item.what)) return BoundsOf(*picture);
  const auto& clip = std::get<Clip>(item.what);
  Box box = BoundsOf(clip.content, silhouette);
  if (!box.empty) box.Intersect(BoundsOf(clip.geometry, true));
  return box;
}

Box BoundsOf(const std::vector<Item>& items, bool silhouette) {
  Box box;
  for (const Item& item : items) box.Add(BoundsOf(item, silhouette));
  return box;
}

}  // namespace

Box BoundsOf(const std::vector<Item>& items) { return BoundsOf(items, false); }

}  // namespace preview
