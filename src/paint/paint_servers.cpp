#include "paint/paint_servers.h"

#include <cstdint>
#include <new>
#include <utility>

#include "document/node_access.h"
#include "images/image_element.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "paint/gradient_fill.h"
#include "run/host_memory.h"
#include "run/import_run.h"
#include "run/number_text.h"
#include "text/text_element.h"
#include "translators/element_dispatch.h"
#include "translators/path_data.h"
#include "translators/shapes.h"
#include "translators/style.h"
#include "translators/transform.h"

namespace {

// Feeds the number of each attribute; an empty one counts as 0.0, and one without a number pushes nothing.
template <std::size_t N>
void FeedLengths(IXMLDOMNode* node, const std::u16string_view (&names)[N]) {
  for (const std::u16string_view name : names) {
    const std::u16string_view value = GetNodeAttribute(node, name);
    double number = 0.0;
    if (value.empty() || ReadPlainNumber(value.data(), value.data() + value.size(), &number)) {
      PushNumber(number);
      continue;
    }
    GrowingText text;
    UnitCode unit;
    ScanLength(value, text, &unit);
    FeedOperatorText(text, kPushOnly);
  }
}

constexpr std::u16string_view kLinearGeometry[] = {u"x1", u"x2", u"y1", u"y2"};
constexpr std::u16string_view kRadialGeometry[] = {u"cx", u"cy", u"fx", u"fy", u"r"};
constexpr std::u16string_view kPatternGeometry[] = {u"x", u"y", u"width", u"height"};

// An image is translated inside a pattern, text inside a gradient. A node that is recorded stays with its table.
enum class Container { Gradient, Pattern };

void TranslateChildren(IXMLDOMNode* node, Container container) {
  ChildNodeList children;
  CollectChildNodes(node, children);
  for (std::int32_t i = 0; i < children.length(); ++i) {
    IXMLDOMNode* child = children.At(i);
    const std::u16string_view name = GetNodeName(child);
    if (name == u"clipPath") {
      RecordClipDef(child);
      children.Keep(i);
    } else if (name == u"linearGradient") {
      RecordGradientDef(child, kLinearGradient);
      children.Keep(i);
    } else if (name == u"radialGradient") {
      RecordGradientDef(child, kRadialGradient);
      children.Keep(i);
    } else if (name == u"g") {
      TranslateGroup(child);
    } else if (name == u"ellipse") {
      TranslateEllipse(child);
    } else if (name == u"line") {
      TranslateLine(child);
    } else if (container == Container::Gradient && (name == u"text" || name == u"tspan")) {
      TranslateText(child);
    } else if (container == Container::Pattern && name == u"image") {
      TranslatePatternImage(child);
    }
  }
}

// Blocks are counted, since frames that are copies of one another share them.
void NewStopBlock(GraphicsState& frame, std::uint32_t room) {
  const std::size_t size = sizeof(StopBlock) + room * sizeof(GradientStop);
  auto* block = static_cast<StopBlock*>(AllocateHost(size));
  block->references = 1;
  block->room = room;
  for (std::uint32_t i = 0; i < room; ++i) block->Stops()[i] = {0, 0.0, 1.0};
  ReleaseStops(frame);
  frame.stops = block;
}

// Gives the frame as many entries in place of its stops.
void StartStops(GraphicsState& frame, std::int32_t count) {
  if (count > 0) NewStopBlock(frame, static_cast<std::uint32_t>(count));
  frame.stopCount = count;
  run.definitionGuard.work += static_cast<std::uint32_t>(count);
}

// Copies a list that has been read before into the frame. Returns how many are stops.
std::int32_t TakeStops(const StopList& list) {
  GraphicsState& frame = CurrentFrame();
  StartStops(frame, static_cast<std::int32_t>(list.entries.size()));
  for (std::size_t i = 0; i < list.entries.size(); ++i) {
    frame.stops->Stops()[i] = list.entries[i];
    if (list.entries[i].opacity < 1.0) frame.stopsPartlyTransparent = 1;
  }
  return list.stopCount;
}

// The text behind the next ":" from `start` on, without its blanks.
std::u16string_view ValueBehind(std::u16string_view text, std::size_t start) {
  const std::size_t colon = text.find(u':', start);
  if (colon == text.npos) return {};
  text.remove_prefix(colon + 1);
  while (text.starts_with(u' ')) text.remove_prefix(1);
  return text;
}

}  // namespace

void TranslatePaintServer(std::u16string_view reference) {
  if (const DefinitionRecord* found = FindGradientDef(reference)) {
    const DefinitionRecord record = *found;  // the table may move below
    const EnteredDefinition entered(record);
    if (entered) TranslateGradient(record.node, static_cast<GradientKind>(record.kind));
  } else if (const DefinitionRecord* pattern = FindPatternDef(reference)) {
    const DefinitionRecord record = *pattern;
    const EnteredDefinition entered(record);
    if (entered) TranslatePattern(record.node);
  }
}

// Units and percentages are cut off: there is no bounding-box mode. The transform attribute goes into the frame of the
// shape and moves the shape: it is meant.
void TranslateGradient(IXMLDOMNode* node, GradientKind kind) {
  CurrentFrame().gradientMatrix = kIdentity;
  ParseTransform(GetNodeAttribute(node, u"gradientTransform"), MatrixTarget::Gradient);
  if (kind == kLinearGradient) {
    FeedLengths(node, kLinearGeometry);
  } else {
    FeedLengths(node, kRadialGeometry);
  }
  const std::u16string_view href = GetNodeAttribute(node, u"xlink:href");
  if (!href.empty()) ReadGradientStops(href);
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  PushNumber(kind == kLinearGradient ? 0.0 : 1.0);
  OperatorGradientFill({u"@k", 1});
  TranslateGradientChildren(node);
}

// The gradient matrix is not reset first. The operands wait for the operator of an image among the children.
void TranslatePattern(IXMLDOMNode* node) {
  ParseTransform(GetNodeAttribute(node, u"patternTransform"), MatrixTarget::Gradient);
  FeedLengths(node, kPatternGeometry);
  TranslateChildren(node, Container::Pattern);
}

void TranslateGradientChildren(IXMLDOMNode* node) { TranslateChildren(node, Container::Gradient); }

// Every child takes an entry, also one that is no stop and leaves it as it is. Each list is read once, since many
// gradients may share it: reading it for each would be an eighth of an import of gradient fills.
std::int32_t ReadGradientStops(std::u16string_view href) {
  const std::size_t hash = href.find(u'#');
  if (hash == href.npos) return 0;
  const DefinitionRecord* record = FindGradientDef(href.substr(hash + 1));
  if (!record) return 0;
  auto& lists = run.definitions.GradientDefs.stopLists;
  const auto known = lists.find(record->node);
  if (known != lists.end()) return TakeStops(known->second);
  ChildNodeList children;
  CollectChildNodes(record->node, children);
  GraphicsState& frame = CurrentFrame();
  StartStops(frame, children.length());
  StopList list;
  for (std::int32_t i = 0; i < children.length(); ++i) {
    IXMLDOMNode* child = children.At(i);
    if (GetNodeName(child) != u"stop") continue;
    const std::u16string_view style = GetNodeAttribute(child, u"style");
    if (!style.empty()) ParseStopStyle(style, i);
    const std::u16string_view offset = GetNodeAttribute(child, u"offset");
    if (!offset.empty()) frame.stops->Stops()[i].offset = LeadingNumber(offset);
    ++list.stopCount;
  }
  if (children.length() > 0) list.entries.assign(frame.stops->Stops(), frame.stops->Stops() + children.length());
  return lists.emplace(record->node, std::move(list)).first->second.stopCount;
}

void ParseStopStyle(std::u16string_view style, std::int32_t index) {
  GraphicsState& frame = CurrentFrame();
  GradientStop& stop = frame.stops->Stops()[index];
  stop.opacity = 1.0;
  constexpr std::u16string_view kColour = u"stop-color";
  constexpr std::u16string_view kOpacity = u"stop-opacity";
  const std::size_t colour = style.find(kColour);
  if (colour == style.npos) return;
  const std::u16string_view value = ValueBehind(style, colour + kColour.size());
  if (value.starts_with(u'#')) stop.rgb = static_cast<std::uint32_t>(ReadHexColour(value));
  const std::size_t opacity = style.find(kOpacity, colour == 0 ? kColour.size() : 0);
  if (opacity == style.npos) return;
  stop.opacity = LeadingNumber(ValueBehind(style, opacity + kOpacity.size()));
  if (stop.opacity < 1.0) frame.stopsPartlyTransparent = 1;
}
