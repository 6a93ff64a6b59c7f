// Decoding of PNG and JPEG files for the reference host's bitmap. Internal to the host.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace headless {

struct DecodedImage {
  std::uint32_t width = 0, height = 0;
  std::vector<unsigned char> pixels;  // rows from the top, red, green, blue, alpha, alpha not multiplied in
};

// Nothing when the bytes are neither format, are damaged, or exceed the limits of limits.h, which are tested before
// anything is decoded. A JPEG that ends early is decoded as far as it goes.
std::optional<DecodedImage> DecodeImage(std::span<const unsigned char> bytes);

}  // namespace headless
