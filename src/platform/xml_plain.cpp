#include "platform/xml_plain.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "filter_limits.h"
#include "platform/unit_scan.h"
#include "platform/xml_builder.h"

namespace {

// A view of a plain literal would find out its length at run time.
using namespace std::string_view_literals;

// The library takes no value, comment, section or instruction of more than 1 000 000 000 bytes. A whole text of this
// length is none in any encoding, each line end as a reference; its other limits lie above.
constexpr std::size_t kMostUnits = 1'000'000'000 / 5;
constexpr std::size_t kMostNameUnits = 1000;

// Names with a prefix are compared with one another.
constexpr int kMostPrefixed = 32;

// No prefix may be declared for this, nor for that of "xml".
constexpr std::u16string_view kDeclarationNamespace = u"http://www.w3.org/2000/xmlns/"sv;

// The ASCII units of names without a prefix.
struct NameTable {
  constexpr NameTable() {
    for (char16_t unit = u'a'; unit <= u'z'; ++unit) starts[unit] = continues[unit] = true;
    for (char16_t unit = u'A'; unit <= u'Z'; ++unit) starts[unit] = continues[unit] = true;
    for (char16_t unit = u'0'; unit <= u'9'; ++unit) continues[unit] = true;
    starts[u'_'] = continues[u'_'] = true;
    continues[u'-'] = continues[u'.'] = true;
  }
  bool starts[128] = {};
  bool continues[128] = {};
};

constexpr NameTable kNames;

constexpr bool StartsName(char16_t unit) { return unit <= 0x7F && kNames.starts[unit]; }
constexpr bool ContinuesName(char16_t unit) { return unit <= 0x7F && kNames.continues[unit]; }

constexpr bool IsLetter(char16_t unit) { return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z'; }

// What a digit of any base counts; what is none counts more than any of them.
constexpr std::uint32_t DigitValue(char16_t unit) {
  if (IsLetter(unit)) return (unit | 0x20u) - u'a' + 10;
  return unit >= u'0' && unit <= u'9' ? unit - u'0' : 0xFF;
}

// Whether a document may hold this character. Halves of pairs are none.
constexpr bool IsCharacter(std::uint32_t c) {
  if (c < 0x20) return c == u'\t' || c == u'\n' || c == u'\r';
  return c < 0xD800 || (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

struct Entity {
  std::u16string_view reference;  // behind the '&'
  char16_t unit;
};

constexpr Entity kEntities[] = {
    {u"amp;"sv, u'&'}, {u"quot;"sv, u'"'}, {u"lt;"sv, u'<'}, {u"gt;"sv, u'>'}, {u"apos;"sv, u'\''},
};

// The searches below look at a block of units at once and return a bit for each, the lowest for the first.
constexpr std::size_t kBlock = 16;

#ifdef __SSE2__

// Units that are no bytes become 0xFF or, from 0x8000 on, 0.
__m128i LoadBytes(const char16_t* from) {
  return _mm_packus_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)),
                          _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + kBlock / 2)));
}

// The bytes up to `last`, and those that are one of the others.
template <char... kOthers>
unsigned FindBytes(__m128i bytes, char last) {
  __m128i found = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(last)), bytes);
  ((found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(kOthers)))), ...);
  return static_cast<unsigned>(_mm_movemask_epi8(found));
}

// Where a scan may stop: the units named and what is no character. Line ends, tabs and units from 0x8000 on are among
// them and are for the caller to judge.
template <char... kStops>
unsigned FindStops(const char16_t* from) {
  return FindBytes<kStops...>(LoadBytes(from), 0x1F);
}

// What ends a name in a document without mistakes; other units may be among the name's.
unsigned FindNameEnds(const char16_t* from) { return FindBytes<'=', '>', '/'>(LoadBytes(from), ' '); }

unsigned FindNoBlanks(const char16_t* from) {
  const __m128i bytes = LoadBytes(from);
  const auto equal = [bytes](char byte) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte)); };
  const __m128i blanks = _mm_or_si128(_mm_or_si128(equal(' '), equal('\n')), _mm_or_si128(equal('\t'), equal('\r')));
  return static_cast<unsigned>(_mm_movemask_epi8(blanks)) ^ 0xFFFF;
}

#else

template <class Predicate>
unsigned FindUnits(const char16_t* from, Predicate isFound) {
  unsigned found = 0;
  for (std::size_t i = 0; i < kBlock; ++i) {
    if (isFound(from[i])) found |= 1u << i;
  }
  return found;
}

template <char... kStops>
unsigned FindStops(const char16_t* from) {
  return FindUnits(from, [](char16_t unit) {
    return unit < u' ' || !IsCharacter(unit) || (... || (unit == static_cast<char16_t>(kStops)));
  });
}

unsigned FindNameEnds(const char16_t* from) {
  return FindUnits(from, [](char16_t unit) { return !ContinuesName(unit) && unit != u':'; });
}

unsigned FindNoBlanks(const char16_t* from) {
  return FindUnits(from, [](char16_t unit) { return !IsXmlSpace(unit); });
}

#endif

// The reader. Each `Read` function stands at the first unit of what it reads and leaves `in_` behind the last; it
// returns false when the document is the library's.
class PlainReader {
 public:
  PlainReader(std::u16string_view text, XmlTree* tree)
      : tree_(*tree), builder_(tree), in_(text.data()), end_(text.data() + text.size()) {}

  bool ReadDocument() {
    if (!ReadXmlDeclaration()) return false;
    while (in_ != end_) {
      if (*in_ != u'<' && !ReadText()) return false;
      if (in_ != end_ && !ReadMarkup()) return false;
    }
    return builder_.Depth() == 0 && tree_.root != nullptr;
  }

 private:
  struct OpenElement {
    const XmlName* name;           // as it stands in the start tag
    std::size_t firstDeclaration;  // of its own in `declarations_`
  };

  struct Declaration {
    XmlName* name;
    std::u16string_view outerUri;  // what the name stood for around the element
  };

  // <?xml version="1.0" encoding="UTF-8" standalone="no"?>, which a document need not have.
  bool ReadXmlDeclaration() {
    if (!Skip(u"<?xml"sv)) return true;
    if (!SkipBlanks() || !Skip(u"version"sv) || !ReadQuoted(&PlainReader::SkipVersion)) return false;
    bool blanks = SkipBlanks();
    if (blanks && Skip(u"encoding"sv)) {
      if (!ReadQuoted(&PlainReader::SkipEncoding)) return false;
      blanks = SkipBlanks();
    }
    if (blanks && Skip(u"standalone"sv)) {
      if (!ReadQuoted(&PlainReader::SkipYesOrNo)) return false;
      SkipBlanks();
    }
    return Skip(u"?>"sv);
  }

  // An equals sign and what `skip` takes between quotes.
  bool ReadQuoted(bool (PlainReader::*skip)()) {
    if (!SkipEquals() || in_ == end_ || !IsQuote(*in_)) return false;
    const char16_t quote = *in_++;
    return (this->*skip)() && in_ != end_ && *in_++ == quote;
  }

  bool SkipVersion() { return Skip(u"1.0"sv); }
  bool SkipYesOrNo() { return Skip(u"yes"sv) || Skip(u"no"sv); }

  // The text is wide already, whatever the encoding is called.
  bool SkipEncoding() {
    if (in_ == end_ || !IsLetter(*in_)) return false;
    while (in_ != end_ && ContinuesName(*in_)) ++in_;
    return true;
  }

  bool ReadMarkup() {
    if (end_ - in_ < 2) return false;
    switch (in_[1]) {
      case u'/':
        return ReadEndTag();
      case u'?':
        return ReadInstruction();
      case u'!':
        return Skip(u"<!--"sv) ? ReadComment() : Skip(u"<![CDATA["sv) && ReadCData();
      default:
        return ReadStartTag();
    }
  }

  bool ReadStartTag() {
    if (builder_.Depth() == kMaxElementDepth || (builder_.Depth() == 0 && tree_.root != nullptr)) return false;
    ++in_;
    XmlName* const name = ReadName();
    if (name == nullptr) return false;
    ++tagNumber_;
    const OpenElement element = {name, declarations_.size()};
    prefixed_ = 0;
    for (int attributes = 0;; ++attributes) {
      const bool blanks = SkipBlanks();
      if (in_ == end_) return false;
      if (*in_ == u'>' || *in_ == u'/') break;
      if (!blanks || attributes == kMaxAttributes || !ReadAttribute()) return false;
    }
    const bool empty = *in_ == u'/';
    if (!Skip(empty ? u"/>"sv : u">"sv) || (prefixed_ != 0 && !PrefixesAreRight())) return false;
    const XmlName* const localName = ElementName(name);
    if (localName == nullptr) return false;
    builder_.StartElement(localName);
    if (empty) {
      EndElement(element);
    } else {
      open_[builder_.Depth() - 1] = element;
    }
    return true;
  }

  bool ReadEndTag() {
    if (builder_.Depth() == 0) return false;
    const OpenElement& element = open_[builder_.Depth() - 1];
    in_ += 2;
    if (!Skip(element.name->full)) return false;
    SkipBlanks();
    if (in_ == end_ || *in_ != u'>') return false;
    ++in_;
    EndElement(element);
    return true;
  }

  void EndElement(const OpenElement& element) {
    builder_.EndElement();
    while (declarations_.size() != element.firstDeclaration) {
      declarations_.back().name->uri = declarations_.back().outerUri;
      declarations_.pop_back();
    }
  }

  bool ReadAttribute() {
    XmlName* const name = ReadName();
    if (name == nullptr || !SkipEquals() || in_ == end_ || !IsQuote(*in_)) return false;
    if (name->lastTag == tagNumber_) return false;
    name->lastTag = tagNumber_;
    const char16_t quote = *in_++;
    std::u16string_view value;
    if (!(quote == u'"' ? ReadPiece<'"', '<', '&'>(&value) : ReadPiece<'\'', '<', '&'>(&value))) return false;
    if (in_ == end_ || *in_ != quote) return false;
    ++in_;
    if (name->declares) return Declare(name, value);
    builder_.AddAttribute(name, value);
    if (name->declaration == nullptr) return true;
    prefixedNames_[prefixed_++] = name;
    return prefixed_ != kMostPrefixed;
  }

  bool Declare(XmlName* name, std::u16string_view uri) {
    // What is said of every document is not kept.
    if (name->full == u"xmlns:xml"sv) return uri == kXmlNamespace;
    builder_.AddAttribute(name, uri);
    if (uri == kXmlNamespace || uri == kDeclarationNamespace) return false;
    if (name->localOffset == 0) return true;  // what has no prefix needs no declaration
    if (uri.empty() || name->Local() == u"xmlns"sv) return false;
    declarations_.push_back({name, name->uri});
    name->uri = uri;
    return true;
  }

  // Whether the prefixes of the tag's attributes are declared, and no two of one namespace make two names the same.
  bool PrefixesAreRight() const {
    for (int i = 0; i < prefixed_; ++i) {
      const XmlName& name = *prefixedNames_[i];
      const std::u16string_view uri = name.declaration->uri;
      if (uri.empty()) return false;
      for (int j = i + 1; j < prefixed_; ++j) {
        const XmlName& other = *prefixedNames_[j];
        if (other.declaration == name.declaration) continue;
        if (other.Local() == name.Local() && other.declaration->uri == uri) return false;
      }
    }
    return true;
  }

  // The name that the element of a tag has in the tree; null if the tag's prefix stands for nothing.
  const XmlName* ElementName(XmlName* name) {
    if (name->localOffset == 0) return name;
    if (name->declaration == nullptr || name->declaration->uri.empty()) return nullptr;
    if (name->local == nullptr) name->local = KnownName(name->Local());
    return name->local;
  }

  // A name with one prefix or none; null for what is not one, not ASCII, or too long.
  XmlName* ReadName() {
    const char16_t* const start = in_;
    unsigned ends = 0;
    for (; end_ - in_ >= static_cast<std::ptrdiff_t>(kBlock); in_ += kBlock) {
      ends = FindNameEnds(in_);
      if (ends != 0) break;
    }
    if (ends != 0) {
      in_ += std::countr_zero(ends);
    } else {
      while (in_ != end_ && (ContinuesName(*in_) || *in_ == u':')) ++in_;
    }
    return KnownName({start, static_cast<std::size_t>(in_ - start)});
  }

  // The name of this text; null if it is none. Nearly all are one of a few, which are found by some units and length.
  XmlName* KnownName(std::u16string_view text) {
    if (text.empty()) return nullptr;
    const std::size_t mixed = text.front() + 4u * text.back() + 8u * text[text.size() / 2] + 32 * text.size();
    XmlName*& recent = recent_[mixed % std::size(recent_)];
    if (recent != nullptr && IsSameText(recent->full, text)) return recent;
    const XmlNames::Key key = tree_.names.KeyOf(text);
    XmlName* known = tree_.names.Find(key);
    if (known == nullptr) {
      std::size_t localOffset = 0;
      if (text.size() > kMostNameUnits || !IsName(text, &localOffset)) return nullptr;
      known = tree_.names.Add(tree_.arena, key, static_cast<std::uint32_t>(localOffset));
    }
    return recent = known;
  }

  static bool IsName(std::u16string_view text, std::size_t* localOffset) {
    bool starts = true;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == u':' && !starts && *localOffset == 0) {
        *localOffset = i + 1;
        starts = true;
      } else if (starts ? StartsName(text[i]) : ContinuesName(text[i])) {
        starts = false;
      } else {
        return false;
      }
    }
    return !starts;
  }

  // Character data, up to the next tag or the end.
  bool ReadText() {
    const char16_t* const start = in_;
    const bool blanks = SkipBlanks();
    const bool alone = in_ == end_ || *in_ == u'<';
    if (builder_.Depth() == 0) return blanks && alone;
    if (alone && builder_.DropsBlanks()) return true;
    in_ = start;
    std::u16string_view text;
    if (!ReadPiece<'<', '&', ']'>(&text)) return false;
    if (!IsBlank(text) || !builder_.DropsBlanks()) builder_.AddLeaf(kTextNode, text);
    return true;
  }

  bool ReadComment() {
    const char16_t* const start = in_;
    hasReturns_ = false;
    for (;;) {
      if (!Scan<'-'>() || end_ - in_ < 3) return false;
      if (in_[1] == u'-') break;
      ++in_;
    }
    if (in_[2] != u'>') return false;
    AddLeaf(kCommentNode, start);
    in_ += 3;
    return true;
  }

  bool ReadCData() {
    if (builder_.Depth() == 0) return false;
    const char16_t* const start = in_;
    hasReturns_ = false;
    for (;;) {
      if (!Scan<']'>() || end_ - in_ < 3) return false;
      if (in_[1] == u']' && in_[2] == u'>') break;
      ++in_;
    }
    AddLeaf(kCDataNode, start);
    in_ += 3;
    return true;
  }

  bool ReadInstruction() {
    in_ += 2;
    const char16_t* start = in_;
    while (in_ != end_ && ContinuesName(*in_)) ++in_;
    const std::u16string_view target(start, static_cast<std::size_t>(in_ - start));
    const XmlName* const name = KnownName(target);
    const bool reserved =
        target.size() >= 3 && (target[0] | 0x20) == u'x' && (target[1] | 0x20) == u'm' && (target[2] | 0x20) == u'l';
    if (name == nullptr || (reserved && target != u"xml-stylesheet"sv)) return false;
    const bool blanks = SkipBlanks();
    start = in_;
    hasReturns_ = false;
    for (;;) {
      if (!Scan<'?'>() || end_ - in_ < 2) return false;
      if (in_[1] == u'>') break;
      ++in_;
    }
    if (!blanks && in_ != start) return false;
    if (builder_.Depth() != 0) builder_.AddInstruction(name, TextSince(start));
    in_ += 2;
    return true;
  }

  // The leaf that ends here; the document keeps none but in its element.
  void AddLeaf(NodeType type, const char16_t* start) {
    if (builder_.Depth() != 0) builder_.AddLeaf(type, TextSince(start));
  }

  // An attribute value or a text, up to one of the stops, with its references replaced.
  template <char... kStops>
  bool ReadPiece(std::u16string_view* text) {
    const char16_t* start = in_;
    bool isOpen = false;  // in the arena, for there are references
    hasReturns_ = false;
    for (;;) {
      if (!Scan<kStops...>()) return false;
      if (in_ != end_ && *in_ == u'&') {
        tree_.arena.AddWithoutReturns({start, static_cast<std::size_t>(in_ - start)});
        if (!ReadReference()) return false;
        start = in_;
        isOpen = true;
      } else if (in_ != end_ && *in_ == u']') {
        if (Skip(u"]]>"sv)) return false;
        ++in_;
      } else {
        break;
      }
    }
    if (isOpen) {
      tree_.arena.AddWithoutReturns({start, static_cast<std::size_t>(in_ - start)});
      *text = tree_.arena.CloseText();
    } else {
      *text = TextSince(start);
    }
    return true;
  }

  // A reference to a character or one of the five entities, which goes into the open text.
  bool ReadReference() {
    ++in_;
    for (const Entity& entity : kEntities) {
      if (!Skip(entity.reference)) continue;
      AddUnit(entity.unit);
      return true;
    }
    if (!Skip(u"#"sv)) return false;
    const std::uint32_t base = Skip(u"x"sv) ? 16 : 10;
    std::uint32_t c = 0;
    for (int digits = 0; in_ != end_; ++in_, ++digits) {
      if (*in_ == u';' && digits != 0) break;
      const std::uint32_t digit = DigitValue(*in_);
      if (digit >= base) return false;
      c = c * base + digit;
      if (c > 0x10FFFF) return false;
    }
    if (!Skip(u";"sv) || !IsCharacter(c)) return false;
    if (c >= 0x10000) {
      AddUnit(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
      c = 0xDC00 + (c & 0x3FF);
    }
    AddUnit(static_cast<char16_t>(c));
    return true;
  }

  void AddUnit(char16_t unit) {
    *tree_.arena.TextRoom(1) = unit;
    tree_.arena.LengthenText(1);
  }

  // What was scanned from here on.
  std::u16string_view TextSince(const char16_t* start) {
    const std::u16string_view text(start, static_cast<std::size_t>(in_ - start));
    if (!hasReturns_) return text;
    tree_.arena.AddWithoutReturns(text);
    return tree_.arena.CloseText();
  }

  // Goes on to one of the stops or the end, and remembers carriage returns; false at what is no character or a half.
  template <char... kStops>
  bool Scan() {
    while (end_ - in_ >= static_cast<std::ptrdiff_t>(kBlock)) {
      for (unsigned stops = FindStops<kStops...>(in_); stops != 0; stops &= stops - 1) {
        const char16_t* const unit = in_ + std::countr_zero(stops);
        if (!IsStop<kStops...>(*unit)) continue;
        in_ = unit;
        return IsCharacter(*unit);
      }
      in_ += kBlock;
    }
    while (in_ != end_ && !IsStop<kStops...>(*in_)) ++in_;
    return in_ == end_ || IsCharacter(*in_);
  }

  template <char... kStops>
  bool IsStop(char16_t unit) {
    if (unit == u'\r') hasReturns_ = true;
    return !IsCharacter(unit) || (... || (unit == static_cast<char16_t>(kStops)));
  }

  bool Skip(std::u16string_view text) {
    if (static_cast<std::size_t>(end_ - in_) < text.size() || !AreSameUnits(in_, text.data(), text.size()))
      return false;
    in_ += text.size();
    return true;
  }

  // Returns whether there were any.
  bool SkipBlanks() {
    const char16_t* const start = in_;
    while (end_ - in_ >= static_cast<std::ptrdiff_t>(kBlock)) {
      const unsigned found = FindNoBlanks(in_);
      if (found != 0) {
        in_ += std::countr_zero(found);
        return in_ != start;
      }
      in_ += kBlock;
    }
    while (in_ != end_ && IsXmlSpace(*in_)) ++in_;
    return in_ != start;
  }

  bool SkipEquals() {
    if (in_ != end_ && *in_ != u'=') SkipBlanks();
    if (in_ == end_ || *in_ != u'=') return false;
    ++in_;
    if (in_ != end_ && !IsQuote(*in_)) SkipBlanks();
    return true;
  }

  static bool IsQuote(char16_t unit) { return unit == u'"' || unit == u'\''; }

  static bool IsBlank(std::u16string_view text) { return std::all_of(text.begin(), text.end(), IsXmlSpace); }

  XmlTree& tree_;
  XmlTreeBuilder builder_;
  const char16_t* in_;
  const char16_t* const end_;
  bool hasReturns_ = false;  // since the start of the piece at hand
  std::uint32_t tagNumber_ = 0;
  XmlName* recent_[256] = {};
  OpenElement open_[kMaxElementDepth];
  std::vector<Declaration> declarations_;        // of all open elements
  const XmlName* prefixedNames_[kMostPrefixed];  // of the tag at hand
  int prefixed_ = 0;
};

}  // namespace

bool ReadPlainXml(std::u16string_view text, XmlTree* tree) {
  return text.size() <= kMostUnits && PlainReader(text, tree).ReadDocument();
}
