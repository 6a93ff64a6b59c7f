// Embedded image data.
#pragma once

#include <string>
#include <string_view>

// Decodes up to the first "=", or the first unit that is neither of the alphabet nor white space, which is skipped. A
// group that ends early gives the bytes it holds.
std::string DecodeBase64(std::u16string_view text);
