// Blocks of ASCII between bytes and units, which the conversions of texts do whole.
#pragma once

#include <cstddef>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

inline constexpr std::size_t kAsciiBlock = 16;

#ifdef __SSE2__

// Copies a block of bytes as units of the same numbers, and tells whether all are ASCII.
inline bool WidenBlock(const char* from, char16_t* to) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to + kAsciiBlock / 2), _mm_unpackhi_epi8(bytes, zero));
  return _mm_movemask_epi8(bytes) == 0;
}

// Copies a block of units as bytes, and tells whether all are ASCII; otherwise what was copied is of no use.
inline bool NarrowBlock(const char16_t* from, char* to) {
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + kAsciiBlock / 2));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(low, high));
  const __m128i upper = _mm_srli_epi16(_mm_or_si128(low, high), 7);
  return _mm_movemask_epi8(_mm_cmpeq_epi8(upper, _mm_setzero_si128())) == 0xFFFF;
}

#else

inline bool WidenBlock(const char* from, char16_t* to) {
  unsigned all = 0;
  for (std::size_t i = 0; i < kAsciiBlock; ++i) {
    to[i] = static_cast<unsigned char>(from[i]);
    all |= to[i];
  }
  return all <= 0x7F;
}

inline bool NarrowBlock(const char16_t* from, char* to) {
  unsigned all = 0;
  for (std::size_t i = 0; i < kAsciiBlock; ++i) {
    to[i] = static_cast<char>(from[i]);
    all |= from[i];
  }
  return all <= 0x7F;
}

#endif
