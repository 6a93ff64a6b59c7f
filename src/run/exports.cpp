// The exports that come with the host's headers, beside the entry points.

#include "run/exports.h"

#include <string>

#include "host/application.h"
#include "host/base_dir.h"
#include "host/font_manager.h"
#include "host/settings.h"
#include "run/import_run.h"

namespace {

constexpr unsigned kWarning = 0x2030;

}  // namespace

void FloatErrorMsg(int a, int b) {
  if (run.logMathErrors == -1)
    run.logMathErrors = GetIntTavlor(u"Preferences", u"LogMathErrors", 0, kUserDataStore, nullptr);
  if (run.logMathErrors == 0) return;
  if (run.floatErrorNesting++ == 0) {
    std::u16string text = u"Float Error ";
    for (char c : std::to_string(a) + ' ' + std::to_string(b)) text += static_cast<char16_t>(c);
    TMessageBox(nullptr, text.c_str(), nullptr, kWarning);
  }
  --run.floatErrorNesting;
}

void translate_point(double* x, double* y, const TM* m) {
  const Point p = TransformPoint(*m, {*x, *y});
  *x = p.x;
  *y = p.y;
}

DynamicLink<FontManagerSupport>* GetFontManager() { return run.fontManager.link; }

int UsingFontManager() { return run.FontManagerLinked; }

template class DynamicLinkBase<FontManagerSupportDefault>;
