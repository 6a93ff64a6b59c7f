// Comparisons of 16-bit text in which the case of A to Z does not count.
#pragma once

#include <string_view>

inline char16_t LowerUnit(char16_t unit) {
  return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

inline bool StartsWithAnyCase(std::u16string_view text, std::u16string_view start) {
  if (text.size() < start.size()) return false;
  for (std::size_t i = 0; i < start.size(); ++i) {
    if (LowerUnit(text[i]) != LowerUnit(start[i])) return false;
  }
  return true;
}

inline bool EqualsAnyCase(std::u16string_view a, std::u16string_view b) {
  return a.size() == b.size() && StartsWithAnyCase(a, b);
}
