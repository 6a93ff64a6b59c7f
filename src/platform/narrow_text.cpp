#include "platform/narrow_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "platform/ascii_block.h"

namespace {

constexpr char16_t kReplacement = 0xFFFD;

// The bytes 80 to 9F of Windows-1252.
constexpr char16_t kUpperControls[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                         0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                         0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                         0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char16_t WideUnit(char byte) {
  const auto number = static_cast<unsigned char>(byte);
  return (number & 0xE0) == 0x80 ? kUpperControls[number - 0x80] : number;
}

char NarrowUnit(char16_t unit) {
  if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) return static_cast<char>(unit);
  const char16_t* place = std::find(std::begin(kUpperControls), std::end(kUpperControls), unit);
  return place == std::end(kUpperControls) ? '?' : static_cast<char>(0x80 + (place - kUpperControls));
}

void AppendCodePoint(std::string& utf8, std::uint32_t codePoint) {
  if (codePoint < 0x80) {
    utf8.push_back(static_cast<char>(codePoint));
    return;
  }
  if (codePoint < 0x800) {
    utf8.push_back(static_cast<char>(0xC0 | (codePoint >> 6)));
  } else {
    if (codePoint < 0x10000) {
      utf8.push_back(static_cast<char>(0xE0 | (codePoint >> 12)));
    } else {
      utf8.push_back(static_cast<char>(0xF0 | (codePoint >> 18)));
      utf8.push_back(static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F)));
    }
    utf8.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
  }
  utf8.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
}

}  // namespace

void WidenNarrow(std::string_view narrow, char16_t* wide) {
  std::size_t i = 0;
  for (; narrow.size() - i >= kAsciiBlock; i += kAsciiBlock) {
    const char* const block = narrow.data() + i;
    if (!WidenBlock(block, wide + i)) std::transform(block, block + kAsciiBlock, wide + i, WideUnit);
  }
  for (; i != narrow.size(); ++i) wide[i] = WideUnit(narrow[i]);
}

std::u16string WideFromNarrow(std::string_view narrow) {
  std::u16string wide(narrow.size(), u'\0');
  WidenNarrow(narrow, wide.data());
  return wide;
}

void AppendNarrowFromWide(std::string& narrow, std::u16string_view wide) {
  const std::size_t start = narrow.size();
  narrow.resize(start + wide.size());
  char* to = narrow.data() + start;
  const char16_t* from = wide.data();
  for (const char16_t* const end = from + wide.size(); from != end;) {
    const std::size_t count = std::min(kAsciiBlock, static_cast<std::size_t>(end - from));
    if (count < kAsciiBlock || !NarrowBlock(from, to)) std::transform(from, from + count, to, NarrowUnit);
    from += count;
    to += count;
  }
}

std::string NarrowFromWide(std::u16string_view wide) {
  std::string narrow;
  AppendNarrowFromWide(narrow, wide);
  return narrow;
}

std::string Utf8FromWide(std::u16string_view wide) {
  std::string utf8;
  utf8.reserve(wide.size());
  for (std::size_t i = 0; i < wide.size(); ++i) {
    char block[kAsciiBlock];
    while (wide.size() - i > kAsciiBlock && NarrowBlock(wide.data() + i, block)) {
      utf8.append(block, kAsciiBlock);
      i += kAsciiBlock;
    }
    std::uint32_t codePoint = wide[i];
    if (codePoint >= 0xD800 && codePoint < 0xE000) {
      const bool pair = codePoint < 0xDC00 && i + 1 < wide.size() && (wide[i + 1] & 0xFC00) == 0xDC00;
      if (pair) {
        codePoint = 0x10000 + ((codePoint & 0x3FF) << 10) + (wide[i + 1] & 0x3FFu);
        ++i;
      } else {
        codePoint = kReplacement;
      }
    }
    AppendCodePoint(utf8, codePoint);
  }
  return utf8;
}

std::u16string WideFromUtf8(std::string_view utf8) {
  std::u16string wide;
  wide.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size();) {
    char16_t block[kAsciiBlock];
    while (utf8.size() - i > kAsciiBlock && WidenBlock(utf8.data() + i, block)) {
      wide.append(block, kAsciiBlock);
      i += kAsciiBlock;
    }
    const auto lead = static_cast<unsigned char>(utf8[i++]);
    if (lead < 0x80) {
      wide.push_back(lead);
      continue;
    }
    // The bounds of the second byte keep out overlong forms, surrogates and what lies beyond U+10FFFF.
    int following;
    unsigned char lowest = 0x80;
    unsigned char highest = 0xBF;
    std::uint32_t codePoint;
    if (lead >= 0xC2 && lead <= 0xDF) {
      following = 1;
      codePoint = lead & 0x1Fu;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      following = 2;
      codePoint = lead & 0x0Fu;
      if (lead == 0xE0) lowest = 0xA0;
      if (lead == 0xED) highest = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      following = 3;
      codePoint = lead & 0x07u;
      if (lead == 0xF0) lowest = 0x90;
      if (lead == 0xF4) highest = 0x8F;
    } else {
      wide.push_back(kReplacement);
      continue;
    }
    while (following > 0 && i < utf8.size()) {
      const auto byte = static_cast<unsigned char>(utf8[i]);
      if (byte < lowest || byte > highest) break;
      codePoint = (codePoint << 6) | (byte & 0x3Fu);
      lowest = 0x80;
      highest = 0xBF;
      --following;
      ++i;
    }
    if (following > 0) {
      wide.push_back(kReplacement);
    } else if (codePoint < 0x10000) {
      wide.push_back(static_cast<char16_t>(codePoint));
    } else {
      wide.push_back(static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10)));
      wide.push_back(static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF)));
    }
  }
  return wide;
}
