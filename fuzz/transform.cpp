// Fuzzes the transform attributes: the input is the text.

#include "translators/transform.h"
#include "fuzz/support/fuzz_run.h"
#include "run/entry_points.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartFresh();
  PrepareOperatorMachine();
  const std::u16string text = TextOfInput(data, size);
  ParseTransform(text, MatrixTarget::Current);
  ParseTransform(text, MatrixTarget::Gradient);
  return 0;
}
