// Fuzzes the data of a path: the input is the value of d. Whatever it holds, the machine must stand as it stood before.

#include <cstdlib>
#include <string>

#include "fuzz/support/fuzz_run.h"
#include "run/import_run.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartFresh();
  const std::string value = AttributeValue({reinterpret_cast<const char*>(data), size});
  ImportDocument(DocumentOf("<path d=\"" + value + "\"/>"));
  const bool settled = run.graphics.frameIndex == 0 && run.graphics.saveDepth == 0 && run.path.PathOpen == 0;
  if (!settled || !run.operands.empty()) std::abort();
  return 0;
}
