// Reading the document: names, attributes, children and lengths. All texts are views that stay valid as long as the
// document.
//
// A failed call of the document interface is thrown as DocumentError.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/xml_document.h"
#include "run/growing_text.h"

// The node's local name: `path` for both "path" and "svg:path". Empty for a node without one, such as text.
std::u16string_view GetNodeName(IXMLDOMNode* node);

// The text of the attribute with exactly this name, prefix included; empty if there is none or no node.
std::u16string_view GetNodeAttribute(IXMLDOMNode* node, std::u16string_view name);
// A literal, the length of which a view would find out at every call.
template <std::size_t Size>
std::u16string_view GetNodeAttribute(IXMLDOMNode* node, const char16_t (&name)[Size]) {
  return GetNodeAttribute(node, std::u16string_view(name, Size - 1));
}

// The children of a node, each with one reference, given back at the end. `length` is what the document said and may be
// more than there are nodes.
class ChildNodeList {
 public:
  ChildNodeList() = default;
  ~ChildNodeList() { Release(); }
  ChildNodeList(const ChildNodeList&) = delete;
  ChildNodeList& operator=(const ChildNodeList&) = delete;

  std::int32_t length() const { return length_; }
  bool empty() const { return nodes_.empty(); }
  // Throws std::out_of_range, "invalid vector<T> subscript".
  IXMLDOMNode* At(std::int32_t i) const;
  // Takes the reference to a node over from the list, or gives it up for good.
  void Keep(std::int32_t i);
  void Release();

 private:
  friend void CollectChildNodes(IXMLDOMNode* node, ChildNodeList& list);
  std::vector<IXMLDOMNode*> nodes_;
  std::int32_t length_ = 0;
};

// A null child is left out without closing the gap, so that the subscript fails later.
void CollectChildNodes(IXMLDOMNode* node, ChildNodeList& list);

enum UnitCode {
  kNoUnit = 0,
  kMillimetre = 1,
  kInch = 2,
  kCentimetre = 3,
  kPointUnit = 4,
  kPixel = 5,
  kEm = 6,  // never found: its letter e belongs to the number
  kEx = 7,  // likewise
  kPica = 8,
};

// Separates a number and its unit. The number is gathered as text into `number`; a tab or line end inside it is passed
// over. Returns the units consumed, the unit's own letters not counted.
std::size_t ScanLength(std::u16string_view text, GrowingText& number, UnitCode* unit);
