// The pass over a document's text in front of the XML library. It turns the wide text into the UTF-8 that the library
// reads, makes every line end a line feed, sets plain attributes aside, and refuses what the library would take or
// would spend too long on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/xml_tree.h"

// A start tag with attributes. A plain attribute is one whose name and value are ASCII without references; those that
// begin with "xml" as their prefix or name are none. The library sees the tag without them; that takes a sixth off the
// instructions of an import of shapes.
struct PreparedTag {
  NamedNode* attributes;  // room for all, in the tree's arena; the plain ones are there already
  std::uint32_t plain;
  std::uint32_t prefixed;  // of the plain ones; the prefix may be undeclared, and two names one by their namespaces
  std::uint32_t others;    // those that the library sees, namespace declarations included
  std::uint32_t offset;    // of the tag's end, '>' or "/>", in the text that the library sees
};

struct PreparedXml {
  PreparedXml() = default;
  ~PreparedXml();
  PreparedXml(const PreparedXml&) = delete;
  PreparedXml& operator=(const PreparedXml&) = delete;

  char* bytes = nullptr;  // from malloc; some NULs stand behind the last
  std::size_t size = 0;
  std::vector<PreparedTag> tags;      // by rising offset
  const char16_t* refusal = nullptr;  // why the text is refused, as a sentence
};

// Too long is what the library cannot address, and what the interface does not take.
enum class PrepareStatus { kPrepared, kRefused, kTooLong, kNoMemory };

// Fills `prepared`, which must be fresh. The names and nodes of plain attributes go to `tree`, which must be empty;
// their texts stay where they are.
PrepareStatus PrepareXml(std::u16string_view text, XmlTree* tree, PreparedXml* prepared);
