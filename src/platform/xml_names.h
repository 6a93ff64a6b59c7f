// The names of one document's elements, attributes and processing instructions, each once.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/xml_arena.h"

struct XmlTree;

// A name as it stands in the document, and where its local part begins. It knows the tree for all nodes that bear it.
struct XmlName {
  XmlTree* tree;
  std::u16string_view full;
  std::uint32_t localOffset = 0;
  std::uint32_t lastTag = 0;       // the last start tag, counted from 1, that set an attribute of this name aside
  XmlName* declaration = nullptr;  // for a name with the prefix p, that of the attribute xmlns:p
  std::u16string_view uri = {};    // for a declaration, what it says where the load is; empty where there is none

  std::u16string_view Local() const { return full.substr(localOffset); }
};

class XmlNames {
 public:
  explicit XmlNames(XmlTree* tree) : tree_(tree) {}

  // The name of this text; null if it has not been added.
  XmlName* Find(std::u16string_view full) const;

  // Adds a name that is not there. The text stays valid as long as the arena, where the name itself will lie.
  XmlName* Add(XmlArena& arena, std::u16string_view full, std::uint32_t localOffset);

  void Clear();

 private:
  struct Slot {
    std::uint32_t hash = 0;
    XmlName* name = nullptr;  // null: the slot is free
  };

  std::uint32_t Hash(std::u16string_view text) const;
  std::size_t FreePlace(std::uint32_t hash) const;
  XmlName* Declaration(XmlArena& arena, std::u16string_view prefix);

  XmlTree* tree_;
  std::vector<Slot> slots_;  // a power of two, at most half full
  std::size_t count_ = 0;
};
