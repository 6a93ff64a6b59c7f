#include "operators/line_attributes.h"

#include <cmath>

#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "run/command_queue.h"
#include "run/host_memory.h"
#include "run/import_run.h"

namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kThinnest = 0.001;     // what a width of 0 becomes
constexpr std::uint32_t kAxesForm = 8;  // tokens of a text in which wPn looks at the matrix
constexpr std::int32_t kLimitSet = 2;   // of miterLimitActive

// The frame keeps a width whose record found no memory only where the operator has stored it before.
double* NewWidth() { return static_cast<double*>(TryAllocateHost(sizeof(double))); }

void SendWidth(double* payload, double width, std::uint32_t size) {
  *payload = width;
  PushPayload(KEY_WIDT, size, payload);
}

}  // namespace

// w: width -> -
void OperatorLineWidth(const OperatorCall&) {
  double width;
  if (!PopNumber(&width)) return;
  if (width == 0.0) width = kThinnest;
  GraphicsState& frame = CurrentFrame();
  frame.lineWidth = width * run.UnitScale;
  if (double* payload = NewWidth()) SendWidth(payload, frame.lineWidth, 0);
}

// wPn: w1 w2 ignored -> -
void OperatorLineWidthOfAxes(const OperatorCall& call) {
  PopDiscard();
  const double w2 = PopNumberOrZero();
  const double w1 = PopNumberOrZero();
  GraphicsState& frame = CurrentFrame();
  double width = std::sqrt(w1 * w2);
  if (call.tokenCount == kAxesForm) {
    const TM& m = frame.currentMatrix;
    width *= std::sqrt(std::hypot(m.b, m.d) * std::hypot(m.a, m.c));
  }
  frame.outline.colour = frame.fill.colour;
  double* payload = NewWidth();
  if (!payload) return;
  frame.lineWidth = width * run.UnitScale;
  SendWidth(payload, frame.lineWidth, 0);
}

// @w: sx sy angle [matrix] flag -> -, or [matrix] flag sx sy angle -> -, told apart by what lies under the top
void OperatorLineWidthOfMatrix(const OperatorCall&) {
  double top;
  if (!PopNumber(&top)) return;
  if (run.operands.empty()) return;

  TM matrix = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  const auto popMatrix = [&matrix] {
    const PoppedOperand array;
    const auto values = array.Values();
    double* const members[] = {&matrix.a, &matrix.b, &matrix.c, &matrix.d, &matrix.e, &matrix.f};
    for (std::size_t i = 0; i < 6 && i < values.size(); ++i) *members[i] = values[i];
  };
  double flag, angle, sx, sy;
  if (run.operands.FromTop(0).kind == OperandKind::Array) {
    popMatrix();
    flag = top;
    angle = PopNumberOrZero();
    sy = PopNumberOrZero();
    sx = PopNumberOrZero();
  } else {
    angle = top;
    sy = PopNumberOrZero();
    sx = PopNumberOrZero();
    flag = top;
    PopNumber(&flag);
    if (flag != 0.0 && !run.operands.empty()) popMatrix();
  }

  double c = 1.0;
  double s = 0.0;
  if (angle != 0.0) {
    c = std::cos(angle * kRadiansPerDegree);
    s = std::sin(angle * kRadiansPerDegree);
  }
  TM m = {c * sx, s * sx, -s * sy, c * sy, 0.0, 0.0};
  if (flag != 0.0) m = ConcatMatrix(matrix, m);
  double* payload = NewWidth();
  if (!payload) return;
  GraphicsState& frame = CurrentFrame();
  frame.lineWidth = std::sqrt(std::hypot(m.a, m.c) * std::hypot(m.b, m.d)) * run.UnitScale;
  SendWidth(payload, frame.lineWidth, sizeof(double));
}

// J: cap -> -
void OperatorLineCap(const OperatorCall&) {
  const std::int32_t operand = PopIntegerOrZero();
  const std::int32_t cap = operand == 1 ? 2 : operand == 2 ? 1 : 0;
  PushValue(KEY_LNST, cap);
  CurrentFrame().lineCap = cap;
}

// j: join -> -. A limit that the frame, or one below it, has set goes out again after any join.
void OperatorLineJoin(const OperatorCall&) {
  GraphicsState& frame = CurrentFrame();
  std::int32_t join = PopIntegerOrZero();
  if (join == 0) {
    join = 2;
    frame.miterLimit = 100;
    frame.miterLimitActive = kLimitSet;
  } else if (join == 1) {
    join = 0;
  } else if (join == 2) {
    frame.miterLimit = 600;
    frame.miterLimitActive = kLimitSet;
  }
  PushValue(KEY_CNST, join);
  frame.lineJoin = join;
  if (frame.miterLimitActive == kLimitSet) PushValue(KEY_MLIM, frame.miterLimit);
}

// d: array phase -> -. Dashes have no effect.
void OperatorDash(const OperatorCall&) { DropOperands(2); }

// i: flatness -> -
void OperatorFlatness(const OperatorCall&) { PopDiscard(); }
