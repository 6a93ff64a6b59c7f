// Gradient stops given to a frame by hand, as a document's gradient would leave them.
#pragma once

#include <new>
#include <vector>

#include "operators/graphics_state.h"
#include "run/host_memory.h"

// Replaces the stops of the current frame, and sets its flag as a gradient with these stops does.
inline void GiveStops(const std::vector<GradientStop>& stops) {
  GraphicsState& frame = CurrentFrame();
  ReleaseStops(frame);
  frame.stopCount = static_cast<std::int32_t>(stops.size());
  frame.stopsPartlyTransparent = 0;
  if (stops.empty()) return;
  frame.stops = new (AllocateHost(sizeof(StopBlock) + stops.size() * sizeof(GradientStop))) StopBlock;
  frame.stops->references = 1;
  frame.stops->room = static_cast<std::uint32_t>(stops.size());
  for (std::size_t i = 0; i < stops.size(); ++i) {
    new (frame.stops->Stops() + i) GradientStop(stops[i]);
    if (stops[i].opacity < 1.0) frame.stopsPartlyTransparent = 1;
  }
}
