// Fuzzes the decoder of embedded images.

#include "images/base64.h"

#include <cstdlib>

#include "fuzz/support/fuzz_run.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::u16string text = TextOfInput(data, size);
  // Four digits of six bits are at most three bytes.
  if (DecodeBase64(text).size() > text.size() / 4 * 3 + 3) std::abort();
  return 0;
}
