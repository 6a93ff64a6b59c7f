#include "tests/support/machine_state.h"

#include "platform/narrow_text.h"
#include "tests/support/filter_test.h"

namespace {

struct Line {
  std::string text;

  template <class... Values>
  void Add(const char* name, Values... values) {
    text += name;
    ((text += ' ' + ShowNumber(static_cast<double>(values))), ...);
    text += "; ";
  }
  void Add(const char* name, const TM& m) { Add(name, m.a, m.b, m.c, m.d, m.e, m.f); }
  void Add(const char* name, const PaintColour& c) {
    Add(name, c.colour, c.tint, c.kind, c.cmyk[0], c.cmyk[1], c.cmyk[2], c.cmyk[3], c.rgb[0], c.rgb[1], c.rgb[2],
        c.isRgb);
    text += Utf8FromWide(c.name) + "; ";
  }
};

}  // namespace

std::string MachineState() {
  Line line;
  const PathState& path = run.path;
  line.Add("open", path.PathOpen);
  line.Add("device", path.deviceCurrent.x, path.deviceCurrent.y, path.deviceStart.x, path.deviceStart.y);
  line.Add("user", path.userCurrent.x, path.userCurrent.y, path.userStart.x, path.userStart.y);
  line.Add("control", path.lastControl.x, path.lastControl.y);
  line.Add("selectors", path.fillSelector, path.strokeSelected);
  line.Add("compound", path.compoundDepth, path.deferredPaint == PaintNothing);
  line.Add("gradient", run.paint.GradientFillPending);
  line.Add("clip", run.clip.clipOpen, run.clip.clipPending, run.clip.clipDepth);
  line.Add("groups", run.clip.groupDepth);
  line.Add("frames", run.graphics.frameIndex, run.graphics.saveDepth);
  line.Add("scanner", run.skipArrayOpen, run.braceDepth);
  line.Add("default", run.graphics.defaultMatrix);
  const GraphicsState& frame = CurrentFrame();
  line.Add("matrix", frame.currentMatrix);
  line.Add("gradientMatrix", frame.gradientMatrix);
  line.Add("fill", frame.fill);
  line.Add("outline", frame.outline);
  line.Add("lines", frame.lineCap, frame.lineJoin, frame.miterLimit, frame.miterLimitActive, frame.thicknessState,
           frame.lineWidth);
  line.Add("opacity", frame.opacity);
  return line.text;
}
