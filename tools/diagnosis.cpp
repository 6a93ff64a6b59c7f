#include "tools/diagnosis.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>
#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>

#include "filter_limits.h"
#include "headless_host/text.h"
#include "tools/document_bytes.h"

namespace {

struct Findings {
  xmlParserCtxtPtr parser = nullptr;
  int depth = 0;
  bool tooDeep = false;
  bool doctype = false;
  bool rootHasContent = false;
  std::string error;  // the first, with its line
  BlankedDoctype blanked;
};

Findings& FindingsOf(void* context) {
  return *static_cast<Findings*>(static_cast<xmlParserCtxtPtr>(context)->_private);
}

void NoteContent(void* context) {
  Findings& findings = FindingsOf(context);
  if (findings.depth > 0) findings.rootHasContent = true;
}

void NoteError(void* context, xmlErrorPtr error) {
  Findings& findings = FindingsOf(context);
  // Any text is a namespace to the filter.
  if (error->level < XML_ERR_ERROR || error->code == XML_WAR_NS_URI || !findings.error.empty()) return;
  std::string message = error->message == nullptr ? "not well-formed" : error->message;
  std::replace(message.begin(), message.end(), '\n', ' ');
  while (!message.empty() && message.back() == ' ') message.pop_back();
  const int line = error->line + (error->line > findings.blanked.line ? findings.blanked.lostLines : 0);
  findings.error = "line " + std::to_string(line) + ": " + message;
}

xmlSAXHandler Handler() {
  xmlSAXHandler handler = {};
  handler.initialized = XML_SAX2_MAGIC;
  handler.serror = NoteError;
  handler.startElementNs = [](void* context, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**, int,
                              int, const xmlChar**) {
    NoteContent(context);
    Findings& findings = FindingsOf(context);
    if (++findings.depth > kMaxElementDepth) {
      findings.tooDeep = true;
      xmlStopParser(findings.parser);
    }
  };
  handler.endElementNs = [](void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    --FindingsOf(context).depth;
  };
  handler.characters = [](void* context, const xmlChar* text, int length) {
    const std::string_view characters(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
    if (characters.find_first_not_of(" \t\r\n") != characters.npos) NoteContent(context);
  };
  handler.cdataBlock = [](void* context, const xmlChar*, int) { NoteContent(context); };
  handler.comment = [](void* context, const xmlChar*) { NoteContent(context); };
  handler.processingInstruction = [](void* context, const xmlChar*, const xmlChar*) { NoteContent(context); };
  handler.internalSubset = [](void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    Findings& findings = FindingsOf(context);
    findings.doctype = true;
    xmlStopParser(findings.parser);
  };
  return handler;
}

struct ParserDeleter {
  void operator()(xmlParserCtxtPtr parser) const {
    if (parser->myDoc != nullptr) xmlFreeDoc(parser->myDoc);
    xmlFreeParserCtxt(parser);
  }
};

// What is wrong with the text that the filter gives to the parser; empty when nothing is.
std::string DiagnoseText(const std::string& text, const BlankedDoctype& blanked) {
  if (MostAttributes(text) > kMaxAttributes) {
    return "an element has more than " + std::to_string(kMaxAttributes) + " attributes";
  }
  const std::string utf8 = headless::Utf8FromText(headless::TextFromNarrow(text));
  const std::unique_ptr<xmlParserCtxt, ParserDeleter> parser(
      xmlCreateMemoryParserCtxt(utf8.data(), static_cast<int>(std::min<std::size_t>(utf8.size(), 0x7FFFFFFF))));
  if (parser == nullptr) return "the text cannot be given to the parser";
  Findings findings;
  findings.parser = parser.get();
  findings.blanked = blanked;
  parser->_private = &findings;
  xmlCtxtUseOptions(parser.get(), XML_PARSE_NONET | XML_PARSE_IGNORE_ENC | XML_PARSE_HUGE);
  *parser->sax = Handler();
  xmlParseDocument(parser.get());

  if (findings.doctype) return "a DOCTYPE is left behind the first one";
  if (findings.tooDeep) return "elements are nested deeper than " + std::to_string(kMaxElementDepth);
  if (!findings.error.empty()) return findings.error;
  const auto* version = reinterpret_cast<const char*>(parser->version);
  if (version != nullptr && std::string_view(version) != "1.0") return "XML version " + std::string(version);
  if (!findings.rootHasContent) return "the root element has no content";
  return {};
}

}  // namespace

std::string DiagnoseDocument(const std::string& file) {
  std::string reason;
  std::optional<std::string> bytes = ReadDocumentBytes(file, reason);
  if (!bytes) return reason;
  if (bytes->empty()) return "the file is empty";
  if (bytes->starts_with("\xFF\xFE") || bytes->starts_with("\xFE\xFF")) return "the text is UTF-16, which is not read";
  if (bytes->starts_with("\xEF\xBB\xBF")) {
    return "the file begins with a byte order mark, which counts as text in front of the root element";
  }
  const std::size_t nul = bytes->find('\0');
  const bool cut = nul != bytes->npos;
  if (cut) bytes->resize(nul);
  const BlankedDoctype blanked = BlankDoctype(*bytes);
  reason = DiagnoseText(*bytes, blanked);
  if (reason.empty()) return "the filter refused the document";
  if (blanked.subset) return "the DOCTYPE has an internal subset, which is not read (" + reason + ")";
  if (cut) return "a NUL byte at offset " + std::to_string(nul) + " ends the text (" + reason + ")";
  return reason;
}
