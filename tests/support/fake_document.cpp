#include "tests/support/fake_document.h"

#include "platform/narrow_text.h"
#include "run/import_run.h"

namespace {

FakeDocument* current = nullptr;

IXMLDOMDocument* GiveCurrentDocument() {
  if (!current->isCreated) return nullptr;
  current->AddRef();
  return current;
}

}  // namespace

FakeNode::FakeNode(std::u16string_view fullName, std::u16string_view nodeText) : name_(fullName), text_(nodeText) {}

FakeNode& FakeNode::Add(std::u16string_view childName) {
  children_.push_back(std::make_unique<FakeNode>(childName));
  return *children_.back();
}

FakeNode& FakeNode::Set(std::u16string_view attribute, std::u16string_view value) {
  attributes_.push_back(std::make_unique<FakeNode>(attribute, value));
  return *this;
}

void FakeNode::Release() {
  --references;
  if (releaseLog) std::fprintf(releaseLog, "release %s\n", Utf8FromWide(name_).c_str());
}

HRESULT FakeNode::get_nodeType(NodeType* type) {
  *type = kElementNode;
  return kOk;
}

HRESULT FakeNode::get_baseName(std::u16string_view* baseName) {
  *baseName = std::u16string_view(name_).substr(name_.find(u':') + 1);
  return kOk;
}

HRESULT FakeNode::get_attributes(IXMLDOMNamedNodeMap** attributes) {
  *attributes = hasAttributes ? &map_ : nullptr;
  if (!hasAttributes) return kFalse;
  map_.AddRef();
  return kOk;
}

HRESULT FakeNode::get_text(std::u16string_view* nodeText) {
  *nodeText = text_;
  return kOk;
}

HRESULT FakeNode::get_childNodes(IXMLDOMNodeList** children) {
  const bool given = hasChildren && !Failed(childNodesStatus);
  *children = given ? &list_ : nullptr;
  if (given) list_.AddRef();
  return childNodesStatus;
}

HRESULT FakeNode::Map::getNamedItem(std::u16string_view itemName, IXMLDOMNode** item) {
  *item = nullptr;
  if (Failed(node_.namedItemStatus)) return node_.namedItemStatus;
  for (const auto& attribute : node_.attributes_) {
    if (attribute->name_ != itemName) continue;
    attribute->AddRef();
    *item = attribute.get();
    return kOk;
  }
  return kFalse;
}

HRESULT FakeNode::List::get_length(std::int32_t* length) {
  *length = static_cast<std::int32_t>(node_.children_.size());
  return kOk;
}

HRESULT FakeNode::List::get_item(std::int32_t index, IXMLDOMNode** item) {
  *item = node_.children_.at(static_cast<std::size_t>(index)).get();
  if (!*item) return kFalse;
  (*item)->AddRef();
  return kOk;
}

FakeDocument::FakeDocument() {
  current = this;
  run.CreateDocument = GiveCurrentDocument;
}

FakeDocument::~FakeDocument() {
  ResetImportRun();
  current = nullptr;
}

HRESULT FakeDocument::get_validateOnParse(bool* validate) {
  calls.push_back("get_validateOnParse");
  *validate = false;
  return kOk;
}

HRESULT FakeDocument::put_validateOnParse(bool validate) {
  calls.push_back(validate ? "put_validateOnParse true" : "put_validateOnParse false");
  return kOk;
}

HRESULT FakeDocument::put_async(bool async) {
  calls.push_back(async ? "put_async true" : "put_async false");
  return kOk;
}

HRESULT FakeDocument::get_doctype(IXMLDOMNode** doctype) {
  calls.push_back("get_doctype");
  *doctype = nullptr;
  return kFalse;
}

HRESULT FakeDocument::loadXML(std::u16string_view given, bool* success) {
  calls.push_back("loadXML");
  source = given;
  *success = loads && !Failed(loadStatus);
  return loadStatus;
}

HRESULT FakeDocument::get_documentElement(IXMLDOMNode** element) {
  calls.push_back("get_documentElement");
  const bool given = hasElement && !Failed(elementStatus);
  *element = given ? &root : nullptr;
  if (given) root.AddRef();
  return elementStatus;
}

HRESULT FakeDocument::get_parseError(IXMLDOMParseError** error) {
  calls.push_back("get_parseError");
  parseError_.AddRef();
  *error = &parseError_;
  return kOk;
}

HRESULT FakeDocument::ParseError::get_errorCode(std::int32_t* code) {
  document_.calls.push_back("get_errorCode");
  *code = kFailed;
  return kOk;
}

HRESULT FakeDocument::ParseError::get_reason(std::u16string_view* reason) {
  document_.calls.push_back("get_reason");
  *reason = u"refused";
  return kOk;
}

HRESULT FakeDocument::ParseError::get_srcText(std::u16string_view* sourceText) {
  document_.calls.push_back("get_srcText");
  *sourceText = {};
  return kOk;
}
