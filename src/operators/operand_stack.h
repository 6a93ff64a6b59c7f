// The operands that wait for their operator. The stack lives for the run, so that one piece of text may push what the
// operator of a later piece takes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

enum class OperandKind : std::uint32_t {
  Number = 0,       // + - . or a digit
  String = 1,       // ( ... )
  Array = 2,        // [ ... ]
  Name = 3,         // anything else: an operator token that was only pushed, or an empty token
  LiteralName = 4,  // /...
};

// Texts and values belong to the operand and are freed with it.
struct Operand {
  OperandKind kind;
  std::uint32_t length;  // units of a text, or count of an array
  union {
    double number;
    char16_t* text;  // NUL-terminated
    double* values;  // null when the count is 0
  };
};

// The text of a String, Name or LiteralName; empty for the other kinds.
std::u16string_view TextOf(const Operand& operand);
// The numbers of an Array; empty for the other kinds.
std::span<const double> ValuesOf(const Operand& operand);
// The first eight bytes of the operand's payload taken for a number, whatever its kind: the value of a Number, the
// first four units of a Name, the count of an Array; 0.0 for the texts.
double NumberOf(const Operand& operand);

class OperandStack {
 public:
  OperandStack() = default;
  OperandStack(const OperandStack&) = delete;
  OperandStack& operator=(const OperandStack&) = delete;
  ~OperandStack();

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  // 0 is the top.
  const Operand& FromTop(std::size_t i) const { return operands_[size_ - 1 - i]; }

  // Puts an operand on top, which then owns its payload. False, with nothing changed, when memory has run out.
  bool Push(const Operand& operand);
  // Takes the top off without freeing its payload. The stack must not be empty.
  Operand Unlink() { return operands_[--size_]; }

 private:
  Operand* operands_ = nullptr;
  std::size_t size_ = 0;
  std::size_t room_ = 0;
};

void FreeOperand(Operand& operand);

// Frees all operands.
void ClearOperands();
// Frees up to `n` operands from the top; none when `n` is 0 or negative.
void DropOperands(std::int32_t n);

// Builds one operand from a token and pushes it; its kind follows from the first unit alone. A token that finds no
// memory is lost without a word.
void PushToken(std::u16string_view token);
void PushNumber(double value);

// The pops of the operators. Each takes one operand off and frees it.

// False when the stack is empty; `value` is then as it was.
bool PopNumber(double* value);
// 0.0 when the stack is empty.
double PopNumberOrZero();
// Cut towards zero; 0 when the stack is empty.
std::int32_t PopIntegerOrZero();
// False when the stack is empty.
bool PopDiscard();

// An operand taken off the stack, freed at the end of the scope.
class PoppedOperand {
 public:
  PoppedOperand();
  ~PoppedOperand();
  PoppedOperand(const PoppedOperand&) = delete;
  PoppedOperand& operator=(const PoppedOperand&) = delete;

  // False when the stack was empty.
  explicit operator bool() const { return present_; }
  bool Is(OperandKind kind) const { return present_ && operand_.kind == kind; }
  double Number() const { return present_ ? NumberOf(operand_) : 0.0; }
  // What a text operand holds, without a look at the kind: empty unless the operand owns a text.
  std::u16string_view OwnedText() const;
  std::span<const double> Values() const { return present_ ? ValuesOf(operand_) : std::span<const double>(); }

 private:
  Operand operand_{};
  bool present_ = false;
};
