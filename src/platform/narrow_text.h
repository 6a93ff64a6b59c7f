// Texts of 8-bit units: the narrow code page, which is Windows-1252, and UTF-8 for the operating system's edge.
#pragma once

#include <string>
#include <string_view>

// The five bytes that Windows-1252 leaves unassigned (81, 8D, 8F, 90, 9D) stand for the control codes of the same
// number, so that every byte survives the way there and back.
// `wide` has room for as many units as there are bytes.
void WidenNarrow(std::string_view narrow, char16_t* wide);
std::u16string WideFromNarrow(std::string_view narrow);

// A unit that the code page does not have becomes '?'.
void AppendNarrowFromWide(std::string& narrow, std::u16string_view wide);
std::string NarrowFromWide(std::u16string_view wide);

// A surrogate without its partner becomes U+FFFD.
std::string Utf8FromWide(std::u16string_view wide);

// An invalid sequence becomes U+FFFD: one for each longest piece that begins a valid sequence, and one for each byte
// that begins none.
std::u16string WideFromUtf8(std::string_view utf8);
