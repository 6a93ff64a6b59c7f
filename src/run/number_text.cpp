#include "run/number_text.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#include "run/plain_number.h"

namespace {

// 10 to these powers are exact doubles.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                   1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
constexpr std::ptrdiff_t kMaxPlainDigits = 19;
constexpr std::uint64_t kMaxExactMantissa = std::uint64_t{1} << 53;

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
const char16_t* ScanLongPlainDouble(const char16_t* begin, const char16_t* end, double* value) {
  const char16_t* c = begin;
  bool negative = false;
  if (c != end && (*c == u'-' || *c == u'+')) negative = *c++ == u'-';
  std::uint64_t mantissa = 0;
  std::ptrdiff_t digits = 0;
  const auto takeDigits = [&] {
    const char16_t* const first = c;
    for (; c != end && IsDigit(*c); ++c) mantissa = mantissa * 10 + static_cast<std::uint64_t>(*c - u'0');
    digits += c - first;
    return c - first;
  };
  takeDigits();
  std::ptrdiff_t decimals = 0;
  if (c != end && *c == u'.') {
    ++c;
    decimals = takeDigits();
  }
  if (digits == 0 || digits > kMaxPlainDigits || mantissa > kMaxExactMantissa) return nullptr;
  if (c != end && (*c == u'e' || *c == u'E')) return nullptr;
  const double magnitude = static_cast<double>(mantissa) / kPowersOfTen[decimals];
  *value = negative ? -magnitude : magnitude;
  return c;
}

double ScanDouble(std::u16string_view text, std::size_t* consumed) {
  const char16_t* const begin = text.data();
  const char16_t* const end = begin + text.size();
  const char16_t* c = begin;
  double value;
  if (const char16_t* plainEnd = ScanPlainDouble(c, end, &value)) {
    *consumed = static_cast<std::size_t>(plainEnd - begin);
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
