#include "bench/floor.h"

#include <libxml/parser.h>

#include <cstring>
#include <new>

namespace {

long elements;

void OnStart(void*, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**, int, int, const xmlChar**) {
  ++elements;
}
void OnEnd(void*, const xmlChar*, const xmlChar*, const xmlChar*) {}
void OnText(void*, const xmlChar*, int) {}
void OnComment(void*, const xmlChar*) {}
void OnInstruction(void*, const xmlChar*, const xmlChar*) {}

}  // namespace

XmlFloor::XmlFloor() : context_(xmlNewParserCtxt()) {
  if (!context_) throw std::bad_alloc();
  std::memset(context_->sax, 0, sizeof *context_->sax);
  context_->sax->initialized = XML_SAX2_MAGIC;
  context_->sax->startElementNs = OnStart;
  context_->sax->endElementNs = OnEnd;
  context_->sax->characters = OnText;
  context_->sax->ignorableWhitespace = OnText;
  context_->sax->cdataBlock = OnText;
  context_->sax->comment = OnComment;
  context_->sax->processingInstruction = OnInstruction;
}

XmlFloor::~XmlFloor() { xmlFreeParserCtxt(context_); }

long XmlFloor::Parse(std::string_view bytes) {
  elements = 0;
  constexpr int kOptions =
      XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC;
  xmlFreeDoc(xmlCtxtReadMemory(context_, bytes.data(), static_cast<int>(bytes.size()), nullptr, "UTF-8", kOptions));
  return elements;
}
