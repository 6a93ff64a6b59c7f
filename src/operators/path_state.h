// Where the pen is, and what becomes of the path under it. All zero as the library is loaded.
#pragma once

#include <cstdint>

#include "filter_limits.h"
#include "operators/graphics_state.h"

using PaintAction = void (*)();
void PaintNothing();

struct PathState {
  std::uint32_t PathOpen = 0;                    // a KEY_PATH has been queued and its KEY_ENDP not yet
  Point deviceCurrent = {0, 0};                  // the pen
  Point deviceStart = {0, 0};                    // start of the subpath
  Point userCurrent = {0, 0};                    // the pen; arcs and primitive shapes leave it behind
  Point userStart = {0, 0};                      // start of the subpath
  Point lastControl = {0, 0};                    // user space: what Sc and Tp mirror, not always a control point
  std::int32_t samplesLeft = kMaxImportSamples;  // of quadratics

  std::int32_t fillSelector =
      0;  // 1: EmitPaintColours takes the fill colour, -1: the outline colour as fill, else none
  std::uint32_t strokeSelected = 0;          // 1: EmitPaintColours sends the outline colour
  std::int32_t compoundDepth = 0;            // nesting of *u; above 0 painting is put off
  PaintAction deferredPaint = PaintNothing;  // what *U runs; keeps its value after running
};
