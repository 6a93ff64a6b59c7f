#include "operators/graphics_state.h"

#include <cstring>

#include "host/application.h"
#include "operators/clip.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "paint/transparency.h"
#include "run/command_queue.h"
#include "run/host_memory.h"
#include "run/import_run.h"

namespace {

// Sends what the frame below holds otherwise, gives the popped frame's stops back and clears it. The index has been
// lowered.
void ApplyFramePop() {
  GraphicsStateStack& stack = run.graphics;
  GraphicsState& popped = stack.Frame(stack.frameIndex + 1);
  const GraphicsState& current = stack.Frame(stack.frameIndex);
  // A frame's opacity is on the scale 0 to 255, the first frame's 1.0 apart, and is multiplied all the same: 1.0 gives
  // 255, 128 gives 128, and 100 gives 156.
  if (popped.opacity != current.opacity) PushUniformTransparency(LowByte(current.opacity * 255.0));
  if (popped.fill.colour != current.fill.colour) PushValue(KEY_FILL, current.fill.colour);
  ReleaseStops(popped);
  std::memset(static_cast<void*>(&popped), 0, sizeof popped);
}

void CopyFrameBelow() {
  GraphicsStateStack& stack = run.graphics;
  GraphicsState& frame = stack.Frame(stack.frameIndex);
  frame = stack.Frame(stack.frameIndex - 1);
  if (frame.stops) ++frame.stops->references;
  stack.Select(stack.frameIndex);
}

}  // namespace

GraphicsStateStack::~GraphicsStateStack() {
  for (auto& block : blocks_) {
    for (std::size_t i = 0; i < kFrameBlock; ++i) ReleaseStops(block[i]);
  }
}

GraphicsState& GraphicsStateStack::Frame(std::int32_t index) {
  const auto block = static_cast<std::size_t>(index) / kFrameBlock;
  while (blocks_.size() <= block) blocks_.push_back(std::make_unique<GraphicsState[]>(kFrameBlock));
  return blocks_[block][static_cast<std::size_t>(index) % kFrameBlock];
}

void GraphicsStateStack::Select(std::int32_t index) {
  current_ = &Frame(index);
  frameIndex = index;
}

GraphicsState& CurrentFrame() { return run.graphics.Current(); }

void InitialiseGraphicsState() {
  GraphicsStateStack& stack = run.graphics;
  stack.Select(stack.frameIndex);
  GraphicsState& frame = stack.Current();
  frame.currentMatrix = kIdentity;
  frame.gradientMatrix = kIdentity;
  frame.opacity = 1.0;
  stack.defaultMatrix = frame.currentMatrix;
  stack.Frame(0).lineJoin = 1;
  frame.fill.colour = 0;
}

TM ConcatMatrix(const TM& first, const TM& second) {
  return {first.a * second.a + first.b * second.c,
          first.a * second.b + first.b * second.d,
          first.c * second.a + first.d * second.c,
          first.c * second.b + first.d * second.d,
          first.e * second.a + first.f * second.c + second.e,
          first.e * second.b + first.f * second.d + second.f};
}

void PushGraphicsState() {
  GraphicsStateStack& stack = run.graphics;
  stack.Frame(stack.frameIndex + 1);  // finds its memory before anything changes
  ++stack.saveDepth;
  ++stack.frameIndex;
  CopyFrameBelow();
}

void PopGraphicsState() {
  GraphicsStateStack& stack = run.graphics;
  ClipState& clip = run.clip;
  if (stack.saveDepth == 0) return;
  stack.Select(stack.frameIndex - 1);
  ApplyFramePop();
  if (clip.clipDepth <= 0) {
    ClearOperands();
    --stack.saveDepth;
    return;
  }
  if (clip.clipDepth > kMaxClipLevels) TMessageBox(nullptr, u"error", u"wcount greater than 999", 0);
  if (static_cast<std::uint32_t>(stack.saveDepth) == clip.Level(clip.clipDepth)) {
    PushMarker(KEY_DOCP, 0);
    clip.clipOpen = 0;
    PushValue(KEY_ECGR, 1);
    clip.SetLevel(clip.clipDepth, 0);
    --stack.saveDepth;
    --clip.clipDepth;
  } else {
    --stack.saveDepth;
  }
}

void ReleaseStops(GraphicsState& frame) {
  if (frame.stops && --frame.stops->references == 0) FreeHost(frame.stops);
  frame.stops = nullptr;
}

// gs: - -> -
void OperatorPushState(const OperatorCall&) { PushGraphicsState(); }

// gr: - -> -
void OperatorPopState(const OperatorCall&) { PopGraphicsState(); }

// @rax: - -> -. At the first frame the stack grows by one that no pop will take away.
void OperatorReplaceTopFrame(const OperatorCall&) {
  GraphicsStateStack& stack = run.graphics;
  if (stack.frameIndex > 0) {
    stack.Select(stack.frameIndex - 1);
    ApplyFramePop();
  }
  stack.Frame(stack.frameIndex + 1);
  ++stack.frameIndex;
  CopyFrameBelow();
}

// tr, wTl: tx ty -> -. Moves the origin, in the matrix's own axes.
void OperatorTranslate(const OperatorCall&) {
  double tx, ty;
  if (!PopNumber(&ty) || !PopNumber(&tx)) return;
  TM& m = CurrentFrame().currentMatrix;
  const Point origin = TransformPoint(m, {tx, ty});
  m.e = origin.x;
  m.f = origin.y;
}

// @sv, wSav: - -> -
void OperatorSaveMatrix(const OperatorCall&) { run.graphics.defaultMatrix = CurrentFrame().currentMatrix; }

// @rs, wRe: - -> -
void OperatorRestoreMatrix(const OperatorCall&) { CurrentFrame().currentMatrix = run.graphics.defaultMatrix; }

// wDocm: - -> -. Counts only as the one token of its text.
void OperatorRestoreDocumentMatrix(const OperatorCall& call) {
  if (call.tokenCount == 1) {
    OperatorRestoreMatrix(call);
  } else {
    ClearOperands();
  }
}
