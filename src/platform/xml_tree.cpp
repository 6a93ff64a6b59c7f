#include "platform/xml_tree.h"

#include <new>

#include "filter_limits.h"
#include "platform/unit_scan.h"

void EmptyNodeList::AddRef() { ++tree_->references; }

void EmptyNodeList::Release() { --tree_->references; }

HRESULT EmptyNodeList::get_length(std::int32_t* length) {
  *length = 0;
  return kOk;
}

HRESULT EmptyNodeList::get_item(std::int32_t, IXMLDOMNode** item) {
  *item = nullptr;
  return kFalse;
}

void TreeNode::AddRef() { ++name_->tree->references; }

void TreeNode::Release() { --name_->tree->references; }

HRESULT TreeNode::get_nodeType(NodeType* type) {
  *type = Type();
  return kOk;
}

HRESULT TreeNode::get_baseName(std::u16string_view* name) {
  *name = {};
  return kFalse;
}

HRESULT TreeNode::get_attributes(IXMLDOMNamedNodeMap** attributes) {
  *attributes = nullptr;
  return kFalse;
}

HRESULT TreeNode::get_text(std::u16string_view* text) {
  *text = Text();
  return kOk;
}

HRESULT TreeNode::get_childNodes(IXMLDOMNodeList** children) {
  name_->tree->noChildren.AddRef();
  *children = &name_->tree->noChildren;
  return kOk;
}

HRESULT NamedNode::get_baseName(std::u16string_view* name) {
  *name = name_->full.substr(name_->localOffset);
  return kOk;
}

HRESULT ElementNode::get_baseName(std::u16string_view* name) {
  *name = name_->full;
  return kOk;
}

HRESULT ElementNode::get_attributes(IXMLDOMNamedNodeMap** attributes) {
  AddRef();
  *attributes = this;
  return kOk;
}

HRESULT ElementNode::get_text(std::u16string_view* text) {
  *text = {};
  std::u16string& joined = name_->tree->elementText;
  joined.clear();
  try {
    JoinText(joined);
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  }
  *text = joined;
  if (preservesSpace) return kOk;
  while (!text->empty() && IsXmlSpace(text->front())) text->remove_prefix(1);
  while (!text->empty() && IsXmlSpace(text->back())) text->remove_suffix(1);
  return kOk;
}

HRESULT ElementNode::get_childNodes(IXMLDOMNodeList** children) {
  AddRef();
  *children = this;
  return kOk;
}

HRESULT ElementNode::getNamedItem(std::u16string_view name, IXMLDOMNode** item) {
  for (NamedNode* attribute = attributes_; attribute != attributes_ + attributeCount_; ++attribute) {
    if (!IsSameText(attribute->FullName(), name)) continue;
    attribute->AddRef();
    *item = attribute;
    return kOk;
  }
  *item = nullptr;
  return kFalse;
}

HRESULT ElementNode::get_length(std::int32_t* length) {
  *length = childCount_;
  return kOk;
}

HRESULT ElementNode::get_item(std::int32_t index, IXMLDOMNode** item) {
  if (index < 0 || index >= childCount_) {
    *item = nullptr;
    return kFalse;
  }
  children_[index]->AddRef();
  *item = children_[index];
  return kOk;
}

void ElementNode::JoinText(std::u16string& text) const {
  struct Frame {
    const ElementNode* element;
    std::int32_t nextChild;
  };
  Frame frames[kMaxElementDepth];
  int depth = 1;
  frames[0] = {this, 0};
  // Any white space between two pieces that was dropped, be it in one stretch or in several, is one blank.
  bool blank = false;
  while (depth > 0) {
    Frame& frame = frames[depth - 1];
    if (frame.nextChild == frame.element->childCount_) {
      blank |= frame.element->blankAtEnd;
      --depth;
      continue;
    }
    const TreeNode* const child = frame.element->children_[frame.nextChild++];
    blank |= child->BlankInFront();
    if (child->Type() == kElementNode) {
      frames[depth++] = {static_cast<const ElementNode*>(child), 0};
    } else if ((child->Type() == kTextNode || child->Type() == kCDataNode) && !child->Text().empty()) {
      if (blank && !text.empty()) text.push_back(u' ');
      blank = false;
      text += child->Text();
    }
  }
}
