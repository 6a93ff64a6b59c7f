// Sampled shapes: arcs, rectangles, ellipses and circles leave as polygons, one KEY_PLYR each.
#pragma once

struct OperatorCall;

// Destroys the polygon under construction, run.currentPolygon, if there is one: it was too small, or an error left it
// behind.
void DropPolygon();

void OperatorArc(const OperatorCall&);
void OperatorRectangle(const OperatorCall&);
void OperatorEllipse(const OperatorCall&);
void OperatorCircle(const OperatorCall&);
