#include "operators/operand_stack.h"

#include <bit>
#include <cstdlib>
#include <cstring>

#include "filter_limits.h"
#include "run/import_run.h"
#include "run/number_text.h"

namespace {

bool OwnsText(const Operand& operand) {
  return operand.kind == OperandKind::String || operand.kind == OperandKind::LiteralName ||
         operand.kind == OperandKind::Name;
}

bool PushText(OperandKind kind, std::u16string_view text) {
  Operand operand{};
  operand.kind = kind;
  operand.length = static_cast<std::uint32_t>(text.size());
  operand.text = static_cast<char16_t*>(std::malloc((text.size() + 1) * sizeof(char16_t)));
  if (!operand.text) return false;
  text.copy(operand.text, text.size());
  operand.text[text.size()] = 0;
  if (run.operands.Push(operand)) return true;
  std::free(operand.text);
  return false;
}

// The numbers behind a "[". Whatever is neither a number nor white space is stepped over; a "]" ends the list.
std::uint32_t ScanArray(std::u16string_view text, double* values) {
  std::uint32_t count = 0;
  for (std::size_t i = 0; i < text.size() && text[i] != u']';) {
    if (text[i] <= 32) {
      ++i;
      continue;
    }
    std::size_t consumed;
    const double value = ScanDouble(text.substr(i), &consumed);
    if (consumed == 0) {
      ++i;
      continue;
    }
    if (values) values[count] = value;
    ++count;
    i += consumed;
  }
  return count;
}

void PushArray(std::u16string_view text) {
  Operand operand{};
  operand.kind = OperandKind::Array;
  operand.length = ScanArray(text, nullptr);
  operand.values = nullptr;
  if (operand.length > 0) {
    operand.values = static_cast<double*>(std::calloc(operand.length, sizeof(double)));
    if (!operand.values) return;
    ScanArray(text, operand.values);
  }
  if (!run.operands.Push(operand)) FreeOperand(operand);
}

}  // namespace

std::u16string_view TextOf(const Operand& operand) {
  return OwnsText(operand) ? std::u16string_view(operand.text, operand.length) : std::u16string_view();
}

std::span<const double> ValuesOf(const Operand& operand) {
  if (operand.kind != OperandKind::Array) return {};
  return {operand.values, operand.length};
}

double NumberOf(const Operand& operand) {
  switch (operand.kind) {
    case OperandKind::Number:
      return operand.number;
    case OperandKind::Name: {
      char16_t units[4] = {};
      TextOf(operand).copy(units, 4);
      double value;
      std::memcpy(&value, units, sizeof value);
      return value;
    }
    case OperandKind::Array:
      return std::bit_cast<double>(std::uint64_t{operand.length});
    default:
      return 0.0;
  }
}

OperandStack::~OperandStack() {
  while (size_ > 0) FreeOperand(operands_[--size_]);
  std::free(operands_);
}

bool OperandStack::Push(const Operand& operand) {
  if (size_ == room_) {
    const std::size_t room = room_ ? room_ * 2 : 64;
    auto* larger = static_cast<Operand*>(std::realloc(operands_, room * sizeof(Operand)));
    if (!larger) return false;
    operands_ = larger;
    room_ = room;
  }
  operands_[size_++] = operand;
  return true;
}

void FreeOperand(Operand& operand) {
  if (OwnsText(operand)) {
    std::free(operand.text);
  } else if (operand.kind == OperandKind::Array) {
    std::free(operand.values);
  }
}

void ClearOperands() {
  while (PopDiscard()) {
  }
}

void DropOperands(std::int32_t n) {
  while (n > 0 && PopDiscard()) --n;
}

void PushToken(std::u16string_view token) {
  const char16_t c = token.empty() ? u'\0' : token[0];
  if (c == u'+' || c == u'-' || c == u'.' || IsDigit(c)) {
    std::size_t consumed;
    PushNumber(ScanDouble(token, &consumed));
  } else if (c == u'(') {
    PushText(OperandKind::String, token.substr(1));
  } else if (c == u'[') {
    PushArray(token.substr(1));
  } else if (c == u'/') {
    PushText(OperandKind::LiteralName, token.substr(1));
  } else {
    PushText(OperandKind::Name, token.substr(0, kMaxNameUnits));
  }
}

void PushNumber(double value) {
  Operand operand{};
  operand.kind = OperandKind::Number;
  operand.number = value;
  run.operands.Push(operand);
}

bool PopNumber(double* value) {
  if (run.operands.empty()) return false;
  Operand operand = run.operands.Unlink();
  *value = NumberOf(operand);
  FreeOperand(operand);
  return true;
}

double PopNumberOrZero() {
  double value = 0.0;
  PopNumber(&value);
  return value;
}

std::int32_t PopIntegerOrZero() { return Truncate(PopNumberOrZero()); }

bool PopDiscard() {
  if (run.operands.empty()) return false;
  Operand operand = run.operands.Unlink();
  FreeOperand(operand);
  return true;
}

PoppedOperand::PoppedOperand() {
  if (run.operands.empty()) return;
  operand_ = run.operands.Unlink();
  present_ = true;
}

PoppedOperand::~PoppedOperand() {
  if (present_) FreeOperand(operand_);
}

std::u16string_view PoppedOperand::OwnedText() const {
  if (Is(OperandKind::String) || Is(OperandKind::LiteralName)) return TextOf(operand_);
  return {};
}
