#include "preview/image_file.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <pango/pango.h>
#include <algorithm>

#include "preview/drawing.h"

namespace preview {

namespace {

constexpr double kCentimetresPerInch = 2.54;
constexpr double kPointsPerInch = 72.0;
constexpr double kEmptyPage = 10.0;
// In centimetres; numbers beyond it have no digits left for what is drawn.
constexpr double kLargestPage = 1e12;

struct ContextDeleter {
  void operator()(cairo_t* context) const { cairo_destroy(context); }
};

std::optional<Colour> ReadColour(const std::string& text) {
  PangoColor colour;
  guint16 alpha = 0xFFFF;
  if (!pango_color_parse_with_alpha(&colour, &alpha, text.c_str())) return std::nullopt;
  return Colour{colour.red / 65535.0, colour.green / 65535.0, colour.blue / 65535.0, alpha / 65535.0};
}

Box PageOf(StreamDrawer& drawer, const ImageOptions& options) {
  Box page = options.page ? *options.page : drawer.Bounds();
  if (page.empty) return {0.0, 0.0, kEmptyPage, kEmptyPage, false};
  // A drawing of one straight line still has a page of one pixel's width.
  const double pixel = kCentimetresPerInch / options.dpi;
  if (page.Width() < pixel) page.right = page.left + pixel;
  if (page.Height() < pixel) page.top = page.bottom + pixel;
  return page;
}

cairo_status_t Append(void* file, const unsigned char* bytes, unsigned length) {
  return std::fwrite(bytes, 1, length, static_cast<std::FILE*>(file)) == length ? CAIRO_STATUS_SUCCESS
                                                                                : CAIRO_STATUS_WRITE_ERROR;
}

Surface MakeSurface(ImageFormat format, double width, double height, std::FILE* file) {
  switch (format) {
    case ImageFormat::kPdf:
      return Surface(cairo_pdf_surface_create_for_stream(Append, file, width, height));
    case ImageFormat::kSvg: {
      Surface surface(cairo_svg_surface_create_for_stream(Append, file, width, height));
      cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
      return surface;
    }
    case ImageFormat::kPng:
      break;
  }
  return Surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width), static_cast<int>(height)));
}

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.0f", value);
  return text;
}

}  // namespace

bool IsColour(const std::string& text) { return ReadColour(text).has_value(); }

std::string WriteImage(StreamDrawer& drawer, const ImageOptions& options, std::FILE* file) {
  const Box page = PageOf(drawer, options);
  if (!(page.Width() <= kLargestPage && page.Height() <= kLargestPage)) {
    return "the drawing has no end that could be shown";
  }
  const bool pdf = options.format == ImageFormat::kPdf, png = options.format == ImageFormat::kPng;
  const double unitsPerInch = pdf ? kPointsPerInch : options.dpi;
  const double scale = unitsPerInch / kCentimetresPerInch * options.zoom;
  double width = page.Width() * scale, height = page.Height() * scale;
  if (options.width) {
    height = options.height.value_or(height / width * *options.width);
    width = *options.width;
  } else if (options.height) {
    width = width / height * *options.height;
    height = *options.height;
  }
  if (png) {
    width = std::max(1.0, std::round(width));
    height = std::max(1.0, std::round(height));
  }
  if (!(width <= kMaxSide && height <= kMaxSide && (!png || width * height <= kMaxPixels))) {
    return "the picture would be " + Number(width) + " by " + Number(height) + (pdf ? " points" : " pixels") +
           ", and no side can be longer than " + Number(kMaxSide) +
           (png ? " and no PNG larger than " + Number(kMaxPixels) + " pixels" : std::string()) +
           "; --width or --height make it smaller";
  }

  const Surface surface = MakeSurface(options.format, width, height, file);
  {
    const std::unique_ptr<cairo_t, ContextDeleter> context(cairo_create(surface.get()));
    if (const auto colour = options.background ? ReadColour(*options.background) : std::nullopt) {
      cairo_set_source_rgba(context.get(), colour->red, colour->green, colour->blue, colour->alpha);
      cairo_paint(context.get());
    }
    drawer.Draw(context.get(), page, width, height, pdf ? kPointsPerInch / options.dpi : 1.0);
    if (const cairo_status_t status = cairo_status(context.get()); status != CAIRO_STATUS_SUCCESS) {
      return cairo_status_to_string(status);
    }
  }
  cairo_status_t status;
  if (png) {
    status = cairo_surface_write_to_png_stream(surface.get(), Append, file);
  } else {
    cairo_surface_finish(surface.get());
    status = cairo_surface_status(surface.get());
  }
  return status == CAIRO_STATUS_SUCCESS ? std::string() : cairo_status_to_string(status);
}

}  // namespace preview
