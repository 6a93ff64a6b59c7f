#include "tools/report/svg_document.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <algorithm>
#include <charconv>
#include <memory>

#include "filter_limits.h"
#include "headless_host/text.h"
#include "tools/document_bytes.h"

namespace {

constexpr std::string_view kSvgNamespace = "http://www.w3.org/2000/svg";
constexpr std::string_view kWhiteSpace = " \t\r\n";

std::string_view View(const xmlChar* text) {
  return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The parser is given the text that comes out of the narrow code page, as UTF-8; this leads back to the file's bytes.
std::string FileBytes(std::string_view parsed) {
  if (IsAscii(parsed)) return std::string(parsed);
  return headless::NarrowFromText(headless::TextFromUtf8(parsed)).value_or(std::string(parsed));
}

// An attribute's value as the filter has it: line ends become line feeds, and nothing else becomes a blank.
std::string ValueOf(std::string_view written) {
  std::string value;
  value.reserve(written.size());
  for (std::size_t at = 0; at < written.size(); ++at) {
    const char c = written[at];
    const std::size_t end = c == '&' ? written.find(';', at) : written.npos;
    if (c == '\r') {
      if (at + 1 >= written.size() || written[at + 1] != '\n') value.push_back('\n');
    } else if (end == written.npos) {
      value.push_back(c);
    } else {
      const std::string_view name = written.substr(at + 1, end - at - 1);
      if (name.starts_with('#')) {
        const bool hexadecimal = name.size() > 1 && name[1] == 'x';
        std::uint32_t unit = 0;
        std::from_chars(name.data() + (hexadecimal ? 2 : 1), name.data() + name.size(), unit, hexadecimal ? 16 : 10);
        std::u16string text;
        if (unit > 0xFFFF) text.push_back(static_cast<char16_t>(0xD7C0 + (unit >> 10)));
        text.push_back(static_cast<char16_t>(unit > 0xFFFF ? 0xDC00 + (unit & 0x3FF) : unit));
        headless::AppendUtf8(text, value);
      } else {
        value.push_back(name == "lt" ? '<' : name == "gt" ? '>' : name == "amp" ? '&' : name == "quot" ? '"' : '\'');
      }
      at = end;
    }
  }
  return value;
}

// Walks along the start tags of a well-formed text beside the parser, which knows the line of a tag's end only.
class TagScanner {
 public:
  TagScanner(std::string_view text, std::string_view original) : text_(text), original_(original) {}

  struct Attribute {
    std::string_view name, value;  // as they are written
    int line;
  };

  // Goes to the next start tag.
  void Next() {
    attributes_.clear();
    nextAttribute_ = 0;
    while (true) {
      GoTo(text_.find('<', at_));
      if (at_ >= text_.size()) return;
      const std::string_view rest = text_.substr(at_);
      if (rest.starts_with("<!--")) {
        GoBehind("-->", 4);
      } else if (rest.starts_with("<![CDATA[")) {
        GoBehind("]]>", 9);
      } else if (rest.starts_with("<?")) {
        GoBehind("?>", 2);
      } else if (rest.starts_with("</") || rest.starts_with("<!")) {
        GoTo(at_ + 2);
      } else {
        break;
      }
    }
    begin = at_;
    line = line_;
    ReadTag();
    end = at_;
  }

  // The one of this name. The parser hands the attributes over in their order, with the namespace declarations left
  // out.
  Attribute Find(std::string_view name) {
    while (nextAttribute_ < attributes_.size()) {
      const Attribute& attribute = attributes_[nextAttribute_++];
      if (attribute.name == name) return attribute;
    }
    return {name, {}, line};
  }

  std::size_t begin = 0, end = 0;
  int line = 1;

 private:
  static bool IsSpace(char c) { return kWhiteSpace.find(c) != kWhiteSpace.npos; }

  void GoTo(std::size_t to) {
    to = std::min(to, text_.size());
    for (; at_ < to; ++at_) {
      // The original, since blanking a DOCTYPE takes line ends away.
      const char c = original_[at_];
      const bool alone = c == '\r' && (at_ + 1 >= original_.size() || original_[at_ + 1] != '\n');
      if (c == '\n' || alone) ++line_;
    }
  }
  void GoBehind(std::string_view mark, std::size_t skip) {
    const std::size_t found = text_.find(mark, at_ + skip);
    GoTo(found == text_.npos ? text_.size() : found + mark.size());
  }

  // Up to the `>` of the tag.
  void ReadTag() {
    while (at_ < text_.size() && !IsSpace(text_[at_]) && text_[at_] != '>' && text_[at_] != '/') GoTo(at_ + 1);
    while (at_ < text_.size()) {
      const char c = text_[at_];
      if (c == '>') return;
      if (IsSpace(c) || c == '/') {
        GoTo(at_ + 1);
        continue;
      }
      const std::size_t nameBegin = at_;
      const int nameLine = line_;
      while (at_ < text_.size() && !IsSpace(text_[at_]) && text_[at_] != '=' && text_[at_] != '>') GoTo(at_ + 1);
      const std::string_view name = text_.substr(nameBegin, at_ - nameBegin);
      while (at_ < text_.size() && (IsSpace(text_[at_]) || text_[at_] == '=')) GoTo(at_ + 1);
      if (at_ < text_.size() && (text_[at_] == '"' || text_[at_] == '\'')) {
        const std::size_t quote = text_.find(text_[at_], at_ + 1);
        attributes_.push_back({name, text_.substr(at_ + 1, quote - at_ - 1), nameLine});
        GoTo(quote == text_.npos ? text_.size() : quote + 1);
      } else {
        return;
      }
    }
  }

  std::string_view text_, original_;
  std::vector<Attribute> attributes_;  // of the tag
  std::size_t nextAttribute_ = 0;
  std::size_t at_ = 0;
  int line_ = 1;
};

struct Builder {
  SvgDocument& document;
  TagScanner scanner;
  xmlParserCtxtPtr parser = nullptr;
  int current = -1;
  int depth = 0;
  bool failed = false;

  void Stop() {
    failed = true;
    xmlStopParser(parser);
  }

  int Add(NodeKind kind) {
    const int index = static_cast<int>(document.nodes.size());
    SvgNode& node = document.nodes.emplace_back();
    node.kind = kind;
    node.parent = current;
    node.line = xmlSAX2GetLineNumber(parser);
    if (current >= 0) {
      SvgNode& parent = document.nodes[static_cast<std::size_t>(current)];
      parent.children.push_back(index);
      node.preserve = parent.preserve;
    }
    return index;
  }

  SvgNode& At(int index) { return document.nodes[static_cast<std::size_t>(index)]; }

  void AddText(std::string_view text) {
    if (current < 0) return;
    const std::vector<int>& siblings = At(current).children;
    if (siblings.empty() || At(siblings.back()).kind != NodeKind::kText) Add(NodeKind::kText);
    At(At(current).children.back()).text.append(text);
  }
};

Builder& BuilderOf(void* context) { return *static_cast<Builder*>(static_cast<xmlParserCtxtPtr>(context)->_private); }

void StartElement(void* context, const xmlChar* name, const xmlChar*, const xmlChar* uri, int, const xmlChar**,
                  int attributeCount, int, const xmlChar** attributes) {
  Builder& builder = BuilderOf(context);
  if (++builder.depth > kMaxElementDepth) {
    builder.Stop();
    return;
  }
  builder.scanner.Next();
  const int index = builder.Add(NodeKind::kElement);
  SvgNode& node = builder.At(index);
  node.name = FileBytes(View(name));
  node.foreign = uri != nullptr && View(uri) != kSvgNamespace;
  node.line = builder.scanner.line;
  node.attributes.reserve(static_cast<std::size_t>(attributeCount));
  for (int i = 0; i < attributeCount; ++i) {
    const xmlChar** one = attributes + 5 * i;
    SvgAttribute attribute;
    attribute.name =
        one[1] == nullptr ? std::string(View(one[0])) : std::string(View(one[1])) + ":" + std::string(View(one[0]));
    const TagScanner::Attribute written = builder.scanner.Find(attribute.name);
    attribute.value = ValueOf(written.value);
    attribute.line = written.line;
    if (attribute.name == "xml:space" && attribute.value == "preserve") node.preserve = true;
    if (attribute.name == "xml:space" && attribute.value == "default") node.preserve = false;
    node.attributes.push_back(std::move(attribute));
  }
  if (index == 0) {
    builder.document.rootTagBegin = builder.scanner.begin;
    builder.document.rootTagEnd = builder.scanner.end;
  }
  builder.current = index;
}

void EndElement(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  Builder& builder = BuilderOf(context);
  --builder.depth;
  if (builder.current >= 0) builder.current = builder.At(builder.current).parent;
}

void Characters(void* context, const xmlChar* text, int length) {
  BuilderOf(context).AddText({reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
}

void Comment(void* context, const xmlChar*) {
  Builder& builder = BuilderOf(context);
  if (builder.current >= 0) builder.Add(NodeKind::kOther);
}

void Instruction(void* context, const xmlChar* target, const xmlChar*) {
  Builder& builder = BuilderOf(context);
  if (builder.current >= 0) {
    builder.At(builder.Add(NodeKind::kOther)).name = View(target);
  } else if (View(target) == "xml-stylesheet") {
    builder.document.instructions.push_back(xmlSAX2GetLineNumber(context));
  }
}

xmlSAXHandler Handler() {
  xmlSAXHandler handler = {};
  handler.initialized = XML_SAX2_MAGIC;
  handler.serror = [](void* context, xmlErrorPtr error) {
    // Any text is a namespace, and a version other than 1.0 is only warned of.
    if (error->code == XML_WAR_NS_URI) return;
    if (error->level != XML_ERR_WARNING || error->code == XML_WAR_UNKNOWN_VERSION) BuilderOf(context).failed = true;
  };
  handler.startElementNs = StartElement;
  handler.endElementNs = EndElement;
  handler.characters = Characters;
  handler.cdataBlock = Characters;
  handler.comment = Comment;
  handler.processingInstruction = Instruction;
  handler.internalSubset = [](void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    BuilderOf(context).Stop();
  };
  return handler;
}

struct ParserDeleter {
  void operator()(xmlParserCtxtPtr parser) const {
    if (parser->myDoc != nullptr) xmlFreeDoc(parser->myDoc);
    xmlFreeParserCtxt(parser);
  }
};

// Takes out the runs of white space that the filter's tree does not hold, and brings texts back to the file's bytes.
void FinishTexts(SvgDocument& document) {
  for (SvgNode& node : document.nodes) {
    std::erase_if(node.children, [&](int child) {
      const SvgNode& text = document.nodes[static_cast<std::size_t>(child)];
      return text.kind == NodeKind::kText && !text.preserve &&
             text.text.find_first_not_of(kWhiteSpace) == std::string::npos;
    });
  }
  for (SvgNode& node : document.nodes) {
    if (!IsAscii(node.text)) node.text = FileBytes(node.text);
  }
}

}  // namespace

const SvgAttribute* SvgNode::Find(std::string_view attribute) const {
  for (const SvgAttribute& one : attributes) {
    if (one.name == attribute) return one.value.empty() ? nullptr : &one;
  }
  return nullptr;
}

std::string_view SvgNode::Value(std::string_view attribute) const {
  const SvgAttribute* found = Find(attribute);
  return found == nullptr ? std::string_view() : found->value;
}

int SvgDocument::LineAt(std::size_t offset) const {
  return 1 + static_cast<int>(std::count(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(offset), '\n'));
}

SvgDocument ParseSvgDocument(std::string bytes) {
  SvgDocument document;
  bytes.resize(std::min(bytes.find('\0'), bytes.size()));
  document.bytes = std::move(bytes);
  std::string text = document.bytes;
  BlankDoctype(text);
  document.refused = true;
  if (MostAttributes(text) > kMaxAttributes) return document;

  const std::string utf8 = IsAscii(text) ? text : headless::Utf8FromText(headless::TextFromNarrow(text));
  if (utf8.size() > static_cast<std::size_t>(kMaxDocumentBytes)) return document;
  const std::unique_ptr<xmlParserCtxt, ParserDeleter> parser(
      xmlCreateMemoryParserCtxt(utf8.data(), static_cast<int>(utf8.size())));
  if (parser == nullptr) return document;
  Builder builder{document, TagScanner(text, document.bytes), parser.get()};
  parser->_private = &builder;
  xmlCtxtUseOptions(parser.get(), XML_PARSE_NONET | XML_PARSE_IGNORE_ENC | XML_PARSE_HUGE);
  *parser->sax = Handler();
  xmlParseDocument(parser.get());
  if (builder.failed || parser->wellFormed == 0 || document.nodes.empty()) return document;
  if (parser->version != nullptr && View(parser->version) != "1.0") return document;
  FinishTexts(document);
  document.refused = document.Root().children.empty();
  return document;
}
