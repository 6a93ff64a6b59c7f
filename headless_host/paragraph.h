// A paragraph of the reference host's composer: the records whose addresses the filter is given, and what was pasted.
// Internal to the host.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "headless_host/inspection.h"
#include "host/composer.h"

namespace headless {

struct HostParagraph {
  // The records have no alignment of their own; their fields are aligned if the records are.
  alignas(8) ComposedParagraph composed = {};
  alignas(8) ParagraphStatus status = {};
  alignas(8) paragraphStruct info = {};
  alignas(8) list_s lines = {};
  alignas(8) CharacterState character = {};
  alignas(8) TextLine textLine = {};
  unsigned char wrap = 0;  // has an address and nothing else

  std::uint32_t tag = 0;
  ParagraphPosition position = {};
  std::optional<int> justification;
  std::vector<TextRunView> runs;
};

}  // namespace headless
