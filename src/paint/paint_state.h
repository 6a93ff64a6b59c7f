// What the paint servers and the style parsers leave for one another.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "paint/named_gradient.h"

class IXMLDOMNode;

struct PaintState {
  std::uint8_t GradientFillPending = 0;  // the fill of the next shape is already defined
  std::uint32_t FillGiven = 0;           // a solid fill was given; the trailer of a path reads and clears it
  GradientPlacement placement;           // of the named gradient operators
};

// The definitions that are being translated, innermost last, and how many have been entered in this import.
struct DefinitionGuard {
  std::vector<const IXMLDOMNode*> entered;
  std::uint32_t entries = 0;
};
