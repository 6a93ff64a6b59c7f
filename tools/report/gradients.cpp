// What is lost of gradients and patterns, and of the references to them.
#include <cmath>

#include "filter_limits.h"
#include "tools/report/survey.h"

namespace {

constexpr int kMostLinks = 32;

void AddName(std::string& names, std::string_view name) {
  if (!names.empty()) names += ", ";
  names += name;
}

}  // namespace

// The definition that is found is not the one that is meant.
void Survey::CheckOtherDefinition(const SvgNode& node, int line, std::string_view reference, const Definition& found) {
  const std::string_view id = found.node->Value("id");
  const auto meant = byId_.find(std::string(reference));
  if (id == reference && meant != byId_.end() && meant->second == found.node) return;
  Report(Loss("reference-other-definition"), node, line, InQuotes(reference) + " finds " + InQuotes(id));
}

bool Survey::CheckPaintReference(const SvgNode& node, std::string_view rest, int line, const Context& context) {
  const std::size_t hash = rest.find('#');
  const std::size_t end = hash == rest.npos ? rest.npos : rest.find(')', hash);
  const std::string_view reference = end == rest.npos ? std::string_view() : rest.substr(hash + 1, end - hash - 1);
  const Definition* found = gradients_.FindByStart(reference);
  if (found == nullptr) found = patterns_.FindByStart(reference);
  if (found == nullptr) {
    Report(Loss("paint-reference"), node, line, "fill:" + std::string(Trimmed(rest.substr(0, rest.find(';')))));
    return false;
  }
  CheckOtherDefinition(node, line, reference, *found);
  const bool first = entered_.insert(found->node).second;
  if (found->kind == DefinitionKind::kPattern) {
    if (first) CheckPattern(*found->node, context);
    return false;
  }
  if (first) CheckGradient(*found);
  if (!context.matrix.IsIdentity() && !boxed_.contains(found->node))
    Report(Loss("gradient-under-transform"), node, line);
  return transparent_.contains(found->node);
}

int Survey::CountStops(const SvgNode& gradient) {
  const auto [count, fresh] = stopCounts_.try_emplace(&gradient, 0);
  if (!fresh) return count->second;
  for (const int child : gradient.children) {
    count->second += At(child).kind == NodeKind::kElement && At(child).name == "stop";
  }
  return count->second;
}

void Survey::CheckGradient(const Definition& gradient) {
  const SvgNode& node = *gradient.node;
  const bool radial = gradient.kind == DefinitionKind::kRadial;
  CheckReferencePrefix(node);

  const int ownStops = CountStops(node);
  if (ownStops > 0) {
    Report(Loss("gradient-own-stops"), node, node.line,
           std::to_string(ownStops) + (ownStops == 1 ? " stop" : " stops"));
  }
  if (const SvgAttribute* link = node.Find("xlink:href")) {
    const std::size_t hash = link->value.find('#');
    const std::string_view reference =
        hash == std::string::npos ? std::string_view() : std::string_view(link->value).substr(hash + 1);
    const Definition* linked = gradients_.FindByStart(reference);
    if (linked == nullptr || CountStops(*linked->node) == 0) {
      Report(Loss("gradient-link"), node, link->line, Quoted(*link));
    } else {
      CheckOtherDefinition(node, link->line, reference, *linked);
      if (CheckStops(*linked->node)) transparent_.insert(&node);
    }
  }

  // What SVG takes for an attribute: the gradient's own, or that of the next one along the links.
  const auto meant = [&](std::string_view name) {
    const SvgNode* at = &node;
    for (int i = 0; i < kMostLinks; ++i) {
      if (const SvgAttribute* attribute = at->Find(name)) return attribute;
      std::string_view link = at->Value("xlink:href");
      if (link.empty()) link = at->Value("href");
      const auto next = link.starts_with('#') ? byId_.find(std::string(link.substr(1))) : byId_.end();
      if (next == byId_.end()) break;
      at = next->second;
    }
    return static_cast<const SvgAttribute*>(nullptr);
  };
  const std::string_view coordinates = radial ? "cx cy r" : "x1 y1 x2 y2";
  std::string inherited, missing;
  ForEachWord(coordinates, [&](std::string_view name) {
    const SvgAttribute* attribute = meant(name);
    if (node.Find(name) == nullptr && attribute != nullptr) AddName(inherited, name);
    if (attribute == nullptr && (radial || name == "x2")) AddName(missing, name);
  });
  if (node.Find("gradientTransform") == nullptr && meant("gradientTransform") != nullptr) {
    AddName(inherited, "gradientTransform");
  }
  if (!inherited.empty()) Report(Loss("gradient-inherited-geometry"), node, node.line, inherited);

  const SvgAttribute* units = meant("gradientUnits");
  if (units == nullptr || Trimmed(units->value) != "userSpaceOnUse") {
    Report(Loss("gradient-bounding-box"), node, node.line);
    boxed_.insert(&node);
  } else {
    if (!missing.empty()) Report(Loss("gradient-default-coordinate"), node, node.line, missing);
    CheckLengths(node, coordinates);
  }
  const SvgAttribute* spread = meant("spreadMethod");
  if (spread != nullptr && spread->value != "pad") Report(Loss("gradient-spread"), node, node.line, Quoted(*spread));
  for (const std::string_view name : {"fx", "fy"}) {
    const SvgAttribute* focus = radial ? node.Find(name) : nullptr;
    if (focus == nullptr || LeadingNumberOf(focus->value) == LeadingNumberOf(node.Value(name == "fx" ? "cx" : "cy"))) {
      continue;
    }
    Report(Loss("gradient-focus"), node, focus->line, Quoted(*focus));
    break;
  }
  if (const SvgAttribute* transform = node.Find("gradientTransform")) {
    const Matrix m = CheckTransform(node, "gradientTransform");
    const auto is = [](double x, double y) { return std::fabs(x - y) < 1e-6; };
    const bool whole = radial ? is(m.a, m.d) && m.a > 0 && is(m.b, 0) && is(m.c, 0) && is(m.e, 0) : m.MovesOnly();
    if (!whole) Report(Loss("gradient-transform"), node, transform->line, Quoted(*transform));
  }
}

// The stops of the node that a gradient links to. True when one of them is transparent.
bool Survey::CheckStops(const SvgNode& owner) {
  if (!stopOwners_.insert(&owner).second) return transparentOwners_.contains(&owner);
  bool transparent = false;
  for (const int index : owner.children) {
    const SvgNode& child = At(index);
    if (child.kind != NodeKind::kElement || child.name != "stop") {
      Report(Loss("stop-list-gap"), owner, child.line,
             child.kind == NodeKind::kElement ? child.name
             : child.kind == NodeKind::kText  ? "white space that is preserved"
                                              : "a comment");
      continue;
    }
    CheckCommon(child);
    const std::string_view style = child.Value("style");
    const SvgAttribute* styleAttribute = child.Find("style");
    const bool colour = style.find("stop-color") != style.npos;
    for (const std::string_view name : {"stop-color", "stop-opacity"}) {
      const SvgAttribute* attribute = child.Find(name);
      if (attribute == nullptr || style.find(name) != style.npos) continue;
      if (ListHas(name == "stop-color" ? "black #000 #000000" : "1 1.0", attribute->value)) continue;
      Report(Loss("stop-attributes"), child, attribute->line, Quoted(*attribute));
    }
    if (colour) {
      std::string_view rest = style.substr(style.find("stop-color"));
      rest.remove_prefix(std::min(rest.find(':') == rest.npos ? rest.size() : rest.find(':') + 1, rest.size()));
      rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
      const std::string shown = "stop-color:" + std::string(Trimmed(rest.substr(0, rest.find(';'))));
      const ColourReading reading = ReadColour(rest);
      // What is no colour for SVG either is black there too.
      const bool black = ListHas("black none", Trimmed(rest.substr(0, rest.find(';'))));
      if (rest.starts_with('#') ? reading == ColourReading::kMisread : !black) {
        Report(Loss("stop-color-form"), child, styleAttribute->line, shown);
      } else if (reading == ColourReading::kShortHexAtEnd) {
        Report(Loss("short-hex-at-end"), child, styleAttribute->line, shown);
      }
    }
    const std::size_t opacity = style.find("stop-opacity");
    const std::size_t colon = opacity == style.npos ? opacity : style.find(':', opacity);
    if (colon != style.npos) {
      const std::string_view value = style.substr(colon + 1);
      const bool below = LeadingNumberOf(value) < 1.0;
      if (below && colour) transparent = true;
      if (below && !colour) {
        Report(Loss("stop-opacity-alone"), child, styleAttribute->line,
               "stop-opacity:" + std::string(Trimmed(value.substr(0, value.find(';')))));
      }
    }
    const SvgAttribute* offset = child.Find("offset");
    if (offset != nullptr && UnitOf(offset->value) == "%" && LeadingNumberOf(offset->value) != 0) {
      Report(Loss("stop-offset-percent"), child, offset->line, Quoted(*offset));
    }
  }
  if (transparent) transparentOwners_.insert(&owner);
  return transparent;
}

void Survey::CheckPattern(const SvgNode& pattern, const Context& context) {
  CheckReferencePrefix(pattern);
  if (const SvgAttribute* link = pattern.Find("xlink:href")) {
    Report(Loss("pattern-link"), pattern, link->line, Quoted(*link));
  }
  if (const SvgAttribute* transform = pattern.Find("patternTransform")) {
    Report(Loss("pattern-transform"), pattern, transform->line, Quoted(*transform));
  }
  bool placed = false;
  for (const int index : pattern.children) {
    const SvgNode& child = At(index);
    if (child.kind != NodeKind::kElement || child.foreign) continue;
    if (child.name == "image") {
      CheckImage(child, context, true);
      placed = true;
    } else if (!ListHas("title desc metadata clipPath linearGradient radialGradient defs", child.name)) {
      Report(Loss("pattern-content"), child, child.line);
    }
  }
  if (placed) Report(Loss("pattern-placement"), pattern, pattern.line);
}
