// Fuzzes the short way from a text to its tree: what it takes the library must take too, and make the same tree of it.
// The input is the bytes of a file. Behind a first byte of 1 they are UTF-8, and behind one of 2 they are units as
// such, the low byte first.

#include "platform/xml_plain.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "platform/narrow_text.h"
#include "tests/platform/tree_comparison.h"

namespace {

std::u16string TextOf(std::string_view input) {
  const char kind = input.empty() ? '\0' : input[0];
  if (kind == 1) return WideFromUtf8(input.substr(1));
  if (kind != 2) return WideFromNarrow(input);
  std::u16string units;
  for (std::size_t i = 1; i + 1 < input.size(); i += 2) {
    units +=
        static_cast<char16_t>(static_cast<unsigned char>(input[i]) | static_cast<unsigned char>(input[i + 1]) << 8);
  }
  return units;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::u16string text = TextOf({reinterpret_cast<const char*>(data), size});
  // A copy with nothing behind its last unit, so that each step beyond it is found.
  const std::vector<char16_t> units(text.begin(), text.end());
  XmlTree plain;
  if (!ReadPlainXml({units.data(), units.size()}, &plain)) return 0;
  XmlTree library;
  if (!ReadByLibrary(text, &library) || WrittenTree(plain) != WrittenTree(library)) std::abort();
  return 0;
}
