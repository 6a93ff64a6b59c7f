// Fuzzes the style texts. Each line of the input is one text, which goes through the parsers of shapes, groups and
// texts, with clips, gradients and patterns there to be found.

#include <string_view>

#include "document/load.h"
#include "document/node_access.h"
#include "fuzz/support/fuzz_run.h"
#include "operators/graphics_state.h"
#include "operators/operator_machine.h"
#include "platform/narrow_text.h"
#include "run/entry_points.h"
#include "run/import_run.h"
#include "translators/clip_reference.h"
#include "translators/style.h"

namespace {

constexpr std::string_view kDefinitions =
    "<defs><linearGradient id='a' xlink:href='#b' gradientTransform='scale(2)'><linearGradient "
    "id='n'/></linearGradient>"
    "<linearGradient id='b'><stop offset='0.1' style='stop-color:#123456;stop-opacity:.5'/><stop offset='1'/>"
    "</linearGradient><radialGradient id='r' cx='1' r='2' xlink:href='#b'><g><path style='fill:url(#r)' d='M0 0L1 "
    "1'/></g>"
    "</radialGradient><pattern id='p' width='3'><image xlink:href='none.png'/><ellipse rx='1' ry='1'/></pattern>"
    "<clipPath id='c'><rect width='1' height='1'/></clipPath></defs>";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartFresh();
  PrepareOperatorMachine();
  const std::string document = DocumentOf(kDefinitions);
  run.file.FileBuffer.reset(new char[document.size() + 1]());
  document.copy(run.file.FileBuffer.get(), document.size());
  run.RootNode = LoadDocument();
  AllocateDefinitions(run.definitions.PatternDefs);
  AllocateDefinitions(run.definitions.ClipDefs);
  AllocateDefinitions(run.definitions.GradientDefs);
  CollectChildNodes(run.RootNode, run.NodeList);
  RunDefinitionsPrePass(run.NodeList.At(0));
  const std::u16string input = TextOfInput(data, size);
  for (std::u16string_view rest = input; !rest.empty();) {
    const std::u16string_view text = rest.substr(0, rest.find(u'\n'));
    rest.remove_prefix(text.size() < rest.size() ? text.size() + 1 : text.size());
    PushGraphicsState();
    ApplyShapeStyle(text);
    ApplyClipReference(text);
    ApplyGroupStyle(text);
    ApplyTextStyle(text, false);
    ApplyTextStyle(text, true);
    PopGraphicsState();
    ReleaseQueue();
  }
  CloseFile();
  return 0;
}
