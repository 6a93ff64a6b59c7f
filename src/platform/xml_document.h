// The document interfaces through which everything is read from an SVG document, and the maker of their one
// implementation. Results are status codes, so that a test can put a document that fails in its place.
//
// Ownership: whoever gets an object through a pointer argument or from `CreateDomDocument` holds one reference to it
// and gives it back with `Release`. Nodes, lists and maps belong to their document all the same: the document's last
// `Release` takes the whole tree with it, whatever references to its nodes are still out. Text views point into the
// document and stay valid as long as it does, but for the text of an element, which the next such call replaces.
//
// Pointer arguments must not be null. On failure, and where nothing is there to give, a pointer result is set to null
// and a text result to the empty text.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

using HRESULT = std::int32_t;

inline constexpr HRESULT kOk = 0;
inline constexpr HRESULT kFalse = 1;  // done, but there was nothing to give
inline constexpr HRESULT kNullPointer = static_cast<HRESULT>(0x80004003u);
inline constexpr HRESULT kFailed = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT kOutOfMemory = static_cast<HRESULT>(0x8007000Eu);
inline constexpr HRESULT kInvalidArgument = static_cast<HRESULT>(0x80070057u);

constexpr bool Failed(HRESULT status) { return status < 0; }

enum NodeType : std::int32_t {
  kElementNode = 1,
  kAttributeNode = 2,
  kTextNode = 3,
  kCDataNode = 4,
  kProcessingInstructionNode = 7,
  kCommentNode = 8
};

class IXMLDOMNamedNodeMap;
class IXMLDOMNodeList;

// An element, attribute, text, CDATA section, comment or processing instruction.
class IXMLDOMNode {
 public:
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  virtual HRESULT get_nodeType(NodeType* type) = 0;
  // The local name of an element or attribute, the target of a processing instruction; empty with kFalse for the
  // others.
  virtual HRESULT get_baseName(std::u16string_view* name) = 0;
  // The attributes of an element, namespace declarations included; null with kFalse for other nodes.
  virtual HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) = 0;
  // The value of an attribute, the data of the others. For an element the text and CDATA of all descendants: white
  // space that is not in the tree counts as one blank between two pieces, and both ends are trimmed unless
  // xml:space="preserve" is in force on the element.
  virtual HRESULT get_text(std::u16string_view* text) = 0;
  // The children of an element; an empty list for other nodes.
  virtual HRESULT get_childNodes(IXMLDOMNodeList** children) = 0;

 protected:
  ~IXMLDOMNode() = default;
};

class IXMLDOMNamedNodeMap {
 public:
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  // The attribute whose full name, prefix included, is exactly `name`; null with kFalse when there is none.
  virtual HRESULT getNamedItem(std::u16string_view name, IXMLDOMNode** item) = 0;

 protected:
  ~IXMLDOMNamedNodeMap() = default;
};

class IXMLDOMNodeList {
 public:
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  virtual HRESULT get_length(std::int32_t* length) = 0;
  // The item at `index`, counted from 0; null with kFalse outside the list.
  virtual HRESULT get_item(std::int32_t index, IXMLDOMNode** item) = 0;

 protected:
  ~IXMLDOMNodeList() = default;
};

// What the last load found wrong. It shows the state at the time of asking for it and lives as long as its document.
class IXMLDOMParseError {
 public:
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  // 0 with kFalse when the last load went well, otherwise not 0.
  virtual HRESULT get_errorCode(std::int32_t* code) = 0;
  // A sentence in English; empty with kFalse when the last load went well.
  virtual HRESULT get_reason(std::u16string_view* reason) = 0;
  // The source line at fault. The source is not kept, so that it is always empty with kFalse.
  virtual HRESULT get_srcText(std::u16string_view* text) = 0;

 protected:
  ~IXMLDOMParseError() = default;
};

class IXMLDOMDocument {
 public:
  virtual void AddRef() = 0;
  virtual void Release() = 0;
  // Validation has nothing to work on, as no document type passes `loadXML`; the property is only remembered.
  virtual HRESULT get_validateOnParse(bool* validate) = 0;
  virtual HRESULT put_validateOnParse(bool validate) = 0;
  // Every load is done when `loadXML` returns, whatever is put here.
  virtual HRESULT put_async(bool async) = 0;
  // Always null with kFalse.
  virtual HRESULT get_doctype(IXMLDOMNode** doctype) = 0;
  // Replaces the tree by that of `text`, which must stay as it is for as long as the document lives; the
  // nodes of the tree before are gone.
  // `*success` tells whether it was taken. A text that is refused gives kFalse, one of more than 0x7FFFFFFF units
  // kInvalidArgument, and a lack of memory kOutOfMemory, each with `*success` false and an empty document.
  virtual HRESULT loadXML(std::u16string_view text, bool* success) = 0;
  // Null with kFalse when nothing is loaded.
  virtual HRESULT get_documentElement(IXMLDOMNode** element) = 0;
  virtual HRESULT get_parseError(IXMLDOMParseError** error) = 0;

 protected:
  ~IXMLDOMDocument() = default;
};

// A new, empty document with one reference; null when there is no memory for it.
IXMLDOMDocument* CreateDomDocument();

// How many references to nodes, maps, lists and parse errors of this document are out. `document` must come from
// `CreateDomDocument`.
std::int64_t OutstandingNodeReferences(const IXMLDOMDocument* document);

// A document call that reported failure.
class DocumentError : public std::runtime_error {
 public:
  // `interfaceName` must live as long as the program, as a literal does.
  DocumentError(HRESULT failedStatus, const char* failedInterface);

  HRESULT status;
  const char* interfaceName;
};
