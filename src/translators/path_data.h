// The path element, and the two scanners of coordinates that all shapes use.
#pragma once

#include <cstddef>
#include <string_view>

#include "run/growing_text.h"

class IXMLDOMNode;
struct Point;

void TranslatePath(IXMLDOMNode* node);

// Where a scan begins: behind the command letter, which counts as consumed, or at the text itself.
enum class ScanFrom { Letter, Number };

// Both scanners replace `out` by the text of what they found and return the units to go on by. Number characters are
// digits and
// * + - . /, and E and e; a unit such as "px" ends a number. A tab or line end in the place of a separator is passed
// over, not counted, and the number goes on behind it.
//
// Two numbers with a blank between them. A "-" begins the second number; a "." does not.
std::size_t ScanCoordinatePair(ScanFrom from, std::u16string_view in, GrowingText& out);
// One number. A "-" or a second "." ends it.
std::size_t ScanNumber(ScanFrom from, std::u16string_view in, GrowingText& out);

// The same for the form that nearly all coordinates have, numbers that ScanPlainDouble takes. Both return where the
// scanner would go on, and null for every other form.
const char16_t* ReadPlainPair(const char16_t* c, const char16_t* end, Point* point);
const char16_t* ReadPlainNumber(const char16_t* c, const char16_t* end, double* value);
