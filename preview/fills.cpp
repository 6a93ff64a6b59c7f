#include "preview/fills.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "host/bitmap.h"
#include "preview/bitmap.h"

namespace preview {

namespace {

// By its bytes, since it lies at an odd offset in the record.
TM MatrixAt(const FillDefinition& fill, std::size_t offset) {
  TM matrix;
  std::memcpy(&matrix, reinterpret_cast<const unsigned char*>(&fill) + offset, sizeof matrix);
  return matrix;
}

double Unit(double value) { return std::isfinite(value) ? std::clamp(value, 0.0, 1.0) : 0.0; }

// A position cannot lie before the one in front of it.
template <class Stop>
double NextPosition(const std::vector<Stop>& stops, double percent) {
  return std::max(Unit(percent / 100.0), stops.empty() ? 0.0 : stops.back().position);
}

// The value of a list of stops at a position: `after` chooses between the two of a jump. `mix` interpolates.
template <class Stop, class Mix>
auto ValueAt(const std::vector<Stop>& stops, double position, bool after, Mix mix) {
  std::size_t i = 0;
  while (i < stops.size() && (after ? stops[i].position <= position : stops[i].position < position)) ++i;
  if (i == 0) return mix(stops.front(), stops.front(), 0.0);
  if (i == stops.size()) return mix(stops.back(), stops.back(), 0.0);
  const double span = stops[i].position - stops[i - 1].position;
  return mix(stops[i - 1], stops[i], span > 0.0 ? (position - stops[i - 1].position) / span : 0.0);
}

Colour Mix(const Gradient::ColourStop& a, const Gradient::ColourStop& b, double t) {
  const auto part = [t](double from, double to) { return from + (to - from) * t; };
  return {part(a.colour.red, b.colour.red), part(a.colour.green, b.colour.green), part(a.colour.blue, b.colour.blue),
          1.0};
}

double MixOpacity(const Gradient::OpacityStop& a, const Gradient::OpacityStop& b, double t) {
  return a.opacity + (b.opacity - a.opacity) * t;
}

}  // namespace

Colour ColourFromValue(std::uint32_t value) {
  const auto part = [value](int shift) { return static_cast<double>((value >> shift) & 0xFF) / 255.0; };
  return {part(0), part(8), part(16), 1.0};
}

std::shared_ptr<const Gradient> ReadGradient(const FillDefinition& fill) {
  auto gradient = std::make_shared<Gradient>();
  const TM matrix = MatrixAt(fill, offsetof(FillDefinition, forwardMatrix));
  gradient->radial = fill.fillType == kRadialFill;
  gradient->length = std::abs(fill.fillScale);
  gradient->from = gradient->to = {matrix.e, matrix.f};
  const double direction = std::hypot(matrix.c, matrix.d);
  if (direction > 0.0) {
    gradient->to.x += matrix.c / direction * gradient->length;
    gradient->to.y += matrix.d / direction * gradient->length;
  }
  if (fill.gradient.gradientForm == 3) {
    double a[3], b[3];
    std::memcpy(a, fill.gradient.colourA, sizeof a);
    std::memcpy(b, fill.gradient.colourB, sizeof b);
    const auto colour = [](const double* c) {
      return Colour{Unit(c[0] / 255.0), Unit(c[1] / 255.0), Unit(c[2] / 255.0), 1.0};
    };
    gradient->stops = {{0.0, colour(a)}, {1.0, colour(b)}};
    return gradient;
  }
  const std::uint32_t count = std::min(std::uint32_t{fill.gradient.stopCount}, kMaxStops);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t colour = fill.gradient.stopColours[i];
    const std::int32_t percent = fill.gradient.stopPositions[i];
    gradient->stops.push_back({NextPosition(gradient->stops, percent), ColourFromValue(colour)});
  }
  return gradient;
}

std::shared_ptr<const Gradient> WithOpacity(const Gradient& gradient, const TransparencyView& transparency) {
  auto result = std::make_shared<Gradient>(gradient);
  result->opacities.clear();
  for (const CTransMarker& marker : transparency.markers) {
    result->opacities.push_back({NextPosition(result->opacities, marker.position), Unit(marker.opacity / 100.0)});
  }
  const bool opaque = std::all_of(result->opacities.begin(), result->opacities.end(),
                                  [](const Gradient::OpacityStop& stop) { return stop.opacity == 1.0; });
  if (opaque) result->opacities.clear();
  return result;
}

std::vector<Gradient::ColourStop> MergedStops(const Gradient& gradient) {
  if (gradient.stops.empty() || gradient.opacities.empty()) return gradient.stops;
  std::vector<double> positions;
  for (const auto& stop : gradient.stops) positions.push_back(stop.position);
  for (const auto& stop : gradient.opacities) positions.push_back(stop.position);
  std::sort(positions.begin(), positions.end());
  positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
  std::vector<Gradient::ColourStop> merged;
  for (const double position : positions) {
    // Two entries, so that a jump of either list stays one.
    for (const bool after : {false, true}) {
      Colour colour = ValueAt(gradient.stops, position, after, Mix);
      colour.alpha = ValueAt(gradient.opacities, position, after, MixOpacity);
      merged.push_back({position, colour});
    }
  }
  return merged;
}

std::shared_ptr<const Tile> ReadTile(const FillDefinition& fill) {
  auto tile = std::make_shared<Tile>();
  tile->hostToFill = MatrixAt(fill, offsetof(FillDefinition, inverseMatrix));
  char16_t path[kTilePathUnits] = {};
  std::memcpy(path, fill.pattern.tilePath, sizeof path - sizeof path[0]);
  CQXBitmap* bitmap = path[0] == 0 ? nullptr : NewQXBitmap();
  if (bitmap == nullptr) return tile;
  if (bitmap->Create(path, 0, 0, 0, nullptr, nullptr, false)) tile->image = ImageOf(ViewBitmap(*bitmap));
  DeleteQXBitmap(bitmap);
  return tile;
}

}  // namespace preview
