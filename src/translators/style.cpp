#include "translators/style.h"

#include <optional>
#include <span>

#include "document/definitions.h"
#include "document/node_access.h"
#include "operators/graphics_state.h"
#include "paint/paint_servers.h"
#include "paint/transparency.h"
#include "platform/unit_scan.h"
#include "run/command_queue.h"
#include "run/import_run.h"
#include "run/number_text.h"
#include "run/text_match.h"
#include "text/text_element.h"
#include "translators/colour_names.h"

// A view of a plain literal would find out its length at run time.
using namespace std::string_view_literals;

namespace {

constexpr std::int32_t kNone = -1;
constexpr double kHairWidth = 0.001;

enum Thickness { kNoLine = 1, kHairline = 2, kThick = 3 };

std::u16string_view Behind(std::u16string_view text, std::size_t i) {
  return text.substr(i < text.size() ? i : text.size());
}

enum Property {
  kStroke,
  kStrokeWidth,
  kLineCap,
  kLineJoin,
  kMiterLimit,
  kFill,
  kFillOpacity,
  kFillRule,
  kFontFamily,
  kFontSize,
  kTextAnchor,
  kOpacity,
  kSecondOpacity,  // the second place of the same name
  kPropertyCount,
};

// Where the properties of a style text stand. A property counts at the first place at which its name stands in front of
// a colon, be it the end of a longer name. One walk from colon to colon finds them all.
class StyleText {
 public:
  explicit StyleText(std::u16string_view text) : text_(text) {
    for (std::size_t colon = FindUnit(text, u':', 0); colon != text.npos; colon = FindUnit(text, u':', colon + 1)) {
      Note(colon);
    }
  }

  bool Has(Property property) const { return values_[property] != 0; }

  // Behind the blanks in front of it; runs on to the end of the text.
  std::optional<std::u16string_view> Find(Property property) const {
    if (!Has(property)) return std::nullopt;
    std::u16string_view value = text_.substr(values_[property]);
    while (!value.empty() && value[0] == u' ') value.remove_prefix(1);
    return value;
  }

  // From the colon on.
  std::u16string_view FromColon(Property property) const { return text_.substr(values_[property] - 1); }

  // "opacity:" that is not the end of "stroke-opacity:" or "fill-opacity:"; only the second place is looked at behind
  // the first.
  std::optional<std::u16string_view> FindOpacity() const {
    for (const Property place : {kOpacity, kSecondOpacity}) {
      if (!Has(place)) return std::nullopt;
      const std::size_t name = values_[place] - u"opacity:"sv.size();
      if (name == 0 || text_[name - 1] != u'-') return Find(place);
    }
    return std::nullopt;
  }

 private:
  void Note(std::size_t colon) {
    const std::u16string_view name = text_.substr(0, colon);
    const auto take = [&](std::u16string_view property, Property place) {
      if (!Has(place) && EndsWithText(name, property)) values_[place] = colon + 1;
    };
    switch (name.empty() ? u' ' : name.back()) {
      case u'e':
        take(u"stroke"sv, kStroke);
        take(u"fill-rule"sv, kFillRule);
        take(u"font-size"sv, kFontSize);
        break;
      case u'h':
        take(u"stroke-width"sv, kStrokeWidth);
        break;
      case u'l':
        take(u"fill"sv, kFill);
        break;
      case u'n':
        take(u"stroke-linejoin"sv, kLineJoin);
        break;
      case u'p':
        take(u"stroke-linecap"sv, kLineCap);
        break;
      case u'r':
        take(u"text-anchor"sv, kTextAnchor);
        break;
      case u't':
        take(u"stroke-miterlimit"sv, kMiterLimit);
        break;
      case u'y':
        take(u"fill-opacity"sv, kFillOpacity);
        take(u"font-family"sv, kFontFamily);
        take(u"opacity"sv, Has(kOpacity) ? kSecondOpacity : kOpacity);
        break;
      default:
        break;
    }
  }

  std::u16string_view text_;
  std::size_t values_[kPropertyCount] = {};  // where the value begins; 0: not there
};

bool IsName(std::u16string_view value) { return !value.empty() && value[0] >= u'b' && value[0] <= u'y'; }
bool IsHex(std::u16string_view value) { return value.starts_with(u'#'); }
bool IsRgb(std::u16string_view value) { return StartsWithAnyCase(value, u"rgb"sv); }
bool IsNone(std::u16string_view value) { return StartsWithAnyCase(value, u"none"sv); }

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

void ApplyOpacity(const StyleText& style) {
  if (const auto value = style.FindOpacity()) ApplyUniformOpacity(*value);
}

void ApplyFillOpacity(const StyleText& style) {
  if (const auto value = style.Find(kFillOpacity)) ApplyUniformOpacity(*value);
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

void ApplyLineCap(const StyleText& style) {
  if (const auto value = style.Find(kLineCap)) PushValue(KEY_LNST, ReadKeyword(*value, kCaps));
}

void ApplyLineJoin(const StyleText& style) {
  if (const auto value = style.Find(kLineJoin)) PushValue(KEY_CNST, ReadKeyword(*value, kJoins));
}

void ApplyMiterLimit(const StyleText& style) {
  const auto value = style.Find(kMiterLimit);
  if (!value) return;
  const auto limit = static_cast<std::int32_t>(static_cast<std::uint32_t>(LeadingInteger(*value)) * 100u);
  CurrentFrame().miterLimit = limit;
  PushValue(KEY_MLIM, limit);
}

void ApplyFillRule(const StyleText& style) {
  if (const auto value = style.Find(kFillRule)) PushValue(KEY_WRUL, value->starts_with(u'n') ? 1 : 0);
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
void ApplyShapeWidth(const StyleText& style) {
  double width = 0.0;
  if (const auto value = style.Find(kStrokeWidth)) {
    width = LeadingNumber(*value);
    if (width == 0.0) {
      PushValue(KEY_THST, kNoLine);  // twice: it is meant
      PushValue(KEY_THST, kNoLine);
      width = 0.0;  // also for "-0"
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
void ApplyShapeStroke(const StyleText& style) {
  const auto value = style.Find(kStroke);
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
  ApplyShapeWidth(style);
}

// The forms of a solid colour, in the order of their tests.
std::optional<std::int32_t> ReadSolidColour(std::u16string_view value) {
  if (IsHex(value)) return ReadHexColour(value);
  if (IsRgb(value)) return ReadRgb(value);
  if (IsName(value)) return LookupColourName(value);
  return std::nullopt;
}

void ApplyShapeFill(const StyleText& style) {
  const auto value = style.Find(kFill);
  if (!value) return;
  if (IsNone(*value)) {
    PushValue(KEY_FILL, kNone);
    CurrentFrame().fill.colour = kNone;
  } else if (StartsWithAnyCase(*value, u"url"sv)) {
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

void ApplyGroupStroke(const StyleText& style) {
  GraphicsState& frame = CurrentFrame();
  const auto stroke = style.Find(kStroke);
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
  if (const auto value = style.Find(kStrokeWidth)) {
    width = LeadingNumber(*value);
    SetThickness(kThick);
  } else if (frame.lineWidth == 0.0) {
    SetThickness(kHairline);
    width = 1.0;
  }
  SendWidth(width);
}

void ApplyGroupFill(const StyleText& style) {
  const auto value = style.Find(kFill);
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

void ApplyTextWidth(const StyleText& style) {
  double width = 0.0;
  if (const auto value = style.Find(kStrokeWidth)) {
    width = LeadingNumber(*value);
    PushValue(KEY_THST, kThick);
  } else if (CurrentFrame().lineWidth == 0.0) {
    PushValue(KEY_THST, kHairline);
    width = kHairWidth;
  }
  SendWidth(width);
}

// A name is tested before "rgb", so that a small "rgb(" is a name that nothing matches, black, and only "RGB(" is read.
void ApplyTextStroke(const StyleText& style, bool forceWidth) {
  bool readWidth = true;
  if (const auto value = style.Find(kStroke)) {
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
  if (readWidth) ApplyTextWidth(style);
}

void ApplyTextFill(const StyleText& style) {
  const auto value = style.Find(kFill);
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
  const StyleText style(text);
  ReplayPaintState();
  ApplyShapeStroke(style);
  run.paint.FillGiven = 0;
  ApplyShapeFill(style);
  ApplyLineCap(style);
  ApplyLineJoin(style);
  ApplyMiterLimit(style);
  ApplyOpacity(style);
  ApplyFillOpacity(style);
  ApplyFillRule(style);
}

void ApplyGroupStyle(std::u16string_view text) {
  const StyleText style(text);
  ApplyOpacity(style);
  ApplyFillOpacity(style);
  ApplyGroupStroke(style);
  ApplyGroupFill(style);
}

void ApplyTextStyle(std::u16string_view text, bool forceWidth) {
  const StyleText style(text);
  ApplyTextStroke(style, forceWidth);
  ApplyTextFill(style);
  ApplyLineCap(style);
  ApplyLineJoin(style);
  ApplyFillOpacity(style);
  if (const auto value = style.Find(kFontFamily)) run.text.OverwriteFontName(value->substr(0, value->find(u';')));
  ApplyFillRule(style);
  if (const auto value = style.Find(kTextAnchor)) ApplyTextAnchor(*value);
  if (style.Has(kFontSize)) ApplyFontSize(style.FromColon(kFontSize));
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
  out.Append(u"; "sv);
}

void FoldPresentationAttributes(GrowingText& out, IXMLDOMNode* node) {
  FoldAttribute(out, node, u"stroke-width"sv);
  const bool widthGiven = !out.empty();
  const std::size_t before = out.size();
  FoldAttribute(out, node, u"stroke"sv);
  if (out.size() != before && !widthGiven && CurrentFrame().lineWidth == 0.0) out.Append(u"stroke-width:1; "sv);
  FoldAttribute(out, node, u"fill"sv);
  FoldAttribute(out, node, u"fill-opacity"sv);
  FoldAttribute(out, node, u"fill-rule"sv);
  FoldAttribute(out, node, u"stroke-linecap"sv);
  FoldAttribute(out, node, u"stroke-linejoin"sv);
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
