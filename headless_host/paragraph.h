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

// What was pasted at once, in a block of the slab pool with its characters behind it.
struct PastedRun {
  PastedRun* next;
  const FontRecord* font;  // null for none
  double height;
  std::size_t length;

  char16_t* Units() { return reinterpret_cast<char16_t*>(this + 1); }
};

// Lies in the slab pool, since a drawing may have many.
struct HostParagraph {
  HostParagraph() = default;
  ~HostParagraph();
  HostParagraph(const HostParagraph&) = delete;
  HostParagraph& operator=(const HostParagraph&) = delete;
  static void* operator new(std::size_t size);
  static void operator delete(void* block);

  // Pastes into the open paragraph, in the font and height of its records.
  void Paste(std::u16string_view text);
  // Takes over what the records hold and gives them up; null when they have been given up before.
  std::unique_ptr<OpenRecords> Close();
  ParagraphView View() const;
  // Of its own block and those of what was pasted.
  std::size_t Bytes();

  alignas(8) ComposedParagraph composed = {};
  std::unique_ptr<OpenRecords> records = std::make_unique<OpenRecords>();  // until the paragraph is closed
  // Tag, position and justification from the start, what the records held from the close on.
  ParagraphState state = {};

 private:
  ParagraphState State() const;

  PastedRun* firstRun_ = nullptr;
  PastedRun* lastRun_ = nullptr;
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
