// The walk over the elements: which are read where, groups, images, transforms and clips.
#include <cmath>

#include "tools/report/survey.h"

namespace {

constexpr std::string_view kTopElements = "path polygon polyline rect g circle ellipse line text image";
constexpr std::string_view kGroupElements = "path polygon polyline rect g ellipse text tspan line image circle";
constexpr std::string_view kClipElements = "rect path text ellipse";
constexpr std::string_view kDrawnElements = "path polygon polyline rect g circle ellipse line text tspan image";
// Of these only what refers to them is lost.
constexpr std::string_view kReferencedElements = "symbol mask marker filter";

}  // namespace

void Survey::RecordDefinitions(const SvgNode& defs) {
  for (const int child : defs.children) {
    const SvgNode& node = At(child);
    if (node.kind != NodeKind::kElement) continue;
    if (node.name == "clipPath") {
      clips_.Record(node, DefinitionKind::kClip);
    } else if (node.name == "pattern") {
      patterns_.Record(node, DefinitionKind::kPattern);
    } else if (node.name == "linearGradient") {
      gradients_.Record(node, DefinitionKind::kLinear);
    } else if (node.name == "radialGradient") {
      gradients_.Record(node, DefinitionKind::kRadial);
    } else {
      continue;
    }
    recorded_.insert(&node);
  }
}

void Survey::WalkChildren(const SvgNode& node, Place place, const Context& context) {
  for (const int child : node.children) {
    if (At(child).kind == NodeKind::kElement) WalkElement(At(child), node, place, context);
  }
}

void Survey::WalkElement(const SvgNode& node, const SvgNode& parent, Place place, const Context& context) {
  const std::string_view read = place == Place::kTop     ? kTopElements
                                : place == Place::kGroup ? kGroupElements
                                                         : std::string_view();
  if (node.name == "defs" && (place == Place::kTop || place == Place::kGroup)) {
    // The ones at the top have been recorded before anything was translated.
    if (place == Place::kGroup) RecordDefinitions(node);
    WalkChildren(node, Place::kDefs, context);
    return;
  }
  if (!ListHas(read, node.name)) {
    SkippedElement(node, parent, place);
    return;
  }
  if (node.foreign) Report(Loss("foreign-element-drawn"), node, node.line);
  if (node.name == "g") {
    CheckGroup(node, context);
  } else if (node.name == "text" || node.name == "tspan") {
    CheckText(node, context);
  } else if (node.name == "image") {
    CheckImage(node, context, false);
  } else {
    CheckShape(node, context);
  }
}

void Survey::SkippedElement(const SvgNode& node, const SvgNode& parent, Place place) {
  if (node.foreign) return;
  const std::string id(node.Value("id"));
  if (ListHas(kReferencedElements, node.name)) {
    if (!id.empty() && referenced_.contains(id)) Report(LossOfElement(node.name), node, node.line, InQuotes(id));
    return;
  }
  // Only something that refers to them draws what stands in definitions.
  if (place == Place::kDefs && node.name != "style") return;
  if (node.name == "use") {
    std::string_view reference = node.Value("xlink:href");
    if (reference.empty()) reference = node.Value("href");
    Report(Loss("element-use"), node, node.line, reference.empty() ? "its target" : std::string(reference));
  } else if (const LossKind* kind = LossOfElement(node.name)) {
    if (node.name != "style" || !CharactersOf(node).empty()) Report(kind, node, node.line);
  } else if (ListHas(kDrawnElements, node.name)) {
    Report(Loss("element-misplaced"), node, node.line, parent.name);
  }
}

void Survey::CheckClass(const SvgNode& node) {
  const SvgAttribute* attribute = node.Find("class");
  if (attribute == nullptr) return;
  bool selected = unknownStyleSheet_;
  std::string_view names = attribute->value;
  while (!selected && !names.empty()) {
    const std::size_t end = std::min(names.find_first_of(" \t\r\n"), names.size());
    if (end > 0) selected = styledClasses_.contains(std::string(names.substr(0, end)));
    names.remove_prefix(std::min(end + 1, names.size()));
  }
  if (selected) Report(Loss("property-class"), node, attribute->line, Quoted(*attribute));
}

void Survey::CheckCommon(const SvgNode& node) {
  CheckClass(node);
  if (node.name == "g") return;
  for (const int index : node.children) {
    const SvgNode& child = At(index);
    if (child.kind != NodeKind::kElement || child.foreign) continue;
    const LossKind* kind = LossOfElement(child.name);
    if (kind == Loss("element-animation")) Report(kind, child, child.line);
  }
}

// A reference under another name than the one that is read.
void Survey::CheckReferencePrefix(const SvgNode& node) {
  if (node.Find("xlink:href") != nullptr) return;
  for (const SvgAttribute& attribute : node.attributes) {
    if (attribute.value.empty()) continue;
    if (attribute.name == "href" || attribute.name.ends_with(":href")) {
      const std::string shown = attribute.value.size() > 60 ? attribute.value.substr(0, 60) + "..." : attribute.value;
      Report(Loss("href-without-prefix"), node, attribute.line, attribute.name + "=" + InQuotes(shown));
      return;
    }
  }
}

Matrix Survey::CheckTransform(const SvgNode& node, std::string_view name) {
  const SvgAttribute* attribute = node.Find(name);
  if (attribute == nullptr) return {};
  const TransformReading reading = ReadTransform(attribute->value);
  if (!reading.rotationCentre.empty()) {
    Report(Loss("rotation-centre"), node, attribute->line, reading.rotationCentre);
  }
  if (!reading.stoppedAt.empty()) Report(Loss("transform-stopped"), node, attribute->line, reading.stoppedAt);
  if (!reading.misread.empty()) Report(Loss("transform-arguments"), node, attribute->line, reading.misread);
  return reading.matrix;
}

void Survey::CheckClipReference(const SvgNode& node, const Context& context) {
  const SvgAttribute* attribute = node.Find("clip-path");
  if (attribute == nullptr || Trimmed(attribute->value) == "none") return;
  if (!ListHas("path polygon polyline rect image g", node.name)) {
    Report(Loss("clip-path-ignored"), node, attribute->line, Quoted(*attribute));
    return;
  }
  constexpr std::string_view kMark = "url(#";
  const std::size_t at = attribute->value.find(kMark);
  std::string_view reference;
  if (at != std::string::npos) {
    reference = std::string_view(attribute->value).substr(at + kMark.size());
    reference = reference.substr(0, reference.find(')'));
  }
  const Definition* found = at == std::string::npos ? nullptr : clips_.FindWhole(reference);
  if (found == nullptr) {
    Report(Loss("clip-reference"), node, attribute->line, Quoted(*attribute));
    return;
  }
  CheckOtherDefinition(node, attribute->line, reference, *found);
  if (node.name == "g") Report(Loss("clip-on-group"), node, attribute->line, Quoted(*attribute));
  if (entered_.insert(found->node).second) EnterClip(*found->node, context);
}

void Survey::EnterClip(const SvgNode& clip, const Context& context) {
  for (const std::string_view name : {"transform", "clipPathUnits", "clip-path"}) {
    const SvgAttribute* attribute = clip.Find(name);
    if (attribute == nullptr || attribute->value == "userSpaceOnUse" || attribute->value == "none") continue;
    if (name == "transform" && ReadTransform(attribute->value).meant.IsIdentity()) continue;
    Report(Loss("clip-path-attribute"), clip, attribute->line, Quoted(*attribute));
  }
  for (const int index : clip.children) {
    const SvgNode& child = At(index);
    if (child.kind != NodeKind::kElement) continue;
    if (!ListHas(kClipElements, child.name)) {
      const bool drawn = ListHas(kDrawnElements, child.name) || child.name == "use";
      if (drawn && !child.foreign) Report(Loss("clip-child-skipped"), child, child.line);
      continue;
    }
    if (child.foreign) Report(Loss("foreign-element-drawn"), child, child.line);
    CheckTransform(child, "transform");
    CheckCommon(child);
    CheckClipReference(child, context);
    CheckGeometry(child);
    const StatedProperties own = ReadProperties(child);
    if (own[kClipRule].value == "evenodd") {
      Report(Loss("clip-rule"), child, own[kClipRule].line,
             own[kClipRule].inStyle ? "clip-rule:evenodd" : "clip-rule=\"evenodd\"");
    }
    if (own[kDisplay].value == "none") {
      Report(Loss("property-display"), child, own[kDisplay].line,
             own[kDisplay].inStyle ? "display:none" : "display=\"none\"");
    }
    if (child.name != "path") continue;
    if (const SvgAttribute* data = child.Find("d")) CheckPathData(child, *data, ReadPathData(data->value));
  }
}

Context Survey::GroupContext(const SvgNode& node, const StatedProperties& own, const Context& context) {
  Context inner = Inherit(node, own, context, true);
  const auto run = [&](std::string_view text, const std::string& cause) {
    const auto stroke = FindProperty(text, "stroke:");
    const bool none = stroke && ReadColour(stroke->rest) == ColourReading::kNone;
    inner.thickness = none ? 1 : FindProperty(text, "stroke-width:") ? 3 : 2;
    inner.thicknessOrigin = &node;
    inner.thicknessCause = cause;
    strokeLeft_ = inner.thickness >= 2;
  };
  if (const SvgAttribute* style = node.Find("style")) run(style->value, "a style");
  for (const std::string_view name : {"fill", "stroke", "stroke-width", "opacity"}) {
    if (const SvgAttribute* one = node.Find(name)) run(std::string(name) + ":" + one->value, Quoted(*one));
  }
  return inner;
}

void Survey::CheckGroup(const SvgNode& node, const Context& outer) {
  const StatedProperties own = ReadProperties(node);
  Context context = outer;
  context.matrix = outer.matrix * CheckTransform(node, "transform");
  CheckCommon(node);
  CheckUnread(node, own, context);
  CheckStyleText(node, "fill fill-opacity stroke stroke-width opacity");
  CheckAttributeWins(node, "fill stroke stroke-width opacity");
  ReadStyle style;
  const SvgAttribute* styleAttribute = node.Find("style");
  if (styleAttribute != nullptr) {
    style.text = styleAttribute->value;
    style.line = styleAttribute->line;
  }
  for (const PropertyId id : {kFill, kStroke}) {
    const std::string name(kProperties[id].name);
    const SvgAttribute* attribute = node.Find(name);
    if (attribute != nullptr) {
      // Nothing stands behind the value of an attribute.
      CheckColour(node, Owner::kGroup, id, Trimmed(attribute->value), attribute->line);
    } else if (const auto found = FindProperty(style.text, name + ":")) {
      CheckColour(node, Owner::kGroup, id, found->rest, style.line);
    }
  }
  CheckClipReference(node, context);
  Context inner = GroupContext(node, own, context);
  if (CheckOpacity(node, style, context, false, false)) {
    inner.opacity = true;
    int elements = 0;
    for (const int child : node.children) {
      if (At(child).kind != NodeKind::kElement || !ListHas(kGroupElements, At(child).name)) continue;
      elements += At(child).name == "g" ? 2 : 1;
    }
    const StatedProperty& opacity = own[kOpacity];
    if (elements > 1 && !opacity.value.empty() && LeadingNumberOf(opacity.value) < 1) {
      Report(Loss("group-opacity"), node, opacity.line,
             (opacity.inStyle ? "opacity:" : "opacity=") + std::string(opacity.value));
    }
  }
  if (const SvgAttribute* size = node.Find("font-size")) {
    if (NumberAt(size->value)) fontSize_ = size->value;
  }
  WalkChildren(node, Place::kGroup, inner);
}

void Survey::CheckImage(const SvgNode& node, const Context& outer, bool inPattern) {
  const StatedProperties own = ReadProperties(node);
  Context context = outer;
  context.matrix = outer.matrix * CheckTransform(node, "transform");
  CheckCommon(node);
  CheckReferencePrefix(node);
  if (!inPattern) CheckClipReference(node, context);
  CheckUnread(node, own, context);
  CheckInherited(node, own, context);
  CheckLengths(node, "x y width height");
  std::string missing;
  for (const std::string_view name : {"width", "height"}) {
    if (node.Find(name) != nullptr) continue;
    if (!missing.empty()) missing += ", ";
    missing += name;
  }
  if (!missing.empty()) Report(Loss("missing-geometry"), node, node.line, missing);
  const SvgAttribute* y = node.Find("y");
  if (!inPattern && y != nullptr && LeadingNumberOf(y->value) != 0) Report(Loss("image-position"), node, y->line);
  const SvgAttribute* aspect = node.Find("preserveAspectRatio");
  if (aspect != nullptr && Trimmed(aspect->value) != "none") {
    Report(Loss("image-aspect"), node, aspect->line, Quoted(*aspect));
  }

  const SvgAttribute* reference = node.Find("xlink:href");
  if (reference == nullptr) return;
  const std::string& value = reference->value;
  const bool base64 = value.find("base64") != value.npos;
  if (base64 && (inPattern || value.find("data") != value.npos)) {
    const bool known = value.find("png") != value.npos || value.find("jpg") != value.npos ||
                       (inPattern && value.find("jpeg") != value.npos);
    if (!known) Report(Loss("image-format"), node, reference->line, value.substr(0, value.find(',')));
    return;
  }
  std::string reason;
  if (value.starts_with("data:")) {
    reason = "data that is not base64 is taken for the name of a file";
  } else if (value.starts_with("http:") || value.starts_with("https:")) {
    if (inPattern && value.starts_with("http:")) return;
    reason = value + " is not fetched, but looked for on the disk";
  } else if (value.starts_with("file:")) {
    reason = value + " is taken for a path as it stands";
  } else if (value.find(')') != value.npos) {
    reason = "the path " + value + " is read only up to its )";
  } else if (value.starts_with("../..") || value.find("/../") != value.npos) {
    if (value.starts_with("../..")) reason = "of " + value + " only one step up is taken";
  }
  if (reason.empty() && value.find('%') != value.npos) reason = "the path " + value + " is not decoded";
  if (!reason.empty()) Report(Loss("image-reference"), node, reference->line, reason);
}
