// The basic shapes. Each opens a frame, applies transform, clip and style, writes operator text, ends its path and
// closes the frame; they differ in which of these they do, and the differences are meant.
#pragma once

class IXMLDOMNode;

void TranslatePolygon(IXMLDOMNode* node);
void TranslatePolyline(IXMLDOMNode* node);
void TranslateRect(IXMLDOMNode* node);
void TranslateEllipse(IXMLDOMNode* node);
void TranslateCircle(IXMLDOMNode* node);
void TranslateLine(IXMLDOMNode* node);

// Applies the style text, or without one the folded presentation attributes. False when the shape has neither.
bool ApplyStyleOrFold(IXMLDOMNode* node);
