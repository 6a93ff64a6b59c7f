#include "preview/draw_stream.h"

#include <algorithm>
#include <utility>

#include "headless_host/inspection.h"
#include "preview/bitmap.h"
#include "preview/bounds.h"
#include "preview/clip_stack.h"
#include "preview/fills.h"
#include "preview/painter.h"
#include "preview/path_builder.h"
#include "preview/text.h"

namespace preview {

struct StreamDrawer::State {
  Ink ink;
  PathBuilder path;
  bool pathOpen = false;  // between KEY_PATH and KEY_ENDP
  ClipStack clips;
  std::vector<Item> items;  // all, once the stream has ended

  void AddShape(Path shape) {
    if (!shape.IsEmpty()) clips.Add({Shape{std::move(shape), ink}});
  }
  void EndPath() {
    AddShape(path.Finish());
    pathOpen = false;
  }
  const std::vector<Item>& Finish() {
    EndPath();
    std::vector<Item> rest = clips.Finish();
    std::move(rest.begin(), rest.end(), std::back_inserter(items));
    return items;
  }

  void SetFill(std::uint32_t value);
  void SetFillDefinition(const FillDefinition& fill);
  void SetTransparency(const TransparencyView& transparency);
};

namespace {

constexpr std::uint32_t kNothingPainted = 0xFFFFFFFF;

template <class Payload>
const Payload& PayloadOf(const ImportCommand& command) {
  return *static_cast<const Payload*>(command.data);
}

Stroke::Kind StrokeKind(std::int32_t thickness) {
  if (thickness == 2) return Stroke::Kind::kHairline;
  return thickness == 3 ? Stroke::Kind::kThick : Stroke::Kind::kNone;
}

cairo_line_cap_t LineCap(std::int32_t value) {
  if (value == 1) return CAIRO_LINE_CAP_SQUARE;
  return value == 2 ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT;
}

cairo_line_join_t LineJoin(std::int32_t value) {
  if (value == 0) return CAIRO_LINE_JOIN_ROUND;
  return value == 1 ? CAIRO_LINE_JOIN_BEVEL : CAIRO_LINE_JOIN_MITER;
}

}  // namespace

void StreamDrawer::State::SetFill(std::uint32_t value) {
  ink.flat = value != kNothingPainted;
  ink.fill = ColourFromValue(value);
  ink.gradient.reset();
  ink.tile.reset();
}

void StreamDrawer::State::SetFillDefinition(const FillDefinition& fill) {
  ink.gradient.reset();
  ink.tile.reset();
  if (fill.fillClass != 4) return;
  if (fill.fillType == kLinearFill || fill.fillType == kRadialFill) ink.gradient = ReadGradient(fill);
}

void StreamDrawer::State::SetTransparency(const TransparencyView& transparency) {
  if (transparency.type == kUniformTransparency) {
    ink.opacity = transparency.opacity / 255.0;
  } else if (ink.gradient != nullptr) {
    ink.gradient = WithOpacity(*ink.gradient, transparency);
  }
}

StreamDrawer::StreamDrawer() : state_(std::make_unique<State>()) {}

StreamDrawer::~StreamDrawer() = default;

void StreamDrawer::Take(const ImportCommand& command) {
  State& state = *state_;
  Ink& ink = state.ink;
  // Segments outside a path are one of their own, which ends with the next record of another kind.
  if (!state.pathOpen && command.key != KEY_LINE && command.key != KEY_BEZI) state.EndPath();
  switch (command.key) {
    case KEY_FILL:
      state.SetFill(static_cast<std::uint32_t>(command.value));
      break;
    case KEY_OUTL:
      ink.stroke.colour = ColourFromValue(static_cast<std::uint32_t>(command.value));
      if (static_cast<std::uint32_t>(command.value) == kNothingPainted) ink.stroke.colour.alpha = 0.0;
      break;
    case KEY_WIDT:
      ink.stroke.width = PayloadOf<double>(command);
      break;
    case KEY_THST:
      ink.stroke.kind = StrokeKind(command.value);
      break;
    case KEY_LNST:
      ink.stroke.cap = LineCap(command.value);
      break;
    case KEY_CNST:
      ink.stroke.join = LineJoin(command.value);
      break;
    case KEY_MLIM:
      ink.stroke.miterLimit = std::max(1.0, command.value / 100.0);
      break;
    case KEY_WRUL:
      ink.evenOdd = command.value == 0;
      break;
    case KEY_FDEF:
      state.SetFillDefinition(PayloadOf<FillDefinition>(command));
      break;
    case KEY_PFDF:
      ink.gradient.reset();
      ink.tile = ReadTile(PayloadOf<FillDefinition>(command));
      break;
    case KEY_TSPY:
      state.SetTransparency(ViewTransparency(PayloadOf<CQXTransparency>(command)));
      break;
    case KEY_PATH:
      state.EndPath();
      state.pathOpen = true;
      break;
    case KEY_ENDP:
      state.EndPath();
      break;
    case KEY_LINE: {
      const auto& line = PayloadOf<LineRecord>(command);
      const Point points[] = {{line.x0, line.y0}, {line.x1, line.y1}};
      state.path.AddSegment(points);
      break;
    }
    case KEY_BEZI: {
      const auto& curve = PayloadOf<BezierRecord>(command);
      const Point points[] = {{curve.x0, curve.y0}, {curve.x1, curve.y1}, {curve.x2, curve.y2}, {curve.x3, curve.y3}};
      state.path.AddSegment(points);
      break;
    }
    case KEY_PLYR: {
      const auto sides = ViewSides(PayloadOf<POLYGON>(command));
      if (state.pathOpen) {
        state.path.AddPolygon(sides);
      } else {
        state.AddShape(PolygonPath(sides));
      }
      break;
    }
    case KEY_PARA:
      if (const auto paragraph = ViewParagraph(PayloadOf<ParagraphRecord>(command).paragraph)) {
        Text text = ReadParagraph(*paragraph, ink);
        if (!text.runs.empty()) state.clips.Add({std::move(text)});
      }
      break;
    case KEY_GNRC:
      if (CQXBitmap* bitmap = PayloadOf<GenericRecord>(command).bitmap; bitmap != nullptr) {
        Picture picture = PlacedPicture(ViewBitmap(*bitmap), ink.opacity);
        if (picture.image != nullptr) state.clips.Add({std::move(picture)});
      }
      break;
    case KEY_SGRP:
      state.clips.StartGroup();
      break;
    case KEY_EGRP:
      state.clips.EndGroup();
      break;
    case KEY_SCGR:
      state.clips.StartClipGroup();
      break;
    case KEY_ECGR:
      state.clips.EndClipGroup();
      break;
    case KEY_CLIP:
      state.clips.MarkClip(command.value == 1);
      break;
    case KEY_DOCP:
      state.clips.MarkContent(command.value == 1);
      break;
    default:
      break;
  }
}

Box StreamDrawer::Bounds() { return BoundsOf(state_->Finish()); }

void StreamDrawer::Draw(cairo_t* context, const Box& page, double width, double height, double hairline) {
  Painter(context, page, width, height, hairline).Paint(state_->Finish());
}

}  // namespace preview
