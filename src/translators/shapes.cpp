#include "translators/shapes.h"

#include "document/node_access.h"
#include "operators/graphics_state.h"
#include "operators/operator_machine.h"
#include "operators/path_end.h"
#include "translators/clip_reference.h"
#include "translators/path_data.h"
#include "translators/style.h"
#include "translators/transform.h"

namespace {

void FeedNumber(std::u16string_view value) {
  GrowingText number;
  ScanNumber(ScanFrom::Number, value, number);
  FeedOperatorText(number, kPushOnly);
}

// A missing attribute without a default pushes nothing, so that the operands in front of it slide into its place.
void FeedAttribute(IXMLDOMNode* node, std::u16string_view name) { FeedNumber(GetNodeAttribute(node, name)); }

void FeedAttributeOr(IXMLDOMNode* node, std::u16string_view name, std::u16string_view fallback) {
  const std::u16string_view value = GetNodeAttribute(node, name);
  if (value.empty()) {
    FeedOperatorText(fallback, kPushOnly);
  } else {
    FeedNumber(value);
  }
}

// Frame, transform and clip. True when the element will have to close a clip.
bool BeginClippedShape(IXMLDOMNode* node) {
  PushGraphicsState();
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  const std::u16string_view clip = GetNodeAttribute(node, u"clip-path");
  if (clip.empty()) return false;
  ApplyClipReference(clip);
  return true;
}

void EndShape() {
  EndPath();
  PopGraphicsState();
}

void EndClippedShape(bool clipped) {
  EndShape();
  if (clipped) CloseClippedElement();
}

// The shorter fold of polygon and polyline: three properties, no default width.
void ApplyStyleOrShortFold(IXMLDOMNode* node) {
  const std::u16string_view style = GetNodeAttribute(node, u"style");
  if (!style.empty()) {
    ApplyShapeStyle(style);
    return;
  }
  GrowingText fold;
  FoldAttribute(fold, node, u"stroke-width");
  FoldAttribute(fold, node, u"stroke");
  FoldAttribute(fold, node, u"fill");
  if (!fold.empty()) ApplyShapeStyle(fold);
}

void ApplyStyleOrReplay(IXMLDOMNode* node) {
  if (!ApplyStyleOrFold(node)) ReplayPaintState();
}

// Writes a moveto for the first pair of points and a lineto for each further one. `first` receives the first pair.
void FeedPoints(std::u16string_view points, GrowingText& first) {
  GrowingText pair;
  bool moved = false;
  while (true) {
    while (!points.empty() && points[0] <= 32) points.remove_prefix(1);
    if (points.empty()) return;
    const std::size_t consumed = ScanCoordinatePair(ScanFrom::Number, points, pair);
    // A unit that no scanner takes ends the list.
    if (consumed == 0) return;
    points.remove_prefix(consumed < points.size() ? consumed : points.size());
    if (!moved) first.Append(pair);
    pair.Append(moved ? u" L" : u" M");
    FeedOperatorText(pair, kExecute);
    moved = true;
  }
}

}  // namespace

bool ApplyStyleOrFold(IXMLDOMNode* node) {
  const std::u16string_view style = GetNodeAttribute(node, u"style");
  if (!style.empty()) {
    ApplyShapeStyle(style);
    return true;
  }
  GrowingText fold;
  FoldPresentationAttributes(fold, node);
  if (fold.empty()) return false;
  ApplyShapeStyle(fold);
  return true;
}

// Closes with a real line to the first point.
void TranslatePolygon(IXMLDOMNode* node) {
  const bool clipped = BeginClippedShape(node);
  ApplyStyleOrShortFold(node);
  GrowingText first;
  FeedPoints(GetNodeAttribute(node, u"points"), first);
  first.Append(u" L");
  FeedOperatorText(first, kExecute);
  FeedOperatorText(u"0 0 M", kExecute);
  EndClippedShape(clipped);
}

// Closes only an outline that is nearly closed.
void TranslatePolyline(IXMLDOMNode* node) {
  const bool clipped = BeginClippedShape(node);
  ApplyStyleOrShortFold(node);
  GrowingText first;
  FeedPoints(GetNodeAttribute(node, u"points"), first);
  FeedOperatorText(u"Z2", kExecute);
  FeedOperatorText(u"0 0 M", kExecute);
  EndClippedShape(clipped);
}

void TranslateRect(IXMLDOMNode* node) {
  const bool clipped = BeginClippedShape(node);
  ApplyStyleOrReplay(node);
  FeedAttribute(node, u"width");
  FeedAttribute(node, u"height");
  FeedAttributeOr(node, u"x", u"0");
  FeedAttributeOr(node, u"y", u"0");
  std::u16string_view rx = GetNodeAttribute(node, u"rx");
  std::u16string_view ry = GetNodeAttribute(node, u"ry");
  if (rx.empty()) rx = ry;
  if (ry.empty()) ry = rx;
  if (rx.empty()) rx = ry = u"0";
  FeedNumber(rx);
  FeedNumber(ry);
  FeedOperatorText(u" rect", kExecute);
  EndClippedShape(clipped);
}

// Ellipse, circle and line take no clip.
void TranslateEllipse(IXMLDOMNode* node) {
  PushGraphicsState();
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  ApplyStyleOrReplay(node);
  FeedAttribute(node, u"cx");
  FeedAttribute(node, u"cy");
  FeedAttribute(node, u"rx");
  FeedAttribute(node, u"ry");
  FeedOperatorText(u" E", kExecute);
  EndShape();
}

// The only shape whose opacity counts as an attribute.
void TranslateCircle(IXMLDOMNode* node) {
  PushGraphicsState();
  const std::u16string_view opacity = GetNodeAttribute(node, u"opacity");
  if (!opacity.empty()) {
    GrowingText text(u"opacity:");
    text.Append(opacity);
    ApplyShapeStyle(text);
  }
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  ApplyStyleOrReplay(node);
  FeedAttributeOr(node, u"cx", u"0");
  FeedAttributeOr(node, u"cy", u"0");
  FeedAttribute(node, u"r");
  FeedOperatorText(u" circle", kExecute);
  EndShape();
}

void TranslateLine(IXMLDOMNode* node) {
  PushGraphicsState();
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  ApplyStyleOrFold(node);
  FeedAttributeOr(node, u"x1", u"0.0");
  FeedAttributeOr(node, u"y1", u"0.0");
  FeedOperatorText(u" M", kExecute);
  FeedAttributeOr(node, u"x2", u"0.0");
  FeedAttributeOr(node, u"y2", u"0.0");
  FeedOperatorText(u" L", kExecute);
  EndShape();
}
