// What is lost of the basic shapes.
#include "tools/report/survey.h"

namespace {

std::string_view Lengths(std::string_view element) {
  if (element == "rect") return "x y width height rx ry";
  if (element == "circle") return "cx cy r";
  if (element == "ellipse") return "cx cy rx ry";
  if (element == "line") return "x1 y1 x2 y2";
  return {};
}

// The lengths that have no default of their own here.
std::string_view NeededLengths(std::string_view element) {
  if (element == "rect") return "width height";
  if (element == "circle") return "r";
  if (element == "ellipse") return "cx cy rx ry";
  return {};
}

}  // namespace

void Survey::CheckLengths(const SvgNode& node, std::string_view attributes) {
  ForEachWord(attributes, [&](std::string_view name) {
    const SvgAttribute* length = node.Find(name);
    if (length == nullptr) return;
    const std::string_view unit = UnitOf(length->value);
    if (unit.empty() || unit == "px" || (unit == "mm" && scale_ == 0.1)) return;
    if (unit == "%") {
      if (LeadingNumberOf(length->value) != 0) Report(Loss("percentage"), node, length->line, Quoted(*length));
    } else {
      Report(Loss("unit-ignored"), node, length->line, Quoted(*length));
    }
  });
}

void Survey::CheckGeometry(const SvgNode& node) {
  CheckLengths(node, Lengths(node.name));
  std::string missing;
  ForEachWord(NeededLengths(node.name), [&](std::string_view name) {
    if (node.Find(name) != nullptr) return;
    if (!missing.empty()) missing += ", ";
    missing += name;
  });
  if (!missing.empty()) Report(Loss("missing-geometry"), node, node.line, missing);
}

void Survey::CheckPathData(const SvgNode& node, const SvgAttribute& data, const PathReading& reading) {
  if (!reading.stopped.empty()) Report(Loss("data-stopped"), node, data.line, reading.stopped);
  if (!reading.glued.empty()) Report(Loss("glued-numbers"), node, data.line, reading.glued);
  if (!reading.afterArc.empty()) Report(Loss("path-after-arc"), node, data.line, reading.afterArc);
  if (!reading.smooth.empty()) Report(Loss("smooth-control"), node, data.line, reading.smooth);
  if (reading.quadratic) Report(Loss("quadratic-flattened"), node, data.line);
  if (reading.relativeStart && lineLeft_) Report(Loss("relative-start"), node, data.line, "the command m");
}

void Survey::CheckShape(const SvgNode& node, const Context& outer) {
  const StatedProperties own = ReadProperties(node);
  Context context = outer;
  context.matrix = outer.matrix * CheckTransform(node, "transform");
  CheckCommon(node);
  CheckClipReference(node, context);
  CheckUnread(node, own, context);
  CheckInherited(node, own, context);

  ReadStyle style;
  const bool polygon = node.name == "polygon" || node.name == "polyline";
  if (const SvgAttribute* attribute = node.Find("style")) {
    style.text = attribute->value;
    style.line = attribute->line;
    CheckStyleText(node,
                   "fill fill-opacity fill-rule stroke stroke-width stroke-linecap stroke-linejoin stroke-miterlimit "
                   "opacity");
  } else {
    style.folded = true;
    ForEachWord(polygon ? "stroke-width stroke fill"
                        : "stroke-width stroke fill fill-opacity fill-rule stroke-linecap stroke-linejoin",
                [&](std::string_view name) {
                  const SvgAttribute* one = node.Find(name);
                  if (one == nullptr) return;
                  style.text += std::string(name) + ":" + one->value + "; ";
                  if (name == "stroke" && node.Find("stroke-width") == nullptr && !polygon) {
                    style.text += "stroke-width:1; ";
                  }
                  if (name == "fill" || style.line == 0) style.line = one->line;
                });
  }

  ReadFill fill;
  const bool frameSent = node.name == "rect" || node.name == "circle" || node.name == "ellipse";
  if (style.text.empty() && !frameSent) {
    if (strokeLeft_ && !StrokePainted(own, context)) {
      if (context.thickness >= 2) {
        CheckFrameOutline(node, own, context);
      } else {
        Report(Loss("unstyled-shape"), node, node.line);
      }
    }
  } else {
    CheckStroke(node, own, style, context);
    fill = CheckFill(node, style, context);
  }
  CheckOpacity(node, style, context, StrokePainted(own, context), fill.transparentStops);

  CheckGeometry(node);
  if (node.name == "line") {
    lineLeft_ = LeadingNumberOf(node.Value("x2")) != 0 || LeadingNumberOf(node.Value("y2")) != 0;
  } else if (polygon) {
    if (const SvgAttribute* points = node.Find("points")) CheckPathData(node, *points, ReadPoints(points->value));
    lineLeft_ = false;
  } else if (const SvgAttribute* data = node.name == "path" ? node.Find("d") : nullptr) {
    const PathReading reading = ReadPathData(data->value);
    CheckPathData(node, *data, reading);
    if (reading.endsOpen && fill.solid && StrokePainted(own, context)) {
      Report(Loss("open-path-closed"), node, data->line);
    }
    lineLeft_ = false;
  }
}
