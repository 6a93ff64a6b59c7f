#include "platform/xml_builder.h"

#include <cstring>
#include <new>

namespace {

// A view of a plain literal would find out its length at run time.
using namespace std::string_view_literals;

}  // namespace

void XmlTreeBuilder::StartElement(const XmlName* localName) {
  const std::size_t count = attributes_.size();
  NamedNode* const nodes =
      count == 0 ? nullptr : static_cast<NamedNode*>(tree_.arena.Allocate(count * sizeof(NamedNode)));
  bool preserves = depth_ != 0 && open_[depth_ - 1].element->preservesSpace;
  NamedNode* node = nodes;
  for (const Attribute& attribute : attributes_) {
    new (node++) NamedNode(attribute.name, kAttributeNode, attribute.value);
    if (attribute.name->localOffset != 0 && attribute.name->full == u"xml:space"sv) {
      if (attribute.value == u"preserve"sv) preserves = true;
      if (attribute.value == u"default"sv) preserves = false;
    }
  }
  attributes_.clear();
  auto* const element =
      new (tree_.arena.Allocate(sizeof(ElementNode))) ElementNode(localName, nodes, static_cast<std::int32_t>(count));
  element->preservesSpace = preserves;
  if (depth_ == 0) {
    tree_.root = element;
  } else {
    AddChild(element);
  }
  open_[depth_++] = {element, children_.size()};
}

void XmlTreeBuilder::EndElement() {
  const OpenElement& closing = open_[--depth_];
  closing.element->blankAtEnd = blank_;
  blank_ = false;
  const std::size_t count = children_.size() - closing.firstChild;
  if (count == 0) return;
  const std::size_t bytes = count * sizeof(TreeNode*);
  auto** const children = static_cast<TreeNode**>(tree_.arena.Allocate(bytes));
  std::memcpy(children, children_.data() + closing.firstChild, bytes);
  closing.element->SetChildren(children, static_cast<std::int32_t>(count));
  children_.resize(closing.firstChild);
}

bool XmlTreeBuilder::DropsBlanks() {
  if (open_[depth_ - 1].element->preservesSpace) return false;
  blank_ = true;
  return true;
}
