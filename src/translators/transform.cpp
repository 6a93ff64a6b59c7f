#include "translators/transform.h"

#include <cmath>
#include <cstddef>

#include "operators/graphics_state.h"
#include "run/number_text.h"

namespace {

constexpr double kDegreesPerRadian = 57.29578;

// Reads up to `count` numbers with the separator between them, white space allowed in front of each: "%lf,%lf" or "%lf
// %lf".
std::size_t ScanNumbers(std::u16string_view text, bool commas, std::size_t count, double* numbers) {
  std::size_t i = 0;
  for (std::size_t n = 0; n < count; ++n) {
    if (n > 0 && commas) {
      if (i >= text.size() || text[i] != u',') return n;
      ++i;
    }
    while (i < text.size() && IsSpace(text[i])) ++i;
    std::size_t consumed;
    numbers[n] = ScanDouble(text.substr(i), &consumed);
    if (consumed == 0) return n;
    i += consumed;
  }
  return count;
}

// Numbers between blanks, else between commas, all in one manner. What the second scan did not reach keeps what the
// first gave.
std::size_t ScanEither(std::u16string_view text, std::size_t count, double* numbers) {
  const std::size_t found = ScanNumbers(text, false, count, numbers);
  return found == count ? found : ScanNumbers(text, true, count, numbers);
}

bool ScanTranslate(std::u16string_view arguments, TM* m) {
  double t[2] = {0.0, 0.0};
  const std::size_t found = ScanEither(arguments, 2, t);
  *m = {1.0, 0.0, 0.0, 1.0, t[0], found == 2 ? t[1] : 0.0};
  return found > 0;
}

bool ScanScale(std::u16string_view arguments, TM* m) {
  double s[2] = {0.0, 0.0};
  const std::size_t found = ScanEither(arguments, 2, s);
  *m = {s[0], 0.0, 0.0, found == 2 ? s[1] : s[0], 0.0, 0.0};
  return found > 0;
}

bool ScanMatrix(std::u16string_view arguments, TM* m) {
  double n[6] = {};
  if (ScanEither(arguments, 6, n) != 6) return false;
  *m = {n[0], n[1], n[2], n[3], n[4], n[5]};
  return true;
}

// One number, in degrees; a centre of rotation is not read.
bool ScanAngle(std::u16string_view arguments, double* radians) {
  if (ScanNumbers(arguments, false, 1, radians) == 0) return false;
  *radians /= kDegreesPerRadian;
  return true;
}

bool ScanRotate(std::u16string_view arguments, TM* m) {
  double angle;
  if (!ScanAngle(arguments, &angle)) return false;
  *m = {std::cos(angle), std::sin(angle), -std::sin(angle), std::cos(angle), 0.0, 0.0};
  return true;
}

bool ScanSkewX(std::u16string_view arguments, TM* m) {
  double angle;
  if (!ScanAngle(arguments, &angle)) return false;
  *m = {1.0, 0.0, std::tan(angle), 1.0, 0.0, 0.0};
  return true;
}

bool ScanSkewY(std::u16string_view arguments, TM* m) {
  double angle;
  if (!ScanAngle(arguments, &angle)) return false;
  *m = {1.0, std::tan(angle), 0.0, 1.0, 0.0, 0.0};
  return true;
}

// A function is told by one letter at one place: "turnaround" translates.
struct Function {
  char16_t first;
  std::size_t place;
  char16_t letter;
  bool (*scan)(std::u16string_view arguments, TM* m);
  bool currentAlways;  // skewX goes into the current matrix whatever the target: it is meant
};

constexpr Function kFunctions[] = {
    {u't', 0, u't', ScanTranslate, false}, {u's', 1, u'c', ScanScale, false},  {u's', 4, u'X', ScanSkewX, true},
    {u's', 4, u'Y', ScanSkewY, false},     {u'm', 0, u'm', ScanMatrix, false}, {u'r', 0, u'r', ScanRotate, false},
};

const Function* FindFunction(std::u16string_view text) {
  for (const Function& function : kFunctions) {
    if (text[0] == function.first && function.place < text.size() && text[function.place] == function.letter) {
      return &function;
    }
  }
  return nullptr;
}

}  // namespace

void ParseTransform(std::u16string_view text, MatrixTarget target) {
  std::size_t i = 0;
  while (true) {
    if (i < text.size() && text[i] == u',') ++i;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t' || text[i] == u'\n' || text[i] == u'\r')) ++i;
    if (i >= text.size()) return;
    text.remove_prefix(i);
    const Function* function = FindFunction(text);
    if (!function) return;
    const std::size_t open = text.find(u'(');
    TM m;
    if (open != text.npos && function->scan(text.substr(open + 1), &m)) {
      GraphicsState& frame = CurrentFrame();
      TM& matrix =
          target == MatrixTarget::Current || function->currentAlways ? frame.currentMatrix : frame.gradientMatrix;
      matrix = ConcatMatrix(m, matrix);
    }
    i = text.find(u')');
    if (i == text.npos) return;
    ++i;
  }
}
