// The bytes of a document, and what the filter does with them before a parser sees them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// The bytes of a regular file, or nothing and why. The name is in the encoding of the operating system.
std::optional<std::string> ReadDocumentBytes(const std::string& file, std::string& reason);

// What was blanked: [begin, end) of the text; both are 0 when there is no DOCTYPE.
struct BlankedDoctype {
  std::size_t begin = 0, end = 0;
  bool subset = false;  // a subset began in front of the `>` at which the blanking ends
  int line = 0;         // where it begins
  int lostLines = 0;    // what the blanking took off the number of each line behind it; -1 where it added one
};

// Overwrites the first DOCTYPE up to its first `>`, as the filter does.
BlankedDoctype BlankDoctype(std::string& text);

// The most attributes that one tag may have, by a rough look: the `=` outside quotes.
int MostAttributes(std::string_view text);
