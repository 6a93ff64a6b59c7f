// The operand stack: kinds, what each reads as, dropping and popping.
#include "operators/operand_stack.h"

#include <bit>

#include "tests/support/filter_test.h"

namespace {

class OperandStackTest : public FilterTest {};

TEST_F(OperandStackTest, KindFollowsFromTheFirstUnitAlone) {
  struct Row {
    std::u16string_view token;
    std::string_view operand;
  };
  const Row rows[] = {
      {u"12abc", "Number 12"},
      {u"-", "Number 0"},
      {u"+x", "Number 0"},
      {u".5(", "Number 0.5"},
      {u"(a/b", "String a/b"},
      {u"(", "String "},
      {u"/a(b", "LiteralName a(b"},
      {u"/", "LiteralName "},
      {u"[1 2 x 3", "Array 1 2 3"},
      {u"[", "Array"},
      {u"[1]2", "Array 1"},
      {u"a 5", "Name a 5"},
      {u")", "Name )"},
      {u"", "Name "},
      {u"]", "Name ]"},
      {u"{1", "Name {1"},
      {u"%1", "Name %1"},
      {u"<1", "Name <1"},
      {u"*1", "Name *1"},
  };
  for (const Row& row : rows) {
    PushToken(row.token);
    ASSERT_EQ(run.operands.size(), 1u);
    EXPECT_EQ(Operands().front(), row.operand);
    ClearOperands();
  }
}

TEST_F(OperandStackTest, LastPushedIsOnTop) {
  PushNumber(1.0);
  PushToken(u"(two");
  PushNumber(3.0);
  EXPECT_EQ(Operands(), Lines({"Number 3", "String two", "Number 1"}));
}

TEST_F(OperandStackTest, ArrayWithoutNumbersOwnsNothing) {
  PushToken(u"[ x y ");
  EXPECT_EQ(run.operands.FromTop(0).length, 0u);
  EXPECT_EQ(run.operands.FromTop(0).values, nullptr);
  EXPECT_TRUE(ValuesOf(run.operands.FromTop(0)).empty());
}

TEST_F(OperandStackTest, TextAndValuesBelongToTheirKindsAlone) {
  PushToken(u"(text");
  PushToken(u"[1 2");
  PushNumber(5.0);
  EXPECT_EQ(TextOf(run.operands.FromTop(0)), u"");
  EXPECT_TRUE(ValuesOf(run.operands.FromTop(0)).empty());
  EXPECT_EQ(TextOf(run.operands.FromTop(1)), u"");
  EXPECT_EQ(ValuesOf(run.operands.FromTop(1)).size(), 2u);
  EXPECT_EQ(TextOf(run.operands.FromTop(2)), u"text");
  EXPECT_TRUE(ValuesOf(run.operands.FromTop(2)).empty());
}

// A number is the first eight bytes of the payload, whatever the kind: of a name its first four units, of an array its
// count. The texts, which hold a pointer there, read as 0.
TEST_F(OperandStackTest, EveryKindReadsAsANumber) {
  struct Row {
    std::u16string_view token;
    std::uint64_t bits;
  };
  const Row rows[] = {
      {u"2.5", std::bit_cast<std::uint64_t>(2.5)},
      {u"(2.5", 0},
      {u"/2.5", 0},
      {u"[7 8 9", 3},
      {u"[", 0},
      {u"", 0},
      {u"A", 0x41},
      {u"AB", 0x0042'0041},
      {u"ABC", 0x0043'0042'0041},
      {u"ABCD", 0x0044'0043'0042'0041},
      {u"ABCDE", 0x0044'0043'0042'0041},
  };
  for (const Row& row : rows) {
    PushToken(row.token);
    EXPECT_EQ(NumberOf(run.operands.FromTop(0)), std::bit_cast<double>(row.bits));
    double value = -1.0;
    EXPECT_TRUE(PopNumber(&value));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(value), row.bits);
  }
}

TEST_F(OperandStackTest, PopsTellThatTheStackIsEmpty) {
  double value = 42.0;
  EXPECT_FALSE(PopNumber(&value));
  EXPECT_EQ(value, 42.0);
  EXPECT_EQ(PopNumberOrZero(), 0.0);
  EXPECT_EQ(PopIntegerOrZero(), 0);
  EXPECT_FALSE(PopDiscard());
  EXPECT_FALSE(static_cast<bool>(PoppedOperand()));
}

TEST_F(OperandStackTest, PopsTakeTheTop) {
  for (const double value : {1.0, 2.0, 3.9, -4.9, 5.0}) PushNumber(value);
  EXPECT_TRUE(PopDiscard());
  EXPECT_EQ(PopIntegerOrZero(), -4);
  EXPECT_EQ(PopIntegerOrZero(), 3);
  EXPECT_EQ(PopNumberOrZero(), 2.0);
  {
    const PoppedOperand popped;
    EXPECT_TRUE(static_cast<bool>(popped));
    EXPECT_EQ(popped.Number(), 1.0);
  }
  EXPECT_TRUE(run.operands.empty());
}

TEST_F(OperandStackTest, PoppedOperandTellsItsKind) {
  PushToken(u"name");
  PushToken(u"/literal");
  PushToken(u"[1 2");
  PushToken(u"(text");
  {
    const PoppedOperand text;
    EXPECT_TRUE(text.Is(OperandKind::String));
    EXPECT_EQ(text.OwnedText(), u"text");
    EXPECT_EQ(text.Number(), 0.0);
  }
  {
    const PoppedOperand array;
    EXPECT_TRUE(array.Is(OperandKind::Array));
    EXPECT_EQ(array.OwnedText(), u"");
    EXPECT_EQ(array.Values().size(), 2u);
  }
  {
    const PoppedOperand literal;
    EXPECT_TRUE(literal.Is(OperandKind::LiteralName));
    EXPECT_EQ(literal.OwnedText(), u"literal");
  }
  {
    const PoppedOperand name;
    EXPECT_TRUE(name.Is(OperandKind::Name));
    EXPECT_EQ(name.OwnedText(), u"");
  }
  const PoppedOperand nothing;
  EXPECT_FALSE(nothing.Is(OperandKind::Number));
}

TEST_F(OperandStackTest, DropTakesUpToSoManyFromTheTop) {
  FeedPushOnly("1 2 (three) [4] 5");
  DropOperands(0);
  EXPECT_EQ(run.operands.size(), 5u);
  DropOperands(-1);
  DropOperands(INT32_MIN);
  EXPECT_EQ(run.operands.size(), 5u);
  DropOperands(3);
  EXPECT_EQ(Operands(), Lines({"Number 2", "Number 1"}));
  DropOperands(2);
  EXPECT_EQ(Operands(), Lines());
  DropOperands(1);
  FeedPushOnly("6 7");
  DropOperands(INT32_MAX);
  EXPECT_EQ(Operands(), Lines());
}

TEST_F(OperandStackTest, ClearTakesAllKinds) {
  FeedPushOnly("1 (two) [3 4] [] /five six -");
  ASSERT_EQ(run.operands.size(), 7u);
  ClearOperands();
  EXPECT_TRUE(run.operands.empty());
  ClearOperands();
  EXPECT_TRUE(run.operands.empty());
}

}  // namespace
