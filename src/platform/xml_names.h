// The names of one document's elements, attributes and processing instructions, each once.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/xml_arena.h"

struct XmlTree;

// What the prefix "xml" stands for in every document.
inline constexpr std::u16string_view kXmlNamespace = u"http://www.w3.org/XML/1998/namespace";

// A name as it stands in the document, and where its local part begins. It knows the tree for all nodes that bear it.
struct XmlName {
  XmlTree* tree;
  std::u16string_view full;
  std::uint32_t localOffset = 0;
  std::uint32_t lastTag = 0;       // the last start tag, counted from 1, with an attribute of this name
  bool declares = false;           // "xmlns" or "xmlns:p"
  XmlName* declaration = nullptr;  // for a name with the prefix p, that of the attribute xmlns:p
  std::u16string_view uri = {};    // for a declaration, what it says where the load is; empty where it is not made
  const XmlName* local = nullptr;  // for a name with a prefix, its local part as a name; null until it is asked for

  std::u16string_view Local() const { return full.substr(localOffset); }
};

class XmlNames {
 public:
  struct Key {
    std::u16string_view full;
    std::uint32_t hash;
  };

  explicit XmlNames(XmlTree* tree) : tree_(tree) {}

  Key KeyOf(std::u16string_view full) const { return {full, Hash(full)}; }

  // The name of this text; null if there is none.
  XmlName* Find(const Key& key) const;

  // A name that is not there yet. Its text stays valid as long as the arena, where the name will lie.
  XmlName* Add(XmlArena& arena, const Key& key, std::uint32_t localOffset);

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
