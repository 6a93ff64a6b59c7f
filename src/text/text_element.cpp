#include "text/text_element.h"

#include <algorithm>

#include "document/definitions.h"
#include "document/node_access.h"
#include "filter_limits.h"
#include "operators/graphics_state.h"
#include "operators/spaces.h"
#include "platform/narrow_text.h"
#include "run/import_run.h"
#include "run/number_text.h"
#include "run/plain_number.h"
#include "text/paragraph.h"
#include "translators/element_dispatch.h"
#include "translators/shapes.h"
#include "translators/style.h"
#include "translators/transform.h"

// A view of a plain literal would find out its length at run time.
using namespace std::string_view_literals;

namespace {

enum Anchor { kStart = 1, kMiddle = 2, kEnd = 3 };

// Encoded to the narrow code page, through which the file was decoded, and decoded as the UTF-8 that the file most
// likely was.
void TakeCharacters(IXMLDOMNode* node) {
  std::u16string_view characters;
  node->get_text(&characters);
  std::u16string& text = run.text.TextBuffer;
  if (std::all_of(characters.begin(), characters.end(), [](char16_t unit) { return unit < 0x80; })) {
    text = characters;  // ASCII is the same in both
  } else {
    text = WideFromUtf8(NarrowFromWide(characters));
  }
  if (text.size() > kMaxTextUnits) text.resize(kMaxTextUnits);
}

void TranslateChildren(IXMLDOMNode* node) {
  ChildNodeList children;
  CollectChildNodes(node, children);
  for (std::int32_t i = 0; i < children.length(); ++i) {
    IXMLDOMNode* child = children.At(i);
    const std::u16string_view name = GetNodeName(child);
    if (name == u"rect"sv) {
      TranslateRect(child);
    } else if (name == u"ellipse"sv) {
      TranslateEllipse(child);
    } else if (name == u"text"sv) {
      TranslateText(child);
    } else if (name == u"tspan"sv) {
      TranslateTextSpan(child);
    } else if (name == u"line"sv) {
      TranslateLine(child);
    } else if (name == u"circle"sv) {
      TranslateCircle(child);
    }
  }
}

// Only the first family of a list counts.
void TakeFontFamily(std::u16string_view families) {
  if (families.empty()) return;
  GrowingText name;
  for (const char16_t c : families.substr(0, families.find(u','))) {
    if (c != u'\'' && c != u'"') name.Push(c);
  }
  run.text.SetFontName(name);
}

void ApplyTextAttribute(IXMLDOMNode* node, std::u16string_view name, bool forceWidth) {
  const std::u16string_view value = GetNodeAttribute(node, name);
  if (value.empty()) return;
  GrowingText text(name);
  text.Push(u':');
  text.Append(value);
  ApplyTextStyle(text, forceWidth);
}

// 0.0, with the unit left alone, when the attribute is empty.
double ReadLength(std::u16string_view value, UnitCode* unit) {
  if (value.empty()) return 0.0;
  const char16_t* const end = value.data() + value.size();
  double plain;
  if (ScanPlainDouble(value.data(), end, &plain) == end) {
    *unit = kNoUnit;
    return plain;
  }
  GrowingText number;
  ScanLength(value, number, unit);
  return LeadingNumber(number);
}

// One unit code, the last one read, decides for both coordinates.
void PlaceText(double x, double y, UnitCode unit) {
  const Point p = ToDevice({x, y});
  double& textX = run.text.TextX;
  double& textY = run.text.TextY;
  textX = p.x;
  textY = run.DocHeight - p.y;
  if (unit == kNoUnit) {
    textX *= run.UnitScale;
    textY *= run.UnitScale;
  } else if (unit == kMillimetre) {
    textX /= 10.0;
    textY /= 10.0;
  }
}

// An empty attribute leaves the size of the element before. The formula differs from the style's: it is meant.
void TakeFontSize(std::u16string_view value) {
  if (value.empty()) return;
  UnitCode unit = kNoUnit;
  double size = ReadLength(value, &unit);
  if (unit == kMillimetre) {
    size = size * 1000.0 / 25.4;
  } else if (unit == kNoUnit || unit == kPixel) {
    size = size * 1000.0 * run.UnitScale;
  }
  run.text.FontSize = size;
}

}  // namespace

// The children are translated first, and a text among them replaces the characters and the font of this one: it is
// meant.
void TranslateText(IXMLDOMNode* node) {
  const NestedElement nested;
  TakeCharacters(node);
  run.text.SetFontName(u"arial"sv);
  ReplayPaintState();
  TranslateChildren(node);
  PushGraphicsState();
  TakeFontFamily(GetNodeAttribute(node, u"font-family"));
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  ApplyTextStyle(GetNodeAttribute(node, u"style"), false);
  ApplyTextAttribute(node, u"fill"sv, false);
  ApplyTextAttribute(node, u"stroke"sv, false);
  ApplyTextAttribute(node, u"stroke-width"sv, true);
  UnitCode unit = kNoUnit;
  const double x = ReadLength(GetNodeAttribute(node, u"x"), &unit);
  ApplyTextAnchor(GetNodeAttribute(node, u"text-anchor"));
  const double y = ReadLength(GetNodeAttribute(node, u"y"), &unit);
  PlaceText(x, y, unit);
  TakeFontSize(GetNodeAttribute(node, u"font-size"));
  ComposeParagraph();
  PopGraphicsState();
}

void ApplyTextAnchor(std::u16string_view text) {
  if (text.starts_with(u"middle"sv)) {
    run.text.TextAnchor = kMiddle;
  } else if (text.starts_with(u"start"sv)) {
    run.text.TextAnchor = kStart;
  } else if (text.starts_with(u"end"sv)) {
    run.text.TextAnchor = kEnd;
  }
}
