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

XmlName* XmlNames::Find(const Key& key) const {
  if (slots_.empty()) return nullptr;
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t i = key.hash & mask; slots_[i].name != nullptr; i = (i + 1) & mask) {
    if (slots_[i].hash == key.hash && IsSameText(slots_[i].name->full, key.full)) return slots_[i].name;
  }
  return nullptr;
}

XmlName* XmlNames::Add(XmlArena& arena, const Key& key, std::uint32_t localOffset) {
  if (2 * (count_ + 1) > slots_.size()) {
    std::vector<Slot> former(slots_.empty() ? kFirstSlots : 2 * slots_.size());
    former.swap(slots_);
    for (const Slot& slot : former) {
      if (slot.name != nullptr) slots_[FreePlace(slot.hash)] = slot;
    }
  }
  auto* const name = new (arena.Allocate(sizeof(XmlName))) XmlName{tree_, key.full, localOffset};
  slots_[FreePlace(key.hash)] = {key.hash, name};
  ++count_;
  if (localOffset == 0) {
    name->declares = key.full == u"xmlns"sv;
  } else if (!key.full.starts_with(kDeclarationStart)) {
    name->declaration = Declaration(arena, key.full.substr(0, localOffset - 1));
  } else {
    name->declares = true;
    if (name->Local() == u"xml"sv) name->uri = kXmlNamespace;  // in every document
  }
  return name;
}

XmlName* XmlNames::Declaration(XmlArena& arena, std::u16string_view prefix) {
  char16_t* const text = arena.TextRoom(kDeclarationStart.size() + prefix.size());
  std::copy(prefix.begin(), prefix.end(), std::copy(kDeclarationStart.begin(), kDeclarationStart.end(), text));
  arena.LengthenText(kDeclarationStart.size() + prefix.size());
  const Key key = KeyOf(arena.OpenText());
  if (XmlName* const known = Find(key)) {
    arena.DropText();
    return known;
  }
  arena.CloseText();
  return Add(arena, key, static_cast<std::uint32_t>(kDeclarationStart.size()));
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
  std::uint64_t word = 0;
  if (text.size() < kWord) {
    for (const char16_t unit : text) word = word << 16 | unit;
  } else {
    for (std::size_t i = 0; i + kWord < text.size(); i += kWord) {
      std::memcpy(&word, text.data() + i, sizeof word);
      mix(word);
    }
    std::memcpy(&word, text.data() + text.size() - kWord, sizeof word);
  }
  mix(word);
  return static_cast<std::uint32_t>(hash);
}

std::size_t XmlNames::FreePlace(std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t i = hash & mask;
  while (slots_[i].name != nullptr) i = (i + 1) & mask;
  return i;
}
