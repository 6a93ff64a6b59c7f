#include "platform/xml_document.h"

#include <cstdio>
#include <new>
#include <string>

#include "filter_limits.h"
#include "platform/xml_parser.h"
#include "platform/xml_plain.h"
#include "platform/xml_prepare.h"
#include "platform/xml_tree.h"

namespace {

class ParseError final : public IXMLDOMParseError {
 public:
  explicit ParseError(XmlTree* tree) : tree_(tree) {}

  void AddRef() override { ++tree_->references; }
  void Release() override { --tree_->references; }

  HRESULT get_errorCode(std::int32_t* code) override {
    *code = failure.code;
    return failure.code == 0 ? kFalse : kOk;
  }

  HRESULT get_reason(std::u16string_view* reason) override {
    *reason = failure.reason;
    return failure.code == 0 ? kFalse : kOk;
  }

  HRESULT get_srcText(std::u16string_view* text) override {
    *text = {};
    return kFalse;
  }

  XmlFailure failure;

 private:
  XmlTree* tree_;
};

class Document final : public IXMLDOMDocument {
 public:
  void AddRef() override { ++references_; }

  void Release() override {
    if (--references_ == 0) delete this;
  }

  HRESULT get_validateOnParse(bool* validate) override {
    *validate = validate_;
    return kOk;
  }

  HRESULT put_validateOnParse(bool validate) override {
    validate_ = validate;
    return kOk;
  }

  HRESULT put_async(bool) override { return kOk; }

  HRESULT get_doctype(IXMLDOMNode** doctype) override {
    *doctype = nullptr;
    return kFalse;
  }

  HRESULT loadXML(std::u16string_view text, bool* success) override {
    tree_.Clear();
    error_.failure = {};
    const HRESULT status = Load(text);
    if (status != kOk) tree_.Clear();
    if (Failed(status)) error_.failure.code = status;
    *success = status == kOk;
    return status;
  }

  HRESULT get_documentElement(IXMLDOMNode** element) override {
    *element = tree_.root;
    if (tree_.root == nullptr) return kFalse;
    tree_.root->AddRef();
    return kOk;
  }

  HRESULT get_parseError(IXMLDOMParseError** error) override {
    error_.AddRef();
    *error = &error_;
    return kOk;
  }

  std::int64_t OutstandingReferences() const { return tree_.references; }

 private:
  ~Document() = default;

  HRESULT Load(std::u16string_view text) {
    if (text.size() > kMaxDocumentBytes) return kInvalidArgument;
    try {
      if (ReadPlainXml(text, &tree_)) return kOk;
      tree_.Clear();
      return LoadByLibrary(text);
    } catch (const std::bad_alloc&) {
      return kOutOfMemory;
    }
  }

  HRESULT LoadByLibrary(std::u16string_view text) {
    PreparedXml prepared;
    switch (PrepareXml(text, &prepared)) {
      case PrepareStatus::kPrepared:
        return ParseXml(prepared, &tree_, &error_.failure);
      case PrepareStatus::kRefused:
        error_.failure = {kFailed, prepared.refusal};
        return kFalse;
      case PrepareStatus::kTooLong:
        return kInvalidArgument;
      case PrepareStatus::kNoMemory:
        break;
    }
    return kOutOfMemory;
  }

  std::int64_t references_ = 1;
  bool validate_ = true;
  XmlTree tree_;
  ParseError error_{&tree_};
};

std::string Describe(HRESULT status, const char* interfaceName) {
  char number[16];
  std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(status));
  return std::string(interfaceName) + ": status " + number;
}

}  // namespace

IXMLDOMDocument* CreateDomDocument() { return new (std::nothrow) Document; }

std::int64_t OutstandingNodeReferences(const IXMLDOMDocument* document) {
  return static_cast<const Document*>(document)->OutstandingReferences();
}

DocumentError::DocumentError(HRESULT failedStatus, const char* failedInterface)
    : std::runtime_error(Describe(failedStatus, failedInterface)),
      status(failedStatus),
      interfaceName(failedInterface) {}
