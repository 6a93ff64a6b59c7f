// What a command stream draws, as a list of objects, each with the paint that was in force when it came.
#pragma once

#include <cairo.h>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "host/matrix.h"
#include "preview/geometry.h"

namespace preview {

// Each component 0 to 1; alpha is not multiplied in.
struct Colour {
  double red = 0.0, green = 0.0, blue = 0.0, alpha = 1.0;
};

// In host units. The stops are in the order of the record.
struct Gradient {
  struct ColourStop {
    double position;  // 0 to 1, never below that of the stop before it
    Colour colour;
  };
  struct OpacityStop {
    double position;
    double opacity;  // 0 to 1
  };

  bool radial = false;
  Point from = {}, to = {};  // of a linear one; `from` is the centre of a radial one
  double length = 0.0;       // from `from` to `to`; the radius of a radial one
  std::vector<ColourStop> stops;
  std::vector<OpacityStop> opacities;  // empty if opaque
};

struct SurfaceDeleter {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

// Repeats over the plane, once for each unit square of fill space, upright in it.
struct Tile {
  std::shared_ptr<cairo_surface_t> image;  // null if there is none to be had
  TM hostToFill;
};

struct Stroke {
  enum class Kind { kNone, kHairline, kThick };
  Kind kind = Kind::kNone;
  Colour colour;
  double width = 0.0;  // host units
  cairo_line_cap_t cap = CAIRO_LINE_CAP_BUTT;
  cairo_line_join_t join = CAIRO_LINE_JOIN_MITER;
  double miterLimit = 2.0;

  bool IsVisible() const {
    return colour.alpha > 0.0 && (kind == Kind::kHairline || (kind == Kind::kThick && width > 0.0));
  }
};

struct Ink {
  bool flat = true;  // there is a fill colour
  Colour fill;
  std::shared_ptr<const Gradient> gradient;  // takes the place of the colour
  std::shared_ptr<const Tile> tile;          // likewise
  bool evenOdd = false;
  Stroke stroke;
  double opacity = 1.0;  // of fill and stroke together

  // A gradient without a stop and a tile without a picture paint nothing.
  bool Fills() const {
    if (gradient != nullptr) return !gradient->stops.empty();
    return tile != nullptr ? tile->image != nullptr : flat;
  }
};

struct Shape {
  Path path;
  Ink ink;
};

struct TextRun {
  std::string text;  // UTF-8
  std::string font;  // the family; empty if unknown
  double height;     // of a capital letter, host units
};

struct Text {
  Point origin;                // on the first baseline
  double justification = 0.0;  // the part of a line's length that lies left of the origin
  TM placement;                // applied in host units
  std::vector<TextRun> runs;
  Ink ink;
};

// The picture fills the unit square, upright.
struct Picture {
  std::shared_ptr<cairo_surface_t> image;
  TM squareToHost;
  double opacity;
};

struct Item;

// Draws `content` where `geometry` has drawn anything.
struct Clip {
  std::vector<Item> geometry, content;
};

struct Item {
  std::variant<Shape, Text, Picture, Clip> what;
};

}  // namespace preview
