// Conversions between the 16-bit text of the host's interfaces, UTF-8, and the narrow code page (Windows-1252, its five
// unassigned bytes standing for the control codes of the same number).
#pragma once

#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace headless {

// Some order of texts, quicker to tell than the usual one; for tables that nobody reads in their order. Below 0, 0 or
// above 0.
inline int CompareTexts(std::u16string_view one, std::u16string_view other) {
  if (one.size() != other.size()) return one.size() < other.size() ? -1 : 1;
  return std::memcmp(one.data(), other.data(), one.size() * sizeof(char16_t));
}

struct TextLess {
  using is_transparent = void;  // a view is looked up without a copy of its text
  bool operator()(std::u16string_view one, std::u16string_view other) const { return CompareTexts(one, other) < 0; }
};

// An unpaired surrogate becomes U+FFFD.
std::string Utf8FromText(std::u16string_view text);
void AppendUtf8(std::u16string_view text, std::string& out);

// An invalid sequence becomes U+FFFD, one for each maximal part.
std::u16string TextFromUtf8(std::string_view utf8);
bool IsUtf8(std::string_view bytes);

std::u16string TextFromNarrow(std::string_view bytes);
// Nothing when a unit has no byte in the code page.
std::optional<std::string> NarrowFromText(std::u16string_view text);

// The text of a file name of the operating system: UTF-8 if it is that, otherwise the narrow code page.
std::u16string TextFromNativePath(std::string_view path);

}  // namespace headless
