// A drawn stream as a PNG, PDF or SVG file.
#pragma once

#include <cstdio>
#include <optional>
#include <string>

#include "preview/draw_stream.h"

namespace preview {

enum class ImageFormat { kPng, kPdf, kSvg };

struct ImageOptions {
  ImageFormat format = ImageFormat::kPng;
  // Of the picture: pixels of a PNG or SVG, points of a PDF. One alone keeps the shape of the page; both stretch it;
  // without either the size is that of the page.
  std::optional<double> width = std::nullopt, height = std::nullopt;
  double zoom = 1.0;                                     // of the page's size
  double dpi = 96.0;                                     // pixels to an inch of the page in a PNG or SVG
  std::optional<std::string> background = std::nullopt;  // as IsColour takes it; none leaves the picture transparent
  // The page in host units; without it what the drawing covers, and of an empty drawing 10 by 10 centimetres.
  std::optional<Box> page = std::nullopt;
};

// The longest side of a picture and the most pixels that it can have.
inline constexpr double kMaxSide = 32767.0;
inline constexpr double kMaxPixels = 100e6;

// "#rgb", "#rrggbb", "#rrggbbaa" or a name of the X Window System's colours.
bool IsColour(const std::string& text);

// Writes the picture to an open file, which stays the caller's. Empty on success; otherwise one line that says what is
// wrong. Failures of the file itself show in its error flag as well.
std::string WriteImage(StreamDrawer& drawer, const ImageOptions& options, std::FILE* file);

}  // namespace preview
