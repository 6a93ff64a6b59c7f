// The pass over a document's text in front of the XML library. It turns the wide text into the UTF-8 that the library
// reads, makes every line end a line feed, keeps the line ends and tabs of attribute values, and refuses what the
// library would take or would spend too long on.
#pragma once

#include <cstddef>
#include <string_view>

struct PreparedXml {
  PreparedXml() = default;
  ~PreparedXml();
  PreparedXml(const PreparedXml&) = delete;
  PreparedXml& operator=(const PreparedXml&) = delete;

  char* bytes = nullptr;  // from malloc; some NULs stand behind the last
  std::size_t size = 0;
  const char16_t* refusal = nullptr;  // why the text is refused, as a sentence
};

// Too long is what the library cannot address, and what the interface does not take.
enum class PrepareStatus { kPrepared, kRefused, kTooLong, kNoMemory };

// Fills `prepared`, which must be fresh.
PrepareStatus PrepareXml(std::u16string_view text, PreparedXml* prepared);
