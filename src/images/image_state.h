// What the image translators and the image operators share.
#pragma once

#include <cstdint>
#include <string>

struct ImageState {
  std::uint32_t ImagePathIsAbsolute = 0;  // the pattern's path operand is the full path of a file that was made for it
  std::u16string ImagePathBuffer;         // the path being resolved
};
