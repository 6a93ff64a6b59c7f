#include "translators/shapes.h"

#include <algorithm>

#include "document/node_access.h"
#include "operators/graphics_state.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "operators/path.h"
#include "operators/path_end.h"
#include "operators/polygon.h"
#include "translators/clip_reference.h"
#include "translators/path_data.h"
#include "translators/style.h"
#include "translators/transform.h"

namespace {

// A plain number is pushed without a way through operator text.
void FeedNumber(std::u16string_view value) {
  double number;
  if (ReadPlainNumber(value.data(), value.data() + value.size(), &number)) {
    PushNumber(number);
    return;
  }
  GrowingText text;
  ScanNumber(ScanFrom::Number, value, text);
  FeedOperatorText(text, kPushOnly);
}

// A missing attribute pushes nothing, so that the operands in front of it slide into its place.
void FeedAttribute(IXMLDOMNode* node, std::u16string_view name) { FeedNumber(GetNodeAttribute(node, name)); }

void FeedAttributeOrZero(IXMLDOMNode* node, std::u16string_view name) {
  const std::u16string_view value = GetNodeAttribute(node, name);
  if (value.empty()) {
    PushNumber(0.0);
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

// Moves to the pair of points that the text begins with, or draws the line to it, a plain pair without a way through
// operator text. Returns the units to go on by, 0 at a unit that no scanner takes.
std::size_t DrawPair(std::u16string_view points, char16_t letter) {
  Point point;
  if (const char16_t* behind = ReadPlainPair(points.data(), points.data() + points.size(), &point)) {
    if (letter == u'M') {
      MoveTo(point, false);
    } else {
      LineTo(point, false);
    }
    return static_cast<std::size_t>(behind - points.data());
  }
  GrowingText pair;
  const std::size_t consumed = ScanCoordinatePair(ScanFrom::Number, points, pair);
  if (consumed == 0) return 0;
  pair.Push(u' ');
  pair.Push(letter);
  FeedOperatorText(pair, kExecute);
  return consumed;
}

// Draws all pairs, with a moveto to the first. Returns the text from the first pair on.
std::u16string_view DrawPoints(std::u16string_view points) {
  const auto skipSpace = [&points] {
    while (!points.empty() && points[0] <= 32) points.remove_prefix(1);
  };
  skipSpace();
  const std::u16string_view first = points;
  for (char16_t letter = u'M'; !points.empty(); letter = u'L') {
    const std::size_t consumed = DrawPair(points, letter);
    if (consumed == 0) break;
    points.remove_prefix(std::min(consumed, points.size()));
    skipSpace();
  }
  return first;
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
  const std::u16string_view first = DrawPoints(GetNodeAttribute(node, u"points"));
  if (DrawPair(first, u'L') == 0) OperatorLineTo({u"L", 1});
  MoveTo({0.0, 0.0}, false);
  EndClippedShape(clipped);
}

// Closes only an outline that is nearly closed.
void TranslatePolyline(IXMLDOMNode* node) {
  const bool clipped = BeginClippedShape(node);
  ApplyStyleOrShortFold(node);
  DrawPoints(GetNodeAttribute(node, u"points"));
  OperatorCloseIfNear({u"Z2", 1});
  MoveTo({0.0, 0.0}, false);
  EndClippedShape(clipped);
}

void TranslateRect(IXMLDOMNode* node) {
  const bool clipped = BeginClippedShape(node);
  ApplyStyleOrReplay(node);
  FeedAttribute(node, u"width");
  FeedAttribute(node, u"height");
  FeedAttributeOrZero(node, u"x");
  FeedAttributeOrZero(node, u"y");
  std::u16string_view rx = GetNodeAttribute(node, u"rx");
  std::u16string_view ry = GetNodeAttribute(node, u"ry");
  if (rx.empty()) rx = ry;
  if (ry.empty()) ry = rx;
  if (rx.empty()) rx = ry = u"0";
  FeedNumber(rx);
  FeedNumber(ry);
  OperatorRectangle({u"rect", 1});
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
  OperatorEllipse({u"E", 1});
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
  FeedAttributeOrZero(node, u"cx");
  FeedAttributeOrZero(node, u"cy");
  FeedAttribute(node, u"r");
  OperatorCircle({u"circle", 1});
  EndShape();
}

void TranslateLine(IXMLDOMNode* node) {
  PushGraphicsState();
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  ApplyStyleOrFold(node);
  FeedAttributeOrZero(node, u"x1");
  FeedAttributeOrZero(node, u"y1");
  OperatorMoveTo({u"M", 1});
  FeedAttributeOrZero(node, u"x2");
  FeedAttributeOrZero(node, u"y2");
  OperatorLineTo({u"L", 1});
  EndShape();
}
