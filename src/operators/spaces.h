// From one space of coordinates to the next; what they are stands in graphics_state.h. Inline, since a Point that is
// passed in two registers and read as one vector stalls on its way through memory: a tenth of the import of path data.
#pragma once

#include "operators/graphics_state.h"
#include "run/import_run.h"

// Through the current matrix.
inline Point ToDevice(Point user) { return TransformPoint(run.graphics.Current().currentMatrix, user); }

inline Point ToHost(Point device) {
  return {device.x * run.UnitScale, run.DocHeight * run.UnitScale - device.y * run.UnitScale};
}
