// Reads a document through its interfaces for the tests, giving back every reference, and shows trees as short texts.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/xml_document.h"

// A document that is released at the end. `Load` tells whether the text was taken.
class Dom {
 public:
  Dom() : document_(CreateDomDocument()) {}
  ~Dom() { document_->Release(); }
  Dom(const Dom&) = delete;
  Dom& operator=(const Dom&) = delete;

  IXMLDOMDocument* operator->() const { return document_; }
  IXMLDOMDocument* Get() const { return document_; }

  bool Load(std::u16string_view text) {
    bool success = true;
    text_ = text;
    status = document_->loadXML(text_, &success);
    return success;
  }

  // The document element, whose reference is given back at once: the document keeps it.
  IXMLDOMNode* Root() const {
    IXMLDOMNode* root = nullptr;
    document_->get_documentElement(&root);
    if (root != nullptr) root->Release();
    return root;
  }

  HRESULT status = kOk;  // of the last load

 private:
  std::u16string text_;  // of the last load, kept for the document
  IXMLDOMDocument* document_;
};

inline std::u16string BaseName(IXMLDOMNode* node) {
  std::u16string_view name;
  node->get_baseName(&name);
  return std::u16string(name);
}

inline std::u16string TextOf(IXMLDOMNode* node) {
  std::u16string_view text;
  EXPECT_EQ(node->get_text(&text), kOk);
  return std::u16string(text);
}

inline NodeType TypeOf(IXMLDOMNode* node) {
  NodeType type = kElementNode;
  EXPECT_EQ(node->get_nodeType(&type), kOk);
  return type;
}

inline std::int32_t ChildCount(IXMLDOMNode* node) {
  IXMLDOMNodeList* children = nullptr;
  EXPECT_EQ(node->get_childNodes(&children), kOk);
  std::int32_t length = -1;
  EXPECT_EQ(children->get_length(&length), kOk);
  children->Release();
  return length;
}

inline IXMLDOMNode* Child(IXMLDOMNode* node, std::int32_t index) {
  IXMLDOMNodeList* children = nullptr;
  node->get_childNodes(&children);
  IXMLDOMNode* child = nullptr;
  EXPECT_EQ(children->get_item(index, &child), kOk);
  children->Release();
  child->Release();
  return child;
}

// The attribute with this full name, or null.
inline IXMLDOMNode* FindAttribute(IXMLDOMNode* element, std::u16string_view name) {
  IXMLDOMNamedNodeMap* attributes = nullptr;
  EXPECT_EQ(element->get_attributes(&attributes), kOk);
  IXMLDOMNode* item = nullptr;
  const HRESULT status = attributes->getNamedItem(name, &item);
  EXPECT_EQ(status, item != nullptr ? kOk : kFalse);
  attributes->Release();
  if (item != nullptr) item->Release();
  return item;
}

inline std::u16string Attribute(IXMLDOMNode* element, std::u16string_view name) {
  IXMLDOMNode* const attribute = FindAttribute(element, name);
  return attribute == nullptr ? u"(absent)" : TextOf(attribute);
}

// An element as name[children], a text as 'data', a CDATA section as {data}, a comment as !data!, a processing
// instruction as ?target data?.
inline std::u16string Show(IXMLDOMNode* node) {
  switch (TypeOf(node)) {
    case kTextNode:
      return u"'" + TextOf(node) + u"'";
    case kCDataNode:
      return u"{" + TextOf(node) + u"}";
    case kCommentNode:
      return u"!" + TextOf(node) + u"!";
    case kProcessingInstructionNode:
      return u"?" + BaseName(node) + u" " + TextOf(node) + u"?";
    default:
      break;
  }
  std::u16string shown = BaseName(node) + u"[";
  for (std::int32_t i = 0; i < ChildCount(node); ++i) shown += Show(Child(node, i));
  return shown + u"]";
}

// The tree of a text that must be taken, as `Show` has it.
inline std::u16string Shown(std::u16string_view text) {
  Dom dom;
  return dom.Load(text) ? Show(dom.Root()) : u"(refused)";
}

// The text of the document element of a text that must be taken.
inline std::u16string RootText(std::u16string_view text) {
  Dom dom;
  return dom.Load(text) ? TextOf(dom.Root()) : u"(refused)";
}

// The attribute "a" of the document element of a text that must be taken.
inline std::u16string AttributeA(std::u16string_view text) {
  Dom dom;
  return dom.Load(text) ? Attribute(dom.Root(), u"a") : u"(refused)";
}

inline bool Loads(std::u16string_view text) {
  Dom dom;
  return dom.Load(text);
}
