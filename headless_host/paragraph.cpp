#include "headless_host/paragraph.h"

#include <cstdint>
#include <new>
#include <utility>

#include "headless_host/slab_pool.h"

namespace headless {
namespace {

constexpr std::size_t kSpacing = 128;  // less than between two paragraphs
constexpr std::size_t kRegion = 32;    // slots
constexpr std::size_t kFewestSlots = 16;

}  // namespace

HostParagraph::~HostParagraph() {
  for (PastedRun* run = firstRun_; run != nullptr;) slabPool.Give(std::exchange(run, run->next));
}

void* HostParagraph::operator new(std::size_t size) {
  void* block = slabPool.Take(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void HostParagraph::operator delete(void* block) { slabPool.Give(block); }

void HostParagraph::Paste(std::u16string_view text) {
  const CharacterState& character = records->character;
  void* block = slabPool.Take(sizeof(PastedRun) + text.size() * sizeof(char16_t));
  if (block == nullptr) throw std::bad_alloc();
  auto* run = new (block) PastedRun{nullptr, character.font, character.height, text.size()};
  text.copy(run->Units(), text.size());
  (firstRun_ == nullptr ? firstRun_ : lastRun_->next) = run;
  lastRun_ = run;
}

std::unique_ptr<OpenRecords> HostParagraph::Close() {
  state = State();
  return std::move(records);
}

ParagraphView HostParagraph::View() const {
  ParagraphView view{State(), composed.placement, {}};
  for (PastedRun* run = firstRun_; run != nullptr; run = run->next) {
    view.runs.push_back({std::u16string(run->Units(), run->length), std::nullopt, run->height});
    if (run->font != nullptr) view.runs.back().font = FontName(*run->font);
  }
  return view;
}

std::size_t HostParagraph::Bytes() {
  std::size_t bytes = slabPool.SizeOf(this);
  for (PastedRun* run = firstRun_; run != nullptr; run = run->next) bytes += slabPool.SizeOf(run);
  return bytes;
}

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

// Neighbours in a page of memory are neighbours in the table, since paragraphs are closed and released in the order in
// which they were opened; the pages are scattered.
std::size_t ParagraphTable::Home(const ComposedParagraph* address) const {
  static_assert(sizeof(HostParagraph) > kSpacing);
  const std::size_t place = reinterpret_cast<std::uintptr_t>(address) / kSpacing;
  const std::size_t region = (place / kRegion * std::uint64_t{0x9E3779B97F4A7C15}) >> 32;
  return (region * kRegion + place % kRegion) & (slots_.size() - 1);
}

std::size_t ParagraphTable::Slot(const ComposedParagraph* address) const {
  std::size_t i = Home(address);
  while (slots_[i] && &slots_[i]->composed != address) i = (i + 1) & (slots_.size() - 1);
  return i;
}

}  // namespace headless
