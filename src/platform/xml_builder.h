// Puts a tree together from what the readers of a document meet, in the order of the text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "filter_limits.h"
#include "platform/xml_tree.h"

// Names, texts and values must live as long as the tree. Running out of memory throws std::bad_alloc.
class XmlTreeBuilder {
 public:
  // `tree` must be empty.
  explicit XmlTreeBuilder(XmlTree* tree) : tree_(*tree) {
    attributes_.reserve(kUsualAttributes);
    children_.reserve(kUsualChildren);
  }

  // The elements that are open.
  int Depth() const { return depth_; }

  // An attribute of the element that starts next. Nobody asks for the order of attributes.
  void AddAttribute(const XmlName* name, std::u16string_view value) { attributes_.push_back({name, value}); }

  // At a depth of less than kMaxElementDepth.
  void StartElement(const XmlName* localName);
  void EndElement();

  // The rest is for the inside of an element.

  // White space alone stands here. Returns whether the tree drops it; what comes next then knows that it was there.
  bool DropsBlanks();

  // A text, CDATA section or comment.
  void AddLeaf(NodeType type, std::u16string_view text) {
    AddChild(new (tree_.arena.Allocate(sizeof(LeafNode))) LeafNode(&tree_.noName, type, text));
  }

  void AddInstruction(const XmlName* target, std::u16string_view data) {
    AddChild(new (tree_.arena.Allocate(sizeof(NamedNode))) NamedNode(target, kProcessingInstructionNode, data));
  }

 private:
  static constexpr std::size_t kUsualAttributes = 32;
  static constexpr std::size_t kUsualChildren = 128;  // of all open elements

  struct Attribute {
    const XmlName* name;
    std::u16string_view value;
  };

  struct OpenElement {
    ElementNode* element;
    std::size_t firstChild;  // of its children in `children_`
  };

  void AddChild(TreeNode* child) {
    child->SetBlankInFront(blank_);
    blank_ = false;
    children_.push_back(child);
  }

  XmlTree& tree_;
  std::vector<Attribute> attributes_;
  OpenElement open_[kMaxElementDepth];
  int depth_ = 0;
  std::vector<TreeNode*> children_;  // of all open elements, one element's behind the other's
  bool blank_ = false;               // white space was dropped since the last child or tag
};
