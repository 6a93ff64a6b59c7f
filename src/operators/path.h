// Path construction: moveto, lineto and curves become records, one by one, as they come. No operator reports anything.
#pragma once

#include "operators/path_state.h"

struct OperatorCall;

// Queues a straight segment between two points of device space. Nothing is queued when memory has run out.
void QueueDeviceLine(Point from, Point to);
// Queues a cubic, all points in device space. Nothing is queued when memory has run out.
void QueueBezier(Point start, Point control1, Point control2, Point end);

// What the operators do once they have their operands; points in user space, relative ones measured from the pen.
void MoveTo(Point p, bool relative);
void LineTo(Point p, bool relative);
void HorizontalTo(double x, bool relative);
void VerticalTo(double y, bool relative);
void CurveTo(Point control1, Point control2, Point end, bool relative);
void SmoothCurveTo(Point control2, Point end, bool relative);
void QuadraticTo(Point control, Point end, bool relative);
void SmoothQuadraticTo(Point end, bool relative);

void OperatorMoveTo(const OperatorCall&);
void OperatorLineTo(const OperatorCall&);
void OperatorHorizontal(const OperatorCall&);
void OperatorVertical(const OperatorCall&);
void OperatorCurve(const OperatorCall&);
void OperatorSmoothCurve(const OperatorCall&);
void OperatorQuadratic(const OperatorCall&);
void OperatorSmoothQuadratic(const OperatorCall&);
void OperatorCurveToEnd(const OperatorCall&);
void OperatorMoveToAbsolute(const OperatorCall&);
void OperatorLineToAbsolute(const OperatorCall&);
void OperatorCurveAbsolute(const OperatorCall&);
