// What the paint servers and the style parsers leave for one another.
#pragma once

#include <cstddef>
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

// The definitions that are being translated, innermost last, and what has gone into definitions in this import.
struct DefinitionGuard {
  std::vector<const IXMLDOMNode*> entered;
  std::uint32_t entries = 0;
  std::uint64_t work = 0;            // records and stops, without the records since the outermost was entered
  std::size_t recordsBefore = 0;     // in the queue as the outermost was entered
  std::uint32_t nestedElements = 0;  // groups and texts that are being translated within one another
};
