// The paragraphs of the reference host's composer: the records whose addresses the filter is given, what was pasted,
// and the table of all paragraphs. Internal to the host.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "headless_host/inspection.h"
#include "host/composer.h"

namespace headless {

// What the filter writes into while the paragraph is open. The records have no alignment of their own; their fields are
// aligned if the records are.
struct OpenRecords {
  alignas(8) ParagraphStatus status = {};
  alignas(8) paragraphStruct info = {};
  alignas(8) list_s lines = {};
  alignas(8) CharacterState character = {};
  alignas(8) TextLine textLine = {};
  unsigned char wrap = 0;  // has an address and nothing else
};

struct HostParagraph {
  alignas(8) ComposedParagraph composed = {};
  std::unique_ptr<OpenRecords> records;  // until the paragraph is closed
  // Tag, position and justification from the start, what the records held from the close on.
  ParagraphState state = {};
  std::vector<TextRunView> runs;

  // As it is now.
  ParagraphState State() const;
  // Takes over what the records hold and frees them.
  void Close();
};

// Owns every paragraph that was opened and neither abandoned nor released. An address may be that of no paragraph, or
// of one that is gone.
//
// Open addressing, so that a paragraph costs no node beside its own memory.
class ParagraphTable {
 public:
  void Add(std::unique_ptr<HostParagraph> paragraph);
  // Null when there is no such paragraph.
  HostParagraph* Find(const ComposedParagraph* address) const;
  // Frees a paragraph that is there.
  void Free(const ComposedParagraph* address);
  std::size_t size() const { return count_; }

 private:
  std::size_t Home(const ComposedParagraph* address) const;
  // The slot of the paragraph, or the free one where it belongs.
  std::size_t Slot(const ComposedParagraph* address) const;

  std::vector<std::unique_ptr<HostParagraph>> slots_;  // a power of two, at most half full
  std::size_t count_ = 0;
};

}  // namespace headless
