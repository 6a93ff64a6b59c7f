#include "platform/xml_names.h"

#include <algorithm>
#include <new>

namespace {

// A view of a plain literal would find out its length at run time.
using namespace std::string_view_literals;

constexpr std::u16string_view kDeclarationStart = u"xmlns:"sv;

// More than most documents have names.
constexpr std::size_t kFirstSlots = 128;

}  // namespace

XmlName* XmlNames::Find(std::u16string_view full) const {
  if (slots_.empty()) return nullptr;
  const std::uint32_t hash = Hash(full);
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t i = hash & mask; slots_[i].name != nullptr; i = (i + 1) & mask) {
    if (slots_[i].hash == hash && slots_[i].name->full == full) return slots_[i].name;
  }
  return nullptr;
}

XmlName* XmlNames::Add(XmlArena& arena, std::u16string_view full, std::uint32_t localOffset) {
  if (2 * (count_ + 1) > slots_.size()) {
    std::vector<Slot> former(slots_.empty() ? kFirstSlots : 2 * slots_.size());
    former.swap(slots_);
    for (const Slot& slot : former) {
      if (slot.name != nullptr) slots_[FreePlace(slot.hash)] = slot;
    }
  }
  auto* const name = new (arena.Allocate(sizeof(XmlName))) XmlName{tree_, full, localOffset};
  const std::uint32_t hash = Hash(full);
  slots_[FreePlace(hash)] = {hash, name};
  ++count_;
  if (localOffset != 0 && !full.starts_with(kDeclarationStart)) {
    name->declaration = Declaration(arena, full.substr(0, localOffset - 1));
  }
  return name;
}

XmlName* XmlNames::Declaration(XmlArena& arena, std::u16string_view prefix) {
  char16_t* const text = arena.TextRoom(kDeclarationStart.size() + prefix.size());
  std::copy(prefix.begin(), prefix.end(), std::copy(kDeclarationStart.begin(), kDeclarationStart.end(), text));
  arena.LengthenText(kDeclarationStart.size() + prefix.size());
  if (XmlName* const known = Find(arena.OpenText())) {
    arena.DropText();
    return known;
  }
  return Add(arena, arena.CloseText(), static_cast<std::uint32_t>(kDeclarationStart.size()));
}

void XmlNames::Clear() {
  slots_.clear();
  count_ = 0;
}

// The address of the tree goes in, so that nobody can write a document whose names all fall on one slot.
std::uint32_t XmlNames::Hash(std::u16string_view text) const {
  auto hash = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(tree_)) >> 4;
  for (const char16_t unit : text) hash = (hash ^ unit) * 0x9E3779B97F4A7C15u;
  return static_cast<std::uint32_t>(hash >> 32);
}

std::size_t XmlNames::FreePlace(std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t i = hash & mask;
  while (slots_[i].name != nullptr) i = (i + 1) & mask;
  return i;
}
