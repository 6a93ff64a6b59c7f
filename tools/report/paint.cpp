// What is lost of paint: properties that are not read where they stand, colours, strokes, opacities.
#include <algorithm>
#include <cmath>

#include "tools/report/survey.h"

namespace {

constexpr std::string_view kShapeStyle =
    "fill fill-opacity fill-rule stroke stroke-width stroke-linecap stroke-linejoin stroke-miterlimit opacity";
constexpr std::string_view kGroupStyle = "fill fill-opacity stroke stroke-width opacity";
constexpr std::string_view kTextStyle =
    "fill fill-opacity fill-rule stroke stroke-width stroke-linecap stroke-linejoin font-family text-anchor font-size";
constexpr std::string_view kShapeAttributes =
    "fill fill-opacity fill-rule stroke stroke-width stroke-linecap stroke-linejoin";
constexpr std::string_view kPolygonAttributes = "fill stroke stroke-width";
constexpr std::string_view kGroupAttributes = "fill stroke stroke-width opacity font-size";
constexpr std::string_view kTextAttributes = "fill stroke stroke-width font-family font-size text-anchor";

constexpr std::string_view kBlack = "black #000 #000000";

bool IsPolygon(std::string_view name) { return name == "polygon" || name == "polyline"; }
bool IsText(std::string_view name) { return name == "text" || name == "tspan"; }

std::string_view StyleProperties(std::string_view element) {
  if (element == "svg" || element == "image") return {};
  return element == "g" ? kGroupStyle : IsText(element) ? kTextStyle : kShapeStyle;
}

std::string_view AttributeProperties(std::string_view element) {
  if (element == "svg" || element == "image") return {};
  if (element == "g") return kGroupAttributes;
  if (IsText(element)) return kTextAttributes;
  return IsPolygon(element) ? kPolygonAttributes : kShapeAttributes;
}

// Attributes of a shape are read only where it has no style.
bool AttributesFold(std::string_view element) { return element != "g" && !IsText(element); }

std::string Shown(PropertyId id, const StatedProperty& stated) {
  const std::string name(kProperties[id].name), value(stated.value);
  return stated.inStyle ? name + ":" + value : name + "=" + InQuotes(value);
}

bool IsHarmless(PropertyId id, std::string_view value) {
  if (id == kDisplay) return value != "none";
  return value == "inherit" || ListHasValue(kProperties[id].harmless, value);
}

// From 0 to 1 as the filter reads it: of a percentage the bare number.
double Opacity(std::string_view value) { return std::clamp(LeadingNumberOf(value), 0.0, 1.0); }

}  // namespace

std::string_view Survey::Effective(const StatedProperties& own, const Context& context, PropertyId id) const {
  if (!own[id].value.empty() && own[id].value != "inherit") return own[id].value;
  return kProperties[id].inherited ? context.inherited[id].value : std::string_view();
}

bool Survey::StrokePainted(const StatedProperties& own, const Context& context) const {
  const std::string_view stroke = Effective(own, context, kStroke);
  const std::string_view width = Effective(own, context, kStrokeWidth);
  return !stroke.empty() && !StartsWithAnyCase(stroke, "none") && stroke != "transparent" &&
         (width.empty() || LeadingNumberOf(width) != 0);
}

bool Survey::FillPainted(const StatedProperties& own, const Context& context) const {
  return !StartsWithAnyCase(Effective(own, context, kFill), "none");
}

bool Survey::Needed(const SvgNode& node, Need need, const StatedProperties& own, const Context& context) const {
  const bool image = node.name == "image";
  switch (need) {
    case Need::kAny:
      return true;
    case Need::kFill:
      return !image && node.name != "line" && FillPainted(own, context);
    case Need::kRule:
      return (node.name == "path" || IsPolygon(node.name)) && FillPainted(own, context);
    case Need::kStroke:
      return !image && StrokePainted(own, context);
    case Need::kCorners:
      return (node.name == "path" || node.name == "rect" || IsPolygon(node.name)) && StrokePainted(own, context);
    case Need::kMarkers:
      return node.name == "path" || node.name == "line" || IsPolygon(node.name);
    case Need::kText:
      return IsText(node.name);
  }
  return false;
}

void Survey::CheckUnread(const SvgNode& node, const StatedProperties& own, const Context& context) {
  const bool container = node.name == "g" || node.name == "svg";
  const bool styled = node.Find("style") != nullptr;
  for (std::size_t i = 0; i < kPropertyCount; ++i) {
    const auto id = static_cast<PropertyId>(i);
    const StatedProperty& stated = own[id];
    const Property& property = kProperties[id];
    if (stated.value.empty() || id == kClipRule || IsHarmless(id, stated.value)) continue;
    if (container ? property.inherited || property.need != Need::kAny : !Needed(node, property.need, own, context)) {
      continue;
    }
    if (node.name == "image" && (id == kFill || id == kStroke)) continue;
    if (id == kClipPath) {
      if (stated.inStyle) Report(Loss("clip-path-in-style"), node, stated.line, Shown(id, stated));
      continue;
    }
    // The stroke gets the opacity of the fill.
    if (id == kStrokeOpacity && ListHasValue(own[kFillOpacity].value, stated.value)) continue;
    if (id >= kFirstUnread) {
      Report(LossOfProperty(property.name), node, stated.line, Shown(id, stated));
      continue;
    }
    if (stated.inStyle) {
      if (ListHas(StyleProperties(node.name), property.name)) continue;
    } else if (ListHas(AttributeProperties(node.name), property.name)) {
      if (!styled || !AttributesFold(node.name)) continue;
      const bool asBefore = (id == kFill && ListHas(kBlack, stated.value) && context.inherited[id].value.empty()) ||
                            (id == kStroke && stated.value == "none" && context.thickness < 2);
      if (!asBefore) Report(Loss("attributes-beside-style"), node, stated.line, Shown(id, stated));
      continue;
    } else if (id == kOpacity && node.name == "circle") {
      continue;
    }
    Report(Loss("attribute-not-read"), node, stated.line, Shown(id, stated));
  }
}

void Survey::CheckInherited(const SvgNode& node, const StatedProperties& own, const Context& context) {
  for (std::size_t i = 0; i < kPropertyCount; ++i) {
    const auto id = static_cast<PropertyId>(i);
    const InheritedProperty& from = context.inherited[id];
    if (from.origin == nullptr || from.passed || !(own[id].value.empty() || own[id].value == "inherit")) continue;
    // What a text takes depends on the texts before it.
    if (id == kFontSize || id == kTextAnchor || id == kClipRule || IsHarmless(id, from.value)) continue;
    if (!Needed(node, kProperties[id].need, own, context)) continue;
    if (node.name == "image" && (id == kFill || id == kStroke)) continue;
    if (id == kStroke && StartsWithAnyCase(from.value, "none") && context.thickness < 2) continue;
    const LossKind* kind = id >= kFirstUnread ? LossOfProperty(kProperties[id].name) : Loss("inheritance-lost");
    ReportOnce(kind, *from.origin, from.line, std::string(kProperties[id].name) + ":" + std::string(from.value));
  }
}

void Survey::CheckStyleText(const SvgNode& node, std::string_view readProperties) {
  const SvgAttribute* style = node.Find("style");
  if (style == nullptr) return;
  std::array<const Declaration*, kPropertyCount> last{};
  const std::vector<Declaration> declarations = Declarations(style->value);
  for (const Declaration& declaration : declarations) {
    const PropertyId id = FindPropertyId(declaration.name);
    if (id != kPropertyCount && ListHas(readProperties, declaration.name)) last[id] = &declaration;
  }
  for (std::size_t i = 0; i < kPropertyCount; ++i) {
    if (last[i] == nullptr) continue;
    const Declaration& declaration = *last[i];
    const std::string shown = declaration.name + ":" + std::string(declaration.value);
    const auto found = i == kOpacity ? FindOpacity(style->value) : FindProperty(style->value, declaration.name + ":");
    if (!declaration.plain) {
      Report(Loss("property-spelling"), node, style->line, shown);
    } else if (!found) {
      if (!IsHarmless(kOpacity, declaration.value)) Report(Loss("opacity-hidden"), node, style->line, shown);
    } else if (found->at != declaration.at && found->Value() != declaration.value) {
      Report(Loss("property-first-match"), node, style->line, shown);
    }
  }
}

void Survey::CheckColour(const SvgNode& node, Owner owner, PropertyId id, std::string_view rest, int line) {
  const std::string shown =
      std::string(kProperties[id].name) + ":" + std::string(Trimmed(rest.substr(0, rest.find(';'))));
  if (id == kStroke && owner == Owner::kGroup && StartsWithAnyCase(rest, "rgb")) {
    Report(Loss("stroke-rgb-on-group"), node, line, shown);
    return;
  }
  if (id == kStroke && owner == Owner::kText && rest.starts_with("rgb")) {
    Report(Loss("stroke-rgb-on-text"), node, line, shown);
    return;
  }
  const LossKind* kind = nullptr;
  switch (ReadColour(rest)) {
    case ColourReading::kRead:
    case ColourReading::kNone:
      return;
    case ColourReading::kReference:
      kind = id == kStroke ? Loss("stroke-paint-server") : Loss("fill-paint-server");
      break;
    case ColourReading::kUnreachable:
      kind = Loss("colour-unreachable");
      break;
    case ColourReading::kUnknown:
      kind = Loss("colour-unknown");
      break;
    case ColourReading::kKeyword:
      kind = Loss("colour-keyword");
      break;
    case ColourReading::kMisread:
      kind = Loss("colour-form");
      break;
    case ColourReading::kShortHexAtEnd:
      kind = Loss("short-hex-at-end");
      break;
  }
  Report(kind, node, line, shown);
}

// A shape without a stroke of its own takes the thickness of the frame, which every style of a group sets.
void Survey::CheckFrameOutline(const SvgNode& node, const StatedProperties& own, const Context& context) {
  if (context.thickness < 2 || context.thicknessOrigin == nullptr || StrokePainted(own, context)) return;
  if (node.name == "text") return;
  ReportOnce(Loss("group-outline"), *context.thicknessOrigin, context.thicknessOrigin->line, context.thicknessCause);
}

void Survey::CheckStroke(const SvgNode& node, const StatedProperties& own, const ReadStyle& style,
                         const Context& context) {
  const bool painted = StrokePainted(own, context);
  const auto stroke = FindProperty(style.text, "stroke:");
  const auto width = FindProperty(style.text, "stroke-width:");
  if (stroke) {
    CheckColour(node, Owner::kShape, kStroke, stroke->rest, own[kStroke].line);
    strokeLeft_ = ReadColour(stroke->rest) != ColourReading::kNone && !(width && LeadingNumberOf(width->rest) == 0);
    if (painted && !width && context.inherited[kStrokeWidth].value.empty()) {
      Report(Loss("stroke-default-width"), node, own[kStroke].line, "stroke:" + std::string(stroke->Value()));
    }
    if (painted && width) {
      const std::string_view unit = UnitOf(width->Value());
      const std::string shown = "stroke-width:" + std::string(width->Value());
      if (unit == "%") Report(Loss("percentage"), node, own[kStrokeWidth].line, shown);
      if (!unit.empty() && unit != "px" && unit != "%" && !(unit == "mm" && scale_ == 0.1)) {
        Report(Loss("unit-ignored"), node, own[kStrokeWidth].line, shown);
      }
    }
  } else {
    strokeLeft_ = context.thickness >= 2;
    CheckFrameOutline(node, own, context);
    const InheritedProperty& from = context.inherited[kStroke];
    if (painted && !own[kStrokeWidth].value.empty()) {
      Report(Loss("stroke-width-without-stroke"), node, own[kStrokeWidth].line, Shown(kStrokeWidth, own[kStrokeWidth]));
    } else if (painted && from.origin != nullptr && from.passed && context.inherited[kStrokeWidth].value.empty()) {
      ReportOnce(Loss("stroke-default-width"), *from.origin, from.line, "stroke:" + std::string(from.value));
    }
  }
  if (!painted) return;
  if (Needed(node, Need::kCorners, own, context) && Effective(own, context, kStrokeLinejoin).empty()) {
    Report(Loss("stroke-default-join"), node, node.line);
  }
  if (std::fabs(context.matrix.Scale() - 1) > 0.01 && Effective(own, context, kVectorEffect).empty()) {
    Report(Loss("stroke-width-scale"), node, node.line);
  }
}

Survey::ReadFill Survey::CheckFill(const SvgNode& node, const ReadStyle& style, const Context& context) {
  ReadFill read;
  const auto fill = FindProperty(style.text, "fill:");
  if (!fill) return read;
  const ColourReading reading = ReadColour(fill->rest);
  const int line = style.line != 0 ? style.line : node.line;
  if (reading == ColourReading::kReference) {
    read.transparentStops = CheckPaintReference(node, fill->rest, line, context);
    return read;
  }
  read.solid = reading != ColourReading::kNone && reading != ColourReading::kUnreachable;
  CheckColour(node, Owner::kShape, kFill, fill->rest, line);
  return read;
}

bool Survey::CheckOpacity(const SvgNode& node, const ReadStyle& style, const Context& context, bool strokePainted,
                          bool transparentStops) {
  const SvgAttribute* attribute = node.name == "g" || node.name == "circle" ? node.Find("opacity") : nullptr;
  const auto inStyle = FindOpacity(style.text);
  const auto fill = FindProperty(style.text, "fill-opacity:");
  const SvgAttribute* fillAttribute = style.folded ? node.Find("fill-opacity") : nullptr;
  const int line = inStyle || attribute == nullptr ? style.line : attribute->line;
  const int fillLine = fillAttribute == nullptr ? style.line : fillAttribute->line;
  const std::string value(inStyle ? inStyle->Value() : attribute != nullptr ? Trimmed(attribute->value) : "1");
  const std::string fillValue(fill ? fill->Value() : "1");
  const std::string shown = inStyle ? "opacity:" + value : "opacity=" + InQuotes(value);
  const std::string shownFill = "fill-opacity:" + fillValue;
  if (value.ends_with('%') && value != "100%") Report(Loss("percentage"), node, line, shown);
  if (fillValue.ends_with('%') && fillValue != "100%") Report(Loss("percentage"), node, fillLine, shownFill);
  const bool whole = Opacity(value) < 1, filled = Opacity(fillValue) < 1;
  if (!whole && !filled) return false;
  if (transparentStops) {
    Report(Loss("opacity-with-transparent-stops"), node, whole ? line : fillLine, whole ? shown : shownFill);
    return false;
  }
  // The attribute of a group comes behind its style.
  const bool replaced = whole && fill && !(node.name == "g" && attribute != nullptr);
  if (replaced) Report(Loss("opacity-replaced"), node, line, shown);
  const bool strokeAlike = ListHasValue(fillValue, ReadProperties(node)[kStrokeOpacity].value);
  if (filled && strokePainted && !strokeAlike) Report(Loss("fill-opacity-on-stroke"), node, fillLine, shownFill);
  const bool read = filled || (whole && !replaced);
  if (read && context.opacity) {
    const bool byWhole = whole && !replaced;
    Report(Loss("opacity-nested"), node, byWhole ? line : fillLine, byWhole ? shown : shownFill);
  }
  return read;
}

// On a group or text an attribute counts more than the same property of the style.
void Survey::CheckAttributeWins(const SvgNode& node, std::string_view names) {
  const SvgAttribute* style = node.Find("style");
  if (style == nullptr) return;
  std::array<std::string_view, kPropertyCount> last{};
  for (const Declaration& declaration : Declarations(style->value)) {
    const PropertyId id = FindPropertyId(declaration.name);
    if (id != kPropertyCount && ListHas(names, declaration.name)) last[id] = declaration.value;
  }
  for (std::size_t i = 0; i < kPropertyCount; ++i) {
    const SvgAttribute* attribute = last[i].empty() ? nullptr : node.Find(kProperties[i].name);
    if (attribute == nullptr || Trimmed(attribute->value) == last[i]) continue;
    Report(Loss("attribute-wins-over-style"), node, attribute->line, Quoted(*attribute));
  }
}

Context Survey::Inherit(const SvgNode& node, const StatedProperties& own, const Context& context, bool group) {
  Context inner = context;
  for (std::size_t i = 0; i < kPropertyCount; ++i) {
    const auto id = static_cast<PropertyId>(i);
    if (!kProperties[id].inherited || own[id].value.empty() || own[id].value == "inherit") continue;
    const bool passed = group && (id == kFill || id == kStroke || (id == kFillOpacity && own[id].inStyle) ||
                                  (id == kFontSize && !own[id].inStyle));
    inner.inherited[id] = {own[id].value, &node, own[id].line, passed};
  }
  return inner;
}
