#include "translators/element_dispatch.h"

#include <span>
#include <string_view>

#include "document/definitions.h"
#include "document/node_access.h"
#include "images/image_element.h"
#include "operators/clip.h"
#include "operators/graphics_state.h"
#include "paint/paint_servers.h"
#include "run/growing_text.h"
#include "run/import_run.h"
#include "text/text_element.h"
#include "translators/clip_reference.h"
#include "translators/path_data.h"
#include "translators/shapes.h"
#include "translators/style.h"
#include "translators/transform.h"

namespace {

struct Element {
  std::u16string_view name;
  void (*translate)(IXMLDOMNode* node);
};

// Reads one value and throws it away.
void ReadNamedView(IXMLDOMNode* node) { GetNodeAttribute(node, u"inkscape:cy"); }

constexpr Element kTopLevel[] = {
    {u"namedview", ReadNamedView},    {u"path", TranslatePath},       {u"polygon", TranslatePolygon},
    {u"polyline", TranslatePolyline}, {u"rect", TranslateRect},       {u"g", TranslateGroup},
    {u"circle", TranslateCircle},     {u"ellipse", TranslateEllipse}, {u"line", TranslateLine},
    {u"text", TranslateText},         {u"image", TranslateImage},
};

constexpr Element kGroup[] = {
    {u"path", TranslatePath},
    {u"defs", RunDefinitionsPrePass},
    {u"linearGradient", TranslateGradientContainer},
    {u"radialGradient", TranslateGradientContainer},
    {u"polygon", TranslatePolygon},
    {u"polyline", TranslatePolyline},
    {u"rect", TranslateRect},
    {u"g", TranslateGroup},
    {u"ellipse", TranslateEllipse},
    {u"text", TranslateText},
    {u"tspan", TranslateText},
    {u"line", TranslateLine},
    {u"image", TranslateImage},
    {u"circle", TranslateCircle},
};

constexpr Element kTextSpan[] = {
    {u"path", TranslatePath},     {u"rect", TranslateRect},      {u"ellipse", TranslateEllipse},
    {u"circle", TranslateCircle}, {u"tspan", TranslateTextSpan}, {u"line", TranslateLine},
};

void Translate(std::span<const Element> elements, IXMLDOMNode* node) {
  const std::u16string_view name = GetNodeName(node);
  for (const Element& element : elements) {
    if (element.name == name) {
      element.translate(node);
      return;
    }
  }
}

void ApplyGroupAttribute(IXMLDOMNode* node, std::u16string_view name) {
  const std::u16string_view value = GetNodeAttribute(node, name);
  if (value.empty()) return;
  GrowingText text(name);
  text.Push(u':');
  text.Append(value);
  ApplyGroupStyle(text);
}

// The style comes first, so that an attribute beats it, unlike on a shape. A clip that is opened here is not closed by
// the group. Both are meant. The function is kept out of line, since groups nest deep and its texts would weigh on each
// level of the stack.
[[gnu::noinline]] void ApplyGroupAttributes(IXMLDOMNode* node) {
  const std::u16string_view style = GetNodeAttribute(node, u"style");
  if (!style.empty()) ApplyGroupStyle(style);
  const std::u16string_view fontSize = GetNodeAttribute(node, u"font-size");
  if (!fontSize.empty()) {
    GrowingText text(u"font-size:");
    text.Append(fontSize);
    ApplyFontSize(text);
  }
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  ApplyGroupAttribute(node, u"fill");
  ApplyGroupAttribute(node, u"stroke");
  ApplyGroupAttribute(node, u"stroke-width");
  const std::u16string_view clip = GetNodeAttribute(node, u"clip-path");
  if (!clip.empty()) ApplyClipReference(clip);
  ApplyGroupAttribute(node, u"opacity");
}

}  // namespace

void TranslateTopLevelElement(IXMLDOMNode* node) { Translate(kTopLevel, node); }

void TranslateGroup(IXMLDOMNode* node) {
  const NestedElement nested;
  StartGroup();
  PushGraphicsState();
  ApplyGroupAttributes(node);
  {
    ChildNodeList children;
    CollectChildNodes(node, children);
    for (std::int32_t i = 0; i < children.length(); ++i) Translate(kGroup, children.At(i));
  }
  EndGroup();
  PopGraphicsState();
}

// No frame is pushed: the matrix stays in force for the siblings behind. x1 goes through the group parser as if it were
// a style, of which the width record is what remains. Both are meant.
void TranslateGradientContainer(IXMLDOMNode* node) {
  ApplyGroupStyle(GetNodeAttribute(node, u"x1"));
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  TranslateGradientChildren(node);
}

// The children come first, so that style and transform do nothing for them.
void TranslateTextSpan(IXMLDOMNode* node) {
  const NestedElement nested;
  {
    ChildNodeList children;
    CollectChildNodes(node, children);
    for (std::int32_t i = 0; i < children.length(); ++i) {
      IXMLDOMNode* child = children.At(i);
      NodeType type = kElementNode;
      child->get_nodeType(&type);
      if (type == kTextNode) {
        std::u16string_view dropped;
        child->get_text(&dropped);
      } else {
        Translate(kTextSpan, child);
      }
    }
  }
  PushGraphicsState();
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  ApplyShapeStyle(GetNodeAttribute(node, u"style"));
  PopGraphicsState();
}
