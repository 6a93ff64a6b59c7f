#include "paint/transparency.h"

#include <algorithm>
#include <memory>

#include "host/transparency.h"
#include "run/command_queue.h"
#include "run/import_run.h"
#include "run/number_text.h"

namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr std::int32_t kLastMarker = 99;  // percent; the stop list of the fill goes to 100

}  // namespace

std::uint8_t LowByte(double value) { return static_cast<std::uint8_t>(Truncate(value)); }

void PushUniformTransparency(std::uint8_t opacity) {
  std::unique_ptr<CQXTransparency> transparency(CQXTransparency::CreateTransparency(kUniformTransparency));
  if (!transparency) throw std::bad_alloc();
  static_cast<CQXUniformTransparency&>(*transparency).opacity = opacity;
  PushObject(KEY_TSPY, std::move(transparency));
}

// The host's object is given the forward matrix, despite the method's name: it is meant.
void BuildGradientTransparency(bool linear, const TM& forwardMatrix, double fillScale, double angle) {
  const GraphicsState& frame = CurrentFrame();
  std::unique_ptr<CQXTransparency> transparency(
      CQXTransparency::CreateTransparency(linear ? kLinearTransparency : kRadialTransparency));
  if (!transparency) throw std::bad_alloc();
  auto& shape = static_cast<CQXShapeTransparency&>(*transparency);
  shape.ChangeWorldToFillTm(forwardMatrix);
  shape.angle = angle * kDegreesPerRadian - 90.0;
  shape.length = fillScale;
  for (std::int32_t i = 0; i < frame.stopCount; ++i) {
    const GradientStop& stop = frame.stops->Stops()[i];
    shape.AddOpacityMarker({std::min(kLastMarker, Truncate(stop.offset * 100.0)), Truncate(stop.opacity * 100.0)});
  }
  PushObject(KEY_TSPY, std::move(transparency));
}

void ApplyUniformOpacity(std::u16string_view value) {
  GraphicsState& frame = CurrentFrame();
  if (frame.stopsPartlyTransparent) return;
  const std::int32_t opacity = Truncate(std::clamp(LeadingNumber(value), 0.0, 1.0) * 255.0);
  frame.opacity = opacity;
  PushUniformTransparency(static_cast<std::uint8_t>(opacity));
}
