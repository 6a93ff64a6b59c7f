// The tree behind a document: nodes that lie in the document's arena, are never destroyed one by one and know their
// tree only to count references. Most attribute values lie in the document's text. An element is its own attribute map
// and child list, so that reading takes no memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/xml_arena.h"
#include "platform/xml_document.h"
#include "platform/xml_names.h"

class ElementNode;
struct XmlTree;

constexpr bool IsXmlSpace(char16_t unit) { return unit == u' ' || unit == u'\n' || unit == u'\t' || unit == u'\r'; }

// The children of every node that has none.
class EmptyNodeList final : public IXMLDOMNodeList {
 public:
  explicit EmptyNodeList(XmlTree* tree) : tree_(tree) {}
  void AddRef() override;
  void Release() override;
  HRESULT get_length(std::int32_t* length) override;
  HRESULT get_item(std::int32_t index, IXMLDOMNode** item) override;

 private:
  XmlTree* tree_;
};

struct XmlTree {
  // Takes all nodes away, whatever references to them are out.
  void Clear() {
    root = nullptr;
    names.Clear();
    arena.Clear();
  }

  XmlArena arena;
  XmlNames names{this};
  ElementNode* root = nullptr;
  std::int64_t references = 0;  // to anything of the document but itself, out at the moment
  std::u16string elementText;   // the last one asked for
  EmptyNodeList noChildren{this};
  XmlName noName{this, {}};  // of texts, CDATA sections and comments
};

// What all nodes have. There are many: what is the same for all nodes of one name is reached through the name.
class TreeNode : public IXMLDOMNode {
 public:
  TreeNode(const XmlName* name, NodeType type, std::u16string_view text)
      : name_(name),
        text_(text.data()),
        textLength_(static_cast<std::uint32_t>(text.size())),
        type_(static_cast<std::uint8_t>(type)) {}

  void AddRef() override;
  void Release() override;
  HRESULT get_nodeType(NodeType* type) override;
  HRESULT get_baseName(std::u16string_view* name) override;
  HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) override;
  HRESULT get_text(std::u16string_view* text) override;
  HRESULT get_childNodes(IXMLDOMNodeList** children) override;

  // The data of a leaf, the value of an attribute; empty for an element.
  std::u16string_view Text() const { return {text_, textLength_}; }
  NodeType Type() const { return static_cast<NodeType>(type_); }

  // White space that is not in the tree stands in front of this node, behind the one before or the start tag.
  bool BlankInFront() const { return blankInFront_; }
  void SetBlankInFront(bool blank) { blankInFront_ = blank; }

 protected:
  ~TreeNode() = default;

  const XmlName* name_;

 private:
  const char16_t* text_;
  std::uint32_t textLength_;
  std::uint8_t type_;
  bool blankInFront_ = false;
};

// A text, CDATA section or comment.
class LeafNode final : public TreeNode {
 public:
  using TreeNode::TreeNode;
};

// An attribute, or a processing instruction under the name of its target.
class NamedNode final : public TreeNode {
 public:
  using TreeNode::TreeNode;

  HRESULT get_baseName(std::u16string_view* name) override;

  std::u16string_view FullName() const { return name_->full; }
  const XmlName* Name() const { return name_; }
};

class ElementNode final : public TreeNode, public IXMLDOMNamedNodeMap, public IXMLDOMNodeList {
 public:
  // `attributes` lies in the arena. The children come later.
  ElementNode(const XmlName* localName, NamedNode* attributes, std::int32_t attributeCount)
      : TreeNode(localName, kElementNode, {}), attributes_(attributes), attributeCount_(attributeCount) {}

  void AddRef() override { TreeNode::AddRef(); }
  void Release() override { TreeNode::Release(); }
  HRESULT get_baseName(std::u16string_view* name) override;
  HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) override;
  HRESULT get_text(std::u16string_view* text) override;
  HRESULT get_childNodes(IXMLDOMNodeList** children) override;
  HRESULT getNamedItem(std::u16string_view name, IXMLDOMNode** item) override;
  HRESULT get_length(std::int32_t* length) override;
  HRESULT get_item(std::int32_t index, IXMLDOMNode** item) override;

  // In the order in which the document's reader came upon them, which nothing may depend on.
  std::span<const NamedNode> Attributes() const { return {attributes_, static_cast<std::size_t>(attributeCount_)}; }

  // `children` lies in the arena.
  void SetChildren(TreeNode** children, std::int32_t childCount) {
    children_ = children;
    childCount_ = childCount;
  }

  bool blankAtEnd = false;      // white space that is not in the tree stands in front of the end tag
  bool preservesSpace = false;  // xml:space="preserve" is in force

 private:
  void JoinText(std::u16string& text) const;

  NamedNode* attributes_;
  TreeNode** children_ = nullptr;
  std::int32_t attributeCount_;
  std::int32_t childCount_ = 0;
};
