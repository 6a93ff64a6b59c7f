// What is lost of texts.
#include <algorithm>

#include "filter_limits.h"
#include "headless_host/text.h"
#include "tools/report/survey.h"

namespace {

constexpr std::string_view kBlack = "black #000 #000000";

std::string_view WithoutPixels(std::string_view value) {
  if (value.ends_with("px")) value.remove_suffix(2);
  return value;
}

// The family that is asked for first, without its quotes.
std::string FirstFamily(std::string_view families) {
  std::string name;
  for (const char c : families.substr(0, families.find(','))) {
    if (c != '\'' && c != '"') name.push_back(c);
  }
  return std::string(Trimmed(name));
}

// Over the start of the buffer, in which older names stay.
void WriteName(std::string& buffer, std::string_view name, bool terminate) {
  if (buffer.size() < name.size() + 1) buffer.resize(name.size() + 1, '\0');
  buffer.replace(0, name.size(), name);
  if (terminate) buffer[name.size()] = '\0';
}

bool IsAnchor(std::string_view value) {
  return value.starts_with("start") || value.starts_with("middle") || value.starts_with("end");
}

std::string AnchorOf(std::string_view value) { return value[0] == 's' ? "start" : value[0] == 'm' ? "middle" : "end"; }

}  // namespace

std::string Survey::CharactersOf(const SvgNode& node) const {
  std::string characters;
  std::vector<const SvgNode*> open{&node};
  while (!open.empty()) {
    const SvgNode& at = *open.back();
    open.pop_back();
    characters += at.text;
    for (auto child = at.children.rbegin(); child != at.children.rend(); ++child) open.push_back(&At(*child));
  }
  return characters;
}

void Survey::CheckCharacters(const SvgNode& node) {
  const std::string all = CharactersOf(node);
  const std::string_view characters = node.preserve ? std::string_view(all) : Trimmed(all);
  for (const std::string_view code : {"\\", "{", "}", "%%"}) {
    if (characters.find(code) == characters.npos) continue;
    Report(Loss("text-codes"), node, node.line, InQuotes(code));
    break;
  }
  if (headless::TextFromUtf8(characters).size() > kMaxTextUnits) Report(Loss("text-length"), node, node.line);
  const bool lines = characters.find_first_of("\t\r\n") != characters.npos;
  if (lines || (!node.preserve && characters.find("  ") != characters.npos)) {
    Report(Loss("text-white-space"), node, node.line);
  }
  if (!headless::IsUtf8(characters)) {
    const std::string& bytes = document_.bytes;
    const std::size_t end = bytes.find("?>");
    const std::size_t word = bytes.starts_with("<?xml") ? bytes.find("encoding") : bytes.npos;
    Report(Loss("encoding-ignored"), node, node.line,
           word < end ? std::string(Trimmed(std::string_view(bytes).substr(word, end - word))) : "the file's encoding");
  }
  std::vector<const SvgNode*> open{&node};
  while (!open.empty()) {
    const SvgNode& at = *open.back();
    open.pop_back();
    for (const int index : at.children) {
      const SvgNode& child = At(index);
      if (child.kind != NodeKind::kElement) continue;
      if (child.name == "textPath") Report(Loss("text-path"), child, child.line);
      if (child.name == "tref") Report(Loss("element-not-read"), child, child.line);
      if (child.foreign || ListHas("title desc metadata style script", child.name)) {
        if (!CharactersOf(child).empty()) Report(Loss("text-description-drawn"), child, child.line);
        continue;
      }
      open.push_back(&child);
    }
  }
}

void Survey::CheckFontName(const SvgNode& node) {
  const SvgAttribute* attribute = node.Find("font-family");
  const SvgAttribute* style = node.Find("style");
  WriteName(fontBuffer_, "arial", true);
  std::string meant;
  int line = node.line;
  if (attribute != nullptr) {
    std::string name;
    for (const char c : std::string_view(attribute->value).substr(0, attribute->value.find(','))) {
      if (c != '\'' && c != '"') name.push_back(c);
    }
    WriteName(fontBuffer_, name, true);
    meant = FirstFamily(attribute->value);
    line = attribute->line;
  }
  const auto inStyle = style == nullptr ? std::nullopt : FindProperty(style->value, "font-family:");
  if (inStyle) {
    WriteName(fontBuffer_, inStyle->rest.substr(0, inStyle->rest.find(';')), false);
    meant = FirstFamily(inStyle->Value());
    line = style->line;
  }
  const std::string asked = fontBuffer_.substr(0, fontBuffer_.find('\0'));
  if (meant.empty() || LowerCase(asked) == LowerCase(meant)) return;
  Report(Loss("font-name"), node, line, "the font asked for is " + InQuotes(asked) + " and not " + InQuotes(meant));
}

void Survey::CheckTextSize(const SvgNode& node, const StatedProperties& own, const Context& context) {
  const StatedProperty& stated = own[kFontSize];
  const InheritedProperty& from = context.inherited[kFontSize];
  const SvgAttribute* attribute = node.Find("font-size");
  if (!stated.value.empty() && stated.value != "inherit") {
    const std::string_view unit = UnitOf(stated.value);
    const std::string shown =
        stated.inStyle ? "font-size:" + std::string(stated.value) : "font-size=" + InQuotes(stated.value);
    if (!NumberAt(stated.value) || !(unit.empty() || unit == "px" || EqualsAnyCase(unit, "mm"))) {
      Report(Loss("font-size-unit"), node, stated.line, shown);
    } else if (attribute != nullptr) {
      Report(Loss("font-size-attribute"), node, attribute->line, Quoted(*attribute));
    }
    if (NumberAt(stated.value)) fontSize_ = attribute != nullptr ? std::string_view(attribute->value) : stated.value;
    return;
  }
  const std::string_view meant = from.origin == nullptr ? std::string_view("medium") : from.value;
  if (!fontSize_.empty() && WithoutPixels(fontSize_) == WithoutPixels(meant)) return;
  if (from.origin != nullptr && !from.passed) {
    ReportOnce(Loss("inheritance-lost"), *from.origin, from.line, "font-size:" + std::string(from.value));
  } else {
    Report(Loss("text-size-left-over"), node, node.line, std::string(meant));
  }
}

void Survey::CheckText(const SvgNode& node, const Context& outer) {
  const StatedProperties own = ReadProperties(node);
  Context context = outer;
  context.matrix = outer.matrix * CheckTransform(node, "transform");
  CheckCommon(node);
  CheckClipReference(node, context);
  CheckUnread(node, own, context);
  CheckInherited(node, own, context);
  CheckStyleText(node,
                 "fill fill-opacity fill-rule stroke stroke-width stroke-linecap stroke-linejoin font-family "
                 "text-anchor font-size");
  CheckAttributeWins(node, "fill stroke stroke-width text-anchor font-size");
  const SvgAttribute* style = node.Find("style");
  for (const PropertyId id : {kFill, kStroke}) {
    const std::string name(kProperties[id].name);
    const SvgAttribute* attribute = node.Find(name);
    if (attribute != nullptr) {
      CheckColour(node, Owner::kText, id, Trimmed(attribute->value), attribute->line);
    } else if (style != nullptr) {
      if (const auto found = FindProperty(style->value, name + ":")) {
        CheckColour(node, Owner::kText, id, found->rest, style->line);
      }
    }
  }
  // Every run of the text's style sets a thickness, the last one with an attribute.
  strokeLeft_ = node.Find("fill") != nullptr || !StartsWithAnyCase(own[kStroke].value, "none");

  if (!context.matrix.MovesOnly()) Report(Loss("text-transform"), node, node.line);
  const SvgAttribute* x = node.Find("x");
  const SvgAttribute* y = node.Find("y");
  const SvgAttribute* last = y != nullptr ? y : x;
  if (last != nullptr) {
    const std::string_view unit = UnitOf(last->value);
    const bool millimetres = EqualsAnyCase(unit, "mm");
    if (unit == "%") {
      Report(Loss("percentage"), node, last->line, Quoted(*last));
    } else if (!unit.empty() && !ListHas("em ex", unit) && NumberAt(last->value) && unit[0] != ',' && !NumberAt(unit) &&
               !(millimetres && scale_ == 0.1 && context.matrix.IsIdentity())) {
      Report(Loss("text-position-unit"), node, last->line, Quoted(*last));
    }
  }
  for (const SvgAttribute* position : {x, y}) {
    if (position == nullptr) continue;
    const auto number = NumberAt(position->value);
    const std::size_t behind = number ? position->value.find_first_not_of(" ,\t\r\n", number->end) : std::string::npos;
    if (behind != std::string::npos && NumberAt(position->value, behind)) {
      Report(Loss("text-span-position"), node, position->line, Quoted(*position));
    }
  }
  for (const std::string_view name : {"dx", "dy"}) {
    const SvgAttribute* shift = node.Find(name);
    if (shift != nullptr && LeadingNumberOf(shift->value) != 0) {
      Report(Loss("attribute-not-read"), node, shift->line, Quoted(*shift));
    }
  }

  const InheritedProperty& from = context.inherited[kTextAnchor];
  const std::string_view meant = own[kTextAnchor].value.empty() ? from.value : own[kTextAnchor].value;
  const auto inStyle = style == nullptr ? std::nullopt : FindProperty(style->value, "text-anchor:");
  if (inStyle && IsAnchor(inStyle->rest)) anchor_ = AnchorOf(inStyle->rest);
  if (IsAnchor(node.Value("text-anchor"))) anchor_ = AnchorOf(node.Value("text-anchor"));
  if (anchor_ != (meant.empty() ? "start" : meant)) {
    if (own[kTextAnchor].value.empty() && from.origin != nullptr) {
      ReportOnce(Loss("inheritance-lost"), *from.origin, from.line, "text-anchor:" + std::string(from.value));
    } else {
      Report(Loss("text-anchor-left-over"), node, node.line, anchor_);
    }
  }
  CheckTextSize(node, own, context);
  CheckFontName(node);
  CheckCharacters(node);
  bool first = true;
  CheckSpans(node, node, own, context, &first);
}

// The tspan elements in a text, whose characters are part of the one string of the text.
void Survey::CheckSpans(const SvgNode& node, const SvgNode& text, const StatedProperties& own, const Context& context,
                        bool* first) {
  for (const int index : node.children) {
    const SvgNode& span = At(index);
    if (span.kind == NodeKind::kText) *first = false;
    if (span.kind != NodeKind::kElement || span.foreign) continue;
    if (!ListHas("tspan a textPath altGlyph", span.name)) continue;
    CheckCommon(span);
    CheckTransform(span, "transform");
    CheckClipReference(span, context);
    const SvgAttribute* lost = nullptr;
    for (const std::string_view name : {"x", "y", "dx", "dy"}) {
      const SvgAttribute* position = span.Find(name);
      if (position == nullptr || lost != nullptr) continue;
      const bool shift = name[0] == 'd';
      const bool list = UnitOf(position->value).find_first_of("0123456789") != std::string_view::npos;
      const double value = LeadingNumberOf(position->value);
      const bool same = shift ? value == 0 : *first && value == LeadingNumberOf(text.Value(name));
      if (!same || list) lost = position;
    }
    if (lost != nullptr) Report(Loss("text-span-position"), span, lost->line, Quoted(*lost));

    const StatedProperties stated = ReadProperties(span);
    std::string names;
    int line = span.line;
    for (std::size_t i = 0; i < kPropertyCount; ++i) {
      const auto id = static_cast<PropertyId>(i);
      const Property& property = kProperties[id];
      if (property.need != Need::kText && !ListHas("fill fill-opacity stroke opacity display", property.name) &&
          id != kVisibility) {
        continue;
      }
      const std::string_view value = stated[id].value, around = Effective(own, context, id);
      if (value.empty() || value == "inherit" || WithoutPixels(value) == WithoutPixels(around)) continue;
      if (id == kDisplay ? value != "none" : around.empty() && ListHasValue(property.harmless, value)) continue;
      if (id == kFill && ListHas(kBlack, value) && (around.empty() || ListHas(kBlack, around))) continue;
      if (id == kStroke && value == "none" && around.empty()) continue;
      if (id == kTextAnchor && around.empty() && value == "start") continue;
      if (names.empty()) line = stated[id].line;
      names += (names.empty() ? "" : ", ") + std::string(property.name);
    }
    if (!names.empty()) Report(Loss("text-span-style"), span, line, names);
    CheckSpans(span, text, own, context, first);
    *first = false;
  }
}
