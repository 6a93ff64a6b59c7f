#include "headless_host/paragraph.h"

#include <cstdint>
#include <utility>

namespace headless {
namespace {

constexpr std::size_t kSpacing = 128;
constexpr std::size_t kFewestSlots = 16;

}  // namespace

ParagraphState HostParagraph::State() const {
  ParagraphState now = state;
  if (records == nullptr) return now;
  now.originX = records->textLine.originX;
  now.originY = records->textLine.originY;
  now.height = records->character.height;
  now.charScale = records->character.charScale;
  now.fontCode = records->character.fontCode;
  now.replacedFontId = records->character.replacedFontId;
  now.compression = records->textLine.compression;
  now.lineFlags = records->textLine.lineFlags;
  now.lineMode = records->textLine.lineMode;
  now.listMeasure = records->lines.listMeasure;
  now.statusLimit = records->status.statusLimit;
  now.paragraphOption = records->info.paragraphOption;
  return now;
}

void HostParagraph::Close() {
  state = State();
  records.reset();
}

void ParagraphTable::Add(std::unique_ptr<HostParagraph> paragraph) {
  if (2 * (count_ + 1) > slots_.size()) {
    std::vector<std::unique_ptr<HostParagraph>> smaller(slots_.empty() ? kFewestSlots : 2 * slots_.size());
    smaller.swap(slots_);
    for (auto& known : smaller) {
      if (known) slots_[Slot(&known->composed)] = std::move(known);
    }
  }
  slots_[Slot(&paragraph->composed)] = std::move(paragraph);
  ++count_;
}

HostParagraph* ParagraphTable::Find(const ComposedParagraph* address) const {
  return slots_.empty() ? nullptr : slots_[Slot(address)].get();
}

void ParagraphTable::Free(const ComposedParagraph* address) {
  const std::size_t mask = slots_.size() - 1;
  std::size_t hole = Slot(address);
  slots_[hole].reset();
  --count_;
  // What stands behind moves up, unless its own place lies behind the hole, so that no search ends too early.
  for (std::size_t i = (hole + 1) & mask; slots_[i]; i = (i + 1) & mask) {
    const std::size_t home = Home(&slots_[i]->composed);
    if (((i - home) & mask) < ((i - hole) & mask)) continue;
    slots_[hole] = std::move(slots_[i]);
    hole = i;
  }
}

// Neighbours in memory are neighbours in the table, since paragraphs are closed and released in the order in which they
// were opened. None is as small as the divisor.
std::size_t ParagraphTable::Home(const ComposedParagraph* address) const {
  static_assert(sizeof(HostParagraph) > kSpacing);
  return reinterpret_cast<std::uintptr_t>(address) / kSpacing & (slots_.size() - 1);
}

std::size_t ParagraphTable::Slot(const ComposedParagraph* address) const {
  std::size_t i = Home(address);
  while (slots_[i] && &slots_[i]->composed != address) i = (i + 1) & (slots_.size() - 1);
  return i;
}

}  // namespace headless
