// Searches and comparisons of 16-bit text in words and blocks, for texts so short that a call costs more than the work.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Whether the first `count` units of both are the same.
inline bool AreSameUnits(const char16_t* a, const char16_t* b, std::size_t count) {
  constexpr std::size_t kWord = sizeof(std::uint64_t) / sizeof(char16_t);
  if (count < kWord) {
    for (std::size_t i = 0; i < count; ++i) {
      if (a[i] != b[i]) return false;
    }
    return true;
  }
  const auto wordsDiffer = [a, b](std::size_t i) {
    std::uint64_t inA, inB;
    std::memcpy(&inA, a + i, sizeof inA);
    std::memcpy(&inB, b + i, sizeof inB);
    return inA != inB;
  };
  for (std::size_t i = 0; i + kWord < count; i += kWord) {
    if (wordsDiffer(i)) return false;
  }
  return !wordsDiffer(count - kWord);
}

inline bool IsSameText(std::u16string_view a, std::u16string_view b) {
  return a.size() == b.size() && AreSameUnits(a.data(), b.data(), a.size());
}

inline bool EndsWithText(std::u16string_view text, std::u16string_view end) {
  return text.size() >= end.size() && AreSameUnits(text.data() + (text.size() - end.size()), end.data(), end.size());
}

// The first place of the unit from `start` on; npos for none.
inline std::size_t FindUnit(std::u16string_view text, char16_t unit, std::size_t start) {
  std::size_t i = start;
#ifdef __SSE2__
  constexpr std::size_t kUnits = 8;
  for (; i + kUnits <= text.size(); i += kUnits) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + i));
    const int found = _mm_movemask_epi8(_mm_cmpeq_epi16(units, _mm_set1_epi16(static_cast<short>(unit))));
    if (found != 0) return i + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(found))) / 2;
  }
#endif
  for (; i < text.size(); ++i) {
    if (text[i] == unit) return i;
  }
  return std::u16string_view::npos;
}

// Whether there may be a unit below the blank; units from 0x8000 on are taken for such.
inline bool MayHoldControls(std::u16string_view text) {
  std::size_t i = 0;
#ifdef __SSE2__
  constexpr std::size_t kUnits = 8;
  __m128i lowest = _mm_set1_epi16(u' ');
  for (; i + kUnits <= text.size(); i += kUnits) {
    lowest = _mm_min_epi16(lowest, _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + i)));
  }
  if (_mm_movemask_epi8(_mm_cmplt_epi16(lowest, _mm_set1_epi16(u' '))) != 0) return true;
#endif
  for (; i < text.size(); ++i) {
    if (text[i] < u' ') return true;
  }
  return false;
}
