#include "run/number_text.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#ifdef __x86_64__
#include <emmintrin.h>
#include <bit>
#endif

namespace {

// 10 to these powers are exact doubles.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                   1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
constexpr std::ptrdiff_t kMaxPlainDigits = 19;
constexpr std::uint64_t kMaxExactMantissa = std::uint64_t{1} << 53;

#ifdef __x86_64__

constexpr std::ptrdiff_t kDigitBlock = 8;
constexpr std::uint64_t kDigitBlockScale = 100'000'000;

// As many lanes stay as the load stands in front of the zeros.
constexpr char16_t kLanes[2 * kDigitBlock] = {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};

// The number of eight decimals: the digits at the start of the block, and a 0 for each of the rest. Returns how many
// digits there were, which no loop over them could foresee.
int ReadDecimals(const char16_t* from, std::uint64_t* number) {
  const __m128i nine = _mm_set1_epi16(9);
  __m128i digits = _mm_sub_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)), _mm_set1_epi16(u'0'));
  const __m128i isDigit = _mm_cmpeq_epi16(_mm_subs_epu16(digits, nine), _mm_setzero_si128());
  const int count = std::countr_one(static_cast<unsigned>(_mm_movemask_epi8(isDigit))) / 2;
  digits = _mm_and_si128(digits, _mm_loadu_si128(reinterpret_cast<const __m128i*>(kLanes + kDigitBlock - count)));
  const __m128i pairs = _mm_madd_epi16(digits, _mm_set_epi16(1, 10, 1, 10, 1, 10, 1, 10));
  const __m128i fours = _mm_madd_epi16(_mm_packs_epi32(pairs, pairs), _mm_set_epi16(1, 100, 1, 100, 1, 100, 1, 100));
  const auto both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(fours));
  *number = (both & 0xFFFFFFFF) * 10000 + (both >> 32);
  return count;
}

#endif

// The number of these units, which have the form of a number without a plus sign, by the library's correctly rounding
// routine.
double Convert(std::u16string_view number) {
  char narrow[64];
  std::string large;
  char* digits = narrow;
  if (number.size() > sizeof narrow) {
    large.resize(number.size());
    digits = large.data();
  }
  for (std::size_t i = 0; i < number.size(); ++i) digits[i] = static_cast<char>(number[i]);
  double value = 0.0;
  auto [end, error] = std::from_chars(digits, digits + number.size(), value);
  if (error != std::errc::result_out_of_range) return value;

  // Too large or too small: the decimal exponent of the first digit that is not 0 tells which.
  bool negative = digits[0] == '-';
  long exponent = -1;  // of the first digit, counted from the point
  bool point = false;
  bool significant = false;
  const char* c = digits + negative;
  for (; c != end && *c != 'e' && *c != 'E'; ++c) {
    if (*c == '.') {
      point = true;
    } else if (!significant && *c == '0') {
      if (point) --exponent;
    } else {
      significant = true;
      if (!point) ++exponent;
    }
  }
  long written = 0;
  if (c != end) {
    bool down = c[1] == '-';
    for (++c; c != end; ++c) {
      if (*c >= '0' && *c <= '9' && written < 1'000'000'000) written = written * 10 + (*c - '0');
    }
    if (down) written = -written;
  }
  double result = exponent + written > 0 ? std::numeric_limits<double>::infinity() : 0.0;
  return negative ? -result : result;
}

}  // namespace

// Up to 19 digits fit the integer. With an integer up to 2^53 and an exact power of ten one division rounds correctly.
bool ScanPlainDouble(const char16_t*& cursor, const char16_t* end, double* value) {
  const char16_t* c = cursor;
  bool negative = false;
  if (c != end && (*c == u'-' || *c == u'+')) negative = *c++ == u'-';
  std::uint64_t mantissa = 0;
  const char16_t* const first = c;
  for (; c != end && IsDigit(*c); ++c) mantissa = mantissa * 10 + static_cast<std::uint64_t>(*c - u'0');
  std::ptrdiff_t digits = c - first;
  std::ptrdiff_t scale = 0;
  std::ptrdiff_t padding = 0;  // zeros taken in behind the last decimal, which change nothing
  if (c != end && *c == u'.') {
    const char16_t* const point = ++c;
#ifdef __x86_64__
    if (end - c >= kDigitBlock) {
      std::uint64_t decimals;
      c += ReadDecimals(c, &decimals);
      mantissa = mantissa * kDigitBlockScale + decimals;
      padding = kDigitBlock - (c - point);
    }
    if (padding == 0)
#endif
      for (; c != end && IsDigit(*c); ++c) mantissa = mantissa * 10 + static_cast<std::uint64_t>(*c - u'0');
    scale = c - point + padding;
    digits += c - point;
  }
  if (digits == 0 || digits + padding > kMaxPlainDigits || mantissa > kMaxExactMantissa) return false;
  if (c != end && (*c == u'e' || *c == u'E')) return false;
  const double magnitude = static_cast<double>(mantissa) / kPowersOfTen[scale];
  *value = negative ? -magnitude : magnitude;
  cursor = c;
  return true;
}

double ScanDouble(std::u16string_view text, std::size_t* consumed) {
  const char16_t* const begin = text.data();
  const char16_t* const end = begin + text.size();
  const char16_t* c = begin;
  double value;
  if (ScanPlainDouble(c, end, &value)) {
    *consumed = static_cast<std::size_t>(c - begin);
    return value;
  }
  if (c != end && (*c == u'-' || *c == u'+')) ++c;
  std::size_t digits = 0;
  for (; c != end && IsDigit(*c); ++c) ++digits;
  if (c != end && *c == u'.') {
    for (++c; c != end && IsDigit(*c); ++c) ++digits;
  }
  if (digits == 0) {
    *consumed = 0;
    return 0.0;
  }
  if (c != end && (*c == u'e' || *c == u'E')) {
    const char16_t* e = c + 1;
    if (e != end && (*e == u'-' || *e == u'+')) ++e;
    if (e != end && IsDigit(*e)) {
      while (e != end && IsDigit(*e)) ++e;
      c = e;
    }
  }
  *consumed = static_cast<std::size_t>(c - begin);
  const char16_t* number = *begin == u'+' ? begin + 1 : begin;
  return Convert({number, static_cast<std::size_t>(c - number)});
}

double LeadingNumber(std::u16string_view text) {
  std::size_t i = 0;
  while (i < text.size() && IsSpace(text[i])) ++i;
  std::size_t consumed;
  return ScanDouble(text.substr(i), &consumed);
}

std::int32_t LeadingInteger(std::u16string_view text, std::size_t* consumed) {
  std::size_t i = 0;
  while (i < text.size() && IsSpace(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) negative = text[i++] == u'-';
  const std::size_t first = i;
  std::int64_t value = 0;
  for (; i < text.size() && IsDigit(text[i]); ++i) {
    value = value * 10 + (text[i] - u'0');
    if (value > std::int64_t{1} << 32) value = std::int64_t{1} << 32;
  }
  if (consumed) *consumed = i == first ? 0 : i;
  if (negative) value = -value;
  if (value > INT32_MAX) value = INT32_MAX;
  if (value < INT32_MIN) value = INT32_MIN;
  return static_cast<std::int32_t>(value);
}

std::int32_t Truncate(double value) {
  if (!(value > -2147483649.0 && value < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(value);
}
