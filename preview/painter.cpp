#include "preview/painter.h"

#include <algorithm>
#include <utility>

#include "preview/fills.h"
#include "preview/text.h"

namespace preview {

namespace {

// Cairo keeps coordinates in 24 bits and a fraction; this leaves room for the width of a line.
constexpr double kFarthest = 2e6;

// In pixels. FreeType takes no font of 65536, and one that fails stays in error for all texts after it.
constexpr double kLargestFont = 30000.0;

struct PatternDeleter {
  void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using Pattern = std::unique_ptr<cairo_pattern_t, PatternDeleter>;

cairo_matrix_t CairoMatrix(const TM& m) { return {m.a, m.b, m.c, m.d, m.e, m.f}; }

// `first`, then `second`.
cairo_matrix_t Product(const cairo_matrix_t& first, const cairo_matrix_t& second) {
  cairo_matrix_t result;
  cairo_matrix_multiply(&result, &first, &second);
  return result;
}

// False for a matrix that cairo would refuse or that would leave nothing to see.
bool IsUsable(const cairo_matrix_t& m) {
  constexpr double kSmallest = 1e-9, kLargest = 1e9;
  const double determinant = m.xx * m.yy - m.xy * m.yx;
  if (!(std::abs(determinant) >= kSmallest * kSmallest)) return false;
  return std::max({std::abs(m.xx), std::abs(m.yx), std::abs(m.xy), std::abs(m.yy), std::abs(m.x0), std::abs(m.y0)}) <=
         kLargest;
}

void SetColour(cairo_t* context, const Colour& colour, double opacity) {
  cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, colour.alpha * opacity);
}

// The picture `image` on the unit square that `squareToSheet` maps. Null if it cannot be seen.
Pattern PicturePattern(cairo_surface_t* image, const cairo_matrix_t& sheetToSquare, cairo_extend_t extend) {
  const double width = cairo_image_surface_get_width(image), height = cairo_image_surface_get_height(image);
  const cairo_matrix_t matrix = Product(sheetToSquare, {width, 0.0, 0.0, -height, 0.0, height});
  if (!IsUsable(matrix)) return nullptr;
  Pattern pattern(cairo_pattern_create_for_surface(image));
  cairo_pattern_set_matrix(pattern.get(), &matrix);
  cairo_pattern_set_extend(pattern.get(), extend);
  return pattern;
}

}  // namespace

Painter::Painter(cairo_t* context, const Box& page, double width, double height, double hairline)
    : context_(context), page_(page), scale_(width / page.Width()), hairline_(hairline) {
  cairo_scale(context, 1.0, height / (page.Height() * scale_));
}

cairo_matrix_t Painter::HostToSheet() const {
  return {scale_, 0.0, 0.0, -scale_, -page_.left * scale_, page_.top * scale_};
}

Point Painter::OnSheet(Point host) const {
  return {std::clamp((host.x - page_.left) * scale_, -kFarthest, kFarthest),
          std::clamp((page_.top - host.y) * scale_, -kFarthest, kFarthest)};
}

void Painter::AddPath(const Path& path) {
  const Point* next = path.points.data();
  for (const Path::Verb verb : path.verbs) {
    switch (verb) {
      case Path::Verb::kMove: {
        const Point p = OnSheet(*next++);
        cairo_move_to(context_, p.x, p.y);
        break;
      }
      case Path::Verb::kLine: {
        const Point p = OnSheet(*next++);
        cairo_line_to(context_, p.x, p.y);
        break;
      }
      case Path::Verb::kCurve: {
        const Point p1 = OnSheet(next[0]), p2 = OnSheet(next[1]), p3 = OnSheet(next[2]);
        cairo_curve_to(context_, p1.x, p1.y, p2.x, p2.y, p3.x, p3.y);
        next += 3;
        break;
      }
      case Path::Verb::kClose:
        cairo_close_path(context_);
        break;
    }
  }
}

void Painter::Paint(const std::vector<Item>& items) {
  for (const Item& item : items) {
    std::visit([this](const auto& what) { Paint(what); }, item.what);
  }
}

void Painter::Paint(const Shape& shape) {
  if (!silhouette_ && !shape.ink.Fills() && !shape.ink.stroke.IsVisible()) return;
  AddPath(shape.path);
  PaintPath(shape.ink);
  cairo_new_path(context_);
}

void Painter::PaintPath(const Ink& ink) {
  cairo_set_fill_rule(context_, ink.evenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
  if (silhouette_) {
    SetColour(context_, {}, 1.0);
    cairo_fill_preserve(context_);
    return;
  }
  const bool fills = ink.Fills(), strokes = ink.stroke.IsVisible();
  if (fills && strokes && ink.opacity < 1.0) {
    cairo_push_group(context_);
    Fill(ink, 1.0);
    StrokePath(ink.stroke, 1.0);
    cairo_pop_group_to_source(context_);
    cairo_paint_with_alpha(context_, ink.opacity);
    return;
  }
  if (fills) Fill(ink, ink.opacity);
  if (strokes) StrokePath(ink.stroke, ink.opacity);
}

void Painter::Fill(const Ink& ink, double opacity) {
  if (ink.gradient != nullptr) {
    const Gradient& gradient = *ink.gradient;
    const std::vector<Gradient::ColourStop> stops = MergedStops(gradient);
    const Point from = OnSheet(gradient.from), to = OnSheet(gradient.to);
    const double radius = gradient.length * scale_;
    if (IsFinite(from) && IsFinite(to) && radius > 0.0 && radius <= kFarthest) {
      const Pattern pattern(gradient.radial ? cairo_pattern_create_radial(from.x, from.y, 0.0, from.x, from.y, radius)
                                            : cairo_pattern_create_linear(from.x, from.y, to.x, to.y));
      for (const auto& [position, colour] : stops) {
        cairo_pattern_add_color_stop_rgba(pattern.get(), position, colour.red, colour.green, colour.blue,
                                          colour.alpha * opacity);
      }
      cairo_set_source(context_, pattern.get());
    } else {
      // Without an extent all of the plane lies behind the last stop.
      SetColour(context_, stops.back().colour, opacity);
    }
    cairo_fill_preserve(context_);
  } else if (ink.tile != nullptr) {
    cairo_matrix_t sheetToHost = HostToSheet();
    cairo_matrix_invert(&sheetToHost);
    const Pattern pattern = PicturePattern(
        ink.tile->image.get(), Product(sheetToHost, CairoMatrix(ink.tile->hostToFill)), CAIRO_EXTEND_REPEAT);
    if (pattern == nullptr) return;
    cairo_save(context_);
    cairo_clip_preserve(context_);
    cairo_set_source(context_, pattern.get());
    cairo_paint_with_alpha(context_, opacity);
    cairo_restore(context_);
  } else {
    SetColour(context_, ink.fill, opacity);
    cairo_fill_preserve(context_);
  }
}

void Painter::StrokePath(const Stroke& stroke, double opacity) {
  SetColour(context_, stroke.colour, opacity);
  cairo_set_line_cap(context_, stroke.cap);
  cairo_set_line_join(context_, stroke.join);
  cairo_set_miter_limit(context_, stroke.miterLimit);
  if (stroke.kind == Stroke::Kind::kHairline) {
    cairo_save(context_);
    cairo_identity_matrix(context_);
    cairo_set_line_width(context_, hairline_);
    cairo_stroke_preserve(context_);
    cairo_restore(context_);
  } else {
    cairo_set_line_width(context_, std::min(stroke.width * scale_, kFarthest));
    cairo_stroke_preserve(context_);
  }
}

void Painter::Paint(const Text& text) {
  const Ink& ink = text.ink;
  if (!silhouette_ && !ink.Fills()) return;
  const TextLayout layout = LayOut(text);
  const cairo_matrix_t layoutToSheet =
      Product(Product({layout.unit, 0.0, 0.0, -layout.unit, text.origin.x, text.origin.y}, CairoMatrix(text.placement)),
              HostToSheet());
  const double fontSize = kLayoutFont * std::hypot(layoutToSheet.xx, layoutToSheet.yx);
  if (!IsUsable(layoutToSheet) || fontSize > kLargestFont) return;
  cairo_save(context_);
  cairo_transform(context_, &layoutToSheet);
  cairo_move_to(context_, layout.left, -layout.baseline);
  const bool flat = !silhouette_ && ink.gradient == nullptr && ink.tile == nullptr;
  if (flat) {
    SetColour(context_, ink.fill, ink.opacity);
    pango_cairo_show_layout(context_, layout.layout.get());
  } else {
    pango_cairo_layout_path(context_, layout.layout.get());
  }
  cairo_restore(context_);
  if (!flat) PaintPath(ink);
  cairo_new_path(context_);
}

void Painter::Paint(const Picture& picture) {
  const cairo_matrix_t squareToSheet = Product(CairoMatrix(picture.squareToHost), HostToSheet());
  if (!IsUsable(squareToSheet)) return;
  cairo_matrix_t sheetToSquare = squareToSheet;
  cairo_matrix_invert(&sheetToSquare);
  const Pattern pattern = PicturePattern(picture.image.get(), sheetToSquare, CAIRO_EXTEND_PAD);
  if (pattern == nullptr) return;
  Path square;
  const TM& m = picture.squareToHost;
  square.points = {{m.e, m.f}, {m.e + m.a, m.f + m.b}, {m.e + m.a + m.c, m.f + m.b + m.d}, {m.e + m.c, m.f + m.d}};
  square.verbs.assign(4, Path::Verb::kLine);
  square.verbs.front() = Path::Verb::kMove;
  cairo_save(context_);
  AddPath(square);
  cairo_clip(context_);
  if (silhouette_) {
    SetColour(context_, {}, 1.0);
    cairo_paint(context_);
  } else {
    cairo_set_source(context_, pattern.get());
    cairo_paint_with_alpha(context_, picture.opacity);
  }
  cairo_restore(context_);
}

void Painter::Paint(const Clip& clip) {
  if (clip.geometry.empty() || clip.content.empty()) return;
  const auto* shape = clip.geometry.size() == 1 ? std::get_if<Shape>(&clip.geometry.front().what) : nullptr;
  if (shape != nullptr) {
    cairo_save(context_);
    AddPath(shape->path);
    cairo_set_fill_rule(context_, shape->ink.evenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
    cairo_clip(context_);
    Paint(clip.content);
    cairo_restore(context_);
    return;
  }
  // Several shapes together: what any of them covers.
  cairo_push_group_with_content(context_, CAIRO_CONTENT_ALPHA);
  const bool wasSilhouette = std::exchange(silhouette_, true);
  Paint(clip.geometry);
  silhouette_ = wasSilhouette;
  const Pattern mask(cairo_pop_group(context_));
  cairo_push_group(context_);
  Paint(clip.content);
  cairo_pop_group_to_source(context_);
  cairo_mask(context_, mask.get());
}

}  // namespace preview
