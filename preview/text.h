// Paragraphs: from the host's composer to layouts of Pango.
#pragma once

#include <pango/pangocairo.h>
#include <memory>

#include "headless_host/inspection.h"
#include "preview/drawing.h"

namespace preview {

// The paragraph with the fill of this ink: every paragraph comes with an outline of a hairline in force, which belongs
// to the shapes around it. Nothing is drawn of a run whose height is not positive and finite.
Text ReadParagraph(const ParagraphView& paragraph, const Ink& ink);

// The layout of a text, in units of its own. The left end of its longest line has x = 0.
struct TextLayout {
  struct Deleter {
    void operator()(PangoLayout* object) const { g_object_unref(object); }
  };
  std::unique_ptr<PangoLayout, Deleter> layout;
  double unit;      // in host units
  double left;      // of the layout from the text's origin
  double baseline;  // of its first line, from its top
};
TextLayout LayOut(const Text& text);

// The size of the largest font in a layout, in its units.
inline constexpr double kLayoutFont = 1000.0;

// What the text covers, in host units.
Box TextBounds(const Text& text);

}  // namespace preview
