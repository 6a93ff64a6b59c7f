// Gradients and patterns: definitions become operator text at the moment a fill names them, anew for every fill.
#pragma once

#include <cstdint>
#include <string_view>

#include "document/definitions.h"

class IXMLDOMNode;

// Translates the gradient, else the pattern, that the reference finds. Nothing happens when it finds neither.
void TranslatePaintServer(std::u16string_view reference);

void TranslateGradient(IXMLDOMNode* node, GradientKind kind);
void TranslatePattern(IXMLDOMNode* node);

// Reads the children of the gradient that a link names, "#id", into the frame's stop block. Returns how many are stops.
// A gradient's own stops are read only so.
std::int32_t ReadGradientStops(std::u16string_view href);

// The colour and opacity of the frame's stop `index`; nothing but its opacity is written without "stop-color".
void ParseStopStyle(std::u16string_view style, std::int32_t index);

// What a gradient holds beside its stops: definitions are recorded, drawing is translated.
void TranslateGradientChildren(IXMLDOMNode* node);
