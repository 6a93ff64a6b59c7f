// Style texts, "property: value; property: value", become records at once. There is no parser behind it: each property
// is found by a case-sensitive search for its name over the whole text, first occurrence only, and its value runs on to
// the end of the text.
#pragma once

#include <string_view>

#include "run/growing_text.h"

class IXMLDOMNode;

// Replays the frame's paint state and then applies the text of a shape. Sets run.paint.FillGiven for a solid fill.
void ApplyShapeStyle(std::u16string_view text);

// The text of a g. Sends a KEY_WIDT on every run.
void ApplyGroupStyle(std::u16string_view text);

// The text of a text element. With `forceWidth` the width is read also behind a stroke that gives none.
void ApplyTextStyle(std::u16string_view text, bool forceWidth);

// Sets run.text.FontSize from a text with a number behind its first ":"; without a number nothing happens.
void ApplyFontSize(std::u16string_view text);

// A shape's presentation attributes as a style text; empty when it has none.
void FoldPresentationAttributes(GrowingText& out, IXMLDOMNode* node);

// Appends "name:value; " if the attribute is not empty.
void FoldAttribute(GrowingText& out, IXMLDOMNode* node, std::u16string_view name);

// Sends the frame's width, thickness, outline, fill, cap and join, and the default winding rule.
void ReplayPaintState();

// What a hexadecimal digit stands for; 0 for any other unit.
int HexDigitValue(char16_t c);

// The colour of a "#" form. With a ";" as the fifth unit it has three digits, otherwise six; digits beyond the text are
// 0.
std::int32_t ReadHexColour(std::u16string_view value);
