#include "operators/path.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "filter_limits.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "operators/spaces.h"
#include "run/command_queue.h"
#include "run/host_memory.h"
#include "run/import_run.h"

namespace {

// The operator letters come in pairs, the small one relative to the pen.
bool IsRelative(const OperatorCall& call) { return call.token[0] >= u'a'; }

// x y -> -. False when an operand is missing; the point is then as far as it was popped.
bool PopPoint(Point* point) { return PopNumber(&point->y) && PopNumber(&point->x); }

Point Sum(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }

double Distance(Point a, Point b) {
  const double dx = a.x - b.x;
  const double dy = a.y - b.y;
  return std::sqrt(dx * dx + dy * dy);
}

// Host points, as a payload holds them.
void QueueHostBezier(Point p0, Point p1, Point p2, Point p3) {
  auto* record = static_cast<BezierRecord*>(TryAllocateHost(sizeof(BezierRecord)));
  if (!record) return;
  std::memset(record->reserved0, 0, sizeof record->reserved0);
  std::memset(record->reserved1, 0, sizeof record->reserved1);
  record->x0 = p0.x;
  record->y0 = p0.y;
  record->x1 = p1.x;
  record->y1 = p1.y;
  record->x2 = p2.x;
  record->y2 = p2.y;
  record->x3 = p3.x;
  record->y3 = p3.y;
  PushPayload(KEY_BEZI, sizeof *record, record);
}

// The segment of H and V. Its start is worked out anew from userCurrent, where L uses the device pen; and the test for
// a segment without length compares user space with device space. Both are meant.
void AxisLineTo(Point user) {
  PathState& path = run.path;
  if (user == path.deviceCurrent) return;
  const Point device = ToDevice(user);
  QueueDeviceLine(ToDevice(path.userCurrent), device);
  path.deviceCurrent = device;
  path.lastControl = path.userCurrent;
  path.userCurrent = user;
}

// The second control is remembered as soon as it has been popped whole, also when the first turns out to be missing.
void PopAndCurveTo(bool relative) {
  Point end, control2, control1;
  if (!PopPoint(&end) || !PopPoint(&control2)) return;
  if (!PopPoint(&control1)) {
    run.path.lastControl = relative ? Sum(control2, run.path.userCurrent) : control2;
    return;
  }
  CurveTo(control1, control2, end, relative);
}

}  // namespace

void QueueDeviceLine(Point from, Point to) {
  auto* record = static_cast<LineRecord*>(TryAllocateHost(sizeof(LineRecord)));
  if (!record) return;
  const Point p0 = ToHost(from);
  const Point p1 = ToHost(to);
  record->x0 = p0.x;
  record->y0 = p0.y;
  record->x1 = p1.x;
  record->y1 = p1.y;
  PushPayload(KEY_LINE, sizeof *record, record);
}

void QueueBezier(Point start, Point control1, Point control2, Point end) {
  QueueHostBezier(ToHost(start), ToHost(control1), ToHost(control2), ToHost(end));
}

void MoveTo(Point p, bool relative) {
  PathState& path = run.path;
  if (relative) p = Sum(p, path.userCurrent);
  path.userStart = path.userCurrent = path.lastControl = p;
  path.deviceStart = path.deviceCurrent = ToDevice(p);
  if (path.PathOpen) return;
  PushCommand(KEY_PATH);
  path.PathOpen = 1;
  path.strokeSelected = 0;
  path.fillSelector = 0;
}

void LineTo(Point p, bool relative) {
  PathState& path = run.path;
  if (relative) p = Sum(p, path.userCurrent);
  const Point device = ToDevice(p);
  if (device == path.deviceCurrent) return;
  QueueDeviceLine(path.deviceCurrent, device);
  path.deviceCurrent = device;
  path.lastControl = path.userCurrent;
  path.userCurrent = p;
}

void HorizontalTo(double x, bool relative) {
  const Point pen = run.path.userCurrent;
  AxisLineTo({relative ? x + pen.x : x, pen.y});
}

void VerticalTo(double y, bool relative) {
  const Point pen = run.path.userCurrent;
  AxisLineTo({pen.x, relative ? y + pen.y : y});
}

void CurveTo(Point control1, Point control2, Point end, bool relative) {
  PathState& path = run.path;
  if (relative) {
    control1 = Sum(control1, path.userCurrent);
    control2 = Sum(control2, path.userCurrent);
    end = Sum(end, path.userCurrent);
  }
  path.lastControl = control2;
  const Point pen = path.deviceCurrent;
  const Point c1 = ToDevice(control1);
  const Point c2 = ToDevice(control2);
  const Point p = ToDevice(end);
  if (pen == c1 && pen == c2 && pen == p) return;
  QueueBezier(pen, c1, c2, p);
  path.deviceCurrent = p;
  path.userCurrent = end;
}

// The first control is lastControl mirrored at the pen, in device space.
void SmoothCurveTo(Point control2, Point end, bool relative) {
  PathState& path = run.path;
  if (relative) {
    control2 = Sum(control2, path.userCurrent);
    end = Sum(end, path.userCurrent);
  }
  const Point pen = path.deviceCurrent;
  const Point mirrored = ToDevice(path.lastControl);
  const Point c1 = {2.0 * pen.x - mirrored.x, 2.0 * pen.y - mirrored.y};
  const Point c2 = ToDevice(control2);
  const Point p = ToDevice(end);
  if (pen == c1 && pen == c2 && pen == p) return;
  QueueBezier(pen, c1, c2, p);
  path.deviceCurrent = p;
  path.lastControl = control2;
  path.userCurrent = end;
}

// A quadratic never reaches the host as a curve: it is walked backwards in steps of about 10 user units, each piece
// written against the curve's direction, and the last one forwards. A sample with an exact 0.0 in either coordinate
// counts as no sample, and the piece that it begins is left out. All this is meant.
void QuadraticTo(Point c, Point p1, bool relative) {
  PathState& path = run.path;
  const Point p0 = path.userCurrent;
  if (relative) {
    p1 = Sum(p1, p0);
    c = Sum(c, p0);
  }
  path.lastControl = c;

  const double step = (1.0 / (Distance(p0, c) + Distance(c, p1))) * 10.0;
  double t = 1.0;
  Point previous = {0.0, 0.0};
  Point previousDevice = previous;
  const std::int32_t mostSamples = std::min(kMaxQuadraticSamples, path.samplesLeft);
  std::int32_t samples = 0;
  do {
    const double s = 1.0 - t;
    const Point p = {t * t * p0.x + 2.0 * t * s * c.x + s * s * p1.x, t * t * p0.y + 2.0 * t * s * c.y + s * s * p1.y};
    const Point device = ToDevice(p);
    if (previous.x != 0.0 && previous.y != 0.0) QueueDeviceLine(device, previousDevice);
    t -= step;
    previous = p;
    previousDevice = device;
  } while (t > 0.0 && ++samples < mostSamples);
  path.samplesLeft = std::max(0, path.samplesLeft - samples);
  const Point end = ToDevice(p1);
  QueueDeviceLine(previousDevice, end);
  path.userCurrent = p1;
  path.deviceCurrent = end;
}

// Raised to a cubic, unlike the other quadratic. userCurrent moves also when nothing is drawn, and lastControl ends on
// the curve's end, so that a second one in a row mirrors the pen onto itself.
void SmoothQuadraticTo(Point end, bool relative) {
  PathState& path = run.path;
  const Point p0 = path.userCurrent;
  if (relative) end = Sum(end, p0);
  constexpr double kThird = 0.3333333333333333;
  const Point c = {2.0 * p0.x - path.lastControl.x, 2.0 * p0.y - path.lastControl.y};
  const Point control1 = {(c.x + c.x + p0.x) * kThird, (c.y + c.y + p0.y) * kThird};
  const Point control2 = {(c.x + c.x + end.x) * kThird, (c.y + c.y + end.y) * kThird};
  path.userCurrent = end;

  const Point pen = path.deviceCurrent;
  const Point c1 = ToDevice(control1);
  const Point c2 = ToDevice(control2);
  const Point p = ToDevice(end);
  if (pen == c1 && pen == c2 && pen == p) return;
  QueueBezier(pen, c1, c2, p);
  path.deviceCurrent = p;
  path.lastControl = path.userCurrent;
}

// M, m: x y -> -
void OperatorMoveTo(const OperatorCall& call) {
  Point p;
  if (PopPoint(&p)) MoveTo(p, IsRelative(call));
}

// wMt: x y -> -
void OperatorMoveToAbsolute(const OperatorCall&) {
  Point p;
  if (PopPoint(&p)) MoveTo(p, false);
}

// L, l: x y -> -
void OperatorLineTo(const OperatorCall& call) {
  Point p;
  if (PopPoint(&p)) LineTo(p, IsRelative(call));
}

// wLt: x y -> -
void OperatorLineToAbsolute(const OperatorCall&) {
  Point p;
  if (PopPoint(&p)) LineTo(p, false);
}

// H, h: x -> -
void OperatorHorizontal(const OperatorCall& call) { HorizontalTo(PopNumberOrZero(), IsRelative(call)); }

// V, v: y -> -
void OperatorVertical(const OperatorCall& call) { VerticalTo(PopNumberOrZero(), IsRelative(call)); }

// C, c: x1 y1 x2 y2 x y -> -
void OperatorCurve(const OperatorCall& call) { PopAndCurveTo(IsRelative(call)); }

// wCto: x1 y1 x2 y2 x y -> -
void OperatorCurveAbsolute(const OperatorCall&) { PopAndCurveTo(false); }

// S?, s?: x2 y2 x y -> -
void OperatorSmoothCurve(const OperatorCall& call) {
  Point end, control2;
  if (PopPoint(&end) && PopPoint(&control2)) SmoothCurveTo(control2, end, IsRelative(call));
}

// Q, q: x1 y1 x y -> -
void OperatorQuadratic(const OperatorCall& call) {
  Point end, control;
  end.y = PopNumberOrZero();
  end.x = PopNumberOrZero();
  control.y = PopNumberOrZero();
  control.x = PopNumberOrZero();
  QuadraticTo(control, end, IsRelative(call));
}

// Tp, tp: x y -> -
void OperatorSmoothQuadratic(const OperatorCall& call) {
  Point end;
  end.y = PopNumberOrZero();
  end.x = PopNumberOrZero();
  SmoothQuadraticTo(end, IsRelative(call));
}

// Y, y: x1 y1 x y -> -. Both spellings are absolute, and the payload alone among all is not flipped in y.
void OperatorCurveToEnd(const OperatorCall&) {
  PathState& path = run.path;
  Point end, control;
  if (!PopPoint(&end) || !PopPoint(&control)) return;
  const Point pen = path.deviceCurrent;
  const Point c = ToDevice(control);
  const Point p = ToDevice(end);
  if (pen == c && pen == p) return;
  const auto scaled = [](Point device) { return Point{device.x * run.UnitScale, device.y * run.UnitScale}; };
  QueueHostBezier(scaled(pen), scaled(c), scaled(p), scaled(p));
  path.deviceCurrent = p;
}
