// Colour operators, and the place where a frame's colours become host colour objects. The translators write none of
// these: an element's colours go out as values from the style parsers.
#pragma once

#include <string_view>

struct OperatorCall;

// Which side of a frame a colour goes to.
enum class Side { Fill, Outline };

// Components on the scale 0 to 1, clamped to it; `name` is the spot name or empty; `tint` in percent.
void SetFrameRgb(double r, double g, double b, Side side, std::u16string_view name, double tint);
void SetFrameCmyk(double c, double m, double y, double k, Side side, std::u16string_view name, double tint);

// Sends KEY_NFIL, unless a gradient is the fill, and KEY_NOTL, by run.path.fillSelector and strokeSelected.
void EmitPaintColours();

void OperatorGrayFill(const OperatorCall&);
void OperatorGrayOutline(const OperatorCall&);
void OperatorGrayFillOrBlack(const OperatorCall&);
void OperatorCmykFill(const OperatorCall&);
void OperatorCmykOutline(const OperatorCall&);
void OperatorAverageFill(const OperatorCall&);
void OperatorRgbFill(const OperatorCall&);
void OperatorRgbOrCmykFill(const OperatorCall&);
void OperatorRgbOrCmykOutline(const OperatorCall&);
void OperatorNamedOutline(const OperatorCall&);
void OperatorNamedFill(const OperatorCall&);
void OperatorMeanNamedFill(const OperatorCall&);
void OperatorNamedRgbOutline(const OperatorCall&);
void OperatorNamedRgbFill(const OperatorCall&);
void OperatorColourTableRow(const OperatorCall&);
void OperatorSelectFill(const OperatorCall&);
void OperatorFillOverprint(const OperatorCall&);
void OperatorOutlineOverprint(const OperatorCall&);
