#include "translators/style.h"

#include <optional>
#include <span>

#include "document/definitions.h"
#include "document/node_access.h"
#include "operators/graphics_state.h"
#include "paint/paint_servers.h"
#include "paint/transparency.h"
#include "run/command_queue.h"
#include "run/import_run.h"
#include "run/number_text.h"
#include "run/text_match.h"
#include "text/text_element.h"
#include "translators/colour_names.h"

namespace {

constexpr std::int32_t kNone = -1;
constexpr double kHairWidth = 0.001;

enum Thickness { kNoLine = 1, kHairline = 2, kThick = 3 };

std::u16string_view Behind(std::u16string_view text, std::size_t i) {
  return text.substr(i < text.size() ? i : text.size());
}

// The value of the property whose name, colon included, stands at `match`.
std::u16string_view ValueAt(std::u16string_view text, std::size_t match) {
  std::u16string_view value = Behind(text, text.find(u':', match) + 1);
  while (!value.empty() && value[0] == u' ') value.remove_prefix(1);
  return value;
}

std::optional<std::u16string_view> FindValue(std::u16string_view text, std::u16string_view property) {
  const std::size_t match = text.find(property);
  if (match == text.npos) return std::nullopt;
  return ValueAt(text, match);
}

bool IsName(std::u16string_view value) { return !value.empty() && value[0] >= u'b' && value[0] <= u'y'; }
bool IsHex(std::u16string_view value) { return value.starts_with(u'#'); }
bool IsRgb(std::u16string_view value) { return StartsWithAnyCase(value, u"rgb"); }
bool IsNone(std::u16string_view value) { return StartsWithAnyCase(value, u"none"); }

// Three integers from the fifth unit on, with nothing between number and comma. What the scan does not reach is 0, and
// of each number the low 8 bits count.
std::int32_t ReadRgb(std::u16string_view value) {
  std::u16string_view rest = Behind(value, 4);
  std::uint32_t components[3] = {0, 0, 0};
  for (int i = 0; i < 3; ++i) {
    if (i > 0) {
      if (!rest.starts_with(u',')) break;
      rest.remove_prefix(1);
    }
    std::size_t consumed;
    const std::int32_t number = LeadingInteger(rest, &consumed);
    if (consumed == 0) break;
    components[i] = static_cast<std::uint32_t>(number) & 0xFF;
    rest.remove_prefix(consumed);
  }
  return static_cast<std::int32_t>(components[0] | components[1] << 8 | components[2] << 16);
}

// "opacity:" that is not the end of "stroke-opacity:" or "fill-opacity:"; only the second occurrence is looked at
// behind the first.
std::optional<std::u16string_view> FindOpacity(std::u16string_view text) {
  constexpr std::u16string_view kOpacity = u"opacity:";
  const auto compound = [text](std::size_t match) { return match > 0 && text[match - 1] == u'-'; };
  std::size_t match = text.find(kOpacity);
  if (match != text.npos && compound(match)) {
    match = text.find(kOpacity, match + 1);
    if (match != text.npos && compound(match)) match = text.npos;
  }
  if (match == text.npos) return std::nullopt;
  return ValueAt(text, match);
}

void ApplyOpacity(std::u16string_view text) {
  if (const auto value = FindOpacity(text)) ApplyUniformOpacity(*value);
}

void ApplyFillOpacity(std::u16string_view text) {
  if (const auto value = FindValue(text, u"fill-opacity:")) ApplyUniformOpacity(*value);
}

struct Keyword {
  std::u16string_view text;
  std::int32_t value;
};

// Of "square" and "miter" all letters but the last count.
constexpr Keyword kCaps[] = {{u"butt", 0}, {u"round", 2}, {u"squar", 1}};
constexpr Keyword kJoins[] = {{u"mite", 2}, {u"round", 0}, {u"bevel", 1}};

std::int32_t ReadKeyword(std::u16string_view value, std::span<const Keyword> keywords) {
  for (const Keyword& keyword : keywords) {
    if (StartsWithAnyCase(value, keyword.text)) return keyword.value;
  }
  return 0;
}

void ApplyLineCap(std::u16string_view text) {
  if (const auto value = FindValue(text, u"stroke-linecap:")) PushValue(KEY_LNST, ReadKeyword(*value, kCaps));
}

void ApplyLineJoin(std::u16string_view text) {
  if (const auto value = FindValue(text, u"stroke-linejoin:")) PushValue(KEY_CNST, ReadKeyword(*value, kJoins));
}

void ApplyMiterLimit(std::u16string_view text) {
  const auto value = FindValue(text, u"stroke-miterlimit:");
  if (!value) return;
  const auto limit = static_cast<std::int32_t>(static_cast<std::uint32_t>(LeadingInteger(*value)) * 100u);
  CurrentFrame().miterLimit = limit;
  PushValue(KEY_MLIM, limit);
}

void ApplyFillRule(std::u16string_view text) {
  if (const auto value = FindValue(text, u"fill-rule:")) PushValue(KEY_WRUL, value->starts_with(u'n') ? 1 : 0);
}

// The paint server between the first "#" and the next ")"; nothing happens if there is none by that name.
void ApplyPaintServer(std::u16string_view value) {
  const std::size_t hash = value.find(u'#');
  if (hash == value.npos) return;
  const std::u16string_view reference = value.substr(hash + 1);
  const std::size_t close = reference.find(u')');
  if (close == reference.npos) return;
  TranslatePaintServer(reference.substr(0, close));
}

void SendWidth(double width) { PushWidth(run.UnitScale * width, 0); }

// The width of a shape behind its stroke.
void ApplyShapeWidth(std::u16string_view text) {
  double width = 0.0;
  if (const auto value = FindValue(text, u"stroke-width:")) {
    width = LeadingNumber(*value);
    if (width == 0.0) {
      PushValue(KEY_THST, kNoLine);  // twice: it is meant
      PushValue(KEY_THST, kNoLine);
    } else {
      PushValue(KEY_THST, kThick);
    }
  } else if (CurrentFrame().lineWidth == 0.0) {
    PushValue(KEY_THST, kHairline);
    width = kHairWidth;
  }
  SendWidth(width);
}

// An "rgb" stroke lands in the frame's fill colour, and the others nowhere: it is meant.
void ApplyShapeStroke(std::u16string_view text) {
  const auto value = FindValue(text, u"stroke:");
  if (!value) return;
  if (IsNone(*value)) {
    PushValue(KEY_THST, kNoLine);
    return;
  }
  if (IsHex(*value)) {
    PushValue(KEY_OUTL, ReadHexColour(*value));
  } else if (IsRgb(*value)) {
    const std::int32_t colour = ReadRgb(*value);
    PushValue(KEY_OUTL, colour);
    CurrentFrame().fill.colour = colour;
  } else if (IsName(*value)) {
    PushValue(KEY_OUTL, LookupColourName(*value));
  }
  ApplyShapeWidth(text);
}

// The forms of a solid colour, in the order of their tests.
std::optional<std::int32_t> ReadSolidColour(std::u16string_view value) {
  if (IsHex(value)) return ReadHexColour(value);
  if (IsRgb(value)) return ReadRgb(value);
  if (IsName(value)) return LookupColourName(value);
  return std::nullopt;
}

void ApplyShapeFill(std::u16string_view text) {
  const auto value = FindValue(text, u"fill:");
  if (!value) return;
  if (IsNone(*value)) {
    PushValue(KEY_FILL, kNone);
    CurrentFrame().fill.colour = kNone;
  } else if (StartsWithAnyCase(*value, u"url")) {
    ApplyPaintServer(*value);
  } else if (const auto colour = ReadSolidColour(*value)) {
    PushValue(KEY_FILL, *colour);
    CurrentFrame().fill.colour = *colour;
    run.paint.FillGiven = 1;
  }
}

void SetThickness(std::int32_t thickness) {
  PushValue(KEY_THST, thickness);
  CurrentFrame().thicknessState = thickness;
}

void ApplyGroupStroke(std::u16string_view text) {
  GraphicsState& frame = CurrentFrame();
  const auto stroke = FindValue(text, u"stroke:");
  if (stroke && IsNone(*stroke)) {
    SetThickness(kNoLine);
    SendWidth(0.0);
    return;
  }
  if (stroke) {
    if (IsHex(*stroke)) {
      frame.outline.colour = ReadHexColour(*stroke);
      PushValue(KEY_OUTL, frame.outline.colour);
    } else if (IsRgb(*stroke)) {
      // Into the fill, as on a shape.
      frame.fill.colour = ReadRgb(*stroke);
      PushValue(KEY_OUTL, frame.fill.colour);
      run.paint.FillGiven = 1;
    } else if (IsName(*stroke)) {
      frame.outline.colour = LookupColourName(*stroke);
      PushValue(KEY_OUTL, frame.outline.colour);
    }
  }
  double width = 0.0;
  if (const auto value = FindValue(text, u"stroke-width:")) {
    width = LeadingNumber(*value);
    SetThickness(kThick);
  } else if (frame.lineWidth == 0.0) {
    SetThickness(kHairline);
    width = 1.0;
  }
  SendWidth(width);
}

void ApplyGroupFill(std::u16string_view text) {
  const auto value = FindValue(text, u"fill:");
  if (!value) return;
  std::int32_t colour = kNone;
  if (!IsNone(*value)) {
    const auto solid = ReadSolidColour(*value);
    if (!solid) return;
    colour = *solid;
    if (!IsHex(*value) && IsRgb(*value)) run.paint.FillGiven = 1;
  }
  PushValue(KEY_FILL, colour);
  CurrentFrame().fill.colour = colour;
}

void ApplyTextWidth(std::u16string_view text) {
  double width = 0.0;
  if (const auto value = FindValue(text, u"stroke-width:")) {
    width = LeadingNumber(*value);
    PushValue(KEY_THST, kThick);
  } else if (CurrentFrame().lineWidth == 0.0) {
    PushValue(KEY_THST, kHairline);
    width = kHairWidth;
  }
  SendWidth(width);
}

// A name is tested before "rgb", so that a small "rgb(" is a name that nothing matches, black, and only "RGB(" is read.
void ApplyTextStroke(std::u16string_view text, bool forceWidth) {
  bool readWidth = true;
  if (const auto value = FindValue(text, u"stroke:")) {
    if (IsNone(*value)) {
      PushValue(KEY_THST, kNoLine);
      readWidth = forceWidth;
    } else if (IsHex(*value)) {
      PushValue(KEY_OUTL, ReadHexColour(*value));
    } else if (IsName(*value)) {
      PushValue(KEY_OUTL, LookupColourName(*value));
    } else if (IsRgb(*value)) {
      PushValue(KEY_OUTL, ReadRgb(*value));
    } else {
      readWidth = forceWidth;
    }
  }
  if (readWidth) ApplyTextWidth(text);
}

void ApplyTextFill(std::u16string_view text) {
  const auto value = FindValue(text, u"fill:");
  if (!value) return;
  if (IsNone(*value)) {
    PushValue(KEY_FILL, kNone);
  } else if (const auto colour = ReadSolidColour(*value)) {
    PushValue(KEY_FILL, *colour);
  }
}

}  // namespace

int HexDigitValue(char16_t c) {
  if (c >= u'1' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return 0;
}

std::int32_t ReadHexColour(std::u16string_view value) {
  const auto digit = [value](std::size_t i) { return i < value.size() ? HexDigitValue(value[i]) : 0; };
  std::int32_t components[3];
  const bool isShort = value.size() > 4 && value[4] == u';';
  for (std::size_t i = 0; i < 3; ++i)
    components[i] = isShort ? digit(1 + i) * 17 : digit(1 + 2 * i) * 16 + digit(2 + 2 * i);
  return components[0] | components[1] << 8 | components[2] << 16;
}

void ApplyShapeStyle(std::u16string_view text) {
  ReplayPaintState();
  ApplyShapeStroke(text);
  run.paint.FillGiven = 0;
  ApplyShapeFill(text);
  ApplyLineCap(text);
  ApplyLineJoin(text);
  ApplyMiterLimit(text);
  ApplyOpacity(text);
  ApplyFillOpacity(text);
  ApplyFillRule(text);
}

void ApplyGroupStyle(std::u16string_view text) {
  ApplyOpacity(text);
  ApplyFillOpacity(text);
  ApplyGroupStroke(text);
  ApplyGroupFill(text);
}

void ApplyTextStyle(std::u16string_view text, bool forceWidth) {
  ApplyTextStroke(text, forceWidth);
  ApplyTextFill(text);
  ApplyLineCap(text);
  ApplyLineJoin(text);
  ApplyFillOpacity(text);
  if (const auto value = FindValue(text, u"font-family:"))
    run.text.OverwriteFontName(value->substr(0, value->find(u';')));
  ApplyFillRule(text);
  if (const auto value = FindValue(text, u"text-anchor:")) ApplyTextAnchor(*value);
  const std::size_t size = text.find(u"font-size:");
  if (size != text.npos) ApplyFontSize(text.substr(size));
}

// The factor and the divisor are the style's own; the attribute of a text element goes by another formula.
void ApplyFontSize(std::u16string_view text) {
  const std::size_t colon = text.find(u':');
  if (colon == text.npos) return;
  GrowingText digits;
  UnitCode unit;
  if (ScanLength(text.substr(colon + 1), digits, &unit) == 0) return;
  const double number = LeadingNumber(digits);
  double& size = run.text.FontSize;
  if (unit == kNoUnit || unit == kPixel) {
    size = number * 1000.0 / 2.54 * run.UnitScale * 0.7;
  } else if (unit == kMillimetre) {
    size = number * 1000.0 / 25.4 * 0.7;
  } else {
    size = number;
  }
}

void FoldAttribute(GrowingText& out, IXMLDOMNode* node, std::u16string_view name) {
  const std::u16string_view value = GetNodeAttribute(node, name);
  if (value.empty()) return;
  out.Append(name);
  out.Push(u':');
  out.Append(value);
  out.Append(u"; ");
}

void FoldPresentationAttributes(GrowingText& out, IXMLDOMNode* node) {
  FoldAttribute(out, node, u"stroke-width");
  const bool widthGiven = !out.empty();
  const std::size_t before = out.size();
  FoldAttribute(out, node, u"stroke");
  if (out.size() != before && !widthGiven && CurrentFrame().lineWidth == 0.0) out.Append(u"stroke-width:1; ");
  FoldAttribute(out, node, u"fill");
  FoldAttribute(out, node, u"fill-opacity");
  FoldAttribute(out, node, u"fill-rule");
  FoldAttribute(out, node, u"stroke-linecap");
  FoldAttribute(out, node, u"stroke-linejoin");
}

void ReplayPaintState() {
  const GraphicsState& frame = CurrentFrame();
  PushWidth(frame.lineWidth, 0);
  PushValue(KEY_THST, frame.thicknessState);
  PushValue(KEY_OUTL, frame.outline.colour);
  PushValue(KEY_FILL, frame.fill.colour);
  PushValue(KEY_WRUL, run.DefaultWindingRule);
  PushValue(KEY_LNST, frame.lineCap);
  PushValue(KEY_CNST, frame.lineJoin);
}
