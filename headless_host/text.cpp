#include "headless_host/text.h"

#include <cstddef>
#include <cstdint>

namespace headless {
namespace {

// What the bytes 0x80 to 0x9F stand for.
constexpr char16_t kHighControls[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                        0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                        0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                        0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char32_t kReplacement = 0xFFFD;

struct Utf8Part {
  std::size_t length;  // bytes consumed, at least 1
  char32_t point;
  bool valid;
};

// Reads the sequence that begins at `at`, or the maximal part of an invalid one.
Utf8Part ReadUtf8(std::string_view bytes, std::size_t at) {
  auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char first = byteAt(at);
  if (first < 0x80) return {1, first, true};
  std::size_t following;
  char32_t point;
  unsigned char low = 0x80, high = 0xBF;
  if (first >= 0xC2 && first <= 0xDF) {
    following = 1;
    point = first & 0x1Fu;
  } else if (first >= 0xE0 && first <= 0xEF) {
    following = 2;
    point = first & 0x0Fu;
    if (first == 0xE0) low = 0xA0;
    if (first == 0xED) high = 0x9F;
  } else if (first >= 0xF0 && first <= 0xF4) {
    following = 3;
    point = first & 0x07u;
    if (first == 0xF0) low = 0x90;
    if (first == 0xF4) high = 0x8F;
  } else {
    return {1, kReplacement, false};
  }
  for (std::size_t i = 1; i <= following; ++i) {
    if (at + i >= bytes.size() || byteAt(at + i) < low || byteAt(at + i) > high) return {i, kReplacement, false};
    point = (point << 6) | (byteAt(at + i) & 0x3Fu);
    low = 0x80;
    high = 0xBF;
  }
  return {following + 1, point, true};
}

}  // namespace

void AppendUtf8(std::u16string_view text, std::string& out) {
  auto continuation = [&](char32_t bits) { out.push_back(static_cast<char>(0x80 | (bits & 0x3F))); };
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t point = text[i];
    if (point >= 0xD800 && point <= 0xDFFF) {
      if (point <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
        point = 0x10000 + ((point - 0xD800) << 10) + (text[i + 1] - 0xDC00u);
        ++i;
      } else {
        point = kReplacement;
      }
    }
    if (point < 0x80) {
      out.push_back(static_cast<char>(point));
    } else if (point < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (point >> 6)));
      continuation(point);
    } else if (point < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (point >> 12)));
      continuation(point >> 6);
      continuation(point);
    } else {
      out.push_back(static_cast<char>(0xF0 | (point >> 18)));
      continuation(point >> 12);
      continuation(point >> 6);
      continuation(point);
    }
  }
}

std::string Utf8FromText(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  AppendUtf8(text, out);
  return out;
}

std::u16string TextFromUtf8(std::string_view utf8) {
  std::u16string out;
  out.reserve(utf8.size());
  for (std::size_t at = 0; at < utf8.size();) {
    const Utf8Part part = ReadUtf8(utf8, at);
    at += part.length;
    if (part.point < 0x10000) {
      out.push_back(static_cast<char16_t>(part.point));
    } else {
      out.push_back(static_cast<char16_t>(0xD800 + ((part.point - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((part.point - 0x10000) & 0x3FF)));
    }
  }
  return out;
}

bool IsUtf8(std::string_view bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const Utf8Part part = ReadUtf8(bytes, at);
    if (!part.valid) return false;
    at += part.length;
  }
  return true;
}

std::u16string TextFromNarrow(std::string_view bytes) {
  std::u16string out;
  out.reserve(bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    out.push_back(byte >= 0x80 && byte <= 0x9F ? kHighControls[byte - 0x80] : static_cast<char16_t>(byte));
  }
  return out;
}

std::optional<std::string> NarrowFromText(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char16_t unit : text) {
    if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) {
      out.push_back(static_cast<char>(unit));
      continue;
    }
    unsigned i = 0;
    while (i < 32 && kHighControls[i] != unit) ++i;
    if (i == 32) return std::nullopt;
    out.push_back(static_cast<char>(0x80 + i));
  }
  return out;
}

std::u16string TextFromNativePath(std::string_view path) {
  return IsUtf8(path) ? TextFromUtf8(path) : TextFromNarrow(path);
}

}  // namespace headless
