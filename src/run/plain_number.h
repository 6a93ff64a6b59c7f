// Numbers in the form that nearly all have: a few digits with an optional sign and point and no exponent.
#pragma once

#include <cstdint>

#ifdef __x86_64__
#include <emmintrin.h>
#include <bit>
#include <cstring>
#endif

// Without a limit on the digits but that the value is exact: the slower road of ScanPlainDouble.
const char16_t* ScanLongPlainDouble(const char16_t* begin, const char16_t* end, double* value);

#ifdef __x86_64__

constexpr std::ptrdiff_t kShortNumberWindow = 16;
constexpr unsigned kMostWholeDigits = 4;
constexpr unsigned kMostDecimals = 8;

// A number of up to 4 digits in front of the point and up to 8 behind it. Random digits mislead the processor's guesses
// at every loop and branch over them, so that there is none here: reads `kShortNumberWindow` units, which must be
// there. Returns the end of the number, null for all other forms. It takes a twelfth off an import of path data.
inline const char16_t* ScanShortDouble(const char16_t* begin, double* value) {
  const auto load = [](const char16_t* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); };
  const __m128i units = _mm_packus_epi16(load(begin), load(begin + 8));
  const __m128i points = _mm_cmpeq_epi8(units, _mm_set1_epi8('.'));
  const __m128i values = _mm_sub_epi8(units, _mm_set1_epi8('0'));
  const __m128i digits = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values);

  // Bit by unit. The first one may be a sign.
  const auto inNumber = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(points, digits)));
  const auto length = static_cast<unsigned>(__builtin_ctz(~(inNumber | 1)));
  const unsigned point = static_cast<unsigned>(_mm_movemask_epi8(points)) & ((1u << length) - 1);
  const unsigned wholeEnd = static_cast<unsigned>(__builtin_ctz(point | 1u << length));
  const unsigned negative = *begin == u'-';
  const unsigned whole = wholeEnd - negative;
  const unsigned decimalsBegin = wholeEnd + (point != 0);
  const unsigned decimals = length - decimalsBegin;
  if (((inNumber | negative) & 1) == 0 || (point & (point - 1)) != 0) return nullptr;
  if (whole > kMostWholeDigits || decimals > kMostDecimals || whole + decimals == 0) return nullptr;
  if ((begin[length] | 0x20) == u'e') return nullptr;

  // Four units by one multiplication: the lane of the last digit holds the sum, and what is behind it changes it not.
  std::uint64_t four;
  std::memcpy(&four, begin + negative, sizeof four);
  four = (four - 0x0030'0030'0030'0030) * (1000ull << 48 | 100ull << 32 | 10ull << 16 | 1);
  const std::uint64_t number = four >> ((whole - 1) * 16 & 63) & (whole == 0 ? 0 : 0xFFFF);

  // Eight decimals, of which those that are not there count as 0. As many lanes stay as the load stands in front of the
  // zeros.
  static constexpr char16_t kLanes[2 * kMostDecimals] = {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF,
                                                         0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
  const __m128i lanes = _mm_and_si128(_mm_sub_epi16(load(begin + decimalsBegin), _mm_set1_epi16(u'0')),
                                      load(kLanes + kMostDecimals - decimals));
  const __m128i pairs = _mm_madd_epi16(lanes, _mm_set_epi16(1, 10, 1, 10, 1, 10, 1, 10));
  const __m128i fours = _mm_madd_epi16(_mm_packs_epi32(pairs, pairs), _mm_set_epi16(1, 100, 1, 100, 1, 100, 1, 100));
  const auto both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(fours));

  // Less than 2^53, so that the one division rounds correctly, and a division by less than nothing gives the sign.
  const std::uint64_t mantissa = number * 100'000'000 + (both & 0xFFFFFFFF) * 10'000 + (both >> 32);
  static constexpr double kScale[] = {1e8, -1e8};
  *value = static_cast<double>(static_cast<std::int64_t>(mantissa)) / kScale[negative];
  return begin + length;
}

#endif

// Reads the number at `begin` as ScanDouble does and returns its end; null, with the value as it was, for every other
// form.
inline const char16_t* ScanPlainDouble(const char16_t* begin, const char16_t* end, double* value) {
#ifdef __x86_64__
  if (end - begin >= kShortNumberWindow) {
    if (const char16_t* numberEnd = ScanShortDouble(begin, value)) return numberEnd;
  }
#endif
  return ScanLongPlainDouble(begin, end, value);
}
