// Fuzzes the operator machine. Each line of the input is one text, fed for its operands alone if it begins with "> ",
// and executed otherwise; all that comes of it is released.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/support/fuzz_run.h"
#include "operators/operator_machine.h"
#include "platform/narrow_text.h"
#include "run/entry_points.h"
#include "run/import_run.h"

namespace {

void FillNamedGradients() {
  NamedGradient linear;
  linear.name = u"fire";
  linear.stops = {{0, 0, 0, 0, 100, u"a"}, {255, 0, 0, 0, 50, u"b"}, {0, 255, 0, 0, 0, u"c"}};
  linear.positions = {0.0, 50.0, 100.0};
  NamedGradient radial = linear;
  radial.name = u"sun";
  radial.type = 1;
  radial.positions = {100.0, 50.0, 0.0};
  NamedGradient spot = linear;
  spot.name = u"spot";
  spot.spotFill = 1;
  run.namedGradients = {linear, radial, spot};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartFresh();
  PrepareOperatorMachine();
  FillNamedGradients();
  std::string_view text(reinterpret_cast<const char*>(data), size);
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    line = line.substr(0, line.find('\0'));
    const bool pushOnly = line.starts_with("> ");
    if (pushOnly) line.remove_prefix(2);
    FeedOperatorText(WideFromNarrow(line), pushOnly ? kPushOnly : kExecute);
    ReleaseQueue();
  }
  return 0;
}
