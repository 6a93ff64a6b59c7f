// The library's way from a text to its tree, without the short one in front of it, and a writing of trees by which they
// can be compared.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "platform/xml_parser.h"
#include "platform/xml_prepare.h"
#include "platform/xml_tree.h"

// Fills `tree`, which must be empty. Returns false for a text that the library does not take.
inline bool ReadByLibrary(std::u16string_view text, XmlTree* tree) {
  PreparedXml prepared;
  XmlFailure failure;
  return PrepareXml(text, &prepared) == PrepareStatus::kPrepared && ParseXml(prepared, tree, &failure) == kOk;
}

// With its length, which tells where the text ends whatever it holds.
inline void WriteText(std::u16string_view text, std::u16string* written) {
  for (const char digit : std::to_string(text.size())) written->push_back(static_cast<char16_t>(digit));
  written->append(u":").append(text);
}

inline void WriteNamed(const NamedNode& node, std::u16string* written) {
  WriteText(node.FullName(), written);
  written->append(u"/");
  WriteText(node.Name()->Local(), written);
  written->append(u"=");
  WriteText(node.Text(), written);
}

inline void WriteElement(ElementNode* element, std::u16string* written);

inline void WriteChild(TreeNode* child, std::u16string* written) {
  if (child->BlankInFront()) written->append(u"_");
  switch (child->Type()) {
    case kElementNode:
      return WriteElement(static_cast<ElementNode*>(child), written);
    case kProcessingInstructionNode:
      written->append(u"?");
      return WriteNamed(*static_cast<NamedNode*>(child), written);
    case kTextNode:
      written->append(u"'");
      break;
    case kCDataNode:
      written->append(u"[");
      break;
    default:
      written->append(u"!");
      break;
  }
  WriteText(child->Text(), written);
}

inline void WriteElement(ElementNode* element, std::u16string* written) {
  std::u16string_view name;
  element->get_baseName(&name);
  written->append(u"<");
  WriteText(name, written);
  std::vector<const NamedNode*> attributes;
  for (const NamedNode& attribute : element->Attributes()) attributes.push_back(&attribute);
  std::sort(attributes.begin(), attributes.end(),
            [](const NamedNode* a, const NamedNode* b) { return a->FullName() < b->FullName(); });
  for (const NamedNode* attribute : attributes) {
    written->append(u" ");
    WriteNamed(*attribute, written);
  }
  written->append(element->preservesSpace ? u">>" : u">");
  std::int32_t count = 0;
  element->get_length(&count);
  for (std::int32_t i = 0; i < count; ++i) {
    IXMLDOMNode* child = nullptr;
    element->get_item(i, &child);
    child->Release();
    WriteChild(static_cast<TreeNode*>(child), written);
  }
  written->append(element->blankAtEnd ? u"_;" : u";");
}

// All that can be read of a tree but the order of attributes. Trees are equal if this is the same for both.
inline std::u16string WrittenTree(const XmlTree& tree) {
  std::u16string written;
  WriteElement(tree.root, &written);
  return written;
}
