// The transform attributes.
#pragma once

#include <string_view>

enum class MatrixTarget { Current, Gradient };

// Multiplies each function of the text into a matrix of the current frame, the leftmost outermost. A word that is no
// function ends the parse; what stands in front of it stays applied.
void ParseTransform(std::u16string_view text, MatrixTarget target);
