// Paints a list of objects with cairo.
#pragma once

#include <cairo.h>
#include <vector>

#include "preview/drawing.h"

namespace preview {

class Painter {
 public:
  // As StreamDrawer::Draw.
  Painter(cairo_t* context, const Box& page, double width, double height, double hairline);

  void Paint(const std::vector<Item>& items);

 private:
  void Paint(const Shape& shape);
  void Paint(const Text& text);
  void Paint(const Picture& picture);
  void Paint(const Clip& clip);
  // Fills and strokes the current path.
  void PaintPath(const Ink& ink);
  void Fill(const Ink& ink, double opacity);
  void StrokePath(const Stroke& stroke, double opacity);

  cairo_matrix_t HostToSheet() const;
  Point OnSheet(Point host) const;
  void AddPath(const Path& path);

  cairo_t* const context_;
  const Box page_;
  // The sheet is the page at the scale of its width, y down. Only if the picture is stretched do its units differ from
  // those of the device.
  const double scale_;
  const double hairline_;
  bool silhouette_ = false;  // all is painted opaque, to become a mask
};

}  // namespace preview
