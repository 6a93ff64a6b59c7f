#include "platform/xml_prepare.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "filter_limits.h"

namespace {

// Units that are copied between two looks at the room for them.
constexpr std::size_t kBlock = 16;

// What one step of a scan writes at most: a block, or a unit at the end of one as three bytes or as a reference.
constexpr std::size_t kRoom = 4 * kBlock;

// NULs behind the text, for the library to look ahead over.
constexpr std::size_t kPadding = 8;

constexpr char16_t kByteOrderMark = 0xFEFF;

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

// The scan. Each `Copy` function reads from `in_` and writes to `out_`; it returns false when the scan is over before
// its time, `status_` telling why.
class Preparation {
 public:
  Preparation(std::u16string_view text, PreparedXml* prepared)
      : prepared_(*prepared), in_(text.data()), end_(text.data() + text.size()) {}

  PrepareStatus Run() {
    const std::size_t units = static_cast<std::size_t>(end_ - in_);
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
    for (int attributes = 0;; ++attributes) {
      if (!CopyRun<kTagBody>()) return false;
      if (in_ == end_) return true;
      const char16_t unit = *in_;
      // The library would take this for the start of another tag, with attributes that are not counted.
      if (unit == u'<') return Refuse(u"A tag is not closed in front of the next.");
      *out_++ = static_cast<char>(unit);
      ++in_;
      if (unit == u'>') return true;
      if (attributes == kMaxAttributes) return Refuse(u"An element has more than 10 000 attributes.");
      if (!(unit == u'"' ? CopyValue<kDoubleQuoted>() : CopyValue<kSingleQuoted>())) return false;
    }
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
      const char16_t* const blockEnd = in_ + std::min(kBlock, static_cast<std::size_t>(end_ - in_));
      while (in_ != blockEnd && !StopsAt(place, *in_)) {
        *out_++ = static_cast<char>(*in_++);  // NOLINT(clang-analyzer-core.NullDereference): Room has seen to it
      }
      if (in_ == end_) return true;
      if (in_ == blockEnd) continue;
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

  PreparedXml& prepared_;
  const char16_t* in_;
  const char16_t* end_;
  char* out_ = nullptr;
  char* outEnd_ = nullptr;
  PrepareStatus status_ = PrepareStatus::kPrepared;
};

}  // namespace

PreparedXml::~PreparedXml() { std::free(bytes); }

PrepareStatus PrepareXml(std::u16string_view text, PreparedXml* prepared) { return Preparation(text, prepared).Run(); }
