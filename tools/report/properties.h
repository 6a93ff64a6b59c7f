// The properties that the report looks at: as attributes, in style texts, and as they come down from the ancestors.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "tools/report/svg_document.h"

// What a property must have to act upon for its loss to be one.
enum class Need { kAny, kFill, kRule, kStroke, kCorners, kMarkers, kText };

struct Property {
  std::string_view name;
  Need need;
  bool inherited;
  std::string_view harmless;  // values whose loss changes nothing, with a blank between them
};

// clang-format off
enum PropertyId : std::size_t {
  kFill, kFillOpacity, kFillRule, kStroke, kStrokeWidth, kStrokeLinecap, kStrokeLinejoin, kStrokeMiterlimit,
  kOpacity, kFontFamily, kFontSize, kTextAnchor, kClipPath, kClipRule,
  kFirstUnread, kStrokeOpacity = kFirstUnread, kStrokeDasharray, kDisplay, kVisibility, kMask,
  kFilter, kMarker, kMarkerStart, kMarkerMid, kMarkerEnd, kMixBlendMode, kPaintOrder, kVectorEffect, kTransform,
  kFont, kFontWeight, kFontStyle, kFontVariant, kFontStretch, kTextDecoration, kLetterSpacing, kWordSpacing,
  kTextLength, kWritingMode, kBaselineShift, kDominantBaseline, kRotate, kPropertyCount
};
// clang-format on

// In the order of the ids.
inline constexpr Property kProperties[] = {
    {"fill", Need::kAny, true, ""},
    {"fill-opacity", Need::kFill, true, "1 100%"},
    {"fill-rule", Need::kRule, true, "nonzero"},
    {"stroke", Need::kAny, true, ""},
    {"stroke-width", Need::kStroke, true, ""},
    {"stroke-linecap", Need::kStroke, true, "butt"},
    {"stroke-linejoin", Need::kCorners, true, "bevel"},
    {"stroke-miterlimit", Need::kCorners, true, "2"},
    {"opacity", Need::kAny, false, "1 100%"},
    {"font-family", Need::kText, true, ""},
    {"font-size", Need::kText, true, ""},
    {"text-anchor", Need::kText, true, "start"},
    {"clip-path", Need::kAny, false, "none"},
    {"clip-rule", Need::kAny, true, "nonzero"},
    {"stroke-opacity", Need::kStroke, true, "1 100%"},
    {"stroke-dasharray", Need::kStroke, true, "none 0"},
    {"display", Need::kAny, false, ""},
    {"visibility", Need::kAny, true, "visible"},
    {"mask", Need::kAny, false, "none"},
    {"filter", Need::kAny, false, "none"},
    {"marker", Need::kMarkers, true, "none"},
    {"marker-start", Need::kMarkers, true, "none"},
    {"marker-mid", Need::kMarkers, true, "none"},
    {"marker-end", Need::kMarkers, true, "none"},
    {"mix-blend-mode", Need::kAny, false, "normal"},
    {"paint-order", Need::kStroke, true, "normal"},
    {"vector-effect", Need::kStroke, false, "none"},
    {"transform", Need::kAny, false, "none"},
    {"font", Need::kText, true, ""},
    {"font-weight", Need::kText, true, "normal 400"},
    {"font-style", Need::kText, true, "normal"},
    {"font-variant", Need::kText, true, "normal"},
    {"font-stretch", Need::kText, true, "normal"},
    {"text-decoration", Need::kText, true, "none"},
    {"letter-spacing", Need::kText, true, "normal 0 0px 0em"},
    {"word-spacing", Need::kText, true, "normal 0 0px 0em"},
    {"textLength", Need::kText, false, ""},
    {"writing-mode", Need::kText, true, "lr lr-tb horizontal-tb"},
    {"baseline-shift", Need::kText, false, "baseline 0 0%"},
    {"dominant-baseline", Need::kText, true, "auto alphabetic"},
    {"rotate", Need::kText, false, "0"},
};
static_assert(sizeof kProperties / sizeof kProperties[0] == kPropertyCount);

// kPropertyCount when there is none of this name.
PropertyId FindPropertyId(std::string_view name);

// A property as an element states it.
struct StatedProperty {
  std::string_view value;  // empty when it does not
  int line = 0;
  bool inStyle = false;
};
using StatedProperties = std::array<StatedProperty, kPropertyCount>;

// The style wins over attributes, and the last declaration over those before.
StatedProperties ReadProperties(const SvgNode& node);
