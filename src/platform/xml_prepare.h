// The pass over a document's text in front of the XML library. It turns the wide text into the UTF-8 that the library
// reads, makes every line end a line feed, sets the plain attribute values aside, and refuses what the library would
// take or would spend too long on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

// An attribute value that the library has nothing to do with: ASCII without references, not of a namespace declaration.
// The library sees an empty value in its place. It need not look through path data, which are most of a drawing, so
// that an import is a tenth faster; and it cannot blank the line feeds and tabs of a value.
struct PlainValue {
  std::uint32_t start;  // in the wide text
  std::uint32_t length : 31;
  std::uint32_t hasReturns : 1;  // carriage returns are still in it
  std::uint32_t offset;          // of the empty value in the text that the library sees
};

struct PreparedXml {
  PreparedXml() = default;
  ~PreparedXml();
  PreparedXml(const PreparedXml&) = delete;
  PreparedXml& operator=(const PreparedXml&) = delete;

  std::u16string_view text;  // what was prepared
  char* bytes = nullptr;     // from malloc; some NULs stand behind the last
  std::size_t size = 0;
  std::vector<PlainValue> values;     // by rising offset
  const char16_t* refusal = nullptr;  // why the text is refused, as a sentence
};

// Too long is what the library cannot address, and what the interface does not take.
enum class PrepareStatus { kPrepared, kRefused, kTooLong, kNoMemory };

// Fills `prepared`, which must be fresh and keeps a view of the text.
PrepareStatus PrepareXml(std::u16string_view text, PreparedXml* prepared);
