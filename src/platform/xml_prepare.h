// The pass over a document's text in front of the XML library. It turns the wide text into the UTF-8 that the library
// reads, makes every line end a line feed, sets plain attributes and values aside, and refuses what the library would
// take or would spend too long on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/xml_tree.h"

// A start tag with attributes. A plain attribute is one that the library has nothing to do with: its name is ASCII
// without a colon, its value ASCII without references, and it is no namespace declaration. The library sees the tag
// without it; that takes a sixth off the instructions of an import of shapes.
struct PreparedTag {
  NamedNode* attributes;  // room for all, in the tree's arena; the plain ones are there already
  std::uint32_t plain;
  std::uint32_t others;  // those that the library sees, namespace declarations included
  std::uint32_t offset;  // of the tag's end, '>' or "/>", in the text that the library sees
};

// A plain value of an attribute whose name the library has to see. In place of the value the library sees an empty one,
// so that it cannot blank the line feeds and tabs.
struct PlainValue {
  std::uint32_t start;  // in the wide text
  std::uint32_t length : 31;
  std::uint32_t hasReturns : 1;  // carriage returns are still in it
  std::uint32_t offset;          // of the empty value in the text that the library sees
};

struct PreparedXml {
  PreparedXml() = default;
  ~PreparedXml();
  PreparedXml(const PreparedXml&) = delete;
  PreparedXml& operator=(const PreparedXml&) = delete;

  std::u16string_view text;  // what was prepared
  char* bytes = nullptr;     // from malloc; some NULs stand behind the last
  std::size_t size = 0;
  std::vector<PreparedTag> tags;      // by rising offset
  std::vector<PlainValue> values;     // by rising offset
  const char16_t* refusal = nullptr;  // why the text is refused, as a sentence
};

// Too long is what the library cannot address, and what the interface does not take.
enum class PrepareStatus { kPrepared, kRefused, kTooLong, kNoMemory };

// Fills `prepared`, which must be fresh and keeps a view of the text. The names and nodes of plain attributes go to
// `tree`, which must be empty.
PrepareStatus PrepareXml(std::u16string_view text, XmlTree* tree, PreparedXml* prepared);
