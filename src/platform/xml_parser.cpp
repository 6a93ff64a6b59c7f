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
    if (XmlName* const known = tree.names.Find(tree.arena.OpenText())) {
      tree.arena.DropText();
      return known;
    }
    const std::u16string_view full = tree.arena.CloseText();
    return tree.names.Add(tree.arena, full, localOffset);
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
class TreeBuilder {
 public:
  TreeBuilder(const PreparedXml& text, XmlTree* tree, XmlFailure* failure, xmlParserCtxtPtr parser)
      : text_(text), tree_(*tree), failure_(*failure), parser_(parser) {}

  void StartElement(const xmlChar* localName, int namespaceCount, const xmlChar** namespaces, int attributeCount,
                    const xmlChar** attributes) {
    EndText();
    if (depth_ == kMaxElementDepth) {
      Refuse(kFailed, u"Elements are nested deeper than 256.");
      return;
    }
    bool preserves = Preserves();
    const PreparedTag tag = TakeTag();
    // There may be fewer: the library does not tell of a declaration of the prefix "xml".
    const auto others = static_cast<std::uint32_t>(attributeCount + namespaceCount);
    if (others > tag.others) {
      Refuse(kFailed, u"The attributes of a tag are not well-formed.");
      return;
    }
    NamedNode* node = tag.attributes + tag.plain;
    for (int i = 0; i < attributeCount; ++i) {
      const xmlChar** const attribute = attributes + 5 * i;  // local name, prefix, URI, value, end of the value
      const XmlName* const name = names_.Find(tree_, attribute[1], attribute[0]);
      if (IsPlain(tag, name)) {
        Refuse(XML_ERR_ATTRIBUTE_REDEFINED, u"An attribute stands twice in a tag.");
        return;
      }
      const std::u16string_view value = StoreText({Chars(attribute[3]), Chars(attribute[4])});
      if (name->full == u"xml:space") {
        if (value == u"preserve") preserves = true;
        if (value == u"default") preserves = false;
      }
      new (node++) NamedNode(name, kAttributeNode, value);
    }
    const std::size_t firstDeclaration = declarations_.size();
    for (int i = 0; i < namespaceCount; ++i) {
      const xmlChar* const prefix = namespaces[2 * i];
      XmlName* const name = prefix == nullptr ? names_.Find(tree_, nullptr, parser_->str_xmlns)
                                              : names_.Find(tree_, parser_->str_xmlns, prefix);
      const std::u16string_view uri = StoreText(View(namespaces[2 * i + 1]));
      new (node++) NamedNode(name, kAttributeNode, uri);
      declarations_.push_back({name, name->uri});
      name->uri = uri;
    }
    if (tag.prefixed != 0 && !PrefixesAreRight(tag, others)) {
      Refuse(kFailed, u"The prefix of an attribute is not declared, or two attributes have one name.");
      return;
    }
    const XmlName* const name = names_.Find(tree_, nullptr, localName);
    const auto count = static_cast<std::int32_t>(tag.plain + others);
    auto* const element = new (tree_.arena.Allocate(sizeof(ElementNode))) ElementNode(name, tag.attributes, count);
    element->preservesSpace = preserves;
    if (depth_ == 0) {
      tree_.root = element;
    } else {
      AddChild(element);
    }
    open_[depth_++] = {element, children_.size(), firstDeclaration};
  }

  void EndElement() {
    EndText();
    const OpenElement& closing = open_[--depth_];
    closing.element->blankAtEnd = blank_;
    blank_ = false;
    while (declarations_.size() != closing.firstDeclaration) {
      declarations_.back().name->uri = declarations_.back().outerUri;
      declarations_.pop_back();
    }
    const std::size_t count = children_.size() - closing.firstChild;
    if (count == 0) return;
    const std::size_t bytes = count * sizeof(TreeNode*);
    auto** const children = static_cast<TreeNode**>(tree_.arena.Allocate(bytes));
    std::memcpy(children, children_.data() + closing.firstChild, bytes);
    closing.element->SetChildren(children, static_cast<std::int32_t>(count));
    children_.resize(closing.firstChild);
  }

  // A piece of character data. What comes in a row makes one text.
  void Characters(std::string_view text) {
    char16_t* const units = tree_.arena.TextRoom(text.size());
    tree_.arena.LengthenText(static_cast<std::size_t>(Widen(text.data(), text.data() + text.size(), units) - units));
  }

  // A CDATA section or comment.
  void Leaf(NodeType type, std::string_view text) {
    if (depth_ == 0) return;  // the document keeps nothing but its element
    EndText();
    AddLeaf(type, StoreText(text));
  }

  void ProcessingInstruction(const xmlChar* target, std::string_view data) {
    if (depth_ == 0) return;
    EndText();
    const XmlName* const name = names_.Find(tree_, nullptr, target);
    const std::u16string_view text = StoreText(data);
    AddChild(new (tree_.arena.Allocate(sizeof(NamedNode))) NamedNode(name, kProcessingInstructionNode, text));
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
  struct OpenElement {
    ElementNode* element;
    std::size_t firstChild;        // of its children in `children_`
    std::size_t firstDeclaration;  // of its own in `declarations_`
  };

  struct Declaration {
    XmlName* name;
    std::u16string_view outerUri;  // what the name stood for around the element
  };

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

  bool Preserves() const { return depth_ != 0 && open_[depth_ - 1].element->preservesSpace; }

  void EndText() {
    const std::u16string_view text = tree_.arena.OpenText();
    if (text.empty()) return;
    if (!Preserves() && std::all_of(text.begin(), text.end(), [](char16_t unit) { return IsXmlSpace(unit); })) {
      tree_.arena.DropText();
      blank_ = true;
      return;
    }
    AddLeaf(kTextNode, tree_.arena.CloseText());
  }

  void AddLeaf(NodeType type, std::u16string_view text) {
    AddChild(new (tree_.arena.Allocate(sizeof(LeafNode))) LeafNode(&tree_.noName, type, text));
  }

  void AddChild(TreeNode* child) {
    child->SetBlankInFront(blank_);
    blank_ = false;
    children_.push_back(child);
  }

  std::u16string_view StoreText(std::string_view text) {
    Characters(text);
    return tree_.arena.CloseText();
  }

  // What was prepared of the start tag at whose end the library is; nothing for one without attributes.
  PreparedTag TakeTag() {
    const auto offset = static_cast<std::size_t>(Chars(parser_->input->cur) - text_.bytes);
    if (nextTag_ == text_.tags.size() || text_.tags[nextTag_].offset != offset) return {};
    return text_.tags[nextTag_++];
  }

  // The library's checks of names with a prefix, for the plain attributes: the prefix is declared, and no other prefix
  // of the same namespace makes another attribute's name the same.
  static bool PrefixesAreRight(const PreparedTag& tag, std::uint32_t others) {
    const NamedNode* const plainEnd = tag.attributes + tag.plain;
    for (const NamedNode* node = tag.attributes; node != plainEnd; ++node) {
      const XmlName& name = *node->Name();
      if (name.declaration == nullptr) continue;
      const std::u16string_view uri = name.declaration->uri;
      if (uri.empty()) return false;
      for (const NamedNode* next = node + 1; next != plainEnd + others; ++next) {
        const XmlName& other = *next->Name();
        if (other.declaration == nullptr || other.declaration == name.declaration) continue;
        if (other.Local() == name.Local() && other.declaration->uri == uri) return false;
      }
    }
    return true;
  }

  static bool IsPlain(const PreparedTag& tag, const XmlName* name) {
    const NamedNode* const end = tag.attributes + tag.plain;
    return std::any_of(static_cast<const NamedNode*>(tag.attributes), end,
                       [name](const NamedNode& node) { return node.Name() == name; });
  }

  const PreparedXml& text_;
  XmlTree& tree_;
  XmlFailure& failure_;
  xmlParserCtxtPtr parser_;
  LibraryNames names_;
  HRESULT status_ = kOk;
  OpenElement open_[kMaxElementDepth];
  int depth_ = 0;
  std::vector<TreeNode*> children_;  // of all open elements, one element's behind the other's
  bool blank_ = false;               // white space was dropped since the last child or tag
  std::size_t nextTag_ = 0;
  std::vector<Declaration> declarations_;  // of all open elements
};

// Calls the builder from the library, which no exception may pass through.
template <typename Work>
void Build(void* context, Work work) {
  auto* const builder = static_cast<TreeBuilder*>(context);
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
  Build(context, [&](TreeBuilder& builder) {
    builder.StartElement(localName, namespaceCount, namespaces, attributeCount, attributes);
  });
}

void OnEndElement(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  Build(context, [](TreeBuilder& builder) { builder.EndElement(); });
}

void OnCharacters(void* context, const xmlChar* text, int length) {
  Build(context, [&](TreeBuilder& builder) { builder.Characters(View(text, length)); });
}

void OnCData(void* context, const xmlChar* text, int length) {
  Build(context, [&](TreeBuilder& builder) { builder.Leaf(kCDataNode, View(text, length)); });
}

void OnComment(void* context, const xmlChar* text) {
  Build(context, [&](TreeBuilder& builder) { builder.Leaf(kCommentNode, View(text)); });
}

void OnProcessingInstruction(void* context, const xmlChar* target, const xmlChar* data) {
  Build(context, [&](TreeBuilder& builder) { builder.ProcessingInstruction(target, View(data)); });
}

void OnError(void* context, xmlErrorPtr error) {
  Build(context, [&](TreeBuilder& builder) { builder.Error(*error); });
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

}  // namespace

HRESULT ParseXml(const PreparedXml& text, XmlTree* tree, XmlFailure* failure) {
  if (text.size == 0) {
    failure->code = XML_ERR_DOCUMENT_EMPTY;
    failure->reason = u"The document is empty.";
    return kFalse;
  }
  xmlInitParser();
  const std::unique_ptr<xmlParserCtxt, ParserDeleter> parser(xmlNewParserCtxt());
  if (parser == nullptr || !SetInput(parser.get(), text)) return kOutOfMemory;

  // The encoding is that of the wide text, whatever the document says. References must be replaced, or the library
  // hands out "&#38;" for "&amp;"; nothing but the five and characters can be referred to without a document type.
  xmlCtxtUseOptions(parser.get(), XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_IGNORE_ENC | XML_PARSE_NOENT);
  TreeBuilder builder(text, tree, failure, parser.get());
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
