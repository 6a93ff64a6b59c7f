// Numbers in text, read the same on every machine and in every locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// Reads a decimal number from the very start of the text: optional sign, digits with a point, optional exponent. What
// is too large becomes infinite, what is too small zero, with its sign. `consumed` receives the units read, 0 when
// there is no number, and the result is then 0.0.
double ScanDouble(std::u16string_view text, std::size_t* consumed);

// The number that the text begins with, behind white space; 0.0 when there is none.
double LeadingNumber(std::u16string_view text);

// The integer that the text begins with, behind white space; 0 when there is none. Stops at the ends of 32 bits.
// `consumed` may be null; it receives the units read with the white space, 0 when there is no integer.
std::int32_t LeadingInteger(std::u16string_view text, std::size_t* consumed = nullptr);

// Cuts towards zero; NaN and what does not fit give -2147483648.
std::int32_t Truncate(double value);

// What the platform's text functions take for white space: the blank, and 9 to 13.
inline bool IsSpace(char16_t unit) { return unit == 32 || (unit >= 9 && unit <= 13); }

inline bool IsDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }
