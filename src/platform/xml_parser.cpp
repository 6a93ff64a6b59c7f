#include "platform/xml_parser.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include "filter_limits.h"
#include "platform/ascii_block.h"
#include "platform/narrow_text.h"
#include "platform/xml_builder.h"

namespace {

// Writes UTF-8 that is known to be valid as UTF-16; no more units than there are bytes. Returns the end of the units.
char16_t* Widen(const char* from, const char* end, char16_t* to) {
  while (from != end) {
    while (end - from >= static_cast<std::ptrdiff_t>(kAsciiBlock) && WidenBlock(from, to)) {
      from += kAsciiBlock;
      to += kAsciiBlock;
    }
    const char* const blockEnd = from + std::min(kAsciiBlock, static_cast<std::size_t>(end - from));
    while (from < blockEnd) {
      const auto lead = static_cast<unsigned char>(*from);
      const auto following = [&](int i) { return static_cast<unsigned char>(from[i]) & 0x3Fu; };
      if (lead <= 0x7F) {
        *to++ = lead;
        from += 1;
      } else if (lead < 0xE0 && end - from >= 2) {
        *to++ = static_cast<char16_t>(((lead & 0x1Fu) << 6) | following(1));
        from += 2;
      } else if (lead < 0xF0 && end - from >= 3) {
        *to++ = static_cast<char16_t>(((lead & 0x0Fu) << 12) | (following(1) << 6) | following(2));
        from += 3;
      } else if (end - from >= 4) {
        const std::uint32_t codePoint =
            ((lead & 0x07u) << 18) | (following(1) << 12) | (following(2) << 6) | following(3);
        *to++ = static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
        *to++ = static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
        from += 4;
      } else {
        return to;
      }
    }
  }
  return to;
}

const char* Chars(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

std::string_view View(const xmlChar* text) { return text == nullptr ? std::string_view() : Chars(text); }

// The names that the library tells, found by the addresses of their texts in its dictionary, which has each text once.
class LibraryNames {
 public:
  // The name of these two dictionary texts; a null prefix is none.
  XmlName* Find(XmlTree& tree, const xmlChar* prefix, const xmlChar* localName) {
    if (2 * (count_ + 1) > slots_.size()) Rehash();
    Slot* const slot = Place(slots_, prefix, localName);
    if (slot->localName == nullptr) {
      *slot = {prefix, localName, Intern(tree, View(prefix), View(localName))};
      ++count_;
    }
    return slot->name;
  }

 private:
  struct Slot {
    const xmlChar* prefix = nullptr;
    const xmlChar* localName = nullptr;  // null: the slot is free
    XmlName* name = nullptr;
  };

  static XmlName* Intern(XmlTree& tree, std::string_view prefix, std::string_view localName) {
    char16_t* const start = tree.arena.TextRoom(prefix.size() + 1 + localName.size());
    char16_t* end = start;
    if (!prefix.empty()) {
      end = Widen(prefix.data(), prefix.data() + prefix.size(), end);
      *end++ = u':';
    }
    const auto localOffset = static_cast<std::uint32_t>(end - start);
    end = Widen(localName.data(), localName.data() + localName.size(), end);
    tree.arena.LengthenText(static_cast<std::size_t>(end - start));
    const XmlNames::Key key = tree.names.KeyOf(tree.arena.OpenText());
    if (XmlName* const known = tree.names.Find(key)) {
      tree.arena.DropText();
      return known;
    }
    tree.arena.CloseText();
    return tree.names.Add(tree.arena, key, localOffset);
  }

  static Slot* Place(std::vector<Slot>& slots, const xmlChar* prefix, const xmlChar* localName) {
    const std::size_t mask = slots.size() - 1;
    const auto mixed = (reinterpret_cast<std::uintptr_t>(localName) ^ (reinterpret_cast<std::uintptr_t>(prefix) << 5)) *
                       std::uint64_t{0x9E3779B97F4A7C15};
    std::size_t index = static_cast<std::size_t>(mixed >> 32) & mask;
    while (slots[index].localName != nullptr &&
           (slots[index].localName != localName || slots[index].prefix != prefix)) {
      index = (index + 1) & mask;
    }
    return &slots[index];
  }

  void Rehash() {
    std::vector<Slot> larger(slots_.empty() ? 128 : 2 * slots_.size());
    for (const Slot& slot : slots_) {
      if (slot.localName != nullptr) *Place(larger, slot.prefix, slot.localName) = slot;
    }
    slots_.swap(larger);
  }

  std::vector<Slot> slots_;  // a power of two, at most half full
  std::size_t count_ = 0;
};

// Takes the events and builds the tree.
class EventReader {
 public:
  EventReader(const PreparedXml& text, XmlTree* tree, XmlFailure* failure, xmlParserCtxtPtr parser)
      : text_(text), tree_(*tree), failure_(*failure), parser_(parser), builder_(tree) {}

  void StartElement(const xmlChar* localName, int namespaceCount, const xmlChar** namespaces, int attributeCount,
                    const xmlChar** attributes) {
    EndText();
    if (builder_.Depth() == kMaxElementDepth) {
      Refuse(kFailed, u"Elements are nested deeper than 256.");
      return;
    }
    for (int i = 0; i < attributeCount; ++i) {
      const xmlChar** const attribute = attributes + 5 * i;  // local name, prefix, URI, value, end of the value
      const XmlName* const name = names_.Find(tree_, attribute[1], attribute[0]);
      builder_.AddAttribute(name, StoreText({Chars(attribute[3]), Chars(attribute[4])}));
    }
    for (int i = 0; i < namespaceCount; ++i) {
      const xmlChar* const prefix = namespaces[2 * i];
      const XmlName* const name = prefix == nullptr ? names_.Find(tree_, nullptr, parser_->str_xmlns)
                                                    : names_.Find(tree_, parser_->str_xmlns, prefix);
      builder_.AddAttribute(name, StoreText(View(namespaces[2 * i + 1])));
    }
    builder_.StartElement(names_.Find(tree_, nullptr, localName));
  }

  void EndElement() {
    EndText();
    builder_.EndElement();
  }

  // A piece of character data. What comes in a row makes one text.
  void Characters(std::string_view text) {
    char16_t* const units = tree_.arena.TextRoom(text.size());
    tree_.arena.LengthenText(static_cast<std::size_t>(Widen(text.data(), text.data() + text.size(), units) - units));
  }

  // A CDATA section or comment.
  void Leaf(NodeType type, std::string_view text) {
    if (builder_.Depth() == 0) return;  // the document keeps nothing but its element
    EndText();
    builder_.AddLeaf(type, StoreText(text));
  }

  void ProcessingInstruction(const xmlChar* target, std::string_view data) {
    if (builder_.Depth() == 0) return;
    EndText();
    const XmlName* const name = names_.Find(tree_, nullptr, target);
    builder_.AddInstruction(name, StoreText(data));
  }

  void Error(const xmlError& error) {
    if (error.code == XML_ERR_NO_MEMORY) return RunOutOfMemory();
    // The library's word for what is a mere address in a namespace declaration; any text is a namespace.
    if (error.code == XML_WAR_NS_URI) return;
    // The library only warns of a version 1.1.
    if (error.level == XML_ERR_WARNING && error.code != XML_WAR_UNKNOWN_VERSION) return;
    std::u16string reason = WideFromUtf8(error.message == nullptr ? "" : error.message);
    while (!reason.empty() && IsXmlSpace(reason.back())) reason.pop_back();
    Refuse(error.code, std::move(reason));
  }

  void RunOutOfMemory() { Stop(kOutOfMemory); }

  // What came of it, when the library is done.
  HRESULT Finish() {
    if (status_ == kOk && (parser_->wellFormed == 0 || tree_.root == nullptr)) {
      Refuse(kFailed, u"The document is not well-formed.");
    }
    return status_;
  }

 private:
  void Refuse(std::int32_t code, std::u16string reason) {
    if (status_ != kOk) return;
    failure_.code = code;
    failure_.reason = std::move(reason);
    Stop(kFalse);
  }

  // The library goes on to read what it can after a mistake, and its own way to stop it takes the input away from under
  // the routine that is reading it. It ends of itself where the text is at its end, so what is left of the text is
  // wiped out.
  void Stop(HRESULT status) {
    status_ = status;
    parser_->disableSAX = 1;
    const auto offset = static_cast<std::size_t>(Chars(parser_->input->cur) - text_.bytes);
    if (offset < text_.size) std::memset(text_.bytes + offset, 0, text_.size - offset);
  }

  void EndText() {
    const std::u16string_view text = tree_.arena.OpenText();
    if (text.empty()) return;
    if (std::all_of(text.begin(), text.end(), IsXmlSpace) && builder_.DropsBlanks()) {
      tree_.arena.DropText();
    } else {
      builder_.AddLeaf(kTextNode, tree_.arena.CloseText());
    }
  }

  std::u16string_view StoreText(std::string_view text) {
    Characters(text);
    return tree_.arena.CloseText();
  }

  const PreparedXml& text_;
  XmlTree& tree_;
  XmlFailure& failure_;
  xmlParserCtxtPtr parser_;
  XmlTreeBuilder builder_;
  LibraryNames names_;
  HRESULT status_ = kOk;
};

// Calls the builder from the library, which no exception may pass through.
template <typename Work>
void Build(void* context, Work work) {
  auto* const builder = static_cast<EventReader*>(context);
  try {
    work(*builder);
  } catch (const std::bad_alloc&) {
    builder->RunOutOfMemory();
  }
}

std::string_view View(const xmlChar* text, int length) {
  return length <= 0 ? std::string_view() : std::string_view(Chars(text), static_cast<std::size_t>(length));
}

void OnStartElement(void* context, const xmlChar* localName, const xmlChar*, const xmlChar*, int namespaceCount,
                    const xmlChar** namespaces, int attributeCount, int, const xmlChar** attributes) {
  Build(context, [&](EventReader& builder) {
    builder.StartElement(localName, namespaceCount, namespaces, attributeCount, attributes);
  });
}

void OnEndElement(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  Build(context, [](EventReader& builder) { builder.EndElement(); });
}

void OnCharacters(void* context, const xmlChar* text, int length) {
  Build(context, [&](EventReader& builder) { builder.Characters(View(text, length)); });
}

void OnCData(void* context, const xmlChar* text, int length) {
  Build(context, [&](EventReader& builder) { builder.Leaf(kCDataNode, View(text, length)); });
}

void OnComment(void* context, const xmlChar* text) {
  Build(context, [&](EventReader& builder) { builder.Leaf(kCommentNode, View(text)); });
}

void OnProcessingInstruction(void* context, const xmlChar* target, const xmlChar* data) {
  Build(context, [&](EventReader& builder) { builder.ProcessingInstruction(target, View(data)); });
}

void OnError(void* context, xmlErrorPtr error) {
  Build(context, [&](EventReader& builder) { builder.Error(*error); });
}

struct ParserDeleter {
  void operator()(xmlParserCtxtPtr parser) const { xmlFreeParserCtxt(parser); }
};

// Gives the parser the text to read where it lies. False when there is no memory.
bool SetInput(xmlParserCtxtPtr parser, const PreparedXml& text) {
  xmlParserInputPtr const input = xmlNewInputStream(parser);
  if (input == nullptr) return false;
  input->base = reinterpret_cast<const xmlChar*>(text.bytes);
  input->cur = input->base;
  input->end = input->base + text.size;
  input->length = static_cast<int>(text.size);
  if (inputPush(parser, input) >= 0) return true;
  xmlFreeInputStream(input);
  return false;
}

// Gives the parser room for all attributes that a tag may have. Where it finds none for more while it reads a tag it
// goes on to use what it has given back. False when there is no memory.
bool MakeRoomForAttributes(xmlParserCtxtPtr parser) {
  constexpr int kAttributes = kMaxAttributes + 2;  // it looks for a little more than it needs
  constexpr int kPointers = 5 * kAttributes;
  parser->atts = static_cast<const xmlChar**>(xmlMalloc(kPointers * sizeof(xmlChar*)));
  parser->attallocs = static_cast<int*>(xmlMalloc(kAttributes * sizeof(int)));
  parser->maxatts = kPointers;
  return parser->atts != nullptr && parser->attallocs != nullptr;
}

}  // namespace

HRESULT ParseXml(const PreparedXml& text, XmlTree* tree, XmlFailure* failure) {
  if (text.size == 0) {
    failure->code = XML_ERR_DOCUMENT_EMPTY;
    failure->reason = u"The document is empty.";
    return kFalse;
  }
  xmlInitParser();
  const std::unique_ptr<xmlParserCtxt, ParserDeleter> parser(xmlNewParserCtxt());
  if (parser == nullptr || !SetInput(parser.get(), text) || !MakeRoomForAttributes(parser.get())) return kOutOfMemory;

  // The encoding is that of the wide text, whatever the document says. References must be replaced, or the library
  // hands out "&#38;" for "&amp;"; nothing but the five and characters can be referred to without a document type.
  xmlCtxtUseOptions(parser.get(), XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_IGNORE_ENC | XML_PARSE_NOENT);
  EventReader builder(text, tree, failure, parser.get());
  xmlSAXHandler events = {};
  events.initialized = XML_SAX2_MAGIC;
  events.startElementNs = OnStartElement;
  events.endElementNs = OnEndElement;
  events.characters = OnCharacters;
  events.ignorableWhitespace = OnCharacters;
  events.cdataBlock = OnCData;
  events.comment = OnComment;
  events.processingInstruction = OnProcessingInstruction;
  events.serror = OnError;
  *parser->sax = events;
  parser->userData = &builder;
  xmlParseDocument(parser.get());
  return builder.Finish();
}
