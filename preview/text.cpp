#include "preview/text.h"

#include <algorithm>

#include "headless_host/sanitizer.h"
#include "headless_host/text.h"

#if HEADLESS_HOST_ADDRESS_SANITIZER
// Pango and cairo look for fonts in threads of their own and leave patterns behind.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig\n"; }
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
#endif

namespace preview {

namespace {

// The composer measures a text by its capitals, a font by its em square: the usual ratio of the two, by which the
// filter makes heights out of font sizes as well.
constexpr double kCapitalHeight = 0.7;

constexpr double kThousandthOfAnInch = 2.54 / 1000.0;

struct FontDeleter {
  void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
};

struct ContextDeleter {
  void operator()(PangoContext* context) const { g_object_unref(context); }
};

struct FontOptionsDeleter {
  void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
};

// Glyphs keep their shape and distance at every size.
std::unique_ptr<PangoContext, ContextDeleter> UnhintedContext() {
  std::unique_ptr<PangoContext, ContextDeleter> context(
      pango_font_map_create_context(pango_cairo_font_map_get_default()));
  const std::unique_ptr<cairo_font_options_t, FontOptionsDeleter> options(cairo_font_options_create());
  cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
  pango_cairo_context_set_font_options(context.get(), options.get());
  pango_context_set_round_glyph_positions(context.get(), FALSE);
  return context;
}

}  // namespace

Text ReadParagraph(const ParagraphView& paragraph, const Ink& ink) {
  Text text;
  text.origin = {paragraph.originX * kThousandthOfAnInch, paragraph.originY * kThousandthOfAnInch};
  text.placement = paragraph.placement;
  const int justification = paragraph.justification.value_or(0);
  text.justification = justification == 1 ? 1.0 : justification == 2 ? 0.5 : 0.0;
  text.ink = ink;
  text.ink.stroke = {};
  for (const TextRunView& run : paragraph.runs) {
    if (!(run.height > 0.0) || !std::isfinite(run.height) || run.text.empty()) continue;
    text.runs.push_back({headless::Utf8FromText(run.text), headless::Utf8FromText(run.font.value_or(u"")),
                         run.height * kThousandthOfAnInch});
    std::string& characters = text.runs.back().text;
    characters.erase(std::remove(characters.begin(), characters.end(), '\0'), characters.end());
  }
  return text;
}

TextLayout LayOut(const Text& text) {
  const auto context = UnhintedContext();
  double tallest = 0.0;
  for (const TextRun& run : text.runs) tallest = std::max(tallest, run.height);
  TextLayout result{std::unique_ptr<PangoLayout, TextLayout::Deleter>(pango_layout_new(context.get())),
                    tallest / kCapitalHeight / kLayoutFont, 0.0, 0.0};
  PangoAttrList* attributes = pango_attr_list_new();
  std::string characters;
  for (const TextRun& run : text.runs) {
    const std::unique_ptr<PangoFontDescription, FontDeleter> font(pango_font_description_new());
    if (!run.font.empty()) pango_font_description_set_family(font.get(), run.font.c_str());
    pango_font_description_set_absolute_size(font.get(),
                                             std::max(1.0, run.height / tallest * kLayoutFont * PANGO_SCALE));
    PangoAttribute* attribute = pango_attr_font_desc_new(font.get());
    attribute->start_index = static_cast<guint>(characters.size());
    characters += run.text;
    attribute->end_index = static_cast<guint>(characters.size());
    pango_attr_list_insert(attributes, attribute);
  }
  PangoLayout* layout = result.layout.get();
  pango_layout_set_attributes(layout, attributes);
  pango_attr_list_unref(attributes);
  pango_layout_set_text(layout, characters.data(), static_cast<int>(characters.size()));
  pango_layout_set_auto_dir(layout, FALSE);
  pango_layout_set_alignment(layout, text.justification == 0.0   ? PANGO_ALIGN_LEFT
                                     : text.justification == 1.0 ? PANGO_ALIGN_RIGHT
                                                                 : PANGO_ALIGN_CENTER);
  PangoRectangle extents;
  pango_layout_get_extents(layout, nullptr, &extents);
  result.left = -extents.x / double{PANGO_SCALE} - text.justification * extents.width / double{PANGO_SCALE};
  result.baseline = pango_layout_get_baseline(layout) / double{PANGO_SCALE};
  return result;
}

Box TextBounds(const Text& text) {
  Box box;
  if (text.runs.empty()) return box;
  const TextLayout layout = LayOut(text);
  PangoRectangle ink;
  pango_layout_get_extents(layout.layout.get(), &ink, nullptr);
  if (ink.width <= 0 || ink.height <= 0) return box;
  const TM& m = text.placement;
  for (const int x : {ink.x, ink.x + ink.width}) {
    for (const int y : {ink.y, ink.y + ink.height}) {
      const double hostX = text.origin.x + (layout.left + x / double{PANGO_SCALE}) * layout.unit;
      const double hostY = text.origin.y - (y / double{PANGO_SCALE} - layout.baseline) * layout.unit;
      box.Add(Point{m.a * hostX + m.c * hostY + m.e, m.b * hostX + m.d * hostY + m.f});
    }
  }
  return box;
}

}  // namespace preview
