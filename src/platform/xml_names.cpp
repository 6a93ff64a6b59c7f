#include "platform/xml_names.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/unit_scan.h"

namespace {

// A view of a plain literal would find out its length at run time.
using namespace std::string_view_literals;

constexpr std::u16string_view kDeclarationStart = u"xmlns:"sv;

// More than most documents have names.
constexpr std::size_t kFirstSlots = 256;

}  // namespace

XmlName* XmlNames::Find(std::u16string_view full, std::uint32_t hash) const {
  if (slots_.empty()) return nullptr;
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t i = hash & mask; slots_[i].name != nullptr; i = (i + 1) & mask) {
    if (slots_[i].hash == hash && IsSameText(slots_[i].name->full, full)) return slots_[i].name;
  }
  return nullptr;
}

XmlName* XmlNames::Intern(XmlArena& arena, std::u16string_view full, std::uint32_t localOffset) {
  const std::uint32_t hash = Hash(full);
  if (XmlName* const known = Find(full, hash)) return known;
  if (2 * (count_ + 1) > slots_.size()) {
    std::vector<Slot> former(slots_.empty() ? kFirstSlots : 2 * slots_.size());
    former.swap(slots_);
    for (const Slot& slot : former) {
      if (slot.name != nullptr) slots_[FreePlace(slot.hash)] = slot;
    }
  }
  auto* const name = new (arena.Allocate(sizeof(XmlName))) XmlName{tree_, full, localOffset};
  slots_[FreePlace(hash)] = {hash, name};
  ++count_;
  if (localOffset == 0) return name;
  if (!full.starts_with(kDeclarationStart)) {
    name->declaration = Declaration(arena, full.substr(0, localOffset - 1));
  } else if (name->Local() == u"xml"sv) {
    name->uri = kXmlNamespace;  // in every document
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
  return Intern(arena, arena.CloseText(), static_cast<std::uint32_t>(kDeclarationStart.size()));
}

void XmlNames::Clear() {
  slots_.clear();
  count_ = 0;
}

// The address of the tree goes in, so that nobody can write a document whose names all fall on one slot.
std::uint32_t XmlNames::Hash(std::u16string_view text) const {
  auto hash = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(tree_)) >> 4;
  const auto mix = [&hash](std::uint64_t word) {
    hash = (hash ^ word) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 32;
  };
  constexpr std::size_t kWord = sizeof(std::uint64_t) / sizeof(char16_t);
  std::uint64_t word;
  for (; text.size() >= kWord; text.remove_prefix(kWord)) {
    std::memcpy(&word, text.data(), sizeof word);
    mix(word);
  }
  word = 0;
  for (const char16_t unit : text) word = word << 16 | unit;
  mix(word);
  return static_cast<std::uint32_t>(hash);
}

std::size_t XmlNames::FreePlace(std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t i = hash & mask;
  while (slots_[i].name != nullptr) i = (i + 1) & mask;
  return i;
}
