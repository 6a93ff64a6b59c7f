// The scanner of operator text: what becomes an operand, what an operator, what neither, and what stops a text.
#include <bit>

#include "filter_limits.h"
#include "operators/operator_machine.h"
#include "platform/narrow_text.h"
#include "tests/support/filter_test.h"

namespace {

class Tokeniser : public FilterTest {
 protected:
  // What a text leaves on an empty stack when its operators are only pushed, from the top.
  Lines Pushed(std::string_view text) {
    ResetImportRun();
    StartMachine();
    FeedPushOnly(text);
    EXPECT_EQ(Drain(), Lines());
    return Operands();
  }

  void FeedWide(std::u16string_view text, int pushOnly) {
    StartMachine();
    FeedOperatorText(text, pushOnly);
  }

  struct Row {
    std::string_view text;
    Lines operands;  // from the top
  };
  void ExpectPushed(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
      SCOPED_TRACE(row.text);
      EXPECT_EQ(Pushed(row.text), row.operands);
    }
  }

  // A "P" with a suffix drops one operand less than the tokens of its text. How many of nine operands are left after a
  // text that ends in one.
  std::size_t LeftOfNine(std::string_view text) {
    ResetImportRun();
    StartMachine();
    FeedPushOnly("1 2 3 4 5 6 7 8 9");
    Feed(text);
    EXPECT_EQ(Drain(), Lines());
    return run.operands.size();
  }
};

TEST_F(Tokeniser, EmptyTextPushesAndRunsNothing) {
  FeedPushOnly("5");
  Feed("");
  Feed(" ");
  Feed("\x01\x02\t\n\v\f\r\x1f  ");
  EXPECT_EQ(Drain(), Lines());
  EXPECT_EQ(Operands(), Lines({"Number 5"}));
}

TEST_F(Tokeniser, EveryUnitUpTo32SeparatesTokens) {
  for (char16_t unit = 1; unit <= 32; ++unit) {
    SCOPED_TRACE(static_cast<int>(unit));
    ResetImportRun();
    FeedWide(std::u16string(u"a") + unit + u"b", kPushOnly);
    EXPECT_EQ(Operands(), Lines({"Name b", "Name a"}));
  }
}

TEST_F(Tokeniser, UnitsAbove32BelongToTheToken) {
  for (const char16_t unit : {u'!', u'\x7f', u'\u00A0', u'\u2003', u'\u3000', u'\uFEFF'}) {
    SCOPED_TRACE(static_cast<int>(unit));
    ResetImportRun();
    FeedWide(std::u16string(u"a") + unit + u"b", kPushOnly);
    EXPECT_EQ(run.operands.size(), 1u);
  }
}

TEST_F(Tokeniser, SignPointAndDigitsBeginNumbers) {
  ExpectPushed({
      {"+1", {"Number 1"}},
      {"-1", {"Number -1"}},
      {".1", {"Number 0.1"}},
      {"-.1", {"Number -0.1"}},
      {"0 1 2 3 4", {"Number 4", "Number 3", "Number 2", "Number 1", "Number 0"}},
      {"5 6 7 8 9", {"Number 9", "Number 8", "Number 7", "Number 6", "Number 5"}},
      {"1e2 1E-2 -1.5e+1", {"Number -15", "Number 0.01", "Number 100"}},
      {"1e400 -1e400", {"Number -inf", "Number inf"}},
  });
}

// The bits of the number class cover the units 0 to 57 alone; a unit whose low byte is a digit is no digit.
TEST_F(Tokeniser, WideUnitsAreNeverOfTheNumberClass) {
  for (const char16_t unit : {u'\u0130', u'\u012B', u'\u012D', u'\u0665', u'\uFF11', u'\u0128', u'\u015B', u'\u012F'}) {
    SCOPED_TRACE(static_cast<int>(unit));
    ResetImportRun();
    FeedWide(std::u16string(1, unit) + u"5", kPushOnly);
    ASSERT_EQ(run.operands.size(), 1u);
    EXPECT_EQ(run.operands.FromTop(0).kind, OperandKind::Name);
    EXPECT_EQ(TextOf(run.operands.FromTop(0)).size(), 2u);
  }
}

TEST_F(Tokeniser, UnitBehindANumberIsLostWhateverItIs) {
  ExpectPushed({
      {"12M", {"Number 12"}},
      {"12ML", {"Name L", "Number 12"}},
      {"1-2", {"Number 2", "Number 1"}},
      {"1+2", {"Number 2", "Number 1"}},
      {"1.5.5", {"Number 5", "Number 1.5"}},
      {"1,2", {"Number 2", "Number 1"}},
      {"1(2)3", {"Number 3", "Number 2", "Number 1"}},
      {"1[2]3", {"Number 3", "Number 2", "Number 1"}},
      {"1/x", {"Name x", "Number 1"}},
      {"1<2", {"Number 2", "Number 1"}},
      {"1%%2", {"Name %2", "Number 1"}},
      {"1e", {"Number 1"}},
      {"1em", {"Name m", "Number 1"}},
      {"0x10", {"Number 10", "Number 0"}},
  });
  Pushed("1{ 2}");
  EXPECT_EQ(run.braceDepth, 0);
}

TEST_F(Tokeniser, OperatorStuckToANumberIsLost) {
  EXPECT_EQ(Run("0 0 M 10 10L"), Lines({"PATH"}));
  EXPECT_EQ(Operands(), Lines({"Number 10", "Number 10"}));
  EXPECT_EQ(Run(" L"), Lines({"LINE 0,100 10,90"}));
}

TEST_F(Tokeniser, SignOrPointWithoutADigitIsAnEmptyName) {
  ExpectPushed({
      {"-", {"Name "}},
      {"+", {"Name "}},
      {".", {"Name "}},
      {"-x", {"Name x", "Name "}},
      {"- 5", {"Number 5", "Name "}},
      {"+-5", {"Number -5", "Name "}},
      {"--", {"Name ", "Name "}},
      {".e5", {"Name e5", "Name "}},
      {"-.", {"Name ", "Name "}},
      {"-inf", {"Name inf", "Name "}},
  });
}

// An empty name is no operator token: it is not executed, and the stack below it stays.
TEST_F(Tokeniser, EmptyNameIsPushedAndNotExecuted) {
  EXPECT_EQ(Run("7 -"), Lines());
  EXPECT_EQ(Operands(), Lines({"Name ", "Number 7"}));
}

TEST_F(Tokeniser, StringEndsAtTheFirstClosingParenthesis) {
  ExpectPushed({
      {"(abc)", {"String abc"}},
      {"()", {"String "}},
      {"(a b\tc)", {"String a b\tc"}},
      {"(a(b)c)", {"Name c)", "String a(b"}},
      {"(a)5", {"Number 5", "String a"}},
      {"(a)(b)", {"String b", "String a"}},
      {"(1 2 L %% < [)3", {"Number 3", "String 1 2 L %% < ["}},
  });
}

TEST_F(Tokeniser, UnclosedStringTakesTheRestOfTheText) {
  ExpectPushed({
      {"(abc", {"String abc"}},
      {"(abc 5 L", {"String abc 5 L"}},
      {"(", {"String "}},
  });
}

TEST_F(Tokeniser, BackslashKeepsAClosingParenthesisAndStaysInTheString) {
  ExpectPushed({
      {"(a\\)b)", {"String a\\)b"}},
      {"(\\))5", {"Number 5", "String \\)"}},
      {"(a\\b)5", {"Number 5", "String a\\b"}},
      {"(a\\", {"String a\\"}},
      {"(a\\)", {"String a\\)"}},
      // The second backslash stands directly before the parenthesis, whatever stands before it.
      {"(a\\\\)5", {"String a\\\\)5"}},
  });
}

TEST_F(Tokeniser, ArrayHoldsTheNumbersUpToTheBracket) {
  ExpectPushed({
      {"[1 2]", {"Array 1 2"}},
      {"[]", {"Array"}},
      {"[ ]", {"Array"}},
      {"[-1 +2 .5 1e1]", {"Array -1 2 0.5 10"}},
      {"[1]2", {"Number 2", "Array 1"}},
      {"[1][2]", {"Array 2", "Array 1"}},
      {"[1\t2\n3]", {"Array 1 2 3"}},
  });
}

TEST_F(Tokeniser, UnclosedArrayTakesTheRestOfTheText) {
  ExpectPushed({
      {"[1 2", {"Array 1 2"}},
      {"[1 2 L (5)", {"Array 1 2 5"}},
      {"[", {"Array"}},
  });
}

// Nothing of a number is swallowed inside an array, and whatever is no number is stepped over unit by unit.
TEST_F(Tokeniser, ArraySkipsWhatIsNoNumber) {
  ExpectPushed({
      {"[1 2 x 3]", {"Array 1 2 3"}},
      {"[1,2-3]", {"Array 1 2 -3"}},
      {"[1.5.5]", {"Array 1.5 0.5"}},
      {"[e4]", {"Array 4"}},
      {"[(1) /2 {3} 4%%5]", {"Array 1 2 3 4 5"}},
      {"[- + .]", {"Array"}},
      {"[--1]", {"Array -1"}},
      {"[[1]", {"Array 1"}},
      {"[ <1]", {"Array 1"}},
      {"[1[<2]", {"Array 1 2"}},
  });
}

TEST_F(Tokeniser, BracketWithAngleStopsTheText) {
  ExpectPushed({
      {"1 [<2] 3", {"Number 1"}},
      {"[<", {}},
  });
  EXPECT_EQ(Run("0 0 M 5 5 L 6 6 [<41> 7 7 L"), Lines({"PATH", "LINE 0,100 5,95"}));
  EXPECT_EQ(Operands(), Lines({"Number 6", "Number 6"}));
}

TEST_F(Tokeniser, AngleStopsTheText) {
  ExpectPushed({
      {"1 < 2", {"Number 1"}},
      {"1 <<2>>", {"Number 1"}},
      {"a<b c", {"Name c", "Name a<b"}},
      {"1 > 2", {"Number 2", "Name >", "Number 1"}},
  });
  EXPECT_EQ(Run("0 0 M <41> 5 5 L"), Lines({"PATH"}));
}

TEST_F(Tokeniser, TwoPercentsStopTheText) {
  ExpectPushed({
      {"1 %% 2", {"Number 1"}},
      {"1 %%2", {"Number 1"}},
      {"a%%b c", {"Name c", "Name a%%b"}},
      {"% % 1", {"Number 1", "Name %", "Name %"}},
      {"%x", {"Name %x"}},
      {"%", {"Name %"}},
  });
  EXPECT_EQ(Run("0 0 M %% 5 5 L"), Lines({"PATH"}));
}

// What stopped one text does not stop the next.
TEST_F(Tokeniser, StopLastsForOneText) {
  Feed("1 <");
  Feed("2 %%");
  Feed("3 [<");
  Feed("4");
  EXPECT_EQ(Operands(), Lines({"Number 4", "Number 3", "Number 2", "Number 1"}));
}

// "%" lies below the dispatcher's range.
TEST_F(Tokeniser, OnePercentIsAnOperatorThatClears) {
  EXPECT_EQ(Run("1 2 %x 3"), Lines());
  EXPECT_EQ(Operands(), Lines({"Number 3"}));
}

TEST_F(Tokeniser, LiteralNameEndsAtWhiteSpaceAlone) {
  ExpectPushed({
      {"/abc", {"LiteralName abc"}},
      {"/abc def", {"Name def", "LiteralName abc"}},
      {"/abc\ndef", {"Name def", "LiteralName abc"}},
      {"/", {"LiteralName "}},
      {"/ 5", {"Number 5", "LiteralName "}},
      {"/a/b", {"LiteralName a/b"}},
      {"/a(b)[c]{d}%%<e", {"LiteralName a(b)[c]{d}%%<e"}},
      {"/12", {"LiteralName 12"}},
  });
}

TEST_F(Tokeniser, BracesAreCountedAndPushNothing) {
  EXPECT_EQ(Pushed("{ {1 } 2"), Lines({"Number 2", "Number 1"}));
  EXPECT_EQ(run.braceDepth, 1);
  EXPECT_EQ(Pushed("}}"), Lines());
  EXPECT_EQ(run.braceDepth, -2);
  FeedPushOnly("{");
  EXPECT_EQ(run.braceDepth, -1);
}

TEST_F(Tokeniser, ClosingBraceEndsATokenAndIsScannedItself) {
  EXPECT_EQ(Pushed("a}b"), Lines({"Name b", "Name a"}));
  EXPECT_EQ(run.braceDepth, -1);
  ResetImportRun();
  StartMachine();
  EXPECT_EQ(Run("0 0 M}5 5 L"), Lines({"PATH", "LINE 0,100 5,95"}));
}

TEST_F(Tokeniser, OpeningBraceBelongsToTheToken) {
  EXPECT_EQ(Pushed("a{b"), Lines({"Name a{b"}));
  EXPECT_EQ(run.braceDepth, 0);
  EXPECT_EQ(Pushed("a(b)[c]/d"), Lines({"Name a(b)[c]/d"}));
}

TEST_F(Tokeniser, StrayClosingParenthesisIsAnOperatorToken) {
  ExpectPushed({{") 5", {"Number 5", "Name )"}}, {")a", {"Name )a"}}});
  EXPECT_EQ(Run("1 2 ) 5"), Lines());
  EXPECT_EQ(Operands(), Lines({"Number 5"}));
}

TEST_F(Tokeniser, StrayClosingBracketIsSteppedOver) {
  ExpectPushed({{"] 5", {"Number 5"}}, {"]a", {"Name a"}}, {"]]]", {}}});
}

TEST_F(Tokeniser, NameIsCutAt64Units) {
  for (const std::size_t length : {63u, 64u, 65u, 500u}) {
    ResetImportRun();
    FeedWide(std::u16string(length, u'x') + u" y", kPushOnly);
    ASSERT_EQ(run.operands.size(), 2u);
    EXPECT_EQ(TextOf(run.operands.FromTop(1)), std::u16string(std::min<std::size_t>(length, 64), u'x'));
    EXPECT_EQ(TextOf(run.operands.FromTop(0)), u"y");
  }
}

TEST_F(Tokeniser, LongOperatorTokenIsOneOperator) {
  StartMachine();
  EXPECT_EQ(Run("0 0 M 5 5 L" + std::string(200, '7') + " 9 9 L"),
            Lines({"PATH", "LINE 0,100 5,95", "LINE 5,95 9,91"}));
}

TEST_F(Tokeniser, StringsAndLiteralNamesAreNotCut) {
  const std::string longText(1000, 'x');
  EXPECT_EQ(Pushed("(" + longText + ")"), Lines({"String " + longText}));
  EXPECT_EQ(Pushed("/" + longText), Lines({"LiteralName " + longText}));
}

TEST_F(Tokeniser, PushOnlyLeavesOperatorsOnTheStack) {
  EXPECT_EQ(Pushed("1 2 L"), Lines({"Name L", "Number 2", "Number 1"}));
  EXPECT_EQ(run.path.userCurrent, (Point{0, 0}));
}

TEST_F(Tokeniser, AnyFlagButZeroOnlyPushes) {
  for (const int flag : {1, 2, -1}) {
    StartMachine();
    FeedOperatorText(u"zz", flag);
    EXPECT_EQ(Operands(), Lines({"Name zz"}));
    ClearOperands();
  }
}

TEST_F(Tokeniser, OperandsWaitAcrossTextsForTheirOperator) {
  FeedPushOnly("10");
  Feed("20");
  FeedPushOnly("");
  EXPECT_EQ(Run(" M"), Lines({"PATH"}));
  EXPECT_EQ(run.path.userCurrent, (Point{10, 20}));
  EXPECT_EQ(Operands(), Lines());
}

// "LLLL" is the units 4C 00 four times over.
TEST_F(Tokeniser, NamePoppedAsANumberReadsItsFirstFourUnits) {
  FeedPushOnly("3 LLLLxyz");
  Feed(" M");
  EXPECT_EQ(run.path.userCurrent.x, 3.0);
  EXPECT_EQ(run.path.userCurrent.y, std::bit_cast<double>(std::uint64_t{0x004C004C004C004C}));
  FeedPushOnly("3 L");
  Feed(" M");
  EXPECT_EQ(run.path.userCurrent.y, std::bit_cast<double>(std::uint64_t{0x4C}));
  FeedPushOnly("3 -");
  Feed(" M");
  EXPECT_EQ(run.path.userCurrent.y, 0.0);
  Drain();
}

TEST_F(Tokeniser, OperatorTakesItsOwnTokenAndNotAnOlderName) {
  FeedPushOnly("7 5 M");
  EXPECT_EQ(Run(" L"), Lines({"LINE 0,100 5,100"}));  // y is the name M read as a number, 4D: next to nothing
  EXPECT_EQ(run.path.userCurrent.y, std::bit_cast<double>(std::uint64_t{0x4D}));
  EXPECT_EQ(Operands(), Lines({"Number 7"}));
}

TEST_F(Tokeniser, TokenCountHoldsEveryTokenOfTheText) {
  EXPECT_EQ(LeftOfNine(" Pq"), 9u);
  EXPECT_EQ(LeftOfNine("1 2 3 Pq"), 9u);
  EXPECT_EQ(LeftOfNine("(a) /b [1 2] - 5 Pq"), 9u);
  EXPECT_EQ(LeftOfNine("(a"), 10u);
}

TEST_F(Tokeniser, BracesAndClosingBracketsAreNoTokens) { EXPECT_EQ(LeftOfNine("{ } ] Pq"), 9u); }

// Tokens: @sax, 1, 2, Pq. Three are dropped, two of which are the text's own.
TEST_F(Tokeniser, SkippedBracketIsNoToken) { EXPECT_EQ(LeftOfNine("@sax [ 1 2 ] Pq"), 8u); }

// The first Pq is token 2 and drops the 1; the second is token 4 and drops three, the 2 and two more.
TEST_F(Tokeniser, TokenCountRunsThroughTheWholeText) { EXPECT_EQ(LeftOfNine("1 Pq 2 Pq"), 7u); }

TEST_F(Tokeniser, TokenCountBeginsAnewWithEachText) {
  EXPECT_EQ(LeftOfNine("1 2 3"), 12u);
  Feed(" Pq");
  EXPECT_EQ(run.operands.size(), 12u);
  FeedPushOnly("4 5 6");
  Feed(" 7 Pq");
  EXPECT_EQ(run.operands.size(), 15u);
}

// A number's swallowed unit is no token even where it would have begun one.
TEST_F(Tokeniser, SwallowedUnitIsNotCounted) { EXPECT_EQ(LeftOfNine("1( Pq"), 9u); }

TEST_F(Tokeniser, SkippedBracketPutsTheNumbersOnTheStackOneByOne) {
  EXPECT_EQ(Run("@sax [1 2] 3"), Lines());
  EXPECT_EQ(Operands(), Lines({"Number 3", "Number 2", "Number 1"}));
}

TEST_F(Tokeniser, OneBracketIsSkippedOnly) {
  Feed("@sax [ 1 [ 2 3 ]");
  EXPECT_EQ(Operands(), Lines({"Array 2 3", "Number 1"}));
  EXPECT_EQ(run.skipArrayOpen, 0u);
}

TEST_F(Tokeniser, BracketMayBeSkippedInALaterText) {
  Feed("@sax");
  EXPECT_EQ(run.skipArrayOpen, 1u);
  Feed("7");
  FeedPushOnly("[1 2 ]");
  EXPECT_EQ(Operands(), Lines({"Number 2", "Number 1", "Number 7"}));
}

TEST_F(Tokeniser, ClosingBracketCancelsTheSkip) {
  Feed("@sax ] [1 2]");
  EXPECT_EQ(Operands(), Lines({"Array 1 2"}));
}

TEST_F(Tokeniser, BracketWithAngleStopsTheTextBeforeTheSkip) {
  Feed("@sax [<5");
  EXPECT_EQ(run.skipArrayOpen, 1u);
  EXPECT_EQ(Operands(), Lines());
  Feed("[5 6");
  EXPECT_EQ(Operands(), Lines({"Number 6", "Number 5"}));
}

// Not a token of the text is lost in a long run of them.
TEST_F(Tokeniser, TextMayHoldAnyNumberOfTokens) {
  std::string text;
  for (int i = 0; i < 20'000; ++i) text += std::to_string(i) + ' ';
  FeedPushOnly(text);
  EXPECT_EQ(run.operands.size(), 20'000u);
  EXPECT_EQ(NumberOf(run.operands.FromTop(0)), 19'999.0);
  EXPECT_EQ(NumberOf(run.operands.FromTop(19'999)), 0.0);
}

// Any text scans to something: every pair of units, in both modes, comes to an end.
TEST_F(Tokeniser, EveryPairOfUnitsScans) {
  StartMachine();
  for (char16_t first = 1; first < 128; ++first) {
    for (char16_t second = 1; second < 128; ++second) {
      const char16_t text[] = {first, second};
      FeedOperatorText({text, 2}, kPushOnly);
      FeedOperatorText({text, 2}, kExecute);
      ClearOperands();
      Drain();
    }
  }
}

}  // namespace
