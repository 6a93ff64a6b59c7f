// Transparency objects of the host: uniform ones from opacity, graded ones from the stops of a gradient.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/matrix.h"

// The low 8 bits of a number cut towards zero.
std::uint8_t LowByte(double value);

// KEY_TSPY with a uniform transparency; 0 transparent to 255 opaque.
void PushUniformTransparency(std::uint8_t opacity);

// KEY_TSPY with a gradient of the current frame's stop opacities over the geometry of a fill. `linear` false: radial.
// `angle` in radians.
void BuildGradientTransparency(bool linear, const TM& forwardMatrix, double fillScale, double angle);

// An opacity as a style gives it: the text behind the colon. Does nothing in a frame with partly transparent stops.
void ApplyUniformOpacity(std::u16string_view value);
