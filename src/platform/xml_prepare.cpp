#include "platform/xml_prepare.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "filter_limits.h"

namespace {

constexpr std::size_t kBlock = 16;

// What one step of a scan writes at most: a block, or a unit at the end of one as three bytes or as a reference.
constexpr std::size_t kRoom = 4 * kBlock;

// Few documents have more tags.
constexpr std::size_t kUnitsPerTag = 64;

// NULs behind the text, for the library to look ahead over.
constexpr std::size_t kPadding = 8;

constexpr char16_t kByteOrderMark = 0xFEFF;

// Names with a prefix are compared with one another.
constexpr std::uint32_t kMostPrefixed = 32;

// Where a run of units stands; each place has its own units at which the run stops.
enum Place : unsigned char { kContent = 1, kTagBody = 2, kDoubleQuoted = 4, kSingleQuoted = 8, kUpToAngle = 16 };

constexpr unsigned char kQuoted = kDoubleQuoted | kSingleQuoted;
constexpr unsigned char kEverywhere = 0xFF;

// For each ASCII unit the places in which a run stops at it.
struct StopTable {
  constexpr StopTable() {
    for (int unit = 0; unit < 0x20; ++unit) places[unit] = kQuoted;
    places[0] = kEverywhere;
    places[u'\r'] = kEverywhere;
    places[u'<'] = kContent | kTagBody | kQuoted;
    places[u'>'] = kTagBody | kUpToAngle;
    places[u'&'] = kQuoted;
    places[u'"'] = kTagBody | kDoubleQuoted;
    places[u'\''] = kTagBody | kSingleQuoted;
  }
  unsigned char places[128] = {};
};

constexpr StopTable kStops;

constexpr bool StopsAt(Place place, char16_t unit) { return unit > 0x7F || (kStops.places[unit] & place) != 0; }

constexpr bool IsBreak(char16_t unit) { return unit == u'\n' || unit == u'\t' || unit == u'\r'; }

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

// A bit for each unit of a block of a quoted value, the lowest for the first: those that end what is plain, and the
// carriage returns.
struct ValueBlock {
  unsigned stops;
  unsigned returns;
};

// Copies a block and returns a bit for each unit at which a run in this place stops, the lowest for the first.
#ifdef __SSE2__
template <Place place>
unsigned FindStops(const char16_t* from, char* to) {
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + kBlock / 2));
  // Units that are no bytes become 0xFF or, from 0x8000 on, 0. A run stops at either everywhere.
  const __m128i bytes = _mm_packus_epi16(low, high);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
  // By their sign, bytes beyond ASCII are less than the lowest that does not stop.
  __m128i stops = _mm_cmplt_epi8(bytes, _mm_set1_epi8((place & kQuoted) != 0 ? 0x20 : 1));
  const auto stopAt = [&](char byte) { stops = _mm_or_si128(stops, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte))); };
  if constexpr ((place & (kContent | kTagBody | kQuoted)) != 0) stopAt('<');
  if constexpr ((place & (kTagBody | kUpToAngle)) != 0) stopAt('>');
  if constexpr ((place & kQuoted) != 0) stopAt('&');
  if constexpr ((place & kQuoted) == 0) stopAt('\r');
  if constexpr ((place & (kTagBody | kDoubleQuoted)) != 0) stopAt('"');
  if constexpr ((place & (kTagBody | kSingleQuoted)) != 0) stopAt('\'');
  return static_cast<unsigned>(_mm_movemask_epi8(stops));
}

template <Place place>
ValueBlock FindValueEnd(const char16_t* from) {
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + kBlock / 2));
  const __m128i bytes = _mm_packus_epi16(low, high);
  const auto equal = [bytes](char byte) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte)); };
  const __m128i returns = equal('\r');
  const __m128i breaks = _mm_or_si128(_mm_or_si128(equal('\n'), equal('\t')), returns);
  const __m128i codes = _mm_andnot_si128(breaks, _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20)));
  const __m128i signs = _mm_or_si128(_mm_or_si128(equal('<'), equal('&')), equal(place == kDoubleQuoted ? '"' : '\''));
  return {static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(codes, signs))),
          static_cast<unsigned>(_mm_movemask_epi8(returns))};
}
#else
template <Place place>
unsigned FindStops(const char16_t* from, char* to) {
  unsigned stops = 0;
  for (std::size_t i = 0; i < kBlock; ++i) {
    to[i] = static_cast<char>(from[i]);
    if (StopsAt(place, from[i])) stops |= 1u << i;
  }
  return stops;
}

template <Place place>
ValueBlock FindValueEnd(const char16_t* from) {
  ValueBlock block = {};
  for (std::size_t i = 0; i < kBlock; ++i) {
    if (StopsAt(place, from[i]) && !IsBreak(from[i])) block.stops |= 1u << i;
    if (from[i] == u'\r') block.returns |= 1u << i;
  }
  return block;
}
#endif

// The scan. Each `Copy` function reads from `in_` and writes to `out_`; it returns false when the scan is over before
// its time, `status_` telling why.
class Preparation {
 public:
  Preparation(std::u16string_view text, XmlTree* tree, PreparedXml* prepared)
      : prepared_(*prepared), tree_(*tree), in_(text.data()), end_(text.data() + text.size()) {}

  PrepareStatus Run() {
    const std::size_t units = static_cast<std::size_t>(end_ - in_);
    prepared_.tags.reserve(units / kUnitsPerTag);
    if (Grow(units + units / 16 + kRoom) && CopyDocument()) Finish();
    return status_;
  }

 private:
  bool CopyDocument() {
    // The library would pass over a byte order mark.
    if (in_ != end_ && *in_ == kByteOrderMark) return Refuse(u"A byte order mark stands in front of the document.");
    while (in_ != end_) {
      if (!CopyRun<kContent>()) return false;
      if (in_ != end_ && !CopyMarkup()) return false;
    }
    return true;
  }

  bool CopyMarkup() {
    if (end_ - in_ < 2 || (in_[1] != u'!' && in_[1] != u'?')) return CopyTag();
    if (StartsWith(u"<!--")) return CopyThrough(4, u"-->");
    if (StartsWith(u"<![CDATA[")) return CopyThrough(9, u"]]>");
    if (StartsWith(u"<?")) return CopyThrough(2, u"?>");
    return Refuse(u"A document type declaration is not allowed.");
  }

  // Copies an opener of so many units and all up to and including `closer`, which ends in '>'.
  bool CopyThrough(int openerLength, std::u16string_view closer) {
    if (!Room()) return false;
    const char16_t* const start = in_ + openerLength;
    while (in_ != start) *out_++ = static_cast<char>(*in_++);
    while (in_ != end_) {
      if (!CopyRun<kUpToAngle>()) return false;
      if (in_ == end_) return true;
      if (!Room()) return false;
      *out_++ = '>';
      ++in_;
      if (std::u16string_view(start, static_cast<std::size_t>(in_ - start)).ends_with(closer)) return true;
    }
    return true;
  }

  bool CopyTag() {
    *out_++ = '<';  // the run in front of it has left room
    ++in_;
    // Plain attributes are taken behind a name of the commonest kind and behind attributes alone: so far a tag that is
    // wrong is wrong whatever follows, and one that is right stays so without them.
    const bool takesPlain = CopyTagName();
    int attributes = 0;  // that the library sees
    plain_.clear();
    prefixed_ = 0;
    ++tagNumber_;
    for (;;) {
      if (takesPlain && !TakePlainAttributes(attributes)) return false;
      if (!CopyRun<kTagBody>()) return false;
      if (in_ == end_) return true;
      const char16_t unit = *in_;
      // The library would take this for the start of another tag, with attributes that are not counted.
      if (unit == u'<') return Refuse(u"A tag is not closed in front of the next.");
      if (unit == u'>') {
        if (attributes != 0 || !plain_.empty()) StoreTag(attributes);
        *out_++ = '>';
        ++in_;
        return true;
      }
      *out_++ = static_cast<char>(unit);
      ++in_;
      ++attributes;
      if (TooManyAttributes(attributes)) return false;
      if (!(unit == u'"' ? CopyValue<kDoubleQuoted>() : CopyValue<kSingleQuoted>())) return false;
    }
  }

  // Copies the name of a start tag, if it is ASCII and not too long; returns whether it was, with a blank behind it.
  bool CopyTagName() {
    constexpr std::ptrdiff_t kMostUnits = kRoom / 2;
    const char16_t* const start = in_;
    if (in_ == end_ || !StartsName(*in_)) return false;
    while (in_ != end_ && in_ - start < kMostUnits && (ContinuesName(*in_) || *in_ == u':')) {
      *out_++ = static_cast<char>(*in_++);
    }
    return in_ != end_ && (*in_ == u' ' || IsBreak(*in_));
  }

  // Whether an attribute of this name or prefix is for the library and the builder of the tree.
  static bool IsReserved(std::u16string_view name) {
    return name.size() >= 3 && name[0] == u'x' && name[1] == u'm' && name[2] == u'l';
  }

  // Sets all attributes aside that stand here in a row and are plain, behind so many that are not.
  bool TakePlainAttributes(int others) {
    for (;;) {
      const char16_t* name = in_;
      while (name != end_ && (*name == u' ' || IsBreak(*name))) ++name;
      if (name == in_ || name == end_ || !StartsName(*name)) return true;
      const char16_t* c = name + 1;
      while (c != end_ && ContinuesName(*c)) ++c;
      if (IsReserved({name, static_cast<std::size_t>(c - name)})) return true;
      std::uint32_t localOffset = 0;
      if (end_ - c > 1 && *c == u':' && StartsName(c[1])) {
        if (prefixed_ == kMostPrefixed) return true;
        c += 2;
        localOffset = static_cast<std::uint32_t>(c - 1 - name);
        while (c != end_ && ContinuesName(*c)) ++c;
      }
      if (end_ - c < 4 || *c != u'=') return true;
      const std::u16string_view nameText(name, static_cast<std::size_t>(c - name));
      const char16_t quote = c[1];
      if (quote != u'"' && quote != u'\'') return true;
      const char16_t* const value = c + 2;
      bool hasReturns;
      c = quote == u'"' ? ValueEnd<kDoubleQuoted>(value, &hasReturns) : ValueEnd<kSingleQuoted>(value, &hasReturns);
      if (c == end_ || *c != quote || c + 1 == end_) return true;
      const char16_t next = c[1];
      if (next != u' ' && next != u'>' && next != u'/' && !IsBreak(next)) return true;

      XmlName* const known = KnownName(nameText, localOffset);
      if (known->lastTag == tagNumber_) return Refuse(u"An attribute stands twice in a tag.");
      known->lastTag = tagNumber_;
      if (localOffset != 0) ++prefixed_;
      plain_.push_back({known, {value, static_cast<std::size_t>(c - value)}, hasReturns});
      if (TooManyAttributes(others)) return false;
      in_ = c + 1;
    }
  }

  // The name of this text. Nearly all attributes have one of a few names, which are found by their ends and length.
  XmlName* KnownName(std::u16string_view text, std::uint32_t localOffset) {
    XmlName*& recent = recent_[(text.front() + 4 * text.back() + 32 * text.size()) % std::size(recent_)];
    const std::size_t bytes = text.size() * sizeof(char16_t);
    if (recent != nullptr && recent->full.size() == text.size() &&
        std::memcmp(recent->full.data(), text.data(), bytes) == 0) {
      return recent;
    }
    recent = tree_.names.Find(text);
    if (recent == nullptr) recent = tree_.names.Add(tree_.arena, text, localOffset);
    return recent;
  }

  // Refuses more attributes than an element may have, when so many are not plain.
  bool TooManyAttributes(int others) {
    if (plain_.size() + static_cast<std::size_t>(others) <= kMaxAttributes) return false;
    Refuse(u"An element has more than 10 000 attributes.");
    return true;
  }

  void StoreTag(int others) {
    const std::size_t count = plain_.size() + static_cast<std::size_t>(others);
    // A text is stored in the arena before the nodes are, which lie in one piece.
    for (PlainAttribute& attribute : plain_) {
      if (attribute.hasReturns) attribute.value = tree_.arena.StoreWithoutReturns(attribute.value);
    }
    auto* const nodes = static_cast<NamedNode*>(tree_.arena.Allocate(count * sizeof(NamedNode)));
    NamedNode* node = nodes;
    for (const PlainAttribute& attribute : plain_) {
      new (node++) NamedNode(attribute.name, kAttributeNode, attribute.value);
    }
    const std::size_t end = Written() - (out_[-1] == '/' ? 1 : 0);
    prepared_.tags.push_back({nodes, static_cast<std::uint32_t>(plain_.size()), prefixed_,
                              static_cast<std::uint32_t>(others), static_cast<std::uint32_t>(end)});
  }

  // Copies the rest of an attribute value behind its first quote, and the last quote.
  template <Place place>
  bool CopyValue() {
    constexpr char16_t kQuote = place == kDoubleQuoted ? u'"' : u'\'';
    for (;;) {
      if (!CopyRun<place>()) return false;
      if (in_ == end_) return true;
      const char16_t unit = *in_;
      if (unit == kQuote) {
        *out_++ = static_cast<char>(unit);
        ++in_;
        return true;
      }
      if (unit == u'<') return Refuse(u"'<' stands in an attribute value.");
      // The library refuses all control codes but line feeds and tabs, which it makes blanks unless they are
      // references.
      if (!(IsBreak(unit) ? CopyBreak() : CopyUnit())) return false;
    }
  }

  // The end of what is plain in a value from here on: its last quote, or what is not plain.
  template <Place place>
  const char16_t* ValueEnd(const char16_t* from, bool* hasReturns) const {
    unsigned returns = 0;
    while (end_ - from >= static_cast<std::ptrdiff_t>(kBlock)) {
      const ValueBlock block = FindValueEnd<place>(from);
      if (block.stops != 0) {
        const int plain = std::countr_zero(block.stops);
        *hasReturns = (returns | (block.returns & ((1u << plain) - 1))) != 0;
        return from + plain;
      }
      returns |= block.returns;
      from += kBlock;
    }
    for (; from != end_ && (!StopsAt(place, *from) || IsBreak(*from)); ++from) returns |= *from == u'\r' ? 1u : 0u;
    *hasReturns = returns != 0;
    return from;
  }

  // Copies a line end or tab of an attribute value as a reference.
  bool CopyBreak() {
    const std::string_view reference = *in_ == u'\t' ? "&#9;" : "&#10;";
    if (*in_ == u'\r' && in_ + 1 != end_ && in_[1] == u'\n') ++in_;
    ++in_;
    if (!Room()) return false;
    out_ = std::copy(reference.begin(), reference.end(), out_);
    return true;
  }

  // Copies up to the next unit at which a run in this place stops, or to the end. Within quotes a unit beyond ASCII is
  // a stop; elsewhere it is copied, and line ends become line feeds. Leaves room for the unit at which it stopped.
  template <Place place>
  bool CopyRun() {
    for (;;) {
      if (!Room()) return false;
      if (end_ - in_ >= static_cast<std::ptrdiff_t>(kBlock)) {
        const unsigned stops = FindStops<place>(in_, out_);
        const int plain = stops == 0 ? static_cast<int>(kBlock) : std::countr_zero(stops);
        in_ += plain;
        out_ += plain;
        if (stops == 0) continue;
      } else {
        while (in_ != end_ && !StopsAt(place, *in_)) {
          *out_++ = static_cast<char>(*in_++);  // NOLINT(clang-analyzer-core.NullDereference): Room has seen to it
        }
        if (in_ == end_) return true;
      }
      if (*in_ == 0) return Refuse(u"A NUL stands in the document.");
      if constexpr ((place & kQuoted) != 0) {
        return true;
      } else {
        if (*in_ > 0x7F) {
          while (in_ != end_ && *in_ > 0x7F) {
            if (!CopyUnit()) return false;
          }
        } else if (*in_ == u'\r') {
          if (in_ + 1 == end_ || in_[1] != u'\n') *out_++ = '\n';
          ++in_;
        } else {
          return true;
        }
      }
    }
  }

  // Copies one character of any kind.
  bool CopyUnit() {
    if (!Room()) return false;
    const std::uint32_t unit = *in_++;
    if (unit <= 0x7F) {
      *out_++ = static_cast<char>(unit);
      return true;
    }
    if (unit < 0x800) {
      *out_++ = static_cast<char>(0xC0 | (unit >> 6));
    } else if (unit < 0xD800 || unit > 0xDFFF) {
      *out_++ = static_cast<char>(0xE0 | (unit >> 12));
      *out_++ = static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
    } else {
      const bool pair = unit < 0xDC00 && in_ != end_ && (*in_ & 0xFC00) == 0xDC00;
      if (!pair) return Refuse(u"Half a surrogate pair stands in the document.");
      const std::uint32_t codePoint = 0x10000 + ((unit & 0x3FF) << 10) + (*in_++ & 0x3FFu);
      *out_++ = static_cast<char>(0xF0 | (codePoint >> 18));
      *out_++ = static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
      *out_++ = static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
      *out_++ = static_cast<char>(0x80 | (codePoint & 0x3F));
      return true;
    }
    *out_++ = static_cast<char>(0x80 | (unit & 0x3F));
    return true;
  }

  bool StartsWith(std::u16string_view start) const {
    return std::u16string_view(in_, static_cast<std::size_t>(end_ - in_)).starts_with(start);
  }

  bool Refuse(const char16_t* reason) {
    prepared_.refusal = reason;
    status_ = PrepareStatus::kRefused;
    return false;
  }

  std::size_t Written() const { return static_cast<std::size_t>(out_ - prepared_.bytes); }

  bool Room() {
    if (static_cast<std::size_t>(outEnd_ - out_) >= kRoom) return true;
    return Grow(static_cast<std::size_t>(outEnd_ - prepared_.bytes) / 2 * 3 + kRoom);
  }

  bool Grow(std::size_t capacity) {
    const std::size_t written = Written();
    if (written > kMaxDocumentBytes) {
      status_ = PrepareStatus::kTooLong;
      return false;
    }
    capacity = std::min(capacity, kMaxDocumentBytes + 2 * kRoom);
    char* const bytes = static_cast<char*>(std::realloc(prepared_.bytes, capacity + kPadding));
    if (bytes == nullptr) {
      status_ = PrepareStatus::kNoMemory;
      return false;
    }
    prepared_.bytes = bytes;
    out_ = bytes + written;
    outEnd_ = bytes + capacity;
    return true;
  }

  void Finish() {
    prepared_.size = Written();
    if (prepared_.size > kMaxDocumentBytes) status_ = PrepareStatus::kTooLong;
    std::memset(out_, 0, kPadding);
  }

  struct PlainAttribute {
    const XmlName* name;
    std::u16string_view value;
    bool hasReturns;
  };

  PreparedXml& prepared_;
  XmlTree& tree_;
  std::vector<PlainAttribute> plain_;  // of the tag at hand
  std::uint32_t prefixed_ = 0;         // of those
  std::uint32_t tagNumber_ = 0;
  XmlName* recent_[128] = {};
  const char16_t* in_;
  const char16_t* end_;
  char* out_ = nullptr;
  char* outEnd_ = nullptr;
  PrepareStatus status_ = PrepareStatus::kPrepared;
};

}  // namespace

PreparedXml::~PreparedXml() { std::free(bytes); }

PrepareStatus PrepareXml(std::u16string_view text, XmlTree* tree, PreparedXml* prepared) {
  try {
    return Preparation(text, tree, prepared).Run();
  } catch (const std::bad_alloc&) {
    return PrepareStatus::kNoMemory;
  }
}
