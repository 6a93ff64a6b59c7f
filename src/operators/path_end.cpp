#include "operators/path_end.h"

#include <cmath>

#include "operators/operator_machine.h"
#include "operators/path.h"
#include "run/command_queue.h"
#include "run/host_memory.h"
#include "run/import_run.h"

namespace {

constexpr double kNearGap = 0.05;

void PushFlatFill(double fillScale) {
  auto* fill = static_cast<FillDefinition*>(AllocateHostCleared(sizeof(FillDefinition)));
  fill->fillClass = 0;
  fill->fillType = kFlatFill;
  fill->inverseMatrix = kIdentity;
  fill->forwardMatrix = kIdentity;
  fill->fillScale = fillScale;
  PushPayload(KEY_FDEF, sizeof *fill, fill);
}

}  // namespace

void PaintNothing() {}

void ClosePath(CloseMode mode) {
  PathState& path = run.path;
  if (!path.PathOpen || mode == kLeaveOpen) return;
  if (path.deviceCurrent == path.deviceStart) return;
  if (mode == kCloseIfNear && (std::fabs(path.deviceCurrent.x - path.deviceStart.x) > kNearGap ||
                               std::fabs(path.deviceCurrent.y - path.deviceStart.y) > kNearGap)) {
    return;
  }
  QueueDeviceLine(path.deviceCurrent, path.deviceStart);
  path.deviceCurrent = path.deviceStart;
  path.userCurrent = path.userStart;
}

void EndPath() {
  if (!run.path.PathOpen) return;
  run.path.PathOpen = 0;
  PushCommand(KEY_ENDP);
  if (run.clip.clipPending) return;
  PushFlatFill(1.0);
}

// Z, z, wCp: - -> -. Inside a compound path a close also cancels the paint deferred before it.
void OperatorClose(const OperatorCall&) {
  ClosePath(kClose);
  if (run.path.compoundDepth != 0) run.path.deferredPaint = PaintNothing;
}

// Z2, z2: - -> -
void OperatorCloseIfNear(const OperatorCall&) { ClosePath(kCloseIfNear); }

// @c: - -> -
void OperatorCloseAlone(const OperatorCall&) { ClosePath(kClose); }

// BB: ... -> (cleared). The record's scale stays 0.0 here, unlike at the end of a path.
void OperatorFlatFill(const OperatorCall&) {
  if (!run.paint.GradientFillPending) PushFlatFill(0.0);
}
