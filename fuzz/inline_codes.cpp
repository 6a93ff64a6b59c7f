// Fuzzes the inline codes of texts: the input is the characters of a text element, as they come out of the document.

#include "filter_limits.h"
#include "fuzz/support/fuzz_run.h"
#include "host/composer.h"
#include "run/entry_points.h"
#include "run/import_run.h"
#include "text/paragraph.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartFresh();
  PrepareOperatorMachine();
  run.FontReplacementObject = std::make_unique<CFontReplacement>("svg");
  run.text.SetFontName(u"arial");
  run.text.TextBuffer = TextOfInput(data, size).substr(0, kMaxTextUnits);
  ComposeParagraph();
  ReleaseQueue();
  return 0;
}
