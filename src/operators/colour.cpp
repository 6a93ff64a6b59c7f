#include "operators/colour.h"

#include <cmath>
#include <memory>

#include "host/application.h"
#include "host/colour.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "run/command_queue.h"
#include "run/import_run.h"
#include "run/number_text.h"

namespace {

constexpr double kSmallest = 2.220446049250313e-16;
constexpr double kFullTint = 100.0;
constexpr std::uint32_t kCmykAndRgb = 8;  // tokens of "c m y k r g b operator"

double ClampLow(double value) { return value < kSmallest ? 0.0 : value; }

double Clamp(double value) {
  value = ClampLow(value);
  return value > 1.0 ? 1.0 : value;
}

std::uint32_t Byte(double value) { return static_cast<std::uint32_t>(Truncate(std::floor(value))) & 0xFF; }

PaintColour& SideOf(Side side) { return side == Side::Fill ? CurrentFrame().fill : CurrentFrame().outline; }

void SetName(PaintColour& paint, std::u16string_view name) {
  name = name.substr(0, kMaxColourNameUnits);
  name.copy(paint.name, name.size());
  paint.name[name.size()] = 0;
}

// The colour word is any value but -1, which would mean none.
void SetGray(Side side, double gray) {
  PaintColour& paint = SideOf(side);
  gray = ClampLow(gray);
  paint.cmyk[0] = paint.cmyk[1] = paint.cmyk[2] = 0.0;
  paint.cmyk[3] = 1.0 - (gray > 1.0 ? 1.0 : gray);
  paint.isRgb = 0;
  paint.colour = 0;
}

struct Cmyk {
  double c, m, y, k;
};

Cmyk PopCmyk() {
  Cmyk inks;
  inks.k = PopNumberOrZero();
  inks.y = PopNumberOrZero();
  inks.m = PopNumberOrZero();
  inks.c = PopNumberOrZero();
  return inks;
}

struct Rgb {
  double r, g, b;
};

Rgb PopRgb() {
  Rgb rgb;
  rgb.b = PopNumberOrZero();
  rgb.g = PopNumberOrZero();
  rgb.r = PopNumberOrZero();
  return rgb;
}

void SetScaledCmyk(const Cmyk& inks, double t, Side side, std::u16string_view name) {
  SetFrameCmyk(inks.c * t, inks.m * t, inks.y * t, inks.k * t, side, name, kFullTint);
}

void SetScaledComplement(const Rgb& rgb, double t, Side side, std::u16string_view name) {
  SetFrameCmyk((1.0 - rgb.r) * t, (1.0 - rgb.g) * t, (1.0 - rgb.b) * t, 0.0, side, name, kFullTint);
}

void SetRgbOrCmyk(const OperatorCall& call, Side side) {
  const Rgb rgb = PopRgb();
  if (call.tokenCount != kCmykAndRgb) {
    SetFrameRgb(rgb.r, rgb.g, rgb.b, side, {}, kFullTint);
  } else {
    SetScaledCmyk(PopCmyk(), 1.0, side, {});
  }
}

// An ink that counts only when it was written as a number.
double PopInk() {
  const PoppedOperand operand;
  return operand.Is(OperandKind::Number) ? operand.Number() : 1.0;
}

struct NamedInks {
  double t;
  std::u16string name;
  double k, y, m, c;
};

NamedInks PopNamedInks() {
  NamedInks named;
  named.t = 1.0 - PopNumberOrZero();
  {
    const PoppedOperand name;
    if (name.Is(OperandKind::String)) named.name = name.OwnedText();
  }
  named.k = PopInk();
  named.y = PopInk();
  named.m = PopInk();
  named.c = PopInk();
  return named;
}

constexpr std::size_t kNamedInkOperands = 6;

void SetNamedFill(const NamedInks& named) {
  SetScaledCmyk({named.c, named.m, named.y, named.k}, named.t, Side::Fill, named.name);
}

std::unique_ptr<CQXFullColor> MakeColour(unsigned long id, COLORSPACE space, CORRECTION_MODE correction) {
  return std::make_unique<CQXFullColor>(id, space, correction, kMatt);
}

void SetRgbComponents(CQXFullColor& colour, const PaintColour& paint) {
  colour.SetColor(paint.rgb[0], paint.rgb[1], paint.rgb[2], kRgbSpace);
}

void SetCmykComponents(CQXFullColor& colour, const PaintColour& paint) {
  colour.SetColor(paint.cmyk[0], paint.cmyk[1], paint.cmyk[2], paint.cmyk[3], kCmykSpace);
}

// A colour object without its name. `components` is the object that gets the components of a named RGB colour; it may
// be null.
std::unique_ptr<CQXFullColor> BuildColour(const PaintColour& paint, std::int32_t id, Side side, CQXFullColor* fill) {
  const auto value = static_cast<std::uint32_t>(id);
  std::unique_ptr<CQXFullColor> colour;
  if (paint.kind == 0 && paint.isRgb == 1) {
    colour = MakeColour(value, kRgbSpace, kNoCorrection);
    SetRgbComponents(*colour, paint);
  } else if (paint.kind == 0) {
    colour = MakeColour(value, kCmykSpace, kNoCorrection);
    SetCmykComponents(*colour, paint);
  } else if (paint.kind == 1 && paint.isRgb == 1) {
    colour = MakeColour(value, kRgbSpace, kNamedColourCorrection);
    // The outline's components go to the fill object: it is meant.
    if (side == Side::Fill) {
      SetRgbComponents(*colour, paint);
    } else if (fill) {
      SetRgbComponents(*fill, paint);
    }
    colour->SetTint(paint.tint);
  } else if (paint.kind == 1) {
    colour = MakeColour(value, kCmykSpace, kNamedColourCorrection);
    SetCmykComponents(*colour, paint);
    colour->SetTint(paint.tint);
  } else {
    colour = MakeColour(value, kCmykSpace, kNoCorrection);
    if (side == Side::Fill) SetCmykComponents(*colour, paint);
  }
  return colour;
}

void NameColour(CQXFullColor& colour, const PaintColour& paint) {
  if (paint.name[0] == 0 || colour.IsInvisibleColor() != 0) return;
  colour.SetCorrectionMode(kNamedColourCorrection);
  colour.SetColorName(paint.name);
}

void PushOverprint(CommandKey key) {
  const std::int32_t flag = PopIntegerOrZero();
  if (run.OverprintEnabled != 1) return;
  auto overprint = std::make_unique<CQXOverPrint>();
  overprint->SetOverlayType(flag == 1 ? kOverlay : kNoOverlay, false);
  PushObject(key, std::move(overprint));
}

}  // namespace

void SetFrameRgb(double r, double g, double b, Side side, std::u16string_view name, double tint) {
  PaintColour& paint = SideOf(side);
  const double red = Clamp(r) * 255.0 + 0.5;
  const double green = Clamp(g) * 255.0 + 0.5;
  const double blue = Clamp(b) * 255.0 + 0.5;
  paint.colour = static_cast<std::int32_t>(Byte(red) | Byte(green) << 8 | Byte(blue) << 16);
  SetName(paint, name);
  paint.kind = 0;
  paint.tint = Truncate(tint);
  paint.rgb[0] = std::trunc(red);
  paint.rgb[1] = std::trunc(green);
  paint.rgb[2] = std::trunc(blue);
  paint.isRgb = 1;
}

void SetFrameCmyk(double c, double m, double y, double k, Side side, std::u16string_view name, double tint) {
  PaintColour& paint = SideOf(side);
  const double inks[4] = {Clamp(c), Clamp(m), Clamp(y), Clamp(k)};
  std::uint32_t packed = 0;
  for (int i = 0; i < 4; ++i) packed |= Byte(inks[i] * 255.0 + 0.5) << (8 * i);
  paint.colour = static_cast<std::int32_t>(packed);
  SetName(paint, name);
  paint.kind = 0;
  paint.tint = Truncate(tint);
  for (int i = 0; i < 4; ++i) paint.cmyk[i] = inks[i];
  paint.isRgb = 0;
}

void EmitPaintColours() {
  const GraphicsState& frame = CurrentFrame();
  const PathState& path = run.path;
  const std::int32_t fillId = path.fillSelector == 1    ? frame.fill.colour
                              : path.fillSelector == -1 ? frame.outline.colour
                                                        : -1;

  CQXFullColor* sentFill = nullptr;
  if (!run.paint.GradientFillPending) {
    auto fill = fillId == -1 ? MakeColour(0xFFFFFFFF, kRgbSpace, kNoCorrection)
                             : BuildColour(frame.fill, fillId, Side::Fill, nullptr);
    NameColour(*fill, frame.fill);
    sentFill = fill.get();
    PushObject(KEY_NFIL, std::move(fill));
  }
  run.paint.GradientFillPending = 0;

  auto outline = !path.strokeSelected || frame.outline.colour == -1
                     ? MakeColour(0xFFFFFFFF, kRgbSpace, kNoCorrection)
                     : BuildColour(frame.outline, frame.outline.colour, Side::Outline, sentFill);
  NameColour(*outline, frame.outline);
  PushObject(KEY_NOTL, std::move(outline));
}

// g: gray -> -
void OperatorGrayFill(const OperatorCall&) {
  double gray;
  if (PopNumber(&gray)) SetGray(Side::Fill, gray);
}

// wSg: gray -> -. Black when the operand is missing.
void OperatorGrayFillOrBlack(const OperatorCall&) { SetGray(Side::Fill, PopNumberOrZero()); }

// G: gray -> -
void OperatorGrayOutline(const OperatorCall&) {
  double gray;
  if (PopNumber(&gray)) SetGray(Side::Outline, gray);
}

// k, wCM: c m y k -> -
void OperatorCmykFill(const OperatorCall&) { SetScaledCmyk(PopCmyk(), 1.0, Side::Fill, {}); }

// K: c m y k -> -
void OperatorCmykOutline(const OperatorCall&) { SetScaledCmyk(PopCmyk(), 1.0, Side::Outline, {}); }

// wFt: [c2 m2 y2 k2] c m y k ignored -> -. The mean of both sets, as far as the second is there.
void OperatorAverageFill(const OperatorCall&) {
  PopDiscard();
  Cmyk inks = PopCmyk();
  double second;
  for (double* ink : {&inks.k, &inks.y, &inks.m, &inks.c}) {
    if (!PopNumber(&second)) break;
    *ink = (*ink + second) * 0.5;
  }
  SetScaledCmyk(inks, 1.0, Side::Fill, {});
}

// wSr: r g b -> -
void OperatorRgbFill(const OperatorCall&) {
  const Rgb rgb = PopRgb();
  SetFrameRgb(rgb.r, rgb.g, rgb.b, Side::Fill, {}, kFullTint);
}

// Xa: [c m y k] r g b -> -. As the eighth token of its text it takes the inks and drops the triple.
void OperatorRgbOrCmykFill(const OperatorCall& call) { SetRgbOrCmyk(call, Side::Fill); }

// XA, RG: the same
void OperatorRgbOrCmykOutline(const OperatorCall& call) { SetRgbOrCmyk(call, Side::Outline); }

// X: c m y k (name) tint -> -
void OperatorNamedOutline(const OperatorCall&) {
  const double t = 1.0 - PopNumberOrZero();
  const PoppedOperand name;
  SetScaledCmyk(PopCmyk(), t, Side::Outline, name.OwnedText());
}

// XX: r g b (name) any tint -> -
void OperatorNamedRgbOutline(const OperatorCall&) {
  const double t = PopNumberOrZero();
  PopDiscard();
  const PoppedOperand name;
  SetScaledComplement(PopRgb(), t, Side::Outline, name.OwnedText());
}

// Xx: r g b (name) tint any -> -
void OperatorNamedRgbFill(const OperatorCall&) {
  double t = PopNumberOrZero();
  double tint;
  if (!PopNumber(&tint)) {
    SetScaledComplement({0.0, 0.0, 0.0}, t, Side::Fill, {});
    return;
  }
  t = 1.0 - tint;
  const PoppedOperand name;
  SetScaledComplement(PopRgb(), t, Side::Fill, name.OwnedText());
}

// x: c m y k (name) tint -> -. Fewer than six operands are left where they are, and the colours go out all the same.
void OperatorNamedFill(const OperatorCall&) {
  if (run.operands.size() >= kNamedInkOperands) SetNamedFill(PopNamedInks());
  run.path.fillSelector = 1;
  EmitPaintColours();
}

// @x: [c m y k (name) tint] c m y k (name) tint any any any any any -> -. The mean of both sets, as far as the second
// is there; its name counts. No colours go out here.
void OperatorMeanNamedFill(const OperatorCall&) {
  DropOperands(5);
  if (run.operands.size() < kNamedInkOperands) return;
  NamedInks named = PopNamedInks();
  if (!run.operands.empty()) {
    const PoppedOperand tint;
    if (tint.Is(OperandKind::Number)) named.t = (1.0 - tint.Number() + named.t) * 0.5;
  }
  if (!run.operands.empty()) {
    const PoppedOperand name;
    if (name.Is(OperandKind::String)) named.name = name.OwnedText();
  }
  for (double* ink : {&named.k, &named.y, &named.m, &named.c}) {
    if (run.operands.empty()) break;
    const PoppedOperand second;
    if (second.Is(OperandKind::Number)) *ink = (*ink + second.Number()) * 0.5;
  }
  SetNamedFill(named);
}

// get_csd: /index -> -. The colour table has no rows, so that every index is out of range.
void OperatorColourTableRow(const OperatorCall&) {
  const PoppedOperand index;
  if (!index.Is(OperandKind::LiteralName)) return;
  TMessageBox(nullptr, u"CSD error", u"error", 0);
}

// @g: - -> -
void OperatorSelectFill(const OperatorCall&) { run.path.fillSelector = 1; }

// O: flag -> -
void OperatorFillOverprint(const OperatorCall&) { PushOverprint(KEY_LYOT); }

// R: flag -> -
void OperatorOutlineOverprint(const OperatorCall&) { PushOverprint(KEY_LIOT); }
