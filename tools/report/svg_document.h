// A document as the report looks at it: the tree that the filter sees, with the line of every element and attribute.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Values and names are the bytes of the file, as far as the narrow code page through which the filter reads them goes.
struct SvgAttribute {
  std::string name;  // with its prefix
  std::string value;
  int line;
};

enum class NodeKind { kElement, kText, kOther };  // the last: comments and processing instructions

struct SvgNode {
  NodeKind kind;
  std::string name;       // of an element, without prefix; the target of a processing instruction
  bool foreign = false;   // in a namespace other than SVG's
  bool preserve = false;  // xml:space="preserve" is in force
  int line = 0;
  int parent = -1;
  std::vector<int> children;
  std::vector<SvgAttribute> attributes;
  std::string text;  // of a text node

  // The attribute of this full name; null when there is none or it is empty, which is the same to the filter.
  const SvgAttribute* Find(std::string_view attribute) const;
  std::string_view Value(std::string_view attribute) const;
};

struct SvgDocument {
  bool refused = false;                          // the filter does not import it; nothing else holds then
  std::string bytes;                             // of the file, up to its first NUL
  std::vector<SvgNode> nodes;                    // in document order, the root element first
  std::vector<int> instructions;                 // the lines of the style sheet instructions in front of the root
  std::size_t rootTagBegin = 0, rootTagEnd = 0;  // where the root's start tag stands in `bytes`

  const SvgNode& Root() const { return nodes.front(); }
  int LineAt(std::size_t offset) const;
};

// Reads what `bytes` holds by the filter's rules: no entity but the five is known, and nothing is fetched.
SvgDocument ParseSvgDocument(std::string bytes);
