#include "operators/clip.h"

#include "host/application.h"
#include "operators/operator_machine.h"
#include "operators/path_end.h"
#include "run/command_queue.h"
#include "run/import_run.h"

namespace {

constexpr std::int32_t kDeepClips = 5;  // beyond, a debug run is warned

}  // namespace

void StartClipGroup() {
  run.clip.clipOpen = 1;
  PushValue(KEY_SCGR, 1);
  PushWidth(0.0, sizeof(double));
  PushValue(KEY_THST, 1);
  PushValue(KEY_FILL, -1);
  PushValue(KEY_OUTL, -1);
  PushMarker(KEY_CLIP, 1);
}

void EndClipGeometry() {
  run.clip.clipOpen = 1;
  PushMarker(KEY_CLIP, 0);
}

void EndClipGroup() { PushValue(KEY_ECGR, 1); }

void RestorePaintAttributes() {
  const GraphicsState& frame = CurrentFrame();
  PushValue(KEY_THST, 3);
  PushWidth(frame.lineWidth, sizeof(double));
  PushValue(KEY_FILL, frame.fill.colour);
  PushValue(KEY_OUTL, frame.outline.colour);
}

void StartGroup() {
  if (run.GroupsEnabled == 1) PushValue(KEY_SGRP, 1);
}

void EndGroup() {
  if (run.GroupsEnabled == 1) PushValue(KEY_EGRP, 1);
}

// W, W*: - -> -. The path that forms the clip stands in front of the group, whose geometry stays empty: it is meant.
void OperatorClip(const OperatorCall&) {
  ClipState& clip = run.clip;
  if (run.graphics.saveDepth < 1) return;
  ++clip.clipDepth;
  clip.SetLevel(clip.clipDepth, static_cast<std::uint32_t>(run.graphics.saveDepth));
  if (clip.clipDepth > kDeepClips && run.DebugMode == 1) TMessageBox(nullptr, u"error", u"wcount greater than 5", 0);
  if (run.path.compoundDepth != 0) {
    clip.clipPending = 1;
    return;
  }
  ClosePath(kClose);
  EndPath();
  StartClipGroup();
  EndClipGeometry();
  PushMarker(KEY_DOCP, 1);
  RestorePaintAttributes();
}

// wclip: ... -> (cleared)
void OperatorEndClip(const OperatorCall& call) {
  OperatorClose(call);
  EndPath();
  EndClipGeometry();
  PushMarker(KEY_DOCP, 1);
  run.clip.clipPending = 0;
}

// XXX: - -> -
void OperatorBeginClipped(const OperatorCall&) {
  if (run.clip.clipOpen == 1) PushMarker(KEY_DOCP, 1);
}

// u: - -> -
void OperatorStartGroup(const OperatorCall&) {
  StartGroup();
  ++run.clip.groupDepth;
}

// U: - -> -
void OperatorEndGroup(const OperatorCall&) {
  if (run.clip.groupDepth <= 0) return;
  EndGroup();
  --run.clip.groupDepth;
}
