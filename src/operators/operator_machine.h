// The operator machine: a postfix drawing language of numbers, strings, arrays, literal names and operator tokens.
#pragma once

#include <cstdint>
#include <string_view>

// Scans the text, pushes its operands, and, with `pushOnly` 0, executes its operator tokens at once; with `pushOnly` 1
// they are only pushed, as Name operands. Any text scans to something. It must hold no NUL and stay as it is until the
// return.
void FeedOperatorText(std::u16string_view text, int pushOnly);

// The values of `pushOnly`.
enum { kExecute = 0, kPushOnly = 1 };

// One operator at work.
struct OperatorCall {
  std::u16string_view token;  // up to 64 units
  std::uint32_t tokenCount;   // tokens of the text fed so far, this one included
};

// Finds the token's row in the table of operators and does its work. A token in no row clears the operand stack or is
// ignored, as the table says for its first unit.
void ExecuteOperator(const OperatorCall& call);
