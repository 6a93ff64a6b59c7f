// The table of operators: how a token is matched, and what it does.

#include <array>
#include <cstdint>

#include "images/image_operators.h"
#include "operators/clip.h"
#include "operators/colour.h"
#include "operators/graphics_state.h"
#include "operators/line_attributes.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "operators/painting.h"
#include "operators/path.h"
#include "operators/path_end.h"
#include "operators/polygon.h"
#include "paint/gradient_fill.h"
#include "paint/named_gradient.h"
#include "run/import_run.h"
#include "run/number_text.h"

namespace {

using Handler = void (*)(const OperatorCall&);

enum Match : std::uint8_t {
  kExactly,     // the whole token
  kAnySuffix,   // the token's first units
  kExactClear,  // the same two, with the operand stack cleared after the work
  kSuffixClear,
};

struct Row {
  std::u16string_view spelling;
  Match match;
  Handler handler;
};

// - -> -
void OperatorIgnored(const OperatorCall&) {}

// @sax: - -> -. The numbers of the next array land on the stack one by one.
void OperatorScatterArray(const OperatorCall&) { run.skipArrayOpen = 1; }

// P: eleven operands -> -
void OperatorDropEleven(const OperatorCall&) { DropOperands(11); }

// P?: the operands of the same text -> -
void OperatorDropText(const OperatorCall& call) { DropOperands(static_cast<std::int32_t>(call.tokenCount) - 1); }

// Xh: [matrix] width height -> -. An image header that nothing reads; it stops at the first operand that is missing.
void OperatorImageHeader(const OperatorCall&) { DropOperands(3); }

// Rows of one first unit stand together, and the first that matches counts. A token that matches none is ignored if its
// first unit stands in kIgnoring below, and clears the operand stack otherwise.
constexpr Row kRows[] = {
    {u"*u", kExactly, OperatorBeginCompound},
    {u"*U", kExactly, OperatorEndCompound},
    {u"@", kExactly, OperatorCloseStroke},
    {u"@B", kExactly, OperatorFillStroke},
    {u"@B", kAnySuffix, OperatorIgnored},
    {u"@b", kExactly, OperatorCloseFillStroke},
    {u"@c", kExactly, OperatorCloseAlone},
    {u"@k", kExactly, OperatorGradientFill},
    {u"@w", kExactly, OperatorLineWidthOfMatrix},
    {u"@x", kExactly, OperatorMeanNamedFill},
    {u"@g", kAnySuffix, OperatorSelectFill},
    {u"@rax", kAnySuffix, OperatorReplaceTopFrame},
    {u"@rs", kExactly, OperatorRestoreMatrix},
    {u"@sv", kExactly, OperatorSaveMatrix},
    {u"@sax", kExactly, OperatorScatterArray},
    {u"A", kAnySuffix, OperatorArc},
    {u"B", kExactly, OperatorFillStroke},
    {u"Bg", kSuffixClear, OperatorNamedGradient},
    {u"BB", kSuffixClear, OperatorFlatFill},
    {u"Bm", kSuffixClear, OperatorNamedGradientMatrix},
    {u"C", kAnySuffix, OperatorCurve},
    {u"E", kAnySuffix, OperatorEllipse},
    {u"F", kExactly, OperatorFill},
    {u"Fillp", kExactly, OperatorFill},
    {u"G", kExactly, OperatorGrayOutline},
    {u"H", kAnySuffix, OperatorHorizontal},
    {u"J", kExactly, OperatorLineCap},
    {u"K", kExactly, OperatorCmykOutline},
    {u"L", kAnySuffix, OperatorLineTo},
    {u"M", kAnySuffix, OperatorMoveTo},
    {u"N", kExactly, OperatorDiscard},
    {u"O", kExactly, OperatorFillOverprint},
    {u"P", kExactly, OperatorDropEleven},
    {u"Pa", kAnySuffix, OperatorFillStroke},
    {u"P", kAnySuffix, OperatorDropText},
    {u"Q", kAnySuffix, OperatorQuadratic},
    {u"R", kExactly, OperatorOutlineOverprint},
    {u"RG", kAnySuffix, OperatorRgbOrCmykOutline},
    {u"S", kExactly, OperatorStroke},
    {u"S", kAnySuffix, OperatorSmoothCurve},
    {u"Tp", kAnySuffix, OperatorSmoothQuadratic},
    {u"U", kExactly, OperatorEndGroup},
    {u"V", kAnySuffix, OperatorVertical},
    {u"W", kExactly, OperatorClip},
    {u"W*", kAnySuffix, OperatorClip},
    {u"Xa", kAnySuffix, OperatorRgbOrCmykFill},
    {u"XA", kAnySuffix, OperatorRgbOrCmykOutline},
    {u"Xm", kAnySuffix, OperatorNamedGradientMatrix},
    {u"Xh", kAnySuffix, OperatorImageHeader},
    {u"Xx", kAnySuffix, OperatorNamedRgbFill},
    {u"X", kExactly, OperatorNamedOutline},
    {u"XX", kExactly, OperatorNamedRgbOutline},
    {u"XXX", kAnySuffix, OperatorBeginClipped},
    {u"Y", kExactly, OperatorCurveToEnd},
    {u"Z2", kAnySuffix, OperatorCloseIfNear},
    {u"Z", kAnySuffix, OperatorClose},
    {u"a", kAnySuffix, OperatorArc},
    {u"b", kExactly, OperatorCloseFillStroke},
    {u"ci", kAnySuffix, OperatorCircle},
    {u"c", kAnySuffix, OperatorCurve},
    {u"d", kExactly, OperatorDash},
    {u"f", kExactly, OperatorFill},
    {u"fill", kAnySuffix, OperatorFill},
    {u"g", kExactly, OperatorGrayFill},
    {u"gs", kAnySuffix, OperatorPushState},
    {u"gr", kAnySuffix, OperatorPopState},
    {u"get_csd", kAnySuffix, OperatorColourTableRow},
    {u"h", kAnySuffix, OperatorHorizontal},
    {u"image", kSuffixClear, OperatorImage},
    {u"i", kExactly, OperatorFlatness},
    {u"j", kExactly, OperatorLineJoin},
    {u"k", kExactly, OperatorCmykFill},
    {u"l", kAnySuffix, OperatorLineTo},
    {u"m", kAnySuffix, OperatorMoveTo},
    {u"n", kExactly, OperatorDiscardOrClear},
    {u"newpath", kAnySuffix, OperatorDiscardOrClear},
    {u"pf", kAnySuffix, OperatorPatternImage},
    {u"q", kAnySuffix, OperatorQuadratic},
    {u"rect", kExactly, OperatorRectangle},
    {u"s", kExactly, OperatorCloseStroke},
    {u"s", kAnySuffix, OperatorSmoothCurve},
    {u"tp", kAnySuffix, OperatorSmoothQuadratic},
    {u"tr", kAnySuffix, OperatorTranslate},
    {u"u", kExactly, OperatorStartGroup},
    {u"v", kAnySuffix, OperatorVertical},
    {u"w", kExactly, OperatorLineWidth},
    {u"wCM", kAnySuffix, OperatorCmykFill},
    {u"wCp", kAnySuffix, OperatorClose},
    {u"wCto", kAnySuffix, OperatorCurveAbsolute},
    {u"wDocm", kExactly, OperatorRestoreDocumentMatrix},
    {u"wE", kExactly, OperatorEllipse},
    {u"wFt", kAnySuffix, OperatorAverageFill},
    {u"wLt", kAnySuffix, OperatorLineToAbsolute},
    {u"wMt", kAnySuffix, OperatorMoveToAbsolute},
    {u"wPn", kAnySuffix, OperatorLineWidthOfAxes},
    {u"wRe", kAnySuffix, OperatorRestoreMatrix},
    {u"wSg", kAnySuffix, OperatorGrayFillOrBlack},
    {u"wSr", kAnySuffix, OperatorRgbFill},
    {u"wTl", kAnySuffix, OperatorTranslate},
    {u"wSav", kExactly, OperatorSaveMatrix},
    {u"wclip", kExactClear, OperatorEndClip},
    {u"x", kExactly, OperatorNamedFill},
    {u"y", kExactly, OperatorCurveToEnd},
    {u"z2", kAnySuffix, OperatorCloseIfNear},
    {u"z", kAnySuffix, OperatorClose},
};

constexpr std::u16string_view kIgnoring = u"BTWbnr";

constexpr char16_t kLowest = u'*';
constexpr char16_t kHighest = u'z';

// Where the rows of each first unit begin and end.
struct Range {
  std::uint8_t begin = 0;
  std::uint8_t end = 0;
};

constexpr std::array<Range, kHighest - kLowest + 1> kRanges = [] {
  std::array<Range, kHighest - kLowest + 1> ranges;
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    Range& range = ranges[kRows[i].spelling[0] - kLowest];
    if (range.end == 0) range.begin = static_cast<std::uint8_t>(i);
    range.end = static_cast<std::uint8_t>(i + 1);
  }
  return ranges;
}();

bool Matches(const Row& row, std::u16string_view token) {
  if (row.match == kExactly || row.match == kExactClear) return token == row.spelling;
  return token.starts_with(row.spelling);
}

}  // namespace

void ExecuteOperator(const OperatorCall& call) {
  const char16_t first = call.token[0];
  if (first < kLowest || first > kHighest) {
    ClearOperands();
    return;
  }
  const Range range = kRanges[first - kLowest];
  for (std::size_t i = range.begin; i < range.end; ++i) {
    const Row& row = kRows[i];
    if (!Matches(row, call.token)) continue;
    row.handler(call);
    if (row.match == kExactClear || row.match == kSuffixClear) ClearOperands();
    return;
  }
  if (kIgnoring.find(first) == kIgnoring.npos) ClearOperands();
}
