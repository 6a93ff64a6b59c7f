#include "operators/path.h"

#include <cmath>
#include <cstring>

#include "filter_limits.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
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
  std::memset(record, 0, sizeof *record);
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

void MoveTo(bool relative) {
  PathState& path = run.path;
  Point p;
  if (!PopPoint(&p)) return;
  if (relative) p = Sum(p, path.userCurrent);
  path.userStart = path.userCurrent = path.lastControl = p;
  path.deviceStart = path.deviceCurrent = ToDevice(p);
  if (path.PathOpen) return;
  path.PathOpen = 1;
  path.strokeSelected = 0;
  path.fillSelector = 0;
  PushCommand(KEY_PATH);
}

void LineTo(bool relative) {
  PathState& path = run.path;
  Point user;
  if (!PopPoint(&user)) return;
  if (relative) user = Sum(user, path.userCurrent);
  const Point device = ToDevice(user);
  if (device == path.deviceCurrent) return;
  QueueDeviceLine(path.deviceCurrent, device);
  path.deviceCurrent = device;
  path.lastControl = path.userCurrent;
  path.userCurrent = user;
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

// lastControl is written as soon as the second pair has been popped, also when the first then turns out to be missing.
void CurveTo(bool relative) {
  PathState& path = run.path;
  Point end, control2, control1;
  if (!PopPoint(&end) || !PopPoint(&control2)) return;
  if (relative) control2 = Sum(control2, path.userCurrent);
  path.lastControl = control2;
  if (!PopPoint(&control1)) return;
  if (relative) {
    end = Sum(end, path.userCurrent);
    control1 = Sum(control1, path.userCurrent);
  }

  const Point c1 = ToDevice(control1);
  const Point c2 = ToDevice(control2);
  const Point p = ToDevice(end);
  if (path.deviceCurrent == c1 && path.deviceCurrent == c2 && path.deviceCurrent == p) return;
  QueueBezier(path.deviceCurrent, c1, c2, p);
  path.deviceCurrent = p;
  path.userCurrent = end;
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

void QueueLine(Point from, Point to) { QueueDeviceLine(ToDevice(from), ToDevice(to)); }

void QueueBezier(Point start, Point control1, Point control2, Point end) {
  QueueHostBezier(ToHost(start), ToHost(control1), ToHost(control2), ToHost(end));
}

// M, m: x y -> -
void OperatorMoveTo(const OperatorCall& call) { MoveTo(IsRelative(call)); }

// wMt: x y -> -
void OperatorMoveToAbsolute(const OperatorCall&) { MoveTo(false); }

// L, l: x y -> -
void OperatorLineTo(const OperatorCall& call) { LineTo(IsRelative(call)); }

// wLt: x y -> -
void OperatorLineToAbsolute(const OperatorCall&) { LineTo(false); }

// H, h: x -> -
void OperatorHorizontal(const OperatorCall& call) {
  const Point pen = run.path.userCurrent;
  const double x = PopNumberOrZero();
  AxisLineTo({IsRelative(call) ? x + pen.x : x, pen.y});
}

// V, v: y -> -
void OperatorVertical(const OperatorCall& call) {
  const Point pen = run.path.userCurrent;
  const double y = PopNumberOrZero();
  AxisLineTo({pen.x, IsRelative(call) ? y + pen.y : y});
}

// C, c: x1 y1 x2 y2 x y -> -
void OperatorCurve(const OperatorCall& call) { CurveTo(IsRelative(call)); }

// wCto: x1 y1 x2 y2 x y -> -
void OperatorCurveAbsolute(const OperatorCall&) { CurveTo(false); }

// S?, s?: x2 y2 x y -> -. The first control is lastControl mirrored at the pen, in device space.
void OperatorSmoothCurve(const OperatorCall& call) {
  PathState& path = run.path;
  Point end, control2;
  if (!PopPoint(&end) || !PopPoint(&control2)) return;
  if (IsRelative(call)) {
    end = Sum(end, path.userCurrent);
    control2 = Sum(control2, path.userCurrent);
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

// Q, q: x1 y1 x y -> -. A quadratic never reaches the host as a curve: it is walked backwards in steps of about 10 user
// units, each piece written against the curve's direction, and the last one forwards. A sample with an exact 0.0 in
// either coordinate counts as no sample, and the piece that it begins is left out. All this is meant.
void OperatorQuadratic(const OperatorCall& call) {
  PathState& path = run.path;
  const Point p0 = path.userCurrent;
  Point p1, c;
  p1.y = PopNumberOrZero();
  p1.x = PopNumberOrZero();
  c.y = PopNumberOrZero();
  c.x = PopNumberOrZero();
  if (IsRelative(call)) {
    p1 = Sum(p1, p0);
    c = Sum(c, p0);
  }
  path.lastControl = c;

  const double step = (1.0 / (Distance(p0, c) + Distance(c, p1))) * 10.0;
  double t = 1.0;
  Point previous = {0.0, 0.0};
  int samples = 0;
  do {
    const double s = 1.0 - t;
    const Point p = {t * t * p0.x + 2.0 * t * s * c.x + s * s * p1.x, t * t * p0.y + 2.0 * t * s * c.y + s * s * p1.y};
    if (previous.x != 0.0 && previous.y != 0.0) QueueLine(p, previous);
    t -= step;
    previous = p;
  } while (t > 0.0 && ++samples < kMaxQuadraticSamples);
  QueueLine(previous, p1);
  path.userCurrent = p1;
  path.deviceCurrent = ToDevice(p1);
}

// Tp, tp: x y -> -. Raised to a cubic, unlike Q. userCurrent moves also when nothing is drawn, and lastControl ends on
// the curve's end, so that a second one in a row mirrors the pen onto itself.
void OperatorSmoothQuadratic(const OperatorCall& call) {
  PathState& path = run.path;
  const Point p0 = path.userCurrent;
  Point end;
  end.y = PopNumberOrZero();
  end.x = PopNumberOrZero();
  if (IsRelative(call)) end = Sum(end, p0);
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
