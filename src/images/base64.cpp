#include "images/base64.h"

#include <cstdint>

#include "run/number_text.h"

namespace {

constexpr int kSpace = -2;
constexpr int kStop = -1;

int Sextet(char16_t c) {
  if (c >= u'A' && c <= u'Z') return c - u'A';
  if (c >= u'a' && c <= u'z') return c - u'a' + 26;
  if (IsDigit(c)) return c - u'0' + 52;
  if (c == u'+') return 62;
  if (c == u'/') return 63;
  return IsSpace(c) ? kSpace : kStop;
}

}  // namespace

std::string DecodeBase64(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  std::uint32_t group = 0;
  int count = 0;
  for (const char16_t c : text) {
    const int sextet = Sextet(c);
    if (sextet == kStop) break;
    if (sextet == kSpace) continue;
    group = group << 6 | static_cast<std::uint32_t>(sextet);
    if (++count < 4) continue;
    for (int shift = 16; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(group >> shift & 0xFF));
    group = 0;
    count = 0;
  }
  if (count > 0) {
    group <<= 6 * (4 - count);
    for (int i = 0; i < count - 1; ++i) bytes.push_back(static_cast<char>(group >> (16 - 8 * i) & 0xFF));
  }
  return bytes;
}
