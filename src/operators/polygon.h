// Sampled shapes: arcs, rectangles, ellipses and circles leave as polygons, one KEY_PLYR each.
#pragma once

#include "operators/graphics_state.h"

struct OperatorCall;

// Destroys the polygon under construction, run.currentPolygon, if there is one: it was too small, or an error left it
// behind.
void DropPolygon();

// An arc of an ellipse as path data tells it; it begins at the pen.
struct Arc {
  double rx, ry;
  double rotation;  // degrees
  bool largeArc, sweep;
  Point end;  // user space
};

// The polygon lies among the segments of the path. Of the pen only its device side moves, so that a relative operator
// behind an arc still measures from the point before it: it is meant.
void ArcTo(Arc arc, bool relative);

void OperatorArc(const OperatorCall&);
void OperatorRectangle(const OperatorCall&);
void OperatorEllipse(const OperatorCall&);
void OperatorCircle(const OperatorCall&);
