#include "operators/painting.h"

#include "operators/clip.h"
#include "operators/colour.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "operators/path_end.h"
#include "run/command_queue.h"
#include "run/import_run.h"

namespace {

// Inside a compound path the paint is put off. True when it was.
bool Defer(PaintAction action) {
  if (run.path.compoundDepth == 0) return false;
  run.path.deferredPaint = action;
  return true;
}

void SendPaint() {
  EmitPaintColours();
  EndPath();
}

// strokeSelected stays: the M that opened the path has cleared it, and *U runs this with whatever is there.
void PaintFill() {
  ClosePath(kClose);
  if (Defer(PaintFill)) return;
  run.path.fillSelector = 1;
  SendPaint();
}

void PaintStroke() {
  if (Defer(PaintStroke)) return;
  run.path.fillSelector = 0;
  run.path.strokeSelected = 1;
  SendPaint();
}

void PaintCloseStroke() {
  ClosePath(kClose);
  PaintStroke();
}

void PaintFillStroke() {
  if (Defer(PaintFillStroke)) return;
  run.path.fillSelector = 1;
  run.path.strokeSelected = 1;
  SendPaint();
}

void PaintCloseFillStroke() {
  ClosePath(kClose);
  if (Defer(PaintCloseFillStroke)) return;
  run.path.fillSelector = 1;
  run.path.strokeSelected = 1;
  SendPaint();
}

// A path can be thrown away only outside all frames and clips. True when it was.
bool Discard() {
  if (run.clip.clipPending || run.graphics.saveDepth >= 1) return false;
  RollBackPath();
  return true;
}

}  // namespace

// f, F, fill, Fillp: - -> -
void OperatorFill(const OperatorCall&) { PaintFill(); }

// S: - -> -
void OperatorStroke(const OperatorCall&) { PaintStroke(); }

// s, @: - -> -
void OperatorCloseStroke(const OperatorCall&) { PaintCloseStroke(); }

// B, Pa, @B: - -> -
void OperatorFillStroke(const OperatorCall&) { PaintFillStroke(); }

// b, @b: - -> -. Alone among the paints it says first that clipped content begins.
void OperatorCloseFillStroke(const OperatorCall& call) {
  OperatorBeginClipped(call);
  PaintCloseFillStroke();
}

// N: - -> -
void OperatorDiscard(const OperatorCall&) { Discard(); }

// n, newpath: - -> -, or ... -> (cleared) where nothing is thrown away
void OperatorDiscardOrClear(const OperatorCall&) {
  if (!Discard()) ClearOperands();
}

// *u: - -> -
void OperatorBeginCompound(const OperatorCall&) { ++run.path.compoundDepth; }

// *U: - -> -
void OperatorEndCompound(const OperatorCall&) {
  if (--run.path.compoundDepth != 0) return;
  if (run.clip.clipPending == 1) {
    ClosePath(kClose);
    EndPath();
    StartClipGroup();
    EndClipGeometry();
    PushMarker(KEY_DOCP, 1);
    RestorePaintAttributes();
    run.clip.clipPending = 0;
  }
  run.path.deferredPaint();
}
