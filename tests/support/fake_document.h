// A document built by hand that stands in the place of the parsed one: its operations fail where a test wants them to,
// and it tells what it was asked and which of its references are out.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/xml_document.h"

// An element with its attributes and children, or an attribute.
class FakeNode final : public IXMLDOMNode {
 public:
  explicit FakeNode(std::u16string_view fullName, std::u16string_view nodeText = {});

  // A new last child.
  FakeNode& Add(std::u16string_view childName);
  // An item of the child list that comes back null.
  void AddNull() { children_.push_back(nullptr); }
  // A new attribute. Returns the node itself.
  FakeNode& Set(std::u16string_view attribute, std::u16string_view value);

  void AddRef() override { ++references; }
  void Release() override;
  HRESULT get_nodeType(NodeType* type) override;
  HRESULT get_baseName(std::u16string_view* baseName) override;
  HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) override;
  HRESULT get_text(std::u16string_view* nodeText) override;
  HRESULT get_childNodes(IXMLDOMNodeList** children) override;

  // What the operations answer.
  bool hasAttributes = true;       // get_attributes gives a map
  bool hasChildren = true;         // get_childNodes gives a list
  HRESULT namedItemStatus = kOk;   // of getNamedItem of the map
  HRESULT childNodesStatus = kOk;  // of get_childNodes

  // What is out at this time.
  int references = 0;
  int mapReferences = 0;
  int listReferences = 0;

  // Where "release NAME" is written at each Release.
  std::FILE* releaseLog = nullptr;

 private:
  class Map final : public IXMLDOMNamedNodeMap {
   public:
    explicit Map(FakeNode& node) : node_(node) {}
    void AddRef() override { ++node_.mapReferences; }
    void Release() override { --node_.mapReferences; }
    HRESULT getNamedItem(std::u16string_view itemName, IXMLDOMNode** item) override;

   private:
    FakeNode& node_;
  };

  class List final : public IXMLDOMNodeList {
   public:
    explicit List(FakeNode& node) : node_(node) {}
    void AddRef() override { ++node_.listReferences; }
    void Release() override { --node_.listReferences; }
    HRESULT get_length(std::int32_t* length) override;
    HRESULT get_item(std::int32_t index, IXMLDOMNode** item) override;

   private:
    FakeNode& node_;
  };

  std::u16string name_;
  std::u16string text_;
  std::vector<std::unique_ptr<FakeNode>> attributes_;
  std::vector<std::unique_ptr<FakeNode>> children_;  // null for an item that comes back null
  Map map_{*this};
  List list_{*this};
};

// Every document that the run creates is this one, as long as it lives. It goes with a fresh run, so that nothing
// outlives it.
class FakeDocument final : public IXMLDOMDocument {
 public:
  FakeDocument();
  ~FakeDocument();
  FakeDocument(const FakeDocument&) = delete;
  FakeDocument& operator=(const FakeDocument&) = delete;

  void AddRef() override { ++references; }
  void Release() override { --references; }
  HRESULT get_validateOnParse(bool* validate) override;
  HRESULT put_validateOnParse(bool validate) override;
  HRESULT put_async(bool async) override;
  HRESULT get_doctype(IXMLDOMNode** doctype) override;
  HRESULT loadXML(std::u16string_view source, bool* success) override;
  HRESULT get_documentElement(IXMLDOMNode** element) override;
  HRESULT get_parseError(IXMLDOMParseError** error) override;

  FakeNode root{u"svg"};

  // What the operations answer.
  bool isCreated = true;  // false: there is no document to be had
  HRESULT loadStatus = kOk;
  bool loads = true;            // what loadXML reports
  HRESULT elementStatus = kOk;  // of get_documentElement
  bool hasElement = true;

  // What was asked, in order, with the value put.
  std::vector<std::string> calls;
  std::u16string source;  // what loadXML was given

  // What is out at this time.
  int references = 0;
  int parseErrorReferences = 0;

 private:
  class ParseError final : public IXMLDOMParseError {
   public:
    explicit ParseError(FakeDocument& document) : document_(document) {}
    void AddRef() override { ++document_.parseErrorReferences; }
    void Release() override { --document_.parseErrorReferences; }
    HRESULT get_errorCode(std::int32_t* code) override;
    HRESULT get_reason(std::u16string_view* reason) override;
    HRESULT get_srcText(std::u16string_view* sourceText) override;

   private:
    FakeDocument& document_;
  };

  ParseError parseError_{*this};
};
