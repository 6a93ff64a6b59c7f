// The pass over a document's text in front of the XML library. It turns the wide text into the UTF-8 that the library
// reads, makes every line end a line feed, keeps the library from blanking the line feeds and tabs of attribute values,
// and refuses what the library would take or would spend too long on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

// A line feed or tab of an attribute value. In the text that the library sees a blank stands in its place, which lets
// the value through unchanged and fast. Only values of nothing but ASCII without references have such marks, so that
// units and bytes of the value go one to one; in all others line feeds and tabs are written as references.
struct BreakMark {
  std::uint32_t offset : 31;  // of the blank in the text
  std::uint32_t isTab : 1;
};

struct PreparedXml {
  PreparedXml() = default;
  ~PreparedXml();
  PreparedXml(const PreparedXml&) = delete;
  PreparedXml& operator=(const PreparedXml&) = delete;

  char* bytes = nullptr;  // from malloc; some NULs stand behind the last
  std::size_t size = 0;
  std::vector<BreakMark> breaks;      // by rising offset
  const char16_t* refusal = nullptr;  // why the text is refused, as a sentence
};

// Too long is what the library cannot address, and what the interface does not take.
enum class PrepareStatus { kPrepared, kRefused, kTooLong, kNoMemory };

// Fills `prepared`, which must be fresh.
PrepareStatus PrepareXml(std::u16string_view text, PreparedXml* prepared);
