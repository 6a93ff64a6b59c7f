// Fuzzes whole imports: the input is the file.

#include "fuzz/support/fuzz_run.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartFresh();
  ImportDocument({reinterpret_cast<const char*>(data), size});
  return 0;
}
